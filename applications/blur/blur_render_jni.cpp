// SPDX-License-Identifier: Apache-2.0
// The native method of com.tervo.media.render.BlurRender.
#include <jni.h>

#include "applications/blur/blur_render.h"
#include "frameworks/core/export.h"
#include "frameworks/jni/locked_bitmap.h"

// The bitmap must have at least width * height pixels of 4 bytes and rows without gaps; this is not checked.
extern "C" KORVANE_API void Java_com_tervo_media_render_BlurRender_nativeProcess(JNIEnv* env, jobject /*object*/,
                                                                                 jobject bitmap, jint width,
                                                                                 jint height, jint radius,
                                                                                 jint blendColor, jint blendAlpha) {
    const korvane::LockedBitmap locked(env, bitmap);
    korvane::blur_and_dim(locked.pixels(), width, height, radius, blendColor, blendAlpha);
}
