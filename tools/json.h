// SPDX-License-Identifier: Apache-2.0
// Reports for other programs: --json, one object on one line.
#ifndef KORVANE_TOOLS_JSON_H_
#define KORVANE_TOOLS_JSON_H_

#include <nlohmann/json.hpp>
#include <string>

namespace CLI {
class App;
}

namespace korvane {

// Keeps its keys in the order in which they were set.
using Json = nlohmann::ordered_json;

void add_json(CLI::App& app, bool& wantsJson);

// One line without its end. File names may hold any bytes: what is no UTF-8 becomes U+FFFD, so that the text is valid
// whatever the names are.
std::string json_line(const Json& report);

}  // namespace korvane

#endif  // KORVANE_TOOLS_JSON_H_
