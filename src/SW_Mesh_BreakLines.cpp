// Break lines: edges of terrain, contour lines, roads that the triangles of an irregular mesh must follow.
//
// A triangulation of the vertices is made first, as if there were no lines. Then each segment whose ends share no edge
// is halved, its midpoint inserted, and both halves looked at again, until every piece is an edge: near other points
// pieces become short, and at some length the circle around a piece is empty, which makes it an edge of a Delaunay
// triangulation. Only where lines cross the halving would never end: below a length a piece is given up.
//
//        c                  c
//      .   .              / | \          the segment a-b is no edge: m is inserted,
//    a - - - b    ->    a---m---b        and a-m and m-b are the segments now
//      .   .              \ | /
//        d                  d
//
// A mesh is never edited locally: the vertices that are there, the old segments and the new ones give a new mesh.

#include "SW_Mesh.h"

#include "SW_Mesh_Delaunay.h"
#include "SW_Polyline.h"
#include "SW_Polyline_Container.h"

#include <deque>

namespace {

// A vertex seen from above with its number.
struct NumberedVec2 : AK_Vec2 {
    NumberedVec2(const AK_Vec& x, int number) : AK_Vec2(AK_Triangulation2::Point(x)), _num(number) {}
    int Num() const { return _num; }

    int _num;
};

using NumberedPoints = std::deque<NumberedVec2>;   // keeps the places of points when it grows

// Makes the segments edges.
class SegmentRecovery {
public:
    SegmentRecovery(AK_Triangulation2& net, NumberedPoints& xProj, AK_List<AK_Vec>& x, AK_List<int>& segments)
        : _net(net), _xProj(xProj), _x(x), _segments(segments)
    {
    }

    // Passes until no piece is halved any more. Pieces shorter than minLength are dropped.
    void Run(double minLength2)
    {
        _minLength2 = minLength2;
        // Lines that cross each other everywhere would fill the plane with points.
        const int maxVertices = std::min(100LL * _x.Size() + 1000000, INT_MAX / 4LL);
        int before = -1;
        while (_x.Size() != before && _x.Size() < maxVertices) {
            before = _x.Size();
            Pass(maxVertices);
            AK_MSG(_x.Size() - before << " new points...");
        }
        if (_x.Size() >= maxVertices) AK_MSG("WARNING:the lines cross too often: not all of them became edges");
    }

private:
    // Looks at each piece once; halves that come of it wait at the end.
    void Pass(int maxVertices)
    {
        AK_MSG("recovering " << _segments.Size() << " segments...");
        _nSegs2 = _segments.Size();
        for (int i = 0; i < _nSegs2;) {
            AK_ASSERT_AS(_nSegs2 <= _segments.Size(), "nSegs2 <= _segments.Size()");
            if (_x.Size() >= maxVertices || Recover(i))
                i += 2;
            else
                Drop(i);
        }
        _segments.SetSize(_nSegs2);
    }

    // True if the piece at i is an edge or has been halved; false if nothing can be made of it.
    bool Recover(int i)
    {
        const int a = _segments[i];
        const int b = _segments[i + 1];
        const AK_Vec2 along = _xProj[size_t(b)] - _xProj[size_t(a)];
        if (!(Dot(along, along) >= _minLength2)) return false;
        AK_Tri2* t = _net.Referencer(&_xProj[size_t(a)], nullptr);
        if (!t || !_net.Referencer(&_xProj[size_t(b)], t)) return false;   // refused as duplicates
        if (_net.Referencer(&_xProj[size_t(a)], &_xProj[size_t(b)], t)) return true;
        return Halve(i, a, b);
    }

    bool Halve(int i, int a, int b)
    {
        const int m = _x.Size();
        const AK_Vec2 middle = (_xProj[size_t(a)] + _xProj[size_t(b)]) * 0.5;
        _xProj.emplace_back(AK_Vec{middle.x, middle.y, 0}, m);
        if (!_net.Insert(&_xProj.back())) {
            _xProj.pop_back();
            return false;
        }
        _x.Append({middle.x, middle.y, (_x[a].z + _x[b].z) * 0.5});
        AK_ASSERT_AS(_xProj.back().Num() == _x.Size() - 1, "xProj.Top()->Num() == _x.Size()-1");
        _segments[i + 1] = m;
        for (int end : {m, b}) {
            if (_nSegs2 == _segments.Size()) _segments.Append(end);
            _segments[_nSegs2++] = end;
        }
        return true;
    }

    void Drop(int i)
    {
        _nSegs2 -= 2;
        _segments[i] = _segments[_nSegs2];
        _segments[i + 1] = _segments[_nSegs2 + 1];
    }

    AK_Triangulation2& _net;
    NumberedPoints& _xProj;
    AK_List<AK_Vec>& _x;
    AK_List<int>& _segments;
    double _minLength2 = 0;
    int _nSegs2 = 0;   // where the pieces of this pass end
};

}   // namespace

