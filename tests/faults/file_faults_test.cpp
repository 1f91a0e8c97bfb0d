// SPDX-License-Identifier: Apache-2.0
// The library's own files, while each call of the C library that touches them fails once.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

#include "frameworks/core/memory.h"
#include "frameworks/gpu/gpu_script.h"
#include "frameworks/gpu/program_cache.h"
#include "frameworks/images/image.h"
#include "frameworks/images/jpeg_decoder.h"
#include "frameworks/images/jpeg_encoder.h"
#include "frameworks/io/file_stream.h"
#include "tests/faults/failing_files.h"
#include "tests/support/random_bytes.h"

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<unsigned char>;

constexpr FileFault kFaults[] = {
    {0, EIO, false}, {0, ENOSPC, true}, {0, EROFS, false}, {0, EINTR, false}, {0, 0, false}};
// More than the C library keeps in memory.
constexpr int kBinaryBytes = 9000;
constexpr unsigned int kSide = 64;

size_t open_files() {
    return static_cast<size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), {}));
}

class FileFaults : public testing::Test {
  protected:
    void SetUp() override { ASSERT_NE(mkdtemp(m_Folder.data()), nullptr); }
    void TearDown() override {
        korvane::set_program_cache_directory(nullptr);
        fs::remove_all(m_Folder);
    }

    std::string path(const char* name) const { return m_Folder + "/" + name; }

    Bytes content(const char* name) const {
        std::ifstream file(path(name), std::ios::binary);
        return Bytes(std::istreambuf_iterator<char>(file), {});
    }

    size_t files() const { return static_cast<size_t>(std::distance(fs::directory_iterator(m_Folder), {})); }

    // `work` has closed its files when it returns. `check` sees what it left; fewer than `least` failures are a fault
    // of the test.
    void fail_each_call(size_t least, const std::function<void(bool hasFailed)>& check,
                        const std::function<void()>& work) {
        const size_t open = open_files();
        size_t calls = 0;
        for (FileFault fault : kFaults) {
            bool hasFailed = true;
            while (hasFailed) {
                ++fault.call;
                fail_files(m_Folder.c_str(), fault);
                work();
                hasFailed = failed_file_call() != nullptr;
                SCOPED_TRACE(std::string(hasFailed ? failed_file_call() : "no failure") + ", call " +
                             std::to_string(fault.call) + ", errno " + std::to_string(fault.error));
                fail_files("", {});
                calls += hasFailed ? 1 : 0;
                check(hasFailed);
                EXPECT_EQ(open_files(), open);
            }
        }
        EXPECT_GT(calls, least);
        std::printf("proof: %zu failing calls of files\n", calls);
    }

    std::string m_Folder = testing::TempDir() + "korvane_faults_XXXXXX";
};

// The old program or the new one: a binary that was cut short would be rejected for ever.
TEST_F(FileFaults, ProgramCacheHoldsWholeBinaries) {
    ASSERT_EQ(korvane::set_program_cache_directory(m_Folder.c_str()), 0);
    const auto write = [](const Bytes& binary) {
        GPUScript script(nullptr, "script");
        void* block = galloc_malloc(binary.size());
        std::memcpy(block, binary.data(), binary.size());
        galloc_free(script.getScriptBinary());
        script.setScriptBinaryFormat(7);
        script.setScriptBinary(block, static_cast<int>(binary.size()));
    };
    const Bytes first = random_bytes(kBinaryBytes, 1);
    const Bytes second = random_bytes(kBinaryBytes + 50, 2);
    const auto file_of = [](Bytes binary) {
        binary.insert(binary.begin(), {7, 0, 0, 0});
        return binary;
    };
    const auto check = [&](bool hasFailed) {
        const Bytes found = content("script.osb");
        EXPECT_TRUE(found == file_of(second) || (hasFailed && found == file_of(first))) << found.size();
        EXPECT_EQ(files(), 1U);
        write(first);
        EXPECT_EQ(content("script.osb"), file_of(first));
    };
    write(first);
    fail_each_call(20, check, [&] { write(second); });
    Bytes read;
    bool isThere = false;
    fail_each_call(
        10,
        [&](bool hasFailed) {
            EXPECT_TRUE(isThere ? read == first : hasFailed);
            EXPECT_EQ(content("script.osb"), file_of(first));
        },
        [&] {
            const GPUScript script(nullptr, "script");
            const auto* binary = static_cast<unsigned char*>(script.getScriptBinary());
            isThere = binary != nullptr;
            read.assign(binary, binary + (isThere ? script.getScirptBinarySize() : 0));
        });
}

