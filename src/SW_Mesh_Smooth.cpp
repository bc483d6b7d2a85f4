// Smoothing of the vertices and of their normals, and fields that are derived from the normals.
//
// One round replaces the vector at each vertex by the mean of the means of the cells around it (a Jacobi sweep through
// the cells). Nothing holds the boundary, so a surface shrinks a little at its rim, and since all three coordinates
// move, the vertices of a regular grid leave their lattice. A vertex that belongs to no cell has nothing to take a mean
// of and becomes NaN.

#include "SW_Mesh.h"

#include "SW_Mesh_Contour.h"
#include "SW_Mesh_Sweep.h"
#include "SW_ScalarField.h"
#include "SW_VectorField.h"

#include <cmath>

// ----------------------------------------------------------------------------------------------------------------
// Smoothing
// ----------------------------------------------------------------------------------------------------------------

void SW_Mesh::SmoothVectorsAtVertices(AK_List<AK_Vec>& vec, int n) const
{
    AK_ASSERT(vec.Size() == NumVertices());
    const AK_Vec none = SW_Mean(AK_Vec(), 0);   // no numbers
    const auto mean = [&](int cell) { return SW_MeanOfCorners(_lcv[cell], vec.Data()); };
    AK_List<AK_Vec> smoothed(1);
    for (int round = 0; round < n; ++round) {
        SW_MeansAtVertices(_lcv, mean, none, NumVertices(), smoothed);
        vec.Swap(smoothed);
    }
}

void SW_Mesh::Smooth(int n)
{
    AK_MSG("smoothing mesh " << _id << " " << n << " times...");
    SmoothVectorsAtVertices(_x, n);
    FinishNewSurface();
    AK_MSG("smoothing mesh done");
}

void SW_Mesh::FinishNewSurface()
{
    ForgetDerived();
    ComputeVertexNormals();
    ComputeContourLines();
}

void SW_Mesh::SmoothVertexNormals(int n)
{
    AK_MSG("smoothing vertex normals of " << _id << " " << n << " times");
    if (!HasNormals()) ComputeVertexNormals();
    SmoothVectorsAtVertices(_vertexNormals, n);
}

// ----------------------------------------------------------------------------------------------------------------
// Fields
// ----------------------------------------------------------------------------------------------------------------

// Largest curvature of a cell, 1/m: by how much the normal turns on the way from the centre to a corner.
static float CellCurvature(const SW_Mesh& mesh, int cell)
{
    const IA4& c = mesh._lcv[cell];
    const AK_Vec center = mesh.CellCenter(cell);
    const AK_Vec normal = Normalized(mesh.CellNormal(cell));
    double largest = 0.0;
    for (int k = 0; k < NumCorners(c); ++k) {
        const AK_Vec cornerNormal = Normalized(mesh._vertexNormals[c[k]]);
        const double sineOfHalf = std::sqrt((1 - Dot(normal, cornerNormal)) * 0.5);   // of the angle between them
        const double curvature = 2 * sineOfHalf / Length(mesh._x[c[k]] - center);
        if (curvature > largest) largest = curvature;
    }
    return float(largest);
}

void SW_Mesh::CreateCurvatureField()
{
    DeleteComponent("curvature");
    if (!HasNormals()) ComputeVertexNormals();
    auto* field = new SW_ScalarField("curvature", nullptr);
    field->_onVertices = 0;
    field->SetMesh(this);
    field->SetLabel(_id + " curvature [1/m]");
    for (int cell = 0; cell < NumCells(); ++cell) field->_values[cell] = CellCurvature(*this, cell);
    AddComponent(field);
}

void SW_Mesh::CreateNormalsField()
{
    DeleteComponent("normals");
    if (!HasNormals()) ComputeVertexNormals();
    auto* field = new SW_VectorField("normals", nullptr);
    field->_onVertices = 1;
    field->SetMesh(this);
    field->SetLabel(_id + " normals");
    for (int i = 0; i < NumVertices(); ++i) field->_values[i] = Normalized(_vertexNormals[i]);
    AddComponent(field);
}
