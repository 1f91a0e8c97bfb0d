// The Java renderer's entries: com.tervo.media.effects.renderer.render.FiltersRender. Types are converted here and
// calls handed on; a handle is a filter's address, owned by the Java object until nativeOnSurfaceDestroyed.
#include <jni.h>

#include <cstring>

#include "applications/filters/gpu_image_filter_factory.h"
#include "frameworks/core/export.h"
#include "frameworks/core/memory.h"
#include "platform/bitmap.h"
#include "platform/log.h"

#define FILTERS_RENDER(method) Java_com_tervo_media_effects_renderer_render_FiltersRender_##method
#define FILTERS_RENDER_NAME(method) "Java_com_tervo_media_effects_renderer_render_FiltersRender_" method

namespace {

ImageFilterBaseGL* to_filter(jlong handle) {
    return reinterpret_cast<ImageFilterBaseGL*>(handle);
}

jlong to_handle(ImageFilterBaseGL* filter) {
    return reinterpret_cast<jlong>(filter);
}

const char* utf_chars(JNIEnv* env, jstring text) {
    return text == nullptr ? nullptr : env->GetStringUTFChars(text, nullptr);
}

// The UTF characters of a string, null for a null string, given back at the end of the scope.
class UtfChars {
  public:
    UtfChars(JNIEnv* env, jstring text) : m_Env(env), m_Text(text), m_Chars(utf_chars(env, text)) {}
    ~UtfChars() {
        if (m_Chars != nullptr) {
            m_Env->ReleaseStringUTFChars(m_Text, m_Chars);
        }
    }
    UtfChars(const UtfChars&) = delete;
    UtfChars& operator=(const UtfChars&) = delete;

    const char* get() const { return m_Chars; }

    // Leaves the characters with the virtual machine for good.
    const char* keep() {
        const char* chars = m_Chars;
        m_Chars = nullptr;
        return chars;
    }

  private:
    JNIEnv* m_Env;
    jstring m_Text;
    const char* m_Chars;
};

// A bitmap's pixels, null when they cannot be had. The unlock follows in every case, also after a lock that gave none:
// so each call of the one has its call of the other.
class LockedPixels {
  public:
    LockedPixels(JNIEnv* env, jobject bitmap) : m_Env(env), m_Bitmap(bitmap) {
        AndroidBitmap_lockPixels(env, bitmap, &m_Pixels);
    }
    ~LockedPixels() { AndroidBitmap_unlockPixels(m_Env, m_Bitmap); }
    LockedPixels(const LockedPixels&) = delete;
    LockedPixels& operator=(const LockedPixels&) = delete;

    unsigned char* get() const { return static_cast<unsigned char*>(m_Pixels); }

  private:
    JNIEnv* m_Env;
    jobject m_Bitmap;
    void* m_Pixels = nullptr;
};

// What a setter points a filter at: at least as many readable bytes as the longest parameter takes, zeros behind the
// value, so that a setter of the wrong type reads no foreign memory.
constexpr size_t kParameterBytes = 64;
static_assert(sizeof(FilterBitmap) <= kParameterBytes);

void set_padded(ImageFilterBaseGL* filter, const char* key, void* value, size_t bytes) {
    // A bitmap's description holds an address, which numbers from elsewhere must not become.
    if (filter->getParameterType(key) == PARAMETER_TYPE_BITMAP) {
        return;
    }
    if (bytes >= kParameterBytes) {
        filter->setParameters(key, value);
        return;
    }
    alignas(16) unsigned char padded[kParameterBytes] = {};
    std::memcpy(padded, value, bytes);
    filter->setParameters(key, padded);
}

template <typename Value>
void set_value(JNIEnv* env, jlong handle, jstring parametersKey, Value value, const char* line) {
    const UtfChars key(env, parametersKey);
    KORVANE_LOGD("%s", line);
    if (handle != 0 && key.get() != nullptr) {
        set_padded(to_filter(handle), key.get(), &value, sizeof(value));
    }
}

template <typename Array, typename Element>
void set_array(JNIEnv* env, jlong handle, jstring parametersKey, Array array, Element* (JNIEnv::*get)(Array, jboolean*),
               void (JNIEnv::*give_back)(Array, Element*, jint), const char* line) {
    const UtfChars key(env, parametersKey);
    KORVANE_LOGD("%s", line);
    if (array == nullptr) {
        return;
    }
    Element* elements = (env->*get)(array, nullptr);
    if (elements == nullptr) {
        return;
    }
    if (handle != 0 && key.get() != nullptr) {
        ImageFilterBaseGL* filter = to_filter(handle);
        const size_t bytes = static_cast<size_t>(env->GetArrayLength(array)) * sizeof(Element);
        if (bytes >= filter->parameter_bytes(key.get())) {
            set_padded(filter, key.get(), elements, bytes);
        }
    }
    (env->*give_back)(array, elements, 0);
}

}  // namespace

