// SPDX-License-Identifier: Apache-2.0
// Makes one allocation of the library fail, and sees what the library gives back.
//
// A program that links failing_allocator.cpp replaces operator new and delete, and its linker options (CMakeLists.txt)
// send its calls of malloc, calloc, realloc and free through here. Only what the library's own code asks for counts,
// directly or through the C++ standard library: the driver, the virtual machine, libjpeg and the C library get what
// they ask for. Who asks is told by the address of the caller. The library is linked statically, so it lies in the
// program.
#ifndef KORVANE_TESTS_SHORTAGE_FAILING_ALLOCATOR_H_
#define KORVANE_TESTS_SHORTAGE_FAILING_ALLOCATOR_H_

#include <cstddef>

class Shortage {
  public:
    // The `failing`-th allocation, counted from 1, fails: on any thread, while during() runs. 0: none does. One object
    // at a time.
    explicit Shortage(size_t failing);
    Shortage(const Shortage&) = delete;
    Shortage& operator=(const Shortage&) = delete;

    // From its birth to its end allocations count.
    struct Armed {
        Armed();
        ~Armed();
    };

    // Runs a call of the library. All during() of one object count together.
    template <typename Call>
    auto during(const Call& call) {
        const Armed armed;
        return call();
    }

    // Whether the allocation came and failed.
    static bool has_failed();

    // Blocks taken in during() and not given back so far.
    static size_t live_blocks();

    // What is live now stays for the life of the process, on purpose.
    static void keep_live_blocks();
};

#endif  // KORVANE_TESTS_SHORTAGE_FAILING_ALLOCATOR_H_
