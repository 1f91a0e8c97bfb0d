// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "frameworks/images/image_decoder_factory.h"
#include "frameworks/images/image_encoder_factory.h"
#include "frameworks/images/jpeg_decoder.h"
#include "frameworks/images/jpeg_encoder.h"
#include "frameworks/io/memory_stream.h"
#include "tests/frameworks/images/jpeg_reference.h"
#include "tests/support/log_capture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

// A memory stream that rewinds, and whose writes fail once `capacity` bytes are in.
class TestStream : public Stream {
  public:
    explicit TestStream(Bytes file = {}, size_t capacity = SIZE_MAX) : bytes(std::move(file)), m_Capacity(capacity) {}

    size_t read(void* buffer, size_t count) override {
        count = std::min(count, bytes.size() - m_Position);
        if (buffer != nullptr) {
            std::copy_n(bytes.begin() + static_cast<ptrdiff_t>(m_Position), count, static_cast<unsigned char*>(buffer));
        }
        m_Position += count;
        return count;
    }
    size_t write(void* buffer, size_t count) override {
        const auto* from = static_cast<unsigned char*>(buffer);
        count = bytes.size() < m_Capacity ? count : 0;
        bytes.insert(bytes.end(), from, from + count);
        return count;
    }
    int64_t seek(int64_t /*offset*/, SeekOrign /*origin*/) override { return -1; }
    bool rewind() override {
        m_Position = 0;
        return true;
    }
    size_t getLength() override { return bytes.size(); }
    void flush() override { ++flushes; }
    void close() override {}

    Bytes bytes;
    int flushes = 0;

  private:
    size_t m_Capacity;
    size_t m_Position = 0;
};

// Gradients with a texture and a bright corner; no turn or mirror image of it is like it.
Bytes picture(unsigned width, unsigned height, unsigned components) {
    Bytes pixels;
    for (unsigned y = 0; y < height; ++y) {
        for (unsigned x = 0; x < width; ++x) {
            const bool corner = x * 4 < width && y * 3 < height;
            const unsigned texture = (x * 7 + y * 13) % 23;
            const unsigned values[] = {x * 180 / width + texture, (corner ? 200 : y * 150 / height + 20) + texture,
                                       (x + y) * 100 / (width + height) + texture, 255};
            for (unsigned c = 0; c < components; ++c) {
                pixels.push_back(static_cast<unsigned char>(values[c]));
            }
        }
    }
    return pixels;
}

auto_ptr<Image> make_image(const Bytes& pixels, unsigned width, unsigned height, ImageFormatType format) {
    unsigned char* planes[4] = {const_cast<unsigned char*>(pixels.data())};
    return auto_ptr<Image>(new Image(width, height, 1, format, planes));
}

Bytes pixels_of(Image* image) {
    const unsigned char* first = image->getPlanes()[0];
    const size_t count =
        static_cast<size_t>(image->getWidth()) * image->getHeight() * static_cast<size_t>(image->getDepthType());
    return first == nullptr ? Bytes() : Bytes(first, first + count);
}

const Bytes kWitness = {1, 2, 3, 4, 5, 6};

// An image that a failed decode must leave as it is.
auto_ptr<Image> witness() {
    return make_image(kWitness, 2, 3, IMAGE_FORMAT_TYPE_GRAY);
}

bool is_witness(Image* image) {
    return image->getWidth() == 2 && image->getFormatType() == IMAGE_FORMAT_TYPE_GRAY && pixels_of(image) == kWitness;
}

bool decode(const Bytes& file, auto_ptr<Image>& image) {
    auto_ptr<Stream> stream(new TestStream(file));
    auto_ptr<ImageDecoder> decoder(new JpegDecoder);
    return decoder->decode(stream, image);
}

Bytes encode(auto_ptr<Image>& image, int quality) {
    auto* file = new TestStream;
    auto_ptr<Stream> stream(file);
    auto_ptr<ImageEncoder> encoder(new JpegEncoder);
    EXPECT_TRUE(encoder->encode(stream, image, quality));
    EXPECT_EQ(file->flushes, 1);
    return file->bytes;
}

