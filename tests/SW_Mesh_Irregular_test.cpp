// Irregular terrain: what each format gives, damaged files, triangulated points and break lines of every arrangement.

#include "SW_Mesh_Container.h"
#include "SW_Mesh_TestSupport.h"
#include "SW_Polygon.h"

#include <algorithm>
#include <set>

namespace {

double Random() { return AK_System::rand() / double(AK_System::rand_max); }

class SW_Mesh_Irregular : public TerrainTest {
protected:
    AK_String File(const char* name, const std::string& text)
    {
        WriteFile(directory / name, text);
        return directory / name;
    }

    std::unique_ptr<SW_Mesh> Imported(const char* name, const std::string& text)
    {
        auto mesh = NewMesh();
        Messages();
        mesh->Set("Import", File(name, text));
        return mesh;
    }

    bool Said(const std::string& begin)
    {
        const auto& all = messages.Texts();
        return std::any_of(all.begin(), all.end(), [&](const std::string& m) { return m.rfind(begin, 0) == 0; });
    }
};

// No circle through the corners of a cell holds the far corner of its neighbour, and the cells fill an area but for a
// share of it: slivers along the hull.
void ExpectSurface(const SW_Mesh& mesh, double area, double share, const char* why)
{
    SCOPED_TRACE(why);
    double sum = 0;
    int faults = 0;
    for (int cell = 0; cell < mesh.NumCells(); ++cell) {
        sum += mesh.CellNormal(cell).z;
        const IA4& c = mesh._lcv[cell];
        for (int k = 0; k < 3; ++k) {
            const int other = mesh._lcc[cell][k];
            for (int m = 0; other >= 0 && m < 3; ++m)
                if (mesh._lcc[other][m] == cell)
                    faults += AK_Vec2::InCircle(mesh._x[mesh._lcv[other][(m + 2) % 3]], mesh._x[c[(k + 2) % 3]],
                                                mesh._x[c[k]], mesh._x[c[(k + 1) % 3]]);
        }
    }
    EXPECT_EQ(faults, 0);
    EXPECT_LE(sum, area * (1 + 1e-9));
    EXPECT_GE(sum, area * (1 - share));
    EXPECT_DOUBLE_EQ(sum, mesh.ProjectedArea());
}

std::set<std::pair<int, int>> Edges(const SW_Mesh& mesh)
{
    std::set<std::pair<int, int>> edges;
    for (const IA4& c : mesh._lcv)
        for (int k = 0; k < 3; ++k) edges.insert(std::minmax(c[k], c[(k + 1) % 3]));
    return edges;
}

// Every segment that is left is an edge; the sum of their lengths seen from above.
double LengthOfSegments(const SW_Mesh& mesh)
{
    const auto edges = Edges(mesh);
    double length = 0;
    for (int i = 0; i < mesh._segments.Size(); i += 2) {
        const int a = mesh._segments[i];
        const int b = mesh._segments[i + 1];
        EXPECT_TRUE(edges.count(std::minmax(a, b))) << a << " " << b;
        length += Length(AK_Vec2(mesh._x[a]) - AK_Vec2(mesh._x[b]));
    }
    return length;
}

AK_Polyline Line(std::initializer_list<AK_Vec> points)
{
    AK_Polyline line;
    for (const AK_Vec& p : points) line._x.Append(p);
    return line;
}

}   // namespace

// ----------------------------------------------------------------------------------------------------------------
// Formats
// ----------------------------------------------------------------------------------------------------------------

