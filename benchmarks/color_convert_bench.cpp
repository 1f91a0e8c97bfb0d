// SPDX-License-Identifier: Apache-2.0
#include <libyuv.h>

#include <functional>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/support/comparison.h"
#include "benchmarks/support/huge_pages.h"
#include "benchmarks/support/picture.h"
#include "frameworks/images/color_convert.h"
#include "frameworks/images/color_scalar.h"

namespace {

using namespace korvane::bench;

using Bytes = HugeVector<unsigned char>;

constexpr int kLarge = 4000 * 3000;

// One picture in the layouts that the contestants read, and room for what they write.
struct Frame {
    Frame(int frameWidth, int frameHeight)
        : width(frameWidth),
          height(frameHeight),
          pixels(static_cast<size_t>(width) * static_cast<size_t>(height)),
          rgb(3 * pixels),
          yuv(3 * pixels),
          yuyv(2 * pixels),
          planar(2 * pixels),
          out(4 * pixels + 2),
          step(4 * pixels) {
        const std::vector<unsigned char> picture = rgba_picture(width, height);
        rgba.assign(picture.begin(), picture.end());
        color_convert_rgba2rgb(rgba.data(), rgb.data(), width, height);
        color_convert_rgb2yuv(rgb.data(), yuv.data(), width, height);
        color_convert_rgb2yuyv(rgb.data(), yuyv.data(), width, height);
        color_convert_rgb2nv21(rgb.data(), y(), chroma(), width, height);
    }

    bool large() const { return width * height == kLarge; }
    size_t pairs() const { return pixels / 2; }
    size_t quads() const { return pixels / 4; }
    unsigned char* y() { return planar.data(); }
    unsigned char* chroma() { return planar.data() + pixels; }
    unsigned char* outChroma() { return out.data() + pixels; }
    unsigned char* outV() { return out.data() + pixels + pixels / 2; }

