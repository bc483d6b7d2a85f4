// The triangulation in arrays: construction, queries, trimming, smoothing.

#include "AK_Triangulation2d.h"

#include "AK_Triangulation2.h"

#include <cstdlib>
#include <random>

// ----------------------------------------------------------------------------------------------------------------
// Construction
// ----------------------------------------------------------------------------------------------------------------

// Copies the points as a triangulation takes them, and finds the box of those that it can take.
static AK_List<AK_Vec2> CopyPoints(int n, const double* x, AK_Vec2& lo, AK_Vec2& hi)
{
    AK_List<AK_Vec2> points(n);
    lo = {1e100, 1e100};
    hi = {-1e100, -1e100};
    for (int i = 0; i < n; ++i) {
        const AK_Vec2 p = AK_Triangulation2::Point({x[2 * i], x[2 * i + 1]});
        points.Append(p);
        if (!std::isfinite(p.x + p.y)) continue;
        lo = {std::min(lo.x, p.x), std::min(lo.y, p.y)};
        hi = {std::max(hi.x, p.x), std::max(hi.y, p.y)};
    }
    if (lo.x > hi.x) lo = hi = {0, 0};
    return points;
}

// Every number from 0 to n - 1 in random order, from a generator of our own: nobody else's numbers change.
static AK_List<int> ShuffledNumbers(int n)
{
    AK_List<int> numbers(n);
    for (int i = 0; i < n; ++i) numbers.Append(i);
    std::minstd_rand rand;
    for (long swaps = 7L * n; swaps > 0; --swaps) {
        const int i = int(rand() % unsigned(n));
        const int k = int(rand() % unsigned(n));
        if (i != k) std::swap(numbers[i], numbers[k]);
    }
    return numbers;
}

AK_Triangulation2d::AK_Triangulation2d(int nPts, const double* x) : NumPts(nPts)
{
    AK_ASSERT(nPts > 2);
    AK_Vec2 lo, hi;
    const AK_List<AK_Vec2> points = CopyPoints(nPts, x, lo, hi);
    AK_Triangulation2::_reportingLevel = 0;
    AK_Triangulation2 net(lo, hi);
    for (int i : ShuffledNumbers(nPts)) net.Insert(&points[i]);

    NumTris = net.NumTris();
    const std::size_t n = std::size_t(NumTris);
    _triPts = static_cast<int*>(std::malloc(3 * n * sizeof(int)));
    AK_ASSERT(_triPts);
    _triNeighs = static_cast<int*>(std::malloc(3 * n * sizeof(int)));
    AK_ASSERT(_triNeighs);
    _out = static_cast<unsigned char*>(std::malloc(n));
    AK_ASSERT(_out);

    AK_Dict<const AK_Tri2*, int> numbers(11, -1);
    for (int t = 0; t < NumTris; ++t) numbers[net.Tri(t)] = t;
    for (int k = 0; k < 4; ++k) _corners[k] = net.BoundingPoint(k);
    for (int t = 0; t < NumTris; ++t) {
        const AK_Tri2& tri = *net.Tri(t);
        _out[t] = static_cast<unsigned char>(net.HasBoundingTriangle(&tri));
        for (int i = 0; i < 3; ++i) {
            const AK_Vec2* p = tri.Pt(i);
            _triPts[3 * t + i] = net.IsBoundingPoint(p) ? ~int(p - &net.BoundingPoint(0)) : int(p - points.Data());
            const int* number = numbers.Find(tri.Neighbor(i));
            _triNeighs[3 * t + i] = number ? *number : -1;
        }
    }
}

AK_Triangulation2d::~AK_Triangulation2d()
{
    std::free(_triPts);
    std::free(_triNeighs);
    std::free(_out);
}

// ----------------------------------------------------------------------------------------------------------------
// One triangle
// ----------------------------------------------------------------------------------------------------------------

AK_Vec2 AK_Triangulation2d::Corner(const double* x, int t, int i) const
{
    const int p = TriPt(t, i);
    return p < 0 ? _corners[~p] : AK_Vec2(x[2 * p], x[2 * p + 1]);
}

