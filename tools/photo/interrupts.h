// SPDX-License-Identifier: Apache-2.0
// Interrupts (INT, TERM, HUP) end the program only between files, so that none leaves a temporary file or half a
// picture behind.
#ifndef KORVANE_TOOLS_PHOTO_INTERRUPTS_H_
#define KORVANE_TOOLS_PHOTO_INTERRUPTS_H_

namespace korvane {

// Called once, before the program has a second thread. The signals are blocked in every thread from here on and end
// the program from a thread of their own. A child process inherits the blocked signals: unblock them before exec.
void watch_interrupts();

// While one exists, the program is not interrupted. Meant for the short time in which a file is written.
class UninterruptedSection {
  public:
    UninterruptedSection();
    ~UninterruptedSection();
    UninterruptedSection(const UninterruptedSection&) = delete;
    UninterruptedSection& operator=(const UninterruptedSection&) = delete;
};

}  // namespace korvane

#endif  // KORVANE_TOOLS_PHOTO_INTERRUPTS_H_
