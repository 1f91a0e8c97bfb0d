// SPDX-License-Identifier: Apache-2.0
#include "frameworks/io/stream_reader.h"

#include <limits>

StreamReader::StreamReader(Stream* stream) : m_Stream(stream) {}

StreamReader::StreamReader(auto_ptr<Stream>& stream) : m_Stream(stream) {}

StreamReader::~StreamReader() {
    flush();
    close();
}

size_t StreamReader::read(void* buffer, size_t count) {
    return m_Stream != nullptr ? m_Stream->read(buffer, count) : std::numeric_limits<size_t>::max();
}

size_t StreamReader::write(void* buffer, size_t count) {
    return m_Stream != nullptr ? m_Stream->write(buffer, count) : std::numeric_limits<size_t>::max();
}

int64_t StreamReader::seek(int64_t offset, SeekOrign origin) {
    return m_Stream != nullptr ? m_Stream->seek(offset, origin) : -1;
}

size_t StreamReader::getLength() {
    return m_Stream != nullptr ? m_Stream->getLength() : 0;
}

void StreamReader::flush() {
    if (m_Stream != nullptr) {
        m_Stream->flush();
    }
}

void StreamReader::close() {
    if (m_Stream != nullptr) {
        m_Stream->close();
    }
}

int8_t StreamReader::readByte() {
    return read_value<int8_t>();
}

int16_t StreamReader::readShortInt() {
    return read_value<int16_t>();
}

int32_t StreamReader::readInt() {
    return read_value<int32_t>();
}

template <typename T>
T StreamReader::read_value() {
    T value = 0;
    if (m_Stream != nullptr) {
        m_Stream->read(&value, sizeof(value));
    }
    return value;
}
