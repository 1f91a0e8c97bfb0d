// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstring>

#include "applications/photo_timestamp/timestamp_symbols.h"
#include "tools/artwork/glyph_artwork.h"

namespace {

struct Face {
    const korvane::GlyphSet& set;
    const Symbol* table;
    TimestampSymbolFunc lookup;
    int digitWidth, otherWidth, height;
};

const Face kFaces[] = {
    {korvane::kGlyphSets[0], GLOBAL_SYMBOLS_4_TO_3, GetTimestampSymbol_4_to_3, 90, 60, 160},
    {korvane::kGlyphSets[1], GLOBAL_SYMBOLS_16_TO_9, GetTimestampSymbol_16_to_9, 66, 42, 108},
};

TEST(TimestampArtwork, TablesHoldWhatTheGeneratorDrawsInkedAndClearOfNeighbours) {
    for (const Face& face : kFaces) {
        const std::string order = "0123456789:- ";
        for (int i = 0; i < kTimestampSymbolCount; ++i) {
            const Symbol& symbol = face.table[i];
            SCOPED_TRACE(std::string(face.set.name) + " '" + symbol.symbol + "'");
            EXPECT_EQ(symbol.symbol, order[static_cast<size_t>(i)]);
            EXPECT_EQ(symbol.width, i < 10 ? face.digitWidth : face.otherWidth);
            EXPECT_EQ(symbol.height, face.height);
            EXPECT_EQ(face.lookup(symbol.symbol), &symbol);
            if (symbol.symbol == ' ') {
                EXPECT_EQ(symbol.data, nullptr);
                continue;
            }
            const korvane::GlyphImage image = korvane::draw_glyph(face.set, symbol.symbol);
            EXPECT_EQ(std::memcmp(symbol.data, image.pixels.data(), image.pixels.size()), 0);
            int inked = 0;
            for (int at = 0; at < symbol.width * symbol.height; ++at) {
                const int x = at % symbol.width;
                inked += symbol.data[at] == 0 ? 1 : 0;
                EXPECT_TRUE(symbol.data[at] == 255 || (x >= 4 && x <= symbol.width - 5)) << at;
            }
            EXPECT_GT(inked, symbol.height) << "stems reach full ink";
        }
        EXPECT_EQ(gGetTimestampSymbolFuncTable[&face - kFaces]('7'), &face.table[7]);
    }
}

}  // namespace
