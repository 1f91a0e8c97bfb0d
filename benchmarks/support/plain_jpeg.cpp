// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/support/plain_jpeg.h"

#include <cstdio>

// libjpeg's header needs size_t and FILE before it.
#include <jpeglib.h>

namespace korvane::bench {

size_t plain_encode(const unsigned char* rgb, unsigned width, unsigned height, int quality,
                    std::vector<unsigned char>& file) {
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
    jpeg_set_quality(&cinfo, quality, TRUE);
    jpeg_start_compress(&cinfo, TRUE);
    while (cinfo.next_scanline < height) {
        JSAMPROW row = const_cast<JSAMPROW>(rgb + static_cast<size_t>(cinfo.next_scanline) * width * 3);
        jpeg_write_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    return outBytes;
}

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

}  // namespace korvane::bench
