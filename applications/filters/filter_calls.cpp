// SPDX-License-Identifier: Apache-2.0
#include "applications/filters/filter_calls.h"

#include <cstring>
#include <memory>
#include <utility>

#include "applications/filters/gpu_image_filter_factory.h"
#include "frameworks/core/galloc_ptr.h"

namespace korvane {
namespace {

constexpr int kRgbaBytes = 4;

// At least what the longest parameter takes.
constexpr size_t kValueBytes = 64;
static_assert(sizeof(FilterBitmap) <= kValueBytes);

// The filter itself, or null and the filter gone when it could not be set up.
ImageFilterBaseGL* set_up(std::unique_ptr<ImageFilterBaseGL> filter, GLenum target) {
    return filter->setupGraphics(target) != 0 ? filter.release() : nullptr;
}

}  // namespace

ImageFilterBaseGL* create_offscreen_filter(const char* name) {
    std::unique_ptr<ImageFilterBaseGL> filter(ImageFilterFactory::createFilter(name));
    if (filter == nullptr) {
        return nullptr;
    }
    filter->initEngine();
    return filter->has_engine() ? set_up(std::move(filter), 1) : nullptr;
}

ImageFilterBaseGL* create_surface_filter(const char* name, GLenum target) {
    std::unique_ptr<ImageFilterBaseGL> filter(ImageFilterFactory::createFilter(name));
    return filter == nullptr ? nullptr : set_up(std::move(filter), target);
}

void set_filter_value(ImageFilterBaseGL* filter, const char* key, void* value, size_t bytes) {
    if (filter == nullptr || key == nullptr || value == nullptr ||
        filter->getParameterType(key) == PARAMETER_TYPE_BITMAP) {
        return;
    }
    if (bytes >= kValueBytes) {
        filter->setParameters(key, value);
        return;
    }
    alignas(16) unsigned char padded[kValueBytes] = {};
    std::memcpy(padded, value, bytes);
    filter->setParameters(key, padded);
}

void set_filter_array(ImageFilterBaseGL* filter, const char* key, void* values, size_t bytes) {
    if (filter != nullptr && bytes >= filter->parameter_bytes(key)) {
        set_filter_value(filter, key, values, bytes);
    }
}

void set_filter_bitmap(ImageFilterBaseGL* filter, const char* key, unsigned char* pixels, int width, int height) {
    if (filter == nullptr || pixels == nullptr) {
        return;
    }
    const galloc_ptr<FilterBitmap> bitmap(static_cast<FilterBitmap*>(galloc_alloc(kValueBytes)));
    if (bitmap != nullptr) {
        *bitmap = {pixels, width, height, kRgbaBytes, width * kRgbaBytes};
        filter->setParameters(key, bitmap.get());
    }
}

}  // namespace korvane
