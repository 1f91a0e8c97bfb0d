#include "algorithms/gauss_blur.h"

#include "algorithms/gauss_blur_scalar.h"

void box_blurH(const unsigned char* src, unsigned char* dst, int width, int height, int radius) {
    box_blurH_scalar(src, dst, width, height, radius);
}

void box_blurV(const unsigned char* src, unsigned char* dst, int width, int height, int radius) {
    box_blurV_scalar(src, dst, width, height, radius);
}

void box_blur(unsigned char* src, unsigned char* dst, int width, int height, int radius) {
    box_blur_scalar(src, dst, width, height, radius);
}

void gauss_blur(unsigned char* src, unsigned char* dst, int width, int height, int radius) {
    gauss_blur_scalar(src, dst, width, height, radius);
}
