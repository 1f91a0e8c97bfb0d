// SPDX-License-Identifier: Apache-2.0
#include <EGL/egl.h>
#include <GLES3/gl3.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/gpu/gpu_engine.h"
#include "korvane/version.h"
#include "tools/command.h"
#include "tools/gl_context.h"
#include "tools/json.h"

namespace korvane {
namespace {

const char* text_or(const void* text) {
    return text == nullptr ? "(none)" : static_cast<const char*>(text);
}

// In the order of the report.
struct Findings {
    std::vector<std::pair<const char*, std::string>> versions;
    std::vector<std::pair<const char*, bool>> eglExtensions;
    std::vector<std::pair<const char*, bool>> glExtensions;
    std::vector<std::pair<const char*, GLint>> limits;
    std::vector<GLint> binaryFormats;
};

// Which of the names the blank-separated list holds.
std::vector<std::pair<const char*, bool>> look_up(const std::vector<const char*>& names, const char* list) {
    const std::string padded = " " + std::string(list) + " ";
    std::vector<std::pair<const char*, bool>> found;
    found.reserve(names.size());
    for (const char* name : names) {
        found.emplace_back(name, padded.find(" " + std::string(name) + " ") != std::string::npos);
    }
    return found;
}

GLint limit(GLenum what) {
    GLint values[2] = {};
    glGetIntegerv(what, values);
    return values[0];
}

Findings examine() {
    auto_ptr<GPUEngine> engine(new GPUEngine(nullptr, 16, 16));
    engine->setup();
    engine->startup();
    const char* platform = require_gl_context();
    EGLDisplay display = eglGetCurrentDisplay();
    Findings findings;
    findings.versions = {{"korvane", KORVANE_VERSION},
                         {"EGL platform", platform},
                         {"EGL vendor", text_or(eglQueryString(display, EGL_VENDOR))},
                         {"EGL version", text_or(eglQueryString(display, EGL_VERSION))},
                         {"EGL client APIs", text_or(eglQueryString(display, EGL_CLIENT_APIS))},
                         {"GL vendor", text_or(glGetString(GL_VENDOR))},
                         {"GL renderer", text_or(glGetString(GL_RENDERER))},
                         {"GL version", text_or(glGetString(GL_VERSION))},
                         {"GLSL version", text_or(glGetString(GL_SHADING_LANGUAGE_VERSION))}};
    findings.eglExtensions =
        look_up({"EGL_KHR_create_context", "EGL_KHR_gl_texture_2D_image", "EGL_KHR_surfaceless_context"},
                text_or(eglQueryString(display, EGL_EXTENSIONS)));
    findings.glExtensions = look_up({"GL_OES_EGL_image_external", "GL_OES_EGL_image", "GL_OES_get_program_binary"},
                                    text_or(glGetString(GL_EXTENSIONS)));
    findings.limits = {{"texture size", limit(GL_MAX_TEXTURE_SIZE)},
                       {"3D texture size", limit(GL_MAX_3D_TEXTURE_SIZE)},
                       {"viewport width", limit(GL_MAX_VIEWPORT_DIMS)},
                       {"texture units", limit(GL_MAX_TEXTURE_IMAGE_UNITS)},
                       {"colour attachments", limit(GL_MAX_COLOR_ATTACHMENTS)},
                       {"draw buffers", limit(GL_MAX_DRAW_BUFFERS)}};
    findings.binaryFormats.resize(static_cast<size_t>(std::max(0, limit(GL_NUM_PROGRAM_BINARY_FORMATS))));
    if (!findings.binaryFormats.empty()) {
        glGetIntegerv(GL_PROGRAM_BINARY_FORMATS, findings.binaryFormats.data());
    }
    engine->close();
    engine->destroy();
    return findings;
}

void print(const Findings& findings) {
    for (const auto& [name, value] : findings.versions) {
        std::printf("%-18s %s\n", name, value.c_str());
    }
    for (const auto& [name, isThere] : findings.eglExtensions) {
        std::printf("EGL %-36s %s\n", name, isThere ? "yes" : "no");
    }
    for (const auto& [name, isThere] : findings.glExtensions) {
        std::printf("GL  %-36s %s\n", name, isThere ? "yes" : "no");
    }
    for (const auto& [name, value] : findings.limits) {
        std::printf("limit %-30s %d\n", name, value);
    }
    std::printf("program binaries   %zu formats", findings.binaryFormats.size());
    for (const GLint format : findings.binaryFormats) {
        std::printf(" 0x%x", static_cast<unsigned int>(format));
    }
    std::printf("\n");
}

// "GL vendor" becomes "gl_vendor".
std::string key(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return c == ' ' ? '_' : static_cast<char>(std::tolower(c)); });
    return name;
}

Json json(const Findings& findings) {
    Json report;
    for (const auto& [name, value] : findings.versions) {
        report[key(name)] = value;
    }
    for (const auto& extensions : {findings.eglExtensions, findings.glExtensions}) {
        for (const auto& [name, isThere] : extensions) {
            report["extensions"][name] = isThere;
        }
    }
    for (const auto& [name, value] : findings.limits) {
        report["limits"][key(name)] = value;
    }
    report["program_binary_formats"] = findings.binaryFormats;
    return report;
}

}  // namespace

std::function<void()> setup_doctor_command(CLI::App& app) {
    auto wantsJson = std::make_shared<bool>(false);
    add_json(app, *wantsJson);
    return [wantsJson] {
        const Findings findings = examine();
        if (*wantsJson) {
            std::cout << json_line(json(findings)) << '\n';
        } else {
            print(findings);
        }
    };
}

}  // namespace korvane
