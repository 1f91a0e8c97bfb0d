// SPDX-License-Identifier: Apache-2.0
// SuperCaptureMode: the brightness advisor of the camera preview.
//
// Each preview frame's mean luma goes into a short history; when the mean of the last five has moved by more than 10
// since the last report, it is mapped to an aperture (an f-number) and a gain step, and Java is told both.
// Not synchronised: one thread at a time. The callback runs on the calling thread.
#ifndef KORVANE_APPLICATIONS_SUPER_CAPTURE_SUPER_CAPTURE_MODE_H_
#define KORVANE_APPLICATIONS_SUPER_CAPTURE_SUPER_CAPTURE_MODE_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "frameworks/core/ref_base.h"
#include "frameworks/jni/jni_types.h"

// Calls `void onResultCallback(float aperture, int gain)` on a Java object. What cannot be found is logged, and the
// call left out; an exception that the callback throws stays pending for the caller of the native method.
void onResultCallback(JNIEnv* env, jobject object, float aperture, int gain);

class SuperCaptureMode : public RefBase {
  public:
    SuperCaptureMode();
    ~SuperCaptureMode() override;

    // Takes any sizes; a frame without pixels counts as black. Empties the history but keeps the last report. Throws
    // std::bad_alloc when memory is short; process() needs no memory then.
    void init(uint32_t width, uint32_t height, uint32_t format);

    // One preview frame, of which the luma plane (the first width * height bytes) is read. Null does nothing. `thiz` is
    // the object that is called back.
    void process(JNIEnv* env, jobject thiz, unsigned char* data);

    // Empties the history.
    void release();

    // The last report; 0 before the first. The aperture loses its decimals.
    int getAperture() const { return static_cast<int>(m_Aperture); }
    int getGain() const { return m_Gain; }

    // What process() reads of a frame.
    size_t frameBytes() const { return size_t{m_Width} * m_Height; }

  protected:
    static constexpr size_t kHistogramBins = 256;

    uint32_t m_Width = 0;
    uint32_t m_Height = 0;
    uint32_t m_Format = 0;
    // Part of the object's layout; nothing fills or reads it.
    int32_t m_Histogram[kHistogramBins] = {};
    // Oldest first.
    std::vector<int> m_LumAvgs;
    int m_LastLumAvg = 0;
    float m_Aperture = 0.0F;
    int m_Gain = 0;

  private:
    void addToHistory(int lum);
    int smoothedLuma() const;
};

#endif  // KORVANE_APPLICATIONS_SUPER_CAPTURE_SUPER_CAPTURE_MODE_H_
