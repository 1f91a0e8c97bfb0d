// SPDX-License-Identifier: Apache-2.0
#include "applications/super_capture/super_capture_mode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <vector>

#include "tests/support/log_capture.h"

namespace {

// Feeds one-pixel frames without a Java side: each report that would go there shows as one line in the log.
class Advisor {
  public:
    Advisor() { m_Mode.init(1, 1, 0); }

    // True when the frame made a report.
    bool feed(int luma) {
        LogCapture log;
        auto pixel = static_cast<unsigned char>(luma);
        m_Mode.process(nullptr, nullptr, &pixel);
        return !log.lines().empty();
    }
    SuperCaptureMode& mode() { return m_Mode; }

  private:
    SuperCaptureMode m_Mode;
};

TEST(SuperCaptureMode, ReportsWhenTheSmoothedLightHasMovedEnough) {
    struct Step {
        int luma;
        int frames;
        int reportAtFrame;  // Counted from 1; 0 for none.
        int aperture;
        int gain;
    };
    const std::vector<std::vector<Step>> sequences = {
        {{10, 40, 0, 0, 0}, {11, 4, 0, 0, 0}, {11, 1, 1, 2, 2}},
        {{11, 1, 1, 2, 2}, {11, 40, 0, 2, 2}},
        {{100, 1, 1, 11, -1}, {100, 3, 0, 11, -1}},
        {{40, 5, 1, 4, 1}, {50, 10, 0, 4, 1}},
        {{40, 5, 1, 4, 1}, {60, 3, 3, 4, 1}},
        // The ends of each band.
        {{29, 1, 1, 2, 2}},
        {{30, 1, 1, 2, 2}},
        {{39, 1, 1, 2, 2}},
        {{40, 1, 1, 4, 1}},
        {{59, 1, 1, 4, 1}},
        {{60, 1, 1, 5, 0}},
        {{79, 1, 1, 5, 0}},
        {{80, 1, 1, 8, -1}},
        {{99, 1, 1, 8, -1}},
        {{100, 1, 1, 11, -1}},
        {{119, 1, 1, 11, -1}},
        {{120, 1, 1, 16, -2}},
        {{139, 1, 1, 16, -2}},
        {{140, 1, 1, 22, -2}},
    };
    for (size_t s = 0; s < sequences.size(); ++s) {
        Advisor advisor;
        for (const Step& step : sequences[s]) {
            for (int frame = 1; frame <= step.frames; ++frame) {
                EXPECT_EQ(advisor.feed(step.luma), frame == step.reportAtFrame)
                    << "sequence " << s << ", luma " << step.luma << ", frame " << frame;
            }
            EXPECT_EQ(advisor.mode().getAperture(), step.aperture) << "sequence " << s;
            EXPECT_EQ(advisor.mode().getGain(), step.gain) << "sequence " << s;
        }
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
    char noJava[64];
    std::snprintf(noJava, sizeof(noJava), "env or object is null, env:%p, object:%p", nullptr, nullptr);
    EXPECT_THAT(log.lines(),
                testing::ElementsAre("m_Width:3, m_Height:1\n", noJava, "m_Width:0, m_Height:5\n", noJava));
}

}  // namespace
