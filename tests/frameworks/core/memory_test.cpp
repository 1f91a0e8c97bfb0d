// SPDX-License-Identifier: Apache-2.0
#include "frameworks/core/memory.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "frameworks/utils/atomic.h"

namespace {

bool is_filled(const unsigned char* block, size_t bytes, unsigned char value) {
    return std::all_of(block, block + bytes, [value](unsigned char byte) { return byte == value; });
}

TEST(Memory, ZeroAndNullHaveFixedAnswers) {
    EXPECT_EQ(galloc_malloc(0), nullptr);
    EXPECT_EQ(galloc_alloc_leap(0, "file", 1), nullptr);
    EXPECT_EQ(galloc_realloc(nullptr, 16), nullptr);
    galloc_free_leap(nullptr);

    auto* block = static_cast<unsigned char*>(galloc_malloc_leap(4, "file", 1));
    galloc_memset(block, 7, 4);
    // The refused resize leaves the block as it was.
    EXPECT_EQ(galloc_realloc_leap(block, 0, "file", 1), nullptr);
    galloc_memcpy(block, nullptr, 4);
    galloc_memcpy(nullptr, block, 4);
    galloc_memset(nullptr, 1, 4);
    galloc_memset(block, 1, 0);
    block = static_cast<unsigned char*>(galloc_realloc(block, 4096));
    EXPECT_TRUE(is_filled(block, 4, 7));
    galloc_free(block);
}

TEST(Memory, AllocClears) {
    constexpr size_t kBytes = 100'000;
    // Dirty the heap first, so that a block that is merely fresh does not pass.
    void* dirty = galloc_malloc(kBytes);
    galloc_memset(dirty, 0xA5, kBytes);
    galloc_free(dirty);
    auto* block = static_cast<unsigned char*>(galloc_alloc(kBytes));
    EXPECT_TRUE(is_filled(block, kBytes, 0));
    galloc_free(block);
}

TEST(Atomic, ReturnsTheNewValueAndWraps) {
    uint32_t word = 1;
    EXPECT_EQ(atomic_dec32(&word), 0U);
    EXPECT_EQ(atomic_dec32(&word), 0xFFFFFFFFU);
    EXPECT_EQ(atomic_inc32(&word), 0U);
    EXPECT_EQ(atomic_add32(&word, 40), 40U);
}

}  // namespace
