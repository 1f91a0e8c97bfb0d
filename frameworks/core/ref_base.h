// SPDX-License-Identifier: Apache-2.0
// RefBase: an object with a strong count of its own.
//
// A new object's count is 0: nobody owns it until the first auto_ptr<T> (or an explicit incStrong) takes it. The object
// never deletes itself; the holder whose release brings the count to 0 does. Objects on the stack or embedded in others
// are never counted. Counting is lock-free and safe on any thread.
#ifndef KORVANE_FRAMEWORKS_CORE_REF_BASE_H_
#define KORVANE_FRAMEWORKS_CORE_REF_BASE_H_

#include <cstdint>

#include "frameworks/core/export.h"
#include "frameworks/core/object.h"

class KORVANE_API RefBase : public Object {
  public:
    RefBase();
    ~RefBase() override;

    // Adds one reference.
    void incStrong();

    // Drops one reference and returns the new count. At 0 the count wraps to 0xFFFFFFFF (-1 here), and the object is
    // never deleted.
    int decStrong();

  protected:
    // A copy starts with count 0, and assignment keeps both counts.
    RefBase(const RefBase&) : RefBase() {}
    RefBase& operator=(const RefBase&) { return *this; }

    volatile uint32_t m_Count = 0;
};

#endif  // KORVANE_FRAMEWORKS_CORE_REF_BASE_H_
