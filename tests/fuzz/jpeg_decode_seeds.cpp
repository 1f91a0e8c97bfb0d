// SPDX-License-Identifier: Apache-2.0
// Writes one small file of each kind of JPEG into the folder given: the fuzzer's first corpus.
#include <cstdio>
#include <string>

#include "tests/frameworks/images/jpeg_reference.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: jpeg_decode_seeds FOLDER\n");
        return 2;
    }
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
    int number = 0;
    for (const ReferenceSettings& kind : kinds) {
        Bytes pixels(static_cast<size_t>(kWidth) * kHeight * static_cast<size_t>(kind.components));
        for (size_t i = 0; i < pixels.size(); ++i) {
            pixels[i] = static_cast<unsigned char>(i * i / 37 + i);
        }
        const Bytes file = reference_encode(pixels, kWidth, kHeight, kind);
        const std::string path = std::string(argv[1]) + "/seed" + std::to_string(number++) + ".jpg";
        FILE* out = fopen(path.c_str(), "wb");
        if (out == nullptr || fwrite(file.data(), 1, file.size(), out) != file.size() || fclose(out) != 0) {
            perror(path.c_str());
            return 1;
        }
    }
    return 0;
}
