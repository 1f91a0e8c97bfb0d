// SPDX-License-Identifier: Apache-2.0
#include <malloc.h>
#include <spawn.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "tools/bench/bench_server.h"
#include "tools/command.h"
#include "tools/photo/interrupts.h"

extern char** environ;

namespace korvane {
namespace {

struct ServeOptions {
    BenchOptions bench;
    bool opensBrowser = false;
};

void open_browser(const std::string& url) {
    std::string program = "xdg-open";
    std::string argument = url;
    char* const arguments[] = {program.data(), argument.data(), nullptr};
    pid_t child = 0;
    if (posix_spawnp(&child, "xdg-open", nullptr, nullptr, arguments, environ) != 0) {
        print_warning("xdg-open is not there: open the link by hand");
    }
}

// Each preview takes and frees the same few blocks of megabytes. Given back to the system in between, their pages would
// come anew, one fault after the other, which takes longer than a blur. Larger blocks still go back at once.
void keep_freed_blocks() {
#ifdef M_ARENA_MAX
    constexpr int kMaxKeptBlockBytes = 16 << 20;
    constexpr int kMaxKeptBytes = 128 << 20;
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_MMAP_THRESHOLD, kMaxKeptBlockBytes);
    mallopt(M_TRIM_THRESHOLD, kMaxKeptBytes);
#endif
}

void serve(const ServeOptions& options) {
    keep_freed_blocks();
    {
        std::optional<UninterruptedSection> section(std::in_place);
        BenchServer server(options.bench);
        if (!server.is_loopback()) {
            print_warning(
                "others in your network who have the link can use this program and see what is sent, since the "
                "connection is not encrypted");
        }
        std::cout << server.url() << std::endl;
        if (options.opensBrowser) {
            open_browser(server.url());
        }
        std::thread serving([&] { server.run(); });
        while (!interrupt_is_pending()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        server.stop();
        serving.join();
    }
    await_interrupt();
}

}  // namespace

std::function<void()> setup_serve_command(CLI::App& app) {
    auto options = std::make_shared<ServeOptions>();
    app.add_option("--port", options->bench.port, "Where to listen; 0 is any free port")
        ->check(CLI::Range(0, 65535))
        ->capture_default_str();
    app.add_option("--listen", options->bench.address,
                   "An address of this machine in place of 127.0.0.1: whoever reaches it and has the link can use the "
                   "program, and the connection is not encrypted")
        ->capture_default_str();
    app.add_flag("--open", options->opensBrowser, "Open the page in the browser");
    return [options] { serve(*options); };
}

}  // namespace korvane
