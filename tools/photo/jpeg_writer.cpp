// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "frameworks/images/jpeg_report.h"
#include "tools/photo/formats.h"

namespace korvane {
namespace {

constexpr size_t kMaxMarkerBytes = 65533;

using namespace std::string_view_literals;

struct Marker {
    int code;
    Bytes data;
};

// libjpeg's object. As in reading, its fatal errors jump to write(), which has no object with a destructor.
class JpegCompressor {
  public:
    JpegCompressor() { m_Info.err = init_jpeg_reporting_errors(&m_Errors, &report); }
    ~JpegCompressor() {
        jpeg_destroy_compress(&m_Info);
        free(m_Bytes);
    }
    JpegCompressor(const JpegCompressor&) = delete;
    JpegCompressor& operator=(const JpegCompressor&) = delete;

    bool write(const Photo& photo, int quality, bool isGray, const std::vector<Marker>& markers) {
        if (setjmp(m_Errors.fJmpBuf) != 0) {
            return false;
        }
        jpeg_create_compress(&m_Info);
        jpeg_mem_dest(&m_Info, &m_Bytes, &m_Size);
        m_Info.image_width = photo.image->getWidth();
        m_Info.image_height = photo.image->getHeight();
        const size_t pixelBytes = photo.pixelBytes();
        m_Info.input_components = static_cast<int>(pixelBytes);
        m_Info.in_color_space = pixelBytes == 4 ? JCS_EXT_RGBX : JCS_RGB;
        jpeg_set_defaults(&m_Info);
        if (isGray) {
            jpeg_set_colorspace(&m_Info, JCS_GRAYSCALE);
        }
        setQuality(photo.jpeg, quality);
        setDensity(photo.metadata.density);
        jpeg_start_compress(&m_Info, TRUE);
        for (const Marker& marker : markers) {
            jpeg_write_marker(&m_Info, marker.code, marker.data.data(), static_cast<unsigned int>(marker.data.size()));
        }
        if (!photo.metadata.icc.empty()) {
            jpeg_write_icc_profile(&m_Info, photo.metadata.icc.data(),
                                   static_cast<unsigned int>(photo.metadata.icc.size()));
        }
        const size_t strideBytes = pixelBytes * m_Info.image_width;
        while (m_Info.next_scanline < m_Info.image_height) {
            JSAMPROW row = photo.pixels() + m_Info.next_scanline * strideBytes;
            jpeg_write_scanlines(&m_Info, &row, 1);
        }
        jpeg_finish_compress(&m_Info);
        return true;
    }

    Bytes bytes() const { return {m_Bytes, m_Bytes + m_Size}; }

    JpegReport report;

  private:
    void setQuality(const JpegStyle& style, int quality) {
        jpeg_set_quality(&m_Info, quality != 0 ? quality : style.quality, TRUE);
        for (size_t i = 0; quality == 0 && !style.tables.empty() && i < 2; ++i) {
            const QuantTable& table = style.tables[std::min(i, style.tables.size() - 1)];
            unsigned int values[64];
            std::copy(table.begin(), table.end(), values);
            jpeg_add_quant_table(&m_Info, static_cast<int>(i), values, 100, TRUE);
        }
        m_Info.comp_info[0].h_samp_factor = m_Info.num_components == 1 ? 1 : style.subsampling.horizontal;
        m_Info.comp_info[0].v_samp_factor = m_Info.num_components == 1 ? 1 : style.subsampling.vertical;
    }

    void setDensity(const Density& density) {
        constexpr uint32_t kMax = 0xFFFF;
        const uint32_t perUnit = density.unit == DensityUnit::kMetre ? 100 : 1;
        const uint32_t x = density.x / perUnit;
        const uint32_t y = density.y / perUnit;
        if (density.unit == DensityUnit::kNone || x < 1 || y < 1 || x > kMax || y > kMax) {
            return;
        }
        m_Info.density_unit = density.unit == DensityUnit::kAspect ? 0 : density.unit == DensityUnit::kInch ? 1 : 2;
        m_Info.X_density = static_cast<UINT16>(x);
        m_Info.Y_density = static_cast<UINT16>(y);
    }

    JpegReportingErrors m_Errors;
    jpeg_compress_struct m_Info = {};
    unsigned char* m_Bytes = nullptr;
    unsigned long m_Size = 0;
};

void add_marker(int code, std::string_view name, const Bytes& data, const char* what, std::vector<Marker>& markers,
                std::vector<std::string>& warnings) {
    if (data.empty() && code != JPEG_COM) {
        return;
    }
    if (data.size() > kMaxMarkerBytes - name.size()) {
        warnings.emplace_back(std::string(what) + " does not fit into a JPEG file and is left out");
        return;
    }
    Marker& marker = markers.emplace_back(Marker{code, Bytes(name.begin(), name.end())});
    marker.data.insert(marker.data.end(), data.begin(), data.end());
}

// A marker holds less than 64 KiB; readers put the pieces of this block together.
void add_photoshop(const Bytes& data, std::vector<Marker>& markers) {
    constexpr std::string_view kName = "Photoshop 3.0\0"sv;
    const size_t pieceBytes = kMaxMarkerBytes - kName.size();
    for (size_t at = 0; at < data.size(); at += pieceBytes) {
        const auto begin = data.begin() + static_cast<ptrdiff_t>(at);
        const auto end = begin + static_cast<ptrdiff_t>(std::min(pieceBytes, data.size() - at));
        Marker& marker = markers.emplace_back(Marker{JPEG_APP0 + 13, Bytes(kName.begin(), kName.end())});
        marker.data.insert(marker.data.end(), begin, end);
    }
}

}  // namespace

Bytes write_jpeg(Photo& photo, int quality) {
    const Metadata& metadata = photo.metadata;
    std::vector<Marker> markers;
    add_marker(JPEG_APP0 + 1, "Exif\0\0"sv, metadata.exif, "the EXIF block", markers, photo.warnings);
    add_marker(JPEG_APP0 + 1, "http://ns.adobe.com/xap/1.0/\0"sv, metadata.xmp, "the XMP block", markers,
               photo.warnings);
    add_photoshop(metadata.photoshop, markers);
    for (const Bytes& comment : metadata.comments) {
        add_marker(JPEG_COM, "", comment, "a comment", markers, photo.warnings);
    }
    JpegCompressor compressor;
    if (!compressor.write(photo, quality, photo.isGray, markers)) {
        throw FormatError(compressor.report.error);
    }
    return compressor.bytes();
}

}  // namespace korvane
