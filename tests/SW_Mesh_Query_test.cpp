// Point location, weights and walks on each kind of mesh, against a search through all cells.

#include "SW_Mesh_TestSupport.h"

namespace {

class SW_Mesh_Query : public TerrainTest {
protected:
    struct Kind {
        const char* name;
        std::unique_ptr<SW_Mesh> mesh;
    };
    std::vector<Kind> AllKinds(const Height& z)
    {
        std::vector<Kind> kinds;
        kinds.push_back({"Cartesian", CartesianMesh(12, 9, 2.5, z)});
        kinds.push_back({"honeycomb", HoneyCombMesh(12, 9, 2.5, z)});
        kinds.push_back({"irregular", IrregularMesh(12, 9, 2.5, z)});
        return kinds;
    }

    static double Random() { return AK_System::rand() / double(AK_System::rand_max); }
};

}   // namespace

// True if no face of the cell sees the point, up to rounding.
static bool Contains(const SW_Mesh& mesh, int cell, const AK_Vec2& p)
{
    const IA4& c = mesh._lcv[cell];
    for (int k = 0; k < NumCorners(c); ++k)
        if (SideOfLine(mesh._x[c[k]], mesh._x[c[NextCorner(c, k)]], p) < -1e-9) return false;
    return true;
}

// How far weights are from those of p in a cell: they sum to 1, give p back, and are a product in a quadrilateral,
// which determines them. The mesh is a plane, which they interpolate exactly.
static double WeightError(const SW_Mesh& mesh, int cell, const AK_Vec2& p, const double* w)
{
    const AK_Vec x = mesh.InterpolatedVector(cell, w, mesh._x);
    if (std::fabs(x.z - Plane(x.x, x.y)) > 1e-10) return 1;
    const bool isTriangle = NumCorners(mesh._lcv[cell]) == 3;
    const double product = isTriangle ? w[3] : w[0] * w[2] - w[1] * w[3];
    return std::fabs(w[0] + w[1] + w[2] + w[3] - 1) + std::fabs(product) + Length(AK_Vec2(x) - p) / mesh.Resolution();
}

TEST_F(SW_Mesh_Query, AMillionPointsOnEveryKindOfMeshAgreeWithASearchThroughAllCells)
{
    constexpr double weightPrecision = 1e-4;   // Newton's method stops at a step of 0.001 of a cell
    for (const Kind& kind : AllKinds(Plane)) {
        SCOPED_TRACE(kind.name);
        const SW_Mesh& mesh = *kind.mesh;
        ExpectConsistent(mesh);
        AK_System::srand(7);
        int numCovered = 0, wrongCells = 0, wrongWeights = 0;
        int hint = 0;
        for (int i = 0; i < 1000000; ++i) {
            const AK_Vec2 p(-1 + 32 * Random(), -1 + 25 * Random());
            bool covered = false;
            for (int cell = 0; !covered && cell < mesh.NumCells(); ++cell) covered = Contains(mesh, cell, p);
            const int cell = mesh.CellContainingPoint(p, i % 16 ? hint : -1);
            if (!covered) {
                // Below the lower left corner a regular grid answers for its first row and column, and the slanted
                // sides of a honeycomb belong to nobody.
                wrongCells += cell >= 0 && p.x >= 0 && p.y >= 0 && !mesh.IsHoneyComb();
                continue;
            }
            ++numCovered;
            if (cell < 0 || !Contains(mesh, cell, p)) {
                ++wrongCells;
                continue;
            }
            double w[4];
            mesh.GetWeights(cell, p, w);
            wrongWeights += !(WeightError(mesh, cell, p, w) < weightPrecision);
            hint = cell;
        }
        EXPECT_EQ(wrongCells, 0);
        EXPECT_EQ(wrongWeights, 0);
        EXPECT_GT(numCovered, 600000);
    }
}

