// Delaunay triangulation of an array of points, in plain arrays: for callers outside the object tree.
//
// Points are x, y pairs in the caller's array, which every operation that needs coordinates receives anew: the
// triangulation keeps corner numbers only. A corner number below 0 is an auxiliary corner of the enclosing rectangle,
// -1 - k for corner k; triangles with one are marked as `out`. C callers find the same in AK_Triangulation2d_C.h.
//
// Operations on one object are for one thread at a time.

#pragma once

#include "AK_Basic_Vec.h"

struct AK_Triangulation2d {
    static constexpr double sep = -9.87654e+99;   // both coordinates of the point that stands between two lines

    int NumPts;
    int NumTris;

    /// n points, more than 2; fewer are fatal. Points that are refused as duplicates, or are no finite numbers, are
    /// corners of no triangle.
    AK_Triangulation2d(int nPts, const double* x);
    ~AK_Triangulation2d();
    AK_Triangulation2d(const AK_Triangulation2d&) = delete;
    AK_Triangulation2d& operator=(const AK_Triangulation2d&) = delete;

    int TriPt(int t, int i) const { return _triPts[3 * t + i]; }         // corner i, counter-clockwise
    int TriNeigh(int t, int i) const { return _triNeighs[3 * t + i]; }   // opposite corner i, -1 for none
    int TriOut(int t) const { return _out[t]; }   // 1 with an auxiliary corner, and for what Trim has taken away

    AK_Vec2 GetCenter(const double* x, int t) const;   // mean of the corners
    AK_Vec2 GetCircumcenter(const double* x, int t) const;
    double Circumradius(const double* x, int t) const;

    /// The triangle that holds p, -1 outside the rectangle. start: where the walk begins, below 0 for a place near p.
    int TriContaining(const double* x, const AK_Vec2& p, int start) const;

    /// Marks triangles from the rim inwards whose circumradius is above rMax as `out`; returns how many.
    int Trim(const double* x, double rMax);

    /// f: one value a point. Each becomes the mean of the means of its triangles that are not out.
    void SmoothValues(double* f) const;

    /// The lines along which f, one value a point, takes a level, within the triangles that are not out. A closed line
    /// ends with its first point. out becomes an array of *nOut points of two doubles, with a point of `sep` between
    /// lines; the caller frees it. closedOnly: 1 leaves out lines that end at a border.
    void CreateIsolines(const double* x, const double* f, double level, int closedOnly, double** out, int* nOut) const;

private:
    AK_Vec2 Corner(const double* x, int t, int i) const;
    int NearestSample(const double* x, const AK_Vec2& p) const;
    int IsoEntryEdge(const double* f, int t, double level) const;
    int IsoExitEdge(const double* f, int t, double level) const;
    AK_Vec2 GetIsoPoint(const double* x, const double* f, int t, int edge, double level) const;
    void FollowIsoline(const double* x, const double* f, double level, int start, AK_List<char>& visited, bool& closed,
                       AK_List<AK_Vec2>& line) const;

    int* _triPts;          // 3 a triangle
    int* _triNeighs;       // 3 a triangle
    unsigned char* _out;   // 1 a triangle
    AK_Vec2 _corners[4];   // auxiliary
};
