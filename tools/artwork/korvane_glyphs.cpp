// korvane_glyphs FOLDER: writes the timestamp's artwork into FOLDER.
#include <cstdio>
#include <fstream>

#include "tools/artwork/glyph_artwork.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: korvane_glyphs FOLDER\n");
        return 2;
    }
    for (const korvane::GlyphSet& set : korvane::kGlyphSets) {
        const std::string stem = std::string(argv[1]) + "/" + set.name;
        const std::pair<std::string, const char*> columns[] = {{stem + "_digits.pgm", korvane::kDigits},
                                                               {stem + "_marks.pgm", korvane::kMarks}};
        for (const auto& [path, characters] : columns) {
            std::ofstream file(path, std::ios::binary);
            file << korvane::to_pgm(korvane::draw_column(set, characters));
            file.close();
            if (!file) {
                std::fprintf(stderr, "korvane_glyphs: cannot write %s\n", path.c_str());
                return 2;
            }
        }
    }
    return 0;
}
