// SPDX-License-Identifier: Apache-2.0
// The native methods of com.tervo.media.effects.renderer.render.FiltersRender. A handle is a filter's address; the Java
// object owns the filter until nativeOnSurfaceDestroyed.
//
// When memory is short, a create entry returns 0, the type query -1, and the others leave out what they could not do.
#include <jni.h>

#include "applications/filters/filter_calls.h"
#include "frameworks/core/export.h"
#include "frameworks/core/guard.h"
#include "frameworks/jni/array_elements.h"
#include "frameworks/jni/locked_bitmap.h"
#include "frameworks/jni/utf_chars.h"
#include "platform/log.h"

#define FILTERS_RENDER(method) Java_com_tervo_media_effects_renderer_render_FiltersRender_##method
#define FILTERS_RENDER_NAME(method) "Java_com_tervo_media_effects_renderer_render_FiltersRender_" method

using korvane::ArrayElements;
using korvane::guarded;
using korvane::LockedBitmap;
using korvane::UtfChars;

namespace {

ImageFilterBaseGL* to_filter(jlong handle) {
    return reinterpret_cast<ImageFilterBaseGL*>(handle);
}

jlong to_handle(ImageFilterBaseGL* filter) {
    return reinterpret_cast<jlong>(filter);
}

template <typename Value>
void set_value(JNIEnv* env, jlong handle, jstring parametersKey, Value value, const char* line) {
    guarded([&] {
        const UtfChars key(env, parametersKey);
        KORVANE_LOGD("%s", line);
        korvane::set_filter_value(to_filter(handle), key.get(), &value, sizeof(value));
    });
}

template <typename Array>
void set_array(JNIEnv* env, jlong handle, jstring parametersKey, Array array, const char* line) {
    guarded([&] {
        const UtfChars key(env, parametersKey);
        KORVANE_LOGD("%s", line);
        const ArrayElements<Array> elements(env, array);
        korvane::set_filter_array(to_filter(handle), key.get(), elements.get(), elements.bytes());
    });
}

}  // namespace

extern "C" {

KORVANE_API jlong FILTERS_RENDER(nativeCreate)(JNIEnv* env, jobject /*object*/, jstring name) {
    return guarded(jlong{0}, [&] {
        // The name's characters are kept: a filter is made once and lives as long as its screen.
        return to_handle(korvane::create_offscreen_filter(UtfChars(env, name).keep()));
    });
}

KORVANE_API jlong FILTERS_RENDER(nativeOnSurfaceCreated)(JNIEnv* env, jobject /*object*/, jstring name, jint target) {
    return guarded(jlong{0}, [&] {
        const UtfChars chars(env, name);
        KORVANE_LOGD(FILTERS_RENDER_NAME("nativeOnSurfaceCreated  1\n"));
        ImageFilterBaseGL* filter = korvane::create_surface_filter(chars.get(), static_cast<GLenum>(target));
        KORVANE_LOGD("pImageFilterBaseGL:%p\n", static_cast<void*>(filter));
        return to_handle(filter);
    });
}

KORVANE_API void FILTERS_RENDER(nativeSetTexture)(JNIEnv* /*env*/, jobject /*object*/, jlong handle, jint textureID,
                                                  jint inputWidth, jint inputHeight, jint outputWidth,
                                                  jint outputHeight) {
    guarded([&] {
        ImageFilterBaseGL* filter = to_filter(handle);
        KORVANE_LOGD(FILTERS_RENDER_NAME("nativeSetTexture  1 pImageFilterBaseGL:%p\n"), static_cast<void*>(filter));
        if (filter != nullptr) {
            filter->setTexture(textureID, inputWidth, inputHeight, outputWidth, outputHeight);
        }
        KORVANE_LOGD(FILTERS_RENDER_NAME("nativeSetTexture  2 pImageFilterBaseGL:%p\n"), static_cast<void*>(filter));
    });
}

KORVANE_API void FILTERS_RENDER(nativeSetBitmap)(JNIEnv* env, jobject /*object*/, jlong handle, jobject bitmap,
                                                 jint width, jint height) {
    guarded([&] {
        ImageFilterBaseGL* filter = to_filter(handle);
        KORVANE_LOGD(FILTERS_RENDER_NAME("nativeSetBitmap pImageFilterBaseGL:%p\n"), static_cast<void*>(filter));
        const LockedBitmap locked(env, bitmap);
        if (filter != nullptr && locked.pixels() != nullptr && width >= 1 && height >= 1) {
            filter->setBitmap(locked.pixels(), width, height);
        }
    });
}

KORVANE_API void FILTERS_RENDER(nativeOnDrawFrame)(JNIEnv* /*env*/, jobject /*object*/, jlong handle) {
    guarded([&] {
        if (handle != 0) {
            to_filter(handle)->render();
        }
    });
}

KORVANE_API void FILTERS_RENDER(nativeProcess)(JNIEnv* env, jobject /*object*/, jlong handle, jobject bitmap) {
    guarded([&] {
        const AndroidBitmapInfo info = korvane::bitmap_info(env, bitmap);
        const LockedBitmap locked(env, bitmap);
        if (handle != 0 && locked.pixels() != nullptr && info.width != 0 && info.height != 0) {
            to_filter(handle)->process(locked.pixels(), static_cast<int>(info.width), static_cast<int>(info.height));
        }
    });
}

KORVANE_API void FILTERS_RENDER(nativeOnSurfaceDestroyed)(JNIEnv* /*env*/, jobject /*object*/, jlong handle) {
    guarded([&] {
        ImageFilterBaseGL* filter = to_filter(handle);
        KORVANE_LOGD(FILTERS_RENDER_NAME("nativeOnSurfaceDestroyed pImageFilterBaseGL:%p\n"),
                     static_cast<void*>(filter));
        delete filter;
    });
}

KORVANE_API jint FILTERS_RENDER(nativeGetParameterType)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                        jstring parametersKey) {
    return guarded(jint{-1}, [&] {
        const UtfChars key(env, parametersKey);
        KORVANE_LOGD(FILTERS_RENDER_NAME("nativeGetParameterType\n"));
        return handle != 0 ? to_filter(handle)->getParameterType(key.get()) : -1;
    });
}

