// SPDX-License-Identifier: Apache-2.0
// Every function over pixels on buffers of exactly the bytes that its header names, with a forbidden page right before
// or right behind, on every instruction set: vector code may not even read beyond. Sources may not be written.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/kernel_rows.h"
#include "tests/support/run_length.h"
#include "tests/support/simd_targets.h"

namespace {

// Its buffers begin or end at a page which nobody may touch: a stray access, also a mere read, ends the program.
class Walled : public Picture {
  public:
    Walled(bool isAtEnd, int w, int h) : Picture(w, h), m_IsAtEnd(isAtEnd) {}

    unsigned char* block(size_t count, bool isWritten) override {
        const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        const size_t room = (count + page - 1) / page * page;
        void* map = mmap(nullptr, room + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        m_Maps.emplace_back(map, [=](void* start) { munmap(start, room + 2 * page); });
        unsigned char* const start = static_cast<unsigned char*>(map) + page;
        // The emulator does not protect nothing.
        const auto protect = [=](int how) { EXPECT_TRUE(count == 0 || mprotect(start, room, how) == 0); };
        protect(PROT_READ | PROT_WRITE);
        unsigned char* const result = start + (m_IsAtEnd ? room - count : 0);
        // Any bytes will do, and random ones take the emulator long.
        for (size_t i = 0; i < count; ++i) {
            result[i] = static_cast<unsigned char>(i * 2654435761U >> 24);
        }
        protect(isWritten ? PROT_READ | PROT_WRITE : PROT_READ);
        return result;
    }

  private:
    const bool m_IsAtEnd;
    std::vector<std::shared_ptr<void>> m_Maps;
};

std::array<char, 200> gNow;

void tell_where(int signal) {
    [[maybe_unused]] const ssize_t ignored = write(STDERR_FILENO, gNow.data(), strnlen(gNow.data(), gNow.size()));
    ::signal(signal, SIG_DFL);
    raise(signal);
}

size_t call_rows(std::span<const KernelRow> rows, const std::string& target, int width, int height) {
    for (const KernelRow& row : rows) {
        for (const bool isAtEnd : {true, false}) {
            std::snprintf(gNow.data(), gNow.size(), "%s of %d x %d, %s the wall, on %s\n", row.name, width, height,
                          isAtEnd ? "before" : "behind", target.c_str());
            Walled picture(isAtEnd, width, height);
            row.call(picture);
        }
    }
    return 2 * rows.size();
}

TEST(ProtectedPages, AreNotTouched) {
    signal(SIGSEGV, tell_where);
    signal(SIGBUS, tell_where);
    size_t calls = 0;
    for_each_simd_target([&](const std::string& target) {
        calls += call_rows(frame_rows(), target, 640, 360) + call_rows(frame_rows(), target, 478, 362);
        // Around the lengths of vectors of 16 to 256 bytes, and where a row is shorter than one.
        for (const int width : {1, 2, 3, 5, 8, 15, 16, 17, 31, 33, 64, 65, 127, 129, 255, 257, 513}) {
            for (const int height : {1, 2, 7}) {
                calls += call_rows(kernel_rows(), target, width, height);
                calls += call_rows(conversion_rows(), target, width, height);
            }
        }
    });
    report_count(calls, "calls at protected pages");
}

}  // namespace
