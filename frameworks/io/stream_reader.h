// SPDX-License-Identifier: Apache-2.0
// StreamReader: typed reading over another stream.
//
// Values are the bytes as they lie in memory, in the processor's own byte order, without a length or a tag. The reader
// forwards the byte operations, writing included; skip, rewind and isAtEnd keep the defaults of Stream. It owns one
// reference on the wrapped stream and closes it in the end.
#ifndef KORVANE_FRAMEWORKS_IO_STREAM_READER_H_
#define KORVANE_FRAMEWORKS_IO_STREAM_READER_H_

#include "frameworks/core/auto_ptr.h"
#include "frameworks/core/export.h"
#include "frameworks/io/stream.h"

class KORVANE_API StreamReader : public Stream {
  public:
    // A null `stream` gives a reader that answers the largest size_t for read and write, -1 for seek, 0 otherwise.
    explicit StreamReader(Stream* stream);
    explicit StreamReader(auto_ptr<Stream>& stream);

    // Flushes and closes the wrapped stream, then drops it.
    ~StreamReader() override;

    StreamReader(const StreamReader&) = delete;
    StreamReader& operator=(const StreamReader&) = delete;

    size_t read(void* buffer, size_t count) override;
    size_t write(void* buffer, size_t count) override;
    int64_t seek(int64_t offset, SeekOrign origin) override;
    size_t getLength() override;
    void flush() override;
    void close() override;

    // 0 without a wrapped stream. Past the end of the stream missing bytes are 0, which looks like data.
    virtual int8_t readByte();
    virtual int16_t readShortInt();
    virtual int32_t readInt();

  private:
    template <typename T>
    T read_value();

    auto_ptr<Stream> m_Stream;
};

#endif  // KORVANE_FRAMEWORKS_IO_STREAM_READER_H_
