// SPDX-License-Identifier: Apache-2.0
// The filters on the processor, in double precision: what each shader means, written down a second time.
#ifndef KORVANE_TESTS_APPLICATIONS_FILTERS_REFERENCE_FILTERS_H_
#define KORVANE_TESTS_APPLICATIONS_FILTERS_REFERENCE_FILTERS_H_

#include <string>
#include <vector>

struct ReferenceImage {
    int width = 0;
    int height = 0;
    int depth = 4;  // bytes a pixel
    std::vector<unsigned char> pixels;
};

// The parameters as the shader sees them.
struct ReferenceParameters {
    double strength = 0;
    double radius = 0;
    double centerx = 0;
    double centery = 0;
    double zoom = 0;
    const ReferenceImage* table = nullptr;
};

// `name` without its "ImageFilter", turned as camera frames are. Rows of the result run upwards, as GL reads them back.
ReferenceImage reference_filter(const std::string& name, const ReferenceParameters& parameters,
                                const ReferenceImage& input, int width, int height);

// No byte is more than `largest` steps away, and the mean is at most `mean` away: one rounding apart in most places is
// the worst there may be.
void expect_close(const ReferenceImage& expected, const std::vector<unsigned char>& pixels, int largest,
                  double mean = 0.8);

// An asymmetric picture, smooth enough that a small difference in a coordinate stays a small one in color, with its
// four corners told apart by color and alpha that is not flat. Its brightness runs through all four quarters.
ReferenceImage smooth_picture(int width, int height);

#endif  // KORVANE_TESTS_APPLICATIONS_FILTERS_REFERENCE_FILTERS_H_
