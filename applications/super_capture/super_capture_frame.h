// SPDX-License-Identifier: Apache-2.0
// SuperCaptureFrame: one counted YUYV frame of a burst, and the sizes that go with it.
#ifndef KORVANE_APPLICATIONS_SUPER_CAPTURE_SUPER_CAPTURE_FRAME_H_
#define KORVANE_APPLICATIONS_SUPER_CAPTURE_SUPER_CAPTURE_FRAME_H_

#include <cstddef>
#include <cstdint>

#include "frameworks/core/ref_base.h"

enum FrameFormat : uint32_t {
    FRAME_FORMAT_TYPE_NONE = 0,
    // Packed 4:2:2 in plane 0: Y0 U Y1 V, 2 bytes a pixel, the even bytes are luma.
    FRAME_FORMAT_TYPE_YUYV = 1,
    FRAME_FORMAT_TYPE_MAX = 2,
};

// 0 for success, -1 for bad arguments, -3 for an unusable frame.
using result_t = int32_t;

constexpr size_t kFramePlanes = 4;

// Bytes of a YUYV frame; 0 when a side is 0 or the count leaves size_t.
size_t yuyv_frame_bytes(uint32_t width, uint32_t height);

class SuperCaptureFrame : public RefBase {
  public:
    // Takes the four pointers as they are and owns plane 0, which must come from galloc_malloc.
    SuperCaptureFrame(uint32_t id, uint32_t width, uint32_t height, uint32_t format, unsigned char** planes);
    ~SuperCaptureFrame() override;

    SuperCaptureFrame(const SuperCaptureFrame&) = delete;
    SuperCaptureFrame& operator=(const SuperCaptureFrame&) = delete;

    // A new frame (count 0) with a copy of plane 0 and the other planes null. Null when a size is 0, the format is not
    // YUYV, plane 0 is null or memory is short.
    static SuperCaptureFrame* createFrame(uint32_t id, uint32_t width, uint32_t height, uint32_t format,
                                          unsigned char** planes);

    void setID(uint32_t id) { m_FrameID = id; }
    uint32_t getID() const { return m_FrameID; }
    void setWidth(uint32_t width) { m_FrameWidth = width; }
    uint32_t getWidth() const { return m_FrameWidth; }
    void setHeight(uint32_t height) { m_FrameHeight = height; }
    uint32_t getHeight() const { return m_FrameHeight; }
    void setFormat(uint32_t format) { m_FrameFormat = format; }
    uint32_t getFormat() const { return m_FrameFormat; }
    unsigned char** getPlanes() { return m_FramePlanes; }

  private:
    uint32_t m_FrameID;
    uint32_t m_FrameWidth;
    uint32_t m_FrameHeight;
    uint32_t m_FrameFormat;
    unsigned char* m_FramePlanes[kFramePlanes];
};

#endif  // KORVANE_APPLICATIONS_SUPER_CAPTURE_SUPER_CAPTURE_FRAME_H_
