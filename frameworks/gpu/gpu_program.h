// SPDX-License-Identifier: Apache-2.0
// GPUProgram: a script made into a GL program, run one full-viewport pass at a time.
//
// A pass: beganCompute(), and stop if it returns 0; an output, by setOutputTarget() or a framebuffer of one's own;
// setOutputSize(); inputs by setSourceTarget(); uniforms by setParameters(); vertices if the defaults will not do;
// endCompute(). The vertex shader's position must sit at attribute location 0, its texture coordinate at 1; no array
// buffer may be bound, since the vertices are the program's own memory. After a pass the program, its attributes and
// its textures stay in use. Used on the thread where the context is current.
#ifndef KORVANE_FRAMEWORKS_GPU_GPU_PROGRAM_H_
#define KORVANE_FRAMEWORKS_GPU_GPU_PROGRAM_H_

#include <GLES3/gl3.h>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"
#include "frameworks/gpu/gpu_context.h"
#include "frameworks/gpu/gpu_framebuffer.h"
#include "frameworks/gpu/gpu_script.h"

class GPUImage2D;
class GPUImage3D;

// What setParameters() is given: ints, floats or a square matrix of floats in columns.
enum GPUProgramParameterType : int {
    GPU_PROGRAM_PARAMETER_TYPE_INT1 = 0,
    GPU_PROGRAM_PARAMETER_TYPE_INT2 = 1,
    GPU_PROGRAM_PARAMETER_TYPE_INT3 = 2,
    GPU_PROGRAM_PARAMETER_TYPE_INT4 = 3,
    GPU_PROGRAM_PARAMETER_TYPE_FLOAT1 = 4,
    GPU_PROGRAM_PARAMETER_TYPE_FLOAT2 = 5,
    GPU_PROGRAM_PARAMETER_TYPE_FLOAT3 = 6,
    GPU_PROGRAM_PARAMETER_TYPE_FLOAT4 = 7,
    GPU_PROGRAM_PARAMETER_TYPE_MATRIX2 = 8,
    GPU_PROGRAM_PARAMETER_TYPE_MATRIX3 = 9,
    GPU_PROGRAM_PARAMETER_TYPE_MATRIX4 = 10,
};

// Without a usable program beganCompute and endCompute return 0, and only setOutputTarget, setPosVertices and
// setTexVertices do anything.
class KORVANE_API GPUProgram : public RefBase {
  public:
    // From the script's binary if it holds one, else from its first two sources. When the driver rejects the binary,
    // the program is unusable: the sources are not compiled instead, and the binary stays in the cache until its file
    // is deleted. Keeps the script alive.
    GPUProgram(GPUContext* context, GPUScript* script);
    GPUProgram(auto_ptr<GPUContext>& context, auto_ptr<GPUScript>& script);

    // Deletes the GL program unless release() did.
    ~GPUProgram() override;

    GPUProgram(const GPUProgram&) = delete;
    GPUProgram& operator=(const GPUProgram&) = delete;

    // Puts the program in use; 1, or 0 if there is none.
    virtual int beganCompute();

    // Binds the image to texture unit `unit`, which stays active, and the sampler of that name to the unit. A null name
    // or image is ignored.
    virtual void setSourceTarget(const char* uniformName, int unit, GPUImage2D* image);
    virtual void setSourceTarget(const char* uniformName, int unit, auto_ptr<GPUImage2D>& image);
    virtual void setSourceTarget(const char* uniformName, int unit, GPUImage3D* image);
    virtual void setSourceTarget(const char* uniformName, int unit, auto_ptr<GPUImage3D>& image);

    // Sets one uniform of the program in use from the values at `value`. Null names or values and unknown types are
    // ignored; GL errors are left queued.
    virtual void setParameters(const char* uniformName, GPUProgramParameterType type, void* value);

    // The viewport, in pixels.
    virtual void setOutputSize(int x, int y, int width, int height);

    // Draws into the image's texture from now on; with null into the surface.
    virtual void setOutputTarget(GPUImage2D* image);
    virtual void setOutputTarget(auto_ptr<GPUImage2D>& image);

    // Four (x, y) positions in clip space, four (s, t) texture coordinates, in triangle strip order; null is ignored.
    // By default the quad fills the viewport and the texture's row 0 comes out on top.
    virtual void setPosVertices(const float* vertices);
    virtual void setTexVertices(const float* vertices);

    // Draws the quad; 1, or 0 if there is no program.
    virtual int endCompute();

    // Deletes the GL program.
    virtual void release();

    // As setParameters(), for arrays of `count` elements, and with GL's transposition for matrices.
    void _SetHostValue1iv(const char* name, int count, int* value);
    void _SetHostValue2iv(const char* name, int count, int* value);
    void _SetHostValue3iv(const char* name, int count, int* value);
    void _SetHostValue4iv(const char* name, int count, int* value);
    void _SetHostValue1fv(const char* name, int count, float* value);
    void _SetHostValue2fv(const char* name, int count, float* value);
    void _SetHostValue3fv(const char* name, int count, float* value);
    void _SetHostValue4fv(const char* name, int count, float* value);
    void _SetHostValueMatrix2fv(const char* name, int count, bool transpose, const float* value);
    void _SetHostValueMatrix3fv(const char* name, int count, bool transpose, const float* value);
    void _SetHostValueMatrix4fv(const char* name, int count, bool transpose, const float* value);

  private:
    template <typename Image>
    void bind_source(const char* uniformName, int unit, const Image* image);

    auto_ptr<GPUContext> m_GPUContext;
    auto_ptr<GPUScript> m_GPUScript;
    GPUFramebuffer m_GPUFramebuffer;
    GLuint m_ProgramHandle = 0;
    GLfloat mPosVertices[8];
    GLfloat mTexVertices[8];
};

#endif  // KORVANE_FRAMEWORKS_GPU_GPU_PROGRAM_H_
