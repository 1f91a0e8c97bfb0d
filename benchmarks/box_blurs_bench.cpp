// SPDX-License-Identifier: Apache-2.0
// The box blurs: fast_blur on colour pixels, gauss_blur on gray ones.
#include <cstddef>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <utility>
#include <vector>

#include "algorithms/fast_blur.h"
#include "algorithms/fast_blur_scalar.h"
#include "algorithms/gauss_blur.h"
#include "algorithms/gauss_blur_scalar.h"
#include "benchmarks/support/comparison.h"
#include "benchmarks/support/picture.h"

namespace {

using namespace korvane::bench;
using Bytes = std::vector<unsigned char>;

struct Images {
    int width;
    int height;
    Bytes source;
    Bytes scratch;
    Bytes result;
    Bytes other;
};

void compare_fast_blur(Comparison& comparison, int width, int height, int radius) {
    const Bytes picture = rgba_picture(width, height);
    auto images = std::make_shared<Images>(Images{width, height, picture, {}, Bytes(picture.size(), 1), picture});
    auto* pixels = reinterpret_cast<unsigned int*>(images->source.data());
    const auto blur = [=] { fast_blur(pixels, images->result.data(), width, height, radius); };
    const auto twin = [=] {
        korvane::fast_blur_scalar(pixels, images->other.data(), static_cast<size_t>(width), static_cast<size_t>(height),
                                  static_cast<size_t>(radius));
    };
    comparison.verify("equals the scalar twin", [=] {
        blur();
        twin();
        return images->result == images->other;
    });
    const bool isGoal = radius == 25 && width == 4000;
    const auto goal = [isGoal](Goal g) { return isGoal ? std::vector<Goal>{g} : std::vector<Goal>{}; };
    comparison.kernel(blur);
    comparison.against("scalar twin", goal(faster(20)), twin);
    comparison.against("cv::blur 8UC4", goal(faster(2.0)), [=] {
        const cv::Mat from(images->height, images->width, CV_8UC4, images->source.data());
        cv::Mat to(images->height, images->width, CV_8UC4, images->other.data());
        const int side = 2 * radius + 1;
        cv::blur(from, to, cv::Size(side, side), cv::Point(-1, -1), cv::BORDER_REPLICATE);
    });
    comparison.against_memcpy(goal(at_most(2.6)), picture.size());
}

const Registration kFastBlur[] = {
    {"fast_blur/4000x3000/radius:25", [](Comparison& c) { compare_fast_blur(c, 4000, 3000, 25); }},
    {"fast_blur/4096x3000/radius:25", [](Comparison& c) { compare_fast_blur(c, 4096, 3000, 25); }},
    {"fast_blur/1920x1080/radius:25", [](Comparison& c) { compare_fast_blur(c, 1920, 1080, 25); }},
    {"fast_blur/4000x3000/radius:3", [](Comparison& c) { compare_fast_blur(c, 4000, 3000, 3); }},
    {"fast_blur/4000x3000/radius:254", [](Comparison& c) { compare_fast_blur(c, 4000, 3000, 254); }},
};

void gauss_blur_with_twins(unsigned char* src, unsigned char* dst, int width, int height, int radius) {
    gauss_blur_coef boxes;
    calculate_gauss_blur_coef(static_cast<float>(radius), 3, &boxes);
    const auto columns = static_cast<size_t>(width);
    const auto rows = static_cast<size_t>(height);
    for (int i = 0; i < boxes.coef_n; ++i) {
        const auto boxRadius = static_cast<size_t>(boxes.coef_values[i] - 1) / 2;
        korvane::box_rows_in_place_scalar(src, dst, columns, rows, boxRadius);
        korvane::box_columns_scalar(src, dst, columns, rows, boxRadius);
        std::swap(src, dst);
    }
}

void compare_gauss_blur(Comparison& comparison, int width, int height, int radius) {
    const Bytes picture = rgba_picture(width, height);
    auto images = std::make_shared<Images>(Images{width, height, Bytes(picture.size() / 4), {}, {}, {}});
    for (size_t i = 0; i < images->source.size(); ++i) {
        images->source[i] = picture[i * 4 + 1];
    }
    images->scratch = images->result = images->other = images->source;
    // The source is scratch: what it holds does not matter for the time, only for the check.
    const auto blurWith = [images, radius](auto blur, Bytes Images::*result) {
        blur(images->scratch.data(), (images.get()->*result).data(), images->width, images->height, radius);
    };
    comparison.verify("equals the scalar twin", [=] {
        images->scratch = images->source;
        blurWith(gauss_blur, &Images::result);
        images->scratch = images->source;
        blurWith(gauss_blur_with_twins, &Images::other);
        return images->result == images->other;
    });
    const bool isGoal = radius == 10 && width == 4000;
    const auto goal = [isGoal](Goal g) { return isGoal ? std::vector<Goal>{g} : std::vector<Goal>{}; };
    comparison.kernel([=] { blurWith(gauss_blur, &Images::result); });
    comparison.against("scalar twin", goal(faster(10)), [=] { blurWith(gauss_blur_with_twins, &Images::other); });
    comparison.against("three cv::blur 8UC1", goal(faster(1.3)), [=] {
        cv::Mat from(images->height, images->width, CV_8UC1, images->scratch.data());
        cv::Mat to(images->height, images->width, CV_8UC1, images->other.data());
        const int side = 2 * radius + 1;
        for (int i = 0; i < 3; ++i) {
            cv::blur(from, to, cv::Size(side, side), cv::Point(-1, -1), cv::BORDER_REPLICATE);
            std::swap(from, to);
        }
    });
    // Its time grows with the radius, to seconds.
    if (radius <= 10) {
        comparison.against("cv::GaussianBlur", {}, [=] {
            const cv::Mat from(images->height, images->width, CV_8UC1, images->source.data());
            cv::Mat to(images->height, images->width, CV_8UC1, images->other.data());
            cv::GaussianBlur(from, to, cv::Size(0, 0), radius, radius, cv::BORDER_REPLICATE);
        });
    }
    comparison.against_memcpy({}, images->source.size());
}

const Registration kGaussBlur[] = {
    {"gauss_blur/4000x3000/radius:10", [](Comparison& c) { compare_gauss_blur(c, 4000, 3000, 10); }},
    {"gauss_blur/4096x3000/radius:10", [](Comparison& c) { compare_gauss_blur(c, 4096, 3000, 10); }},
    {"gauss_blur/1920x1080/radius:10", [](Comparison& c) { compare_gauss_blur(c, 1920, 1080, 10); }},
    {"gauss_blur/4000x3000/radius:150", [](Comparison& c) { compare_gauss_blur(c, 4000, 3000, 150); }},
};

}  // namespace
