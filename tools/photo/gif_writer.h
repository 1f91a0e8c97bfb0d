// SPDX-License-Identifier: Apache-2.0
#ifndef KORVANE_TOOLS_PHOTO_GIF_WRITER_H_
#define KORVANE_TOOLS_PHOTO_GIF_WRITER_H_

#include <vector>

#include "tools/photo/formats.h"

struct GifFileType;

namespace korvane {

// An animated GIF, frame by frame. Throws FormatError or std::bad_alloc.
class GifWriter {
  public:
    // With a palette here, all frames share it; without, each frame brings its own. 0 loops: for ever.
    GifWriter(uint32_t width, uint32_t height, const std::vector<Rgb>& palette, int loops);
    ~GifWriter();
    GifWriter(const GifWriter&) = delete;
    GifWriter& operator=(const GifWriter&) = delete;

    // Overwrites the frame's indices.
    void add(IndexedPicture& frame, int delayHundredths);

    // The file. Nothing can be added afterwards.
    Bytes finish();

  private:
    void check(int result);

    GifFileType* m_File = nullptr;
    bool m_HasPalette;
    Bytes m_Bytes;
};

}  // namespace korvane

#endif  // KORVANE_TOOLS_PHOTO_GIF_WRITER_H_
