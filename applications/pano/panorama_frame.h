// SPDX-License-Identifier: Apache-2.0
// PanoramaFrame: one counted preview frame of a sweep. Queued frames are always YV12.
#ifndef KORVANE_APPLICATIONS_PANO_PANORAMA_FRAME_H_
#define KORVANE_APPLICATIONS_PANO_PANORAMA_FRAME_H_

#include "frameworks/core/ref_base.h"

enum PanoramaFrameFormat : int {
    PANORAMA_FRAME_FORMAT_NV12 = 1,
    PANORAMA_FRAME_FORMAT_NV21 = 2,
    PANORAMA_FRAME_FORMAT_YV12 = 3,
};

class PanoramaFrame : public RefBase {
  public:
    // Owns `buffer`, which must come from galloc_malloc.
    PanoramaFrame(int id, int width, int height, int format, unsigned char* buffer);
    ~PanoramaFrame() override;

    PanoramaFrame(const PanoramaFrame&) = delete;
    PanoramaFrame& operator=(const PanoramaFrame&) = delete;

    int getID() const { return m_FrameID; }
    int getWidth() const { return m_FrameWidth; }
    int getHeight() const { return m_FrameHeight; }
    int getFormat() const { return m_FrameFormat; }
    unsigned char* getBuffer() const { return m_FrameBuffer; }

  private:
    int m_FrameID;
    int m_FrameWidth;
    int m_FrameHeight;
    int m_FrameFormat;
    unsigned char* m_FrameBuffer;
};

#endif  // KORVANE_APPLICATIONS_PANO_PANORAMA_FRAME_H_
