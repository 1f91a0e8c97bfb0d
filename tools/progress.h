// SPDX-License-Identifier: Apache-2.0
// One line about work under way, on a terminal only: how much is done, the rate, and the time that is left.
#ifndef KORVANE_TOOLS_PROGRESS_H_
#define KORVANE_TOOLS_PROGRESS_H_

#include <chrono>
#include <cstddef>
#include <string>

namespace korvane {

class Progress {
  public:
    // `what` stands before the numbers: "blur".
    Progress(std::string what, size_t all, bool isQuiet);
    // Leaves no trace of the line.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show(size_t done);
    // Before something else is printed.
    void erase();

  private:
    std::string m_What;
    size_t m_All;
    bool m_IsShown;
    std::chrono::steady_clock::time_point m_Start = std::chrono::steady_clock::now();
};

}  // namespace korvane

#endif  // KORVANE_TOOLS_PROGRESS_H_
