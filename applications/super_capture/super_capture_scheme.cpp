// SPDX-License-Identifier: Apache-2.0
#include "applications/super_capture/super_capture_scheme.h"

#include <limits>

#include "applications/super_capture/merge_kernels.h"
#include "frameworks/core/memory.h"
#include "platform/log.h"

SuperCaptureScheme::~SuperCaptureScheme() {
    galloc_free(m_Buffer);
}

void SuperCaptureScheme::init(uint32_t width, uint32_t height, uint32_t format) {
    if (width == 0 || height == 0 || format == FRAME_FORMAT_TYPE_NONE || format >= FRAME_FORMAT_TYPE_MAX) {
        return;
    }
    release();
    m_Width = width;
    m_Height = height;
    m_Count = 0;
    const size_t count = bytes();
    if (count > std::numeric_limits<size_t>::max() / sizeof(int)) {
        return;
    }
    m_Buffer = static_cast<int*>(galloc_malloc(count * sizeof(int)));
    galloc_memset(m_Buffer, 0, count * sizeof(int));
}

void SuperCaptureScheme::release() {
    galloc_free(m_Buffer);
    m_Buffer = nullptr;
}

unsigned char* SuperCaptureScheme::usablePlane(auto_ptr<SuperCaptureFrame>& frame) const {
    if (frame.get() == nullptr || m_Buffer == nullptr || frame->getWidth() != m_Width ||
        frame->getHeight() != m_Height) {
        return nullptr;
    }
    return frame->getPlanes()[0];
}

void SuperCaptureLowLightScheme::process(auto_ptr<SuperCaptureFrame>& frame) {
    const unsigned char* plane = usablePlane(frame);
    if (plane == nullptr) {
        return;
    }
    KORVANE_LOGD("SuperCaptureLowLightScheme::process ............................m_Count:%d\n", m_Count);
    korvane::merge_max(plane, m_Buffer, bytes());
    ++m_Count;
}

void SuperCaptureLowLightScheme::getResult(auto_ptr<SuperCaptureFrame>& frame) {
    unsigned char* plane = usablePlane(frame);
    if (plane == nullptr) {
        return;
    }
    KORVANE_LOGD("SuperCaptureLowLightScheme::getResult ............................ m_Count:%d\n", m_Count);
    korvane::merged_low_bytes(m_Buffer, plane, bytes());
}

void SuperCaptureHighLightScheme::process(auto_ptr<SuperCaptureFrame>& frame) {
    const unsigned char* plane = usablePlane(frame);
    if (plane == nullptr) {
        return;
    }
    KORVANE_LOGD("SuperCaptureHighLightScheme::process ............................ m_Count:%d\n", m_Count);
    if (m_Count == 0) {
        korvane::merge_first(plane, m_Buffer, bytes());
    } else {
        korvane::merge_add(plane, m_Buffer, bytes());
    }
    ++m_Count;
}

void SuperCaptureHighLightScheme::getResult(auto_ptr<SuperCaptureFrame>& frame) {
    unsigned char* plane = usablePlane(frame);
    if (plane == nullptr) {
        return;
    }
    KORVANE_LOGD("SuperCaptureHighLightScheme::getResult ............................ m_Count:%d\n", m_Count);
    korvane::merged_mean(m_Buffer, plane, bytes(), m_Count);
}
