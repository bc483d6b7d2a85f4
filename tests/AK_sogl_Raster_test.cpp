// The rasteriser's rules of coverage, depth, blending, offset and light. Expected pixels are worked out on paper: the
// canvases have sizes that are powers of two, so that whole columns and rows map exactly.

#include "AK_sogl_Canvas.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

namespace
{

/// A z that surely maps to a depth.
float ZOfDepth(double depth)
{
    return float((depth + 0.5) / 65535 * 2 - 1);
}

}   // namespace

// ---- Coverage

TEST(AK_sogl_Raster, TrianglesCoverTheseColumnsAndRows)
{
    const struct {
        const char *why, *corners, *pixels;
        // clang-format off
    } cases[] = {
        {"right side upright, no second half: a column to the left, C and upper ends excluded",
         "1,1 7,1 7,7", "5:5 4:45 3:345 2:2345 1:12345"},
        {"left side upright, the other way round: no first half",
         "7,1 1,7 1,1", "6:0 5:01 4:012 3:0123 2:01234 1:012345"},
        {"B below the long side", "1,3 4,0 7,6", "4:45 3:234 2:1234 1:23 0:3"},
        {"column 0 stays in its place", "0,0 2,0 0,2", "1:0 0:0"},
        {"corners beyond the buffer: no clip, no wrap", "-15,0 17,0 1,16",
         "7:01234567 6:01234567 5:01234567 4:01234567 3:01234567 2:01234567 1:01234567 0:01234567"},
        {"all in one column", "3,0 3,4 3,8", ""},
        {"on one line", "1,0 4,3 7,6", ""},
        {"left of the buffer", "-9,0 -3,5 -1,2", ""},
    };
    // clang-format on
    for (const auto& c : cases) {
        const Canvas canvas(8, 8);
        canvas.Draw(GL_TRIANGLES, c.corners);
        EXPECT_EQ(canvas.Pixels(), c.pixels) << c.why;
    }
}

TEST(AK_sogl_Raster, NeighboursShareAnEdgeWithoutGapOrDoublePixel)
{
    const Canvas canvas(64, 64);
    soglEnable(GL_BLEND);   // a pixel drawn twice is brighter
    soglColor4f(1, 1, 1, 0.5f);
    const std::string rim[] = {"60,30", "50,55", "25,60", "3,33", "9,7", "40,2"};
    for (int i = 0; i < 6; ++i) canvas.Draw(GL_TRIANGLES, "31,29 " + rim[i] + " " + rim[(i + 1) % 6]);
    long once = 0;
    for (int x = 0; x < 64; ++x) {
        std::string column;
        for (int y = 0; y < 64; ++y) {
            EXPECT_TRUE(canvas.R(x, y) == 0 || canvas.R(x, y) == 127) << x << " " << y;
            once += canvas.R(x, y) == 127;
            column += canvas.R(x, y) ? '#' : '.';
        }
        EXPECT_EQ(column.find("#."), column.rfind("#.")) << "a gap in column " << x;
    }
    EXPECT_NEAR(double(once), 2306, 20);   // the area of the hexagon, by the shoelace formula
}

TEST(AK_sogl_Raster, LinesStepAlongTheirLongerDirection)
{
    const struct {
        const char *why, *ends;
        float width;
        const char* pixels;
    } cases[] = {
        {"along x, without its end",   "0,1 6,4",   1, "4:5 3:34 2:12 1:0"             },
        {"equal extents step along y", "1,1 4,4",   1, "3:3 2:2 1:1"                   },
        {"downwards",                  "6,6 5,1",   1, "6:6 5:6 4:6 3:5 2:5"           },
        {"three wide",                 "1,4 5,4",   3, "5:1234 4:1234 3:1234"          },
        {"cut by the buffer",          "-4,9 12,1", 2, "7:01 6:0123 5:2345 4:4567 3:67"},
        {"no extent",                  "3,3 3,3",   5, ""                              },
        {"no width",                   "1,1 6,1",   0, ""                              },
    };
    for (const auto& c : cases) {
        const Canvas canvas(8, 8);
        soglLineWidth(c.width);
        canvas.Draw(GL_LINES, c.ends);
        EXPECT_EQ(canvas.Pixels(), c.pixels) << c.why;
    }
}

