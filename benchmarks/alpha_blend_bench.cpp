// SPDX-License-Identifier: Apache-2.0
#include "algorithms/alpha_blend.h"

#include <libyuv.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "algorithms/alpha_blend_scalar.h"
#include "benchmarks/support/comparison.h"
#include "benchmarks/support/picture.h"

namespace {

using namespace korvane::bench;

constexpr int kWeight = 77;

using Blend = void (*)(unsigned char*, int, int, int, int, int);

void blend_with_twin(unsigned char* dest, int size, int r, int g, int b, int a) {
    const auto addend = [a](int color) { return static_cast<uint16_t>(a * color); };
    korvane::blend_scalar(dest, static_cast<size_t>(size),
                          {{addend(r), addend(g), addend(b)}, static_cast<uint16_t>(256 - a)});
}

std::vector<unsigned char> blended(int width, int height, Blend blend) {
    std::vector<unsigned char> pixels = rgba_picture(width, height);
    blend(pixels.data(), width * height, 16, 32, 48, kWeight);
    return pixels;
}

void compare_blend(Comparison& comparison, int width, int height, double fasterThanScalar) {
    const auto picture = std::make_shared<std::vector<unsigned char>>(rgba_picture(width, height));
    const auto solid = std::make_shared<std::vector<unsigned char>>(picture->size(), static_cast<unsigned char>(32));
    const int count = width * height;
    comparison.verify("both equal the scalar twin", [=] {
        const auto twin = blended(width, height, blend_with_twin);
        return blended(width, height, alpha_blend) == twin && blended(width, height, alpha_blend_neon) == twin;
    });
    const auto action = [=](Blend blend) -> Comparison::Action {
        return [=] { blend(picture->data(), count, 16, 32, 48, kWeight); };
    };
    comparison.kernel(action(alpha_blend_neon));
    comparison.against("alpha_blend", {}, action(alpha_blend));
    comparison.against("scalar twin", {faster(fasterThanScalar)}, action(blend_with_twin));
    comparison.against_memcpy({at_most(1.0, 1.1)}, picture->size());
    comparison.against("libyuv ARGBInterpolate", {faster(1.4)}, [=] {
        libyuv::ARGBInterpolate(picture->data(), width * 4, solid->data(), width * 4, picture->data(), width * 4, width,
                                height, kWeight);
    });
    comparison.against("cv::addWeighted", {faster(2)}, [=] {
        cv::Mat image(height, width, CV_8UC4, picture->data());
        const cv::Mat color(height, width, CV_8UC4, solid->data());
        cv::addWeighted(image, 1 - kWeight / 256.0, color, kWeight / 256.0, 0, image);
    });
}

const Registration kFullHd("alpha_blend/1920x1080", [](Comparison& c) { compare_blend(c, 1920, 1080, 7); });
const Registration kTwelveMegapixels("alpha_blend/4000x3000", [](Comparison& c) { compare_blend(c, 4000, 3000, 3.3); });

}  // namespace
