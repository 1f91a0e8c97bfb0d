// SPDX-License-Identifier: Apache-2.0
#include "platform/bitmap.h"

#include "platform/native_window.h"
#include "tests/support/jvm.h"

namespace {

using AndroidBitmapTest = JvmTest;

// What it gives for good bitmaps is what all tests of Java methods work on.
TEST_F(AndroidBitmapTest, AnswersErrorsWithoutLeavingAnException) {
    const jobject bitmap = new_bitmap(2, 2, std::vector<unsigned char>(16));
    call_void(bitmap, "recycle", "()V");
    void* pixels = nullptr;
    EXPECT_EQ(AndroidBitmap_lockPixels(env, bitmap, &pixels), ANDROID_BITMAP_RESULT_JNI_EXCEPTION);
    EXPECT_EQ(pixels, nullptr);
    EXPECT_EQ(lock_count(bitmap), 1);
    EXPECT_EQ(AndroidBitmap_unlockPixels(env, bitmap), ANDROID_BITMAP_RESULT_SUCCESS);
    EXPECT_EQ(lock_count(bitmap), 0);

    AndroidBitmapInfo info{};
    const jobject other = string("no bitmap");
    EXPECT_EQ(AndroidBitmap_getInfo(env, other, &info), ANDROID_BITMAP_RESULT_JNI_EXCEPTION);
    EXPECT_EQ(AndroidBitmap_lockPixels(env, other, &pixels), ANDROID_BITMAP_RESULT_JNI_EXCEPTION);
    EXPECT_EQ(AndroidBitmap_unlockPixels(env, other), ANDROID_BITMAP_RESULT_JNI_EXCEPTION);
    EXPECT_EQ(AndroidBitmap_getInfo(env, nullptr, &info), ANDROID_BITMAP_RESULT_BAD_PARAMETER);
    EXPECT_EQ(AndroidBitmap_lockPixels(env, bitmap, nullptr), ANDROID_BITMAP_RESULT_BAD_PARAMETER);
    EXPECT_EQ(AndroidBitmap_unlockPixels(env, nullptr), ANDROID_BITMAP_RESULT_BAD_PARAMETER);
}

TEST(AndroidNativeWindow, KeepsTheGeometryAskedFor) {
    ANativeWindow window;
    EXPECT_EQ(ANativeWindow_setBuffersGeometry(&window, 0, 0, 33), 0);
    EXPECT_EQ(window.format, 33);
    EXPECT_EQ(ANativeWindow_setBuffersGeometry(&window, -1, 0, 1), -1);
    EXPECT_EQ(window.format, 33);
    EXPECT_EQ(ANativeWindow_setBuffersGeometry(nullptr, 0, 0, 1), -1);
}

}  // namespace
