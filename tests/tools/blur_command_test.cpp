// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
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

std::string temporary(const char* name) {
    return testing::TempDir() + "korvane_blur_command_" + name + ".jpg";
}

size_t bytes_of(Image* image) {
    return static_cast<size_t>(image->getWidth()) * image->getHeight() * static_cast<size_t>(image->getDepthType());
}

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
    const std::string input = temporary("in"), output = temporary("out"), byHand = temporary("hand");
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
        auto_ptr<Image> expected = read_photo(byHand).image;
        auto_ptr<Image> actual = read_photo(output).image;
        ASSERT_EQ(actual->getWidth(), 151u);
        ASSERT_EQ(actual->getHeight(), 83u);
        EXPECT_EQ(memcmp(actual->getPlanes()[0], expected->getPlanes()[0], bytes_of(actual.get())), 0);
    }
    write_scene(input, 64, 4);
    EXPECT_EQ(run_program(commands(), {"blur", input, "-o", output, "--method", "iir"}), 2);
    for (const std::string& path : {input, output, byHand}) {
        remove(path.c_str());
    }
}

struct Spot {
    const char* name;
    size_t x, y;
    int red, green, blue;
};

void expect_spots(Image& scene, const std::vector<Spot>& spots) {
    const auto pixelBytes = static_cast<size_t>(scene.getDepthType());
    for (const Spot& spot : spots) {
        const unsigned char* pixel = scene.getPlanes()[0] + (spot.y * 640 + spot.x) * pixelBytes;
        EXPECT_NEAR(pixel[0], spot.red, 8) << spot.name;
        EXPECT_NEAR(pixel[1], spot.green, 8) << spot.name;
        EXPECT_NEAR(pixel[2], spot.blue, 8) << spot.name;
        EXPECT_TRUE(pixelBytes == 3 || pixel[3] == 255) << spot.name;
    }
}

// Where things are in the scenes, by name: a turned, mirrored or colour-swapped picture fails.
TEST(Scene, HasItsPartsInTheirPlaces) {
    const std::string path = temporary("scene");
    write_scene(path, 640, 360);
    for (const ImageFormatType format : {IMAGE_FORMAT_TYPE_RGB, IMAGE_FORMAT_TYPE_RGBA}) {
        auto_ptr<Image> scene = read_photo(path, format).image;
        ASSERT_EQ(scene->getFormatType(), format);
        expect_spots(*scene, {{"sky", 4, 2, 60, 109, 186},
                              {"sun", 489, 72, 255, 250, 224},
                              {"door", 105, 270, 52, 84, 120},
                              {"chimney", 188, 95, 98, 74, 66},
                              {"board", 415, 290, 250, 248, 240}});
    }
    remove(path.c_str());
    expect_spots(*draw_scene(640, 360, SceneSubject::kPortrait), {{"background", 200, 100, 43, 76, 90},
                                                                  {"skin", 290, 200, 227, 168, 143},
                                                                  {"pupil", 290, 162, 14, 14, 18},
                                                                  {"lights", 536, 126, 175, 122, 79}});
}

}  // namespace
