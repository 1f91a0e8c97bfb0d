// SPDX-License-Identifier: Apache-2.0
// The desktop twin of Android's log: standard error when the environment variable KORVANE_LOG is set, and a sink that
// tests can hang in.
#ifndef KORVANE_PLATFORM_DESKTOP_ANDROID_LOG_H_
#define KORVANE_PLATFORM_DESKTOP_ANDROID_LOG_H_

enum android_LogPriority {
    ANDROID_LOG_VERBOSE = 2,
    ANDROID_LOG_DEBUG = 3,
    ANDROID_LOG_INFO = 4,
    ANDROID_LOG_WARN = 5,
    ANDROID_LOG_ERROR = 6,
};

// Returns 1 when the line went somewhere; 0 when nobody listens, and when memory is short. Safe on any thread.
extern "C" int __android_log_print(int priority, const char* tag, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

// Receives each line before standard error does. `text` is the formatted line, with or without its newline.
using AndroidLogSink = void (*)(void* user, int priority, const char* tag, const char* text);

// Sets the process-wide sink; null removes it. On return no other thread is inside the old sink any more. A sink must
// not log.
void set_android_log_sink(AndroidLogSink sink, void* user);

struct AndroidLogListener {
    AndroidLogSink sink = nullptr;
    void* user = nullptr;
};

// Exchanges the sink for `listener`, which holds the old one before the new one gets its first line: a sink can pass
// lines on, and its owner puts the old one back with a second call.
void swap_android_log_listener(AndroidLogListener& listener);

#endif  // KORVANE_PLATFORM_DESKTOP_ANDROID_LOG_H_
