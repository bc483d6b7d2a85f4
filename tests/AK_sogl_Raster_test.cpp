// The rasteriser's rules of coverage, depth, blending, offset and light. Expected pixels are worked out on paper: the
// canvases have sizes that are powers of two, so that whole columns and rows map exactly.

#include "AK_sogl_Canvas.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

namespace
{

const std::string nothing = "\n........\n........\n........\n........\n........\n........\n........\n........\n";

/// The depth unit that a z in -1 to 1 maps to, and a z that surely maps to a depth.
float ZOfDepth(double depth)
{
    return float((depth + 0.5) / 65535 * 2 - 1);
}

}   // namespace

// ---- Coverage

TEST(AK_sogl_Raster, TrianglesCoverTheseColumnsAndRows)
{
    const struct {
        const char* why;
        std::vector<std::vector<double>> corners;
        std::string picture;
    } cases[] = {
        {"right side upright: no second half; a column to the left; C and upper ends excluded",
         {{1, 1}, {7, 1}, {7, 7}},
         R"(
........
........
.....#..
....##..
...###..
..####..
.#####..
........
)"                                                                                                                        },
        {"left side upright, other way round: no first half",
         {{7, 1}, {1, 7}, {1, 1}},
         R"(
........
#.......
##......
###.....
####....
#####...
######..
........
)"                                                                                                                        },
        {"B below the long side",
         {{1, 3}, {4, 0}, {7, 6}},
         R"(
........
........
........
....##..
..###...
.####...
..##....
...#....
)"                                                                                                                        },
        {"column 0 stays in its place",
         {{0, 0}, {2, 0}, {0, 2}},
         R"(
........
........
........
........
........
........
#.......
#.......
)"                                                                                                                        },
        {"corners beyond the buffer: no clip, no wrap",
         {{-15, 0}, {17, 0}, {1, 16}},
         R"(
########
########
########
########
########
########
########
########
)"                                                                                                                        },
        {"all in one column",                                                                   {{3, 0}, {3, 4}, {3, 8}},    nothing},
        {"on one line",                                                                         {{1, 0}, {4, 3}, {7, 6}},    nothing},
        {"left of the buffer",                                                                  {{-9, 0}, {-3, 5}, {-1, 2}}, nothing},
    };
    for (const auto& c : cases) {
        const Canvas canvas(8, 8);
        canvas.Triangle(c.corners);
        EXPECT_EQ(canvas.Picture(), c.picture) << c.why;
    }
}

TEST(AK_sogl_Raster, NeighboursShareAnEdgeWithoutGapOrDoublePixel)
{
    const Canvas canvas(64, 64);
    soglEnable(GL_BLEND);   // a pixel drawn twice is brighter
    soglColor4f(1, 1, 1, 0.5f);
    const std::vector<double> hub = {31, 29};
    const std::vector<std::vector<double>> rim = {
        {60, 30},
        {50, 55},
        {25, 60},
        {3,  33},
        {9,  7 },
        {40, 2 }
    };
    for (std::size_t i = 0; i < rim.size(); ++i) canvas.Triangle({hub, rim[i], rim[(i + 1) % rim.size()]});
    long once = 0;
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            EXPECT_TRUE(canvas.R(x, y) == 0 || canvas.R(x, y) == 127) << x << " " << y;
            once += canvas.R(x, y) == 127;
        }
    }
    EXPECT_NEAR(double(once), 2306, 20);   // the area of the hexagon, by the shoelace formula
    for (int x = 5; x < 58; ++x) {
        std::string column;
        for (int y = 0; y < 64; ++y) column += canvas.R(x, y) ? '#' : '.';
        const auto first = column.find('#'), last = column.rfind('#');
        EXPECT_EQ(column.find('.', first), last + 1) << "a gap in column " << x;
    }
}

