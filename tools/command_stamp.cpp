// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <utility>

#include "tools/batch.h"
#include "tools/command.h"
#include "tools/effects.h"
#include "tools/photo/photo_io.h"

namespace korvane {
namespace {

struct StampOptions {
    PhotoOptions photo;
    std::string text;
};

void stamp(const StampOptions& options) {
    check_output(options.photo.output, options.photo.write);
    Photo photo = read_photo(options.photo.input, IMAGE_FORMAT_TYPE_RGB, options.photo.read);
    stamp_photo(photo, options.text);
    write_photo(options.photo.output, std::move(photo), options.photo.write);
}

}  // namespace

std::function<void()> setup_stamp_command(CLI::App& app) {
    auto options = std::make_shared<StampOptions>();
    add_photo_options(app, options->photo);
    app.add_option("--text", options->text, "Date and time, as \"2026-01-02 03:04\"")->required();
    return [options] { for_each_photo(options->photo, [&] { stamp(*options); }); };
}

}  // namespace korvane
