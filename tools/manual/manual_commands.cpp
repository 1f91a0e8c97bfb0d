// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <functional>

#include "tools/command.h"
#include "tools/manual/manual.h"

namespace korvane {
namespace {

ManualOption describe(CLI::Option& option) {
    ManualOption result;
    for (const std::string& name : option.get_snames()) {
        result.names.push_back("-" + name);
    }
    for (const std::string& name : option.get_lnames()) {
        result.names.push_back("--" + name);
    }
    if (result.names.empty()) {
        result.argument = option.get_name(true);
    }
    if (option.get_type_size() != 0) {
        result.value = describe_value(option);
        result.preset = option.get_default_str();
    }
    result.text = option.get_description();
    result.isRequired = option.get_required();
    result.isRepeated = option.get_expected_max() > 1;
    result.takesFile = result.value == kFileValue;
    result.suggestions = suggestions(option);
    return result;
}

}  // namespace

std::vector<ManualCommand> manual_commands() {
    CLI::App app;
    std::function<void()> work;
    bool isVerbose = false;
    declare_commands(app, commands(), work, isVerbose);
    std::vector<ManualCommand> result;
    for (const Command& command : commands()) {
        ManualCommand row{command.name, command.description, command.example, {}};
        for (CLI::Option* option : app.get_subcommand(command.name)->get_options()) {
            row.options.push_back(describe(*option));
        }
        result.push_back(std::move(row));
    }
    return result;
}

}  // namespace korvane
