#include "platform/desktop/android_native_window.h"

#include <cerrno>

int32_t ANativeWindow_setBuffersGeometry(ANativeWindow* window, int32_t width, int32_t height, int32_t format) {
    if (window == nullptr || width < 0 || height < 0) {
        return -EINVAL;
    }
    window->m_Width = width;
    window->m_Height = height;
    window->m_Format = format;
    return 0;
}
