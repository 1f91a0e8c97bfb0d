#include "frameworks/gpu/program_cache.h"

namespace korvane {
namespace {

std::string& directory_setting() {
    static std::string directory = KORVANE_PROGRAM_CACHE_DIR;
    return directory;
}

}  // namespace

const std::string& program_cache_directory() {
    return directory_setting();
}

void set_program_cache_directory(const std::string& directory) {
    directory_setting() = directory;
}

}  // namespace korvane
