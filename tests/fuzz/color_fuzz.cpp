// SPDX-License-Identifier: Apache-2.0
// Each conversion of pixels and each loop of the burst merge on a picture of any size: the vector code of every
// instruction set against the plain loops.
#include "applications/super_capture/merge_kernels.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/kernel_rows.h"

namespace {

// The same bytes each time that a row runs.
class Fuzzed : public Picture {
  public:
    Fuzzed(const Shape& shape, Input& input, std::vector<Bytes>& given)
        : Picture(shape.width, shape.height), m_Input(input), m_Given(given) {}

    unsigned char* block(size_t count, bool /*isWritten*/) override {
        if (blocks.size() == m_Given.size()) {
            m_Given.push_back(m_Input.bytes(count));
        }
        blocks.push_back(m_Given[blocks.size()]);
        blocks.back().reserve(1);
        return blocks.back().data();
    }

    std::vector<Bytes> blocks;

  private:
    Input& m_Input;
    std::vector<Bytes>& m_Given;
};

void convert(Input& input, const Shape& shape) {
    const KernelRow& row = conversion_rows()[input.between<size_t>(0, conversion_rows().size() - 1)];
    std::vector<Bytes> given;
    on_every_target([&] {
        Fuzzed picture(shape, input, given);
        row.call(picture);
        return picture.blocks;
    });
}

void merge(Input& input, size_t count) {
    const Bytes frames[] = {input.bytes(count), input.bytes(count)};
    // The brightest of both, or the mean of so many.
    const int frameCount = input.between(0, 130);
    on_every_target([&] {
        std::vector<int> sums(count);
        Bytes result(count);
        (frameCount == 0 ? korvane::merge_max : korvane::merge_first)(frames[0].data(), sums.data(), count);
        for (int i = 1; i < std::max(frameCount, 2); ++i) {
            (frameCount == 0 ? korvane::merge_max : korvane::merge_add)(frames[i % 2].data(), sums.data(), count);
        }
        frameCount == 0 ? korvane::merged_low_bytes(sums.data(), result.data(), count)
                        : korvane::merged_mean(sums.data(), result.data(), count, frameCount);
        return std::tuple(result, korvane::luma_sum(frames[0].data(), count),
                          korvane::luma_sum_yuyv(frames[0].data(), count / 2));
    });
}

}  // namespace

void fuzz(Input& input) {
    const Shape shape = input.shape(70, 9);
    input.one_in(10) ? merge(input, shape.pixels) : convert(input, shape);
}
