// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>

#include "algorithms/alpha_blend.h"
#include "algorithms/fast_blur.h"
#include "algorithms/gauss_blur.h"
#include "algorithms/gauss_blur_iir.h"
#include "algorithms/stack_blur.h"
#include "tools/command.h"
#include "tools/photo/photo_io.h"
#include "tools/scene.h"

namespace {

using namespace korvane;

void write_scene(const std::string& path, uint32_t width, uint32_t height) {
    Photo scene;
    scene.image = draw_scene(width, height);
    write_photo(path, scene);
}

template <typename Blur>
void blur_channels(const Blur& blur, unsigned char* pixels, int width, int height, int radius) {
    for (size_t c = 0; c < 3; ++c) {
        Bytes channel, blurred(static_cast<size_t>(width * height));
        for (size_t i = c; i < blurred.size() * 4; i += 4) {
            channel.push_back(pixels[i]);
        }
        blur(channel.data(), blurred.data(), width, height, radius);
        for (size_t i = 0; i < blurred.size(); ++i) {
            pixels[i * 4 + c] = blurred[i];
        }
    }
}

// The file equals, byte for byte, what the single steps give, also in the last pixels of an odd count.
TEST(BlurCommand, BlursThenDims) {
    const struct {
        const char* name;
        std::function<void(unsigned char* pixels, int width, int height, int radius)> blur;
    } methods[] = {
        {"stack", stack_blur},
        {"box", [](auto... image) { blur_channels(box_blur, image...); }},
        {"gauss", [](auto... image) { blur_channels(gauss_blur, image...); }},
        {"fast", [](unsigned char* pixels, int width, int height,
                    int radius) { fast_blur(reinterpret_cast<unsigned int*>(pixels), pixels, width, height, radius); }},
        {"iir",
         [](unsigned char* pixels, int width, int height, int radius) {
             const auto distance = static_cast<float>(radius);
             gaussiir(pixels, width, height, 4, width * 4, distance, distance);
         }},
    };
    const std::string folder = testing::TempDir() + "korvane_blur_command_";
    const std::string input = folder + "in.jpg", output = folder + "out.jpg", byHand = folder + "hand.jpg";
    write_scene(input, 151, 83);
    for (const auto& method : methods) {
        SCOPED_TRACE(method.name);
        ASSERT_EQ(run_program(commands(), {"blur", input, "-o", output, "--method", method.name, "--radius", "9",
                                           "--color", "#F08020", "--alpha", "100"}),
                  0);
        Photo photo = read_photo(input, IMAGE_FORMAT_TYPE_RGBA);
        method.blur(photo.pixels(), 151, 83, 9);
        alpha_blend(photo.pixels(), 151 * 83, 0xF0, 0x80, 0x20, 100);
        write_photo(byHand, photo);
        const Photo expected = read_photo(byHand), actual = read_photo(output);
        ASSERT_TRUE(actual.image->getWidth() == 151 && actual.image->getHeight() == 83);
        EXPECT_TRUE(std::equal(actual.pixels(), actual.pixels() + size_t{151} * 83 * 3, expected.pixels()));
    }
    write_scene(input, 64, 4);
    EXPECT_EQ(run_program(commands(), {"blur", input, "-o", output, "--method", "iir"}), 2);
    for (const std::string& path : {input, output, byHand}) {
        remove(path.c_str());
    }
}

}  // namespace
