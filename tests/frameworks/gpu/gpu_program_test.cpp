// SPDX-License-Identifier: Apache-2.0
#include "frameworks/gpu/gpu_program.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <numeric>
#include <thread>
#include <utility>

#include "frameworks/core/memory.h"
#include "frameworks/gpu/gpu_image_3d.h"
#include "frameworks/gpu/gpu_utils.h"
#include "frameworks/gpu/program_cache.h"
#include "tests/frameworks/gpu/gpu_fixture.h"
#include "tests/support/random_bytes.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr const char* kBrokenShader = "void main() { gl_Position = nothing; }\n";

using GpuProgram = GpuTest;

TEST_F(GpuProgram, ScriptsKeepTheirSourcesInOrder) {
    GPUScript script(context(), nullptr);
    for (const auto& [name, source] :
         {std::pair<const char*, const char*>{nullptr, "s"}, {"n", nullptr}, {"", "s"}, {"n", ""}}) {
        EXPECT_FALSE(script.addSource(name, source));
    }
    EXPECT_FALSE(script.addSource(nullptr));
    auto_ptr<GPUScriptSource> second(GPUScriptSource::createScriptSource("second", "text"));
    EXPECT_TRUE(script.addSource("first", "a text"));
    EXPECT_TRUE(script.addSource(second));
    EXPECT_TRUE(script.addSource("third", "c"));
    EXPECT_TRUE(script.addSource(second.get()));
    EXPECT_STREQ(script.getScriptSourceByIndex(0)->getName(), "first");
    EXPECT_STREQ(script.getScriptSourceByIndex(0)->getSource(), "a text");
    script.remove(second);
    script.remove(static_cast<GPUScriptSource*>(nullptr));
    EXPECT_STREQ(script.getScriptSourceByIndex(1)->getName(), "third");
    EXPECT_EQ(script.getScriptSourceByIndex(2).get(), second.get());
    for (const int index : {-1, 3, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        EXPECT_EQ(script.getScriptSourceByIndex(index).get(), nullptr);
    }
    script.clear();
    EXPECT_EQ(script.getScriptSourceByIndex(0).get(), nullptr);
}

TEST_F(GpuProgram, EveryCallOfAPassIsCheckedUnderItsName) {
    GPUImage2D image(context(), 2, 2, 4, random_bytes(16, 1).data());
    GPUImage3D volume(context(), 2, 2, 2, 4, random_bytes(32, 1).data());
    m_Recorder.fail_every_call(GL_INVALID_ENUM);
    m_Recorder.take();
    {
        const auto_ptr<GPUProgram> program = make_program(kVertexShader, kCopyShader);
        EXPECT_EQ(program->beganCompute(), 1);
        program->setOutputTarget(&image);
        program->setOutputSize(1, 2, 3, 4);
        program->setSourceTarget("tex_sampler", 3, &image);
        program->setSourceTarget("absent", 0, &volume);
        program->setSourceTarget(nullptr, 0, &volume);
        program->setSourceTarget("tex_sampler", 0, static_cast<GPUImage2D*>(nullptr));
        EXPECT_EQ(program->endCompute(), 1);
        program->setOutputTarget(nullptr);
    }
    EXPECT_EQ(m_Recorder.take_blamed(),
              "glGenFramebuffers glAttachShader glAttachShader glUseProgram glFramebufferTexture2D glViewport "
              "glBindTexture glUniform1i glBindTexture glUniform1i vertex attribute setup vertex attribute setup "
              "glDrawArrays glBindFramebuffer glDeleteFramebuffers");
}

TEST_F(GpuProgram, DrawsThePicturesTopRowOnTopUnlessVerticesSayOtherwise) {
    // Pictures: red, green, blue and white pixels, and none.
    const auto quad = [](const char* colors) {
        Bytes pixels;
        for (const char* color = colors; *color != '\0'; ++color) {
            const auto part = [&](char name) -> unsigned char { return *color == name || *color == 'w' ? 255 : 0; };
            const unsigned char alpha = *color == '-' ? 0 : 255;
            pixels.insert(pixels.end(), {part('r'), part('g'), part('b'), alpha});
        }
        return pixels;
    };
    GPUImage2D image(context(), 2, 2, 4, quad("rgbw").data());
    const auto_ptr<GPUProgram> program = make_program(kVertexShader, kCopyShader);
    // Row 0 of what GL reads back is the bottom.
    EXPECT_EQ(draw(*program, &image, 2, 2), quad("bwrg"));
    program->setPosVertices(nullptr);
    program->setTexVertices(nullptr);
    EXPECT_EQ(draw(*program, &image, 2, 2), quad("bwrg"));
    const float mirrored[8] = {1, 0, 0, 0, 1, 1, 0, 1};
    program->setTexVertices(mirrored);
    EXPECT_EQ(draw(*program, &image, 2, 2), quad("grwb"));
    const float turned[8] = {-1, 1, 1, 1, -1, -1, 1, -1};
    program->setPosVertices(turned);
    EXPECT_EQ(draw(*program, &image, 2, 2), quad("wbgr"));

    // From another unit, into the right half only.
    GPUImage2D target(context(), 4, 2, 4, Bytes(32).data());
    program->beganCompute();
    program->setOutputTarget(&target);
    program->setOutputSize(2, 0, 2, 2);
    program->setSourceTarget("tex_sampler", 3, &image);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, 0);
    program->endCompute();
    EXPECT_EQ(download(target), quad("--wb--gr"));
    EXPECT_THAT(m_Recorder.take_log(), IsEmpty());
}