TEST_F(SW_Mesh_Query, CellContainingPointNamesTheCellOrNone)
{
    const auto grid = CartesianMesh(3, 2, 1, Plane);
    const struct {
        const char* why;
        AK_Vec2 p;
        int cell;
    } cases[] = {
        {"inside the first cell", {0.5, 0.5}, 0},
        {"y varies fastest", {0.5, 1.5}, 1},
        {"the last cell", {2.9, 1.9}, 5},
        {"0.4 cells left: still column 0", {-0.4, 0.5}, 0},
        {"more than a cell left: outside", {-1.0, 0.5}, -1},
        {"on the far edge: outside", {3.0, 0.5}, -1},
        {"on the upper edge: outside", {0.5, 2.0}, -1},
        {"no number", {NAN, 0.5}, -1},
        {"beyond an int", {1e300, 0.5}, -1},
        {"far below", {-1e300, 0.5}, -1},
    };
    for (const auto& c : cases) EXPECT_EQ(grid->CellContainingPoint(c.p, 0), c.cell) << c.why;
    const auto irregular = IrregularMesh(3, 2, 1, Plane);
    for (const AK_Vec2& p : {AK_Vec2{NAN, 0.5}, AK_Vec2{1e308, 1e308}, AK_Vec2{0.5, -INFINITY}})
        EXPECT_EQ(irregular->CellContainingPoint(p, -1), -1) << p.x << " " << p.y;
    const auto empty = NewMesh();
    EXPECT_EQ(empty->CellContainingPoint({0, 0}, -1), -1);
    EXPECT_EQ(empty->Resolution(), 0);
    float lo[3], hi[3];
    EXPECT_EQ(empty->BoundingBox(lo, hi), 0);
}

TEST_F(SW_Mesh_Query, BrokenPromisesEndTheProgram)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto mesh = IrregularMesh(2, 2, 1, Plane);
    mesh->_lcc.Clear();
    EXPECT_DEATH(mesh->CellContainingPoint({0.5, 0.5}, 0), "");
    EXPECT_EQ(CartesianMesh(2, 2, 1, Plane)->CellContainingPoint({0.5, 0.5}, 0), 0);
    const auto flat = IrregularMesh(1, 1, 1, Plane);
    for (AK_Vec& x : flat->_x) x.y = 0;
    double w[4];
    EXPECT_DEATH(flat->GetWeights(0, {0.5, 0}, w), "");
}

TEST_F(SW_Mesh_Query, FollowsTheNormalToTheNearestSurfacePoint)
{
    for (const Kind& kind : AllKinds(Plane)) {
        SCOPED_TRACE(kind.name);
        const AK_Vec n = Normalized({-0.5, 0.25, 1});
        const AK_Vec onSurface{12.1, 9.3, Plane(12.1, 9.3)};
        double w[4];
        const int cell = kind.mesh->CellContainingPointIterative(onSurface + n * 3, 0, w);
        ASSERT_GE(cell, 0);
        const AK_Vec found = kind.mesh->InterpolatedVector(cell, w, kind.mesh->_x);
        EXPECT_NEAR(Length(found - onSurface), 0, 1e-3);
        EXPECT_EQ(kind.mesh->CellContainingPointIterative({1e6, 0, 0}, 0, w), -1);
    }
}

