// Grids from numbers, covers and projections of one mesh onto another, and the grid that simulations run on.

#include "SW_Mesh_Container.h"
#include "SW_Mesh_TestSupport.h"
#include "SW_Polyline.h"

#include <algorithm>
#include <cstdlib>

namespace {

class SW_Mesh_Grid : public TerrainTest {
protected:
    SW_Mesh_Grid()
    {
        project.AddComponent(new SW_Meshes("DHMs", nullptr));
        project.AddComponent(new SW_Meshes("ReleaseDHMs", nullptr));
    }

    SW_Meshes& Meshes(const char* id = "DHMs") { return static_cast<SW_Meshes&>(*project.Component(id)); }
    SW_Mesh* Mesh(const AK_String& id) { return dynamic_cast<SW_Mesh*>(Meshes().Component(id)); }

    // A mesh of the project with the geometry of another one.
    SW_Mesh* Add(const char* id, const SW_Mesh& geometry)
    {
        SW_Mesh* mesh = Meshes().CreateMesh(id);
        mesh->_x = geometry._x;
        if (geometry.IsCartesian())
            mesh->SetCartesianCells(geometry.Grid());
        else
            mesh->_lcv = geometry._lcv;
        Finish(*mesh);
        return mesh;
    }

    bool Said(const std::string& part)
    {
        const auto& all = messages.Texts();
        return std::any_of(all.begin(), all.end(), [&](const auto& m) { return m.find(part) != std::string::npos; });
    }

    AK_Object project{"Project", nullptr};
};

void Fill(SW_Mesh& mesh, const char* dx, const char* xll, const char* upperRight)
{
    mesh.Set("Dx", dx);
    mesh.Set("Xll", xll);
    mesh.Set("Xor", upperRight);
}

}   // namespace

TEST_F(SW_Mesh_Grid, FillsItsRectangleWithSquaresOrReachesBeyondItWithTriangles)
{
    const struct {
        const char* command;
        const char* upperRight;
        int nx, ny;
        double area;   // m2, by hand; a row of honeycomb is as wide as nx cells
    } cases[] = {
        {"SetToCartesianGrid", "130 245", 3, 4, 12 * 100},
        {"SetToCartesianGrid", "139.9 249.9", 3, 4, 12 * 100},
        {"SetToHoneyCombGrid", "130 240", 4, 5, 20 * 100 * 0.8660254037844387},
        {"SetToHoneyCombGrid", "130 243.3", 4, 5, 20 * 100 * 0.8660254037844387},
    };
    for (const auto& c : cases) {
        const auto mesh = NewMesh();
        Fill(*mesh, "10", "100 200", c.upperRight);
        mesh->Set(c.command, "");
        EXPECT_STREQ(mesh->Get("Nx").c_str(), AK_String(c.nx, "%d").c_str()) << c.command << c.upperRight;
        EXPECT_STREQ(mesh->Get("Ny").c_str(), AK_String(c.ny, "%d").c_str()) << c.command << c.upperRight;
        EXPECT_STREQ(mesh->Get("Xor").c_str(), c.upperRight) << "the rectangle stays as it was given";
        EXPECT_NEAR(mesh->ProjectedArea(), c.area, 1e-9);
        EXPECT_EQ(mesh->_x[0], (AK_Vec{100, 200, 0}));
        ExpectConsistent(*mesh);
    }
}

TEST_F(SW_Mesh_Grid, WhatIsNoGridIsRefusedAndLeavesTheMesh)
{
    const struct {
        const char *dx, *upperRight;
    } cases[] = {{"0", "10 10"},    {"-1", "10 10"},  {"nan", "10 10"},    {"inf", "10 10"},
                 {"20", "10 10"},   {"1", "0 10"},    {"1", "-10 -10"},    {"1e-4", "10 10"},
                 {"1", "1e300 10"}, {"1", "nan nan"}, {"1e-300", "10 10"}, {"1", "60000 60000"}};
    auto mesh = CartesianMesh(2, 2, 5, Plane);
    const auto refuses = [&](const char* command, const char* why) {
        mesh->Set(command, "");
        EXPECT_FALSE(AK_Object::_execStatus.IsEmpty()) << command << " " << why;
        EXPECT_EQ(mesh->NumCells(), 4);
    };
    for (const auto& c : cases) {
        Fill(*mesh, c.dx, "0 0", c.upperRight);
        refuses("SetToCartesianGrid", c.dx);
    }
    for (const char* dx : {"0", "nan"}) {
        Fill(*mesh, dx, "0 0", "10 10");
        refuses("SetToHoneyCombGrid", dx);
        refuses("SetToPlane", dx);
    }
    mesh->Set("Dx", "1");
    for (const char* ny : {"0", "-1", "2147483647"}) {
        mesh->Set("Ny", ny);
        refuses("SetToPlane", ny);
    }
}

