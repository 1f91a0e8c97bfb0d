// SPDX-License-Identifier: Apache-2.0
// Where compiled GPU programs are kept between runs, so that the next start compiles nothing.
//
// Every script that has a name reads NAME.osb from this directory and writes it back; a directory that cannot be read
// or written costs time only. Unless a program sets another, it is KORVANE_PROGRAM_CACHE_DIR of the build, which an
// Android app cannot write: an app sets the folder of Context.getCodeCacheDir(), which the system empties when the app
// or the system is updated, and with it binaries that a new driver would refuse.
#ifndef KORVANE_FRAMEWORKS_GPU_PROGRAM_CACHE_H_
#define KORVANE_FRAMEWORKS_GPU_PROGRAM_CACHE_H_

#include <string>

#include "frameworks/core/export.h"

namespace korvane {

// Makes `directory`, UTF-8, with or without a final slash, the place of the cache; null brings the build's default
// back. May be called at any time from any thread; scripts made later use it. Result: 0, or an error number, and
// then nothing has changed: EINVAL for an empty name, ENOMEM when memory is short, ENOTDIR for a file, and what the
// system says of a directory that is missing (ENOENT) or may not be read or written (EACCES, EROFS).
KORVANE_API int set_program_cache_directory(const char* directory);

// The directory in use, with its final slash. Empty when memory is short.
KORVANE_API std::string program_cache_directory();

// Where the script `name` is kept; empty, which names no file, when the directory is. Throws std::bad_alloc when memory
// is short for the name itself.
std::string program_cache_file(const char* name);

}  // namespace korvane

#endif  // KORVANE_FRAMEWORKS_GPU_PROGRAM_CACHE_H_
