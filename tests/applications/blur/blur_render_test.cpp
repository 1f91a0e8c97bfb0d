// SPDX-License-Identifier: Apache-2.0
#include <utility>
#include <vector>

#include "algorithms/alpha_blend.h"
#include "algorithms/stack_blur.h"
#include "tests/support/jvm.h"
#include "tests/support/random_bytes.h"

namespace {

using BlurRenderTest = JvmTest;

// Bitmaps of 31 x 23 random pixels, of which the call works on the first width * height. 13 pixels are one step of
// eight and a tail of five that keeps its blurred values.
TEST_F(BlurRenderTest, BlursAndThenDims) {
    const std::vector<unsigned char> before = random_bytes(31 * 23 * 4, 5);
    const jobject render = new_object("com/tervo/media/render/BlurRender", "()V");
    const auto process = [&](jobject bitmap, int width, int height, int radius, int alpha) {
        call_void(render, "nativeProcess", "(Landroid/graphics/Bitmap;IIIII)V", bitmap, width, height, radius,
                  static_cast<int>(0xFF102030), alpha);
        EXPECT_EQ(bitmap == nullptr ? 0 : lock_count(bitmap), 0);
    };
    for (const auto& [width, height] : {std::pair(31, 23), {13, 1}, {0, 23}, {31, -1}, {-4, -8}}) {
        for (const int radius : {-1, 0, 7, 254, 300}) {
            for (const int alpha : {0, 1, 128, 256}) {
                std::vector<unsigned char> expected = before;
                if (width > 0 && height > 0) {
                    stack_blur(expected.data(), width, height, radius);
                    alpha_blend_neon(expected.data(), width * height, 0x10, 0x20, 0x30, alpha);
                }
                env->PushLocalFrame(8);
                const jobject bitmap = new_bitmap(31, 23, before);
                process(bitmap, width, height, radius, alpha);
                EXPECT_EQ(bitmap_pixels(bitmap), expected)
                    << width << " x " << height << ", radius " << radius << ", alpha " << alpha;
                env->PopLocalFrame(nullptr);
            }
        }
    }
    const jobject bitmap = new_bitmap(31, 23, before);
    call_void(bitmap, "recycle", "()V");
    process(bitmap, 31, 23, 9, 128);
    process(nullptr, 31, 23, 9, 128);
}

}  // namespace
