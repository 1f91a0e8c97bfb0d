// SPDX-License-Identifier: Apache-2.0
#include "applications/super_capture/super_capture.h"

#include <algorithm>
#include <mutex>
#include <new>

#include "applications/super_capture/merge_kernels.h"
#include "frameworks/core/memory.h"
#include "platform/log.h"

namespace {

constexpr nsecs_t kInputWaitNanoseconds = 1000;

bool all_null(unsigned char** planes) {
    return std::all_of(planes, planes + kFramePlanes, [](const unsigned char* plane) { return plane == nullptr; });
}

int mean_luma_of(SuperCaptureFrame& frame) {
    const size_t pixels = size_t{frame.getWidth()} * frame.getHeight();
    return korvane::mean_luma(korvane::luma_sum_yuyv(frame.getPlanes()[0], pixels),
                              frame.getWidth() * frame.getHeight());
}

SuperCaptureScheme* create_scheme(int meanLuma) {
    if (meanLuma <= SuperCapture::kLowLightMeanLuma) {
        return new (std::nothrow) SuperCaptureLowLightScheme;
    }
    return new (std::nothrow) SuperCaptureHighLightScheme;
}

}  // namespace

SuperCapture::SuperCapture() = default;

SuperCapture::~SuperCapture() {
    stopAndJoin();
}

result_t SuperCapture::init(uint32_t width, uint32_t height, uint32_t format) {
    KORVANE_LOGD("SuperSensor::init ..............................................\n");
    if (width == 0 || height == 0 || format == FRAME_FORMAT_TYPE_NONE || format >= FRAME_FORMAT_TYPE_MAX) {
        return -1;
    }
    stopAndJoin();
    m_FrameWidth = width;
    m_FrameHeight = height;
    m_FrameFormat = format;
    m_Frames.clear();
    m_OutputFrame.clear();
    m_Summary = {};
    m_IsFinished = false;
    m_IsRunning.store(true, std::memory_order_relaxed);
    // The join above has set it, and the new worker would end before it ran.
    m_IsStop.store(false, std::memory_order_relaxed);
    if (start() != 0) {
        m_IsFinished = true;
    }
    return 0;
}

result_t SuperCapture::pushFrame(unsigned char** planes) {
    KORVANE_LOGD(
        "SuperSensor::pushFrame .............................................."
        "planes[0]:%p, planes[1]:%p, planes[2]:%p, planes[3]:%p \n",
        static_cast<void*>(planes[0]), static_cast<void*>(planes[1]), static_cast<void*>(planes[2]),
        static_cast<void*>(planes[3]));
    if (all_null(planes)) {
        return -1;
    }
    const auto_ptr<SuperCaptureFrame> frame(
        SuperCaptureFrame::createFrame(0, m_FrameWidth, m_FrameHeight, m_FrameFormat, planes));
    if (frame.get() == nullptr) {
        return -3;
    }
    // Numbered only now: the worker may have taken frames while this one was copied.
    frame->setID(static_cast<uint32_t>(m_Frames.size() + 1));
    KORVANE_LOGD("SuperCapture::pushFrame success\n");
    // Without m_MutexInput, which the worker holds while it merges: a push never waits for a merge.
    if (!m_Frames.push_back(frame)) {
        return -3;
    }
    m_CondInput.signal();
    return 0;
}

// Called with m_MutexInput locked. False when the worker was stopped and the queue is empty; m_MutexInput is unlocked
// then.
bool SuperCapture::waitForFrame(auto_ptr<SuperCaptureFrame>& frame) {
    while (!m_Frames.take_back(frame)) {
        if (!m_IsRunning.load(std::memory_order_relaxed)) {
            m_MutexInput.unlock();
            return false;
        }
        m_CondInput.waitRelative(m_MutexInput, kInputWaitNanoseconds);
    }
    KORVANE_LOGD("SuperCapture::run   getFrame\n");
    countTaken();
    return true;
}

void SuperCapture::merge(auto_ptr<SuperCaptureFrame>& frame, auto_ptr<SuperCaptureScheme>& scheme) {
    if (scheme.get() == nullptr) {
        const int lum = mean_luma_of(*frame);
        KORVANE_LOGD("SuperCapture::run lum:%d select scheme", lum);
        {
            const std::lock_guard<Mutex> guard(m_MutexOutput);
            m_Summary.meanLuma = lum;
            m_Summary.isLowLight = lum <= kLowLightMeanLuma;
        }
        scheme = create_scheme(lum);
        if (scheme.get() == nullptr) {
            return;
        }
        scheme->init(m_FrameWidth, m_FrameHeight, m_FrameFormat);
    }
    scheme->process(frame);
    countMerged(scheme->count());
}

