// Exact decisions of plane geometry: on which side of a line a point lies, and whether it lies in a circle.
//
// A wrong sign sends a walk through triangles in circles and makes flips undo each other, and surveyed points do lie on
// lines and circles: rasters, digitised roads. So each decision first computes in doubles with a bound of the rounding
// error, which settles nearly all; only a value within its bound is computed anew without any rounding, as an
// expansion: a sum of doubles of rising magnitude whose bits do not overlap. The sign is that of the last one.
//
// The arithmetic, with the bounds: J. R. Shewchuk, "Adaptive Precision Floating-Point Arithmetic and Fast Robust
// Geometric Predicates", Discrete & Computational Geometry 18 (1997). It needs every operation rounded to a double and
// no contraction of multiply and add.

#include "AK_Basic_Vec.h"

static constexpr double epsilon = 0x1p-53;   // largest relative error of one operation
static constexpr double sideError = (3.0 + 16.0 * epsilon) * epsilon;
static constexpr double circleError = (10.0 + 96.0 * epsilon) * epsilon;

// ----------------------------------------------------------------------------------------------------------------
// Expansions
// ----------------------------------------------------------------------------------------------------------------

namespace {

// A rounded result and what the rounding took away.
struct Exact {
    double value, rest;
};

// At most `capacity` doubles of rising magnitude, none of them 0 unless it is the only one. No constructor clears the
// array: the largest ones are long.
template <int capacity>
struct Expansion {
    double part[capacity];
    int n;

    double Value() const { return part[n - 1]; }   // within rounding; the sign is right
};

}   // namespace

static Exact Sum(double a, double b)
{
    const double sum = a + b;
    const double bPart = sum - a;
    const double aPart = sum - bPart;
    return {sum, (a - aPart) + (b - bPart)};
}

static Exact Product(double a, double b)
{
    const double product = a * b;
    return {product, std::fma(a, b, -product)};
}

// Appends a part; 0 says nothing unless nothing follows.
static void Put(double* parts, int& n, double part)
{
    if (part != 0.0) parts[n++] = part;
}

template <int capacity>
static void Finish(Expansion<capacity>& e)
{
    if (e.n == 0) e.part[e.n++] = 0.0;
}

static Expansion<2> Difference(double a, double b)
{
    const Exact difference = Sum(a, -b);
    Expansion<2> result;
    result.n = 0;
    Put(result.part, result.n, difference.rest);
    Put(result.part, result.n, difference.value);
    Finish(result);
    return result;
}

// All parts of both in the order of magnitude, added one after the other from the smallest.
template <int m, int n>
static Expansion<m + n> Plus(const Expansion<m>& a, const Expansion<n>& b, double sign)
{
    Expansion<m + n> result;
    result.n = 0;
    int i = 0;
    int j = 0;
    double sum = 0.0;
    while (i < a.n || j < b.n) {
        const bool fromA = j == b.n || (i < a.n && std::fabs(a.part[i]) < std::fabs(b.part[j]));
        const Exact next = Sum(sum, fromA ? a.part[i] : sign * b.part[j]);
        (fromA ? i : j) += 1;
        Put(result.part, result.n, next.rest);
        sum = next.value;
    }
    Put(result.part, result.n, sum);
    Finish(result);
    return result;
}

template <int m>
static Expansion<2 * m> Times(const Expansion<m>& a, double factor)
{
    Expansion<2 * m> result;
    result.n = 0;
    double carried = 0.0;
    for (int i = 0; i < a.n; ++i) {
        const Exact product = Product(a.part[i], factor);
        const Exact low = Sum(carried, product.rest);
        Put(result.part, result.n, low.rest);
        const Exact high = Sum(product.value, low.value);
        Put(result.part, result.n, high.rest);
        carried = high.value;
    }
    Put(result.part, result.n, carried);
    Finish(result);
    return result;
}

template <int m, int n>
static Expansion<2 * m * n> Times(const Expansion<m>& a, const Expansion<n>& b)
{
    Expansion<2 * m * n> result;
    result.n = 0;
    Finish(result);
    for (int j = 0; j < b.n; ++j) {
        const auto sum = Plus(result, Times(a, b.part[j]), 1.0);
        result.n = sum.n;   // within the capacity: each part of b brings 2 m at most
        std::copy(sum.part, sum.part + result.n, result.part);
    }
    return result;
}

using Component = Expansion<2>;

// a.x * b.y - a.y * b.x
static Expansion<16> Cross(const Component a[2], const Component b[2])
{
    return Plus(Times(a[0], b[1]), Times(a[1], b[0]), -1.0);
}

static Expansion<16> SquaredLength(const Component a[2]) { return Plus(Times(a[0], a[0]), Times(a[1], a[1]), 1.0); }

// ----------------------------------------------------------------------------------------------------------------
// Decisions
// ----------------------------------------------------------------------------------------------------------------

double AK_Vec2::Side(const AK_Vec2& a, const AK_Vec2& b, const AK_Vec2& p)
{
    const double right = (b.y - a.y) * (p.x - a.x);
    const double left = (b.x - a.x) * (p.y - a.y);
    const double side = right - left;
    if (std::fabs(side) > sideError * (std::fabs(right) + std::fabs(left))) return side;

    const Component along[2] = {Difference(b.x, a.x), Difference(b.y, a.y)};
    const Component to[2] = {Difference(p.x, a.x), Difference(p.y, a.y)};
    return Cross(to, along).Value();
}

// The determinant below, without rounding.
static double ExactCircle(const AK_Vec2& p, const AK_Vec2& a, const AK_Vec2& b, const AK_Vec2& c)
{
    const Component u[2] = {Difference(c.x, a.x), Difference(c.y, a.y)};
    const Component v[2] = {Difference(p.x, a.x), Difference(p.y, a.y)};
    const Component w[2] = {Difference(b.x, a.x), Difference(b.y, a.y)};
    const auto byP = Times(SquaredLength(v), Cross(w, u));
    const auto byC = Times(SquaredLength(u), Cross(v, w));
    const auto byB = Times(SquaredLength(w), Cross(u, v));
    return Plus(Plus(byP, byC, 1.0), byB, 1.0).Value();
}

int AK_Vec2::InCircle(const AK_Vec2& p, const AK_Vec2& a, const AK_Vec2& b, const AK_Vec2& c)
{
    if (!(Side(a, c, p) > 0.0) || !(Side(a, b, p) < 0.0)) return 0;
    if (!(Side(a, b, c) < 0.0)) return 1;

    const AK_Vec2 u = c - a;
    const AK_Vec2 v = p - a;
    const AK_Vec2 w = b - a;
    const double vyux = v.y * u.x, vxuy = v.x * u.y;
    const double vxwy = v.x * w.y, vywx = v.y * w.x;
    const double uywx = u.y * w.x, uxwy = u.x * w.y;
    const double uu = Dot(u, u), vv = Dot(v, v), ww = Dot(w, w);
    const double circle = vv * (uywx - uxwy) + uu * (vxwy - vywx) + ww * (vyux - vxuy);
    const double size = vv * (std::fabs(uywx) + std::fabs(uxwy)) + uu * (std::fabs(vxwy) + std::fabs(vywx)) +
                        ww * (std::fabs(vyux) + std::fabs(vxuy));
    if (std::fabs(circle) > circleError * size) return circle < 0.0;
    return ExactCircle(p, a, b, c) < 0.0;
}
