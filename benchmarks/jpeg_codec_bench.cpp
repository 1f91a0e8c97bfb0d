// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "benchmarks/support/comparison.h"
#include "benchmarks/support/picture.h"
#include "benchmarks/support/plain_jpeg.h"
#include "frameworks/images/color_convert.h"
#include "frameworks/images/jpeg_decoder.h"
#include "frameworks/images/jpeg_encoder.h"

namespace {

using namespace korvane::bench;

constexpr int kQuality = 90;

// A block of memory of a fixed size as a stream that rewinds, which MemoryStream does not.
class BlockStream : public Stream {
  public:
    explicit BlockStream(size_t capacity) : m_Block(capacity), m_Length(capacity) {}

    size_t read(void* buffer, size_t count) override {
        count = std::min(count, m_Length - m_Position);
        memcpy(buffer, m_Block.data() + m_Position, count);
        m_Position += count;
        return count;
    }
    size_t write(void* buffer, size_t count) override {
        count = std::min(count, m_Length - m_Position);
        memcpy(m_Block.data() + m_Position, buffer, count);
        m_Position += count;
        return count;
    }
    int64_t seek(int64_t /*offset*/, SeekOrign /*origin*/) override { return -1; }
    bool rewind() override {
        m_Position = 0;
        return true;
    }
    size_t getLength() override { return m_Length; }
    void flush() override {}
    void close() override {}

    // The file ends where the writing has come to.
    void cut() { m_Length = m_Position; }
    std::vector<unsigned char> contents() const {
        return {m_Block.begin(), m_Block.begin() + static_cast<ptrdiff_t>(m_Position)};
    }

  private:
    std::vector<unsigned char> m_Block;
    size_t m_Length;
    size_t m_Position = 0;
};

struct Photo {
    Photo(int width, int height)
        : rgb(static_cast<size_t>(width) * static_cast<size_t>(height) * 3),
          file(rgb.size()),
          stream(new BlockStream(rgb.size())),
          held(stream) {
        color_convert_rgba2rgb(rgba_picture(width, height).data(), rgb.data(), width, height);
        unsigned char* planes[4] = {rgb.data()};
        image = Image::createImage(static_cast<uint32_t>(width), static_cast<uint32_t>(height), 1,
                                   IMAGE_FORMAT_TYPE_RGB, planes);
    }

    bool encode() {
        stream->rewind();
        return encoder.encode(held, image, kQuality);
    }

    bool decode() { return decoder.decode(held, image); }

    std::vector<unsigned char> rgb;
    std::vector<unsigned char> file;
    BlockStream* stream;
    auto_ptr<Stream> held;
    auto_ptr<Image> image;
    JpegEncoder encoder;
    JpegDecoder decoder;
};

void compare_encode(Comparison& comparison, int width, int height) {
    auto photo = std::make_shared<Photo>(width, height);
    auto plain = [photo, width, height] {
        return plain_encode(photo->rgb.data(), static_cast<unsigned>(width), static_cast<unsigned>(height), kQuality,
                            photo->file);
    };
    comparison.verify("equals the plain loop", [photo, plain] {
        photo->encode();
        const std::vector<unsigned char> ours = photo->stream->contents();
        return plain() == ours.size() && memcmp(photo->file.data(), ours.data(), ours.size()) == 0;
    });
    comparison.kernel([photo] { photo->encode(); });
    comparison.against("plain libjpeg loop", {at_most(1.05)}, plain);
}

void compare_decode(Comparison& comparison, int width, int height) {
    auto photo = std::make_shared<Photo>(width, height);
    photo->encode();
    photo->stream->cut();
    photo->file = photo->stream->contents();
    comparison.verify("equals the plain loop", [photo] {
        const std::unique_ptr<unsigned char[]> plain = plain_decode(photo->file);
        return photo->decode() && memcmp(photo->image->getPlanes()[0], plain.get(), photo->rgb.size()) == 0;
    });
    comparison.kernel([photo] { photo->decode(); });
    comparison.against("plain libjpeg loop", {at_most(1.05)}, [photo] { plain_decode(photo->file); });
}

const Registration kEncode("jpeg_encode/4000x3000/quality:90", [](Comparison& c) { compare_encode(c, 4000, 3000); });
const Registration kDecode("jpeg_decode/4000x3000/quality:90", [](Comparison& c) { compare_decode(c, 4000, 3000); });

}  // namespace
