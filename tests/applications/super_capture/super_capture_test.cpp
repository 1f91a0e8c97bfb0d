// SPDX-License-Identifier: Apache-2.0
#include "applications/super_capture/super_capture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "applications/super_capture/merge_kernels.h"
#include "applications/super_capture/merge_kernels_scalar.h"
#include "applications/super_capture/super_capture_module.h"
#include "tests/support/log_capture.h"
#include "tests/support/random_bytes.h"
#include "tests/support/simd_targets.h"

namespace {

using testing::Contains;
using testing::HasSubstr;
using Frame = std::vector<unsigned char>;

constexpr uint32_t kWidth = 7;
constexpr uint32_t kHeight = 5;
constexpr size_t kBytes = size_t{kWidth} * kHeight * 2;

// Random chroma, luma as given but for `extra`, which is added to the first luma byte.
Frame frame_with_luma(int luma, uint32_t seed, int extra = 0) {
    Frame frame = random_bytes(kBytes, seed);
    for (size_t i = 0; i < kBytes; i += 2) {
        frame[i] = static_cast<unsigned char>(luma);
    }
    frame[0] = static_cast<unsigned char>(luma + extra);
    return frame;
}

struct Planes {
    explicit Planes(Frame& frame) : planes{frame.data()} {}
    operator unsigned char**() { return planes; }