TEST_F(SW_Mesh_Grid, ATroughIsAPartOfACylinder)
{
    const auto mesh = NewMesh();
    for (const auto& [attr, value] :
         {std::pair{"Nx", "4"}, {"Ny", "2"}, {"Length", "20"}, {"Width", "10"}, {"Inclination", "10"}, {"Dx", "5"}})
        mesh->Set(attr, value);
    mesh->Set("SetToPlane", "");
    ASSERT_EQ(mesh->NumVertices(), 15);
    EXPECT_EQ(mesh->_x[0], (AK_Vec{0, 0, 10}));
    EXPECT_NEAR(mesh->_x[5].z, 10 - std::sqrt(75.0), 1e-12);
    EXPECT_EQ(mesh->_x[8], (AK_Vec{10, 10, 0}));
    ExpectConsistent(*mesh);
    mesh->Set("Length", "1000");
    mesh->Set("SetToPlane", "");
    EXPECT_TRUE(std::isnan(mesh->_x[0].z)) << "beyond the radius";
}

TEST_F(SW_Mesh_Grid, CoversAnotherMeshWithItsHeights)
{
    const SW_Mesh* base = Add("base", *IrregularMesh(6, 6, 10, Hill));
    for (const char* name : {"base", "../base", "Project/DHMs/base"}) {
        SW_Mesh* cover = Meshes().CreateMesh("cover");
        Fill(*cover, "4", "7 7", "8 8");
        cover->Set("BaseMesh", name);
        cover->Set("CoverWithCartesianGrid", "");
        ASSERT_EQ(cover->NumVertices(), 16 * 16) << name;
        EXPECT_STREQ(cover->Get("Xor").c_str(), "60 60");
        EXPECT_STREQ(cover->Get("BaseMesh").c_str(), "../base");
        for (const AK_Vec& x : cover->_x) {
            AK_Vec below = x;
            const bool inside = base->Project(below, -1) >= 0;
            EXPECT_TRUE(!inside || std::fabs(x.z - below.z) < 1e-3);   // on an edge either cell may answer
        }
        EXPECT_EQ(cover->Get("RegularGrid") == "1", true);
        ExpectConsistent(*cover);
        cover->Set("CoverWithHoneyCombGrid", "");   // its rim lies outside
        EXPECT_GT(cover->NumCells(), 2 * 13 * 15);
        EXPECT_LT(cover->NumCells(), 2 * 16 * 18);
        ExpectConsistent(*cover);
        Meshes().DeleteComponent(cover->Id());
    }
    SW_Mesh* self = Add("self", *CartesianMesh(2, 2, 10, Plane));
    for (const char* name : {"../self", "nothing", ""}) {
        self->Set("BaseMesh", name);
        self->Set("CoverWithCartesianGrid", "");
        self->Set("ProjectOnto", name);
        EXPECT_EQ(self->NumCells(), 4) << name;
        EXPECT_EQ(self->_x[8].z, Plane(20, 20)) << name;
    }
}

TEST_F(SW_Mesh_Grid, ProjectionFillsOrRemovesWhatLiesBesideTheOtherMesh)
{
    Add("half", *CartesianMesh(5, 10, 10, Plane));
    const struct {
        const char* iterations;
        int vertices;
    } cases[] = {{"50", 121}, {"0", 55}};
    for (const auto& c : cases) {
        SW_Mesh* mesh = Add("whole", *CartesianMesh(10, 10, 10, Hill, {0, 0}));
        auto* line = new SW_Polyline("line", nullptr);
        line->Set("AppendPoint", "15 25 -1");
        mesh->AddComponent(line);
        mesh->Set("NumNoDataValueInterpolationIterations", c.iterations);
        mesh->_segments.Append(11 * 1 + 1);
        mesh->_segments.Append(11 * 2 + 2);
        mesh->_segments.Append(11 * 2 + 2);
        mesh->_segments.Append(11 * 9 + 9);
        mesh->Set("ProjectOnto", "../half");
        ASSERT_EQ(mesh->NumVertices(), c.vertices - (c.vertices == 55 ? 5 : 0)) << "the upper rim of a grid is outside";
        for (const AK_Vec& x : mesh->_x) EXPECT_TRUE(std::isfinite(x.z) && std::fabs(x.z) < 1000) << x.x << " " << x.y;
        EXPECT_EQ(mesh->_x[11].z, Plane(mesh->_x[11].x, mesh->_x[11].y));
        EXPECT_NEAR(line->Points()[0].z, Plane(15, 25), 1e-9) << "components follow";
        const int pieces = c.vertices == 55 ? 1 : 2;
        ASSERT_EQ(mesh->_segments.Size(), 2 * pieces) << "break lines keep to vertices that are left";
        EXPECT_EQ(mesh->_x[mesh->_segments[1]].x, 20);
        ExpectConsistent(*mesh);
        Meshes().DeleteComponent(mesh->Id());
    }
    SW_Mesh* beside = Add("beside", *CartesianMesh(3, 3, 10, Hill, {1000, 0}));
    beside->Set("ProjectOnto", "half");
    EXPECT_EQ(beside->NumCells(), 0);
    EXPECT_EQ(beside->ProjectedArea(), 0);
    EXPECT_TRUE(Said("WARNING: no-data values only"));
}

