// SPDX-License-Identifier: Apache-2.0
#include "frameworks/io/memory_stream.h"

#include <algorithm>
#include <limits>

#include "frameworks/core/memory.h"

namespace {

constexpr size_t kRefused = std::numeric_limits<size_t>::max();

int64_t saturated_sum(int64_t a, int64_t b) {
    int64_t sum = 0;
    if (!__builtin_add_overflow(a, b, &sum)) {
        return sum;
    }
    return a > 0 ? std::numeric_limits<int64_t>::max() : std::numeric_limits<int64_t>::min();
}

}  // namespace

MemoryStream::MemoryStream(void* buffer, size_t size) : m_Buffer(buffer), m_BufferSize(buffer != nullptr ? size : 0) {}

MemoryStream::MemoryStream(size_t size) : m_Buffer(galloc_malloc(size)) {
    if (m_Buffer == nullptr) {
        return;
    }
    // A reader ahead of the writer sees zeros, not what the memory held before.
    galloc_memset(m_Buffer, 0, size);
    m_BufferSize = size;
    m_MallocBuffer = true;
}

MemoryStream::~MemoryStream() {
    free_owned();
}

size_t MemoryStream::read(void* buffer, size_t count) {
    if (!can_transfer(buffer, count)) {
        return kRefused;
    }
    const size_t taken = clip(count);
    galloc_memcpy(buffer, static_cast<unsigned char*>(m_Buffer) + m_Position, taken);
    m_Position += taken;
    return taken;
}

size_t MemoryStream::write(void* buffer, size_t count) {
    if (!can_transfer(buffer, count)) {
        return kRefused;
    }
    const size_t taken = clip(count);
    galloc_memcpy(static_cast<unsigned char*>(m_Buffer) + m_Position, buffer, taken);
    m_Position += taken;
    return taken;
}

int64_t MemoryStream::seek(int64_t offset, SeekOrign origin) {
    if (m_Buffer == nullptr) {
        return -1;
    }
    const auto position = static_cast<int64_t>(m_Position);
    int64_t target = position;
    if (origin == SEEK_ORIGIN_BEGIN) {
        target = offset;
    } else if (origin == SEEK_ORIGIN_CURRENT || origin == SEEK_ORIGIN_END) {
        target = saturated_sum(position, offset);
    }
    m_Position = static_cast<size_t>(std::clamp<int64_t>(target, 0, static_cast<int64_t>(m_BufferSize)));
    return saturated_sum(target, -position);
}

size_t MemoryStream::getLength() {
    return m_BufferSize;
}

void MemoryStream::flush() {}

void MemoryStream::close() {
    free_owned();
    m_Buffer = nullptr;
    m_BufferSize = 0;
    m_Position = 0;
    m_MallocBuffer = false;
}

bool MemoryStream::can_transfer(const void* buffer, size_t count) const {
    return m_Buffer != nullptr && buffer != nullptr && count != 0;
}

size_t MemoryStream::clip(size_t count) const {
    return std::min(count, m_BufferSize - m_Position);
}

void MemoryStream::free_owned() {
    if (m_MallocBuffer) {
        galloc_free(m_Buffer);
    }
}
