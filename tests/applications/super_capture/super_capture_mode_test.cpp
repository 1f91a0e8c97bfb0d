// SPDX-License-Identifier: Apache-2.0
#include "applications/super_capture/super_capture_mode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "tests/support/log_capture.h"

namespace {

// Gets frames of one pixel without a Java side: each report that would go there shows as one line in the log.
struct Advisor : SuperCaptureMode {
    Advisor() { SuperCaptureMode::init(1, 1, 0); }

    bool reports(int luma) {
        const LogCapture log;
        auto pixel = static_cast<unsigned char>(luma);
        process(nullptr, nullptr, &pixel);
        return !log.lines().empty();
    }
};

TEST(SuperCaptureMode, ReportsWhenTheSmoothedLightHasMovedEnough) {
    struct Step {
        int luma, frames;
        int reportAtFrame;  // Counted from 1; 0 for none.
        int aperture, gain;
    };
    const std::vector<Step> sequences[] = {{{10, 40, 0, 0, 0}, {11, 4, 0, 0, 0}, {11, 1, 1, 2, 2}},
                                           {{11, 1, 1, 2, 2}, {11, 40, 0, 2, 2}},
                                           {{100, 1, 1, 11, -1}, {100, 3, 0, 11, -1}},
                                           {{40, 5, 1, 4, 1}, {50, 10, 0, 4, 1}},
                                           {{40, 5, 1, 4, 1}, {60, 3, 3, 4, 1}}};
    for (const std::vector<Step>& sequence : sequences) {
        Advisor advisor;
        for (const Step& step : sequence) {
            SCOPED_TRACE(testing::Message() << "sequence " << &sequence - sequences << ", luma " << step.luma);
            for (int frame = 1; frame <= step.frames; ++frame) {
                EXPECT_EQ(advisor.reports(step.luma), frame == step.reportAtFrame) << "frame " << frame;
            }
            EXPECT_EQ(advisor.getAperture(), step.aperture);
            EXPECT_EQ(advisor.getGain(), step.gain);
        }
    }
    // The ends of each band, with its aperture and gain.
    const int bands[][3] = {{29, 2, 2},    {30, 2, 2},    {39, 2, 2},    {40, 4, 1},   {59, 4, 1},
                            {60, 5, 0},    {79, 5, 0},    {80, 8, -1},   {99, 8, -1},  {100, 11, -1},
                            {119, 11, -1}, {120, 16, -2}, {139, 16, -2}, {140, 22, -2}};
    for (const auto& [luma, aperture, gain] : bands) {
        Advisor advisor;
        EXPECT_TRUE(advisor.reports(luma));
        EXPECT_EQ(std::pair(advisor.getAperture(), advisor.getGain()), std::pair(aperture, gain)) << luma;
    }
}

TEST(SuperCaptureMode, InitKeepsTheLastReportAndTakesAnySize) {
    LogCapture log;
    SuperCaptureMode mode;
    mode.init(3, 1, 9);
    std::vector<unsigned char> frame = {199, 200, 202, 255};
    mode.process(nullptr, nullptr, nullptr);
    mode.process(nullptr, nullptr, frame.data());
    mode.init(0, 5, 0);
    EXPECT_EQ(mode.getAperture(), 22);
    mode.process(nullptr, nullptr, frame.data());
    EXPECT_EQ(mode.getAperture(), 2);
    mode.process(nullptr, nullptr, frame.data());
    const char* const noJava = "env or object is null, env:(nil), object:(nil)";
    EXPECT_THAT(log.lines(),
                testing::ElementsAre("m_Width:3, m_Height:1\n", noJava, "m_Width:0, m_Height:5\n", noJava));
}

}  // namespace
