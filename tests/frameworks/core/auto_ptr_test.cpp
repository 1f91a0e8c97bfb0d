// SPDX-License-Identifier: Apache-2.0
#include "frameworks/core/auto_ptr.h"

#include <gtest/gtest.h>

#include <functional>
#include <thread>
#include <vector>

#include "frameworks/core/ref_base.h"

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
        EXPECT_EQ(deaths, 0);
    }
    EXPECT_EQ(deaths, 1);
}

TEST(AutoPtr, AssignmentKeepsTheObjectItAlreadyHolds) {
    int deaths = 0;
    auto_ptr<Counted> holder(new Counted(&deaths));
    auto& alias = holder;
    holder = alias;
    holder = holder.get();
    EXPECT_EQ(deaths, 0);
    EXPECT_EQ(holder->count(), 1U);

    holder = new Counted(&deaths);
    EXPECT_EQ(deaths, 1);
    holder = static_cast<Counted*>(nullptr);
    EXPECT_EQ(deaths, 2);
    EXPECT_EQ(holder.get(), nullptr);
}

TEST(AutoPtr, ComparesRawPointers) {
    int deaths = 0;
    auto_ptr<Counted> low(new Counted(&deaths));
    auto_ptr<Counted> high(new Counted(&deaths));
    if (std::less<>()(high.get(), low.get())) {
        const auto_ptr<Counted> other(low);
        low = high;
        high = other;
    }
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

TEST(RefBase, CountsFromManyThreads) {
    int deaths = 0;
    auto_ptr<Counted> shared(new Counted(&deaths));
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([copy = shared] {
            for (int n = 0; n < 10'000; ++n) {
                const auto_ptr<Counted> another(copy);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    threads.clear();
    EXPECT_EQ(shared->count(), 1U);
    EXPECT_EQ(deaths, 0);
}

}  // namespace
