#include "tests/support/x11_window.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

// Xlib's macros stay in this file.
#include <X11/Xlib.h>
#include <X11/Xutil.h>

X11Window::X11Window(unsigned width, unsigned height) : m_Display(XOpenDisplay(nullptr)) {
    auto* display = static_cast<Display*>(m_Display);
    if (display == nullptr) {
        ADD_FAILURE() << "no X display";
        return;
    }
    m_Window = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, width, height, 0, 0, 0);
    XMapWindow(display, m_Window);
    XSync(display, False);
}

X11Window::~X11Window() {
    if (m_Display != nullptr) {
        XCloseDisplay(static_cast<Display*>(m_Display));
    }
}

uint32_t X11Window::pixel(int x, int y, uint32_t expected) const {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    uint32_t value = pixel_now(x, y);
    while (value != expected && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        value = pixel_now(x, y);
    }
    return value;
}

uint32_t X11Window::pixel_now(int x, int y) const {
    auto* display = static_cast<Display*>(m_Display);
    XImage* image = display == nullptr ? nullptr : XGetImage(display, m_Window, x, y, 1, 1, AllPlanes, ZPixmap);
    if (image == nullptr) {
        ADD_FAILURE() << "no picture of the window";
        return 0;
    }
    const auto value = static_cast<uint32_t>(XGetPixel(image, 0, 0));
    XDestroyImage(image);
    return value & 0xFFFFFF;
}
