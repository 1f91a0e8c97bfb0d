// SPDX-License-Identifier: Apache-2.0
#include "applications/super_capture/super_capture_mode.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <numeric>

#include "applications/super_capture/merge_kernels.h"
#include "frameworks/jni/java_exception.h"
#include "frameworks/jni/java_object.h"
#include "platform/log.h"

namespace {

constexpr size_t kLongestHistory = 30;
constexpr size_t kSmoothedFrames = 5;
constexpr int kSmallestMove = 11;

// The standard f-number series. The bands are uneven on purpose, and neighbours may share a gain step.
struct Exposure {
    int highestMean;
    float aperture;
    int gain;
};
constexpr Exposure kExposures[] = {
    {29, 2.0F, 2},  {39, 2.8F, 2},    {59, 4.0F, 1},    {79, 5.6F, 0},
    {99, 8.0F, -1}, {119, 11.0F, -1}, {139, 16.0F, -2}, {std::numeric_limits<int>::max(), 22.0F, -2},
};

const Exposure& exposure_for(int mean) {
    return *std::find_if(std::begin(kExposures), std::end(kExposures),
                         [mean](const Exposure& exposure) { return mean <= exposure.highestMean; });
}

}  // namespace

void onResultCallback(JNIEnv* env, jobject object, float aperture, int gain) {
    if (env == nullptr || object == nullptr) {
        KORVANE_LOGD("env or object is null, env:%p, object:%p", static_cast<void*>(env), static_cast<void*>(object));
        return;
    }
    const jclass objectClass = env->GetObjectClass(object);
    if (objectClass == nullptr) {
        KORVANE_LOGD("class com/tervo/media/korvane/module/SuperCaptureModule is not found!");
        korvane::clear_java_exception(env);
        return;
    }
    const jmethodID method = korvane::find_java_method(env, objectClass, "onResultCallback", "(FI)V");
    if (method == nullptr) {
        KORVANE_LOGD("method onResultCallback is not found!");
    } else {
        env->CallVoidMethod(object, method, aperture, gain);
    }
    // A native thread that reports for long would run out of references.
    env->DeleteLocalRef(objectClass);
}

SuperCaptureMode::SuperCaptureMode() = default;

SuperCaptureMode::~SuperCaptureMode() = default;

void SuperCaptureMode::init(uint32_t width, uint32_t height, uint32_t format) {
    m_Width = width;
    m_Height = height;
    m_Format = format;
    m_LumAvgs.clear();
    m_LumAvgs.reserve(kLongestHistory + 1);
    KORVANE_LOGD("m_Width:%d, m_Height:%d\n", static_cast<int>(m_Width), static_cast<int>(m_Height));
}

void SuperCaptureMode::release() {
    m_LumAvgs.clear();
}

void SuperCaptureMode::process(JNIEnv* env, jobject thiz, unsigned char* data) {
    if (data == nullptr) {
        return;
    }
    addToHistory(korvane::mean_luma(korvane::luma_sum(data, frameBytes()), m_Width * m_Height));
    const int mean = smoothedLuma();
    if (std::abs(int64_t{m_LastLumAvg} - mean) < kSmallestMove) {
        return;
    }
    const Exposure& exposure = exposure_for(mean);
    m_Aperture = exposure.aperture;
    m_Gain = exposure.gain;
    onResultCallback(env, thiz, exposure.aperture, exposure.gain);
    // Only a report moves it, whether or not Java could be reached: a slow drift is reported once it has added up.
    m_LastLumAvg = mean;
}

void SuperCaptureMode::addToHistory(int lum) {
    m_LumAvgs.push_back(lum);
    if (m_LumAvgs.size() > kLongestHistory) {
        m_LumAvgs.erase(m_LumAvgs.begin());
    }
}

int SuperCaptureMode::smoothedLuma() const {
    const auto count = static_cast<std::ptrdiff_t>(std::min(m_LumAvgs.size(), kSmoothedFrames));
    return static_cast<int>(std::accumulate(m_LumAvgs.end() - count, m_LumAvgs.end(), int64_t{0}) / count);
}
