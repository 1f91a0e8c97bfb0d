// SPDX-License-Identifier: Apache-2.0
#include "tests/shortage/throwing_env.h"

#include "platform/bitmap.h"

namespace {

using Table = JNINativeInterface_;

struct State {
    JNIEnv* real = nullptr;
    Table table = {};
    JNIEnv env = {};
    size_t callsLeft = 0;
    bool hasRaised = false;
};
State gState;

bool raises() {
    if (gState.callsLeft == 0 || --gState.callsLeft > 0) {
        return false;
    }
    gState.hasRaised = true;
    gState.real->ThrowNew(gState.real->FindClass("java/lang/IllegalMonitorStateException"), "raised by the test");
    return true;
}

// In place of one entry of the table, and handed on to the real environment, which -Xcheck:jni wants to see. Its type
// has no variable arguments, which could not be handed on.
template <bool kMayRaise, auto kEntry>
struct Wrapped;
template <bool kMayRaise, typename Result, typename... Arguments, Result (*Table::*kEntry)(JNIEnv*, Arguments...)>
struct Wrapped<kMayRaise, kEntry> {
    static Result call(JNIEnv* /*env*/, Arguments... arguments) {
        return kMayRaise && raises() ? Result() : (gState.real->functions->*kEntry)(gState.real, arguments...);
    }
};

template <bool kMayRaise, auto... kEntries>
void put() {
    ((gState.table.*kEntries = Wrapped<kMayRaise, kEntries>::call), ...);
}

}  // namespace

ThrowingEnv::ThrowingEnv(JNIEnv* real, size_t failing) {
    // What the library does not call stays null.
    gState = {};
    gState.real = real;
    gState.callsLeft = failing;
    put<true, &Table::FindClass, &Table::GetMethodID, &Table::GetStaticMethodID, &Table::GetFieldID,
        &Table::CallVoidMethodV, &Table::CallIntMethodV, &Table::CallObjectMethodV, &Table::NewObjectV,
        &Table::NewStringUTF, &Table::GetStringUTFChars, &Table::NewIntArray, &Table::NewObjectArray,
        &Table::SetObjectArrayElement, &Table::SetIntArrayRegion, &Table::GetFloatArrayRegion,
        &Table::SetFloatArrayRegion, &Table::GetBooleanArrayElements, &Table::GetByteArrayElements,
        &Table::GetIntArrayElements, &Table::GetFloatArrayElements, &Table::GetDoubleArrayElements>();
    put<false, &Table::GetObjectClass, &Table::GetIntField, &Table::GetObjectField, &Table::SetIntField,
        &Table::GetArrayLength, &Table::GetDirectBufferAddress, &Table::ExceptionCheck, &Table::ExceptionClear,
        &Table::ExceptionDescribe, &Table::ExceptionOccurred, &Table::ThrowNew, &Table::DeleteLocalRef,
        &Table::PushLocalFrame, &Table::PopLocalFrame, &Table::ReleaseStringUTFChars,
        &Table::ReleaseBooleanArrayElements, &Table::ReleaseByteArrayElements, &Table::ReleaseIntArrayElements,
        &Table::ReleaseFloatArrayElements, &Table::ReleaseDoubleArrayElements>();
    gState.env.functions = &gState.table;
}

ThrowingEnv::~ThrowingEnv() {
    clear();
    gState.real = nullptr;
}

JNIEnv* ThrowingEnv::of(JNIEnv* real) {
    return gState.real == nullptr ? real : &gState.env;
}

bool ThrowingEnv::has_raised() {
    return gState.hasRaised;
}

void ThrowingEnv::clear() {
    if (gState.hasRaised) {
        gState.real->ExceptionClear();
    }
}

// On a device these belong to the system and call no Java: the desktop's twins get the real environment. The linker
// sends the library's calls here.
extern "C" {

int __real_AndroidBitmap_getInfo(JNIEnv* env, jobject bitmap, AndroidBitmapInfo* info);
int __real_AndroidBitmap_lockPixels(JNIEnv* env, jobject bitmap, void** pixels);
int __real_AndroidBitmap_unlockPixels(JNIEnv* env, jobject bitmap);

static JNIEnv* real_of(JNIEnv* env) {
    return env == &gState.env ? gState.real : env;
}

int __wrap_AndroidBitmap_getInfo(JNIEnv* env, jobject bitmap, AndroidBitmapInfo* info) {
    return __real_AndroidBitmap_getInfo(real_of(env), bitmap, info);
}

int __wrap_AndroidBitmap_lockPixels(JNIEnv* env, jobject bitmap, void** pixels) {
    return __real_AndroidBitmap_lockPixels(real_of(env), bitmap, pixels);
}

int __wrap_AndroidBitmap_unlockPixels(JNIEnv* env, jobject bitmap) {
    return __real_AndroidBitmap_unlockPixels(real_of(env), bitmap);
}

}  // extern "C"
