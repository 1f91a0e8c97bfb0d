// SPDX-License-Identifier: Apache-2.0
// GuardedArray<T>: a queue that guards itself.
//
// The capture workers and the thread pool look at their queues without the lock that the other side holds. Here a short
// lock of its own makes each single operation safe. Elements are destroyed outside that lock, so their destructors may
// use the array. Only push_back() needs memory.
#ifndef KORVANE_FRAMEWORKS_UTILS_GUARDED_ARRAY_H_
#define KORVANE_FRAMEWORKS_UTILS_GUARDED_ARRAY_H_

#include <cstddef>
#include <iterator>
#include <list>
#include <mutex>

#include "frameworks/core/guard.h"
#include "frameworks/utils/mutex.h"

template <typename T>
class GuardedArray {
  public:
    GuardedArray() = default;
    GuardedArray(const GuardedArray&) = delete;
    GuardedArray& operator=(const GuardedArray&) = delete;

    // False, and nothing appended, when memory is short.
    bool push_back(const T& element) {
        return korvane::guarded(false, [&] {
            std::list<T> added(1, element);
            const std::lock_guard<Mutex> guard(m_Mutex);
            m_Elements.splice(m_Elements.end(), added);
            return true;
        });
    }

    // Move the first or last element into `element` and answer true; false, with `element` untouched, when there is
    // none.
    bool take_front(T& element) {
        return take(element, [this] { return m_Elements.begin(); });
    }
    bool take_back(T& element) {
        return take(element, [this] { return std::prev(m_Elements.end()); });
    }

    size_t size() const {
        const std::lock_guard<Mutex> guard(m_Mutex);
        return m_Elements.size();
    }

    bool empty() const { return size() == 0; }

    void clear() {
        std::list<T> dropped;
        const std::lock_guard<Mutex> guard(m_Mutex);
        dropped.swap(m_Elements);
    }

  private:
    template <typename Position>
    bool take(T& element, const Position& position) {
        std::list<T> taken;
        {
            const std::lock_guard<Mutex> guard(m_Mutex);
            if (m_Elements.empty()) {
                return false;
            }
            taken.splice(taken.begin(), m_Elements, position());
        }
        element = taken.front();
        return true;
    }

    mutable Mutex m_Mutex;
    // A list: an empty one holds no memory, and taking an element cannot fail.
    std::list<T> m_Elements;
};

#endif  // KORVANE_FRAMEWORKS_UTILS_GUARDED_ARRAY_H_
