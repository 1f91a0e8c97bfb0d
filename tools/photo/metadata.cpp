// SPDX-License-Identifier: Apache-2.0
#include "tools/photo/metadata.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace korvane {
namespace {

constexpr uint16_t kTagWidth = 0x0100;
constexpr uint16_t kTagHeight = 0x0101;
constexpr uint16_t kTagOrientation = 0x0112;
constexpr uint16_t kTagThumbnailOffset = 0x0201;
constexpr uint16_t kTagThumbnailBytes = 0x0202;
constexpr uint16_t kTagExifDirectory = 0x8769;
constexpr uint16_t kTagPixelWidth = 0xA002;
constexpr uint16_t kTagPixelHeight = 0xA003;
constexpr uint16_t kTypeShort = 3;
constexpr uint16_t kTypeLong = 4;
constexpr size_t kEntryBytes = 12;

// A TIFF block with checked access. Positions outside it read as 0 and are not written.
template <typename BytesType>
class Tiff {
  public:
    explicit Tiff(BytesType& bytes) : m_Bytes(bytes), m_IsBigEndian(!bytes.empty() && bytes[0] == 'M') {}

    // 0 when this is no TIFF block.
    size_t firstDirectory() const {
        const bool isTiff = m_Bytes.size() >= 8 && m_Bytes[0] == m_Bytes[1] &&
                            (m_Bytes[0] == 'M' || m_Bytes[0] == 'I') && read(2, 2) == 42;
        return isTiff ? read(4, 4) : 0;
    }

    // Where the entry's value lies, or 0. Only single numbers of 16 or 32 bits are found.
    size_t find(size_t directory, uint16_t tag) const {
        const size_t count = directory == 0 ? 0 : read(directory, 2);
        for (size_t i = 0; i < count; ++i) {
            const size_t entry = directory + 2 + i * kEntryBytes;
            if (read(entry, 2) == tag && read(entry + 4, 4) == 1 && holds(entry, kEntryBytes)) {
                const size_t type = read(entry + 2, 2);
                return type == kTypeShort || type == kTypeLong ? entry + 8 : 0;
            }
        }
        return 0;
    }

    uint32_t value(size_t at) const { return at == 0 ? 0 : read(at, read(at - 6, 2) == kTypeShort ? 2 : 4); }

    void setValue(size_t at, uint32_t number) {
        if (at != 0) {
            write(at, read(at - 6, 2) == kTypeShort ? 2 : 4, number);
        }
    }

    // Where the directory names the next one.
    size_t link(size_t directory) const { return directory + 2 + read(directory, 2) * kEntryBytes; }

    uint32_t read(size_t at, size_t bytes) const {
        uint32_t number = 0;
        for (size_t i = 0; holds(at, bytes) && i < bytes; ++i) {
            number = number << 8 | m_Bytes[at + (m_IsBigEndian ? i : bytes - 1 - i)];
        }
        return number;
    }

    void write(size_t at, size_t bytes, uint32_t number) {
        for (size_t i = 0; holds(at, bytes) && i < bytes; ++i, number >>= 8) {
            m_Bytes[at + (m_IsBigEndian ? bytes - 1 - i : i)] = static_cast<unsigned char>(number);
        }
    }

    bool holds(size_t at, size_t bytes) const { return at <= m_Bytes.size() && bytes <= m_Bytes.size() - at; }

