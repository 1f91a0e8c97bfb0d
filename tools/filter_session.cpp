// SPDX-License-Identifier: Apache-2.0
#include "tools/filter_session.h"

#include <GLES3/gl3.h>
#include <strings.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <map>
#include <utility>
#include <vector>

#include "applications/filters/gpu_image_filter_factory.h"
#include "frameworks/core/auto_ptr.h"
#include "frameworks/gpu/gpu_context.h"
#include "frameworks/gpu/gpu_framebuffer.h"
#include "frameworks/gpu/gpu_image_2d.h"
#include "frameworks/gpu/gpu_texture_layout.h"
#include "tools/command.h"
#include "tools/gl_context.h"

namespace korvane {
namespace {

std::string filter_names() {
    std::string names;
    for (const FilterDescription* filter : ImageFilterFactory::filters()) {
        names += std::string(names.empty() ? "" : ", ") + (filter->name + std::strlen("ImageFilter"));
    }
    return names;
}

const FilterParameter* find_parameter(const FilterDescription& description, const std::string& key) {
    for (const auto table : {description.parameters, ImageFilterBaseGL::base_parameters()}) {
        for (const FilterParameter& parameter : table) {
            if (key == parameter.name) {
                return &parameter;
            }
        }
    }
    return nullptr;
}

std::vector<float> parse_floats(const std::string& text) {
    std::vector<float> values;
    const char* at = text.c_str();
    for (;;) {
        char* end = nullptr;
        values.push_back(std::strtof(at, &end));
        if (end == at || (*end != ',' && *end != '\0')) {
            return {};
        }
        if (*end == '\0') {
            return values;
        }
        at = end + 1;
    }
}

// The parameter's row has its range as a text, "0 ... 1", unless any number will do.
void check_range(const FilterParameter& parameter, const std::vector<float>& values, const std::string& setting) {
    float least = -HUGE_VALF;
    float most = HUGE_VALF;
    const bool isBounded = std::sscanf(parameter.range, "%f ... %f", &least, &most) == 2;
    for (const float value : values) {
        if (!std::isfinite(value)) {
            throw UsageError("'" + setting + "' holds no finite number");
        }
        if (isBounded && (value < least || value > most)) {
            throw UsageError("'" + setting + "' is not within " + parameter.range);
        }
    }
}

// Deleting a filter does not free all of it.
struct KeptFilter {
    KeptFilter() = default;
    KeptFilter(const KeptFilter&) = delete;
    KeptFilter& operator=(const KeptFilter&) = delete;
    ~KeptFilter() {
        if (filter.get() != nullptr) {
            filter->release();
        }
    }

    auto_ptr<ImageFilterBaseGL> filter;
};

auto_ptr<ImageFilterBaseGL> make_filter(const FilterDescription& description) {
    auto_ptr<ImageFilterBaseGL> filter(ImageFilterFactory::createFilter(description.name));
    if (filter.get() == nullptr) {
        throw CommandError("no memory for the filter");
    }
    if (filter->setupGraphics(1) == 0) {
        throw CommandError("the filter cannot be set up on this GPU driver");
    }
    return filter;
}

constexpr int32_t kRgba = 4;

// What this thread's filters read from and draw into.
struct Canvas {
    auto_ptr<GPUContext> context{new GPUContext(nullptr, 0, 0)};
    auto_ptr<GPUImage2D> input{new GPUImage2D(context, 1, 1, kRgba)};
    auto_ptr<GPUImage2D> output{new GPUImage2D(context, 1, 1, kRgba)};
    auto_ptr<GPUFramebuffer> framebuffer{new GPUFramebuffer(context)};

    // Frees the pixels: the next photo may be a small one.
    struct Emptier {
        explicit Emptier(Canvas& canvas) : m_Canvas(canvas) {}
        ~Emptier() {
            m_Canvas.input->set(1, 1, kRgba, nullptr);
            m_Canvas.output->set(1, 1, kRgba, nullptr);
        }
        Emptier(const Emptier&) = delete;
        Emptier& operator=(const Emptier&) = delete;

