// SPDX-License-Identifier: Apache-2.0
#include "tests/faults/failing_files.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <set>
#include <string_view>

namespace {

constexpr size_t kMostDescriptors = 1024;

char gFolder[4096];
FileFault gFault;
std::atomic<size_t> gCount{0};
std::atomic<const char*> gFailed{nullptr};
std::atomic<bool> gIsOurs[kMostDescriptors];

bool is_ours(const char* path) {
    return gFault.call != 0 && path != nullptr && (path[0] != '/' || strncmp(path, gFolder, strlen(gFolder)) == 0);
}

bool is_ours(int file) {
    return gFault.call != 0 && file >= 0 && static_cast<size_t>(file) < kMostDescriptors && gIsOurs[file];
}

bool is_ours(FILE* file) {
    return is_ours(fileno(file));
}

void remember(int file, bool isOurs) {
    if (file >= 0 && static_cast<size_t>(file) < kMostDescriptors) {
        gIsOurs[file] = isOurs;
    }
}

template <typename Result, typename... Arguments>
Result real(const char* name, Arguments... arguments) {
    return reinterpret_cast<Result (*)(Arguments...)>(dlsym(RTLD_NEXT, name))(arguments...);
}

// A program cannot ask: it leaves the name in the file of its environment.
void report(const char* name) {
    gFailed = name;
    const char* path = getenv("KORVANE_FAULT_REPORT");
    const int file = path == nullptr ? -1 : real<int>("open", path, O_WRONLY | O_CREAT | O_APPEND, 0666);
    if (file >= 0) {
        [[maybe_unused]] const ssize_t ignored = real<ssize_t>("write", file, name, strlen(name));
        real<int>("close", file);
    }
}

// Whether this call of ours is the one.
bool fails(const char* name) {
    static const std::set<std::string_view> kTakesSpace = {"open",   "fopen",  "mkostemp",        "write",
                                                           "fwrite", "fflush", "posix_fallocate", "mkdir"};
    const size_t count = ++gCount;
    const bool isNow = count == gFault.call || (gFault.lasts && count > gFault.call && kTakesSpace.count(name) != 0);
    if (isNow) {
        report(name);
        errno = gFault.error;
    }
    return isNow;
}

template <typename Result>
constexpr Result failure() {
    if constexpr (std::is_signed_v<Result>) {
        return -1;
    }
    return {};
}

template <typename Result, typename Subject, typename... Arguments>
Result pass(const char* name, Subject subject, Arguments... arguments) {
    const bool counts = is_ours(subject) && gFault.error != 0;
    return counts && fails(name) ? failure<Result>() : real<Result>(name, arguments...);
}

// Bytes, or things of `size` bytes.
template <typename Subject, typename Transfer>
auto pass_bytes(const char* name, Subject subject, size_t count, const Transfer& transfer) {
    if (!is_ours(subject) || (gFault.error == 0 && count < 2) || !fails(name)) {
        return transfer(count);
    }
    return gFault.error == 0 ? transfer(count / 2) : failure<decltype(transfer(count))>();
}

// What is closed is closed, whatever the answer.
template <typename Subject>
int pass_close(const char* name, Subject subject, int file) {
    const bool isFailing = is_ours(subject) && gFault.error != 0 && fails(name);
    const int error = errno;
    remember(file, false);
    const int result = real<int>(name, subject);
    errno = isFailing ? error : errno;
    return isFailing ? -1 : result;
}

template <typename File>
File opened(File file, bool isOurs) {
    if constexpr (std::is_pointer_v<File>) {
        remember(file == nullptr ? -1 : fileno(file), isOurs);
    } else {
        remember(file, isOurs);
    }
    return file;
}

// KORVANE_FAULT="CALL ERRNO LASTS", for the files under KORVANE_FAULT_FOLDER.
__attribute__((constructor)) void read_orders() {
    const char* orders = getenv("KORVANE_FAULT");
    FileFault fault = {};
    int lasts = 0;
    if (orders != nullptr && sscanf(orders, "%zu %d %d", &fault.call, &fault.error, &lasts) == 3) {
        fault.lasts = lasts != 0;
        remember(STDIN_FILENO, true);
        remember(STDOUT_FILENO, true);
        fail_files(getenv("KORVANE_FAULT_FOLDER"), fault);
    }
}

}  // namespace