TEST_F(SW_Mesh_Grid, NormalsTakeTheDirectionOfThoseOfAnotherMesh)
{
    Add("plane", *IrregularMesh(4, 4, 10, Plane));
    SW_Mesh* mesh = Add("flat", *CartesianMesh(6, 6, 10, [](double, double) { return 0; }));
    mesh->Set("InterpolateNormalsFrom", "../plane");
    const AK_Vec inside = mesh->_vertexNormals[2 * 7 + 2];
    EXPECT_NEAR(inside.x, -0.5 * 100, 1e-9);
    EXPECT_NEAR(inside.y, 0.25 * 100, 1e-9);
    EXPECT_NEAR(inside.z, 100, 1e-9) << "its own";
    EXPECT_EQ(mesh->_vertexNormals[6 * 7 + 6], (AK_Vec{0, 0, 25})) << "outside it stays";
}

// ----------------------------------------------------------------------------------------------------------------
// Simulation meshes
// ----------------------------------------------------------------------------------------------------------------

TEST_F(SW_Mesh_Grid, AnImportMakesTheGridForSimulations)
{
    const AK_String raster = KORVO_SOURCE_DIR "/examples/serles/serles_10m.asc";
    Meshes().Set("AutoCreateSimulationMesh", "1");
    Meshes().Set("Import", raster);
    const SW_Mesh* base = Mesh("serles_10m");
    const SW_Mesh* made = Mesh("serles_10m_simulation");
    ASSERT_TRUE(base && made);
    EXPECT_STREQ(made->Get("Active").c_str(), "0");
    EXPECT_STREQ(made->Get("BaseMesh").c_str(), "../serles_10m");
    EXPECT_STREQ(made->Get("Dx").c_str(), "5");
    const int rounds = int(base->Resolution() / 5);
    EXPECT_STREQ(made->Get("SmootherIterations").c_str(), AK_String(rounds, "%d").c_str());
    EXPECT_GE(rounds, 1);
    EXPECT_NEAR(base->Resolution(), 10, 1e-6);
    ExpectConsistent(*made);
    double sum = 0, squares = 0;
    int n = 0;
    for (const AK_Vec& x : made->_x) {
        AK_Vec below = x;
        if (base->Project(below, 0) < 0) continue;
        sum += x.z - below.z;
        squares += (x.z - below.z) * (x.z - below.z);
        ++n;
    }
    EXPECT_GT(n, 640 * 710);
    EXPECT_LT(std::fabs(sum / n), 0.05) << "smoothing keeps the mean height";
    EXPECT_LT(std::sqrt(squares / n), 2) << "and rounds little but cliffs";

    Meshes().Set("SimulationDefaultCellSize", "10");
    Meshes().Set("Import", raster);
    EXPECT_EQ(Meshes().NumComponents(), 3) << "it has the size for simulations itself";
}

TEST_F(SW_Mesh_Grid, NoSimulationMeshIsMadeOfNothing)
{
    Add("base", *CartesianMesh(4, 4, 10, Plane));
    for (const auto& [id, size] :
         {std::pair{"unknown", "5"}, {"", "5"}, {"base", "0"}, {"base", "nan"}, {"base", "1000"}}) {
        Meshes().Set("SimulationDefaultCellSize", size);
        Meshes().Set("CreateSimulationMesh", id);
        EXPECT_EQ(Meshes().NumComponents(), 1) << id << " " << size;
    }
}

TEST_F(SW_Mesh_Grid, FilledGapsOfReleaseTerrainAreToldOf)
{
    const char* raster =
        "ncols 3\nnrows 3\nxllcenter 0\nyllcenter 0\ncellsize 10\nnodata_value -9\n1 1 1 1 -9 1 1 1 1\n";
    WriteFile(directory / "depth.asc", raster);
    Meshes().Set("Import", directory / "depth.asc");
    EXPECT_FALSE(Said("release"));
    Meshes("ReleaseDHMs").Set("Import", directory / "depth.asc");
    EXPECT_TRUE(Said("WARNING: the filled gaps of 'depth' release"));
    Messages();
    SW_Mesh* mesh = Meshes("ReleaseDHMs").CreateMesh("with_gaps");
    mesh->Set("NumNoDataValueInterpolationIterations", "0");
    mesh->Set("Import", directory / "depth.asc");
    EXPECT_FALSE(Said("WARNING")) << "the way that the warning names";
    EXPECT_EQ(mesh->NumCells(), 0);
}
