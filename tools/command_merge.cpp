#include <unistd.h>

#include <CLI/CLI.hpp>
#include <condition_variable>
#include <cstdio>
#include <iostream>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <vector>

#include "applications/super_capture/super_capture_module.h"
#include "platform/log.h"
#include "tools/command.h"
#include "tools/photo_io.h"
#include "tools/yuyv_photo.h"

namespace korvane {
namespace {

struct MergeOptions {
    std::vector<std::string> frames;
    std::string output;
};

// Follows the engine through its log lines, the only window that its entry points leave.
class EngineWatch {
  public:
    EngineWatch() { set_android_log_sink(&EngineWatch::sink, this); }
    ~EngineWatch() { set_android_log_sink(nullptr, nullptr); }
    EngineWatch(const EngineWatch&) = delete;
    EngineWatch& operator=(const EngineWatch&) = delete;

    // Returns when the worker has taken so many frames; false when it never will.
    bool wait_for_taken(size_t frames) {
        std::unique_lock<std::mutex> lock(m_Mutex);
        m_Changed.wait(lock, [&] { return m_Taken >= frames || m_HasNoThread; });
        return m_Taken >= frames;
    }

    // After the worker has ended.
    size_t merged() const { return m_Merged; }
    bool is_low_light() const { return m_IsLowLight; }
    int mean_luma() const { return m_MeanLuma; }

  private:
    static void sink(void* user, int /*priority*/, const char* /*tag*/, const char* text) {
        static_cast<EngineWatch*>(user)->read(text);
    }

    void read(const std::string& line) {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        if (line.starts_with("SuperCapture::run   getFrame")) {
            ++m_Taken;
        } else if (line.starts_with("thread start fail")) {
            m_HasNoThread = true;
        } else if (line.find("Scheme::process") != std::string::npos) {
            ++m_Merged;
            m_IsLowLight = line.starts_with("SuperCaptureLowLightScheme");
        } else {
            std::sscanf(line.c_str(), "SuperCapture::run lum:%d", &m_MeanLuma);
        }
        m_Changed.notify_all();
    }

    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    size_t m_Taken = 0;
    size_t m_Merged = 0;
    int m_MeanLuma = 0;
    bool m_IsLowLight = false;
    bool m_HasNoThread = false;
};

// The C entry points with their handle.
class Burst {
  public:
    Burst(int width, int height)
        : m_Handle(super_capture_module_init(static_cast<uint32_t>(width), static_cast<uint32_t>(height), 1)) {}
    ~Burst() { super_capture_module_destroy(m_Handle); }
    Burst(const Burst&) = delete;
    Burst& operator=(const Burst&) = delete;

    bool push(std::vector<unsigned char>& frame) {
        unsigned char* planes[] = {frame.data(), nullptr, nullptr, nullptr};
        return super_capture_module_push_frame(m_Handle, planes) == 0;
    }

    bool pop(std::vector<unsigned char>& frame) {
        unsigned char* planes[] = {frame.data(), nullptr, nullptr, nullptr};
        return super_capture_module_pop_frame(m_Handle, planes) == 0;
    }

  private:
    intptr_t m_Handle;
};

// One line on a terminal, wiped when it goes.
class Progress {
  public:
    ~Progress() {
        if (m_IsTerminal) {
            std::fprintf(stderr, "\r\033[K");
        }
    }
    void show(size_t done, size_t all) const {
        if (m_IsTerminal) {
            std::fprintf(stderr, "\rmerging %zu of %zu", done, all);
        }
    }

  private:
    bool m_IsTerminal = isatty(STDERR_FILENO) != 0;
};

void merge(const MergeOptions& options) {
    auto_ptr<Image> photo = read_photo(options.frames.front());
    const auto width = photo->getWidth();
    const auto height = photo->getHeight();
    YuyvFrame frame = to_yuyv(photo);
    EngineWatch watch;
    {
        const Progress progress;
        Burst burst(frame.width, frame.height);
        for (size_t i = 0; i < options.frames.size(); ++i) {
            if (i > 0) {
                auto_ptr<Image> next = read_photo(options.frames[i]);
                if (next->getWidth() != width || next->getHeight() != height) {
                    throw CommandError(options.frames[i] + " is not of the size of " + options.frames.front());
                }
                frame = to_yuyv(next);
            }
            // One frame at a time: a burst that is ended leaves out what the worker has not taken.
            if (!burst.push(frame.bytes) || !watch.wait_for_taken(i + 1)) {
                throw std::bad_alloc();
            }
            progress.show(i + 1, options.frames.size());
        }
        if (!burst.pop(frame.bytes) || watch.merged() != options.frames.size()) {
            throw std::bad_alloc();
        }
    }
    from_yuyv(frame, photo);
    write_photo(options.output, photo);
    std::cout << (watch.is_low_light() ? "low light (maximum)" : "high light (mean)") << ", mean luma "
              << watch.mean_luma() << ", " << watch.merged() << " frames merged\n";
}

}  // namespace

std::function<void()> setup_merge_command(CLI::App& app) {
    auto options = std::make_shared<MergeOptions>();
    app.add_option("frames", options->frames, "The photos, JPEG files of one size")->required();
    app.add_option("-o,--output", options->output, "Where the result goes, a JPEG file")->required();
    return [options] { merge(*options); };
}

}  // namespace korvane
