// SPDX-License-Identifier: Apache-2.0
// ArrayElements: the elements of a Java array of numbers, held for the length of one native call.
//
// The virtual machine may give its own memory or a copy. At the end of the scope changes are copied back and the copy
// is freed; that is allowed while a Java exception is pending.
#ifndef KORVANE_FRAMEWORKS_JNI_ARRAY_ELEMENTS_H_
#define KORVANE_FRAMEWORKS_JNI_ARRAY_ELEMENTS_H_

#include <jni.h>

#include <cstddef>

namespace korvane {

// Which calls of JNI serve which type of array.
template <typename Array>
struct ArrayCalls;

#define KORVANE_ARRAY_CALLS(array, element, Name)                               \
    template <>                                                                 \
    struct ArrayCalls<array> {                                                  \
        using Element = element;                                                \
        static constexpr auto kGet = &JNIEnv::Get##Name##ArrayElements;         \
        static constexpr auto kRelease = &JNIEnv::Release##Name##ArrayElements; \
    };
KORVANE_ARRAY_CALLS(jbooleanArray, jboolean, Boolean)
KORVANE_ARRAY_CALLS(jbyteArray, jbyte, Byte)
KORVANE_ARRAY_CALLS(jintArray, jint, Int)
KORVANE_ARRAY_CALLS(jfloatArray, jfloat, Float)
KORVANE_ARRAY_CALLS(jdoubleArray, jdouble, Double)
#undef KORVANE_ARRAY_CALLS

template <typename Array>
class ArrayElements {
  public:
    using Element = typename ArrayCalls<Array>::Element;

    // A null array has no elements, and so has one whose elements the virtual machine cannot give. While an exception
    // is pending nothing is asked for.
    ArrayElements(JNIEnv* env, Array array) : m_Env(env), m_Array(array) {
        if (array != nullptr && env->ExceptionCheck() == JNI_FALSE) {
            m_Elements = (env->*ArrayCalls<Array>::kGet)(array, nullptr);
        }
        if (m_Elements != nullptr) {
            m_Count = static_cast<size_t>(env->GetArrayLength(array));
        }
    }

    ~ArrayElements() {
        if (m_Elements != nullptr) {
            (m_Env->*ArrayCalls<Array>::kRelease)(m_Array, m_Elements, 0);
        }
    }

    ArrayElements(const ArrayElements&) = delete;
    ArrayElements& operator=(const ArrayElements&) = delete;

    // Null when there are none.
    Element* get() const { return m_Elements; }

    // How many elements get() points at.
    size_t count() const { return m_Count; }

    // The size of all elements in bytes.
    size_t bytes() const { return m_Count * sizeof(Element); }

    // The elements as bytes; null when they are fewer than `bytes`. Work that needs more than a caller gives treats
    // the array as none.
    unsigned char* at_least(size_t bytes) const {
        return this->bytes() >= bytes ? reinterpret_cast<unsigned char*>(m_Elements) : nullptr;
    }

  private:
    JNIEnv* m_Env;
    Array m_Array;
    Element* m_Elements = nullptr;
    size_t m_Count = 0;
};

}  // namespace korvane

#endif  // KORVANE_FRAMEWORKS_JNI_ARRAY_ELEMENTS_H_
