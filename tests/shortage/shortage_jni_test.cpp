// SPDX-License-Identifier: Apache-2.0
// The native methods while memory is short, and while calls into Java raise exceptions.
#include <optional>

#include "frameworks/gpu/program_cache.h"
#include "platform/log.h"
#include "tests/shortage/throwing_env.h"
#include "tests/support/gl_surface.h"
#include "tests/support/native_cases.h"

static std::optional<Shortage::Armed> gArmed;

// Only inside a case's calls allocations fail and calls into Java raise.
JNIEnv* enter_native(JNIEnv* env) {
    gArmed.emplace();
    return ThrowingEnv::of(env);
}

void leave_native() {
    gArmed.reset();
    ThrowingEnv::clear();
}

bool was_raised() {
    return ThrowingEnv::has_raised();
}

namespace {

class ShortageJni : public NativeTest {
  protected:
    // A log that somebody reads takes memory for each line.
    void SetUp() override {
        NativeTest::SetUp();
        set_android_log_sink([](void*, int, const char*, const char*) {}, nullptr);
        // The setting takes memory once and keeps it.
        korvane::program_cache_directory();
    }
    void TearDown() override {
        set_android_log_sink(nullptr, nullptr);
        NativeTest::TearDown();
    }
};

Answer attempt(const NativeCase& nativeCase) {
    const LocalFrame frame(64);
    const NativeThings things(nativeCase.opened);
    return nativeCase.run(things);
}

TEST_F(ShortageJni, EachAllocationFails) {
    for (const NativeCase& nativeCase : native_cases()) {
        const GlSurface surface(16, 12);
        fail_each_allocation({nativeCase.methods, [&](Shortage&) { return attempt(nativeCase); },
                              nativeCase.memory == kMayDoWithout, nativeCase.memory == kNeedsNone});
    }
}

// What the library then answers is its own business, but it returns, leaks nothing and leaves nothing locked.
TEST_F(ShortageJni, EachCallIntoJavaRaises) {
    constexpr size_t kMostCalls = 500;
    for (const NativeCase& nativeCase : native_cases()) {
        const GlSurface surface(16, 12);
        bool isDone = false;
        for (size_t n = 1; n < kMostCalls && !isDone; ++n) {
            SCOPED_TRACE(testing::Message() << nativeCase.methods << ", call into Java " << n);
            const Shortage memory(0);
            const ThrowingEnv throwing(env, n);
            const Answer answer = attempt(nativeCase);
            EXPECT_EQ(Shortage::live_blocks(), 0U) << "a leak";
            isDone = !ThrowingEnv::has_raised();
            EXPECT_TRUE(!isDone || answer == Answer::kDone);
        }
        EXPECT_TRUE(isDone) << nativeCase.methods << " calls Java without end";
    }
}

}  // namespace
