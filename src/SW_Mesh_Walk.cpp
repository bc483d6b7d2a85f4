// Walks over the mesh: along a line, from face to face, to neighbour vertices; random points.

#include "SW_Mesh.h"
#include "SW_Polyline.h"

AK_Vec SW_Mesh::RandomPointInCell(int cell) const
{
    double r1 = AK_System::rand() / double(AK_System::rand_max);
    double r2 = AK_System::rand() / double(AK_System::rand_max);
    const IA4& c = _lcv[cell];
    if (c[3] >= 0)
        return _x[c[0]] * ((1 - r1) * (1 - r2)) + _x[c[1]] * (r1 * (1 - r2)) + _x[c[2]] * (r1 * r2)
               + _x[c[3]] * ((1 - r1) * r2);
    if (r1 + r2 > 1.0) {   // the other half of the parallelogram folds back onto the triangle
        r1 = 1 - r1;
        r2 = 1 - r2;
    }
    return _x[c[0]] * (1 - r1 - r2) + _x[c[1]] * r1 + _x[c[2]] * r2;
}

int SW_Mesh::NextFace(int& cell, int& face) const
{
    AK_ASSERT(_lcc.Size());
    do {
        ++face;
        if (face > 3 || _lcv[cell][face] < 0) {
            face = 0;
            if (++cell >= NumCells()) return 0;
        }
    } while (_lcc[cell][face] >= 0 && _lcc[cell][face] < cell);   // that cell has delivered it
    return 1;
}

void SW_Mesh::ComputeLvv() const
{
    _lvv.Clear();
    _lvv.SetSize(NumVertices());
    for (AK_List<int>& neighbors : _lvv) neighbors.Clear();
    const auto addOnce = [](AK_List<int>& list, int vertex) {
        if (list.IndexOf(vertex) < 0) list.Append(vertex);
    };
    for (const IA4& cell : _lcv) {
        const int n = NumCorners(cell);
        for (int k = 0; k < n; ++k) {
            addOnce(_lvv[cell[k]], cell[(k + 1) % n]);
            addOnce(_lvv[cell[k]], cell[(k + n - 1) % n]);
        }
    }
}

void SW_Mesh::GetNeighborVertices(int vertex, AK_List<int>& out) const
{
    // A mesh that was cleared and filled anew keeps its old lists: they may be too short for it.
    if (_lvv.Size() <= vertex) ComputeLvv();
    out = _lvv[vertex];
}

// ----------------------------------------------------------------------------------------------------------------
// Lines
// ----------------------------------------------------------------------------------------------------------------

int SW_Mesh::IndexOfExitFaceAlongLine(int cell, const AK_Vec2& a, const AK_Vec2& b) const
{
    const IA4& c = _lcv[cell];
    const auto isLeft = [&](int k) { return SideOfLine(a, b, _x[c[k]]) > 0.0; };
    for (int k = 0; k < NumCorners(c); ++k)
        if (!isLeft(k) && isLeft(NextCorner(c, k))) return k;
    return -1;
}

// Position along the edge e0 -> e1 where the line a -> b crosses it.
static double CrossingOnEdge(const AK_Vec2& a, const AK_Vec2& b, const AK_Vec2& e0, const AK_Vec2& e1)
{
    const double side0 = SideOfLine(a, b, e0);
    const double side1 = SideOfLine(a, b, e1);
    return side0 / (side0 - side1);   // the exit face has its corners on either side
}

// Calls `leave(cell, face)` for every cell that the line leaves and `enter(cell)` for every cell it is in.
template <class Enter, class Leave>
static void WalkAlongLine(const SW_Mesh& mesh, const AK_Vec2& a, const AK_Vec2& b, const Enter& enter,
                          const Leave& leave)
{
    int cell = mesh.CellContainingPoint(a, -1);
    if (cell >= 0 && mesh._lcc.Size() == 0) return;
    // A line meets no cell twice, but on a folded mesh a walk can go in a circle.
    for (int steps = mesh.NumCells(); cell >= 0 && steps > 0; --steps) {
        enter(cell);
        if (mesh.IndexOfCellFaceSeeingPoint(b, cell) < 0) return;
        const int face = mesh.IndexOfExitFaceAlongLine(cell, a, b);
        if (face < 0) return;
        leave(cell, face);
        cell = mesh.NeighborCell(cell, face);
    }
}

void SW_Mesh::GetCellsAlongLine(const AK_Vec2& a, const AK_Vec2& b, AK_List<int>* cells,
                                AK_List<AK_Vec2>* crossings) const
{
    WalkAlongLine(
        *this, a, b, [&](int cell) { cells->Append(cell); },
        [&](int cell, int face) {
            if (!crossings) return;
            const IA4& c = _lcv[cell];
            const AK_Vec2 e0 = _x[c[face]];
            const AK_Vec2 e1 = _x[c[NextCorner(c, face)]];
            crossings->Append(e0 + (e1 - e0) * CrossingOnEdge(a, b, e0, e1));
        });
}

void SW_Mesh::GetMeshEdgeIntersectionsAlongLine(const AK_Vec2& a, const AK_Vec2& b,
                                                AK_List<SW_MeshEdgeIntersection>& out) const
{
    WalkAlongLine(
        *this, a, b, [](int) {},
        [&](int cell, int face) {
            const IA4& c = _lcv[cell];
            const int vertex0 = c[face];
            const int vertex1 = c[NextCorner(c, face)];
            out.Append({vertex0, vertex1, CrossingOnEdge(a, b, _x[vertex0], _x[vertex1])});
        });
}

void SW_Mesh::GetMeshEdgeIntersectionsAlongPolyline(const SW_Polyline& line,
                                                    AK_List<SW_MeshEdgeIntersection>& out) const
{
    const AK_List<AK_Vec>& points = line.Points();
    for (int i = 0; i + 1 < points.Size(); ++i) GetMeshEdgeIntersectionsAlongLine(points[i], points[i + 1], out);
}
