// SPDX-License-Identifier: Apache-2.0
#include "frameworks/io/stream_writer.h"

#include <limits>

StreamWriter::StreamWriter(Stream* stream) : m_Stream(stream) {}

StreamWriter::StreamWriter(auto_ptr<Stream>& stream) : m_Stream(stream) {}

StreamWriter::~StreamWriter() {
    flush();
    close();
}

size_t StreamWriter::read(void* buffer, size_t count) {
    return m_Stream != nullptr ? m_Stream->read(buffer, count) : std::numeric_limits<size_t>::max();
}

size_t StreamWriter::write(void* buffer, size_t count) {
    return m_Stream != nullptr ? m_Stream->write(buffer, count) : std::numeric_limits<size_t>::max();
}

int64_t StreamWriter::seek(int64_t offset, SeekOrign origin) {
    return m_Stream != nullptr ? m_Stream->seek(offset, origin) : -1;
}

size_t StreamWriter::getLength() {
    return m_Stream != nullptr ? m_Stream->getLength() : 0;
}

void StreamWriter::flush() {
    if (m_Stream != nullptr) {
        m_Stream->flush();
    }
}

void StreamWriter::close() {
    if (m_Stream != nullptr) {
        m_Stream->close();
    }
}

bool StreamWriter::writeByte(int8_t value) {
    return write_value(value);
}

bool StreamWriter::writeShortInt(int16_t value) {
    return write_value(value);
}

bool StreamWriter::writeInt(int32_t value) {
    return write_value(value);
}

template <typename T>
bool StreamWriter::write_value(T value) {
    if (m_Stream == nullptr) {
        return false;
    }
    m_Stream->write(&value, sizeof(value));
    return true;
}
