// SPDX-License-Identifier: Apache-2.0
// MemoryStream: a Stream over one block of memory of fixed size.
//
// The block never grows: what does not fit is cut off. A stream without a block (null, not allocated, closed) and a
// read or write with a null pointer or a count of 0 answer the largest size_t, -1 as a signed value, and change
// nothing; so does skip(). rewind() is false without effect: use seek(0, SEEK_ORIGIN_BEGIN).
#ifndef KORVANE_FRAMEWORKS_IO_MEMORY_STREAM_H_
#define KORVANE_FRAMEWORKS_IO_MEMORY_STREAM_H_

#include "frameworks/core/export.h"
#include "frameworks/io/stream.h"

class KORVANE_API MemoryStream : public Stream {
  public:
    // Borrows `buffer` of `size` bytes, which must outlive the stream.
    MemoryStream(void* buffer, size_t size);

    // Owns a zeroed block of `size` bytes; without a block when memory is short.
    explicit MemoryStream(size_t size);

    ~MemoryStream() override;

    MemoryStream(const MemoryStream&) = delete;
    MemoryStream& operator=(const MemoryStream&) = delete;

    size_t read(void* buffer, size_t count) override;
    size_t write(void* buffer, size_t count) override;

    // SEEK_ORIGIN_BEGIN moves to `offset`; SEEK_ORIGIN_CURRENT and also SEEK_ORIGIN_END move by `offset` from the
    // current position. The position stops at both ends of the block. The result is the distance without that stop, or
    // -1 without a block.
    int64_t seek(int64_t offset, SeekOrign origin) override;

    // The size of the block in bytes.
    size_t getLength() override;

    void flush() override;

    // Drops the block, and frees it if it is owned.
    void close() override;

  private:
    KORVANE_HIDDEN bool can_transfer(const void* buffer, size_t count) const;
    KORVANE_HIDDEN size_t clip(size_t count) const;
    KORVANE_HIDDEN void free_owned();

    void* m_Buffer = nullptr;
    size_t m_BufferSize = 0;
    size_t m_Position = 0;
    bool m_MallocBuffer = false;
};

#endif  // KORVANE_FRAMEWORKS_IO_MEMORY_STREAM_H_
