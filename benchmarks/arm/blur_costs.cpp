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
            [=](Scene& s) { stack_blur_scalar(s.out.data(), kWidth, kHeight, radius); },
            copy_rgba,
            {}};
}

Cost fast_blur_cost(int radius) {
    const auto blurred = [radius](auto blur) {
        return [=](Scene& s) {
            blur(reinterpret_cast<const unsigned*>(s.rgba.data()), s.out.data(), kWidth, kHeight, radius);
        };
    };
    return {"fast_blur r=" + std::to_string(radius), blurred(fast_blur), blurred(fast_blur_scalar), {}, {}};
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
         [](Scene& s) { gauss_blur_scalar(s.step.data(), s.out.data(), kWidth, kHeight, 10); },
         copy_gray,
         {}},
        gaussiir_cost(4, 10.0F, "3.3"),
        gaussiir_cost(4, 30.35F, "10"),
        gaussiir_cost(3, 10.0F, "3.3"),
        {"alpha_blend",
         [](Scene& s) { alpha_blend(s.out.data(), kPixels, 16, 32, 48, 77); },
         [](Scene& s) { alpha_blend_scalar(s.out.data(), kPixels, 16, 32, 48, 77); },
         copy_rgba,
         {}},
    };
}

}  // namespace korvane::arm
