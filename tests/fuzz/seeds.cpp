// SPDX-License-Identifier: Apache-2.0
// Writes the first corpus of a fuzz target: small files of each kind where the target reads files, requests and texts
// where it reads those, and for the others, which read an input as a sequence of choices, noise of several lengths.
#include <cstdio>
#include <string>
#include <vector>

#include "tests/frameworks/images/jpeg_reference.h"
#include "tests/support/random_bytes.h"
#include "tools/photo/photo_io.h"
#include "tools/scene.h"

namespace {

std::vector<Bytes> jpeg_files() {
    constexpr unsigned kWidth = 24, kHeight = 17;
    const ReferenceSettings kinds[] = {
        {},
        {.components = 1},
        {.components = 4},
        {.progressive = true},
        {.arithmetic = true},
        {.progressive = true, .arithmetic = true},
        {.oneScanPerComponent = true},
        {.restartRows = 1},
        {.commentBytes = 5'000},
    };
    std::vector<Bytes> files;
    for (const ReferenceSettings& kind : kinds) {
        Bytes pixels(static_cast<size_t>(kWidth) * kHeight * static_cast<size_t>(kind.components));
        for (size_t i = 0; i < pixels.size(); ++i) {
            pixels[i] = static_cast<unsigned char>(i * i / 37 + i);
        }
        files.push_back(reference_encode(pixels, kWidth, kHeight, kind));
    }
    return files;
}

// With metadata, with and without transparency.
std::vector<Bytes> photo_files() {
    std::vector<Bytes> files = jpeg_files();
    for (const auto format : {korvane::PhotoFormat::kJpeg, korvane::PhotoFormat::kPng, korvane::PhotoFormat::kWebp}) {
        korvane::Photo photo;
        photo.image = korvane::draw_scene(20, 12);
        photo.metadata.exif = {'M', 'M', 0, 42, 0, 0, 0, 8, 0, 1, 1, 18, 0, 3, 0, 0, 0, 1, 0, 6, 0, 0, 0, 0, 0, 0};
        photo.metadata.xmp = {'<', 'x', '/', '>'};
        photo.metadata.pngTexts = {{0, "Title", "A house", "", ""}};
        files.push_back(korvane::encode_photo(photo, format, {}, "seed"));
        if (format != korvane::PhotoFormat::kJpeg) {
            photo.alpha = random_bytes(photo.pixelCount(), 1);
            photo.isLossless = true;
            files.push_back(korvane::encode_photo(photo, format, {}, "seed"));
        }
    }
    return files;
}

std::vector<Bytes> noise() {
    std::vector<Bytes> files;
    for (uint32_t i = 0; i < 24; ++i) {
        files.push_back(random_bytes(size_t{8} << i % 7, i));
    }
    return files;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: fuzz_seeds TARGET FOLDER\n");
        return 2;
    }
    const std::string target = argv[1];
    int number = 0;
    for (const Bytes& file : target == "jpeg_decode"   ? jpeg_files()
                             : target == "photo_files" ? photo_files()
                                                       : noise()) {
        const std::string path = std::string(argv[2]) + "/seed" + std::to_string(number++);
        FILE* out = std::fopen(path.c_str(), "wb");
        if (out == nullptr || std::fwrite(file.data(), 1, file.size(), out) != file.size() || std::fclose(out) != 0) {
            std::perror(path.c_str());
            return 1;
        }
    }
    return 0;
}
