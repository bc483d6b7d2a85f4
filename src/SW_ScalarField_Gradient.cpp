// Gradient of a scalar field in the surface: a plane fitted by least squares through the differences to the neighbours.
// What comes out is smoothed by going twice from one kind of location to the other and back.

#include "SW_ScalarField.h"

#include "SW_VectorField.h"

#include <cmath>

static constexpr double singular = 1e-30;   // a determinant below this tells no direction

// Cells across the faces, from the last but one down.
static void NeighborCells(const SW_Mesh& mesh, int cell, AK_List<int>& neighbors)
{
    neighbors.Clear();
    for (int k = NumCorners(mesh._lcv[cell]) - 1; k >= 1; --k)
        if (mesh.NeighborCell(cell, k) >= 0) neighbors.Append(mesh.NeighborCell(cell, k));
}

AK_Vec SW_ScalarField::GradientAt(int i, const AK_Vec& normal, const AK_List<int>& neighbors,
                                  const AK_Vec& unchanged) const
{
    const AK_Vec n = Normalized(normal);
    const AK_Vec t1 = Normalized({n.z, 0, -n.x});   // (0, 1, 0) x n
    const AK_Vec t2 = Normalized(Cross(n, t1));
    double bb = 0, aa = 0, ab = 0, bf = 0, af = 0;
    for (int k : neighbors) {
        const AK_Vec d = _mesh->_x[k] - _mesh->_x[i];   // m
        const double b = Dot(d, t1);
        const double a = Dot(d, t2);
        const double df = double(_values[k]) - double(_values[i]);
        bb += b * b;
        aa += a * a;
        ab += a * b;
        bf += b * df;
        af += a * df;
    }
    const double det = bb * aa - ab * ab;
    if (std::fabs(det) < singular) return unchanged;
    const double s1 = (aa * bf - ab * af) / det;   // slope along t1
    const double s2 = (bb * af - ab * bf) / det;   // slope along t2
    return t1 * s1 + t2 * s2;
}

void SW_ScalarField::ComputeGradient(SW_VectorField* gradient)
{
    gradient->_onVertices = _onVertices;
    gradient->SetMesh(_mesh);
    if (!_mesh || _values.Size() != WantedSize()) return;
    // Cells are looked up by their number among the vertices, so a value of a cell without such a vertex has no place.
    const int numLocations = std::min(_values.Size(), _mesh->NumVertices());
    if (_onVertices && _mesh->_vertexNormals.Size() != _mesh->NumVertices()) return;
    if (!_onVertices && _mesh->_lcc.Size() != _mesh->NumCells()) return;
    AK_List<int> neighbors(8);
    for (int i = 0; i < numLocations; ++i) {
        if (_onVertices)
            _mesh->GetNeighborVertices(i, neighbors);
        else
            NeighborCells(*_mesh, i, neighbors);
        for (int k = neighbors.Size() - 1; k >= 0; --k)
            if (neighbors[k] >= numLocations) neighbors.Remove(k);
        const AK_Vec normal = _onVertices ? _mesh->_vertexNormals[i] : _mesh->CellNormal(i);
        gradient->_values[i] = GradientAt(i, normal, neighbors, gradient->_values[i]);
    }
    for (int pass = 0; pass < 4; ++pass) gradient->ConvertTopo();
}