TEST(JpegCodec, FilesEqualThoseOfAPlainLibjpegLoop) {
    for (const auto& [format, components] : {std::pair(IMAGE_FORMAT_TYPE_GRAY, 1u),
                                             {IMAGE_FORMAT_TYPE_RGB, 3u},
                                             {IMAGE_FORMAT_TYPE_RGBA, 4u},
                                             {IMAGE_FORMAT_TYPE_YUV, 3u}}) {
        for (const auto& [width, height] : {std::pair(1u, 1u), {7u, 5u}, {67u, 33u}, {331u, 200u}}) {
            const Bytes source = picture(width, height, components);
            auto_ptr<Image> image = make_image(source, width, height, format);
            Bytes threeBytes;
            for (size_t i = 0; i < size_t{width} * height * 3; ++i) {
                threeBytes.push_back(source[i / 3 * components + (components == 1 ? 0 : i % 3)]);
            }
            for (const int quality : {-5, 1, 50, 90, 500}) {
                EXPECT_EQ(encode(image, quality), reference_encode(threeBytes, width, height, {.quality = quality}));
            }
        }
    }
}

struct Variant {
    const char* name;
    ReferenceSettings settings;
    ImageFormatType format;
};

const Variant kVariants[] = {
    {"baseline", {}, IMAGE_FORMAT_TYPE_RGB},
    {"grayscale", {.components = 1}, IMAGE_FORMAT_TYPE_GRAY},
    {"CMYK", {.components = 4}, IMAGE_FORMAT_TYPE_NONE},
    {"progressive", {.progressive = true}, IMAGE_FORMAT_TYPE_RGB},
    {"arithmetic", {.arithmetic = true}, IMAGE_FORMAT_TYPE_RGB},
    {"progressive arithmetic", {.progressive = true, .arithmetic = true}, IMAGE_FORMAT_TYPE_RGB},
    {"not interleaved", {.oneScanPerComponent = true}, IMAGE_FORMAT_TYPE_RGB},
    {"restart markers", {.restartRows = 1}, IMAGE_FORMAT_TYPE_RGB},
    {"long comment", {.commentBytes = 60'000}, IMAGE_FORMAT_TYPE_RGB},
};

Bytes variant_file(const Variant& variant) {
    constexpr unsigned kWidth = 83, kHeight = 57;
    return reference_encode(picture(kWidth, kHeight, static_cast<unsigned>(variant.settings.components)), kWidth,
                            kHeight, variant.settings);
}

TEST(JpegDecoder, ReadsEveryKindOfFileAsLibjpegDoes) {
    for (const Variant& variant : kVariants) {
        const Bytes file = variant_file(variant);
        auto_ptr<Image> image = witness();
        ASSERT_TRUE(decode(file, image)) << variant.name;
        EXPECT_EQ(image->getWidth(), 83u);
        EXPECT_EQ(image->getHeight(), 57u);
        EXPECT_EQ(image->getFormatType(), variant.format) << variant.name;
        EXPECT_EQ(pixels_of(image.get()), variant.format == IMAGE_FORMAT_TYPE_NONE ? Bytes() : reference_decode(file))
            << variant.name;
    }
}

// Another height and width behind the start-of-frame marker's length and precision.
Bytes with_size(Bytes file, unsigned width, unsigned height) {
    size_t at = 2;
    while (file[at] != 0xFF || file[at + 1] < 0xC0 || file[at + 1] > 0xC2) {
        ++at;
    }
    for (const unsigned value : {height >> 8, height, width >> 8, width}) {
        file[at++ + 5] = static_cast<unsigned char>(value);
    }
    return file;
}

// A file whose last scan is there `times` times.
Bytes with_repeated_scan(const Bytes& file, int times) {
    const unsigned char marker[] = {0xFF, 0xDA};
    const auto scan = std::find_end(file.begin(), file.end(), std::begin(marker), std::end(marker));
    Bytes repeated(file.begin(), scan);
    for (int i = 0; i < times; ++i) {
        repeated.insert(repeated.end(), scan, file.end() - 2);
    }
    repeated.insert(repeated.end(), file.end() - 2, file.end());
    return repeated;
}

TEST(JpegDecoder, RefusesWhatIsNoWholePicture) {
    const Bytes baseline = variant_file(kVariants[0]);
    const Bytes progressive = variant_file(kVariants[3]);
    Bytes noEndMarker(baseline.begin(), baseline.end() - 2);
    struct {
        const char* name;
        Bytes file;
        bool decodes;
        const char* log;
    } const rows[] = {
        {"empty", {}, false, nullptr},
        {"start marker only", {0xFF, 0xD8, 0xFF}, false, nullptr},
        {"text", {'k', 'o', 'r', 'v', 'a', 'n', 'e'}, false, "jpeg_utils_error_exit,msgcode["},
        {"a second start marker", {0xFF, 0xD8, 0xFF, 0xD8}, false, "jpeg_utils_error_exit,msgcode["},
        {"no pixels", {0xFF, 0xD8, 0xFF, 0xD9}, false, "jpeg_utils_error_exit,msgcode["},
        {"no width", with_size(baseline, 0, 57), false, "jpeg_utils_error_exit,msgcode["},
        {"no height", with_size(baseline, 83, 0), false, "jpeg_utils_error_exit,msgcode["},
        {"beyond libjpeg's sides", with_size(baseline, 65501, 57), false, "jpeg_utils_error_exit,msgcode["},
        {"more than 32 bits of bytes", with_size(baseline, 65500, 65500), false, nullptr},
        {"more lines than data, with an end marker", with_size(baseline, 83, 500), true, nullptr},
        {"more lines than data, without", with_size(noEndMarker, 83, 500), false, nullptr},
        {"progressive beyond 30 MiB", with_size(progressive, 8000, 8000), false, "jpeg_utils_error_exit,msgcode["},
        {"100 scans", with_repeated_scan(progressive, 100), true, nullptr},
        {"600 scans", with_repeated_scan(progressive, 600), false,
         "jpeg_utils_error_exit,msgcode[1000]  msg: The file has more than 500 scans\n"},
    };
    for (const auto& row : rows) {
        LogCapture log;
        auto_ptr<Image> image = witness();
        EXPECT_EQ(decode(row.file, image), row.decodes) << row.name;
        EXPECT_EQ(is_witness(image.get()), !row.decodes) << row.name;
        if (row.log == nullptr) {
            EXPECT_THAT(log.lines(), IsEmpty()) << row.name;
        } else {
            EXPECT_THAT(log.lines(), ElementsAre(StartsWith(row.log))) << row.name;
        }
    }
}

TEST(JpegDecoder, FailsOnStreamsThatDoNotRewindOrMiscount) {
    // Claims to have skipped more than it was asked for, or to have read so.
    struct Liar : TestStream {
        Liar(const Bytes& bytes, bool alsoReads) : TestStream(bytes), isLie(alsoReads) {}
        size_t read(void* buffer, size_t count) override {
            return buffer == nullptr || isLie ? SIZE_MAX : TestStream::read(buffer, count);
        }
        bool isLie;
    };
    Bytes file = variant_file(kVariants[8]);
    LogCapture log;
    for (Stream* raw : std::vector<Stream*>{new MemoryStream(file.data(), file.size()), new Liar(file, false),
                                            new Liar(file, true)}) {
        auto_ptr<Stream> stream(raw);
        auto_ptr<ImageDecoder> decoder(new JpegDecoder);
        auto_ptr<Image> image = witness();
        EXPECT_FALSE(decoder->decode(stream, image));
        EXPECT_TRUE(is_witness(image.get()));
    }
    EXPECT_THAT(log.lines(), ElementsAre("jpeg_utils_error_exit,msgcode[0]  msg: Bogus message code 0\n",
                                         StartsWith("jpeg_utils_error_exit,msgcode[")));
}

TEST(JpegEncoder, ReportsWhatCannotBeWritten) {
    constexpr char kWriteError[] =
        "jpeg_utils_error_exit,msgcode[37]  msg: Output file write error --- out of disk space?\n";
    auto_ptr<ImageEncoder> encoder(new JpegEncoder);
    auto_ptr<Image> image = make_image(picture(331, 200, 3), 331, 200, IMAGE_FORMAT_TYPE_RGB);
    auto_ptr<Image> tiny = make_image(picture(2, 2, 3), 2, 2, IMAGE_FORMAT_TYPE_RGB);
    auto_ptr<Image> wide(new Image(65501, 1, 1, IMAGE_FORMAT_TYPE_GRAY, nullptr));
    auto_ptr<Image> none(new Image(0, 1, 1, IMAGE_FORMAT_TYPE_GRAY, nullptr));
    LogCapture log;
    // A failure in the first buffer, in a later one, and in what is left at the end (a tiny file is all of that).
    for (const auto& [picture, capacity] : {std::pair(&image, 0), {&image, 1}, {&image, 9'000}, {&tiny, 0}}) {
        auto_ptr<Stream> stream(new TestStream({}, static_cast<size_t>(capacity)));
        EXPECT_FALSE(encoder->encode(stream, *picture, 90));
        EXPECT_THAT(log.lines(), ElementsAre(kWriteError));
        log.clear();
    }
    auto_ptr<Stream> stream(new TestStream);
    EXPECT_FALSE(encoder->encode(stream, none, 90));
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_FALSE(encoder->encode(stream, wide, 90));
    EXPECT_THAT(log.lines(), ElementsAre(StartsWith("jpeg_utils_error_exit,msgcode[")));
}

TEST(CodecFactories, KnowJpegAndNothingElse) {
    auto_ptr<ImageEncoderFactory> encoders(new ImageEncoderFactory);
    for (const int type : {-1, 0, 2, 77}) {
        EXPECT_EQ(encoders->createImageEncoder(static_cast<ImageEncoder::Type>(type)), nullptr);
    }
    auto_ptr<ImageEncoder> encoder(encoders->createImageEncoder(ImageEncoder::IMAGE_ENCODER_TYPE_JPEG));
    EXPECT_NE(dynamic_cast<JpegEncoder*>(encoder.get()), nullptr);

    auto_ptr<ImageDecoderFactory> decoders(new ImageDecoderFactory);
    auto_ptr<Stream> nothing;
    EXPECT_EQ(decoders->createImageDecoder(nothing), nullptr);
    for (const auto& [head, known] : {std::pair(Bytes{0xFF, 0xD8, 0xFF, 0xE0}, true),
                                      {{0xFF, 0xD8, 0xFE}, false},
                                      {{0xFF, 0xD8}, false},
                                      {{}, false}}) {
        auto* file = new TestStream(head);
        auto_ptr<Stream> stream(file);
        EXPECT_EQ(decoders->createImageDecoder(stream) != nullptr, known);
        // The probe is not taken back.
        EXPECT_EQ(file->read(nullptr, 9), head.size() - std::min<size_t>(head.size(), 3));
    }

    auto_ptr<Image> image = witness();
    auto_ptr<Image> noImage;
    auto_ptr<Stream> stream(new TestStream(variant_file(kVariants[0])));
    ImageDecoder* decoder = decoders->createImageDecoder(stream);
    ASSERT_NE(decoder, nullptr);
    EXPECT_FALSE(decoder->decode(stream, noImage));
    EXPECT_FALSE(decoder->decode(nothing, image));
    EXPECT_FALSE(encoder->encode(stream, noImage, 90));
    EXPECT_FALSE(encoder->encode(nothing, image, 90));
}

}  // namespace
