// SPDX-License-Identifier: Apache-2.0
#include "tools/command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "korvane/version.h"
#include "tools/effects.h"

namespace korvane {
namespace {

constexpr int kExitSomeFailed = 1;
constexpr int kExitBadInput = 2;
constexpr size_t kHelpColumns = 100;
constexpr size_t kHelpTextColumn = 30;
constexpr const char* kFooter =
    "'korvane help COMMAND' explains a command.\n"
    "Exit codes: 0 when all went well, 2 for bad input, bad usage or a failed output, with one line on\n"
    "standard error and no file written; 1 when some of several photos failed, each with such a line.";

constexpr Command kCommands[] = {
#define KORVANE_COMMAND(name, description, example) {#name, description, example, setup_##name##_command},
#include "tools/commands.def"
#undef KORVANE_COMMAND
};

// Scripts read standard error line by line, so a text never takes a second one.
void print_line(std::string text) {
    for (char& c : text) {
        if (c == '\n' || c == '\r') {
            c = ' ';
        }
    }
    std::cerr << "korvane: " + text + '\n' << std::flush;
}

int report(const std::string& text) {
    print_line(text);
    return kExitBadInput;
}

bool lacks(std::span<const Command> commands, const std::string& name) {
    return std::none_of(commands.begin(), commands.end(), [&](const Command& command) { return name == command.name; });
}

// The parser does not break its lines.
std::string wrap(const std::string& help) {
    std::string result;
    std::istringstream lines(help);
    for (std::string line; std::getline(lines, line);) {
        while (line.size() > kHelpColumns) {
            const size_t blank = line.rfind(' ', kHelpColumns);
            if (blank == std::string::npos || blank <= kHelpTextColumn) {
                break;
            }
            result += line.substr(0, blank) + '\n';
            line = std::string(kHelpTextColumn, ' ') + line.substr(blank + 1);
        }
        result += line + '\n';
    }
    return result;
}

// "help" and "help COMMAND" as the parser knows them.
std::vector<std::string> without_help_command(const std::vector<std::string>& arguments) {
    if (arguments.empty() || arguments[0] != "help") {
        return arguments;
    }
    std::vector<std::string> rest(arguments.begin() + 1, arguments.end());
    rest.emplace_back("--help");
    return rest;
}

std::string hint(const std::vector<std::string>& arguments, std::span<const Command> commands) {
    const bool hasCommand = !arguments.empty() && !lacks(commands, arguments[0]);
    return " (see korvane " + (hasCommand ? arguments[0] + " " : "") + "--help)";
}

}  // namespace

std::span<const Command> commands() {
    return kCommands;
}

void add_setting(CLI::App& app, const IntegerSetting& setting, int& value) {
    app.add_option(setting.option, value, setting.summary)
        ->check(CLI::Range(setting.least, setting.most))
        ->capture_default_str();
}

void print_error(const std::string& text) {
    print_line(text);
}

void print_warning(const std::string& text) {
    print_line("warning: " + text);
}

int run_program(std::span<const Command> commands, const std::vector<std::string>& given) {
    const std::vector<std::string> arguments = without_help_command(given);
    CLI::App app("Photo and camera effects from the command line", "korvane");
    app.set_version_flag("-V,--version", std::string("korvane ") + KORVANE_VERSION);
    app.require_subcommand(1);
    app.footer(kFooter);
    // The parser would only say that a command is missing.
    if (!arguments.empty() && !arguments[0].starts_with('-') && lacks(commands, arguments[0])) {
        return report("there is no command '" + arguments[0] + "' (see korvane --help)");
    }
    std::function<void()> work;
    bool isVerbose = false;
    for (const Command& command : commands) {
        CLI::App* subcommand = app.add_subcommand(command.name, command.description);
        subcommand->footer(std::string("Example:\n  ") + command.example);
        subcommand->add_flag("--verbose", isVerbose, "Show the library's log on standard error");
        subcommand->callback([&work, run = command.setup(*subcommand)] { work = run; });
    }
    try {
        // The parser takes its arguments last first.
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::CallForHelp& /*help*/) {
        std::cout << wrap(app.help());
        return 0;
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        return report(error.what() + hint(arguments, commands));
    }
    if (isVerbose) {
        setenv("KORVANE_LOG", "1", 1);
    }
    try {
        work();
        if (!std::cout.flush()) {
            return report("cannot write to standard output");
        }
    } catch (const SomeFailed&) {
        return kExitSomeFailed;
    } catch (const std::bad_alloc&) {
        return report("not enough memory");
    } catch (const std::exception& error) {
        return report(error.what());
    }
    return 0;
}

}  // namespace korvane
