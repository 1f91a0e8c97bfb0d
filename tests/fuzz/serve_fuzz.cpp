// SPDX-License-Identifier: Apache-2.0
// Requests to the playground over a real socket: rubbish, and what gets past the door to each route. Every answer is
// HTTP and none is a fault of the server's own.
#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <thread>

#include "tests/frameworks/images/jpeg_reference.h"
#include "tests/fuzz/fuzz.h"
#include "tools/bench/bench_server.h"

namespace {

class Playground {
  public:
    Playground() : m_Server({"127.0.0.1", 0, 4096, 10'000, 1024, 32, 1}), m_Thread([this] { m_Server.run(); }) {
        // http://HOST/TOKEN/
        const std::string url = m_Server.url();
        const size_t slash = url.find('/', 7);
        m_Host = url.substr(7, slash - 7);
        m_Root = url.substr(slash);
        const Bytes file = reference_encode(Bytes(16 * 9 * 3, 99), 16, 9, {});
        const std::string answer = ask(request("POST", "api/photos", "", {file.begin(), file.end()}), false);
        REQUIRE(answer.find("\"id\":\"") != std::string::npos);
        photo = answer.substr(answer.find("\"id\":\"") + 6, 32);
        // The tables and the graphics driver that answers use are set up before this object is, so at exit they go
        // after it: a request may still be at work then.
        REQUIRE(ask(request("GET", "api/effects", "", ""), false).starts_with("HTTP/1.1 200"));
        REQUIRE(ask(request("POST", "api/preview", "",
                            R"({"photo":")" + photo + R"(","chain":[{"effect":"filter-Xray","values":{}}]})"),
                    false)
                    .starts_with("HTTP/1.1 200"));
    }
    ~Playground() {
        m_Server.stop();
        m_Thread.join();
    }

    std::string request(const std::string& method, const std::string& path, const std::string& header,
                        const std::string& body) const {
        return method + ' ' + m_Root + path + " HTTP/1.1\r\nHost: " + m_Host + header +
               "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
    }

    // All that comes back. A server that waits for more learns that there is none; but it does not answer then.
    std::string ask(const std::string& text, bool isRubbish) const {
        const int connection = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<uint16_t>(std::stoi(m_Host.substr(m_Host.find(':') + 1))));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        REQUIRE(connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0);
        // The server may hang up before it has read everything.
        static_cast<void>(send(connection, text.data(), text.size(), MSG_NOSIGNAL));
        if (isRubbish) {
            shutdown(connection, SHUT_WR);
        }
        std::string answer;
        char part[16384];
        ssize_t count = 0;
        while ((count = recv(connection, part, sizeof(part), 0)) > 0) {
            answer.append(part, static_cast<size_t>(count));
        }
        close(connection);
        // A refusal may come before the body is read; the reset that follows it can overtake it.
        return count < 0 && answer.empty() ? "HTTP/1.1 reset" : answer;
    }

    std::string photo;

  private:
    korvane::BenchServer m_Server;
    std::thread m_Thread;
    std::string m_Root, m_Host;
};

// Near enough to what the routes take that some chains get to their work.
std::string question(Input& input, const std::string& photo) {
    static const char* const kSteps[] = {"blur-stack\",\"values\":{\"radius", "blur-iir\",\"values\":{\"alpha",
                                         "blur-gauss\",\"values\":{\"color",  "palette\",\"values\":{\"colors",
                                         "stamp\",\"values\":{\"text",        "corners\",\"values\":{\"distance",
                                         "corners\",\"values\":{\"keepAll",   "filter-Xray\",\"values\":{\"blurStep"};
    std::string chain;
    for (int steps = input.between(0, 3); steps > 0; --steps) {
        chain += std::string(chain.empty() ? "" : ",") + R"({"effect":")" + input.PickValueInArray(kSteps) + "\":";
        chain +=
            (input.ConsumeBool() ? std::to_string(input.hostile(300)) : input.ConsumeRandomLengthString(20)) + "}}";
    }
    return R"({"photo":")" + photo + R"(","format":")" + (input.ConsumeBool() ? "png" : "jpg") + R"(","pixels":)" +
           std::to_string(input.hostile(3000)) + R"(,"chain":[)" + chain + "]}";
}

}  // namespace

void fuzz(Input& input) {
    static const Playground playground;
    static const char* const kPaths[] = {"",         "api/effects", "api/photos", "api/samples", "api/preview",
                                         "api/save", "api/drop",    "app.js"};
    const int kind = input.between(0, 7);
    std::string text;
    if (kind == 0) {
        text = input.ConsumeRemainingBytesAsString();
    } else {
        const std::string method = input.PickValueInArray({"GET", "POST", "POST", "POST", "HEAD", "PUT"});
        const std::string path = kind == 1 ? input.ConsumeRandomLengthString(60) : input.PickValueInArray(kPaths);
        const std::string header = kind == 2 ? "\r\n" + input.ConsumeRandomLengthString(80) : "";
        // The photo stays for the next one.
        const std::string body = input.ConsumeBool() ? question(input, path == "api/drop" ? "none" : playground.photo)
                                                     : input.ConsumeRemainingBytesAsString();
        text = playground.request(method, path, header, body);
    }
    const std::string answer = playground.ask(text, kind < 3);
    REQUIRE(answer.starts_with("HTTP/1.1 ") || (answer.empty() && kind < 3));
    REQUIRE(!answer.starts_with("HTTP/1.1 500"));
}
