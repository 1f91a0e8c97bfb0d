// SPDX-License-Identifier: Apache-2.0
// The few types of JNI that public headers name, declared without <jni.h>.
//
// A client that never uses Java needs no JDK to include our headers. With <jni.h> before or after this header, the
// types are the same.
#ifndef KORVANE_FRAMEWORKS_JNI_JNI_TYPES_H_
#define KORVANE_FRAMEWORKS_JNI_JNI_TYPES_H_

#if defined(__ANDROID__)
struct _JNIEnv;
using JNIEnv = _JNIEnv;
#else
struct JNIEnv_;
using JNIEnv = JNIEnv_;
#endif

class _jobject;
using jobject = _jobject*;

class _jbyteArray;
using jbyteArray = _jbyteArray*;

struct _jmethodID;
using jmethodID = _jmethodID*;

#endif  // KORVANE_FRAMEWORKS_JNI_JNI_TYPES_H_
