// SPDX-License-Identifier: Apache-2.0
#include "frameworks/gpu/gpu_engine.h"

#include <gmock/gmock.h>
#include <xcb/xcb.h>

#include <cstdlib>
#include <deque>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/gpu/gpu_utils.h"
#include "platform/egl.h"
#include "platform/native_window.h"
#include "tests/support/gl_recorder.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

auto is_destruction() {
    return ElementsAre("eglMakeCurrent(ptr, null, null, null)", "eglDestroySurface(ptr, ptr)",
                       "eglDestroyContext(ptr, ptr)", "eglTerminate(ptr)");
}

void expect_empty(const GPUContext& context) {
    EXPECT_EQ(context.getEGLDisplay(), EGL_NO_DISPLAY);
    EXPECT_EQ(context.getEGLContext(), EGL_NO_CONTEXT);
    EXPECT_EQ(context.getEGLSurface(), EGL_NO_SURFACE);
    EXPECT_EQ(context.getEGLWidth() + context.getEGLHeight(), 0U);
}

// Clears what is bound for drawing and reads a pixel back, as 0xRRGGBB.
uint32_t clear_and_read(float red, float green, float blue) {
    glClearColor(red, green, blue, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    unsigned char pixel[4] = {};
    glReadPixels(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    return static_cast<uint32_t>(pixel[0] << 16 | pixel[1] << 8 | pixel[2]);
}

TEST(GpuEngine, LifeCycleMakesItsCallsInOrderAndAgain) {
    GlRecorder recorder;
    GPUEngine engine(nullptr, 7, 5);
    GPUContext* context = engine.getGPUContext();
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(engine.setup());
        // The second query of a string is the platform's: whether somebody else has opened the display.
        EXPECT_THAT(
            recorder.take(),
            ElementsAre(
                "eglGetDisplay(null)", "eglQueryString(ptr, EGL_EXTENSIONS)", "eglQueryString(ptr, EGL_VERSION)",
                "eglInitialize(ptr, null, null)", "eglGetConfigs(ptr, null, 0, ptr)",
                "eglChooseConfig(ptr, [12339 5 12352 4 12324 8 12323 8 12322 8 12321 8 12325 -1 12326 "
                "-1 12338 -1 ], ptr, 1, ptr)",
                "eglGetConfigAttrib(ptr, ptr, EGL_NATIVE_VISUAL_ID, ptr)",
                "eglCreatePbufferSurface(ptr, ptr, [12375 7 12374 5 ])", "eglCreateContext(ptr, ptr, null, [12440 3 ])",
                "eglQuerySurface(ptr, ptr, EGL_WIDTH, ptr)", "eglQuerySurface(ptr, ptr, EGL_HEIGHT, ptr)"));
        EXPECT_EQ(context->getEGLWidth(), 7U);
        EXPECT_EQ(context->getEGLHeight(), 5U);

        engine.startup();
        EXPECT_EQ(eglGetCurrentContext(), context->getEGLContext());
        EXPECT_EQ(eglGetCurrentSurface(EGL_DRAW), context->getEGLSurface());
        EXPECT_EQ(clear_and_read(1, 0, 1), 0xFF00FFU);
        engine.flush();
        engine.close();
        EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
        EXPECT_THAT(recorder.take(), ElementsAre("eglMakeCurrent(ptr, ptr, ptr, ptr)",
                                                 "glReadPixels(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, ptr)",
                                                 "eglSwapBuffers(ptr, ptr)", "eglMakeCurrent(ptr, null, null, null)"));
        engine.destroy();
        EXPECT_THAT(recorder.take(), is_destruction());
        expect_empty(*context);

        engine.destroy();
        engine.startup();
        engine.flush();
        engine.close();
        EXPECT_THAT(recorder.take(), IsEmpty());
    }
    // A second setup() lets go of the first.
    ASSERT_TRUE(engine.setup());
    engine.startup();
    recorder.take();
    ASSERT_TRUE(engine.setup());
    std::vector<std::string> calls = recorder.take_calls();
    calls.resize(4);
    EXPECT_THAT(calls, is_destruction());
    EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
    engine.destroy();
}

TEST(GpuEngine, AsksForVersion3ConfigsOnlyWhereTheDisplayKnowsThem) {
    GlRecorder recorder;
    for (const auto& [extensions, bit] :
         {std::pair("EGL_X EGL_KHR_create_context", 0x40), {"EGL_X", 4}, {nullptr, 4}}) {
        recorder.answer("eglQueryString", reinterpret_cast<uint64_t>(extensions));
        EXPECT_EQ(GPUUtils::getContextRenderableType(nullptr), bit);
    }
}

TEST(GpuEngine, EveryFailingStepIsLoggedAndLeavesTheEngineEmpty) {
    struct Row {
        const char* function;
        std::vector<std::string> log;
        bool displayOpened = true;
        bool hasWindow = false;
    };
    // 12291 and 0x3003 are EGL_BAD_ALLOC, 12288 EGL_SUCCESS. A window's surface fails under the pbuffer's name.
    const Row rows[] = {
        {"eglGetDisplay", {"after eglGetDisplay() eglError (0x3003)\n", "eglGetDisplay fail\n"}, false},
        {"eglInitialize", {"eglInitialize fail\n"}, false},
        {"eglGetConfigs", {"eglGetConfig fail\n"}},
        {"eglChooseConfig", {"eglChooseConfig fail\n"}},
        {"eglGetConfigAttrib", {"eglGetConfigAttrib fail\n"}},
        {"eglCreatePbufferSurface", {"eglCreatePbufferSurface error 12291\n"}},
        {"eglCreateWindowSurface", {"eglCreatePbufferSurface error 12291\n"}, true, true},
        {"eglCreateContext", {"after eglCreateContext() eglError (0x3003)\n", "eglCreateContext error:12288\n"}},
    };
    ANativeWindow window;
    GlRecorder recorder;
    const auto before = GlRecorder::live_names();
    const EGLDisplay display = eglGetDisplay(EGL_DEFAULT_DISPLAY);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.function);
        GPUEngine engine(row.hasWindow ? &window : nullptr, 0, 0);
        recorder.answer(row.function, 0, EGL_BAD_ALLOC);
        EXPECT_FALSE(engine.setup());
        EXPECT_EQ(recorder.take_log(), row.log);
        engine.startup();
        engine.flush();
        engine.close();
        engine.destroy();
        EXPECT_THAT(recorder.take(), IsEmpty());
        expect_empty(*engine.getGPUContext());
        recorder.heal();
        // Nothing is torn down: the display stays open, and a surface with it.
        EXPECT_EQ(eglQueryString(display, EGL_VERSION) != nullptr, row.displayOpened);
        if (row.displayOpened) {
            korvane::terminate_egl_display(display);
        }
        EXPECT_EQ(GlRecorder::live_names(), before);
    }
    // A display without a config that fits is found out at the surface.
    GPUEngine engine(nullptr, 0, 0);
    recorder.take();
    recorder.answer("eglChooseConfig", EGL_TRUE);
    recorder.answer("eglGetConfigAttrib", EGL_TRUE);
    EXPECT_FALSE(engine.setup());
    EXPECT_THAT(recorder.take_log(), ElementsAre("eglCreatePbufferSurface error 12293\n"));
    korvane::terminate_egl_display(display);
}