TEST(AK_sogl_Raster, PointsAreSquares)
{
    const struct {
        float size;
        const char* pixels;
    } cases[] = {
        {1,    "4:4"              },
        {2,    "5:45 4:45"        },
        {3,    "5:345 4:345 3:345"},
        {0.5f, "4:4"              },
        {2.5f, "5:345 4:345 3:345"},
        {0,    ""                 },
    };
    for (const auto& c : cases) {
        const Canvas canvas(8, 8);
        soglPointSize(c.size);
        canvas.Draw(GL_POINTS, "5,5");
        EXPECT_EQ(canvas.Pixels(), c.pixels) << c.size;
    }
}

TEST(AK_sogl_Raster, BitmapsHangAtTheRasterPositionAndMoveIt)
{
    const unsigned char bits[] = {0x80, 0x40, 0xff, 0xc0};   // 10 wide: two bytes a row, lowest row first
    const Canvas canvas(8, 8);
    soglRasterPos2f(canvas.X(2), canvas.Y(4));
    soglBitmap(10, 2, bits, 1.5f, 0, 3.9f, -1.9f);
    EXPECT_EQ(soglRasterPos[0], 5);
    EXPECT_EQ(soglRasterPos[1], 3);
    soglBitmap(0, 0, nullptr, 0, 0, -2, 0);   // moves only
    EXPECT_EQ(soglRasterPos[0], 3);
    EXPECT_EQ(canvas.Pixels(), "5:01234567 4:0") << "the tenth column of the lower row is outside";
    EXPECT_EQ(canvas.Z(0, 4), 32767);
}

// ---- Primitives

TEST(AK_sogl_Raster, PrimitivesOfManyVertices)
{
    const struct {
        const char* why;
        unsigned mode, primitive;
        const char *corners, *pixels;
    } cases[] = {
        {"quad, no diagonal",  GL_LINE,  GL_QUADS,          "1,1 4,1 4,4 1,4",             "4:1234 3:14 2:14 1:1234"},
        {"polygon is closed",  GL_LINE,  GL_POLYGON,        "1,1 3,1 4,2 4,4 1,4",         "4:1234 3:14 2:14 1:123" },
        {"triangle",           GL_LINE,  GL_TRIANGLES,      "1,1 4,1 4,4",                 "4:4 3:34 2:24 1:1234"   },
        {"2 corners: nothing", GL_LINE,  GL_POLYGON,        "1,1 6,1",                     ""                       },
        {"every corner once",  GL_POINT, GL_POLYGON,        "2,2 5,2 7,4 7,7 2,7",         "6:16 3:6 1:14"          },
        {"a strip goes on",    GL_FILL,  GL_LINE_STRIP,     "0,0 3,0 3,3",                 "2:3 1:3 0:0123"         },
        {"a quad and a half",  GL_FILL,  GL_QUADS,          "5,0 7,0 7,2 5,2 2,5 6,5 6,7", "5:34 1:45 0:45"         },
        {"no loops",           GL_FILL,  GL_LINE_LOOP,      "0,0 3,0 3,3",                 ""                       },
        {"no triangle strips", GL_FILL,  GL_TRIANGLE_STRIP, "0,0 6,0 0,6 6,6",             ""                       },
        {"unknown number",     GL_FILL,  77,                "0,0 6,0 0,6",                 ""                       },
    };
    for (const auto& c : cases) {
        const Canvas canvas(8, 8);
        soglPolygonMode(GL_FRONT_AND_BACK, c.mode);
        canvas.Draw(c.primitive, c.corners);
        canvas.Vertex(7, 7);   // outside of any primitive
        EXPECT_EQ(canvas.Pixels(), c.pixels) << c.why;
    }
}

