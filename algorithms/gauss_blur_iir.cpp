#include "algorithms/gauss_blur_iir.h"

#include "algorithms/flush_denormals.h"
#include "algorithms/gauss_blur_iir_scalar.h"

void gaussiir(unsigned char* image, int width, int height, int depth, int stride, float horz, float vert) {
    const bool isBlurring = horz > 0.0F && vert > 0.0F;  // false for a NaN
    if (image == nullptr || !isBlurring || width < 5 || height < 5 || (depth != 3 && depth != 4)) {
        return;
    }
    const korvane::FlushDenormals mode;
    gaussiir_scalar(image, width, height, depth, stride, horz, vert);
}

void blur_line(gaussiirContext* ctx, const unsigned char* src, unsigned char* dst, int width, int depth) {
    if (ctx == nullptr || ctx->vp == nullptr || ctx->vm == nullptr || src == nullptr || dst == nullptr || width < 1 ||
        (depth != 3 && depth != 4)) {
        return;
    }
    const korvane::FlushDenormals mode;
    blur_line_scalar(ctx, src, dst, width, depth);
}
