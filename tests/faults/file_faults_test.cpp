// SPDX-License-Identifier: Apache-2.0
// The library's own files, while each call of the C library that touches them fails once.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
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
#include "tests/support/run_length.h"

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<unsigned char>;

constexpr FileFault kFaults[] = {
    {0, EIO, false}, {0, ENOSPC, true}, {0, EROFS, false}, {0, EINTR, false}, {0, 0, false}};
// More than the C library keeps in memory.
constexpr int kBinaryBytes = 9000;
constexpr unsigned int kSide = 64;

auto files_in(const std::string& folder) {
    return std::distance(fs::directory_iterator(folder), {});
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

    // `work` has closed its files when it returns. `check` sees what it left; fewer than `least` failures are a fault
    // of the test.
    void fail_each_call(size_t least, const std::function<void(bool hasFailed)>& check,
                        const std::function<void()>& work) {
        const auto open = files_in("/proc/self/fd");
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
                EXPECT_EQ(files_in("/proc/self/fd"), open);
            }
        }
        EXPECT_GT(calls, least);
        report_count(calls, "failing calls of files");
    }

    std::string m_Folder = testing::TempDir() + "korvane_faults_XXXXXX";
};

// The old program or the new one: a binary that was cut short would be rejected for ever.
TEST_F(FileFaults, ProgramCacheHoldsWholeBinaries) {
    ASSERT_EQ(korvane::set_program_cache_directory(m_Folder.c_str()), 0);
    const auto write = [](const Bytes& binary) {
        GPUScript script(nullptr, "script");
        void* block = galloc_malloc(binary.size());
        std::copy(binary.begin(), binary.end(), static_cast<unsigned char*>(block));
        galloc_free(script.getScriptBinary());
        script.setScriptBinaryFormat(7);
        script.setScriptBinary(block, static_cast<int>(binary.size()));
    };
    const Bytes binaries[2] = {random_bytes(kBinaryBytes, 1), random_bytes(kBinaryBytes + 50, 2)};
    Bytes files[2];
    for (const int i : {1, 0}) {
        write(binaries[i]);
        files[i] = content("script.osb");
        ASSERT_EQ(files[i].size(), binaries[i].size() + 4);
    }
    fail_each_call(
        20,
        [&](bool hasFailed) {
            EXPECT_TRUE(content("script.osb") == files[1] || (hasFailed && content("script.osb") == files[0]));
            EXPECT_EQ(files_in(m_Folder), 1);
            write(binaries[0]);
            EXPECT_EQ(content("script.osb"), files[0]);
        },
        [&] { write(binaries[1]); });
    Bytes read;
    fail_each_call(
        10, [&](bool hasFailed) { EXPECT_TRUE(read == binaries[0] || (hasFailed && read.empty())); },
        [&] {
            const GPUScript script(nullptr, "script");
            const auto* binary = static_cast<unsigned char*>(script.getScriptBinary());
            read.assign(binary, binary + (binary == nullptr ? 0 : script.getScirptBinarySize()));
        });
    EXPECT_EQ(content("script.osb"), files[0]);
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
    const Bytes whole = content("whole.jpg");
    bool isDone = false;
    fail_each_call(
        8,
        [&](bool hasFailed) {
            EXPECT_TRUE(hasFailed || (isDone && content("new.jpg") == whole));
            EXPECT_LE(content("new.jpg").size(), whole.size());
            fs::remove(path("new.jpg"));
        },
        [&] { isDone = encode(path("new.jpg"), rgb); });
}

TEST_F(FileFaults, JpegIsDecodedWholeOrNot) {
    ASSERT_TRUE(encode(path("photo.jpg"), random_bytes(kSide * kSide * 3, 4)));
    const Bytes before = random_bytes(kSide * kSide * 3, 5);
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
    const Bytes whole = found;
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
            if (stream.rewind() && stream.seek(10, SEEK_ORIGIN_BEGIN) != -1) {
                Bytes got(90);
                const size_t skipped = stream.read(nullptr, 5);
                got.resize(stream.read(got.data(), 90));
                EXPECT_TRUE(skipped == 0 || skipped == 5);
                EXPECT_TRUE(std::equal(got.begin(), got.end(), &bytes[10 + skipped]));
            }
        });
}

}  // namespace
