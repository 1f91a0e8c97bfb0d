// SPDX-License-Identifier: Apache-2.0
// What to do with a Java exception that a call into Java left pending. While one is pending, most JNI calls are not
// allowed.
#ifndef KORVANE_FRAMEWORKS_JNI_JAVA_EXCEPTION_H_
#define KORVANE_FRAMEWORKS_JNI_JAVA_EXCEPTION_H_

#include "frameworks/jni/jni_types.h"

namespace korvane {

// True if an exception was pending. It is cleared without a word.
bool clear_java_exception(JNIEnv* env);

// The same; first Java prints the exception, and then `line` goes to the log.
bool clear_java_exception(JNIEnv* env, const char* line);

}  // namespace korvane

#endif  // KORVANE_FRAMEWORKS_JNI_JAVA_EXCEPTION_H_
