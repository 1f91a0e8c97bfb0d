// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <numeric>
#include <string>
#include <vector>

#include "frameworks/io/java_input_stream.h"
#include "frameworks/io/java_output_stream.h"
#include "tests/support/jvm.h"
#include "tests/support/log_capture.h"
#include "tests/support/standard_error.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Bytes = std::vector<unsigned char>;

class JavaStreamsTest : public JvmTest {
  protected:
    // Delivers 0, 1, 2 ... in pieces of at most `chunk`.
    jobject scripted_input(int length, int chunk) { return new_object("ScriptedInputStream", "(II)V", length, chunk); }

    jobject scripted_output(int writesBeforeThrow) {
        return new_object("ScriptedOutputStream", "(I)V", writesBeforeThrow);
    }

    Bytes written(jobject output) {
        const auto array = static_cast<jbyteArray>(call_object(output, "toByteArray", "()[B"));
        Bytes bytes(static_cast<size_t>(env->GetArrayLength(array)));
        env->GetByteArrayRegion(array, 0, static_cast<jsize>(bytes.size()), reinterpret_cast<jbyte*>(bytes.data()));
        return bytes;
    }

    LogCapture log;
};

// 0, 1, 2 ... and then what no stream has touched.
Bytes counting_bytes(size_t count, size_t size) {
    Bytes bytes(size, 0xEE);
    std::iota(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(count), static_cast<unsigned char>(0));
    return bytes;
}

TEST_F(JavaStreamsTest, ReadsUntilTheRequestOrTheStreamEnds) {
    const struct {
        int length;
        int chunk;
        int capacity;
        size_t count;
        size_t answer;
        bool atEnd;
        int calls;
    } cases[] = {
        {20000, 20000, 4096, 10000, 10000, false, 3},
        {5000, 5000, 4096, 10000, 5000, true, 3},
        {100, 7, 4096, 50, 50, false, 8},
        {100, 7, 5, 100, 100, false, 20},
        {100, 100, 100, 100, 100, false, 1},
        {0, 1, 16, 1, 0, true, 1},
        {10, 10, 16, 0, 0, false, 1},
        {10, 10, 0, 5, 0, false, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.length << " bytes by " << c.chunk << " through " << c.capacity);
        const jobject input = scripted_input(c.length, c.chunk);
        JavaInputStream stream(env, input, env->NewByteArray(c.capacity));
        Bytes bytes(c.count + 4, 0xEE);
        EXPECT_EQ(stream.read(bytes.data(), c.count), c.answer);
        EXPECT_EQ(stream.isAtEnd(), c.atEnd);
        EXPECT_EQ(int_field(input, "calls"), c.calls);
        EXPECT_EQ(bytes, counting_bytes(c.answer, bytes.size()));
    }
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(JavaStreamsTest, SkipsByReadingWhereJavaDoesNot) {
    const struct {
        jlong longestSkip;
        size_t count;
        size_t answer;
        bool atEnd;
        size_t singleSkip;
    } cases[] = {
        {1000, 60, 60, false, 40}, {7, 60, 60, false, 7},  {0, 60, 60, false, 0}, {-3, 60, 60, false, 0},
        {1000, 150, 100, true, 0}, {0, 101, 100, true, 0}, {7, 0, 0, false, 7},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "skips of " << c.longestSkip << ", asked for " << c.count);
        const jobject input = scripted_input(100, 100);
        set_field(input, "longestSkip", c.longestSkip);
        JavaInputStream stream(env, input, env->NewByteArray(16));
        EXPECT_EQ(stream.read(nullptr, c.count), c.answer);
        EXPECT_EQ(stream.isAtEnd(), c.atEnd);
        EXPECT_EQ(int_field(input, "pos"), static_cast<int>(c.answer));
        EXPECT_EQ(stream.skip(40), c.singleSkip);
        EXPECT_EQ(stream.getLength(), 100 - c.answer - c.singleSkip);
    }
}

TEST_F(JavaStreamsTest, LogsAndClearsWhatReadingThrows) {
    const std::string readLine = "---- read threw an exception\n";
    // Bytes that came before the exception are not counted.
    for (int call : {0, 2}) {
        const jobject input = scripted_input(100, 10);
        set_field(input, "throwAtCall", jint{call});
        JavaInputStream stream(env, input, env->NewByteArray(16));
        Bytes bytes(50);
        StandardErrorCapture standardError;
        EXPECT_EQ(stream.read(bytes.data(), bytes.size()), 0U);
        EXPECT_THAT(standardError.text(), HasSubstr("java.io.IOException: scripted"));
        EXPECT_FALSE(env->ExceptionCheck());
        EXPECT_FALSE(stream.isAtEnd());
        EXPECT_EQ(stream.read(bytes.data(), 5), 5U);
        EXPECT_EQ(bytes[0], 10 * call);
    }
    EXPECT_THAT(log.lines(), ElementsAre(readLine, readLine));
    log.clear();

    const jobject input = scripted_input(100, 10);
    set_field(input, "throwAlways", true);
    JavaInputStream stream(env, input, env->NewByteArray(16));
    StandardErrorCapture standardError;
    EXPECT_EQ(stream.skip(3), 0U);
    EXPECT_EQ(stream.getLength(), 0U);
    EXPECT_EQ(stream.read(nullptr, 3), 0U);
    EXPECT_TRUE(stream.isAtEnd());
    EXPECT_FALSE(env->ExceptionCheck());
    EXPECT_THAT(log.lines(), ElementsAre("------- skip threw an exception\n", "------- Available threw an exception\n",
                                         "------- skip threw an exception\n", readLine));
}