TEST(AK_sogl_Raster, LinesStepAlongTheirLongerDirection)
{
    const struct {
        const char* why;
        double from[2], to[2];
        float width;
        std::string picture;
    } cases[] = {
        {"along x, without its end",   {0, 1},  {6, 4},  1, R"(
........
........
........
.....#..
...##...
.##.....
#.......
........
)"    },
        {"equal extents step along y", {1, 1},  {4, 4},  1, R"(
........
........
........
........
...#....
..#.....
.#......
........
)"    },
        {"downwards",                  {6, 6},  {5, 1},  1, R"(
........
......#.
......#.
......#.
.....#..
.....#..
........
........
)"    },
        {"three wide",                 {1, 4},  {5, 4},  3, R"(
........
........
.####...
.####...
.####...
........
........
........
)"    },
        {"cut by the buffer",          {-4, 9}, {12, 1}, 2, R"(
##......
####....
..####..
....####
......##
........
........
........
)"    },
        {"no extent",                  {3, 3},  {3, 3},  5, nothing},
        {"no width",                   {1, 1},  {6, 1},  0, nothing},
    };
    for (const auto& c : cases) {
        const Canvas canvas(8, 8);
        soglLineWidth(c.width);
        soglBegin(GL_LINES);
        canvas.Vertex(c.from[0], c.from[1]);
        canvas.Vertex(c.to[0], c.to[1]);
        soglEnd();
        EXPECT_EQ(canvas.Picture(), c.picture) << c.why;
    }
}

TEST(AK_sogl_Raster, PointsAreSquares)
{
    const struct {
        float size;
        int left, right;   // first and last column and row of a point at (5, 5)
    } cases[] = {
        {1,    4, 4},
        {2,    4, 5},
        {3,    3, 5},
        {4,    3, 6},
        {0.5f, 4, 4},
        {2.5f, 3, 5}
    };
    for (const auto& c : cases) {
        const Canvas canvas(8, 8);
        soglPointSize(c.size);
        soglBegin(GL_POINTS);
        canvas.Vertex(5, 5);
        soglEnd();
        const int side = c.right - c.left + 1;
        EXPECT_EQ(canvas.Drawn(), side * side) << c.size;
        EXPECT_TRUE(canvas.R(c.left, c.left) && canvas.R(c.right, c.right)) << c.size;
    }
}

TEST(AK_sogl_Raster, BitmapsHangAtTheRasterPositionAndMoveIt)
{
    const unsigned char bits[] = {0x80, 0x40, 0xff, 0xc0};   // 10 wide: two bytes a row, lowest row first
    const Canvas canvas(8, 8);
    soglColor4f(1, 1, 1, 0.5f);
    soglRasterPos2f(canvas.X(2), canvas.Y(4));
    soglBitmap(10, 2, bits, 1.5f, 0, 3.9f, -1.9f);
    EXPECT_EQ(soglRasterPos[0], 5);
    EXPECT_EQ(soglRasterPos[1], 3);
    soglBitmap(0, 0, nullptr, 0, 0, -2, 0);   // moves only
    EXPECT_EQ(soglRasterPos[0], 3);
    EXPECT_EQ(canvas.Picture(), R"(
........
........
########
#.......
........
........
........
........
)") << "the tenth column of the lower row is outside";
    EXPECT_EQ(canvas.Z(0, 4), 32767);
}

// ---- Primitives

