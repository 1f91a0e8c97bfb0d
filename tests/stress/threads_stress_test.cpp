// SPDX-License-Identifier: Apache-2.0
// What starts threads, again and again from several threads at once. Meant for the thread sanitizer.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "applications/pano/panorama_module.h"
#include "applications/super_capture/super_capture.h"
#include "applications/super_capture/super_capture_module.h"
#include "frameworks/utils/thread_pool.h"
#include "tests/applications/pano/panorama_module_peer.h"
#include "tests/frameworks/utils/counted_task.h"
#include "tests/support/run_length.h"

namespace {

constexpr size_t kThreads = 4;

// Each on a thread of its own, with its number.
void on_threads(const std::function<void(size_t thread)>& work) {
    std::vector<std::jthread> threads;
    for (size_t i = 0; i < kThreads; ++i) {
        threads.emplace_back(work, i);
    }
}

TEST(ThreadsStress, EveryBurstMergesAllItsFrames) {
    constexpr uint32_t kSide = 4;
    constexpr size_t kBytes = size_t{kSide} * kSide * 2;
    const size_t bursts = run_length(8, 1000);
    const size_t pushes = run_length(100, 1000);
    on_threads([&](size_t thread) {
        for (size_t burst = thread; burst < bursts; burst += kThreads) {
            const intptr_t handle = super_capture_module_init(kSide, kSide, 1);
            ASSERT_NE(handle, 0);
            std::vector<unsigned char> frame(kBytes);
            unsigned char* planes[4] = {frame.data()};
            size_t sum = 0;
            for (size_t n = 0; n < pushes; ++n) {
                const auto value = static_cast<unsigned char>(100 + (burst + n * n) % 150);
                sum += value;
                std::fill(frame.begin(), frame.end(), value);
                ASSERT_EQ(super_capture_module_push_frame(handle, planes), 0);
            }
            ASSERT_TRUE(reinterpret_cast<SuperCapture*>(handle)->waitUntilTaken(pushes));
            ASSERT_EQ(super_capture_module_pop_frame(handle, planes), 0);
            ASSERT_EQ(frame, std::vector<unsigned char>(kBytes, static_cast<unsigned char>(sum / pushes))) << burst;
            super_capture_module_destroy(handle);
        }
    });
    report_count(bursts, "bursts");
    report_count(bursts * pushes, "pushes");
}

TEST(ThreadsStress, ThePoolRunsEveryTaskOnce) {
    const size_t tasks = run_length(4000, 100000);
    std::atomic<size_t> runs{0};
    std::atomic<size_t> gone{0};
    ThreadPool pool(3);
    pool.start();
    on_threads([&](size_t thread) {
        for (size_t n = thread; n < tasks; n += kThreads) {
            pool.submit(new CountedTask(gone, [&runs] { ++runs; }));
        }
    });
    pool.shutdown();
    wait_until([&] { return gone == tasks; });
    EXPECT_EQ(runs, tasks);
    report_count(tasks, "pool tasks");
}

// Every order of so many calls, but for those that are documented never to end: closing a sweep with nothing queued.
TEST(ThreadsStress, SweepsEndInEveryOrderOfCalls) {
    unsigned char frame[4 * 2 * 3 / 2] = {};
    enum Call { kStartup, kPush, kCloseWithAFrame, kPop, kCalls };
    const size_t length = run_length(3, 6);
    size_t orders = 1;
    for (size_t i = 0; i < length; ++i) {
        orders *= kCalls;
    }
    on_threads([&](size_t thread) {
        for (size_t order = thread; order < orders; order += kThreads) {
            PanoramaModule module;
            bool isRunning = false;
            bool hasReference = false;
            int x = 0;
            int y = 0;
            const auto push = [&] { return module.pushFrame(frame, 10, 20, x, y); };
            size_t rest = order;
            for (size_t i = 0; i < length; ++i, rest /= kCalls) {
                switch (rest % kCalls) {
                    case kStartup:
                        ASSERT_EQ(module.startup(4, 2, 1, nullptr), 0);
                        isRunning = true;
                        break;
                    case kPush:
                        ASSERT_EQ(push(), !isRunning ? 4 : hasReference ? 0 : 3) << order;
                        hasReference = hasReference || isRunning;
                        break;
                    case kCloseWithAFrame:
                        if (isRunning && hasReference) {
                            PanoramaModulePeer::closeWithAFrameQueued(
                                module, [&] { ASSERT_EQ(push(), 0); }, [&] { ASSERT_EQ(module.close(), 0); });
                            isRunning = false;
                        }
                        break;
                    default:
                        ASSERT_EQ(module.popFrame(frame), 0);
                        break;
                }
            }
        }
    });
    report_count(orders, "orders of a sweep");
}

}  // namespace
