// SPDX-License-Identifier: Apache-2.0
// FlushDenormals: while it lives, the thread's arithmetic takes and gives denormal numbers as zero, on x86-64 and
// 64-bit ARM. It is for speed; other processors go without.
//
// Compilers do not know that arithmetic depends on this mode. So the arithmetic must stand in a function of its own, in
// another source file or behind a pointer, which is called while an instance lives.
#ifndef KORVANE_ALGORITHMS_FLUSH_DENORMALS_H_
#define KORVANE_ALGORITHMS_FLUSH_DENORMALS_H_

#include <cstdint>

#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

namespace korvane {

class FlushDenormals {
  public:
    FlushDenormals() : m_Before(mode()) { set_mode(m_Before | kFlush); }
    ~FlushDenormals() { set_mode(m_Before); }

    FlushDenormals(const FlushDenormals&) = delete;
    FlushDenormals& operator=(const FlushDenormals&) = delete;

  private:
#if defined(__x86_64__)
    using Mode = uint32_t;
    static constexpr Mode kFlush = 0x8040;  // flush-to-zero, denormals-are-zero

    static Mode mode() {
        return _mm_getcsr();
    }
    static void set_mode(Mode mode) {
        _mm_setcsr(mode);
    }
#elif defined(__aarch64__)
    using Mode = uint64_t;
    static constexpr Mode kFlush = uint64_t{1} << 24;

    static Mode mode() {
        Mode mode = 0;
        asm volatile("mrs %0, fpcr" : "=r"(mode));
        return mode;
    }
    static void set_mode(Mode mode) {
        asm volatile("msr fpcr, %0" : : "r"(mode) : "memory");
    }
#else
    using Mode = uint32_t;
    static constexpr Mode kFlush = 0;

    static Mode mode() {
        return 0;
    }
    static void set_mode(Mode) {}
#endif

    Mode m_Before;
};

}  // namespace korvane

#endif  // KORVANE_ALGORITHMS_FLUSH_DENORMALS_H_