TEST(AK_sogl_Raster, OutlinesOfFaces)
{
    const struct {
        const char* why;
        unsigned mode, primitive;
        std::vector<std::vector<double>> corners;
        std::string picture;
    } cases[] = {
        {"a quad without its diagonal",          GL_LINE,  GL_QUADS,     {{1, 1}, {6, 1}, {6, 6}, {1, 6}},         R"(
........
.######.
.#....#.
.#....#.
.#....#.
.#....#.
.######.
........
)"    },
        {"an open polygon is closed by its end", GL_LINE,  GL_POLYGON,   {{1, 1}, {4, 1}, {6, 3}, {6, 6}, {1, 6}}, R"(
........
.######.
.#....#.
.#....#.
.#....#.
.#...#..
.####...
........
)"    },
        {"a triangle",                           GL_LINE,  GL_TRIANGLES, {{1, 1}, {6, 1}, {6, 6}},                 R"(
........
......#.
.....##.
....#.#.
...#..#.
..#...#.
.######.
........
)"    },
        {"two corners make no polygon",          GL_LINE,  GL_POLYGON,   {{1, 1}, {6, 1}},                         nothing},
        {"every corner of a polygon once",       GL_POINT, GL_POLYGON,   {{2, 2}, {5, 2}, {7, 4}, {7, 7}, {2, 7}}, R"(
........
.#....#.
........
........
......#.
........
.#..#...
........
)"    },
    };
    for (const auto& c : cases) {
        const Canvas canvas(8, 8);
        soglPolygonMode(GL_FRONT_AND_BACK, c.mode);
        soglBegin(c.primitive);
        for (const auto& corner : c.corners) canvas.Vertex(corner[0], corner[1]);
        soglEnd();
        EXPECT_EQ(canvas.Picture(), c.picture) << c.why;
    }
}

TEST(AK_sogl_Raster, StripsQuadsAndUnknownPrimitives)
{
    const Canvas canvas(8, 8);
    soglBegin(GL_LINE_STRIP);
    for (const auto& p : {
             std::pair{0, 0},
             {3, 0},
             {3, 3}
    })
        canvas.Vertex(p.first, p.second);
    soglEnd();
    soglBegin(GL_QUADS);   // two quads in one primitive, the second one not complete: half of it is there
    for (const auto& p : {
             std::pair{5, 0},
             {7, 0},
             {7, 2},
             {5, 2},
             {2, 5},
             {6, 5},
             {6, 7}
    })
        canvas.Vertex(p.first, p.second);
    soglEnd();
    for (const unsigned mode : {GL_LINE_LOOP, GL_TRIANGLE_STRIP, GL_TRIANGLE_FAN, GL_QUAD_STRIP, 77u}) {
        soglBegin(mode);
        for (int i = 0; i < 9; ++i) canvas.Vertex(i % 8, (i * i) % 8);
        soglEnd();
        EXPECT_EQ(soglMode, -1);
    }
    canvas.Vertex(7, 7);   // outside of any primitive
    EXPECT_EQ(canvas.Picture(), R"(
........
........
...##...
........
........
...#....
...###..
######..
)");
}

// ---- Depth

TEST(AK_sogl_Raster, GreaterDepthIsNearerAndEqualDepthPaintsOver)
{
    const struct {
        const char* why;
        double first, second;
        bool test, mask, secondSeen;
        int depth;   // left in the buffer
    } cases[] = {
        {"nearer",                     100, 200,   true,  true,  true,  200  },
        {"farther",                    200, 100,   true,  true,  false, 200  },
        {"equal",                      200, 200,   true,  true,  true,  200  },
        {"farther, but nobody tests",  200, 100,   false, true,  true,  200  },
        {"nearer, but depth is kept",  100, 200,   true,  false, true,  100  },
        {"the nearest that is drawn",  100, 65534, true,  true,  true,  65534},
        {"65535 is dropped",           100, 65535, true,  true,  false, 100  },
        {"dropped without test, too",  100, 65535, false, true,  false, 100  },
        {"behind everything: dropped", 0,   -2,    false, true,  false, 0    },
    };
    for (const auto& c : cases) {
        const Canvas canvas(8, 8);
        soglColor3f(1, 0, 0);
        canvas.Triangle(
            {
                {1, 1},
                {7, 1},
                {7, 7}
        },
            ZOfDepth(c.first));
        if (!c.test) soglDisable(GL_DEPTH_TEST);
        soglDepthMask(c.mask);
        soglColor3f(0, 1, 0);
        canvas.Triangle(
            {
                {1, 1},
                {7, 1},
                {7, 7}
        },
            ZOfDepth(c.second));
        EXPECT_EQ(canvas.G(4, 2), c.secondSeen ? 255 : 0) << c.why;
        EXPECT_EQ(canvas.R(4, 2), c.secondSeen ? 0 : 255) << c.why;
        EXPECT_EQ(canvas.Z(4, 2), c.depth) << c.why;
    }
}

