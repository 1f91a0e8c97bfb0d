// SPDX-License-Identifier: Apache-2.0
#include "tools/command.h"
#include "tools/photo/interrupts.h"

int main(int argc, char** argv) {
    korvane::watch_interrupts();
    return korvane::run_program(korvane::commands(), std::vector<std::string>(argv + 1, argv + argc));
}
