// SPDX-License-Identifier: Apache-2.0
#include "frameworks/gpu/program_cache.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>

#include "frameworks/core/guard.h"

namespace korvane {
namespace {

struct Setting {
    std::mutex mutex;
    std::string directory = KORVANE_PROGRAM_CACHE_DIR;
};

// Never destroyed: a thread may still make scripts while the process ends.
Setting& setting() {
    static auto* const kSetting = new Setting;
    return *kSetting;
}

int check_directory(const char* directory) {
    if (*directory == '\0') {
        return EINVAL;
    }
    struct stat status = {};
    if (stat(directory, &status) != 0) {
        return errno;
    }
    if (!S_ISDIR(status.st_mode)) {
        return ENOTDIR;
    }
    return access(directory, R_OK | W_OK | X_OK) == 0 ? 0 : errno;
}

std::string with_final_slash(std::string directory) {
    if (directory.back() != '/') {
        directory += '/';
    }
    return directory;
}

}  // namespace

int set_program_cache_directory(const char* directory) {
    return guarded(ENOMEM, [&] {
        const int error = directory == nullptr ? 0 : check_directory(directory);
        if (error == 0) {
            std::string wanted = directory == nullptr ? KORVANE_PROGRAM_CACHE_DIR : with_final_slash(directory);
            const std::lock_guard<std::mutex> guard(setting().mutex);
            setting().directory.swap(wanted);
        }
        return error;
    });
}

std::string program_cache_directory() {
    return guarded(std::string(), [] {
        const std::lock_guard<std::mutex> guard(setting().mutex);
        return setting().directory;
    });
}

std::string program_cache_file(const char* name) {
    const std::string directory = program_cache_directory();
    return directory.empty() ? directory : directory + name + ".osb";
}

}  // namespace korvane