TEST_F(SW_Mesh_Irregular, PointListsAreReadAsTheyComeFromTools)
{
    const struct {
        const char* why;
        std::string text;
        int points;
    } cases[] = {
        {"blanks", "0 0 1\n1 0 2\n0 1 3\n", 3},
        {"commas, header, comments, line ends of another system",
         "x,y,z\r\n0,0,1\r\n# 1 2 3\r\n1,0,2\r\n\r\n0,1,3,rock\r\n", 3},
        {"last line without a line feed", "0 0 1\n1 0 2\n0 1 3\n5 5 5", 3},
        {"two numbers, words, no numbers", "0 0 1\n1 0 2\n0 1 3\n7 7\nnan 1 2\n1 1e999 2\n", 3},
        {"NUL bytes", std::string("0 0\0 1\n1 0 2\n0 1 3\n\0", 21), 3},
        {"a line of a megabyte", "0 0 1\n1 0 2\n0 1 3" + std::string(1000000, ' ') + "9\n", 3},
    };
    for (const auto& c : cases) {
        const auto mesh = Imported("p.xyz", c.text);
        EXPECT_EQ(mesh->NumVertices(), c.points) << c.why;
        EXPECT_EQ(mesh->NumCells(), 1) << c.why;
        EXPECT_EQ(mesh->_x[2], (AK_Vec{0, 1, 3})) << c.why;
        EXPECT_STREQ(mesh->Get("ProjectedArea").c_str(), "0.5") << c.why;
    }
    const auto mesh = NewMesh();
    mesh->Set("Import", "/nonexistent/p.xyz");
    EXPECT_STREQ(AK_Object::_execStatus.c_str(), "cannot open file /nonexistent/p.xyz");
}

TEST_F(SW_Mesh_Irregular, ADrawingGivesItsPointsAndItsLinesAsEdges)
{
    const auto point = [](const char* x, const char* y, const char* z) {
        return std::string("  0\nPOINT\n  8\nlayer\n 10\n") + x + "\n 20\n" + y + "\n 30\n" + z + "\n";
    };
    const std::string points = "  0\r\nSECTION\r\n" + point("0", "0", "1") + point("10", "0", "2") +
                               point("oops", "5", "5") + point("0", "10", "3") + point("10", "10.5", "4");
    const std::string line = "  0\nPOLYLINE\n  8\nroad\n  0\nVERTEX\n 10\n2\n 20\n1\n 30\n7\n"
                             "  0\nVERTEX\n 10\n8\n 20\n9\n 30\n8\n  0\nSEQEND\n";
    const auto onlyPoints = Imported("d.dxf", points + "  0\nEOF\n");
    EXPECT_EQ(onlyPoints->NumVertices(), 4);
    EXPECT_EQ(onlyPoints->NumCells(), 2);
    EXPECT_EQ(onlyPoints->_x[3], (AK_Vec{10, 10.5, 4}));
    const auto both = Imported("d.DXF", points + line + "  0\nEOF\n");
    EXPECT_GE(both->NumVertices(), 6);
    EXPECT_NEAR(LengthOfSegments(*both), 10, 1e-12);
    ExpectConsistent(*both);
    const auto mesh = NewMesh();
    mesh->Set("Import", "/nonexistent/d.dxf");
    EXPECT_STREQ(AK_Object::_execStatus.c_str(), "cannot open dxf file /nonexistent/d.dxf");
}

TEST_F(SW_Mesh_Irregular, ATriangleListKeepsItsTrianglesButThoseWithoutArea)
{
    const std::string vertices = "0 0 0  9 9 9\n4\n0 0 1  9 0 2  9 9 3\n0 9 4\n";
    const auto mesh = Imported("t.tbp", vertices + "4\n1 2 3 0\n1 4 3 0\n2 2 3 7\n1 3 4 -5");
    ASSERT_EQ(mesh->NumCells(), 2);
    EXPECT_EQ(mesh->_lcv[1], (IA4{{0, 2, 3, -1}}));
    EXPECT_TRUE(Said("2 cells discarded because of zero or negative area!"));
    ExpectConsistent(*mesh);

    mesh->Set("Import", "/nonexistent/t.tbp");
    EXPECT_EQ(mesh->NumCells(), 2);
    EXPECT_TRUE(Said("cannot open file /nonexistent/t.tbp!"));

    const char* damaged[] = {"0 0 0 9 9",
                             "0 0 0  9 9 9\n4\n0 0 1",
                             "0 0 0  9 9 9\n2000000000\n0 0 1",
                             "0 0 0  9 9 9\n-1\n",
                             "0 0 0  9 9 9\n1\n1e999 0 0\n0\n",
                             "0 0 0  9 9 9\n3\n0 0 0 1 0 0 0 1 0\n1\n1 2 4 0\n",
                             "0 0 0  9 9 9\n3\n0 0 0 1 0 0 0 1 0\n2000000000\n1 2 3 0\n",
                             "0 0 0  9 9 9\n3\n0 0 0 1 0 0 0 1 0\n2\n1 2 3 0\n"};
    ak_msg_func = ak_default_msg_func;
    for (const char* text : damaged)
        EXPECT_EXIT(
            {
                ak_msg_func = [](const char* message, const char*) { std::fprintf(stderr, "%s\n", message); };
                Imported("t.tbp", text);
            },
            testing::KilledBySignal(SIGABRT), "ERROR:FATAL:stream.good\\(\\) failed!")
            << text;
}

