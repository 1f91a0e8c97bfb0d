// Marks what clients of libkorvane.so may use.
//
// The library is built with hidden visibility; a class or function that bears KORVANE_API keeps its symbol, and the
// linker's version script (cmake/korvane.map) lets those out by name. Both gates must agree: a new exported name needs
// the macro and a row in the script.
//
// No exported function lets an exception out. When memory is short each gives the answer that its header names. Only a
// client's own `new` of an exported class may throw std::bad_alloc, before the object exists: the constructors
// themselves do not throw.
#ifndef KORVANE_FRAMEWORKS_CORE_EXPORT_H_
#define KORVANE_FRAMEWORKS_CORE_EXPORT_H_

#define KORVANE_API __attribute__((visibility("default")))

#endif  // KORVANE_FRAMEWORKS_CORE_EXPORT_H_
