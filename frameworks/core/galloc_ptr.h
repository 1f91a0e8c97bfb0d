// SPDX-License-Identifier: Apache-2.0
// galloc_ptr<T>: owns a block of the galloc family and frees it at the end of the scope.
#ifndef KORVANE_FRAMEWORKS_CORE_GALLOC_PTR_H_
#define KORVANE_FRAMEWORKS_CORE_GALLOC_PTR_H_

#include <memory>

#include "frameworks/core/memory.h"

namespace korvane {

struct GallocDeleter {
    void operator()(void* block) const { galloc_free(block); }
};

// T must be a type without a destructor: only the memory is given back.
template <typename T>
using galloc_ptr = std::unique_ptr<T, GallocDeleter>;

}  // namespace korvane

#endif  // KORVANE_FRAMEWORKS_CORE_GALLOC_PTR_H_
