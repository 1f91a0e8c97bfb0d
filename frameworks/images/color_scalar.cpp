// SPDX-License-Identifier: Apache-2.0
#include "frameworks/images/color_scalar.h"

#include <algorithm>

#include "frameworks/images/color_tables.h"

namespace korvane {
namespace {

constexpr size_t kRgb = 3;
constexpr size_t kRgba = 4;

uint8_t byte(int32_t value) {
    return static_cast<uint8_t>(value);
}

uint8_t clamped(int32_t value) {
    return byte(std::clamp(value, 0, 255));
}

// The sum for full white is 255 x 65536, so the result is never above 255.
uint8_t gray_of(uint32_t r, uint32_t g, uint32_t b) {
    return static_cast<uint8_t>((19595 * r + 38470 * g + 7471 * b) >> 16);
}

uint8_t luma(const uint8_t* rgb) {
    return byte(gRGB2Y_RTable[rgb[0]] + gRGB2Y_GTable[rgb[1]] + gRGB2Y_BTable[rgb[2]] + 16);
}

// Chroma around 0; results add 128 for each pixel summed.
int32_t raw_u(const uint8_t* rgb) {
    return gRGB2U_RTable[rgb[0]] + gRGB2U_GTable[rgb[1]] + gRGB2V_RTable[rgb[2]];
}

int32_t raw_v(const uint8_t* rgb) {
    return gRGB2V_RTable[rgb[0]] + gRGB2V_GTable[rgb[1]] + gRGB2V_BTable[rgb[2]];
}

uint8_t mean_of_pair(int32_t sum) {
    return byte((sum + 256) >> 1);
}

uint8_t mean_of_quad(int32_t sum) {
    return byte((sum + 512) >> 2);
}

// What a pixel's chroma adds to its luma term.
struct ChromaTerms {
    ChromaTerms(uint8_t u, uint8_t v)
        : red(gYUV2R_VTable[v]), green(gYUV2G_VTable[v] + gYUV2G_UTable[u]), blue(gYUV2B_UTable[u]) {}

    void store(uint8_t y, uint8_t* rgb) const {
        const int32_t light = gYUV2RGB_YTable[y];
        rgb[0] = clamped(light + red);
        rgb[1] = clamped(light - green);
        rgb[2] = clamped(light + blue);
    }

