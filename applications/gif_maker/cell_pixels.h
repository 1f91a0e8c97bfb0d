// SPDX-License-Identifier: Apache-2.0
// The pixels of an image sorted by the cell of the color histogram that they fall in. Internal.
//
// The pixels of a cell then lie side by side in memory, and what is computed for a cell serves all its pixels.
#ifndef KORVANE_APPLICATIONS_GIF_MAKER_CELL_PIXELS_H_
#define KORVANE_APPLICATIONS_GIF_MAKER_CELL_PIXELS_H_

#include <cstddef>
#include <cstdint>

namespace korvane {

// Cells are 8 values wide on each axis and numbered 1 to 32; cell 0 of an axis holds nothing.
constexpr size_t kCellsPerAxis = 33;
constexpr size_t kHistogramCells = kCellsPerAxis * kCellsPerAxis * kCellsPerAxis;
constexpr int32_t kCellWidth = 8;

inline size_t cell_index(size_t red, size_t green, size_t blue) {
    return (red * kCellsPerAxis + green) * kCellsPerAxis + blue;
}

// The least values of the three channels in a cell.
struct CellBase {
    int32_t red;
    int32_t green;
    int32_t blue;
};

inline CellBase cell_base(size_t red, size_t green, size_t blue) {
    const auto first = [](size_t cell) { return (static_cast<int32_t>(cell) - 1) * kCellWidth; };
    return {first(red), first(green), first(blue)};
}

// A pixel within its cell: the low three bits of each channel.
struct LowBits {
    static uint16_t pack(uint32_t red, uint32_t green, uint32_t blue) {
        return static_cast<uint16_t>((red & 7) | (green & 7) << 3 | (blue & 7) << 6);
    }
    static int32_t red(uint16_t low) { return low & 7; }
    static int32_t green(uint16_t low) { return low >> 3 & 7; }
    static int32_t blue(uint16_t low) { return low >> 6; }
};

struct PixelPlanes {
    const uint8_t* red;
    const uint8_t* green;
    const uint8_t* blue;
    const int32_t* cells;  // by cell_index
    size_t count;          // less than 2^31
};

class CellPixels {
  public:
    // This many elements past the last pixel may be read; they are 0.
    static constexpr size_t kSlack = 64;

    CellPixels() = default;
    ~CellPixels();
    CellPixels(const CellPixels&) = delete;
    CellPixels& operator=(const CellPixels&) = delete;

    // Sorts the pixels; within a cell they keep their order. False when memory is short. Once per object.
    bool sort(const PixelPlanes& pixels);

    // Where in low() the pixels of a cell begin; those of the next cell follow. `cell` may be kHistogramCells.
    size_t begin(size_t cell) const { return m_Begin[cell]; }
    const uint16_t* low() const { return m_Low; }

  private:
    uint32_t* m_Begin = nullptr;
    uint16_t* m_Low = nullptr;
};

}  // namespace korvane

#endif  // KORVANE_APPLICATIONS_GIF_MAKER_CELL_PIXELS_H_
