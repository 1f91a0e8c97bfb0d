// SPDX-License-Identifier: Apache-2.0
// Sequentially consistent read-modify-write on a 32-bit word. Each returns the new value, not the old one.
#ifndef KORVANE_FRAMEWORKS_UTILS_ATOMIC_H_
#define KORVANE_FRAMEWORKS_UTILS_ATOMIC_H_

#include <cstdint>

#include "frameworks/core/export.h"

// `p` points at a 32-bit word aligned to 4 bytes. Overflow wraps.
KORVANE_API uint32_t atomic_inc32(void* p);
KORVANE_API uint32_t atomic_dec32(void* p);
KORVANE_API uint32_t atomic_add32(void* p, unsigned int n);

#endif  // KORVANE_FRAMEWORKS_UTILS_ATOMIC_H_
