// SPDX-License-Identifier: Apache-2.0
// The C entries and the toolkit while memory is short. Functions that are not listed take no memory of their own, or
// are called by the native methods of shortage_jni_test.cpp.
#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "algorithms/fast_blur.h"
#include "algorithms/fast_detection.h"
#include "algorithms/gauss_blur.h"
#include "algorithms/gauss_blur_iir.h"
#include "applications/filters/filter_calls.h"
#include "applications/photo_timestamp/timestamp_watermark.h"
#include "applications/super_capture/super_capture.h"
#include "applications/super_capture/super_capture_module.h"
#include "frameworks/core/memory.h"
#include "frameworks/gpu/gpu_script.h"
#include "frameworks/gpu/gpu_utils.h"
#include "frameworks/gpu/program_cache.h"
#include "frameworks/images/color_convert.h"
#include "frameworks/images/image_decoder_factory.h"
#include "frameworks/images/image_encoder_factory.h"
#include "frameworks/io/file_stream.h"
#include "frameworks/io/memory_stream.h"
#include "frameworks/maths/matrix.h"
#include "frameworks/utils/thread_pool.h"
#include "platform/log.h"
#include "tests/shortage/shortage_case.h"
#include "tests/support/gl_surface.h"
#include "tests/support/random_bytes.h"

// Drivers without a format for program binaries tell a length of 0; this one tells some.
extern "C" void glGetProgramiv(GLuint program, GLenum name, GLint* value) {
    static const auto next = reinterpret_cast<PFNGLGETPROGRAMIVPROC>(dlsym(RTLD_NEXT, "glGetProgramiv"));
    next(program, name, value);
    if (name == GL_PROGRAM_BINARY_LENGTH) {
        *value = 64;
    }
}

namespace {

using Bytes = std::vector<unsigned char>;

constexpr int kWidth = 16;
constexpr int kHeight = 12;

// For a new object of the library, or null.
template <typename Make>
auto making(const Make& make) {
    return [make](Shortage& shortage) {
        const auto* object = shortage.during(make);
        delete object;
        return answer(object != nullptr, object == nullptr);
    };
}

template <typename Make>
auto taking_block(const Make& make) {
    return [make](Shortage& shortage) {
        void* block = shortage.during(make);
        galloc_free(block);
        return answer(block != nullptr, block == nullptr);
    };
}

// For an algorithm that writes bytes: its own result, or nothing touched.
template <typename Call>
auto writing(const Call& call) {
    return [call, expected = Bytes()](Shortage& shortage) mutable {
        const Bytes before = random_bytes(kWidth * kHeight * 4, 3);
        if (expected.empty()) {
            expected = before;
            call(expected.data());
        }
        Bytes bytes = before;
        shortage.during([&] { call(bytes.data()); });
        return answer(bytes == expected, bytes == before);
    };
}

// The box blurs take one byte a pixel, and spoil their source.
auto box_blurring(void (*blur)(unsigned char*, unsigned char*, int, int, int)) {
    return writing([blur](unsigned char* pixels) {
        unsigned char scratch[kWidth * kHeight];
        std::copy_n(pixels, sizeof(scratch), scratch);
        blur(scratch, pixels, kWidth, kHeight, 3);
    });
}

// For a new matrix that `call` makes of an invertible one.
auto making_matrix(Matrix* (*call)(Matrix&)) {
    return [call](Shortage& shortage) {
        float numbers[] = {2, 0, 0, 1, 0, 3, 0, 1, 0, 0, 4, 1, 1, 1, 1, 9};
        Matrix matrix(4, numbers);
        const auto_ptr<Matrix> expected(call(matrix));
        const auto_ptr<Matrix> result(shortage.during([&] { return call(matrix); }));
        const auto same = [&] {
            return std::equal(result->m_Data[0], result->m_Data[0] + result->m_Row * result->m_Col,
                              expected->m_Data[0]);
        };
        return answer(result.get() != nullptr && same(), result.get() == nullptr);
    };
}

Answer image_answer(Image* image) {
    const bool isEmpty = image == nullptr || image->getPlanes()[0] == nullptr;
    return answer(!isEmpty, isEmpty);
}

auto_ptr<Image> new_image(ImageFormatType format) {
    return {Image::createImage(kWidth, kHeight, 1, format, nullptr)};
}

struct CountedTask : IRunnable {
    ~CountedTask() override { ++gone; }
    void run() override { ++runs; }

