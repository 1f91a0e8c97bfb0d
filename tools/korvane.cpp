#include "tools/command.h"

int main(int argc, char** argv) {
    return korvane::run_program(korvane::commands(), std::vector<std::string>(argv + 1, argv + argc));
}
