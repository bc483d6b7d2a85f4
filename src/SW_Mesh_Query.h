// Queries on flat arrays: which cell lies under a point, and with which weights. The hot path of the simulation.
//
// There are three kinds of mesh, each a small view that copies nothing. A loop asks the mesh for its view once and then
// runs on one kind; the operations of SW_Mesh branch on every call and give the same answers, bit for bit.
//
//   Cartesian              honeycomb                      irregular
//   3---2  vertex (i, j)   odd row   D-----C   j + 1      triangles and quadrilaterals, found by walking across
//   |   |  has number       \ /\    / A, B, D             faces towards the point
//   0---1  i*(ny + 1) + j    even row {A,B,C}
//
// Workers may call all of these: they only read.

#pragma once

#include "AK_Basic_Vec.h"

// ----------------------------------------------------------------------------------------------------------------
// Cells
// ----------------------------------------------------------------------------------------------------------------

/// Corners of a cell: 3 when the fourth slot is empty.
inline int NumCorners(const IA4& cell) { return cell[3] < 0 ? 3 : 4; }

/// The corner that follows corner k around the cell.
inline int NextCorner(const IA4& cell, int k) { return k == 3 || cell[k + 1] < 0 ? 0 : k + 1; }

/// Twice the signed area of the triangle a, b, p seen from above: below 0 when p lies right of a -> b.
inline double SideOfLine(const AK_Vec2& a, const AK_Vec2& b, const AK_Vec2& p)
{
    return (p.y - a.y) * (b.x - a.x) - (b.y - a.y) * (p.x - a.x);
}

/// Barycentric weights, the fourth 0. An area of exactly 0 is fatal; what is no number gives weights that are none.
inline void TriangleWeights(const AK_Vec2& a, const AK_Vec2& b, const AK_Vec2& c, const AK_Vec2& p, double* w)
{
    const AK_Vec2 ab = b - a;
    const AK_Vec2 ac = c - a;
    const AK_Vec2 ap = p - a;
    const double det = Cross(ab, ac);
    AK_ASSERT_AS(det != 0.0, "fabs(det) > 0.0");
    const double u = Cross(ap, ac) / det;
    const double v = Cross(ab, ap) / det;
    w[0] = 1 - u - v;
    w[1] = u;
    w[2] = v;
    w[3] = 0;
}

/// Weights in a quadrilateral that is no rectangle: inverts the bilinear map by Newton's method.
/// A point outside gives weights outside [0, 1]. A determinant of exactly 0 is fatal.
void QuadrilateralWeights(const AK_Vec2& p0, const AK_Vec2& p1, const AK_Vec2& p2, const AK_Vec2& p3, const AK_Vec2& p,
                          double* w);

/// Value of an array over the vertices at the weights. The running sum is held in 32 bits, from the last corner on.
inline float InterpolatedScalarIn(const IA4& cell, const double* w, const float* f)
{
    float sum = 0;
    for (int k = NumCorners(cell) - 1; k >= 0; --k) sum = float(double(sum) + w[k] * double(f[cell[k]]));
    return sum;
}

inline AK_Vec InterpolatedVectorIn(const IA4& cell, const double* w, const AK_Vec* v)
{
    AK_Vec sum;
    for (int k = NumCorners(cell) - 1; k >= 0; --k) sum += v[cell[k]] * w[k];
    return sum;
}

/// The area vector of a cell: as long as its true area, its z the area seen from above.
inline AK_Vec AreaVector(const IA4& cell, const AK_Vec* x)
{
    if (cell[3] < 0) return 0.5 * Cross(x[cell[1]] - x[cell[0]], x[cell[2]] - x[cell[0]]);
    return 0.5 * Cross(x[cell[2]] - x[cell[0]], x[cell[3]] - x[cell[1]]);
}

// ----------------------------------------------------------------------------------------------------------------
// The three kinds
// ----------------------------------------------------------------------------------------------------------------

/// Number and position of the cells of a regular grid, as they were when the cells were made.
struct SW_Grid {
    int nx = 0, ny = 0;       // cells in x and y
    double dx = 0, dy = 0;    // m: cell size; row height of a honeycomb grid
    AK_Vec2 xll;              // m: lower left corner
    AK_Vec2 xor_;             // m: upper right corner
};

/// Truncates towards zero as a cast does; -1 outside of 0 to n - 1. Less than one below 0 is therefore row 0.
inline int RowOf(double position, int n) { return position > -1.0 && position < n ? int(position) : -1; }

/// A grid of quadrilaterals, counter-clockwise from the lower left vertex; y varies fastest.
struct SW_CartesianView {
    SW_Grid grid;
    const AK_Vec* x;
    const IA4* lcv;

