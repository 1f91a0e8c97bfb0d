// SPDX-License-Identifier: Apache-2.0
// GPUUtils: functions that all GPU classes use. They log GL and EGL errors and make shaders and programs.
//
// The checks never stop the caller. All but the EGL checks need a context that is current on the calling thread.
#ifndef KORVANE_FRAMEWORKS_GPU_GPU_UTILS_H_
#define KORVANE_FRAMEWORKS_GPU_GPU_UTILS_H_

#include <EGL/egl.h>
#include <GLES3/gl31.h>

#include <cstdint>

#include "frameworks/core/export.h"

class KORVANE_API GPUUtils {
  public:
    // The bit that a config request uses for OpenGL ES: ES 3 where the display says that it can tell, else ES 2.
    static EGLint getContextRenderableType(void* display);

    // Logs and clears the queued GL errors, oldest first. `op` names the call before. Stops after 32 errors, because a
    // lost or missing context gives errors without end.
    static void checkGLError(const char* op);

    // Logs a `returnValue` other than 1, then logs and clears the EGL errors in the same way.
    static void checkEGLError(const char* op, uint32_t returnValue);

    // Logs why the framebuffer bound to GL_FRAMEBUFFER is incomplete; nothing when it is complete.
    static void checkFramebufferStatusDetail(const char* name);

    // Compiles one shader. 0 after a log line when that fails. A shader that fails without an info log is returned all
    // the same; its program then fails to link and says why.
    static GLuint loadShader(int type, const char* source);

    // Compiles and links; 0 after a log line when a step fails. The shader objects are never detached or deleted; they
    // go with their context.
    static GLuint createProgram(const char* vertexSource, const char* fragmentSource);
    static GLuint createComputeProgram(const char* source);

    // A program from what getProgramBinary() gave, without compiling; 0 when the driver rejects it, as it does after an
    // update of the driver.
    static GLuint createProgram(GLenum binaryFormat, void* binary, int length);

    // The linked program as the driver's own bytes: `*binary` is a new block that the caller frees with galloc_free or
    // hands to GPUScript::setScriptBinary, null with `*length` 0 when there is none or
    // memory is short.
    static void getProgramBinary(GLuint program, int* length, GLenum* binaryFormat, void** binary);
};

#endif  // KORVANE_FRAMEWORKS_GPU_GPU_UTILS_H_
