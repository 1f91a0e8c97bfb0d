// Where program binaries are kept.
#ifndef KORVANE_FRAMEWORKS_GPU_PROGRAM_CACHE_H_
#define KORVANE_FRAMEWORKS_GPU_PROGRAM_CACHE_H_

#include <string>

namespace korvane {

// With its final slash; KORVANE_PROGRAM_CACHE_DIR of the build unless a test set another.
const std::string& program_cache_directory();

// For tests, before any other thread makes a script.
void set_program_cache_directory(const std::string& directory);

}  // namespace korvane

#endif  // KORVANE_FRAMEWORKS_GPU_PROGRAM_CACHE_H_
