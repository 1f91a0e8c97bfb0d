// SPDX-License-Identifier: Apache-2.0
// Interrupts (INT, TERM, HUP) end the program only between files, so that none leaves a temporary file or half a
// picture behind.
//
// They are caught, not blocked: a program that is started from here begins with the signals as usual, since handlers
// do not outlive exec while a mask does. The handler wakes a thread, and that one ends the program as the signal would
// have, once no file is being written.
#ifndef KORVANE_TOOLS_PHOTO_INTERRUPTS_H_
#define KORVANE_TOOLS_PHOTO_INTERRUPTS_H_

namespace korvane {

// Called once, before the program has a second thread.
void watch_interrupts();

// For a child process after fork, which has neither the watching thread nor the sections of its parent.
void watch_interrupts_in_child();

// While one exists, the program is not interrupted. Meant for the short time in which a file is written; whoever keeps
// one longer asks interrupt_is_pending. One thread has one at a time.
class UninterruptedSection {
  public:
    UninterruptedSection();
    ~UninterruptedSection();
    UninterruptedSection(const UninterruptedSection&) = delete;
    UninterruptedSection& operator=(const UninterruptedSection&) = delete;
};

bool interrupt_is_pending();

// Waits outside of any section until the pending interrupt has ended the program.
[[noreturn]] void await_interrupt();

}  // namespace korvane

#endif  // KORVANE_TOOLS_PHOTO_INTERRUPTS_H_
