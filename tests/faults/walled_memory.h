// SPDX-License-Identifier: Apache-2.0
// Buffers that begin or end at a page which nobody may touch: a stray access, also a mere read, ends the program.
#ifndef KORVANE_TESTS_FAULTS_WALLED_MEMORY_H_
#define KORVANE_TESTS_FAULTS_WALLED_MEMORY_H_

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <new>
#include <utility>
#include <vector>

class WalledMemory {
  public:
    explicit WalledMemory(bool isAtEnd) : m_IsAtEnd(isAtEnd) {}
    ~WalledMemory() {
        for (const auto& [start, bytes] : m_Maps) {
            munmap(start, bytes);
        }
    }
    WalledMemory(const WalledMemory&) = delete;
    WalledMemory& operator=(const WalledMemory&) = delete;

    unsigned char* bytes(size_t count) { return block(count, PROT_READ | PROT_WRITE); }

    // Not to be written either.
    unsigned char* source(size_t count) { return block(count, PROT_READ); }

    template <typename T>
    T* numbers(size_t count) {
        return reinterpret_cast<T*>(bytes(count * sizeof(T)));
    }

  private:
    unsigned char* block(size_t count, int protection) {
        const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        const size_t room = (count + page - 1) / page * page;
        void* map = mmap(nullptr, room + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (map == MAP_FAILED) {
            throw std::bad_alloc();
        }
        m_Maps.emplace_back(map, room + 2 * page);
        unsigned char* const start = static_cast<unsigned char*>(map) + page;
        mprotect(start, room, PROT_READ | PROT_WRITE);
        unsigned char* const result = start + (m_IsAtEnd ? room - count : 0);
        // Any bytes will do, and random ones take the emulator long.
        for (size_t i = 0; i < count; ++i) {
            result[i] = static_cast<unsigned char>(i * 2654435761U >> 24);
        }
        mprotect(start, room, protection);
        return result;
    }

    bool m_IsAtEnd;
    std::vector<std::pair<void*, size_t>> m_Maps;
};

#endif  // KORVANE_TESTS_FAULTS_WALLED_MEMORY_H_
