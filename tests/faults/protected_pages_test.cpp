// SPDX-License-Identifier: Apache-2.0
// Every function over pixels on buffers of exactly the bytes that its header names, with a forbidden page right before
// or right behind, on every instruction set: vector code may not even read beyond. Sources may not be written.
#include <gtest/gtest.h>
#include <setjmp.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <functional>
#include <memory>
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
#include "tests/support/run_length.h"
#include "tests/support/simd_targets.h"

namespace {

// A buffer of a picture, only read or not.
struct Plane {
    int protection;
    std::function<size_t(size_t pixels)> bytes;
};

// So many bytes for so many pixels, in whole units.
Plane in(size_t bytes, size_t pixels = 1, size_t units = 1) {
    return {PROT_READ, [=](size_t count) { return count * bytes / pixels * units; }};
}

Plane out(size_t bytes, size_t pixels = 1, size_t units = 1, size_t behind = 0) {
    return {PROT_READ | PROT_WRITE, [=](size_t count) { return count * bytes / pixels * units + behind; }};
}

// A picture whose buffers begin or end at a page which nobody may touch: a stray access, also a mere read, ends the
// program.
struct Walled {
    const bool isAtEnd;
    const int width;
    const int height;
    const size_t pixels = static_cast<size_t>(width) * static_cast<size_t>(height);
    std::vector<std::shared_ptr<void>> maps = {};

