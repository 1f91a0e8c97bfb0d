// SPDX-License-Identifier: Apache-2.0
#include "tests/frameworks/images/jpeg_reference.h"

#include <cstdio>  // IWYU pragma: keep
#include <cstdlib>

// libjpeg's header needs size_t and FILE before it.
#include <jpeglib.h>

namespace {

constexpr J_COLOR_SPACE kColorSpaces[] = {JCS_UNKNOWN, JCS_GRAYSCALE, JCS_UNKNOWN, JCS_RGB, JCS_CMYK};

constexpr jpeg_scan_info kOneScanPerComponent[] = {
    {1, {0}, 0, 63, 0, 0},
    {1, {1}, 0, 63, 0, 0},
    {1, {2}, 0, 63, 0, 0},
};

}  // namespace

Bytes reference_encode(const Bytes& pixels, unsigned width, unsigned height, const ReferenceSettings& settings) {
    jpeg_compress_struct cinfo = {};
    jpeg_error_mgr error = {};
    cinfo.err = jpeg_std_error(&error);
    jpeg_create_compress(&cinfo);
    unsigned char* out = nullptr;
    unsigned long outBytes = 0;
    jpeg_mem_dest(&cinfo, &out, &outBytes);
    cinfo.image_width = width;
    cinfo.image_height = height;
    cinfo.input_components = settings.components;
    cinfo.in_color_space = kColorSpaces[settings.components];
    jpeg_set_defaults(&cinfo);
    jpeg_set_quality(&cinfo, settings.quality, TRUE);
    cinfo.arith_code = settings.arithmetic ? TRUE : FALSE;
    cinfo.restart_in_rows = settings.restartRows;
    if (settings.progressive) {
        jpeg_simple_progression(&cinfo);
    }
    if (settings.oneScanPerComponent) {
        cinfo.scan_info = kOneScanPerComponent;
        cinfo.num_scans = 3;
    }
    jpeg_start_compress(&cinfo, TRUE);
    if (settings.commentBytes > 0) {
        const Bytes comment(settings.commentBytes, 'c');
        jpeg_write_marker(&cinfo, JPEG_COM, comment.data(), static_cast<unsigned>(comment.size()));
    }
    const size_t strideBytes = static_cast<size_t>(width) * static_cast<size_t>(settings.components);
    while (cinfo.next_scanline < height) {
        JSAMPROW row = const_cast<JSAMPROW>(pixels.data() + cinfo.next_scanline * strideBytes);
        jpeg_write_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    Bytes file(out, out + outBytes);
    free(out);
    return file;
}

Bytes reference_decode(const Bytes& file) {
    jpeg_decompress_struct cinfo = {};
    jpeg_error_mgr error = {};
    cinfo.err = jpeg_std_error(&error);
    jpeg_create_decompress(&cinfo);
    jpeg_mem_src(&cinfo, file.data(), static_cast<unsigned long>(file.size()));
    jpeg_read_header(&cinfo, TRUE);
    jpeg_start_decompress(&cinfo);
    const size_t strideBytes = static_cast<size_t>(cinfo.output_width) * static_cast<size_t>(cinfo.output_components);
    Bytes pixels(strideBytes * cinfo.output_height);
    while (cinfo.output_scanline < cinfo.output_height) {
        JSAMPROW row = pixels.data() + cinfo.output_scanline * strideBytes;
        jpeg_read_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_decompress(&cinfo);
    jpeg_destroy_decompress(&cinfo);
    return pixels;
}
