// SPDX-License-Identifier: Apache-2.0
#include "tools/bench/page_files.h"

// The assembler takes the files in; CMake gives it their folders and has this file built anew when one changes.
#define KORVANE_PAGE_FILES(row)                                                                                 \
    row(index, "index.html") row(look, "look.css") row(playground_css, "playground.css") row(stage, "stage.js") \
        row(code, "code.js") row(playground_js, "playground.js")

#define KORVANE_EMBED(symbol, file)                \
    asm(".section .rodata\n"                       \
        "korvane_page_" #symbol                    \
        ":\n"                                      \
        ".incbin \"" file                          \
        "\"\n"                                     \
        "korvane_page_" #symbol                    \
        "_end:\n"                                  \
        ".previous\n");                            \
    extern "C" const char korvane_page_##symbol[]; \
    extern "C" const char korvane_page_##symbol##_end[];

KORVANE_PAGE_FILES(KORVANE_EMBED)
KORVANE_EMBED(known_behaviours, "known-behaviours.md")

namespace korvane {

#define KORVANE_TEXT(symbol) \
    { korvane_page_##symbol, static_cast<size_t>(korvane_page_##symbol##_end - korvane_page_##symbol) }

std::span<const PageFile> page_files() {
#define KORVANE_ROW(symbol, file) {file, KORVANE_TEXT(symbol)},
    static const PageFile files[] = {KORVANE_PAGE_FILES(KORVANE_ROW)};
#undef KORVANE_ROW
    return files;
}

std::string_view known_behaviours_text() {
    return KORVANE_TEXT(known_behaviours);
}

}  // namespace korvane
