// SPDX-License-Identifier: Apache-2.0
#include "applications/pano/panorama_frame.h"

#include "frameworks/core/memory.h"

PanoramaFrame::PanoramaFrame(int id, int width, int height, int format, unsigned char* buffer)
    : m_FrameID(id), m_FrameWidth(width), m_FrameHeight(height), m_FrameFormat(format), m_FrameBuffer(buffer) {}

PanoramaFrame::~PanoramaFrame() {
    galloc_free(m_FrameBuffer);
    m_FrameID = -1;
    m_FrameWidth = 0;
    m_FrameHeight = 0;
    m_FrameFormat = 0;
}
