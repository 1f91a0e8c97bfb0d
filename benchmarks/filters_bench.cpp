// SPDX-License-Identifier: Apache-2.0
// The filters against the least GL program that does the same: what the filter's classes add must not be felt. Both run
// in one context, on the same shader and driver. The program that counts moves pixels as the filters do, through a
// pixel buffer for each direction, which lets a GPU fetch them while the processor goes on; a second one hands client
// memory to GL, to show what that route costs where the GPU is the processor itself.
#include <EGL/egl.h>
#include <GLES3/gl3.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "applications/filters/gpu_image_filter_factory.h"
#include "benchmarks/support/comparison.h"
#include "benchmarks/support/picture.h"
#include "frameworks/gpu/gpu_engine.h"

namespace {

using namespace korvane::bench;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr GLsizeiptr kBytes = GLsizeiptr{kWidth} * kHeight * 4;
constexpr char kHead[] =
    "precision mediump float;\n"
    "uniform sampler2D tex_sampler;\n"
    "varying vec2 v_texcoord;\n";
constexpr GLfloat kPositions[] = {-1, -1, 1, -1, -1, 1, 1, 1};
constexpr GLfloat kTextureCoordinates[] = {1, 1, 1, 0, 0, 1, 0, 0};

// A context of its own, current on this thread, with a surface to draw on.
class Surface {
  public:
    Surface() : m_Engine(new GPUEngine(nullptr, kWidth, kHeight)) {
        if (!m_Engine->setup()) {
            std::abort();
        }
        m_Engine->startup();
    }
    ~Surface() {
        m_Engine->close();
        m_Engine->destroy();
    }
    Surface(const Surface&) = delete;
    Surface& operator=(const Surface&) = delete;

    void use() { m_Engine->startup(); }

  private:
    auto_ptr<GPUEngine> m_Engine;
};

// The same work by hand: everything is looked up beforehand, nothing is checked.
class PlainProgram {
  public:
    PlainProgram(const char* vertexShader, const char* body) : m_Program(glCreateProgram()) {
        attach(GL_VERTEX_SHADER, {vertexShader});
        attach(GL_FRAGMENT_SHADER, {kHead, body});
        glBindAttribLocation(m_Program, 0, "a_position");
        glBindAttribLocation(m_Program, 1, "a_texcoord");
        glLinkProgram(m_Program);
        m_Sampler = glGetUniformLocation(m_Program, "tex_sampler");
        glGenTextures(2, m_Textures);
        for (const GLuint texture : m_Textures) {
            glBindTexture(GL_TEXTURE_2D, texture);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
        }
        glGenFramebuffers(1, &m_Framebuffer);
        glGenBuffers(2, m_PixelBuffers);
    }

    // Sends the parameters that the body declares; they stay with the program.
    void set_uniform(const char* name, float value) {
        glUseProgram(m_Program);
        glUniform1f(glGetUniformLocation(m_Program, name), value);
    }

    void upload(const unsigned char* pixels) {
        glBindTexture(GL_TEXTURE_2D, m_Textures[0]);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, kWidth, kHeight, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    }

    void draw() {
        glUseProgram(m_Program);
        glViewport(0, 0, kWidth, kHeight);
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, m_Textures[0]);
        glUniform1i(m_Sampler, 0);
        glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, kPositions);
        glVertexAttribPointer(1, 2, GL_FLOAT, GL_FALSE, 0, kTextureCoordinates);
        glEnableVertexAttribArray(0);
        glEnableVertexAttribArray(1);
        glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    }

    enum class Route { kPixelBuffer, kClientMemory };

    void process(unsigned char* pixels, Route route) {
        glBindTexture(GL_TEXTURE_2D, m_Textures[1]);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, kWidth, kHeight, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        if (route == Route::kPixelBuffer) {
            upload_through_buffer(pixels);
        } else {
            upload(pixels);
        }
        glBindFramebuffer(GL_FRAMEBUFFER, m_Framebuffer);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_Textures[1], 0);
        draw();
        if (route == Route::kPixelBuffer) {
            download_through_buffer(pixels);
        } else {
            glReadPixels(0, 0, kWidth, kHeight, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
        }
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
    }

  private:
    void upload_through_buffer(const unsigned char* pixels) {
        glBindBuffer(GL_PIXEL_UNPACK_BUFFER, m_PixelBuffers[0]);
        glBufferData(GL_PIXEL_UNPACK_BUFFER, kBytes, nullptr, GL_STREAM_DRAW);
        std::memcpy(glMapBufferRange(GL_PIXEL_UNPACK_BUFFER, 0, kBytes, GL_MAP_WRITE_BIT), pixels, kBytes);
        glUnmapBuffer(GL_PIXEL_UNPACK_BUFFER);
        upload(nullptr);
        glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    }

    void download_through_buffer(unsigned char* pixels) {
        glBindBuffer(GL_PIXEL_PACK_BUFFER, m_PixelBuffers[1]);
        glBufferData(GL_PIXEL_PACK_BUFFER, kBytes, nullptr, GL_STREAM_READ);
        glReadPixels(0, 0, kWidth, kHeight, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        std::memcpy(pixels, glMapBufferRange(GL_PIXEL_PACK_BUFFER, 0, kBytes, GL_MAP_READ_BIT), kBytes);
        glUnmapBuffer(GL_PIXEL_PACK_BUFFER);
        glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    }

    void attach(GLenum type, const std::vector<const char*>& sources) {
        const GLuint shader = glCreateShader(type);
        glShaderSource(shader, static_cast<GLsizei>(sources.size()), sources.data(), nullptr);
        glCompileShader(shader);
        glAttachShader(m_Program, shader);
    }

    GLuint m_Program;
    GLint m_Sampler = -1;
    GLuint m_Textures[2] = {};  // input, output
    GLuint m_Framebuffer = 0;
    GLuint m_PixelBuffers[2] = {};  // up, down
};