// ----------------------------------------------------------------------------------------------------------------
// Points
// ----------------------------------------------------------------------------------------------------------------

TEST_F(SW_Mesh_Irregular, PointsOfEveryArrangementBecomeASurfaceOrNone)
{
    const struct {
        const char* why;
        int n;
        std::function<AK_Vec(int)> point;
        double area;        // m2; 0: no surface
        double share = 0;   // of it that may be missing along the hull
    } cases[] = {
        {"random, in a square with corners", 20004,
         [](int i) {
             return i < 4 ? AK_Vec{i % 2 * 100.0, i / 2 * 100.0, 0} : AK_Vec{100 * Random(), 100 * Random(), 0};
         },
         1e4, 0.005},
        {"clusters, in a square with corners", 3004,
         [](int i) {
             return i < 4 ? AK_Vec{i % 2 * 1e4, i / 2 * 1e4, 0} : AK_Vec{1e3 * (i % 9 + Random() * 0.001), 5e3, 0};
         },
         1e8, 0.15},
        {"a raster in UTM metres, each point twice", 20000,
         [](int i) {
             return AK_Vec{678901.25 + 5 * (i % 100), 5237000.75 + 5 * (i / 100 % 100), double(i)};
         },
         495.0 * 495.0, 1e-9},
        {"no points", 0, [](int) { return AK_Vec(); }, 0},
        {"one point", 1,
         [](int) {
             return AK_Vec{5, 5, 5};
         },
         0},
        {"two points", 2,
         [](int i) {
             return AK_Vec{double(i), 5, 5};
         },
         0},
        {"one place", 100,
         [](int) {
             return AK_Vec{5, 5, 5};
         },
         0},
        {"a line", 100,
         [](int i) {
             return AK_Vec{5e6 + 2.0 * i, 4e6 + 3.0 * i, 5};
         },
         0},
        {"no numbers and points beyond all maps", 7,
         [](int i) {
             return i < 4 ? AK_Vec{i % 2 * 1.0, i / 2 * 1.0, 0} : AK_Vec{i < 6 ? NAN : 1e300, 3e-300, 0};
         },
         1, 1e-9},
    };
    for (const auto& c : cases) {
        AK_System::srand(17);
        auto mesh = NewMesh();
        for (int i = 0; i < c.n; ++i) mesh->AddVertex(c.point(i));
        Messages();
        mesh->TriangulatePoints();
        EXPECT_EQ(mesh->NumVertices(), c.n) << c.why;
        if (c.area > 0) {
            ExpectSurface(*mesh, c.area, c.share, c.why);
        } else {
            EXPECT_EQ(mesh->NumCells(), 0) << c.why;
            EXPECT_TRUE(Said("WARNING:no surface") || Said("no points to triangulate")) << c.why;
            EXPECT_EQ(mesh->CellContainingPoint({5, 5}, -1), -1);
            mesh->LoadPolylines(AK_List<AK_Polyline>(), 1);
            EXPECT_EQ(mesh->NumCells(), 0) << c.why;
        }
        const AK_List<IA4> first = mesh->_lcv;
        mesh->TriangulatePoints();
        EXPECT_TRUE(std::equal(first.begin(), first.end(), mesh->_lcv.begin(), mesh->_lcv.end())) << c.why;
    }
}

