// SPDX-License-Identifier: Apache-2.0
// The glyphs of the photo timestamp: digits, colon, dash and blank, in two sets.
//
// One set is drawn for 4:3 frames (reference long side 5248 pixels), one for 16:9 frames (4608). All glyphs of a set
// share one height, so a line of text is as tall as its glyphs. Tables and bitmaps are constant: any thread may read
// them.
#ifndef KORVANE_APPLICATIONS_PHOTO_TIMESTAMP_TIMESTAMP_SYMBOLS_H_
#define KORVANE_APPLICATIONS_PHOTO_TIMESTAMP_TIMESTAMP_SYMBOLS_H_

#include "frameworks/core/export.h"

struct Symbol {
    char symbol;          // the character
    int width;            // in pixels
    int height;           // in pixels
    unsigned char* data;  // width bytes a row without padding, 255 paper to 0 full ink; null: only advances. Read-only.
};

inline constexpr int kTimestampSymbolCount = 13;

// "0" to "9", ":", "-", " ".
extern const Symbol GLOBAL_SYMBOLS_4_TO_3[kTimestampSymbolCount];
extern const Symbol GLOBAL_SYMBOLS_16_TO_9[kTimestampSymbolCount];

// The glyph of a character, or null for a character outside the set. The glyph is read-only.
KORVANE_API Symbol* GetTimestampSymbol_4_to_3(char c);
KORVANE_API Symbol* GetTimestampSymbol_16_to_9(char c);

// The lookups by ratio type: 0 is 4:3, 1 is 16:9.
using TimestampSymbolFunc = Symbol* (*)(char);
extern const TimestampSymbolFunc gGetTimestampSymbolFuncTable[2];

#endif  // KORVANE_APPLICATIONS_PHOTO_TIMESTAMP_TIMESTAMP_SYMBOLS_H_