    unsigned char* block(size_t count, int protection) {
        const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        const size_t room = (count + page - 1) / page * page;
        void* map = mmap(nullptr, room + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        maps.emplace_back(map, [=](void* start) { munmap(start, room + 2 * page); });
        unsigned char* const start = static_cast<unsigned char*>(map) + page;
        mprotect(start, room, PROT_READ | PROT_WRITE);
        unsigned char* const result = start + (isAtEnd ? room - count : 0);
        // Any bytes will do, and random ones take the emulator long.
        for (size_t i = 0; i < count; ++i) {
            result[i] = static_cast<unsigned char>(i * 2654435761U >> 24);
        }
        mprotect(start, room, protection);
        return result;
    }

    unsigned char* plane(const Plane& is) { return block(is.bytes(pixels), is.protection); }

    template <typename T>
    T* numbers(size_t count) {
        return reinterpret_cast<T*>(block(count * sizeof(T), PROT_READ | PROT_WRITE));
    }
};

struct Row {
    const char* name;
    std::function<void(Walled& picture)> call;
};

template <typename Function, typename... Planes>
Row row(const char* name, Function function, Planes... planes) {
    return {name, [=](Walled& of) { function(of.plane(planes)..., of.width, of.height); }};
}

template <typename Blur>
auto at_radii(Blur blur) {
    return [=](auto... arguments) {
        for (const int radius : {0, 1, 9, 100}) {
            blur(arguments..., radius);
        }
    };
}

// Takes a single row.
template <typename Write>
auto one_row(Write write) {
    return
        [=](const unsigned char* from, unsigned char* to, int width, int height) { write(from, to, width * height); };
}

template <typename T, typename Walk>
Row patterns(const char* name, Walk walk, unsigned int slotsEach = 1) {
    return {name, [=](Walled& of) {
                const auto rows = static_cast<unsigned short>(of.height);
                const auto columns = static_cast<unsigned short>(of.width);
                const unsigned int slots = lbp_pyr_get_dim(rows, columns, 3) / slotsEach;
                walk(of.numbers<T>(slots), slots, of.numbers<unsigned int>(of.pixels), rows, columns);
            }};
}

const Row kRows[] = {
    row("stack_blur", at_radii(stack_blur), out(4)),
    row("fast_blur", at_radii([](unsigned char* from, unsigned char* to, int width, int height, int radius) {
            fast_blur(reinterpret_cast<unsigned int*>(from), to, width, height, radius);
        }),
        in(4), out(4)),
    row("box_blurH", at_radii(box_blurH), in(1), out(1)),
    row("box_blurV", at_radii(box_blurV), in(1), out(1)),
    row("box_blur", at_radii(box_blur), out(1), out(1)),
    row("gauss_blur", at_radii(gauss_blur), out(1), out(1)),
    {"gaussiir and blur_line",
     [](Walled& of) {
         for (const int depth : {3, 4}) {
             const auto bytes = static_cast<size_t>(depth);
             gaussiir(of.plane(out(bytes)), of.width, of.height, depth, of.width * depth, 10, 25);
             gaussiirContext context = {};
             calculate_gauss_iir_coefficients(&context, 2.0F);
             context.vp = of.numbers<float>(of.pixels * bytes);
             context.vm = of.numbers<float>(of.pixels * bytes);
             blur_line(&context, of.plane(in(bytes)), of.plane(out(bytes)), of.width * of.height, depth);
         }
     }},
    {"blending",
     [](Walled& of) {
         alpha_blend(of.plane(out(4)), of.width * of.height, 16, 99, 250, 77);
         alpha_blend_neon(of.plane(out(4)), of.width * of.height, 16, 99, 250, 77);
         korvane::blur_and_dim(of.plane(out(4)), of.width, of.height, 5, 0x102030, 100);
     }},
    row("gray2rgb", color_convert_gray2rgb, in(1), out(3)),
    row("gray2rgba", color_convert_gray2rgba, in(1), out(4)),
    row("rgb2gray", color_convert_rgb2gray, in(3), out(1)),
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
     [](Walled& of) {
         const size_t blocks = static_cast<size_t>(of.width / 2) * static_cast<size_t>(of.height / 2);
         unsigned char* const chroma = of.block(blocks * 2, PROT_READ | PROT_WRITE);
         color_convert_rgb2nv21(of.plane(in(3)), of.plane(out(1)), chroma, of.width, of.height);
     }},
    row("nv212rgb", color_convert_nv212rgb, in(1), in(1, 4, 2), out(3)),
    row("Write_Gray", one_row(Write_Gray), in(1), out(3)),
    row("Write_RGB", one_row(Write_RGB), in(3), out(3)),
    row("Write_RGBA", one_row(Write_RGBA), in(4), out(3)),
    row("Write_YUV", one_row(Write_YUV), in(3), out(3)),
    row("nv12_to_yv12", convert_nv12_to_yv12, in(3, 2), out(3, 2)),
    row("nv21_to_yv12", convert_nv21_to_yv12, in(3, 2), out(3, 2)),
    {"merging",
     [](Walled& of) {
         const unsigned char* frame = of.plane(in(1));
         int* sums = of.numbers<int>(of.pixels);
         korvane::merge_first(frame, sums, of.pixels);
         korvane::merge_add(frame, sums, of.pixels);
         korvane::merge_max(frame, sums, of.pixels);
         korvane::merged_mean(sums, of.plane(out(1)), of.pixels, 2);
         korvane::merged_low_bytes(sums, of.plane(out(1)), of.pixels);
         korvane::luma_sum(frame, of.pixels);
         korvane::luma_sum_yuyv(of.plane(in(2)), of.pixels);
     }},
    {"fast16",
     [](Walled& of) {
         for (const int border : {0, 3}) {
             const FastParams params = {5, 1, 0, 0, border, border};
             std::vector<KeyPoint> corners;
             fast16(of.plane(in(1)), corners, of.width, of.height, &params);
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
     [](Walled& of) { make_photo_timestamp_watermark_to_yuyv(of.plane(out(2)), of.width, of.height, "12:30", 0); }},
    {"super_capture",
     [](Walled& of) {
         const intptr_t capture =
             super_capture_module_init(static_cast<uint32_t>(of.width), static_cast<uint32_t>(of.height), 1);
         unsigned char* planes[4] = {};
         for (int i = 0; i < 2; ++i) {
             planes[0] = of.plane(in(2));
             super_capture_module_push_frame(capture, planes);
         }
         planes[0] = of.plane(out(2));
         super_capture_module_pop_frame(capture, planes);
         super_capture_module_destroy(capture);
     }},
    {"panorama",
     [](Walled& of) {
         PanoramaInterface panorama;
         panorama.startup(of.width, of.height, PANORAMA_FRAME_FORMAT_NV21, nullptr);
         int x = 0;
         int y = 0;
         panorama.addFrame(of.plane(in(3, 2)), 1, 0, x, y);
         panorama.addFrame(of.plane(in(3, 2)), 3, 0, x, y);
     }},
};

std::array<char, 200> gNow;

void tell_where(int signal) {
    [[maybe_unused]] const ssize_t ignored = write(STDERR_FILENO, gNow.data(), strnlen(gNow.data(), gNow.size()));
    ::signal(signal, SIG_DFL);
    raise(signal);
}

template <size_t kCount>
size_t call_rows(const Row (&rows)[kCount], const std::string& target, int width, int height) {
    for (const Row& row : rows) {
        for (const bool isAtEnd : {true, false}) {
            std::snprintf(gNow.data(), gNow.size(), "%s of %d x %d, %s the wall, on %s\n", row.name, width, height,
                          isAtEnd ? "before" : "behind", target.c_str());
            Walled picture{isAtEnd, width, height};
            row.call(picture);
        }
    }
    return 2 * kCount;
}

TEST(ProtectedPages, AreNotTouched) {
    signal(SIGSEGV, tell_where);
    signal(SIGBUS, tell_where);
    size_t calls = 0;
    for_each_simd_target([&](const std::string& target) {
        calls += call_rows(kFrameRows, target, 640, 360) + call_rows(kFrameRows, target, 478, 362);
        // Around the lengths of vectors of 16 to 256 bytes, and where a row is shorter than one.
        for (const int width : {1, 2, 3, 5, 8, 15, 16, 17, 31, 33, 64, 65, 127, 129, 255, 257, 513}) {
            for (const int height : {1, 2, 7}) {
                calls += call_rows(kRows, target, width, height);
            }
        }
    });
    report_count(calls, "calls at protected pages");
}

sigjmp_buf gBack;

// That a wall is one: otherwise the test above shows nothing. The emulator cannot run death tests.
TEST(ProtectedPages, EndStrayAccesses) {
    signal(SIGSEGV, [](int) { siglongjmp(gBack, 1); });
    for (const bool isAtEnd : {true, false}) {
        for (const bool isWrite : {true, false}) {
            Walled picture{isAtEnd, 10, 1};
            volatile unsigned char* const source = picture.plane(in(1));
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
