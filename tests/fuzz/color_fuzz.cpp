// SPDX-License-Identifier: Apache-2.0
// Each color conversion and each loop of the burst merge and the panorama on a picture of any size: the vector code of
// every instruction set against the plain loops.
#include "applications/pano/frame_convert.h"
#include "applications/super_capture/merge_kernels.h"
#include "frameworks/images/color_convert.h"
#include "tests/fuzz/fuzz.h"

namespace {

// `bytes` for each whole group of so many pixels; a group of 0 is a block of 2 x 2.
struct Plane {
    size_t group = 1;
    size_t bytes = 0;

    size_t size(const Shape& p) const {
        const auto blocks = static_cast<size_t>(p.width / 2) * static_cast<size_t>(p.height / 2);
        return (group == 0 ? blocks : p.pixels / group) * bytes;
    }
};

constexpr Plane kGray = {1, 1}, kRgb = {1, 3}, kRgba = {1, 4}, kPacked422 = {2, 4};
constexpr Plane kHalf = {2, 1}, kQuarter = {4, 1}, kChroma = {4, 2}, kBlockChroma = {0, 2};

struct Conversion {
    int (*convert)(const Bytes* from, Bytes* to, const Shape& shape);
    Plane from[3];
    Plane to[3];
};

// Calls a conversion with so many source and destination planes.
template <auto kConvert, int kFrom, int kTo>
int call(const Bytes* f, Bytes* t, const Shape& p) {
    if constexpr (kFrom == 3) {
        return kConvert(f[0].data(), f[1].data(), f[2].data(), t[0].data(), p.width, p.height);
    } else if constexpr (kFrom == 2) {
        return kConvert(f[0].data(), f[1].data(), t[0].data(), p.width, p.height);
    } else if constexpr (kTo == 3) {
        return kConvert(f[0].data(), t[0].data(), t[1].data(), t[2].data(), p.width, p.height);
    } else if constexpr (kTo == 2) {
        return kConvert(f[0].data(), t[0].data(), t[1].data(), p.width, p.height);
    } else {
        return kConvert(f[0].data(), t[0].data(), p.width, p.height);
    }
}

constexpr Conversion kConversions[] = {
    {call<color_convert_gray2rgb, 1, 1>, {kGray}, {kRgb}},
    {call<color_convert_gray2rgba, 1, 1>, {kGray}, {kRgba}},
    {call<color_convert_rgb2gray, 1, 1>, {kRgb}, {kGray}},
    {call<color_convert_rgba2gray, 1, 1>, {kRgba}, {kGray}},
    {call<color_convert_rgb2rgba, 1, 1>, {kRgb}, {kRgba}},
    {call<color_convert_rgba2rgb, 1, 1>, {kRgba}, {kRgb}},
    {call<color_convert_rgb2yuv, 1, 1>, {kRgb}, {kRgb}},
    {call<color_convert_yuv2rgb, 1, 1>, {kRgb}, {kRgb}},
    {call<color_convert_yuv2gray, 1, 1>, {kGray}, {kGray}},
    {call<color_convert_rgb2yuyv, 1, 1>, {kRgb}, {kPacked422}},
    {call<color_convert_yuyv2rgb, 1, 1>, {kPacked422}, {kRgb}},
    {call<color_convert_rgb2yvyu, 1, 1>, {kRgb}, {kPacked422}},
    {call<color_convert_yvyu2rgb, 1, 1>, {kPacked422}, {kRgb}},
    {call<color_convert_rgb2yuv422p, 1, 3>, {kRgb}, {kGray, kHalf, kHalf}},
    {call<color_convert_yuv422p2rgb, 3, 1>, {kGray, kHalf, kHalf}, {kRgb}},
    {call<color_convert_rgb2yv12oryu12, 1, 3>, {kRgb}, {kGray, kQuarter, kQuarter}},
    {call<color_convert_yv12oryu122rgb, 3, 1>, {kGray, kQuarter, kQuarter}, {kRgb}},
    {call<color_convert_rgb2nv12, 1, 2>, {kRgb}, {kGray, kChroma}},
    {call<color_convert_rgb2nv21, 1, 2>, {kRgb}, {kGray, kBlockChroma}},
    {call<color_convert_nv122rgb, 2, 1>, {kGray, kChroma}, {kRgb}},
    {call<color_convert_nv212rgb, 2, 1>, {kGray, kChroma}, {kRgb}},
};

void convert(Input& input, const Shape& shape) {
    const Conversion& row = input.PickValueInArray(kConversions);
    Bytes from[3];
    for (size_t i = 0; i < 3; ++i) {
        from[i] = input.bytes(row.from[i].size(shape));
    }
    const auto fill = input.ConsumeIntegral<unsigned char>();
    // Gray of RGBA reads its output, two bytes beyond it included.
    const size_t spare = row.convert == call<color_convert_rgba2gray, 1, 1> ? 2 : 0;
    on_every_target([&] {
        std::vector<Bytes> to;
        for (const Plane& plane : row.to) {
            to.push_back(Input::buffer(plane.size(shape) + spare, fill));
        }
        return std::pair(row.convert(from, to.data(), shape), to);
    });
}

void convert_preview(Input& input, const Shape& shape) {
    const Bytes frame = input.bytes(shape.pixels * 3 / 2);
    const auto convert = input.ConsumeBool() ? convert_nv12_to_yv12 : convert_nv21_to_yv12;
    on_every_target([&] {
        Bytes planar(frame.size(), 7);
        convert(frame.data(), planar.data(), shape.width, shape.height);
        return planar;
    });
}

void merge(Input& input, size_t count) {
    const Bytes frames[] = {input.bytes(count), input.bytes(count)};
    // The brightest of both, or the mean of so many.
    const int frameCount = input.between(0, 130);
    on_every_target([&] {
        std::vector<int> sums(count);
        Bytes result(count);
        (frameCount == 0 ? korvane::merge_max : korvane::merge_first)(frames[0].data(), sums.data(), count);
        for (int i = 1; i < std::max(frameCount, 2); ++i) {
            (frameCount == 0 ? korvane::merge_max : korvane::merge_add)(frames[i % 2].data(), sums.data(), count);
        }
        frameCount == 0 ? korvane::merged_low_bytes(sums.data(), result.data(), count)
                        : korvane::merged_mean(sums.data(), result.data(), count, frameCount);
        return std::tuple(result, korvane::luma_sum(frames[0].data(), count),
                          korvane::luma_sum_yuyv(frames[0].data(), count / 2));
    });
}

}  // namespace

void fuzz(Input& input) {
    const Shape shape = input.shape(70, 9);
    const int kind = input.between(0, 9);
    kind == 0 ? merge(input, shape.pixels) : kind == 1 ? convert_preview(input, shape) : convert(input, shape);
}
