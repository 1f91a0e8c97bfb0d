// SPDX-License-Identifier: Apache-2.0
// Collects the library's log lines while it lives. One at a time.
#ifndef KORVANE_TESTS_SUPPORT_LOG_CAPTURE_H_
#define KORVANE_TESTS_SUPPORT_LOG_CAPTURE_H_

#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <vector>

#include "platform/log.h"

class LogCapture {
  public:
    LogCapture() { set_android_log_sink(&LogCapture::sink, this); }
    ~LogCapture() { set_android_log_sink(nullptr, nullptr); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // The texts so far, byte for byte. Every line is checked on arrival to have debug priority and the tag "@@@".
    std::vector<std::string> lines() const {
        const std::lock_guard<std::mutex> guard(m_Mutex);
        return m_Lines;
    }
    void clear() {
        const std::lock_guard<std::mutex> guard(m_Mutex);
        m_Lines.clear();
    }

  private:
    static void sink(void* user, int priority, const char* tag, const char* text) {
        EXPECT_EQ(priority, ANDROID_LOG_DEBUG);
        EXPECT_STREQ(tag, "@@@");
        auto* self = static_cast<LogCapture*>(user);
        const std::lock_guard<std::mutex> guard(self->m_Mutex);
        self->m_Lines.emplace_back(text);
    }

    mutable std::mutex m_Mutex;
    std::vector<std::string> m_Lines;
};

#endif  // KORVANE_TESTS_SUPPORT_LOG_CAPTURE_H_
