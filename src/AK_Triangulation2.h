// Delaunay triangulation of points in the plane, one point after the other.
//
// A rectangle around all points, cut in two triangles, is the start. A new point is found by walking through the
// triangles, cuts the one it lies in into three, and edges are flipped until again no circle through the corners of a
// triangle holds another point. So the net always covers the rectangle; its four corners are no points of the caller.
//
//            0                  Neighbour i of a triangle lies opposite corner i;
//           / \                 corners run counter-clockwise.
//     n2   /   \   n1
//         1-----2
//           n0
//
// All decisions are exact (AK_Vec2::Side, InCircle): the result is the same in every build, and no arrangement of
// points, collinear, on circles or near-duplicate, sends a walk in circles. A bucket index remembers a triangle near
// every place; with points that come in random order the cost of each is constant.
//
// Points belong to the caller, who keeps them where they are while the triangulation lives. Main thread only.
// Method: C. L. Lawson, "Software for C1 surface interpolation" (1977); Guibas and Stolfi, ACM TOG 4 (1985).

#pragma once

#include "AK_Basic_Vec.h"

#include <fstream>
#include <memory>
#include <vector>

/// One triangle.
struct AK_Tri2 {
    const AK_Vec2* Pt(int i) const { return _pt[i]; }         // corner 0 to 2
    AK_Tri2* Neighbor(int i) const { return _neighbor[i]; }   // opposite corner i, null on the outer hull

    int Index(const AK_Tri2* neighbour) const;   // which neighbour it is; one that is none is fatal
    int Index(const AK_Vec2* p) const;           // which corner it is; one that is none is fatal
    bool Has(const AK_Vec2* p) const { return _pt[0] == p || _pt[1] == p || _pt[2] == p; }
    /// The edge, by the corner opposite, that p lies farthest behind; -1 if p is inside or on the border.
    int IndexOfVisibleEdge(const AK_Vec2& p) const;
    /// Where the line of a level crosses the triangle: values at the corners; points receives x and y of 0 or 2 points.
    void GetIsoLinePoints(const double* values, double level, int* nOut, double* points) const;
    /// The line "t tag x y 0 x y 0 x y 0".
    void WriteGrf(std::ofstream& out, const char* tag) const;

    const AK_Vec2* _pt[3] = {nullptr, nullptr, nullptr};
    AK_Tri2* _neighbor[3] = {nullptr, nullptr, nullptr};
};

/// The same for corners that no triangle holds.
int AK_IndexOfVisibleEdge(const AK_Vec2& a, const AK_Vec2& b, const AK_Vec2& c, const AK_Vec2& p);
/// The point between a and b where a value that runs from fa to fb takes a level; never beyond them.
AK_Vec2 AK_IsoPoint(const AK_Vec2& a, const AK_Vec2& b, double fa, double fb, double level);

/// A square grid of numbers, here of triangles: each square knows the latest that was entered in it. A square that has
/// taken many is refined into a grid of its own.
class AK_IndexBuckets2 {
public:
    AK_IndexBuckets2() = default;
    ~AK_IndexBuckets2();
    AK_IndexBuckets2(const AK_IndexBuckets2&) = delete;
    AK_IndexBuckets2& operator=(const AK_IndexBuckets2&) = delete;

    /// n by n squares of side `size` from the lower left corner on; called once. maxEntries: what a square takes before
    /// it is refined.
    void Init(const AK_Vec2& origin, double size, int n, int initialEntry, int maxEntries);
    int Entry(const AK_Vec2& p) const;   // p outside counts to the square nearest
    void AddEntry(const AK_Vec2& p, int entry);

private:
    static int Row(double position, int n);
    int Square(const AK_Vec2& p) const;
    void Refine(int square, int entry);

