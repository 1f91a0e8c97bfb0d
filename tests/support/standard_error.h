// Collects what the process writes to file descriptor 2 while it lives, and keeps it off the terminal.
//
// With KORVANE_LOG set this shows the log lines of the loaded libkorvane.so, each as "D/@@@: text".
#ifndef KORVANE_TESTS_SUPPORT_STANDARD_ERROR_H_
#define KORVANE_TESTS_SUPPORT_STANDARD_ERROR_H_

#include <cstdio>
#include <string>
#include <vector>

class StandardErrorCapture {
  public:
    StandardErrorCapture();
    ~StandardErrorCapture();
    StandardErrorCapture(const StandardErrorCapture&) = delete;
    StandardErrorCapture& operator=(const StandardErrorCapture&) = delete;

    std::string text();

    // The library's log lines so far, without their prefix and without the newline at the end.
    std::vector<std::string> log_lines();

  private:
    std::FILE* m_File;
    int m_Saved;
};

#endif  // KORVANE_TESTS_SUPPORT_STANDARD_ERROR_H_
