// SPDX-License-Identifier: Apache-2.0
#include "tools/photo/interrupts.h"

#include <semaphore.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <new>
#include <shared_mutex>
#include <thread>

namespace korvane {
namespace {

constexpr std::array<int, 3> kInterrupts = {SIGINT, SIGTERM, SIGHUP};

// The first interrupt that came, or 0. Written in a signal handler.
std::atomic<int> gSignal{0};
static_assert(std::atomic<int>::is_always_lock_free);
std::atomic<bool> gIsEnding{false};
sem_t gArrived;

// Never destroyed: the watching thread lives as long as the program.
std::shared_mutex& file_gate() {
    alignas(std::shared_mutex) static unsigned char memory[sizeof(std::shared_mutex)];
    static auto* gate = new (memory) std::shared_mutex;
    return *gate;
}

void note_interrupt(int signal) {
    const int error = errno;
    int none = 0;
    gSignal.compare_exchange_strong(none, signal);
    sem_post(&gArrived);
    errno = error;
}

void end_on_interrupt() {
    while (sem_wait(&gArrived) != 0) {
    }
    gIsEnding = true;
    // No file is being written once this is locked.
    file_gate().lock();
    ::signal(gSignal, SIG_DFL);
    raise(gSignal);
}

}  // namespace

void watch_interrupts() {
    // A write beyond the file size limit then fails like any other.
    signal(SIGXFSZ, SIG_IGN);
    sem_init(&gArrived, 0, 0);
    bool any = false;
    for (const int signal : kInterrupts) {
        struct sigaction action = {};
        // nohup and shells' background jobs ignore some of them; they stay ignored.
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
            action = {};
            action.sa_handler = note_interrupt;
            action.sa_flags = SA_RESTART;
            sigaction(signal, &action, nullptr);
            any = true;
        }
    }
    if (any) {
        std::thread(end_on_interrupt).detach();
    }
}

void watch_interrupts_in_child() {
    // What the parent's threads held stays locked for ever here. The semaphore is kept: it may have a signal already.
    new (&file_gate()) std::shared_mutex;
    std::thread(end_on_interrupt).detach();
}

UninterruptedSection::UninterruptedSection() {
    file_gate().lock_shared();
    if (gIsEnding) {
        file_gate().unlock_shared();
        await_interrupt();
    }
}

UninterruptedSection::~UninterruptedSection() {
    file_gate().unlock_shared();
}

bool interrupt_is_pending() {
    return gSignal != 0;
}

void await_interrupt() {
    for (;;) {
        pause();
    }
}

}  // namespace korvane
