// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/io/file_stream.h"
#include "frameworks/io/memory_stream.h"
#include "frameworks/io/stream_reader.h"
#include "frameworks/io/stream_writer.h"

namespace {

using testing::ElementsAre;
using Bytes = std::vector<unsigned char>;

constexpr size_t kRefused = std::numeric_limits<size_t>::max();

// A stream without anything behind it: its answer to transfers, and to seeks.
void expect_refusals(Stream* stream, size_t count, int64_t distance) {
    char byte = 'x';
    EXPECT_EQ(stream->read(&byte, 1), count);
    EXPECT_EQ(stream->write(&byte, 1), count);
    EXPECT_EQ(stream->skip(1), count);
    EXPECT_EQ(stream->seek(0, SEEK_ORIGIN_BEGIN), distance);
    EXPECT_EQ(stream->getLength(), 0U);
    EXPECT_FALSE(stream->rewind());
    stream->flush();
    stream->close();
    EXPECT_EQ(byte, 'x');
}

// --- MemoryStream

TEST(MemoryStream, WithoutABlockRefusesEverything) {
    MemoryStream borrowedNothing(nullptr, 16);
    MemoryStream empty(size_t{0});
    MemoryStream tooLarge(kRefused / 2);
    MemoryStream closed(16);
    closed.close();
    for (Stream* stream : {&borrowedNothing, &empty, &tooLarge, &closed}) {
        expect_refusals(stream, kRefused, -1);
    }
}

// Any sequence of calls, beside a model of them, is the fuzz target's.
TEST(MemoryStream, TransfersWhatFits) {
    Bytes block = {1, 2, 3, 4}, back(4, 0xEE);
    MemoryStream stream(block.data(), block.size());
    EXPECT_EQ(stream.read(back.data(), 1), 1U);
    EXPECT_EQ(stream.read(back.data(), kRefused - 1), 3U);
    EXPECT_THAT(back, ElementsAre(2, 3, 4, 0xEE));
    // The position stops at both ends, the distance does not.
    EXPECT_EQ(stream.seek(100, SEEK_ORIGIN_END), 100);
    EXPECT_EQ(stream.seek(-4, SEEK_ORIGIN_CURRENT), -4);
    EXPECT_EQ(stream.write(back.data(), kRefused - 1), 4U);
    EXPECT_EQ(block, back);
}

// --- FileStream

class FileStreamTest : public testing::Test {
  protected:
    void SetUp() override { std::ofstream(path, std::ios::binary) << "0123456789"; }
    void TearDown() override { std::remove(path.c_str()); }
    std::string content() const {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    const std::string path = testing::TempDir() + "korvane_streams_" + std::to_string(getpid());
};

TEST_F(FileStreamTest, NotOpenAnswersNothing) {
    FileStream modeless(path.c_str(), static_cast<FileStream::FileMode>(0));
    FileStream missing((path + ".missing").c_str(), FileStream::FILE_MODE_READ_AND_WRITE);
    FileStream pathless(nullptr, FileStream::FILE_MODE_ONLY_READ);
    FileStream unwritable((path + "/below").c_str(), FileStream::FILE_MODE_ONLY_WRITE);
    FileStream closed(path.c_str(), FileStream::FILE_MODE_ONLY_READ);
    closed.close();
    for (FileStream* stream : {&modeless, &missing, &pathless, &unwritable, &closed}) {
        expect_refusals(stream, 0, 0);
    }
    EXPECT_EQ(content(), "0123456789");
}

TEST_F(FileStreamTest, ReadsSkipsAndSeeks) {
    // Reading and writing asked for together opens for reading only.
    FileStream stream(path.c_str(), FileStream::FILE_MODE_READ_AND_WRITE);
    EXPECT_EQ(stream.getLength(), 10U);
    char text[16] = {};
    EXPECT_EQ(stream.read(text, 3), 3U);
    EXPECT_EQ(stream.skip(2), 2U);
    EXPECT_EQ(stream.read(text + 3, sizeof(text) - 3), 5U);
    EXPECT_STREQ(text, "01256789");
    EXPECT_FALSE(stream.isAtEnd());
    // Skipping is not stopped by the end of the file.
    EXPECT_EQ(stream.skip(1000), 1000U);
    EXPECT_EQ(stream.read(text, 1), 0U);
    EXPECT_EQ(stream.skip(kRefused), 0U);
    EXPECT_EQ(stream.seek(-1, SEEK_ORIGIN_BEGIN), -1);
    EXPECT_EQ(stream.seek(-2, SEEK_ORIGIN_END), 0);
    EXPECT_EQ(stream.read(text, 1), 1U);
    EXPECT_EQ(text[0], '8');
    EXPECT_TRUE(stream.rewind());
    EXPECT_EQ(stream.seek(4, SEEK_ORIGIN_CURRENT), 0);
    EXPECT_EQ(stream.read(text, 1), 1U);
    EXPECT_EQ(text[0], '4');
    EXPECT_EQ(stream.write(text, 1), 0U);
    stream.close();
    EXPECT_EQ(content(), "0123456789");
}

TEST_F(FileStreamTest, WritesAndKeepsTheLengthAtOpen) {
    char text[] = "ab\n\0c";
    {
        FileStream stream(path.c_str(), FileStream::FILE_MODE_ONLY_WRITE);
        EXPECT_EQ(stream.write(text, 5), 5U);
        EXPECT_EQ(stream.write(nullptr, 5), 0U);
        EXPECT_EQ(stream.getLength(), 0U);
        stream.flush();
        EXPECT_EQ(content(), std::string(text, 5));
        EXPECT_EQ(stream.seek(1, SEEK_ORIGIN_BEGIN), 0);
        EXPECT_EQ(stream.write(text, 1), 1U);
    }
    EXPECT_EQ(content(), std::string("aa\n\0c", 5));
}

TEST_F(FileStreamTest, APipeHasNoLengthAndCannotSkip) {
    std::remove(path.c_str());
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    // Open for both, so that neither end waits for the other.
    std::fstream other(path);
    FileStream stream(path.c_str(), FileStream::FILE_MODE_ONLY_WRITE);
    EXPECT_EQ(stream.getLength(), 0U);
    EXPECT_EQ(stream.skip(1), 0U);
    EXPECT_EQ(stream.seek(0, SEEK_ORIGIN_BEGIN), -1);
}

// --- StreamReader, StreamWriter

// Writes down how it ends, and answers what is not passed on.
class WitnessStream : public MemoryStream {
  public:
    explicit WitnessStream(std::string* calls) : MemoryStream(8), m_Calls(calls) {}
    ~WitnessStream() override { *m_Calls += "gone"; }
    bool rewind() override { return true; }
    bool isAtEnd() const override { return true; }
    void flush() override { *m_Calls += "flush "; }
    void close() override { *m_Calls += "close "; }