    int* _entries = nullptr;                  // square -> latest number
    int* _counts = nullptr;                   // square -> how many it took
    AK_IndexBuckets2** _children = nullptr;   // square -> its refinement or null; owned
    int n = 0;                                // squares a side
    AK_Vec2 _origin;                          // lower left
    double _size = 0;                         // side of a square
    // 1.0001/_size: the squares are a little smaller than the area that a child covers, so that no point lies beyond
    // the far border of a child.
    double _invSize = 0;
    int _maxEntries = 0;
};

class AK_Triangulation2 {
public:
    static int _reportingLevel;   // above 9 a walk that fails tells where

    /// lo, hi: the box that all points will lie in. The rectangle is wider by a hundredth of the diagonal on each side.
    AK_Triangulation2(const AK_Vec2& lo, const AK_Vec2& hi);
    AK_Triangulation2(const AK_Triangulation2&) = delete;
    AK_Triangulation2& operator=(const AK_Triangulation2&) = delete;

    /// A point as the triangulation takes it: coordinates below 1e-30 in magnitude, which exact decisions cannot count
    /// with, are 0. What is not finite, or beyond 1e+38, becomes a point that Insert refuses.
    static AK_Vec2 Point(const AK_Vec2& p);

    /// 1 if inserted. 0, with nothing changed, if the point does not lie within the rectangle or nearer than 1e-10 of
    /// the box's diagonal to a corner of the triangle that holds it.
    int Insert(const AK_Vec2* p);

    int NumTris() const { return _tris.Size(); }
    const AK_Tri2* Tri(int i) const { return _tris[i]; }
    int NumInserted() const { return _nInserted; }
    const AK_Vec2& BoundingPoint(int i) const { return _corners[i]; }   // lower left, counter-clockwise
    int IsBoundingPoint(const AK_Vec2* p) const { return p >= _corners && p < _corners + 4; }
    int HasBoundingTriangle(const AK_Tri2* t) const;   // 1 if a corner is one of the rectangle

    /// The triangle that holds p; null outside the rectangle and, with checkDistance, for a point too near to one of
    /// its corners. start: where the walk begins, null for a place near p.
    AK_Tri2* Container(const AK_Vec2* p, AK_Tri2* start, int checkDistance) const;
    /// A triangle with this very point, by address, as a corner; null if there is none.
    AK_Tri2* Referencer(const AK_Vec2* p, AK_Tri2* start);
    /// The triangle in which q follows p counter-clockwise; null if they share no edge.
    AK_Tri2* Referencer(const AK_Vec2* p, const AK_Vec2* q, AK_Tri2* start);

    // ---- the steps of an insertion; the stack gathers triangles whose edges are to be tested

    /// 1 if the edge opposite corner i may stay.
    int IsDelaunay(const AK_Tri2* t, int i) const;
    /// Replaces the edge opposite corner i by the other diagonal of the quadrilateral. Both triangles keep their
    /// numbers.
    void Flip(AK_Tri2* t, int i, AK_List<AK_Tri2*>& stack);
    /// Cuts t into three at p: t itself and two new ones at the end of the list.
    void Split(AK_Tri2* t, const AK_Vec2* p, AK_List<AK_Tri2*>& stack);

    void PrintStatistics() const;
    void WriteGrf(std::ofstream& out, const char* tag) const;

private:
    AK_Tri2* NewTri(const AK_Vec2* a, const AK_Vec2* b, const AK_Vec2* c);

    // _tris owns the triangles. Their memory comes in blocks: a million separate ones would take half as much again.
    AK_List<AK_Tri2*> _tris{1};
    std::vector<std::unique_ptr<AK_Tri2[]>> _blocks;
    AK_List<AK_Tri2*> _stack{64};   // of Insert, empty between calls
    AK_Vec2 _corners[4];            // of the rectangle
    double _minDist2;               // smallest squared distance of points
    mutable int _nInserted = 0, _nSearchSteps = 0, _nFlips = 0, _nDelaunayTests = 0;
    AK_IndexBuckets2 _buckets;
};
