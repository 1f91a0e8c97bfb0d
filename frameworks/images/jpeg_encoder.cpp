// SPDX-License-Identifier: Apache-2.0
#include "frameworks/images/jpeg_encoder.h"

#include "frameworks/core/memory.h"
#include "frameworks/images/jpeg_row_writers.h"
#include "frameworks/images/jpeg_utils.h"

namespace {

using RowWriter = void (*)(const unsigned char* src, unsigned char* dst, int width);

RowWriter row_writer_of(ImageFormatType format) {
    switch (format) {
        case IMAGE_FORMAT_TYPE_GRAY:
            return Write_Gray;
        case IMAGE_FORMAT_TYPE_RGB:
            return Write_RGB;
        case IMAGE_FORMAT_TYPE_RGBA:
            return Write_RGBA;
        case IMAGE_FORMAT_TYPE_YUV:
            return Write_YUV;
        default:
            return nullptr;
    }
}

struct EncodeJob {
    Stream* stream;
    const unsigned char* pixels;
    unsigned char* row;
    JDIMENSION width;
    JDIMENSION height;
    size_t strideBytes;
    RowWriter writer;
    int quality;
};

// A row that already lies as libjpeg takes it is handed over in place: copying it would cost 3 % of the whole encoding.
// libjpeg does not write to its input.
JSAMPROW row_of(const EncodeJob& job, JDIMENSION line) {
    const unsigned char* source = job.pixels + line * job.strideBytes;
    if (job.writer == Write_RGB || job.writer == Write_YUV) {
        return const_cast<JSAMPROW>(source);
    }
    job.writer(source, job.row, static_cast<int>(job.width));
    return job.row;
}

// The frame that libjpeg's fatal errors jump back to. What it changes after setjmp is not read afterwards.
bool compress(const EncodeJob& job) {
    jpeg_utils_destination_mgr destination(job.stream);
    jpeg_utils_error_mgr error;
    jpeg_compress_struct cinfo = {};
    cinfo.err = jpeg_utils_init_error_mgr(&error);
    if (setjmp(error.fJmpBuf) != 0) {
        return false;
    }
    jpeg_create_compress(&cinfo);
    cinfo.dest = &destination;
    cinfo.image_width = job.width;
    cinfo.image_height = job.height;
    cinfo.input_components = 3;
    cinfo.in_color_space = JCS_RGB;
    jpeg_set_defaults(&cinfo);
    jpeg_set_quality(&cinfo, job.quality, TRUE);
    jpeg_start_compress(&cinfo, TRUE);
    while (cinfo.next_scanline < job.height) {
        JSAMPROW row = row_of(job, cinfo.next_scanline);
        jpeg_write_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    return true;
}

}  // namespace

bool JpegEncoder::onEncode(auto_ptr<Stream>& stream, auto_ptr<Image>& image, int quality) {
    const RowWriter writer = row_writer_of(image->getFormatType());
    const unsigned char* pixels = image->getPlanes()[0];
    if (writer == nullptr || pixels == nullptr) {
        return false;
    }
    const size_t width = image->getWidth();
    auto* row = static_cast<unsigned char*>(galloc_malloc(width * 3));
    if (row == nullptr) {
        return false;
    }
    const size_t strideBytes = width * static_cast<size_t>(image->getDepthType());
    const bool done =
        compress({stream.get(), pixels, row, image->getWidth(), image->getHeight(), strideBytes, writer, quality});
    galloc_free(row);
    return done;
}
