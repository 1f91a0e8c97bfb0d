// SPDX-License-Identifier: Apache-2.0
// guarded(): runs work that may need memory, and lets no exception out.
//
// Callers in C, Java or C++ built without exceptions cannot catch ours. So every entry from Java or C, and every
// exported function that uses `new` or a container, answers short memory by a value that its header names. Work that
// only uses the galloc family tests for null and needs no guard. What the work holds must be owned by objects: they
// give it back when the work is cut short.
#ifndef KORVANE_FRAMEWORKS_CORE_GUARD_H_
#define KORVANE_FRAMEWORKS_CORE_GUARD_H_

namespace korvane {

// What `work` returns, or `onFailure` when it throws.
template <typename Answer, typename Work>
Answer guarded(Answer onFailure, Work&& work) noexcept {
    try {
        return work();
    } catch (...) {
        return onFailure;
    }
}

// For work without an answer: when it throws, what it has done so far stays.
template <typename Work>
void guarded(Work&& work) noexcept {
    try {
        work();
    } catch (...) {
    }
}

}  // namespace korvane

#endif  // KORVANE_FRAMEWORKS_CORE_GUARD_H_
