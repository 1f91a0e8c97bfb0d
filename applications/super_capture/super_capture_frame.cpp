// SPDX-License-Identifier: Apache-2.0
#include "applications/super_capture/super_capture_frame.h"

#include <algorithm>
#include <limits>
#include <new>

#include "frameworks/core/galloc_ptr.h"

size_t yuyv_frame_bytes(uint32_t width, uint32_t height) {
    constexpr size_t kBytesPerPixel = 2;
    const size_t rowBytes = width * kBytesPerPixel;
    if (height != 0 && rowBytes > std::numeric_limits<size_t>::max() / height) {
        return 0;
    }
    return rowBytes * height;
}

SuperCaptureFrame::SuperCaptureFrame(uint32_t id, uint32_t width, uint32_t height, uint32_t format,
                                     unsigned char** planes)
    : m_FrameID(id), m_FrameWidth(width), m_FrameHeight(height), m_FrameFormat(format) {
    std::copy_n(planes, kFramePlanes, m_FramePlanes);
}

SuperCaptureFrame::~SuperCaptureFrame() {
    galloc_free(m_FramePlanes[0]);
}

SuperCaptureFrame* SuperCaptureFrame::createFrame(uint32_t id, uint32_t width, uint32_t height, uint32_t format,
                                                  unsigned char** planes) {
    if (height == 0 || width == 0 || format != FRAME_FORMAT_TYPE_YUYV || planes[0] == nullptr) {
        return nullptr;
    }
    const size_t bytes = yuyv_frame_bytes(width, height);
    korvane::galloc_ptr<unsigned char> copy(static_cast<unsigned char*>(galloc_malloc(bytes)));
    if (copy == nullptr) {
        return nullptr;
    }
    galloc_memcpy(copy.get(), planes[0], bytes);
    unsigned char* ownPlanes[kFramePlanes] = {copy.get(), nullptr, nullptr, nullptr};
    auto* frame = new (std::nothrow) SuperCaptureFrame(id, width, height, format, ownPlanes);
    if (frame != nullptr) {
        static_cast<void>(copy.release());
    }
    return frame;
}