// ----------------------------------------------------------------------------------------------------------------
// Break lines
// ----------------------------------------------------------------------------------------------------------------

TEST_F(SW_Mesh_Irregular, BreakLinesStandAsEdgesInEveryKindOfMesh)
{
    const double lineLength = std::sqrt(80.0 * 80.0 + 35.0 * 35.0);
    for (const AK_Vec2 origin : {AK_Vec2(0, 0), AK_Vec2(678901.23, 5237123.45)})
        for (int kind = 0; kind < 3; ++kind) {
            const Height height = [&](double x, double y) { return Plane(x - origin.x, y - origin.y); };
            auto mesh = kind == 0   ? CartesianMesh(10, 8, 10, height, origin)
                        : kind == 1 ? HoneyCombMesh(10, 8, 10, height)
                                    : IrregularMesh(10, 8, 10, height);
            if (kind > 0)
                for (AK_Vec& x : mesh->_x) x += AK_Vec{origin.x, origin.y, 0};
            const int before = mesh->NumVertices();
            AK_List<AK_Polyline> lines(1);
            lines.Append(Line({{origin.x + 5, origin.y + 7, 500}, {origin.x + 85, origin.y + 42, 600}}));
            mesh->LoadPolylines(lines, 1);
            EXPECT_EQ(mesh->Get("RegularGrid"), "0");
            EXPECT_NEAR(LengthOfSegments(*mesh), lineLength, 1e-7);
            ExpectConsistent(*mesh);
            EXPECT_GT(mesh->NumVertices(), before + 2);
            for (int i = before; i < mesh->NumVertices(); ++i)   // heights run along the line
                EXPECT_NEAR(mesh->_x[i].z, 500 + 100 * (mesh->_x[i].x - origin.x - 5) / 80, 1e-6);
            // A second line keeps the first.
            lines[0] = Line({{origin.x + 5, origin.y + 60, 500}, {origin.x + 85, origin.y + 60.5, 600}});
            mesh->LoadPolylines(lines, 1);
            EXPECT_NEAR(LengthOfSegments(*mesh), lineLength + std::hypot(80, 0.5), 1e-7);
            mesh->LoadPolylines(lines, 0);
            EXPECT_EQ(mesh->NumCells(), 0);   // the line alone
        }
}

TEST_F(SW_Mesh_Irregular, WhereLinesCrossOnlyShortPiecesAreGivenUp)
{
    auto mesh = CartesianMesh(20, 20, 5, Plane);
    AK_List<AK_Polyline> lines(1);
    lines.Append(Line({{3, 4, 0}, {97, 88, 0}}));
    lines.Append(Line({{4, 93, 0}, {91, 7, 0}}));
    lines.Append(Line({{50.1, 2, 0}, {50.1, 98, 0}}));
    double length = 0;
    for (const AK_Polyline& line : lines) length += Length(AK_Vec2(line._x[1]) - AK_Vec2(line._x[0]));
    Messages();
    mesh->LoadPolylines(lines, 1);
    double shortest = 0;
    for (const std::string& text : messages.Texts())
        if (text.rfind("min edge length for splitting:", 0) == 0) shortest = std::atof(text.c_str() + 30);
    EXPECT_GT(shortest, 0.01);
    EXPECT_LT(shortest, 0.1);
    const double kept = LengthOfSegments(*mesh);
    EXPECT_LT(kept, length);
    EXPECT_GT(kept, length - 12 * shortest);   // three crossings, two pieces of each line
    ExpectConsistent(*mesh);
}