TEST(AK_sogl_Raster, SideOfAFaceSelectsItsPolygonMode)
{
    const struct {
        const char *why, *corners;
        unsigned face;
        bool filled;
    } cases[] = {
        {"clockwise is the front",        "1,1 1,7 7,7", GL_FRONT, true },
        {"counter-clockwise is not",      "1,1 7,7 1,7", GL_FRONT, false},
        {"counter-clockwise is the back", "1,1 7,7 1,7", GL_BACK,  true },
    };
    for (const auto& c : cases) {
        const Canvas canvas(8, 8);
        soglPolygonMode(GL_FRONT_AND_BACK, GL_POINT);
        soglPolygonMode(c.face, GL_FILL);
        soglPolygonMode(c.face, 1);   // ignored
        canvas.Draw(GL_TRIANGLES, c.corners);
        EXPECT_EQ(canvas.R(1, 4) != 0, c.filled) << c.why;
    }
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
        canvas.Draw(GL_TRIANGLES, "1,1 7,1 7,7", ZOfDepth(c.first));
        if (!c.test) soglDisable(GL_DEPTH_TEST);
        soglDepthMask(c.mask);
        soglColor3f(0, 1, 0);
        canvas.Draw(GL_TRIANGLES, "1,1 7,1 7,7", ZOfDepth(c.second));
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
    canvas.Draw(GL_TRIANGLES, "0,0 16,0 0,16");
    soglEnable(GL_BLEND);
    soglColor4f(200 / 255.0f, 1, 0, 0.25f);
    canvas.Draw(GL_TRIANGLES, "0,0 16,0 0,16");
    EXPECT_EQ(canvas.R(2, 2), 125);
    EXPECT_EQ(canvas.G(2, 2), 255) << "the same colour over itself stays";
    soglColor4f(1, 0, 0, 0.9f);
    canvas.Draw(GL_LINES, "0,4 7,4");
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
    // Sorted by x the corners are 1, 2, 0; A, C and B take the alphas of 0, 1 and 2 all the same.
    const Canvas canvas(16, 16);
    soglEnable(GL_BLEND);
    soglBegin(GL_TRIANGLES);
    soglColor4f(1, 1, 1, 0);
    canvas.Vertex(9, 8);
    soglColor4f(1, 1, 1, 1);
    canvas.Vertex(1, 0);
    canvas.Vertex(9 - 1e-4, 0);   // maps to column 7, so that row 0 runs from A to B
    soglEnd();
    for (int x = 1; x < 7; ++x) EXPECT_EQ(canvas.R(x, 0), int(255.0 * x / 7)) << x;
}

// ---- Offset

TEST(AK_sogl_Raster, OffsetIsSlopeTimesFactorPlusUnits)
{
    // clang-format off
    const float flat[3][3] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    const float sloped[3][3] = {{0, 0, 0}, {0.5f, 0, 0.25f}, {0, 0.5f, -1}};   // slopes 0.5 and 2
    const float onEdge[3][3] = {{0, 0, 0}, {0, 1, 0}, {0, 2, 1}};              // no area: slope 1 / 1e-7
    // clang-format on
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
        soglPolygonOffset(c.factor, c.units);
        soglPgMode = GL_FILL;
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
    canvas.Draw(GL_POLYGON, "1,1 9,1 9,9 1,9");
    EXPECT_EQ(canvas.Z(4, 1), 32867);
    EXPECT_EQ(canvas.Z(9, 5), 32867);
    EXPECT_EQ(canvas.Z(1, 5), 32867) << "the closing edge";
    canvas.Draw(GL_LINES, "1,12 9,12");
    EXPECT_EQ(canvas.Z(4, 12), 32767);
}

// ---- Light

