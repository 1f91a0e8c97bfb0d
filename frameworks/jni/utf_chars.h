// SPDX-License-Identifier: Apache-2.0
// UtfChars: the characters of a Java string in modified UTF-8, held until the end of the scope.
#ifndef KORVANE_FRAMEWORKS_JNI_UTF_CHARS_H_
#define KORVANE_FRAMEWORKS_JNI_UTF_CHARS_H_

#include <jni.h>

namespace korvane {

class UtfChars {
  public:
    UtfChars(JNIEnv* env, jstring text)
        : m_Env(env), m_Text(text), m_Chars(text == nullptr ? nullptr : env->GetStringUTFChars(text, nullptr)) {}

    ~UtfChars() {
        if (m_Chars != nullptr) {
            m_Env->ReleaseStringUTFChars(m_Text, m_Chars);
        }
    }

    UtfChars(const UtfChars&) = delete;
    UtfChars& operator=(const UtfChars&) = delete;

    // Null for a null string, and when the virtual machine cannot give the characters.
    const char* get() const { return m_Chars; }

    // The string is there, but not its characters: Java has an exception pending, and most calls are not allowed.
    bool has_failed() const { return m_Text != nullptr && m_Chars == nullptr; }

    // Never gives the characters back: they stay with the virtual machine for the life of the process.
    const char* keep() {
        const char* chars = m_Chars;
        m_Chars = nullptr;
        return chars;
    }

  private:
    JNIEnv* m_Env;
    jstring m_Text;
    const char* m_Chars;
};

}  // namespace korvane

#endif  // KORVANE_FRAMEWORKS_JNI_UTF_CHARS_H_
