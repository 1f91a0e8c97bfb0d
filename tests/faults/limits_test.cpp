// SPDX-License-Identifier: Apache-2.0
// Sizes at which a product leaves 31 or 32 bits, and pictures that are one pixel wide or high. Sources are pages that
// nobody wrote to, which take no memory. The native methods get such sizes with arrays and bitmaps that are small.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <memory>
#include <vector>

#include "algorithms/alpha_blend.h"
#include "algorithms/fast_detection.h"
#include "algorithms/gauss_blur.h"
#include "algorithms/stack_blur.h"
#include "applications/pano/panorama_interface.h"
#include "applications/super_capture/merge_kernels.h"
#include "frameworks/images/color_convert.h"
#include "tests/support/jvm.h"
#include "tests/support/native_methods.h"
#include "tests/support/random_bytes.h"

namespace {

using Bytes = std::vector<unsigned char>;

std::shared_ptr<unsigned char[]> large_bytes(size_t count) {
    void* bytes = mmap(nullptr, count, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    EXPECT_NE(bytes, MAP_FAILED);
    return {static_cast<unsigned char*>(bytes), [=](void* start) { munmap(start, count); }};
}

TEST(Limits, BytesBeyondTwoGiBAreSeen) {
    {
        constexpr size_t kBytes = (size_t{1} << 32) + 5;
        const auto plane = large_bytes(kBytes);
        plane[kBytes - 1] = 7;
        EXPECT_EQ(korvane::luma_sum(plane.get(), kBytes), 7U);
    }
    {
        // A bright point has a circle that is darker all round.
        constexpr int kWidth = 65536;
        constexpr int kHeight = 36000;
        const auto gray = large_bytes(size_t{kWidth} * kHeight);
        gray[size_t{kWidth} * (kHeight - 10) - 20] = 255;
        const FastParams params = {50, 1, 2, 0, 3, 3};
        std::vector<KeyPoint> corners;
        fast16(gray.get(), corners, kWidth, kHeight, &params);
        ASSERT_EQ(corners.size(), 1U);
        EXPECT_EQ(corners[0].x, kWidth - 20);
        EXPECT_EQ(corners[0].y, kHeight - 11);
    }
    {
        constexpr int kWidth = 32768;
        constexpr int kHeight = 21846;
        constexpr size_t kPixels = size_t{kWidth} * kHeight;
        const auto rgb = large_bytes(kPixels * 3);
        const auto gray = large_bytes(kPixels);
        std::fill_n(&rgb[kPixels * 3 - 3], 3, 255);
        ASSERT_EQ(color_convert_rgb2gray(rgb.get(), gray.get(), kWidth, kHeight), 1);
        EXPECT_GE(gray[kPixels - 1], 254);
        EXPECT_EQ(gray[kPixels - 2], 0);
    }
    {
        constexpr int kPixels = (1 << 29) + 3;
        const auto pixels = large_bytes(size_t{kPixels} * 4);
        alpha_blend(pixels.get(), kPixels, 200, 100, 50, 256);
        EXPECT_EQ(pixels[size_t{kPixels} * 4 - 4], 200);
        EXPECT_EQ(pixels[size_t{kPixels} * 4 - 1], 0);
    }
}

// A column blurs as a row does.
TEST(Limits, ColumnsAndRowsOfOnePixel) {
    constexpr int kLength = 1 << 20;
    const std::function<void(unsigned char*, unsigned char*, int, int)> blurs[] = {
        [](unsigned char* from, unsigned char* to, int w, int h) {
            stack_blur(from, w, h, 254);
            std::copy_n(from, size_t{kLength} * 4, to);
        },
        [](unsigned char* from, unsigned char* to, int w, int h) { box_blur(from, to, w, h, 40); },
        [](unsigned char* from, unsigned char* to, int w, int h) { gauss_blur(from, to, w, h, 9); },
    };
    for (const auto& blur : blurs) {
        Bytes row(size_t{kLength} * 4);
        Bytes column = row;
        blur(random_bytes(row.size(), 1).data(), row.data(), kLength, 1);
        blur(random_bytes(row.size(), 1).data(), column.data(), 1, kLength);
        EXPECT_TRUE(row == column) << &blur - blurs;
    }
}

class NativeLimits : public JvmTest {
  protected:
    bool was_refused() {
        const bool isPending = env->ExceptionCheck() != JNI_FALSE;
        env->ExceptionClear();
        return isPending;
    }
};

TEST_F(NativeLimits, SizesThatNoArrayOrBitmapHas) {
    constexpr jint kMost = std::numeric_limits<jint>::max();
    const jobject sweep = new_object("com/tervo/media/effects/pano/PanoramaModule", "()V");
    const jobject mode = new_object("RecordingMode", "()V");
    const Bytes pixels = random_bytes(48, 3);
    const jobject bitmap = new_bitmap(4, 3, pixels);
    const jbyteArray array = env->NewByteArray(64);
    const jlong filter = EFFECTS(filterOpen)(env, nullptr, string("ImageFilterXray"));
    for (const auto& [width, height] : {std::pair{kMost, 1},
                                        {1, kMost},
                                        {kMost, kMost},
                                        {46341, 46341},
                                        {65536, 65536},
                                        {0, 0},
                                        {-1, -1},
                                        {-kMost - 1, 2}}) {
        SCOPED_TRACE(testing::Message() << width << " x " << height);
        // The first frame is the reference. More bytes than an int counts are memory that cannot be had.
        const jlong panorama = PANORAMA(nativeCreate)(env, sweep, width, height, 1);
        EXPECT_EQ(panorama != 0, width > 0);
        EXPECT_EQ(PANORAMA(nativeProcess)(env, sweep, panorama, array, 1, 1), panorama != 0 ? 3 : 0);
        EXPECT_EQ(PANORAMA(nativeProcess)(env, sweep, panorama, array, 1, 1), panorama != 0 ? 1 : 0);
        delete reinterpret_cast<PanoramaInterface*>(panorama);

        const jlong light = MODE(nativeCreate)(env, mode, width, height, 17);
        MODE(nativeProcess)(env, mode, light, array);
        MODE(nativeDestroy)(env, mode, light);
        EXPECT_EQ(int_field(mode, "reports"), 0);

        EFFECTS(blur)(env, nullptr, bitmap, width, height, 5, 0, 100);
        EXPECT_TRUE(was_refused());
        EFFECTS(palette)(env, nullptr, bitmap, width, height, 4);
        EXPECT_TRUE(was_refused());
        EFFECTS(filterApply)(env, nullptr, filter, bitmap, width, height);
        EXPECT_TRUE(was_refused());
        const jlong burst = EFFECTS(burstOpen)(env, nullptr, width, height);
        EXPECT_EQ(was_refused(), burst == 0);
        EFFECTS(burstClose)(env, nullptr, burst);
    }
    EFFECTS(filterClose)(env, nullptr, filter);
    EXPECT_EQ(bitmap_pixels(bitmap), pixels);
    EXPECT_EQ(lock_count(bitmap), 0);
}

}  // namespace
