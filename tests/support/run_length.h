// SPDX-License-Identifier: Apache-2.0
// How much of something a test does: little every day, all of it in `./dev proof`, which sets KORVANE_PROOF.
#ifndef KORVANE_TESTS_SUPPORT_RUN_LENGTH_H_
#define KORVANE_TESTS_SUPPORT_RUN_LENGTH_H_

#include <cstdio>
#include <cstdlib>

inline size_t run_length(size_t everyDay, size_t inProof) {
    return std::getenv("KORVANE_PROOF") == nullptr ? everyDay : inProof;
}

// A line that ./dev proof adds up.
inline void report_count(size_t count, const char* what) {
    std::printf("proof: %zu %s\n", count, what);
}

#endif  // KORVANE_TESTS_SUPPORT_RUN_LENGTH_H_
