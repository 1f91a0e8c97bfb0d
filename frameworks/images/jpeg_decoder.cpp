#include "frameworks/images/jpeg_decoder.h"

#include <cstdint>
#include <cstring>
#include <limits>

#include "frameworks/core/memory.h"
#include "frameworks/images/jpeg_utils.h"

namespace {

constexpr unsigned char kStartOfImage[3] = {0xFF, 0xD8, 0xFF};

constexpr long kMaxWorkingMemoryBytes = 30L * 1024 * 1024;

// A real progressive file has about ten scans. Each scan walks the whole picture however few bytes it has, so a crafted
// file could keep the decoder busy for hours.
constexpr int kMaxScans = 500;

// By libjpeg's number of the output colour space: unknown, grayscale, RGB, YCbCr, CMYK, YCCK, and in Android's libjpeg
// RGBA_8888.
constexpr ImageFormatType kFormats[] = {
    IMAGE_FORMAT_TYPE_NONE, IMAGE_FORMAT_TYPE_GRAY, IMAGE_FORMAT_TYPE_RGB,  IMAGE_FORMAT_TYPE_YUV,
    IMAGE_FORMAT_TYPE_NONE, IMAGE_FORMAT_TYPE_NONE, IMAGE_FORMAT_TYPE_RGBA,
};

// It lies outside the frame that libjpeg's fatal errors jump back to, so that its buffer survives the jump.
struct DecodedPixels {
    unsigned char* bytes;
    uint32_t width;
    uint32_t height;
    ImageFormatType format;
};

ImageFormatType format_of(J_COLOR_SPACE space) {
    const auto index = static_cast<size_t>(space);
    return index < std::size(kFormats) ? kFormats[index] : IMAGE_FORMAT_TYPE_NONE;
}

void limit_scans(j_common_ptr cinfo) {
    if (reinterpret_cast<j_decompress_ptr>(cinfo)->input_scan_number > kMaxScans) {
        cinfo->err->error_exit(cinfo);
    }
}

// From here on no line may come out that was not decoded: a call that yields no line means that the stream ran dry.
bool read_lines(jpeg_decompress_struct* cinfo, DecodedPixels* pixels) {
    if (!jpeg_start_decompress(cinfo)) {
        return false;
    }
    const size_t strideBytes = static_cast<size_t>(cinfo->output_width) * static_cast<size_t>(cinfo->output_components);
    // An image counts its bytes in 32 bits.
    if (strideBytes > std::numeric_limits<uint32_t>::max() / cinfo->output_height) {
        return false;
    }
    pixels->width = cinfo->output_width;
    pixels->height = cinfo->output_height;
    pixels->format = format_of(cinfo->out_color_space);
    pixels->bytes = static_cast<unsigned char*>(galloc_malloc(strideBytes * cinfo->output_height));
    if (pixels->bytes == nullptr) {
        return false;
    }
    while (cinfo->output_scanline < cinfo->output_height) {
        JSAMPROW row = pixels->bytes + cinfo->output_scanline * strideBytes;
        if (jpeg_read_scanlines(cinfo, &row, 1) == 0) {
            return false;
        }
    }
    jpeg_finish_decompress(cinfo);
    return true;
}

// The frame that libjpeg's fatal errors jump back to. Nothing in it is read after the jump, and it has no destructors.
bool decompress(Stream* stream, DecodedPixels* pixels) {
    jpeg_utils_source_mgr source(stream);
    jpeg_utils_error_mgr error;
    jpeg_progress_mgr progress = {};
    jpeg_decompress_struct cinfo = {};
    cinfo.err = jpeg_utils_init_error_mgr(&error);
    if (setjmp(error.fJmpBuf) != 0) {
        return false;
    }
    jpeg_create_decompress(&cinfo);
    cinfo.mem->max_memory_to_use = kMaxWorkingMemoryBytes;
    progress.progress_monitor = limit_scans;
    cinfo.progress = &progress;
    cinfo.src = &source;
    const bool done = jpeg_read_header(&cinfo, TRUE) == JPEG_HEADER_OK && read_lines(&cinfo, pixels);
    jpeg_destroy_decompress(&cinfo);
    return done;
}

}  // namespace

bool JpegDecoder::isSupported(auto_ptr<Stream>& stream) {
    unsigned char head[sizeof(kStartOfImage)] = {};
    return stream->read(head, sizeof(head)) == sizeof(head) && memcmp(head, kStartOfImage, sizeof(head)) == 0;
}

bool JpegDecoder::onDecode(auto_ptr<Stream>& stream, auto_ptr<Image>& image) {
    DecodedPixels pixels = {};
    const bool done = decompress(stream.get(), &pixels);
    if (done) {
        unsigned char* planes[4] = {pixels.bytes, nullptr, nullptr, nullptr};
        image->set(pixels.width, pixels.height, 1, pixels.format, planes);
    }
    galloc_free(pixels.bytes);
    return done;
}
