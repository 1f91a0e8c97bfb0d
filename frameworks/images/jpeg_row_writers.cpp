// SPDX-License-Identifier: Apache-2.0
#include "frameworks/images/jpeg_row_writers.h"

#include <cstddef>

#include "frameworks/core/memory.h"
#include "frameworks/images/color_convert.h"

void Write_Gray(const unsigned char* src, unsigned char* dst, int width) {
    color_convert_gray2rgb(src, dst, width, 1);
}

void Write_RGB(const unsigned char* src, unsigned char* dst, int width) {
    if (width < 1) {
        return;
    }
    galloc_memcpy(dst, src, static_cast<size_t>(width) * 3);
}

void Write_RGBA(const unsigned char* src, unsigned char* dst, int width) {
    color_convert_rgba2rgb(src, dst, width, 1);
}

void Write_YUV(const unsigned char* src, unsigned char* dst, int width) {
    Write_RGB(src, dst, width);
}
