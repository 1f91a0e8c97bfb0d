// SPDX-License-Identifier: Apache-2.0
#include "frameworks/core/ref_base.h"

#include "frameworks/utils/atomic.h"

RefBase::RefBase() = default;

RefBase::~RefBase() = default;

void RefBase::incStrong() {
    atomic_inc32(const_cast<uint32_t*>(&m_Count));
}

int RefBase::decStrong() {
    return static_cast<int>(atomic_dec32(const_cast<uint32_t*>(&m_Count)));
}
