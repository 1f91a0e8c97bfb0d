// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "applications/photo_timestamp/timestamp_symbols.h"
#include "tools/artwork/glyph_artwork.h"

namespace {

using korvane::GlyphImage;
using korvane::GlyphSet;

struct Face {
    const GlyphSet& set;
    const Symbol* table;
    TimestampSymbolFunc lookup;
};

const Face kFaces[] = {
    {korvane::kGlyphSets[0], GLOBAL_SYMBOLS_4_TO_3, GetTimestampSymbol_4_to_3},
    {korvane::kGlyphSets[1], GLOBAL_SYMBOLS_16_TO_9, GetTimestampSymbol_16_to_9},
};

TEST(TimestampArtwork, TablesHoldWhatTheGeneratorDraws) {
    const int expected[2][3] = {{90, 60, 160}, {66, 42, 108}};
    for (int f = 0; f < 2; ++f) {
        const Face& face = kFaces[f];
        const std::string order = "0123456789:- ";
        for (int i = 0; i < kTimestampSymbolCount; ++i) {
            const Symbol& symbol = face.table[i];
            SCOPED_TRACE(std::string(face.set.name) + " '" + symbol.symbol + "'");
            EXPECT_EQ(symbol.symbol, order[static_cast<size_t>(i)]);
            EXPECT_EQ(symbol.width, expected[f][i < 10 ? 0 : 1]);
            EXPECT_EQ(symbol.height, expected[f][2]);
            EXPECT_EQ(face.lookup(symbol.symbol), &symbol);
            if (symbol.symbol == ' ') {
                EXPECT_EQ(symbol.data, nullptr);
                continue;
            }
            const GlyphImage image = korvane::draw_glyph(face.set, symbol.symbol);
            EXPECT_EQ(std::memcmp(symbol.data, image.pixels.data(), image.pixels.size()), 0);
        }
        for (int c = -128; c < 128; ++c) {
            if (c == 0 || order.find(static_cast<char>(c)) == std::string::npos) {
                EXPECT_EQ(face.lookup(static_cast<char>(c)), nullptr) << c;
            }
        }
    }
    EXPECT_EQ(gGetTimestampSymbolFuncTable[0]('7'), &GLOBAL_SYMBOLS_4_TO_3[7]);
    EXPECT_EQ(gGetTimestampSymbolFuncTable[1]('7'), &GLOBAL_SYMBOLS_16_TO_9[7]);
}

struct InkBox {
    int left = 1 << 20, top = 1 << 20, right = -1, bottom = -1;
};

InkBox ink_box(const Symbol& symbol) {
    InkBox box;
    for (int y = 0; y < symbol.height; ++y) {
        for (int x = 0; x < symbol.width; ++x) {
            if (symbol.data[y * symbol.width + x] < 255) {
                box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x), std::max(box.bottom, y)};
            }
        }
    }
    return box;
}

TEST(TimestampArtwork, GlyphsAreClearOfTheirNeighboursAndStandOnOneLine) {
    for (const Face& face : kFaces) {
        const InkBox flat = ink_box(face.table[7]);
        for (int i = 0; i < 12; ++i) {
            const Symbol& symbol = face.table[i];
            SCOPED_TRACE(std::string(face.set.name) + " '" + symbol.symbol + "'");
            const InkBox box = ink_box(symbol);
            EXPECT_GE(box.left, 4);
            EXPECT_LE(box.right, symbol.width - 5);
            if (i < 10) {
                // Round digits overshoot the flat ones by a pixel or two, never by more.
                EXPECT_NEAR(box.top, flat.top, 2);
                EXPECT_NEAR(box.bottom, flat.bottom, 2);
            } else {
                EXPECT_NEAR(box.top + box.bottom, symbol.height - 1, 1) << "marks sit in the middle of the digits";
            }
            const unsigned char* begin = symbol.data;
            const unsigned char* end = begin + symbol.width * symbol.height;
            const auto edges = std::count_if(begin, end, [](unsigned char v) { return v > 0 && v < 255; });
            EXPECT_GT(edges, symbol.height / 8) << "edges are anti-aliased";
            EXPECT_GT(std::count(begin, end, 0), symbol.height) << "stems reach full ink";
        }
    }
}

}  // namespace