    unsigned char* planes[kFramePlanes];
};

// What becomes of frames of which each is in the worker's hands before the next one comes.
Frame merged(const std::vector<Frame>& frames, uint32_t width = kWidth, uint32_t height = kHeight) {
    const intptr_t handle = super_capture_module_init(width, height, 1);
    size_t pushed = 0;
    for (Frame frame : frames) {
        EXPECT_EQ(super_capture_module_push_frame(handle, Planes(frame)), 0);
        EXPECT_TRUE(reinterpret_cast<SuperCapture*>(handle)->waitUntilTaken(++pushed));
    }
    Frame result(frames[0].size());
    EXPECT_EQ(super_capture_module_pop_frame(handle, Planes(result)), 0);
    Frame again(result.size());
    EXPECT_EQ(super_capture_module_pop_frame(handle, Planes(again)), 0);
    EXPECT_TRUE(again == result);
    super_capture_module_destroy(handle);
    return result;
}

TEST(SuperCapture, MergesEveryFrameOnceByTheFirstFramesLight) {
    struct Case {
        int firstLuma, extra, meanInLog;
        size_t frames;
    };
    // 34 more in one of 35 pixels does not lift the truncated mean, 35 more do.
    for (const Case& c :
         {Case{24, 0, 24, 5}, {24, 34, 24, 3}, {24, 35, 25, 3}, {25, 0, 25, 1}, {0, 0, 0, 2}, {200, 0, 200, 6}}) {
        SCOPED_TRACE(testing::Message() << c.firstLuma << " + " << c.extra << ", frames " << c.frames);
        const bool isLowLight = c.meanInLog <= 24;
        LogCapture log;
        std::vector<int> model(kBytes, 0);
        std::vector<Frame> frames;
        for (uint32_t i = 0; i < c.frames; ++i) {
            const Frame& frame =
                frames.emplace_back(i == 0 ? frame_with_luma(c.firstLuma, 1, c.extra) : random_bytes(kBytes, 10 + i));
            for (size_t b = 0; b < kBytes; ++b) {
                model[b] = isLowLight ? std::max<int>(model[b], frame[b]) : model[b] + frame[b];
            }
        }
        const Frame result = merged(frames);
        for (size_t b = 0; b < kBytes; ++b) {
            ASSERT_EQ(result[b], isLowLight ? model[b] : model[b] / static_cast<int>(c.frames)) << "byte " << b;
        }

        EXPECT_THAT(log.lines(), Contains("SuperCapture::run lum:" + std::to_string(c.meanInLog) + " select scheme"));
    }
}

// The caller's and the worker's, which interleave as they like.
TEST(SuperCapture, LinesByteForByte) {
    for (const auto& [luma, scheme, gap] :
         {std::tuple(20, "SuperCaptureLowLightScheme::", ""), {90, "SuperCaptureHighLightScheme::", " "}}) {
        LogCapture log;
        Frame frame = frame_with_luma(luma, 1);
        const intptr_t handle = super_capture_module_init(kWidth, kHeight, 1);
        super_capture_module_push_frame(handle, Planes(frame));
        ASSERT_TRUE(reinterpret_cast<SuperCapture*>(handle)->waitUntilTaken(1));
        super_capture_module_pop_frame(handle, Planes(frame));
        super_capture_module_destroy(handle);
        const std::string id = "   handle:" + std::to_string(handle);
        const std::string planes = "planes[0]:" + testing::PrintToString(static_cast<void*>(frame.data())) +
                                   ", planes[1]:(nil), planes[2]:(nil), planes[3]:(nil)";
        const std::string pop = "SuperCapture::popFrame .....................";
        const std::string final = "SuperCapture::final .....................  ";
        EXPECT_THAT(
            log.lines(),
            testing::UnorderedElementsAre(
                "super_capture_module_init   width:7, height:5, format:1\n",
                "SuperSensor::init ..............................................\n",
                "super_capture_module_push_frame" + id + ", " + planes + "\n",
                "SuperSensor::pushFrame .............................................." + planes + " \n",
                "SuperCapture::pushFrame success\n", "super_capture_module_pop_frame" + id + ", " + planes + "\n",
                pop + "0", pop + " 1", pop + " 2", pop + " 3", pop + " 4", "super_capture_module_destroy" + id + "\n",
                final + "1", final + "2", final + "3", final + "4", "super_capture_module_destroy" + id + "   2\n",
                "SuperCapture::run  startup...............................\n", "SuperCapture::run   getFrame\n",
                "SuperCapture::run lum:" + std::to_string(luma) + " select scheme",
                std::string(scheme) + "process ............................" + gap + "m_Count:0\n",
                "Scheme return result\n", std::string(scheme) + "getResult ............................ m_Count:1\n"));
    }
}

// Other bad arguments are the fuzz target's.
TEST(SuperCapture, FramesThatNobodyCanHoldAreRefused) {
    Frame frame = frame_with_luma(50, 1);
    const intptr_t huge = super_capture_module_init(0xFFFFFFFFU, 0xFFFFFFFFU, 1);
    EXPECT_EQ(super_capture_module_push_frame(huge, nullptr), -1);
    EXPECT_EQ(super_capture_module_pop_frame(huge, nullptr), -1);
    EXPECT_EQ(super_capture_module_push_frame(huge, Planes(frame)), -3);
    super_capture_module_destroy(huge);
    EXPECT_EQ(SuperCaptureFrame::createFrame(1, kWidth, kHeight, 2, Planes(frame)), nullptr);
}

TEST(SuperCapture, GoesAtEveryStage) {
    Frame frame = frame_with_luma(90, 1);
    for (int i = 0; i < 100; ++i) {
        for (const int pushes : {0, 1, 5}) {
            for (const bool pop : {false, true}) {
                const intptr_t handle = super_capture_module_init(kWidth, kHeight, 1);
                for (int n = 0; n < pushes; ++n) {
                    super_capture_module_push_frame(handle, Planes(frame));
                }
                if (pop) {
                    // Nobody is left to merge what comes between the two.
                    super_capture_module_pop_frame(handle, Planes(frame));
                    EXPECT_EQ(super_capture_module_push_frame(handle, Planes(frame)), 0);
                    super_capture_module_pop_frame(handle, Planes(frame));
                }
                super_capture_module_destroy(handle);
            }
        }
    }
}

// Holds the worker back until all frames of a test are queued.
class HeldBackCapture : public SuperCapture {
  public:
    void run() override {
        while (!isReleased) {
            std::this_thread::yield();
        }
        SuperCapture::run();
    }
    std::atomic<bool> isReleased{false};
};

TEST(SuperCapture, ServesTheNewestFrameFirst) {
    LogCapture log;
    HeldBackCapture engine;
    engine.init(kWidth, kHeight, 1);
    for (const int luma : {1, 2, 150}) {
        Frame frame = frame_with_luma(luma, 3);
        engine.pushFrame(Planes(frame));
    }
    engine.isReleased = true;
    ASSERT_TRUE(engine.waitUntilTaken(3));
    Frame result(kBytes);
    engine.popFrame(Planes(result));
    EXPECT_THAT(log.lines(), Contains("SuperCapture::run lum:150 select scheme"));
    EXPECT_EQ(result, frame_with_luma((1 + 2 + 150) / 3, 3));
    engine.final();
}

TEST(SuperCapture, VeryBrightLargeFramesCountAsLowLight) {
    LogCapture log;
    const Frame bright(size_t{4000} * 3000 * 2, 255);
    EXPECT_TRUE(merged({bright}, 4000, 3000) == bright);
    EXPECT_THAT(log.lines(), Contains("SuperCapture::run lum:-102 select scheme"));
    EXPECT_THAT(log.lines(), Contains(HasSubstr("SuperCaptureLowLightScheme::process")));
}

TEST(MergeKernels, SumTheLumaOfAnyFrame) {
    // Every vector's part of the sum grows large.
    const Frame bright(17'000'001, 255);
    const Frame noise = random_bytes(598, 1);
    for_each_simd_target([&](const std::string&) {
        EXPECT_EQ(korvane::luma_sum(bright.data(), bright.size()), static_cast<uint32_t>(bright.size() * 255));
        for (size_t count = 0; count <= noise.size() / 2; ++count) {
            EXPECT_EQ(korvane::luma_sum(noise.data(), count), korvane::luma_sum_scalar(noise.data(), count));
            EXPECT_EQ(korvane::luma_sum_yuyv(noise.data(), count), korvane::luma_sum_yuyv_scalar(noise.data(), count));
        }
    });
}

TEST(MergeKernels, MeansAreTruncatedForEveryFrameCount) {
    for_each_simd_target([](const std::string&) {
        // Just below, at and above every step of the quotient, and sums that no such burst has. Around the switch to
        // plain division at 100 frames too.
        for (int frames : {0, 1, 2, 3, 5, 7, 24, 64, 65, 99, 100, 101, 128, 4097, 8'000'000}) {
            std::vector<int> sums = {INT_MIN, -65536, -32769, -1, 32767, 32768, 65536, INT_MAX};
            for (int value = 0; value <= 255; ++value) {
                for (int nudge = -1; nudge <= 1; ++nudge) {
                    sums.push_back(value * frames + nudge);
                }
            }
            std::vector<uint8_t> means(sums.size() - 1);  // an odd number
            std::vector<uint8_t> low(means);
            korvane::merged_mean(sums.data(), means.data(), means.size(), frames);
            korvane::merged_low_bytes(sums.data(), low.data(), low.size());
            for (size_t i = 0; i < means.size(); ++i) {
                ASSERT_EQ(means[i], frames == 0 ? 0 : std::clamp(sums[i] / frames, 0, 255))
                    << sums[i] << " / " << frames;
                ASSERT_EQ(low[i], static_cast<uint8_t>(sums[i]));
            }
        }
    });
}

}  // namespace