TEST(GpuEngine, ReportsQueuedErrorsOfTheSwapAndTheResultOfMakingCurrent) {
    GlRecorder recorder;
    GPUEngine engine(nullptr, 1, 1);
    ASSERT_TRUE(engine.setup());
    recorder.answer("eglSwapBuffers", EGL_FALSE);
    engine.flush();
    EXPECT_THAT(recorder.take_log(), IsEmpty());
    recorder.answer("eglSwapBuffers", EGL_TRUE, EGL_BAD_SURFACE);
    engine.flush();
    EXPECT_THAT(recorder.take_log(), ElementsAre("after eglSwapBuffers() eglError (0x300d)\n"));
    recorder.answer("eglMakeCurrent", EGL_FALSE, EGL_BAD_ACCESS);
    engine.startup();
    EXPECT_THAT(recorder.take_log(), ElementsAre("eglMakeCurrent error:12290\n"));
    recorder.heal();
    engine.destroy();
}

TEST(GpuEngine, DestroyingLeavesADisplayThatOthersUse) {
    GlRecorder recorder;
    GPUEngine first(nullptr, 1, 1);
    GPUEngine second(nullptr, 1, 1);
    ASSERT_TRUE(first.setup() && second.setup());
    first.startup();
    EXPECT_EQ(clear_and_read(1, 0, 0), 0xFF0000U);
    recorder.take();
    first.destroy();
    EXPECT_THAT(recorder.take(), SizeIs(3));
    second.startup();
    EXPECT_EQ(clear_and_read(0, 0, 1), 0x0000FFU);
    recorder.take();
    second.destroy();
    EXPECT_THAT(recorder.take(), is_destruction());

    // The application opened it before.
    EGLDisplay display = eglGetDisplay(EGL_DEFAULT_DISPLAY);
    ASSERT_TRUE(eglInitialize(display, nullptr, nullptr));
    ASSERT_TRUE(first.setup());
    recorder.take();
    first.destroy();
    EXPECT_THAT(recorder.take(), SizeIs(3));
    EXPECT_NE(eglQueryString(display, EGL_VERSION), nullptr);
    eglTerminate(display);
}

