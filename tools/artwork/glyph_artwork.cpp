// SPDX-License-Identifier: Apache-2.0
#include "tools/artwork/glyph_artwork.h"

#include <algorithm>
#include <cmath>

namespace korvane {

const GlyphSet kGlyphSets[2] = {
    {"4_to_3", 90, 60, 160, 118.0, 68.0, 14.0},
    {"16_to_9", 66, 42, 108, 80.0, 49.0, 10.0},
};

namespace {

struct Point {
    double x;
    double y;
};

// How far round forms reach beyond the flat ones, as a part of the cap height.
constexpr double kOvershoot = 0.012;

// Control points of a quarter ellipse lie at this part of its radius; a little more than the circle's 0.5523 gives the
// bowls the fuller shoulders that narrow digits need.
constexpr double kShoulder = 0.58;

// A pen path in a unit box: (0, 0) is the top left corner of the pen's centre line, (1, 1) the bottom right one.
class Pen {
  public:
    Pen& move(double x, double y) {
        m_Position = {x, y};
        return *this;
    }

    Pen& line(double x, double y) {
        add(m_Position, {x, y});
        m_Position = {x, y};
        return *this;
    }

    Pen& cubic(Point a, Point b, Point end) {
        constexpr int kPieces = 48;
        const Point start = m_Position;
        Point last = start;
        for (int i = 1; i <= kPieces; ++i) {
            const double t = static_cast<double>(i) / kPieces;
            const double u = 1.0 - t;
            const double w0 = u * u * u;
            const double w1 = 3.0 * u * u * t;
            const double w2 = 3.0 * u * t * t;
            const double w3 = t * t * t;
            const Point next = {w0 * start.x + w1 * a.x + w2 * b.x + w3 * end.x,
                                w0 * start.y + w1 * a.y + w2 * b.y + w3 * end.y};
            add(last, next);
            last = next;
        }
        m_Position = end;
        return *this;
    }

    // A quarter of an ellipse to (x, y) that leaves the current point sideways or up and down.
    Pen& quarterSideways(double x, double y) {
        const Point from = m_Position;
        return cubic({from.x + kShoulder * (x - from.x), from.y}, {x, y - kShoulder * (y - from.y)}, {x, y});
    }
    Pen& quarterUpright(double x, double y) {
        const Point from = m_Position;
        return cubic({from.x, from.y + kShoulder * (y - from.y)}, {x - kShoulder * (x - from.x), y}, {x, y});
    }

    // A whole bowl between the given edges.
    Pen& bowl(double left, double top, double right, double bottom) {
        const double x = (left + right) / 2;
        const double y = (top + bottom) / 2;
        return move(left, y).quarterUpright(x, top).quarterSideways(right, y).quarterUpright(x, bottom).quarterSideways(
            left, y);
    }

    struct Segment {
        Point from;
        Point to;
    };
    const std::vector<Segment>& segments() const { return m_Segments; }

    // The path turned by half a turn about the middle of its box.
    Pen turned() const {
        Pen pen;
        for (const Segment& segment : m_Segments) {
            pen.add({1.0 - segment.from.x, 1.0 - segment.from.y}, {1.0 - segment.to.x, 1.0 - segment.to.y});
        }
        return pen;
    }

  private:
    void add(Point from, Point to) { m_Segments.push_back({from, to}); }

