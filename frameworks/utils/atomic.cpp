// SPDX-License-Identifier: Apache-2.0
#include "frameworks/utils/atomic.h"

uint32_t atomic_inc32(void* p) {
    return atomic_add32(p, 1U);
}

uint32_t atomic_dec32(void* p) {
    return __atomic_sub_fetch(static_cast<uint32_t*>(p), 1U, __ATOMIC_SEQ_CST);
}

uint32_t atomic_add32(void* p, unsigned int n) {
    return __atomic_add_fetch(static_cast<uint32_t*>(p), n, __ATOMIC_SEQ_CST);
}
