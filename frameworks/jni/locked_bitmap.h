// SPDX-License-Identifier: Apache-2.0
// LockedBitmap: the pixels of an android.graphics.Bitmap, locked until the end of the scope.
#ifndef KORVANE_FRAMEWORKS_JNI_LOCKED_BITMAP_H_
#define KORVANE_FRAMEWORKS_JNI_LOCKED_BITMAP_H_

#include <jni.h>

#include "platform/bitmap.h"

namespace korvane {

class LockedBitmap {
  public:
    // Only pixels() tells whether the lock was had. The unlock follows in either case: every lock call is answered by
    // one unlock call.
    LockedBitmap(JNIEnv* env, jobject bitmap) : m_Env(env), m_Bitmap(bitmap) {
        AndroidBitmap_lockPixels(env, bitmap, &m_Pixels);
    }

    ~LockedBitmap() { AndroidBitmap_unlockPixels(m_Env, m_Bitmap); }

    LockedBitmap(const LockedBitmap&) = delete;
    LockedBitmap& operator=(const LockedBitmap&) = delete;

    // The first byte of the first row; null for no bitmap and for one that gives no pixels.
    unsigned char* pixels() const { return static_cast<unsigned char*>(m_Pixels); }

  private:
    JNIEnv* m_Env;
    jobject m_Bitmap;
    void* m_Pixels = nullptr;
};

// Width, height, stride in bytes and format. All are 0 when the bitmap does not tell.
inline AndroidBitmapInfo bitmap_info(JNIEnv* env, jobject bitmap) {
    AndroidBitmapInfo info = {};
    AndroidBitmap_getInfo(env, bitmap, &info);
    return info;
}

}  // namespace korvane

#endif  // KORVANE_FRAMEWORKS_JNI_LOCKED_BITMAP_H_
