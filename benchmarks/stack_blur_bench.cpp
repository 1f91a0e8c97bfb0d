// SPDX-License-Identifier: Apache-2.0
#include "algorithms/stack_blur.h"

#include <cmath>
#include <cstddef>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "algorithms/stack_blur_scalar.h"
#include "benchmarks/support/comparison.h"
#include "benchmarks/support/picture.h"

namespace {

using namespace korvane::bench;

using Picture = std::shared_ptr<std::vector<unsigned char>>;
using Goals = std::vector<Goal>;

struct Size {
    int width;
    int height;

    std::string name() const { return std::to_string(width) + "x" + std::to_string(height); }
    double pixels() const { return static_cast<double>(width) * height; }
};

constexpr Size kFullHd{1920, 1080};
constexpr Size kTwelveMegapixels{4000, 3000};
constexpr Size kPowerOfTwoWide{4096, 3000};

Picture picture_of(Size size) {
    return std::make_shared<std::vector<unsigned char>>(rgba_picture(size.width, size.height));
}

void blur_with_twin(unsigned char* image, int width, int height, int radius) {
    korvane::stack_blur_scalar(image, static_cast<size_t>(width), static_cast<size_t>(height),
                               static_cast<size_t>(radius));
}

bool equals_scalar(Size size, int radius) {
    std::vector<unsigned char> ours = rgba_picture(size.width, size.height);
    std::vector<unsigned char> theirs = ours;
    stack_blur(ours.data(), size.width, size.height, radius);
    blur_with_twin(theirs.data(), size.width, size.height, radius);
    return ours == theirs;
}

// The blur's work does not depend on what it blurs, so it may run on its own output.
Comparison::Action blur_of(Size size, int radius, void (*blur)(unsigned char*, int, int, int) = stack_blur) {
    return [picture = picture_of(size), size, radius, blur] { blur(picture->data(), size.width, size.height, radius); };
}

Comparison::Action cv_box(Size size, int diameter, int passes) {
    return [picture = picture_of(size), result = picture_of(size), size, diameter, passes] {
        const cv::Mat from(size.height, size.width, CV_8UC4, picture->data());
        cv::Mat to(size.height, size.width, CV_8UC4, result->data());
        for (int i = 0; i < passes; ++i) {
            cv::blur(from, to, {diameter, diameter});
        }
    };
}

Comparison::Action cv_gaussian(Size size, double deviation) {
    return [picture = picture_of(size), result = picture_of(size), size, deviation] {
        const cv::Mat from(size.height, size.width, CV_8UC4, picture->data());
        cv::Mat to(size.height, size.width, CV_8UC4, result->data());
        cv::GaussianBlur(from, to, {}, deviation);
    };
}

struct BlurGoals {
    Goals scalar;
    Goals memcpy;
    Goals gaussian;
    Goals twoBoxes;
    Goals oneBox;
};

// Peers of equal reach: the Gaussian of the same deviation, two boxes that make the same triangle of weights, and the
// single box of the window's width.
void compare_blur(Comparison& comparison, Size size, int radius, const BlurGoals& goals) {
    comparison.verify("equals the scalar twin", [=] { return equals_scalar(size, radius); });
    comparison.kernel(blur_of(size, radius));
    comparison.against("scalar twin", goals.scalar, blur_of(size, radius, blur_with_twin));
    comparison.against_memcpy(goals.memcpy, static_cast<size_t>(size.pixels()) * 4);
    comparison.against("two cv::blur of radius + 1", goals.twoBoxes, cv_box(size, radius + 1, 2));
    comparison.against("cv::blur of 2 * radius + 1", goals.oneBox, cv_box(size, 2 * radius + 1, 1));
    if (radius <= 25) {
        comparison.against("cv::GaussianBlur, same deviation", goals.gaussian,
                           cv_gaussian(size, std::sqrt(radius * (radius + 2) / 6.0)));
    }
}

Registration blur_registration(Size size, int radius, BlurGoals goals = {}) {
    return {"stack_blur/" + size.name() + "/radius:" + std::to_string(radius),
            [=](Comparison& comparison) { compare_blur(comparison, size, radius, goals); }};
}

const Registration kBlurs[] = {
    blur_registration(kTwelveMegapixels, 3),
    blur_registration(kTwelveMegapixels, 25,
                      {.scalar = {faster(8, 6.5)},
                       .memcpy = {at_most(3.0, 3.6)},
                       .gaussian = {faster(15, 12)},
                       .twoBoxes = {faster(3, 2.4)},
                       .oneBox = {faster(1.6, 1.3)}}),
    blur_registration(kTwelveMegapixels, 100),
    blur_registration(kTwelveMegapixels, 254),
    blur_registration(kFullHd, 3),
    blur_registration(kFullHd, 25),
    blur_registration(kFullHd, 100),
    blur_registration(kFullHd, 254),
};

const Registration kLargestRadius("stack_blur/4000x3000/radius:254_to_25", [](Comparison& comparison) {
    comparison.kernel(blur_of(kTwelveMegapixels, 254));
    comparison.against("radius 25", {at_most(1.35, 1.5)}, blur_of(kTwelveMegapixels, 25));
});

// Rows a power of two apart compete for the same sets of the caches.
Registration width_registration(int radius) {
    return {"stack_blur/4096_to_4000_wide/radius:" + std::to_string(radius), [=](Comparison& comparison) {
                comparison.verify("equals the scalar twin", [=] { return equals_scalar(kPowerOfTwoWide, radius); });
                comparison.kernel(blur_of(kPowerOfTwoWide, radius));
                comparison.against("4000 wide, per pixel", {at_most(1.25)}, blur_of(kTwelveMegapixels, radius), {},
                                   kTwelveMegapixels.pixels() / kPowerOfTwoWide.pixels());
            }};
}

const Registration kWidths[] = {width_registration(3), width_registration(25), width_registration(100),
                                width_registration(254)};

}  // namespace
