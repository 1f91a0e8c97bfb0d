// SPDX-License-Identifier: Apache-2.0
#include "algorithms/flush_denormals.h"
#include "algorithms/gauss_blur_iir.h"
#include "algorithms/gauss_blur_iir_scalar.h"

// `src` is only read; its type is part of the interface.
void blur_line(gaussiirContext* ctx, unsigned char* src, unsigned char* dst, int width, int depth) {
    if (ctx == nullptr || ctx->vp == nullptr || ctx->vm == nullptr || src == nullptr || dst == nullptr || width < 1 ||
        (depth != 3 && depth != 4)) {
        return;
    }
    const korvane::FlushDenormals mode;
    korvane::blur_line_scalar(ctx, src, dst, width, depth);
}
