// SPDX-License-Identifier: Apache-2.0
// Images of every format and odd size as JPEG files: the bytes that a plain loop over libjpeg writes, into streams that
// may be too short.
#include "frameworks/images/image_encoder_factory.h"
#include "frameworks/images/jpeg_encoder.h"
#include "frameworks/io/memory_stream.h"
#include "tests/frameworks/images/jpeg_reference.h"
#include "tests/fuzz/fuzz.h"

void fuzz(Input& input) {
    constexpr size_t kPixelBytes[] = {0, 1, 2, 3, 4, 3};
    const auto format = static_cast<ImageFormatType>(input.between(0, 13));
    const bool isKnown = format > IMAGE_FORMAT_TYPE_NONE && format <= IMAGE_FORMAT_TYPE_YUV;
    const bool isWritten = isKnown && format != IMAGE_FORMAT_TYPE_RGB565;
    uint32_t width = input.between(0U, 50U), height = input.between(0U, 20U);
    if (input.one_in(2000)) {
        (input.ConsumeBool() ? width : height) = input.between(65'490U, 65'510U);
        (width < 100 ? width : height) = 1;
    }
    const int quality = input.hostile(102);
    const size_t pixelBytes = isKnown ? kPixelBytes[format] : 2;
    const Bytes pixels = input.bytes(size_t{width} * height * pixelBytes);
    unsigned char* planes[4] = {const_cast<unsigned char*>(pixels.data())};
    auto_ptr<Image> image(Image::createImage(width, height, 1, format, isKnown ? planes : nullptr));
    auto_ptr<ImageEncoder> encoder(new JpegEncoder);

    const bool isEncodable = isWritten && width > 0 && height > 0 && width <= 65'500 && height <= 65'500;
    // The first three bytes of a pixel, or its one byte three times.
    Bytes rgb, expected;
    for (size_t i = 0; isEncodable && i < size_t{width} * height * 3; ++i) {
        rgb.push_back(pixels[i / 3 * pixelBytes + (pixelBytes == 1 ? 0 : i % 3)]);
    }
    if (isEncodable) {
        expected = reference_encode(rgb, width, height, {.quality = std::clamp(quality, 1, 100)});
    }
    const size_t room = input.ConsumeBool() ? expected.size() + 10 : input.between<size_t>(1, expected.size() + 1);
    Bytes file(room, 0xA5);
    auto_ptr<Stream> stream(new MemoryStream(file.data(), file.size()));
    const bool isDone = encoder->encode(stream, image, quality);
    // A stream that takes a part of what it is given is no failure; it holds the beginning.
    REQUIRE(isDone ? isEncodable : !isEncodable || room < expected.size());
    REQUIRE(std::equal(expected.begin(),
                       expected.begin() + static_cast<ptrdiff_t>(isDone ? std::min(room, expected.size()) : 0),
                       file.begin()));
}
