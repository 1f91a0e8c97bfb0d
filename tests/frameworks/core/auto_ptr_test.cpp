// SPDX-License-Identifier: Apache-2.0
#include "frameworks/core/auto_ptr.h"

#include <gtest/gtest.h>

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
    Counted objects[] = {Counted(&deaths), Counted(&deaths)};
    objects[0].incStrong();
    objects[1].incStrong();
    const auto_ptr<Counted> low(&objects[0]);
    const auto_ptr<Counted> high(&objects[1]);
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
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([copy = shared] {
                for (int n = 0; n < 10'000; ++n) {
                    const auto_ptr<Counted> another(copy);
                }
            });
        }
    }
    EXPECT_EQ(shared->count(), 1U);
    EXPECT_EQ(deaths, 0);
}

}  // namespace
