// What the triangulations of vertices share: order of insertion, box, cells. For SW_Mesh_*.cpp only.

#pragma once

#include "AK_Triangulation2.h"
#include "SW_Mesh.h"

#include <ctime>

/// The box around points as a triangulation takes them; no points give one at the origin.
template <class Points>
void SW_BoxOf(const Points& points, AK_Vec2& lo, AK_Vec2& hi)
{
    lo = {1e100, 1e100};
    hi = {-1e100, -1e100};
    for (const AK_Vec2& p : points) {
        if (std::isnan(p.x) || std::isnan(p.y)) continue;   // will be refused
        lo = {std::min(lo.x, p.x), std::min(lo.y, p.y)};
        hi = {std::max(hi.x, p.x), std::max(hi.y, p.y)};
    }
    if (lo.x > hi.x) lo = hi = {0, 0};
}

/// Pointers to all points in an order that is random and the same on every run: points that come sorted, as from a
/// raster or a digitised line, would make each insertion flip many edges.
template <class Points>
AK_List<const AK_Vec2*> SW_ShuffledPoints(const Points& points, unsigned long seed)
{
    static constexpr int rounds = 5;
    AK_MSG("randomizing insertion order...");
    const std::clock_t start = std::clock();
    const int n = int(points.end() - points.begin());
    AK_List<const AK_Vec2*> order(n);
    for (const AK_Vec2& p : points) order.Append(&p);
    AK_System::srand(seed);
    for (long swaps = long(rounds) * n; swaps > 0; --swaps) {
        const int i = AK_System::rand() % n;
        const int k = AK_System::rand() % n;
        std::swap(order[i], order[k]);
    }
    AK_MSG("randomized in " << double(std::clock() - start) / CLOCKS_PER_SEC << "s");
    return order;
}

/// Makes the cells from the triangles between the vertices; numberOf tells the vertex of a corner. Triangles that have
/// no area in the plane are left out, as rounding leaves them along the hull; returns how many.
template <class Net, class NumberOf>
int SW_Mesh::TakeTriangles(const Net& net, const NumberOf& numberOf)
{
    _lcv.SetSize(net.NumTris());
    int kept = 0, discarded = 0;
    for (int i = 0; i < net.NumTris(); ++i) {
        const AK_Tri2* t = net.Tri(i);
        if (net.HasBoundingTriangle(t)) continue;
        IA4 cell;
        for (int j = 0; j < 3; ++j) {
            const int n = numberOf(t, j);
            AK_ASSERT(n >= 0 && n < _x.Size());
            cell[j] = n;
        }
        const AK_Vec2 p0 = _x[cell[0]];
        if (Cross(AK_Vec2(_x[cell[1]]) - p0, AK_Vec2(_x[cell[2]]) - p0) > 0)
            _lcv[kept++] = cell;
        else
            ++discarded;
    }
    _lcv.Redimension(kept);
    _lcv.SetSize(kept);
    return discarded;
}

/// Says how many triangles were left out, if any.
inline void SW_ReportDiscarded(int discarded)
{
    if (discarded > 0) AK_MSG(discarded << " triangles discarded because of zero or negative area!");
}

/// Says why there is no surface.
inline void SW_ReportNoCells(int numVertices)
{
    AK_MSG("WARNING:no surface: " << numVertices << " points that are fewer than three or lie on one line");
}
