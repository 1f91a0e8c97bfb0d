// SPDX-License-Identifier: Apache-2.0
// Images of every format and hostile sizes, made, changed and converted with any code: the layout beside the table of
// the header, and equal bytes on every instruction set.
#include "frameworks/core/auto_ptr.h"
#include "frameworks/images/color_convert.h"
#include "frameworks/images/image.h"
#include "tests/fuzz/fuzz.h"

namespace {

// By format: bytes a pixel, and where the second and the third plane begin, in quarters of the pixels.
constexpr struct {
    size_t bytes, second, third;
} kLayouts[IMAGE_FORMAT_TYPE_MAX] = {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0}, {3, 0, 0}, {2, 0, 0},
                                     {2, 0, 0}, {2, 4, 6}, {2, 4, 0}, {2, 4, 0}, {2, 4, 5}, {2, 4, 5}};

struct Made {
    uint32_t width, height, depth;
    ImageFormatType format;
    size_t count;  // width x height x depth; 0 for an image without pixels
    Bytes sources[3];
    unsigned char* planes[4] = {};
    Bytes expected;

    explicit Made(Input& input)
        : width(input.between(0U, 40U)),
          height(input.between(0U, 12U)),
          depth(input.one_in(4) ? input.between(0U, 5U) : 1),
          format(static_cast<ImageFormatType>(input.hostile(13) % 100)),
          count(size_t{width} * height * depth) {
        // Products that wrap to little in 32 bits. Those between are not wrong and only take memory.
        if (input.one_in(16)) {
            width = 1U << input.between(16, 31);
            height = (1U << input.between(16, 31)) + input.between(0U, 3U);
            depth = input.between(1U, 4U);
            count = 0;
        }
        count = format < IMAGE_FORMAT_TYPE_GRAY || format >= IMAGE_FORMAT_TYPE_MAX ? 0 : count;
        if (count > 0) {
            fill(input);
        }
    }

    void fill(Input& input) {
        const auto& layout = kLayouts[format];
        const size_t chroma = count / (layout.third == 5 ? 4 : 2);
        const bool isNeeded[] = {true, layout.second != 0, layout.third != 0};
        // The third plane of YUV422P lands on the second one.
        const size_t places[] = {0, count, layout.third == 6 ? count + 1 : count * 5 / 4};
        expected.resize(count * layout.bytes + 2);
        // Now and then without one of the planes: nothing is copied then.
        const int absent = input.between(0, 15);
        for (int i = 0; i < 3; ++i) {
            const size_t bytes = i > 0 ? chroma : isNeeded[1] ? count : count * layout.bytes;
            sources[i] = input.bytes(isNeeded[i] ? bytes : 0);
            planes[i] = absent == i ? nullptr : sources[i].data();
            if (absent > 2 || !isNeeded[absent]) {
                std::copy(sources[i].begin(), sources[i].end(), expected.begin() + static_cast<ptrdiff_t>(places[i]));
            }
        }
    }

    void require_in(Image& image) const {
        unsigned char** given = image.getPlanes();
        REQUIRE(image.getWidth() == width && image.getHeight() == height && image.getFormatType() == format);
        REQUIRE((given[0] != nullptr) == (count > 0) && given[3] == nullptr);
        for (int i = 1; i < 3; ++i) {
            const size_t start = count == 0 ? 0 : i == 1 ? kLayouts[format].second : kLayouts[format].third;
            REQUIRE(given[i] == (start == 0 ? nullptr : given[0] + count * start / 4));
        }
        REQUIRE(std::equal(expected.begin(), expected.end(), given[0]));
    }
};

}  // namespace

void fuzz(Input& input) {
    auto_ptr<Image> image;
    for (int round = input.between(1, 3); round > 0; --round) {
        Made made(input);
        if (image.get() == nullptr || input.ConsumeBool()) {
            image = Image::createImage(made.width, made.height, made.depth, made.format, made.planes);
        } else if (input.ConsumeBool()) {
            image->set(made.width, made.height, made.depth, made.format, made.planes);
        } else {
            Image other(made.width, made.height, made.depth, made.format, made.planes);
            image->swap(other);
        }
        made.require_in(*image);
        const int code = input.one_in(8) ? input.ConsumeIntegral<int>() : made.format * 256 + input.between(0, 14);
        on_every_target([&] {
            const auto_ptr<Image> result(ColorConvert::convert(image, code));
            REQUIRE((result.get() == nullptr) == ((code >> 8 & 255) != made.format));
            const unsigned char* pixels = result.get() == nullptr ? nullptr : result->getPlanes()[0];
            return pixels == nullptr ? Bytes() : Bytes(pixels, pixels + made.count * kLayouts[code & 255].bytes);
        });
    }
}
