// SPDX-License-Identifier: Apache-2.0
#include "tools/bench/bench_server.h"

#include <arpa/inet.h>
#include <httplib.h>
#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <optional>
#include <semaphore>
#include <string_view>
#include <utility>

#include "tools/bench/effect_table.h"
#include "tools/bench/job_queue.h"
#include "tools/bench/page_files.h"
#include "tools/bench/photo_store.h"
#include "tools/command.h"
#include "tools/json.h"
#include "tools/photo/formats.h"
#include "tools/photo/photo_io.h"
#include "tools/scene.h"

namespace korvane {
namespace {

using httplib::Request;
using httplib::Response;
using Clock = std::chrono::steady_clock;

constexpr size_t kThreads = 64;
constexpr size_t kMaxQuestionBytes = size_t{64} * 1024;
constexpr size_t kLeastPreviewPixels = 1024;
constexpr ptrdiff_t kDecodersAtOnce = 2;
constexpr size_t kUploadBytesAtOnce = size_t{512} << 20;
constexpr uint32_t kSampleWidth = 1600;
constexpr uint32_t kSampleHeight = 1200;
constexpr const char* kRetrySeconds = "1";

// A refusal that is no fault of the photo or the values.
struct HttpError {
    int status;
    const char* text;
};

// Milliseconds of each part of the work, for a header that browsers and the page show.
class Timing {
  public:
    // Since the last part.
    double lap() {
        const auto now = Clock::now();
        return std::chrono::duration<double, std::milli>(now - std::exchange(m_Last, now)).count();
    }

    void add(const char* name, double milliseconds) {
        char text[64];
        std::snprintf(text, sizeof(text), "%s%s;dur=%.1f", m_Text.empty() ? "" : ", ", name, milliseconds);
        m_Text += text;
    }

    void add(const char* name) { add(name, lap()); }

    // `times` are parts of what was done since the last part; the rest is drawing.
    void add(const DrawTimes& times) {
        add("upload", times.upload);
        add("draw", lap() - times.upload - times.read);
        add("read", times.read);
    }

    const std::string& text() const { return m_Text; }

  private:
    Clock::time_point m_Last = Clock::now();
    std::string m_Text;
};

void refuse(Response& response, int status, const std::string& text) {
    response.status = status;
    if (status == 503) {
        response.set_header("Retry-After", kRetrySeconds);
    }
    response.set_content(json_line({{"error", text}}), "application/json");
}

void put_number(std::string& target, uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) {
        target += static_cast<char>(value >> shift & 0xFF);
    }
}

// Without compression: on one machine nothing is as quick, and the preview shows the very pixels.
std::string encode_bmp(Photo& photo) {
    constexpr uint32_t kFileHeaderBytes = 14;
    constexpr uint32_t kInfoHeaderBytes = 108;
    constexpr uint32_t kBitFields = 3;
    constexpr uint32_t kSrgb = 0x73524742;
    convert_photo(photo, IMAGE_FORMAT_TYPE_RGBA);
    const auto pixelBytes = static_cast<uint32_t>(photo.pixelCount() * 4);
    const uint32_t headerBytes = kFileHeaderBytes + kInfoHeaderBytes;
    std::string file = "BM";
    file.reserve(headerBytes + pixelBytes);
    for (const uint32_t number : {headerBytes + pixelBytes, 0U, headerBytes, kInfoHeaderBytes, photo.image->getWidth(),
                                  // Negative: the top row comes first.
                                  0U - photo.image->getHeight(),
                                  // One plane of 32 bits.
                                  0x00200001U, kBitFields, pixelBytes, 2835U, 2835U, 0U, 0U, 0x000000FFU, 0x0000FF00U,
                                  0x00FF0000U, 0xFF000000U, kSrgb}) {
        put_number(file, number);
    }
    file.resize(headerBytes);
    file.append(reinterpret_cast<const char*>(photo.pixels()), pixelBytes);
    for (size_t i = 0; i < photo.alpha.size(); ++i) {
        file[headerBytes + 4 * i + 3] = static_cast<char>(photo.alpha[i]);
    }
    return file;
}

DrawTimes run_chain(Photo& photo, const std::vector<BenchStep>& chain, double scale) {
    DrawTimes times;
    for (const BenchStep& step : chain) {
        step.effect->apply(photo, step.values, scale, times);
    }
    return times;
}

bool is_ip_literal(const std::string& host) {
    unsigned char address[16];
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
        return inet_pton(AF_INET6, host.substr(1, host.size() - 2).c_str(), address) == 1;
    }
    return inet_pton(AF_INET, host.c_str(), address) == 1;
}

