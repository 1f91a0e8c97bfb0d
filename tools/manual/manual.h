// SPDX-License-Identifier: Apache-2.0
// The manual page and the shells' completions, made from the tables that the program itself works with: the parser's
// options and the filters' parameters.
#ifndef KORVANE_TOOLS_MANUAL_MANUAL_H_
#define KORVANE_TOOLS_MANUAL_MANUAL_H_

#include <span>
#include <string>
#include <vector>

namespace korvane {

struct ManualOption {
    // "-o" and "--output"; none for an argument without a name.
    std::vector<std::string> names;
    std::string argument;
    std::string value;  // "INT in [1 - 100]", or empty for a flag
    std::string preset;
    std::string text;
    bool isRequired = false;
    bool isRepeated = false;
    bool takesFile = false;
    std::vector<std::string> suggestions;
};

struct ManualCommand {
    std::string name;
    std::string text;
    std::string example;
    std::vector<ManualOption> options;
};

std::vector<ManualCommand> manual_commands();

// Each is a whole file. The date is the one in the foot of the page.
std::string man_page(std::span<const ManualCommand> commands, const std::string& date);
std::string bash_completion(std::span<const ManualCommand> commands);
std::string zsh_completion(std::span<const ManualCommand> commands);
std::string fish_completion(std::span<const ManualCommand> commands);

}  // namespace korvane

#endif  // KORVANE_TOOLS_MANUAL_MANUAL_H_
