// SPDX-License-Identifier: Apache-2.0
#include "frameworks/io/file_stream.h"

#include <limits>
#include <string>

FileStream::FileStream(const char* path, FileMode mode) {
    std::string openMode;
    if ((mode & FILE_MODE_ONLY_READ) != 0) {
        openMode += 'r';
    }
    if ((mode & FILE_MODE_ONLY_WRITE) != 0) {
        openMode += 'w';
    }
    openMode += 'b';
    m_FileHandle = path != nullptr ? std::fopen(path, openMode.c_str()) : nullptr;
    if (m_FileHandle == nullptr) {
        return;
    }
    std::fseek(m_FileHandle, 0, SEEK_END);
    const long length = std::ftell(m_FileHandle);
    m_FileLength = length > 0 ? static_cast<size_t>(length) : 0;
    std::fseek(m_FileHandle, 0, SEEK_SET);
}

FileStream::~FileStream() {
    flush();
    close();
}

size_t FileStream::read(void* buffer, size_t count) {
    if (m_FileHandle == nullptr) {
        return 0;
    }
    if (buffer != nullptr) {
        return std::fread(buffer, 1, count, m_FileHandle);
    }
    if (count > static_cast<size_t>(std::numeric_limits<long>::max()) || std::ftell(m_FileHandle) == -1) {
        return 0;
    }
    return std::fseek(m_FileHandle, static_cast<long>(count), SEEK_CUR) == 0 ? count : 0;
}

size_t FileStream::write(void* buffer, size_t count) {
    if (m_FileHandle == nullptr || buffer == nullptr || count == 0) {
        return 0;
    }
    return std::fwrite(buffer, 1, count, m_FileHandle);
}

int64_t FileStream::seek(int64_t offset, SeekOrign origin) {
    return m_FileHandle != nullptr ? std::fseek(m_FileHandle, static_cast<long>(offset), origin) : 0;
}

bool FileStream::rewind() {
    if (m_FileHandle == nullptr) {
        return false;
    }
    std::rewind(m_FileHandle);
    return true;
}

size_t FileStream::getLength() {
    return m_FileLength;
}

void FileStream::flush() {
    if (m_FileHandle != nullptr) {
        std::fflush(m_FileHandle);
    }
}

void FileStream::close() {
    if (m_FileHandle == nullptr) {
        return;
    }
    std::fclose(m_FileHandle);
    m_FileHandle = nullptr;
    m_FileLength = 0;
}
