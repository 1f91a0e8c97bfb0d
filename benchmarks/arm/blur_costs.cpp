// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "algorithms/alpha_blend.h"
#include "algorithms/alpha_blend_scalar.h"
#include "algorithms/fast_blur.h"
#include "algorithms/fast_blur_scalar.h"
#include "algorithms/flush_denormals.h"
#include "algorithms/gauss_blur.h"
#include "algorithms/gauss_blur_iir.h"
#include "algorithms/gauss_blur_iir_scalar.h"
#include "algorithms/gauss_blur_scalar.h"
#include "algorithms/stack_blur.h"
#include "algorithms/stack_blur_scalar.h"
#include "benchmarks/arm/cost.h"

namespace korvane::arm {
namespace {

constexpr int kWidth = Scene::kWidth;
constexpr int kHeight = Scene::kHeight;
// As the twins count.
constexpr size_t kColumns = Scene::kWidth;
constexpr size_t kRows = Scene::kHeight;

void copy_rgba(Scene& s) {
    std::memcpy(s.out.data(), s.rgba.data(), s.rgba.size());
}

void copy_rgb(Scene& s) {
    std::memcpy(s.out.data(), s.rgb.data(), s.rgb.size());
}

// The gray blur spends its source.
void copy_gray(Scene& s) {
    std::memcpy(s.step.data(), s.gray.data(), s.gray.size());
}

Cost stack_blur_cost(int radius) {
    return {"stack_blur r=" + std::to_string(radius),
            [=](Scene& s) { stack_blur(s.out.data(), kWidth, kHeight, radius); },
            [=](Scene& s) { stack_blur_scalar(s.out.data(), kColumns, kRows, static_cast<size_t>(radius)); },
            copy_rgba,
            {}};
}

Cost fast_blur_cost(int radius) {
    const auto pixels = [](Scene& s) { return reinterpret_cast<unsigned*>(s.rgba.data()); };
    return {"fast_blur r=" + std::to_string(radius),
            [=](Scene& s) { fast_blur(pixels(s), s.out.data(), kWidth, kHeight, radius); },
            [=](Scene& s) { fast_blur_scalar(pixels(s), s.out.data(), kColumns, kRows, static_cast<size_t>(radius)); },
            {},
            {}};
}

// The three boxes that come closest to a deviation of 10 pixels.
void gauss_blur_twin(Scene& s) {
    gauss_blur_coef boxes = {};
    calculate_gauss_blur_coef(10.0F, 3, &boxes);
    uint8_t* from = s.step.data();
    uint8_t* to = s.out.data();
    for (int box = 0; box < 3; ++box) {
        const auto radius = static_cast<size_t>((boxes.coef_values[box] - 1) / 2);
        box_rows_in_place_scalar(from, to, kColumns, kRows, radius);
        box_columns_scalar(from, to, kColumns, kRows, radius);
        std::swap(from, to);
    }
}

// `distance` / 3.035 is the deviation.
Cost gaussiir_cost(int depth, float distance, const char* sigma) {
    const int stride = depth * kWidth;
    return {"gaussiir depth " + std::to_string(depth) + " sigma " + sigma,
            [=](Scene& s) { gaussiir(s.out.data(), kWidth, kHeight, depth, stride, distance, distance); },
            [=](Scene& s) {
                const FlushDenormals mode;
                gaussiir_scalar(s.out.data(), kWidth, kHeight, depth, stride, distance, distance);
            },
            depth == 4 ? copy_rgba : copy_rgb,
            {}};
}

void alpha_blend_twin(Scene& s) {
    blend_scalar(s.out.data(), Scene::kPixels, {{16 * 77, 32 * 77, 48 * 77}, 256 - 77});
}

}  // namespace

std::vector<Cost> blur_costs() {
    constexpr int kPixels = static_cast<int>(Scene::kPixels);
    return {
        stack_blur_cost(25),
        stack_blur_cost(100),
        fast_blur_cost(3),
        fast_blur_cost(25),
        fast_blur_cost(200),
        {"gauss_blur r=10",
         [](Scene& s) { gauss_blur(s.step.data(), s.out.data(), kWidth, kHeight, 10); },
         gauss_blur_twin,
         copy_gray,
         {}},
        gaussiir_cost(4, 10.0F, "3.3"),
        gaussiir_cost(4, 30.35F, "10"),
        gaussiir_cost(3, 10.0F, "3.3"),
        {"alpha_blend",
         [](Scene& s) { alpha_blend(s.out.data(), kPixels, 16, 32, 48, 77); },
         alpha_blend_twin,
         copy_rgba,
         {}},
    };
}

}  // namespace korvane::arm
