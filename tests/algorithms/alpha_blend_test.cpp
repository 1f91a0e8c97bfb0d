#include "algorithms/alpha_blend.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <string>
#include <vector>

#include "algorithms/alpha_blend_scalar.h"
#include "tests/support/random_bytes.h"
#include "tests/support/simd_targets.h"

namespace {

using Blend = void(unsigned char*, int, int, int, int, int);

struct Colour {
    int r, g, b;
};

unsigned char blended_byte(int c, int64_t colour, int64_t weight, int64_t inverse) {
    return static_cast<unsigned char>((weight * colour + c * inverse) >> 8);
}

// What both blends promise, pixel by pixel; `stepped` is the one of the bitmap path.
std::vector<unsigned char> expected_blend(std::vector<unsigned char> bytes, size_t at, int size, Colour colour, int a,
                                          bool stepped) {
    const int64_t inverse = stepped ? (256 - int64_t{a}) & 255 : 256 - int64_t{a};
    const int count = stepped ? size / 8 * 8 : size;
    for (int i = 0; i < count; ++i, at += 4) {
        bytes[at] = blended_byte(bytes[at], colour.r, a, inverse);
        bytes[at + 1] = blended_byte(bytes[at + 1], colour.g, a, inverse);
        bytes[at + 2] = blended_byte(bytes[at + 2], colour.b, a, inverse);
    }
    return bytes;
}

// The buffer is larger than the pixels on both sides, so a stray write shows.
void expect_blend(Blend blend, bool stepped, int size, size_t misalignment, Colour colour, int a) {
    const size_t at = 64 + misalignment;
    const size_t pixels = size > 0 ? static_cast<size_t>(size) : 0;
    const std::vector<unsigned char> before = random_bytes(at + pixels * 4 + 128, static_cast<uint32_t>(size));
    std::vector<unsigned char> after = before;
    blend(after.data() + at, size, colour.r, colour.g, colour.b, a);
    ASSERT_EQ(after, expected_blend(before, at, size, colour, a, stepped))
        << (stepped ? "stepped" : "plain") << " size " << size << " offset " << misalignment << " a " << a;
}

void expect_both(int size, size_t misalignment, Colour colour, int a) {
    expect_blend(alpha_blend, false, size, misalignment, colour, a);
    expect_blend(alpha_blend_neon, true, size, misalignment, colour, a);
    expect_blend(alpha_blend_scalar, false, size, misalignment, colour, a);
    expect_blend(alpha_blend_neon_scalar, true, size, misalignment, colour, a);
}

TEST(AlphaBlend, FollowsTheFormulaForEveryWeightAndSize) {
    for_each_simd_target([](const std::string&) {
        for (int a = 0; a <= 256; ++a) {
            expect_both(77, 0, {0, 255, a & 255}, a);
        }
        for (int size = -9; size <= 83; ++size) {
            for (const int a : {0, 1, 128, 256}) {
                expect_both(size, static_cast<size_t>(size + 9) % 5, {16, 32, 48}, a);
            }
        }
        expect_both(INT_MIN, 0, {1, 2, 3}, 100);
    });
}

TEST(AlphaBlend, WrapsWithArgumentsOutOfRange) {
    for_each_simd_target([](const std::string&) {
        for (const int a : {-1, -300, 257, 511, 70000, INT_MAX, INT_MIN}) {
            expect_both(41, 1, {-1, 256, 100000}, a);
            expect_both(41, 1, {INT_MIN, INT_MAX, 7}, a);
        }
    });
}

TEST(AlphaBlend, LeavesTheTailAndBlackensAtWeightZeroOnTheBitmapPath) {
    for_each_simd_target([](const std::string&) {
        std::vector<unsigned char> pixels(13 * 4, 200);
        alpha_blend_neon(pixels.data(), 13, 16, 32, 48, 0);
        for (size_t i = 0; i < pixels.size(); ++i) {
            const bool black = i < 8 * 4 && i % 4 != 3;
            ASSERT_EQ(pixels[i], black ? 0 : 200) << "byte " << i;
        }
        alpha_blend(pixels.data(), 13, 16, 32, 48, 256);
        ASSERT_EQ(std::vector<unsigned char>(pixels.end() - 4, pixels.end()),
                  (std::vector<unsigned char>{16, 32, 48, 200}));
    });
}

}  // namespace
