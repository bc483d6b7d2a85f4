// The terrain drawn through the rasteriser: a field over the Serles, contour lines and labels.

#include "SW_Mesh_TestSupport.h"
#include "SW_ScalarField.h"

#include "AK_sogl.h"

#include <cstdlib>
#include <set>

namespace {

class SW_Mesh_Draw : public TerrainTest {
protected:
    ~SW_Mesh_Draw() override { soglFreeBuffers(); }

    // A view from above that fits the mesh into the picture.
    static void LookAt(const SW_Mesh& mesh, int width, int height)
    {
        ASSERT_EQ(soglAllocBuffers(width, height), 0);
        AK_SetSoglContext();
        aglClearColor(1, 1, 1, 1);
        aglClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        float lo[3], hi[3];
        ASSERT_TRUE(mesh.BoundingBox(lo, hi));
        aglMatrixMode(GL_PROJECTION);
        aglLoadIdentity();
        aglOrtho(double(lo[0]), double(hi[0]), double(lo[1]), double(hi[1]), -5000, 5000);
        aglPushMatrix();
        aglMatrixMode(GL_MODELVIEW);
        aglLoadIdentity();
        aglPushMatrix();
        const float light[4] = {-1, 1, 1, 0};
        aglLightfv(GL_LIGHT0, GL_POSITION, light);
        aglEnable(GL_DEPTH_TEST);
    }

    static std::string Picture()
    {
        int width = 0, height = 0;
        unsigned char *r = nullptr, *g = nullptr, *b = nullptr;
        soglGetWidthHeightBuf(&width, &height, &r, &g, &b);
        std::string pixels;
        for (int i = 0; i < width * height; ++i) {
            pixels += char(r[i]);
            pixels += char(g[i]);
            pixels += char(b[i]);
        }
        return pixels;
    }
};

}   // namespace

static double ShareOf(const std::string& pixels, bool (*test)(int r, int g, int b))
{
    int n = 0;
    for (size_t i = 0; i + 2 < pixels.size(); i += 3)
        n += test(static_cast<unsigned char>(pixels[i]), static_cast<unsigned char>(pixels[i + 1]),
                  static_cast<unsigned char>(pixels[i + 2]));
    return 3.0 * n / double(pixels.size());
}

TEST_F(SW_Mesh_Draw, TheTerrainIsShadedAndCarriesContourLinesAndAField)
{
    auto mesh = NewMesh();
    mesh->Import(KORVO_SOURCE_DIR "/examples/serles/serles_10m.asc", 0);
    mesh->Set("ContourLinesMinorStep", "100");
    mesh->Set("ContourLinesMajorStep", "500");
    LookAt(*mesh, 640, 700);
    mesh->Update();
    const std::string terrain = Picture();
    EXPECT_GT(ShareOf(terrain, [](int r, int g, int b) { return r > g && g > b; }), 0.5) << "the colour of the ground";
    const double dark = ShareOf(terrain, [](int r, int g, int b) { return r + g + b < 60; });
    EXPECT_GT(dark, 0.02) << "contour lines";
    EXPECT_LT(dark, 0.4);

    SW_ScalarField field("depth", nullptr);
    field._onVertices = 1;
    field.SetMesh(mesh.get());
    field.SetLabel("height over 1800 m [m]");
    for (int i = 0; i < mesh->NumVertices(); ++i) field._values[i] = float(std::max(0.0, mesh->_x[i].z - 1800));
    field.Set("MinDisplayedValue", "1");
    field.Set("Blending", "0");
    field.Set("Shaded", "0");
    field.Set("PolygonOffsetFill", "1");
    field.Set("PolygonOffsetFactors", "-2 -2");
    field.Update();
    const std::string both = Picture();
    EXPECT_GT(ShareOf(both, [](int r, int g, int b) { return b > r + 60 && b > g; }), 0.05) << "low values are blue";
    EXPECT_GT(ShareOf(both, [](int r, int g, int b) { return r > b + 60 && r > g + 60; }), 0.02) << "high ones red";
    if (const char* file = std::getenv("KORVO_PICTURE"))
        aglWritePpmFile(file, 640, 700, 8, reinterpret_cast<const unsigned char*>(both.data()));
}

