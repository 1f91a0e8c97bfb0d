// SPDX-License-Identifier: Apache-2.0
#include "frameworks/core/object.h"

Object::~Object() = default;

bool Object::equals(Object& /*other*/) {
    return false;
}
