// The box blurs: fast_blur on colour pixels, gauss_blur on grey ones.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <opencv2/imgproc.hpp>
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
    const auto* pixels = reinterpret_cast<const unsigned int*>(images->source.data());
    const auto blurWith = [images, pixels, radius](auto blur, Bytes Images::*result) {
        blur(pixels, (images.get()->*result).data(), images->width, images->height, radius);
    };
    comparison.verify("equals the scalar twin", [=] {
        blurWith(fast_blur, &Images::result);
        blurWith(fast_blur_scalar, &Images::other);
        return images->result == images->other;
    });
    const bool isGoal = radius == 25 && width == 4000;
    const auto goal = [isGoal](Goal g) { return isGoal ? std::vector<Goal>{g} : std::vector<Goal>{}; };
    comparison.kernel([=] { blurWith(fast_blur, &Images::result); });
    comparison.against("scalar twin", goal(faster(20)), [=] { blurWith(fast_blur_scalar, &Images::other); });
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
        blurWith(gauss_blur_scalar, &Images::other);
        return images->result == images->other;
    });
    const bool isGoal = radius == 10 && width == 4000;
    const auto goal = [isGoal](Goal g) { return isGoal ? std::vector<Goal>{g} : std::vector<Goal>{}; };
    comparison.kernel([=] { blurWith(gauss_blur, &Images::result); });
    comparison.against("scalar twin", goal(faster(10)), [=] { blurWith(gauss_blur_scalar, &Images::other); });
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
