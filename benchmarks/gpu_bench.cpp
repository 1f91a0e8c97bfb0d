// SPDX-License-Identifier: Apache-2.0
#include <GLES3/gl3.h>

#include <cstring>
#include <memory>
#include <vector>

#include "benchmarks/support/comparison.h"
#include "benchmarks/support/picture.h"
#include "frameworks/gpu/gpu_engine.h"
#include "frameworks/gpu/gpu_image_2d.h"
#include "frameworks/gpu/gpu_program.h"
#include "frameworks/gpu/gpu_script.h"

namespace {

using namespace korvane::bench;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr GLsizeiptr kBytes = GLsizeiptr{kWidth} * kHeight * 4;

constexpr const char* kVertexShader =
    "attribute vec4 a_position;\n"
    "attribute vec2 a_texcoord;\n"
    "varying vec2 v_texcoord;\n"
    "void main() { gl_Position = a_position; v_texcoord = a_texcoord; }\n";

// Enough arithmetic to be a filter.
constexpr const char* kFragmentShader =
    "precision mediump float;\n"
    "uniform sampler2D tex_sampler;\n"
    "uniform float strength;\n"
    "varying vec2 v_texcoord;\n"
    "void main() {\n"
    "  vec4 colour = texture2D(tex_sampler, v_texcoord);\n"
    "  gl_FragColor = vec4(mix(colour.rgb, colour.gbr, strength), colour.a);\n"
    "}\n";

constexpr float kStrength = 0.75F;

// One picture up, one pass over it, the result back, by the framework's classes.
class FrameworkPass {
  public:
    explicit FrameworkPass(GPUContext* context)
        : m_Input(context, kWidth, kHeight, 4), m_Output(context, kWidth, kHeight, 4) {
        auto_ptr<GPUScript> script(new GPUScript(context, nullptr));
        script->addSource("VertexShader", kVertexShader);
        script->addSource("FragmentShader", kFragmentShader);
        m_Program = new GPUProgram(context, script.get());
    }

    void run(unsigned char* pixels, unsigned char* result) {
        m_Input.upload(pixels, kBytes);
        m_Program->beganCompute();
        m_Program->setOutputTarget(&m_Output);
        m_Program->setOutputSize(0, 0, kWidth, kHeight);
        m_Program->setSourceTarget("tex_sampler", 0, &m_Input);
        float strength = kStrength;
        m_Program->setParameters("strength", GPU_PROGRAM_PARAMETER_TYPE_FLOAT1, &strength);
        m_Program->endCompute();
        m_Output.download(result, kBytes);
    }

  private:
    GPUImage2D m_Input;
    GPUImage2D m_Output;
    auto_ptr<GPUProgram> m_Program;
};

// The same in bare GL: every name and location looked up once, no error ever asked for.
class BarePass {
  public:
    BarePass() {
        m_Program = glCreateProgram();
        for (const auto& [type, source] :
             {std::pair(GL_VERTEX_SHADER, kVertexShader), std::pair(GL_FRAGMENT_SHADER, kFragmentShader)}) {
            const GLuint shader = glCreateShader(static_cast<GLenum>(type));
            glShaderSource(shader, 1, &source, nullptr);
            glCompileShader(shader);
            glAttachShader(m_Program, shader);
            glDeleteShader(shader);
        }
        glLinkProgram(m_Program);
        m_Sampler = glGetUniformLocation(m_Program, "tex_sampler");
        m_Strength = glGetUniformLocation(m_Program, "strength");
        glGenTextures(2, m_Textures);
        for (const GLuint texture : m_Textures) {
            glBindTexture(GL_TEXTURE_2D, texture);
            glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, kWidth, kHeight, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
        }
        glBindTexture(GL_TEXTURE_2D, 0);
        glGenFramebuffers(1, &m_Framebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, m_Framebuffer);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_Textures[1], 0);
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glGenBuffers(2, m_Buffers);
    }

    ~BarePass() {
        glDeleteBuffers(2, m_Buffers);
        glDeleteFramebuffers(1, &m_Framebuffer);
        glDeleteTextures(2, m_Textures);
        glDeleteProgram(m_Program);
    }

    BarePass(const BarePass&) = delete;
    BarePass& operator=(const BarePass&) = delete;

