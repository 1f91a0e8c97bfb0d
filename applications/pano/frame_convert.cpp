// SPDX-License-Identifier: Apache-2.0
#include "applications/pano/frame_convert.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "applications/pano/frame_convert_scalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "applications/pano/frame_convert.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target, which sets the target that they read.
#include "frameworks/simd/bytes-inl.h"
#include "frameworks/simd/kernel-inl.h"
#include "frameworks/simd/steps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

void SplitPairs(const uint8_t* pairs, uint8_t* evens, uint8_t* odds, size_t count) {
    const ByteTag d;
    const size_t lanes = hn::Lanes(d);
    const size_t before = CountUntilAligned(odds, lanes, count);
    split_pairs_scalar(pairs, evens, odds, before);
    const size_t done = ForWholeSteps(before, count, lanes, [&](size_t i) KORVANE_INLINE {
        ByteVector even, odd;
        hn::LoadInterleaved2(d, pairs + 2 * i, even, odd);
        hn::StoreU(even, d, evens + i);
        hn::StoreU(odd, d, odds + i);
    });
    split_pairs_scalar(pairs + 2 * done, evens + done, odds + done, count - done);
}

#else

constexpr auto& SplitPairs = split_pairs_scalar;

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace korvane {
namespace {

KORVANE_DISPATCH(SplitPairs);

// Above some size memcpy writes past the caches, but a preview frame is looked at again at once: so in pieces. For
// these memcpy knows ways that a loop of vectors has not: some processors need not read what they overwrite as a whole.
void copy_in_pieces(const unsigned char* src, unsigned char* dst, size_t count) {
    constexpr size_t kPieceBytes = size_t{256} << 10;
    for (size_t begin = 0; begin < count; begin += kPieceBytes) {
        std::memcpy(dst + begin, src + begin, std::min(kPieceBytes, count - begin));
    }
}

enum class ChromaOrder { kUV, kVU };

void convert_to_yv12(const unsigned char* src, unsigned char* dst, int width, int height, ChromaOrder order) {
    if (src == nullptr || dst == nullptr || width < 1 || height < 1) {
        return;
    }
    const size_t luma = static_cast<size_t>(width) * static_cast<size_t>(height);
    unsigned char* v = dst + luma;
    unsigned char* u = dst + luma * 5 / 4;
    copy_in_pieces(src, dst, luma);
    SplitPairs(src + luma, order == ChromaOrder::kUV ? u : v, order == ChromaOrder::kUV ? v : u, luma / 4);
}

}  // namespace
}  // namespace korvane

void convert_nv12_to_yv12(const unsigned char* src, unsigned char* dst, int width, int height) {
    korvane::convert_to_yv12(src, dst, width, height, korvane::ChromaOrder::kUV);
}

void convert_nv21_to_yv12(const unsigned char* src, unsigned char* dst, int width, int height) {
    korvane::convert_to_yv12(src, dst, width, height, korvane::ChromaOrder::kVU);
}

#endif
