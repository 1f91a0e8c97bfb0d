#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

// libjpeg's header needs size_t and FILE before it.
#include <jpeglib.h>

#include "benchmarks/support/comparison.h"
#include "benchmarks/support/picture.h"
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

size_t plain_encode(const unsigned char* rgb, JDIMENSION width, JDIMENSION height, std::vector<unsigned char>& file) {
    jpeg_compress_struct cinfo = {};
    jpeg_error_mgr error = {};
    cinfo.err = jpeg_std_error(&error);
    jpeg_create_compress(&cinfo);
    unsigned char* out = file.data();
    unsigned long outBytes = static_cast<unsigned long>(file.size());
    jpeg_mem_dest(&cinfo, &out, &outBytes);
    cinfo.image_width = width;
    cinfo.image_height = height;
    cinfo.input_components = 3;
    cinfo.in_color_space = JCS_RGB;
    jpeg_set_defaults(&cinfo);
    jpeg_set_quality(&cinfo, kQuality, TRUE);
    jpeg_start_compress(&cinfo, TRUE);
    while (cinfo.next_scanline < height) {
        JSAMPROW row = const_cast<JSAMPROW>(rgb + static_cast<size_t>(cinfo.next_scanline) * width * 3);
        jpeg_write_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    return outBytes;
}

// Into memory taken for the call, as a client without this library would.
std::unique_ptr<unsigned char[]> plain_decode(const std::vector<unsigned char>& file) {
    jpeg_decompress_struct cinfo = {};
    jpeg_error_mgr error = {};
    cinfo.err = jpeg_std_error(&error);
    jpeg_create_decompress(&cinfo);
    jpeg_mem_src(&cinfo, file.data(), static_cast<unsigned long>(file.size()));
    jpeg_read_header(&cinfo, TRUE);
    jpeg_start_decompress(&cinfo);
    const size_t strideBytes = static_cast<size_t>(cinfo.output_width) * static_cast<size_t>(cinfo.output_components);
    std::unique_ptr<unsigned char[]> pixels(new unsigned char[strideBytes * cinfo.output_height]);
    while (cinfo.output_scanline < cinfo.output_height) {
        JSAMPROW row = pixels.get() + cinfo.output_scanline * strideBytes;
        jpeg_read_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_decompress(&cinfo);
    jpeg_destroy_decompress(&cinfo);
    return pixels;
}

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
        return plain_encode(photo->rgb.data(), static_cast<JDIMENSION>(width), static_cast<JDIMENSION>(height),
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
