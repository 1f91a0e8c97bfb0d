// SPDX-License-Identifier: Apache-2.0
#include "frameworks/jni/java_exception.h"

#include <jni.h>

#include "platform/log.h"

namespace korvane {

bool clear_java_exception(JNIEnv* env) {
    if (!env->ExceptionCheck()) {
        return false;
    }
    env->ExceptionClear();
    return true;
}

bool clear_java_exception(JNIEnv* env, const char* line) {
    if (!env->ExceptionCheck()) {
        return false;
    }
    env->ExceptionDescribe();
    env->ExceptionClear();
    KORVANE_LOGD("%s", line);
    return true;
}

}  // namespace korvane
