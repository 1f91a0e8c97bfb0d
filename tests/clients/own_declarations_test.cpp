// SPDX-License-Identifier: Apache-2.0
// The interface as it looks to a client who declares everything by hand. A parameter of another type, or a name that
// the library keeps inside, does not link. Functions with C linkage match by their names alone.
#include <cstdint>
#include <vector>

// A variable that all may see holds the address, so that the compiler cannot leave the function out.
using Function = void (*)();
#define CLIENT(result, name, ...) \
    result name(__VA_ARGS__);     \
    Function use_##name = reinterpret_cast<Function>(name)

// Memory, atomics, text and time.
CLIENT(void*, galloc_malloc, unsigned long);
CLIENT(void*, galloc_malloc_leap, unsigned long, const char*, unsigned int);
CLIENT(void*, galloc_alloc, unsigned long);
CLIENT(void*, galloc_alloc_leap, unsigned long, const char*, unsigned int);
CLIENT(void*, galloc_realloc, void*, unsigned long);
CLIENT(void*, galloc_realloc_leap, void*, unsigned long, const char*, unsigned int);
CLIENT(void, galloc_free, void*);
CLIENT(void, galloc_free_leap, void*);
CLIENT(void, galloc_memcpy, void*, const void*, unsigned long);
CLIENT(void, galloc_memset, void*, unsigned char, unsigned long);
CLIENT(uint32_t, atomic_inc32, void*);
CLIENT(uint32_t, atomic_dec32, void*);
CLIENT(uint32_t, atomic_add32, void*, unsigned int);
CLIENT(char*, string_format, const char*, ...);
CLIENT(int64_t, systemTime, int);
CLIENT(void, make_timeout, int);
CLIENT(int, toMillisecondTimeoutDelay, int64_t, int64_t);

// Colours and JPEG.
struct jpeg_common_struct;
struct jpeg_error_mgr;
struct jpeg_utils_error_mgr;
using Source = const unsigned char*;
using Target = unsigned char*;
// By hand: the formatter breaks this list anew at each run.
// clang-format off
#define PACKED_CONVERSIONS(ROW) \
    ROW(gray2rgb) ROW(gray2rgba) ROW(rgb2gray) ROW(rgba2gray) ROW(rgb2rgba) ROW(rgba2rgb) ROW(rgb2yuv) \
    ROW(yuv2rgb) ROW(yuv2gray) ROW(rgb2yuyv) ROW(yuyv2rgb) ROW(rgb2yvyu) ROW(yvyu2rgb)
// clang-format on
#define CONVERSION(name) CLIENT(int, color_convert_##name, Source, Target, int, int);
PACKED_CONVERSIONS(CONVERSION)
#define LINE(name) CLIENT(void, Write_##name, Source, Target, int);
LINE(Gray)
LINE(RGB) LINE(RGBA) LINE(YUV) CLIENT(int, color_convert_rgb2yuv422p, Source, Target, Target, Target, int, int);
CLIENT(int, color_convert_yuv422p2rgb, Source, Source, Source, Target, int, int);
CLIENT(int, color_convert_rgb2yv12oryu12, Source, Target, Target, Target, int, int);
CLIENT(int, color_convert_yv12oryu122rgb, Source, Source, Source, Target, int, int);
CLIENT(int, color_convert_rgb2nv12, Source, Target, Target, int, int);
CLIENT(int, color_convert_nv122rgb, Source, Source, Target, int, int);
CLIENT(int, color_convert_rgb2nv21, Source, Target, Target, int, int);
CLIENT(int, color_convert_nv212rgb, Source, Source, Target, int, int);
CLIENT(jpeg_error_mgr*, jpeg_utils_init_error_mgr, jpeg_utils_error_mgr*);
CLIENT(void, jpeg_utils_error_exit, jpeg_common_struct*);

// Algorithms.
struct gauss_blur_coef;
struct gaussiirContext;
struct KeyPoint;
struct FastParams;
CLIENT(void, stack_blur, unsigned char*, int, int, int);
CLIENT(void, alpha_blend, unsigned char*, int, int, int, int, int);
CLIENT(void, alpha_blend_neon, unsigned char*, int, int, int, int, int);
CLIENT(void, calculate_gauss_blur_coef, float, int, gauss_blur_coef*);
CLIENT(void, fast_blur, unsigned int*, unsigned char*, int, int, int);
#define BOX_BLUR(name) CLIENT(void, name, unsigned char*, unsigned char*, int, int, int);
BOX_BLUR(box_blurH)
BOX_BLUR(box_blurV)
BOX_BLUR(box_blur) BOX_BLUR(gauss_blur) CLIENT(void, gaussiir, unsigned char*, int, int, int, int, float, float);
CLIENT(void, calculate_gauss_iir_coefficients, gaussiirContext*, float);
CLIENT(void, blur_line, gaussiirContext*, unsigned char*, unsigned char*, int, int);
CLIENT(void, make_offsets, int*, unsigned int);
CLIENT(void, lbp_pyr_features, char*, unsigned int, unsigned int*, unsigned short, unsigned short);
CLIENT(void, lbp_pyr_features_sparse, unsigned int*, unsigned int, unsigned int*, unsigned short, unsigned short);
CLIENT(double, lbp_pyr_dotprod, double*, unsigned int, unsigned int*, unsigned short, unsigned short);
CLIENT(void, lbp_pyr_addvec, long*, unsigned int, unsigned int*, unsigned short, unsigned short);
CLIENT(void, lbp_pyr_subvec, long*, unsigned int, unsigned int*, unsigned short, unsigned short);
CLIENT(unsigned int, lbp_pyr_get_dim, unsigned short, unsigned short, unsigned short);
CLIENT(void, makeOffsets, int*, int, int);
CLIENT(int, cornerScore16, const unsigned char*, const int*, int);
CLIENT(void, fast16, const unsigned char*, std::vector<KeyPoint>&, int, int, const FastParams*);