TEST(AK_sogl_Raster, DepthAndColourRunLinearlyOverFacesAndLines)
{
    const Canvas canvas(16, 16);
    soglBegin(GL_TRIANGLES);
    soglColor3f(0, 0, 0);
    canvas.Vertex(1, 0, -1);
    soglColor3f(80 / 255.0f, 0, 0);
    canvas.Vertex(9, 0, 0);
    canvas.Vertex(9, 8, 0);
    soglEnd();
    for (int x = 1; x < 8; ++x) {   // A at column 0, C at 8: 10 and 4095.875 a column
        EXPECT_EQ(canvas.R(x, 0), 10 * x);
        EXPECT_EQ(canvas.Z(x, 0), 32767 * x / 8);
    }
    soglBegin(GL_LINES);
    soglColor3f(0, 0, 0);
    canvas.Vertex(2, 12, -1);
    soglColor3f(80 / 255.0f, 0, 0);
    canvas.Vertex(10, 12, 0);
    soglEnd();
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(canvas.R(2 + i, 12), 10 * i);
        EXPECT_EQ(canvas.Z(2 + i, 12), int(32767 * i / 8.0 + 0.5)) << "lines round, faces cut";
    }
}

// ---- Blending

TEST(AK_sogl_Raster, BlendingWeighsByAlpha)
{
    const Canvas canvas(8, 8);
    soglColor3f(100 / 255.0f, 1, 0);
    canvas.Triangle({
        {0,  0 },
        {16, 0 },
        {0,  16}
    });
    soglEnable(GL_BLEND);
    soglColor4f(200 / 255.0f, 1, 0, 0.25f);
    canvas.Triangle({
        {0,  0 },
        {16, 0 },
        {0,  16}
    });
    EXPECT_EQ(canvas.R(2, 2), 125);
    EXPECT_EQ(canvas.G(2, 2), 255) << "the same colour over itself stays";

    soglColor4f(1, 0, 0, 0.9f);
    soglLineWidth(3);
    soglBegin(GL_LINES);
    canvas.Vertex(0, 4);
    canvas.Vertex(7, 4);
    soglEnd();
    EXPECT_EQ(canvas.R(2, 4), 125) << "equal alphas make a line invisible";
}

TEST(AK_sogl_Raster, AlphaOfALineIsAProduct)
{
    const Canvas canvas(16, 16);
    soglEnable(GL_BLEND);
    soglBegin(GL_LINES);
    soglColor4f(1, 1, 1, 0.5f);
    canvas.Vertex(0, 4);
    soglColor4f(1, 1, 1, 1);
    canvas.Vertex(8, 4);
    soglEnd();
    for (int i = 0; i < 8; ++i) EXPECT_EQ(canvas.R(i, 4), int(255 * (0.5 * i / 8 * 0.5)));
}

TEST(AK_sogl_Raster, AlphasOfATriangleKeepTheirStoredOrder)
{
    // Sorted by x the corners are 1, 2, 0; their alphas are taken as if they were 0, 2, 1.
    const Canvas canvas(16, 16);
    soglEnable(GL_BLEND);
    soglBegin(GL_TRIANGLES);
    soglColor4f(1, 1, 1, 0);
    canvas.Vertex(9, 8);
    soglColor4f(1, 1, 1, 1);
    canvas.Vertex(1, 0);
    soglColor4f(1, 1, 1, 1);
    canvas.Vertex(9 - 1e-4, 0);   // maps to column 8, row 0, but lies left of corner 0
    soglEnd();
    for (int x = 1; x < 7; ++x) EXPECT_EQ(canvas.R(x, 0), int(255.0 * x / 7)) << x;
}