TEST_F(SW_Mesh_Query, WalksAlongALineCellByCell)
{
    for (const Kind& kind : AllKinds(Plane)) {
        SCOPED_TRACE(kind.name);
        const AK_Vec2 a(1.3, 2.1);
        const AK_Vec2 b(27.7, 19.4);
        AK_List<int> cells(1);
        AK_List<AK_Vec2> crossings(1);
        kind.mesh->GetCellsAlongLine(a, b, &cells, &crossings);
        ASSERT_GT(cells.Size(), 5);
        ASSERT_EQ(crossings.Size(), cells.Size() - 1);
        EXPECT_TRUE(Contains(*kind.mesh, cells[0], a));
        EXPECT_TRUE(Contains(*kind.mesh, cells[cells.Size() - 1], b));
        AK_List<SW_MeshEdgeIntersection> edges(1);
        kind.mesh->GetMeshEdgeIntersectionsAlongLine(a, b, edges);
        ASSERT_EQ(edges.Size(), crossings.Size());
        double last = 0;
        for (int i = 0; i < crossings.Size(); ++i) {
            EXPECT_TRUE(Contains(*kind.mesh, cells[i], crossings[i]));
            EXPECT_TRUE(Contains(*kind.mesh, cells[i + 1], crossings[i]));
            EXPECT_NEAR(SideOfLine(a, b, crossings[i]), 0, 1e-9);
            EXPECT_GT(Length(crossings[i] - a), last);
            last = Length(crossings[i] - a);
            const AK_Vec& from = kind.mesh->_x[edges[i].vertex0];
            const AK_Vec p = from + (kind.mesh->_x[edges[i].vertex1] - from) * edges[i].t;
            EXPECT_NEAR(Length(AK_Vec2(p) - crossings[i]), 0, 1e-9);
        }
    }
}

TEST_F(SW_Mesh_Query, DrawsPointsOfACellUniformly)
{
    for (const Kind& kind : AllKinds(Plane)) {
        AK_System::srand(9);
        AK_Vec mean;
        const int n = 4000;
        for (int i = 0; i < n; ++i) {
            const AK_Vec p = kind.mesh->RandomPointInCell(0);
            EXPECT_TRUE(Contains(*kind.mesh, 0, p)) << kind.name;
            mean += p * (1.0 / n);
        }
        EXPECT_NEAR(Length(mean - kind.mesh->CellCenter(0)), 0, 0.06) << kind.name;
    }
}

TEST_F(SW_Mesh_Query, EveryFaceComesUpOnceAndNeighboursAreThoseOfTheCells)
{
    const auto mesh = IrregularMesh(4, 3, 1, Plane);
    int cell = 0, face = -1, numFaces = 0, numBoundary = 0;
    while (mesh->NextFace(cell, face)) {
        ++numFaces;
        numBoundary += mesh->NeighborCell(cell, face) < 0;
    }
    EXPECT_EQ(numBoundary, 14);
    EXPECT_EQ(mesh->NumVertices() - numFaces + mesh->NumCells(), 1);   // Euler's formula without the outer face
    AK_List<int> neighbors(1);
    mesh->GetNeighborVertices(0, neighbors);
    EXPECT_EQ(neighbors.IndexOf(1) >= 0 && neighbors.IndexOf(4) >= 0, true);
}

TEST_F(SW_Mesh_Query, CellsThatRunTheSameWayAlongAnEdgeAreNotConnected)
{
    auto mesh = NewMesh();
    for (const AK_Vec& p : {AK_Vec{0, 0, 0}, AK_Vec{1, 0, 0}, AK_Vec{1, 1, 0}, AK_Vec{0, 1, 0}}) mesh->AddVertex(p);
    mesh->_lcv.Append({{0, 1, 2, -1}});
    mesh->_lcv.Append({{2, 3, 0, -1}});
    mesh->ComputeConnectivity();
    EXPECT_EQ(mesh->NeighborCell(0, 2), 1);
    mesh->_lcv[1] = {{0, 3, 2, -1}};   // clockwise
    mesh->ComputeConnectivity();
    EXPECT_EQ(mesh->NeighborCell(0, 2), -1);
}

TEST_F(SW_Mesh_Query, AGridIsConnectedAsASearchThroughItsEdgesWould)
{
    const auto grid = CartesianMesh(5, 4, 1, Plane);
    auto same = NewMesh();
    same->_x = grid->_x;
    same->_lcv = grid->_lcv;
    same->ComputeConnectivity();
    for (int cell = 0; cell < grid->NumCells(); ++cell) EXPECT_EQ(grid->_lcc[cell], same->_lcc[cell]) << cell;
}
