// SPDX-License-Identifier: Apache-2.0
#include "tools/photo/file_io.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "tools/command.h"
#include "tools/photo/formats.h"
#include "tools/photo/interrupts.h"

namespace korvane {
namespace {

namespace fs = std::filesystem;

constexpr size_t kReadBytes = size_t{1} << 20;
constexpr size_t kMaxFileBytes = 0x7FFFFFFF;

[[noreturn]] void fail(const char* what, const std::string& path, const std::string& why) {
    throw CommandError(std::string(what) + " " + path + ": " + why);
}

std::string error_text(int error) {
    return std::generic_category().message(error);
}

[[noreturn]] void fail_to_write(const std::string& path, int error) {
    fail("cannot write", path, error_text(error));
}

class Descriptor {
  public:
    explicit Descriptor(int number) : m_Number(number) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return m_Number; }
    bool isOpen() const { return m_Number >= 0; }

    // False when what was written is not all stored.
    bool close() {
        const int number = m_Number;
        m_Number = -1;
        return number <= STDERR_FILENO || ::close(number) == 0;
    }

  private:
    int m_Number;
};

// 0, or the error.
int write_all(int descriptor, const Bytes& bytes) {
    for (size_t at = 0; at < bytes.size();) {
        const ssize_t count = ::write(descriptor, bytes.data() + at, std::min(kMaxFileBytes, bytes.size() - at));
        if (count < 0 && errno != EINTR) {
            return errno;
        }
        at += count > 0 ? static_cast<size_t>(count) : 0;
    }
    return 0;
}

// The open file that the path names, or -1. Opening it anew would begin at the start of a file that the shell opened.
int named_descriptor(const std::string& path) {
    constexpr char kFolder[] = "/dev/fd/";
    if (path == "-" || path == "/dev/stdout") {
        return STDOUT_FILENO;
    }
    return path.starts_with(kFolder) ? std::atoi(path.c_str() + std::size(kFolder) - 1) : -1;
}

// What stands at the path of an output.
struct Target {
    // Links followed.
    fs::path path;
    bool exists = false;
    bool isStream = false;
    struct stat status = {};
};

Target find_target(const std::string& path, bool noClobber) {
    Target target;
    target.path = path;
    if (named_descriptor(path) >= 0) {
        target.isStream = true;
        return target;
    }
    struct stat link = {};
    const bool isThere = lstat(path.c_str(), &link) == 0;
    if (!isThere && errno != ENOENT) {
        fail_to_write(path, errno);
    }
    target.exists = stat(path.c_str(), &target.status) == 0;
    if (isThere && !target.exists) {
        fail("cannot write", path, "it is a symbolic link to nothing");
    }
    if (!target.exists) {
        return target;
    }
    target.isStream = !S_ISREG(target.status.st_mode);
    if (S_ISDIR(target.status.st_mode)) {
        fail("cannot write", path, "it is a directory");
    }
    if (noClobber && !target.isStream) {
        fail("cannot write", path, "it exists already, and --no-clobber was given");
    }
    if (access(path.c_str(), W_OK) != 0) {
        fail_to_write(path, errno);
    }
    if (!target.isStream) {
        std::error_code error;
        target.path = fs::canonical(path, error);
        if (error) {
            fail_to_write(path, error.value());
        }
    }
    return target;
}

fs::path folder_of(const fs::path& path) {
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

mode_t creation_mode() {
    // The only way to read the mask is to set it.
    static const mode_t mask = [] {
        const mode_t found = umask(077);
        umask(found);
        return found;
    }();
    return 0666 & ~mask;
}

void write_stream(const std::string& path, const Bytes& bytes) {
    const int named = named_descriptor(path);
    Descriptor file(named >= 0 ? dup(named) : open(path.c_str(), O_WRONLY | O_CLOEXEC));
    const int error = file.isOpen() ? write_all(file.get(), bytes) : errno;
    if (error != 0) {
        fail_to_write(path == "-" ? "standard output" : path, error);
    }
}

// Writes the old content over what a failed write left. It needs no space that the file does not have.
void restore(int file, const Bytes& old) {
    [[maybe_unused]] const ssize_t written = pwrite(file, old.data(), old.size(), 0);
    [[maybe_unused]] const int ignored = ftruncate(file, static_cast<off_t>(old.size()));
}

// For files with several names, and in folders where no file can be made. The space is taken first: a full disk must
// not cost the old picture. Neither must a disk that fails, so the picture is kept until the new one is written.
void write_in_place(const std::string& path, const Target& target, const Bytes& bytes) {
    const UninterruptedSection section;
    const Bytes old = read_file(target.path);
    Descriptor file(open(target.path.c_str(), O_WRONLY | O_CLOEXEC));
    if (!file.isOpen()) {
        fail_to_write(path, errno);
    }
    const auto size = static_cast<off_t>(bytes.size());
    int error = posix_fallocate(file.get(), 0, std::max<off_t>(1, size));
    if (error == 0) {
        error = write_all(file.get(), bytes);
    }
    if (error == 0 && ftruncate(file.get(), size) != 0) {
        error = errno;
    }
    if (error != 0) {
        restore(file.get(), old);
    } else if (!file.close()) {
        error = errno;
    }
    if (error != 0) {
        fail_to_write(path, error);
    }
}

// Gives the new file what the old one had. The owner can be kept only by the superuser, and mostly is the same.
int take_over(int file, const Target& target) {
    if (!target.exists) {
        return fchmod(file, creation_mode()) == 0 ? 0 : errno;
    }
    [[maybe_unused]] const int ignored = fchown(file, target.status.st_uid, target.status.st_gid);
    return fchmod(file, target.status.st_mode & 07777) == 0 ? 0 : errno;
}

int move_into_place(const char* from, const fs::path& to, bool noClobber) {
    if (noClobber) {
        if (renameat2(AT_FDCWD, from, AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
            return 0;
        }
        // Some file systems do not know how.
        if (errno != EINVAL && errno != ENOSYS) {
            return errno;
        }
    }
    return rename(from, to.c_str()) == 0 ? 0 : errno;
}

// A short name of its own: that of the target may be as long as names can be.
std::string temporary_name(const fs::path& target) {
    return (folder_of(target) / ".korvane-XXXXXX").string();
}

void write_anew(const std::string& path, const Target& target, const Bytes& bytes, bool noClobber) {
    const UninterruptedSection section;
    std::string temporary = temporary_name(target.path);
    Descriptor file(mkostemp(temporary.data(), O_CLOEXEC));
    if (!file.isOpen()) {
        fail_to_write(path, errno);
    }
    int error = write_all(file.get(), bytes);
    if (error == 0) {
        error = take_over(file.get(), target);
    }
    if (!file.close() && error == 0) {
        error = errno;
    }
    if (error == 0) {
        error = move_into_place(temporary.c_str(), target.path, noClobber);
    }
    if (error != 0) {
        unlink(temporary.c_str());
        fail_to_write(path, error);
    }
}

bool folder_takes_files(const fs::path& path) {
    return access(folder_of(path).c_str(), W_OK | X_OK) == 0;
}

}  // namespace

Bytes read_file(const std::string& path) {
    const std::string name = path == "-" ? "standard input" : path;
    const Descriptor file(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status = {};
    if (!file.isOpen() || fstat(file.get(), &status) != 0) {
        fail("cannot read", name, error_text(errno));
    }
    if (S_ISDIR(status.st_mode)) {
        fail("cannot read", name, "it is a directory");
    }
    Bytes bytes;
    const auto size = static_cast<size_t>(std::max<off_t>(0, status.st_size));
    for (size_t step = std::min(size + 1, kMaxFileBytes);; step = kReadBytes) {
        const size_t had = bytes.size();
        step = std::max(step, kReadBytes);
        bytes.resize(had + step);
        ssize_t count = 0;
        do {
            count = read(file.get(), bytes.data() + had, step);
        } while (count < 0 && errno == EINTR);
        if (count < 0) {
            fail("cannot read", name, error_text(errno));
        }
        bytes.resize(had + static_cast<size_t>(count));
        if (count == 0) {
            return bytes;
        }
        // A device may never end.
        if (!S_ISREG(status.st_mode) && bytes.size() >= 16 && recognize_photo(bytes) == nullptr) {
            return bytes;
        }
        if (bytes.size() > kMaxFileBytes) {
            fail("cannot read", name, "it is larger than 2 GiB");
        }
    }
}

void write_file(const std::string& path, const Bytes& bytes, bool noClobber) {
    const Target target = find_target(path, noClobber);
    if (target.isStream) {
        write_stream(path, bytes);
    } else if (target.exists && (target.status.st_nlink > 1 || !folder_takes_files(target.path))) {
        write_in_place(path, target, bytes);
    } else {
        write_anew(path, target, bytes, noClobber);
    }
}

void check_writable(const std::string& path, bool noClobber) {
    const Target target = find_target(path, noClobber);
    if (!target.isStream && !target.exists && access(folder_of(target.path).c_str(), W_OK | X_OK) != 0) {
        fail_to_write(path, errno);
    }
}

bool is_standard_output(const std::string& path) {
    return named_descriptor(path) == STDOUT_FILENO;
}

bool is_stream(const std::string& path) {
    struct stat status = {};
    return named_descriptor(path) >= 0 ||
           (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode));
}

}  // namespace korvane
