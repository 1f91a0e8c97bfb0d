// SPDX-License-Identifier: Apache-2.0
// auto_ptr<T>: the library's counted strong pointer over any RefBase.
//
// A copy shares the object and counts it; std::auto_ptr moved it instead. The last holder deletes the object, so a
// temporary auto_ptr around an object with count 0 deletes it. Counting is safe on any thread, but two threads must not
// assign to one auto_ptr at the same time.
#ifndef KORVANE_FRAMEWORKS_CORE_AUTO_PTR_H_
#define KORVANE_FRAMEWORKS_CORE_AUTO_PTR_H_

#include <functional>

template <typename T>
class auto_ptr {
  public:
    auto_ptr() = default;

    auto_ptr(T* p) : m_Ptr(p) { retain(p); }

    auto_ptr(const auto_ptr<T>& o) : m_Ptr(o.m_Ptr) { retain(m_Ptr); }

    virtual ~auto_ptr() { release(); }

    auto_ptr<T>& operator=(T* p) {
        // The new object is counted before the old one is let go, so assigning an auto_ptr to itself is harmless.
        retain(p);
        release();
        m_Ptr = p;
        return *this;
    }

    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): the one above handles it.
    auto_ptr<T>& operator=(const auto_ptr<T>& o) { return *this = o.m_Ptr; }

    // None of the three checks for null.
    T& operator*() const { return *m_Ptr; }
    T* operator->() const { return m_Ptr; }
    T* get() const { return m_Ptr; }

    // These compare the raw pointers. std::less orders pointers into different objects; plain < need not.
    bool operator==(const T* p) const { return m_Ptr == p; }
    bool operator==(const auto_ptr<T>& o) const { return m_Ptr == o.m_Ptr; }
    bool operator!=(const T* p) const { return m_Ptr != p; }
    bool operator!=(const auto_ptr<T>& o) const { return m_Ptr != o.m_Ptr; }
    bool operator<(const T* p) const { return std::less<const T*>()(m_Ptr, p); }
    bool operator<(const auto_ptr<T>& o) const { return *this < o.m_Ptr; }
    bool operator<=(const T* p) const { return std::less_equal<const T*>()(m_Ptr, p); }
    bool operator<=(const auto_ptr<T>& o) const { return *this <= o.m_Ptr; }
    bool operator>(const T* p) const { return std::greater<const T*>()(m_Ptr, p); }
    bool operator>(const auto_ptr<T>& o) const { return *this > o.m_Ptr; }
    bool operator>=(const T* p) const { return std::greater_equal<const T*>()(m_Ptr, p); }
    bool operator>=(const auto_ptr<T>& o) const { return *this >= o.m_Ptr; }

    void clear() {
        release();
        m_Ptr = nullptr;
    }

  private:
    static void retain(T* p) {
        if (p != nullptr) {
            p->incStrong();
        }
    }

    void release() {
        if (m_Ptr != nullptr && m_Ptr->decStrong() == 0) {
            delete m_Ptr;
            m_Ptr = nullptr;
        }
    }

    T* m_Ptr = nullptr;
};

#endif  // KORVANE_FRAMEWORKS_CORE_AUTO_PTR_H_
