// SPDX-License-Identifier: Apache-2.0
// Any bytes at all as a JPEG file: the decoder must answer, keep its memory together, and on failure leave the caller's
// image as it was. The sanitizers see the rest.
#include <numeric>

#include "frameworks/images/image_decoder_factory.h"
#include "frameworks/images/jpeg_decoder.h"
#include "tests/frameworks/images/jpeg_reference.h"
#include "tests/fuzz/fuzz.h"

namespace {

// A few bytes may declare a picture of gigabytes, which is slow and no fault.
constexpr int64_t kMaxPixels = 4'000'000;

// Whether anything that may be read as a frame header declares more than kMaxPixels.
bool declares_too_much(const Bytes& file) {
    bool isTooMuch = false;
    for (size_t i = 0; i + 9 <= file.size(); ++i) {
        const int height = file[i + 5] << 8 | file[i + 6], width = file[i + 7] << 8 | file[i + 8];
        isTooMuch |= file[i] == 0xFF && file[i + 1] >> 4 == 0xC && int64_t{height} * width > kMaxPixels;
    }
    return isTooMuch;
}

}  // namespace

void fuzz(Input& input) {
    Bytes file = input.rest();
    if (declares_too_much(file)) {
        return;
    }
    unsigned char before[] = {1, 2, 3, 4, 5, 6};
    unsigned char* planes[4] = {before};
    auto_ptr<Image> image(new Image(2, 3, 1, IMAGE_FORMAT_TYPE_GRAY, planes));
    auto_ptr<Stream> stream(new FileInMemory(file.data(), file.size()));
    auto_ptr<ImageDecoder> decoder(new JpegDecoder);
    const unsigned char* pixels = image->getPlanes()[0];
    if (!decoder->decode(stream, image)) {
        REQUIRE(image->getWidth() == 2 && image->getHeight() == 3 && image->getPlanes()[0] == pixels);
        REQUIRE(std::equal(before, before + 6, pixels));
        return;
    }
    const size_t bytes =
        static_cast<size_t>(image->getWidth()) * image->getHeight() * static_cast<size_t>(image->getDepthType());
    REQUIRE((image->getPlanes()[0] == nullptr) == (image->getFormatType() == IMAGE_FORMAT_TYPE_NONE));
    pixels = image->getPlanes()[0];
    REQUIRE(pixels == nullptr || std::accumulate(pixels, pixels + bytes, size_t{0}) <= bytes * 255);
}
