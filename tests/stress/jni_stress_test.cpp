// SPDX-License-Identifier: Apache-2.0
// Each native method again and again, in a Java virtual machine that checks what is done to it (-Xcheck:jni) and warns
// when a call leaves references behind: all calls of a row share one frame of local references.
#include <gmock/gmock.h>

#include <fstream>
#include <string>

#include "tests/support/gl_surface.h"
#include "tests/support/memory_growth.h"
#include "tests/support/native_cases.h"
#include "tests/support/run_length.h"

JNIEnv* enter_native(JNIEnv* env) {
    return env;
}

void leave_native() {}

bool was_raised() {
    return false;
}

namespace {

using JniStress = NativeTest;

// Filters of the older interface leave the shaders of their programs in the context. The driver's names rise.
void delete_shaders(GLuint& last) {
    const GLuint next = glCreateShader(GL_VERTEX_SHADER);
    for (; last < next; ++last) {
        if (glIsShader(last + 1) != GL_FALSE) {
            glDeleteShader(last + 1);
        }
    }
}

TEST_F(JniStress, CallsLeaveNothingBehind) {
    size_t total = 0;
    // As many as there are of the library's: the virtual machine gives memory back while it warms up.
    const size_t plainContexts = run_length(90, 500);
    const size_t driverBytes = [plainContexts] {
        const GlSurface keepsDisplay(16, 12);
        return grown_bytes(plainContexts, use_plain_context) / plainContexts;
    }();
    std::printf("the driver keeps %zu bytes of a context\n", driverBytes);
    for (const NativeCase& row : native_cases()) {
        SCOPED_TRACE(row.methods);
        const GlSurface surface(16, 12);
        const LocalFrame outer(64);
        const NativeThings things(row.opened);
        const LocalFrame inner(16);
        // More than the frame has room for, at least of what is cheap.
        const size_t calls = run_length(100 / std::min<size_t>(row.cost, 10), std::max<size_t>(100000 / row.cost, 500));
        const size_t measured = calls * 3 / 4;
        // The virtual machine's own threads take and give meanwhile.
        const size_t allowed = (size_t{192} << 10U) + calls * (row.cost > 20 ? driverBytes + 16 : 2);
        GLuint lastShader = 0;
        const auto work = [&] {
            EXPECT_EQ(row.run(things), Answer::kDone);
            if (std::string(row.methods).starts_with("FiltersRender.nativeOnSurfaceCreated")) {
                delete_shaders(lastShader);
            }
            // As at a frame's end; until then the driver keeps what was drawn with.
            glFinish();
            EXPECT_FALSE(env->ExceptionCheck());
        };
        size_t grown = grown_bytes(measured, work);
        if (grown > allowed) {
            // What is taken only once, a busy machine takes late.
            grown = grown_bytes(measured, work);
        }
        std::printf("%zu x %s: %zu bytes more\n", calls, row.methods, grown);
        std::fflush(stdout);
        total += measured + measured / 3;
        EXPECT_LE(grown, allowed);
    }
    report_count(total, "rounds of native methods");
}

TEST_F(JniStress, KnowsEveryMethod) {
    std::string known = " ";
    for (const NativeCase& row : native_cases()) {
        known += std::string(row.methods) + ' ';
    }
    std::ifstream exports(KORVANE_EXPORTS);
    size_t methods = 0;
    for (std::string name; exports >> name >> name;) {
        if (name.starts_with("Java_")) {
            const size_t method = name.rfind('_');
            name[method] = '.';
            EXPECT_THAT(known, testing::HasSubstr(' ' + name.substr(name.rfind('_') + 1) + ' '));
            ++methods;
        }
    }
    EXPECT_GT(methods, 0U);
    report_count(methods, "native methods");
}

}  // namespace
