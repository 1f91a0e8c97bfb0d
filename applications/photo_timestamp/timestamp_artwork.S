// SPDX-License-Identifier: Apache-2.0
/*
 * The timestamp's glyph bitmaps, cut out of the images in artwork/. Embedding at assembly needs no program that runs on
 * the building machine, so it works alike for the desktop, a cross build and the NDK. Each image is a PGM header, whose
 * length comes first below, and then glyph after glyph without padding.
 */
#define GLYPH(name, file, header, bytes, index) \
    .globl name; .hidden name; .type name, %object; .size name, bytes; \
name: .incbin file, header + index * bytes, bytes

    .section .rodata

    GLYPH(SYMBOL_4_TO_3_0, "4_to_3_digits.pgm", 15, (90 * 160), 0)
    GLYPH(SYMBOL_4_TO_3_1, "4_to_3_digits.pgm", 15, (90 * 160), 1)
    GLYPH(SYMBOL_4_TO_3_2, "4_to_3_digits.pgm", 15, (90 * 160), 2)
    GLYPH(SYMBOL_4_TO_3_3, "4_to_3_digits.pgm", 15, (90 * 160), 3)
    GLYPH(SYMBOL_4_TO_3_4, "4_to_3_digits.pgm", 15, (90 * 160), 4)
    GLYPH(SYMBOL_4_TO_3_5, "4_to_3_digits.pgm", 15, (90 * 160), 5)
    GLYPH(SYMBOL_4_TO_3_6, "4_to_3_digits.pgm", 15, (90 * 160), 6)
    GLYPH(SYMBOL_4_TO_3_7, "4_to_3_digits.pgm", 15, (90 * 160), 7)
    GLYPH(SYMBOL_4_TO_3_8, "4_to_3_digits.pgm", 15, (90 * 160), 8)
    GLYPH(SYMBOL_4_TO_3_9, "4_to_3_digits.pgm", 15, (90 * 160), 9)
    GLYPH(SYMBOL_4_TO_3_COLON, "4_to_3_marks.pgm", 14, (60 * 160), 0)
    GLYPH(SYMBOL_4_TO_3_DASH, "4_to_3_marks.pgm", 14, (60 * 160), 1)

    GLYPH(SYMBOL_16_TO_9_0, "16_to_9_digits.pgm", 15, (66 * 108), 0)
    GLYPH(SYMBOL_16_TO_9_1, "16_to_9_digits.pgm", 15, (66 * 108), 1)
    GLYPH(SYMBOL_16_TO_9_2, "16_to_9_digits.pgm", 15, (66 * 108), 2)
    GLYPH(SYMBOL_16_TO_9_3, "16_to_9_digits.pgm", 15, (66 * 108), 3)
    GLYPH(SYMBOL_16_TO_9_4, "16_to_9_digits.pgm", 15, (66 * 108), 4)
    GLYPH(SYMBOL_16_TO_9_5, "16_to_9_digits.pgm", 15, (66 * 108), 5)
    GLYPH(SYMBOL_16_TO_9_6, "16_to_9_digits.pgm", 15, (66 * 108), 6)
    GLYPH(SYMBOL_16_TO_9_7, "16_to_9_digits.pgm", 15, (66 * 108), 7)
    GLYPH(SYMBOL_16_TO_9_8, "16_to_9_digits.pgm", 15, (66 * 108), 8)
    GLYPH(SYMBOL_16_TO_9_9, "16_to_9_digits.pgm", 15, (66 * 108), 9)
    GLYPH(SYMBOL_16_TO_9_COLON, "16_to_9_marks.pgm", 14, (42 * 108), 0)
    GLYPH(SYMBOL_16_TO_9_DASH, "16_to_9_marks.pgm", 14, (42 * 108), 1)

    .section .note.GNU-stack, "", %progbits
