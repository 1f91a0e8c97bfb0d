#include "algorithms/fast_blur.h"

#include "algorithms/fast_blur_scalar.h"

void fast_blur(const unsigned int* src, unsigned char* dst, int w, int h, int radius) {
    fast_blur_scalar(src, dst, w, h, radius);
}
