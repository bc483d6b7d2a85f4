// Point location, weights and interpolation for any kind of mesh: the branch on the kind, made on every call.

#include "SW_Mesh.h"

#include <cfloat>
#include <cmath>

void QuadrilateralWeights(const AK_Vec2& p0, const AK_Vec2& p1, const AK_Vec2& p2, const AK_Vec2& p3, const AK_Vec2& p,
                          double* w)
{
    static constexpr int maxIterations = 5;
    static constexpr double settled = 0.001;   // a step below this ends the iteration

    const AK_Vec2 bottom = p1 - p0;
    const AK_Vec2 top = p2 - p3;
    const AK_Vec2 left = p3 - p0;
    const AK_Vec2 right = p2 - p1;
    double u = 0.5;
    double v = 0.5;
    for (int iteration = 0; iteration < maxIterations; ++iteration) {
        const AK_Vec2 alongU = bottom * (1 - v) + top * v;
        const AK_Vec2 alongV = left * (1 - u) + right * u;
        const AK_Vec2 residual = p - (p0 + bottom * u + left * v + (top - bottom) * (u * v));
        const double det = Cross(alongU, alongV);
        AK_ASSERT_AS(det != 0.0, "fabs(det) > 0.0");   // a point that is no number passes
        const double du = Cross(residual, alongV) / det;
        const double dv = Cross(alongU, residual) / det;
        u += du;
        v += dv;
        if (std::fabs(du) < settled && std::fabs(dv) < settled) break;
    }
    w[0] = (1 - u) * (1 - v);
    w[1] = (1 - v) * u;
    w[2] = u * v;
    w[3] = (1 - u) * v;
}

// A cell near p from which an irregular mesh begins to search: the nearest of 101 random ones.
int SW_Mesh::RandomStartCell(const AK_Vec2& p) const
{
    static constexpr int tries = 100;
    int best = AK_System::rand() % NumCells();
    double bestDistance = Length(AK_Vec2(CellCenter(best)) - p);
    for (int i = 0; i < tries; ++i) {
        const int cell = AK_System::rand() % NumCells();
        const double distance = Length(AK_Vec2(CellCenter(cell)) - p);
        if (distance >= bestDistance) continue;
        best = cell;
        bestDistance = distance;
    }
    return best;
}

// Makes ready for a search: false if no cell can lie under p.
bool SW_Mesh::BeginSearch(const AK_Vec2& p, int& start) const
{
    if (NumCells() == 0) return false;
    if (_isCartesian || _isHoneyComb) return true;
    AK_ASSERT(_lcc.Size());
    // Beyond the range of a float the sides of faces come to no number, which no face would see.
    if (!(std::fabs(p.x) <= double(FLT_MAX) && std::fabs(p.y) <= double(FLT_MAX))) return false;
    if (start < 0) start = RandomStartCell(p);
    return true;
}

int SW_Mesh::CellContainingPoint(const AK_Vec2& p, int start) const
{
    if (!BeginSearch(p, start)) return -1;
    return WithView([&](const auto& view) { return view.CellContainingPoint(p, start); });
}

int SW_Mesh::CellContainingPointIterative(const AK_Vec& p, int start, double* w) const
{
    if (!BeginSearch(p, start)) return -1;
    return WithView([&](const auto& view) { return CellContainingPointIterativeIn(view, p, start, w); });
}

int SW_Mesh::IndexOfCellFaceSeeingPoint(const AK_Vec2& p, int cell) const
{
    return SW_IrregularView{_x.Data(), _lcv.Data(), _lcc.Data(), NumCells()}.IndexOfCellFaceSeeingPoint(p, cell);
}

void SW_Mesh::GetWeights(int cell, const AK_Vec2& p, double* w) const
{
    WithView([&](const auto& view) { view.GetWeights(cell, p, w); });
}

void SW_Mesh::ProjectOntoCell(AK_Vec& p, int cell) const
{
    double weights[4];
    GetWeights(cell, p, weights);
    p.z = InterpolatedVector(cell, weights, _x).z;
}

int SW_Mesh::Project(AK_Vec& p, int start) const
{
    const int cell = CellContainingPoint(p, start);
    if (cell >= 0) ProjectOntoCell(p, cell);
    return cell;
}

AK_Vec SW_Mesh::CellCenter(int cell) const
{
    const IA4& c = _lcv[cell];
    const int n = NumCorners(c);
    AK_Vec sum;
    for (int k = 0; k < n; ++k) sum += _x[c[k]];
    return sum * (1.0 / n);
}

AK_Vec SW_Mesh::FaceNormal(int cell, int face) const
{
    AK_ASSERT_AS(_lcc.Size(), "_lcc");
    AK_Vec normal = CellNormal(cell);
    if (_lcc[cell][face] >= 0) normal += CellNormal(_lcc[cell][face]);
    const IA4& c = _lcv[cell];
    return Cross(_x[c[NextCorner(c, face)]] - _x[c[face]], Normalized(normal));
}

AK_Vec SW_Mesh::Normal() const
{
    AK_Vec sum;
    for (int cell = 0; cell < NumCells(); ++cell) sum += CellNormal(cell);
    return sum;
}

double SW_Mesh::ProjectedArea() const { return HasNormals() ? _totalNormal.z : Normal().z; }

double SW_Mesh::Resolution() const
{
    static constexpr double noCells = 1e-30;   // an empty mesh answers 0
    return std::sqrt(ProjectedArea() / (NumCells() + noCells));
}
