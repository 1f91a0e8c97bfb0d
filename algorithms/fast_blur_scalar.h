// The plain form of the fast blur: what processors without vector instructions run, and what the kernel is tested with.
#ifndef KORVANE_ALGORITHMS_FAST_BLUR_SCALAR_H_
#define KORVANE_ALGORITHMS_FAST_BLUR_SCALAR_H_

void fast_blur_scalar(const unsigned int* src, unsigned char* dst, int w, int h, int radius);

#endif  // KORVANE_ALGORITHMS_FAST_BLUR_SCALAR_H_
