// Object: the root of every class with virtual operations in the library.
//
// It has no fields but its dispatch table. The slot order (destructor pair, then equals) is part of the binary
// interface: subclasses add their virtual operations behind these.
#ifndef KORVANE_FRAMEWORKS_CORE_OBJECT_H_
#define KORVANE_FRAMEWORKS_CORE_OBJECT_H_

#include "frameworks/core/export.h"

class KORVANE_API Object {
  public:
    virtual ~Object();

    // False in the base, also for the object itself; a subclass that has a notion of equality overrides it.
    virtual bool equals(Object& other);
};

#endif  // KORVANE_FRAMEWORKS_CORE_OBJECT_H_
