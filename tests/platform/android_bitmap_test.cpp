// SPDX-License-Identifier: Apache-2.0
#include "platform/bitmap.h"

#include "platform/native_window.h"
#include "tests/support/jvm.h"
#include "tests/support/random_bytes.h"

namespace {

using AndroidBitmapTest = JvmTest;

TEST_F(AndroidBitmapTest, GivesThePixelsWhereTheyLie) {
    const std::vector<unsigned char> bytes = random_bytes(5 * 3 * 4, 1);
    const jobject bitmap = new_bitmap(5, 3, bytes);
    AndroidBitmapInfo info{};
    EXPECT_EQ(AndroidBitmap_getInfo(env, bitmap, &info), ANDROID_BITMAP_RESULT_SUCCESS);
    EXPECT_EQ(info.width, 5U);
    EXPECT_EQ(info.height, 3U);
    EXPECT_EQ(info.stride, 20U);
    EXPECT_EQ(info.format, ANDROID_BITMAP_FORMAT_RGBA_8888);

    void* pixels = nullptr;
    EXPECT_EQ(AndroidBitmap_lockPixels(env, bitmap, &pixels), ANDROID_BITMAP_RESULT_SUCCESS);
    EXPECT_EQ(lock_count(bitmap), 1);
    ASSERT_NE(pixels, nullptr);
    auto* first = static_cast<unsigned char*>(pixels);
    EXPECT_EQ(std::vector<unsigned char>(first, first + bytes.size()), bytes);
    first[59] ^= 0xFF;
    EXPECT_EQ(AndroidBitmap_unlockPixels(env, bitmap), ANDROID_BITMAP_RESULT_SUCCESS);
    EXPECT_EQ(lock_count(bitmap), 0);
    EXPECT_EQ(bitmap_pixels(bitmap)[59], bytes[59] ^ 0xFF);
}

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