const char* type_of(std::string_view name) {
    return name.ends_with(".css")  ? "text/css; charset=utf-8"
           : name.ends_with(".js") ? "text/javascript; charset=utf-8"
                                   : "text/html; charset=utf-8";
}

const char* type_of(PhotoFormat format) {
    switch (format) {
        case PhotoFormat::kPng:
            return "image/png";
        case PhotoFormat::kWebp:
            return "image/webp";
        default:
            return "image/jpeg";
    }
}

// Holds a share of something bounded.
class Share {
  public:
    Share(std::atomic<size_t>& used, size_t most) : m_Used(used), m_Most(most) {}
    ~Share() { m_Used -= m_Own; }
    Share(const Share&) = delete;
    Share& operator=(const Share&) = delete;

    bool take(size_t count) {
        if (m_Used.fetch_add(count) + count > m_Most) {
            m_Used -= count;
            return false;
        }
        m_Own += count;
        return true;
    }

  private:
    std::atomic<size_t>& m_Used;
    const size_t m_Most;
    size_t m_Own = 0;
};

}  // namespace

class BenchServer::Parts {
  public:
    explicit Parts(const BenchOptions& options)
        : m_Options(options), m_Token(random_name()), m_Jobs(options.waitingJobs), m_Photos({}) {
        configure();
        add_routes();
        const char* address = options.address.c_str();
        m_Port = options.port == 0                              ? m_Server.bind_to_any_port(address)
                 : m_Server.bind_to_port(address, options.port) ? options.port
                                                                : -1;
        if (m_Port <= 0) {
            throw CommandError("cannot listen on " + options.address + ", port " + std::to_string(options.port) +
                               ": it is taken, not allowed or no address of this machine");
        }
        // The HTTP library lets five connections wait; a crowd's others would be reset once the system gave up on them.
        constexpr int kWaitingConnections = 256;
        listen(m_Socket, kWaitingConnections);
    }

    std::string url() const {
        const bool isV6 = m_Options.address.find(':') != std::string::npos;
        return "http://" + (isV6 ? "[" + m_Options.address + "]" : m_Options.address) + ':' + std::to_string(m_Port) +
               '/' + m_Token + '/';
    }

    bool is_loopback() const {
        return m_Options.address == "localhost" || m_Options.address == "::1" || m_Options.address.starts_with("127.");
    }

    void run() { m_Server.listen_after_bind(); }

    void stop() {
        m_Jobs.end();
        m_Server.stop();
    }

