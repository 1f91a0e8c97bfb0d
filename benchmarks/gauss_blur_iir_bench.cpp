// SPDX-License-Identifier: Apache-2.0
// The recursive Gaussian: its time must depend neither on the deviation nor on what the picture shows.
#include <algorithm>
#include <cstddef>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "algorithms/flush_denormals.h"
#include "algorithms/gauss_blur_iir.h"
#include "algorithms/gauss_blur_iir_scalar.h"
#include "benchmarks/support/comparison.h"
#include "benchmarks/support/picture.h"

namespace {

using namespace korvane::bench;
using Bytes = std::vector<unsigned char>;

struct Images {
    int width;
    int height;
    int depth;
    Bytes source;
    Bytes result;
    Bytes other;
};

std::shared_ptr<Images> images_of(int width, int height, int depth) {
    const Bytes picture = rgba_picture(width, height);
    Bytes source(picture.size() / 4 * static_cast<size_t>(depth));
    for (size_t i = 0; i < picture.size() / 4; ++i) {
        std::copy_n(&picture[i * 4], depth, &source[i * static_cast<size_t>(depth)]);
    }
    return std::make_shared<Images>(Images{width, height, depth, source, source, source});
}

void blur(Images& images, Bytes& bytes, float distance) {
    gaussiir(bytes.data(), images.width, images.height, images.depth, images.width * images.depth, distance, distance);
}

void blur_plainly(Images& images, float distance) {
    const korvane::FlushDenormals mode;
    korvane::gaussiir_scalar(images.other.data(), images.width, images.height, images.depth,
                             images.width * images.depth, distance, distance);
}

void blur_by_opencv(Images& images, double sigma) {
    const int type = images.depth == 4 ? CV_8UC4 : CV_8UC3;
    const cv::Mat from(images.height, images.width, type, images.source.data());
    cv::Mat to(images.height, images.width, type, images.other.data());
    cv::GaussianBlur(from, to, cv::Size(0, 0), sigma, sigma, cv::BORDER_REPLICATE);
}

void compare(Comparison& comparison, std::shared_ptr<Images> images, float distance, double sigma,
             std::vector<Goal> peerGoals, std::vector<Goal> plainGoals, std::vector<Goal> copyGoals) {
    comparison.verify("equals the scalar twin", [=] {
        images->result = images->other = images->source;
        blur(*images, images->result, distance);
        blur_plainly(*images, distance);
        return images->result == images->other;
    });
    // Blurring in place again and again would end on a grey field: every run starts from the picture.
    const auto restore = [=] { images->result = images->source; };
    comparison.kernel([=] { blur(*images, images->result, distance); }, restore);
    comparison.against("scalar twin", plainGoals, [=] { blur_plainly(*images, distance); });
    comparison.against("cv::GaussianBlur", peerGoals, [=] { blur_by_opencv(*images, sigma); });
    comparison.against_memcpy(copyGoals, images->source.size());
}

// The kernel on a picture that is black but for its upper tenth, and the same kernel on the picture.
void compare_black(Comparison& comparison, int width, int height) {
    auto images = images_of(width, height, 4);
    auto black = std::make_shared<Bytes>(images->source);
    std::fill(black->begin() + static_cast<std::ptrdiff_t>(black->size() / 10), black->end(), 0);
    auto work = std::make_shared<Bytes>(*black);
    comparison.kernel([=] { blur(*images, *work, 10); }, [=] { *work = *black; });
    comparison.against(
        "the same on a photo", {at_most(1.3)}, [=] { blur(*images, images->result, 10); },
        [=] { images->result = images->source; });
}

void compare_distances(Comparison& comparison, int width, int height) {
    auto images = images_of(width, height, 4);
    const auto restore = [=] { images->result = images->source; };
    comparison.kernel([=] { blur(*images, images->result, 32.3F); }, restore);
    for (const float distance : {3.0F, 10.0F, 80.0F}) {
        comparison.against(
            "distance " + std::to_string(static_cast<int>(distance)), {at_most(1.15), faster(1 / 1.15)},
            [=] { blur(*images, images->result, distance); }, restore);
    }
}

const Registration kGaussIir[] = {
    {"gaussiir/4000x3000/distance:10",
     [](Comparison& c) {
         compare(c, images_of(4000, 3000, 4), 10, 3.3, {faster(1.2, 0.85)}, {faster(15, 11)}, {at_most(9.5, 14)});
     }},
    {"gaussiir/4000x3000/distance:32.3",
     [](Comparison& c) { compare(c, images_of(4000, 3000, 4), 32.3F, 10, {faster(4, 3)}, {}, {}); }},
    {"gaussiir/4096x3000/distance:10",
     [](Comparison& c) { compare(c, images_of(4096, 3000, 4), 10, 3.3, {}, {}, {}); }},
    {"gaussiir/4000x3000/depth:3/distance:10",
     [](Comparison& c) { compare(c, images_of(4000, 3000, 3), 10, 3.3, {}, {}, {}); }},
    {"gaussiir/1920x1080/distance:10",
     [](Comparison& c) { compare(c, images_of(1920, 1080, 4), 10, 3.3, {}, {}, {}); }},
    {"gaussiir/4000x3000/black", [](Comparison& c) { compare_black(c, 4000, 3000); }},
    {"gaussiir/4000x3000/distances", [](Comparison& c) { compare_distances(c, 4000, 3000); }},
};

}  // namespace