    /// The cell under p, -1 outside. The hint is not needed.
    int CellContainingPoint(const AK_Vec2& p, int) const
    {
        const int i = RowOf((p.x - grid.xll.x) / grid.dx, grid.nx);
        const int j = RowOf((p.y - grid.xll.y) / grid.dx, grid.ny);
        return i < 0 || j < 0 ? -1 : grid.ny * i + j;
    }

    void GetWeights(int cell, const AK_Vec2& p, double* w) const
    {
        const int i = cell / grid.ny;
        const int j = cell % grid.ny;
        const double s = (p.x - (i * grid.dx + grid.xll.x)) / grid.dx;
        const double t = (p.y - (j * grid.dx + grid.xll.y)) / grid.dx;
        w[0] = (1 - s) * (1 - t);
        w[1] = s * (1 - t);
        w[2] = s * t;
        w[3] = (1 - s) * t;
    }
};

/// A grid of triangles: rows of height dy, every odd row shifted by half a cell to the left.
struct SW_HoneyCombView {
    SW_Grid grid;
    const AK_Vec* x;
    const IA4* lcv;

    int CellContainingPoint(const AK_Vec2& p, int) const
    {
        const int j = RowOf((p.y - grid.xll.y) / grid.dy, grid.ny);
        if (j < 0) return -1;
        const bool odd = j % 2 != 0;
        const double fy = (p.y - grid.xll.y - j * grid.dy) / grid.dy;
        const double s = odd ? 1 - fy : fy;
        const double q = s * (grid.dx * 0.5) + p.x - grid.xll.x;
        const int i = RowOf(q / grid.dx, grid.nx);
        if (i < 0) return -1;
        const double fx = (q - i * grid.dx) / grid.dx;
        const int base = 2 * (grid.ny * i + j);
        const bool upper = odd ? !(fx + fy < 1) : !(fy - fx < 0);
        return upper ? base + 1 : base;
    }

    void GetWeights(int cell, const AK_Vec2& p, double* w) const
    {
        const IA4& c = lcv[cell];
        TriangleWeights(x[c[0]], x[c[1]], x[c[2]], p, w);
    }
};

/// Any mix of triangles and quadrilaterals, with their neighbours.
struct SW_IrregularView {
    const AK_Vec* x;
    const IA4* lcv;
    const IA4* lcc;
    int numCells;

    /// The first face from which p lies on the outer side, or -1. A point on an edge does not see it.
    int IndexOfCellFaceSeeingPoint(const AK_Vec2& p, int cell) const
    {
        const IA4& c = lcv[cell];
        for (int k = 0; k < 4 && c[k] >= 0; ++k)
            if (SideOfLine(x[c[k]], x[c[NextCorner(c, k)]], p) < 0.0) return k;
        return -1;
    }

    /// Walks from the start cell, which must not be -1, across the faces that see p; -1 when the walk leaves the mesh.
    /// A walk in a circle ends on the budget of steps and returns the cell it stands on. A point that is no number would
    /// see no face; it is outside, as on the other kinds.
    int CellContainingPoint(const AK_Vec2& p, int start) const
    {
        if (!std::isfinite(p.x + p.y)) return -1;
        int cell = start;
        for (int steps = numCells + 1; cell >= 0 && steps > 0; --steps) {
            const int face = IndexOfCellFaceSeeingPoint(p, cell);
            if (face < 0) return cell;
            const int next = lcc[cell][face];
            if (next == cell) return next;
            cell = next;
        }
        return cell;
    }

    void GetWeights(int cell, const AK_Vec2& p, double* w) const
    {
        const IA4& c = lcv[cell];
        if (c[3] < 0)
            TriangleWeights(x[c[0]], x[c[1]], x[c[2]], p, w);
        else
            QuadrilateralWeights(x[c[0]], x[c[1]], x[c[2]], x[c[3]], p, w);
    }
};

/// The cell of the surface point nearest to p along the normal, or -1. w may be null; else the weights of that point
/// in the cell, where -1 is returned if one of them is below 0. The start cell is a hint (not -1 on an irregular mesh).
template <class View>
int CellContainingPointIterativeIn(const View& view, const AK_Vec& p, int start, double* w)
{
    int cell = view.CellContainingPoint(p, start);
    if (cell < 0) return cell;
    AK_Vec q = p;
    for (int iteration = 0; iteration < 5; ++iteration) {
        double weights[4];
        view.GetWeights(cell, q, weights);
        const AK_Vec s = InterpolatedVectorIn(view.lcv[cell], weights, view.x);   // on the surface, below q
        const AK_Vec n = AreaVector(view.lcv[cell], view.x);
        q += n * (Dot(s - q, n) / Dot(n, n));
        const int next = view.CellContainingPoint(q, cell);
        if (next < 0) return next;
        const bool settled = next == cell;
        cell = next;
        if (settled) break;
    }
    if (!w) return cell;
    view.GetWeights(cell, q, w);
    for (int k = 0; k < 4; ++k)
        if (w[k] < 0.0) return -1;
    return cell;
}
