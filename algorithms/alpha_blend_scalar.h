// The plain forms of the blends: what processors without vector instructions run, and what the kernels are tested with.
#ifndef KORVANE_ALGORITHMS_ALPHA_BLEND_SCALAR_H_
#define KORVANE_ALGORITHMS_ALPHA_BLEND_SCALAR_H_

void alpha_blend_scalar(unsigned char* dest, int size, int r, int g, int b, int a);
void alpha_blend_neon_scalar(unsigned char* dest, int size, int r, int g, int b, int a);

#endif  // KORVANE_ALGORITHMS_ALPHA_BLEND_SCALAR_H_
