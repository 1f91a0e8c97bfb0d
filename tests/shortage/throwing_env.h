// SPDX-License-Identifier: Apache-2.0
// A JNIEnv for the library whose n-th call that may fail raises a Java exception and gives back nothing.
//
// Only calls that may raise one count: not those that give things back, nor those that read a field or a length.
#ifndef KORVANE_TESTS_SHORTAGE_THROWING_ENV_H_
#define KORVANE_TESTS_SHORTAGE_THROWING_ENV_H_

#include <jni.h>

#include <cstddef>

class ThrowingEnv {
  public:
    // Raises at the `failing`-th call, counted from 1; never for 0. One at a time, on one thread.
    ThrowingEnv(JNIEnv* real, size_t failing);
    ~ThrowingEnv();
    ThrowingEnv(const ThrowingEnv&) = delete;
    ThrowingEnv& operator=(const ThrowingEnv&) = delete;

    // The living one's, else `real` itself.
    static JNIEnv* of(JNIEnv* real);

    static bool has_raised();

    // What was raised does not stand in the way of the test's own calls.
    static void clear();
};

#endif  // KORVANE_TESTS_SHORTAGE_THROWING_ENV_H_
