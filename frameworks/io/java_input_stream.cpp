// SPDX-License-Identifier: Apache-2.0
#include "frameworks/io/java_input_stream.h"

#include <jni.h>

#include <algorithm>

#include "frameworks/jni/java_exception.h"

using korvane::clear_java_exception;

JavaInputStream::JavaInputStream(JNIEnv* env, jobject inputStream, jbyteArray buffer)
    : m_JvmEnv(env), m_JavaInputStreamObject(inputStream), m_JavaByteArray(buffer) {
    if (buffer != nullptr) {
        m_Capacity = static_cast<size_t>(env->GetArrayLength(buffer));
    }
    const jclass inputStreamClass = env->FindClass("java/io/InputStream");
    m_JavaInputStream_ReadMethodID = env->GetMethodID(inputStreamClass, "read", "([BII)I");
    m_JavaInputStream_SkipMethodID = env->GetMethodID(inputStreamClass, "skip", "(J)J");
    m_JavaInputStream_AvailableMethodID = env->GetMethodID(inputStreamClass, "available", "()I");
}

JavaInputStream::~JavaInputStream() = default;

size_t JavaInputStream::read(void* buffer, size_t count) {
    if (buffer != nullptr) {
        return doRead(buffer, count);
    }
    size_t total = 0;
    while (total < count) {
        size_t skipped = skip(count - total);
        if (skipped == 0) {
            // Java may skip nothing without being at its end; only a read can tell.
            unsigned char scratch = 0;
            skipped = doRead(&scratch, 1);
        }
        if (skipped == 0) {
            m_IsAtEnd = true;
            return total;
        }
        total += skipped;
    }
    return total;
}

size_t JavaInputStream::write(void* /*buffer*/, size_t /*count*/) {
    return 0;
}

int64_t JavaInputStream::seek(int64_t /*offset*/, SeekOrign /*origin*/) {
    return 0;
}

size_t JavaInputStream::skip(size_t count) {
    return doSkip(count);
}

bool JavaInputStream::rewind() {
    return true;
}

size_t JavaInputStream::getLength() {
    if (m_JavaInputStreamObject == nullptr) {
        return 0;
    }
    const jint available = m_JvmEnv->CallIntMethod(m_JavaInputStreamObject, m_JavaInputStream_AvailableMethodID);
    return clear_java_exception(m_JvmEnv, "------- Available threw an exception\n") ? 0
                                                                                    : static_cast<size_t>(available);
}

void JavaInputStream::flush() {}

bool JavaInputStream::isAtEnd() const {
    return m_IsAtEnd;
}

void JavaInputStream::close() {}

size_t JavaInputStream::doRead(void* buffer, size_t count) {
    if (m_JavaInputStreamObject == nullptr) {
        m_IsAtEnd = true;
        return 0;
    }
    auto* target = static_cast<jbyte*>(buffer);
    if (target == nullptr || m_JavaByteArray == nullptr) {
        return 0;
    }
    size_t total = 0;
    size_t remaining = count;
    for (;;) {
        const size_t chunk = std::min(remaining, m_Capacity);
        const jint result = m_JvmEnv->CallIntMethod(m_JavaInputStreamObject, m_JavaInputStream_ReadMethodID,
                                                    m_JavaByteArray, jint{0}, static_cast<jint>(chunk));
        if (clear_java_exception(m_JvmEnv, "---- read threw an exception\n")) {
            return 0;
        }
        if (result < 0) {
            m_IsAtEnd = true;
            return total;
        }
        auto delivered = static_cast<size_t>(result);
        if (delivered <= m_Capacity) {
            // A Java class that claims more than it was asked for must not write past the caller's buffer. A claim
            // beyond the array fails below.
            delivered = std::min(delivered, chunk);
        }
        m_JvmEnv->GetByteArrayRegion(m_JavaByteArray, 0, static_cast<jsize>(delivered), target);
        if (clear_java_exception(m_JvmEnv, "---- read:GetByteArrayRegion threw an exception\n")) {
            return 0;
        }
        total += delivered;
        m_BytesRead += delivered;
        if (delivered == remaining || chunk == 0) {
            return total;
        }
        target += delivered;
        remaining -= delivered;
    }
}

size_t JavaInputStream::doSkip(size_t count) {
    if (m_JavaInputStreamObject == nullptr) {
        return 0;
    }
    const jlong skipped =
        m_JvmEnv->CallLongMethod(m_JavaInputStreamObject, m_JavaInputStream_SkipMethodID, static_cast<jlong>(count));
    if (clear_java_exception(m_JvmEnv, "------- skip threw an exception\n") || skipped < 0) {
        return 0;
    }
    return static_cast<size_t>(skipped);
}