    // Through pixel buffers with a fresh store and one copy each way, as the framework transfers.
    void run_buffered(const unsigned char* pixels, unsigned char* result) const {
        glBindBuffer(GL_PIXEL_UNPACK_BUFFER, m_Buffers[0]);
        glBufferData(GL_PIXEL_UNPACK_BUFFER, kBytes, nullptr, GL_STREAM_DRAW);
        std::memcpy(glMapBufferRange(GL_PIXEL_UNPACK_BUFFER, 0, kBytes, GL_MAP_WRITE_BIT), pixels, kBytes);
        glUnmapBuffer(GL_PIXEL_UNPACK_BUFFER);
        upload_and_draw(nullptr);
        glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
        glBindBuffer(GL_PIXEL_PACK_BUFFER, m_Buffers[1]);
        glBufferData(GL_PIXEL_PACK_BUFFER, kBytes, nullptr, GL_STREAM_READ);
        glReadPixels(0, 0, kWidth, kHeight, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        std::memcpy(result, glMapBufferRange(GL_PIXEL_PACK_BUFFER, 0, kBytes, GL_MAP_READ_BIT), kBytes);
        glUnmapBuffer(GL_PIXEL_PACK_BUFFER);
        glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
    }

    // Straight from and to the caller's memory.
    void run_direct(const unsigned char* pixels, unsigned char* result) const {
        upload_and_draw(pixels);
        glReadPixels(0, 0, kWidth, kHeight, GL_RGBA, GL_UNSIGNED_BYTE, result);
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
    }

  private:
    void upload_and_draw(const void* pixels) const {
        static constexpr GLfloat kPositions[] = {-1, -1, 1, -1, -1, 1, 1, 1};
        static constexpr GLfloat kCoordinates[] = {0, 1, 1, 1, 0, 0, 1, 0};
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, m_Textures[0]);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, kWidth, kHeight, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
        glBindFramebuffer(GL_FRAMEBUFFER, m_Framebuffer);
        glViewport(0, 0, kWidth, kHeight);
        glUseProgram(m_Program);
        glUniform1i(m_Sampler, 0);
        glUniform1f(m_Strength, kStrength);
        glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, kPositions);
        glVertexAttribPointer(1, 2, GL_FLOAT, GL_FALSE, 0, kCoordinates);
        glEnableVertexAttribArray(0);
        glEnableVertexAttribArray(1);
        glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    }

    GLuint m_Program;
    GLint m_Sampler;
    GLint m_Strength;
    GLuint m_Textures[2];
    GLuint m_Framebuffer;
    GLuint m_Buffers[2];
};

// One context for all contestants, so that they meet the same driver in the same state.
struct Stage {
    Stage() : usable(engine.setup()) {
        engine.startup();
        if (usable) {
            framework = std::make_unique<FrameworkPass>(engine.getGPUContext());
            bare = std::make_unique<BarePass>();
        }
    }

    ~Stage() {
        framework.reset();
        bare.reset();
        engine.destroy();
    }

    GPUEngine engine{nullptr, 0, 0};
    bool usable;
    std::unique_ptr<FrameworkPass> framework;
    std::unique_ptr<BarePass> bare;
    std::vector<unsigned char> picture = rgba_picture(kWidth, kHeight);
    std::vector<unsigned char> result = std::vector<unsigned char>(kBytes);
    std::vector<unsigned char> expected = std::vector<unsigned char>(kBytes);
};

void compare_pass(Comparison& comparison) {
    const auto stage = std::make_shared<Stage>();
    comparison.verify("EGL gives a context (it needs a display: xvfb-run)", [stage] { return stage->usable; });
    comparison.verify("both bare programs give the framework's picture", [stage] {
        stage->framework->run(stage->picture.data(), stage->expected.data());
        stage->bare->run_direct(stage->picture.data(), stage->result.data());
        const bool direct = stage->result == stage->expected && stage->result != stage->picture;
        stage->bare->run_buffered(stage->picture.data(), stage->result.data());
        return direct && stage->result == stage->expected;
    });
    comparison.kernel([stage] { stage->framework->run(stage->picture.data(), stage->result.data()); });
    comparison.against("bare GL, pixel buffers", {at_most(1.05)},
                       [stage] { stage->bare->run_buffered(stage->picture.data(), stage->result.data()); });
    comparison.against("bare GL, client memory", {},
                       [stage] { stage->bare->run_direct(stage->picture.data(), stage->result.data()); });
}

const Registration kPass("gpu/upload+draw+download/1920x1080", compare_pass, Clock::kWall);

}  // namespace
