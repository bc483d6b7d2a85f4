// Edge flips: the common edge of two triangles is exchanged for the other diagonal of their quadrilateral where that
// makes the surface less bent. Heights do not change, only which vertices are joined.
//
//        p                p        cell   (a, b, p)   becomes   (q, p, a)  or  (p, q, b)
//      / | \            /   \      other  (b, a, q)             (p, q, b)      (q, p, a)
//     a--+--b    <->   a     b
//      \ | /            \   /      The common edge is slots 0 and 1 in this notation; in the lists each cell begins
//        q                q        somewhere, and the edge keeps its face.
//
// A flip turns the diagonal by a right angle, and two of one sense would exchange the cells. So the sense follows from
// where the lowest vertex stands, at the end of the edge or beside it: a second flip turns back and restores all.
//
// All operations here need neighbours.

#include "SW_Mesh.h"

#include "SW_Mesh_Contour.h"

#include <algorithm>
#include <cmath>

// ----------------------------------------------------------------------------------------------------------------
// One edge
// ----------------------------------------------------------------------------------------------------------------

// The two triangles at an edge, as in the picture above.
struct SW_Mesh::EdgePair {
    int cell, face;    // a -> b is this face of this cell
    int other, back;   // b -> a is that face of that one
    int a, b, p, q;
};

// False where the mesh ends, and where one of the cells is no triangle.
bool SW_Mesh::TrianglesAt(int cell, int face, EdgePair& pair) const
{
    const int other = _lcc[cell][face];
    if (other < 0 || other == cell || _lcv[cell][3] >= 0 || _lcv[other][3] >= 0) return false;
    const int back = FaceBack(other, cell);
    const IA4& c = _lcv[cell];
    pair = {cell, face, other, back, c[face], c[(face + 1) % 3], c[(face + 2) % 3], _lcv[other][(back + 2) % 3]};
    return true;
}

// The face of a cell behind which a neighbour lies.
int SW_Mesh::FaceBack(int cell, int neighbor) const
{
    int face = 0;
    while (face < 3 && _lcc[cell][face] != neighbor) ++face;
    return face;
}

// Divided by the length, which is exact for a level cell, where a product with the reciprocal is not.
static AK_Vec UnitNormal(const SW_Mesh& mesh, int cell)
{
    const AK_Vec normal = mesh.CellNormal(cell);
    const double length = Length(normal);
    return length > 0 ? AK_Vec{normal.x / length, normal.y / length, normal.z / length} : normal;
}

// Length of an edge times the bend between the cells at its sides; 0 where the mesh ends.
static double Bend(const SW_Mesh& mesh, int cell, int face, const AK_Vec& normal)
{
    static constexpr double rounding = 1e-14;   // what it leaves of 1 - cosine between cells of one inclined plane
    const int other = mesh._lcc[cell][face];
    if (other < 0) return 0.0;
    const double bend = 1 - Dot(normal, UnitNormal(mesh, other));
    if (std::fabs(bend) < rounding) return 0.0;
    const IA4& c = mesh._lcv[cell];
    const double length = Length(mesh._x[c[(face + 1) % 3]] - mesh._x[c[face]]);
    return length * bend;
}

double SW_Mesh::TotalCurvature(int cell, int face) const
{
    const int other = _lcc[cell][face];
    if (other < 0) return 0.0;
    const int back = FaceBack(other, cell);
    const AK_Vec normal = UnitNormal(*this, cell);
    const AK_Vec otherNormal = UnitNormal(*this, other);
    double sum = Bend(*this, cell, face, normal);
    for (int i = 0; i < 2; ++i) {   // the edge itself from both sides, then the next edge of each triangle
        sum += Bend(*this, cell, (face + i) % 3, normal);
        sum += Bend(*this, other, (back + i) % 3, otherNormal);
    }
    return sum;
}

int SW_Mesh::HasFlipableEdge(int cell, int face) const
{
    EdgePair e;
    if (!TrianglesAt(cell, face, e)) return 0;
    const AK_Vec2 a = _x[e.a], b = _x[e.b], p = _x[e.p], q = _x[e.q];
    return Cross(q - a, p - a) > 0.0 && Cross(p - b, q - b) > 0.0;   // strictly convex at both ends
}

// Tells the neighbour across v0 -> v1 that the cell on this side is `owner` now.
void SW_Mesh::Relink(int neighbor, int v0, int v1, int owner)
{
    if (neighbor < 0) return;
    const IA4& c = _lcv[neighbor];
    for (int k = 0; k < NumCorners(c); ++k)
        if (c[k] == v1 && c[NextCorner(c, k)] == v0) _lcc[neighbor][k] = owner;
}

int SW_Mesh::FlipEdge(int cell, int face)
{
    EdgePair e;
    if (!TrianglesAt(cell, face, e)) return 0;
    const int across_bp = _lcc[cell][(face + 1) % 3];
    const int across_pa = _lcc[cell][(face + 2) % 3];
    const int across_aq = _lcc[e.other][(e.back + 1) % 3];
    const int across_qb = _lcc[e.other][(e.back + 2) % 3];

    // Slots are counted from the common edge, which keeps its face in both cells.
    const auto set = [&](int target, int first, const IA4& corners, const IA4& neighbors) {
        for (int k = 0; k < 3; ++k) {
            _lcv[target][(first + k) % 3] = corners[k];
            _lcc[target][(first + k) % 3] = neighbors[k];
        }
    };
    const bool lowestOnEdge = std::min(e.a, e.b) < std::min(e.p, e.q);
    const int keepsA = lowestOnEdge ? cell : e.other;
    const int keepsB = lowestOnEdge ? e.other : cell;
    set(keepsA, lowestOnEdge ? face : e.back, {{e.q, e.p, e.a, -1}}, {{keepsB, across_pa, across_aq, -1}});
    set(keepsB, lowestOnEdge ? e.back : face, {{e.p, e.q, e.b, -1}}, {{keepsA, across_qb, across_bp, -1}});
    Relink(across_pa, e.p, e.a, keepsA);
    Relink(across_aq, e.a, e.q, keepsA);
    Relink(across_qb, e.q, e.b, keepsB);
    Relink(across_bp, e.b, e.p, keepsB);
    return 1;
}

// ----------------------------------------------------------------------------------------------------------------
// The whole mesh
// ----------------------------------------------------------------------------------------------------------------

int SW_Mesh::MinimizeCurvature()
{
    static constexpr double worthIt = 0.99;   // a flip stays if it leaves less than this share of the measure
    AK_MSG("minimizing curvature iteration...");
    if (_lcc.Size() == 0) ComputeConnectivity();
    int numFlipped = 0;
    for (int cell = 0; cell < NumCells(); ++cell)
        for (int face = 0; face < 3; ++face) {
            if (!HasFlipableEdge(cell, face)) continue;
            const double before = TotalCurvature(cell, face);
            FlipEdge(cell, face);
            if (TotalCurvature(cell, face) >= before * worthIt)
                FlipEdge(cell, face);
            else
                ++numFlipped;
        }
    if (numFlipped > 0) {
        _isHoneyComb = 0;   // cells are no longer where its numbering says
        _lvv.Clear();
    }
    AK_MSG(numFlipped << " edges flipped");
    return numFlipped;
}

void SW_Mesh::MinimizeCurvatureRepeatedly()
{
    long limit = 4L * NumCells();
    for (long flipped = MinimizeCurvature(); flipped < limit; flipped = MinimizeCurvature()) limit = flipped;
    FinishNewSurface();
}
