// SPDX-License-Identifier: Apache-2.0
#include "frameworks/images/jpeg_decoder.h"

#include <cstdint>
#include <cstring>
#include <limits>

#include "frameworks/core/memory.h"
#include "frameworks/images/jpeg_report.h"
#include "frameworks/images/jpeg_utils.h"

namespace {

constexpr unsigned char kStartOfImage[3] = {0xFF, 0xD8, 0xFF};

constexpr long kMaxWorkingMemoryBytes = 30L * 1024 * 1024;

// A real progressive file has about ten scans. Each scan walks the whole picture however few bytes it has, so a crafted
// file could keep the decoder busy for hours.
constexpr int kMaxScans = 500;

// libjpeg has no message for it, and lets its clients number their own from here on.
constexpr int kMessageTooManyScans = 1000;
constexpr const char* kMessages[] = {"The file has more than 500 scans"};

// By libjpeg's number of the output colour space: unknown, grayscale, RGB, YCbCr, CMYK, YCCK, and in Android's libjpeg
// RGBA_8888.
constexpr ImageFormatType kFormats[] = {
    IMAGE_FORMAT_TYPE_NONE, IMAGE_FORMAT_TYPE_GRAY, IMAGE_FORMAT_TYPE_RGB,  IMAGE_FORMAT_TYPE_YUV,
    IMAGE_FORMAT_TYPE_NONE, IMAGE_FORMAT_TYPE_NONE, IMAGE_FORMAT_TYPE_RGBA,
};

// Where the lines go: straight into a picture of its own, or one after the other into a row when the file's colours
// have no image format. Both lie outside the frame that libjpeg's fatal errors jump back to, so that they survive the
// jump.
struct Target {
    Image* picture;
    unsigned char* row;
    korvane::JpegReport* report;
};

static_assert(korvane::JpegReport::kMaxTextBytes >= JMSG_LENGTH_MAX);

void report_error(j_common_ptr cinfo) {
    cinfo->err->format_message(cinfo, static_cast<korvane::JpegReportingErrors*>(cinfo->err)->report->error);
    jpeg_utils_error_exit(cinfo);
}

void report_message(j_common_ptr cinfo, int level) {
    const bool isWarning = level < 0;
    if (isWarning && cinfo->err->num_warnings++ == 0) {
        cinfo->err->format_message(cinfo, static_cast<korvane::JpegReportingErrors*>(cinfo->err)->report->warning);
    }
}

ImageFormatType format_of(J_COLOR_SPACE space) {
    const auto index = static_cast<size_t>(space);
    return index < std::size(kFormats) ? kFormats[index] : IMAGE_FORMAT_TYPE_NONE;
}

void limit_scans(j_common_ptr cinfo) {
    if (reinterpret_cast<j_decompress_ptr>(cinfo)->input_scan_number > kMaxScans) {
        cinfo->err->msg_code = kMessageTooManyScans;
        cinfo->err->error_exit(cinfo);
    }
}

bool prepare(const jpeg_decompress_struct* cinfo, size_t strideBytes, Target* target) {
    // An image counts its bytes in 32 bits.
    if (strideBytes > std::numeric_limits<uint32_t>::max() / cinfo->output_height) {
        return false;
    }
    const ImageFormatType format = format_of(cinfo->out_color_space);
    target->picture->set(cinfo->output_width, cinfo->output_height, 1, format, nullptr);
    if (format == IMAGE_FORMAT_TYPE_NONE) {
        target->row = static_cast<unsigned char*>(galloc_malloc(strideBytes));
        return target->row != nullptr;
    }
    return target->picture->getPlanes()[0] != nullptr;
}

bool ends_early(Target* target) {
    target->report->endsEarly = true;
    return false;
}

bool read_lines(jpeg_decompress_struct* cinfo, Target* target) {
    if (!jpeg_start_decompress(cinfo)) {
        return ends_early(target);
    }
    const size_t strideBytes = static_cast<size_t>(cinfo->output_width) * static_cast<size_t>(cinfo->output_components);
    if (!prepare(cinfo, strideBytes, target)) {
        return false;
    }
    unsigned char* const pixels = target->picture->getPlanes()[0];
    while (cinfo->output_scanline < cinfo->output_height) {
        JSAMPROW row = pixels == nullptr ? target->row : pixels + cinfo->output_scanline * strideBytes;
        // A call that yields no line means that the stream ran dry; asking again would go on for ever.
        if (jpeg_read_scanlines(cinfo, &row, 1) == 0) {
            return ends_early(target);
        }
    }
    // All lines are there, with or without an end marker behind them.
    target->report->endsEarly = !jpeg_finish_decompress(cinfo);
    return true;
}

// The frame that libjpeg's fatal errors jump back to. Nothing in it is read after the jump, and it has no destructors.
bool decompress(Stream* stream, Target* target) {
    jpeg_utils_source_mgr source(stream);
    korvane::JpegReportingErrors error;
    jpeg_progress_mgr progress = {};
    jpeg_decompress_struct cinfo = {};
    cinfo.err = korvane::init_jpeg_reporting_errors(&error, target->report);
    error.addon_message_table = kMessages;
    error.first_addon_message = kMessageTooManyScans;
    error.last_addon_message = kMessageTooManyScans;
    if (setjmp(error.fJmpBuf) != 0) {
        return false;
    }
    jpeg_create_decompress(&cinfo);
    cinfo.mem->max_memory_to_use = kMaxWorkingMemoryBytes;
    progress.progress_monitor = limit_scans;
    cinfo.progress = &progress;
    cinfo.src = &source;
    const bool done =
        jpeg_read_header(&cinfo, TRUE) == JPEG_HEADER_OK ? read_lines(&cinfo, target) : ends_early(target);
    jpeg_destroy_decompress(&cinfo);
    return done;
}

}  // namespace

bool JpegDecoder::isSupported(auto_ptr<Stream>& stream) {
    unsigned char head[sizeof(kStartOfImage)] = {};
    return stream->read(head, sizeof(head)) == sizeof(head) && memcmp(head, kStartOfImage, sizeof(head)) == 0;
}

bool JpegDecoder::onDecode(auto_ptr<Stream>& stream, auto_ptr<Image>& image) {
    korvane::JpegReport report;
    return korvane::decode_jpeg(*stream, *image, report);
}

jpeg_error_mgr* korvane::init_jpeg_reporting_errors(JpegReportingErrors* errors, JpegReport* report) {
    jpeg_utils_init_error_mgr(errors);
    errors->report = report;
    errors->error_exit = report_error;
    errors->emit_message = report_message;
    return errors;
}

bool korvane::decode_jpeg(Stream& stream, Image& image, JpegReport& report) {
    Image picture(0, 0, 1, IMAGE_FORMAT_TYPE_NONE, nullptr);
    Target target = {&picture, nullptr, &report};
    const bool done = decompress(&stream, &target);
    galloc_free(target.row);
    if (!done) {
        return false;
    }
    if (picture.getFormatType() == IMAGE_FORMAT_TYPE_NONE) {
        // A format without planes leaves the image's depth type as it was.
        image.set(picture.getWidth(), picture.getHeight(), 1, IMAGE_FORMAT_TYPE_NONE, nullptr);
    } else {
        image.swap(picture);
    }
    return true;
}
