// SPDX-License-Identifier: Apache-2.0
// Each conversion of pixels on a picture of any size: the vector code of every instruction set against the plain loops.
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

}  // namespace

void fuzz(Input& input) {
    const Shape shape = input.shape(70, 9);
    const KernelRow& row = conversion_rows()[input.between<size_t>(0, conversion_rows().size() - 1)];
    std::vector<Bytes> given;
    on_every_target([&] {
        Fuzzed picture(shape, input, given);
        row.call(picture);
        return picture.blocks;
    });
}
