// SPDX-License-Identifier: Apache-2.0
#include <map>

#include "applications/filters/filter_description.h"
#include "applications/filters/gpu_image_filter_factory.h"
#include "korvane/version.h"
#include "tools/command.h"
#include "tools/filter_session.h"
#include "tools/manual/manual.h"

namespace korvane {
namespace {

// What as many commands share is described once.
constexpr int kSharedFrom = 3;

// A blank behind a dot or a quote at the start of a line would make it a request.
std::string roff(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c == '\\' || c == '-') {
            result += c == '-' ? "\\-" : "\\e";
        } else if ((c == '.' || c == '\'') && (result.empty() || result.back() == '\n')) {
            result.append("\\&").push_back(c);
        } else {
            result += c;
        }
    }
    return result;
}

std::string bold(const std::string& text) {
    return "\\fB" + roff(text) + "\\fR";
}

std::string italic(const std::string& text) {
    return "\\fI" + roff(text) + "\\fR";
}

std::string names_of(const ManualOption& option) {
    std::string result;
    for (const std::string& name : option.names) {
        result += (result.empty() ? "" : ", ") + bold(name);
    }
    return option.names.empty() ? italic(option.argument) : result;
}

std::string describe(const ManualOption& option) {
    std::string head = names_of(option);
    if (!option.value.empty()) {
        head += " " + italic(option.value) + (option.isRepeated ? " ..." : "");
    }
    if (!option.preset.empty()) {
        head += " (" + roff(option.preset) + " unless given)";
    }
    return ".TP\n" + head + '\n' + roff(option.text) + '\n';
}

std::string key_of(const ManualOption& option) {
    return names_of(option) + option.value + option.text;
}

std::string describe(const ManualCommand& command, const std::map<std::string, int>& uses) {
    std::string arguments;
    std::string own;
    std::string shared;
    for (const ManualOption& option : command.options) {
        if (option.names.empty()) {
            arguments += " " + italic(option.argument) + (option.isRepeated ? "..." : "");
        } else if (option.isRequired) {
            arguments += " " + bold(option.names.front()) + " " + italic(option.value);
        }
        if (!option.names.empty() && uses.at(key_of(option)) >= kSharedFrom) {
            shared += (shared.empty() ? "" : ", ") + bold(option.names.back());
        } else {
            own += describe(option);
        }
    }
    return ".SS " + command.name + "\n" + bold("korvane " + command.name) + " [" + italic("options") + "]" + arguments +
           "\n.PP\n" + roff(command.text) + ".\n" + own + ".PP\nAnd, as below: " + shared +
           ".\n.PP\nExample:\n.PP\n.nf\n.RS\n" + roff(command.example) + "\n.RE\n.fi\n";
}

std::string describe_filters() {
    std::string result;
    for (const FilterDescription* filter : ImageFilterFactory::filters()) {
        result += ".TP\n" + bold(short_filter_name(*filter)) + '\n' + roff(filter->summary) + ".\n";
        for (const FilterParameter& parameter : filter->parameters) {
            result += ".RS\n.TP\n" + bold(parameter.name) + " (" + roff(parameter.range) + ")\n" +
                      roff(parameter.summary) + "\n.RE\n";
        }
    }
    return result;
}

}  // namespace

std::string man_page(std::span<const ManualCommand> commands, const std::string& date) {
    std::map<std::string, int> uses;
    std::string shared;
    for (const ManualCommand& command : commands) {
        for (const ManualOption& option : command.options) {
            if (++uses[key_of(option)] == kSharedFrom && !option.names.empty()) {
                shared += describe(option);
            }
        }
    }
    std::string page =
        ".\\\" Made from the program's tables.\n.TH KORVANE 1 " + date + " \"korvane " + KORVANE_VERSION +
        "\" \"User commands\"\n.SH NAME\nkorvane \\- photo and camera effects from the command line\n"
        ".SH SYNOPSIS\n" +
        bold("korvane") + " " + italic("command") + " [" + italic("options") + "] " + italic("photos") + "\n.br\n" +
        bold("korvane help") + " [" + italic("command") + "]\n.br\n" + bold("korvane --version") +
        "\n.SH DESCRIPTION\nPhotos are read from JPEG, PNG and WebP files by content and written as the "
        "output's name says.\nThey come out upright, with their EXIF, colour profile and XMP.\nA file name "
        "of " +
        bold("-") + " stands for standard input or output.\n.SH COMMANDS\n";
    for (const ManualCommand& command : commands) {
        page += describe(command, uses);
    }
    page += ".SH OPTIONS OF SEVERAL COMMANDS\n" + shared + ".SH FILTERS\nWith the parameters that " + bold("--set") +
            " takes.\n" + describe_filters() + ".SH EXIT STATUS\n";
    for (const ExitCode& row : exit_codes()) {
        page += ".TP\n" + bold(row.code) + '\n' + roff(row.meaning) + ".\n";
    }
    return page + ".SH ENVIRONMENT\n.TP\n" + bold("KORVANE_LOG") +
           "\nWhen set, the library's log goes to standard error, as with " + bold("--verbose") + ".\n";
}

}  // namespace korvane
