// SPDX-License-Identifier: Apache-2.0
#include "tools/json.h"

#include <CLI/CLI.hpp>

namespace korvane {

void add_json(CLI::App& app, bool& wantsJson) {
    app.add_flag("--json", wantsJson, "Report as JSON, on one line");
}

std::string json_line(const Json& report) {
    return report.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace korvane
