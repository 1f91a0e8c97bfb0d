// SPDX-License-Identifier: Apache-2.0
#include "tests/determinism/kernel_digests.h"

#include <deque>
#include <utility>

#include "tests/support/kernel_rows.h"

namespace {

class Digested : public Picture {
  public:
    using Picture::Picture;

    // Noise, in the first half on slopes, so that corners, edges, flat parts and bright colors are all there.
    unsigned char* block(size_t count, bool isWritten) override {
        std::vector<unsigned char>& bytes = m_Blocks.emplace_back(isWritten, count).second;
        for (size_t i = 0; i < count; ++i) {
            m_State = m_State * 1664525 + 1013904223;
            const uint32_t noise = m_State >> 24;
            const size_t slope = i / 7 % 512;
            const size_t level = (slope < 256 ? slope : 511 - slope) * 7 / 8 + noise / 8;
            bytes[i] = static_cast<unsigned char>(i < count / 2 ? level : noise);
        }
        return bytes.data();
    }

    // Of all that was written.
    uint64_t value() const {
        uint64_t sum = 0;
        for (const auto& [isWritten, bytes] : m_Blocks) {
            sum = sum * 31 + (isWritten ? digest(bytes) : 0);
        }
        return sum;
    }

  private:
    std::deque<std::pair<bool, std::vector<unsigned char>>> m_Blocks;
    uint32_t m_State = 1;
};

}  // namespace

uint64_t digest(const std::vector<unsigned char>& bytes) {
    uint64_t hash = 0xCBF29CE484222325U;
    for (const unsigned char byte : bytes) {
        hash = (hash ^ byte) * 0x100000001B3U;
    }
    return hash;
}

Digests kernel_digests(int width, int height) {
    Digests digests;
    for (const auto rows : {conversion_rows(), kernel_rows(), frame_rows()}) {
        for (const KernelRow& row : rows) {
            Digested picture(width, height);
            row.call(picture);
            digests[row.name] = picture.value();
        }
    }
    return digests;
}
