// SPDX-License-Identifier: Apache-2.0
// How a subcommand joins the command line program.
//
// A command NAME is one file, tools/command_NAME.cpp, that defines `setup_NAME_command`, plus one row in
// tools/commands.def and one line in tools/CMakeLists.txt. The setup function declares the command's options on its
// own CLI::App and returns what to do once they are parsed. The work reports bad input by throwing CommandError; every
// such text becomes one line on standard error and exit code 2. Options are held in a shared object that the returned
// function keeps alive:
//
//     std::function<void()> setup_blur_command(CLI::App& app) {
//         auto options = std::make_shared<BlurOptions>();
//         app.add_option("input", options->input, "the photo")->required();
//         return [options] { blur(*options); };
//     }
#ifndef KORVANE_TOOLS_COMMAND_H_
#define KORVANE_TOOLS_COMMAND_H_

#include <exception>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace korvane {

// Bad input or a failed output. The text names the cause and the file or option, without the program's name.
class CommandError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Wrong whatever the photo is, an argument or the machine: several photos would all fail for it.
class UsageError : public CommandError {
  public:
    using CommandError::CommandError;
};

// Some of several photos failed. Each has had its line on standard error already.
class SomeFailed : public std::exception {};

struct IntegerSetting;

struct Command {
    const char* name;
    const char* description;
    const char* example;
    std::function<void()> (*setup)(CLI::App& app);
};

// Every command of the program, in the order of its help page.
std::span<const Command> commands();

// The type of an option whose value is the name of a file, for help and completions.
inline constexpr const char* kFileValue = "FILE";

// What a shell offers for the option's value. Nothing is refused by this.
void suggest(CLI::Option* option, const std::vector<std::string>& values);
std::vector<std::string> suggestions(CLI::Option& option);

// Declares all commands on the parser; once it has parsed, `work` is what the chosen one does.
void declare_commands(CLI::App& app, std::span<const Command> commands, std::function<void()>& work, bool& isVerbose);

// The value of an option as help shows it, "INT in [1 - 100]".
std::string describe_value(const CLI::Option& option);

struct ExitCode {
    const char* code;
    const char* meaning;
};
std::span<const ExitCode> exit_codes();

// Breaks lines of more than 100 columns; what follows begins at column `indent`.
std::string wrap(const std::string& text, size_t indent);

// Runs the program on `arguments` (without the program's own name): 0 when all went well or help was asked for, 2 after
// one line on standard error for any bad input or usage, 1 when some of several photos failed.
int run_program(std::span<const Command> commands, const std::vector<std::string>& arguments);

// Adds the option that the row names, with its range and default.
void add_setting(CLI::App& app, const IntegerSetting& setting, int& value);

// One line on standard error.
void print_error(const std::string& text);
void print_warning(const std::string& text);

#define KORVANE_COMMAND(name, description, example) std::function<void()> setup_##name##_command(CLI::App& app);
#include "tools/commands.def"
#undef KORVANE_COMMAND

}  // namespace korvane

#endif  // KORVANE_TOOLS_COMMAND_H_