constexpr const char* kUniformsShader =
    "precision highp float;\nprecision highp int;\n"
    "uniform int i1[2]; uniform ivec2 i2[2]; uniform ivec3 i3[2]; uniform ivec4 i4[2];\n"
    "uniform float f1[2]; uniform vec2 f2[2]; uniform vec3 f3[2]; uniform vec4 f4[2];\n"
    "uniform mat2 m2[2]; uniform mat3 m3[2]; uniform mat4 m4[2];\n"
    "void main() {\n"
    "  float sum = float(i1[0] + i1[1] + i2[0].x + i2[1].y + i3[0].x + i3[1].z + i4[0].x + i4[1].w);\n"
    "  sum += f1[0] + f1[1] + f2[0].x + f2[1].y + f3[0].x + f3[1].z + f4[0].x + f4[1].w;\n"
    "  sum += m2[0][0].x + m2[1][1].y + m3[0][0].x + m3[1][2].z + m4[0][0].x + m4[1][3].w;\n"
    "  gl_FragColor = vec4(sum);\n"
    "}\n";

TEST_F(GpuProgram, AllElevenUniformsReadBack) {
    const auto_ptr<GPUProgram> program = make_program(kVertexShader, kUniformsShader);
    ASSERT_EQ(program->beganCompute(), 1);
    GLint handle = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &handle);
    const auto value = [handle](const std::string& element, size_t elements) {
        std::vector<float> values(elements);
        const auto name = static_cast<GLuint>(handle);
        glGetUniformfv(name, glGetUniformLocation(name, element.c_str()), values.data());
        return values;
    };
    int type = 0;
    const auto check = [&](const char* name, size_t elements, auto set) {
        SCOPED_TRACE(name);
        constexpr bool kIsMatrix =
            std::is_invocable_v<decltype(set), GPUProgram&, const char*, int, bool, const float*>;
        using Value =
            std::conditional_t<std::is_invocable_v<decltype(set), GPUProgram&, const char*, int, int*>, int, float>;
        const auto send = [&](const char* to, int count, Value* from) {
            if constexpr (kIsMatrix) {
                ((*program).*set)(to, count, false, from);
            } else {
                ((*program).*set)(to, count, from);
            }
        };
        // Different numbers in each place of two elements.
        std::vector<Value> both(2 * elements);
        std::iota(both.begin(), both.end(), static_cast<Value>(100 * (type + 1)));
        Value* const second = &both[elements];
        send(name, 2, both.data());
        send(nullptr, 1, second);
        send(name, 1, nullptr);
        const std::string first = std::string(name) + "[0]";
        EXPECT_THAT(value(first, elements), ElementsAreArray(both.data(), elements));
        EXPECT_THAT(value(std::string(name) + "[1]", elements), ElementsAreArray(second, elements));

        const auto typeCode = static_cast<GPUProgramParameterType>(type++);
        program->setParameters(name, typeCode, second);
        program->setParameters(nullptr, typeCode, both.data());
        program->setParameters(name, typeCode, nullptr);
        EXPECT_THAT(value(first, elements), ElementsAreArray(second, elements));
    };
    // In the order of their types.
    check("i1", 1, &GPUProgram::_SetHostValue1iv);
    check("i2", 2, &GPUProgram::_SetHostValue2iv);
    check("i3", 3, &GPUProgram::_SetHostValue3iv);
    check("i4", 4, &GPUProgram::_SetHostValue4iv);
    check("f1", 1, &GPUProgram::_SetHostValue1fv);
    check("f2", 2, &GPUProgram::_SetHostValue2fv);
    check("f3", 3, &GPUProgram::_SetHostValue3fv);
    check("f4", 4, &GPUProgram::_SetHostValue4fv);
    check("m2", 4, &GPUProgram::_SetHostValueMatrix2fv);
    check("m3", 9, &GPUProgram::_SetHostValueMatrix3fv);
    check("m4", 16, &GPUProgram::_SetHostValueMatrix4fv);
    const float columns[4] = {1, 2, 3, 4};
    program->_SetHostValueMatrix2fv("m2", 1, true, columns);
    EXPECT_THAT(value("m2[0]", 4), ElementsAre(1, 3, 2, 4));
    m_Recorder.take();
    float unused[16] = {};
    for (const int unknown : {11, -1, 1 << 20}) {
        program->setParameters("f4", static_cast<GPUProgramParameterType>(unknown), unused);
    }
    EXPECT_THAT(m_Recorder.take(), IsEmpty());
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(GpuProgram, FailuresAreLoggedAndLeaveAProgramThatDoesNothing) {
    GPUImage2D image(context(), 1, 1, 4);
    // What is logged first, the last call made on the way, and the first that is not.
    const auto expect_unusable = [&](auto_ptr<GPUProgram> program, const char* log, const char* last,
                                     const char* not_made) {
        const std::vector<std::string> entries = m_Recorder.take();
        EXPECT_THAT(entries, Contains(StartsWith(log)));
        EXPECT_THAT(entries, Contains(StartsWith(last)));
        EXPECT_THAT(entries, Not(Contains(StartsWith(not_made))));
        float value = 1;
        EXPECT_EQ(program->beganCompute(), 0);
        program->setOutputSize(0, 0, 1, 1);
        program->setSourceTarget("tex_sampler", 0, &image);
        program->setParameters("x", GPU_PROGRAM_PARAMETER_TYPE_FLOAT1, &value);
        program->_SetHostValue1fv("x", 1, &value);
        EXPECT_EQ(program->endCompute(), 0);
        program->release();
        EXPECT_THAT(m_Recorder.take(), IsEmpty());
    };
    m_Recorder.take();
    expect_unusable(make_program(kBrokenShader, kCopyShader), "Could not compiled shader:35633\n", "glDeleteShader",
                    "glCreateShader(GL_FRAGMENT_SHADER)");
    expect_unusable(make_program(kVertexShader, "syntax"), "Could not compiled shader:35632\n", "glDeleteShader",
                    "glCreateProgram()");
    expect_unusable(make_program(kVertexShader,
                                 "varying mediump vec3 v_texcoord;\n"
                                 "void main() { gl_FragColor = v_texcoord.xyzz; }"),
                    "Could not link program:\n", "glDeleteProgram", "glUseProgram");
    // Too few sources, no script at all.
    auto_ptr<GPUScript> script(new GPUScript(context(), nullptr));
    script->addSource("VertexShader", kVertexShader);
    auto_ptr<GPUContext> counted(context());
    expect_unusable(new GPUProgram(counted, script), "", "glGenFramebuffers", "glCreateShader");
    expect_unusable(new GPUProgram(context(), nullptr), "", "glGenFramebuffers", "glCreateShader");

    // What the driver refuses without a word.
    EXPECT_EQ(GPUUtils::loadShader(GL_VERTEX_SHADER, nullptr), 0U);
    m_Recorder.answer_query(GL_COMPILE_STATUS, GL_FALSE);
    m_Recorder.answer_query(GL_INFO_LOG_LENGTH, 0);
    EXPECT_NE(GPUUtils::loadShader(GL_VERTEX_SHADER, kBrokenShader), 0U);
    m_Recorder.answer_query(GL_COMPILE_STATUS, GL_TRUE);
    m_Recorder.answer_query(GL_LINK_STATUS, GL_FALSE);
    EXPECT_EQ(GPUUtils::createProgram(kVertexShader, kCopyShader), 0U);
    EXPECT_THAT(m_Recorder.take_log(), IsEmpty());
    m_Recorder.heal();
    for (const char* function : {"glCreateShader", "glCreateProgram"}) {
        m_Recorder.answer(function, 0);
        EXPECT_EQ(GPUUtils::createProgram(kVertexShader, kCopyShader), 0U);
        char binary[4] = {};
        EXPECT_EQ(GPUUtils::createProgram(1, binary, 4), 0U);
        m_Recorder.heal();
    }
    EXPECT_EQ(GPUUtils::createProgram(1, nullptr, 4), 0U);
    int length = 7;
    GPUUtils::getProgramBinary(0, &length, nullptr, nullptr);
    EXPECT_EQ(length, 7);
}

