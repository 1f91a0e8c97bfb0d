// SPDX-License-Identifier: Apache-2.0
#include "tools/progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace korvane {
namespace {

constexpr size_t kBarColumns = 24;

size_t terminal_columns() {
    constexpr size_t kUsual = 80;
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsual;
}

// "1:02:03" or "2:03".
std::string clock_text(double seconds) {
    const auto whole = static_cast<unsigned long>(std::lround(seconds));
    char text[40];
    if (whole >= 3600) {
        std::snprintf(text, sizeof(text), "%lu:%02lu:%02lu", whole / 3600, whole / 60 % 60, whole % 60);
    } else {
        std::snprintf(text, sizeof(text), "%lu:%02lu", whole / 60, whole % 60);
    }
    return text;
}

}  // namespace

Progress::Progress(std::string what, size_t all, bool isQuiet)
    : m_What(std::move(what)), m_All(all), m_IsShown(!isQuiet && isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
    erase();
}

void Progress::show(size_t done) {
    if (!m_IsShown) {
        return;
    }
    const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - m_Start;
    const size_t filled = m_All == 0 ? 0 : done * kBarColumns / m_All;
    std::string line = m_What + " [" + std::string(filled, '#') + std::string(kBarColumns - filled, ' ') + "] " +
                       std::to_string(done) + " of " + std::to_string(m_All);
    if (done > 0 && spent.count() > 0) {
        const double rate = static_cast<double>(done) / spent.count();
        char text[32];
        std::snprintf(text, sizeof(text), ", %.1f a second, ", rate);
        line += text + clock_text(static_cast<double>(m_All - done) / rate) + " left";
    }
    // A longer line would wrap, and only its last part could be erased.
    line.resize(std::min(line.size(), terminal_columns() - 1));
    std::fprintf(stderr, "\r%s\033[K", line.c_str());
}

void Progress::erase() {
    if (m_IsShown) {
        std::fprintf(stderr, "\r\033[K");
    }
}

}  // namespace korvane
