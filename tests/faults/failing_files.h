// SPDX-License-Identifier: Apache-2.0
// Makes one call of the C library that touches a file fail.
//
// failing_files.cpp stands before the C library: linked into a test, or preloaded into a program, which gets its orders
// from its environment (KORVANE_FAULT, as in failing_files.cpp). Only the caller's own files count: those under the
// named folder or with a relative path, standard input and standard output.
#ifndef KORVANE_TESTS_FAULTS_FAILING_FILES_H_
#define KORVANE_TESTS_FAULTS_FAILING_FILES_H_

#include <cstddef>

struct FileFault {
    // Which call, counted from 1. 0: none.
    size_t call;
    // What errno tells. 0: a read or a write of several bytes moves only half of them.
    int error;
    // All later calls that take space fail, too, as on a full disk.
    bool lasts;
};

void fail_files(const char* folder, FileFault fault);

// The function that failed, or null.
const char* failed_file_call();

#endif  // KORVANE_TESTS_FAULTS_FAILING_FILES_H_
