// SPDX-License-Identifier: Apache-2.0
#include "applications/pano/panorama_module.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/applications/pano/panorama_module_peer.h"
#include "tests/support/log_capture.h"
#include "tests/support/random_bytes.h"

namespace {

using Frame = std::vector<unsigned char>;

constexpr int kWidth = 6;
constexpr int kHeight = 4;
constexpr size_t kBytes = size_t{kWidth} * kHeight * 3 / 2;

// Without "get frame", the worker's line, which comes when it comes.
std::vector<std::string> lines_of_caller(const LogCapture& log) {
    std::vector<std::string> lines = log.lines();
    std::erase(lines, "get frame .....................\n");
    return lines;
}

std::string push_line(unsigned char* buffer, float gyroX, float gyroY) {
    return "PanoramaModule::pushFrame pBuffer:" +
           (buffer == nullptr ? "(nil)" : testing::PrintToString(static_cast<void*>(buffer))) +
           ", gyroX:" + std::to_string(gyroX) + ", gyroY:" + std::to_string(gyroY) + "\n";
}

// By result.
const char* const kLines[] = {"PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_NO_ERROR\n",
                              "PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_OUT_OF_MEMRORY   1\n",
                              "PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_WRONG_DIRECTION   \n",
                              "PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_INVALID_PARAMETER\n",
                              "PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_INVALID_OPERATOR   \n"};

TEST(PanoramaModule, OffsetsDirectionsAndResultsOfASweep) {
    constexpr int kUnwritten = 12345;
    constexpr int kLowest = std::numeric_limits<int>::min();
    struct Step {
        float gyroX, gyroY;
        int result, offsetX, offsetY, direction;
    };
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const Step reference = {10.0F, 20.0F, 3, kUnwritten, kUnwritten, 0};
    const std::vector<std::vector<Step>> sweeps = {
        {reference,
         {10.4F, 17.5F, 0, 70, 0, 1},
         {10.0F, 20.0F, 0, 0, 0, 1},
         {10.0F, 23.5F, 2, -105, 0, 1},
         {20.0F, 20.0F, 2, 0, -150, 1},
         {10.0F, 11.0F, 0, 315, 0, 1}},
        {reference, {13.9F, 19.0F, 0, 35, -45, 1}},
        {reference, {14.0F, 19.0F, 0, 35, -60, 4}, {13.9F, 19.0F, 2, 35, -45, 4}},
        {reference, {7.0F, 20.5F, 0, 0, 45, 3}},
        {reference, {10.0F, 21.0F, 0, -35, 0, 2}},
        // An angle of 0 is no reference: the next frame becomes it.
        {{10.0F, 0.0F, 3, kUnwritten, kUnwritten, 0}, reference, {9.0F, 20.0F, 0, 0, 15, 1}},
        // Angles out of any range: saturated, then wrapped in 32 bits by the factor.
        {reference, {kInfinity, -kInfinity, 0, 2147483613, kLowest, 1}},
        {reference, {std::nanf(""), std::nanf(""), 0, 0, 0, 1}},
    };
    for (size_t s = 0; s < sweeps.size(); ++s) {
        PanoramaModule module;
        Frame frame(kBytes, 1);
        ASSERT_EQ(module.startup(kWidth, kHeight, 1, nullptr), 0);
        for (size_t i = 0; i < sweeps[s].size(); ++i) {
            SCOPED_TRACE(testing::Message() << "sweep " << s << ", frame " << i);
            const Step& step = sweeps[s][i];
            int offsetX = kUnwritten;
            int offsetY = kUnwritten;
            LogCapture log;
            EXPECT_EQ(module.pushFrame(frame.data(), step.gyroX, step.gyroY, offsetX, offsetY), step.result);
            EXPECT_EQ(std::pair(offsetX, offsetY), std::pair(step.offsetX, step.offsetY));
            EXPECT_EQ(module.getDirectionType(), step.direction);
            EXPECT_EQ(lines_of_caller(log),
                      (std::vector<std::string>{push_line(frame.data(), step.gyroX, step.gyroY), kLines[step.result]}));
        }
    }
}

TEST(PanoramaModule, RefusesFramesWithoutABufferOrMemory) {
    Frame frame(kBytes, 1);
    int x = 0;
    int y = 0;
    LogCapture log;
    PanoramaModule module;
    // Just more than a signed 32-bit size holds. Nothing is read of a frame that cannot be had.
    ASSERT_EQ(module.startup(1 << 16, 21846, 3, nullptr), 0);
    for (const auto& [buffer, result] :
         {std::pair<unsigned char*, int>(nullptr, 3), {frame.data(), 3}, {frame.data(), 1}}) {
        log.clear();
        EXPECT_EQ(module.pushFrame(buffer, 1, 1, x, y), result);
        EXPECT_EQ(log.lines(), (std::vector<std::string>{push_line(buffer, 1, 1), kLines[result]}));
    }
}

TEST(PanoramaModule, WorkerKeepsTheLatestFrameAsYv12) {
    const Frame first = random_bytes(kBytes, 1);
    const Frame last = random_bytes(kBytes, 2);
    for (const int format : {1, 2, 3}) {
        LogCapture log;
        PanoramaModule module;
        int x = 0;
        int y = 0;
        const auto push = [&](Frame frame) { return module.pushFrame(frame.data(), 10, 20, x, y); };
        ASSERT_EQ(module.startup(kWidth, kHeight, format, nullptr), 0);
        EXPECT_EQ(push(first), 3);
        EXPECT_EQ(push(first), 0);
        // The first frame has been taken, so the queue is empty again when the last one comes.
        while (!std::ranges::count(log.lines(), "get frame .....................\n")) {
            std::this_thread::yield();
        }
        PanoramaModulePeer::closeWithAFrameQueued(
            module, [&] { EXPECT_EQ(push(last), 0); }, [&] { EXPECT_EQ(module.close(), 0); });
        const PanoramaFrame* output = PanoramaModulePeer::outputFrame(module);
        ASSERT_NE(output, nullptr);
        Frame expected = last;
        constexpr size_t kPixels = size_t{kWidth} * kHeight;
        for (size_t i = 0; format != PANORAMA_FRAME_FORMAT_YV12 && i < kPixels / 4; ++i) {
            const unsigned char* const pair = &last[kPixels + 2 * i];
            expected[kPixels + i] = pair[format == PANORAMA_FRAME_FORMAT_NV12 ? 1 : 0];
            expected[kPixels * 5 / 4 + i] = pair[format == PANORAMA_FRAME_FORMAT_NV12 ? 0 : 1];
        }
        EXPECT_EQ(Frame(output->getBuffer(), output->getBuffer() + kBytes), expected);
        EXPECT_EQ(std::tuple(output->getFormat(), output->getWidth(), output->getHeight(), output->getID()),
                  std::tuple(PANORAMA_FRAME_FORMAT_YV12, kWidth, kHeight, 0));
        log.clear();
        EXPECT_EQ(push(last), 4);
        EXPECT_EQ(log.lines().back(), kLines[4]);
        // A second sweep keeps the reference: its first frame is taken.
        ASSERT_EQ(module.startup(kWidth, kHeight, format, nullptr), 0);
        EXPECT_EQ(module.getDirectionType(), PANORAMA_DIRECTION_TYPE_NONE);
        EXPECT_EQ(push(last), 0);
    }
}

}  // namespace
