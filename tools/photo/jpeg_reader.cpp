// SPDX-License-Identifier: Apache-2.0
// Reads JPEG files. The pixels come from the library's decoder. What it refuses is decoded here: progressive files that
// need more working memory than it allows itself, and CMYK files.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

#include "frameworks/images/jpeg_report.h"
#include "frameworks/io/stream.h"
#include "tools/photo/cmyk.h"
#include "tools/photo/formats.h"

namespace korvane {
namespace {

constexpr long kMaxWorkingMemoryBytes = 2L * 1024 * 1024 * 1024 - 1;
constexpr int kMaxScans = 500;
constexpr size_t kMaxImageBytes = 0xFFFFFFFF;

constexpr int kMarkerApp1 = JPEG_APP0 + 1;
constexpr int kMarkerApp2 = JPEG_APP0 + 2;
constexpr int kMarkerApp13 = JPEG_APP0 + 13;
constexpr unsigned int kMaxMarkerBytes = 0xFFFF;

using namespace std::string_view_literals;
constexpr std::string_view kExifName = "Exif\0\0"sv;
constexpr std::string_view kXmpName = "http://ns.adobe.com/xap/1.0/\0"sv;
constexpr std::string_view kPhotoshopName = "Photoshop 3.0\0"sv;

// The whole file in memory, as a stream that rewinds.
class BytesStream : public Stream {
  public:
    explicit BytesStream(const Bytes& bytes) : m_Bytes(bytes) {}

    size_t read(void* buffer, size_t count) override {
        count = std::min(count, m_Bytes.size() - m_Position);
        if (buffer != nullptr && count > 0) {
            std::memcpy(buffer, m_Bytes.data() + m_Position, count);
        }
        m_Position += count;
        return count;
    }
    size_t write(void* /*buffer*/, size_t /*count*/) override { return 0; }
    int64_t seek(int64_t /*offset*/, SeekOrign /*origin*/) override { return -1; }
    bool rewind() override {
        m_Position = 0;
        return true;
    }
    size_t getLength() override { return m_Bytes.size(); }
    void flush() override {}
    bool isAtEnd() const override { return m_Position == m_Bytes.size(); }
    void close() override {}

  private:
    const Bytes& m_Bytes;
    size_t m_Position = 0;
};

void limit_scans(j_common_ptr cinfo) {
    if (reinterpret_cast<j_decompress_ptr>(cinfo)->input_scan_number > kMaxScans) {
        cinfo->err->error_exit(cinfo);
    }
}

// libjpeg's object. Its fatal errors jump to the setjmp of the operation that called it; no operation has an object
// with a destructor alive meanwhile.
class JpegFile {
  public:
    explicit JpegFile(Stream* stream) : m_Source(stream) {
        m_Info.err = init_jpeg_reporting_errors(&m_Errors, &report);
    }
    ~JpegFile() { jpeg_destroy_decompress(&m_Info); }
    JpegFile(const JpegFile&) = delete;
    JpegFile& operator=(const JpegFile&) = delete;

    bool readHeader() {
        if (setjmp(m_Errors.fJmpBuf) != 0) {
            return false;
        }
        jpeg_create_decompress(&m_Info);
        m_Info.src = &m_Source;
        m_Info.mem->max_memory_to_use = kMaxWorkingMemoryBytes;
        m_Progress.progress_monitor = limit_scans;
        m_Info.progress = &m_Progress;
        for (const int marker : {kMarkerApp1, kMarkerApp2, kMarkerApp13, JPEG_COM}) {
            jpeg_save_markers(&m_Info, marker, kMaxMarkerBytes);
        }
        if (jpeg_read_header(&m_Info, TRUE) == JPEG_HEADER_OK) {
            return true;
        }
        report.endsEarly = true;
        return false;
    }

    // False without a profile, and when its pieces do not fit together.
    bool readIccProfile(JOCTET** profile, unsigned int* bytes) {
        if (setjmp(m_Errors.fJmpBuf) != 0) {
            return false;
        }
        return jpeg_read_icc_profile(&m_Info, profile, bytes);
    }

