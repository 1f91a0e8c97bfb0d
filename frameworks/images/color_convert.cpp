#include "frameworks/images/color_convert.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>

#include "frameworks/core/memory.h"
#include "frameworks/images/color_kernels.h"

namespace {

constexpr int kPairPixels = 2;
constexpr int kQuadPixels = 4;

// How many groups of `groupPixels` the picture holds, and 0 when the call is refused. The product is formed in 32 bits
// and read as signed: two negative sizes make a positive count, as they always have.
size_t groups_of(int groupPixels, int width, int height, std::initializer_list<const void*> pointers) {
    const int pixels = static_cast<int>(static_cast<uint32_t>(width) * static_cast<uint32_t>(height));
    const bool complete = std::find(pointers.begin(), pointers.end(), nullptr) == pointers.end();
    return complete && pixels >= groupPixels ? static_cast<size_t>(pixels / groupPixels) : 0;
}

// Runs a kernel over the groups; 1 when there was any.
template <typename Kernel, typename... Pointers>
int convert_groups(int groupPixels, Kernel kernel, int width, int height, Pointers*... pointers) {
    const size_t groups = groups_of(groupPixels, width, height, {pointers...});
    if (groups == 0) {
        return 0;
    }
    kernel(pointers..., groups);
    return 1;
}

}  // namespace

int color_convert_gray2rgb(const unsigned char* gray, unsigned char* rgb, int width, int height) {
    return convert_groups(1, korvane::color_kernels().gray2rgb, width, height, gray, rgb);
}

int color_convert_gray2rgba(const unsigned char* gray, unsigned char* rgba, int width, int height) {
    return convert_groups(1, korvane::color_kernels().gray2rgba, width, height, gray, rgba);
}

int color_convert_rgb2gray(const unsigned char* rgb, unsigned char* gray, int width, int height) {
    return convert_groups(1, korvane::color_kernels().rgb2gray, width, height, rgb, gray);
}

int color_convert_rgba2gray(const unsigned char* rgba, unsigned char* gray, int width, int height) {
    return convert_groups(1, korvane::color_kernels().rgba2gray, width, height, rgba, gray);
}

int color_convert_rgb2rgba(const unsigned char* rgb, unsigned char* rgba, int width, int height) {
    return convert_groups(1, korvane::color_kernels().rgb2rgba, width, height, rgb, rgba);
}

int color_convert_rgba2rgb(const unsigned char* rgba, unsigned char* rgb, int width, int height) {
    return convert_groups(1, korvane::color_kernels().rgba2rgb, width, height, rgba, rgb);
}

int color_convert_rgb2yuv(const unsigned char* rgb, unsigned char* yuv, int width, int height) {
    return convert_groups(1, korvane::color_kernels().rgb2yuv, width, height, rgb, yuv);
}

int color_convert_yuv2rgb(const unsigned char* yuv, unsigned char* rgb, int width, int height) {
    return convert_groups(1, korvane::color_kernels().yuv2rgb, width, height, yuv, rgb);
}

int color_convert_yuv2gray(const unsigned char* yuv, unsigned char* gray, int width, int height) {
    if (yuv == nullptr || gray == nullptr || width < 1 || height < 1) {
        return 0;
    }
    galloc_memcpy(gray, yuv, static_cast<size_t>(width) * static_cast<size_t>(height));
    return 1;
}

int color_convert_rgb2yuyv(const unsigned char* rgb, unsigned char* yuyv, int width, int height) {
    return convert_groups(kPairPixels, korvane::color_kernels().rgb2yuyv, width, height, rgb, yuyv);
}

int color_convert_yuyv2rgb(const unsigned char* yuyv, unsigned char* rgb, int width, int height) {
    return convert_groups(kPairPixels, korvane::color_kernels().yuyv2rgb, width, height, yuyv, rgb);
}

int color_convert_rgb2yvyu(const unsigned char* rgb, unsigned char* yvyu, int width, int height) {
    return convert_groups(kPairPixels, korvane::color_kernels().rgb2yvyu, width, height, rgb, yvyu);
}

int color_convert_yvyu2rgb(const unsigned char* yvyu, unsigned char* rgb, int width, int height) {
    return convert_groups(kPairPixels, korvane::color_kernels().yvyu2rgb, width, height, yvyu, rgb);
}

int color_convert_rgb2yuv422p(const unsigned char* rgb, unsigned char* y, unsigned char* u, unsigned char* v, int width,
                              int height) {
    return convert_groups(kPairPixels, korvane::color_kernels().rgb2yuv422p, width, height, rgb, y, u, v);
}

int color_convert_yuv422p2rgb(const unsigned char* y, const unsigned char* u, const unsigned char* v,
                              unsigned char* rgb, int width, int height) {
    return convert_groups(kPairPixels, korvane::color_kernels().yuv422p2rgb, width, height, y, u, v, rgb);
}

int color_convert_rgb2yv12oryu12(const unsigned char* rgb, unsigned char* y, unsigned char* u, unsigned char* v,
                                 int width, int height) {
    return convert_groups(kQuadPixels, korvane::color_kernels().rgb2yv12oryu12, width, height, rgb, y, u, v);
}

int color_convert_yv12oryu122rgb(const unsigned char* y, const unsigned char* u, const unsigned char* v,
                                 unsigned char* rgb, int width, int height) {
    return convert_groups(kQuadPixels, korvane::color_kernels().yv12oryu122rgb, width, height, y, u, v, rgb);
}

int color_convert_rgb2nv12(const unsigned char* rgb, unsigned char* y, unsigned char* uv, int width, int height) {
    return convert_groups(kQuadPixels, korvane::color_kernels().rgb2nv12, width, height, rgb, y, uv);
}

int color_convert_nv122rgb(const unsigned char* y, const unsigned char* uv, unsigned char* rgb, int width, int height) {
    return convert_groups(kQuadPixels, korvane::color_kernels().nv122rgb, width, height, y, uv, rgb);
}

int color_convert_nv212rgb(const unsigned char* y, const unsigned char* vu, unsigned char* rgb, int width, int height) {
    return convert_groups(kQuadPixels, korvane::color_kernels().nv212rgb, width, height, y, vu, rgb);
}

int color_convert_rgb2nv21(const unsigned char* rgb, unsigned char* y, unsigned char* vu, int width, int height) {
    if (rgb == nullptr || y == nullptr || vu == nullptr) {
        return 0;
    }
    if (width < 2 || height < 2) {
        return 1;
    }
    const auto row = static_cast<size_t>(width);
    const size_t pairs = row / 2;
    for (int k = 0; k < height / 2; ++k) {
        korvane::color_kernels().rgb2nv21_rows(rgb, rgb + 3 * row, y, y + row, vu, pairs);
        // Not two rows when the width is odd: the second row counts as its whole pairs only.
        rgb += 3 * (row + 2 * pairs);
        y += row + 2 * pairs;
        vu += 2 * pairs;
    }
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
