// Insertion: walk, cut, flip.

#include "AK_Triangulation2.h"

#include <limits>

int AK_Triangulation2::_reportingLevel = 0;

static constexpr double margin = 0.01;         // of the box's diagonal: how far the rectangle lies around the box
static constexpr double minDistance = 1e-10;   // of the box's diagonal: points nearer than this are one
static constexpr double smallest = 1e-30;      // magnitudes of coordinates whose fourth powers
static constexpr double largest = 1e+38;       //   a double still holds with all their bits
static constexpr int squaresPerSide = 10;      // of the index
static constexpr int maxEntries = 100;         // of one of its squares
static constexpr int trisPerBlock = 4096;

// ----------------------------------------------------------------------------------------------------------------
// One triangle
// ----------------------------------------------------------------------------------------------------------------

int AK_Tri2::Index(const AK_Tri2* t) const
{
    for (int i = 0; i < 3; ++i)
        if (_neighbor[i] == t) return i;
    ak_assertion_failed("*t", AK_HERE);
}

int AK_Tri2::Index(const AK_Vec2* p) const
{
    for (int i = 0; i < 3; ++i)
        if (_pt[i] == p) return i;
    ak_assertion_failed("*p", AK_HERE);
}

int AK_IndexOfVisibleEdge(const AK_Vec2& a, const AK_Vec2& b, const AK_Vec2& c, const AK_Vec2& p)
{
    const double side[3] = {AK_Vec2::Side(b, c, p), AK_Vec2::Side(c, a, p), AK_Vec2::Side(a, b, p)};
    int widest = 0;
    for (int i = 1; i < 3; ++i)
        if (side[i] > side[widest]) widest = i;
    return side[widest] > 0.0 ? widest : -1;
}

int AK_Tri2::IndexOfVisibleEdge(const AK_Vec2& p) const { return AK_IndexOfVisibleEdge(*_pt[0], *_pt[1], *_pt[2], p); }

AK_Vec2 AK_IsoPoint(const AK_Vec2& a, const AK_Vec2& b, double fa, double fb, double level)
{
    const double t = (level - fa) / (fb - fa);
    return a + (b - a) * (t > 0.0 ? std::min(t, 1.0) : 0.0);
}

void AK_Tri2::GetIsoLinePoints(const double* values, double level, int* nOut, double* points) const
{
    *nOut = 0;
    for (int i = 0; i < 3; ++i) {
        const int k = (i + 1) % 3;
        if ((values[i] < level) == (values[k] < level)) continue;
        const AK_Vec2 p = AK_IsoPoint(*_pt[i], *_pt[k], values[i], values[k], level);
        points[2 * *nOut] = p.x;
        points[2 * *nOut + 1] = p.y;
        ++*nOut;
    }
}

void AK_Tri2::WriteGrf(std::ofstream& out, const char* tag) const
{
    out << "t " << tag;
    for (const AK_Vec2* p : _pt) out << " " << p->x << " " << p->y << " 0";
    out << "\n";
}

// ----------------------------------------------------------------------------------------------------------------
// The net
// ----------------------------------------------------------------------------------------------------------------

AK_Triangulation2::AK_Triangulation2(const AK_Vec2& lo, const AK_Vec2& hi)
{
    const double d = Length(hi - lo);
    AK_MSG("Delaunay triangulation min point distance:" << minDistance * d);
    _minDist2 = minDistance * d * (minDistance * d);
    const AK_Vec2 rim = {margin * d, margin * d};
    const AK_Vec2 min = lo - rim;
    const AK_Vec2 max = hi + rim;
    _corners[0] = min;
    _corners[1] = {max.x, min.y};
    _corners[2] = max;
    _corners[3] = {min.x, max.y};
    AK_Tri2* lower = NewTri(&_corners[0], &_corners[1], &_corners[2]);
    AK_Tri2* upper = NewTri(&_corners[2], &_corners[3], &_corners[0]);
    lower->_neighbor[1] = upper;
    upper->_neighbor[1] = lower;
    const double size = std::max(max.x - min.x, max.y - min.y) / squaresPerSide;
    _buckets.Init(min, size, squaresPerSide, 0, maxEntries);
}

