// SPDX-License-Identifier: Apache-2.0
#include "applications/super_capture/super_capture_module.h"

#include <memory>

#include "applications/super_capture/super_capture.h"
#include "frameworks/core/guard.h"
#include "platform/log.h"

namespace {

unsigned char* gNoPlanes[kFramePlanes] = {};

// No array at all counts as an array of four null planes.
unsigned char** planes_or_none(unsigned char** planes) {
    return planes != nullptr ? planes : gNoPlanes;
}

SuperCapture* from_handle(intptr_t handle) {
    return reinterpret_cast<SuperCapture*>(handle);
}

}  // namespace

intptr_t super_capture_module_init(uint32_t width, uint32_t height, uint32_t format) {
    return korvane::guarded(intptr_t{0}, [&] {
        auto engine = std::make_unique<SuperCapture>();
        KORVANE_LOGD("super_capture_module_init   width:%d, height:%d, format:%d\n", static_cast<int>(width),
                     static_cast<int>(height), static_cast<int>(format));
        return engine->init(width, height, format) == 0 ? reinterpret_cast<intptr_t>(engine.release()) : intptr_t{0};
    });
}

result_t super_capture_module_push_frame(intptr_t handle, unsigned char** planes) {
    planes = planes_or_none(planes);
    KORVANE_LOGD(
        "super_capture_module_push_frame   handle:%zd, planes[0]:%p, planes[1]:%p, planes[2]:%p, planes[3]:%p\n",
        static_cast<ssize_t>(handle), static_cast<void*>(planes[0]), static_cast<void*>(planes[1]),
        static_cast<void*>(planes[2]), static_cast<void*>(planes[3]));
    return korvane::guarded(result_t{-3},
                            [&] { return handle != 0 ? from_handle(handle)->pushFrame(planes) : result_t{-1}; });
}

result_t super_capture_module_pop_frame(intptr_t handle, unsigned char** planes) {
    planes = planes_or_none(planes);
    KORVANE_LOGD(
        "super_capture_module_pop_frame   handle:%zd, planes[0]:%p, planes[1]:%p, planes[2]:%p, planes[3]:%p\n",
        static_cast<ssize_t>(handle), static_cast<void*>(planes[0]), static_cast<void*>(planes[1]),
        static_cast<void*>(planes[2]), static_cast<void*>(planes[3]));
    return handle != 0 ? from_handle(handle)->popFrame(planes) : -1;
}

void super_capture_module_destroy(intptr_t handle) {
    KORVANE_LOGD("super_capture_module_destroy   handle:%zd\n", static_cast<ssize_t>(handle));
    if (handle != 0) {
        SuperCapture* engine = from_handle(handle);
        engine->final();
        delete engine;
    }
    KORVANE_LOGD("super_capture_module_destroy   handle:%zd   2\n", static_cast<ssize_t>(handle));
}
