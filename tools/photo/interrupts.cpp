// SPDX-License-Identifier: Apache-2.0
#include "tools/photo/interrupts.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <shared_mutex>
#include <thread>

namespace korvane {
namespace {

std::atomic<bool> gIsEnding{false};

// Never destroyed: the watching thread lives as long as the program.
std::shared_mutex& file_gate() {
    static auto* gate = new std::shared_mutex;
    return *gate;
}

void wait_for_interrupt(sigset_t signals) {
    int signal = 0;
    while (sigwait(&signals, &signal) != 0) {
    }
    gIsEnding = true;
    // No file is being written once this is locked.
    file_gate().lock();
    ::signal(signal, SIG_DFL);
    sigemptyset(&signals);
    sigaddset(&signals, signal);
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    raise(signal);
}

}  // namespace

void watch_interrupts() {
    // A write beyond the file size limit then fails like any other.
    signal(SIGXFSZ, SIG_IGN);
    sigset_t signals;
    sigemptyset(&signals);
    bool any = false;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action = {};
        // nohup and shells' background jobs ignore some of them; they stay ignored.
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
            sigaddset(&signals, signal);
            any = true;
        }
    }
    if (any) {
        pthread_sigmask(SIG_BLOCK, &signals, nullptr);
        std::thread(wait_for_interrupt, signals).detach();
    }
}

UninterruptedSection::UninterruptedSection() {
    file_gate().lock_shared();
    if (gIsEnding) {
        file_gate().unlock_shared();
        for (;;) {
            pause();
        }
    }
}

UninterruptedSection::~UninterruptedSection() {
    file_gate().unlock_shared();
}

}  // namespace korvane
