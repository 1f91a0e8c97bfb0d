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
#include "tests/support/random_bytes.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

Bytes picture(unsigned width, unsigned height, unsigned components) {
    return random_bytes(size_t{width} * height * components, 1);
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

bool decode(Bytes file, auto_ptr<Image>& image) {
    auto_ptr<Stream> stream(new FileInMemory(file.data(), file.size()));
    auto_ptr<ImageDecoder> decoder(new JpegDecoder);
    return decoder->decode(stream, image);
}

Bytes encode(auto_ptr<Image>& image, int quality) {
    auto* room = new FileInMemory(size_t{500'000});
    auto_ptr<Stream> stream(room);
    auto_ptr<ImageEncoder> encoder(new JpegEncoder);
    EXPECT_TRUE(encoder->encode(stream, image, quality));
    EXPECT_EQ(room->flushes, 1);
    Bytes file(static_cast<size_t>(-stream->seek(0, SEEK_ORIGIN_BEGIN)));
    stream->read(file.data(), file.size());
    return file;
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

Bytes file_of(const ReferenceSettings& settings) {
    constexpr unsigned kWidth = 83, kHeight = 57;
    return reference_encode(picture(kWidth, kHeight, static_cast<unsigned>(settings.components)), kWidth, kHeight,
                            settings);
}

TEST(JpegDecoder, ReadsEveryKindOfFileAsLibjpegDoes) {
    for (const ReferenceSettings& settings : kJpegKinds) {
        SCOPED_TRACE(&settings - kJpegKinds);
        const Bytes file = file_of(settings);
        auto_ptr<Image> image = witness();
        ASSERT_TRUE(decode(file, image));
        EXPECT_EQ(image->getWidth(), 83u);
        EXPECT_EQ(image->getHeight(), 57u);
        EXPECT_EQ(image->getFormatType(), settings.components == 3   ? IMAGE_FORMAT_TYPE_RGB
                                          : settings.components == 1 ? IMAGE_FORMAT_TYPE_GRAY
                                                                     : IMAGE_FORMAT_TYPE_NONE);
        EXPECT_EQ(pixels_of(image.get()), settings.components == 4 ? Bytes() : reference_decode(file));
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
    const Bytes baseline = file_of({});
    const Bytes progressive = file_of({.progressive = true});
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
    struct Liar : FileInMemory {
        Liar(Bytes& bytes, bool alsoReads) : FileInMemory(bytes.data(), bytes.size()), isLie(alsoReads) {}
        size_t read(void* buffer, size_t count) override {
            return buffer == nullptr || isLie ? SIZE_MAX : FileInMemory::read(buffer, count);
        }
        bool isLie;
    };
    Bytes file = file_of({.commentBytes = 5'000});
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
    for (const auto& [picture, room] : {std::pair(&image, 0), {&image, 1}, {&image, 9'000}, {&tiny, 0}}) {
        auto_ptr<Stream> stream(new MemoryStream(size_t{9'000}));
        stream->seek(9'000 - room, SEEK_ORIGIN_BEGIN);
        EXPECT_FALSE(encoder->encode(stream, *picture, 90));
        EXPECT_THAT(log.lines(), ElementsAre(kWriteError));
        log.clear();
    }
    auto_ptr<Stream> stream(new MemoryStream(size_t{9'000}));
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
    for (auto [head, known] :
         {std::pair(Bytes{0xFF, 0xD8, 0xFF, 0xE0}, true), {{0xFF, 0xD8, 0xFE}, false}, {{0xFF, 0xD8}, false}}) {
        auto_ptr<Stream> stream(new FileInMemory(head.data(), head.size()));
        EXPECT_EQ(decoders->createImageDecoder(stream) != nullptr, known);
        // The probe is not taken back.
        EXPECT_EQ(stream->seek(0, SEEK_ORIGIN_BEGIN), -std::min<int64_t>(static_cast<int64_t>(head.size()), 3));
    }

    auto_ptr<Image> image = witness();
    auto_ptr<Image> noImage;
    Bytes file = file_of({});
    auto_ptr<Stream> stream(new FileInMemory(file.data(), file.size()));
    ImageDecoder* decoder = decoders->createImageDecoder(stream);
    ASSERT_NE(decoder, nullptr);
    EXPECT_FALSE(decoder->decode(stream, noImage));
    EXPECT_FALSE(decoder->decode(nothing, image));
    EXPECT_FALSE(encoder->encode(stream, noImage, 90));
    EXPECT_FALSE(encoder->encode(nothing, image, 90));
}

}  // namespace
