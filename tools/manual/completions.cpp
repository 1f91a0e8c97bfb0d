// SPDX-License-Identifier: Apache-2.0
#include <functional>

#include "tools/manual/manual.h"

namespace korvane {
namespace {

// A text between single quotes, as bash and zsh read it; fish knows no other way to end one.
std::string quoted(const std::string& text, const std::string& escapedQuote) {
    std::string result = "'";
    for (const char c : text) {
        result += c == '\'' ? escapedQuote : std::string(1, c);
    }
    return result + "'";
}

std::string shell(const std::string& text) {
    return quoted(text, "'\\''");
}

std::string joined(const std::vector<std::string>& words) {
    std::string result;
    for (const std::string& word : words) {
        result += (result.empty() ? "" : " ") + word;
    }
    return result;
}

std::string command_names(std::span<const ManualCommand> commands) {
    std::string result = "help";
    for (const ManualCommand& command : commands) {
        result += " " + command.name;
    }
    return result;
}

bool takes_value(const ManualOption& option) {
    return !option.value.empty();
}

std::string option_words(const ManualCommand& command, const std::function<bool(const ManualOption&)>& isMeant) {
    std::string result;
    for (const ManualOption& option : command.options) {
        for (const std::string& name : option.names) {
            result += isMeant(option) ? " " + name : "";
        }
    }
    return result + " ";
}

// A value that ends with its equals sign goes on.
bool goes_on(const ManualOption& option) {
    return !option.suggestions.empty() && option.suggestions.front().ends_with('=');
}

// The rows of a command's values: by the option's name, or by the place of an argument. The last argument may stand for
// several.
std::string bash_values(const ManualCommand& command) {
    std::string result;
    size_t place = 0;
    for (const ManualOption& option : command.options) {
        std::string pattern;
        for (const std::string& name : option.names) {
            pattern += (pattern.empty() ? "" : " | ") + shell(command.name + " " + name);
        }
        if (option.names.empty()) {
            pattern = shell(command.name + " " + std::to_string(place++));
        }
        if (takes_value(option) && (option.takesFile || !option.suggestions.empty())) {
            result += "    " + pattern + ") " +
                      (option.takesFile ? "hasFiles=1" : "values=" + shell(joined(option.suggestions))) + " ;;\n";
        }
        if (option.isRepeated && option.names.empty() && option.takesFile) {
            result += "    " + shell(command.name + " ") + "[0-9]*) hasFiles=1 ;;\n";
        }
    }
    return result;
}

// Within an argument of _arguments, brackets and colons divide.
std::string zsh(const std::string& text) {
    std::string result;
    for (const char c : text) {
        result += (std::string("[]:\\").find(c) == std::string::npos ? "" : "\\") + std::string(1, c);
    }
    return result;
}

std::string zsh_action(const ManualOption& option) {
    if (goes_on(option)) {
        return ":value:{compadd -S \"\" -- " + joined(option.suggestions) + "}";
    }
    if (!option.suggestions.empty()) {
        return ":value:(" + zsh(joined(option.suggestions)) + ")";
    }
    return option.takesFile ? ":file:_files" : ":value: ";
}

std::string zsh_argument(const ManualOption& option, size_t& place) {
    if (option.names.empty()) {
        return shell((option.isRepeated ? "*" : std::to_string(++place)) + zsh_action(option));
    }
    const std::string rest = "[" + zsh(option.text) + "]" + (takes_value(option) ? zsh_action(option) : "");
    const std::string repeat = option.isRepeated && takes_value(option) ? "*" : "";
    std::string result;
    for (const std::string& name : option.names) {
        const std::string others = repeat.empty() ? "(" + joined(option.names) + ")" : "";
        const std::string separator = !takes_value(option) ? "" : name.starts_with("--") ? "=" : "+";
        std::string argument = others;
        argument.append(repeat).append(name).append(separator).append(rest);
        result.append(result.empty() ? "" : " ").append(shell(argument));
    }
    return result;
}

std::string fish(const std::string& text) {
    return quoted(text, "\\'");
}

std::string fish_row(const ManualCommand& command, const ManualOption& option) {
    std::string row = "complete -c korvane -n '__fish_seen_subcommand_from " + command.name + "'";
    for (const std::string& name : option.names) {
        row += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    }
    if (takes_value(option) && !option.names.empty()) {
        row += option.takesFile ? " -r -F" : " -x";
    }
    if (option.names.empty() && option.takesFile) {
        row += " -F";
    }
    if (!option.suggestions.empty()) {
        row += " -a " + fish(joined(option.suggestions));
    }
    return row + (option.names.empty() ? "" : " -d " + fish(option.text)) + '\n';
}

constexpr const char* kOrigin = "# Made from the program's tables.\n";

}  // namespace

std::string bash_completion(std::span<const ManualCommand> commands) {
    std::string options;
    std::string values;
    for (const ManualCommand& command : commands) {
        options += "    " + command.name + ") options='" +
                   option_words(command, [](const auto& /*option*/) { return true; }) + "' valued='" +
                   option_words(command, takes_value) + "' ;;\n";
        values += bash_values(command);
    }
    // bash parts words at '=' and ':' too, which stand in values here; it then takes only what follows the last of
    // them.
    return kOrigin + std::string(R"(_korvane() {
    local line=${COMP_LINE:0:COMP_POINT} words current previous= place=0 word options= valued= values= hasFiles=
    line=${line#*"${COMP_WORDS[0]}"}
    read -ra words <<<"$line"
    [[ $line == *[![:blank:]] ]] || words+=('')
    current=${words[-1]}
    unset 'words[-1]'
    COMPREPLY=()
    case ${words[0]-} in
    '') values=')") +
           command_names(commands) + R"(' options='-h --help -V --version' ;;
    help) values=')" +
           command_names(commands) + R"(' ;;
)" + options +
           R"(    esac
    for word in "${words[@]:1}"; do
        if [ -n "$previous" ]; then
            previous=
        elif [[ $valued == *" $word "* ]]; then
            previous=$word
        elif [[ $word != -?* ]]; then
            place=$((place + 1))
        fi
    done
    if [[ $current == --*=* ]]; then
        previous=${current%%=*} current=${current#*=}
    elif [ -z "$previous" ] && [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
        return
    fi
    case "${words[0]-} ${previous:-$place}" in
)" + values +
           R"(    esac
    if [ -n "$hasFiles" ]; then
        return
    fi
    compopt +o default
    mapfile -t COMPREPLY < <(compgen -W "$values" -- "$current")
    word=${current%"${current##*[:=]}"}
    COMPREPLY=("${COMPREPLY[@]#"$word"}")
    [[ ${COMPREPLY[0]-} != *= ]] || compopt -o nospace
}
complete -o default -F _korvane korvane
)";
}

