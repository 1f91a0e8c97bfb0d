// SPDX-License-Identifier: Apache-2.0
#include "platform/egl.h"

#include <map>
#include <mutex>

#include "frameworks/core/guard.h"

namespace korvane {
namespace {

struct DisplayUse {
    int m_Users = 0;
    bool m_OpenedElsewhere = false;
};

std::mutex gMutex;

// The displays that were initialised here, and null when memory is short. Never destroyed: an application's static
// objects may let go of a display after ours are gone.
DisplayUse* display_use(EGLDisplay display) {
    return guarded(static_cast<DisplayUse*>(nullptr), [&] {
        static auto* uses = new std::map<EGLDisplay, DisplayUse>;
        return &(*uses)[display];
    });
}

}  // namespace

EGLBoolean initialize_egl_display(EGLDisplay display) {
    const std::lock_guard<std::mutex> guard(gMutex);
    DisplayUse* use = display_use(display);
    if (use == nullptr) {
        return EGL_FALSE;
    }
    const bool openedElsewhere = use->m_Users == 0 && eglQueryString(display, EGL_VERSION) != nullptr;
    const EGLBoolean result = eglInitialize(display, nullptr, nullptr);
    if (result != EGL_TRUE) {
        return result;
    }
    if (use->m_Users++ == 0) {
        use->m_OpenedElsewhere = openedElsewhere;
    }
    return result;
}

EGLBoolean terminate_egl_display(EGLDisplay display) {
    const std::lock_guard<std::mutex> guard(gMutex);
    DisplayUse* use = display_use(display);
    if (use == nullptr || use->m_Users == 0) {
        return eglTerminate(display);
    }
    if (--use->m_Users > 0 || use->m_OpenedElsewhere) {
        return EGL_TRUE;
    }
    return eglTerminate(display);
}

}  // namespace korvane
