// SPDX-License-Identifier: Apache-2.0
// GlRecorder: sees every GL and EGL call of the library on its way to the driver, and can make calls fail.
//
// A program that links korvane_gpu_support has forwarding entry points in place of the driver's; without a living
// recorder they only forward. One recorder at a time, on one thread.
#ifndef KORVANE_TESTS_SUPPORT_GL_RECORDER_H_
#define KORVANE_TESTS_SUPPORT_GL_RECORDER_H_

#include <EGL/egl.h>
#include <GLES3/gl31.h>

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

class GlRecorder {
  public:
    GlRecorder();
    ~GlRecorder();
    GlRecorder(const GlRecorder&) = delete;
    GlRecorder& operator=(const GlRecorder&) = delete;

    // Calls and log lines since the last taking, in order. Calls read "glBindTexture(GL_TEXTURE_2D, 1)", pointers
    // "null" or "ptr", attribute lists "[12375 7 ]"; log lines end with their newline. Queries of GL's state are left
    // out.
    std::vector<std::string> take();
    std::vector<std::string> take_calls();
    std::vector<std::string> take_log();

    // Whom the log lines of failed checks blame since the last taking, in order and with blanks between.
    std::string take_blamed();

    // From now on the function does not reach the driver, answers `result` and leaves the error `code` each time.
    void answer(const std::string& function, uint64_t result, GLenum code = 0) {
        m_Injected.answers[function] = {result, code};
    }

    // The `failing`-th call from now on that takes memory of the driver, counted from 1, does not reach it, answers 0
    // and says that memory is short.
    void fail_call(size_t failing) { m_Injected.callsLeft = failing; }
    bool has_failed() const { return m_HasFailed; }

    // Queries of this value of a shader or program answer `value`.
    void answer_query(GLenum name, GLint value) { m_Injected.queryAnswers[name] = value; }

    // Each GL call leaves an error of this code, so that the log shows where each check stands and whom it blames.
    void fail_every_call(GLenum code) { m_Injected.failEveryCall = code; }

    void queue_gl_errors(const std::deque<GLenum>& codes) { m_Injected.glErrors = codes; }
    void queue_egl_errors(const std::deque<GLenum>& codes) { m_Injected.eglErrors = codes; }

    // No more injected failures.
    void heal() { m_Injected = {}; }

    // How many names the driver gave and nobody deleted yet, by the function that made them ("glGenTextures"); EGL's
    // surfaces under "eglCreateSurface".
    static std::map<std::string, size_t> live_names();

    // For the entry points.
    void note(const std::string& entry, bool isGl);
    bool find_answer(const char* function, uint64_t* result);
    static bool was_answered();
    bool find_query_answer(GLenum name, GLint* value) const;
    GLenum next_error(bool isGl);

  private:
    struct Answer {
        uint64_t result;
        GLenum code;
    };
    struct Injected {
        std::map<std::string, Answer> answers;
        std::map<GLenum, GLint> queryAnswers;
        GLenum failEveryCall = GL_NO_ERROR;
        size_t callsLeft = 0;
        std::deque<GLenum> glErrors;
        std::deque<GLenum> eglErrors;
    };

    bool find_injected(const char* function, uint64_t* result);
    static void log_sink(void* user, int priority, const char* tag, const char* text);

    std::vector<std::string> m_Entries;
    Injected m_Injected;
    bool m_HasFailed = false;
    bool m_WasAnswered = false;
};

#endif  // KORVANE_TESTS_SUPPORT_GL_RECORDER_H_