    int32_t red;
    int32_t green;
    int32_t blue;
};

template <size_t kU, size_t kV>
void encode_packed_pairs(const uint8_t* rgb, uint8_t* packed, size_t pairs) {
    for (size_t i = 0; i < pairs; ++i, rgb += 2 * kRgb, packed += 4) {
        packed[0] = luma(rgb);
        packed[2] = luma(rgb + kRgb);
        packed[kU] = mean_of_pair(raw_u(rgb) + raw_u(rgb + kRgb));
        packed[kV] = mean_of_pair(raw_v(rgb) + raw_v(rgb + kRgb));
    }
}

template <size_t kU, size_t kV>
void decode_packed_pairs(const uint8_t* packed, uint8_t* rgb, size_t pairs) {
    for (size_t i = 0; i < pairs; ++i, packed += 4, rgb += 2 * kRgb) {
        const ChromaTerms terms(packed[kU], packed[kV]);
        terms.store(packed[0], rgb);
        terms.store(packed[2], rgb + kRgb);
    }
}

// `step` is the distance between neighbouring samples of u and of v.
void decode_quads(const uint8_t* y, const uint8_t* u, const uint8_t* v, size_t step, uint8_t* rgb, size_t quads) {
    for (size_t i = 0; i < quads; ++i, y += 4, u += step, v += step) {
        const ChromaTerms terms(*u, *v);
        for (size_t k = 0; k < 4; ++k, rgb += kRgb) {
            terms.store(y[k], rgb);
        }
    }
}

void luma_of_quad(const uint8_t* rgb, uint8_t* y) {
    for (size_t k = 0; k < 4; ++k) {
        y[k] = luma(rgb + k * kRgb);
    }
}

int32_t sum_of_quad(int32_t (*raw)(const uint8_t*), const uint8_t* rgb) {
    return raw(rgb) + raw(rgb + kRgb) + raw(rgb + 2 * kRgb) + raw(rgb + 3 * kRgb);
}

}  // namespace

void gray2rgb_scalar(const uint8_t* gray, uint8_t* rgb, size_t pixels) {
    for (size_t i = 0; i < pixels; ++i, rgb += kRgb) {
        rgb[0] = rgb[1] = rgb[2] = gray[i];
    }
}

void gray2rgba_scalar(const uint8_t* gray, uint8_t* rgba, size_t pixels) {
    for (size_t i = 0; i < pixels; ++i, rgba += kRgba) {
        rgba[0] = rgba[1] = rgba[2] = gray[i];
        rgba[3] = 255;
    }
}

void rgb2gray_scalar(const uint8_t* rgb, uint8_t* gray, size_t pixels) {
    for (size_t i = 0; i < pixels; ++i, rgb += kRgb) {
        gray[i] = gray_of(rgb[0], rgb[1], rgb[2]);
    }
}

void rgba2gray_scalar(const uint8_t* rgba, uint8_t* gray, size_t pixels) {
    // Green and blue come from the output, not from the source. This is part of the interface.
    for (size_t i = 0; i < pixels; ++i) {
        gray[i] = gray_of(rgba[i * kRgba], gray[i + 1], gray[i + 2]);
    }
}

void rgb2rgba_scalar(const uint8_t* rgb, uint8_t* rgba, size_t pixels) {
    for (size_t i = 0; i < pixels; ++i, rgb += kRgb, rgba += kRgba) {
        rgba[0] = rgb[0];
        rgba[1] = rgb[1];
        rgba[2] = rgb[2];
        rgba[3] = 255;
    }
}

void rgba2rgb_scalar(const uint8_t* rgba, uint8_t* rgb, size_t pixels) {
    for (size_t i = 0; i < pixels; ++i, rgba += kRgba, rgb += kRgb) {
        rgb[0] = rgba[0];
        rgb[1] = rgba[1];
        rgb[2] = rgba[2];
    }
}

void rgb2yuv_scalar(const uint8_t* rgb, uint8_t* yuv, size_t pixels) {
    for (size_t i = 0; i < pixels; ++i, rgb += kRgb, yuv += 3) {
        const uint8_t y = luma(rgb);
        const uint8_t u = byte(raw_u(rgb) + 128);
        const uint8_t v = byte(raw_v(rgb) + 128);
        yuv[0] = y;
        yuv[1] = u;
        yuv[2] = v;
    }
}

void rgb2yuyv_scalar(const uint8_t* rgb, uint8_t* yuyv, size_t pairs) {
    encode_packed_pairs<1, 3>(rgb, yuyv, pairs);
}

void rgb2yvyu_scalar(const uint8_t* rgb, uint8_t* yvyu, size_t pairs) {
    encode_packed_pairs<3, 1>(rgb, yvyu, pairs);
}

void rgb2yuv422p_scalar(const uint8_t* rgb, uint8_t* y, uint8_t* u, uint8_t* v, size_t pairs) {
    for (size_t i = 0; i < pairs; ++i, rgb += 2 * kRgb, y += 2) {
        y[0] = luma(rgb);
        y[1] = luma(rgb + kRgb);
        u[i] = mean_of_pair(raw_u(rgb) + raw_u(rgb + kRgb));
        v[i] = mean_of_pair(raw_v(rgb) + raw_v(rgb + kRgb));
    }
}

void rgb2yv12oryu12_scalar(const uint8_t* rgb, uint8_t* y, uint8_t* u, uint8_t* v, size_t quads) {
    for (size_t i = 0; i < quads; ++i, rgb += 4 * kRgb, y += 4) {
        luma_of_quad(rgb, y);
        u[i] = mean_of_quad(sum_of_quad(raw_u, rgb));
        v[i] = mean_of_quad(sum_of_quad(raw_v, rgb));
    }
}

void rgb2nv12_scalar(const uint8_t* rgb, uint8_t* y, uint8_t* uv, size_t quads) {
    for (size_t i = 0; i < quads; ++i, rgb += 4 * kRgb, y += 4, uv += 2) {
        luma_of_quad(rgb, y);
        uv[0] = mean_of_quad(sum_of_quad(raw_u, rgb));
        // The first pixel counts twice, the second not at all. This is part of the interface.
        uv[1] = mean_of_quad(2 * raw_v(rgb) + raw_v(rgb + 2 * kRgb) + raw_v(rgb + 3 * kRgb));
    }
}

void rgb2nv21_rows_scalar(const uint8_t* top, const uint8_t* bottom, uint8_t* yTop, uint8_t* yBottom, uint8_t* vu,
                          size_t pairs) {
    for (size_t i = 0; i < pairs; ++i, top += 2 * kRgb, bottom += 2 * kRgb, yTop += 2, yBottom += 2, vu += 2) {
        yTop[0] = luma(top);
        yTop[1] = luma(top + kRgb);
        yBottom[0] = luma(bottom);
        yBottom[1] = luma(bottom + kRgb);
        vu[0] = mean_of_quad(raw_v(top) + raw_v(top + kRgb) + raw_v(bottom) + raw_v(bottom + kRgb));
        // The top left pixel counts twice, the top right one not at all, as in rgb2nv12 for V.
        vu[1] = mean_of_quad(2 * raw_u(top) + raw_u(bottom) + raw_u(bottom + kRgb));
    }
}

void yuv2rgb_scalar(const uint8_t* yuv, uint8_t* rgb, size_t pixels) {
    for (size_t i = 0; i < pixels; ++i, yuv += 3, rgb += kRgb) {
        ChromaTerms(yuv[1], yuv[2]).store(yuv[0], rgb);
    }
}

void yuyv2rgb_scalar(const uint8_t* yuyv, uint8_t* rgb, size_t pairs) {
    decode_packed_pairs<1, 3>(yuyv, rgb, pairs);
}

void yvyu2rgb_scalar(const uint8_t* yvyu, uint8_t* rgb, size_t pairs) {
    decode_packed_pairs<3, 1>(yvyu, rgb, pairs);
}

void yuv422p2rgb_scalar(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* rgb, size_t pairs) {
    for (size_t i = 0; i < pairs; ++i, y += 2, rgb += 2 * kRgb) {
        const ChromaTerms terms(u[i], v[i]);
        terms.store(y[0], rgb);
        terms.store(y[1], rgb + kRgb);
    }
}

void yv12oryu122rgb_scalar(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* rgb, size_t quads) {
    decode_quads(y, u, v, 1, rgb, quads);
}

void nv122rgb_scalar(const uint8_t* y, const uint8_t* uv, uint8_t* rgb, size_t quads) {
    decode_quads(y, uv, uv + 1, 2, rgb, quads);
}

void nv212rgb_scalar(const uint8_t* y, const uint8_t* vu, uint8_t* rgb, size_t quads) {
    decode_quads(y, vu + 1, vu, 2, rgb, quads);
}

}  // namespace korvane
