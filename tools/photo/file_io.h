// SPDX-License-Identifier: Apache-2.0
// Whole files in and out. All functions throw CommandError with the file's name and the cause.
#ifndef KORVANE_TOOLS_PHOTO_FILE_IO_H_
#define KORVANE_TOOLS_PHOTO_FILE_IO_H_

#include <string>

#include "tools/photo/photo.h"

namespace korvane {

// All bytes of a file, a pipe or, for "-", standard input.
Bytes read_file(const std::string& path);

// "-" is standard output; pipes and devices are written as they are. A file appears whole or not at all, also after an
// interrupt. An existing one keeps its permissions and its other hard links; a symbolic link is followed.
void write_file(const std::string& path, const Bytes& bytes, bool noClobber);

// Throws what write_file would throw, as far as can be seen before there are bytes.
void check_writable(const std::string& path, bool noClobber);

// Standard output, a pipe or a device: nothing whose name says which format is wanted.
bool is_stream(const std::string& path);

bool is_standard_output(const std::string& path);

}  // namespace korvane

#endif  // KORVANE_TOOLS_PHOTO_FILE_IO_H_