  private:
    void configure() {
        m_Server.new_task_queue = [] { return new httplib::ThreadPool(kThreads); };
        m_Server.set_keep_alive_max_count(1);
        m_Server.set_read_timeout(std::chrono::seconds(5));
        m_Server.set_write_timeout(std::chrono::seconds(10));
        m_Server.set_tcp_nodelay(true);
        // A second program must not share the port, which the default allows.
        m_Server.set_socket_options([this](socket_t socket) {
            const int yes = 1;
            setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
            m_Socket = socket;
        });
        m_Server.set_default_headers({
            {"Content-Security-Policy",
             "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob: data:; connect-src 'self'; "
             "base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
            {"X-Content-Type-Options", "nosniff"},
            {"Referrer-Policy", "no-referrer"},
            {"Cache-Control", "no-store"},
            {"Cross-Origin-Opener-Policy", "same-origin"},
            {"Cross-Origin-Resource-Policy", "same-origin"},
        });
        m_Server.set_pre_routing_handler([this](const Request& request, Response& response) {
            return admits(request, response) ? httplib::Server::HandlerResponse::Unhandled
                                             : httplib::Server::HandlerResponse::Handled;
        });
        m_Server.set_expect_100_continue_handler(
            [this](const Request& request, Response& response) { return admits(request, response) ? 100 : 417; });
        m_Server.set_error_handler([](const Request& /*request*/, Response& response) {
            if (response.body.empty()) {
                refuse(response, response.status, "this request cannot be served");
            }
        });
        m_Server.set_exception_handler([](const Request& /*request*/, Response& response,
                                          const std::exception_ptr& fault) { answer_fault(response, fault); });
    }

    // Before the body is read.
    bool admits(const Request& request, Response& response) const {
        const auto no = [&](int status, const char* text) {
            refuse(response, status, text);
            return false;
        };
        if (!knows_host(request.get_header_value("Host"))) {
            return no(403, "the address in the browser is not this server's");
        }
        const std::string origin = request.get_header_value("Origin");
        const std::string site = request.get_header_value("Sec-Fetch-Site");
        const bool isOwn = !request.has_header("Origin") || origin == "http://" + request.get_header_value("Host");
        // The address may be typed or opened from anywhere; what it leads to may not.
        const bool isPage = request.method == "GET" && request.path == "/" + m_Token + "/";
        if (!isOwn || !(site.empty() || site == "same-origin" || site == "none" || isPage)) {
            return no(403, "another page may not use this server");
        }
        if (!request.path.starts_with("/" + m_Token + "/")) {
            return no(403, "open the link that 'korvane serve' printed");
        }
        if (request.method != "GET" && request.method != "HEAD" && request.method != "POST") {
            return no(405, "only GET and POST are known here");
        }
        if (request.has_header("Content-Encoding") || request.is_multipart_form_data()) {
            return no(415, "send the file itself, not packed");
        }
        if (request.has_header("Content-Length") &&
            std::strtoull(request.get_header_value("Content-Length").c_str(), nullptr, 10) > m_Options.maxFileBytes) {
            return no(413, "the file is too large");
        }
        return true;
    }

    bool knows_host(const std::string& host) const {
        const std::string port = ":" + std::to_string(m_Port);
        if (!host.ends_with(port)) {
            return false;
        }
        const std::string name = host.substr(0, host.size() - port.size());
        // To another address than loopback people come by its number, in one of several forms.
        return name == "localhost" || name == "127.0.0.1" || name == "[::1]" || name == m_Options.address ||
               (!is_loopback() && is_ip_literal(name));
    }

    static void answer_fault(Response& response, const std::exception_ptr& fault) {
        try {
            std::rethrow_exception(fault);
        } catch (const HttpError& error) {
            refuse(response, error.status, error.text);
        } catch (const CommandError& error) {
            refuse(response, 422, error.what());
        } catch (const std::bad_alloc&) {
            refuse(response, 503, "not enough memory");
        } catch (const std::exception&) {
            refuse(response, 500, "the server has a fault of its own");
        }
    }

    // Takes in the body. The reader stops at the first byte too many.
    std::string read_body(const httplib::ContentReader& reader, size_t mostBytes) {
        std::string body;
        Share share(m_UploadBytes, kUploadBytesAtOnce);
        const auto deadline = Clock::now() + std::chrono::seconds(m_Options.uploadSeconds);
        std::optional<HttpError> error;
        const bool isWhole = reader([&](const char* data, size_t count) {
            if (count > mostBytes - body.size()) {
                error = HttpError{413, "the file is too large"};
            } else if (Clock::now() > deadline) {
                error = HttpError{408, "the file came too slowly"};
            } else if (!share.take(count)) {
                error = HttpError{503, "too many files at once"};
            } else {
                body.append(data, count);
            }
            return !error;
        });
        if (error) {
            throw HttpError{*error};
        }
        if (!isWhole) {
            throw HttpError{408, "the file did not come to its end"};
        }
        return body;
    }

    Json read_question(const httplib::ContentReader& reader) {
        Json question = Json::parse(read_body(reader, kMaxQuestionBytes), nullptr, false);
        if (!question.is_object()) {
            throw HttpError{400, "the request is no JSON object"};
        }
        return question;
    }

    static std::string text_of(const Json& question, const char* key) {
        return question.contains(key) && question[key].is_string() ? question[key].get<std::string>() : std::string();
    }

    std::shared_ptr<const StoredPhoto> find_photo(const Json& question) {
        auto photo = m_Photos.find(text_of(question, "photo"));
        if (photo == nullptr) {
            throw HttpError{404, "the photo is gone: open it again"};
        }
        return photo;
    }

    // On the thread of the graphics context.
    void run_job(const std::string& key, bool mustBeDone, const std::function<void()>& work) {
        switch (m_Jobs.run(key, mustBeDone, work)) {
            case JobQueue::Outcome::kDone:
                return;
            case JobQueue::Outcome::kReplaced:
                throw HttpError{409, "a newer preview has taken its place"};
            case JobQueue::Outcome::kFull:
                throw HttpError{503, "too much to do; try again in a second"};
            case JobQueue::Outcome::kEnding:
                throw HttpError{503, "the server is ending"};
        }
    }

    // Pixels take more memory than files, so few are decoded at once.
    Photo decode(const Bytes& file, const char* name) {
        if (!m_Decoders.try_acquire_for(std::chrono::seconds(20))) {
            throw HttpError{503, "too many photos at once"};
        }
        struct Release {
            std::counting_semaphore<kDecodersAtOnce>& decoders;
            ~Release() { decoders.release(); }
        } const release{m_Decoders};
        return decode_photo(file, name, IMAGE_FORMAT_TYPE_RGB, m_Options.maxPixels);
    }

    void answer_photo(Response& response, Photo photo, Bytes file, Timing& timing) {
        auto stored = std::make_shared<StoredPhoto>();
        stored->file = std::move(file);
        stored->width = photo.image->getWidth();
        stored->height = photo.image->getHeight();
        const std::vector<std::string> warnings = photo.warnings;
        const PhotoFormat format = photo.format;
        Photo preview = shrink_photo(std::move(photo), m_Options.previewPixels);
        stored->preview.image = preview.image;
        stored->preview.alpha = std::move(preview.alpha);
        timing.add("shrink");
        const Json answer = {{"width", stored->width},
                             {"height", stored->height},
                             {"previewWidth", stored->preview.image->getWidth()},
                             {"previewHeight", stored->preview.image->getHeight()},
                             {"format", format_info(format).extensions.front()},
                             {"warnings", warnings}};
        Json whole = {{"id", m_Photos.add(std::move(stored))}};
        whole.update(answer);
        response.set_header("Server-Timing", timing.text());
        response.set_content(json_line(whole), "application/json");
    }

    void take_photo(const httplib::ContentReader& reader, Response& response) {
        Timing timing;
        const std::string body = read_body(reader, m_Options.maxFileBytes);
        Bytes file(body.begin(), body.end());
        timing.add("receive");
        Photo photo = decode(file, "the photo");
        timing.add("decode");
        answer_photo(response, std::move(photo), std::move(file), timing);
    }

    void take_sample(const httplib::ContentReader& reader, Response& response) {
        const std::string name = text_of(read_question(reader), "name");
        if (name != "house" && name != "portrait") {
            throw HttpError{404, "there is no such sample"};
        }
        Timing timing;
        Photo photo;
        photo.image =
            draw_scene(kSampleWidth, kSampleHeight, name == "house" ? SceneSubject::kHouse : SceneSubject::kPortrait);
        photo.format = PhotoFormat::kPng;
        Bytes file = encode_photo(photo, PhotoFormat::kPng, {}, name);
        timing.add("draw");
        answer_photo(response, std::move(photo), std::move(file), timing);
    }

    size_t wanted_pixels(const Json& question) const {
        if (!question.contains("pixels")) {
            return m_Options.previewPixels;
        }
        if (!question["pixels"].is_number_unsigned()) {
            throw HttpError{400, "the pixels are no whole number"};
        }
        return std::clamp(question["pixels"].get<size_t>(), kLeastPreviewPixels, m_Options.previewPixels);
    }

    void make_preview(const httplib::ContentReader& reader, Response& response) {
        const Json question = read_question(reader);
        const auto stored = find_photo(question);
        const std::vector<BenchStep> chain = read_chain(question.value("chain", Json::array()));
        const size_t pixels = wanted_pixels(question);
        // Thumbs of one page are many, and each is wanted: they come without a page.
        const std::string key = text_of(question, "page").substr(0, 64);
        Timing timing;
        Photo photo;
        run_job(key, false, [&] {
            timing.add("wait");
            photo = copy_pixels(stored->preview);
            const double before = photo.image->getWidth();
            photo = shrink_photo(std::move(photo), pixels);
            const double scale = stored->scale() * photo.image->getWidth() / before;
            timing.add("copy");
            timing.add(run_chain(photo, chain, scale));
        });
        // Moved, since set_content would copy megabytes.
        response.body = encode_bmp(photo);
        timing.add("encode");
        response.set_header("Content-Type", "image/bmp");
        response.set_header("Server-Timing", timing.text());
    }

    void save_photo(const httplib::ContentReader& reader, Response& response) {
        const Json question = read_question(reader);
        const auto stored = find_photo(question);
        const std::vector<BenchStep> chain = read_chain(question.value("chain", Json::array()));
        const std::string name = text_of(question, "format");
        const auto& formats = photo_formats();
        const auto format = std::find_if(formats.begin(), formats.end(),
                                         [&](const PhotoFormatInfo& info) { return name == info.extensions.front(); });
        if (format == formats.end()) {
            throw HttpError{400, "the format is none of jpg, png and webp"};
        }
        Timing timing;
        Photo photo = decode(stored->file, "the photo");
        timing.add("decode");
        run_job("", true, [&] {
            timing.add("wait");
            timing.add(run_chain(photo, chain, 1));
        });
        const Bytes file = encode_photo(photo, format->format, {}, "the photo");
        timing.add("encode");
        response.set_header("Server-Timing", timing.text());
        response.set_content(reinterpret_cast<const char*>(file.data()), file.size(), type_of(format->format));
    }

    void drop_photo(const httplib::ContentReader& reader, Response& response) {
        m_Photos.drop(text_of(read_question(reader), "photo"));
        response.set_content("{}", "application/json");
    }

    void add_routes() {
        const std::string root = "/" + m_Token + "/";
        for (const PageFile& file : page_files()) {
            const std::string name = file.name == "index.html" ? "" : std::string(file.name);
            m_Server.Get(root + name, [file](const Request& /*request*/, Response& response) {
                response.set_content(file.text.data(), file.text.size(), type_of(file.name));
            });
        }
        m_Server.Get(root + "api/effects", [](const Request& /*request*/, Response& response) {
            response.set_content(bench_effects_json(), "application/json");
        });
        const struct {
            const char* name;
            void (Parts::*answer)(const httplib::ContentReader& reader, Response& response);
        } posts[] = {
            {"photos", &Parts::take_photo}, {"samples", &Parts::take_sample}, {"preview", &Parts::make_preview},
            {"save", &Parts::save_photo},   {"drop", &Parts::drop_photo},
        };
        for (const auto& post : posts) {
            m_Server.Post(root + "api/" + post.name,
                          [this, answer = post.answer](const Request& /*request*/, Response& response,
                                                       const httplib::ContentReader& reader) {
                              try {
                                  response.status = 200;
                                  (this->*answer)(reader, response);
                              } catch (...) {
                                  answer_fault(response, std::current_exception());
                              }
                          });
        }
    }

    const BenchOptions m_Options;
    const std::string m_Token;
    std::atomic<size_t> m_UploadBytes{0};
    std::counting_semaphore<kDecodersAtOnce> m_Decoders{kDecodersAtOnce};
    JobQueue m_Jobs;
    PhotoStore m_Photos;
    httplib::Server m_Server;
    socket_t m_Socket = INVALID_SOCKET;
    int m_Port = -1;
};

BenchServer::BenchServer(const BenchOptions& options) : m_Parts(std::make_unique<Parts>(options)) {}

BenchServer::~BenchServer() = default;

std::string BenchServer::url() const {
    return m_Parts->url();
}

bool BenchServer::is_loopback() const {
    return m_Parts->is_loopback();
}

void BenchServer::run() {
    m_Parts->run();
}

void BenchServer::stop() {
    m_Parts->stop();
}

}  // namespace korvane
