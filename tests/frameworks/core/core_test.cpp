// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/core/memory.h"
#include "frameworks/core/ref_base.h"
#include "frameworks/utils/atomic.h"

namespace {

class Counted : public RefBase {
  public:
    explicit Counted(int* deaths) : m_Deaths(deaths) {}
    ~Counted() override { ++*m_Deaths; }
    uint32_t count() const { return m_Count; }

  private:
    int* m_Deaths;
};

TEST(AutoPtr, LastHolderDeletes) {
    int deaths = 0;
    auto* object = new Counted(&deaths);
    EXPECT_EQ(object->count(), 0U);
    auto_ptr<Counted> first(object);
    {
        const auto_ptr<Counted> second(first);
        EXPECT_EQ(object->count(), 2U);
        first.clear();
        first.clear();
        EXPECT_EQ(first.get(), nullptr);
        EXPECT_EQ(object->count(), 1U);
        // Assigning what is held already keeps it.
        first = second;
        auto& alias = first;
        first = alias;
        first = first.get();
        EXPECT_EQ(object->count(), 2U);
        first = new Counted(&deaths);
        EXPECT_EQ(deaths, 0);
    }
    EXPECT_EQ(deaths, 1);
    first = static_cast<Counted*>(nullptr);
    EXPECT_EQ(deaths, 2);
}

TEST(AutoPtr, ComparesRawPointers) {
    int deaths = 0;
    Counted* objects[] = {new Counted(&deaths), new Counted(&deaths)};
    std::ranges::sort(objects, std::less<>());
    const auto_ptr<Counted> low(objects[0]);
    const auto_ptr<Counted> high(objects[1]);
    EXPECT_TRUE(low == low.get() && low != high && low < high && low <= high && !(low > high) && !(low >= high));
    EXPECT_TRUE(high > low.get() && high >= high.get() && high <= high.get() && !(high < low.get()));
}

TEST(RefBase, DropOfAnUncountedObjectWrapsAndDeletesNothing) {
    int deaths = 0;
    Counted object(&deaths);
    EXPECT_EQ(object.decStrong(), -1);
    EXPECT_EQ(deaths, 0);
    EXPECT_FALSE(object.equals(object));
}

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
