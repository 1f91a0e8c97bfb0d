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

constexpr ExitCode kExitCodes[] = {
    {"0", "all went well"},
    {"1", "of several photos some failed: one line for each, and the others are written"},
    {"2", "bad input, bad usage or a failed output: one line on standard error and no file written"},
    {"128 + N", "ended by the signal N, 130 for an interrupt: no half file is left"},
};

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

std::string footer() {
    std::string text = "'korvane help COMMAND' explains a command.\nExit codes:\n";
    for (const ExitCode& row : kExitCodes) {
        const std::string start = std::string("  ") + row.code;
        text += start + std::string(kHelpTextColumn - start.size(), ' ') + row.meaning + '\n';
    }
    return text;
}

// The parser's own way names the type of a bounded number twice.
class HelpFormatter : public CLI::Formatter {
  public:
    std::string make_option_opts(const CLI::Option* option) const override {
        const std::string type = option->get_type_name();
        std::string text = CLI::Formatter::make_option_opts(option);
        const size_t at = type.empty() ? std::string::npos : text.find(type);
        return at == std::string::npos ? text : text.replace(at, type.size(), describe_value(*option));
    }
};

// Arguments and outputs are files unless the command says more of them.
void name_files(CLI::App& app) {
    for (CLI::Option* option : app.get_options()) {
        const bool isPath = option->get_positional() || option->check_lname("output");
        if (isPath && option->get_type_name() == "TEXT" && suggestions(*option).empty()) {
            option->type_name(kFileValue);
        }
    }
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

void suggest(CLI::Option* option, const std::vector<std::string>& values) {
    const auto accept = [](std::string& /*value*/) { return std::string(); };
    option->check(CLI::Validator(accept, "", CLI::detail::join(values, "\n")));
}

std::vector<std::string> suggestions(CLI::Option& option) {
    for (int i = 0;; ++i) {
        try {
            const std::string& values = option.get_validator(i)->get_name();
            if (!values.empty()) {
                return CLI::detail::split(values, '\n');
            }
        } catch (const CLI::OptionNotFound&) {
            return {};
        }
    }
}

std::string describe_value(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    const size_t colon = type.find(':');
    return colon == std::string::npos || colon + 1 == type.size() ? type : type.substr(colon + 1);
}

std::span<const ExitCode> exit_codes() {
    return kExitCodes;
}

std::string wrap(const std::string& text, size_t indent) {
    std::string result;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        while (line.size() > kHelpColumns) {
            const size_t blank = line.rfind(' ', kHelpColumns);
            if (blank == std::string::npos || blank <= indent) {
                break;
            }
            result += line.substr(0, blank) + '\n';
            line = std::string(indent, ' ') + line.substr(blank + 1);
        }
        result += line + '\n';
    }
    return result;
}

void declare_commands(CLI::App& app, std::span<const Command> commands, std::function<void()>& work, bool& isVerbose) {
    app.description("Photo and camera effects from the command line");
    app.name("korvane");
    app.set_version_flag("-V,--version", std::string("korvane ") + KORVANE_VERSION);
    app.require_subcommand(1);
    app.footer(footer());
    // Subcommands take it over.
    app.formatter(std::make_shared<HelpFormatter>());
    for (const Command& command : commands) {
        CLI::App* subcommand = app.add_subcommand(command.name, command.description);
        subcommand->footer(std::string("Example:\n  ") + command.example);
        subcommand->add_flag("--verbose", isVerbose, "Show the library's log on standard error");
        subcommand->callback([&work, run = command.setup(*subcommand)] { work = run; });
        name_files(*subcommand);
    }
}

int run_program(std::span<const Command> commands, const std::vector<std::string>& given) {
    const std::vector<std::string> arguments = without_help_command(given);
    // The parser would only say that a command is missing.
    if (!arguments.empty() && !arguments[0].starts_with('-') && lacks(commands, arguments[0])) {
        return report("there is no command '" + arguments[0] + "' (see korvane --help)");
    }
    CLI::App app;
    std::function<void()> work;
    bool isVerbose = false;
    declare_commands(app, commands, work, isVerbose);
    try {
        // The parser takes its arguments last first.
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::CallForHelp& /*help*/) {
        std::cout << wrap(app.help(), kHelpTextColumn);
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