std::string zsh_completion(std::span<const ManualCommand> commands) {
    std::string names = "'help:Explain a command'";
    std::string cases;
    for (const ManualCommand& command : commands) {
        names += " " + shell(command.name + ":" + command.text);
        cases += "        " + command.name + ")\n            _arguments -s";
        size_t place = 0;
        for (const ManualOption& option : command.options) {
            cases += " \\\n                " + zsh_argument(option, place);
        }
        cases += " ;;\n";
    }
    return "#compdef korvane\n" + std::string(kOrigin) + R"(_korvane() {
    local context state state_descr line
    typeset -A opt_args
    local -a commands=()" +
           names + R"()
    _arguments -C '(- *)'{-h,--help}'[Explain the program]' '(- *)'{-V,--version}'[Show the version]' \
        '1:command:->command' '*::argument:->argument'
    case $state in
    command) _describe command commands ;;
    argument)
        case $words[1] in
        help) _describe command commands ;;
)" + cases +
           R"(        esac
        ;;
    esac
}
_korvane "$@"
)";
}

std::string fish_completion(std::span<const ManualCommand> commands) {
    std::string result = kOrigin +
                         std::string(
                             "complete -c korvane -f\n"
                             "complete -c korvane -n __fish_use_subcommand -s h -l help\n"
                             "complete -c korvane -n __fish_use_subcommand -s V -l version\n"
                             "complete -c korvane -n __fish_use_subcommand -a help -d 'Explain a command'\n"
                             "complete -c korvane -n '__fish_seen_subcommand_from help' -a ") +
                         fish(command_names(commands)) + "\n";
    for (const ManualCommand& command : commands) {
        result +=
            "complete -c korvane -n __fish_use_subcommand -a " + command.name + " -d " + fish(command.text) + "\n";
        for (const ManualOption& option : command.options) {
            result += fish_row(command, option);
        }
    }
    return result;
}

}  // namespace korvane
