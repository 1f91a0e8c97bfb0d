#include "tests/support/gl_recorder.h"

#include <GLES2/gl2ext.h>
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <set>
#include <utility>

#include "platform/log.h"

namespace {

GlRecorder* gRecorder = nullptr;
// Several threads may draw, as long as no recorder listens.
std::mutex gLiveNamesMutex;
std::map<std::string, std::set<GLuint>> gLiveNames;

// The driver's own entry behind ours.
template <typename Function>
Function* next(const char* name) {
    auto* function = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
    EXPECT_NE(function, nullptr) << name;
    return function;
}

template <typename Result, typename... Arguments>
Result forward(const char* name, Result (*driver)(Arguments...), Arguments... arguments) {
    if (gRecorder == nullptr) {
        return driver(arguments...);
    }
    gRecorder->note(call(name, arguments...), name[0] == 'g');
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

// The driver's modules go when a display is closed; the leak checker then no longer knows whose the blocks are that
// they left behind, and tests/lsan.supp names modules.
void pin_loaded_modules() {
#if defined(KORVANE_SANITIZED)
    dl_iterate_phdr(
        [](dl_phdr_info* info, size_t, void*) {
            dlopen(info->dlpi_name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
            return 0;
        },
        nullptr);
#endif
}

void born(const char* maker, GLsizei count, const GLuint* names) {
    const std::lock_guard<std::mutex> guard(gLiveNamesMutex);
    gLiveNames[maker].insert(names, names + count);
}

void died(const char* maker, GLsizei count, const GLuint* names) {
    const std::lock_guard<std::mutex> guard(gLiveNamesMutex);
    std::for_each(names, names + count, [maker](GLuint name) { gLiveNames[maker].erase(name); });
}

}  // namespace

std::string gl_recorder_detail::number_text(long long value) {
#define NAMED(enumerator) \
    { enumerator, #enumerator }
    static const std::map<long long, const char*> kNames = {
        NAMED(GL_TEXTURE_2D),
        NAMED(GL_TEXTURE_3D),
        NAMED(GL_TEXTURE_EXTERNAL_OES),
        NAMED(GL_TEXTURE_MIN_FILTER),
        NAMED(GL_TEXTURE_MAG_FILTER),
        NAMED(GL_TEXTURE_WRAP_S),
        NAMED(GL_TEXTURE_WRAP_T),
        NAMED(GL_TEXTURE_WRAP_R),
        NAMED(GL_LINEAR),
        NAMED(GL_CLAMP_TO_EDGE),
        NAMED(GL_LUMINANCE),
        NAMED(GL_LUMINANCE_ALPHA),
        NAMED(GL_RGB),
        NAMED(GL_RGBA),
        NAMED(GL_UNSIGNED_BYTE),
        NAMED(GL_FLOAT),
        NAMED(GL_PIXEL_UNPACK_BUFFER),
        NAMED(GL_PIXEL_PACK_BUFFER),
        NAMED(GL_STREAM_DRAW),
        NAMED(GL_STREAM_READ),
        NAMED(GL_UNPACK_ALIGNMENT),
        NAMED(GL_FRAMEBUFFER),
        NAMED(GL_DRAW_FRAMEBUFFER),
        NAMED(GL_READ_FRAMEBUFFER),
        NAMED(GL_COLOR_BUFFER_BIT),
        NAMED(GL_COLOR_ATTACHMENT0),
        NAMED(GL_COLOR_ATTACHMENT1),
        NAMED(GL_COLOR_ATTACHMENT2),
        NAMED(GL_COLOR_ATTACHMENT3),
        NAMED(GL_VERTEX_SHADER),
        NAMED(GL_FRAGMENT_SHADER),
        NAMED(GL_COMPUTE_SHADER),
        NAMED(GL_TEXTURE0),
        NAMED(GL_TEXTURE3),
        NAMED(EGL_EXTENSIONS),
        NAMED(EGL_VERSION),
        NAMED(EGL_WIDTH),
        NAMED(EGL_HEIGHT),
        NAMED(EGL_NATIVE_VISUAL_ID),
    };
#undef NAMED
    const auto found = kNames.find(value);
    return found != kNames.end() ? found->second : std::to_string(value);
}

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
    std::erase_if(entries, [](const std::string& entry) { return entry.ends_with('\n'); });
    return entries;
}

std::vector<std::string> GlRecorder::take_log() {
    std::vector<std::string> entries = take();
    std::erase_if(entries, [](const std::string& entry) { return !entry.ends_with('\n'); });
    return entries;
}

std::string GlRecorder::take_checks() {
    std::string text;
    std::string lastCall;
    for (const std::string& entry : take()) {
        constexpr size_t kPrefixLength = sizeof("after :") - 1;
        const size_t end = entry.find("() glError");
        if (end == std::string::npos) {
            text += (text.empty() ? "" : "\n") + entry;
            lastCall = entry.substr(0, entry.find('('));
            continue;
        }
        const std::string blamed = entry.substr(kPrefixLength, end - kPrefixLength);
        text += blamed == lastCall ? "!" : "!" + blamed;
    }
    return text + "\n";
}

void GlRecorder::heal() {
    m_Answers.clear();
    m_QueryAnswers.clear();
    m_FailEveryCall = GL_NO_ERROR;
    m_GlErrors.clear();
    m_EglErrors.clear();
}

std::map<std::string, size_t> GlRecorder::live_names() {
    std::map<std::string, size_t> counts;
    const std::lock_guard<std::mutex> guard(gLiveNamesMutex);
    for (const auto& [maker, names] : gLiveNames) {
        counts[maker] = names.size();
    }
    return counts;
}

void GlRecorder::note(const std::string& entry, bool isGl) {
    m_Entries.push_back(entry);
    if (isGl && m_FailEveryCall != GL_NO_ERROR) {
        m_GlErrors = {m_FailEveryCall};
    }
}

bool GlRecorder::find_answer(const char* function, uint64_t* result) {
    const auto found = m_Answers.find(function);
    if (found == m_Answers.end()) {
        return false;
    }
    *result = found->second.m_Result;
    if (found->second.m_Code != 0) {
        (function[0] == 'g' ? m_GlErrors : m_EglErrors).push_back(found->second.m_Code);
    }
    return true;
}

bool GlRecorder::find_query_answer(GLenum name, GLint* value) const {
    const auto found = m_QueryAnswers.find(name);
    if (found == m_QueryAnswers.end()) {
        return false;
    }
    *value = found->second;
    return true;
}

bool GlRecorder::next_gl_error(GLenum* code) {
    if (m_GlErrors.empty()) {
        return false;
    }
    *code = m_GlErrors.front();
    m_GlErrors.erase(m_GlErrors.begin());
    return true;
}

bool GlRecorder::next_egl_error(EGLint* code) {
    if (m_EglErrors.empty()) {
        return false;
    }
    *code = static_cast<EGLint>(m_EglErrors.front());
    m_EglErrors.erase(m_EglErrors.begin());
    return true;
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

FORWARD_NAMES(Textures)
FORWARD_NAMES(Buffers)
FORWARD_NAMES(Framebuffers)
FORWARD(void, glActiveTexture, (GLenum a), a)
FORWARD(void, glAttachShader, (GLuint a, GLuint b), a, b)
FORWARD(void, glBindBuffer, (GLenum a, GLuint b), a, b)
FORWARD(void, glBindFramebuffer, (GLenum a, GLuint b), a, b)
FORWARD(void, glBindTexture, (GLenum a, GLuint b), a, b)
FORWARD(void, glBlitFramebuffer,
        (GLint a, GLint b, GLint c, GLint d, GLint e, GLint f, GLint g, GLint h, GLbitfield i, GLenum j), a, b, c, d, e,
        f, g, h, i, j)
FORWARD(void, glBufferData, (GLenum a, GLsizeiptr b, const void* c, GLenum d), a, b, c, d)
FORWARD(GLenum, glCheckFramebufferStatus, (GLenum a), a)
FORWARD(void, glCompileShader, (GLuint a), a)
FORWARD(void, glDrawArrays, (GLenum a, GLint b, GLsizei c), a, b, c)
FORWARD(void, glEnableVertexAttribArray, (GLuint a), a)
FORWARD(void, glFramebufferTexture2D, (GLenum a, GLenum b, GLenum c, GLuint d, GLint e), a, b, c, d, e)
FORWARD(void, glGetProgramBinary, (GLuint a, GLsizei b, GLsizei* c, GLenum* d, void* e), a, b, c, d, e)
FORWARD(GLint, glGetUniformLocation, (GLuint a, const GLchar* b), a, b)
FORWARD(void, glLinkProgram, (GLuint a), a)
FORWARD(void*, glMapBufferRange, (GLenum a, GLintptr b, GLsizeiptr c, GLbitfield d), a, b, c, d)
FORWARD(void, glPixelStorei, (GLenum a, GLint b), a, b)
FORWARD(void, glProgramBinary, (GLuint a, GLenum b, const void* c, GLsizei d), a, b, c, d)
FORWARD(void, glReadBuffer, (GLenum a), a)
FORWARD(void, glReadPixels, (GLint a, GLint b, GLsizei c, GLsizei d, GLenum e, GLenum f, void* g), a, b, c, d, e, f, g)
FORWARD(void, glShaderSource, (GLuint a, GLsizei b, const GLchar* const* c, const GLint* d), a, b, c, d)
FORWARD(void, glTexImage2D,
        (GLenum a, GLint b, GLint c, GLsizei d, GLsizei e, GLint f, GLenum g, GLenum h, const void* i), a, b, c, d, e,
        f, g, h, i)
FORWARD(void, glTexImage3D,
        (GLenum a, GLint b, GLint c, GLsizei d, GLsizei e, GLsizei f, GLint g, GLenum h, GLenum i, const void* j), a, b,
        c, d, e, f, g, h, i, j)
FORWARD(void, glTexParameterf, (GLenum a, GLenum b, GLfloat c), a, b, c)
FORWARD(void, glTexParameteri, (GLenum a, GLenum b, GLint c), a, b, c)
FORWARD(void, glUniform1i, (GLint a, GLint b), a, b)
FORWARD(GLboolean, glUnmapBuffer, (GLenum a), a)
FORWARD(void, glUseProgram, (GLuint a), a)
FORWARD(void, glVertexAttribPointer, (GLuint a, GLint b, GLenum c, GLboolean d, GLsizei e, const void* f), a, b, c, d,
        e, f)
FORWARD(void, glViewport, (GLint a, GLint b, GLsizei c, GLsizei d), a, b, c, d)
FORWARD(EGLBoolean, eglChooseConfig, (EGLDisplay a, const EGLint* b, EGLConfig* c, EGLint d, EGLint* e), a, b, c, d, e)
FORWARD(EGLContext, eglCreateContext, (EGLDisplay a, EGLConfig b, EGLContext c, const EGLint* d), a, b, c, d)
FORWARD(EGLSurface, eglCreatePbufferSurface, (EGLDisplay a, EGLConfig b, const EGLint* c), a, b, c)
FORWARD(EGLSurface, eglCreateWindowSurface, (EGLDisplay a, EGLConfig b, EGLNativeWindowType c, const EGLint* d), a, b,
        c, d)
FORWARD(EGLBoolean, eglDestroyContext, (EGLDisplay a, EGLContext b), a, b)
FORWARD(EGLBoolean, eglDestroySurface, (EGLDisplay a, EGLSurface b), a, b)
FORWARD(EGLBoolean, eglGetConfigAttrib, (EGLDisplay a, EGLConfig b, EGLint c, EGLint* d), a, b, c, d)
FORWARD(EGLBoolean, eglGetConfigs, (EGLDisplay a, EGLConfig* b, EGLint c, EGLint* d), a, b, c, d)
FORWARD(EGLDisplay, eglGetDisplay, (EGLNativeDisplayType a), a)
FORWARD(EGLBoolean, eglMakeCurrent, (EGLDisplay a, EGLSurface b, EGLSurface c, EGLContext d), a, b, c, d)
FORWARD(EGLBoolean, eglQuerySurface, (EGLDisplay a, EGLSurface b, EGLint c, EGLint* d), a, b, c, d)
FORWARD(const char*, eglQueryString, (EGLDisplay a, EGLint b), a, b)
FORWARD(EGLBoolean, eglSwapBuffers, (EGLDisplay a, EGLSurface b), a, b)
FORWARD(EGLBoolean, eglTerminate, (EGLDisplay a), a)

extern "C" EGLBoolean eglInitialize(EGLDisplay a, EGLint* b, EGLint* c) {
    static auto* const driver = next<EGLBoolean(EGLDisplay, EGLint*, EGLint*)>("eglInitialize");
    const EGLBoolean result = forward("eglInitialize", driver, a, b, c);
    pin_loaded_modules();
    return result;
}

extern "C" void glDrawBuffers(GLsizei a, const GLenum* b) {
    static auto* const driver = next<void(GLsizei, const GLenum*)>("glDrawBuffers");
    if (gRecorder != nullptr) {
        std::string text = "glDrawBuffers(" + std::to_string(a);
        std::for_each(b, b + a, [&](GLenum buffer) { text += ", " + gl_recorder_detail::number_text(buffer); });
        gRecorder->note(text + ")", true);
    }
    driver(a, b);
}

// Shaders and programs, whose names come one at a time.
extern "C" GLuint glCreateShader(GLenum a) {
    static auto* const driver = next<GLuint(GLenum)>("glCreateShader");
    const GLuint name = forward("glCreateShader", driver, a);
    born("glCreateShader", name == 0 ? 0 : 1, &name);
    return name;
}

extern "C" void glDeleteShader(GLuint a) {
    static auto* const driver = next<void(GLuint)>("glDeleteShader");
    died("glCreateShader", 1, &a);
    forward("glDeleteShader", driver, a);
}

extern "C" GLuint glCreateProgram() {
    static auto* const driver = next<GLuint()>("glCreateProgram");
    const GLuint name = forward("glCreateProgram", driver);
    born("glCreateProgram", name == 0 ? 0 : 1, &name);
    return name;
}

extern "C" void glDeleteProgram(GLuint a) {
    static auto* const driver = next<void(GLuint)>("glDeleteProgram");
    died("glCreateProgram", 1, &a);
    forward("glDeleteProgram", driver, a);
}

// Queries are left out of the record.
extern "C" void glGetShaderiv(GLuint a, GLenum b, GLint* c) {
    static auto* const driver = next<void(GLuint, GLenum, GLint*)>("glGetShaderiv");
    if (gRecorder == nullptr || !gRecorder->find_query_answer(b, c)) {
        driver(a, b, c);
    }
}

extern "C" void glGetProgramiv(GLuint a, GLenum b, GLint* c) {
    static auto* const driver = next<void(GLuint, GLenum, GLint*)>("glGetProgramiv");
    if (gRecorder == nullptr || !gRecorder->find_query_answer(b, c)) {
        driver(a, b, c);
    }
}

extern "C" GLenum glGetError() {
    static auto* const driver = next<GLenum()>("glGetError");
    GLenum code = GL_NO_ERROR;
    return gRecorder != nullptr && gRecorder->next_gl_error(&code) ? code : driver();
}

extern "C" EGLint eglGetError() {
    static auto* const driver = next<EGLint()>("eglGetError");
    EGLint code = EGL_SUCCESS;
    return gRecorder != nullptr && gRecorder->next_egl_error(&code) ? code : driver();
}