    int width;
    int height;
    size_t pixels;
    Bytes rgba, rgb, yuv, yuyv, planar;
    Bytes out;
    Bytes step;  // between the two steps of a peer that needs two
};

using SharedFrame = std::shared_ptr<Frame>;
using Work = std::function<void(Frame&)>;

cv::Mat mat(Bytes& bytes, int rows, int columns, int type) {
    return {rows, columns, type, bytes.data()};
}

void convert_with_opencv(Frame& f, Bytes& from, int fromRows, int fromType, int toRows, int toType, int code) {
    cv::Mat to = mat(f.out, toRows, f.width, toType);
    cv::cvtColor(mat(from, fromRows, f.width, fromType), to, code);
}

// A goal by image size: the first for 12 megapixels, the second for 2.
std::vector<Goal> by_size(const Frame& f, std::vector<Goal> large, std::vector<Goal> small = {}) {
    return f.large() ? std::move(large) : std::move(small);
}

SharedFrame compare_with_scalar(Comparison& comparison, int width, int height, Work kernel, Work scalar,
                                double largeGoal, double smallGoal) {
    auto frame = std::make_shared<Frame>(width, height);
    comparison.verify("equals the scalar twin", [=] {
        kernel(*frame);
        const Bytes result = frame->out;
        frame->out.assign(frame->out.size(), 0);
        scalar(*frame);
        return result == frame->out;
    });
    comparison.kernel([=] { kernel(*frame); });
    std::vector<Goal> small;
    if (smallGoal > 0) {
        small.push_back(faster(smallGoal));
    }
    comparison.against("scalar twin", by_size(*frame, {faster(largeGoal)}, small), [=] { scalar(*frame); });
    return frame;
}

void against(Comparison& comparison, const SharedFrame& frame, const std::string& name, std::vector<Goal> large,
             std::vector<Goal> small, Work work) {
    comparison.against(name, by_size(*frame, std::move(large), std::move(small)), [=] { work(*frame); });
}

void compare_yuyv2rgb(Comparison& comparison, int width, int height) {
    const SharedFrame frame = compare_with_scalar(
        comparison, width, height,
        [](Frame& f) { color_convert_yuyv2rgb(f.yuyv.data(), f.out.data(), f.width, f.height); },
        [](Frame& f) { korvane::yuyv2rgb_scalar(f.yuyv.data(), f.out.data(), f.pairs()); }, 3.6, 5.5);
    against(comparison, frame, "cv::cvtColor YUY2", {faster(1.6)}, {faster(2.4)}, [](Frame& f) {
        convert_with_opencv(f, f.yuyv, f.height, CV_8UC2, f.height, CV_8UC3, cv::COLOR_YUV2RGB_YUY2);
    });
    const auto toArgb = [](Frame& f) {
        libyuv::YUY2ToARGB(f.yuyv.data(), 2 * f.width, f.step.data(), 4 * f.width, f.width, f.height);
    };
    against(comparison, frame, "libyuv::YUY2ToARGB + ARGBToRAW", {faster(1.7)}, {}, [toArgb](Frame& f) {
        toArgb(f);
        libyuv::ARGBToRAW(f.step.data(), 4 * f.width, f.out.data(), 3 * f.width, f.width, f.height);
    });
    against(comparison, frame, "libyuv::YUY2ToARGB", {at_most(1.2)}, {}, toArgb);
    comparison.against_memcpy(by_size(*frame, {at_most(1.0)}), frame->rgba.size());
}

void compare_nv212rgb(Comparison& comparison, int width, int height) {
    const SharedFrame frame = compare_with_scalar(
        comparison, width, height,
        [](Frame& f) { color_convert_nv212rgb(f.y(), f.chroma(), f.out.data(), f.width, f.height); },
        [](Frame& f) { korvane::nv212rgb_scalar(f.y(), f.chroma(), f.out.data(), f.quads()); }, 4.8, 8.0);
    against(comparison, frame, "libyuv::NV21ToRAW", {faster(1.2)}, {}, [](Frame& f) {
        libyuv::NV21ToRAW(f.y(), f.width, f.chroma(), f.width, f.out.data(), 3 * f.width, f.width, f.height);
    });
    against(comparison, frame, "cv::cvtColor NV21", {faster(1.7)}, {faster(3.0)}, [](Frame& f) {
        convert_with_opencv(f, f.planar, f.height * 3 / 2, CV_8UC1, f.height, CV_8UC3, cv::COLOR_YUV2RGB_NV21);
    });
    comparison.against_memcpy(by_size(*frame, {at_most(0.75)}), frame->rgba.size());
}

void compare_rgb2yuyv(Comparison& comparison, int width, int height) {
    const SharedFrame frame = compare_with_scalar(
        comparison, width, height,
        [](Frame& f) { color_convert_rgb2yuyv(f.rgb.data(), f.out.data(), f.width, f.height); },
        [](Frame& f) { korvane::rgb2yuyv_scalar(f.rgb.data(), f.out.data(), f.pairs()); }, 3.0, 5.0);
    const auto fromArgb = [](Frame& f) {
        libyuv::ARGBToYUY2(f.step.data(), 4 * f.width, f.out.data(), 2 * f.width, f.width, f.height);
    };
    against(comparison, frame, "libyuv::RAWToARGB + ARGBToYUY2", {faster(2.4)}, {}, [fromArgb](Frame& f) {
        libyuv::RAWToARGB(f.rgb.data(), 3 * f.width, f.step.data(), 4 * f.width, f.width, f.height);
        fromArgb(f);
    });
    against(comparison, frame, "libyuv::ARGBToYUY2", {faster(1.8)}, {}, fromArgb);
    comparison.against_memcpy(by_size(*frame, {at_most(1.15)}), frame->rgba.size());
}

void nv21_with_scalar(Frame& f) {
    for (size_t row = 0; row + 1 < static_cast<size_t>(f.height); row += 2) {
        const size_t at = row * static_cast<size_t>(f.width);
        const size_t below = at + static_cast<size_t>(f.width);
        korvane::rgb2nv21_rows_scalar(&f.rgb[3 * at], &f.rgb[3 * below], &f.out[at], &f.out[below],
                                      f.outChroma() + at / 2, static_cast<size_t>(f.width) / 2);
    }
}

void compare_rgb2nv21(Comparison& comparison, int width, int height) {
    const SharedFrame frame = compare_with_scalar(
        comparison, width, height,
        [](Frame& f) { color_convert_rgb2nv21(f.rgb.data(), f.out.data(), f.outChroma(), f.width, f.height); },
        nv21_with_scalar, 4.5, 0);
    against(comparison, frame, "libyuv::RAWToI420", {faster(1.0)}, {}, [](Frame& f) {
        libyuv::RAWToI420(f.rgb.data(), 3 * f.width, f.out.data(), f.width, f.outChroma(), f.width / 2, f.outV(),
                          f.width / 2, f.width, f.height);
    });
    against(comparison, frame, "libyuv::RAWToARGB + ARGBToNV21", {faster(2.0)}, {}, [](Frame& f) {
        libyuv::RAWToARGB(f.rgb.data(), 3 * f.width, f.step.data(), 4 * f.width, f.width, f.height);
        libyuv::ARGBToNV21(f.step.data(), 4 * f.width, f.out.data(), f.width, f.outChroma(), f.width, f.width,
                           f.height);
    });
    against(comparison, frame, "cv::cvtColor I420", {faster(1.6)}, {}, [](Frame& f) {
        convert_with_opencv(f, f.rgb, f.height, CV_8UC3, f.height * 3 / 2, CV_8UC1, cv::COLOR_RGB2YUV_I420);
    });
}

void compare_rgb2gray(Comparison& comparison, int width, int height) {
    const SharedFrame frame = compare_with_scalar(
        comparison, width, height,
        [](Frame& f) { color_convert_rgb2gray(f.rgb.data(), f.out.data(), f.width, f.height); },
        [](Frame& f) { korvane::rgb2gray_scalar(f.rgb.data(), f.out.data(), f.pixels); }, 2.6, 0);
    against(comparison, frame, "libyuv::RAWToJ400", {at_most(1.2)}, {},
            [](Frame& f) { libyuv::RAWToJ400(f.rgb.data(), 3 * f.width, f.out.data(), f.width, f.width, f.height); });
    against(comparison, frame, "cv::cvtColor GRAY", {faster(1.0)}, {faster(1.5)},
            [](Frame& f) { convert_with_opencv(f, f.rgb, f.height, CV_8UC3, f.height, CV_8UC1, cv::COLOR_RGB2GRAY); });
}

void compare_rgb2rgba(Comparison& comparison, int width, int height) {
    const SharedFrame frame = compare_with_scalar(
        comparison, width, height,
        [](Frame& f) { color_convert_rgb2rgba(f.rgb.data(), f.out.data(), f.width, f.height); },
        [](Frame& f) { korvane::rgb2rgba_scalar(f.rgb.data(), f.out.data(), f.pixels); }, 1.7, 0);
    against(comparison, frame, "libyuv::RGB24ToARGB", {at_most(1.2)}, {}, [](Frame& f) {
        libyuv::RGB24ToARGB(f.rgb.data(), 3 * f.width, f.out.data(), 4 * f.width, f.width, f.height);
    });
}

void compare_rgba2rgb(Comparison& comparison, int width, int height) {
    const SharedFrame frame = compare_with_scalar(
        comparison, width, height,
        [](Frame& f) { color_convert_rgba2rgb(f.rgba.data(), f.out.data(), f.width, f.height); },
        [](Frame& f) { korvane::rgba2rgb_scalar(f.rgba.data(), f.out.data(), f.pixels); }, 1.7, 0);
    against(comparison, frame, "libyuv::ARGBToRGB24", {at_most(1.2)}, {}, [](Frame& f) {
        libyuv::ARGBToRGB24(f.rgba.data(), 4 * f.width, f.out.data(), 3 * f.width, f.width, f.height);
    });
}

// The conversions that are measured against their twin alone.
constexpr double kDecodeGoal = 4.5;
constexpr double kEncodeGoal = 3.0;

struct Plain {
    const char* name;
    double goal;
    Work kernel;
    Work scalar;
};

const std::vector<Plain> kPlain = {
    {"yvyu2rgb", kDecodeGoal, [](Frame& f) { color_convert_yvyu2rgb(f.yuyv.data(), f.out.data(), f.width, f.height); },
     [](Frame& f) { korvane::yvyu2rgb_scalar(f.yuyv.data(), f.out.data(), f.pairs()); }},
    {"yuv2rgb", kDecodeGoal, [](Frame& f) { color_convert_yuv2rgb(f.yuv.data(), f.out.data(), f.width, f.height); },
     [](Frame& f) { korvane::yuv2rgb_scalar(f.yuv.data(), f.out.data(), f.pixels); }},
    {"yuv422p2rgb", kDecodeGoal,
     [](Frame& f) {
         color_convert_yuv422p2rgb(f.y(), f.chroma(), f.chroma() + f.pairs(), f.out.data(), f.width, f.height);
     },
     [](Frame& f) { korvane::yuv422p2rgb_scalar(f.y(), f.chroma(), f.chroma() + f.pairs(), f.out.data(), f.pairs()); }},
    {"yv12oryu122rgb", kDecodeGoal,
     [](Frame& f) {
         color_convert_yv12oryu122rgb(f.y(), f.chroma(), f.chroma() + f.quads(), f.out.data(), f.width, f.height);
     },
     [](Frame& f) {
         korvane::yv12oryu122rgb_scalar(f.y(), f.chroma(), f.chroma() + f.quads(), f.out.data(), f.quads());
     }},
    {"nv122rgb", kDecodeGoal,
     [](Frame& f) { color_convert_nv122rgb(f.y(), f.chroma(), f.out.data(), f.width, f.height); },
     [](Frame& f) { korvane::nv122rgb_scalar(f.y(), f.chroma(), f.out.data(), f.quads()); }},
    {"rgb2yvyu", kEncodeGoal, [](Frame& f) { color_convert_rgb2yvyu(f.rgb.data(), f.out.data(), f.width, f.height); },
     [](Frame& f) { korvane::rgb2yvyu_scalar(f.rgb.data(), f.out.data(), f.pairs()); }},
    {"rgb2yuv", kEncodeGoal, [](Frame& f) { color_convert_rgb2yuv(f.rgb.data(), f.out.data(), f.width, f.height); },
     [](Frame& f) { korvane::rgb2yuv_scalar(f.rgb.data(), f.out.data(), f.pixels); }},
    {"rgb2yuv422p", kEncodeGoal,
     [](Frame& f) {
         color_convert_rgb2yuv422p(f.rgb.data(), f.out.data(), f.outChroma(), f.outV(), f.width, f.height);
     },
     [](Frame& f) { korvane::rgb2yuv422p_scalar(f.rgb.data(), f.out.data(), f.outChroma(), f.outV(), f.pairs()); }},
    {"rgb2yv12oryu12", kEncodeGoal,
     [](Frame& f) {
         color_convert_rgb2yv12oryu12(f.rgb.data(), f.out.data(), f.outChroma(), f.outV(), f.width, f.height);
     },
     [](Frame& f) { korvane::rgb2yv12oryu12_scalar(f.rgb.data(), f.out.data(), f.outChroma(), f.outV(), f.quads()); }},
    {"rgb2nv12", kEncodeGoal,
     [](Frame& f) { color_convert_rgb2nv12(f.rgb.data(), f.out.data(), f.outChroma(), f.width, f.height); },
     [](Frame& f) { korvane::rgb2nv12_scalar(f.rgb.data(), f.out.data(), f.outChroma(), f.quads()); }},
};

struct Area {
    const char* name;
    void (*describe)(Comparison&, int width, int height);
};

constexpr Area kAreas[] = {
    {"yuyv2rgb", compare_yuyv2rgb}, {"nv212rgb", compare_nv212rgb}, {"rgb2yuyv", compare_rgb2yuyv},
    {"rgb2nv21", compare_rgb2nv21}, {"rgb2gray", compare_rgb2gray}, {"rgb2rgba", compare_rgb2rgba},
    {"rgba2rgb", compare_rgba2rgb},
};

std::vector<Registration> register_all() {
    std::vector<Registration> all;
    for (const Area& area : kAreas) {
        const auto describe = area.describe;
        all.emplace_back(std::string("color_convert_") + area.name + "/4000x3000",
                         [describe](Comparison& c) { describe(c, 4000, 3000); });
        all.emplace_back(std::string("color_convert_") + area.name + "/1920x1080",
                         [describe](Comparison& c) { describe(c, 1920, 1080); });
    }
    for (const Plain& plain : kPlain) {
        all.emplace_back(std::string("color_convert_") + plain.name + "/4000x3000", [&plain](Comparison& c) {
            compare_with_scalar(c, 4000, 3000, plain.kernel, plain.scalar, plain.goal, 0);
        });
    }
    return all;
}

const std::vector<Registration> kRegistrations = register_all();

}  // namespace