// ---- Offset

TEST(AK_sogl_Raster, OffsetIsSlopeTimesFactorPlusUnits)
{
    const float flat[3][3] = {
        {0, 0, 0},
        {1, 0, 0},
        {0, 1, 0}
    };
    const float sloped[3][3] = {
        {0,    0,    0    },
        {0.5f, 0,    0.25f},
        {0,    0.5f, -1   }
    };   // slopes 0.5 and 2
    const float onEdge[3][3] = {
        {0, 0, 0},
        {0, 1, 0},
        {0, 2, 1}
    };   // no area: slope 1 / 1e-7
    const struct {
        const char* why;
        const float (*corners)[3];
        float factor, units;
        int offset;
    } cases[] = {
        {"units alone, in hundredths", flat,   5,     1.255f,  125       },
        {"negative, cut towards 0",    flat,   5,     -1.255f, -125      },
        {"the steeper direction",      sloped, 1,     0.005f,  200       },
        {"no area",                    onEdge, 1e-5f, 0,       9999      },
        {"beyond an int",              onEdge, 1e30f, 0,       1000000000},
    };
    for (const auto& c : cases) {
        const Canvas canvas(8, 8);
        soglEnable(GL_POLYGON_OFFSET_FILL);
        soglPgMode = GL_FILL;
        soglPolygonOffset(c.factor, c.units);
        EXPECT_EQ(soglComputePgOffset(c.corners), c.offset) << c.why;
        soglPgMode = GL_LINE;
        EXPECT_EQ(soglComputePgOffset(c.corners), 0) << c.why << ": switched on for another mode";
    }
}

TEST(AK_sogl_Raster, OffsetMovesAllDepthsOfItsPrimitiveOnly)
{
    const Canvas canvas(16, 16);
    soglPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    soglPolygonOffset(0, -1.005f);   // 100 units nearer
    soglEnable(GL_POLYGON_OFFSET_LINE);
    soglBegin(GL_POLYGON);
    for (const auto& p : {
             std::pair{1, 1},
             {9, 1},
             {9, 9},
             {1, 9}
    })
        canvas.Vertex(p.first, p.second);
    soglEnd();
    EXPECT_EQ(canvas.Z(4, 1), 32867);
    EXPECT_EQ(canvas.Z(9, 5), 32867);
    EXPECT_EQ(canvas.Z(1, 5), 32867) << "the closing edge";
    soglBegin(GL_LINES);
    canvas.Vertex(1, 12);
    canvas.Vertex(9, 12);
    soglEnd();
    EXPECT_EQ(canvas.Z(4, 12), 32767);
}

// ---- Light

