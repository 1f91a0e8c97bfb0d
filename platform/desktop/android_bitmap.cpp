// SPDX-License-Identifier: Apache-2.0
#include "platform/desktop/android_bitmap.h"

namespace {

// The fields of android.graphics.Bitmap; none of them when `bitmap` is something else.
struct Fields {
    Fields(JNIEnv* env, jobject bitmap) {
        const jclass type = env->GetObjectClass(bitmap);
        pixels = find(env, type, "mPixels", "Ljava/nio/ByteBuffer;");
        width = find(env, type, "mWidth", "I");
        height = find(env, type, "mHeight", "I");
        rowBytes = find(env, type, "mRowBytes", "I");
        lockCount = find(env, type, "mLockCount", "I");
        env->DeleteLocalRef(type);
    }

    bool complete() const {
        return pixels != nullptr && width != nullptr && height != nullptr && rowBytes != nullptr &&
               lockCount != nullptr;
    }

    jfieldID pixels;
    jfieldID width;
    jfieldID height;
    jfieldID rowBytes;
    jfieldID lockCount;

  private:
    static jfieldID find(JNIEnv* env, jclass type, const char* name, const char* signature) {
        const jfieldID field = env->GetFieldID(type, name, signature);
        if (env->ExceptionCheck()) {
            env->ExceptionClear();
            return nullptr;
        }
        return field;
    }
};

void count_lock(JNIEnv* env, jobject bitmap, const Fields& fields, jint step) {
    env->SetIntField(bitmap, fields.lockCount, env->GetIntField(bitmap, fields.lockCount) + step);
}

}  // namespace

int AndroidBitmap_getInfo(JNIEnv* env, jobject jbitmap, AndroidBitmapInfo* info) {
    if (env == nullptr || jbitmap == nullptr || info == nullptr) {
        return ANDROID_BITMAP_RESULT_BAD_PARAMETER;
    }
    const Fields fields(env, jbitmap);
    if (!fields.complete()) {
        return ANDROID_BITMAP_RESULT_JNI_EXCEPTION;
    }
    info->width = static_cast<uint32_t>(env->GetIntField(jbitmap, fields.width));
    info->height = static_cast<uint32_t>(env->GetIntField(jbitmap, fields.height));
    info->stride = static_cast<uint32_t>(env->GetIntField(jbitmap, fields.rowBytes));
    info->format = ANDROID_BITMAP_FORMAT_RGBA_8888;
    info->flags = 0;
    return ANDROID_BITMAP_RESULT_SUCCESS;
}

int AndroidBitmap_lockPixels(JNIEnv* env, jobject jbitmap, void** addrPtr) {
    if (env == nullptr || jbitmap == nullptr || addrPtr == nullptr) {
        return ANDROID_BITMAP_RESULT_BAD_PARAMETER;
    }
    const Fields fields(env, jbitmap);
    if (!fields.complete()) {
        return ANDROID_BITMAP_RESULT_JNI_EXCEPTION;
    }
    count_lock(env, jbitmap, fields, 1);
    const jobject buffer = env->GetObjectField(jbitmap, fields.pixels);
    if (buffer == nullptr) {
        return ANDROID_BITMAP_RESULT_JNI_EXCEPTION;
    }
    // The bitmap itself keeps the buffer, and with it the memory, alive.
    *addrPtr = env->GetDirectBufferAddress(buffer);
    env->DeleteLocalRef(buffer);
    return ANDROID_BITMAP_RESULT_SUCCESS;
}

int AndroidBitmap_unlockPixels(JNIEnv* env, jobject jbitmap) {
    if (env == nullptr || jbitmap == nullptr) {
        return ANDROID_BITMAP_RESULT_BAD_PARAMETER;
    }
    const Fields fields(env, jbitmap);
    if (!fields.complete()) {
        return ANDROID_BITMAP_RESULT_JNI_EXCEPTION;
    }
    count_lock(env, jbitmap, fields, -1);
    return ANDROID_BITMAP_RESULT_SUCCESS;
}
