// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

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

TEST(TimestampArtwork, GlyphsAreInkedAndClearOfTheirNeighbours) {
    for (const Face& face : kFaces) {
        for (int i = 0; i < 12; ++i) {
            const Symbol& symbol = face.table[i];
            SCOPED_TRACE(std::string(face.set.name) + " '" + symbol.symbol + "'");
            int inked = 0;
            for (int at = 0; at < symbol.width * symbol.height; ++at) {
                const int x = at % symbol.width;
                inked += symbol.data[at] == 0 ? 1 : 0;
                EXPECT_TRUE(symbol.data[at] == 255 || (x >= 4 && x <= symbol.width - 5)) << at;
            }
            EXPECT_GT(inked, symbol.height) << "stems reach full ink";
        }
    }
}

}  // namespace
