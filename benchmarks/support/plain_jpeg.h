// SPDX-License-Identifier: Apache-2.0
// JPEG as a client without this library would do it: libjpeg's own loop from memory to memory.
#ifndef KORVANE_BENCHMARKS_SUPPORT_PLAIN_JPEG_H_
#define KORVANE_BENCHMARKS_SUPPORT_PLAIN_JPEG_H_

#include <cstddef>
#include <memory>
#include <vector>

namespace korvane::bench {

// The number of bytes written to `file`, which must be large enough.
size_t plain_encode(const unsigned char* rgb, unsigned width, unsigned height, int quality,
                    std::vector<unsigned char>& file);

// RGB, in memory taken for the call.
std::unique_ptr<unsigned char[]> plain_decode(const std::vector<unsigned char>& file);

}  // namespace korvane::bench

#endif  // KORVANE_BENCHMARKS_SUPPORT_PLAIN_JPEG_H_
