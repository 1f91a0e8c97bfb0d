// SPDX-License-Identifier: Apache-2.0
// string_format: printf into one buffer that the library owns.
#ifndef KORVANE_FRAMEWORKS_UTILS_STRING_FORMAT_H_
#define KORVANE_FRAMEWORKS_UTILS_STRING_FORMAT_H_

#include "frameworks/core/export.h"

// Formats into a static buffer of 2048 bytes and returns it. Each call clears the buffer and overwrites the previous
// result: copy what must be kept. Two threads must not call it at the same time. A text that does not fit aborts the
// process: a path that is cut short would name another file.
KORVANE_API char* string_format(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

#endif  // KORVANE_FRAMEWORKS_UTILS_STRING_FORMAT_H_
