// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "applications/super_capture/super_capture.h"
#include "tools/command.h"
#include "tools/photo/photo_io.h"
#include "tools/progress.h"
#include "tools/yuyv_photo.h"

namespace korvane {
namespace {

struct MergeOptions {
    std::vector<std::string> frames;
    std::string output;
    ReadOptions read;
    WriteOptions write;
};

// The planes that the engine takes: frames are packed, so only the first is used.
class Planes {
  public:
    explicit Planes(std::vector<unsigned char>& frame) : m_Planes{frame.data(), nullptr, nullptr, nullptr} {}
    operator unsigned char**() { return m_Planes; }

  private:
    unsigned char* m_Planes[kFramePlanes];
};

void merge(const MergeOptions& options) {
    check_output(options.output, options.write);
    Photo photo = read_photo(options.frames.front(), IMAGE_FORMAT_TYPE_RGB, options.read);
    const auto width = photo.image->getWidth();
    const auto height = photo.image->getHeight();
    YuyvFrame frame = to_yuyv(photo.image);
    SuperCapture burst;
    burst.init(static_cast<uint32_t>(frame.width), static_cast<uint32_t>(frame.height), FRAME_FORMAT_TYPE_YUYV);
    {
        Progress progress("merging", options.frames.size(), false);
        for (size_t i = 0; i < options.frames.size(); ++i) {
            if (i > 0) {
                auto_ptr<Image> next = read_photo(options.frames[i], IMAGE_FORMAT_TYPE_RGB, options.read).image;
                if (next->getWidth() != width || next->getHeight() != height) {
                    throw CommandError(options.frames[i] + " is not of the size of " + options.frames.front());
                }
                frame = to_yuyv(next);
            }
            // The engine drops the frames that its worker has not taken when the result is asked for.
            if (burst.pushFrame(Planes(frame.bytes)) != 0 || !burst.waitUntilTaken(i + 1)) {
                throw std::bad_alloc();
            }
            progress.show(i + 1);
        }
    }
    burst.popFrame(Planes(frame.bytes));
    const SuperCaptureSummary summary = burst.summary();
    if (summary.framesMerged != options.frames.size()) {
        throw std::bad_alloc();
    }
    from_yuyv(frame, photo.image);
    write_photo(options.output, std::move(photo), options.write);
    report_stream(options.output) << (summary.isLowLight ? "low light (maximum)" : "high light (mean)")
                                  << ", mean luma " << summary.meanLuma << ", " << summary.framesMerged
                                  << " frames merged\n";
}

}  // namespace

std::function<void()> setup_merge_command(CLI::App& app) {
    auto options = std::make_shared<MergeOptions>();
    app.add_option("frames", options->frames, "The photos, all of one size; the first one's EXIF goes on")->required();
    add_read_options(app, options->read);
    add_output(app, options->output, options->write);
    return [options] { merge(*options); };
}

}  // namespace korvane
