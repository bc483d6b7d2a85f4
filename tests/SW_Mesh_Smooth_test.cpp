// Smoothing, edge flips and derived fields, held against direct computation on small meshes.

#include "SW_Mesh_TestSupport.h"
#include "SW_ScalarField.h"
#include "SW_VectorField.h"

#include <algorithm>

namespace {

class SW_Mesh_Smooth : public TerrainTest {
protected:
    int TimesSaid(const std::string& text)
    {
        const auto& all = messages.Texts();
        return int(std::count(all.begin(), all.end(), text));
    }
};

using SW_Mesh_Curvature = SW_Mesh_Smooth;

// Triangles only; all diagonals run from the lower left to the upper right, or all the other way.
std::unique_ptr<SW_Mesh> TriangleMesh(int n, const Height& z, bool rising, double jitter = 0)
{
    auto mesh = NewMesh();
    AK_System::srand(11);
    const auto moved = [&] { return (AK_System::rand() / double(AK_System::rand_max) - 0.5) * jitter; };
    for (int i = 0; i <= n; ++i)
        for (int j = 0; j <= n; ++j) {
            const double x = i + moved(), y = j + moved();
            mesh->AddVertex({x, y, z(x, y)});
        }
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
            const int a = i * (n + 1) + j, b = a + n + 1;
            mesh->_lcv.Append(rising ? IA4{{a, b, b + 1, -1}} : IA4{{b, a + 1, a, -1}});
            mesh->_lcv.Append(rising ? IA4{{b + 1, a + 1, a, -1}} : IA4{{a + 1, b, b + 1, -1}});
        }
    Finish(*mesh);
    return mesh;
}

double Bumps(double x, double y) { return std::sin(1.7 * x) * std::cos(2.3 * y); }

// The cell and its face that walk from one vertex to another; the cell is -1 if there is none.
std::pair<int, int> FaceFrom(const SW_Mesh& mesh, int v0, int v1)
{
    for (int cell = 0; cell < mesh.NumCells(); ++cell)
        for (int k = 0; k < 3; ++k)
            if (mesh._lcv[cell][k] == v0 && mesh._lcv[cell][(k + 1) % 3] == v1) return {cell, k};
    return {-1, -1};
}

// Length times bend of the edge v0 -> v1, found by searching the whole mesh.
double BendOf(const SW_Mesh& mesh, int v0, int v1)
{
    const int left = FaceFrom(mesh, v0, v1).first, right = FaceFrom(mesh, v1, v0).first;
    if (left < 0 || right < 0) return 0;
    const AK_Vec n = mesh.CellNormal(left), m = mesh.CellNormal(right);
    return Length(mesh._x[v0] - mesh._x[v1]) * (1 - Dot(n, m) / (Length(n) * Length(m)));
}

}   // namespace

TEST_F(SW_Mesh_Smooth, EachVertexTakesTheMeanOfTheMeansOfItsCells)
{
    for (int n : {0, 1, 3}) {
        auto mesh = IrregularMesh(4, 3, 10, Hill);
        std::vector<AK_Vec> expected(mesh->_x.begin(), mesh->_x.end());
        for (int round = 0; round < n; ++round) {
            std::vector<AK_Vec> next;
            for (int v = 0; v < mesh->NumVertices(); ++v) {
                AK_Vec sum;
                int cells = 0;
                for (const IA4& c : mesh->_lcv) {
                    const int corners = c[3] < 0 ? 3 : 4;
                    if (std::find(c.index, c.index + corners, v) == c.index + corners) continue;
                    AK_Vec mean;
                    for (int k = 0; k < corners; ++k) mean += expected[size_t(c[k])];
                    sum += mean * (1.0 / corners);
                    ++cells;
                }
                next.push_back(sum * (1.0 / cells));
            }
            expected = next;
        }
        mesh->Set("SmootherIterations", AK_String(n, "%d"));
        mesh->_vertexNormals.Clear();
        mesh->Set("Smooth", "");
        for (int v = 0; v < mesh->NumVertices(); ++v)
            EXPECT_LT(Length(mesh->_x[v] - expected[size_t(v)]), 1e-10) << n << " rounds, vertex " << v;
        ExpectConsistent(*mesh);   // with new normals
        EXPECT_EQ(TimesSaid("smoothing mesh m " + std::to_string(n) + " times..."), 1);
        EXPECT_EQ(TimesSaid("contour lines of m computed"), 1) << "once more in each round of the test";
        Messages();
    }
}

