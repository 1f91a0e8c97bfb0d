// A window on the display that the test runs on, and what can be seen in it.
#ifndef KORVANE_TESTS_SUPPORT_X11_WINDOW_H_
#define KORVANE_TESTS_SUPPORT_X11_WINDOW_H_

#include <cstdint>

// Fails the test when there is no display. Keeps its own connection, apart from EGL's.
class X11Window {
  public:
    X11Window(unsigned width, unsigned height);
    ~X11Window();
    X11Window(const X11Window&) = delete;
    X11Window& operator=(const X11Window&) = delete;

    unsigned long id() const { return m_Window; }

    // The colour at a pixel, 0xRRGGBB; row 0 is on top. What EGL swapped in comes over a connection of its own, so it
    // may be a moment late: a pixel that is not `expected` is looked at again for some seconds.
    uint32_t pixel(int x, int y, uint32_t expected) const;

  private:
    uint32_t pixel_now(int x, int y) const;

    void* m_Display;
    unsigned long m_Window = 0;
};

#endif  // KORVANE_TESTS_SUPPORT_X11_WINDOW_H_
