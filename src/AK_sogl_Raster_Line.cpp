// Points, lines and bitmaps of the rasteriser.
//
// Everything is first mapped to whole pixels, depths and colours and then stepped through. The steps are counted from
// the true start, also where only a part of them can meet the buffer, so that a line does not depend on the buffer's
// size. Lines lie a pixel right of the triangles that they bound (AK_sogl_Raster_Triangle.cpp): outlines drawn
// over filled faces depend on that.

#include "AK_sogl.h"

#include "AK_sogl_Internal.h"

#include <algorithm>
#include <cmath>

namespace
{

struct Range {
    int first, end;
};

/// The integers i of 0 to count - 1 for which start + i lies in 0 to limit - 1: those from first up to end.
Range InsideRange(std::int64_t start, std::int64_t count, std::int64_t limit)
{
    return {int(std::max<std::int64_t>(0, -start)), int(std::min(count, limit - start))};
}

}   // namespace

void soglPoint(const float position[3], const float colour[3], float size, float alpha)
{
    if (!soglBufZ) return;
    const int depth = soglMapDepth(position[2]);
    const int r = soglMapColour(colour[0]);
    const int g = soglMapColour(colour[1]);
    const int b = soglMapColour(colour[2]);
    const int left = soglTruncate(soglMapCoordinate(position[0], soglWidth) - size / 2.0);
    const int bottom = soglTruncate(soglMapCoordinate(position[1], soglHeight) - size / 2.0);
    const int pixels = soglTruncate(std::ceil(size));   // a size below 1 still gives a pixel
    const Range columns = InsideRange(left, pixels, soglWidth);
    const Range rows = InsideRange(bottom, pixels, soglHeight);
    for (int row = rows.first; row < rows.end; ++row)
        for (int column = columns.first; column < columns.end; ++column)
            soglPixel(left + column, bottom + row, depth, r, g, b, alpha);
}

namespace
{

/// The end of a line in whole units.
struct LineEnd {
    int x, y, depth, colour[3];
};

LineEnd MapLineEnd(const float position[3], const float colour[3])
{
    return {
        soglMapCoordinate(position[0], soglWidth),
        soglMapCoordinate(position[1], soglHeight),
        soglMapDepth(position[2]),
        {soglMapColour(colour[0]), soglMapColour(colour[1]), soglMapColour(colour[2])}
    };
}

}   // namespace

void soglLine(const float p0[3], const float p1[3], const float c0[3], const float c1[3], float width, float a0,
              float a1)
{
    if (!soglBufZ) return;
    const LineEnd from = MapLineEnd(p0, c0);
    const LineEnd to = MapLineEnd(p1, c1);
    const int dx = to.x - from.x;
    const int dy = to.y - from.y;
    const bool alongX = std::abs(dx) > std::abs(dy);
    const int major = alongX ? dx : dy;
    const int minor = alongX ? dy : dx;
    const int majorStart = alongX ? from.x : from.y;
    const int minorStart = alongX ? from.y : from.x;
    const int majorLimit = alongX ? soglWidth : soglHeight;
    const int minorLimit = alongX ? soglHeight : soglWidth;
    const int half = soglTruncate(0.5 * (width + 0.5));
    const int across = soglTruncate(width + 0.5);

    // Downwards the start counts from the other end of the buffer.
    const int steps = std::abs(major);
    const int sign = major < 0 ? -1 : 1;
    const Range visible = InsideRange(sign > 0 ? majorStart : majorLimit - 1 - majorStart, steps, majorLimit);
    for (int i = visible.first; i < visible.end; ++i) {
        const double t = double(i) / steps;
        const int depth = soglTruncate(t * (double(to.depth) - from.depth) + from.depth + 0.5);
        int colour[3];
        for (int k = 0; k < 3; ++k)
            colour[k] = soglTruncate(t * (double(to.colour[k]) - from.colour[k]) + from.colour[k]);
        // A product, not a sum: a blended line with equal ends is invisible. Pictures rely on it.
        const double alpha = a0 * t * (double(a1) - a0);
        const int lowest = soglTruncate(t * minor + minorStart + 0.5) - half;
        const Range band = InsideRange(lowest, across, minorLimit);
        for (int k = band.first; k < band.end; ++k) {
            const int x = alongX ? majorStart + sign * i : lowest + k;
            const int y = alongX ? lowest + k : majorStart + sign * i;
            soglPixel(x, y, depth, colour[0], colour[1], colour[2], alpha);
        }
    }
}

namespace
{

int MovedBy(int position, float move)
{
    return soglTruncate(double(position) + soglTruncate(move));
}

/// The lower left corner of the bitmap at (left, bottom); does not move the raster position.
void DrawBitmap(int width, int height, const unsigned char* bits, int left, int bottom)
{
    const int r = soglMapColour(soglCurCol[0]);
    const int g = soglMapColour(soglCurCol[1]);
    const int b = soglMapColour(soglCurCol[2]);
    const Range columns = InsideRange(left, width, soglWidth);
    const Range rows = InsideRange(bottom, height, soglHeight);
    const std::size_t rowBytes = std::size_t((width - 1) / 8 + 1);
    for (int row = rows.first; row < rows.end; ++row) {
        const unsigned char* line = bits + std::size_t(row) * rowBytes;
        for (int i = columns.first; i < columns.end; ++i)
            if (line[i / 8] & (0x80 >> i % 8))
                soglPixel(left + i, bottom + row, soglRasterPos[2], r, g, b, soglCurAlfa);
    }
}

}   // namespace

void soglBitmap(int width, int height, const unsigned char* bits, float xOrigin, float yOrigin, float xMove,
                float yMove)
{
    const int left = soglTruncate(double(soglRasterPos[0]) - xOrigin);
    const int bottom = soglTruncate(double(soglRasterPos[1]) - yOrigin);
    if (soglBufZ && bits && width > 0) DrawBitmap(width, height, bits, left, bottom);
    soglRasterPos[0] = MovedBy(soglRasterPos[0], xMove);
    soglRasterPos[1] = MovedBy(soglRasterPos[1], yMove);
}