TEST_F(SW_Mesh_Smooth, NormalsAreSmoothedWithoutTheSurface)
{
    auto mesh = TriangleMesh(6, Bumps, true);
    const AK_List<AK_Vec> before = mesh->_x;
    AK_List<AK_Vec> expected = mesh->_vertexNormals;
    mesh->SmoothVectorsAtVertices(expected, 10);
    mesh->_vertexNormals.Clear();   // they are made when they are not there
    mesh->Set("SmoothVertexNormals", "");
    for (int v = 0; v < mesh->NumVertices(); ++v) {
        EXPECT_EQ(mesh->_x[v], before[v]);
        EXPECT_EQ(mesh->_vertexNormals[v], expected[v]);
    }
    mesh->AddVertex({3, 3, 3});   // in no cell
    mesh->Smooth(1);
    EXPECT_TRUE(std::isnan(mesh->_x[49].z));
    EXPECT_TRUE(std::isfinite(mesh->_x[48].z));
}

TEST_F(SW_Mesh_Smooth, FieldsOfTheSurface)
{
    const double radius = 50;   // of a sphere: it bends by the same everywhere
    auto mesh = CartesianMesh(20, 20, 1, [&](double x, double y) {
        return std::sqrt(radius * radius - (x - 10) * (x - 10) - (y - 10) * (y - 10));
    });
    for (int again = 0; again < 2; ++again) {
        mesh->Set("CreateCurvatureField", "");
        mesh->Set("CreateNormalsField", "");
    }
    ASSERT_EQ(mesh->NumComponents(), 2);
    const auto& curvature = dynamic_cast<const SW_ScalarField&>(*mesh->Component("curvature"));
    const auto& normals = dynamic_cast<const SW_VectorField&>(*mesh->Component("normals"));
    EXPECT_STREQ(curvature.Label().c_str(), "m curvature [1/m]");
    ASSERT_EQ(curvature._values.Size(), mesh->NumCells());
    for (int i = 1; i < 19; ++i)
        for (int j = 1; j < 19; ++j) EXPECT_NEAR(double(curvature._values[i * 20 + j]), 1 / radius, 0.05 / radius);
    ASSERT_EQ(normals._values.Size(), mesh->NumVertices());
    for (int i = 1; i < 20; ++i) {
        const int v = i * 21 + i;
        EXPECT_LT(Length(normals._values[v] - mesh->_x[v] * (1 / radius) + AK_Vec{10, 10, 0} * (1 / radius)), 0.01);
    }
    mesh->Set("RemoveCurvatureField", "");
    mesh->Set("RemoveNormalsField", "");
    EXPECT_EQ(mesh->NumComponents(), 0);
}

// ----------------------------------------------------------------------------------------------------------------
// Flips
// ----------------------------------------------------------------------------------------------------------------

TEST_F(SW_Mesh_Curvature, CountsTheEdgeThriceAndTheNextEdgeOfEachTriangleOnce)
{
    const auto mesh = TriangleMesh(5, Bumps, true, 0.3);
    for (int cell = 0; cell < mesh->NumCells(); ++cell)
        for (int face = 0; face < 3; ++face) {
            const IA4& c = mesh->_lcv[cell];
            const int a = c[face], b = c[(face + 1) % 3], p = c[(face + 2) % 3];
            const auto [other, back] = FaceFrom(*mesh, b, a);
            double expected = 0;
            if (other >= 0)
                expected =
                    3 * BendOf(*mesh, a, b) + BendOf(*mesh, b, p) + BendOf(*mesh, a, mesh->_lcv[other][(back + 2) % 3]);
            EXPECT_NEAR(mesh->TotalCurvature(cell, face), expected, 1e-12) << "cell " << cell << ", face " << face;
        }
}