  private:
    BytesType& m_Bytes;
    bool m_IsBigEndian;
};

void drop_exif_thumbnail(Bytes& exif, Tiff<Bytes>& tiff, size_t firstDirectory) {
    const size_t link = tiff.link(firstDirectory);
    const size_t second = tiff.read(link, 4);
    if (second == 0) {
        return;
    }
    const size_t offset = tiff.value(tiff.find(second, kTagThumbnailOffset));
    const size_t bytes = tiff.value(tiff.find(second, kTagThumbnailBytes));
    tiff.write(link, 4, 0);
    if (offset < 8 || bytes == 0 || !tiff.holds(offset, bytes)) {
        return;
    }
    std::fill_n(exif.begin() + static_cast<ptrdiff_t>(offset), bytes, static_cast<unsigned char>(0));
    // Some writers fill the block up with a few zeros.
    if (std::all_of(exif.begin() + static_cast<ptrdiff_t>(offset), exif.end(), [](auto byte) { return byte == 0; })) {
        exif.resize(offset);
    }
}

std::string_view text_of(const Bytes& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

void drop_element(Bytes& xmp, std::string_view name) {
    const std::string opening = "<" + std::string(name);
    const std::string closing = "</" + std::string(name) + ">";
    for (;;) {
        const size_t begin = text_of(xmp).find(opening);
        const size_t end = begin == std::string_view::npos ? begin : text_of(xmp).find(closing, begin);
        if (end == std::string_view::npos) {
            return;
        }
        xmp.erase(xmp.begin() + static_cast<ptrdiff_t>(begin),
                  xmp.begin() + static_cast<ptrdiff_t>(end + closing.size()));
    }
}

size_t big_endian(const Bytes& bytes, size_t at, size_t count) {
    size_t number = 0;
    for (size_t i = 0; i < count; ++i) {
        number = number << 8 | bytes[at + i];
    }
    return number;
}

}  // namespace

int exif_orientation(const Bytes& exif) {
    const Tiff tiff(exif);
    const uint32_t orientation = tiff.value(tiff.find(tiff.firstDirectory(), kTagOrientation));
    return orientation >= 1 && orientation <= 8 ? static_cast<int>(orientation) : 1;
}

void update_exif(Bytes& exif, uint32_t width, uint32_t height) {
    Tiff tiff(exif);
    const size_t first = tiff.firstDirectory();
    if (first == 0) {
        return;
    }
    const size_t exifDirectory = tiff.value(tiff.find(first, kTagExifDirectory));
    tiff.setValue(tiff.find(first, kTagOrientation), 1);
    tiff.setValue(tiff.find(first, kTagWidth), width);
    tiff.setValue(tiff.find(first, kTagHeight), height);
    tiff.setValue(tiff.find(exifDirectory, kTagPixelWidth), width);
    tiff.setValue(tiff.find(exifDirectory, kTagPixelHeight), height);
    drop_exif_thumbnail(exif, tiff, first);
}

void update_xmp(Bytes& xmp) {
    constexpr std::string_view kName = "tiff:Orientation";
    for (size_t at = 0; (at = text_of(xmp).find(kName, at)) != std::string_view::npos;) {
        at += kName.size();
        const size_t digit = text_of(xmp).find_first_not_of("=\"'> \t\r\n", at);
        if (digit != std::string_view::npos && xmp[digit] >= '1' && xmp[digit] <= '8') {
            xmp[digit] = '1';
        }
    }
    drop_element(xmp, "xmp:Thumbnails");
    drop_element(xmp, "xap:Thumbnails");
}

void update_photoshop(Bytes& resources) {
    constexpr size_t kThumbnailIds[] = {1033, 1036};
    Bytes kept;
    size_t at = 0;
    // A resource: "8BIM", 2 bytes of number, a name with its length before it, 4 bytes of size, data. Both the name and
    // the data are filled up to an even length.
    while (at + 12 <= resources.size() && text_of(resources).substr(at, 4) == "8BIM") {
        const size_t id = big_endian(resources, at + 4, 2);
        const size_t size = at + 6 + (resources[at + 6] + size_t{2}) / 2 * 2;
        if (size + 4 > resources.size()) {
            break;
        }
        const size_t bytes = big_endian(resources, size, 4);
        if (bytes > resources.size() - size - 4) {
            break;
        }
        const size_t end = std::min(resources.size(), size + 4 + (bytes + 1) / 2 * 2);
        if (std::find(std::begin(kThumbnailIds), std::end(kThumbnailIds), id) == std::end(kThumbnailIds)) {
            kept.insert(kept.end(), resources.begin() + static_cast<ptrdiff_t>(at),
                        resources.begin() + static_cast<ptrdiff_t>(end));
        }
        at = end;
    }
    resources = std::move(kept);
}

IccSpace icc_space(const Bytes& profile) {
    constexpr size_t kSpaceOffset = 16;
    if (profile.size() < kSpaceOffset + 4) {
        return profile.empty() ? IccSpace::kNone : IccSpace::kOther;
    }
    const std::string_view space = text_of(profile).substr(kSpaceOffset, 4);
    return space == "RGB "   ? IccSpace::kRgb
           : space == "GRAY" ? IccSpace::kGray
           : space == "CMYK" ? IccSpace::kCmyk
                             : IccSpace::kOther;
}

}  // namespace korvane
