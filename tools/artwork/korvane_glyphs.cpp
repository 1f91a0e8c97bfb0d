// SPDX-License-Identifier: Apache-2.0
// korvane_glyphs FOLDER [SPECIMEN.jpg]: writes the timestamp's artwork into FOLDER, and a specimen of both sets.
#include <cstdio>
#include <cstring>
#include <fstream>
#include <utility>

#include "tools/artwork/glyph_artwork.h"
#include "tools/command.h"
#include "tools/photo/photo_io.h"

namespace {

bool write_artwork(const std::string& folder) {
    for (const korvane::GlyphSet& set : korvane::kGlyphSets) {
        const std::string stem = folder + "/" + set.name;
        const std::pair<std::string, const char*> columns[] = {{stem + "_digits.pgm", korvane::kDigits},
                                                               {stem + "_marks.pgm", korvane::kMarks}};
        for (const auto& [path, characters] : columns) {
            std::ofstream file(path, std::ios::binary);
            file << korvane::to_pgm(korvane::draw_column(set, characters));
            file.close();
            if (!file) {
                std::fprintf(stderr, "korvane_glyphs: cannot write %s\n", path.c_str());
                return false;
            }
        }
    }
    return true;
}

// Both sets, each as its digits and as a date with a time, on paper.
auto_ptr<Image> draw_specimen() {
    constexpr uint32_t kWidth = 1400;
    constexpr uint32_t kHeight = 640;
    constexpr uint32_t kMargin = 30;
    auto_ptr<Image> sheet(Image::createImage(kWidth, kHeight, 1, IMAGE_FORMAT_TYPE_GRAY, nullptr));
    std::memset(sheet->getPlanes()[0], 255, size_t{kWidth} * kHeight);
    uint32_t top = kMargin;
    for (const korvane::GlyphSet& set : korvane::kGlyphSets) {
        for (const char* text : {korvane::kDigits, "2026-08-31 19:45"}) {
            uint32_t left = kMargin;
            for (const char* c = text; *c != '\0'; ++c) {
                const korvane::GlyphImage glyph = korvane::draw_glyph(set, *c);
                for (uint32_t row = 0; row < static_cast<uint32_t>(glyph.height); ++row) {
                    std::memcpy(sheet->getPlanes()[0] + size_t{top + row} * kWidth + left,
                                glyph.pixels.data() + row * static_cast<size_t>(glyph.width),
                                static_cast<size_t>(glyph.width));
                }
                left += static_cast<uint32_t>(glyph.width);
            }
            top += static_cast<uint32_t>(set.height) + 10;
        }
    }
    return sheet;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2 && argc != 3) {
        std::fprintf(stderr, "usage: korvane_glyphs FOLDER [SPECIMEN.jpg]\n");
        return 2;
    }
    try {
        if (!write_artwork(argv[1])) {
            return 2;
        }
        if (argc == 3) {
            korvane::Photo specimen;
            specimen.image = draw_specimen();
            korvane::write_photo(argv[2], std::move(specimen));
        }
    } catch (const korvane::CommandError& error) {
        std::fprintf(stderr, "korvane_glyphs: %s\n", error.what());
        return 2;
    }
    return 0;
}
