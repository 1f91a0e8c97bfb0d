// SPDX-License-Identifier: Apache-2.0
// JavaOutputStream: a Stream that writes to a java.io.OutputStream.
//
// Bytes pass through a Java byte array of the caller's. The stream takes no global references and holds the JNIEnv: it
// lives within one native call, on the thread that made it, while the caller keeps the Java objects alive. An exception
// thrown by Java is described, cleared and logged. It only writes and flushes; everything else answers 0 or false. With
// a null stream object, or a null or empty array, it does nothing.
#ifndef KORVANE_FRAMEWORKS_IO_JAVA_OUTPUT_STREAM_H_
#define KORVANE_FRAMEWORKS_IO_JAVA_OUTPUT_STREAM_H_

#include "frameworks/core/export.h"
#include "frameworks/io/stream.h"
#include "frameworks/jni/jni_types.h"

class KORVANE_API JavaOutputStream : public Stream {
  public:
    // Looks up write and flush. `buffer` sets the largest piece of one Java call.
    JavaOutputStream(JNIEnv* env, jobject outputStream, jbyteArray buffer);

    // Releases nothing in Java.
    ~JavaOutputStream() override;

    JavaOutputStream(const JavaOutputStream&) = delete;
    JavaOutputStream& operator=(const JavaOutputStream&) = delete;

    size_t read(void* buffer, size_t count) override;

    // Always 0. Hands Java piece after piece, each min(array length, `count`) bytes, walking on through memory from
    // `buffer` until a Java call throws: it does not stop after `count` bytes. Write only to a Java stream that throws
    // when it has had enough, from memory that reaches so far.
    size_t write(void* buffer, size_t count) override;

    int64_t seek(int64_t offset, SeekOrign origin) override;
    size_t skip(size_t count) override;
    bool rewind() override;
    size_t getLength() override;
    void flush() override;
    bool isAtEnd() const override;

    // Leaves the Java stream open: it is the caller's.
    void close() override;

  private:
    JNIEnv* m_JvmEnv;
    jobject m_JavaOutputStreamObject;
    jbyteArray m_JavaByteArray;
    size_t m_Capacity = 0;
    jmethodID m_JavaOutputStream_WriteMethodID = nullptr;
    jmethodID m_JavaOutputStream_FlushMethodID = nullptr;
};

#endif  // KORVANE_FRAMEWORKS_IO_JAVA_OUTPUT_STREAM_H_
