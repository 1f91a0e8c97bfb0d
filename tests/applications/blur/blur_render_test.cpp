// SPDX-License-Identifier: Apache-2.0
#include <utility>
#include <vector>

#include "algorithms/alpha_blend.h"
#include "algorithms/stack_blur.h"
#include "tests/support/jvm.h"
#include "tests/support/random_bytes.h"

namespace {

class BlurRenderTest : public JvmTest {
  protected:
    void process(jobject bitmap, int width, int height, int radius, int color, int alpha) {
        const jobject render = new_object("com/tervo/media/render/BlurRender", "()V");
        call_void(render, "nativeProcess", "(Landroid/graphics/Bitmap;IIIII)V", bitmap, width, height, radius, color,
                  alpha);
    }

    // A bitmap of 31 x 23 random pixels, of which the call works on the first width * height.
    std::vector<unsigned char> processed(int width, int height, int radius, int color, int alpha) {
        EXPECT_EQ(env->PushLocalFrame(32), 0);
        const jobject bitmap = new_bitmap(kWidth, kHeight, m_Before);
        process(bitmap, width, height, radius, color, alpha);
        EXPECT_EQ(lock_count(bitmap), 0);
        std::vector<unsigned char> pixels = bitmap_pixels(bitmap);
        env->PopLocalFrame(nullptr);
        return pixels;
    }

    static constexpr int kWidth = 31;
    static constexpr int kHeight = 23;
    const std::vector<unsigned char> m_Before = random_bytes(kWidth * kHeight * 4, 5);
};

// 13 pixels are one step of eight and a tail of five that keeps its blurred values.
TEST_F(BlurRenderTest, BlursAndThenDims) {
    for (const auto& [width, height] : {std::pair(kWidth, kHeight), {13, 1}}) {
        for (const int radius : {-1, 0, 1, 2, 7, 25, 100, 254, 300}) {
            for (const int alpha : {0, 1, 128, 256}) {
                std::vector<unsigned char> expected = m_Before;
                stack_blur(expected.data(), width, height, radius);
                alpha_blend_neon(expected.data(), width * height, 0x10, 0x20, 0x30, alpha);
                EXPECT_EQ(processed(width, height, radius, static_cast<int>(0xFF102030), alpha), expected)
                    << width << " x " << height << ", radius " << radius << ", alpha " << alpha;
            }
        }
    }
}

TEST_F(BlurRenderTest, TouchesNothingWithoutASizeOrPixels) {
    EXPECT_EQ(processed(0, kHeight, 9, 0, 128), m_Before);
    EXPECT_EQ(processed(kWidth, -1, 9, 0, 128), m_Before);
    EXPECT_EQ(processed(-4, -8, 9, 0, 128), m_Before);
    const jobject bitmap = new_bitmap(kWidth, kHeight, m_Before);
    call_void(bitmap, "recycle", "()V");
    process(bitmap, kWidth, kHeight, 9, 0, 128);
    EXPECT_EQ(lock_count(bitmap), 0);
    process(nullptr, kWidth, kHeight, 9, 0, 128);
}

}  // namespace