KORVANE_API void FILTERS_RENDER(nativeSetParametersBoolean)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                            jstring parametersKey, jboolean value) {
    set_value(env, handle, parametersKey, value, FILTERS_RENDER_NAME("nativeSetParametersBoolean\n"));
}

KORVANE_API void FILTERS_RENDER(nativeSetParametersBooleanArray)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                                 jstring parametersKey, jbooleanArray value) {
    set_array(env, handle, parametersKey, value, FILTERS_RENDER_NAME("nativeSetParametersBooleanArray\n"));
}

KORVANE_API void FILTERS_RENDER(nativeSetParametersInteger)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                            jstring parametersKey, jint value) {
    set_value(env, handle, parametersKey, value, FILTERS_RENDER_NAME("nativeSetParametersInteger\n"));
}

KORVANE_API void FILTERS_RENDER(nativeSetParametersIntegerArray)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                                 jstring parametersKey, jintArray value) {
    set_array(env, handle, parametersKey, value, FILTERS_RENDER_NAME("nativeSetParametersIntegerArray\n"));
}

KORVANE_API void FILTERS_RENDER(nativeSetParametersFloat)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                          jstring parametersKey, jfloat value) {
    set_value(env, handle, parametersKey, value, FILTERS_RENDER_NAME("nativeSetParametersFloat\n"));
}

KORVANE_API void FILTERS_RENDER(nativeSetParametersFloatArray)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                               jstring parametersKey, jfloatArray value) {
    set_array(env, handle, parametersKey, value, FILTERS_RENDER_NAME("nativeSetParametersFloatArray\n"));
}

KORVANE_API void FILTERS_RENDER(nativeSetParametersDouble)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                           jstring parametersKey, jdouble value) {
    set_value(env, handle, parametersKey, value, FILTERS_RENDER_NAME("nativeSetParametersDouble\n"));
}

KORVANE_API void FILTERS_RENDER(nativeSetParametersDoubleArray)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                                jstring parametersKey, jdoubleArray value) {
    set_array(env, handle, parametersKey, value, FILTERS_RENDER_NAME("nativeSetParametersDoubleArray\n"));
}

KORVANE_API void FILTERS_RENDER(nativeSetParametersLong)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                         jstring parametersKey, jlong value) {
    guarded([&] {
        const UtfChars key(env, parametersKey);
        KORVANE_LOGD(FILTERS_RENDER_NAME("nativeSetParametersLong\n"));
        if (handle != 0 && key.get() != nullptr) {
            // The value is the pointer: a Java long carries a native address to the filter.
            to_filter(handle)->setParameters(key.get(), reinterpret_cast<void*>(value));
        }
    });
}

KORVANE_API void FILTERS_RENDER(nativeSetParametersBitmap)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                           jstring parametersKey, jobject bitmap) {
    guarded([&] {
        UtfChars key(env, parametersKey);
        ImageFilterBaseGL* filter = to_filter(handle);
        KORVANE_LOGD(FILTERS_RENDER_NAME("nativeSetParametersBitmap 1   pImageFilterBaseGL:%p\n"),
                     static_cast<void*>(filter));
        if (key.has_failed()) {
            return;
        }
        const AndroidBitmapInfo info = korvane::bitmap_info(env, bitmap);
        if (info.width == 0 || info.height == 0) {
            key.keep();
            KORVANE_LOGD(FILTERS_RENDER_NAME("nativeSetParametersBitmap 2   pImageFilterBaseGL:%p\n"),
                         static_cast<void*>(filter));
            return;
        }
        {
            const LockedBitmap locked(env, bitmap);
            korvane::set_filter_bitmap(filter, key.get(), locked.pixels(), static_cast<int>(info.width),
                                       static_cast<int>(info.height));
        }
        KORVANE_LOGD(FILTERS_RENDER_NAME("nativeSetParametersBitmap 3   pImageFilterBaseGL:%p\n"),
                     static_cast<void*>(filter));
    });
}

}  // extern "C"