TEST(GpuEngine, AdoptsTheCurrentContext) {
    EXPECT_EQ(GPUEngine::getCurrentEngine(), nullptr);
    GPUEngine owner(nullptr, 3, 3);
    ASSERT_TRUE(owner.setup());
    owner.startup();
    {
        const auto_ptr<GPUEngine> adopted(GPUEngine::getCurrentEngine());
        ASSERT_NE(adopted.get(), nullptr);
        GPUContext* context = adopted->getGPUContext();
        EXPECT_EQ(context->getEGLDisplay(), owner.getGPUContext()->getEGLDisplay());
        EXPECT_EQ(context->getEGLContext(), owner.getGPUContext()->getEGLContext());
        EXPECT_EQ(context->getEGLSurface(), owner.getGPUContext()->getEGLSurface());
        EXPECT_EQ(context->getANativeWindow(), nullptr);
        EXPECT_EQ(context->getEGLWidth() + context->getEGLHeight(), 0U);
        adopted->close();
        adopted->startup();
    }
    EXPECT_EQ(clear_and_read(1, 1, 0), 0xFFFF00U);
    // A context without a surface is nothing to adopt.
    ASSERT_TRUE(eglMakeCurrent(owner.getGPUContext()->getEGLDisplay(), EGL_NO_SURFACE, EGL_NO_SURFACE,
                               owner.getGPUContext()->getEGLContext()));
    EXPECT_EQ(GPUEngine::getCurrentEngine(), nullptr);
    owner.destroy();
}