void fail_files(const char* folder, FileFault fault) {
    snprintf(gFolder, sizeof(gFolder), "%s", folder);
    gCount = 0;
    gFailed = nullptr;
    gFault = fault;
}

const char* failed_file_call() {
    return gFailed;
}

#pragma GCC visibility push(default)
extern "C" {

int open(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const int mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, int) : 0;
    va_end(rest);
    return opened(pass<int>("open", path, path, flags, mode), is_ours(path));
}

#define KORVANE_OPEN(result, name, subject, parameters, ...)                        \
    result name parameters {                                                        \
        return opened(pass<result>(#name, subject, __VA_ARGS__), is_ours(subject)); \
    }
KORVANE_OPEN(FILE*, fopen, path, (const char* path, const char* mode), path, mode)
KORVANE_OPEN(int, mkostemp, pattern, (char* pattern, int flags), pattern, flags)
KORVANE_OPEN(int, dup, file, (int file), file)

FILE* fopen64(const char* path, const char* mode) {
    return fopen(path, mode);
}

int mkstemp(char* pattern) {
    return mkostemp(pattern, 0);
}

// `part` of what was to be moved.
#define KORVANE_MOVE(result, name, parameters, ...)                                                           \
    result name parameters {                                                                                  \
        return pass_bytes(#name, file, count, [&](size_t part) { return real<result>(#name, __VA_ARGS__); }); \
    }
KORVANE_MOVE(ssize_t, read, (int file, void* to, size_t count), file, to, part)
KORVANE_MOVE(ssize_t, write, (int file, const void* from, size_t count), file, from, part)
KORVANE_MOVE(size_t, fread, (void* to, size_t size, size_t count, FILE* file), to, size, part, file)
KORVANE_MOVE(size_t, fwrite, (const void* from, size_t size, size_t count, FILE* file), from, size, part, file)

int close(int file) {
    return pass_close("close", file, file);
}

int fclose(FILE* file) {
    return pass_close("fclose", file, fileno(file));
}

int posix_fallocate(int file, off_t offset, off_t length) {
    const int result = pass<int>("posix_fallocate", file, file, offset, length);
    return result == -1 ? gFault.error : result;
}

// The rest fails with nothing done.
#define KORVANE_FAIL(result, name, subject, parameters, ...) \
    result name parameters {                                 \
        return pass<result>(#name, subject, __VA_ARGS__);    \
    }
KORVANE_FAIL(char*, realpath, path, (const char* path, char* to) noexcept, path, to)
KORVANE_FAIL(int, fseek, file, (FILE * file, long offset, int origin), file, offset, origin)
KORVANE_FAIL(long, ftell, file, (FILE * file), file)
KORVANE_FAIL(int, fflush, file, (FILE * file), file)
KORVANE_FAIL(off64_t, lseek64, file, (int file, off64_t offset, int origin) noexcept, file, offset, origin)
KORVANE_FAIL(int, fstat, file, (int file, struct stat* status) noexcept, file, status)
KORVANE_FAIL(int, fchmod, file, (int file, mode_t mode) noexcept, file, mode)
KORVANE_FAIL(int, fchown, file, (int file, uid_t user, gid_t group) noexcept, file, user, group)
KORVANE_FAIL(int, ftruncate, file, (int file, off_t length) noexcept, file, length)
KORVANE_FAIL(int, stat, path, (const char* path, struct stat* status) noexcept, path, status)
KORVANE_FAIL(int, lstat, path, (const char* path, struct stat* status) noexcept, path, status)
KORVANE_FAIL(int, access, path, (const char* path, int mode) noexcept, path, mode)
KORVANE_FAIL(int, mkdir, path, (const char* path, mode_t mode) noexcept, path, mode)
KORVANE_FAIL(int, unlink, path, (const char* path) noexcept, path)
KORVANE_FAIL(int, rename, from, (const char* from, const char* to) noexcept, from, to)
KORVANE_FAIL(int, renameat2, from, (int old, const char* from, int other, const char* to, unsigned flags) noexcept, old,
             from, other, to, flags)

}  // extern "C"
