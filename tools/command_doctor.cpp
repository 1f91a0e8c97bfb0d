// SPDX-License-Identifier: Apache-2.0
#include <EGL/egl.h>
#include <GLES3/gl3.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>
#include <vector>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/gpu/gpu_engine.h"
#include "korvane/version.h"
#include "tools/command.h"
#include "tools/gl_context.h"

namespace korvane {
namespace {

const char* text_or(const void* text) {
    return text == nullptr ? "(none)" : static_cast<const char*>(text);
}

// Whether the blank-separated list holds exactly this name.
bool lists(const char* list, const std::string& name) {
    return (" " + std::string(list) + " ").find(" " + name + " ") != std::string::npos;
}

void print_extensions(const char* title, const char* list, const std::vector<const char*>& names) {
    for (const char* name : names) {
        std::printf("%s %-36s %s\n", title, name, lists(list, name) ? "yes" : "no");
    }
}

void print_limit(const char* name, GLenum what) {
    GLint values[2] = {};
    glGetIntegerv(what, values);
    std::printf("limit %-30s %d\n", name, values[0]);
}

void examine() {
    auto_ptr<GPUEngine> engine(new GPUEngine(nullptr, 16, 16));
    engine->setup();
    engine->startup();
    const char* platform = require_gl_context();
    EGLDisplay display = eglGetCurrentDisplay();
    std::printf("korvane            %s\n", KORVANE_VERSION);
    std::printf("EGL platform       %s\n", platform);
    std::printf("EGL vendor         %s\n", text_or(eglQueryString(display, EGL_VENDOR)));
    std::printf("EGL version        %s\n", text_or(eglQueryString(display, EGL_VERSION)));
    std::printf("EGL client APIs    %s\n", text_or(eglQueryString(display, EGL_CLIENT_APIS)));
    std::printf("GL vendor          %s\n", text_or(glGetString(GL_VENDOR)));
    std::printf("GL renderer        %s\n", text_or(glGetString(GL_RENDERER)));
    std::printf("GL version         %s\n", text_or(glGetString(GL_VERSION)));
    std::printf("GLSL version       %s\n", text_or(glGetString(GL_SHADING_LANGUAGE_VERSION)));
    print_extensions("EGL", text_or(eglQueryString(display, EGL_EXTENSIONS)),
                     {"EGL_KHR_create_context", "EGL_KHR_gl_texture_2D_image", "EGL_KHR_surfaceless_context"});
    print_extensions("GL ", text_or(glGetString(GL_EXTENSIONS)),
                     {"GL_OES_EGL_image_external", "GL_OES_EGL_image", "GL_OES_get_program_binary"});
    print_limit("texture size", GL_MAX_TEXTURE_SIZE);
    print_limit("3D texture size", GL_MAX_3D_TEXTURE_SIZE);
    print_limit("viewport width", GL_MAX_VIEWPORT_DIMS);
    print_limit("texture units", GL_MAX_TEXTURE_IMAGE_UNITS);
    print_limit("colour attachments", GL_MAX_COLOR_ATTACHMENTS);
    print_limit("draw buffers", GL_MAX_DRAW_BUFFERS);

    GLint count = 0;
    glGetIntegerv(GL_NUM_PROGRAM_BINARY_FORMATS, &count);
    std::vector<GLint> formats(static_cast<size_t>(count < 1 ? 1 : count));
    glGetIntegerv(GL_PROGRAM_BINARY_FORMATS, formats.data());
    std::printf("program binaries   %d formats", count);
    for (GLint i = 0; i < count; ++i) {
        std::printf(" 0x%x", static_cast<unsigned int>(formats[static_cast<size_t>(i)]));
    }
    std::printf("\n");
    engine->close();
    engine->destroy();
}

}  // namespace

std::function<void()> setup_doctor_command(CLI::App& /*app*/) {
    return examine;
}

}  // namespace korvane
