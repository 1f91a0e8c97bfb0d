// The plain form of the stack blur: what processors without vector instructions run, and what the kernel is tested
// with.
#ifndef KORVANE_ALGORITHMS_STACK_BLUR_SCALAR_H_
#define KORVANE_ALGORITHMS_STACK_BLUR_SCALAR_H_

void stack_blur_scalar(unsigned char* src, int w, int h, int radius);

#endif  // KORVANE_ALGORITHMS_STACK_BLUR_SCALAR_H_
