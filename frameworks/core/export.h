// SPDX-License-Identifier: Apache-2.0
// What clients of libkorvane.so may use is marked here, and nothing else leaves the library.
//
// It is built with hidden visibility. A class or function with KORVANE_API keeps its symbol, and the linker's version
// script (cmake/korvane.map) lets it out by name: a new name needs both. KORVANE_HIDDEN takes a private helper of an
// exported class back in. cmake/exports.txt lists every name that leaves, and `./dev gate` compares.
//
// No exported function lets an exception out. When memory is short each gives the answer that its header names. Only a
// client's own `new` of an exported class may throw std::bad_alloc, before the object exists: the constructors
// themselves do not throw.
#ifndef KORVANE_FRAMEWORKS_CORE_EXPORT_H_
#define KORVANE_FRAMEWORKS_CORE_EXPORT_H_

#define KORVANE_API __attribute__((visibility("default")))
#define KORVANE_HIDDEN __attribute__((visibility("hidden")))

#endif  // KORVANE_FRAMEWORKS_CORE_EXPORT_H_
