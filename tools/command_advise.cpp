// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <iomanip>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "applications/super_capture/super_capture_mode.h"
#include "tools/command.h"
#include "tools/json.h"
#include "tools/photo/photo_io.h"
#include "tools/yuyv_photo.h"

namespace korvane {
namespace {

struct AdviseOptions {
    std::vector<std::string> frames;
    ReadOptions read;
    bool wantsJson = false;
};

// The advisor reports to a Java object. Without one, a changed m_LastLumAvg shows that it made a report.
class Advisor : public SuperCaptureMode {
  public:
    // True when the frame made a report.
    bool process(std::vector<unsigned char>& luma) {
        const int before = m_LastLumAvg;
        SuperCaptureMode::process(nullptr, nullptr, luma.data());
        return m_LastLumAvg != before;
    }
    std::string advice() const {
        return "aperture " + aperture() + ", gain " + std::to_string(m_Gain) + " (mean luma " +
               std::to_string(m_LastLumAvg) + ')';
    }
    Json json() const { return {{"aperture", std::stod(aperture())}, {"gain", m_Gain}, {"mean_luma", m_LastLumAvg}}; }

  private:
    std::string aperture() const {
        std::ostringstream text;
        text << std::fixed << std::setprecision(1) << m_Aperture;
        return text.str();
    }
};

std::vector<unsigned char> luma_of(const YuyvFrame& frame) {
    std::vector<unsigned char> luma(frame.bytes.size() / 2);
    for (size_t i = 0; i < luma.size(); ++i) {
        luma[i] = frame.bytes[2 * i];
    }
    return luma;
}

void advise(const AdviseOptions& options) {
    Advisor advisor;
    std::ostringstream report;
    Json frames = Json::array();
    int width = 0;
    int height = 0;
    for (const std::string& path : options.frames) {
        Photo photo = read_photo(path, IMAGE_FORMAT_TYPE_RGB, options.read);
        const YuyvFrame frame = to_yuyv(photo.image);
        if (width == 0) {
            width = frame.width;
            height = frame.height;
            advisor.init(static_cast<uint32_t>(frame.width), static_cast<uint32_t>(frame.height), 1);
        } else if (frame.width != width || frame.height != height) {
            throw CommandError(path + " is not of the size of " + options.frames.front());
        }
        std::vector<unsigned char> luma = luma_of(frame);
        const bool isChange = advisor.process(luma);
        report << path << ": " << (isChange ? advisor.advice() : "no change") << '\n';
        frames.push_back({{"file", path}, {"advice", isChange ? advisor.json() : Json()}});
    }
    std::cout << (options.wantsJson ? json_line({{"frames", frames}}) + '\n' : report.str());
}

}  // namespace

std::function<void()> setup_advise_command(CLI::App& app) {
    auto options = std::make_shared<AdviseOptions>();
    app.add_option("frames", options->frames, "The photos in their order, all of one size")->required();
    add_read_options(app, options->read);
    add_json(app, options->wantsJson);
    return [options] { advise(*options); };
}

}  // namespace korvane
