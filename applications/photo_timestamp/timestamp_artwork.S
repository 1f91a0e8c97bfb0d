/*
 * The timestamp's glyph bitmaps, cut out of the images in artwork/. Embedding at assembly needs no program that runs on
 * the building machine, so it works alike for the desktop, a cross build and the NDK. Each image is a PGM header, whose
 * length is the first number below, and then glyph after glyph without padding.
 */
    .section .rodata

    .macro glyph name, file, header, bytes, index
    .globl \name
    .hidden \name
    .type \name, %object
    .size \name, \bytes
\name:
    .incbin \file, \header + \index * \bytes, \bytes
    .endm

    .macro digits set, file, header, bytes
    .irp digit, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9
    glyph SYMBOL_\set\()_\digit, \file, \header, \bytes, \digit
    .endr
    .endm

    digits 4_TO_3, "4_to_3_digits.pgm", 15, (90 * 160)
    glyph SYMBOL_4_TO_3_COLON, "4_to_3_marks.pgm", 14, (60 * 160), 0
    glyph SYMBOL_4_TO_3_DASH, "4_to_3_marks.pgm", 14, (60 * 160), 1

    digits 16_TO_9, "16_to_9_digits.pgm", 15, (66 * 108)
    glyph SYMBOL_16_TO_9_COLON, "16_to_9_marks.pgm", 14, (42 * 108), 0
    glyph SYMBOL_16_TO_9_DASH, "16_to_9_marks.pgm", 14, (42 * 108), 1

    .section .note.GNU-stack, "", %progbits
