// SPDX-License-Identifier: Apache-2.0
// Corners, local binary patterns and palettes.
#include <cstring>
#include <memory>

#include "algorithms/fast_detection.h"
#include "algorithms/fast_detection_frame.h"
#include "algorithms/fast_detection_scalar.h"
#include "algorithms/lbp.h"
#include "algorithms/lbp_scalar.h"
#include "benchmarks/arm/cost.h"

namespace korvane::arm {
namespace {

constexpr unsigned short kLevels = 5;

template <typename T>
std::vector<uint8_t> bytes_of(const T* items, size_t count) {
    const auto* first = reinterpret_cast<const uint8_t*>(items);
    return {first, first + count * sizeof(T)};
}

Cost corners_cost(const char* name, int nonmax) {
    // Bins of two columns in bands of one row hardly thin anything out.
    const FastParams params = {20, nonmax, 2, 0, 3, 3};
    return {name,
            [=](Scene& s) { fast16(s.gray.data(), s.corners, Scene::kWidth, Scene::kHeight, &params); },
            [=](Scene& s) {
                fast16_scalar(s.gray.data(), s.corners, FastFrame(Scene::kWidth, Scene::kHeight, params), params);
            },
            {},
            [](const Scene& s) { return bytes_of(s.corners.data(), s.corners.size()); }};
}

unsigned slots() {
    return lbp_pyr_get_dim(Scene::kHeight, Scene::kWidth, kLevels);
}

// The patterns use up the image, which is as large as Scene::out.
void copy_columns(Scene& s) {
    std::memcpy(s.step.data(), s.columns.data(), 4 * Scene::kPixels);
}

Cost sparse_cost() {
    const auto listed = [](auto list) {
        return [=](Scene& s) {
            list(reinterpret_cast<unsigned*>(s.sums.data()), slots() / 256, reinterpret_cast<unsigned*>(s.step.data()),
                 static_cast<unsigned short>(Scene::kHeight), static_cast<unsigned short>(Scene::kWidth));
        };
    };
    return {"lbp sparse", listed(lbp_pyr_features_sparse), listed(lbp_pyr_features_sparse_scalar), copy_columns,
            [](const Scene& s) { return bytes_of(s.sums.data(), slots() / 256); }};
}

Cost dense_cost() {
    // Far larger than the picture, so it lives only here and not in the scene.
    const auto counts = std::make_shared<std::vector<char>>();
    const auto counted = [counts](auto count) {
        return [=](Scene& s) {
            count(counts->data(), slots(), reinterpret_cast<unsigned*>(s.step.data()),
                  static_cast<unsigned short>(Scene::kHeight), static_cast<unsigned short>(Scene::kWidth));
        };
    };
    return {"lbp dense", counted(lbp_pyr_features), counted(lbp_pyr_features_scalar),
            [counts](Scene& s) {
                copy_columns(s);
                counts->assign(slots(), 0);
            },
            [counts](const Scene& /*s*/) { return bytes_of(counts->data(), counts->size()); }};
}

Cost palette_cost() {
    return {"palette of 256",
            [](Scene& s) {
                ColorQuantizer quantizer;
                quantizer.prepare(Scene::kWidth, Scene::kHeight);
                for (size_t i = 0; i < s.rgba.size(); i += 4) {
                    quantizer.addColor(s.rgba[i], s.rgba[i + 1], s.rgba[i + 2]);
                }
                s.palette = quantizer.getPalette(256);
            },
            {},
            {},
            [](const Scene& s) { return bytes_of(s.palette.data(), s.palette.size()); }};
}

}  // namespace

std::vector<Cost> analysis_costs() {
    return {corners_cost("fast16 t=20 nonmax", 1), corners_cost("fast16 t=20 all", 0), sparse_cost(), dense_cost(),
            palette_cost()};
}

}  // namespace korvane::arm
