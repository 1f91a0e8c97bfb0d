// SPDX-License-Identifier: Apache-2.0
// OpenCV and libimagequant.
#include <libimagequant.h>

#include <cstring>
#include <memory>
#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>

#include "benchmarks/arm/cost.h"

namespace korvane::arm {
namespace {

constexpr int kWidth = Scene::kWidth;
constexpr int kHeight = Scene::kHeight;

cv::Mat mat(std::vector<uint8_t>& bytes, int type) {
    return {kHeight, kWidth, type, bytes.data()};
}

void box_blur_with_opencv(const cv::Mat& from, cv::Mat to, int side) {
    cv::blur(from, to, {side, side}, {-1, -1}, cv::BORDER_REPLICATE);
}

// Two boxes of r + 1 make the triangle of weights of a stack blur.
Peer stack_blur_peer(int radius) {
    return {"stack_blur r=" + std::to_string(radius),
            "cv::blur r + 1 twice",
            [=](Scene& s) {
                box_blur_with_opencv(mat(s.rgba, CV_8UC4), mat(s.step, CV_8UC4), radius + 1);
                box_blur_with_opencv(mat(s.step, CV_8UC4), mat(s.out, CV_8UC4), radius + 1);
            },
            5,
            {}};
}

Peer fast_blur_peer(int radius) {
    return {"fast_blur r=" + std::to_string(radius),
            "cv::blur 8UC4 2r + 1",
            [=](Scene& s) { box_blur_with_opencv(mat(s.rgba, CV_8UC4), mat(s.out, CV_8UC4), 2 * radius + 1); },
            3,
            {}};
}

Peer gaussian_peer(int depth, double sigma, const char* name) {
    const int type = depth == 4 ? CV_8UC4 : CV_8UC3;
    return {"gaussiir depth " + std::to_string(depth) + " sigma " + name,
            "cv::GaussianBlur same sigma",
            [=](Scene& s) {
                cv::Mat to = mat(s.out, type);
                cv::GaussianBlur(mat(depth == 4 ? s.rgba : s.rgb, type), to, {}, sigma, sigma, cv::BORDER_REPLICATE);
            },
            3,
            {}};
}

Peer corners_peer(const char* kernel, bool nonmax) {
    const auto corners = std::make_shared<std::vector<cv::KeyPoint>>();
    return {kernel,
            "cv::FAST TYPE_9_16",
            [=](Scene& s) { cv::FAST(mat(s.gray, CV_8UC1), *corners, 20, nonmax, cv::FastFeatureDetector::TYPE_9_16); },
            -1,
            {}};
}

void three_boxes(Scene& s) {
    box_blur_with_opencv(mat(s.gray, CV_8UC1), mat(s.out, CV_8UC1), 21);
    box_blur_with_opencv(mat(s.out, CV_8UC1), mat(s.step, CV_8UC1), 21);
    box_blur_with_opencv(mat(s.step, CV_8UC1), mat(s.out, CV_8UC1), 21);
}

std::vector<Peer> blur_peers() {
    return {
        stack_blur_peer(25),
        stack_blur_peer(100),
        fast_blur_peer(3),
        fast_blur_peer(25),
        fast_blur_peer(200),
        {"gauss_blur r=10", "cv::blur 8UC1 three times", three_boxes, 3, {}},
        gaussian_peer(4, 3.3, "3.3"),
        gaussian_peer(4, 10, "10"),
        gaussian_peer(3, 3.3, "3.3"),
    };
}

cv::Mat frame_of(Scene& s) {
    return {kHeight, 2 * kWidth, CV_8UC1, s.yuyv.data()};
}

cv::Mat floats_of(Scene& s) {
    return {kHeight, 2 * kWidth, CV_32FC1, s.step.data()};
}

cv::Mat sums_of(Scene& s) {
    return {kHeight, 2 * kWidth, CV_32SC1, s.sums.data()};
}

cv::Mat out_frame(Scene& s) {
    return {kHeight, 2 * kWidth, CV_8UC1, s.out.data()};
}

void convert(const cv::Mat& from, cv::Mat to, double scale = 1) {
    from.convertTo(to, to.type(), scale);
}

void accumulate(Scene& s) {
    cv::Mat sums = floats_of(s);
    cv::accumulate(frame_of(s), sums);
}

// Of numbers as wide as the accumulator: the frame was widened before.
void larger_numbers(Scene& s) {
    cv::Mat sums = sums_of(s);
    const cv::Mat wide(kHeight, 2 * kWidth, CV_32SC1, s.step.data());
    cv::max(sums, wide, sums);
}

void widen_frame(Scene& s) {
    convert(frame_of(s), {kHeight, 2 * kWidth, CV_32SC1, s.step.data()});
}

void clear_floats(Scene& s) {
    std::memset(s.step.data(), 0, s.step.size());
}

std::vector<Peer> merge_peers() {
    return {
        {"merge_add", "cv::accumulate (float sums)", accumulate, -1, clear_floats},
        {"merge_max", "cv::max (int sums, frame as int)", larger_numbers, -1, widen_frame},
        {"merge_first", "cv convertTo 32S", [](Scene& s) { convert(frame_of(s), sums_of(s)); }, 0, {}},
        {"merged_mean", "cv convertTo 8U from float sums",
         [](Scene& s) { convert(floats_of(s), out_frame(s), 1.0 / 8); }, -1, clear_floats},
        {"merged_low_bytes",
         "cv convertTo 8U (saturates)",
         [](Scene& s) { convert(sums_of(s), out_frame(s)); },
         -1,
         {}},
        {"luma_sum",
         "cv::sum 8UC1",
         [](Scene& s) { s.sums[0] = static_cast<int>(cv::sum(mat(s.planar, CV_8UC1))[0]); },
         0,
         {}},
        {"luma_sum_yuyv",
         "cv::sum 8UC2",
         [](Scene& s) { s.sums[0] = static_cast<int>(cv::sum(mat(s.yuyv, CV_8UC2))[0]); },
         0,
         {}},
    };
}

void palette_with_libimagequant(Scene& s) {
    liq_attr* attributes = liq_attr_create();
    liq_set_speed(attributes, 10);
    liq_set_max_colors(attributes, 256);
    liq_image* image = liq_image_create_rgba(attributes, s.rgba.data(), kWidth, kHeight, 0);
    liq_result* result = nullptr;
    if (liq_image_quantize(image, attributes, &result) == LIQ_OK) {
        s.step[0] = static_cast<uint8_t>(liq_get_palette(result)->count);
        liq_result_destroy(result);
    }
    liq_image_destroy(image);
    liq_attr_destroy(attributes);
}

}  // namespace

std::vector<Peer> vision_peers() {
    cv::setNumThreads(1);
    std::vector<Peer> peers = {
        corners_peer("fast16 t=20 nonmax", true),
        corners_peer("fast16 t=20 all", false),
        {"palette of 256", "libimagequant speed 10, palette only", palette_with_libimagequant, -1, {}},
        {"gray2rgb",
         "cv GRAY2RGB",
         [](Scene& s) {
             cv::Mat to = mat(s.out, CV_8UC3);
             cv::cvtColor(mat(s.gray, CV_8UC1), to, cv::COLOR_GRAY2RGB);
         },
         0,
         {}},
        {"gray2rgba",
         "cv GRAY2RGBA",
         [](Scene& s) {
             cv::Mat to = mat(s.out, CV_8UC4);
             cv::cvtColor(mat(s.gray, CV_8UC1), to, cv::COLOR_GRAY2RGBA);
         },
         0,
         {}},
    };
    for (const auto& list : {blur_peers(), merge_peers()}) {
        peers.insert(peers.end(), list.begin(), list.end());
    }
    return peers;
}

}  // namespace korvane::arm
