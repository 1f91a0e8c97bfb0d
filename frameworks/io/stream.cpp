// SPDX-License-Identifier: Apache-2.0
#include "frameworks/io/stream.h"

size_t Stream::skip(size_t count) {
    return read(nullptr, count);
}

bool Stream::rewind() {
    return false;
}

bool Stream::isAtEnd() const {
    return false;
}