  private:
    std::string* m_Calls;
};

template <typename T>
class WrapperTest : public testing::Test {};
using Wrappers = testing::Types<StreamReader, StreamWriter>;
TYPED_TEST_SUITE(WrapperTest, Wrappers);

// What they pass on is the fuzz target's.
TYPED_TEST(WrapperTest, EndsWhatItWrapsAndAnswersWithoutAStream) {
    std::string calls;
    {
        TypeParam wrapper(new WitnessStream(&calls));
        EXPECT_EQ(wrapper.getLength(), 8U);
        EXPECT_FALSE(wrapper.rewind() || wrapper.isAtEnd());
    }
    EXPECT_EQ(calls, "flush close gone");

    calls.clear();
    auto_ptr<Stream> shared(new WitnessStream(&calls));
    { TypeParam wrapper(shared); }
    EXPECT_EQ(calls, "flush close ");

    TypeParam nothing(static_cast<Stream*>(nullptr));
    expect_refusals(&nothing, kRefused, -1);
}

TEST(TypedStreams, ValuesKeepTheProcessorsBytes) {
    Bytes block(8, 0xEE);
    StreamWriter writer(new MemoryStream(block.data(), block.size()));
    EXPECT_TRUE(writer.writeInt(0x01020304));
    EXPECT_TRUE(writer.writeShortInt(-2));
    EXPECT_TRUE(writer.writeByte(-128));
    EXPECT_THAT(block, ElementsAre(4, 3, 2, 1, 0xFE, 0xFF, 0x80, 0xEE));
    // One byte of room takes one byte of the value, and the writer says nothing.
    EXPECT_TRUE(writer.writeInt(0x0A0B0C0D));
    EXPECT_EQ(block[7], 0x0D);

    StreamWriter noWriter(nullptr);
    EXPECT_FALSE(noWriter.writeByte(1) || noWriter.writeShortInt(1) || noWriter.writeInt(1));
    StreamReader noReader(nullptr);
    EXPECT_EQ(noReader.readByte() | noReader.readShortInt() | noReader.readInt(), 0);
}

}  // namespace
