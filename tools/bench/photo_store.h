// SPDX-License-Identifier: Apache-2.0
// The playground's photos: in memory only, few, and not for long.
#ifndef KORVANE_TOOLS_BENCH_PHOTO_STORE_H_
#define KORVANE_TOOLS_BENCH_PHOTO_STORE_H_

#include <chrono>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "tools/photo/photo.h"

namespace korvane {

struct StoredPhoto {
    Bytes file;
    // Upright, of at most the preview's pixels; without metadata.
    Photo preview;
    size_t width = 0;
    size_t height = 0;

    size_t bytes() const { return file.size() + preview.pixelCount() * preview.pixelBytes() + preview.alpha.size(); }
    // How long the preview's side is, as a part of the photo's.
    double scale() const { return static_cast<double>(preview.image->getWidth()) / static_cast<double>(width); }
};

// Smaller by the mean of the pixels that fall together, so that at most `maxPixels` are left; a smaller photo stays as
// it is. RGB.
Photo shrink_photo(Photo photo, size_t maxPixels);

// A copy that shares no pixels.
Photo copy_pixels(const Photo& photo);

class PhotoStore {
  public:
    using Clock = std::chrono::steady_clock;

    struct Limits {
        size_t photos = 64;
        size_t bytes = size_t{768} << 20;
        Clock::duration age = std::chrono::hours(1);
    };

    explicit PhotoStore(const Limits& limits) : m_Limits(limits) {}

    // The oldest ones make room. The name cannot be guessed.
    std::string add(std::shared_ptr<const StoredPhoto> photo, Clock::time_point now = Clock::now());
    // Null for what is not there, or not any more. Its hour begins anew.
    std::shared_ptr<const StoredPhoto> find(const std::string& id, Clock::time_point now = Clock::now());
    void drop(const std::string& id);
    void drop_old(Clock::time_point now = Clock::now());
    size_t size();

  private:
    struct Entry {
        std::shared_ptr<const StoredPhoto> photo;
        Clock::time_point used;
    };

    void make_room(size_t bytes);

    const Limits m_Limits;
    std::mutex m_Mutex;
    std::map<std::string, Entry> m_Entries;
};

// 128 random bits in hexadecimal digits. Throws CommandError when the system has none.
std::string random_name();

}  // namespace korvane

#endif  // KORVANE_TOOLS_BENCH_PHOTO_STORE_H_
