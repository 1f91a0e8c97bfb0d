// SPDX-License-Identifier: Apache-2.0
// The desktop twin of Android's bitmap functions, over the desktop's own android.graphics.Bitmap
// (java/android/graphics).
//
// Pixels are RGBA, rows packed, in a direct byte buffer. The Java object counts locks, so that a test sees an entry
// that forgets to give one back: every call of lockPixels counts one up and every unlockPixels one down, also where the
// bitmap is recycled and has no pixels to give.
#ifndef KORVANE_PLATFORM_DESKTOP_ANDROID_BITMAP_H_
#define KORVANE_PLATFORM_DESKTOP_ANDROID_BITMAP_H_

#include <jni.h>

#include <cstdint>

enum {
    ANDROID_BITMAP_RESULT_SUCCESS = 0,
    ANDROID_BITMAP_RESULT_BAD_PARAMETER = -1,
    ANDROID_BITMAP_RESULT_JNI_EXCEPTION = -2,
    ANDROID_BITMAP_RESULT_ALLOCATION_FAILED = -3,
};

enum AndroidBitmapFormat {
    ANDROID_BITMAP_FORMAT_NONE = 0,
    ANDROID_BITMAP_FORMAT_RGBA_8888 = 1,
};

struct AndroidBitmapInfo {
    uint32_t width;   // in pixels
    uint32_t height;  // in pixels
    uint32_t stride;  // bytes a row
    int32_t format;   // an AndroidBitmapFormat
    uint32_t flags;   // 0
};

extern "C" {

// Fills `info`. BAD_PARAMETER for a null argument, JNI_EXCEPTION for an object that is no bitmap.
int AndroidBitmap_getInfo(JNIEnv* env, jobject jbitmap, AndroidBitmapInfo* info);

// Stores the address of the first pixel; it is valid until the unlock. JNI_EXCEPTION for a recycled bitmap, and then
// *addrPtr is left as it was.
int AndroidBitmap_lockPixels(JNIEnv* env, jobject jbitmap, void** addrPtr);

int AndroidBitmap_unlockPixels(JNIEnv* env, jobject jbitmap);

}  // extern "C"

#endif  // KORVANE_PLATFORM_DESKTOP_ANDROID_BITMAP_H_