Image* new_image(const Bytes& rgb) {
    auto* image = new Image(kSide, kSide, 1, IMAGE_FORMAT_TYPE_RGB, nullptr);
    std::copy(rgb.begin(), rgb.end(), image->getPlanes()[0]);
    return image;
}

bool encode(const std::string& path, const Bytes& rgb) {
    auto_ptr<Stream> stream(new FileStream(path.c_str(), FileStream::FILE_MODE_ONLY_WRITE));
    auto_ptr<Image> image(new_image(rgb));
    return JpegEncoder().encode(stream, image, 90);
}

// A write of nothing fails the call; a file that is shorter without one is for whoever counts.
TEST_F(FileFaults, JpegIsEncodedOrNot) {
    const Bytes rgb = random_bytes(kSide * kSide * 3, 3);
    ASSERT_TRUE(encode(path("whole.jpg"), rgb));
    bool isDone = false;
    fail_each_call(
        8,
        [&](bool hasFailed) {
            const Bytes whole = content("whole.jpg");
            const Bytes found = content("new.jpg");
            EXPECT_TRUE(hasFailed || (isDone && found == whole));
            EXPECT_LE(found.size(), whole.size());
            fs::remove(path("new.jpg"));
        },
        [&] { isDone = encode(path("new.jpg"), rgb); });
}

TEST_F(FileFaults, JpegIsDecodedWholeOrNot) {
    ASSERT_TRUE(encode(path("photo.jpg"), random_bytes(kSide * kSide * 3, 4)));
    const Bytes before = random_bytes(kSide * kSide * 3, 5);
    Bytes whole;
    Bytes found;
    bool isDone = false;
    const auto decode = [&] {
        auto_ptr<Stream> stream(new FileStream(path("photo.jpg").c_str(), FileStream::FILE_MODE_ONLY_READ));
        auto_ptr<Image> image(new_image(before));
        isDone = JpegDecoder().decode(stream, image);
        found.assign(image->getPlanes()[0], image->getPlanes()[0] + before.size());
    };
    decode();
    ASSERT_TRUE(isDone);
    whole = found;
    fail_each_call(
        20, [&](bool hasFailed) { EXPECT_TRUE(isDone ? found == whole : hasFailed && found == before); }, decode);
}

// Each operation has a number that means failure, and what it says was moved was moved.
TEST_F(FileFaults, StreamsTellWhatTheyDid) {
    Bytes bytes = random_bytes(100, 6);
    std::ofstream(path("old"), std::ios::binary).write(reinterpret_cast<char*>(bytes.data()), 100);
    size_t written = 0;
    fail_each_call(
        5, [&](bool hasFailed) { EXPECT_TRUE(hasFailed ? content("new").size() <= written : written == 100); },
        [&] {
            fs::remove(path("new"));
            FileStream stream(path("new").c_str(), FileStream::FILE_MODE_ONLY_WRITE);
            written = stream.write(bytes.data(), 100);
            stream.flush();
        });
    fail_each_call(
        8, [](bool) {},
        [&] {
            FileStream stream(path("old").c_str(), FileStream::FILE_MODE_ONLY_READ);
            EXPECT_TRUE(stream.getLength() == 100 || stream.getLength() == 0);
            EXPECT_TRUE(!stream.rewind() || stream.seek(10, SEEK_ORIGIN_BEGIN) == -1 || [&] {
                Bytes got(90);
                const size_t skipped = stream.read(nullptr, 5);
                const size_t count = stream.read(got.data(), 90);
                const auto from = bytes.begin() + 10 + static_cast<ptrdiff_t>(skipped);
                return (skipped == 0 || skipped == 5) &&
                       std::equal(got.begin(), got.begin() + static_cast<ptrdiff_t>(count), from);
            }());
        });
}

}  // namespace
