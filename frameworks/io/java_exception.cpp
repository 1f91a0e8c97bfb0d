#include "frameworks/io/java_exception.h"

#include "platform/log.h"

bool clear_java_exception(JNIEnv* env, const char* line) {
    if (!env->ExceptionCheck()) {
        return false;
    }
    env->ExceptionDescribe();
    env->ExceptionClear();
    KORVANE_LOGD("%s", line);
    return true;
}
