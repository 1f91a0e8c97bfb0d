#include "algorithms/stack_blur.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "algorithms/stack_blur_scalar.h"
#include "algorithms/stack_blur_tables.h"
#include "tests/support/random_bytes.h"
#include "tests/support/simd_targets.h"

namespace {

constexpr int kRadii[] = {0, 1, 2, 7, 25, 100, 254};
constexpr size_t kGuardBytes = 96;

// Bytes in front of the image: enough to show a stray write, and odd so that images lie at all sorts of addresses.
size_t bytes_before(int w, int h) {
    return kGuardBytes + static_cast<size_t>(w + 2 * h) % 8 * (w % 3 == 0 ? 4 : 1);
}

using Line = std::vector<uint64_t>;

// The definition: triangular weights, edges repeat. Two prefix sums stand for the window, so that the sweeps are quick
// and nothing is shared with the sliding sums under test.
Line blurred_line(const Line& line, int radius) {
    const auto length = static_cast<int>(line.size());
    const int reach = radius + 1;
    std::vector<uint64_t> once{0};
    for (int i = -reach; i < length + reach; ++i) {
        once.push_back(once.back() + line[static_cast<size_t>(std::clamp(i, 0, length - 1))]);
    }
    Line result;
    for (size_t i = 0; i < line.size(); ++i) {
        uint64_t sum = 0;
        for (size_t box = 0; box <= static_cast<size_t>(radius); ++box) {
            const size_t begin = i + 1 + box;
            sum += once[begin + static_cast<size_t>(radius) + 1] - once[begin];
        }
        const auto index = static_cast<size_t>(radius);
        result.push_back(((sum * stackblur_mul[index]) >> stackblur_shr[index]) & 255);
    }
    return result;
}

void blur_lines(unsigned char* image, size_t lines, size_t lineStep, size_t length, size_t step, int radius) {
    Line line(length);
    for (size_t i = 0; i < lines; ++i) {
        for (size_t channel = 0; channel < 3; ++channel) {
            unsigned char* first = image + i * lineStep + channel;
            for (size_t j = 0; j < length; ++j) {
                line[j] = first[j * step];
            }
            const Line blurred = blurred_line(line, radius);
            for (size_t j = 0; j < length; ++j) {
                first[j * step] = static_cast<unsigned char>(blurred[j]);
            }
        }
    }
}

std::vector<unsigned char> expected_blur(std::vector<unsigned char> image, int w, int h, int radius) {
    const auto width = static_cast<size_t>(w);
    const auto height = static_cast<size_t>(h);
    unsigned char* first = image.data() + bytes_before(w, h);
    blur_lines(first, height, width * 4, width, 4, radius);
    blur_lines(first, width, 4, height, width * 4, radius);
    return image;
}

std::vector<unsigned char> guarded_image(int w, int h) {
    const size_t pixels = static_cast<size_t>(w) * static_cast<size_t>(h);
    return random_bytes(bytes_before(w, h) + pixels * 4 + kGuardBytes, static_cast<uint32_t>(w * 1000 + h));
}

struct Case {
    int w, h, radius;
    std::vector<unsigned char> before;
    std::vector<unsigned char> expected;
};

Case make_case(int w, int h, int radius) {
    std::vector<unsigned char> image = guarded_image(w, h);
    std::vector<unsigned char> expected = expected_blur(image, w, h, radius);
    return {w, h, radius, std::move(image), std::move(expected)};
}

void expect_blur(const Case& sample, void (*blur)(unsigned char*, int, int, int)) {
    std::vector<unsigned char> after = sample.before;
    const size_t before = bytes_before(sample.w, sample.h);
    blur(after.data() + before, sample.w, sample.h, sample.radius);
    const auto [got, wanted] = std::mismatch(after.begin(), after.end(), sample.expected.begin());
    ASSERT_TRUE(got == after.end()) << sample.w << " x " << sample.h << " radius " << sample.radius << ": byte "
                                    << std::distance(after.begin(), got) - static_cast<std::ptrdiff_t>(before) << " is "
                                    << int{*got} << ", not " << int{*wanted};
}

void expect_on_every_target(const std::vector<Case>& cases) {
    for (const Case& sample : cases) {
        expect_blur(sample, stack_blur_scalar);
    }
    for_each_simd_target([&cases](const std::string&) {
        for (const Case& sample : cases) {
            expect_blur(sample, stack_blur);
        }
    });
}

TEST(StackBlur, EqualsItsDefinitionForAllSmallSizes) {
    std::vector<Case> cases;
    for (int length = 1; length <= 67; ++length) {
        for (const int radius : kRadii) {
            cases.push_back(make_case(length, 1 + length * 7 % 19, radius));
            cases.push_back(make_case(1 + length * 5 % 23, length, radius));
        }
    }
    expect_on_every_target(cases);
}

// Sizes at which the blocks of columns, the ring's wrap and the rows taken at once all end in the middle of something.
TEST(StackBlur, EqualsItsDefinitionAcrossBlocks) {
    std::vector<Case> cases;
    for (const int radius : kRadii) {
        cases.push_back(make_case(531, 37, radius));
        cases.push_back(make_case(21, 613, radius));
    }
    expect_on_every_target(cases);
}

TEST(StackBlur, KeepsWhiteWhiteAtEveryRadius) {
    for_each_simd_target([](const std::string&) {
        for (int radius = 0; radius <= kStackBlurMaxRadius; ++radius) {
            std::vector<unsigned char> image(17 * 5 * 4, 255);
            stack_blur(image.data(), 17, 5, radius);
            ASSERT_EQ(image, std::vector<unsigned char>(image.size(), 255)) << "radius " << radius;
        }
    });
}

TEST(StackBlur, ClampsTheRadiusAndTouchesNothingWithoutPixels) {
    const Case none = make_case(40, 9, 0);
    const Case most = make_case(40, 9, 254);
    for (const auto& [radius, expected] : {std::pair(-1, &none), {INT_MIN, &none}, {255, &most}, {INT_MAX, &most}}) {
        Case sample = *expected;
        sample.radius = radius;
        expect_blur(sample, stack_blur);
        expect_blur(sample, stack_blur_scalar);
    }
    for (const auto& [w, h] : {std::pair(0, 5), {5, 0}, {-3, 5}, {5, INT_MIN}}) {
        stack_blur(nullptr, w, h, 10);
        stack_blur_scalar(nullptr, w, h, 10);
    }
}

#if !defined(KORVANE_SANITIZED)  // instrumented frames are several times as large

constexpr size_t kStackBytes = 512 * 1024;
constexpr unsigned char kUnused = 0xA5;

void* blur_a_little(void*) {
    unsigned char image[7 * 3 * 4] = {};
    stack_blur(image, 7, 3, 254);
    return nullptr;
}

// Runs on a stack that was painted beforehand, so that the deepest byte written tells the use.
size_t stack_bytes_used() {
    std::vector<unsigned char> memory(kStackBytes + 4096, kUnused);
    void* stack = memory.data();
    size_t space = memory.size();
    std::align(4096, kStackBytes, stack, space);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, stack, kStackBytes);
    pthread_t thread;
    EXPECT_EQ(pthread_create(&thread, &attributes, blur_a_little, nullptr), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    const auto* bottom = static_cast<const unsigned char*>(stack);
    const auto* top = bottom + kStackBytes;
    return static_cast<size_t>(top - std::find_if(bottom, top, [](unsigned char byte) { return byte != kUnused; }));
}

TEST(StackBlur, StaysWithin160KiBOfStack) {
    for_each_simd_target([](const std::string&) {
        const size_t used = stack_bytes_used();
        EXPECT_LE(used, 160U * 1024);
        EXPECT_GT(used, 1024U) << "the stack was not used: the measurement is broken";
    });
}

#endif

TEST(StackBlurTables, AreThePublishedOnes) {
    const std::vector<int> firstMul = {512, 512, 456, 512, 328, 456, 335, 512, 405, 328,
                                       271, 456, 388, 335, 292, 512, 454, 405, 364, 328};
    const std::vector<int> firstShr = {9, 11, 12, 13, 13, 14, 14, 15, 15, 15, 15, 16, 16, 16, 16, 17, 17, 17, 17, 17};
    EXPECT_EQ(std::vector<int>(stackblur_mul.begin(), stackblur_mul.begin() + 20), firstMul);
    EXPECT_EQ(std::vector<int>(stackblur_shr.begin(), stackblur_shr.begin() + 20), firstShr);
    EXPECT_EQ(std::vector<int>(stackblur_mul.end() - 5, stackblur_mul.end()),
              (std::vector<int>{267, 265, 263, 261, 259}));
    EXPECT_EQ(std::vector<int>(stackblur_shr.end() - 5, stackblur_shr.end()), std::vector<int>(5, 24));
}

}  // namespace
