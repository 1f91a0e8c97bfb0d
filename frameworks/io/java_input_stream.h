// SPDX-License-Identifier: Apache-2.0
// JavaInputStream: a Stream that reads from a java.io.InputStream.
//
// Bytes pass through a Java byte array of the caller's. The stream takes no global references and holds the JNIEnv: it
// lives within one native call, on the thread that made it, while the caller keeps the Java objects alive. An exception
// thrown by Java is described, cleared and logged, and the operation answers 0. A null stream object answers as one at
// its end; a null or empty array transfers nothing.
#ifndef KORVANE_FRAMEWORKS_IO_JAVA_INPUT_STREAM_H_
#define KORVANE_FRAMEWORKS_IO_JAVA_INPUT_STREAM_H_

#include "frameworks/core/export.h"
#include "frameworks/io/stream.h"
#include "frameworks/jni/jni_types.h"

class KORVANE_API JavaInputStream : public Stream {
  public:
    // Looks up read, skip and available of `inputStream`'s class. `buffer` sets the largest piece of one Java call.
    JavaInputStream(JNIEnv* env, jobject inputStream, jbyteArray buffer);

    // Releases nothing in Java.
    ~JavaInputStream() override;

    JavaInputStream(const JavaInputStream&) = delete;
    JavaInputStream& operator=(const JavaInputStream&) = delete;

    // Calls Java until `count` bytes came (returns `count`), the Java stream ended (returns what came before), or an
    // exception was thrown (returns 0, also if bytes came before it). A null `buffer` skips, by reading where the Java
    // stream cannot skip.
    size_t read(void* buffer, size_t count) override;

    // Cannot write: 0.
    size_t write(void* buffer, size_t count) override;

    // Cannot be positioned: 0 without effect.
    int64_t seek(int64_t offset, SeekOrign origin) override;

    // One call of Java's skip, which may skip fewer bytes than `count`, also none.
    size_t skip(size_t count) override;

    // True without effect: a Java stream cannot go back.
    bool rewind() override;

    // The bytes Java can deliver without blocking, not the length of the stream.
    size_t getLength() override;

    void flush() override;

    // True once a read met the end.
    bool isAtEnd() const override;

    // Leaves the Java stream open: it is the caller's.
    void close() override;

    // read() and skip() for a non-null buffer.
    size_t doRead(void* buffer, size_t count);
    size_t doSkip(size_t count);

  private:
    JNIEnv* m_JvmEnv;
    jobject m_JavaInputStreamObject;
    jbyteArray m_JavaByteArray;
    size_t m_Capacity = 0;
    size_t m_BytesRead = 0;
    bool m_IsAtEnd = false;
    jmethodID m_JavaInputStream_ReadMethodID = nullptr;
    jmethodID m_JavaInputStream_SkipMethodID = nullptr;
    jmethodID m_JavaInputStream_AvailableMethodID = nullptr;
};

#endif  // KORVANE_FRAMEWORKS_IO_JAVA_INPUT_STREAM_H_
