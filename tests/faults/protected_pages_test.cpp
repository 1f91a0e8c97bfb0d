// SPDX-License-Identifier: Apache-2.0
// Every function over pixels on buffers of exactly the bytes that its header names, with a forbidden page right before
// or right behind, on every instruction set: vector code may not even read beyond. Sources may not be written.
#include <gtest/gtest.h>
#include <setjmp.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "algorithms/alpha_blend.h"
#include "algorithms/fast_blur.h"
#include "algorithms/fast_detection.h"
#include "algorithms/gauss_blur.h"
#include "algorithms/gauss_blur_iir.h"
#include "algorithms/lbp.h"
#include "algorithms/stack_blur.h"
#include "applications/blur/blur_render.h"
#include "applications/pano/frame_convert.h"
#include "applications/pano/panorama_interface.h"
#include "applications/photo_timestamp/timestamp_watermark.h"
#include "applications/super_capture/merge_kernels.h"
#include "applications/super_capture/super_capture_module.h"
#include "frameworks/images/color_convert.h"
#include "frameworks/images/jpeg_row_writers.h"
#include "tests/faults/walled_memory.h"
#include "tests/support/simd_targets.h"

namespace {

struct Size {
    int width;
    int height;
    // Their product.
    size_t pixels;
};

struct Row {
    const char* name;
    std::function<void(WalledMemory& memory, const Size& size)> call;
};

// Bytes a pixel from and to.
Row packed(const char* name, int (*convert)(const unsigned char*, unsigned char*, int, int), size_t from, size_t to,
           size_t behind = 0) {
    return {name, [=](WalledMemory& memory, const Size& size) {
                // The formats of two bytes have whole pairs of pixels only.
                const auto bytes = [&](size_t each) { return each == 2 ? size.pixels / 2 * 4 : size.pixels * each; };
                convert(memory.source(bytes(from)), memory.bytes(bytes(to) + behind), size.width, size.height);
            }};
}

Row writer(const char* name, void (*write)(const unsigned char*, unsigned char*, int), size_t from) {
    return {name, [=](WalledMemory& memory, const Size& size) {
                const auto width = static_cast<size_t>(size.width);
                write(memory.source(width * from), memory.bytes(width * 3), size.width);
            }};
}

Row planar(const char* name, void (*convert)(const unsigned char*, unsigned char*, int, int)) {
    return {name, [=](WalledMemory& memory, const Size& size) {
                const size_t bytes = size.pixels * 3 / 2;
                convert(memory.source(bytes), memory.bytes(bytes), size.width, size.height);
            }};
}

Row gray_blur(const char* name, void (*blur)(unsigned char*, unsigned char*, int, int, int)) {
    return {name, [=](WalledMemory& memory, const Size& size) {
                for (const int radius : {0, 1, 9, 100}) {
                    blur(memory.bytes(size.pixels), memory.bytes(size.pixels), size.width, size.height, radius);
                }
            }};
}

template <typename T, typename Walk>
Row patterns(const char* name, Walk walk, unsigned int slotsEach = 1) {
    return {name, [=](WalledMemory& memory, const Size& size) {
                const auto rows = static_cast<unsigned short>(size.height);
                const auto columns = static_cast<unsigned short>(size.width);
                const unsigned int slots = lbp_pyr_get_dim(rows, columns, 3) / slotsEach;
                walk(memory.numbers<T>(slots), slots, memory.numbers<unsigned int>(size.pixels), rows, columns);
            }};
}

const Row kRows[] = {
    {"stack_blur",
     [](WalledMemory& memory, const Size& size) {
         for (const int radius : {1, 9, 100}) {
             stack_blur(memory.bytes(size.pixels * 4), size.width, size.height, radius);
         }
     }},
    {"fast_blur",
     [](WalledMemory& memory, const Size& size) {
         for (const int radius : {1, 9, 100}) {
             fast_blur(reinterpret_cast<unsigned int*>(memory.source(size.pixels * 4)), memory.bytes(size.pixels * 4),
                       size.width, size.height, radius);
         }
     }},
    gray_blur("box_blurH", box_blurH),
    gray_blur("box_blurV", box_blurV),
    gray_blur("box_blur", box_blur),
    gray_blur("gauss_blur", gauss_blur),
    {"gaussiir and blur_line",
     [](WalledMemory& memory, const Size& size) {
         for (const int depth : {3, 4}) {
             const auto bytes = static_cast<size_t>(depth);
             gaussiir(memory.bytes(size.pixels * bytes), size.width, size.height, depth, size.width * depth, 10, 25);
             gaussiirContext context = {};
             calculate_gauss_iir_coefficients(&context, 2.0F);
             const size_t line = static_cast<size_t>(size.width) * bytes;
             context.vp = memory.numbers<float>(line);
             context.vm = memory.numbers<float>(line);
             blur_line(&context, memory.source(line), memory.bytes(line), size.width, depth);
         }
     }},
    {"alpha_blend",
     [](WalledMemory& memory, const Size& size) {
         const auto count = static_cast<int>(size.pixels);
         alpha_blend(memory.bytes(size.pixels * 4), count, 16, 99, 250, 77);
         alpha_blend_neon(memory.bytes(size.pixels * 4), count, 16, 99, 250, 77);
     }},
    {"blur_and_dim",
     [](WalledMemory& memory, const Size& size) {
         korvane::blur_and_dim(memory.bytes(size.pixels * 4), size.width, size.height, 5, 0x102030, 100);
     }},
    packed("gray2rgb", color_convert_gray2rgb, 1, 3),
    packed("gray2rgba", color_convert_gray2rgba, 1, 4),
    packed("rgb2gray", color_convert_rgb2gray, 3, 1),
    packed("rgba2gray", color_convert_rgba2gray, 4, 1, 2),
    packed("rgb2rgba", color_convert_rgb2rgba, 3, 4),
    packed("rgba2rgb", color_convert_rgba2rgb, 4, 3),
    packed("rgb2yuv", color_convert_rgb2yuv, 3, 3),
    packed("yuv2rgb", color_convert_yuv2rgb, 3, 3),
    packed("yuv2gray", color_convert_yuv2gray, 1, 1),
    packed("rgb2yuyv", color_convert_rgb2yuyv, 3, 2),
    packed("yuyv2rgb", color_convert_yuyv2rgb, 2, 3),
    packed("rgb2yvyu", color_convert_rgb2yvyu, 3, 2),
    packed("yvyu2rgb", color_convert_yvyu2rgb, 2, 3),
    {"yuv422p",
     [](WalledMemory& memory, const Size& size) {
         const size_t pairs = size.pixels / 2;
         color_convert_rgb2yuv422p(memory.source(size.pixels * 3), memory.bytes(size.pixels), memory.bytes(pairs),
                                   memory.bytes(pairs), size.width, size.height);
         color_convert_yuv422p2rgb(memory.source(size.pixels), memory.source(pairs), memory.source(pairs),
                                   memory.bytes(size.pixels * 3), size.width, size.height);
     }},
    {"yv12oryu12",
     [](WalledMemory& memory, const Size& size) {
         const size_t quads = size.pixels / 4;
         color_convert_rgb2yv12oryu12(memory.source(size.pixels * 3), memory.bytes(size.pixels), memory.bytes(quads),
                                      memory.bytes(quads), size.width, size.height);
         color_convert_yv12oryu122rgb(memory.source(size.pixels), memory.source(quads), memory.source(quads),
                                      memory.bytes(size.pixels * 3), size.width, size.height);
     }},
    {"nv12",
     [](WalledMemory& memory, const Size& size) {
         const size_t chroma = size.pixels / 4 * 2;
         color_convert_rgb2nv12(memory.source(size.pixels * 3), memory.bytes(size.pixels), memory.bytes(chroma),
                                size.width, size.height);
         color_convert_nv122rgb(memory.source(size.pixels), memory.source(chroma), memory.bytes(size.pixels * 3),
                                size.width, size.height);
     }},
    {"nv21",
     [](WalledMemory& memory, const Size& size) {
         const size_t blocks = static_cast<size_t>(size.width / 2) * static_cast<size_t>(size.height / 2);
         color_convert_rgb2nv21(memory.source(size.pixels * 3), memory.bytes(size.pixels), memory.bytes(blocks * 2),
                                size.width, size.height);
         color_convert_nv212rgb(memory.source(size.pixels), memory.source(size.pixels / 4 * 2),
                                memory.bytes(size.pixels * 3), size.width, size.height);
     }},
    writer("Write_Gray", Write_Gray, 1),
    writer("Write_RGB", Write_RGB, 3),
    writer("Write_RGBA", Write_RGBA, 4),
    writer("Write_YUV", Write_YUV, 3),
    planar("nv12_to_yv12", convert_nv12_to_yv12),
    planar("nv21_to_yv12", convert_nv21_to_yv12),
    {"merging",
     [](WalledMemory& memory, const Size& size) {
         const unsigned char* frame = memory.source(size.pixels);
         int* sums = memory.numbers<int>(size.pixels);
         korvane::merge_first(frame, sums, size.pixels);
         korvane::merge_add(frame, sums, size.pixels);
         korvane::merge_max(frame, sums, size.pixels);
         korvane::merged_mean(sums, memory.bytes(size.pixels), size.pixels, 2);
         korvane::merged_low_bytes(sums, memory.bytes(size.pixels), size.pixels);
         korvane::luma_sum(frame, size.pixels);
         korvane::luma_sum_yuyv(memory.source(size.pixels * 2), size.pixels);
     }},
    {"fast16",
     [](WalledMemory& memory, const Size& size) {
         for (const int border : {0, 3}) {
             const FastParams params = {5, 1, 0, 0, border, border};
             std::vector<KeyPoint> corners;
             fast16(memory.source(size.pixels), corners, size.width, size.height, &params);
         }
     }},
    patterns<char>("lbp_pyr_features", lbp_pyr_features),
    patterns<unsigned int>("lbp_pyr_features_sparse", lbp_pyr_features_sparse, 256),
    patterns<double>("lbp_pyr_dotprod", lbp_pyr_dotprod),
    patterns<long>("lbp_pyr_addvec", lbp_pyr_addvec),
    patterns<long>("lbp_pyr_subvec", lbp_pyr_subvec),
};

// Slower, or not for small frames.
const Row kFrameRows[] = {
    {"timestamp",
     [](WalledMemory& memory, const Size& size) {
         make_photo_timestamp_watermark_to_yuyv(memory.bytes(size.pixels * 2), size.width, size.height, "12:30", 0);
     }},
    {"super_capture",
     [](WalledMemory& memory, const Size& size) {
         const intptr_t capture =
             super_capture_module_init(static_cast<uint32_t>(size.width), static_cast<uint32_t>(size.height), 1);
         unsigned char* planes[4] = {};
         for (int i = 0; i < 2; ++i) {
             planes[0] = memory.source(size.pixels * 2);
             super_capture_module_push_frame(capture, planes);
         }
         planes[0] = memory.bytes(size.pixels * 2);
         super_capture_module_pop_frame(capture, planes);
         super_capture_module_destroy(capture);
     }},
    {"panorama",
     [](WalledMemory& memory, const Size& size) {
         PanoramaInterface panorama;
         panorama.startup(size.width, size.height, PANORAMA_FRAME_FORMAT_NV21, nullptr);
         int x = 0;
         int y = 0;
         panorama.addFrame(memory.source(size.pixels * 3 / 2), 1, 0, x, y);
         panorama.addFrame(memory.source(size.pixels * 3 / 2), 3, 0, x, y);
     }},
};

// Around the lengths of vectors of 16 to 256 bytes, and where a row is shorter than one.
constexpr int kWidths[] = {1, 2, 3, 5, 8, 15, 16, 17, 31, 33, 64, 65, 127, 129, 255, 257, 513};
constexpr int kHeights[] = {1, 2, 7};

std::array<char, 200> gNow;

void tell_where(int signal) {
    [[maybe_unused]] const ssize_t ignored = write(STDERR_FILENO, gNow.data(), strnlen(gNow.data(), gNow.size()));
    ::signal(signal, SIG_DFL);
    raise(signal);
}

size_t call_rows(const Row* begin, const Row* end, const std::string& target, int width, int height) {
    for (const Row* row = begin; row != end; ++row) {
        for (const bool isAtEnd : {true, false}) {
            WalledMemory memory(isAtEnd);
            std::snprintf(gNow.data(), gNow.size(), "%s of %d x %d, %s the wall, on %s\n", row->name, width, height,
                          isAtEnd ? "before" : "behind", target.c_str());
            row->call(memory, {width, height, static_cast<size_t>(width) * static_cast<size_t>(height)});
        }
    }
    return 2 * static_cast<size_t>(end - begin);
}

TEST(ProtectedPages, AreNotTouched) {
    signal(SIGSEGV, tell_where);
    signal(SIGBUS, tell_where);
    size_t calls = 0;
    for_each_simd_target([&](const std::string& target) {
        for (const Size size : {Size{640, 360, 0}, Size{478, 362, 0}}) {
            calls += call_rows(std::begin(kFrameRows), std::end(kFrameRows), target, size.width, size.height);
        }
        for (const int width : kWidths) {
            for (const int height : kHeights) {
                calls += call_rows(std::begin(kRows), std::end(kRows), target, width, height);
            }
        }
    });
    std::printf("proof: %zu calls at protected pages\n", calls);
}

sigjmp_buf gBack;

// That a wall is one: otherwise the test above shows nothing. The emulator cannot run death tests.
TEST(ProtectedPages, EndStrayAccesses) {
    signal(SIGSEGV, [](int) { siglongjmp(gBack, 1); });
    for (const bool isAtEnd : {true, false}) {
        for (const bool isWrite : {true, false}) {
            WalledMemory memory(isAtEnd);
            volatile unsigned char* const source = memory.source(10);
            if (sigsetjmp(gBack, 1) == 0) {
                if (isWrite) {
                    *source = 1;
                }
                (void)source[isAtEnd ? 10 : -1];
                ADD_FAILURE() << "nothing happened";
            }
        }
    }
    signal(SIGSEGV, SIG_DFL);
}

}  // namespace