TEST_F(SW_Mesh_Curvature, ASecondFlipRestoresCellsAndNeighboursExactly)
{
    const auto mesh = TriangleMesh(6, Bumps, true, 0.5);
    const auto same = [&](const AK_List<IA4>& a, const AK_List<IA4>& b) {
        return std::equal(a.begin(), a.end(), b.begin(), b.end());
    };
    std::vector<std::pair<int, int>> flips;
    std::vector<AK_List<IA4>> cells{mesh->_lcv}, neighbors{mesh->_lcc};
    int flipped = 0;
    for (int round = 0; round < 500; ++round) {   // each on what those before have left
        const int cell = AK_System::rand() % mesh->NumCells(), face = AK_System::rand() % 3;
        if (!mesh->HasFlipableEdge(cell, face)) continue;
        ASSERT_EQ(mesh->FlipEdge(cell, face), 1);
        ASSERT_FALSE(same(mesh->_lcv, cells.back()));
        ExpectConsistent(*mesh);   // cells still run counter-clockwise
        ASSERT_EQ(mesh->FlipEdge(cell, face), 1);
        ASSERT_TRUE(same(mesh->_lcv, cells.back()));
        ASSERT_TRUE(same(mesh->_lcc, neighbors.back()));
        mesh->FlipEdge(cell, face);
        flips.push_back({cell, face});
        cells.push_back(mesh->_lcv);
        neighbors.push_back(mesh->_lcc);
        ++flipped;
    }
    EXPECT_GT(flipped, 100);
    for (; !flips.empty(); flips.pop_back()) {
        mesh->FlipEdge(flips.back().first, flips.back().second);
        cells.pop_back();
        neighbors.pop_back();
        ASSERT_TRUE(same(mesh->_lcv, cells.back()) && same(mesh->_lcc, neighbors.back()));
    }
}

TEST_F(SW_Mesh_Curvature, OnlyConvexPairsOfTrianglesAreFlipped)
{
    const struct {
        const char* why;
        AK_Vec p, q;   // beside the edge (0, 0) -> (2, 0)
        int expected;
    } cases[] = {{"convex", {1, 1, 0}, {1, -1, 0}, 1},
                 {"concave at the first end", {-1, 0.5, 0}, {-1, -0.5, 0}, 0},
                 {"concave at the second end", {3, 0.5, 0}, {3, -0.5, 0}, 0},
                 {"straight at an end", {2, 1, 0}, {2, -1, 0}, 0}};
    for (const auto& c : cases) {
        auto mesh = NewMesh();
        for (const AK_Vec& x : {AK_Vec{0, 0, 0}, AK_Vec{2, 0, 0}, c.p, c.q}) mesh->AddVertex(x);
        mesh->_lcv.Append({{2, 0, 1, -1}});
        mesh->_lcv.Append({{1, 0, 3, -1}});
        Finish(*mesh);
        EXPECT_EQ(mesh->HasFlipableEdge(0, 1), c.expected) << c.why;
        EXPECT_EQ(mesh->HasFlipableEdge(1, 0), c.expected) << c.why;
        EXPECT_EQ(mesh->HasFlipableEdge(0, 0) + mesh->FlipEdge(0, 0), 0) << "where the mesh ends";
    }
    auto mixed = IrregularMesh(3, 3, 1, Bumps);
    const AK_List<IA4> before = mixed->_lcv;
    mixed->Set("MinimizeCurvature", "");
    for (int cell = 0; cell < mixed->NumCells(); ++cell) {
        if (before[cell][3] < 0) continue;
        EXPECT_EQ(mixed->_lcv[cell], before[cell]);
        EXPECT_EQ(mixed->FlipEdge(cell, 0), 0);
    }
}

