// SPDX-License-Identifier: Apache-2.0
#include "applications/pano/panorama_module.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <mutex>
#include <new>

#include "applications/pano/frame_convert.h"
#include "frameworks/core/galloc_ptr.h"
#include "platform/log.h"

namespace {

constexpr nsecs_t kInputWaitNanoseconds = 1000;

// Pixels on the guide for each degree.
constexpr int kOffsetXPerDegree = 35;
constexpr int kOffsetYPerDegree = 15;

// How many degrees more than sideways the camera must move up or down before the sweep counts as vertical.
constexpr int kVerticalMarginDegrees = 2;

// Toward zero; saturated, with 0 for NaN, as the conversion of 64-bit ARM has it.
int truncated(float value) {
    if (std::isnan(value)) {
        return 0;
    }
    // -2^31 and 2^31, the first float above the range.
    constexpr float kLowest = -2147483648.0F;
    constexpr float kBeyond = 2147483648.0F;
    if (value >= kBeyond) {
        return std::numeric_limits<int>::max();
    }
    return value <= kLowest ? std::numeric_limits<int>::min() : static_cast<int>(value);
}

// Wraps in 32 bits.
int offset_pixels(int degrees, int pixelsPerDegree) {
    return static_cast<int>(static_cast<uint32_t>(degrees) * static_cast<uint32_t>(pixelsPerDegree));
}

PanoramaDirectionType direction_of(int dx, int dy) {
    if (std::abs(int64_t{dy}) + kVerticalMarginDegrees < std::abs(int64_t{dx})) {
        return dx < 0 ? PANORAMA_DIRECTION_TYPE_BOTTOM_TO_TOP : PANORAMA_DIRECTION_TYPE_TOP_TO_BOTTOM;
    }
    return dy < 0 ? PANORAMA_DIRECTION_TYPE_RIGHT_TO_LEFT : PANORAMA_DIRECTION_TYPE_LEFT_TO_RIGHT;
}

}  // namespace

PanoramaModule::PanoramaModule() = default;

PanoramaModule::~PanoramaModule() {
    endWorker();
}

result_t PanoramaModule::startup(int width, int height, int format, PanoramaOnErrorCallback onErrorCb) {
    KORVANE_LOGD("PanoramaModule::startup width:%d, height:%d, format:%d, onErrorCb:%p\n", width, height, format,
                 reinterpret_cast<void*>(onErrorCb));
    if (width < 1 || height < 1 || format < PANORAMA_FRAME_FORMAT_NV12 || format > PANORAMA_FRAME_FORMAT_YV12) {
        return PANORAMA_RESULT_TYPE_INVALID_PARAMETER;
    }
    endWorker();
    m_FrameWidth = width;
    m_FrameHeight = height;
    m_FrameFormat = format;
    m_OnErrorCb = onErrorCb;
    m_DirectionType = PANORAMA_DIRECTION_TYPE_NONE;
    m_FrameSets.clear();
    m_IsRunning.store(true, std::memory_order_relaxed);
    // A join has set it; the new worker would end before it ran.
    m_IsStop.store(false, std::memory_order_relaxed);
    start();
    return PANORAMA_RESULT_TYPE_NO_ERROR;
}

size_t PanoramaModule::frameBytes() const {
    return static_cast<size_t>(m_FrameWidth) * static_cast<size_t>(m_FrameHeight) * 3 / 2;
}

size_t PanoramaModule::bytesToRead() const {
    // The stitching side counts a frame's bytes in a signed 32-bit number.
    const size_t bytes = frameBytes();
    return bytes <= static_cast<size_t>(std::numeric_limits<int>::max()) ? bytes : 0;
}

auto_ptr<PanoramaFrame> PanoramaModule::createFrame(unsigned char* pBuffer) const {
    const size_t bytes = bytesToRead();
    korvane::galloc_ptr<unsigned char> buffer(static_cast<unsigned char*>(galloc_malloc(bytes)));
    if (buffer == nullptr) {
        return nullptr;
    }
    switch (m_FrameFormat) {
        case PANORAMA_FRAME_FORMAT_NV12:
            convert_nv12_to_yv12(pBuffer, buffer.get(), m_FrameWidth, m_FrameHeight);
            break;
        case PANORAMA_FRAME_FORMAT_NV21:
            convert_nv21_to_yv12(pBuffer, buffer.get(), m_FrameWidth, m_FrameHeight);
            break;
        default:
            galloc_memcpy(buffer.get(), pBuffer, bytes);
            break;
    }
    auto* frame = new (std::nothrow) PanoramaFrame(static_cast<int>(m_FrameSets.size()), m_FrameWidth, m_FrameHeight,
                                                   PANORAMA_FRAME_FORMAT_YV12, buffer.get());
    if (frame != nullptr) {
        static_cast<void>(buffer.release());
    }
    return frame;
}

