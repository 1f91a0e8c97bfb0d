// SPDX-License-Identifier: Apache-2.0
// Collects what the process writes to file descriptor 2 while it lives, and keeps it off the terminal.
#ifndef KORVANE_TESTS_SUPPORT_STANDARD_ERROR_H_
#define KORVANE_TESTS_SUPPORT_STANDARD_ERROR_H_

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

class StandardErrorCapture {
  public:
    StandardErrorCapture() { dup2(fileno(m_File), STDERR_FILENO); }
    ~StandardErrorCapture() {
        dup2(m_Saved, STDERR_FILENO);
        close(m_Saved);
        std::fclose(m_File);
    }
    StandardErrorCapture(const StandardErrorCapture&) = delete;
    StandardErrorCapture& operator=(const StandardErrorCapture&) = delete;

    std::string text() {
        std::ifstream file("/proc/self/fd/" + std::to_string(fileno(m_File)));
        return {std::istreambuf_iterator<char>(file), {}};
    }

    // The log lines of libkorvane.so so far, if KORVANE_LOG is set: without their prefix and the newline at the end.
    std::vector<std::string> log_lines() {
        const std::string prefix = "D/@@@: ";
        std::istringstream stream(text());
        std::vector<std::string> lines;
        for (std::string line; std::getline(stream, line);) {
            if (line.starts_with(prefix)) {
                lines.push_back(line.substr(prefix.size()));
            }
        }
        return lines;
    }

  private:
    std::FILE* m_File = std::tmpfile();
    int m_Saved = dup(STDERR_FILENO);
};

#endif  // KORVANE_TESTS_SUPPORT_STANDARD_ERROR_H_