extern "C" {

KORVANE_API jlong FILTERS_RENDER(nativeCreate)(JNIEnv* env, jobject /*object*/, jstring name) {
    // The name's characters stay with the virtual machine: a filter is made once and lives as long as its screen.
    const char* chars = utf_chars(env, name);
    if (chars == nullptr) {
        return 0;
    }
    ImageFilterBaseGL* filter = ImageFilterFactory::createFilter(chars);
    if (filter == nullptr) {
        return 0;
    }
    filter->initEngine();
    if (filter->setupGraphics(1) == 0) {
        delete filter;
        return 0;
    }
    return to_handle(filter);
}

KORVANE_API jlong FILTERS_RENDER(nativeOnSurfaceCreated)(JNIEnv* env, jobject /*object*/, jstring name, jint target) {
    const UtfChars chars(env, name);
    KORVANE_LOGD(FILTERS_RENDER_NAME("nativeOnSurfaceCreated  1\n"));
    ImageFilterBaseGL* filter = ImageFilterFactory::createFilter(chars.get());
    if (filter != nullptr && filter->setupGraphics(static_cast<GLenum>(target)) == 0) {
        delete filter;
        filter = nullptr;
    }
    KORVANE_LOGD("pImageFilterBaseGL:%p\n", static_cast<void*>(filter));
    return to_handle(filter);
}

KORVANE_API void FILTERS_RENDER(nativeSetTexture)(JNIEnv* /*env*/, jobject /*object*/, jlong handle, jint textureID,
                                                  jint inputWidth, jint inputHeight, jint outputWidth,
                                                  jint outputHeight) {
    ImageFilterBaseGL* filter = to_filter(handle);
    KORVANE_LOGD(FILTERS_RENDER_NAME("nativeSetTexture  1 pImageFilterBaseGL:%p\n"), static_cast<void*>(filter));
    if (filter != nullptr) {
        filter->setTexture(textureID, inputWidth, inputHeight, outputWidth, outputHeight);
    }
    KORVANE_LOGD(FILTERS_RENDER_NAME("nativeSetTexture  2 pImageFilterBaseGL:%p\n"), static_cast<void*>(filter));
}

KORVANE_API void FILTERS_RENDER(nativeSetBitmap)(JNIEnv* env, jobject /*object*/, jlong handle, jobject bitmap,
                                                 jint width, jint height) {
    ImageFilterBaseGL* filter = to_filter(handle);
    KORVANE_LOGD(FILTERS_RENDER_NAME("nativeSetBitmap pImageFilterBaseGL:%p\n"), static_cast<void*>(filter));
    const LockedPixels pixels(env, bitmap);
    if (filter != nullptr && pixels.get() != nullptr && width >= 1 && height >= 1) {
        filter->setBitmap(pixels.get(), width, height);
    }
}

KORVANE_API void FILTERS_RENDER(nativeOnDrawFrame)(JNIEnv* /*env*/, jobject /*object*/, jlong handle) {
    if (handle != 0) {
        to_filter(handle)->render();
    }
}

KORVANE_API void FILTERS_RENDER(nativeProcess)(JNIEnv* env, jobject /*object*/, jlong handle, jobject bitmap) {
    AndroidBitmapInfo info = {};
    AndroidBitmap_getInfo(env, bitmap, &info);
    const LockedPixels pixels(env, bitmap);
    if (handle != 0 && pixels.get() != nullptr && info.width != 0 && info.height != 0) {
        to_filter(handle)->process(pixels.get(), static_cast<int>(info.width), static_cast<int>(info.height));
    }
}

KORVANE_API void FILTERS_RENDER(nativeOnSurfaceDestroyed)(JNIEnv* /*env*/, jobject /*object*/, jlong handle) {
    ImageFilterBaseGL* filter = to_filter(handle);
    KORVANE_LOGD(FILTERS_RENDER_NAME("nativeOnSurfaceDestroyed pImageFilterBaseGL:%p\n"), static_cast<void*>(filter));
    delete filter;
}

KORVANE_API jint FILTERS_RENDER(nativeGetParameterType)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                        jstring parametersKey) {
    const UtfChars key(env, parametersKey);
    KORVANE_LOGD(FILTERS_RENDER_NAME("nativeGetParameterType\n"));
    return handle != 0 ? to_filter(handle)->getParameterType(key.get()) : -1;
}