using Pixels = std::vector<unsigned char>;

Pixels drawn() {
    Pixels pixels(kBytes);
    glReadPixels(0, 0, kWidth, kHeight, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

// Both sides of a comparison, in one context: the filter's own for process, the surface's for render.
struct Contest {
    Contest(const char* name, bool onSurface) {
        if (onSurface) {
            surface = std::make_unique<Surface>();
        }
        filter = ImageFilterFactory::createFilter(name);
        if (!onSurface) {
            filter->initEngine();
        }
        if (filter->setupGraphics(1) == 0 || eglGetCurrentContext() == EGL_NO_CONTEXT) {
            std::abort();
        }
        plain = std::make_unique<PlainProgram>(filter->getVertexShader(), filter->getFragmentShader());
        // The defaults of the swirl; a shader without such a name takes no notice.
        plain->set_uniform("mStrength", 4.0F);
        plain->set_uniform("mRadius", 0.2F);
        plain->set_uniform("mCenterx", 0.5F);
        plain->set_uniform("mCentery", 0.5F);
    }

    const Pixels picture = rgba_picture(kWidth, kHeight);
    Pixels pixels = picture;
    std::unique_ptr<Surface> surface;
    auto_ptr<ImageFilterBaseGL> filter;
    std::unique_ptr<PlainProgram> plain;
};

void compare_process(Comparison& comparison, const char* name) {
    auto contest = std::make_shared<Contest>(name, false);
    const auto renew = [contest] { contest->pixels = contest->picture; };
    using Route = PlainProgram::Route;
    comparison.verify("equals the plain program's picture and differs from the input", [contest] {
        Pixels filtered = contest->picture;
        contest->filter->process(filtered.data(), kWidth, kHeight);
        for (const Route route : {Route::kPixelBuffer, Route::kClientMemory}) {
            Pixels plain = contest->picture;
            contest->plain->process(plain.data(), route);
            if (filtered != plain) {
                return false;
            }
        }
        return filtered != contest->picture;
    });
    comparison.kernel([contest] { contest->filter->process(contest->pixels.data(), kWidth, kHeight); }, renew);
    comparison.against(
        "plain GL program", {at_most(1.05)},
        [contest] { contest->plain->process(contest->pixels.data(), Route::kPixelBuffer); }, renew);
    comparison.against(
        "the same from client memory", {},
        [contest] { contest->plain->process(contest->pixels.data(), Route::kClientMemory); }, renew);
}

void compare_render(Comparison& comparison, const char* name) {
    auto contest = std::make_shared<Contest>(name, true);
    contest->filter->setBitmap(contest->pixels.data(), kWidth, kHeight);
    contest->plain->upload(contest->pixels.data());
    comparison.verify("equals the plain program's picture and is not empty", [contest] {
        glClear(GL_COLOR_BUFFER_BIT);
        const Pixels empty = drawn();
        contest->filter->render();
        const Pixels filtered = drawn();
        glClear(GL_COLOR_BUFFER_BIT);
        contest->plain->draw();
        return filtered == drawn() && filtered != empty;
    });
    comparison.kernel([contest] {
        contest->filter->render();
        glFinish();
    });
    comparison.against("plain GL program", {at_most(1.05)}, [contest] {
        contest->plain->draw();
        glFinish();
    });
}

// With LP_NUM_THREADS=0 Mesa's rasteriser draws on the caller's thread, whose CPU clock then counts all of it and
// nothing of what else the machine does.
Clock drawing_clock() {
    const char* threads = std::getenv("LP_NUM_THREADS");
    return threads != nullptr && std::strcmp(threads, "0") == 0 ? Clock::kThreadCpu : Clock::kWall;
}

const Registration kProcessNone(
    "filters/process/None/1920x1080", [](Comparison& c) { compare_process(c, "ImageFilterNone"); }, drawing_clock());
const Registration kProcessDistorted(
    "filters/process/Distorted/1920x1080", [](Comparison& c) { compare_process(c, "ImageFilterDistorted"); },
    drawing_clock());
const Registration kRenderNone(
    "filters/render/None/1920x1080", [](Comparison& c) { compare_render(c, "ImageFilterNone"); }, drawing_clock());
const Registration kRenderDistorted(
    "filters/render/Distorted/1920x1080", [](Comparison& c) { compare_render(c, "ImageFilterDistorted"); },
    drawing_clock());

}  // namespace
