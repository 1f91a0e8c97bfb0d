// SPDX-License-Identifier: Apache-2.0
// Writes the manual page and the completions into a folder. usage: korvane_manual FOLDER DATE
#include <fstream>
#include <iostream>
#include <string>

#include "tools/manual/manual.h"

namespace {

bool write(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) {
        std::cerr << "korvane_manual: cannot write " << path << '\n';
    }
    return static_cast<bool>(file);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: korvane_manual FOLDER DATE\n";
        return 2;
    }
    const std::string folder = argv[1];
    const std::vector<korvane::ManualCommand> commands = korvane::manual_commands();
    const bool isWritten = write(folder + "/korvane.1", korvane::man_page(commands, argv[2])) &&
                           write(folder + "/korvane.bash", korvane::bash_completion(commands)) &&
                           write(folder + "/_korvane", korvane::zsh_completion(commands)) &&
                           write(folder + "/korvane.fish", korvane::fish_completion(commands));
    return isWritten ? 0 : 1;
}
