// Filled triangles of the rasteriser: scan conversion by vertical spans.
//
// The vertices are sorted by x into A, B, C. Each column of pixels between A and C cuts the long edge AC and one of the
// short edges AB, BC; what lies between the two cuts is a span, drawn from its lower end up to but excluding its upper
// one. Columns run from A up to but excluding C:
//
//        C               In whole pixels B lies above AC (as drawn) or below it. That decides once for the whole
//       /|               triangle which of the two cuts is the lower end of every span.
//   B  / |
//    \/  |               Triangles that share an edge share its cuts, so a surface has neither gaps nor pixels drawn
//   / \ /                twice.
//  A---'

#include "AK_sogl.h"

#include "AK_sogl_Internal.h"

#include <algorithm>

namespace
{

/// A vertex in whole units; alpha is interpolated as it is.
struct Corner {
    int x, y, depth, colour[3];
    double alpha;
};

/// One end of a span.
struct Cut {
    int y;
    double depth, colour[3], alpha;
};

Corner MapCorner(const float position[3], const float colour[3], float alpha)
{
    const int column = soglMapCoordinate(position[0], soglWidth);
    return {
        soglTruncate(column - 0.5), // one pixel to the left of lines and points; column 0 stays
        soglMapCoordinate(position[1], soglHeight),
        soglMapDepth(position[2]),
        {soglMapColour(colour[0]), soglMapColour(colour[1]), soglMapColour(colour[2])},
        alpha
    };
}

/// Where a column cuts an edge, at `fraction` of the way from its first to its second end.
Cut CutEdge(const Corner& from, const Corner& to, double fraction)
{
    Cut cut;
    cut.y = soglTruncate((to.y - from.y) * fraction + from.y);
    cut.depth = (double(to.depth) - from.depth) * fraction + from.depth;
    for (int i = 0; i < 3; ++i) cut.colour[i] = (double(to.colour[i]) - from.colour[i]) * fraction + from.colour[i];
    cut.alpha = (to.alpha - from.alpha) * fraction + from.alpha;
    return cut;
}

void DrawSpan(int x, const Cut& low, const Cut& high)
{
    const int rows = high.y - low.y;
    const int first = std::max(low.y, 0);
    const int end = std::min(high.y, soglHeight);
    const double depthRise = high.depth - low.depth;
    const double rRise = high.colour[0] - low.colour[0];
    const double gRise = high.colour[1] - low.colour[1];
    const double bRise = high.colour[2] - low.colour[2];
    const double alphaRise = high.alpha - low.alpha;
    for (int y = first; y < end; ++y) {
        const double f = double(y - low.y) / rows;
        soglPixel(x, y, soglTruncate(depthRise * f + low.depth), soglTruncate(rRise * f + low.colour[0]),
                  soglTruncate(gRise * f + low.colour[1]), soglTruncate(bRise * f + low.colour[2]),
                  alphaRise * f + low.alpha);
    }
}

/// The columns of one half: those over the short edge. The long edge has the same cuts in both halves.
void DrawHalf(const Corner& longFrom, const Corner& longTo, const Corner& shortFrom, const Corner& shortTo,
              bool longIsLow)
{
    const int longColumns = longTo.x - longFrom.x;
    const int shortColumns = shortTo.x - shortFrom.x;
    const int first = std::max(shortFrom.x, 0);
    const int end = std::min(shortTo.x, soglWidth);
    for (int x = first; x < end; ++x) {
        const Cut onLong = CutEdge(longFrom, longTo, double(x - longFrom.x) / longColumns);
        const Cut onShort = CutEdge(shortFrom, shortTo, double(x - shortFrom.x) / shortColumns);
        if (longIsLow)
            DrawSpan(x, onLong, onShort);
        else
            DrawSpan(x, onShort, onLong);
    }
}

/// Positions of the corner with the smallest and the largest x, the first among equals, and of the third one.
struct Order {
    int a, b, c;
};

Order SortByX(const float positions[3][3])
{
    Order order = {0, 0, 0};
    for (int i = 1; i < 3; ++i) {
        if (positions[i][0] < positions[order.a][0]) order.a = i;
        if (positions[i][0] > positions[order.c][0]) order.c = i;
    }
    order.b = 3 - order.a - order.c;
    return order;
}

}   // namespace

void soglTriangle(const float positions[3][3], const float colours[3][3], const float alphas[3])
{
    if (!soglBufZ) return;
    const Order order = SortByX(positions);
    if (order.a == order.c) return;
    // Alphas are not sorted with their vertices: A, C and B take them in stored order. Pictures rely on it.
    const Corner a = MapCorner(positions[order.a], colours[order.a], alphas[0]);
    const Corner c = MapCorner(positions[order.c], colours[order.c], alphas[1]);
    const Corner b = MapCorner(positions[order.b], colours[order.b], alphas[2]);

    if (c.x < 0 || a.x > soglWidth) return;
    const auto [bottom, top] = std::minmax({a.y, b.y, c.y});
    if (top < 0 || bottom > soglHeight) return;
    if (a.x == c.x) return;
    if (b.x < a.x || b.x > c.x) return;   // only when b.x is not a number
    const std::int64_t above = std::int64_t(b.y - a.y) * (c.x - a.x);
    const std::int64_t below = std::int64_t(b.x - a.x) * (c.y - a.y);
    if (above == below) return;

    const bool longIsLow = above > below;
    DrawHalf(a, c, a, b, longIsLow);
    DrawHalf(a, c, b, c, longIsLow);
}
