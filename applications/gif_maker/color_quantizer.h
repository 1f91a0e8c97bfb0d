// SPDX-License-Identifier: Apache-2.0
// ColorQuantizer: reduces the colors of one RGB image to a palette, for animated-image making.
//
// The RGB cube, 32 cells a side, is split greedily by orthogonal planes where a split lowers the variance most; sums
// over any box cost eight look-ups in cumulative tables. Every pixel then goes to the nearest color found so, and each
// palette entry becomes the mean of its pixels.
//
// Use: prepare, addColor once per pixel, getPalette, release; prepare again for the next image. The pixels are stored
// here, 4 bytes each, and 2 more while the palette is made. One object serves one thread at a time. Palettes are the
// same on every processor.
//
// Published source: X. Wu, "Efficient Statistical Computations for Optimal Color Quantization", Graphics Gems II, 1991.
#ifndef KORVANE_APPLICATIONS_GIF_MAKER_COLOR_QUANTIZER_H_
#define KORVANE_APPLICATIONS_GIF_MAKER_COLOR_QUANTIZER_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "frameworks/core/export.h"

// A box of histogram cells (0 to 32 on each axis): minima exclusive, maxima inclusive.
struct ColorCube {
    int32_t RedMinimum;
    int32_t RedMaximum;
    int32_t GreenMinimum;
    int32_t GreenMaximum;
    int32_t BlueMinimum;
    int32_t BlueMaximum;
    int32_t Volume;
};

struct Color {
    int32_t red;
    int32_t green;
    int32_t blue;
    int32_t alpha;
};

namespace korvane {
class CellPixels;
struct CellPixel;
}  // namespace korvane

// The slot order is part of the binary interface.
class KORVANE_API ColorQuantizer {
  public:
    static constexpr int32_t kMaxColors = 512;

    ColorQuantizer();
    virtual ~ColorQuantizer();
    ColorQuantizer(const ColorQuantizer&) = delete;
    ColorQuantizer& operator=(const ColorQuantizer&) = delete;

    // Takes memory for width x height pixels and empties the histogram; what an earlier prepare took is released first.
    // A negative size, one whose pixels a 32-bit count cannot hold, or short memory leave the object unprepared:
    // colors are ignored and the palette is empty.
    virtual void prepare(int32_t width, int height);

    // Adds the next pixel. Channels are taken into 0 ... 255; pixels beyond the prepared size are ignored.
    virtual void addColor(int32_t r, int32_t g, int32_t b);

    // The palette of the pixels added, at most colorCount entries (512 at most; none below 1), alpha 255. It has as
    // many entries as boxes could be made, fewer than colorCount where colors run out; an entry that no pixel is
    // nearest to is black. With no pixels it is one black entry. When memory is short it is empty.
    //
    // The array is the object's own; it changes with the next getPalette and survives release(). The histogram is
    // spent: until the next prepare, colors are ignored and further palettes are empty.
    virtual std::vector<Color>& getPalette(int32_t colorCount);

    // Frees the working memory. May be called at any time, also twice; the destructor calls it.
    virtual void release();

  private:
    template <typename Visit>
    KORVANE_HIDDEN bool eachImageArray(const Visit& visit);
    template <typename Visit>
    KORVANE_HIDDEN bool eachPaletteArray(size_t entries, const Visit& visit);
    KORVANE_HIDDEN void fillHistogram(const korvane::CellPixels& pixels);
    void calculateMoments();
    KORVANE_HIDDEN int32_t splitBoxes(int32_t colorCount);
    bool cut(ColorCube& first, ColorCube& second) const;
    double calculateVariance(const ColorCube& cube) const;
    void mark(const ColorCube& cube, int32_t label);
    KORVANE_HIDDEN bool refine(const korvane::CellPixels& pixels, int32_t boxCount);
    KORVANE_HIDDEN void appendMeans(int32_t boxCount);

    // Of the refinement, per palette entry. 64 bits, since a sum of channels passes 32 bits at 8.4 million pixels.
    int64_t* reds = nullptr;
    int64_t* greens = nullptr;
    int64_t* blues = nullptr;
    int64_t* sums = nullptr;

    // Histogram, indexed [red][green][blue], cumulative after calculateMoments.
    int64_t*** weights = nullptr;
    int64_t*** momentsRed = nullptr;
    int64_t*** momentsGreen = nullptr;
    int64_t*** momentsBlue = nullptr;
    float*** moments = nullptr;

    // Per cell of pixels, the box that holds it.
    int32_t* tag = nullptr;
    // Per pixel, its cell and where in the cell it lies.
    korvane::CellPixel* quantizedPixels = nullptr;

    int32_t imageWidth = 0;
    int32_t imageSize = 0;
    int32_t pixelIndex = 0;
    ColorCube* cubes = nullptr;
    std::vector<Color> colors;
    bool m_IsPrepared = false;
};

#endif  // KORVANE_APPLICATIONS_GIF_MAKER_COLOR_QUANTIZER_H_
