// SPDX-License-Identifier: Apache-2.0
// PanoramaModule: frame intake of a panorama sweep.
//
// Each preview frame comes with the gyroscope's two angles. The first frame only gives the reference angles; the next
// one fixes the direction of the sweep, and frames that move the other way are refused. Accepted frames are converted
// to YV12 and queued for a worker, which drains the queue oldest first and keeps the latest frame. Offsets for the
// guide on the screen come out of every frame that has a reference.
//
// One caller's thread beside the worker, which polls while the queue is empty. Every call logs.
#ifndef KORVANE_APPLICATIONS_PANO_PANORAMA_MODULE_H_
#define KORVANE_APPLICATIONS_PANO_PANORAMA_MODULE_H_

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "applications/pano/panorama_frame.h"
#include "frameworks/core/auto_ptr.h"
#include "frameworks/utils/condition.h"
#include "frameworks/utils/guarded_array.h"
#include "frameworks/utils/mutex.h"
#include "frameworks/utils/thread.h"

using result_t = int32_t;

enum PanoramaResultType : result_t {
    PANORAMA_RESULT_TYPE_NO_ERROR = 0,
    PANORAMA_RESULT_TYPE_OUT_OF_MEMRORY = 1,
    PANORAMA_RESULT_TYPE_WRONG_DIRECTION = 2,
    PANORAMA_RESULT_TYPE_INVALID_PARAMETER = 3,
    PANORAMA_RESULT_TYPE_INVALID_OPERATOR = 4,
};

enum PanoramaDirectionType {
    PANORAMA_DIRECTION_TYPE_NONE = 0,
    PANORAMA_DIRECTION_TYPE_LEFT_TO_RIGHT = 1,
    PANORAMA_DIRECTION_TYPE_RIGHT_TO_LEFT = 2,
    PANORAMA_DIRECTION_TYPE_TOP_TO_BOTTOM = 3,
    PANORAMA_DIRECTION_TYPE_BOTTOM_TO_TOP = 4,
};

using PanoramaOnErrorCallback = void (*)(int);

class PanoramaModule : public Thread {
  public:
    PanoramaModule();

    // Ends a worker that close() has not ended; unlike close() it returns also when the queue is empty.
    ~PanoramaModule() override;

    PanoramaModule(const PanoramaModule&) = delete;
    PanoramaModule& operator=(const PanoramaModule&) = delete;

    // Starts a sweep of frames of this size; `format` is a PanoramaFrameFormat. INVALID_PARAMETER for anything else.
    // The callback is kept and never called. A second sweep on the same object keeps the old reference angles.
    virtual result_t startup(int width, int height, int format, PanoramaOnErrorCallback onErrorCb);

    // One frame of frameBytes() bytes, with the angles in degrees. The offsets, in pixels, are written once there is a
    // reference, also when the frame is then refused for its direction or because memory is short.
    virtual result_t pushFrame(unsigned char* pBuffer, float gyroX, float gyroY, int& offsetX, int& offsetY);

    virtual PanoramaDirectionType getDirectionType();

    // Gives nothing, since stitching is the work of the application. NO_ERROR.
    virtual result_t popFrame(unsigned char* buffer);

    // Stops and joins the worker and drops the queue. The worker of a started sweep ends only after one more frame:
    // with the queue empty this never returns.
    virtual result_t close();

    // The worker; runs on its own thread.
    void run() override;

    // Bytes of a frame, 0 before startup().
    size_t frameBytes() const;

    // What pushFrame() reads of a frame: frameBytes(), or 0 when a frame of that size cannot be had. The size is judged
    // before the buffer, so the answer to it is OUT_OF_MEMRORY for a buffer of any length.
    size_t bytesToRead() const;

  private:
    // Lets tests close a sweep while they hold the worker back.
    friend class PanoramaModulePeer;

    auto_ptr<PanoramaFrame> createFrame(unsigned char* pBuffer) const;
    void endWorker();

    int m_FrameWidth = 0;
    int m_FrameHeight = 0;
    int m_FrameFormat = 0;
    PanoramaDirectionType m_DirectionType = PANORAMA_DIRECTION_TYPE_NONE;
    std::atomic<bool> m_IsRunning{false};
    // Lets a stopped worker leave its wait although no frame came.
    std::atomic<bool> m_IsEnding{false};
    PanoramaOnErrorCallback m_OnErrorCb = nullptr;
    // Of the reference frame; 0 until set.
    float m_AngleX = 0.0F;
    float m_AngleY = 0.0F;
    Mutex m_MutexFrameSetsUpdate;
    Mutex m_MutexInput;
    Mutex m_MutexOutput;
    Condition m_CondInput;
    Condition m_CondOutput;
    GuardedArray<auto_ptr<PanoramaFrame>> m_FrameSets;
    auto_ptr<PanoramaFrame> m_OutputFrame;
};

#endif  // KORVANE_APPLICATIONS_PANO_PANORAMA_MODULE_H_
