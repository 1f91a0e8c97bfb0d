// SPDX-License-Identifier: Apache-2.0
#include "algorithms/fast_blur.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <vector>

#include "tests/algorithms/window_sum.h"
#include "tests/support/guarded_bytes.h"
#include "tests/support/random_bytes.h"
#include "tests/support/simd_targets.h"

namespace {

using Bytes = std::vector<unsigned char>;

struct Case {
    int width, height, radius;
};

// Black and white half of the time, so that sums reach their limits.
Bytes source(const Case& c) {
    const size_t bytesOfImage = static_cast<size_t>(c.width) * static_cast<size_t>(c.height) * 4;
    Bytes bytes = random_bytes(bytesOfImage, static_cast<uint32_t>(c.width * 131 + c.height));
    if (c.radius % 2 == 0) {
        std::transform(bytes.begin(), bytes.end(), bytes.begin(), [](auto b) { return b < 32 ? 0 : 255; });
    }
    return bytes;
}

Bytes expected(const Bytes& src, const Case& c) {
    const int radius = std::min({c.radius, c.width, c.height});
    const int divisor = 2 * radius + 1;
    const size_t stride = static_cast<size_t>(c.width) * 4;
    Bytes rows(src.size());
    Bytes result(src.size(), 0xFF);
    for (size_t channel = 0; channel < 3; ++channel) {
        for (int y = 0; y < c.height; ++y) {
            const size_t row = static_cast<size_t>(y) * stride + channel;
            const WindowSum sum(src.data() + row, c.width, 4);
            for (int x = 0; x < c.width; ++x) {
                rows[row + static_cast<size_t>(x) * 4] = static_cast<unsigned char>(sum(x, radius) / divisor);
            }
        }
        for (int x = 0; x < c.width; ++x) {
            const size_t column = static_cast<size_t>(x) * 4 + channel;
            const WindowSum sum(rows.data() + column, c.height, stride);
            // A window that reaches the height counts a black pixel for the first one below the image.
            const long missing = radius == c.height ? sum.value(c.height - 1) : 0;
            for (int y = 0; y < c.height; ++y) {
                result[column + static_cast<size_t>(y) * stride] =
                    static_cast<unsigned char>((sum(y, radius) - missing) / divisor);
            }
        }
    }
    return result;
}

std::vector<Case> cases() {
    std::vector<Case> result;
    for (const int height : {1, 2, 3, 15, 16, 17, 33, 50}) {
        for (const int width : {1, 2, 3, 4, 5, 15, 16, 17, 19, 31, 32, 33, 47, 64, 65, 66, 67, 131}) {
            for (const int radius : {1, 2, 3, 7, 16, 33, 60}) {
                result.push_back({width, height, radius});
            }
        }
    }
    for (int radius = 4; radius < 128; ++radius) {  // every division of the narrow sums
        result.push_back({radius + 3, radius + 1, radius});
    }
    for (const int radius : {127, 128, 129, 255, 300, INT_MAX}) {
        result.push_back({283, 290, radius});
        result.push_back({260, 133, radius});
    }
    return result;
}

TEST(FastBlur, EqualsThePlainMeanForEverySizeAndRadius) {
    const std::vector<Case> all = cases();
    std::vector<Bytes> results(all.size());
    std::transform(all.begin(), all.end(), results.begin(), [](const Case& c) { return expected(source(c), c); });
    for_each_simd_target([&](const std::string&) {
        for (size_t i = 0; i < all.size(); ++i) {
            const auto& [width, height, radius] = all[i];
            SCOPED_TRACE(testing::Message() << width << 'x' << height << " radius " << radius);
            const Bytes bytes = source(all[i]);
            // Apart, in place, and overlapping by all but some pixels.
            GuardedBytes dst(Bytes(bytes.size(), 1), i % 5);
            const size_t shift = i % (bytes.size() / 4);
            std::vector<uint32_t> src(bytes.size() / 4 + shift);
            auto* inPlace = reinterpret_cast<unsigned char*>(src.data());
            for (unsigned char* to : {dst.data(), inPlace, inPlace + 4 * shift}) {
                std::memcpy(src.data(), bytes.data(), bytes.size());
                fast_blur(src.data(), to, width, height, radius);
                ASSERT_EQ(std::memcmp(to, results[i].data(), bytes.size()), 0)
                    << (to == dst.data() ? "apart" : "over it");
                ASSERT_TRUE(to != dst.data() || std::memcmp(src.data(), bytes.data(), bytes.size()) == 0);
            }
            ASSERT_TRUE(dst.intact());
        }
    });
}

TEST(FastBlur, NothingToDoLeavesTheResultUntouched) {
    uint32_t src[4] = {1, 2, 3, 4};
    unsigned char dst[16] = {7, 7, 7, 7};
    const Bytes before(dst, dst + 16);
    const Case refused[] = {
        {2, 2, 0}, {2, 2, -1},  {2, 2, INT_MIN}, {0, 2, 1},
        {2, 0, 1}, {-1, -1, 1}, {INT_MIN, 2, 1}, {INT_MAX, INT_MAX, INT_MAX}};  // the last: no memory for its sums
    for_each_simd_target([&](const std::string&) {
        for (const auto& [width, height, radius] : refused) {
            fast_blur(src, dst, width, height, radius);
            EXPECT_EQ(Bytes(dst, dst + 16), before) << width << 'x' << height << " radius " << radius;
        }
        fast_blur(nullptr, dst, 2, 2, 1);
        fast_blur(src, nullptr, 2, 2, 1);
        EXPECT_EQ(Bytes(dst, dst + 16), before);
    });
}

}  // namespace
