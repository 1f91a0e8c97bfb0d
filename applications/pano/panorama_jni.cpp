// SPDX-License-Identifier: Apache-2.0
// The native methods of com.tervo.media.effects.pano.PanoramaModule. The handle is the address of a PanoramaInterface.
//
// When memory is short, nativeCreate returns 0 and nativeProcess 1 (PANORAMA_RESULT_TYPE_OUT_OF_MEMRORY).
#include <jni.h>

#include <memory>

#include "applications/pano/panorama_interface.h"
#include "frameworks/core/guard.h"
#include "frameworks/jni/array_elements.h"
#include "frameworks/jni/java_object.h"
#include "platform/log.h"

using korvane::guarded;

namespace {

void PanoramaModuleOnErrorCallback(int /*error*/) {}

PanoramaInterface* from_handle(jlong handle) {
    return reinterpret_cast<PanoramaInterface*>(handle);
}

void set_offsets(JNIEnv* env, jobject thiz, int offsetX, int offsetY) {
    const jclass type = korvane::find_java_class(env, "com/tervo/media/effects/pano/PanoramaModule");
    korvane::set_java_int(env, thiz, type, "mOffsetX", offsetX);
    korvane::set_java_int(env, thiz, type, "mOffsetY", offsetY);
    env->DeleteLocalRef(type);
}

}  // namespace

extern "C" JNIEXPORT jlong JNICALL Java_com_tervo_media_effects_pano_PanoramaModule_nativeCreate(
    JNIEnv* /*env*/, jobject /*thiz*/, jint width, jint height, jint format) {
    return guarded(jlong{0}, [&] {
        auto panorama = std::make_unique<PanoramaInterface>();
        KORVANE_LOGD("Java_com_tervo_media_effects_pano_PanoramaModule_nativeCreate width:%d, height:%d, format:%d\n",
                     width, height, format);
        if (panorama->startup(width, height, format, PanoramaModuleOnErrorCallback) != PANORAMA_RESULT_TYPE_NO_ERROR) {
            panorama->close();
            return jlong{0};
        }
        return reinterpret_cast<jlong>(panorama.release());
    });
}

extern "C" JNIEXPORT jint JNICALL Java_com_tervo_media_effects_pano_PanoramaModule_nativeProcess(
    JNIEnv* env, jobject thiz, jlong handle, jbyteArray data, jfloat gyroX, jfloat gyroY) {
    return guarded(jint{PANORAMA_RESULT_TYPE_OUT_OF_MEMRORY}, [&] {
        const korvane::ArrayElements<jbyteArray> elements(env, data);
        PanoramaInterface* panorama = from_handle(handle);
        unsigned char* frame = elements.at_least(panorama != nullptr ? panorama->bytesToRead() : 0);
        KORVANE_LOGD(
            "Java_com_tervo_media_effects_pano_PanoramaModule_nativeProcess pano_handle:%p, data:%p, gyroX:%f, "
            "gyroY:%f\n",
            static_cast<void*>(panorama), static_cast<void*>(frame), static_cast<double>(gyroX),
            static_cast<double>(gyroY));
        if (panorama == nullptr) {
            return jint{PANORAMA_RESULT_TYPE_NO_ERROR};
        }
        int offsetX = 0;
        int offsetY = 0;
        const result_t result = panorama->addFrame(frame, gyroX, gyroY, offsetX, offsetY);
        if (result == PANORAMA_RESULT_TYPE_NO_ERROR) {
            set_offsets(env, thiz, offsetX, offsetY);
        }
        return jint{result};
    });
}

extern "C" JNIEXPORT void JNICALL Java_com_tervo_media_effects_pano_PanoramaModule_nativeDestroy(JNIEnv* /*env*/,
                                                                                                 jobject /*thiz*/,
                                                                                                 jlong handle) {
    guarded([&] {
        PanoramaInterface* panorama = from_handle(handle);
        KORVANE_LOGD("Java_com_tervo_media_effects_pano_PanoramaModule_nativeDestroy  pano_handle:%p\n",
                     static_cast<void*>(panorama));
        if (panorama != nullptr) {
            panorama->close();
            delete panorama;
        }
    });
}
