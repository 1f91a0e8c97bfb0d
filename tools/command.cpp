#include "tools/command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include "korvane/version.h"

namespace korvane {
namespace {

constexpr int kExitBadInput = 2;

constexpr Command kCommands[] = {
#define KORVANE_COMMAND(name, description) {#name, description, setup_##name##_command},
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

}  // namespace

std::span<const Command> commands() {
    return kCommands;
}

void print_warning(const std::string& text) {
    print_line("warning: " + text);
}

int run_program(std::span<const Command> commands, const std::vector<std::string>& arguments) {
    CLI::App app("Photo and camera effects from the command line", "korvane");
    app.set_version_flag("--version", std::string("korvane ") + KORVANE_VERSION);
    app.require_subcommand(1);
    // The parser would only say that a command is missing.
    if (!arguments.empty() && !arguments[0].starts_with('-') && lacks(commands, arguments[0])) {
        return report("there is no command '" + arguments[0] + "' (see korvane --help)");
    }
    std::function<void()> work;
    for (const Command& command : commands) {
        CLI::App* subcommand = app.add_subcommand(command.name, command.description);
        subcommand->callback([&work, run = command.setup(*subcommand)] { work = run; });
    }
    try {
        // The parser takes its arguments last first.
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        return report(std::string(error.what()) + " (see korvane --help)");
    }
    try {
        work();
        if (!std::cout.flush()) {
            return report("cannot write to standard output");
        }
    } catch (const std::bad_alloc&) {
        return report("not enough memory");
    } catch (const std::exception& error) {
        return report(error.what());
    }
    return 0;
}

}  // namespace korvane
