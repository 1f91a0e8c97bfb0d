// SPDX-License-Identifier: Apache-2.0
// Writes the first corpus of a fuzz target: small files of each kind where the target reads files, and for the others,
// which read an input as a sequence of choices, noise of several lengths.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "tests/frameworks/images/jpeg_reference.h"
#include "tests/support/random_bytes.h"
#include "tools/photo/photo_io.h"
#include "tools/scene.h"

namespace {

std::vector<Bytes> seeds_of(const std::string& target) {
    std::vector<Bytes> files;
    if (target != "jpeg_decode" && target != "photo_files") {
        for (uint32_t i = 0; i < 24; ++i) {
            files.push_back(random_bytes(size_t{8} << i % 7, i));
        }
        return files;
    }
    for (const ReferenceSettings& settings : kJpegKinds) {
        Bytes pixels(size_t{24} * 17 * static_cast<size_t>(settings.components));
        for (size_t i = 0; i < pixels.size(); ++i) {
            pixels[i] = static_cast<unsigned char>(i * i / 37 + i);
        }
        files.push_back(reference_encode(pixels, 24, 17, settings));
    }
    using korvane::PhotoFormat;
    constexpr PhotoFormat kFormats[] = {PhotoFormat::kJpeg, PhotoFormat::kPng, PhotoFormat::kWebp, PhotoFormat::kPng,
                                        PhotoFormat::kWebp};
    for (size_t i = 0; i < 5 && target == "photo_files"; ++i) {
        korvane::Photo photo;
        photo.image = korvane::draw_scene(20, 12);
        photo.metadata.exif = {'M', 'M', 0, 42, 0, 0, 0, 8, 0, 1, 1, 18, 0, 3, 0, 0, 0, 1, 0, 6, 0, 0, 0, 0, 0, 0};
        photo.metadata.photoshop = {'8', 'B', 'I', 'M', 4, 4, 0, 0, 0, 0, 0, 2, 'x', 'y'};
        photo.metadata.xmp = {'<', 'x', '/', '>'};
        photo.metadata.pngTexts = {{0, "Title", "A house", "", ""}};
        photo.isLossless = i > 2;
        photo.alpha = random_bytes(photo.isLossless ? photo.pixelCount() : 0, 1);
        files.push_back(korvane::encode_photo(photo, kFormats[i], {}, "seed"));
        // A text that claims to be longer than any file.
        constexpr char kText[] = {'i', 'T', 'X', 't'};
        Bytes claim = files.back();
        if (const auto at = std::search(claim.begin(), claim.end(), kText, kText + 4); at != claim.end()) {
            at[-4] = 0x75;
            files.push_back(claim);
        }
    }
    return files;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: fuzz_seeds TARGET FOLDER\n");
        return 2;
    }
    int number = 0;
    for (const Bytes& file : seeds_of(argv[1])) {
        const std::string path = std::string(argv[2]) + "/seed" + std::to_string(number++);
        std::ofstream out(path, std::ios::binary);
        out.write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
        if (!out.flush()) {
            std::perror(path.c_str());
            return 1;
        }
    }
    return 0;
}