// The points of the lines become vertices, each pair of neighbours a segment.
static void AppendLines(const AK_List<AK_Polyline>& lines, AK_List<AK_Vec>& x, AK_List<int>& segments)
{
    for (const AK_Polyline& line : lines)
        for (int i = 0; i < line._x.Size(); ++i) {
            const int vertex = x.Append(line._x[i]);
            if (i == 0) continue;
            segments.Append(vertex - 1);
            segments.Append(vertex);
        }
}

void SW_Mesh::LoadPolylines(const AK_List<AK_Polyline>& lines, int keepPresent)
{
    AK_MSG("loading " << lines.Size() << " polylines...");
    if (keepPresent)
        ClearCells();
    else
        Clear();
    AppendLines(lines, _x, _segments);
    if (NumVertices() == 0) return SW_ReportNoCells(0);

    NumberedPoints xProj;
    for (int i = 0; i < NumVertices(); ++i) xProj.emplace_back(_x[i], i);
    AK_Vec2 lo, hi;
    SW_BoxOf(xProj, lo, hi);
    const AK_List<const AK_Vec2*> order = SW_ShuffledPoints(xProj, 444);
    AK_MSG("performing Delaunay triangulation...");
    AK_Triangulation2 net(lo, hi);
    for (const AK_Vec2* p : order) net.Insert(p);
    AK_MSG("inserted " << net.NumInserted() << " of " << order.Size() << " points into Delaunay triangulation");
    AK_MSG(net.NumTris() << " triangles (including auxiliary triangles)");

    static constexpr double shortestEdge2 = 5e-05;   // squared, of the box's diagonal over the square root of triangles
    const double minLength2 = Dot(hi - lo, hi - lo) * shortestEdge2 / (net.NumTris() + 1.0);
    AK_MSG("min edge length for splitting:" << std::sqrt(minLength2));
    if (net.NumInserted() > 0) SegmentRecovery(net, xProj, _x, _segments).Run(minLength2);

    const int discarded =
        TakeTriangles(net, [](const AK_Tri2* t, int j) { return static_cast<const NumberedVec2*>(t->Pt(j))->Num(); });
    AK_MSG("loading " << lines.Size() << " polylines done, " << NumCells() << " cells");
    SW_ReportDiscarded(discarded);
    if (NumCells() == 0) SW_ReportNoCells(NumVertices());
    ComputeConnectivity();
    ComputeVertexNormals();
}

// ----------------------------------------------------------------------------------------------------------------
// Where lines come from
// ----------------------------------------------------------------------------------------------------------------

void SW_Mesh::LoadNxyz(const AK_String& path)
{
    AK_List<AK_Polyline> lines(1);
    if (SW_Polylines::LoadNxyzFile(path, lines)) LoadPolylines(lines, 0);
}

void SW_Mesh::LoadDxf(const AK_String& path)
{
    AK_List<AK_Polyline> lines(1);
    LoadDxfPoints(path);
    if (SW_Polylines::LoadDxfFile(path, lines)) LoadPolylines(lines, 1);
}

// The last point of a ring is refused as it stands where the first one is, and with it its last side.
static bool IsRing(const AK_Polyline& line)
{
    const int n = line._x.Size();
    return n > 2 && AK_Vec2(line._x[0]) == AK_Vec2(line._x[n - 1]);
}

static void WarnOfRing(const AK_String& line)
{
    AK_MSG("WARNING:" << line
                      << InLanguage(": the side that closes the ring becomes no break line",
                                    ": die Seite, die den Ring schliesst, wird keine Bruchkante"));
}

void SW_Mesh::InsertBreakLines(const AK_String& path)
{
    const AK_String extension = path.Extension();
    AK_List<AK_Polyline> lines(1);
    if (extension == "nxyz" || extension == "dxf" || extension == "DXF")
        SW_Polylines::LoadLines(path, extension.c_str(), lines, [](const AK_Polyline& line, const AK_String& place) {
            if (IsRing(line)) WarnOfRing(place);
        });
    if (lines.Size() > 0) LoadPolylines(lines, 1);   // a mesh without new lines keeps its kind
}

void SW_Mesh::InsertBreakLine(const AK_String& id)
{
    const SW_Polyline* line = SW_FindLine(*this, id);
    if (!line || line->NumVertices() == 0) return;
    if (line->Line().NumNoCoordinates() > 0) {
        _execStatus = line->IdAbs() + InLanguage(": points have coordinates that are no numbers or too large",
                                                 ": Punkte haben Koordinaten, die keine Zahlen oder zu gross sind");
        return;
    }
    AK_List<AK_Polyline> lines(1);
    lines.Append(line->Line());
    if (line->IsOfType("Polygon") || IsRing(line->Line())) WarnOfRing(line->IdAbs());
    LoadPolylines(lines, 1);
}
