// SPDX-License-Identifier: Apache-2.0
// What the recursive Gaussian and its twin share: from a distance in pixels to a deviation.
#ifndef KORVANE_ALGORITHMS_GAUSS_BLUR_IIR_COEFFICIENTS_H_
#define KORVANE_ALGORITHMS_GAUSS_BLUR_IIR_COEFFICIENTS_H_

namespace korvane {

// The deviation of the Gaussian that has faded to 1 / 255 at `distance` + 1 pixels.
float gaussiir_deviation(float distance);

}  // namespace korvane

#endif  // KORVANE_ALGORITHMS_GAUSS_BLUR_IIR_COEFFICIENTS_H_
