// SPDX-License-Identifier: Apache-2.0
#include "algorithms/stack_blur.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <climits>
#include <string>
#include <utility>
#include <vector>

#include "algorithms/stack_blur_tables.h"
#include "tests/algorithms/window_sum.h"
#include "tests/support/guarded_bytes.h"
#include "tests/support/simd_targets.h"

namespace {

struct Case {
    Case(int width, int height, int blurRadius)
        : w(width),
          h(height),
          radius(blurRadius),
          before(random_picture(w, h, 4, static_cast<uint32_t>(w * 1001 + h))) {
        // Windows of every radius up to the given one, one on another, weigh as a triangle does.
        const auto blurred = [&](const WindowSum& sum, int i) {
            uint64_t total = 0;
            for (int each = 0; each <= radius; ++each) {
                total += static_cast<uint64_t>(sum(i, each));
            }
            const auto index = static_cast<size_t>(radius);
            return (total * stackblur_mul[index]) >> stackblur_shr[index];
        };
        expected = plain_pass(false, plain_pass(true, before, w, h, 4, radius, blurred), w, h, 4, radius, blurred);
        for (size_t i = 3; i < expected.size(); i += 4) {
            expected[i] = before[i];
        }
    }

    int w, h, radius;
    Bytes before;
    Bytes expected;
};

// Images lie at all sorts of addresses.
void expect_blur(const Case& sample) {
    const auto place = static_cast<size_t>(sample.w + 2 * sample.h) % 8;
    GuardedBytes image(sample.before, place * (sample.w % 3 == 0 ? 4 : 1));
    stack_blur(image.data(), sample.w, sample.h, sample.radius);
    ASSERT_TRUE(image.content() == sample.expected && image.intact())
        << sample.w << " x " << sample.h << " radius " << sample.radius;
}

TEST(StackBlur, EqualsItsDefinition) {
    std::vector<Case> cases;
    for (const int radius : {0, 1, 2, 7, 25, 100, 254}) {
        for (int length = 1; length <= 67; ++length) {
            cases.emplace_back(length, 1 + length * 7 % 19, radius);
            cases.emplace_back(1 + length * 5 % 23, length, radius);
        }
        // The blocks of columns, the ring's wrap and the rows taken at once all end in the middle of something.
        cases.emplace_back(531, 37, radius);
        cases.emplace_back(21, 613, radius);
    }
    for_each_simd_target([&cases](const std::string&) {
        for (const Case& sample : cases) {
            expect_blur(sample);
        }
    });
}

TEST(StackBlur, KeepsWhiteWhiteAtEveryRadius) {
    for_each_simd_target([](const std::string&) {
        for (int radius = 0; radius <= kStackBlurMaxRadius; ++radius) {
            Bytes image(17 * 5 * 4, 255);
            stack_blur(image.data(), 17, 5, radius);
            ASSERT_EQ(image, Bytes(image.size(), 255)) << "radius " << radius;
        }
    });
}

TEST(StackBlur, ClampsTheRadiusAndTouchesNothingWithoutPixels) {
    const Case none(40, 9, 0);
    const Case most(40, 9, 254);
    for (const auto& [radius, expected] : {std::pair(-1, &none), {INT_MIN, &none}, {255, &most}, {INT_MAX, &most}}) {
        Case sample = *expected;
        sample.radius = radius;
        expect_blur(sample);
    }
    for (const auto& [w, h] : {std::pair(0, 5), {5, 0}, {-3, 5}, {5, INT_MIN}}) {
        stack_blur(nullptr, w, h, 10);
    }
}

#if !defined(KORVANE_SANITIZED)  // instrumented frames are several times as large

void* blur_a_little(void*) {
    unsigned char image[7 * 3 * 4] = {};
    stack_blur(image, 7, 3, 254);
    return nullptr;
}

// On a stack that is no larger, with a megabyte below it that crashes whoever touches it.
TEST(StackBlur, StaysWithin160KiBOfStack) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setguardsize(&attributes, 1024 * 1024);
    pthread_attr_setstacksize(&attributes, 160 * 1024);
    for_each_simd_target([&attributes](const std::string&) {
        pthread_t thread;
        ASSERT_EQ(pthread_create(&thread, &attributes, blur_a_little, nullptr), 0);
        pthread_join(thread, nullptr);
    });
    pthread_attr_destroy(&attributes);
}

#endif

}  // namespace
