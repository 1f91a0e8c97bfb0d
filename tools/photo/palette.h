// SPDX-License-Identifier: Apache-2.0
// Photos in few colours: the library's quantizer makes the palette, and each pixel takes its nearest entry.
#ifndef KORVANE_TOOLS_PHOTO_PALETTE_H_
#define KORVANE_TOOLS_PHOTO_PALETTE_H_

#include <cstdint>
#include <vector>

#include "tools/photo/formats.h"
#include "tools/photo/photo.h"

namespace korvane {

// One palette for all photos, which are RGB and of one size. Throws std::bad_alloc when the quantizer lacks memory.
std::vector<Rgb> make_palette(const std::vector<Photo>& photos, int colors);

// Finds the nearest palette entry of a colour. Results are kept, because photos repeat their colours.
class NearestEntry {
  public:
    explicit NearestEntry(const std::vector<Rgb>& palette) : m_Palette(palette), m_Known(size_t{1} << 24, kUnknown) {}

    size_t operator()(const unsigned char* rgb);

  private:
    static constexpr uint16_t kUnknown = 0xFFFF;

    const std::vector<Rgb>& m_Palette;
    std::vector<uint16_t> m_Known;
};

// The entries of an RGB photo's pixels, for palettes of at most 256 colours. Dithering gives each pixel's error to the
// pixels that follow.
Bytes index_pixels(const Photo& photo, const std::vector<Rgb>& palette, NearestEntry& nearest, bool dithers);

}  // namespace korvane

#endif  // KORVANE_TOOLS_PHOTO_PALETTE_H_
