// What tests of the terrain need: meshes of each kind, and what holds of every mesh.

#pragma once

#include "AK_Basic_TestTools.h"
#include "SW_Mesh.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <string>

using Height = std::function<double(double x, double y)>;

inline double Plane(double x, double y) { return 100 + 0.5 * x - 0.25 * y; }
inline double Hill(double x, double y) { return 200 - 0.001 * (x * x + y * y); }

/// Base of the fixtures: the shipped descriptions, messages caught.
class TerrainTest : public testing::Test {
protected:
    TerrainTest()
    {
        setenv("HOME", directory.Path().c_str(), 1);
        AK_Object::SetAttributesDirectory(KORVO_SOURCE_DIR "/files/AK_Attributes");
        AK_Object::_execStatus = "";
    }

    std::vector<std::string> Messages()
    {
        std::vector<std::string> texts;
        texts.swap(messages.Texts());
        return texts;
    }

    TemporaryDirectory directory;
    CaughtMessages messages;
};

inline std::unique_ptr<SW_Mesh> NewMesh() { return std::make_unique<SW_Mesh>("m", nullptr); }

inline void Finish(SW_Mesh& mesh)
{
    mesh.ComputeConnectivity();
    mesh.ComputeVertexNormals();
}

/// A regular grid of nx times ny cells; in a honeycomb the odd rows are shifted to the left by half a cell.
inline std::unique_ptr<SW_Mesh> RegularMesh(bool honeyComb, int nx, int ny, double dx, const Height& z, AK_Vec2 xll)
{
    auto mesh = NewMesh();
    const double dy = honeyComb ? dx * std::sqrt(0.75) : dx;
    for (int i = 0; i <= nx; ++i)
        for (int j = 0; j <= ny; ++j) {
            const double x = (i - (honeyComb && j % 2 ? 0.5 : 0)) * dx + xll.x;
            const double y = j * dy + xll.y;
            mesh->AddVertex({x, y, z(x, y)});
        }
    const SW_Grid grid{nx, ny, dx, honeyComb ? dy : 0, xll, {nx * dx + xll.x, ny * dy + xll.y}};
    honeyComb ? mesh->SetHoneyCombCells(grid) : mesh->SetCartesianCells(grid);
    Finish(*mesh);
    return mesh;
}

inline std::unique_ptr<SW_Mesh> CartesianMesh(int nx, int ny, double dx, const Height& z, AK_Vec2 xll = {0, 0})
{
    return RegularMesh(false, nx, ny, dx, z, xll);
}

inline std::unique_ptr<SW_Mesh> HoneyCombMesh(int nx, int ny, double dx, const Height& z)
{
    return RegularMesh(true, nx, ny, dx, z, {0, 0});
}

/// A convex mesh without holes of triangles and quadrilaterals: a grid whose inner vertices are moved about, every
/// third cell cut in two.
inline std::unique_ptr<SW_Mesh> IrregularMesh(int nx, int ny, double dx, const Height& z)
{
    auto mesh = NewMesh();
    AK_System::srand(5);
    const auto jitter = [&] { return (AK_System::rand() / double(AK_System::rand_max) - 0.5) * 0.4 * dx; };
    for (int i = 0; i <= nx; ++i)
        for (int j = 0; j <= ny; ++j) {
            const bool inner = i > 0 && i < nx && j > 0 && j < ny;
            const double x = i * dx + (inner ? jitter() : 0);
            const double y = j * dx + (inner ? jitter() : 0);
            mesh->AddVertex({x, y, z(x, y)});
        }
    for (int i = 0; i < nx; ++i)
        for (int j = 0; j < ny; ++j) {
            const int a = i * (ny + 1) + j;
            const int b = a + ny + 1;
            if ((i + j) % 3 != 0) {
                mesh->_lcv.Append({{a, b, b + 1, a + 1}});
                continue;
            }
            mesh->_lcv.Append({{a, b, b + 1, -1}});
            mesh->_lcv.Append({{a, b + 1, a + 1, -1}});
        }
    Finish(*mesh);
    return mesh;
}

/// Corners name vertices, cells run counter-clockwise, neighbours know each other across the same edge, the share of
/// the normals adds up to the whole.
inline void ExpectConsistent(const SW_Mesh& mesh)
{
    ASSERT_EQ(mesh._lcc.Size(), mesh.NumCells());
    for (int cell = 0; cell < mesh.NumCells(); ++cell) {
        const IA4& c = mesh._lcv[cell];
        EXPECT_GT(mesh.CellNormal(cell).z, 0) << "cell " << cell;
        for (int k = 0; k < 4; ++k) {
            ASSERT_LT(c[k], mesh.NumVertices());
            ASSERT_GE(c[k], k == 3 ? -1 : 0);
            const int other = mesh._lcc[cell][k];
            if (other < 0) continue;
            bool shared = false;
            for (int m = 0; m < NumCorners(mesh._lcv[other]); ++m)
                shared = shared || (mesh._lcc[other][m] == cell && mesh._lcv[other][m] == c[NextCorner(c, k)] &&
                                    mesh._lcv[other][NextCorner(mesh._lcv[other], m)] == c[k]);
            EXPECT_TRUE(shared) << "cell " << cell << ", face " << k;
        }
    }
    AK_Vec sum;
    for (const AK_Vec& n : mesh._vertexNormals) sum += n;
    EXPECT_NEAR(sum.z, mesh.ProjectedArea(), 1e-9 * std::fabs(mesh.ProjectedArea()));
}
