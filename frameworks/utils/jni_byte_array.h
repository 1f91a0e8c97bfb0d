// JniByteArray: the elements of a Java byte array, taken for the length of one native call.
#ifndef KORVANE_FRAMEWORKS_UTILS_JNI_BYTE_ARRAY_H_
#define KORVANE_FRAMEWORKS_UTILS_JNI_BYTE_ARRAY_H_

#include <jni.h>

#include <cstddef>

class JniByteArray {
  public:
    // A null array, or one whose elements the virtual machine will not give, has none.
    JniByteArray(JNIEnv* env, jbyteArray array) : m_Env(env), m_Array(array) {
        if (array != nullptr) {
            m_Length = static_cast<size_t>(env->GetArrayLength(array));
            m_Elements = env->GetByteArrayElements(array, nullptr);
        }
    }

    // Copies back and frees; allowed while an exception is pending.
    ~JniByteArray() {
        if (m_Elements != nullptr) {
            m_Env->ReleaseByteArrayElements(m_Array, m_Elements, 0);
        }
    }

    JniByteArray(const JniByteArray&) = delete;
    JniByteArray& operator=(const JniByteArray&) = delete;

    // Null when the array has fewer than `bytes` elements: a short array is worth no more than none.
    unsigned char* atLeast(size_t bytes) const {
        return m_Length >= bytes ? reinterpret_cast<unsigned char*>(m_Elements) : nullptr;
    }

  private:
    JNIEnv* m_Env;
    jbyteArray m_Array;
    jbyte* m_Elements = nullptr;
    size_t m_Length = 0;
};

#endif  // KORVANE_FRAMEWORKS_UTILS_JNI_BYTE_ARRAY_H_
