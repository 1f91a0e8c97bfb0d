// SPDX-License-Identifier: Apache-2.0
#include "applications/photo_timestamp/timestamp_symbols.h"

#define KORVANE_DECLARE_BITMAPS(set)                                                                           \
    extern const unsigned char SYMBOL_##set##_0[], SYMBOL_##set##_1[], SYMBOL_##set##_2[], SYMBOL_##set##_3[], \
        SYMBOL_##set##_4[], SYMBOL_##set##_5[], SYMBOL_##set##_6[], SYMBOL_##set##_7[], SYMBOL_##set##_8[],    \
        SYMBOL_##set##_9[], SYMBOL_##set##_COLON[], SYMBOL_##set##_DASH[]

extern "C" {
KORVANE_DECLARE_BITMAPS(4_TO_3);
KORVANE_DECLARE_BITMAPS(16_TO_9);
}

#define KORVANE_GLYPH(character, width, height, bitmap) \
    { character, width, height, const_cast<unsigned char*>(bitmap) }

#define KORVANE_GLYPHS(set, digitWidth, markWidth, height)                \
    {                                                                     \
        KORVANE_GLYPH('0', digitWidth, height, SYMBOL_##set##_0),         \
            KORVANE_GLYPH('1', digitWidth, height, SYMBOL_##set##_1),     \
            KORVANE_GLYPH('2', digitWidth, height, SYMBOL_##set##_2),     \
            KORVANE_GLYPH('3', digitWidth, height, SYMBOL_##set##_3),     \
            KORVANE_GLYPH('4', digitWidth, height, SYMBOL_##set##_4),     \
            KORVANE_GLYPH('5', digitWidth, height, SYMBOL_##set##_5),     \
            KORVANE_GLYPH('6', digitWidth, height, SYMBOL_##set##_6),     \
            KORVANE_GLYPH('7', digitWidth, height, SYMBOL_##set##_7),     \
            KORVANE_GLYPH('8', digitWidth, height, SYMBOL_##set##_8),     \
            KORVANE_GLYPH('9', digitWidth, height, SYMBOL_##set##_9),     \
            KORVANE_GLYPH(':', markWidth, height, SYMBOL_##set##_COLON),  \
            KORVANE_GLYPH('-', markWidth, height, SYMBOL_##set##_DASH), { \
            ' ', markWidth, height, nullptr                               \
        }                                                                 \
    }

const Symbol GLOBAL_SYMBOLS_4_TO_3[kTimestampSymbolCount] = KORVANE_GLYPHS(4_TO_3, 90, 60, 160);
const Symbol GLOBAL_SYMBOLS_16_TO_9[kTimestampSymbolCount] = KORVANE_GLYPHS(16_TO_9, 66, 42, 108);

namespace {

Symbol* find_symbol(const Symbol (&table)[kTimestampSymbolCount], char c) {
    for (const Symbol& symbol : table) {
        if (symbol.symbol == c) {
            return const_cast<Symbol*>(&symbol);
        }
    }
    return nullptr;
}

}  // namespace

Symbol* GetTimestampSymbol_4_to_3(char c) {
    return find_symbol(GLOBAL_SYMBOLS_4_TO_3, c);
}

Symbol* GetTimestampSymbol_16_to_9(char c) {
    return find_symbol(GLOBAL_SYMBOLS_16_TO_9, c);
}

const TimestampSymbolFunc gGetTimestampSymbolFuncTable[2] = {GetTimestampSymbol_4_to_3, GetTimestampSymbol_16_to_9};