AK_Vec2 AK_Triangulation2d::GetCenter(const double* x, int t) const
{
    return (Corner(x, t, 0) + Corner(x, t, 1) + Corner(x, t, 2)) * (1.0 / 3.0);
}

AK_Vec2 AK_Triangulation2d::GetCircumcenter(const double* x, int t) const
{
    const AK_Vec2 a = Corner(x, t, 0);
    const AK_Vec2 b = Corner(x, t, 1) - a;
    const AK_Vec2 c = Corner(x, t, 2) - a;
    const double d = 2.0 * Cross(b, c);
    const double bb = Dot(b, b);
    const double cc = Dot(c, c);
    return a + AK_Vec2((bb * c.y - cc * b.y) / d, (cc * b.x - bb * c.x) / d);
}

double AK_Triangulation2d::Circumradius(const double* x, int t) const
{
    return Length(GetCircumcenter(x, t) - Corner(x, t, 0));
}

// ----------------------------------------------------------------------------------------------------------------
// Search
// ----------------------------------------------------------------------------------------------------------------

// The triangle whose corner 0 lies nearest to p, among some thirty spread over the list.
int AK_Triangulation2d::NearestSample(const double* x, const AK_Vec2& p) const
{
    int nearest = 0;
    double smallest = 1e50;
    for (int t = 0; t < NumTris; t += NumTris / 30 + 1) {
        const double distance = Length(Corner(x, t, 0) - p);
        if (!(distance < smallest)) continue;
        smallest = distance;
        nearest = t;
    }
    return nearest;
}

int AK_Triangulation2d::TriContaining(const double* x, const AK_Vec2& p, int start) const
{
    static constexpr int maxReturns = 5;   // in a row: the caller's points may have moved since
    int t = start < 0 ? NearestSample(x, p) : start;
    int last = -1, beforeLast = -1;
    int returns = 0;
    for (int steps = 0; t >= 0 && steps < NumTris; ++steps) {
        const int edge = AK_IndexOfVisibleEdge(Corner(x, t, 0), Corner(x, t, 1), Corner(x, t, 2), p);
        if (edge < 0) return t;
        beforeLast = last;
        last = t;
        t = TriNeigh(t, edge);
        returns = t == beforeLast ? returns + 1 : 0;
        if (returns == maxReturns) break;
    }
    return t;
}

// ----------------------------------------------------------------------------------------------------------------
// The whole
// ----------------------------------------------------------------------------------------------------------------

int AK_Triangulation2d::Trim(const double* x, double rMax)
{
    AK_List<int> rim(64);
    for (int t = 0; t < NumTris; ++t)
        if (_out[t]) rim.Append(t);
    int trimmed = 0;
    while (rim.Size() > 0) {
        const int t = rim[rim.Size() - 1];
        rim.SetSize(rim.Size() - 1);
        for (int i = 0; i < 3; ++i) {
            const int n = TriNeigh(t, i);
            if (n < 0 || _out[n] || !(Circumradius(x, n) > rMax)) continue;
            _out[n] = 1;
            rim.Append(n);
            ++trimmed;
        }
    }
    return trimmed;
}

void AK_Triangulation2d::SmoothValues(double* f) const
{
    AK_List<double> sums(1);
    AK_List<int> counts(1);
    sums.Fill(NumPts, 0.0);
    counts.Fill(NumPts, 0);
    for (int t = 0; t < NumTris; ++t) {
        if (_out[t]) continue;
        const double mean = (f[TriPt(t, 0)] + f[TriPt(t, 1)] + f[TriPt(t, 2)]) / 3.0;
        for (int i = 0; i < 3; ++i) {
            sums[TriPt(t, i)] += mean;
            ++counts[TriPt(t, i)];
        }
    }
    for (int p = 0; p < NumPts; ++p)
        if (counts[p] > 0) f[p] = sums[p] / counts[p];
}
