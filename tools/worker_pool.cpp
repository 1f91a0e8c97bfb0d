// SPDX-License-Identifier: Apache-2.0
#include "tools/worker_pool.h"

#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <limits>
#include <new>
#include <sstream>
#include <vector>

#include "tools/command.h"
#include "tools/photo/interrupts.h"

namespace korvane {
namespace {

constexpr int kTickMilliseconds = 200;
// A worker that a hostile file has got hold of may send anything.
constexpr size_t kMaxTextBytes = size_t{1} << 30;
constexpr size_t kNoJob = std::numeric_limits<size_t>::max();

// One end of the socket between the calling process and a worker. The one sends indices, the other answers each with a
// status and three texts. Both work on the same machine, so numbers go as they are.
bool send_bytes(int channel, const void* bytes, size_t size) {
    const auto* at = static_cast<const char*>(bytes);
    while (size > 0) {
        const ssize_t count = send(channel, at, size, MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        at += std::max<ssize_t>(0, count);
        size -= static_cast<size_t>(std::max<ssize_t>(0, count));
    }
    return true;
}

bool receive_bytes(int channel, void* bytes, size_t size) {
    auto* at = static_cast<char*>(bytes);
    while (size > 0) {
        const ssize_t count = recv(channel, at, size, 0);
        if (count == 0 || (count < 0 && errno != EINTR)) {
            return false;
        }
        at += std::max<ssize_t>(0, count);
        size -= static_cast<size_t>(std::max<ssize_t>(0, count));
    }
    return true;
}

bool send_text(int channel, const std::string& text) {
    const size_t size = text.size();
    return send_bytes(channel, &size, sizeof(size)) && send_bytes(channel, text.data(), size);
}

bool receive_text(int channel, std::string& text) {
    size_t size = 0;
    if (!receive_bytes(channel, &size, sizeof(size)) || size > kMaxTextBytes) {
        return false;
    }
    text.resize(size);
    return receive_bytes(channel, text.data(), size);
}

bool send_result(int channel, const JobResult& result) {
    return send_bytes(channel, &result.status, sizeof(result.status)) && send_text(channel, result.error) &&
           send_text(channel, result.output) && send_text(channel, result.warnings);
}

bool receive_result(int channel, JobResult& result) {
    return receive_bytes(channel, &result.status, sizeof(result.status)) && receive_text(channel, result.error) &&
           receive_text(channel, result.output) && receive_text(channel, result.warnings);
}

// What a stream is given while this exists.
class Capture {
  public:
    explicit Capture(std::ostream& stream) : m_Stream(stream), m_Own(stream.rdbuf(m_Text.rdbuf())) {}
    ~Capture() { m_Stream.rdbuf(m_Own); }
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;
    std::string text() const { return m_Text.str(); }

  private:
    std::ostringstream m_Text;
    std::ostream& m_Stream;
    std::streambuf* m_Own;
};

JobResult do_job(const Jobs& jobs, size_t index) {
    JobResult result;
    const Capture output(std::cout);
    const Capture warnings(std::cerr);
    try {
        jobs.work(index);
        result.status = JobStatus::kDone;
    } catch (const UsageError& error) {
        result.status = JobStatus::kWrongUsage;
        result.error = error.what();
    } catch (const std::bad_alloc&) {
        result.error = "not enough memory";
    } catch (const std::exception& error) {
        result.error = error.what();
    }
    result.output = output.text();
    result.warnings = warnings.text();
    return result;
}

[[noreturn]] void serve_as_worker(const Jobs& jobs, int channel) {
    size_t index = 0;
    while (receive_bytes(channel, &index, sizeof(index)) && send_result(channel, do_job(jobs, index))) {
    }
    std::exit(0);
}

std::string describe_end(int status) {
    if (WIFSIGNALED(status)) {
        return std::string("its worker was ended by a signal: ") + strsignal(WTERMSIG(status));
    }
    return "its worker ended with exit code " + std::to_string(WEXITSTATUS(status));
}

bool was_interrupted(int status) {
    constexpr int kInterrupts[] = {SIGINT, SIGTERM, SIGHUP};
    return WIFSIGNALED(status) && std::count(std::begin(kInterrupts), std::end(kInterrupts), WTERMSIG(status)) > 0;
}

struct Worker {
    pid_t process = 0;
    int channel = -1;
    size_t job = kNoJob;
};

class Pool {
  public:
    explicit Pool(const Jobs& jobs) : m_Jobs(jobs) {}
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;

    ~Pool() {
        for (const Worker& worker : m_Workers) {
            if (worker.process != 0) {
                kill(worker.process, SIGTERM);
            }
        }
        for (Worker& worker : m_Workers) {
            end(worker);
        }
    }

    void run() {
        start_workers();
        while (!interrupt_is_pending() && !m_Workers.empty()) {
            std::vector<pollfd> channels;
            for (const Worker& worker : m_Workers) {
                channels.push_back({worker.channel, POLLIN, 0});
            }
            const int ready = poll(channels.data(), channels.size(), kTickMilliseconds);
            m_Jobs.tick();
            for (size_t i = 0; ready > 0 && i < channels.size(); ++i) {
                if (channels[i].revents != 0 && !hear(m_Workers[i])) {
                    return;
                }
            }
            std::erase_if(m_Workers, [](const Worker& worker) { return worker.process == 0; });
            start_workers();
        }
    }

  private:
    // As many as there is work for.
    void start_workers() {
        while (m_Workers.size() < m_Jobs.workers && m_Next < m_Jobs.count && !interrupt_is_pending()) {
            if (!start_worker()) {
                if (m_Workers.empty()) {
                    throw CommandError(std::string("cannot start a process: ") + std::strerror(errno));
                }
                return;
            }
        }
    }

    bool start_worker() {
        int channel[2] = {-1, -1};
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, channel) != 0) {
            return false;
        }
        const pid_t parent = getpid();
        // The child must not print what is still buffered here.
        std::cout.flush();
        const pid_t process = fork();
        if (process == 0) {
            watch_interrupts_in_child();
            // It ends when its parent does, however that ends.
            prctl(PR_SET_PDEATHSIG, SIGTERM);
            if (getppid() != parent) {
                _exit(0);
            }
            close(channel[0]);
            for (const Worker& worker : m_Workers) {
                close(worker.channel);
            }
            serve_as_worker(m_Jobs, channel[1]);
        }
        const int error = errno;
        close(channel[1]);
        if (process < 0) {
            close(channel[0]);
            errno = error;
            return false;
        }
        m_Workers.push_back({process, channel[0], kNoJob});
        give_job(m_Workers.back());
        return true;
    }

