// SPDX-License-Identifier: Apache-2.0
// Corner detection against the detector of OpenCV with the same threshold and suppression, and the scalar twin.
#include <memory>
#include <opencv2/features2d.hpp>
#include <vector>

#include "algorithms/fast_detection.h"
#include "algorithms/fast_detection_frame.h"
#include "algorithms/fast_detection_scalar.h"
#include "benchmarks/support/comparison.h"
#include "benchmarks/support/picture.h"

namespace {

using namespace korvane::bench;

// No thinning to speak of: bins of 2 columns in bands of one row, where suppression leaves one corner at most.
constexpr FastParams kParams = {20, 1, 2, 0, 3, 3};

struct Scene {
    int width;
    int height;
    std::vector<unsigned char> grey;
    std::vector<KeyPoint> corners;
    std::vector<cv::KeyPoint> peerCorners;
};

std::shared_ptr<Scene> scene_of(int width, int height) {
    auto scene = std::make_shared<Scene>();
    scene->width = width;
    scene->height = height;
    const std::vector<unsigned char> picture = rgba_picture(width, height);
    for (size_t i = 0; i < picture.size(); i += 4) {
        scene->grey.push_back(
            static_cast<unsigned char>((picture[i] * 77 + picture[i + 1] * 150 + picture[i + 2] * 29) >> 8));
    }
    return scene;
}

void detect_with_twin(const Scene& scene, std::vector<KeyPoint>& corners) {
    corners.clear();
    korvane::fast16_scalar(scene.grey.data(), corners, korvane::FastFrame(scene.width, scene.height, kParams), kParams);
}

bool equals_scalar_twin(const Scene& scene) {
    std::vector<KeyPoint> ours;
    std::vector<KeyPoint> plain;
    fast16(scene.grey.data(), ours, scene.width, scene.height, &kParams);
    detect_with_twin(scene, plain);
    return !ours.empty() && std::equal(ours.begin(), ours.end(), plain.begin(), plain.end(),
                                       [](const KeyPoint& a, const KeyPoint& b) { return a.x == b.x && a.y == b.y; });
}

void compare_fast16(Comparison& comparison, int width, int height) {
    const auto scene = scene_of(width, height);
    comparison.verify("equals the scalar twin", [scene] { return equals_scalar_twin(*scene); });
    comparison.kernel([scene] { fast16(scene->grey.data(), scene->corners, scene->width, scene->height, &kParams); });
    comparison.against("scalar twin", {faster(5.5)}, [scene] { detect_with_twin(*scene, scene->corners); });
    comparison.against("cv::FAST", {faster(1.4)}, [scene] {
        const cv::Mat image(scene->height, scene->width, CV_8UC1, scene->grey.data());
        cv::FAST(image, scene->peerCorners, kParams.threshold, true);
    });
    comparison.against_memcpy({}, scene->grey.size() * 4);
}

const Registration k12Megapixels("fast16/4000x3000", [](Comparison& c) { compare_fast16(c, 4000, 3000); });
const Registration k2Megapixels("fast16/1920x1080", [](Comparison& c) { compare_fast16(c, 1920, 1080); });

}  // namespace
