// SPDX-License-Identifier: Apache-2.0
#include "algorithms/gauss_blur_iir_coefficients.h"

#include <cmath>

#include "algorithms/gauss_blur_iir.h"

float korvane::gaussiir_deviation(float distance) {
    constexpr float kTwiceLogOf255 = 11.0825271F;
    const float reach = distance + 1.0F;
    return std::sqrt(reach * reach / kTwiceLogOf255);
}

void calculate_gauss_iir_coefficients(gaussiirContext* ctx, float std_dev) {
    if (ctx == nullptr) {
        return;
    }
    // Deriche's fit: two damped oscillations, with decay x0 and x1, frequency x2 and x3 and the amplitudes x4 to x7.
    const float div = std_dev * 2.5066282746310002F;
    const float x0 = -1.783F / std_dev;
    const float x1 = -1.723F / std_dev;
    const float x2 = 0.6318F / std_dev;
    const float x3 = 1.997F / std_dev;
    const float x4 = 1.6803F / div;
    const float x5 = 3.735F / div;
    const float x6 = -0.6803F / div;
    const float x7 = -0.2598F / div;

    const float sin2 = std::sin(x2);
    const float cos2 = std::cos(x2);
    const float sin3 = std::sin(x3);
    const float cos3 = std::cos(x3);
    const float exp0 = std::exp(x0);
    const float exp1 = std::exp(x1);
    const float exp01 = std::exp(x0 + x1);
    const float exp00 = std::exp(2.0F * x0);
    const float exp11 = std::exp(2.0F * x1);
    const float exp001 = std::exp(x1 + 2.0F * x0);
    const float exp011 = std::exp(x0 + 2.0F * x1);

    ctx->np[0] = 1.0F / div;
    ctx->np[1] = exp1 * (x7 * sin3 - (x6 + 2.0F * x4) * cos3) + exp0 * (x5 * sin2 - (2.0F * x6 + x4) * cos2);
    ctx->np[2] =
        2.0F * exp01 * ((x4 + x6) * cos3 * cos2 - x5 * cos3 * sin2 - x7 * cos2 * sin3) + x6 * exp00 + x4 * exp11;
    ctx->np[3] = exp001 * (x7 * sin3 - x6 * cos3) + exp011 * (x5 * sin2 - x4 * cos2);
    ctx->np[4] = 0.0F;

    ctx->dp[0] = 0.0F;
    ctx->dp[1] = -2.0F * exp1 * cos3 - 2.0F * exp0 * cos2;
    ctx->dp[2] = 4.0F * cos3 * cos2 * exp01 + exp11 + exp00;
    ctx->dp[3] = -2.0F * cos2 * exp011 - 2.0F * cos3 * exp001;
    ctx->dp[4] = std::exp(-7.012F / std_dev);

    float sumNp = 0;
    float sumNm = 0;
    float sumDp = 0;
    for (int i = 0; i < 5; ++i) {
        ctx->dm[i] = ctx->dp[i];
        ctx->nm[i] = i == 0 ? 0.0F : ctx->np[i] - ctx->dp[i] * ctx->np[0];
        sumNp += ctx->np[i];
        sumNm += ctx->nm[i];
        sumDp += ctx->dp[i];
    }
    const float steadyP = sumNp / (1.0F + sumDp);
    const float steadyM = sumNm / (1.0F + sumDp);
    for (int i = 0; i < 5; ++i) {
        ctx->bp[i] = i == 0 ? 0.0F : ctx->dp[i] * steadyP;
        ctx->bm[i] = i == 0 ? 0.0F : ctx->dp[i] * steadyM;
    }
}
