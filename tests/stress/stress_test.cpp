// SPDX-License-Identifier: Apache-2.0
// All modules at once, on several threads, for as long as KORVANE_STRESS_SECONDS says: each result is what it was when
// the module ran alone, and once everything has run for a while, memory and file descriptors stay as they are.
#include <EGL/egl.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <barrier>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "applications/filters/filter_calls.h"
#include "applications/filters/gpu_image_filter_factory.h"
#include "frameworks/images/image_decoder_factory.h"
#include "frameworks/images/image_encoder_factory.h"
#include "frameworks/io/file_stream.h"
#include "frameworks/io/memory_stream.h"
#include "frameworks/io/stream_reader.h"
#include "frameworks/io/stream_writer.h"
#include "frameworks/maths/matrix.h"
#include "frameworks/utils/thread_pool.h"
#include "tests/determinism/kernel_digests.h"
#include "tests/frameworks/utils/counted_task.h"
#include "tests/support/memory_growth.h"
#include "tests/support/random_bytes.h"
#include "tests/support/run_length.h"

namespace {

using Bytes = std::vector<unsigned char>;
using Clock = std::chrono::steady_clock;

constexpr size_t kThreads = 4;

// Each filter in a context of its own.
uint64_t filter() {
    uint64_t sum = 0;
    for (const FilterDescription* description : ImageFilterFactory::filters()) {
        Bytes pixels = random_bytes(size_t{32} * 24 * 4, 1);
        const auto_ptr<ImageFilterBaseGL> filter(korvane::create_offscreen_filter(description->name));
        if (filter.get() == nullptr) {
            return 0;
        }
        filter->process(pixels.data(), 32, 24);
        filter->release();
        sum += digest(pixels);
    }
    return sum;
}

// Bursts and sweeps with their threads among them.
uint64_t kernels() {
    uint64_t sum = 0;
    for (const auto& [name, value] : kernel_digests(97, 41)) {
        sum += value;
    }
    return sum;
}

uint64_t photo() {
    auto_ptr<Stream> file(new FileStream(KORVANE_TEST_PHOTO, FileStream::FILE_MODE_ONLY_READ));
    auto_ptr<Image> image(Image::createImage(1, 1, 1, IMAGE_FORMAT_TYPE_RGB, nullptr));
    ImageDecoderFactory decoders;
    if (!decoders.createImageDecoder(file)->decode(file, image)) {
        return 0;
    }
    Bytes bytes(1000000);
    auto_ptr<Stream> stream(new MemoryStream(bytes.data(), bytes.size()));
    const auto_ptr<ImageEncoder> encoder(
        ImageEncoderFactory().createImageEncoder(ImageEncoder::IMAGE_ENCODER_TYPE_JPEG));
    return encoder->encode(stream, image, 80) ? digest(bytes) : 0;
}

// One pool for the process, since its threads stay.
uint64_t tasks() {
    static ThreadPool* const kPool = [] {
        auto* pool = new ThreadPool(2);
        pool->start();
        return pool;
    }();
    constexpr uint32_t kTasks = 20;
    std::atomic<uint64_t> sum{0};
    std::atomic<size_t> gone{0};
    for (uint32_t i = 0; i < kTasks; ++i) {
        kPool->submit(new CountedTask(gone, [&sum, i] { sum += digest(random_bytes(2000, i)); }));
    }
    wait_until([&] { return gone == kTasks; });
    return sum;
}

uint64_t streams() {
    const std::string path = testing::TempDir() + "korvane_stress_" +
                             std::to_string(std::hash<std::thread::id>()(std::this_thread::get_id()));
    {
        StreamWriter writer(new FileStream(path.c_str(), FileStream::FILE_MODE_ONLY_WRITE));
        for (int32_t i = 0; i < 500; ++i) {
            writer.writeInt(i * 77);
            writer.writeShortInt(static_cast<int16_t>(i));
        }
    }
    uint64_t sum = 0;
    StreamReader reader(new FileStream(path.c_str(), FileStream::FILE_MODE_ONLY_READ));
    for (int32_t i = 0; i < 500; ++i) {
        sum = sum * 31 + static_cast<uint64_t>(reader.readInt()) + static_cast<uint64_t>(reader.readShortInt());
    }
    std::remove(path.c_str());
    float numbers[] = {2, 0, 0, 1, 0, 3, 0, 1, 0, 0, 4, 1, 1, 1, 1, 9};
    Matrix matrix(4, numbers);
    const auto_ptr<Matrix> inverse(matrix.inverse());
    return sum + static_cast<uint64_t>(inverse->m_Data[0][0] * 1e6F);
}

struct Job {
    const char* name;
    uint64_t (*run)();
};

// The one that draws first.
const std::vector<Job> kJobs = {
    {"filters", filter}, {"kernels", kernels}, {"JPEG", photo}, {"pool tasks", tasks}, {"streams", streams}};

struct Usage {
    size_t descriptors, residentBytes, allocatedBytes;
};

Usage usage() {
    const std::filesystem::directory_iterator open("/proc/self/fd");
    size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return {static_cast<size_t>(std::distance(begin(open), end(open))),
            pages * static_cast<size_t>(sysconf(_SC_PAGESIZE)), mallinfo2().uordblks};
}

#if !defined(KORVANE_SANITIZED)
// A plain context whose display is closed after it.
void use_display_once() {
    EGLDisplay const display = eglGetDisplay(EGL_DEFAULT_DISPLAY);
    ASSERT_EQ(eglInitialize(display, nullptr, nullptr), EGLBoolean{EGL_TRUE});
    use_plain_context();
    eglTerminate(display);
}
#endif

// The usage after the first quarter of the time and at the end, and the rounds up to each.
struct Left {
    size_t warmRounds, rounds;
    Usage warm, last;
};

Left run_together(const std::vector<Job>& jobs, std::chrono::duration<double> duration) {
    std::vector<uint64_t> alone;
    for (const Job& job : jobs) {
        alone.push_back(job.run());
        EXPECT_NE(alone.back(), 0U) << job.name;
    }
    const Clock::time_point start = Clock::now();
    Left left{};
    std::atomic<bool> isEnd{false};
    // Between two rounds all threads stand still. A list of all usages would itself be what piles up.
    std::barrier between(kThreads, [&]() noexcept {
        const auto elapsed = Clock::now() - start;
        left.last = usage();
        ++left.rounds;
        if (left.warmRounds == 0 && left.rounds >= 2 && elapsed >= duration / 4) {
            left.warmRounds = left.rounds;
            left.warm = left.last;
        }
        isEnd = elapsed >= duration && left.rounds >= 4;
    });
    std::vector<std::jthread> threads;
    for (size_t thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
            std::mt19937 random(static_cast<uint32_t>(thread));
            std::vector<size_t> order(jobs.size());
            std::iota(order.begin(), order.end(), 0);
            while (!isEnd) {
                std::shuffle(order.begin(), order.end(), random);
                for (const size_t job : order) {
                    EXPECT_EQ(jobs[job].run(), alone[job]) << jobs[job].name;
                }
                between.arrive_and_wait();
            }
        });
    }
    threads.clear();
    std::printf("warm: %zu descriptors, %zu KiB resident, %zu bytes allocated; at the end: %zu, %zu, %zu\n",
                left.warm.descriptors, left.warm.residentBytes / 1024, left.warm.allocatedBytes, left.last.descriptors,
                left.last.residentBytes / 1024, left.last.allocatedBytes);
    report_count(left.rounds * kThreads * jobs.size(), "jobs of all modules");
    EXPECT_EQ(left.last.descriptors, left.warm.descriptors);
    return left;
}