TEST_F(SW_Mesh_Irregular, CommandsTakeLinesFromFilesAndFromTheProject)
{
    SW_Meshes meshes("DHMs", nullptr);
    meshes.Set("CreateMesh", "m");
    auto& mesh = dynamic_cast<SW_Mesh&>(*meshes.Component("m"));
    mesh.Import(File("r.asc", "ncols 4 nrows 4 xllcenter 0 yllcenter 0 cellsize 10 nodata_value -9\n"
                              "1 1 1 1\n1 1 1 1\n1 1 1 1\n1 1 1 1\n"),
                0);
    const auto expectUnchanged = [&](const char* command, const AK_String& value) {
        mesh.Set(command, value);
        EXPECT_STREQ(mesh.Get("RegularGrid").c_str(), "1") << command << " " << value.c_str();
    };
    expectUnchanged("InsertBreakLine", "");
    expectUnchanged("InsertBreakLine", "../nobody");
    expectUnchanged("InsertBreakLine", "../m");
    expectUnchanged("InsertBreakLines", File("lines.txt", "2\n0 0 0\n5 5 5\n"));
    expectUnchanged("InsertBreakLines", File("empty.nxyz", ""));
    mesh.Set("InsertBreakLines", "/nonexistent/lines.nxyz");
    EXPECT_STREQ(AK_Object::_execStatus.c_str(), "cannot open dxf file /nonexistent/lines.nxyz");
    EXPECT_STREQ(mesh.Get("RegularGrid").c_str(), "1");

    auto* line = new SW_Polyline("ridge", nullptr);
    AK_Polyline points = Line({{2, 3, 5}, {28, 3.5, 5}});
    line->SetLine(points);
    meshes.AddComponent(line);
    mesh.Set("InsertBreakLine", "../ridge");
    EXPECT_STREQ(mesh.Get("RegularGrid").c_str(), "0");
    EXPECT_NEAR(LengthOfSegments(mesh), std::hypot(26, 0.5), 1e-9);
    mesh.Set("InsertBreakLines", File("lines.nxyz", "2\n2 13 5\n28 13 5\n"));
    EXPECT_NEAR(LengthOfSegments(mesh), std::hypot(26, 0.5) + 26, 1e-9);
    EXPECT_STREQ(AK_Object::_execStatus.c_str(), "");

    const auto& told = messages.Texts();
    const auto timesTold = [&](const AK_String& text) {
        return std::count_if(told.begin(), told.end(),
                             [&](const std::string& m) { return m.find(text.c_str()) != std::string::npos; });
    };
    const AK_String warning = ": the side that closes the ring becomes no break line";
    EXPECT_EQ(timesTold(warning), 0);
    const AK_String rings = File("ring.nxyz", "3\n2 2 5\n9 2 5\n9 9 5\n4\n12 2 5\n19 2 5\n19 9 5\n12 2 5\n");
    mesh.Set("InsertBreakLines", rings);
    EXPECT_EQ(timesTold(warning), 1);
    EXPECT_EQ(timesTold(AK_String("WARNING:") + rings + ", line 9" + warning), 1);
    auto* area = new SW_Polygon("area", nullptr);
    area->SetLine(Line({{21, 21, 5}, {28, 21, 5}, {28, 28, 5}}));
    meshes.AddComponent(area);
    mesh.Set("InsertBreakLine", "../area");
    EXPECT_EQ(timesTold(warning), 2);
}

// Contour lines of the Serles every 20 m, back as break lines, against the raster they were drawn from. On a line the
// heights agree; between two of them, and where triangles lie flat within one, they differ by less than the distance of
// the lines.
TEST_F(SW_Mesh_Irregular, ContourLinesOfRealTerrainGiveTheTerrainBack)
{
    auto terrain = NewMesh();
    terrain->Import(KORVO_SOURCE_DIR "/examples/serles/serles_10m.asc", 0);
    terrain->Set("ContourLinesMinorStep", "20");
    const AK_String file = directory / "contours.nxyz";
    terrain->ExportContourLines(file);
    auto back = NewMesh();
    back->Import(file, 0);
    EXPECT_GT(back->NumVertices(), 50000);
    int cell = 0, inside = 0;
    double sum = 0, largest = 0;
    for (const AK_Vec& x : terrain->_x) {
        AK_Vec p = x;
        cell = back->Project(p, std::max(cell, 0));
        if (cell < 0) continue;
        ++inside;
        sum += std::fabs(p.z - x.z);
        largest = std::max(largest, std::fabs(p.z - x.z));
    }
    EXPECT_GT(inside, 0.98 * terrain->NumVertices());
    EXPECT_LT(sum / inside, 1.5);   // m
    EXPECT_LT(largest, 20.0);
}
