// SPDX-License-Identifier: Apache-2.0
// StreamWriter: typed writing over another stream, the counterpart of StreamReader.
//
// Values go out as they lie in memory, in the processor's own byte order, without a length or a tag. The writer
// forwards the byte operations, reading included; skip, rewind and isAtEnd keep the defaults of Stream. It owns one
// reference on the wrapped stream and closes it in the end.
#ifndef KORVANE_FRAMEWORKS_IO_STREAM_WRITER_H_
#define KORVANE_FRAMEWORKS_IO_STREAM_WRITER_H_

#include "frameworks/core/auto_ptr.h"
#include "frameworks/core/export.h"
#include "frameworks/io/stream.h"

class KORVANE_API StreamWriter : public Stream {
  public:
    // A null `stream` gives a writer that answers the largest size_t for read and write, -1 for seek, 0 or false
    // otherwise.
    explicit StreamWriter(Stream* stream);
    explicit StreamWriter(auto_ptr<Stream>& stream);

    // Flushes and closes the wrapped stream, then drops it.
    ~StreamWriter() override;

    StreamWriter(const StreamWriter&) = delete;
    StreamWriter& operator=(const StreamWriter&) = delete;

    size_t read(void* buffer, size_t count) override;
    size_t write(void* buffer, size_t count) override;
    int64_t seek(int64_t offset, SeekOrign origin) override;
    size_t getLength() override;
    void flush() override;
    void close() override;

    // False without a wrapped stream, else true, also when the stream had no room.
    virtual bool writeByte(int8_t value);
    virtual bool writeShortInt(int16_t value);
    virtual bool writeInt(int32_t value);

  private:
    template <typename T>
    bool write_value(T value);

    auto_ptr<Stream> m_Stream;
};

#endif  // KORVANE_FRAMEWORKS_IO_STREAM_WRITER_H_
