// SPDX-License-Identifier: Apache-2.0
// Any bytes at all as a JPEG file: the decoder must answer, keep its memory together, and on failure leave the caller's
// image as it was. The sanitizers see the rest.
#include <cstring>

#include "frameworks/images/image_decoder_factory.h"
#include "frameworks/images/jpeg_decoder.h"
#include "frameworks/io/memory_stream.h"
#include "tests/fuzz/fuzz.h"

namespace {

// A few bytes may declare a picture of gigabytes, which is slow and no fault.
constexpr size_t kMaxPixels = 4'000'000;

// A file in memory; as with files, a read without a buffer skips and does not mind the end.
class InputStream : public MemoryStream {
  public:
    InputStream(const uint8_t* bytes, size_t length) : MemoryStream(const_cast<uint8_t*>(bytes), length) {}

    size_t read(void* buffer, size_t count) override {
        return buffer == nullptr ? static_cast<size_t>(seek(static_cast<int64_t>(count), SEEK_ORIGIN_CURRENT))
                                 : MemoryStream::read(buffer, count);
    }
    bool rewind() override { return seek(0, SEEK_ORIGIN_BEGIN) <= 0; }
};

// Whether anything that may be read as a frame header declares more than kMaxPixels.
bool declares_too_much(const uint8_t* data, size_t size) {
    for (size_t i = 0; i + 9 <= size; ++i) {
        const bool frame = data[i] == 0xFF && data[i + 1] >= 0xC0 && data[i + 1] <= 0xCF;
        const size_t height = static_cast<size_t>(data[i + 5]) << 8 | data[i + 6];
        const size_t width = static_cast<size_t>(data[i + 7]) << 8 | data[i + 8];
        if (frame && height * width > kMaxPixels) {
            return true;
        }
    }
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (declares_too_much(data, size)) {
        return 0;
    }
    unsigned char before[] = {1, 2, 3, 4, 5, 6};
    unsigned char* planes[4] = {before};
    auto_ptr<Image> image(new Image(2, 3, 1, IMAGE_FORMAT_TYPE_GRAY, planes));
    auto_ptr<Stream> stream(new InputStream(data, size));
    auto_ptr<ImageDecoder> decoder(new JpegDecoder);
    const unsigned char* pixels = image->getPlanes()[0];
    if (!decoder->decode(stream, image)) {
        REQUIRE(image->getWidth() == 2 && image->getHeight() == 3 && image->getPlanes()[0] == pixels);
        REQUIRE(memcmp(pixels, before, sizeof(before)) == 0);
        return 0;
    }
    const size_t bytes =
        static_cast<size_t>(image->getWidth()) * image->getHeight() * static_cast<size_t>(image->getDepthType());
    REQUIRE((image->getPlanes()[0] == nullptr) == (image->getFormatType() == IMAGE_FORMAT_TYPE_NONE));
    uint32_t sum = 0;
    for (size_t i = 0; image->getPlanes()[0] != nullptr && i < bytes; ++i) {
        sum += image->getPlanes()[0][i];
    }
    REQUIRE(sum <= bytes * 255);
    return 0;
}
