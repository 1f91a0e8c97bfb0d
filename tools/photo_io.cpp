#include "tools/photo_io.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "frameworks/images/color_convert.h"
#include "frameworks/images/image_decoder_factory.h"
#include "frameworks/images/image_encoder_factory.h"
#include "frameworks/io/file_stream.h"
#include "platform/log.h"
#include "tools/command.h"

namespace korvane {
namespace {

namespace fs = std::filesystem;

// The codec says only that it failed; what libjpeg had to say about it goes to the log, and is picked up there.
class CodecMessage {
  public:
    CodecMessage() { swap_android_log_listener(m_Others); }
    ~CodecMessage() { swap_android_log_listener(m_Others); }
    CodecMessage(const CodecMessage&) = delete;
    CodecMessage& operator=(const CodecMessage&) = delete;

    const std::string& text() const { return m_Text; }

  private:
    static void sink(void* user, int priority, const char* tag, const char* text) {
        auto* self = static_cast<CodecMessage*>(user);
        constexpr char kBeforeMessage[] = "  msg: ";
        if (const char* found = strstr(text, kBeforeMessage)) {
            std::string& message = self->m_Text;
            message = found + strlen(kBeforeMessage);
            message.erase(message.find_last_not_of('\n') + 1);
        }
        // Another thread may be at work while a photo is read, and somebody may be following it.
        if (self->m_Others.sink != nullptr) {
            self->m_Others.sink(self->m_Others.user, priority, tag, text);
        }
    }

    std::string m_Text;
    // Ours, until the constructor swaps it for the one that was there.
    AndroidLogListener m_Others{sink, this};
};

// Knows whether the decoder, at the last, asked for more than the file holds.
class PhotoSource : public FileStream {
  public:
    explicit PhotoSource(const std::string& path) : FileStream(path.c_str(), FILE_MODE_ONLY_READ) {}

    size_t read(void* buffer, size_t count) override {
        const size_t got = FileStream::read(buffer, count);
        m_RanOut = got == 0;
        return got;
    }

    bool ranOut() const { return m_RanOut; }

  private:
    bool m_RanOut = false;
};

// Counts what it was asked to write: a full disk may show as late as in the last flush, which has no answer.
class PhotoTarget : public FileStream {
  public:
    explicit PhotoTarget(const std::string& path) : FileStream(path.c_str(), FILE_MODE_ONLY_WRITE) {}

    size_t write(void* buffer, size_t count) override {
        m_Asked += count;
        return FileStream::write(buffer, count);
    }

    size_t asked() const { return m_Asked; }

  private:
    size_t m_Asked = 0;
};

class TemporaryFile {
  public:
    explicit TemporaryFile(fs::path path) : m_Path(std::move(path)) {}
    ~TemporaryFile() {
        std::error_code ignored;
        fs::remove(m_Path, ignored);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const fs::path& path() const { return m_Path; }

  private:
    fs::path m_Path;
};

[[noreturn]] void fail(const char* what, const std::string& path, const std::string& why) {
    throw CommandError(std::string(what) + " " + path + ": " + why);
}

std::string error_text(int error) {
    return std::generic_category().message(error);
}

void check_readable(const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::directory) {
        fail("cannot read", path, "it is a directory");
    }
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        fail("cannot read", path, "it is not a regular file");
    }
    if (access(path.c_str(), R_OK) != 0) {
        fail("cannot read", path, error_text(errno));
    }
}

// Follows symbolic links, so that renaming replaces what they point to and not the link.
fs::path resolve_target(const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) {
        return path;
    }
    if (!fs::is_regular_file(status)) {
        fail("cannot write", path, "it is not a regular file");
    }
    if (access(path.c_str(), W_OK) != 0) {
        fail("cannot write", path, error_text(errno));
    }
    const fs::path resolved = fs::canonical(path, error);
    return error ? fs::path(path) : resolved;
}

auto_ptr<Image> convert_photo(auto_ptr<Image>& image, ImageFormatType format, const std::string& path) {
    if (image->getFormatType() == format) {
        return image;
    }
    auto_ptr<Image> converted = ColorConvert::convert(image, image->getFormatType() * 256 + format);
    if (converted.get() == nullptr || converted->getPlanes()[0] == nullptr) {
        fail("cannot read", path, "not enough memory");
    }
    return converted;
}

}  // namespace

auto_ptr<Image> read_photo(const std::string& path, ImageFormatType format) {
    check_readable(path);
    const CodecMessage message;
    auto* source = new PhotoSource(path);
    auto_ptr<Stream> stream(source);
    auto_ptr<ImageDecoderFactory> factory(new ImageDecoderFactory);
    ImageDecoder* decoder = factory->createImageDecoder(stream);
    if (decoder == nullptr) {
        fail("cannot read", path, "it is not a JPEG file");
    }
    auto_ptr<Image> image(new Image(0, 0, 1, IMAGE_FORMAT_TYPE_NONE, nullptr));
    if (!decoder->decode(stream, image)) {
        if (!message.text().empty()) {
            fail("cannot read", path, "damaged or unsupported JPEG: " + message.text());
        }
        fail("cannot read", path, source->ranOut() ? "the JPEG file is cut short" : "the picture is too large");
    }
    if (image->getFormatType() == IMAGE_FORMAT_TYPE_NONE) {
        fail("cannot read", path, "only grayscale and colour JPEG files are supported, not CMYK ones");
    }
    if (image->getPlanes()[0] == nullptr) {
        fail("cannot read", path, "not enough memory");
    }
    return convert_photo(image, format, path);
}

void write_photo(const std::string& path, auto_ptr<Image>& image, int quality) {
    const fs::path target = resolve_target(path);
    const TemporaryFile temporary(target.string() + "." + std::to_string(getpid()) + ".tmp");
    const CodecMessage message;
    errno = 0;
    auto* file = new PhotoTarget(temporary.path());
    auto_ptr<Stream> stream(file);
    if (!stream->rewind()) {
        fail("cannot write", path, error_text(errno));
    }
    auto_ptr<ImageEncoderFactory> factory(new ImageEncoderFactory);
    auto_ptr<ImageEncoder> encoder(factory->createImageEncoder(ImageEncoder::IMAGE_ENCODER_TYPE_JPEG));
    const bool encoded = encoder->encode(stream, image, quality);
    stream->close();
    if (!encoded) {
        fail("cannot write", path, message.text().empty() ? "not enough memory" : message.text());
    }
    std::error_code error;
    if (fs::file_size(temporary.path(), error) != file->asked() || error) {
        fail("cannot write", path, "not all bytes could be written (is the disk full?)");
    }
    fs::rename(temporary.path(), target, error);
    if (error) {
        fail("cannot write", path, error.message());
    }
}

}  // namespace korvane