TEST(AK_sogl_Raster, LightFactors)
{
    const float ahead[4] = {0, 0, 1, 0};
    const float sixty[4] = {0, 1.7320508f, 1, 0};   // degrees off the z axis: the cosine is 0.5
    const float place[4] = {1.7320508f, 0, 1, 1};   // the same at the origin, but a place
    const float none[4] = {0, 0, 0, 0};
    const struct {
        const char* why;
        unsigned primitive, front, back;
        float normal[3];
        const float* light;
        double factor;
    } cases[] = {
        {"head on",                          GL_TRIANGLES, GL_FILL, GL_FILL, {0, 0, 1},  ahead, 1     },
        {"normal at 45 degrees, not unit",   GL_TRIANGLES, GL_FILL, GL_FILL, {0, 2, 2},  ahead, 0.9071},
        {"light at 60 degrees",              GL_TRIANGLES, GL_FILL, GL_FILL, {0, 0, 1},  sixty, 0.7   },
        {"both sides filled: behind, too",   GL_TRIANGLES, GL_FILL, GL_FILL, {0, 0, -1}, sixty, 0.7   },
        {"neither side filled: behind, too", GL_TRIANGLES, GL_LINE, GL_LINE, {0, 0, -1}, sixty, 0.7   },
        {"front alone",                      GL_TRIANGLES, GL_FILL, GL_LINE, {0, 0, 1},  sixty, 0.7   },
        {"front alone: dark from behind",    GL_TRIANGLES, GL_FILL, GL_LINE, {0, 0, -1}, ahead, 0.2   },
        {"back alone: the other way",        GL_TRIANGLES, GL_LINE, GL_FILL, {0, 0, -1}, sixty, 0.7   },
        {"back alone: dark from the front",  GL_TRIANGLES, GL_LINE, GL_FILL, {0, 0, 1},  ahead, 0.2   },
        {"points have no sides",             GL_POINTS,    GL_FILL, GL_LINE, {0, 0, -1}, ahead, 1     },
        {"edge on: what is left is ambient", GL_POINTS,    GL_FILL, GL_FILL, {1, 0, 0},  ahead, 0.2   },
        {"light at a place",                 GL_POINTS,    GL_FILL, GL_FILL, {0, 0, 1},  place, 0.7   },
        {"a normal without direction",       GL_POINTS,    GL_FILL, GL_FILL, {0, 0, 0},  ahead, 0.2   },
        {"a light without direction",        GL_POINTS,    GL_FILL, GL_FILL, {0, 0, 1},  none,  0.2   },
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
        canvas.Draw(c.primitive, c.primitive == GL_POINTS ? "4,4" : "4,4 7,4 7,7");   // (4, 4) is the origin
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

// ---- Buffers

TEST(AK_sogl_Raster, BuffersAreClearedHandedOutAndFreed)
{
    const Canvas canvas(8, 4);
    int width, height;
    unsigned char *r, *g, *b;
    soglGetWidthHeightBuf(&width, &height, &r, &g, &b);
    EXPECT_EQ(width, 8);
    EXPECT_EQ(height, 4);
    canvas.Draw(GL_TRIANGLES, "0,0 8,0 8,4");
    for (int n = 0; n < 256; ++n) {
        soglClearColor(float(n) / 255, 0.999f, 0, 0.5f);
        soglClear(GL_DEPTH_BUFFER_BIT);   // clears all, whatever the mask
        ASSERT_EQ(r[31], n) << "a byte comes back";
    }
    EXPECT_EQ(g[0], 254);
    EXPECT_EQ(b[0], 0);
    EXPECT_EQ(canvas.Z(6, 0), 0);

    for (const auto& [w, h] : {std::pair(0, 4), std::pair(4, -1), std::pair(1 << 20, 1 << 20)}) {
        EXPECT_EQ(soglAllocBuffers(w, h), 1);
        soglGetWidthHeightBuf(&width, &height, &r, &g, &b);
        EXPECT_EQ(width, w);
        EXPECT_TRUE(!r && !g && !b && !soglBufZ);
        soglClear(0);
        canvas.Draw(GL_TRIANGLES, "0,0 7,0 7,4");   // draws nothing, reaches for nothing
    }
}

TEST(AK_sogl_Raster, NumbersThatNoBufferCanHoldDoNoHarm)
{
    const float infinite = std::numeric_limits<float>::infinity();
    const float bad[8] = {
        std::numeric_limits<float>::quiet_NaN(), infinite, -infinite, 3e38f, -3e38f, 1e9f, -1e9f, 0.3f};
    const unsigned char bits[] = {0xff, 0xff};
    const Canvas canvas(8, 8);
    soglEnable(GL_BLEND);
    soglEnable(GL_LIGHTING);
    soglEnable(GL_POLYGON_OFFSET_FILL);
    unsigned seed = 1;
    const auto next = [&] { return bad[(seed = seed * 1664525 + 1013904223) >> 24 & 7]; };
    for (unsigned i = 0; i < 20000; ++i) {
        soglPolygonOffset(next(), next());
        soglPolygonMode(GL_FRONT_AND_BACK, GL_POINT + i % 3);
        soglNormal3f(next(), next(), next());
        soglBegin(std::array{GL_POINTS, GL_LINES, GL_TRIANGLES, GL_POLYGON}[i / 3 % 4]);
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
    const Canvas fresh(8, 8);
    fresh.Draw(GL_TRIANGLES, "1,1 7,1 7,7");
    EXPECT_EQ(fresh.Pixels(), "5:5 4:45 3:345 2:2345 1:12345") << "good numbers draw as before";
}
