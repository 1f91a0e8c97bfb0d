// SPDX-License-Identifier: Apache-2.0
// Image: a picture in main memory, one allocation seen through up to four plane pointers.
//
// The pixels lie in plain scan order without row padding. N below is width x height x depth; depth is a multiplier on
// every plane (1 for ordinary pictures). All halves and quarters round down.
//
//   format            allocation   plane 0   plane 1   plane 2
//   GRAY              N            0
//   RGB565            2N           0
//   RGB, YUV          3N           0
//   RGBA              4N           0
//   YUYV, YVYU        2N           0
//   YUV422P           2N           0         N         3N/2
//   YV12, YU12        2N           0         N         (none: both chroma planes share plane 1)
//   NV12, NV21        2N           0         N         5N/4 (interleaved chroma is written from plane 1 on)
//
// The image owns the allocation. Bytes that were not copied from the caller are 0. Two more zero bytes follow, because
// the RGBA to gray conversion reads up to two bytes past a gray plane. An image without pixels, with more than 2^32 - 1
// bytes, of an unknown format or without memory has no planes; nothing is thrown or logged. One thread at a time uses
// an image.
//
// Fixed by the interface: the names, the values and this layout. How the memory is got is ours to change.
#ifndef KORVANE_FRAMEWORKS_IMAGES_IMAGE_H_
#define KORVANE_FRAMEWORKS_IMAGES_IMAGE_H_

#include <cstdint>

#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"

// Byte orders: RGB is R, G, B; RGBA adds A; YUV is Y, U, V per pixel; YUYV is Y0, U, Y1, V and YVYU is Y0, V, Y1, U per
// pair of pixels; the chroma of NV12 is U, V, U, V ... and that of NV21 is V, U, V, U ...
enum ImageFormatType : int32_t {
    IMAGE_FORMAT_TYPE_NONE = 0,
    IMAGE_FORMAT_TYPE_GRAY = 1,
    IMAGE_FORMAT_TYPE_RGB565 = 2,
    IMAGE_FORMAT_TYPE_RGB = 3,
    IMAGE_FORMAT_TYPE_RGBA = 4,
    IMAGE_FORMAT_TYPE_YUV = 5,
    IMAGE_FORMAT_TYPE_YUYV = 6,
    IMAGE_FORMAT_TYPE_YVYU = 7,
    IMAGE_FORMAT_TYPE_YUV422P = 8,
    IMAGE_FORMAT_TYPE_YV12 = 9,
    IMAGE_FORMAT_TYPE_YU12 = 10,
    IMAGE_FORMAT_TYPE_NV12 = 11,
    IMAGE_FORMAT_TYPE_NV21 = 12,
    IMAGE_FORMAT_TYPE_MAX = 13,
};

// The value is the number of bytes allocated for each pixel.
enum ImageDepthType : int32_t {
    IMAGE_DEPTH_TYPE_NONE = 0,
    IMAGE_DEPTH_TYPE_8U = 1,
    IMAGE_DEPTH_TYPE_16U = 2,
    IMAGE_DEPTH_TYPE_24U = 3,
    IMAGE_DEPTH_TYPE_32U = 4,
    IMAGE_DEPTH_TYPE_MAX = 5,
};

class KORVANE_API Image : public RefBase {
  public:
    // Stores the values and lays the planes out as `configuare` does.
    Image(uint32_t width, uint32_t height, uint32_t depth, ImageFormatType format, unsigned char** planes);
    ~Image() override;
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    // A new image with count 0 that the caller adopts. For a bad format or size it has no planes; null only when there
    // is no memory for the object itself.
    static Image* createImage(uint32_t width, uint32_t height, uint32_t depth, ImageFormatType format,
                              unsigned char** planes);

    // Replaces size, format and pixels. The old pixels are freed first, so `planes` must not point into them. A format
    // without planes leaves the depth type as it was.
    void set(uint32_t width, uint32_t height, uint32_t depth, ImageFormatType format, unsigned char** planes);

    // Allocates the planes of the current format. `planes` holds the caller's pixels, copied in when it and all the
    // planes that the format needs are given: one plane for packed formats, two for YV12 and YU12, three for YUV422P
    // (N, N/2 and N/2 bytes) and NV12 and NV21 (N, N/4 and N/4 bytes). The third plane of YUV422P is copied to
    // N + 1, on top of the second one, and not to where plane 2 points. Planes from an earlier call are replaced.
    void configuare(unsigned char** planes);

    // Exchanges everything but the counts, without copying pixels.
    void swap(Image& other);

    uint32_t getWidth() const { return m_ImageWidth; }
    uint32_t getHeight() const { return m_ImageHeight; }
    uint32_t getDepth() const { return m_ImageDepth; }
    ImageFormatType getFormatType() const { return m_ImageFormatType; }
    ImageDepthType getDepthType() const { return m_ImageDepthType; }

    // The image's own array of four plane pointers, unused ones null. It stays the image's.
    unsigned char** getPlanes() { return m_Planes; }

  private:
    KORVANE_HIDDEN void freePlanes();

    uint32_t m_ImageWidth;
    uint32_t m_ImageHeight;
    uint32_t m_ImageDepth;
    ImageFormatType m_ImageFormatType;
    ImageDepthType m_ImageDepthType = IMAGE_DEPTH_TYPE_NONE;
    unsigned char* m_Planes[4] = {};
};

#endif  // KORVANE_FRAMEWORKS_IMAGES_IMAGE_H_
