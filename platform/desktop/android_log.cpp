// SPDX-License-Identifier: Apache-2.0
#include "platform/desktop/android_log.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <utility>

#include "frameworks/core/guard.h"

namespace {

std::mutex gMutex;
AndroidLogListener gListener;

std::string format_text(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    if (length <= 0) {
        return {};
    }
    std::string text(static_cast<size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

char priority_letter(int priority) {
    constexpr char kLetters[] = "??VDIWE";
    return priority >= 0 && priority < static_cast<int>(sizeof(kLetters)) - 1 ? kLetters[priority] : '?';
}

// Called with gMutex locked.
void pass_on(int priority, const char* tag, const std::string& text, bool toStandardError) {
    if (gListener.sink != nullptr) {
        gListener.sink(gListener.user, priority, tag, text.c_str());
    }
    if (toStandardError) {
        const char* end = text.empty() || text.back() != '\n' ? "\n" : "";
        std::fprintf(stderr, "%c/%s: %s%s", priority_letter(priority), tag, text.c_str(), end);
    }
}

}  // namespace

int __android_log_print(int priority, const char* tag, const char* format, ...) {
    const bool toStandardError = std::getenv("KORVANE_LOG") != nullptr;
    const std::lock_guard<std::mutex> guard(gMutex);
    if (gListener.sink == nullptr && !toStandardError) {
        return 0;
    }
    va_list arguments;
    va_start(arguments, format);
    const int went = korvane::guarded(0, [&] {
        pass_on(priority, tag, format_text(format, arguments), toStandardError);
        return 1;
    });
    va_end(arguments);
    return went;
}

void set_android_log_sink(AndroidLogSink sink, void* user) {
    AndroidLogListener listener{sink, user};
    swap_android_log_listener(listener);
}

void swap_android_log_listener(AndroidLogListener& listener) {
    const std::lock_guard<std::mutex> guard(gMutex);
    std::swap(gListener, listener);
}
