// SPDX-License-Identifier: Apache-2.0
#include "frameworks/images/image.h"

#include <cstddef>
#include <limits>
#include <new>
#include <utility>

#include "frameworks/core/memory.h"

namespace {

constexpr size_t kSpareBytes = 2;
constexpr int kMaxPlanes = 3;

// Places and lengths in quarters of N.
struct Plane {
    uint8_t start;
    uint8_t copyStart;
    uint8_t copyLength;
    uint8_t copyShiftBytes;
};

struct Layout {
    ImageDepthType depthType;
    int planeCount;
    Plane planes[kMaxPlanes];
};

constexpr Layout packed(ImageDepthType depthType) {
    return {depthType, 1, {{0, 0, static_cast<uint8_t>(4 * depthType), 0}}};
}

// The third plane of YUV422P is copied to one byte after the start of the second. This is part of the interface.
constexpr Layout kYuv422p = {IMAGE_DEPTH_TYPE_16U, 3, {{0, 0, 4, 0}, {4, 4, 2, 0}, {6, 4, 2, 1}}};
constexpr Layout kPlanar420 = {IMAGE_DEPTH_TYPE_16U, 2, {{0, 0, 4, 0}, {4, 4, 2, 0}}};
constexpr Layout kSemiPlanar420 = {IMAGE_DEPTH_TYPE_16U, 3, {{0, 0, 4, 0}, {4, 4, 1, 0}, {5, 5, 1, 0}}};

// Indexed by the format.
constexpr Layout kLayouts[IMAGE_FORMAT_TYPE_MAX] = {
    {IMAGE_DEPTH_TYPE_NONE, 0, {}},
    packed(IMAGE_DEPTH_TYPE_8U),   // GRAY
    packed(IMAGE_DEPTH_TYPE_16U),  // RGB565
    packed(IMAGE_DEPTH_TYPE_24U),  // RGB
    packed(IMAGE_DEPTH_TYPE_32U),  // RGBA
    packed(IMAGE_DEPTH_TYPE_24U),  // YUV
    packed(IMAGE_DEPTH_TYPE_16U),  // YUYV
    packed(IMAGE_DEPTH_TYPE_16U),  // YVYU
    kYuv422p,
    kPlanar420,      // YV12
    kPlanar420,      // YU12
    kSemiPlanar420,  // NV12
    kSemiPlanar420,  // NV21
};

// 0 when the product does not fit 32 bits.
size_t product32(size_t a, size_t b) {
    const bool fits = a == 0 || b <= std::numeric_limits<uint32_t>::max() / a;
    return fits ? a * b : 0;
}

bool holds_all(unsigned char* const* planes, int count) {
    for (int i = 0; planes != nullptr && i < count; ++i) {
        if (planes[i] == nullptr) {
            return false;
        }
    }
    return planes != nullptr;
}

// Returns the end of what it wrote, which has no gaps.
size_t copy_planes(const Layout& layout, size_t pixels, unsigned char* const* from, unsigned char* to) {
    size_t end = 0;
    for (int i = 0; i < layout.planeCount; ++i) {
        const Plane& plane = layout.planes[i];
        const size_t start = pixels * plane.copyStart / 4 + plane.copyShiftBytes;
        const size_t length = pixels * plane.copyLength / 4;
        galloc_memcpy(to + start, from[i], length);
        end = length == 0 ? end : start + length;
    }
    return end;
}

}  // namespace

Image::Image(uint32_t width, uint32_t height, uint32_t depth, ImageFormatType format, unsigned char** planes)
    : m_ImageWidth(width), m_ImageHeight(height), m_ImageDepth(depth), m_ImageFormatType(format) {
    configuare(planes);
}

Image::~Image() {
    freePlanes();
}

Image* Image::createImage(uint32_t width, uint32_t height, uint32_t depth, ImageFormatType format,
                          unsigned char** planes) {
    return new (std::nothrow) Image(width, height, depth, format, planes);
}

void Image::set(uint32_t width, uint32_t height, uint32_t depth, ImageFormatType format, unsigned char** planes) {
    m_ImageWidth = width;
    m_ImageHeight = height;
    m_ImageDepth = depth;
    m_ImageFormatType = format;
    freePlanes();
    configuare(planes);
}

void Image::configuare(unsigned char** planes) {
    if (m_ImageFormatType <= IMAGE_FORMAT_TYPE_NONE || m_ImageFormatType >= IMAGE_FORMAT_TYPE_MAX) {
        return;
    }
    const Layout& layout = kLayouts[m_ImageFormatType];
    m_ImageDepthType = layout.depthType;
    const size_t pixels = product32(product32(m_ImageWidth, m_ImageHeight), m_ImageDepth);
    const size_t bytes = product32(pixels, static_cast<size_t>(layout.depthType));

    unsigned char* base = nullptr;
    if (bytes != 0 && holds_all(planes, layout.planeCount)) {
        base = static_cast<unsigned char*>(galloc_malloc(bytes + kSpareBytes));
        if (base != nullptr) {
            const size_t copied = copy_planes(layout, pixels, planes, base);
            galloc_memset(base + copied, 0, bytes + kSpareBytes - copied);
        }
    } else if (bytes != 0) {
        base = static_cast<unsigned char*>(galloc_alloc(bytes + kSpareBytes));
    }

    freePlanes();
    for (int i = 0; base != nullptr && i < layout.planeCount; ++i) {
        m_Planes[i] = base + pixels * layout.planes[i].start / 4;
    }
}

void Image::swap(Image& other) {
    std::swap(m_ImageWidth, other.m_ImageWidth);
    std::swap(m_ImageHeight, other.m_ImageHeight);
    std::swap(m_ImageDepth, other.m_ImageDepth);
    std::swap(m_ImageFormatType, other.m_ImageFormatType);
    std::swap(m_ImageDepthType, other.m_ImageDepthType);
    std::swap(m_Planes, other.m_Planes);
}

void Image::freePlanes() {
    galloc_free(m_Planes[0]);
    for (unsigned char*& plane : m_Planes) {
        plane = nullptr;
    }
}