KORVANE_API void FILTERS_RENDER(nativeSetParametersBoolean)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                            jstring parametersKey, jboolean value) {
    set_value(env, handle, parametersKey, value, FILTERS_RENDER_NAME("nativeSetParametersBoolean\n"));
}

KORVANE_API void FILTERS_RENDER(nativeSetParametersBooleanArray)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                                 jstring parametersKey, jbooleanArray value) {
    set_array(env, handle, parametersKey, value, &JNIEnv::GetBooleanArrayElements, &JNIEnv::ReleaseBooleanArrayElements,
              FILTERS_RENDER_NAME("nativeSetParametersBooleanArray\n"));
}

KORVANE_API void FILTERS_RENDER(nativeSetParametersInteger)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                            jstring parametersKey, jint value) {
    set_value(env, handle, parametersKey, value, FILTERS_RENDER_NAME("nativeSetParametersInteger\n"));
}

KORVANE_API void FILTERS_RENDER(nativeSetParametersIntegerArray)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                                 jstring parametersKey, jintArray value) {
    set_array(env, handle, parametersKey, value, &JNIEnv::GetIntArrayElements, &JNIEnv::ReleaseIntArrayElements,
              FILTERS_RENDER_NAME("nativeSetParametersIntegerArray\n"));
}

KORVANE_API void FILTERS_RENDER(nativeSetParametersFloat)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                          jstring parametersKey, jfloat value) {
    set_value(env, handle, parametersKey, value, FILTERS_RENDER_NAME("nativeSetParametersFloat\n"));
}

KORVANE_API void FILTERS_RENDER(nativeSetParametersFloatArray)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                               jstring parametersKey, jfloatArray value) {
    set_array(env, handle, parametersKey, value, &JNIEnv::GetFloatArrayElements, &JNIEnv::ReleaseFloatArrayElements,
              FILTERS_RENDER_NAME("nativeSetParametersFloatArray\n"));
}

KORVANE_API void FILTERS_RENDER(nativeSetParametersDouble)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                           jstring parametersKey, jdouble value) {
    set_value(env, handle, parametersKey, value, FILTERS_RENDER_NAME("nativeSetParametersDouble\n"));
}

KORVANE_API void FILTERS_RENDER(nativeSetParametersDoubleArray)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                                jstring parametersKey, jdoubleArray value) {
    set_array(env, handle, parametersKey, value, &JNIEnv::GetDoubleArrayElements, &JNIEnv::ReleaseDoubleArrayElements,
              FILTERS_RENDER_NAME("nativeSetParametersDoubleArray\n"));
}

KORVANE_API void FILTERS_RENDER(nativeSetParametersLong)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                         jstring parametersKey, jlong value) {
    const UtfChars key(env, parametersKey);
    KORVANE_LOGD(FILTERS_RENDER_NAME("nativeSetParametersLong\n"));
    if (handle != 0 && key.get() != nullptr) {
        // The value is the pointer: a Java long carries a native address to the filter.
        to_filter(handle)->setParameters(key.get(), reinterpret_cast<void*>(value));
    }
}

KORVANE_API void FILTERS_RENDER(nativeSetParametersBitmap)(JNIEnv* env, jobject /*object*/, jlong handle,
                                                           jstring parametersKey, jobject bitmap) {
    UtfChars key(env, parametersKey);
    ImageFilterBaseGL* filter = to_filter(handle);
    KORVANE_LOGD(FILTERS_RENDER_NAME("nativeSetParametersBitmap 1   pImageFilterBaseGL:%p\n"),
                 static_cast<void*>(filter));
    AndroidBitmapInfo info = {};
    AndroidBitmap_getInfo(env, bitmap, &info);
    if (info.width == 0 || info.height == 0) {
        key.keep();
        KORVANE_LOGD(FILTERS_RENDER_NAME("nativeSetParametersBitmap 2   pImageFilterBaseGL:%p\n"),
                     static_cast<void*>(filter));
        return;
    }
    {
        const LockedPixels pixels(env, bitmap);
        auto* carrier = filter != nullptr && pixels.get() != nullptr
                            ? static_cast<FilterBitmap*>(galloc_alloc(kParameterBytes))
                            : nullptr;
        if (carrier != nullptr) {
            const int width = static_cast<int>(info.width);
            *carrier = {pixels.get(), width, static_cast<int>(info.height), 4, width * 4};
            filter->setParameters(key.get(), carrier);
            galloc_free(carrier);
        }
    }
    KORVANE_LOGD(FILTERS_RENDER_NAME("nativeSetParametersBitmap 3   pImageFilterBaseGL:%p\n"),
                 static_cast<void*>(filter));
}

}  // extern "C"
