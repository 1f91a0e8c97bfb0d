// SPDX-License-Identifier: Apache-2.0
// WebP files through libwebp. Metadata lie in chunks beside the picture, which the mux library puts together.
#include <webp/decode.h>
#include <webp/encode.h>
#include <webp/mux.h>

#include <cstring>
#include <memory>
#include <new>

#include "tools/photo/formats.h"

namespace korvane {
namespace {

constexpr int kDefaultQuality = 92;
constexpr int kLosslessFormat = 2;
constexpr size_t kMaxImageBytes = 0xFFFFFFFF;

using Mux = std::unique_ptr<WebPMux, decltype(&WebPMuxDelete)>;

// Some writers put JPEG's name before the block.
constexpr unsigned char kExifName[] = {'E', 'x', 'i', 'f', 0, 0};

void take_chunk(const WebPMux* mux, const char* fourCc, Bytes& block) {
    WebPData data = {};
    if (WebPMuxGetChunk(mux, fourCc, &data) == WEBP_MUX_OK) {
        block.assign(data.bytes, data.bytes + data.size);
    }
}

void take_metadata(const Bytes& file, Metadata& metadata, std::vector<std::string>& warnings) {
    const WebPData data = {file.data(), file.size()};
    const Mux mux(WebPMuxCreate(&data, 0), WebPMuxDelete);
    if (mux == nullptr) {
        warnings.emplace_back("damaged WebP: its metadata cannot be read");
        return;
    }
    take_chunk(mux.get(), "EXIF", metadata.exif);
    take_chunk(mux.get(), "ICCP", metadata.icc);
    take_chunk(mux.get(), "XMP ", metadata.xmp);
    if (metadata.exif.size() > sizeof(kExifName) &&
        std::memcmp(metadata.exif.data(), kExifName, sizeof(kExifName)) == 0) {
        metadata.exif.erase(metadata.exif.begin(), metadata.exif.begin() + sizeof(kExifName));
    }
}

const char* reason_of(WebPEncodingError error) {
    switch (error) {
        case VP8_ENC_ERROR_BAD_DIMENSION:
            return "a WebP picture has at most 16383 pixels a side";
        case VP8_ENC_ERROR_PARTITION0_OVERFLOW:
        case VP8_ENC_ERROR_PARTITION_OVERFLOW:
        case VP8_ENC_ERROR_FILE_TOO_BIG:
            return "the picture is too large for a WebP file";
        case VP8_ENC_ERROR_OUT_OF_MEMORY:
        case VP8_ENC_ERROR_BITSTREAM_OUT_OF_MEMORY:
            throw std::bad_alloc();
        default:
            return "the WebP encoder failed";
    }
}

class Picture {
  public:
    Picture() {
        if (WebPPictureInit(&picture) == 0) {
            throw std::bad_alloc();
        }
        WebPMemoryWriterInit(&writer);
        picture.writer = WebPMemoryWrite;
        picture.custom_ptr = &writer;
    }
    ~Picture() {
        WebPPictureFree(&picture);
        WebPMemoryWriterClear(&writer);
    }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    WebPPicture picture;
    WebPMemoryWriter writer;
};

void import_pixels(const Photo& photo, WebPPicture& picture) {
    picture.width = static_cast<int>(photo.image->getWidth());
    picture.height = static_cast<int>(photo.image->getHeight());
    if (picture.width > WEBP_MAX_DIMENSION || picture.height > WEBP_MAX_DIMENSION) {
        throw FormatError(reason_of(VP8_ENC_ERROR_BAD_DIMENSION));
    }
    const size_t pixelBytes = photo.pixelBytes();
    const int stride = picture.width * static_cast<int>(pixelBytes);
    bool done = false;
    if (photo.alpha.empty()) {
        const auto import = pixelBytes == 4 ? WebPPictureImportRGBX : WebPPictureImportRGB;
        done = import(&picture, photo.pixels(), stride) != 0;
    } else {
        Bytes rgba(photo.pixelCount() * 4);
        for (size_t i = 0; i < photo.pixelCount(); ++i) {
            std::memcpy(rgba.data() + 4 * i, photo.pixels() + pixelBytes * i, 3);
            rgba[4 * i + 3] = photo.alpha[i];
        }
        done = WebPPictureImportRGBA(&picture, rgba.data(), picture.width * 4) != 0;
    }
    if (!done) {
        throw FormatError(reason_of(picture.error_code));
    }
}

void set_chunk(WebPMux* mux, const char* fourCc, const Bytes& block) {
    const WebPData data = {block.data(), block.size()};
    if (!block.empty() && WebPMuxSetChunk(mux, fourCc, &data, 0) != WEBP_MUX_OK) {
        throw std::bad_alloc();
    }
}

Bytes with_metadata(const WebPMemoryWriter& written, const Metadata& metadata) {
    if (metadata.exif.empty() && metadata.icc.empty() && metadata.xmp.empty()) {
        return {written.mem, written.mem + written.size};
    }
    const WebPData data = {written.mem, written.size};
    const Mux mux(WebPMuxCreate(&data, 0), WebPMuxDelete);
    if (mux == nullptr) {
        throw std::bad_alloc();
    }
    set_chunk(mux.get(), "EXIF", metadata.exif);
    set_chunk(mux.get(), "ICCP", metadata.icc);
    set_chunk(mux.get(), "XMP ", metadata.xmp);
    WebPData assembled = {};
    if (WebPMuxAssemble(mux.get(), &assembled) != WEBP_MUX_OK) {
        throw FormatError("the metadata does not fit into a WebP file");
    }
    const std::unique_ptr<WebPData, decltype(&WebPDataClear)> owner(&assembled, WebPDataClear);
    return {assembled.bytes, assembled.bytes + assembled.size};
}

}  // namespace

Photo read_webp(const Bytes& file, size_t maxPixels) {
    WebPBitstreamFeatures features = {};
    const VP8StatusCode status = WebPGetFeatures(file.data(), file.size(), &features);
    if (status != VP8_STATUS_OK) {
        throw FormatError(status == VP8_STATUS_NOT_ENOUGH_DATA ? "the WebP file is cut short" : "damaged WebP");
    }
    if (features.has_animation != 0) {
        throw FormatError("it is an animation");
    }
    const auto width = static_cast<size_t>(features.width);
    const auto height = static_cast<size_t>(features.height);
    const size_t channels = features.has_alpha != 0 ? 4 : 3;
    if (width * channels > kMaxImageBytes / height) {
        throw FormatError("the picture is too large");
    }
    require_pixels(width, height, maxPixels);
    Photo photo;
    photo.format = PhotoFormat::kWebp;
    photo.isLossless = features.format == kLosslessFormat;
    photo.image = make_image(width, height, channels == 4 ? IMAGE_FORMAT_TYPE_RGBA : IMAGE_FORMAT_TYPE_RGB);
    const auto decode = channels == 4 ? WebPDecodeRGBAInto : WebPDecodeRGBInto;
    const auto stride = static_cast<int>(width * channels);
    if (decode(file.data(), file.size(), photo.pixels(), width * channels * height, stride) == nullptr) {
        throw FormatError("damaged WebP, or one that is cut short");
    }
    take_metadata(file, photo.metadata, photo.warnings);
    if (channels == 4) {
        split_alpha(photo);
    }
    return photo;
}

Bytes write_webp(Photo& photo, int quality) {
    Picture picture;
    WebPConfig config;
    if (WebPConfigInit(&config) == 0) {
        throw std::bad_alloc();
    }
    config.quality = static_cast<float>(quality != 0 ? quality : kDefaultQuality);
    if (photo.isLossless && quality == 0) {
        config.lossless = 1;
        config.exact = 1;
        config.quality = 70;
        picture.picture.use_argb = 1;
    }
    import_pixels(photo, picture.picture);
    if (WebPEncode(&config, &picture.picture) == 0) {
        throw FormatError(reason_of(picture.picture.error_code));
    }
    return with_metadata(picture.writer, photo.metadata);
}

}  // namespace korvane
