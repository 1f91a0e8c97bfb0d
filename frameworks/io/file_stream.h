// SPDX-License-Identifier: Apache-2.0
// FileStream: a Stream over a file of the standard library, always in binary.
//
// A stream whose file could not be opened, or that was closed, answers 0 (false for rewind) to everything.
#ifndef KORVANE_FRAMEWORKS_IO_FILE_STREAM_H_
#define KORVANE_FRAMEWORKS_IO_FILE_STREAM_H_

#include <cstdio>

#include "frameworks/core/export.h"
#include "frameworks/io/stream.h"

class KORVANE_API FileStream : public Stream {
  public:
    // Bit 0 asks for reading, bit 1 for writing. FILE_MODE_READ_AND_WRITE opens an existing file for reading only:
    // its mode string is "rwb", of which the standard library takes the first letter.
    enum FileMode : int {
        FILE_MODE_ONLY_READ = 1,
        FILE_MODE_ONLY_WRITE = 2,
        FILE_MODE_READ_AND_WRITE = 3,
    };

    // Opens `path` and measures its length. FILE_MODE_ONLY_WRITE empties or creates the file. Failure, also of a null
    // path, leaves a stream that is not open.
    FileStream(const char* path, FileMode mode);

    // Flushes and closes.
    ~FileStream() override;

    FileStream(const FileStream&) = delete;
    FileStream& operator=(const FileStream&) = delete;

    // The bytes read, fewer at the end of the file. A null `buffer` moves on by `count`, also past the end of the file,
    // and returns `count`, or 0 if the file cannot be positioned.
    size_t read(void* buffer, size_t count) override;

    size_t write(void* buffer, size_t count) override;

    // 0 for success, -1 for failure; never a position.
    int64_t seek(int64_t offset, SeekOrign origin) override;

    bool rewind() override;

    // The length in bytes when the file was opened; later writes do not change it. 0 for a pipe.
    size_t getLength() override;

    void flush() override;
    void close() override;

  private:
    FILE* m_FileHandle = nullptr;
    size_t m_FileLength = 0;
};

#endif  // KORVANE_FRAMEWORKS_IO_FILE_STREAM_H_