TEST(GpuEngine, DrawsIntoAWindow) {
    // Over a connection of its own.
    xcb_connection_t* server = xcb_connect(nullptr, nullptr);
    ANativeWindow window;
    window.x11Window = xcb_generate_id(server);
    window.width = window.height = 1;
    xcb_create_window(server, XCB_COPY_FROM_PARENT, static_cast<xcb_window_t>(window.x11Window),
                      xcb_setup_roots_iterator(xcb_get_setup(server)).data->root, 0, 0, 40, 30, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_map_window(server, static_cast<xcb_window_t>(window.x11Window));
    // The answer says that the server has done all that was asked before.
    std::free(xcb_get_input_focus_reply(server, xcb_get_input_focus(server), nullptr));
    GPUEngine engine(&window, 3, 3);
    const GPUContext* context = engine.getGPUContext();
    ASSERT_TRUE(engine.setup());
    EXPECT_EQ(context->getANativeWindow(), &window);
    EXPECT_EQ(context->getEGLWidth(), 40U);
    EXPECT_EQ(context->getEGLHeight(), 30U);
    EXPECT_EQ(window.width + window.height, 0);
    EXPECT_NE(window.format, 0);
    engine.startup();
    EXPECT_EQ(clear_and_read(0, 0, 1), 0x0000FFU);
    engine.flush();
    engine.destroy();
    xcb_disconnect(server);
}

TEST(GpuUtils, DrainsErrorsOldestFirstAndStopsWhereTheyNeverEnd) {
    GlRecorder recorder;
    recorder.queue_gl_errors({GL_INVALID_ENUM, GL_OUT_OF_MEMORY});
    GPUUtils::checkGLError("glX");
    EXPECT_THAT(recorder.take_log(), ElementsAre("after :glX() glError (0x500)\n", "after :glX() glError (0x505)\n"));
    recorder.queue_egl_errors({EGL_BAD_ACCESS, EGL_BAD_MATCH});
    GPUUtils::checkEGLError("eglX", 0);
    EXPECT_THAT(recorder.take_log(), ElementsAre("eglX() returned 0\n", "after eglX() eglError (0x3002)\n",
                                                 "after eglX() eglError (0x3009)\n"));
    recorder.queue_gl_errors(std::deque<GLenum>(100, GL_INVALID_VALUE));
    recorder.queue_egl_errors(std::deque<GLenum>(100, EGL_CONTEXT_LOST));
    GPUUtils::checkGLError("glX");
    EXPECT_THAT(recorder.take_log(), SizeIs(32));
    GPUUtils::checkEGLError("eglX", 1);
    EXPECT_THAT(recorder.take_log(), SizeIs(32));
}

TEST(GpuUtils, SaysWhyAFramebufferIsIncomplete) {
    const std::pair<GLenum, const char*> rows[] = {
        {GL_FRAMEBUFFER_INCOMPLETE_ATTACHMENT, "attachment, 8cd6"},
        {GL_FRAMEBUFFER_INCOMPLETE_MISSING_ATTACHMENT, "missing attachment, 8cd7"},
        {GL_FRAMEBUFFER_INCOMPLETE_DIMENSIONS, "dimensions, 8cd9"},
        {GL_FRAMEBUFFER_UNSUPPORTED, "unsupported, 8cdd"},
        {GL_FRAMEBUFFER_INCOMPLETE_MULTISAMPLE, "not listed, 8d56"},
    };
    GlRecorder recorder;
    for (const auto& [status, reason] : rows) {
        recorder.answer("glCheckFramebufferStatus", status);
        GPUUtils::checkFramebufferStatusDetail("f");
        EXPECT_THAT(recorder.take_log(), ElementsAre(std::string("Framebuffer: f is INCOMPLETE: ") + reason + "\n"));
    }
    recorder.answer("glCheckFramebufferStatus", GL_FRAMEBUFFER_COMPLETE);
    GPUUtils::checkFramebufferStatusDetail("f");
    EXPECT_THAT(recorder.take_log(), IsEmpty());
    recorder.answer("glCheckFramebufferStatus", 0, GL_INVALID_ENUM);
    GPUUtils::checkFramebufferStatusDetail("f");
    EXPECT_THAT(recorder.take_log(),
                ElementsAre("Checking completeness of Framebuffer:f\n",
                            "after :checkFramebufferStatus (is the target \"GL_FRAMEBUFFER\"?)() glError (0x500)\n"));
}

}  // namespace
