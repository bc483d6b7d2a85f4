// Contour lines: on their level, closed where they must be, as long as the curves they stand for.

#include "SW_Mesh_Contour.h"

#include "SW_Mesh_TestSupport.h"

#include <cstdlib>

namespace {

class SW_Mesh_Contour : public TerrainTest {
protected:
    static AK_List<float> HeightsOf(const SW_Mesh& mesh)
    {
        AK_List<float> z(1);
        for (const AK_Vec& x : mesh._x) z.Append(float(x.z));
        return z;
    }

    static SW_ContourLines LinesOf(const SW_Mesh& mesh, std::initializer_list<double> levels)
    {
        AK_List<double> list(1);
        for (double level : levels) list.Append(level);
        return SW_ContourLines(&mesh, HeightsOf(mesh).Data(), list);
    }

    static double LengthOf(const SW_ContourLine& line)
    {
        double length = 0;
        for (int i = 1; i < line._line._x.Size(); ++i) length += Length(line._line._x[i] - line._line._x[i - 1]);
        return length;
    }
};

} // namespace

TEST_F(SW_Mesh_Contour, ARoundHillHasOneClosedRingPerLevel)
{
    const Height hill = [](double x, double y) { return 100 - std::hypot(x - 50, y - 50); };
    const std::unique_ptr<SW_Mesh> meshes[] = {CartesianMesh(50, 50, 2, hill), HoneyCombMesh(55, 60, 2, hill),
                                               IrregularMesh(50, 50, 2, hill)};
    for (const auto& mesh : meshes) {
        SW_ContourLines lines = LinesOf(*mesh, {60, 80});
        ASSERT_EQ(lines.Size(), 2);
        for (int i = 0; i < 2; ++i) {
            const AK_List<AK_Vec>& x = lines[i]._line._x;
            const double radius = 100 - double(lines[i]._value);
            EXPECT_NEAR(Length(x[0] - x[x.Size() - 1]), 0, 1e-4);
            EXPECT_NEAR(LengthOf(lines[i]), 2 * M_PI * radius, 0.02 * 2 * M_PI * radius);
            for (const AK_Vec& p : x) EXPECT_NEAR(p.z, double(lines[i]._value), 0.05);
        }
        EXPECT_STREQ(lines[0]._line.annotations.KeyValue("iso", '=', ';').c_str(), "60");
    }
}

TEST_F(SW_Mesh_Contour, ASlopeHasAnOpenLineFromBorderToBorder)
{
    const auto mesh = CartesianMesh(10, 10, 1, [](double x, double) { return x; });
    SW_ContourLines lines = LinesOf(*mesh, {2.5, NAN, 7, 99});
    ASSERT_EQ(lines.Size(), 2);
    EXPECT_NEAR(LengthOf(lines[0]), 10, 1e-6);
    EXPECT_NEAR(lines[1]._line._x[0].x, 7, 1e-6);   // vertices on the level count as below it: one line, unbroken
    EXPECT_NEAR(LengthOf(lines[1]), 10, 1e-6);
}

TEST_F(SW_Mesh_Contour, LinesThroughASaddleDoNotCross)
{
    for (double lift : {-0.2, 0.2}) {
        const auto mesh = CartesianMesh(1, 1, 1, [&](double x, double y) { return (x > 0.5) == (y > 0.5) ? 1 : -1 + lift; });
        SW_ContourLines lines = LinesOf(*mesh, {0});
        ASSERT_EQ(lines.Size(), 2);
        // The mean decides: above the level, the high corners hang together along their diagonal.
        for (int i = 0; i < 2; ++i)
            for (const AK_Vec& p : lines[i]._line._x) {
                const double side = lift > 0 ? p.y - p.x : p.x + p.y - 1;
                const double first = lift > 0 ? lines[i]._line._x[0].y - lines[i]._line._x[0].x
                                              : lines[i]._line._x[0].x + lines[i]._line._x[0].y - 1;
                EXPECT_GT(side * first, 0);
            }
    }
}

TEST_F(SW_Mesh_Contour, TerrainWithoutALevelHasNoLinesAndAnAbsurdStepIsRefused)
{
    auto mesh = CartesianMesh(3, 3, 1, [](double x, double) { return 5 + x; });
    mesh->Set("ExportContourLines", directory / "none.dxf");
    EXPECT_FALSE(AK_System::FileExists(directory / "none.dxf"));
    for (const char* step : {"0", "nan", "1e-300", "-1"}) {
        mesh->Set("ContourLinesMinorStep", step);
        mesh->ComputeContourLines();
    }
    mesh->Set("ContourLinesMinorStep", "1");
    mesh->Set("ExportContourLines", directory / "some.nxyz");
    const std::string text = FileBytes(directory / "some.nxyz");
    EXPECT_EQ(text.rfind("iso=5", 0), 0u) << text;
    EXPECT_EQ(text.substr(text.size() - 3), "-1\n");
}

TEST_F(SW_Mesh_Contour, AgreesInLengthWithGdalOnRealTerrain)
{
    if (std::system("command -v gdal_contour >/dev/null") != 0) GTEST_SKIP() << "gdal_contour is not installed";
    const std::string raster = KORVO_SOURCE_DIR "/examples/serles/serles_10m.asc";
    auto mesh = NewMesh();
    mesh->Import(raster.c_str(), 1);
    mesh->Export(directory / "half.asc");   // the same points for both
    SW_ContourLines lines = LinesOf(*mesh, {2000});
    double length = 0;
    for (int i = 0; i < lines.Size(); ++i)
        for (int k = 1; k < lines[i]._line._x.Size(); ++k)
            length += Length(AK_Vec2(lines[i]._line._x[k]) - AK_Vec2(lines[i]._line._x[k - 1]));
    const std::string base = directory.Path().c_str();
    ASSERT_EQ(std::system(("gdal_contour -q -fl 2000 -f CSV -lco GEOMETRY=AS_WKT " + base + "/half.asc " + base +
                           "/lines.csv").c_str()), 0);
    const std::string text = FileBytes(directory / "lines.csv");
    double gdal = 0, lastX = 0, lastY = 0;
    for (size_t i = text.find("LINESTRING"); i != std::string::npos; i = text.find("LINESTRING", i + 1)) {
        const char* s = text.c_str() + text.find('(', i) + 1;
        for (int k = 0; *s != ')' && *s; ++k) {
            char* end;
            const double x = std::strtod(s, &end);
            const double y = std::strtod(end, &end);
            if (k > 0) gdal += std::hypot(x - lastX, y - lastY);
            lastX = x;
            lastY = y;
            s = *end == ',' ? end + 1 : end;
        }
    }
    ASSERT_GT(gdal, 1000);
    EXPECT_NEAR(length, gdal, 0.03 * gdal);
}