    // A worker that is gone is noticed when its answer is read. Without a job it is let go.
    void give_job(Worker& worker) {
        worker.job = m_Next < m_Jobs.count ? m_Next++ : kNoJob;
        if (worker.job == kNoJob) {
            end(worker);
        } else {
            send_bytes(worker.channel, &worker.job, sizeof(worker.job));
        }
    }

    // False when no more is wanted.
    bool hear(Worker& worker) {
        JobResult result;
        const size_t job = worker.job;
        const bool isAlive = receive_result(worker.channel, result);
        if (!isAlive) {
            const int status = end(worker);
            // An interrupt at the terminal reaches all processes at once, this one perhaps a little later.
            if (was_interrupted(status)) {
                poll(nullptr, 0, kTickMilliseconds);
            }
            if (interrupt_is_pending()) {
                return false;
            }
            result = {JobStatus::kFailed, describe_end(status), {}, {}};
        }
        if (isAlive) {
            give_job(worker);
        }
        return m_Jobs.report(job, result);
    }

    // Waits for the process and returns its status.
    static int end(Worker& worker) {
        int status = 0;
        if (worker.process != 0) {
            close(worker.channel);
            while (waitpid(worker.process, &status, 0) < 0 && errno == EINTR) {
            }
        }
        worker = {};
        return status;
    }

    const Jobs& m_Jobs;
    std::vector<Worker> m_Workers;
    size_t m_Next = 0;
};

}  // namespace

void run_in_workers(const Jobs& jobs) {
    Pool(jobs).run();
}

}  // namespace korvane
