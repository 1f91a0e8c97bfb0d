// SPDX-License-Identifier: Apache-2.0
// FAST corner detection: pixels whose circle of 16 neighbours has an arc of nine that are all darker, or all brighter,
// than the centre by more than a threshold.
//
// The circle is the Bresenham circle of radius 3. The score of a corner is the largest threshold at which it still
// passes, which makes scores comparable; non-maximum suppression keeps corners that score strictly higher than their
// eight neighbours. The result is then thinned to at most one corner in each cell of min_dist columns by min_dist / 2
// rows.
//
// Images are 8-bit grey, `width` bytes a row without padding. No state is kept; any thread may call. Published source:
// E. Rosten and T. Drummond, "Machine learning for high-speed corner detection", ECCV 2006.
#ifndef KORVANE_ALGORITHMS_FAST_DETECTION_H_
#define KORVANE_ALGORITHMS_FAST_DETECTION_H_

#include <vector>

#include "frameworks/core/export.h"

struct FastParams {
    int threshold;           // least difference of intensity is threshold + 1; taken into 0 ... 255
    int nonmax_suppression;  // non-zero: only local maxima of the score
    int min_dist;            // thinning distance in pixels; below 0 counts as 0 (see fast16)
    int skipped_pixels;      // carried for callers; the detector does not read it
    int borderx;             // columns skipped at the left and right, 3 or more
    int bordery;             // rows skipped at the top and bottom, 3 or more
};

struct KeyPoint {
    int x;
    int y;
    int* values;  // for callers' own use; null from the detector
};

// Fills pixel[0 ... 24] with the circle's offsets (dx + dy * rowStride), wrapped round so that an arc of nine can be
// read from any start. `patternSize` is the number of pixels on the circle: 16, 12 or 8; any other leaves `pixel`
// alone.
KORVANE_API void makeOffsets(int* pixel, int rowStride, int patternSize);

// The largest threshold at which the pixel at `ptr` passes the 9-of-16 test, dark or bright, but at least
// `threshold` - 1. `pixel` holds the 25 offsets of makeOffsets for size 16.
KORVANE_API int cornerScore16(const unsigned char* ptr, const int* pixel, int threshold);

// Replaces the content of `keypoints` by the corners of `img`, row by row from the left.
//
// Thinning: a corner in column x falls in bin x / min_dist, and in each band of min_dist / 2 rows the leftmost corner
// of a bin wins; bins 32 apart count as one. Where min_dist / 2 is 0 the whole image is one band: min_dist 1 keeps at
// most 32 corners, min_dist 0 or below only one.
//
// With a border below 3 the circle of a pixel near the left or right edge runs on into the neighbouring rows, and what
// is found there means little; pixels whose circle would leave the buffer are not tested. A null pointer, an empty
// image, or short memory gives no corners.
KORVANE_API void fast16(const unsigned char* img, std::vector<KeyPoint>& keypoints, int width, int height,
                        const FastParams* params);

#endif  // KORVANE_ALGORITHMS_FAST_DETECTION_H_
