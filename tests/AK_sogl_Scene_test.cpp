// A small scene with everything that the program draws, compared byte by byte with a picture that was looked at.
//
// When a rule of drawing changes on purpose, the test leaves the new picture in its working directory: look at it
// (aglReadPpmFile reads it, and so do most viewers), then put it in the place of tests/data/AK_sogl_scene.ppm.

#include "AK_sogl_Canvas.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace
{

constexpr int width = 200, height = 150;

float HillHeight(float x, float y)
{
    return 0.45f / (1 + 6 * (x * x + y * y)) - 0.1f * x;
}

/// Vertex of the hill and its upward normal, by differences.
void HillVertex(float x, float y)
{
    const float step = 0.01f;
    const float z = HillHeight(x, y);
    aglNormal3f((z - HillHeight(x + step, y)) / step, (z - HillHeight(x, y + step)) / step, 1);
    aglVertex3f(x, y, z);
}

void DrawHill()
{
    const int cells = 12;
    const auto at = [](int i) { return 2.0f * float(i) / cells - 1; };
    aglBegin(GL_QUADS);
    for (int i = 0; i < cells; ++i) {
        for (int j = 0; j < cells; ++j) {
            HillVertex(at(i), at(j));
            HillVertex(at(i + 1), at(j));
            HillVertex(at(i + 1), at(j + 1));
            HillVertex(at(i), at(j + 1));
        }
    }
    aglEnd();
}

/// Lit faces pushed back a little, and the grid over them.
void DrawHillWithGrid()
{
    aglEnable(GL_LIGHTING);
    aglEnable(GL_POLYGON_OFFSET_FILL);
    aglPolygonOffset(1, 2);
    aglColor3f(0.75f, 0.8f, 0.7f);
    DrawHill();
    aglDisable(GL_POLYGON_OFFSET_FILL);
    aglDisable(GL_LIGHTING);
    aglPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    aglColor3f(0.2f, 0.25f, 0.2f);
    DrawHill();
    aglPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

/// A ball on the hill and its mirror image on the other side.
void DrawBalls()
{
    aglEnable(GL_LIGHTING);
    for (const bool mirrored : {false, true}) {
        aglPushMatrix();
        if (mirrored) {
            aglMirrorf(1, 0, 0);
            aglFrontFace(GL_CW);
        }
        aglTranslatef(0.7f, -0.3f, 0.35f);
        aglColor3f(mirrored ? 0.3f : 0.9f, 0.4f, mirrored ? 0.9f : 0.3f);
        aglutSolidSphere(0.2, 24, 16);
        aglFrontFace(GL_CCW);
        aglPopMatrix();
    }
    aglDisable(GL_LIGHTING);
}

/// A sheet of water through the hill: what stands above it is seen as it is, what lies below through it.
void DrawWater()
{
    aglEnable(GL_BLEND);
    aglDepthMask(0);
    aglColor4f(0.1f, 0.3f, 0.9f, 0.4f);
    aglBegin(GL_POLYGON);
    aglVertex3f(-1, -1, 0.14f);
    aglVertex3f(1, -1, 0.14f);
    aglVertex3f(1, 1, 0.14f);
    aglVertex3f(-1, 1, 0.14f);
    aglEnd();
    aglDepthMask(1);
    aglDisable(GL_BLEND);
}

void DrawPathAndPoints()
{
    aglColor3f(0.8f, 0, 0);
    aglLineWidth(3);
    aglBegin(GL_LINE_STRIP);
    for (int i = 0; i <= 40; ++i) {
        const float x = 0.02f * float(i) - 0.4f;
        const float y = 0.04f * float(i) - 0.8f;
        aglVertex3f(x, y, HillHeight(x, y) + 0.03f);
    }
    aglEnd();
    aglLineWidth(1);
    aglColor3f(1, 1, 0);
    aglPointSize(4);
    aglBegin(GL_POINTS);
    for (int i = 0; i < 8; ++i) {
        const float x = 0.25f * float(i) - 0.9f;
        aglVertex3f(x, -0.9f, HillHeight(x, -0.9f) + 0.05f);
    }
    aglEnd();
}

void DrawText(const char* font, float x, float y, const char* text)
{
    aglRasterPos3f(x, y, 1.9f);
    for (; *text; ++text) aglutBitmapCharacter(AK_FindBitmapFont(font), *text);
}

void DrawLabels()
{
    aglLoadIdentity();
    aglColor3f(0, 0, 0);
    DrawText("HELVETICA_12", -1.3f, 0.83f, "Flow depth [m]: 0.25");
    DrawText("TIMES_ROMAN_10", -1.3f, 0.67f, "Contour 2150 & \"Gully\"");
    DrawText("8_BY_13", 0.4f, 0.62f, "#12 {3,7}");
    aglRasterPos3f(1.1f, -0.9f, 1.9f);   // cut by the edge
    for (const char c : {'e', 'd', 'g', 'e'}) aglutBitmapCharacter(AK_FindBitmapFont("8_BY_13"), c);
}

void DrawScene()
{
    aglClearColor(0.92f, 0.95f, 1, 1);
    aglClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    aglMatrixMode(GL_PROJECTION);
    aglLoadIdentity();
    aglOrtho(-4.0 / 3, 4.0 / 3, -1, 1, -2, 2);
    aglMatrixMode(GL_MODELVIEW);
    aglLoadIdentity();
    const float light[4] = {-1, 1, 1.5f, 0};
    aglLightfv(GL_LIGHT0, GL_POSITION, light);
    aglTranslatef(0, -0.2f, 0);
    aglRotatef(-55, 1, 0, 0);
    aglRotatef(25, 0, 0, 1);
    aglScalef(0.85f, 0.85f, 0.85f);
    DrawHillWithGrid();
    DrawBalls();
    DrawPathAndPoints();
    DrawWater();
    DrawLabels();
}

}   // namespace

TEST(AK_sogl_Scene, LooksExactlyLikeTheReferencePicture)
{
    const Canvas canvas(width, height);
    AK_SetSoglContext();
    DrawScene();
    int w, h;
    unsigned char *r, *g, *b;
    soglGetWidthHeightBuf(&w, &h, &r, &g, &b);
    std::vector<unsigned char> drawn;
    for (int i = 0; i < w * h; ++i) drawn.insert(drawn.end(), {r[i], g[i], b[i]});
#define BIND_NOTHING(result, name, parameters, nothing) agl##name = nogl##name;
    AGL_RASTERISED_CALLS(BIND_NOTHING)

    int depth = 0;
    unsigned char* reference = nullptr;
    const int result = aglReadPpmFile(KORVO_SOURCE_DIR "/tests/data/AK_sogl_scene.ppm", &w, &h, &depth, &reference);
    const bool same = result == 0 && w == width && h == height && depth == 8 &&
                      std::memcmp(drawn.data(), reference, drawn.size()) == 0;
    if (!same) aglWritePpmFile("AK_sogl_scene.ppm", width, height, 8, drawn.data());
    EXPECT_TRUE(same) << "the picture that was drawn is in AK_sogl_scene.ppm";
    delete[] reference;
}
