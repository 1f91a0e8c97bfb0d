// SPDX-License-Identifier: Apache-2.0
#include "frameworks/images/color_convert.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "frameworks/core/memory.h"

int color_convert_yuv2gray(const unsigned char* yuv, unsigned char* gray, int width, int height) {
    if (yuv == nullptr || gray == nullptr || width < 1 || height < 1) {
        return 0;
    }
    galloc_memcpy(gray, yuv, static_cast<size_t>(width) * static_cast<size_t>(height));
    return 1;
}

namespace {

constexpr int code_of(ImageFormatType source, ImageFormatType target) {
    return source * 256 + target;
}

using Planes = unsigned char* const*;

struct Conversion {
    int code;
    int (*convert)(Planes src, Planes dst, int width, int height);
};

using PackedConversion = int (*)(const unsigned char*, unsigned char*, int, int);

template <PackedConversion kConvert>
int convert_packed(Planes src, Planes dst, int width, int height) {
    return kConvert(src[0], dst[0], width, height);
}

using ToThreePlanes = int (*)(const unsigned char*, unsigned char*, unsigned char*, unsigned char*, int, int);

template <ToThreePlanes kConvert>
int convert_to_three(Planes src, Planes dst, int width, int height) {
    return kConvert(src[0], dst[0], dst[1], dst[2], width, height);
}

using FromThreePlanes = int (*)(const unsigned char*, const unsigned char*, const unsigned char*, unsigned char*, int,
                                int);

template <FromThreePlanes kConvert>
int convert_from_three(Planes src, Planes dst, int width, int height) {
    return kConvert(src[0], src[1], src[2], dst[0], width, height);
}

using ToTwoPlanes = int (*)(const unsigned char*, unsigned char*, unsigned char*, int, int);

template <ToTwoPlanes kConvert>
int convert_to_two(Planes src, Planes dst, int width, int height) {
    return kConvert(src[0], dst[0], dst[1], width, height);
}

using FromTwoPlanes = int (*)(const unsigned char*, const unsigned char*, unsigned char*, int, int);

template <FromTwoPlanes kConvert>
int convert_from_two(Planes src, Planes dst, int width, int height) {
    return kConvert(src[0], src[1], dst[0], width, height);
}

constexpr Conversion kConversions[] = {
    {code_of(IMAGE_FORMAT_TYPE_GRAY, IMAGE_FORMAT_TYPE_RGB), convert_packed<color_convert_gray2rgb>},
    {code_of(IMAGE_FORMAT_TYPE_GRAY, IMAGE_FORMAT_TYPE_RGBA), convert_packed<color_convert_gray2rgba>},
    {code_of(IMAGE_FORMAT_TYPE_RGB, IMAGE_FORMAT_TYPE_GRAY), convert_packed<color_convert_rgb2gray>},
    {code_of(IMAGE_FORMAT_TYPE_RGB, IMAGE_FORMAT_TYPE_RGBA), convert_packed<color_convert_rgb2rgba>},
    {code_of(IMAGE_FORMAT_TYPE_RGB, IMAGE_FORMAT_TYPE_YUV), convert_packed<color_convert_rgb2yuv>},
    {code_of(IMAGE_FORMAT_TYPE_RGB, IMAGE_FORMAT_TYPE_YUYV), convert_packed<color_convert_rgb2yuyv>},
    {code_of(IMAGE_FORMAT_TYPE_RGB, IMAGE_FORMAT_TYPE_YVYU), convert_packed<color_convert_rgb2yvyu>},
    {code_of(IMAGE_FORMAT_TYPE_RGB, IMAGE_FORMAT_TYPE_YUV422P), convert_to_three<color_convert_rgb2yuv422p>},
    {code_of(IMAGE_FORMAT_TYPE_RGB, IMAGE_FORMAT_TYPE_YV12), convert_to_three<color_convert_rgb2yv12oryu12>},
    {code_of(IMAGE_FORMAT_TYPE_RGB, IMAGE_FORMAT_TYPE_YU12), convert_to_three<color_convert_rgb2yv12oryu12>},
    {code_of(IMAGE_FORMAT_TYPE_RGB, IMAGE_FORMAT_TYPE_NV12), convert_to_two<color_convert_rgb2nv12>},
    {code_of(IMAGE_FORMAT_TYPE_RGB, IMAGE_FORMAT_TYPE_NV21), convert_to_two<color_convert_rgb2nv21>},
    {code_of(IMAGE_FORMAT_TYPE_RGBA, IMAGE_FORMAT_TYPE_GRAY), convert_packed<color_convert_rgba2gray>},
    {code_of(IMAGE_FORMAT_TYPE_RGBA, IMAGE_FORMAT_TYPE_RGB), convert_packed<color_convert_rgba2rgb>},
    {code_of(IMAGE_FORMAT_TYPE_YUV, IMAGE_FORMAT_TYPE_RGB), convert_packed<color_convert_yuv2rgb>},
    {code_of(IMAGE_FORMAT_TYPE_YUYV, IMAGE_FORMAT_TYPE_RGB), convert_packed<color_convert_yuyv2rgb>},
    {code_of(IMAGE_FORMAT_TYPE_YVYU, IMAGE_FORMAT_TYPE_RGB), convert_packed<color_convert_yvyu2rgb>},
    {code_of(IMAGE_FORMAT_TYPE_YUV422P, IMAGE_FORMAT_TYPE_RGB), convert_from_three<color_convert_yuv422p2rgb>},
    {code_of(IMAGE_FORMAT_TYPE_YV12, IMAGE_FORMAT_TYPE_RGB), convert_from_three<color_convert_yv12oryu122rgb>},
    {code_of(IMAGE_FORMAT_TYPE_YU12, IMAGE_FORMAT_TYPE_RGB), convert_from_three<color_convert_yv12oryu122rgb>},
    {code_of(IMAGE_FORMAT_TYPE_NV12, IMAGE_FORMAT_TYPE_RGB), convert_from_two<color_convert_nv122rgb>},
    {code_of(IMAGE_FORMAT_TYPE_NV21, IMAGE_FORMAT_TYPE_RGB), convert_from_two<color_convert_nv212rgb>},
    {code_of(IMAGE_FORMAT_TYPE_YUV, IMAGE_FORMAT_TYPE_GRAY), convert_packed<color_convert_yuv2gray>},
    {code_of(IMAGE_FORMAT_TYPE_YUYV, IMAGE_FORMAT_TYPE_GRAY), convert_packed<color_convert_yuv2gray>},
    {code_of(IMAGE_FORMAT_TYPE_YVYU, IMAGE_FORMAT_TYPE_GRAY), convert_packed<color_convert_yuv2gray>},
    {code_of(IMAGE_FORMAT_TYPE_YUV422P, IMAGE_FORMAT_TYPE_GRAY), convert_packed<color_convert_yuv2gray>},
    {code_of(IMAGE_FORMAT_TYPE_YV12, IMAGE_FORMAT_TYPE_GRAY), convert_packed<color_convert_yuv2gray>},
    {code_of(IMAGE_FORMAT_TYPE_YU12, IMAGE_FORMAT_TYPE_GRAY), convert_packed<color_convert_yuv2gray>},
    {code_of(IMAGE_FORMAT_TYPE_NV12, IMAGE_FORMAT_TYPE_GRAY), convert_packed<color_convert_yuv2gray>},
    {code_of(IMAGE_FORMAT_TYPE_NV21, IMAGE_FORMAT_TYPE_GRAY), convert_packed<color_convert_yuv2gray>},
};

}  // namespace

Image* ColorConvert::convert(Image* src, int code) {
    if (src == nullptr || ((code >> 8) & 255) != src->getFormatType()) {
        return nullptr;
    }
    Image* dst = Image::createImage(src->getWidth(), src->getHeight(), src->getDepth(),
                                    static_cast<ImageFormatType>(code & 255), nullptr);
    const auto* conversion = std::find_if(std::begin(kConversions), std::end(kConversions),
                                          [code](const Conversion& candidate) { return candidate.code == code; });
    if (dst != nullptr && conversion != std::end(kConversions)) {
        // Images without pixels have null planes, which every conversion refuses.
        conversion->convert(src->getPlanes(), dst->getPlanes(), static_cast<int>(src->getWidth()),
                            static_cast<int>(src->getHeight()));
    }
    return dst;
}

Image* ColorConvert::convert(auto_ptr<Image>& src, int code) {
    return convert(src.get(), code);
}
