// SPDX-License-Identifier: Apache-2.0
#include "tools/bench/photo_store.h"

#include <sys/random.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

#include "tools/command.h"

namespace korvane {
namespace {

// The first source pixel of each target pixel, and one more.
std::vector<size_t> cuts(size_t source, size_t target) {
    std::vector<size_t> result(target + 1);
    for (size_t i = 0; i <= target; ++i) {
        result[i] = i * source / target;
    }
    return result;
}

template <size_t kBytes>
void shrink(const unsigned char* source, size_t sourceWidth, size_t sourceHeight, unsigned char* target,
            size_t targetWidth, size_t targetHeight) {
    const std::vector<size_t> columns = cuts(sourceWidth, targetWidth);
    const std::vector<size_t> rows = cuts(sourceHeight, targetHeight);
    std::vector<uint32_t> sums(targetWidth * kBytes);
    for (size_t y = 0; y < targetHeight; ++y) {
        std::fill(sums.begin(), sums.end(), 0);
        for (size_t row = rows[y]; row < rows[y + 1]; ++row) {
            const unsigned char* pixel = source + row * sourceWidth * kBytes;
            for (size_t x = 0; x < targetWidth; ++x) {
                for (size_t column = columns[x]; column < columns[x + 1]; ++column, pixel += kBytes) {
                    for (size_t c = 0; c < kBytes; ++c) {
                        sums[x * kBytes + c] += pixel[c];
                    }
                }
            }
        }
        for (size_t x = 0; x < targetWidth; ++x) {
            const size_t count = (columns[x + 1] - columns[x]) * (rows[y + 1] - rows[y]);
            for (size_t c = 0; c < kBytes; ++c) {
                *target++ = static_cast<unsigned char>((sums[x * kBytes + c] + count / 2) / count);
            }
        }
    }
}

}  // namespace

Photo shrink_photo(Photo photo, size_t maxPixels) {
    convert_photo(photo, IMAGE_FORMAT_TYPE_RGB);
    if (photo.pixelCount() <= maxPixels) {
        return photo;
    }
    const size_t width = photo.image->getWidth();
    const size_t height = photo.image->getHeight();
    const double factor = std::sqrt(static_cast<double>(maxPixels) / static_cast<double>(photo.pixelCount()));
    // A very long photo keeps one row at the least, and then loses columns.
    const size_t newHeight = std::max<size_t>(1, static_cast<size_t>(static_cast<double>(height) * factor));
    const size_t newWidth =
        std::clamp<size_t>(static_cast<size_t>(static_cast<double>(width) * factor), 1, maxPixels / newHeight);
    const size_t lastHeight = std::min(newHeight, std::max<size_t>(1, maxPixels / newWidth));
    auto_ptr<Image> image = make_image(newWidth, lastHeight, IMAGE_FORMAT_TYPE_RGB);
    shrink<3>(photo.pixels(), width, height, image->getPlanes()[0], newWidth, lastHeight);
    photo.image = image;
    if (!photo.alpha.empty()) {
        Bytes alpha(newWidth * lastHeight);
        shrink<1>(photo.alpha.data(), width, height, alpha.data(), newWidth, lastHeight);
        photo.alpha = std::move(alpha);
    }
    return photo;
}

Photo copy_pixels(const Photo& photo) {
    Photo copy;
    copy.image = make_image(photo.image->getWidth(), photo.image->getHeight(), photo.image->getFormatType());
    std::copy_n(photo.pixels(), photo.pixelCount() * photo.pixelBytes(), copy.pixels());
    copy.alpha = photo.alpha;
    return copy;
}

std::string PhotoStore::add(std::shared_ptr<const StoredPhoto> photo, Clock::time_point now) {
    std::string id = random_name();
    const std::lock_guard<std::mutex> lock(m_Mutex);
    make_room(photo->bytes());
    m_Entries[id] = {std::move(photo), now};
    return id;
}

std::shared_ptr<const StoredPhoto> PhotoStore::find(const std::string& id, Clock::time_point now) {
    drop_old(now);
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const auto entry = m_Entries.find(id);
    if (entry == m_Entries.end()) {
        return nullptr;
    }
    entry->second.used = now;
    return entry->second.photo;
}

void PhotoStore::drop(const std::string& id) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Entries.erase(id);
}

void PhotoStore::drop_old(Clock::time_point now) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    std::erase_if(m_Entries, [&](const auto& entry) { return now - entry.second.used > m_Limits.age; });
}

size_t PhotoStore::size() {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return m_Entries.size();
}

void PhotoStore::make_room(size_t bytes) {
    const auto total = [this] {
        size_t sum = 0;
        for (const auto& entry : m_Entries) {
            sum += entry.second.photo->bytes();
        }
        return sum;
    };
    while (!m_Entries.empty() && (m_Entries.size() >= m_Limits.photos || total() + bytes > m_Limits.bytes)) {
        m_Entries.erase(std::min_element(m_Entries.begin(), m_Entries.end(),
                                         [](const auto& a, const auto& b) { return a.second.used < b.second.used; }));
    }
}

std::string random_name() {
    std::array<unsigned char, 16> bytes = {};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw CommandError("the system has no random numbers");
    }
    std::string name;
    for (const unsigned char byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof(digits), "%02x", byte);
        name += digits;
    }
    return name;
}

}  // namespace korvane
