// The loops of the colour conversions, chosen at run time for the processor's vector unit.
//
// Nothing is checked here. Counts are in pixels, in pairs or in quads of consecutive pixels; sources and destinations
// hold exactly what that many of them take, at any alignment, and do not overlap. All forms give equal bytes.
#ifndef KORVANE_FRAMEWORKS_IMAGES_COLOR_KERNELS_H_
#define KORVANE_FRAMEWORKS_IMAGES_COLOR_KERNELS_H_

#include <cstddef>
#include <cstdint>

namespace korvane {

// One complete set of conversions for one instruction set.
struct ColorKernels {
    using Packed = void (*)(const uint8_t* src, uint8_t* dst, size_t count);
    using ToTwo = void (*)(const uint8_t* rgb, uint8_t* y, uint8_t* chroma, size_t count);
    using FromTwo = void (*)(const uint8_t* y, const uint8_t* chroma, uint8_t* rgb, size_t count);
    using ToThree = void (*)(const uint8_t* rgb, uint8_t* y, uint8_t* u, uint8_t* v, size_t count);
    using FromThree = void (*)(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* rgb, size_t count);
    // A pair of rows, counted in 2 x 2 blocks.
    using RowPair = void (*)(const uint8_t* top, const uint8_t* bottom, uint8_t* yTop, uint8_t* yBottom,
                             uint8_t* chroma, size_t count);

    // By the pixel.
    Packed gray2rgb;
    Packed gray2rgba;
    Packed rgb2gray;
    // Reads the green and blue of pixel i from dst[i + 1] and dst[i + 2], as they are before dst[i] is written.
    Packed rgba2gray;
    Packed rgb2rgba;
    Packed rgba2rgb;
    Packed rgb2yuv;
    Packed yuv2rgb;

    // By the pair.
    Packed rgb2yuyv;
    Packed rgb2yvyu;
    ToThree rgb2yuv422p;
    Packed yuyv2rgb;
    Packed yvyu2rgb;
    FromThree yuv422p2rgb;

    // By the quad.
    ToThree rgb2yv12oryu12;
    ToTwo rgb2nv12;
    FromThree yv12oryu122rgb;
    FromTwo nv122rgb;
    FromTwo nv212rgb;

    RowPair rgb2nv21_rows;
};

const ColorKernels& color_kernels();

}  // namespace korvane

#endif  // KORVANE_FRAMEWORKS_IMAGES_COLOR_KERNELS_H_
