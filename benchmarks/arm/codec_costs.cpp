// SPDX-License-Identifier: Apache-2.0
#include <cstring>
#include <memory>

#include "benchmarks/arm/cost.h"
#include "benchmarks/support/plain_jpeg.h"
#include "frameworks/images/jpeg_decoder.h"
#include "frameworks/images/jpeg_encoder.h"
#include "frameworks/io/memory_stream.h"

namespace korvane::arm {
namespace {

constexpr int kQuality = 90;

// The decoder starts by going back to the beginning, which the base refuses.
class RewindingStream : public MemoryStream {
  public:
    using MemoryStream::MemoryStream;
    bool rewind() override { return seek(0, SEEK_ORIGIN_BEGIN) == 0; }
};

// The picture as a file, and what the codec's interface wants around it.
struct Photo {
    explicit Photo(const Scene& s) : file(s.rgb.size()) {
        file.resize(bench::plain_encode(s.rgb.data(), Scene::kWidth, Scene::kHeight, kQuality, file));
    }

    std::vector<unsigned char> file;
    auto_ptr<Image> image;
    auto_ptr<Stream> stream;
};

Photo& photo(const Scene& s) {
    static Photo photo(s);
    return photo;
}

void set_image(Scene& s, unsigned char* pixels) {
    unsigned char* planes[4] = {pixels};
    photo(s).image = Image::createImage(Scene::kWidth, Scene::kHeight, 1, IMAGE_FORMAT_TYPE_RGB, planes);
}

void prepare_decode(Scene& s) {
    set_image(s, nullptr);
    photo(s).stream = new RewindingStream(photo(s).file.data(), photo(s).file.size());
}

void prepare_encode(Scene& s) {
    set_image(s, s.rgb.data());
    photo(s).stream = new RewindingStream(s.out.data(), s.out.size());
}

std::vector<uint8_t> pixels_of(const Scene& s) {
    const uint8_t* pixels = photo(s).image->getPlanes()[0];
    return {pixels, pixels + 3 * Scene::kPixels};
}

}  // namespace

std::vector<Cost> codec_costs() {
    return {
        {"jpeg encode q90",
         [](Scene& s) { JpegEncoder().encode(photo(s).stream, photo(s).image, kQuality); },
         {},
         prepare_encode,
         {}},
        {"jpeg decode q90",
         [](Scene& s) { JpegDecoder().decode(photo(s).stream, photo(s).image); },
         {},
         prepare_decode,
         pixels_of},
    };
}

std::vector<Peer> codec_peers() {
    return {
        {"jpeg encode q90",
         "plain libjpeg loop",
         [](Scene& s) { bench::plain_encode(s.rgb.data(), Scene::kWidth, Scene::kHeight, kQuality, s.out); },
         0,
         {}},
        {"jpeg decode q90",
         "plain libjpeg loop",
         [](Scene& s) {
             const std::unique_ptr<unsigned char[]> pixels = bench::plain_decode(photo(s).file);
             s.step[0] = pixels[0];
         },
         -1,
         {}},
    };
}

}  // namespace korvane::arm
