#include <CLI/CLI.hpp>
#include <memory>

#include "applications/photo_timestamp/timestamp_watermark.h"
#include "tools/command.h"
#include "tools/photo_io.h"
#include "tools/yuyv_photo.h"

namespace korvane {
namespace {

struct StampOptions {
    std::string input;
    std::string output;
    std::string text;
};

void stamp(const StampOptions& options) {
    auto_ptr<Image> photo = read_photo(options.input);
    YuyvFrame frame = to_yuyv(photo);
    if (!make_photo_timestamp_watermark_to_yuyv(frame.bytes.data(), frame.width, frame.height, options.text.c_str(),
                                                0)) {
        throw CommandError("'" + options.text + "' cannot be stamped: digits, ':', '-' and blanks only, at least one");
    }
    from_yuyv(frame, photo);
    write_photo(options.output, photo);
}

}  // namespace

std::function<void()> setup_stamp_command(CLI::App& app) {
    auto options = std::make_shared<StampOptions>();
    app.add_option("input", options->input, "The photo, a JPEG file")->required();
    app.add_option("-o,--output", options->output, "Where the result goes, a JPEG file")->required();
    app.add_option("--text", options->text, "Date and time, as \"2026-01-02 03:04\"")->required();
    return [options] { stamp(*options); };
}

}  // namespace korvane
