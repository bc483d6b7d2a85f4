// Contour lines: on their level, closed where they must be, as long as the curves they stand for.

#include "SW_Mesh_Contour.h"

#include "SW_Mesh_GdalTools.h"
#include "SW_Mesh_TestSupport.h"

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

    static double LengthOf(const SW_ContourLine& line) { return LengthSeenFromAbove(line._line._x); }

    template <class Points>
    static double LengthSeenFromAbove(const Points& x)
    {
        double length = 0;
        const AK_Vec* last = nullptr;
        for (const AK_Vec& p : x) {
            if (last) length += Length(AK_Vec2(p) - AK_Vec2(*last));
            last = &p;
        }
        return length;
    }
};

}   // namespace

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
        const auto mesh =
            CartesianMesh(1, 1, 1, [&](double x, double y) { return (x > 0.5) == (y > 0.5) ? 1 : -1 + lift; });
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
    mesh->Set("ContourLinesMinorStep", "0.5");
    mesh->Set("ExportContourLines", directory / "some.nxyz");
    EXPECT_NE(FileBytes(directory / "some.nxyz").find("iso=5.5\n"), std::string::npos) << "anew with another step";
}

TEST_F(SW_Mesh_Contour, AgreesInLengthWithGdalOnRealTerrain)
{
    SKIP_WITHOUT_GDAL();
    auto mesh = NewMesh();
    mesh->Import(KORVO_SOURCE_DIR "/examples/serles/serles_10m.asc", 1);
    mesh->Export(directory / "half.asc");   // the same points for both
    SW_ContourLines lines = LinesOf(*mesh, {2000});
    double length = 0;
    for (int i = 0; i < lines.Size(); ++i) length += LengthSeenFromAbove(lines[i]._line._x);
    const std::string base = directory.Path().c_str();
    OutputOf("gdal_contour -q -fl 2000 -f 'ESRI Shapefile' " + base + "/half.asc " + base + "/lines.shp");
    double gdal = 0;
    for (const GdalLine& line : LinesByGdal(directory / "lines.shp")) gdal += LengthSeenFromAbove(line.points);
    ASSERT_GT(gdal, 1000);
    EXPECT_NEAR(length, gdal, 0.03 * gdal);
}

TEST_F(SW_Mesh_Contour, GisReadsTheSameLines)
{
    SKIP_WITHOUT_GDAL();
    const auto mesh = HoneyCombMesh(20, 20, 5, [](double x, double y) { return 100 - std::hypot(x - 45, y - 40); });
    mesh->Set("ContourLinesMinorStep", "20");
    mesh->Set("ExportContourLines", directory / "lines.dxf");
    mesh->Set("ExportContourLines", directory / "lines.nxyz");
    const std::vector<GdalLine> found = LinesByGdal(directory / "lines.dxf");
    AK_TextReader own(directory / "lines.nxyz");
    size_t n = 0;
    for (AK_Polyline line; line.ReadFromNxyz(own); line = AK_Polyline(), ++n) {
        ASSERT_LT(n, found.size());
        EXPECT_EQ("contour_" + std::string(line.annotations.KeyValue("iso", '=', ';').c_str()), found[n].layer);
        const std::vector<AK_Vec>& points = found[n].points;
        ASSERT_GE(points.size(), size_t(line._x.Size()));   // with the point that closes it
        for (int i = 0; i < line._x.Size(); ++i) EXPECT_EQ(line._x[i], points[size_t(i)]);
    }
    EXPECT_EQ(n, found.size());
    EXPECT_GE(n, 3u);
}
