// SPDX-License-Identifier: Apache-2.0
// Merge strategies of the super capture engine.
//
// A scheme folds frames, luma and chroma bytes alike, into one 32-bit accumulator a byte: in low light the brightest
// value seen at each position (a maximum gathers what little light there is), in better light the mean (which takes the
// noise out). A scheme belongs to the thread that merges.
#ifndef KORVANE_APPLICATIONS_SUPER_CAPTURE_SUPER_CAPTURE_SCHEME_H_
#define KORVANE_APPLICATIONS_SUPER_CAPTURE_SUPER_CAPTURE_SCHEME_H_

#include <cstddef>
#include <cstdint>

#include "applications/super_capture/super_capture_frame.h"
#include "frameworks/core/auto_ptr.h"
#include "frameworks/core/ref_base.h"

class SuperCaptureScheme : public RefBase {
  public:
    SuperCaptureScheme() = default;
    ~SuperCaptureScheme() override;

    SuperCaptureScheme(const SuperCaptureScheme&) = delete;
    SuperCaptureScheme& operator=(const SuperCaptureScheme&) = delete;

    // Starts a burst with a zeroed accumulator. Does nothing when a size is 0 or the format is not YUYV. When memory is
    // short there is no accumulator, and the steps below do nothing.
    virtual void init(uint32_t width, uint32_t height, uint32_t format);

    // Folds a frame in. Does nothing for null and for a frame of another size.
    virtual void process(auto_ptr<SuperCaptureFrame>& frame) = 0;

    // Overwrites the frame with the merged picture; the same frames are refused.
    virtual void getResult(auto_ptr<SuperCaptureFrame>& frame) = 0;

    // Frees the accumulator.
    virtual void release();

    // Frames merged so far.
    int count() const { return m_Count; }

  protected:
    // Plane 0 of a frame that fits the accumulator, else null.
    unsigned char* usablePlane(auto_ptr<SuperCaptureFrame>& frame) const;
    size_t bytes() const { return yuyv_frame_bytes(m_Width, m_Height); }

    int* m_Buffer = nullptr;
    // Not the reference count of the same name in RefBase.
    int m_Count = 0;
    uint32_t m_Width = 0;
    uint32_t m_Height = 0;
};

class SuperCaptureLowLightScheme : public SuperCaptureScheme {
  public:
    void process(auto_ptr<SuperCaptureFrame>& frame) override;
    void getResult(auto_ptr<SuperCaptureFrame>& frame) override;
};

class SuperCaptureHighLightScheme : public SuperCaptureScheme {
  public:
    void process(auto_ptr<SuperCaptureFrame>& frame) override;
    void getResult(auto_ptr<SuperCaptureFrame>& frame) override;
};

#endif  // KORVANE_APPLICATIONS_SUPER_CAPTURE_SUPER_CAPTURE_SCHEME_H_
