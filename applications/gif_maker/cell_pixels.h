// SPDX-License-Identifier: Apache-2.0
// The pixels of an image sorted by the cell of the color histogram that they fall in. Internal.
//
// The pixels of a cell then lie side by side in memory, and what is computed for a cell serves all its pixels.
#ifndef KORVANE_APPLICATIONS_GIF_MAKER_CELL_PIXELS_H_
#define KORVANE_APPLICATIONS_GIF_MAKER_CELL_PIXELS_H_

#include <cstddef>
#include <cstdint>

namespace korvane {

// Cells are 8 values wide on each axis.
constexpr size_t kCellsPerAxis = 32;
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
    const auto first = [](size_t cell) { return static_cast<int32_t>(cell) * kCellWidth; };
    return {first(red), first(green), first(blue)};
}

// A pixel within its cell: the low three bits of each channel.
struct LowBits {
    static int32_t red(uint16_t low) { return low & 7; }
    static int32_t green(uint16_t low) { return low >> 3 & 7; }
    static int32_t blue(uint16_t low) { return low >> 6; }
};

// A pixel as one number: its cell, by cell_index, above its nine low bits. So no channel needs to be taken apart again
// to sort it.
struct CellPixel {
    uint32_t packed;

    static CellPixel of(uint32_t red, uint32_t green, uint32_t blue) {  // 0 ... 255 each
        return {(red >> 3 << 5 | green >> 3) << 14 | blue << 6 | (green & 7) << 3 | (red & 7)};
    }
    size_t cell() const { return packed >> 9; }
    uint16_t low() const { return packed & 511; }
};

// Calls body(item) for each, four a round: where the steps are few, the loop's own instructions count.
template <typename Item, typename Body>
void four_a_round(const Item* items, size_t count, const Body& body) {
    for (size_t rounds = count / 4; rounds != 0; --rounds) {
        body(items[0]);
        body(items[1]);
        body(items[2]);
        body(items[3]);
        items += 4;
    }
    for (size_t rest = count % 4; rest != 0; --rest) {
        body(*items++);
    }
}

class CellPixels {
  public:
    // This many elements past the last pixel may be read; they are 0.
    static constexpr size_t kSlack = 64;

    CellPixels() = default;
    ~CellPixels();
    CellPixels(const CellPixels&) = delete;
    CellPixels& operator=(const CellPixels&) = delete;

    // Sorts pixels, less than 2^31; within a cell they keep their order. False when memory is short. Once per
    // object.
    bool sort(const CellPixel* pixels, size_t count);

    // Where in low() the pixels of a cell begin; those of the next cell follow. `cell` may be kHistogramCells.
    size_t begin(size_t cell) const { return m_Begin[cell]; }
    const uint16_t* low() const { return m_Low; }

  private:
    uint32_t* m_Begin = nullptr;
    uint16_t* m_Low = nullptr;
};

}  // namespace korvane

#endif  // KORVANE_APPLICATIONS_GIF_MAKER_CELL_PIXELS_H_
