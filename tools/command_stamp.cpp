// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "applications/photo_timestamp/timestamp_watermark.h"
#include "tools/command.h"
#include "tools/photo/photo_io.h"
#include "tools/yuyv_photo.h"

namespace korvane {
namespace {

struct StampOptions {
    PhotoOptions photo;
    std::string text;
};

void stamp(const StampOptions& options) {
    check_output(options.photo.output, options.photo.write);
    Photo photo = read_photo(options.photo.input, IMAGE_FORMAT_TYPE_RGB, options.photo.read);
    YuyvFrame frame = to_yuyv(photo.image);
    const std::vector<unsigned char> before = frame.bytes;
    if (!make_photo_timestamp_watermark_to_yuyv(frame.bytes.data(), frame.width, frame.height, options.text.c_str(),
                                                0)) {
        throw CommandError("'" + options.text + "' cannot be stamped: digits, ':', '-' and blanks only, at least one");
    }
    // A stamp always darkens or brightens the edges of its digits.
    const bool isBlank = options.text.find_first_not_of(' ') == std::string::npos;
    if (!isBlank && frame.bytes == before) {
        throw CommandError("'" + options.text + "' does not fit into a photo of " +
                           std::to_string(photo.image->getWidth()) + " x " + std::to_string(photo.image->getHeight()) +
                           " pixels");
    }
    from_yuyv(frame, photo.image);
    write_photo(options.photo.output, std::move(photo), options.photo.write);
}

}  // namespace

std::function<void()> setup_stamp_command(CLI::App& app) {
    auto options = std::make_shared<StampOptions>();
    add_photo_options(app, options->photo);
    app.add_option("--text", options->text, "Date and time, as \"2026-01-02 03:04\"")->required();
    return [options] { stamp(*options); };
}

}  // namespace korvane