#if !defined(KORVANE_SANITIZED)
constexpr size_t kNoise = size_t{64} << 10U;

// On one thread, where the driver keeps the same of each context whose display is closed after it.
TEST(Stress, FiltersLeaveWhatPlainContextsLeave) {
    const size_t rounds = run_length(3, 60);
    const size_t contexts = rounds * ImageFilterFactory::filters().size();
    // What the driver takes once, it has by then.
    grown_bytes(60, use_display_once);
    const size_t ours = grown_bytes(rounds, filter);
    const size_t plain = grown_bytes(contexts, use_display_once);
    std::printf("%zu contexts: %zu bytes more with filters, %zu without\n", contexts, ours, plain);
    // Half of the smallest block for each, and by what the driver's own share varies.
    EXPECT_LE(ours, plain + contexts * 16 + 1024);
}
#endif

TEST(Stress, ResultsStayRightAndNothingPilesUp) {
    const char* given = std::getenv("KORVANE_STRESS_SECONDS");
    const std::chrono::duration<double> duration(given == nullptr ? 2.0 : std::atof(given));
#if !defined(KORVANE_SANITIZED)
    // With several threads at a time the driver keeps up to an eighth more.
    const size_t driverBytes = grown_bytes(60, use_display_once) / 60 * 5 / 4;
#endif
    [[maybe_unused]] const Left all = run_together(kJobs, duration);
    [[maybe_unused]] const Left undrawn = run_together({kJobs.begin() + 1, kJobs.end()}, duration / 4);
#if !defined(KORVANE_SANITIZED)
    const size_t contexts = (all.rounds - all.warmRounds) * kThreads * ImageFilterFactory::filters().size();
    const size_t keptBytes = contexts * driverBytes;
    // What the driver takes once for each thread, a busy machine takes late.
    EXPECT_LE(all.last.allocatedBytes, all.warm.allocatedBytes + keptBytes + 2 * kNoise);
    EXPECT_LE(all.last.residentBytes, all.warm.residentBytes + keptBytes + (size_t{16} << 20U));
    EXPECT_LE(undrawn.last.allocatedBytes, undrawn.warm.allocatedBytes + kNoise);
    EXPECT_LE(undrawn.last.residentBytes, undrawn.warm.residentBytes + (size_t{4} << 20U));
#endif
}

}  // namespace
