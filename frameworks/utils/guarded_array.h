// GuardedArray<T>: a growable array that guards itself.
//
// The capture workers and the thread pool look at their queues without the lock that the other side holds. Here a short
// lock of its own makes each single operation safe. Elements are destroyed outside that lock, so their destructors may
// use the array.
#ifndef KORVANE_FRAMEWORKS_UTILS_GUARDED_ARRAY_H_
#define KORVANE_FRAMEWORKS_UTILS_GUARDED_ARRAY_H_

#include <cstddef>
#include <deque>
#include <mutex>
#include <new>

#include "frameworks/utils/mutex.h"

template <typename T>
class GuardedArray {
  public:
    GuardedArray() = default;
    GuardedArray(const GuardedArray&) = delete;
    GuardedArray& operator=(const GuardedArray&) = delete;

    // False, and nothing appended, when memory is short.
    bool push_back(const T& element) {
        const std::lock_guard<Mutex> guard(m_Mutex);
        try {
            m_Elements.push_back(element);
        } catch (const std::bad_alloc&) {
            return false;
        }
        return true;
    }

    // Move the first or last element into `element` and answer true; false, with `element` untouched, when there is
    // none.
    bool take_front(T& element) {
        T taken{};
        {
            const std::lock_guard<Mutex> guard(m_Mutex);
            if (m_Elements.empty()) {
                return false;
            }
            taken = m_Elements.front();
            m_Elements.pop_front();
        }
        element = taken;
        return true;
    }

    bool take_back(T& element) {
        T taken{};
        {
            const std::lock_guard<Mutex> guard(m_Mutex);
            if (m_Elements.empty()) {
                return false;
            }
            taken = m_Elements.back();
            m_Elements.pop_back();
        }
        element = taken;
        return true;
    }

    size_t size() const {
        const std::lock_guard<Mutex> guard(m_Mutex);
        return m_Elements.size();
    }

    bool empty() const { return size() == 0; }

    void clear() {
        std::deque<T> dropped;
        const std::lock_guard<Mutex> guard(m_Mutex);
        dropped.swap(m_Elements);
    }

  private:
    mutable Mutex m_Mutex;
    std::deque<T> m_Elements;
};

#endif  // KORVANE_FRAMEWORKS_UTILS_GUARDED_ARRAY_H_
