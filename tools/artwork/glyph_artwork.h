// SPDX-License-Identifier: Apache-2.0
// Draws the glyphs of the photo timestamp: digits, colon and dash, in the two sizes that the library carries.
//
// The face is a monoline: every glyph is a path of straight and cubic pieces in a unit box, drawn with one round pen,
// so that all stems are equally thick and all digits have one width. Round forms overshoot the box a little at top
// and bottom, without which they look smaller than flat ones. Edges are anti-aliased from the exact distance to the
// path.
//
// The results are checked in as images (applications/photo_timestamp/artwork) and embedded when the library is built,
// so a cross build needs no program that runs on the building machine. `korvane_glyphs FOLDER` writes them anew; a test
// checks that the images are what this code draws.
#ifndef KORVANE_TOOLS_ARTWORK_GLYPH_ARTWORK_H_
#define KORVANE_TOOLS_ARTWORK_GLYPH_ARTWORK_H_

#include <string>
#include <vector>

namespace korvane {

// One size of the face. All lengths in pixels.
struct GlyphSet {
    const char* name;      // first part of the image's file name
    int digitWidth;        // cell of a digit
    int markWidth;         // cell of the colon and the dash
    int height;            // cell height, also the height of a text strip
    double capHeight;      // height of the flat digits
    double digitInkWidth;  // width of the widest digits
    double stem;           // diameter of the pen
};

// The set for 4:3 frames and the one for 16:9 frames.
extern const GlyphSet kGlyphSets[2];

// Characters in the order of the library's tables, the blank left out.
inline constexpr char kDigits[] = "0123456789";
inline constexpr char kMarks[] = ":-";

// An 8-bit image, row-major, without padding. 255 is paper, 0 is full ink.
struct GlyphImage {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> pixels;
};

// One glyph in its cell; an unknown character gives an empty cell of a mark's width.
GlyphImage draw_glyph(const GlyphSet& set, char character);

// The glyphs of `characters`, which share one width, one below the other.
GlyphImage draw_column(const GlyphSet& set, const std::string& characters);

// A binary PGM file's bytes.
std::string to_pgm(const GlyphImage& image);

}  // namespace korvane

#endif  // KORVANE_TOOLS_ARTWORK_GLYPH_ARTWORK_H_