TEST_F(SW_Mesh_Curvature, EdgesTurnAlongARidge)
{
    const auto ridge = [](double x, double y) { return 5 - std::fabs(x - y); };
    auto mesh = TriangleMesh(8, ridge, false);   // diagonals run across it
    mesh->Set("MinimizeCurvature", "");
    for (int i = 0; i < 8; ++i) {
        const int v = i * 9 + i;
        EXPECT_TRUE(FaceFrom(*mesh, v, v + 10).first >= 0 || FaceFrom(*mesh, v + 10, v).first >= 0) << i;
        AK_Vec p{i + 0.5, i + 0.5, 0};
        ASSERT_GE(mesh->Project(p, 0), 0);
        EXPECT_NEAR(p.z, 5, 1e-12);
    }
    ExpectConsistent(*mesh);
    EXPECT_EQ(TimesSaid("minimizing curvature iteration..."), 3);
    EXPECT_EQ(TimesSaid("0 edges flipped"), 2) << "once when there is nothing left to do, and once to see it";
    EXPECT_EQ(TimesSaid("contour lines of m computed"), 1);
}

TEST_F(SW_Mesh_Curvature, NothingTurnsOnAPlane)
{
    for (const double slope : {0.0, 0.3, 1.7}) {
        for (const double size : {1.0, 0.7, 12.3}) {   // of areas whose reciprocal is rounded, too
            Messages();
            auto plane = TriangleMesh(
                20, [](double, double) { return 0; }, true);
            for (AK_Vec& x : plane->_x) {
                x = {x.x * size + 0.1 * std::sin(9 * x.y), x.y * size * 1.3 + 0.1 * std::sin(7 * x.x), 0};
                x.z = 1000 + slope * x.x - 0.6 * slope * x.y;
            }
            plane->Set("MinimizeCurvature", "");
            EXPECT_EQ(TimesSaid("0 edges flipped"), 2) << slope << " " << size;
        }
    }
}

TEST_F(SW_Mesh_Curvature, AHoneycombThatHasLostItsPatternIsSearchedCellByCell)
{
    auto mesh = HoneyCombMesh(8, 8, 1, Bumps);
    mesh->Set("MinimizeCurvature", "");
    for (int i = 0; i < 200; ++i) {
        const AK_Vec2 p(1 + 6.0 * AK_System::rand() / double(AK_System::rand_max),
                        1 + 5.0 * AK_System::rand() / double(AK_System::rand_max));
        const int cell = mesh->CellContainingPoint(p, -1);
        ASSERT_GE(cell, 0);
        double w[4];
        mesh->GetWeights(cell, p, w);
        for (double weight : w) EXPECT_GE(weight, -1e-12);
    }
}

TEST_F(SW_Mesh_Curvature, ATangleOfCellsNamesNothingThatIsNotThere)
{
    AK_System::srand(3);
    for (int round = 0; round < 200; ++round) {   // as a damaged record can hold them
        auto mesh = NewMesh();
        for (int i = 0; i < 6; ++i)
            mesh->AddVertex({double(AK_System::rand() % 4), double(AK_System::rand() % 4), 0.1 * i});
        for (int i = 0; i < 12; ++i) {
            const auto vertex = [] { return AK_System::rand() % 6; };
            mesh->_lcv.Append({{vertex(), vertex(), vertex(), i % 4 == 0 ? vertex() : -1}});
        }
        mesh->ComputeConnectivity();
        for (int i = 0; i < 50; ++i) mesh->FlipEdge(AK_System::rand() % 12, AK_System::rand() % 3);
        mesh->Set("MinimizeCurvature", "");
        mesh->Set("Smooth", "");
        mesh->Set("CreateCurvatureField", "");
        for (int cell = 0; cell < 12; ++cell)
            for (int k = 0; k < 4; ++k) {
                ASSERT_LT(mesh->_lcv[cell][k], 6);
                ASSERT_GE(mesh->_lcv[cell][k], k == 3 ? -1 : 0);
                ASSERT_LT(mesh->_lcc[cell][k], 12);
                ASSERT_GE(mesh->_lcc[cell][k], -1);
            }
    }
}