TEST(AK_sogl_Raster, LightFactors)
{
    const struct {
        const char* why;
        unsigned primitive, front, back;
        float normal[3], light[4];
        double factor;
    } cases[] = {
        {"head on",                                GL_TRIANGLES, GL_FILL, GL_FILL, {0, 0, 1},  {0, 0, 1, 0},          1     },
        {"45 degrees",                             GL_TRIANGLES, GL_FILL, GL_FILL, {0, 2, 2},  {0, 0, 3, 0},          0.9071},
        {"60 degrees",                             GL_TRIANGLES, GL_FILL, GL_FILL, {0, 0, 1},  {0, 1.7320508f, 1, 0}, 0.7   },
        {"both sides filled: from behind, too",    GL_TRIANGLES, GL_FILL, GL_FILL, {0, 0, -1}, {0, 1.7320508f, 1, 0}, 0.7   },
        {"neither side filled: from behind, too",
         GL_TRIANGLES,                                           GL_LINE,
         GL_LINE,                                                                  {0, 0, -1},
         {0, 1.7320508f, 1, 0},
         0.7                                                                                                                },
        {"front alone: dark from behind",          GL_TRIANGLES, GL_FILL, GL_LINE, {0, 0, -1}, {0, 0, 1, 0},          0.2   },
        {"front alone",                            GL_TRIANGLES, GL_FILL, GL_LINE, {0, 0, 1},  {0, 1.7320508f, 1, 0}, 0.7   },
        {"back alone: the other way",              GL_TRIANGLES, GL_LINE, GL_FILL, {0, 0, -1}, {0, 1.7320508f, 1, 0}, 0.7   },
        {"back alone: dark from the front",        GL_TRIANGLES, GL_LINE, GL_FILL, {0, 0, 1},  {0, 0, 1, 0},          0.2   },
        {"points have no sides",                   GL_POINTS,    GL_FILL, GL_LINE, {0, 0, -1}, {0, 0, 1, 0},          1     },
        {"edge on: what is left is ambient",       GL_POINTS,    GL_FILL, GL_FILL, {1, 0, 0},  {0, 0, 1, 0},          0.2   },
        {"light at a place, seen from the corner", GL_POINTS,    GL_FILL, GL_FILL, {0, 0, 1},  {1.7320508f, 0, 1, 1}, 0.7   },
        {"a normal without direction",             GL_POINTS,    GL_FILL, GL_FILL, {0, 0, 0},  {0, 0, 1, 0},          0.2   },
        {"a light without direction",              GL_POINTS,    GL_FILL, GL_FILL, {0, 0, 1},  {0, 0, 0, 0},          0.2   },
    };
    for (const auto& c : cases) {
        const Canvas canvas(8, 8);
        soglPolygonMode(GL_FRONT, c.front);
        soglPolygonMode(GL_BACK, c.back);
        soglEnable(GL_LIGHTING);
        soglLightfv(GL_LIGHT0, GL_POSITION, c.light);
        soglNormal3f(c.normal[0], c.normal[1], c.normal[2]);
        soglPointSize(8);
        soglLineWidth(8);
        soglBegin(c.primitive);
        canvas.Vertex(4, 4);   // the origin
        if (c.primitive == GL_TRIANGLES) {
            canvas.Vertex(7, 4);
            canvas.Vertex(7, 7);
        }
        soglEnd();
        EXPECT_EQ(canvas.R(4, 4), int(255 * c.factor)) << c.why;
    }
}

TEST(AK_sogl_Raster, NormalsAndLightsTurnWithTheModelviewOfTheirTime)
{
    const Canvas canvas(8, 8);
    soglRotatef(90, 1, 0, 0);   // y becomes z
    soglScalef(3, 3, 3);
    soglNormal3f(0, 1, 0);
    const float light[4] = {0, 1, 0, 0};
    soglLightfv(GL_LIGHT0 + 3, GL_POSITION, light);
    soglLightfv(GL_LIGHT0, GL_POSITION + 1, light + 1);   // another property: ignored, not read
    soglLoadIdentity();
    EXPECT_FLOAT_EQ(soglCurNormal[2], 1);
    EXPECT_FLOAT_EQ(soglLightPosition[2], 3);
    soglFrontFace(GL_CW);
    soglNormal3f(0, 0, 1);
    EXPECT_FLOAT_EQ(soglCurNormal[2], -1);
    soglFrontFace(GL_CCW);
    soglNormal3f(0, 0, 1);
    EXPECT_FLOAT_EQ(soglCurNormal[2], 1);
}

TEST(AK_sogl_Raster, SideOfAFaceSelectsItsPolygonMode)
{
    const struct {
        const char* why;
        std::vector<std::vector<double>> corners;
        unsigned face;
        bool filled;
    } cases[] = {
        {"clockwise is the front",        {{1, 1}, {1, 7}, {7, 7}}, GL_FRONT, true },
        {"counter-clockwise is the back", {{1, 1}, {7, 7}, {1, 7}}, GL_FRONT, false},
        {"counter-clockwise is the back", {{1, 1}, {7, 7}, {1, 7}}, GL_BACK,  true },
    };
    for (const auto& c : cases) {
        const Canvas canvas(8, 8);
        soglPolygonMode(GL_FRONT_AND_BACK, GL_POINT);
        soglPolygonMode(c.face, GL_FILL);
        soglPolygonMode(c.face, 1);   // ignored
        canvas.Triangle(c.corners);
        EXPECT_EQ(canvas.Drawn() > 3, c.filled) << c.why;
    }
}

