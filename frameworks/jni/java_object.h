// SPDX-License-Identifier: Apache-2.0
// Classes, fields and methods of Java objects, by name. A name that is not found gives null and leaves no exception
// pending. Class references are local: they live until the native method returns.
#ifndef KORVANE_FRAMEWORKS_JNI_JAVA_OBJECT_H_
#define KORVANE_FRAMEWORKS_JNI_JAVA_OBJECT_H_

#include <jni.h>

namespace korvane {

// `name` with slashes: "java/lang/String".
jclass find_java_class(JNIEnv* env, const char* name);

// `signature` as JNI writes it: "(FI)V". Null also for a null class.
jmethodID find_java_method(JNIEnv* env, jclass type, const char* name, const char* signature);

// Sets an int field of `object`, which is a `type`. A field that is not found, or a null class, changes nothing.
void set_java_int(JNIEnv* env, jobject object, jclass type, const char* name, jint value);

}  // namespace korvane

#endif  // KORVANE_FRAMEWORKS_JNI_JAVA_OBJECT_H_
