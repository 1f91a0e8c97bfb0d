// SPDX-License-Identifier: Apache-2.0
// JPEG files for tests, made and read by a plain loop over libjpeg with its own memory buffers: what the codec is
// measured against, and the kinds of file that the encoder cannot write.
#ifndef KORVANE_TESTS_FRAMEWORKS_IMAGES_JPEG_REFERENCE_H_
#define KORVANE_TESTS_FRAMEWORKS_IMAGES_JPEG_REFERENCE_H_

#include <cstddef>
#include <vector>

using Bytes = std::vector<unsigned char>;

struct ReferenceSettings {
    int components = 3;  // 1 grayscale, 3 RGB, 4 CMYK
    int quality = 90;
    bool progressive = false;
    bool arithmetic = false;
    bool oneScanPerComponent = false;
    int restartRows = 0;
    size_t commentBytes = 0;
};

Bytes reference_encode(const Bytes& pixels, unsigned width, unsigned height, const ReferenceSettings& settings);

// The pixels in the file's default output colours.
Bytes reference_decode(const Bytes& file);

#endif  // KORVANE_TESTS_FRAMEWORKS_IMAGES_JPEG_REFERENCE_H_