// ---- Buffers

TEST(AK_sogl_Raster, BuffersAreClearedHandedOutAndFreed)
{
    Canvas canvas(8, 4);
    int width, height;
    unsigned char *r, *g, *b;
    soglGetWidthHeightBuf(&width, &height, &r, &g, &b);
    EXPECT_EQ(width, 8);
    EXPECT_EQ(height, 4);
    canvas.Triangle({
        {0, 0},
        {8, 0},
        {8, 4}
    });
    for (int n = 0; n < 256; ++n) {
        soglClearColor(float(n) / 255, 0.999f, 0, 0.5f);
        soglClear(GL_DEPTH_BUFFER_BIT);   // clears all, whatever the mask
        ASSERT_EQ(r[31], n) << "a byte comes back";
    }
    EXPECT_EQ(g[0], 254);
    EXPECT_EQ(b[0], 0);
    EXPECT_EQ(canvas.Z(6, 0), 0);

    for (const auto& size : {
             std::pair{0,          4      },
             {4,          -1     },
             {1 << 20,    1 << 20},
             {1000000001, 1      }
    }) {
        EXPECT_EQ(soglAllocBuffers(size.first, size.second), 1);
        soglGetWidthHeightBuf(&width, &height, &r, &g, &b);
        EXPECT_EQ(width, size.first);
        EXPECT_TRUE(!r && !g && !b && !soglBufZ);
        soglClear(0);
        canvas.Triangle({
            {0, 0},
            {7, 0},
            {7, 4}
        });   // draws nothing, reaches for nothing
    }
}

TEST(AK_sogl_Raster, NumbersThatNoBufferCanHoldDoNoHarm)
{
    const float infinite = std::numeric_limits<float>::infinity();
    const float bad[] = {
        std::numeric_limits<float>::quiet_NaN(), infinite, -infinite, 3e38f, -3e38f, 1e9f, -1e9f, 0.3f};
    const unsigned char bits[] = {0xff, 0xff};
    const Canvas canvas(8, 8);
    soglEnable(GL_BLEND);
    soglEnable(GL_LIGHTING);
    soglEnable(GL_POLYGON_OFFSET_FILL);
    unsigned seed = 1;
    const auto next = [&] { return bad[(seed = seed * 1664525 + 1013904223) >> 24 & 7]; };
    for (int i = 0; i < 20000; ++i) {
        soglPolygonOffset(next(), next());
        soglPolygonMode(GL_FRONT_AND_BACK, GL_POINT + unsigned(i % 3));
        soglNormal3f(next(), next(), next());
        soglBegin(std::array{GL_POINTS, GL_LINES, GL_TRIANGLES, GL_POLYGON}[std::size_t(i) / 3 % 4]);
        for (int k = 0; k < 4; ++k) {
            soglPointSize(next());
            soglLineWidth(next());
            soglColor4f(next(), next(), next(), next());
            soglVertex3f(next(), next(), next());
        }
        soglEnd();
        soglRasterPos3f(next(), next(), next());
        soglBitmap(9, 1, bits, next(), next(), next(), next());
    }
    soglDisable(GL_BLEND);
    soglDisable(GL_LIGHTING);
    soglClear(0);
    soglColor3f(1, 1, 1);
    soglPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    soglPolygonOffset(0, 0);
    canvas.Triangle({
        {1, 1},
        {7, 1},
        {7, 7}
    });
    EXPECT_EQ(canvas.Drawn(), 15) << "good numbers draw as before";
}