TEST_F(GpuProgram, ComputeProgramsAreMadeOfTheirShader) {
    const GLuint handle = GPUUtils::createComputeProgram(
        "#version 310 es\nlayout(local_size_x = 4, local_size_y = 2) in;\nvoid main() {}\n");
    ASSERT_NE(handle, 0U);
    GLint groupSize[3] = {};
    glGetProgramiv(handle, GL_COMPUTE_WORK_GROUP_SIZE, groupSize);
    EXPECT_THAT(groupSize, ElementsAre(4, 2, 1));
    glDeleteProgram(handle);
    m_Recorder.take();
    EXPECT_EQ(GPUUtils::createComputeProgram("#version 310 es\nvoid main() {}\n"), 0U);
    EXPECT_THAT(m_Recorder.take_log(), Not(IsEmpty()));
}

class GpuProgramCache : public GpuProgram {
  protected:
    void SetUp() override {
        GpuProgram::SetUp();
        ASSERT_NE(mkdtemp(m_Directory.data()), nullptr);
        ASSERT_EQ(korvane::set_program_cache_directory(m_Directory.c_str()), 0);
    }

    void TearDown() override {
        korvane::set_program_cache_directory(nullptr);
        std::filesystem::remove_all(m_Directory);
        GpuProgram::TearDown();
    }