result_t PanoramaModule::pushFrame(unsigned char* pBuffer, float gyroX, float gyroY, int& offsetX, int& offsetY) {
    KORVANE_LOGD("PanoramaModule::pushFrame pBuffer:%p, gyroX:%f, gyroY:%f\n", static_cast<void*>(pBuffer),
                 static_cast<double>(gyroX), static_cast<double>(gyroY));
    if (!m_IsRunning.load(std::memory_order_relaxed)) {
        KORVANE_LOGD("PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_INVALID_OPERATOR   \n");
        return PANORAMA_RESULT_TYPE_INVALID_OPERATOR;
    }
    if (pBuffer == nullptr) {
        KORVANE_LOGD("PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_INVALID_PARAMETER\n");
        return PANORAMA_RESULT_TYPE_INVALID_PARAMETER;
    }
    // An angle of exactly 0 counts as none: a reference with one is replaced by the next frame.
    if (m_AngleX == 0.0F || m_AngleY == 0.0F) {
        m_AngleX = gyroX;
        m_AngleY = gyroY;
        KORVANE_LOGD("PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_INVALID_PARAMETER\n");
        return PANORAMA_RESULT_TYPE_INVALID_PARAMETER;
    }
    // Crossed on purpose: turning about the vertical axis moves the picture sideways.
    const int dy = truncated(m_AngleY - gyroY);
    const int dx = truncated(m_AngleX - gyroX);
    offsetX = offset_pixels(dy, kOffsetXPerDegree);
    offsetY = offset_pixels(dx, kOffsetYPerDegree);
    const PanoramaDirectionType direction = direction_of(dx, dy);
    if (m_DirectionType != PANORAMA_DIRECTION_TYPE_NONE && m_DirectionType != direction) {
        KORVANE_LOGD("PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_WRONG_DIRECTION   \n");
        return PANORAMA_RESULT_TYPE_WRONG_DIRECTION;
    }
    m_DirectionType = direction;
    const auto_ptr<PanoramaFrame> frame = createFrame(pBuffer);
    bool isQueued = false;
    if (frame.get() != nullptr) {
        const std::lock_guard<Mutex> guard(m_MutexFrameSetsUpdate);
        isQueued = m_FrameSets.push_back(frame);
    }
    if (!isQueued) {
        KORVANE_LOGD("PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_OUT_OF_MEMRORY   1\n");
        return PANORAMA_RESULT_TYPE_OUT_OF_MEMRORY;
    }
    m_CondInput.signal();
    KORVANE_LOGD("PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_NO_ERROR\n");
    return PANORAMA_RESULT_TYPE_NO_ERROR;
}

PanoramaDirectionType PanoramaModule::getDirectionType() {
    return m_DirectionType;
}

result_t PanoramaModule::popFrame(unsigned char* /*buffer*/) {
    return PANORAMA_RESULT_TYPE_NO_ERROR;
}

result_t PanoramaModule::close() {
    m_IsRunning.store(false, std::memory_order_relaxed);
    join();
    m_FrameSets.clear();
    return PANORAMA_RESULT_TYPE_NO_ERROR;
}

void PanoramaModule::run() {
    auto_ptr<PanoramaFrame> latest;
    while (m_IsRunning.load(std::memory_order_relaxed)) {
        m_MutexInput.lock();
        // A sweep that close() ends with nothing queued spins here for ever. This is deliberate: the owner sees to it
        // that a frame is there.
        while (m_FrameSets.empty() && !m_IsEnding.load(std::memory_order_relaxed)) {
            if (m_IsRunning.load(std::memory_order_relaxed)) {
                m_CondInput.waitRelative(m_MutexInput, kInputWaitNanoseconds);
            } else {
                m_MutexInput.unlock();
            }
        }
        auto_ptr<PanoramaFrame> frame;
        {
            const std::lock_guard<Mutex> guard(m_MutexFrameSetsUpdate);
            m_FrameSets.take_front(frame);
        }
        if (frame.get() != nullptr) {
            KORVANE_LOGD("get frame .....................\n");
        }
        latest = frame;
        m_MutexInput.unlock();
    }
    m_OutputFrame = latest;
    m_CondOutput.signal();
}

void PanoramaModule::endWorker() {
    {
        // While this lock is held the worker does not look at the queue: it cannot find itself stopped with nothing
        // queued before it sees that it may leave.
        const std::lock_guard<Mutex> guard(m_MutexInput);
        m_IsRunning.store(false, std::memory_order_relaxed);
        m_IsEnding.store(true, std::memory_order_relaxed);
    }
    join();
    m_IsEnding.store(false, std::memory_order_relaxed);
    m_FrameSets.clear();
}
