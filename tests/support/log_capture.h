// Collects the library's log lines while it lives. One at a time.
#ifndef KORVANE_TESTS_SUPPORT_LOG_CAPTURE_H_
#define KORVANE_TESTS_SUPPORT_LOG_CAPTURE_H_

#include <mutex>
#include <string>
#include <vector>

class LogCapture {
  public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // The texts so far, byte for byte. Every line is checked on arrival to have debug priority and the tag "@@@".
    std::vector<std::string> lines() const;
    void clear();

  private:
    static void sink(void* user, int priority, const char* tag, const char* text);

    mutable std::mutex m_Mutex;
    std::vector<std::string> m_Lines;
};

#endif  // KORVANE_TESTS_SUPPORT_LOG_CAPTURE_H_