    static inline std::atomic<int> runs{0};
    static inline std::atomic<int> gone{0};
};

struct Burst {
    ~Burst() { super_capture_module_destroy(handle); }
    Bytes frame = Bytes(kWidth * kHeight * 2, 99);
    unsigned char* planes[4] = {frame.data()};
    const intptr_t handle = super_capture_module_init(kWidth, kHeight, 1);
};

const ShortageCase kToolkit[] = {
    {"galloc_malloc", taking_block([] { return galloc_malloc(8); })},
    {"galloc_alloc", taking_block([] { return galloc_alloc(8); })},
    {"galloc_realloc",
     [](Shortage& s) {
         void* block = galloc_malloc(8);
         void* larger = s.during([&] { return galloc_realloc(block, 4096); });
         galloc_free(larger != nullptr ? larger : block);
         return answer(larger != nullptr, larger == nullptr);
     }},
    {"MemoryStream", one_call([] {
         MemoryStream stream(100);
         return answer(stream.getLength() == 100, stream.getLength() == 0);
     })},
    {"FileStream", one_call([] {
         FileStream stream(KORVANE_TEST_PHOTO, FileStream::FILE_MODE_ONLY_READ);
         return answer(stream.getLength() > 0, false);
     }),
     false, true},
    {"Image::createImage",
     [](Shortage& s) {
         const auto_ptr<Image> image(
             s.during([] { return Image::createImage(4, 2, 1, IMAGE_FORMAT_TYPE_RGB, nullptr); }));
         return image_answer(image.get());
     }},
    {"Image::set",
     [](Shortage& s) {
         Image image(4, 2, 1, IMAGE_FORMAT_TYPE_GRAY, nullptr);
         s.during([&] { image.set(8, 2, 1, IMAGE_FORMAT_TYPE_RGB, nullptr); });
         return image_answer(&image);
     }},
    {"ColorConvert::convert",
     [](Shortage& s) {
         Image image(4, 2, 1, IMAGE_FORMAT_TYPE_RGB, nullptr);
         const auto_ptr<Image> gray(s.during(
             [&] { return ColorConvert::convert(&image, IMAGE_FORMAT_TYPE_RGB * 256 + IMAGE_FORMAT_TYPE_GRAY); }));
         return image_answer(gray.get());
     }},
    {"ImageDecoderFactory and ImageDecoder::decode",
     [](Shortage& s) {
         auto_ptr<Stream> stream(new FileStream(KORVANE_TEST_PHOTO, FileStream::FILE_MODE_ONLY_READ));
         auto_ptr<Image> image = new_image(IMAGE_FORMAT_TYPE_GRAY);
         const bool isDone = s.during([&] {
             ImageDecoderFactory factory;
             ImageDecoder* decoder = factory.createImageDecoder(stream);
             return decoder != nullptr && decoder->decode(stream, image);
         });
         return answer(isDone && image->getWidth() == 512, !isDone && image->getWidth() == kWidth);
     }},
    {"ImageEncoderFactory and ImageEncoder::encode",
     [](Shortage& s) {
         auto_ptr<Stream> stream(new MemoryStream(100000));
         auto_ptr<Image> image = new_image(IMAGE_FORMAT_TYPE_GRAY);
         const bool isDone = s.during([&] {
             const auto_ptr<ImageEncoder> encoder(
                 ImageEncoderFactory().createImageEncoder(ImageEncoder::IMAGE_ENCODER_TYPE_JPEG));
             return encoder.get() != nullptr && encoder->encode(stream, image, 80);
         });
         return answer(isDone, !isDone);
     }},
    {"Matrix::create", making_matrix([](Matrix&) { return Matrix::create(3, 4); })},
    {"Matrix::multiply", making_matrix([](Matrix& m) { return Matrix::multiply(&m, &m); })},
    {"Matrix::transponse", making_matrix([](Matrix& m) { return m.transponse(); })},
    {"Matrix::adj", making_matrix([](Matrix& m) { return m.adj(); })},
    {"Matrix::inverse", making_matrix([](Matrix& m) { return m.inverse(); })},
    {"Matrix::det and cofator",
     [](Shortage& s) {
         float numbers[] = {2, 1, 1, 1, 3, 1, 1, 1, 4};
         const Matrix matrix(3, numbers);
         const float det = s.during([&] { return matrix.det(); });
         const float cofactor = s.during([&] { return matrix.cofator(0, 0); });
         const bool isZero = det == 0.0F || cofactor == 0.0F;
         return answer(det == 17.0F && cofactor == 11.0F,
                       isZero && (det == 0.0F || det == 17.0F) && (cofactor == 0.0F || cofactor == 11.0F));
     }},
    {"fast_blur",
     writing([](unsigned char* p) { fast_blur(reinterpret_cast<unsigned int*>(p), p, kWidth, kHeight, 3); })},
    {"box_blur", box_blurring(box_blur), true},
    {"gauss_blur", box_blurring(gauss_blur), true},
    {"gaussiir", writing([](unsigned char* p) { gaussiir(p, kWidth, kHeight, 4, kWidth * 4, 2.0F, 2.0F); })},
    {"fast16",
     [](Shortage& s) {
         Bytes image(32 * 32);
         for (size_t i = 4; i < 28; i += 8) {
             image[i * 32 + 8] = image[i * 32 + 16] = image[i * 32 + 24] = 255;
         }
         std::vector<KeyPoint> corners;
         const FastParams parameters = {2, 0, 2, 0, 3, 3};
         s.during([&] { fast16(image.data(), corners, 32, 32, &parameters); });
         const Answer result = answer(corners.size() > 4, corners.empty());
         corners.shrink_to_fit();
         return result;
     }},
    {"CreateTimestampWatermark",
     [](Shortage& s) {
         unsigned char* strip = nullptr;
         int width = -1;
         int height = -1;
         s.during([&] { CreateTimestampWatermark("2026", &strip, &width, &height, 0); });
         const bool isEmpty = strip == nullptr && width == 0 && height == 0;
         galloc_free(strip);
         return answer(strip != nullptr && width > 0, isEmpty);
     }},
    {"ThreadPool", one_call([] { return (ThreadPool(2), Answer::kDone); }), true},
    {"A ThreadPool that works",
     [](Shortage& s) {
         CountedTask::runs = 0;
         CountedTask::gone = 0;
         auto_ptr<IRunnable> task(new CountedTask);
         s.during([&] {
             ThreadPool pool(1);
             pool.submit(task);
             pool.start();
             task.clear();
         });
         while (CountedTask::gone == 0) {
             std::this_thread::yield();
         }
         // The worker of a pool waits for more work as long as the process lives.
         Shortage::keep_live_blocks();
         return answer(CountedTask::runs == 1, CountedTask::runs == 0);
     }},
    {"A log line",
     [](Shortage& s) {
         set_android_log_sink([](void*, int, const char*, const char*) {}, nullptr);
         const int went = s.during([] { return KORVANE_LOGD("A line that is longer than a short string"); });
         set_android_log_sink(nullptr, nullptr);
         return answer(went == 1, went == 0);
     }},
    {"super_capture_module_pop_frame, and the worker",
     [](Shortage& s) {
         Burst burst;
         s.during([&] {
             size_t pushed = 0;
             for (const int value : {99, 101}) {
                 burst.frame.assign(burst.frame.size(), static_cast<unsigned char>(value));
                 if (super_capture_module_push_frame(burst.handle, burst.planes) == 0) {
                     reinterpret_cast<SuperCapture*>(burst.handle)->waitUntilTaken(++pushed);
                 }
             }
             super_capture_module_pop_frame(burst.handle, burst.planes);
         });
         // The mean of both frames, or one of them.
         return answer(burst.frame[0] == 100, burst.frame[0] == 99 || burst.frame[0] == 101);
     }},
};

const ShortageCase kGpu[] = {
    {"GPUEngine::getCurrentEngine", making([] { return GPUEngine::getCurrentEngine(); })},
    {"GPUScriptSource::createScriptSource", making([] { return GPUScriptSource::createScriptSource("name", "text"); })},
    {"GPUScript::addSource", one_call([] {
         GPUScript script(nullptr, nullptr);
         const bool isAdded = script.addSource("name", "text");
         return answer(isAdded, !isAdded && script.getScriptSourceByIndex(0).get() == nullptr);
     })},
    {"GPUScript and its cache file",
     [](Shortage& s) {
         std::string directory = testing::TempDir() + "korvane_cache_XXXXXX";
         EXPECT_NE(mkdtemp(directory.data()), nullptr);
         korvane::set_program_cache_directory(directory.c_str());
         const bool isWritten = s.during([] {
             GPUScript script(nullptr, "script");
             script.setScriptBinary(galloc_alloc(20), 20);
             script.clear();
             return script.getScriptBinary() != nullptr;
         });
         const bool isRead = s.during([] { return GPUScript(nullptr, "script").getScriptBinary() != nullptr; });
         korvane::set_program_cache_directory(nullptr);
         const bool isThere = std::remove((directory + "/script.osb").c_str()) == 0;
         rmdir(directory.c_str());
         return answer(isWritten && isRead && isThere, !isRead);
     },
     true},
    {"GPUUtils::getProgramBinary",
     [](Shortage& s) {
         const GLuint program = glCreateProgram();
         int length = -1;
         GLenum format = 0;
         void* binary = nullptr;
         s.during([&] { GPUUtils::getProgramBinary(program, &length, &format, &binary); });
         glDeleteProgram(program);
         galloc_free(binary);
         return answer(binary != nullptr, binary == nullptr && length == 0);
     }},
    {"GPUUtils::loadShader",
     one_call([] { return answer(GPUUtils::loadShader(GL_VERTEX_SHADER, "no shader") == 0, false); }), true},
    {"A filter from end to end", writing([](unsigned char* pixels) {
         const auto_ptr<ImageFilterBaseGL> filter(korvane::create_offscreen_filter("ImageFilterTable"));
         if (filter.get() != nullptr) {
             filter->process(pixels, kWidth, kHeight);
             filter->release();
         }
     }),
     true},
};

TEST(Shortage, OfTheToolkit) {
    for (const ShortageCase& shortageCase : kToolkit) {
        fail_each_allocation(shortageCase);
    }
}

// First of all that draws: the books about displays take memory once.
TEST(Shortage, OfTheFirstEngine) {
    fail_each_allocation({"GPUEngine::setup", [](Shortage& s) {
                              GPUEngine engine(nullptr, 8, 8);
                              const bool isDone = s.during([&] { return engine.setup(); });
                              engine.destroy();
                              Shortage::keep_live_blocks();
                              return answer(isDone, !isDone);
                          }});
}

TEST(Shortage, OfTheGpu) {
    for (const ShortageCase& shortageCase : kGpu) {
        const GlSurface surface(kWidth, kHeight);
        fail_each_allocation(shortageCase);
    }
}

}  // namespace
