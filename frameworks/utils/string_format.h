// string_format: printf into one buffer that the library owns.
#ifndef KORVANE_FRAMEWORKS_UTILS_STRING_FORMAT_H_
#define KORVANE_FRAMEWORKS_UTILS_STRING_FORMAT_H_

#include "frameworks/core/export.h"

// Formats into a static buffer of 2048 bytes and returns it. Each call clears the buffer and overwrites the previous
// result: copy what must be kept. Not safe from two threads at once. A text that does not fit with its terminating zero
// aborts the process, because a silently shortened path or message is worse.
KORVANE_API char* string_format(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

#endif  // KORVANE_FRAMEWORKS_UTILS_STRING_FORMAT_H_
