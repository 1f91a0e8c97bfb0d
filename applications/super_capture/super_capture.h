// SPDX-License-Identifier: Apache-2.0
// SuperCapture: the multi-frame capture engine. The camera pushes a burst of YUYV frames; a worker thread merges them
// and hands the result over when it is popped.
//
// The mean luma of the first frame that the worker takes decides how the burst is merged: up to kLowLightMeanLuma by
// the brightest byte, above it by the mean byte. The worker serves the newest frame first and polls while it has none.
// The first popFrame() or final() stops it: the frame in hand is finished, frames still queued are not merged.
//
// init, pushFrame, popFrame and final belong to one caller's thread. Every call and every step logs.
#ifndef KORVANE_APPLICATIONS_SUPER_CAPTURE_SUPER_CAPTURE_H_
#define KORVANE_APPLICATIONS_SUPER_CAPTURE_SUPER_CAPTURE_H_

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "applications/super_capture/super_capture_frame.h"
#include "applications/super_capture/super_capture_scheme.h"
#include "frameworks/core/auto_ptr.h"
#include "frameworks/utils/condition.h"
#include "frameworks/utils/guarded_array.h"
#include "frameworks/utils/mutex.h"
#include "frameworks/utils/thread.h"

// What the worker has done with a burst so far.
struct SuperCaptureSummary {
    size_t framesTaken = 0;
    size_t framesMerged = 0;
    // Of the first frame taken.
    int meanLuma = 0;
    bool isLowLight = false;
};

class SuperCapture : public Thread {
  public:
    static constexpr int kLowLightMeanLuma = 24;

    SuperCapture();

    // Stops and joins a worker that final() has not ended.
    ~SuperCapture() override;

    SuperCapture(const SuperCapture&) = delete;
    SuperCapture& operator=(const SuperCapture&) = delete;

    // Starts the worker on frames of this size. -1 for a size of 0 and for any format but YUYV. A burst that is still
    // running is ended first and its result dropped.
    result_t init(uint32_t width, uint32_t height, uint32_t format);

    // Copies plane 0 (width * height * 2 bytes) into the queue. `planes` has four pointers. -1 when all are null, -3
    // when plane 0 is, before init() and when memory is short.
    result_t pushFrame(unsigned char** planes);

    // The worker; runs on its own thread.
    void run() override;

    // Stops the worker, waits until it is done and copies the merged frame into planes[0] (width * height * 2 bytes of
    // the caller's). Without any frame the buffer is left alone. 0; -1 when all four planes are null.
    result_t popFrame(unsigned char** planes);

    // Stops and joins the worker and drops the queue. 0.
    result_t final();

    // Waits until the worker has taken this many frames of the burst. False when it ended before, or never began.
    bool waitUntilTaken(size_t frames);

    // Complete after popFrame() or final().
    SuperCaptureSummary summary();

  private:
    bool waitForFrame(auto_ptr<SuperCaptureFrame>& frame);
    void merge(auto_ptr<SuperCaptureFrame>& frame, auto_ptr<SuperCaptureScheme>& scheme);
    void countTaken();
    void countMerged(int frames);
    void finish(const auto_ptr<SuperCaptureFrame>& frame);
    void stopAndJoin();

    uint32_t m_FrameWidth = 0;
    uint32_t m_FrameHeight = 0;
    uint32_t m_FrameFormat = FRAME_FORMAT_TYPE_NONE;
    GuardedArray<auto_ptr<SuperCaptureFrame>> m_Frames;
    auto_ptr<SuperCaptureFrame> m_OutputFrame;
    // No worker is, or will be, on its way to m_OutputFrame. Guarded, like that, by m_MutexOutput.
    bool m_IsFinished = true;
    // Guarded by m_MutexOutput as well.
    SuperCaptureSummary m_Summary;
    std::atomic<bool> m_IsRunning{false};
    Mutex m_MutexInput;
    Mutex m_MutexOutput;
    Condition m_CondInput;
    Condition m_CondOutput;
    // Of its own, so that a waiting waitUntilTaken() cannot use up the one signal that popFrame() waits for.
    Condition m_CondTaken;
};

#endif  // KORVANE_APPLICATIONS_SUPER_CAPTURE_SUPER_CAPTURE_H_
