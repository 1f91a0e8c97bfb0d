// SPDX-License-Identifier: Apache-2.0
#include "tools/photo/gif_writer.h"

#include <gif_lib.h>

#include <memory>
#include <new>

namespace korvane {
namespace {

constexpr uint32_t kMaxSidePixels = 65535;
constexpr int kBitsPerChannel = 8;

using ColorMap = std::unique_ptr<ColorMapObject, decltype(&GifFreeMapObject)>;

// giflib takes a power of two of colours; the rest stays black and unused.
ColorMap color_map(const std::vector<Rgb>& palette) {
    if (palette.empty()) {
        return {nullptr, GifFreeMapObject};
    }
    int count = 2;
    while (static_cast<size_t>(count) < palette.size()) {
        count *= 2;
    }
    ColorMap map(GifMakeMapObject(count, nullptr), GifFreeMapObject);
    if (map == nullptr) {
        throw std::bad_alloc();
    }
    for (size_t i = 0; i < palette.size(); ++i) {
        map->Colors[i] = {palette[i][0], palette[i][1], palette[i][2]};
    }
    return map;
}

int append(GifFileType* file, const GifByteType* bytes, int count) {
    auto* target = static_cast<Bytes*>(file->UserData);
    try {
        target->insert(target->end(), bytes, bytes + count);
    } catch (const std::bad_alloc&) {
        return 0;
    }
    return count;
}

}  // namespace

GifWriter::GifWriter(uint32_t width, uint32_t height, const std::vector<Rgb>& palette, int loops)
    : m_HasPalette(!palette.empty()) {
    if (width > kMaxSidePixels || height > kMaxSidePixels) {
        throw FormatError("a GIF file has at most 65535 pixels a side");
    }
    const ColorMap map = color_map(palette);
    m_File = EGifOpen(&m_Bytes, append, nullptr);
    if (m_File == nullptr) {
        throw std::bad_alloc();
    }
    EGifSetGifVersion(m_File, true);
    check(EGifPutScreenDesc(m_File, static_cast<int>(width), static_cast<int>(height), kBitsPerChannel, 0, map.get()));
    const unsigned char loop[] = {1, static_cast<unsigned char>(loops & 255), static_cast<unsigned char>(loops >> 8)};
    check(EGifPutExtensionLeader(m_File, APPLICATION_EXT_FUNC_CODE));
    check(EGifPutExtensionBlock(m_File, 11, "NETSCAPE2.0"));
    check(EGifPutExtensionBlock(m_File, sizeof(loop), loop));
    check(EGifPutExtensionTrailer(m_File));
}

GifWriter::~GifWriter() {
    if (m_File != nullptr) {
        EGifCloseFile(m_File, nullptr);
    }
}

void GifWriter::check(int result) {
    if (result != GIF_OK) {
        // Writing goes to memory: nothing else can fail.
        EGifCloseFile(m_File, nullptr);
        m_File = nullptr;
        throw std::bad_alloc();
    }
}

void GifWriter::add(IndexedPicture& frame, int delayHundredths) {
    GraphicsControlBlock control = {};
    control.DisposalMode = DISPOSE_DO_NOT;
    control.DelayTime = delayHundredths;
    control.TransparentColor = NO_TRANSPARENT_COLOR;
    GifByteType extension[4] = {};
    EGifGCBToExtension(&control, extension);
    check(EGifPutExtension(m_File, GRAPHICS_EXT_FUNC_CODE, sizeof(extension), extension));
    const ColorMap map = color_map(m_HasPalette ? std::vector<Rgb>() : frame.palette);
    const auto width = static_cast<int>(frame.width);
    check(EGifPutImageDesc(m_File, 0, 0, width, static_cast<int>(frame.height), false, map.get()));
    for (size_t y = 0; y < frame.height; ++y) {
        check(EGifPutLine(m_File, frame.indices.data() + y * frame.width, width));
    }
}

Bytes GifWriter::finish() {
    GifFileType* const file = m_File;
    m_File = nullptr;
    if (EGifCloseFile(file, nullptr) != GIF_OK) {
        throw std::bad_alloc();
    }
    return std::move(m_Bytes);
}

}  // namespace korvane
