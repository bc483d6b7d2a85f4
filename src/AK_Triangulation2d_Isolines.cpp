// Lines of equal value through the triangles.
//
// A triangle that a line crosses has one edge where it comes in, along which the value rises to the level, and one
// where it goes out; walking out of one triangle is coming into the next. So a line is a chain of neighbours, and each
// triangle belongs to one line at most.

#include "AK_Triangulation2d.h"

#include "AK_Triangulation2.h"

#include <cstdlib>

// Edge i - 1 runs from corner i mod 3 to the next one; it lies opposite corner i - 1. -1 if no line comes in.
int AK_Triangulation2d::IsoEntryEdge(const double* f, int t, double level) const
{
    for (int i = 3; i > 0; --i)
        if (level > f[TriPt(t, i % 3)] && f[TriPt(t, (i + 1) % 3)] >= level) return i - 1;
    return -1;
}

int AK_Triangulation2d::IsoExitEdge(const double* f, int t, double level) const
{
    for (int i = 3; i > 0; --i)
        if (f[TriPt(t, i % 3)] >= level && level > f[TriPt(t, (i + 1) % 3)]) return i - 1;
    return -1;
}

AK_Vec2 AK_Triangulation2d::GetIsoPoint(const double* x, const double* f, int t, int edge, double level) const
{
    const int i = (edge + 1) % 3;
    const int k = (edge + 2) % 3;
    return AK_IsoPoint(Corner(x, t, i), Corner(x, t, k), f[TriPt(t, i)], f[TriPt(t, k)], level);
}

// The line from where it comes into the start on; backwards too, if it does not come back there.
void AK_Triangulation2d::FollowIsoline(const double* x, const double* f, double level, int start,
                                       AK_List<char>& visited, bool& closed, AK_List<AK_Vec2>& line) const
{
    const int entry = IsoEntryEdge(f, start, level);
    line.Clear();
    line.Append(GetIsoPoint(x, f, start, entry, level));
    int t = start;
    do {
        visited[t] = 1;
        const int edge = IsoExitEdge(f, t, level);
        if (edge < 0) break;   // a value that is no number
        line.Append(GetIsoPoint(x, f, t, edge, level));
        t = TriNeigh(t, edge);
    } while (t >= 0 && !_out[t] && !visited[t]);
    closed = t == start && line.Size() > 2;
    if (closed) return;

    AK_List<AK_Vec2> before(64);
    t = TriNeigh(start, entry);
    while (t >= 0 && !_out[t] && !visited[t]) {
        visited[t] = 1;
        const int edge = IsoEntryEdge(f, t, level);
        if (edge < 0) break;
        before.Append(GetIsoPoint(x, f, t, edge, level));
        t = TriNeigh(t, edge);
    }
    std::reverse(before.begin(), before.end());
    for (const AK_Vec2& p : line) before.Append(p);
    line.Swap(before);
}

namespace {

// Points in a block of malloc, which goes to the caller.
struct PointArray {
    double* points = nullptr;
    int n = 0;
    int room = 64;

    PointArray() { Resize(); }

    void Append(const AK_Vec2& p)
    {
        if (n == room) {
            room *= 2;
            Resize();
        }
        points[2 * n] = p.x;
        points[2 * n + 1] = p.y;
        ++n;
    }

    void Resize()
    {
        double* out = static_cast<double*>(std::realloc(points, 2 * std::size_t(room) * sizeof(double)));
        AK_ASSERT(out);
        points = out;
    }
};

}   // namespace

void AK_Triangulation2d::CreateIsolines(const double* x, const double* f, double level, int closedOnly, double** out,
                                        int* nOut) const
{
    PointArray lines;
    AK_List<char> visited(1);
    visited.Fill(NumTris, 0);
    AK_List<AK_Vec2> line(64);
    for (int t = 0; t < NumTris; ++t) {
        if (_out[t] || visited[t] || IsoEntryEdge(f, t, level) < 0) continue;
        bool closed = false;
        FollowIsoline(x, f, level, t, visited, closed, line);
        if (closedOnly == 1 && !closed) continue;
        if (lines.n > 0) lines.Append({sep, sep});
        for (const AK_Vec2& p : line) lines.Append(p);
    }
    *out = lines.points;
    *nOut = lines.n;
}