void SuperCapture::countTaken() {
    {
        const std::lock_guard<Mutex> guard(m_MutexOutput);
        ++m_Summary.framesTaken;
    }
    m_CondTaken.broadcast();
}

void SuperCapture::countMerged(int frames) {
    const std::lock_guard<Mutex> guard(m_MutexOutput);
    m_Summary.framesMerged = static_cast<size_t>(frames);
}

void SuperCapture::run() {
    KORVANE_LOGD("SuperCapture::run  startup...............................\n");
    auto_ptr<SuperCaptureFrame> frame;
    auto_ptr<SuperCaptureScheme> scheme;
    while (m_IsRunning.load(std::memory_order_relaxed)) {
        m_MutexInput.lock();
        if (waitForFrame(frame)) {
            merge(frame, scheme);
        }
        // For the second time when waitForFrame() found nothing. Default mutexes take it; nobody else ever locks this
        // one, and it is not used again after that. tests/tsan.supp silences the thread sanitizer here.
        m_MutexInput.unlock();
    }
    if (scheme.get() != nullptr) {
        KORVANE_LOGD("Scheme return result\n");
        scheme->getResult(frame);
    }
    finish(frame);
}

void SuperCapture::finish(const auto_ptr<SuperCaptureFrame>& frame) {
    {
        // Under the lock, so that popFrame() cannot miss the one signal between its look and its wait.
        const std::lock_guard<Mutex> guard(m_MutexOutput);
        m_OutputFrame = frame;
        m_IsFinished = true;
    }
    m_CondOutput.signal();
    m_CondTaken.broadcast();
}

result_t SuperCapture::popFrame(unsigned char** planes) {
    KORVANE_LOGD("SuperCapture::popFrame .....................0");
    if (all_null(planes)) {
        return -1;
    }
    KORVANE_LOGD("SuperCapture::popFrame ..................... 1");
    m_IsRunning.store(false, std::memory_order_relaxed);
    KORVANE_LOGD("SuperCapture::popFrame ..................... 2");
    auto_ptr<SuperCaptureFrame> output;
    {
        const std::lock_guard<Mutex> guard(m_MutexOutput);
        while (!m_IsFinished) {
            m_CondOutput.wait(m_MutexOutput);
        }
        output = m_OutputFrame;
    }
    KORVANE_LOGD("SuperCapture::popFrame ..................... 3");
    if (output.get() != nullptr) {
        galloc_memcpy(planes[0], output->getPlanes()[0], yuyv_frame_bytes(m_FrameWidth, m_FrameHeight));
    }
    KORVANE_LOGD("SuperCapture::popFrame ..................... 4");
    return 0;
}

result_t SuperCapture::final() {
    KORVANE_LOGD("SuperCapture::final .....................  1");
    m_IsRunning.store(false, std::memory_order_relaxed);
    KORVANE_LOGD("SuperCapture::final .....................  2");
    stopAndJoin();
    KORVANE_LOGD("SuperCapture::final .....................  3");
    m_Frames.clear();
    KORVANE_LOGD("SuperCapture::final .....................  4");
    return 0;
}

bool SuperCapture::waitUntilTaken(size_t frames) {
    const std::lock_guard<Mutex> guard(m_MutexOutput);
    while (m_Summary.framesTaken < frames && !m_IsFinished) {
        m_CondTaken.wait(m_MutexOutput);
    }
    return m_Summary.framesTaken >= frames;
}

SuperCaptureSummary SuperCapture::summary() {
    const std::lock_guard<Mutex> guard(m_MutexOutput);
    return m_Summary;
}

void SuperCapture::stopAndJoin() {
    m_IsRunning.store(false, std::memory_order_relaxed);
    join();
    // A worker that was joined before it began never ran; there is nothing to wait for any more.
    {
        const std::lock_guard<Mutex> guard(m_MutexOutput);
        m_IsFinished = true;
    }
    m_CondTaken.broadcast();
}
