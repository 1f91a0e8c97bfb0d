// SPDX-License-Identifier: Apache-2.0
#include "frameworks/jni/java_object.h"

#include "frameworks/jni/java_exception.h"

namespace korvane {

jclass find_java_class(JNIEnv* env, const char* name) {
    const jclass type = env->FindClass(name);
    return clear_java_exception(env) ? nullptr : type;
}

jmethodID find_java_method(JNIEnv* env, jclass type, const char* name, const char* signature) {
    const jmethodID method = type == nullptr ? nullptr : env->GetMethodID(type, name, signature);
    return clear_java_exception(env) ? nullptr : method;
}

void set_java_int(JNIEnv* env, jobject object, jclass type, const char* name, jint value) {
    const jfieldID field = type == nullptr ? nullptr : env->GetFieldID(type, name, "I");
    if (!clear_java_exception(env) && field != nullptr) {
        env->SetIntField(object, field, value);
    }
}

}  // namespace korvane
