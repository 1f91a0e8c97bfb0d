// SPDX-License-Identifier: Apache-2.0
// What an image's format code means to GL, and how many bytes its pixels take.
#ifndef KORVANE_FRAMEWORKS_GPU_GPU_TEXTURE_LAYOUT_H_
#define KORVANE_FRAMEWORKS_GPU_GPU_TEXTURE_LAYOUT_H_

#include <GLES3/gl3.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <limits>

namespace korvane {

constexpr int32_t kExternalFormatCode = 5;

// Indexed by format code minus 1.
constexpr GLint kTextureFormats[] = {GL_LUMINANCE, GL_LUMINANCE_ALPHA, GL_RGB, GL_RGBA};

// Whether the code stands for pixels in memory; external images and unknown codes have none.
inline bool has_pixel_format(int32_t code) {
    return code >= 1 && code <= static_cast<int32_t>(std::size(kTextureFormats));
}

// The GL format, which is the internal format too; 0 for codes without pixels.
inline GLint texture_format(int32_t code) {
    return has_pixel_format(code) ? kTextureFormats[code - 1] : 0;
}

// The product of an image's dimensions and its format code. A dimension below 1 gives 0; a product that no buffer
// object can have gives the largest size that GL can be asked for, which it refuses.
inline size_t texture_bytes(std::initializer_list<int32_t> dimensions) {
    constexpr size_t kMaxBytes = std::numeric_limits<ptrdiff_t>::max();
    if (std::min(dimensions) < 1) {
        return 0;
    }
    size_t bytes = 1;
    for (const int32_t dimension : dimensions) {
        if (bytes > kMaxBytes / static_cast<size_t>(dimension)) {
            return kMaxBytes;
        }
        bytes *= static_cast<size_t>(dimension);
    }
    return bytes;
}

}  // namespace korvane

#endif  // KORVANE_FRAMEWORKS_GPU_GPU_TEXTURE_LAYOUT_H_
