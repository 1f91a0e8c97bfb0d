// SPDX-License-Identifier: Apache-2.0
// Any sequence of operations on a stream over memory, and on a reader and a writer over it, beside a model of a block
// with a position.
#include <limits>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/io/memory_stream.h"
#include "frameworks/io/stream_reader.h"
#include "frameworks/io/stream_writer.h"
#include "tests/fuzz/fuzz.h"

namespace {

constexpr size_t kRefused = std::numeric_limits<size_t>::max();

struct Model {
    Bytes block;
    size_t position = 0;
    bool isOpen = true;

    // Moves bytes between the block and `bytes`.
    size_t transfer(unsigned char* bytes, size_t count, bool isWriting) {
        if (!isOpen || count == 0) {
            return kRefused;
        }
        count = std::min(count, block.size() - position);
        unsigned char* here = block.data() + position;
        isWriting ? std::copy_n(bytes, count, here) : std::copy_n(here, count, bytes);
        position += count;
        return count;
    }

    int64_t seek(int64_t offset, int origin) {
        if (!isOpen) {
            return -1;
        }
        constexpr __int128 kLeast = std::numeric_limits<int64_t>::min(), kMost = std::numeric_limits<int64_t>::max();
        const auto here = static_cast<__int128>(position);
        const __int128 target = std::clamp(origin == 0 ? offset : origin > 2 ? here : here + offset, kLeast, kMost);
        position = static_cast<size_t>(std::clamp<__int128>(target, 0, static_cast<__int128>(block.size())));
        return static_cast<int64_t>(std::clamp(target - here, kLeast, kMost));
    }
};

template <typename T>
void typed_step(Input& input, StreamReader& reader, StreamWriter& writer, Model& model, T (StreamReader::*read)(),
                bool (StreamWriter::*write)(T)) {
    const bool isWriting = input.ConsumeBool();
    T value = isWriting ? input.ConsumeIntegral<T>() : T{0};
    model.transfer(reinterpret_cast<unsigned char*>(&value), sizeof(T), isWriting);
    REQUIRE(isWriting ? (writer.*write)(value) : (reader.*read)() == value);
}

void one_step(Input& input, Stream& stream, StreamReader& reader, StreamWriter& writer, Model& model) {
    // Reader and writer pass plain operations on, in both directions.
    Stream& any = *input.PickValueInArray<Stream*>({&stream, &reader, &writer});
    const size_t count = input.between<size_t>(0, 40);
    const int kind = input.between(0, 8);
    if (kind < 2) {
        Bytes bytes = kind == 0 ? Input::buffer(count) : input.bytes(count);
        Bytes expected(bytes);
        const size_t taken = model.transfer(expected.data(), count, kind == 1);
        REQUIRE((kind == 0 ? any.read(bytes.data(), count) : any.write(bytes.data(), count)) == taken);
        REQUIRE(bytes == expected);
    } else if (kind < 4) {
        const int64_t offset = kind == 2 ? input.between(-50, 50) : input.ConsumeIntegral<int64_t>();
        const int origin = input.between(0, 3);
        REQUIRE(any.seek(offset, static_cast<SeekOrign>(origin)) == model.seek(offset, origin));
    } else if (kind == 4) {
        typed_step(input, reader, writer, model, &StreamReader::readByte, &StreamWriter::writeByte);
    } else if (kind == 5) {
        typed_step(input, reader, writer, model, &StreamReader::readShortInt, &StreamWriter::writeShortInt);
    } else if (kind == 6) {
        typed_step(input, reader, writer, model, &StreamReader::readInt, &StreamWriter::writeInt);
    } else if (kind == 7) {
        REQUIRE(any.skip(count) == kRefused && any.read(nullptr, count) == kRefused && !any.rewind());
        REQUIRE(any.write(nullptr, count) == kRefused && !any.isAtEnd());
        any.flush();
    } else if (count == 0) {
        any.close();
        model = {{}, 0, false};
    }
    REQUIRE(any.getLength() == model.block.size());
}

}  // namespace

void fuzz(Input& input) {
    const bool isOwned = input.ConsumeBool();
    Model model = {Bytes(input.between<size_t>(1, 64))};
    Bytes memory(model.block);
    auto_ptr<Stream> stream(isOwned ? new MemoryStream(memory.size()) : new MemoryStream(memory.data(), memory.size()));
    {
        StreamReader reader(stream);
        StreamWriter writer(stream);
        while (input.remaining_bytes() > 0) {
            one_step(input, *stream, reader, writer, model);
        }
        REQUIRE(isOwned || !model.isOpen || memory == model.block);
    }
    // The reader and the writer have closed it.
    REQUIRE(stream->getLength() == 0 && stream->seek(0, SEEK_ORIGIN_BEGIN) == -1);
}
