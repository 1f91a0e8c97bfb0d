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

void SplitPairs(const uint8_t* pairs, uint8_t* evens, uint8_t* odds, size_t count) {
    split_pairs_scalar(pairs, evens, odds, count);
}

#else

void SplitPairs(const uint8_t* pairs, uint8_t* evens, uint8_t* odds, size_t count) {
    namespace hn = hwy::HWY_NAMESPACE;
    const hn::ScalableTag<uint8_t> d;
    const size_t lanes = hn::Lanes(d);
    size_t i = 0;
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
HWY_EXPORT(SplitPairs);
}  // namespace korvane

namespace {

enum class ChromaOrder { kUV, kVU };

void convert_to_yv12(const unsigned char* src, unsigned char* dst, int width, int height, ChromaOrder order) {
    if (src == nullptr || dst == nullptr || width < 1 || height < 1) {
        return;
    }
    const size_t luma = static_cast<size_t>(width) * static_cast<size_t>(height);
    unsigned char* v = dst + luma;
    unsigned char* u = dst + luma * 5 / 4;
    std::memcpy(dst, src, luma);
    HWY_DYNAMIC_DISPATCH(korvane::SplitPairs)
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
