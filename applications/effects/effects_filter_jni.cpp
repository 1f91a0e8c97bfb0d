// SPDX-License-Identifier: Apache-2.0
// The native methods of korvane.effects that serve Filter, FilterRenderer and ProgramCache. A handle is the address of
// an EffectsFilter; Java sees to it that it is alive and in use by one thread at a time.
#include <GLES3/gl3.h>
#include <jni.h>
// After the types that it uses.
#include <GLES2/gl2ext.h>

#include <cstring>

#include "applications/effects/effects_call.h"
#include "applications/effects/effects_filter.h"
#include "applications/effects/effects_filter_table.h"
#include "frameworks/gpu/program_cache.h"
#include "frameworks/jni/array_elements.h"
#include "frameworks/jni/utf_chars.h"

#define EFFECTS(method) JNICALL Java_korvane_effects_Natives_##method

using korvane::answer;
using korvane::ArrayElements;
using korvane::EffectsBitmap;
using korvane::EffectsError;
using korvane::EffectsFilter;
using korvane::UtfChars;

namespace {

EffectsFilter* to_filter(jlong handle) {
    return reinterpret_cast<EffectsFilter*>(handle);
}

const char* text_of(const UtfChars& chars) {
    if (chars.get() == nullptr) {
        throw EffectsError("memory is short");
    }
    return chars.get();
}

void set_values(JNIEnv* env, jlong filter, jstring parameter, jfloatArray values) {
    answer(env, [=] {
        const UtfChars name(env, parameter);
        const ArrayElements<jfloatArray> numbers(env, values);
        to_filter(filter)->set(text_of(name), {numbers.get(), numbers.count()});
    });
}

void set_bitmap(JNIEnv* env, jlong filter, jstring parameter, jobject bitmap, jint width, jint height) {
    answer(env, [=] {
        const UtfChars chars(env, parameter);
        const char* name = text_of(chars);
        const EffectsBitmap pixels(env, bitmap, width, height);
        to_filter(filter)->set_bitmap(name, pixels.pixels(), width, height);
    });
}

}  // namespace

extern "C" {

JNIEXPORT jstring EFFECTS(setProgramCacheDirectory)(JNIEnv* env, jclass /*type*/, jstring directory) {
    const UtfChars path(env, directory);
    const int error = korvane::set_program_cache_directory(path.get());
    return error == 0 ? nullptr : env->NewStringUTF(std::strerror(error));
}

JNIEXPORT jstring EFFECTS(filterTable)(JNIEnv* env, jclass /*type*/) {
    return answer(env, [=] { return env->NewStringUTF(korvane::filter_table().c_str()); });
}

JNIEXPORT jlong EFFECTS(filterOpen)(JNIEnv* env, jclass /*type*/, jstring name) {
    return answer(env, [=] {
        const UtfChars chars(env, name);
        return reinterpret_cast<jlong>(EffectsFilter::open_offscreen(text_of(chars)).release());
    });
}

JNIEXPORT void EFFECTS(filterApply)(JNIEnv* env, jclass /*type*/, jlong filter, jobject bitmap, jint width,
                                    jint height) {
    answer(env, [=] {
        const EffectsBitmap pixels(env, bitmap, width, height);
        to_filter(filter)->apply(pixels.pixels(), width, height);
    });
}

JNIEXPORT void EFFECTS(filterSet)(JNIEnv* env, jclass /*type*/, jlong filter, jstring parameter, jfloatArray values) {
    set_values(env, filter, parameter, values);
}

JNIEXPORT void EFFECTS(filterSetBitmap)(JNIEnv* env, jclass /*type*/, jlong filter, jstring parameter, jobject bitmap,
                                        jint width, jint height) {
    set_bitmap(env, filter, parameter, bitmap, width, height);
}

JNIEXPORT void EFFECTS(filterClose)(JNIEnv* /*env*/, jclass /*type*/, jlong filter) {
    delete to_filter(filter);
}

JNIEXPORT jlong EFFECTS(surfaceFilterOpen)(JNIEnv* env, jclass /*type*/, jstring name) {
    return answer(env, [=] {
        const UtfChars chars(env, name);
        return reinterpret_cast<jlong>(EffectsFilter::open_on_surface(text_of(chars)).release());
    });
}

JNIEXPORT void EFFECTS(surfaceFilterDraw)(JNIEnv* env, jclass /*type*/, jlong filter, jint texture, jint inputWidth,
                                          jint inputHeight, jint outputWidth, jint outputHeight) {
    answer(env, [=] { to_filter(filter)->draw(texture, inputWidth, inputHeight, outputWidth, outputHeight); });
}

JNIEXPORT void EFFECTS(surfaceFilterSet)(JNIEnv* env, jclass /*type*/, jlong filter, jstring parameter,
                                         jfloatArray values) {
    set_values(env, filter, parameter, values);
}

JNIEXPORT void EFFECTS(surfaceFilterSetBitmap)(JNIEnv* env, jclass /*type*/, jlong filter, jstring parameter,
                                               jobject bitmap, jint width, jint height) {
    set_bitmap(env, filter, parameter, bitmap, width, height);
}

JNIEXPORT void EFFECTS(surfaceFilterClose)(JNIEnv* /*env*/, jclass /*type*/, jlong filter) {
    delete to_filter(filter);
}

JNIEXPORT jint EFFECTS(createCameraTexture)(JNIEnv* env, jclass /*type*/) {
    return answer(env, [] {
        if (eglGetCurrentContext() == EGL_NO_CONTEXT) {
            throw EffectsError("no OpenGL ES context is current on this thread");
        }
        GLuint texture = 0;
        glGenTextures(1, &texture);
        glBindTexture(GL_TEXTURE_EXTERNAL_OES, texture);
        glTexParameteri(GL_TEXTURE_EXTERNAL_OES, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_EXTERNAL_OES, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glBindTexture(GL_TEXTURE_EXTERNAL_OES, 0);
        return static_cast<jint>(texture);
    });
}

JNIEXPORT void EFFECTS(deleteCameraTexture)(JNIEnv* /*env*/, jclass /*type*/, jint texture) {
    const auto name = static_cast<GLuint>(texture);
    glDeleteTextures(1, &name);
}

}  // extern "C"
