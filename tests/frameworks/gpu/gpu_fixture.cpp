#include "tests/frameworks/gpu/gpu_fixture.h"

void GpuTest::SetUp() {
    m_Engine = new GPUEngine(nullptr, 0, 0);
    ASSERT_TRUE(m_Engine->setup()) << "no EGL context: is there a display?";
    m_Engine->startup();
    ASSERT_EQ(eglGetCurrentContext(), context()->getEGLContext());
    ASSERT_NE(eglGetCurrentContext(), EGL_NO_CONTEXT);
}

void GpuTest::TearDown() {
    m_Engine->close();
    m_Engine->destroy();
}

auto_ptr<GPUProgram> GpuTest::make_program(const char* vertex, const char* fragment) {
    auto_ptr<GPUScript> script(new GPUScript(context(), nullptr));
    EXPECT_TRUE(script->addSource("VertexShader", vertex));
    EXPECT_TRUE(script->addSource("FragmentShader", fragment));
    return auto_ptr<GPUProgram>(new GPUProgram(context(), script.get()));
}

Bytes GpuTest::download(GPUImage2D& image) {
    Bytes pixels(static_cast<size_t>(image.getWidth()) * static_cast<size_t>(image.getHeight()) * 4);
    EXPECT_EQ(image.download(pixels.data(), static_cast<int>(pixels.size())), 1);
    return pixels;
}

Bytes GpuTest::upside_down(const Bytes& pixels, int width) {
    const auto rowBytes = static_cast<std::ptrdiff_t>(width) * 4;
    Bytes turned;
    for (auto end = pixels.end(); end != pixels.begin(); end -= rowBytes) {
        turned.insert(turned.end(), end - rowBytes, end);
    }
    return turned;
}
