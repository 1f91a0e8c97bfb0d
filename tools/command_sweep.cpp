// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "applications/pano/panorama_interface.h"
#include "frameworks/images/color_convert.h"
#include "tools/command.h"
#include "tools/json.h"
#include "tools/photo/photo_io.h"
#include "tools/yuyv_photo.h"

namespace korvane {
namespace {

struct SweepOptions {
    std::string track;
    std::vector<std::string> frames;
    ReadOptions read;
    bool wantsJson = false;
};

struct Reading {
    float gyroX;
    float gyroY;
};

struct Answer {
    result_t result = 0;
    PanoramaDirectionType direction = {};
    int offsetX = 0;
    int offsetY = 0;
};

struct Nv21Frame {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> bytes;
};

constexpr const char* kReferenceHint =
    "the first reading only sets the reference angles and answers 3 (INVALID_PARAMETER), and so does every reading "
    "while a reference angle is exactly 0";
constexpr const char* kResultNames[] = {"NO_ERROR", "OUT_OF_MEMRORY", "WRONG_DIRECTION", "INVALID_PARAMETER",
                                        "INVALID_OPERATOR"};
constexpr const char* kDirectionNames[] = {"NONE", "LEFT_TO_RIGHT", "RIGHT_TO_LEFT", "TOP_TO_BOTTOM", "BOTTOM_TO_TOP"};

bool is_blank_or_comment(const std::string& line) {
    const size_t first = line.find_first_not_of(" \t\r");
    return first == std::string::npos || line[first] == '#';
}

// False for what is not a number, too.
bool is_angle(float degrees) {
    return std::abs(degrees) <= 360.0F;
}

// Lines "gyroX,gyroY" in degrees; blank lines and lines that begin with '#' are ignored.
std::vector<Reading> read_track(const std::string& path) {
    std::ifstream file(path);
    if (!file) {
        throw CommandError("cannot read " + path + ": " + std::strerror(errno));
    }
    std::vector<Reading> track;
    std::string line;
    for (size_t number = 1; std::getline(file, line); ++number) {
        if (is_blank_or_comment(line)) {
            continue;
        }
        Reading reading{};
        int used = 0;
        if (std::sscanf(line.c_str(), "%f ,%f %n", &reading.gyroX, &reading.gyroY, &used) != 2 ||
            static_cast<size_t>(used) != line.size() || !is_angle(reading.gyroX) || !is_angle(reading.gyroY)) {
            throw CommandError(path + ", line " + std::to_string(number) +
                               ": expected two angles in degrees, -360 to 360, as 10.5,-3");
        }
        track.push_back(reading);
    }
    if (file.bad() || track.empty()) {
        throw CommandError(path + " holds no readings");
    }
    return track;
}

Nv21Frame read_frame(const std::string& path, const ReadOptions& options) {
    auto_ptr<Image> photo = read_photo(path, IMAGE_FORMAT_TYPE_RGB, options).image;
    const std::vector<unsigned char> rgb = even_width_rgb(photo);
    Nv21Frame frame;
    frame.width = static_cast<int>(photo->getWidth() + photo->getWidth() % 2);
    // Two rows share their chroma, so the last row of an odd height is left out.
    frame.height = static_cast<int>(photo->getHeight() - photo->getHeight() % 2);
    if (frame.height == 0) {
        throw CommandError(path + " is a single row of pixels");
    }
    const size_t luma = static_cast<size_t>(frame.width) * static_cast<size_t>(frame.height);
    frame.bytes.resize(luma * 3 / 2);
    color_convert_rgb2nv21(rgb.data(), frame.bytes.data(), frame.bytes.data() + luma, frame.width, frame.height);
    return frame;
}

// Used when no photos are given: the answers depend on the angles only.
Nv21Frame blank_frame() {
    return {2, 2, std::vector<unsigned char>(6)};
}

bool needs_hint(const std::vector<Answer>& answers) {
    return std::any_of(answers.begin(), answers.end(),
                       [](const Answer& answer) { return answer.result == PANORAMA_RESULT_TYPE_INVALID_PARAMETER; });
}

std::string table(const std::vector<Answer>& answers) {
    std::ostringstream text;
    text << "row,result,direction,offset_x,offset_y\n";
    for (size_t i = 0; i < answers.size(); ++i) {
        const Answer& answer = answers[i];
        text << i + 1 << ',' << kResultNames[answer.result] << ',' << kDirectionNames[answer.direction] << ','
             << answer.offsetX << ',' << answer.offsetY << '\n';
    }
    if (needs_hint(answers)) {
        text << "# INVALID_PARAMETER: " << kReferenceHint << '\n';
    }
    return text.str();
}

Json json(const std::vector<Answer>& answers) {
    Json rows = Json::array();
    for (size_t i = 0; i < answers.size(); ++i) {
        const Answer& answer = answers[i];
        rows.push_back({{"row", i + 1},
                        {"result", kResultNames[answer.result]},
                        {"direction", kDirectionNames[answer.direction]},
                        {"offset_x", answer.offsetX},
                        {"offset_y", answer.offsetY}});
    }
    return {{"readings", rows}, {"hint", needs_hint(answers) ? Json(kReferenceHint) : Json()}};
}

void sweep(const SweepOptions& options) {
    const std::vector<Reading> track = read_track(options.track);
    Nv21Frame frame = options.frames.empty() ? blank_frame() : read_frame(options.frames.front(), options.read);
    PanoramaInterface panorama;
    const int width = frame.width;
    const int height = frame.height;
    if (panorama.startup(width, height, PANORAMA_FRAME_FORMAT_NV21, nullptr) != PANORAMA_RESULT_TYPE_NO_ERROR) {
        throw CommandError("the sweep cannot be started");
    }
    std::vector<Answer> answers(track.size());
    for (size_t i = 0; i < track.size(); ++i) {
        if (i > 0 && i < options.frames.size()) {
            frame = read_frame(options.frames[i], options.read);
        }
        if (frame.width != width || frame.height != height) {
            throw CommandError(options.frames[i] + " is not of the size of " + options.frames.front());
        }
        Answer& answer = answers[i];
        answer.result =
            panorama.addFrame(frame.bytes.data(), track[i].gyroX, track[i].gyroY, answer.offsetX, answer.offsetY);
        answer.direction = panorama.getDirectionType();
    }
    std::cout << (options.wantsJson ? json_line(json(answers)) + '\n' : table(answers));
    // Closing would wait for one more frame. The destructor ends the worker without it.
}

}  // namespace

std::function<void()> setup_sweep_command(CLI::App& app) {
    auto options = std::make_shared<SweepOptions>();
    app.add_option(
           "track", options->track,
           std::string("The gyroscope's readings: a text file with lines gyroX,gyroY in degrees, -360 to 360; ") +
               kReferenceHint)
        ->required();
    app.add_option("frames", options->frames,
                   "Photos of one size, one for each reading; the last one serves the readings that follow");
    add_read_options(app, options->read);
    add_json(app, options->wantsJson);
    return [options] { sweep(*options); };
}

}  // namespace korvane
