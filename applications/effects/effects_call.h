// SPDX-License-Identifier: Apache-2.0
// How the native methods of the Java package korvane.effects answer: with a result, or with a Java exception that says
// why there is none.
#ifndef KORVANE_APPLICATIONS_EFFECTS_EFFECTS_CALL_H_
#define KORVANE_APPLICATIONS_EFFECTS_EFFECTS_CALL_H_

#include <jni.h>

#include <exception>
#include <stdexcept>

#include "frameworks/jni/locked_bitmap.h"

namespace korvane {

// The reason, in words, for the user of the Java class.
class EffectsError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Makes an IllegalStateException pending. One that Java raised itself stays in its place: it says more.
inline void throw_illegal_state(JNIEnv* env, const char* reason) {
    if (env->ExceptionCheck() == JNI_TRUE) {
        return;
    }
    const jclass type = env->FindClass("java/lang/IllegalStateException");
    if (type != nullptr) {
        env->ThrowNew(type, reason);
    }
}

// What `work` returns. Where it throws, 0 or null with a Java exception pending.
template <typename Work>
auto answer(JNIEnv* env, Work work) -> decltype(work()) {
    try {
        return work();
    } catch (const EffectsError& error) {
        throw_illegal_state(env, error.what());
    } catch (const std::exception&) {
        throw_illegal_state(env, "memory is short");
    }
    return decltype(work())();
}

// The pixels of a bitmap that Java has found to be ARGB_8888 of this size, rows without gaps. Another thread may have
// recycled or changed the bitmap meanwhile, so what is locked is looked at again.
class EffectsBitmap {
  public:
    EffectsBitmap(JNIEnv* env, jobject bitmap, int width, int height) : m_Locked(env, bitmap) {
        const AndroidBitmapInfo info = bitmap_info(env, bitmap);
        const auto columns = static_cast<uint32_t>(width);
        if (m_Locked.pixels() == nullptr || info.format != ANDROID_BITMAP_FORMAT_RGBA_8888 || info.width != columns ||
            info.height != static_cast<uint32_t>(height) || info.stride != columns * 4) {
            throw EffectsError("the bitmap was recycled or changed by another thread");
        }
    }

    unsigned char* pixels() const { return m_Locked.pixels(); }

  private:
    LockedBitmap m_Locked;
};

}  // namespace korvane

#endif  // KORVANE_APPLICATIONS_EFFECTS_EFFECTS_CALL_H_