    Point m_Position{};
    std::vector<Segment> m_Segments;
};

constexpr double kTop = -kOvershoot;
constexpr double kBottom = 1.0 + kOvershoot;

Pen draw_six() {
    Pen pen;
    pen.move(0.90, 0.17).cubic({0.82, 0.06}, {0.70, kTop}, {0.55, kTop});
    pen.cubic({0.20, kTop}, {0.0, 0.26}, {0.0, 0.66});
    pen.bowl(0.0, 0.375, 1.0, kBottom);
    return pen;
}

Pen digit_path(char digit) {
    Pen pen;
    switch (digit) {
        case '0':
            pen.move(0.0, 0.64).line(0.0, 0.36).quarterUpright(0.5, kTop).quarterSideways(1.0, 0.36);
            pen.line(1.0, 0.64).quarterUpright(0.5, kBottom).quarterSideways(0.0, 0.64);
            break;
        case '1':
            // No foot; the stem stands right of the middle so that flag and stem together look centred.
            pen.move(0.20, 0.20).line(0.62, 0.0).line(0.62, 1.0);
            break;
        case '2':
            pen.move(0.03, 0.27).quarterUpright(0.5, kTop).quarterSideways(0.97, 0.275);
            pen.cubic({0.97, 0.47}, {0.70, 0.60}, {0.0, 1.0}).line(1.0, 1.0);
            break;
        case '3':
            pen.move(0.04, 0.21).cubic({0.10, 0.07}, {0.26, kTop}, {0.47, kTop}).quarterSideways(0.93, 0.235);
            pen.quarterUpright(0.46, 0.47).line(0.34, 0.47);
            pen.move(0.46, 0.47).quarterSideways(1.0, 0.735).quarterUpright(0.48, kBottom);
            pen.cubic({0.24, kBottom}, {0.06, 0.92}, {0.0, 0.77});
            break;
        case '4':
            pen.move(0.73, 1.0).line(0.73, 0.0).line(0.0, 0.71).line(1.0, 0.71);
            break;
        case '5':
            pen.move(0.90, 0.0).line(0.15, 0.0).line(0.07, 0.47);
            pen.cubic({0.18, 0.39}, {0.32, 0.355}, {0.48, 0.355}).quarterSideways(1.0, 0.68);
            pen.quarterUpright(0.46, kBottom).cubic({0.24, kBottom}, {0.08, 0.94}, {0.0, 0.81});
            break;
        case '6':
            return draw_six();
        case '7':
            pen.move(0.0, 0.0).line(1.0, 0.0).line(0.35, 1.0);
            break;
        case '8':
            // The upper bowl is smaller than the lower one: equal bowls look top-heavy.
            pen.bowl(0.055, kTop, 0.945, 0.47).bowl(0.0, 0.47, 1.0, kBottom);
            break;
        case '9':
            return draw_six().turned();
        default:
            break;
    }
    return pen;
}

double distance_to(const Pen::Segment& segment, Point p) {
    const double dx = segment.to.x - segment.from.x;
    const double dy = segment.to.y - segment.from.y;
    const double lengthSquared = dx * dx + dy * dy;
    double t = 0.0;
    if (lengthSquared > 0.0) {
        t = std::clamp(((p.x - segment.from.x) * dx + (p.y - segment.from.y) * dy) / lengthSquared, 0.0, 1.0);
    }
    const double x = segment.from.x + t * dx - p.x;
    const double y = segment.from.y + t * dy - p.y;
    return std::sqrt(x * x + y * y);
}

// Inks the pixels near `segments`, which are in pixels. A pixel's coverage falls from 1 to 0 over the one pixel around
// the pen's edge.
void ink(GlyphImage& image, const std::vector<Pen::Segment>& segments, double radius) {
    for (int row = 0; row < image.height; ++row) {
        for (int column = 0; column < image.width; ++column) {
            double nearest = 1e9;
            for (const Pen::Segment& segment : segments) {
                nearest = std::min(nearest, distance_to(segment, {column + 0.5, row + 0.5}));
            }
            const double coverage = std::clamp(radius - nearest + 0.5, 0.0, 1.0);
            image.pixels[static_cast<size_t>(row) * static_cast<size_t>(image.width) + static_cast<size_t>(column)] =
                static_cast<unsigned char>(255.0 - std::floor(coverage * 255.0 + 0.5));
        }
    }
}

}  // namespace

GlyphImage draw_glyph(const GlyphSet& set, char character) {
    const bool isDigit = character >= '0' && character <= '9';
    GlyphImage image;
    image.width = isDigit ? set.digitWidth : set.markWidth;
    image.height = set.height;
    image.pixels.assign(static_cast<size_t>(image.width) * static_cast<size_t>(image.height), 255);

    const double capTop = (set.height - set.capHeight) / 2;
    const double middle = image.width / 2.0;
    std::vector<Pen::Segment> segments;
    double radius = set.stem / 2;
    if (isDigit) {
        const double width = set.digitInkWidth - set.stem;
        const double height = set.capHeight - set.stem;
        const double left = middle - width / 2;
        const double top = capTop + radius;
        const Pen path = digit_path(character);
        for (const Pen::Segment& segment : path.segments()) {
            segments.push_back({{left + segment.from.x * width, top + segment.from.y * height},
                                {left + segment.to.x * width, top + segment.to.y * height}});
        }
    } else if (character == ':') {
        // Between digits a colon belongs in the middle of their height, and its dots are heavier than a stem.
        radius = set.stem * 0.64;
        for (const double height : {0.29, 0.71}) {
            const Point dot = {middle, capTop + height * set.capHeight};
            segments.push_back({dot, dot});
        }
    } else if (character == '-') {
        const double half = set.markWidth * 0.30 - radius * 0.5;
        const double y = capTop + 0.5 * set.capHeight;
        segments.push_back({{middle - half, y}, {middle + half, y}});
    }
    if (!segments.empty()) {
        ink(image, segments, radius);
    }
    return image;
}

GlyphImage draw_column(const GlyphSet& set, const std::string& characters) {
    GlyphImage column;
    for (const char character : characters) {
        const GlyphImage glyph = draw_glyph(set, character);
        column.width = glyph.width;
        column.height += glyph.height;
        column.pixels.insert(column.pixels.end(), glyph.pixels.begin(), glyph.pixels.end());
    }
    return column;
}

std::string to_pgm(const GlyphImage& image) {
    std::string text = "P5\n" + std::to_string(image.width) + " " + std::to_string(image.height) + "\n255\n";
    text.append(image.pixels.begin(), image.pixels.end());
    return text;
}

}  // namespace korvane
