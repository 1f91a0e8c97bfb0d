// The plain form of the box passes: what processors without vector instructions run, and what the kernels are tested
// with.
#ifndef KORVANE_ALGORITHMS_GAUSS_BLUR_SCALAR_H_
#define KORVANE_ALGORITHMS_GAUSS_BLUR_SCALAR_H_

void box_blurH_scalar(const unsigned char* src, unsigned char* dst, int width, int height, int radius);
void box_blurV_scalar(const unsigned char* src, unsigned char* dst, int width, int height, int radius);
void box_blur_scalar(unsigned char* src, unsigned char* dst, int width, int height, int radius);
void gauss_blur_scalar(unsigned char* src, unsigned char* dst, int width, int height, int radius);

#endif  // KORVANE_ALGORITHMS_GAUSS_BLUR_SCALAR_H_
