// SPDX-License-Identifier: Apache-2.0
// The native methods of com.tervo.media.supercapture.mode.SuperCaptureMode. The handle is the object's address.
//
// When memory is short, nativeCreate returns 0 and nativeProcess does nothing.
#include <jni.h>

#include <memory>

#include "applications/super_capture/super_capture_mode.h"
#include "frameworks/core/guard.h"
#include "frameworks/jni/array_elements.h"
#include "platform/log.h"

using korvane::guarded;

extern "C" JNIEXPORT jlong JNICALL Java_com_tervo_media_supercapture_mode_SuperCaptureMode_nativeCreate(
    JNIEnv* /*env*/, jobject /*thiz*/, jint width, jint height, jint format) {
    return guarded(jlong{0}, [&] {
        auto mode = std::make_unique<SuperCaptureMode>();
        KORVANE_LOGD(
            "Java_com_tervo_media_supercapture_mode_SuperCaptureMode_nativeCreate  width:%d, height:%d, format:%d\n",
            width, height, format);
        mode->init(static_cast<uint32_t>(width), static_cast<uint32_t>(height), static_cast<uint32_t>(format));
        return reinterpret_cast<jlong>(mode.release());
    });
}

extern "C" JNIEXPORT void JNICALL Java_com_tervo_media_supercapture_mode_SuperCaptureMode_nativeProcess(
    JNIEnv* env, jobject thiz, jlong handle, jbyteArray data) {
    guarded([&] {
        const korvane::ArrayElements<jbyteArray> elements(env, data);
        if (handle != 0) {
            auto* mode = reinterpret_cast<SuperCaptureMode*>(handle);
            mode->process(env, thiz, elements.at_least(mode->frameBytes()));
        }
    });
}

extern "C" JNIEXPORT void JNICALL
Java_com_tervo_media_supercapture_mode_SuperCaptureMode_nativeDestroy(JNIEnv* /*env*/, jobject /*thiz*/, jlong handle) {
    delete reinterpret_cast<SuperCaptureMode*>(handle);
}
