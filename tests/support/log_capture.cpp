#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

#include "platform/log.h"

LogCapture::LogCapture() {
    set_android_log_sink(&LogCapture::sink, this);
}

LogCapture::~LogCapture() {
    set_android_log_sink(nullptr, nullptr);
}

std::vector<std::string> LogCapture::lines() const {
    const std::lock_guard<std::mutex> guard(m_Mutex);
    return m_Lines;
}

void LogCapture::clear() {
    const std::lock_guard<std::mutex> guard(m_Mutex);
    m_Lines.clear();
}

void LogCapture::sink(void* user, int priority, const char* tag, const char* text) {
    EXPECT_EQ(priority, ANDROID_LOG_DEBUG);
    EXPECT_STREQ(tag, "@@@");
    auto* self = static_cast<LogCapture*>(user);
    const std::lock_guard<std::mutex> guard(self->m_Mutex);
    self->m_Lines.emplace_back(text);
}