AK_Tri2* AK_Triangulation2::NewTri(const AK_Vec2* a, const AK_Vec2* b, const AK_Vec2* c)
{
    const int place = _tris.Size() % trisPerBlock;
    if (place == 0) _blocks.push_back(std::make_unique<AK_Tri2[]>(trisPerBlock));
    AK_Tri2* t = &_blocks.back()[place];
    t->_pt[0] = a;
    t->_pt[1] = b;
    t->_pt[2] = c;
    _tris.Append(t);
    return t;
}

int AK_Triangulation2::HasBoundingTriangle(const AK_Tri2* t) const
{
    return IsBoundingPoint(t->Pt(0)) || IsBoundingPoint(t->Pt(1)) || IsBoundingPoint(t->Pt(2));
}

AK_Vec2 AK_Triangulation2::Point(const AK_Vec2& p)
{
    const auto fit = [](double x) {
        if (!(std::fabs(x) <= largest)) return std::numeric_limits<double>::quiet_NaN();
        return std::fabs(x) < smallest ? 0.0 : x;
    };
    return {fit(p.x), fit(p.y)};
}

// ----------------------------------------------------------------------------------------------------------------
// Search
// ----------------------------------------------------------------------------------------------------------------

static double SquaredDistance(const AK_Vec2& a, const AK_Vec2& b) { return Dot(a - b, a - b); }

// Says where a walk does not end.
static void ReportWalk(const AK_Vec2& p, const AK_Tri2& t, int edge)
{
    AK_MSG("*p"
           << ", " << p.x << ", " << p.y);
    AK_MSG("*t"
           << ", " << t.Pt(0)->x << ", " << t.Pt(0)->y << ", " << t.Pt(1)->x << ", " << t.Pt(1)->y << ", " << t.Pt(2)->x
           << ", " << t.Pt(2)->y);
    AK_MSG("tri:"
           << ", " << edge);
}

AK_Tri2* AK_Triangulation2::Container(const AK_Vec2* p, AK_Tri2* start, int checkDistance) const
{
    AK_Tri2* t = start ? start : _tris[_buckets.Entry(*p)];
    int nTogglesAllowed = _tris.Size();   // through a Delaunay triangulation no walk meets a triangle twice
    while (t) {
        const int edge = t->IndexOfVisibleEdge(*p);
        if (edge < 0) break;
        if (nTogglesAllowed <= 0 && _reportingLevel > 9) ReportWalk(*p, *t, edge);
        AK_ASSERT_AS(nTogglesAllowed > 0, "nTogglesAllowed");
        t = t->Neighbor(edge);
        ++_nSearchSteps;
        --nTogglesAllowed;
    }
    if (!t || !checkDistance) return t;
    for (int i = 0; i < 3; ++i)
        if (SquaredDistance(*p, *t->Pt(i)) < _minDist2) return nullptr;
    return t;
}

AK_Tri2* AK_Triangulation2::Referencer(const AK_Vec2* p, AK_Tri2* start)
{
    AK_Tri2* t = Container(p, start, 0);
    return t && t->Has(p) ? t : nullptr;
}

AK_Tri2* AK_Triangulation2::Referencer(const AK_Vec2* p, const AK_Vec2* q, AK_Tri2* start)
{
    AK_Tri2* const first = Referencer(p, start);
    AK_Tri2* t = first;
    while (t) {
        const int i = t->Index(p);
        if (t->Pt((i + 1) % 3) == q) return t;
        t = t->Neighbor((i + 1) % 3);   // round p, counter-clockwise: every point lies within the rectangle
        if (t == first) return nullptr;
    }
    return nullptr;
}

// ----------------------------------------------------------------------------------------------------------------
// Insertion
// ----------------------------------------------------------------------------------------------------------------

int AK_Triangulation2::Insert(const AK_Vec2* p)
{
    // On the border itself a point would leave a triangle without area at the hull that no flip can remove.
    const AK_Vec2& lo = _corners[0];
    const AK_Vec2& hi = _corners[2];
    if (!(lo.x < p->x && p->x < hi.x && lo.y < p->y && p->y < hi.y)) return 0;

    AK_Tri2* t = Container(p, nullptr, 1);
    if (!t) return 0;
    Split(t, p, _stack);
    while (_stack.Size() > 0) {
        t = _stack[_stack.Size() - 1];
        _stack.SetSize(_stack.Size() - 1);
        const int i = t->Index(p);
        if (!IsDelaunay(t, i)) Flip(t, i, _stack);
    }
    ++_nInserted;
    return 1;
}

