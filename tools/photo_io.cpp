#include "tools/photo_io.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "frameworks/images/color_convert.h"
#include "frameworks/images/image_encoder_factory.h"
#include "frameworks/images/jpeg_decoder.h"
#include "frameworks/images/jpeg_report.h"
#include "frameworks/io/file_stream.h"
#include "tools/command.h"

namespace korvane {
namespace {

namespace fs = std::filesystem;

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
    auto_ptr<Stream> stream(new FileStream(path.c_str(), FileStream::FILE_MODE_ONLY_READ));
    if (!JpegDecoder().isSupported(stream)) {
        fail("cannot read", path, "it is not a JPEG file");
    }
    auto_ptr<Image> image(new Image(0, 0, 1, IMAGE_FORMAT_TYPE_NONE, nullptr));
    JpegReport report;
    if (!decode_jpeg(*stream, *image, report)) {
        if (report.error[0] != '\0') {
            fail("cannot read", path, std::string("damaged or unsupported JPEG: ") + report.error);
        }
        fail("cannot read", path, report.endsEarly ? "the JPEG file is cut short" : "the picture is too large");
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
        fail("cannot write", path, "the picture cannot be encoded, or the disk is full");
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
