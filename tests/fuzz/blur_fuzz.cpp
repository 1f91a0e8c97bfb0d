// SPDX-License-Identifier: Apache-2.0
// Each blur and the blend on a picture of any shape, with any radius and stride: the vector code of every instruction
// set against the plain loops.
#include "algorithms/alpha_blend.h"
#include "algorithms/fast_blur.h"
#include "algorithms/gauss_blur.h"
#include "algorithms/gauss_blur_iir.h"
#include "algorithms/stack_blur.h"
#include "tests/fuzz/fuzz.h"

namespace {

// Kernels change their integers about where a window of white pixels outgrows them.
int read_radius(Input& input, int most) {
    return input.one_in(4) ? input.PickValueInArray({31, 62, 63, 64, 65, 126, 127, 128, 129}) : input.hostile(most);
}

void blur_rgba(Input& input, const Shape& shape) {
    const int kind = input.between(0, 3);
    const int radius = read_radius(input, 256);
    const int color[] = {input.hostile(255), input.hostile(255), input.hostile(255)};
    const int size = input.between(-1, static_cast<int>(shape.pixels));
    const Bytes image = input.bytes(shape.pixels * 4);
    on_every_target([&] {
        Bytes result(image);
        if (kind == 0) {
            stack_blur(result.data(), shape.width, shape.height, radius);
        } else if (kind == 1) {
            std::vector<unsigned> words(shape.pixels);
            std::memcpy(words.data(), image.data(), image.size());
            fast_blur(words.data(), result.data(), shape.width, shape.height, radius);
        } else {
            (kind == 2 ? alpha_blend : alpha_blend_neon)(result.data(), size, color[0], color[1], color[2], radius);
        }
        return result;
    });
}

void blur_gray(Input& input, const Shape& shape) {
    constexpr decltype(&box_blur) kBlurs[] = {box_blurH, box_blurV, box_blur, gauss_blur};
    const auto blur = input.PickValueInArray(kBlurs);
    const int radius = read_radius(input, 90);
    const Bytes image = input.bytes(shape.pixels);
    on_every_target([&] {
        Bytes src(image);
        Bytes dst(image.size(), 7);
        blur(src.data(), dst.data(), shape.width, shape.height, radius);
        return dst;
    });
}

// Distances from well-behaved to those whose recursions overflow. Rows may lie apart, overlap or run backwards.
void blur_recursively(Input& input, const Shape& shape) {
    const int depth = input.between(3, 4);
    const int rowBytes = shape.width * depth;
    const int stride = input.one_in(8) ? input.between(-rowBytes, rowBytes) : rowBytes + input.between(0, 9);
    const float horz = input.number(64);
    const float vert = input.ConsumeBool() ? horz : input.number(64);
    const auto apart = static_cast<size_t>(std::abs(stride)) * static_cast<size_t>(shape.height - 1);
    const Bytes image = input.bytes(apart + static_cast<size_t>(rowBytes));
    on_every_target([&] {
        Bytes result(image);
        gaussiir(result.data() + (stride < 0 ? apart : 0), shape.width, shape.height, depth, stride, horz, vert);
        return result;
    });
}

}  // namespace

void fuzz(Input& input) {
    // Radii are held within both sides, so now and then both are long.
    const Shape shape = input.shape(150, input.one_in(8) ? 150 : 14);
    input.PickValueInArray({blur_rgba, blur_gray, blur_recursively})(input, shape);
}
