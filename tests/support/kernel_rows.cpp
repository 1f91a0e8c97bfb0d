// SPDX-License-Identifier: Apache-2.0
#include "tests/support/kernel_rows.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <vector>

#include "algorithms/alpha_blend.h"
#include "algorithms/fast_blur.h"
#include "algorithms/fast_detection.h"
#include "algorithms/gauss_blur.h"
#include "algorithms/gauss_blur_iir.h"
#include "algorithms/lbp.h"
#include "algorithms/stack_blur.h"
#include "applications/blur/blur_render.h"
#include "applications/gif_maker/color_quantizer.h"
#include "applications/pano/frame_convert.h"
#include "applications/pano/panorama_interface.h"
#include "applications/photo_timestamp/timestamp_watermark.h"
#include "applications/super_capture/merge_kernels.h"
#include "applications/super_capture/super_capture.h"
#include "applications/super_capture/super_capture_module.h"
#include "frameworks/images/color_convert.h"
#include "frameworks/images/jpeg_row_writers.h"

namespace {

// A buffer of a picture: so many bytes for so many pixels, in whole units, and some behind.
struct Plane {
    bool isWritten;
    size_t bytes, perPixels, units, behind;

    unsigned char* of(Picture& picture) const {
        return picture.block(picture.pixels * bytes / perPixels * units + behind, isWritten);
    }
};

Plane in(size_t bytes, size_t perPixels = 1, size_t units = 1) {
    return {false, bytes, perPixels, units, 0};
}

Plane out(size_t bytes, size_t perPixels = 1, size_t units = 1, size_t behind = 0) {
    return {true, bytes, perPixels, units, behind};
}

// A call with these planes, the size, and what else is given.
template <typename Function, typename... Planes>
auto calling(Function function, Planes... planes) {
    return [=](Picture& picture, auto... more) {
        const std::array blocks = {planes.of(picture)...};
        std::apply([&](auto*... bytes) { function(bytes..., picture.width, picture.height, more...); }, blocks);
    };
}

template <typename Function, typename... Planes>
KernelRow row(const char* name, Function function, Planes... planes) {
    return {name, calling(function, planes...)};
}

template <typename Blur, typename... Planes>
KernelRow blur_row(const char* name, Blur blur, Planes... planes) {
    return {name, [call = calling(blur, planes...)](Picture& of) {
                for (const int radius : {0, 1, 9, 100}) {
                    call(of, radius);
                }
            }};
}

// Takes a single row of pixels.
template <typename Write>
KernelRow writer_row(const char* name, Write write, size_t bytes) {
    return row(
        name, [=](auto* from, auto* to, int width, int height) { write(from, to, width * height); }, in(bytes), out(3));
}

template <typename T, typename Walk>
KernelRow pattern_row(const char* name, Walk walk, unsigned int slotsEach = 1) {
    return {name, [=](Picture& of) {
                const auto rows = static_cast<unsigned short>(of.height);
                const auto columns = static_cast<unsigned short>(of.width);
                // Whole vectors of large pictures take long and much memory.
                const unsigned int whole = lbp_pyr_get_dim(rows, columns, 3);
                const unsigned int slots = (of.pixels > 3600 ? std::min(whole, 1U << 18) : whole) / slotsEach;
                T* const vector = of.numbers<T>(slots);
                auto* const levels = of.numbers<unsigned int>(of.pixels);
                if constexpr (std::is_same_v<T, double>) {
                    *of.numbers<double>(1) = walk(vector, slots, levels, rows, columns);
                } else {
                    walk(vector, slots, levels, rows, columns);
                }
            }};
}

const KernelRow kConversions[] = {
    row("gray2rgb", color_convert_gray2rgb, in(1), out(3)),
    row("gray2rgba", color_convert_gray2rgba, in(1), out(4)),
    row("rgb2gray", color_convert_rgb2gray, in(3), out(1)),
    // Reads its output, two bytes behind it included.
    row("rgba2gray", color_convert_rgba2gray, in(4), out(1, 1, 1, 2)),
    row("rgb2rgba", color_convert_rgb2rgba, in(3), out(4)),
    row("rgba2rgb", color_convert_rgba2rgb, in(4), out(3)),
    row("rgb2yuv", color_convert_rgb2yuv, in(3), out(3)),
    row("yuv2rgb", color_convert_yuv2rgb, in(3), out(3)),
    row("yuv2gray", color_convert_yuv2gray, in(1), out(1)),
    // Whole pairs of pixels only.
    row("rgb2yuyv", color_convert_rgb2yuyv, in(3), out(1, 2, 4)),
    row("yuyv2rgb", color_convert_yuyv2rgb, in(1, 2, 4), out(3)),
    row("rgb2yvyu", color_convert_rgb2yvyu, in(3), out(1, 2, 4)),
    row("yvyu2rgb", color_convert_yvyu2rgb, in(1, 2, 4), out(3)),
    row("rgb2yuv422p", color_convert_rgb2yuv422p, in(3), out(1), out(1, 2), out(1, 2)),
    row("yuv422p2rgb", color_convert_yuv422p2rgb, in(1), in(1, 2), in(1, 2), out(3)),
    row("rgb2yv12oryu12", color_convert_rgb2yv12oryu12, in(3), out(1), out(1, 4), out(1, 4)),
    row("yv12oryu122rgb", color_convert_yv12oryu122rgb, in(1), in(1, 4), in(1, 4), out(3)),
    row("rgb2nv12", color_convert_rgb2nv12, in(3), out(1), out(1, 4, 2)),
    row("nv122rgb", color_convert_nv122rgb, in(1), in(1, 4, 2), out(3)),
    {"rgb2nv21",
     [](Picture& of) {
         const auto blocks = static_cast<size_t>(of.width / 2) * static_cast<size_t>(of.height / 2);
         row("", color_convert_rgb2nv21, in(3), out(1), out(0, 1, 1, blocks * 2)).call(of);
     }},
    row("nv212rgb", color_convert_nv212rgb, in(1), in(1, 4, 2), out(3)),
    row("nv12_to_yv12", convert_nv12_to_yv12, in(3, 2), out(3, 2)),
    row("nv21_to_yv12", convert_nv21_to_yv12, in(3, 2), out(3, 2)),
};

const KernelRow kKernels[] = {
    blur_row("stack_blur", stack_blur, out(4)),
    blur_row(
        "fast_blur",
        [](unsigned char* from, unsigned char* to, int width, int height, int radius) {
            fast_blur(reinterpret_cast<unsigned int*>(from), to, width, height, radius);
        },
        in(4), out(4)),
    blur_row("box_blurH", box_blurH, in(1), out(1)),
    blur_row("box_blurV", box_blurV, in(1), out(1)),
    blur_row("box_blur", box_blur, out(1), out(1)),
    blur_row("gauss_blur", gauss_blur, out(1), out(1)),
    {"gaussiir and blur_line",
     [](Picture& of) {
         for (const int depth : {3, 4}) {
             const auto bytes = static_cast<size_t>(depth);
             gaussiir(out(bytes).of(of), of.width, of.height, depth, of.width * depth, 10, 25);
             gaussiirContext context = {};
             calculate_gauss_iir_coefficients(&context, 2.0F);
             context.vp = of.numbers<float>(of.pixels * bytes);
             context.vm = of.numbers<float>(of.pixels * bytes);
             unsigned char* const from = in(bytes).of(of);
             blur_line(&context, from, out(bytes).of(of), of.width * of.height, depth);
         }
     }},
    {"blending",
     [](Picture& of) {
         alpha_blend(out(4).of(of), of.width * of.height, 16, 99, 250, 77);
         alpha_blend_neon(out(4).of(of), of.width * of.height, 16, 99, 250, 77);
         korvane::blur_and_dim(out(4).of(of), of.width, of.height, 5, 0x102030, 100);
     }},
    writer_row("Write_Gray", Write_Gray, 1),
    writer_row("Write_RGB", Write_RGB, 3),
    writer_row("Write_RGBA", Write_RGBA, 4),
    writer_row("Write_YUV", Write_YUV, 3),
    {"merging",
     [](Picture& of) {
         int* const sums = of.numbers<int>(of.pixels);
         korvane::merge_first(in(1).of(of), sums, of.pixels);
         korvane::merge_add(in(1).of(of), sums, of.pixels);
         korvane::merged_mean(sums, out(1).of(of), of.pixels, 2);
         korvane::merge_max(in(1).of(of), sums, of.pixels);
         korvane::merged_low_bytes(sums, out(1).of(of), of.pixels);
         auto* const lumas = of.numbers<uint32_t>(2);
         lumas[0] = korvane::luma_sum(in(1).of(of), of.pixels);
         lumas[1] = korvane::luma_sum_yuyv(in(2).of(of), of.pixels);
     }},
    {"fast16",
     [](Picture& of) {
         for (const FastParams& params : {FastParams{5, 1, 0, 0, 0, 0}, {9, 0, 0, 0, 3, 3}, {9, 1, 8, 0, 3, 3}}) {
             std::vector<KeyPoint> corners;
             fast16(in(1).of(of), corners, of.width, of.height, &params);
             int* place = of.numbers<int>(corners.size() * 2);
             for (const KeyPoint& corner : corners) {
                 *place++ = corner.x;
                 *place++ = corner.y;
             }
         }
     }},
    pattern_row<char>("lbp_pyr_features", lbp_pyr_features),
    pattern_row<unsigned int>("lbp_pyr_features_sparse", lbp_pyr_features_sparse, 256),
    pattern_row<double>("lbp_pyr_dotprod", lbp_pyr_dotprod),
    pattern_row<long>("lbp_pyr_addvec", lbp_pyr_addvec),
    pattern_row<long>("lbp_pyr_subvec", lbp_pyr_subvec),
};

const KernelRow kFrames[] = {
    {"timestamp",
     [](Picture& of) {
         for (const char* text : {"12:30", "2026-01-02 03:04"}) {
             make_photo_timestamp_watermark_to_yuyv(out(2).of(of), of.width, of.height, text, 0);
         }
     }},
    {"super_capture",
     [](Picture& of) {
         const intptr_t capture =
             super_capture_module_init(static_cast<uint32_t>(of.width), static_cast<uint32_t>(of.height), 1);
         unsigned char* planes[4] = {};
         for (int i = 0; i < 3; ++i) {
             planes[0] = in(2).of(of);
             super_capture_module_push_frame(capture, planes);
         }
         reinterpret_cast<SuperCapture*>(capture)->waitUntilTaken(3);
         planes[0] = out(2).of(of);
         super_capture_module_pop_frame(capture, planes);
         super_capture_module_destroy(capture);
     }},
    {"panorama",
     [](Picture& of) {
         PanoramaInterface panorama;
         panorama.startup(of.width, of.height, PANORAMA_FRAME_FORMAT_NV21, nullptr);
         int* const offsets = of.numbers<int>(2);
         for (const float angle : {20.0F, 19.0F, 17.5F}) {
             panorama.addFrame(in(3, 2).of(of), 10, angle, offsets[0], offsets[1]);
         }
     }},
    {"palette",
     [](Picture& of) {
         const unsigned char* const rgb = in(3).of(of);
         ColorQuantizer quantizer;
         quantizer.prepare(of.width, of.height);
         for (size_t i = 0; i < of.pixels * 3; i += 3) {
             quantizer.addColor(rgb[i], rgb[i + 1], rgb[i + 2]);
         }
         const std::vector<Color>& palette = quantizer.getPalette(64);
         std::memcpy(of.numbers<int>(palette.size() * 4), palette.data(), palette.size() * sizeof(Color));
     }},
};

}  // namespace

std::span<const KernelRow> conversion_rows() {
    return kConversions;
}

std::span<const KernelRow> kernel_rows() {
    return kKernels;
}

std::span<const KernelRow> frame_rows() {
    return kFrames;
}
