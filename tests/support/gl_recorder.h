// GlRecorder: sees every GL and EGL call of the library on its way to the driver, and can make calls fail.
//
// A program that links korvane_gl_recorder has these entry points resolved to forwarding ones; without a living
// recorder they only forward. One recorder at a time, on one thread.
#ifndef KORVANE_TESTS_SUPPORT_GL_RECORDER_H_
#define KORVANE_TESTS_SUPPORT_GL_RECORDER_H_

#include <EGL/egl.h>
#include <GLES3/gl31.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace gl_recorder_detail {

// A list of EGL attributes up to its end, which no other pointer to constant ints among the recorded calls is.
inline std::string attributes_text(const EGLint* list) {
    std::string text = "[";
    while (list != nullptr && *list != EGL_NONE) {
        text += std::to_string(*list++) + " ";
    }
    return text + "]";
}

// The name of an enumerator, or the number.
std::string number_text(long long value);

template <typename T>
std::string argument_text(T value) {
    if constexpr (std::is_null_pointer_v<T>) {
        return "null";
    } else if constexpr (std::is_same_v<T, const EGLint*>) {
        return attributes_text(value);
    } else if constexpr (std::is_pointer_v<T>) {
        return value == nullptr ? "null" : "ptr";
    } else {
        return number_text(static_cast<long long>(value));
    }
}

}  // namespace gl_recorder_detail

// A call as the recorder writes it: "glBindTexture(GL_TEXTURE_2D, 1)". Pointers are "null" or "ptr",
// attribute lists "[12375 7 ]".
template <typename... Arguments>
std::string call(const char* name, Arguments... arguments) {
    std::string text = std::string(name) + "(";
    [[maybe_unused]] const char* separator = "";
    ((text += separator + gl_recorder_detail::argument_text(arguments), separator = ", "), ...);
    return text + ")";
}

class GlRecorder {
  public:
    GlRecorder();
    ~GlRecorder();
    GlRecorder(const GlRecorder&) = delete;
    GlRecorder& operator=(const GlRecorder&) = delete;

    // Calls and log lines since the last taking, in order. Log lines stand as they are, with their newline; error
    // queries and other queries of GL's state are left out.
    std::vector<std::string> take();
    std::vector<std::string> take_calls();
    std::vector<std::string> take_log();

    // The calls since the last taking, one a line, while fail_every_call() is on: "!" after a call that a check of its
    // own name follows, "!text" where the check has another text.
    std::string take_checks();

    // From now on the function does not reach the driver, answers `result` and leaves the error `code` each time.
    void answer(const std::string& function, uint64_t result, GLenum code = 0) { m_Answers[function] = {result, code}; }

    // Queries of this value of a shader or program answer `value`.
    void answer_query(GLenum name, GLint value) { m_QueryAnswers[name] = value; }

    // After each GL call one error of this code is queued, so that a log line shows where each check stands and whom it
    // blames.
    void fail_every_call(GLenum code) { m_FailEveryCall = code; }

    void queue_gl_errors(const std::vector<GLenum>& codes) { m_GlErrors = codes; }
    void queue_egl_errors(const std::vector<GLenum>& codes) { m_EglErrors = codes; }

    // No more injected failures.
    void heal();

    // Names that the driver gave and nobody deleted yet, by the function that made them ("glGenTextures").
    static std::map<std::string, size_t> live_names();

    // For the entry points.
    void note(const std::string& entry, bool isGl);
    bool find_answer(const char* function, uint64_t* result);
    bool find_query_answer(GLenum name, GLint* value) const;
    bool next_gl_error(GLenum* code);
    bool next_egl_error(EGLint* code);

  private:
    struct Answer {
        uint64_t m_Result;
        GLenum m_Code;
    };

    static void log_sink(void* user, int priority, const char* tag, const char* text);

    std::vector<std::string> m_Entries;
    std::map<std::string, Answer> m_Answers;
    std::map<GLenum, GLint> m_QueryAnswers;
    GLenum m_FailEveryCall = GL_NO_ERROR;
    std::vector<GLenum> m_GlErrors;
    std::vector<GLenum> m_EglErrors;
};

#endif  // KORVANE_TESTS_SUPPORT_GL_RECORDER_H_
