// SPDX-License-Identifier: Apache-2.0
// The drawn portrait: what a photo of a face has, and a house lacks. Skin in soft gradients under light from the upper
// left, with freckles and pores; hair in strands; a knitted collar; lights out of focus behind.
#ifndef KORVANE_TOOLS_PORTRAIT_H_
#define KORVANE_TOOLS_PORTRAIT_H_

#include "tools/drawing.h"

namespace korvane {

class Portrait : drawing::Brush {
  public:
    // `centre` is where the face is, from the left, in picture heights.
    Portrait(float pixelsPerHeight, float centre) : Brush(pixelsPerHeight), m_Centre(centre) {}

    drawing::Paint at(drawing::Point p) const;

  private:
    drawing::Paint lights(drawing::Point p) const;
    drawing::Paint hair(drawing::Point p) const;
    drawing::Paint skin(drawing::Point p) const;
    drawing::Paint wool(drawing::Point p) const;
    drawing::Paint eye(drawing::Point p, drawing::Point centre, drawing::Paint paint) const;
    drawing::Paint mouth(drawing::Point p, drawing::Paint paint) const;

    float m_Centre;
};

}  // namespace korvane

#endif  // KORVANE_TOOLS_PORTRAIT_H_
