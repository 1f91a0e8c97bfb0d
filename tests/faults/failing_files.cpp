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

bool takes_space(const char* name) {
    for (const char* space : {"open", "fopen", "mkostemp", "write", "fwrite", "fflush", "posix_fallocate", "mkdir"}) {
        if (strcmp(name, space) == 0) {
            return true;
        }
    }
    return false;
}

// Whether this call of ours is the one.
bool fails(const char* name) {
    const size_t count = ++gCount;
    const bool isNow = count == gFault.call || (gFault.lasts && count > gFault.call && takes_space(name));
    if (isNow) {
        report(name);
        errno = gFault.error;
    }
    return isNow;
}

template <typename Result, typename Subject, typename... Arguments>
Result pass(const char* name, Subject subject, Result failure, Arguments... arguments) {
    const bool counts = is_ours(subject) && gFault.error != 0;
    return counts && fails(name) ? failure : real<Result>(name, arguments...);
}

// Bytes, or things of `size` bytes. The failure is that of the function.
template <typename Result, typename Subject, typename Transfer>
Result pass_bytes(const char* name, Subject subject, Result failure, size_t count, const Transfer& transfer) {
    if (!is_ours(subject) || (gFault.error == 0 && count < 2) || !fails(name)) {
        return transfer(count);
    }
    return gFault.error == 0 ? transfer(count / 2) : failure;
}

// What is closed is closed, whatever the answer.
template <typename Result, typename Subject>
Result pass_close(const char* name, Subject subject, int file) {
    const bool isFailing = is_ours(subject) && gFault.error != 0 && fails(name);
    const int error = errno;
    remember(file, false);
    const auto result = real<Result>(name, subject);
    errno = isFailing ? error : errno;
    return isFailing ? Result(-1) : result;
}

int opened(int file, bool isOurs) {
    remember(file, isOurs);
    return file;
}

FILE* opened(FILE* file, bool isOurs) {
    remember(file == nullptr ? -1 : fileno(file), isOurs);
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
    return opened(pass("open", path, -1, path, flags, mode), is_ours(path));
}

FILE* fopen(const char* path, const char* mode) {
    return opened(pass("fopen", path, static_cast<FILE*>(nullptr), path, mode), is_ours(path));
}

FILE* fopen64(const char* path, const char* mode) {
    return fopen(path, mode);
}

int mkostemp(char* pattern, int flags) {
    const bool isOurs = is_ours(pattern);
    return opened(pass("mkostemp", pattern, -1, pattern, flags), isOurs);
}

int mkstemp(char* pattern) {
    return mkostemp(pattern, 0);
}

int dup(int file) {
    return opened(pass("dup", file, -1, file), is_ours(file));
}

ssize_t read(int file, void* to, size_t count) {
    return pass_bytes("read", file, ssize_t{-1}, count,
                      [&](size_t bytes) { return real<ssize_t>("read", file, to, bytes); });
}

ssize_t write(int file, const void* from, size_t count) {
    return pass_bytes("write", file, ssize_t{-1}, count,
                      [&](size_t bytes) { return real<ssize_t>("write", file, from, bytes); });
}

size_t fread(void* to, size_t size, size_t count, FILE* file) {
    return pass_bytes("fread", file, size_t{0}, count,
                      [&](size_t things) { return real<size_t>("fread", to, size, things, file); });
}

size_t fwrite(const void* from, size_t size, size_t count, FILE* file) {
    return pass_bytes("fwrite", file, size_t{0}, count,
                      [&](size_t things) { return real<size_t>("fwrite", from, size, things, file); });
}

int close(int file) {
    return pass_close<int>("close", file, file);
}

int fclose(FILE* file) {
    return pass_close<int>("fclose", file, fileno(file));
}

char* realpath(const char* path, char* to) noexcept {
    return pass("realpath", path, static_cast<char*>(nullptr), path, to);
}

int posix_fallocate(int file, off_t offset, off_t length) {
    return pass("posix_fallocate", file, gFault.error, file, offset, length);
}

// The rest fails with -1 and nothing done.
#define KORVANE_FAIL(result, name, subject, parameters, ...)  \
    result name parameters {                                  \
        return pass(#name, subject, result(-1), __VA_ARGS__); \
    }
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
