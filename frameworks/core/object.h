// SPDX-License-Identifier: Apache-2.0
// Object: the root of every class with virtual operations in the library.
//
// Fixed by the interface, here and in all classes below it: names, parameter types, the order of virtual operations
// and the names of members that clients may touch. Private helpers and what the functions do inside are ours to change.
//
// The virtual operations are the destructor, then equals. Subclasses add theirs behind these.
#ifndef KORVANE_FRAMEWORKS_CORE_OBJECT_H_
#define KORVANE_FRAMEWORKS_CORE_OBJECT_H_

#include "frameworks/core/export.h"

class KORVANE_API Object {
  public:
    virtual ~Object();

    // False here, also for the object itself. Subclasses that can compare override it.
    virtual bool equals(Object& other);
};

#endif  // KORVANE_FRAMEWORKS_CORE_OBJECT_H_
