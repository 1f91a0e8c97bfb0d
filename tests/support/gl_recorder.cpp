// SPDX-License-Identifier: Apache-2.0
#include "tests/support/gl_recorder.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <mutex>
#include <regex>
#include <set>
#include <type_traits>
#include <utility>

#include "platform/log.h"

namespace {

GlRecorder* gRecorder = nullptr;
// Several threads may draw, as long as no recorder listens.
std::mutex gLiveNamesMutex;
std::map<std::string, std::set<uintptr_t>> gLiveNames;

// The driver's own entry behind ours.
template <typename Function>
Function* next(const char* name) {
    auto* function = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
    EXPECT_NE(function, nullptr) << name;
    return function;
}

#define NAMED(name) \
    { name, #name }

// The name of an enumerator, or the number.
std::string argument_text(long long value) {
    static const std::map<long long, std::string> kNames = {
        NAMED(GL_TEXTURE_2D),  NAMED(GL_RGBA),    NAMED(GL_UNSIGNED_BYTE),  NAMED(GL_PIXEL_UNPACK_BUFFER),
        NAMED(GL_FRAMEBUFFER), NAMED(EGL_WIDTH),  NAMED(EGL_EXTENSIONS),    NAMED(EGL_NATIVE_VISUAL_ID),
        NAMED(EGL_VERSION),    NAMED(EGL_HEIGHT), NAMED(GL_FRAGMENT_SHADER)};
    const auto found = kNames.find(value);
    return found != kNames.end() ? found->second : std::to_string(value);
}

// A list of EGL attributes up to its end, which no other pointer to constant ints among the recorded calls is.
std::string argument_text(const EGLint* list) {
    std::string text = "[";
    while (list != nullptr && *list != EGL_NONE) {
        text += std::to_string(*list++) + " ";
    }
    return text + "]";
}

template <typename T>
std::string convert_argument(T value) {
    if constexpr (std::is_same_v<T, const EGLint*>) {
        return argument_text(value);
    } else if constexpr (std::is_pointer_v<T>) {
        return value == nullptr ? "null" : "ptr";
    } else {
        return argument_text(static_cast<long long>(value));
    }
}

template <typename... Arguments>
std::string call_text(const char* name, Arguments... arguments) {
    std::string text = std::string(name) + "(";
    [[maybe_unused]] const char* separator = "";
    ((text += separator + convert_argument(arguments), separator = ", "), ...);
    return text + ")";
}

bool is_log_line(const std::string& entry) {
    return entry.ends_with('\n');
}

template <typename Result, typename... Arguments>
Result forward(const char* name, Result (*driver)(Arguments...), Arguments... arguments) {
    if (gRecorder == nullptr) {
        return driver(arguments...);
    }
    gRecorder->note(call_text(name, arguments...), name[0] == 'g');
    uint64_t answer = 0;
    if (!gRecorder->find_answer(name, &answer)) {
        return driver(arguments...);
    }
    if constexpr (std::is_pointer_v<Result>) {
        return reinterpret_cast<Result>(answer);
    } else if constexpr (!std::is_void_v<Result>) {
        return static_cast<Result>(answer);
    }
}

void born(const char* maker, GLsizei count, const GLuint* names) {
    // Without a context, and in a call that was kept from the driver, no names are given.
    if (eglGetCurrentContext() == EGL_NO_CONTEXT || GlRecorder::was_answered()) {
        return;
    }
    const std::lock_guard<std::mutex> guard(gLiveNamesMutex);
    gLiveNames[maker].insert(names, names + count);
}

void died(const char* maker, GLsizei count, const GLuint* names) {
    const std::lock_guard<std::mutex> guard(gLiveNamesMutex);
    std::for_each(names, names + count, [maker](GLuint name) { gLiveNames[maker].erase(name); });
}

}  // namespace

GlRecorder::GlRecorder() {
    gRecorder = this;
    set_android_log_sink(&GlRecorder::log_sink, this);
}

GlRecorder::~GlRecorder() {
    set_android_log_sink(nullptr, nullptr);
    gRecorder = nullptr;
}

std::vector<std::string> GlRecorder::take() {
    return std::exchange(m_Entries, {});
}

std::vector<std::string> GlRecorder::take_calls() {
    std::vector<std::string> entries = take();
    std::erase_if(entries, is_log_line);
    return entries;
}

std::vector<std::string> GlRecorder::take_log() {
    std::vector<std::string> entries = take();
    std::erase_if(entries, std::not_fn(is_log_line));
    return entries;
}

std::string GlRecorder::take_blamed() {
    std::string names;
    for (const std::string& line : take_log()) {
        constexpr size_t kPrefixLength = sizeof("after :") - 1;
        names += (names.empty() ? "" : " ") + line.substr(kPrefixLength, line.find("() glError") - kPrefixLength);
    }
    return names;
}

std::map<std::string, size_t> GlRecorder::live_names() {
    std::map<std::string, size_t> counts;
    const std::lock_guard<std::mutex> guard(gLiveNamesMutex);
    for (const auto& [maker, names] : gLiveNames) {
        if (!names.empty()) {
            counts[maker] = names.size();
        }
    }
    return counts;
}

void GlRecorder::note(const std::string& entry, bool isGl) {
    m_Entries.push_back(entry);
    if (isGl && m_Injected.failEveryCall != GL_NO_ERROR) {
        m_Injected.glErrors = {m_Injected.failEveryCall};
    }
}

bool GlRecorder::was_answered() {
    return gRecorder != nullptr && gRecorder->m_WasAnswered;
}

bool GlRecorder::find_answer(const char* function, uint64_t* result) {
    m_WasAnswered = find_injected(function, result);
    return m_WasAnswered;
}

bool GlRecorder::find_injected(const char* function, uint64_t* result) {
    static const std::regex kTakesMemory(
        "egl(Create|Initialize|MakeCurrent|ChooseConfig|GetDisplay|GetConfig|QuerySurface).*|gl(Gen|Create|BufferData|"
        "MapBuffer|TexImage|Framebuffer|CheckFramebuffer|Draw|Read|Blit|GetProgramBinary).*");
    if (m_Injected.callsLeft > 0 && std::regex_match(function, kTakesMemory) && --m_Injected.callsLeft == 0) {
        m_HasFailed = true;
        const bool isGl = function[0] == 'g';
        (isGl ? m_Injected.glErrors : m_Injected.eglErrors).push_back(isGl ? GL_OUT_OF_MEMORY : EGL_BAD_ALLOC);
        *result = 0;
        return true;
    }
    const auto found = m_Injected.answers.find(function);
    if (found == m_Injected.answers.end()) {
        return false;
    }
    *result = found->second.result;
    if (found->second.code != 0) {
        (function[0] == 'g' ? m_Injected.glErrors : m_Injected.eglErrors).push_back(found->second.code);
    }
    return true;
}

bool GlRecorder::find_query_answer(GLenum name, GLint* value) const {
    const auto found = m_Injected.queryAnswers.find(name);
    if (found == m_Injected.queryAnswers.end()) {
        return false;
    }
    *value = found->second;
    return true;
}

GLenum GlRecorder::next_error(bool isGl) {
    std::deque<GLenum>& errors = isGl ? m_Injected.glErrors : m_Injected.eglErrors;
    const GLenum code = errors.empty() ? 0 : errors.front();
    if (!errors.empty()) {
        errors.pop_front();
    }
    return code;
}

void GlRecorder::log_sink(void* user, int priority, const char* tag, const char* text) {
    EXPECT_EQ(priority, ANDROID_LOG_DEBUG);
    EXPECT_STREQ(tag, "@@@");
    static_cast<GlRecorder*>(user)->m_Entries.emplace_back(text);
}

// A forwarding entry point; parameters are a, b, c, ...
#define FORWARD(Result, name, parameters, ...)                      \
    extern "C" Result name parameters {                             \
        static auto* const driver = next<Result parameters>(#name); \
        return forward(#name, driver __VA_OPT__(, ) __VA_ARGS__);   \
    }

// glGen... and glDelete...
#define FORWARD_NAMES(Kind)                                                               \
    extern "C" void glGen##Kind(GLsizei a, GLuint* b) {                                   \
        static auto* const driver = next<void(GLsizei, GLuint*)>("glGen" #Kind);          \
        forward("glGen" #Kind, driver, a, b);                                             \
        born("glGen" #Kind, a, b);                                                        \
    }                                                                                     \
    extern "C" void glDelete##Kind(GLsizei a, const GLuint* b) {                          \
        static auto* const driver = next<void(GLsizei, const GLuint*)>("glDelete" #Kind); \
        died("glGen" #Kind, a, b);                                                        \
        forward("glDelete" #Kind, driver, a, b);                                          \
    }

// eglCreate... and eglDestroy...; windows' surfaces are destroyed as pbuffers' are.
#define FORWARD_MADE(Kind, Way, parameters, ...)                                     \
    extern "C" EGL##Kind eglCreate##Way parameters {                                 \
        static auto* const driver = next<EGL##Kind parameters>("eglCreate" #Way);    \
        auto* const made = forward("eglCreate" #Way, driver, __VA_ARGS__);           \
        if (made != nullptr) {                                                       \
            const std::lock_guard<std::mutex> guard(gLiveNamesMutex);                \
            gLiveNames["eglCreate" #Kind].insert(reinterpret_cast<uintptr_t>(made)); \
        }                                                                            \
        return made;                                                                 \
    }
#define FORWARD_DESTROYED(Kind)                                                                  \
    extern "C" EGLBoolean eglDestroy##Kind(EGLDisplay a, EGL##Kind b) {                          \
        static auto* const driver = next<EGLBoolean(EGLDisplay, EGL##Kind)>("eglDestroy" #Kind); \
        {                                                                                        \
            const std::lock_guard<std::mutex> guard(gLiveNamesMutex);                            \
            gLiveNames["eglCreate" #Kind].erase(reinterpret_cast<uintptr_t>(b));                 \
        }                                                                                        \
        return forward("eglDestroy" #Kind, driver, a, b);                                        \
    }

FORWARD_NAMES(Textures)
FORWARD_NAMES(Buffers)
FORWARD_NAMES(Framebuffers)
FORWARD(void, glAttachShader, (GLuint a, GLuint b), a, b)
FORWARD(void, glBindBuffer, (GLenum a, GLuint b), a, b)
FORWARD(void, glBindFramebuffer, (GLenum a, GLuint b), a, b)
FORWARD(void, glBindTexture, (GLenum a, GLuint b), a, b)
FORWARD(void, glBlitFramebuffer,
        (GLint a, GLint b, GLint c, GLint d, GLint e, GLint f, GLint g, GLint h, GLbitfield i, GLenum j), a, b, c, d, e,
        f, g, h, i, j)
FORWARD(void, glBufferData, (GLenum a, GLsizeiptr b, const void* c, GLenum d), a, b, c, d)
FORWARD(GLenum, glCheckFramebufferStatus, (GLenum a), a)
FORWARD(void, glDrawArrays, (GLenum a, GLint b, GLsizei c), a, b, c)
FORWARD(void, glFramebufferTexture2D, (GLenum a, GLenum b, GLenum c, GLuint d, GLint e), a, b, c, d, e)
FORWARD(void, glGetProgramBinary, (GLuint a, GLsizei b, GLsizei* c, GLenum* d, void* e), a, b, c, d, e)
FORWARD(void, glDrawBuffers, (GLsizei a, const GLenum* b), a, b)
FORWARD(GLint, glGetUniformLocation, (GLuint a, const GLchar* b), a, b)
FORWARD(void*, glMapBufferRange, (GLenum a, GLintptr b, GLsizeiptr c, GLbitfield d), a, b, c, d)
FORWARD(void, glPixelStorei, (GLenum a, GLint b), a, b)
FORWARD(void, glProgramBinary, (GLuint a, GLenum b, const void* c, GLsizei d), a, b, c, d)
FORWARD(void, glReadBuffer, (GLenum a), a)
FORWARD(void, glReadPixels, (GLint a, GLint b, GLsizei c, GLsizei d, GLenum e, GLenum f, void* g), a, b, c, d, e, f, g)
FORWARD(void, glTexImage2D,
        (GLenum a, GLint b, GLint c, GLsizei d, GLsizei e, GLint f, GLenum g, GLenum h, const void* i), a, b, c, d, e,
        f, g, h, i)
FORWARD(void, glTexImage3D,
        (GLenum a, GLint b, GLint c, GLsizei d, GLsizei e, GLsizei f, GLint g, GLenum h, GLenum i, const void* j), a, b,
        c, d, e, f, g, h, i, j)
FORWARD(void, glTexParameterf, (GLenum a, GLenum b, GLfloat c), a, b, c)
FORWARD(void, glUniform1i, (GLint a, GLint b), a, b)
FORWARD(GLboolean, glUnmapBuffer, (GLenum a), a)
FORWARD(void, glUseProgram, (GLuint a), a)
FORWARD(void, glVertexAttribPointer, (GLuint a, GLint b, GLenum c, GLboolean d, GLsizei e, const void* f), a, b, c, d,
        e, f)
FORWARD(void, glViewport, (GLint a, GLint b, GLsizei c, GLsizei d), a, b, c, d)
FORWARD(EGLBoolean, eglChooseConfig, (EGLDisplay a, const EGLint* b, EGLConfig* c, EGLint d, EGLint* e), a, b, c, d, e)
// What was made on the display goes with it.
extern "C" EGLBoolean eglTerminate(EGLDisplay a) {
    static auto* const driver = next<EGLBoolean(EGLDisplay)>("eglTerminate");
    {
        const std::lock_guard<std::mutex> guard(gLiveNamesMutex);
        gLiveNames["eglCreateContext"].clear();
        gLiveNames["eglCreateSurface"].clear();
    }
    return forward("eglTerminate", driver, a);
}
FORWARD_MADE(Context, Context, (EGLDisplay a, EGLConfig b, EGLContext c, const EGLint* d), a, b, c, d)
FORWARD_MADE(Surface, PbufferSurface, (EGLDisplay a, EGLConfig b, const EGLint* c), a, b, c)
FORWARD_MADE(Surface, WindowSurface, (EGLDisplay a, EGLConfig b, EGLNativeWindowType c, const EGLint* d), a, b, c, d)
FORWARD_DESTROYED(Context)
FORWARD_DESTROYED(Surface)
FORWARD(EGLBoolean, eglGetConfigAttrib, (EGLDisplay a, EGLConfig b, EGLint c, EGLint* d), a, b, c, d)
FORWARD(EGLBoolean, eglGetConfigs, (EGLDisplay a, EGLConfig* b, EGLint c, EGLint* d), a, b, c, d)
FORWARD(EGLDisplay, eglGetDisplay, (EGLNativeDisplayType a), a)
FORWARD(EGLBoolean, eglInitialize, (EGLDisplay a, EGLint* b, EGLint* c), a, b, c)
FORWARD(EGLBoolean, eglMakeCurrent, (EGLDisplay a, EGLSurface b, EGLSurface c, EGLContext d), a, b, c, d)
FORWARD(EGLBoolean, eglQuerySurface, (EGLDisplay a, EGLSurface b, EGLint c, EGLint* d), a, b, c, d)
FORWARD(const char*, eglQueryString, (EGLDisplay a, EGLint b), a, b)
FORWARD(EGLBoolean, eglSwapBuffers, (EGLDisplay a, EGLSurface b), a, b)

// Shaders and programs, whose names come one at a time.
#define FORWARD_NAME(Kind, parameters, ...)                                               \
    extern "C" GLuint glCreate##Kind parameters {                                         \
        static auto* const driver = next<GLuint parameters>("glCreate" #Kind);            \
        const GLuint name = forward("glCreate" #Kind, driver __VA_OPT__(, ) __VA_ARGS__); \
        born("glCreate" #Kind, name == 0 ? 0 : 1, &name);                                 \
        return name;                                                                      \
    }                                                                                     \
    extern "C" void glDelete##Kind(GLuint a) {                                            \
        static auto* const driver = next<void(GLuint)>("glDelete" #Kind);                 \
        died("glCreate" #Kind, 1, &a);                                                    \
        forward("glDelete" #Kind, driver, a);                                             \
    }

FORWARD_NAME(Shader, (GLenum a), a)
FORWARD_NAME(Program, ())

// Queries are left out of the record.
#define QUERY(name)                                                            \
    extern "C" void name(GLuint a, GLenum b, GLint* c) {                       \
        static auto* const driver = next<void(GLuint, GLenum, GLint*)>(#name); \
        if (gRecorder == nullptr || !gRecorder->find_query_answer(b, c)) {     \
            driver(a, b, c);                                                   \
        }                                                                      \
    }

QUERY(glGetShaderiv)
QUERY(glGetProgramiv)

extern "C" GLenum glGetError() {
    static auto* const driver = next<GLenum()>("glGetError");
    const GLenum code = gRecorder == nullptr ? 0 : gRecorder->next_error(true);
    return code != 0 ? code : driver();
}

extern "C" EGLint eglGetError() {
    static auto* const driver = next<EGLint()>("eglGetError");
    const GLenum code = gRecorder == nullptr ? 0 : gRecorder->next_error(false);
    return code != 0 ? static_cast<EGLint>(code) : driver();
}
