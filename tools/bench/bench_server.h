// SPDX-License-Identifier: Apache-2.0
// The playground: a page on this machine that runs the library on photos that a browser hands in.
//
// What keeps other pages and other people out: it listens on the loopback address, every path begins with a random
// token, Host and Origin must be its own (so a name that is bound to this address anew gets nowhere), and no request
// ever names a path of the disk. What keeps it standing: limits on bytes, pixels, time, photos and waiting jobs. Each
// connection carries one request, so that a body which was refused unread cannot be taken for the next one.
//
//   GET    /TOKEN/                      the page; its files lie beside it
//   GET    /TOKEN/api/effects           the table of effects
//   POST   /TOKEN/api/photos            a file; answers {"id", "width", "height", "previewWidth", "previewHeight", ...}
//   POST   /TOKEN/api/samples           {"name": "house" or "portrait"}; answers the same
//   POST   /TOKEN/api/preview           {"photo", "chain", "page", "pixels"}; answers a BMP file of at most so many
//   POST   /TOKEN/api/save              {"photo", "chain", "format"}; answers a file of the full size
//   POST   /TOKEN/api/drop              {"photo"}: the page closes
//
// A refusal is {"error": one sentence} with a status of 4xx, or of 503 with Retry-After while there is too much to do.
#ifndef KORVANE_TOOLS_BENCH_BENCH_SERVER_H_
#define KORVANE_TOOLS_BENCH_BENCH_SERVER_H_

#include <cstddef>
#include <memory>
#include <string>

namespace korvane {

struct BenchOptions {
    std::string address = "127.0.0.1";
    int port = 0;  // 0: any free one
    size_t maxFileBytes = size_t{64} << 20;
    size_t maxPixels = 64'000'000;
    size_t previewPixels = 2'000'000;
    size_t waitingJobs = 32;
    int uploadSeconds = 30;
};

class BenchServer {
  public:
    // Takes the port. Throws CommandError when it is not free.
    explicit BenchServer(const BenchOptions& options);
    ~BenchServer();
    BenchServer(const BenchServer&) = delete;
    BenchServer& operator=(const BenchServer&) = delete;

    // With the token.
    std::string url() const;
    bool is_loopback() const;

    // Serves until stop() is called on another thread. Requests that have begun are answered.
    void run();
    void stop();

  private:
    class Parts;
    std::unique_ptr<Parts> m_Parts;
};

}  // namespace korvane

#endif  // KORVANE_TOOLS_BENCH_BENCH_SERVER_H_