// Timestamp.
struct Symbol;
CLIENT(Symbol*, GetTimestampSymbol_4_to_3, char);
CLIENT(Symbol*, GetTimestampSymbol_16_to_9, char);
CLIENT(void, CreateTimestampWatermark, const char*, unsigned char**, int*, int*, int);
CLIENT(void, DrawSymbol, unsigned char*, int, int, Symbol*, int, int, int, int);

// Members whose operands are not const, although they are only read.
struct GPUImage2D;
struct GPUImage3D;
struct Matrix {
    static Matrix* create(int rows, int cols, float* data);
    static Matrix* add(Matrix* a, Matrix* b);
    static Matrix* sub(Matrix* a, Matrix* b);
    static Matrix* multiply(Matrix* a, Matrix* b);
};
struct GPUPixelBuffer {
    void uploadImage(GPUImage2D* image, void* pixels);
    void uploadImage(GPUImage3D* image, void* pixels);
};
struct GPUProgram {
    void _SetHostValue1iv(const char* name, int count, int* value);
    void _SetHostValue4fv(const char* name, int count, float* value);
};
struct GPUUtils {
    static uint32_t createProgram(uint32_t binaryFormat, void* binary, int length);
};
Matrix* (*use_create)(int, int, float*) = Matrix::create;
Matrix* (*use_matrices[])(Matrix*, Matrix*) = {Matrix::add, Matrix::sub, Matrix::multiply};
void (GPUPixelBuffer::*use_upload_2d)(GPUImage2D*, void*) = &GPUPixelBuffer::uploadImage;
void (GPUPixelBuffer::*use_upload_3d)(GPUImage3D*, void*) = &GPUPixelBuffer::uploadImage;
void (GPUProgram::*use_ints)(const char*, int, int*) = &GPUProgram::_SetHostValue1iv;
void (GPUProgram::*use_floats)(const char*, int, float*) = &GPUProgram::_SetHostValue4fv;
uint32_t (*use_binary)(uint32_t, void*, int) = GPUUtils::createProgram;

#define PANORAMA(name) CLIENT(void, Java_com_tervo_media_effects_pano_PanoramaModule_native##name);
#define FILTERS(name) CLIENT(void, Java_com_tervo_media_effects_renderer_render_FiltersRender_native##name);
#define MODE(name) CLIENT(void, Java_com_tervo_media_supercapture_mode_SuperCaptureMode_native##name);
#define OBJECT_METHODS(ROW) ROW(Create) ROW(Process) ROW(Destroy)
// By hand: the formatter breaks this list anew at each run.
// clang-format off
#define FILTER_METHODS(ROW) \
    ROW(Create) ROW(OnSurfaceCreated) ROW(SetTexture) ROW(SetBitmap) ROW(OnDrawFrame) ROW(Process) \
    ROW(OnSurfaceDestroyed) ROW(GetParameterType) ROW(SetParametersBoolean) ROW(SetParametersBooleanArray) \
    ROW(SetParametersInteger) ROW(SetParametersIntegerArray) ROW(SetParametersFloat) ROW(SetParametersFloatArray) \
    ROW(SetParametersDouble) ROW(SetParametersDoubleArray) ROW(SetParametersLong) ROW(SetParametersBitmap)
// clang-format on
extern "C" {
CLIENT(intptr_t, super_capture_module_init, uint32_t, uint32_t, uint32_t);
CLIENT(int32_t, super_capture_module_push_frame, intptr_t, unsigned char**);
CLIENT(int32_t, super_capture_module_pop_frame, intptr_t, unsigned char**);
CLIENT(void, super_capture_module_destroy, intptr_t);
CLIENT(bool, make_photo_timestamp_watermark_to_yuyv, unsigned char*, int, int, const char*, int);
CLIENT(void, Java_com_tervo_media_render_BlurRender_nativeProcess);
OBJECT_METHODS(PANORAMA)
OBJECT_METHODS(MODE)
FILTER_METHODS(FILTERS)
}

int main() {
    uint32_t word = 1;
    return static_cast<int>(atomic_dec32(&word));
}
