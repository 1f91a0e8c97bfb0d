// SPDX-License-Identifier: Apache-2.0
// What the fuzz targets share. Buffers have exactly the documented size, so that the address sanitizer sees the first
// byte behind them; those of no bytes still lie somewhere, since null is another case.
#ifndef KORVANE_TESTS_FUZZ_FUZZ_H_
#define KORVANE_TESTS_FUZZ_FUZZ_H_

#include <fuzzer/FuzzedDataProvider.h>
#include <hwy/targets.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

using Bytes = std::vector<unsigned char>;

// Like assert, in every build.
#define REQUIRE(condition) \
    ((condition) ? void() : (std::fprintf(stderr, "%s:%d: no: %s\n", __FILE__, __LINE__, #condition), std::abort()))

struct Shape {
    int width;
    int height;
    size_t pixels;
};

class Input : public FuzzedDataProvider {
  public:
    using FuzzedDataProvider::FuzzedDataProvider;

    template <typename T>
    T between(T least, T most) {
        return ConsumeIntegralInRange<T>(least, most);
    }

    bool one_in(int count) { return between(1, count) == 1; }

    // Up to so many pixels, the longer side in either direction.
    Shape shape(int most, int mostOfOther) {
        const int sides[] = {between(1, most), between(1, mostOfOther)};
        const bool isTurned = ConsumeBool();
        return {sides[isTurned], sides[!isTurned], static_cast<size_t>(sides[0]) * static_cast<size_t>(sides[1])};
    }

    // -1 to `most`, now and then any int at all.
    int hostile(int most) { return one_in(32) ? ConsumeIntegral<int>() : between(-1, most); }

    // A whole number over `divisor`, now and then any float at all.
    float number(float divisor) {
        const auto bits = ConsumeIntegral<uint32_t>();
        float value = static_cast<float>(static_cast<int16_t>(bits)) / divisor;
        if (bits % 16 == 0) {
            std::memcpy(&value, &bits, sizeof(value));
        }
        return value;
    }

    // What the input lacks goes on with noise that depends on what it has, or nearly flat: white, or as bright as the
    // last byte.
    Bytes bytes(size_t count) {
        Bytes result = buffer(count);
        const size_t given = ConsumeData(result.data(), count);
        const uint32_t base = given % 4 == 0 ? 255 : result[given - 1];
        uint32_t state = static_cast<uint32_t>(given);
        for (size_t i = 0; i < count; ++i) {
            state = state * 1664525 + 1013904223 + (i < given ? result[i] : 0);
            if (i >= given) {
                result[i] = static_cast<unsigned char>(given % 2 == 0 ? base ^ state >> 30 : state >> 24);
            }
        }
        return result;
    }

    // All that is left of it.
    Bytes rest() {
        Bytes result = ConsumeRemainingBytes<unsigned char>();
        result.reserve(1);
        return result;
    }

    template <typename T = unsigned char>
    static std::vector<T> buffer(size_t count, std::type_identity_t<T> fill = {}) {
        std::vector<T> result(count, fill);
        result.reserve(1);
        return result;
    }
};

// Runs `work` with the kernels of every instruction set of this processor; all must give what the plain loops give,
// which stand in for the instruction set that has none of ours.
template <typename Work>
void on_every_target(const Work& work) {
    static const std::vector<int64_t> targets = hwy::SupportedAndGeneratedTargets();
    std::optional<decltype(work())> expected;
    for (auto target = targets.rbegin(); target != targets.rend(); ++target) {
        hwy::GetChosenTarget().Update(*target);
        auto result = work();
        if (expected && result != *expected) {
            std::fprintf(stderr, "%s differs\n", hwy::TargetName(*target));
            std::abort();
        }
        expected = expected ? std::move(expected) : std::move(result);
    }
}

// Each target's own: does what the input says.
void fuzz(Input& input);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    fuzz(input);
    return 0;
}

#endif  // KORVANE_TESTS_FUZZ_FUZZ_H_