      private:
        Canvas& m_Canvas;
    };
};

Canvas& thread_canvas() {
    thread_local Canvas canvas;
    return canvas;
}

}  // namespace

std::string short_filter_name(const FilterDescription& description) {
    std::string name = description.name + std::strlen("ImageFilter");
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return name;
}

const FilterDescription& describe_filter(const std::string& name) {
    for (const FilterDescription* filter : ImageFilterFactory::filters()) {
        if (strcasecmp(name.c_str(), filter->name) == 0 ||
            strcasecmp(("ImageFilter" + name).c_str(), filter->name) == 0) {
            return *filter;
        }
    }
    throw UsageError("there is no filter '" + name + "'; there are " + filter_names());
}

ImageFilterBaseGL& ready_filter(const std::string& name) {
    // Before what the filters make in it, and so gone after them.
    require_gl_context();
    thread_local std::map<const FilterDescription*, KeptFilter> filters;
    const FilterDescription& description = describe_filter(name);
    KeptFilter& kept = filters[&description];
    if (kept.filter.get() == nullptr) {
        kept.filter = make_filter(description);
    } else if (kept.filter->initParameters() == 0) {
        throw CommandError("no memory for the filter");
    }
    float corners[8] = {-1, -1, 1, -1, -1, 1, 1, 1};
    kept.filter->setParameters("mPosVertices", corners);
    // By default the filters turn their picture, as camera frames need. A photo is upright already.
    float upright[8] = {0, 0, 1, 0, 0, 1, 1, 1};
    kept.filter->setParameters("mTexVertices", upright);
    return *kept.filter.get();
}

void draw_filter(ImageFilterBaseGL& filter, unsigned char* pixels, int width, int height, DrawTimes& times) {
    GLint most = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &most);
    const size_t bytes = texture_bytes({width, height, kRgba});
    if (width > most || height > most || bytes > std::numeric_limits<int>::max()) {
        throw CommandError("this GPU driver draws at most " + std::to_string(most) +
                           " pixels across and down, and 2 GiB");
    }
    auto last = std::chrono::steady_clock::now();
    const auto lap = [&last] {
        const auto now = std::chrono::steady_clock::now();
        return std::chrono::duration<double, std::milli>(now - std::exchange(last, now)).count();
    };
    // The photo's textures go at the end of the call. The filter must not have made its own, which it would keep.
    Canvas& canvas = thread_canvas();
    const Canvas::Emptier emptier(canvas);
    filter.setTexture(static_cast<int>(canvas.input->getTextureID()), width, height, width, height);
    canvas.input->set(width, height, kRgba, pixels);
    canvas.output->set(width, height, kRgba, nullptr);
    times.upload += lap();
    GPUFramebuffer::setFramebufferTarget(canvas.framebuffer, canvas.output);
    // Where a driver draws nothing there is black then, not what the memory held.
    glClear(GL_COLOR_BUFFER_BIT);
    filter.render();
    glFinish();
    times.draw += lap();
    canvas.output->download(pixels, static_cast<int>(bytes));
    times.read += lap();
}

void set_filter_parameter(ImageFilterBaseGL& filter, const FilterDescription& description, const std::string& setting) {
    const size_t equals = setting.find('=');
    if (equals == std::string::npos) {
        throw UsageError("'" + setting + "' is not a setting: write key=value");
    }
    const std::string key = setting.substr(0, equals);
    const FilterParameter* parameter = find_parameter(description, key);
    if (parameter == nullptr) {
        throw UsageError(std::string(description.name) + " has no parameter '" + key + "'");
    }
    if (parameter->type == PARAMETER_TYPE_BITMAP) {
        throw UsageError("'" + key + "' is a picture: give it with --table");
    }
    std::vector<float> values = parse_floats(setting.substr(equals + 1));
    if (values.size() != static_cast<size_t>(parameter->count)) {
        throw UsageError("'" + setting + "' needs " + std::to_string(parameter->count) +
                         (parameter->count == 1 ? " number" : " numbers with commas between"));
    }
    check_range(*parameter, values, setting);
    filter.setParameters(parameter->name, values.data());
}

}  // namespace korvane