    bool start() {
        if (setjmp(m_Errors.fJmpBuf) != 0) {
            return false;
        }
        if (isCmyk()) {
            m_Info.out_color_space = JCS_CMYK;
        }
        report.endsEarly = !jpeg_start_decompress(&m_Info);
        return !report.endsEarly;
    }

    bool readLines(unsigned char* pixels) {
        if (setjmp(m_Errors.fJmpBuf) != 0) {
            return false;
        }
        const size_t strideBytes = size_t{m_Info.output_width} * static_cast<size_t>(m_Info.output_components);
        while (m_Info.output_scanline < m_Info.output_height) {
            JSAMPROW row = pixels + m_Info.output_scanline * strideBytes;
            if (jpeg_read_scanlines(&m_Info, &row, 1) == 0) {
                report.endsEarly = true;
                return false;
            }
        }
        report.endsEarly = !jpeg_finish_decompress(&m_Info);
        return true;
    }

    bool isCmyk() const { return m_Info.jpeg_color_space == JCS_CMYK || m_Info.jpeg_color_space == JCS_YCCK; }
    const jpeg_decompress_struct& info() const { return m_Info; }

    JpegReport report;

  private:
    jpeg_utils_source_mgr m_Source;
    JpegReportingErrors m_Errors;
    jpeg_progress_mgr m_Progress = {};
    jpeg_decompress_struct m_Info = {};
};

[[noreturn]] void fail(const JpegReport& report) {
    if (report.error[0] != '\0') {
        throw FormatError(std::string("damaged or unsupported JPEG: ") + report.error);
    }
    throw FormatError(report.endsEarly ? "the JPEG file is cut short" : "the picture is too large");
}

bool take_block(const jpeg_saved_marker_ptr marker, int code, std::string_view name, Bytes& block) {
    if (marker->marker != code || marker->data_length < name.size() ||
        std::memcmp(marker->data, name.data(), name.size()) != 0) {
        return false;
    }
    // A second EXIF block is no part of the first, but Photoshop's resources go on in a second marker.
    if (block.empty() || code == kMarkerApp13) {
        block.insert(block.end(), marker->data + name.size(), marker->data + marker->data_length);
    }
    return true;
}

void take_metadata(JpegFile& file, Metadata& metadata) {
    const jpeg_decompress_struct& info = file.info();
    for (jpeg_saved_marker_ptr marker = info.marker_list; marker != nullptr; marker = marker->next) {
        if (marker->marker == JPEG_COM) {
            metadata.comments.emplace_back(marker->data, marker->data + marker->data_length);
        } else if (!take_block(marker, kMarkerApp1, kExifName, metadata.exif) &&
                   !take_block(marker, kMarkerApp1, kXmpName, metadata.xmp)) {
            take_block(marker, kMarkerApp13, kPhotoshopName, metadata.photoshop);
        }
    }
    if (info.saw_JFIF_marker) {
        constexpr DensityUnit kUnits[] = {DensityUnit::kAspect, DensityUnit::kInch, DensityUnit::kCentimetre};
        const DensityUnit unit = info.density_unit < 3 ? kUnits[info.density_unit] : DensityUnit::kNone;
        metadata.density = {unit, info.X_density, info.Y_density};
    }
    JOCTET* profile = nullptr;
    unsigned int bytes = 0;
    if (file.readIccProfile(&profile, &bytes)) {
        metadata.icc.assign(profile, profile + bytes);
        free(profile);
    } else if (file.report.error[0] != '\0') {
        throw std::bad_alloc();
    }
}

void take_style(const jpeg_decompress_struct& info, JpegStyle& style) {
    for (int i = 0; i < std::min(info.num_components, 2); ++i) {
        // libjpeg looks at this number only when it decodes the component.
        const int number = info.comp_info[i].quant_tbl_no;
        const JQUANT_TBL* table = number >= 0 && number < NUM_QUANT_TBLS ? info.quant_tbl_ptrs[number] : nullptr;
        if (table == nullptr) {
            style.tables.clear();
            return;
        }
        QuantTable& values = style.tables.emplace_back();
        std::copy(std::begin(table->quantval), std::end(table->quantval), values.begin());
    }
    if (info.num_components == 3) {
        const jpeg_component_info& luma = info.comp_info[0];
        const jpeg_component_info& chroma = info.comp_info[1];
        const Subsampling found = {std::max(1, luma.h_samp_factor / chroma.h_samp_factor),
                                   std::max(1, luma.v_samp_factor / chroma.v_samp_factor)};
        // libjpeg writes at most 10 blocks together, two of them chroma.
        constexpr int kMaxLumaBlocks = 8;
        style.subsampling = found.horizontal * found.vertical <= kMaxLumaBlocks ? found : Subsampling();
    }
}

// `file` is past its header.
void decode_here(JpegFile& file, Photo& photo) {
    if (!file.start()) {
        fail(file.report);
    }
    const jpeg_decompress_struct& info = file.info();
    const size_t channels = static_cast<size_t>(info.output_components);
    if (channels * info.output_width > kMaxImageBytes / info.output_height) {
        fail(file.report);
    }
    constexpr ImageFormatType kFormats[] = {IMAGE_FORMAT_TYPE_NONE, IMAGE_FORMAT_TYPE_GRAY, IMAGE_FORMAT_TYPE_NONE,
                                            IMAGE_FORMAT_TYPE_RGB, IMAGE_FORMAT_TYPE_RGBA};
    if (channels >= std::size(kFormats) || kFormats[channels] == IMAGE_FORMAT_TYPE_NONE) {
        throw FormatError("a JPEG file of " + std::to_string(channels) + " channels");
    }
    photo.image = make_image(info.output_width, info.output_height, kFormats[channels]);
    if (!file.readLines(photo.pixels())) {
        fail(file.report);
    }
    if (file.isCmyk()) {
        convert_cmyk(photo, info.saw_Adobe_marker);
    }
}

void add_warnings(const JpegReport& report, Photo& photo) {
    if (report.warning[0] != '\0') {
        photo.warnings.emplace_back(std::string("damaged JPEG: ") + report.warning);
    } else if (report.endsEarly) {
        photo.warnings.emplace_back("damaged JPEG: it ends without an end marker");
    }
}

// Through the library's decoder. Only an end marker may be missing: a file whose last pixels are missing is refused.
bool decode_by_library(const Bytes& bytes, bool isProgressive, Image& image, JpegReport& report) {
    auto_ptr<BytesStream> stream(new BytesStream(bytes));
    if (decode_jpeg(*stream, image, report)) {
        return true;
    }
    // Of a progressive file whole scans may be missing, which does not show.
    if (!report.endsEarly || isProgressive) {
        return false;
    }
    Bytes ended = bytes;
    ended.insert(ended.end(), {0xFF, 0xD9});
    stream = auto_ptr<BytesStream>(new BytesStream(ended));
    JpegReport second;
    return decode_jpeg(*stream, image, second) && second.warning[0] == '\0';
}

}  // namespace

Photo read_jpeg(const Bytes& bytes, size_t maxPixels) {
    auto_ptr<BytesStream> stream(new BytesStream(bytes));
    JpegFile file(stream.get());
    Photo photo;
    if (!file.readHeader()) {
        fail(file.report);
    }
    require_pixels(file.info().image_width, file.info().image_height, maxPixels);
    take_metadata(file, photo.metadata);
    take_style(file.info(), photo.jpeg);
    photo.isGray = file.info().num_components == 1;
    JpegReport report;
    if (!file.isCmyk()) {
        photo.image = auto_ptr<Image>(new Image(0, 0, 1, IMAGE_FORMAT_TYPE_NONE, nullptr));
        const bool done = decode_by_library(bytes, file.info().progressive_mode, *photo.image, report);
        if (done && photo.pixels() == nullptr) {
            throw std::bad_alloc();
        }
        if (done) {
            file.report.endsEarly = report.endsEarly;
            add_warnings(report.warning[0] != '\0' ? report : file.report, photo);
            convert_photo(photo, IMAGE_FORMAT_TYPE_RGB);
            return photo;
        }
        if (!file.info().progressive_mode || report.endsEarly) {
            fail(report);
        }
    }
    decode_here(file, photo);
    add_warnings(file.report, photo);
    convert_photo(photo, IMAGE_FORMAT_TYPE_RGB);
    return photo;
}

}  // namespace korvane
