// SPDX-License-Identifier: Apache-2.0
// A table of calls, each of which is made again and again while its first, second, ... allocation fails, until it gets
// all the memory that it asks for.
#ifndef KORVANE_TESTS_SHORTAGE_SHORTAGE_CASE_H_
#define KORVANE_TESTS_SHORTAGE_SHORTAGE_CASE_H_

#include <gtest/gtest.h>

#include <functional>

#include "tests/shortage/failing_allocator.h"

// What a call answered.
enum class Answer {
    kDone,   // as with all the memory in the world
    kShort,  // as its header promises for short memory
    kWrong,  // neither
};

struct ShortageCase {
    const char* name;
    // Prepares, makes the call inside Shortage::during(), and gives back what it got.
    std::function<Answer(Shortage& shortage)> run;
    // The call can do without the memory that it did not get.
    bool mayBeDone = false;
    // The call needs no memory at all.
    bool needsNone = false;
};

inline Answer answer(bool isDone, bool isShort) {
    return isDone ? Answer::kDone : isShort ? Answer::kShort : Answer::kWrong;
}

// A case that is one call with an answer of its own.
template <typename Call>
auto one_call(const Call& call) {
    return [call](Shortage& shortage) { return shortage.during(call); };
}

inline void fail_each_allocation(const ShortageCase& shortageCase) {
    constexpr size_t kMostAllocations = 500;
    for (size_t n = 1; n < kMostAllocations; ++n) {
        SCOPED_TRACE(testing::Message() << shortageCase.name << ", allocation " << n);
        Shortage shortage(n);
        const Answer answer = shortageCase.run(shortage);
        EXPECT_EQ(Shortage::live_blocks(), 0U) << "a leak";
        if (!Shortage::has_failed()) {
            EXPECT_EQ(answer, Answer::kDone);
            EXPECT_EQ(n == 1, shortageCase.needsNone);
            return;
        }
        EXPECT_TRUE(answer == Answer::kShort || (shortageCase.mayBeDone && answer == Answer::kDone))
            << static_cast<int>(answer);
    }
    ADD_FAILURE() << shortageCase.name << " asks for memory without end";
}

#endif  // KORVANE_TESTS_SHORTAGE_SHORTAGE_CASE_H_