    std::string m_Directory = testing::TempDir() + "korvane_cache_XXXXXX";
};

// Files too short for a binary count as absent; one that the driver refuses is not replaced by the sources.
TEST_F(GpuProgramCache, CachedProgramsDrawUncompiledAndFilesStay) {
    Bytes pixels = random_bytes(5 * 3 * 4, 2);
    GPUImage2D image(context(), 5, 3, 4, pixels.data());
    const auto_ptr<GPUProgram> compiled = make_program(kVertexShader, kCopyShader);
    const Bytes expected = draw(*compiled, &image, 5, 3);
    GLint handle = 0;
    compiled->beganCompute();
    glGetIntegerv(GL_CURRENT_PROGRAM, &handle);
    int length = 0;
    GLenum format = 0;
    void* binary = nullptr;
    GPUUtils::getProgramBinary(static_cast<GLuint>(handle), &length, &format, &binary);
    // Mesa's plain rasteriser is the one driver known to give no binaries.
    const std::string renderer = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
    EXPECT_EQ(length > 0, renderer != "softpipe") << renderer;
    Bytes whole(4 + static_cast<size_t>(length));
    std::memcpy(whole.data(), &format, 4);
    galloc_memcpy(&whole[0] + 4, binary, static_cast<size_t>(length));
    galloc_free(binary);

    const std::string path = m_Directory + "/script.osb";
    for (const Bytes& bytes :
         {whole, Bytes(), Bytes(1, 1), Bytes(4, 1), Bytes(9, 0x5A), Bytes(whole.begin(), whole.end() - 1)}) {
        SCOPED_TRACE(bytes.size());
        const bool counts = bytes.size() > 4;
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        m_Recorder.take();
        {
            const auto_ptr<GPUScript> script(new GPUScript(context(), "script"));
            script->addSource("VertexShader", kVertexShader);
            script->addSource("FragmentShader", kCopyShader);
            GPUProgram program(context(), script.get());
            EXPECT_EQ(testing::Value(m_Recorder.take_calls(), Contains(StartsWith("glCreateShader"))), !counts);
            if (!counts || bytes == whole) {
                EXPECT_EQ(draw(program, &image, 5, 3), expected);
            } else {
                EXPECT_EQ(program.beganCompute(), 0);
            }
            if (counts) {  // Whoever holds a binary writes it back in the end.
                std::filesystem::remove(path);
            }
        }
        std::ifstream stream(path, std::ios::binary);
        EXPECT_EQ(Bytes(std::istreambuf_iterator<char>(stream), {}), bytes);
    }
}

TEST_F(GpuProgramCache, DirectoryMayChangeWhileOtherThreadsReadItAndMustBeWritable) {
    const std::string directory = m_Directory;
    std::jthread reader([&directory] {
        for (int i = 0; i < 1000; ++i) {
            const std::string seen = korvane::program_cache_directory();
            EXPECT_TRUE(seen == directory + "/" || seen == "/data/local/") << seen;
        }
    });
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(korvane::set_program_cache_directory(i % 2 == 0 ? nullptr : (directory + "/").c_str()), 0);
    }
    // As a user who is not root: root may write everywhere.
    std::filesystem::permissions(m_Directory, static_cast<std::filesystem::perms>(0555));
    const auto refused_to_write = [&directory] {
        const bool isOther = geteuid() != 0 || setuid(65534) == 0;
        std::_Exit(isOther && korvane::set_program_cache_directory(directory.c_str()) == EACCES ? 0 : 1);
    };
    EXPECT_EXIT(refused_to_write(), testing::ExitedWithCode(0), "");
    std::filesystem::permissions(m_Directory, std::filesystem::perms::owner_all);
}

}  // namespace
