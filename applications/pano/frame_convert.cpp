#include "applications/pano/frame_convert.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "applications/pano/frame_convert_scalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "applications/pano/frame_convert.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target, which sets the target that it reads.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

void CopyBytes(const uint8_t* src, uint8_t* dst, size_t count) {
    std::memcpy(dst, src, count);
}

void SplitPairs(const uint8_t* pairs, uint8_t* evens, uint8_t* odds, size_t count) {
    split_pairs_scalar(pairs, evens, odds, count);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

// Where `dst` reaches a vector boundary; stores from there on do not straddle two cache lines.
HWY_INLINE size_t BytesAhead(const uint8_t* dst, size_t lanes, size_t count) {
    const size_t ahead = (lanes - reinterpret_cast<uintptr_t>(dst) % lanes) % lanes;
    return ahead < count ? ahead : count;
}

// Not memcpy: above some size that one writes past the caches, but a preview frame is looked at again at once.
void CopyBytes(const uint8_t* src, uint8_t* dst, size_t count) {
    const hn::ScalableTag<uint8_t> d;
    const size_t lanes = hn::Lanes(d);
    size_t i = BytesAhead(dst, lanes, count);
    std::memcpy(dst, src, i);
    for (; i + 2 * lanes <= count; i += 2 * lanes) {
        const auto first = hn::LoadU(d, src + i);
        const auto second = hn::LoadU(d, src + i + lanes);
        hn::StoreU(first, d, dst + i);
        hn::StoreU(second, d, dst + i + lanes);
    }
    std::memcpy(dst + i, src + i, count - i);
}

void SplitPairs(const uint8_t* pairs, uint8_t* evens, uint8_t* odds, size_t count) {
    const hn::ScalableTag<uint8_t> d;
    const size_t lanes = hn::Lanes(d);
    size_t i = BytesAhead(odds, lanes, count);
    split_pairs_scalar(pairs, evens, odds, i);
    for (; i + lanes <= count; i += lanes) {
        hn::Vec<decltype(d)> even;
        hn::Vec<decltype(d)> odd;
        hn::LoadInterleaved2(d, pairs + 2 * i, even, odd);
        hn::StoreU(even, d, evens + i);
        hn::StoreU(odd, d, odds + i);
    }
    split_pairs_scalar(pairs + 2 * i, evens + i, odds + i, count - i);
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace korvane {
HWY_EXPORT(CopyBytes);
HWY_EXPORT(SplitPairs);
}  // namespace korvane

// Where a build has one target only, HWY_DYNAMIC_DISPATCH puts that target's namespace in front of the name.
using namespace korvane;

namespace {

enum class ChromaOrder { kUV, kVU };

void convert_to_yv12(const unsigned char* src, unsigned char* dst, int width, int height, ChromaOrder order) {
    if (src == nullptr || dst == nullptr || width < 1 || height < 1) {
        return;
    }
    const size_t luma = static_cast<size_t>(width) * static_cast<size_t>(height);
    unsigned char* v = dst + luma;
    unsigned char* u = dst + luma * 5 / 4;
    HWY_DYNAMIC_DISPATCH(CopyBytes)(src, dst, luma);
    HWY_DYNAMIC_DISPATCH(SplitPairs)
    (src + luma, order == ChromaOrder::kUV ? u : v, order == ChromaOrder::kUV ? v : u, luma / 4);
}

}  // namespace

void convert_nv12_to_yv12(const unsigned char* src, unsigned char* dst, int width, int height) {
    convert_to_yv12(src, dst, width, height, ChromaOrder::kUV);
}

void convert_nv21_to_yv12(const unsigned char* src, unsigned char* dst, int width, int height) {
    convert_to_yv12(src, dst, width, height, ChromaOrder::kVU);
}
#endif