TEST_F(SW_Mesh_Draw, ACoarseCopyOfItsHeightsStandsForAMesh)
{
    auto mesh = CartesianMesh(60, 60, 1, [](double x, double) { return int(x) % 2; });   // ridges
    for (const char* off : {"DisplayContourLines", "SmoothShading", "Shaded"}) mesh->Set(off, "0");
    mesh->Set("ShadeIncl", "1");   // 30 to 60 degrees
    LookAt(*mesh, 60, 60);
    const auto redShare = [&] {
        aglClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        mesh->Update();
        return ShareOf(Picture(), [](int r, int g, int b) { return r > 200 && g < 60 && b < 60; });
    };
    EXPECT_GT(redShare(), 0.9);
    mesh->Set("DrawCoarsened", "1");   // over 3 m the heights alternate, too: 18 degrees
    EXPECT_LT(redShare(), 0.1);
    EXPECT_EQ(mesh->NumCells(), 3600);
    EXPECT_EQ(mesh->NumComponents(), 0);
    mesh->Set("Dx", "30");   // no cell of three times this size: the mesh itself is drawn
    mesh->Smooth(0);
    EXPECT_GT(redShare(), 0.9);
}

TEST_F(SW_Mesh_Draw, SteepSlopesAreMarkedBetweenTwoAngles)
{
    auto mesh = CartesianMesh(4, 4, 1, [](double x, double) { return x < 2 ? 0 : x - 2; });
    mesh->Set("DisplayContourLines", "0");
    mesh->Set("SmoothShading", "0");
    mesh->Set("Shaded", "0");
    mesh->Set("ShadeIncl", "1");   // 30 to 60 degrees: the right half at 45
    LookAt(*mesh, 100, 100);
    mesh->Update();
    const double red = ShareOf(Picture(), [](int r, int g, int b) { return r > 200 && g < 60 && b < 60; });
    EXPECT_NEAR(red, 0.5, 0.05);
}

TEST_F(SW_Mesh_Draw, EveryKindOfDecorationDrawsWithoutAPicture)
{
    auto mesh = IrregularMesh(3, 3, 10, Hill);
    for (const char* on : {"DisplayConnectivity", "DisplayNodeLabels", "DrawGrid", "ShadeIncl", "DrawCoarsened"})
        mesh->Set(on, "1");
    mesh->Set("BreakLinesAngle", "0.5");
    for (const char* size : {"10", "0", "1e-9", "nan"}) {
        mesh->Set("GridSize", size);
        mesh->Update();
    }
    mesh->Set("Visibility", "0");
    mesh->Update();
}

// A table of drawing calls that keeps lists, as a window has it: what was called since the last time, in letters.
static std::string listCalls;
static unsigned lastList = 0;
static bool vertexDrawn = false;

TEST_F(SW_Mesh_Draw, WhatHasNotChangedIsDrawnFromItsList)
{
    auto mesh = CartesianMesh(4, 4, 10, [](double x, double y) { return x + y; });
    LookAt(*mesh, 4, 4);
    aglGenLists = [](int) { return ++lastList; };
    aglNewList = [](unsigned list, unsigned) { listCalls += "new" + std::to_string(list) + " "; };
    aglEndList = [] { listCalls += "end "; };
    aglCallList = [](unsigned list) { listCalls += "call" + std::to_string(list) + " "; };
    aglDeleteLists = [](unsigned list, int) { listCalls += "delete" + std::to_string(list) + " "; };
    aglVertex3f = [](float, float, float) { vertexDrawn = true; };
    const auto calls = [&] {
        listCalls.clear();
        vertexDrawn = false;
        mesh->Update();
        return listCalls + (vertexDrawn ? "drawn" : "");
    };
    EXPECT_EQ(calls(), "new1 end drawn");
    EXPECT_EQ(calls(), "call1 ");
    mesh->Set("ShadeIncl", "1");
    EXPECT_EQ(calls(), "delete1 new2 end drawn");
    mesh->Set("Smooth", "");
    EXPECT_EQ(calls(), "new3 end drawn") << "deleted when the surface changed";
    EXPECT_EQ(calls(), "call3 ");
    mesh->Set("CloneTrafos", "cp 2\ntrans 1 0 0");
    EXPECT_EQ(calls(), "delete3 new4 end call4 call4 drawn") << "copies are drawn from the list of the first";
    AK_Object::_viewerBgCol[0] = 0.5f;
    EXPECT_EQ(calls(), "delete4 new5 end call5 call5 drawn") << "lines stand out from the background";
    AK_Object::_viewerBgCol[0] = 1;
    mesh->Set("CloneTrafos", "");
    mesh->Set("EnabledDisplayLists", "0");
    EXPECT_EQ(calls(), "delete5 drawn");
    EXPECT_EQ(calls(), "drawn");
    mesh->Set("EnabledDisplayLists", "1");
    EXPECT_EQ(calls(), "new6 end drawn");
    listCalls.clear();
    mesh.reset();
    EXPECT_EQ(listCalls, "delete6 ");
    AK_SetSoglContext();
    lastList = 0;
}