// The neighbour t of what has become another triangle learns about it.
static void Relink(AK_Tri2* t, const AK_Tri2* from, AK_Tri2* to)
{
    if (t) t->_neighbor[t->Index(from)] = to;
}

static void SetTri(AK_Tri2* t, const AK_Vec2* const (&pt)[3], AK_Tri2* const (&neighbor)[3])
{
    for (int i = 0; i < 3; ++i) {
        t->_pt[i] = pt[i];
        t->_neighbor[i] = neighbor[i];
    }
}

//        c                  c
//       / \                /|\      t = (p, b, c), and two new ones:
//      /   \              / p \     (p, a, b) and (p, c, a)
//     /  t  \            //   \\      .
//    a-------b          a-------b
void AK_Triangulation2::Split(AK_Tri2* t, const AK_Vec2* p, AK_List<AK_Tri2*>& stack)
{
    const AK_Vec2* const a = t->Pt(0);
    const AK_Vec2* const b = t->Pt(1);
    const AK_Vec2* const c = t->Pt(2);
    AK_Tri2* const acrossCA = t->Neighbor(1);
    AK_Tri2* const acrossAB = t->Neighbor(2);
    AK_Tri2* const pab = NewTri(p, a, b);
    AK_Tri2* const pca = NewTri(p, c, a);
    SetTri(t, {p, b, c}, {t->Neighbor(0), pca, pab});
    SetTri(pab, {p, a, b}, {acrossAB, t, pca});
    SetTri(pca, {p, c, a}, {acrossCA, pab, t});
    Relink(acrossAB, t, pab);
    Relink(acrossCA, t, pca);
    stack.Append(t);
    stack.Append(pca);
    stack.Append(pab);
    _buckets.AddEntry(*p, _tris.Size() - 1);
}

int AK_Triangulation2::IsDelaunay(const AK_Tri2* t, int i) const
{
    const AK_Tri2* n = t->Neighbor(i);
    if (!n) return 1;
    ++_nDelaunayTests;
    const AK_Vec2* s = n->Pt(n->Index(t));
    return !AK_Vec2::InCircle(*s, *t->Pt(i), *t->Pt((i + 1) % 3), *t->Pt((i + 2) % 3));
}

//        c                  c
//       /|\                / \      a is corner i of t
//      / | \              / t \       .
//     a t|n s    ->      a-----s    t = (c, a, s), n = (b, s, a)
//      \ | /              \ n /
//       \|/                \ /
//        b                  b
void AK_Triangulation2::Flip(AK_Tri2* t, int i, AK_List<AK_Tri2*>& stack)
{
    AK_Tri2* const n = t->Neighbor(i);
    const int j = n->Index(t);
    const AK_Vec2* const a = t->Pt(i);
    const AK_Vec2* const b = t->Pt((i + 1) % 3);
    const AK_Vec2* const c = t->Pt((i + 2) % 3);
    const AK_Vec2* const s = n->Pt(j);
    AK_Tri2* const acrossCA = t->Neighbor((i + 1) % 3);
    AK_Tri2* const acrossAB = t->Neighbor((i + 2) % 3);
    AK_Tri2* const acrossBS = n->Neighbor((j + 1) % 3);
    AK_Tri2* const acrossSC = n->Neighbor((j + 2) % 3);
    SetTri(t, {c, a, s}, {n, acrossSC, acrossCA});
    SetTri(n, {b, s, a}, {t, acrossAB, acrossBS});
    Relink(acrossSC, n, t);
    Relink(acrossAB, t, n);
    stack.Append(t);
    stack.Append(n);
    ++_nFlips;
}

// ----------------------------------------------------------------------------------------------------------------
// Output
// ----------------------------------------------------------------------------------------------------------------

void AK_Triangulation2::PrintStatistics() const
{
    const double inserted = _nInserted;
    AK_MSG("Triangulation statistics: " << _nSearchSteps / inserted << " search steps per point, " << _nFlips / inserted
                                        << " flips per point, " << _nDelaunayTests / inserted
                                        << " Delaunay-tests per point");
}

void AK_Triangulation2::WriteGrf(std::ofstream& out, const char* tag) const
{
    for (const AK_Tri2* t : _tris) t->WriteGrf(out, tag);
}
