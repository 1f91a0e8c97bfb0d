// SPDX-License-Identifier: Apache-2.0
// JPEG files for tests, made and read by a plain loop over libjpeg with its own memory buffers: what the codec is
// measured against, and the kinds of file that the encoder cannot write.
#ifndef KORVANE_TESTS_FRAMEWORKS_IMAGES_JPEG_REFERENCE_H_
#define KORVANE_TESTS_FRAMEWORKS_IMAGES_JPEG_REFERENCE_H_

#include <cstddef>
#include <vector>

#include "frameworks/io/memory_stream.h"

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

constexpr ReferenceSettings kJpegKinds[] = {
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

Bytes reference_encode(const Bytes& pixels, unsigned width, unsigned height, const ReferenceSettings& settings);

// The pixels in the file's default output colours.
Bytes reference_decode(const Bytes& file);

// In memory but like a file: it rewinds, and skips what is read without a buffer and does not mind the end.
class FileInMemory : public MemoryStream {
  public:
    using MemoryStream::MemoryStream;

    size_t read(void* buffer, size_t count) override {
        return buffer == nullptr ? static_cast<size_t>(seek(static_cast<int64_t>(count), SEEK_ORIGIN_CURRENT))
                                 : MemoryStream::read(buffer, count);
    }
    bool rewind() override { return seek(0, SEEK_ORIGIN_BEGIN) <= 0; }
    void flush() override { ++flushes; }

    int flushes = 0;
};

#endif  // KORVANE_TESTS_FRAMEWORKS_IMAGES_JPEG_REFERENCE_H_