TEST_F(JavaStreamsTest, AFalseCountStaysInsideTheBuffer) {
    const jobject input = scripted_input(100, 10);
    set_field(input, "claimedExtra", jint{20});
    JavaInputStream stream(env, input, env->NewByteArray(32));
    Bytes bytes(16, 0xEE);
    EXPECT_EQ(stream.read(bytes.data(), 8), 8U);
    EXPECT_EQ(bytes, counting_bytes(8, 16));
    EXPECT_THAT(log.lines(), IsEmpty());
    // Beyond the array Java itself objects.
    set_field(input, "claimedExtra", jint{1000});
    StandardErrorCapture standardError;
    EXPECT_EQ(stream.read(bytes.data(), 8), 0U);
    EXPECT_THAT(log.lines(), ElementsAre("---- read:GetByteArrayRegion threw an exception\n"));
}

TEST_F(JavaStreamsTest, WritesOnUntilJavaThrows) {
    const struct {
        int capacity;
        size_t count;
        int writes;
        size_t taken;
    } cases[] = {{16, 5, 3, 15}, {16, 100, 3, 48}, {16, 16, 1, 16}, {16, 1, 0, 0}, {16, 0, 3, 0}, {0, 5, 3, 0}};
    // The stream walks on through memory past `count`, so there is memory for every piece that Java takes, and for the
    // one that it refuses.
    Bytes source = counting_bytes(128, 128);
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.count << " bytes through " << c.capacity);
        const jobject output = scripted_output(c.writes);
        JavaOutputStream stream(env, output, env->NewByteArray(c.capacity));
        StandardErrorCapture standardError;
        log.clear();
        EXPECT_EQ(stream.write(source.data(), c.count), 0U);
        EXPECT_EQ(written(output), counting_bytes(c.taken, c.taken));
        const size_t lines = c.capacity != 0 && c.count != 0 ? 1 : 0;
        EXPECT_EQ(log.lines(), std::vector<std::string>(lines, "------- write threw an exception\n"));
    }
}

TEST_F(JavaStreamsTest, FlushesAndLogsWhatFlushingThrows) {
    const jobject output = scripted_output(0);
    JavaOutputStream stream(env, output, env->NewByteArray(4));
    stream.flush();
    EXPECT_EQ(int_field(output, "flushes"), 1);
    EXPECT_THAT(log.lines(), IsEmpty());
    set_field(output, "throwAtFlush", true);
    StandardErrorCapture standardError;
    stream.flush();
    EXPECT_THAT(log.lines(), ElementsAre("------- flush threw an exception\n"));
    EXPECT_FALSE(env->ExceptionCheck());
}

TEST_F(JavaStreamsTest, WhatTheyCannotDoAnswersNeutrally) {
    const jbyteArray array = env->NewByteArray(4);
    Bytes bytes(4, 0xEE);
    const jobject javaInput = scripted_input(10, 10);
    JavaInputStream input(env, javaInput, array);
    EXPECT_EQ(input.write(bytes.data(), 4), 0U);
    EXPECT_EQ(input.seek(3, SEEK_ORIGIN_BEGIN), 0);
    EXPECT_TRUE(input.rewind());
    EXPECT_EQ(int_field(javaInput, "calls"), 0);
    JavaOutputStream output(env, scripted_output(0), array);
    EXPECT_EQ(output.read(bytes.data(), 4) + output.skip(3) + output.getLength() + output.write(nullptr, 4), 0U);
    EXPECT_EQ(output.seek(3, SEEK_ORIGIN_BEGIN), 0);
    EXPECT_FALSE(output.rewind() || output.isAtEnd());

    JavaInputStream noInput(env, nullptr, array);
    EXPECT_EQ(noInput.read(bytes.data(), 4) + noInput.read(nullptr, 4) + noInput.skip(4) + noInput.getLength(), 0U);
    EXPECT_TRUE(noInput.isAtEnd());
    JavaInputStream noArray(env, javaInput, nullptr);
    EXPECT_EQ(noArray.read(bytes.data(), 4), 0U);
    JavaOutputStream noOutput(env, nullptr, array);
    EXPECT_EQ(noOutput.write(bytes.data(), 4), 0U);
    noOutput.flush();
    EXPECT_EQ(bytes, Bytes(4, 0xEE));
    EXPECT_THAT(log.lines(), IsEmpty());
}

}  // namespace
