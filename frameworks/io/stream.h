// SPDX-License-Identifier: Apache-2.0
// Stream: bytes to read and to write, in a file, a block of memory or a Java object.
//
// No operation throws or keeps an error state. What a class cannot do gives a fixed neutral value; failures are return
// values that differ from class to class (see each header). One thread at a time uses a stream. It is normally held by
// auto_ptr<Stream>.
//
// Fixed by the interface: all names (SeekOrign too), values, results and the order of virtual operations in this
// folder.
#ifndef KORVANE_FRAMEWORKS_IO_STREAM_H_
#define KORVANE_FRAMEWORKS_IO_STREAM_H_

#include <cstddef>
#include <cstdint>

#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"

// Where a seek counts from. The values are those of SEEK_SET, SEEK_CUR and SEEK_END.
enum SeekOrign : int {
    SEEK_ORIGIN_BEGIN = 0,
    SEEK_ORIGIN_CURRENT = 1,
    SEEK_ORIGIN_END = 2,
};

class KORVANE_API Stream : public RefBase {
  public:
    // Delivers up to `count` bytes and returns how many. With a null `buffer` it skips `count` bytes, where the class
    // can.
    virtual size_t read(void* buffer, size_t count) = 0;

    // Takes up to `count` bytes and returns how many.
    virtual size_t write(void* buffer, size_t count) = 0;

    // What it returns depends on the class: a status (FileStream), a distance (MemoryStream) or always 0.
    virtual int64_t seek(int64_t offset, SeekOrign origin) = 0;

    // read(nullptr, count) unless a class knows better.
    virtual size_t skip(size_t count);

    // False here: not every stream can go back.
    virtual bool rewind();

    virtual size_t getLength() = 0;
    virtual void flush() = 0;

    // False here: not every stream knows its end before it has tried to read there.
    virtual bool isAtEnd() const;

    virtual void close() = 0;
};

#endif  // KORVANE_FRAMEWORKS_IO_STREAM_H_
