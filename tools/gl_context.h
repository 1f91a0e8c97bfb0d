// SPDX-License-Identifier: Apache-2.0
// A GL context with or without a display. The library's own engine asks for configs that serve windows too, which only
// X offers. Its filters draw with whatever context is current, so on a machine without X the program brings one that
// draws to memory only.
#ifndef KORVANE_TOOLS_GL_CONTEXT_H_
#define KORVANE_TOOLS_GL_CONTEXT_H_

namespace korvane {

// Makes a context current on this thread unless one is, and names what it stands on: "display", "device" or
// "surfaceless". It stays until the thread ends. Throws CommandError when the driver offers none.
const char* require_gl_context();

}  // namespace korvane

#endif  // KORVANE_TOOLS_GL_CONTEXT_H_
