// Points, vectors and index tuples: the plain types that geometry, terrain and simulation share.

#pragma once

#include "AK_Basic.h"

#include <cmath>

inline constexpr double ak_pi = 3.14159265358979323846;

/// Three coordinates or components, 64 bits each.
struct AK_Vec {
    double x = 0, y = 0, z = 0;

    AK_Vec& operator+=(const AK_Vec& b)
    {
        x += b.x;
        y += b.y;
        z += b.z;
        return *this;
    }
    AK_Vec& operator-=(const AK_Vec& b)
    {
        x -= b.x;
        y -= b.y;
        z -= b.z;
        return *this;
    }
    AK_Vec& operator*=(double f)
    {
        x *= f;
        y *= f;
        z *= f;
        return *this;
    }
    bool operator==(const AK_Vec&) const = default;

    /// The smallest prime number at or above n.
    static int NextPrimeNumber(int n);
};

inline AK_Vec operator+(AK_Vec a, const AK_Vec& b) { return a += b; }
inline AK_Vec operator-(AK_Vec a, const AK_Vec& b) { return a -= b; }
inline AK_Vec operator-(const AK_Vec& a) { return {-a.x, -a.y, -a.z}; }
inline AK_Vec operator*(AK_Vec a, double f) { return a *= f; }
inline AK_Vec operator*(double f, AK_Vec a) { return a *= f; }
inline double Dot(const AK_Vec& a, const AK_Vec& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline AK_Vec Cross(const AK_Vec& a, const AK_Vec& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double Length(const AK_Vec& a) { return std::sqrt(Dot(a, a)); }

/// The vector brought to length 1; one without length or direction stays as it is.
inline AK_Vec Normalized(const AK_Vec& a)
{
    const double length = Length(a);
    return length > 0 ? a * (1.0 / length) : a;
}

/// Two coordinates: the plane of point location and triangulation.
struct AK_Vec2 {
    double x = 0, y = 0;

    AK_Vec2() = default;
    AK_Vec2(double px, double py) : x(px), y(py) {}
    AK_Vec2(const AK_Vec& p) : x(p.x), y(p.y) {}   // a point seen from above
    bool operator==(const AK_Vec2&) const = default;

    // Exact decisions (AK_Basic_Predicates.cpp) for coordinates that are 0 or lie between 1e-30 and 1e+38 in magnitude.
    // Any thread may ask.

    /// (b.y - a.y) * (p.x - a.x) - (b.x - a.x) * (p.y - a.y): above 0 if p lies to the right of a -> b, below 0 if to
    /// the left. The sign is right always, the value within rounding.
    static double Side(const AK_Vec2& a, const AK_Vec2& b, const AK_Vec2& p);
    /// For a triangle a, b, c that runs counter-clockwise and a point p beyond b -> c: 1 if p lies inside the circle
    /// through the corners or the triangle has no area; 0 if it lies on the circle or outside, and where a -> p leaves
    /// the triangle not strictly between b and c, so that the diagonal of the quadrilateral a, b, p, c cannot change.
    static int InCircle(const AK_Vec2& p, const AK_Vec2& a, const AK_Vec2& b, const AK_Vec2& c);
};

inline AK_Vec2 operator+(const AK_Vec2& a, const AK_Vec2& b) { return {a.x + b.x, a.y + b.y}; }
inline AK_Vec2 operator-(const AK_Vec2& a, const AK_Vec2& b) { return {a.x - b.x, a.y - b.y}; }
inline AK_Vec2 operator*(const AK_Vec2& a, double f) { return {a.x * f, a.y * f}; }
inline double Dot(const AK_Vec2& a, const AK_Vec2& b) { return a.x * b.x + a.y * b.y; }
inline double Cross(const AK_Vec2& a, const AK_Vec2& b) { return a.x * b.y - a.y * b.x; }
inline double Length(const AK_Vec2& a) { return std::sqrt(Dot(a, a)); }

/// A cell's vertices or neighbours: four indices, -1 for none.
struct IA4 {
    int index[4] = {-1, -1, -1, -1};

    int& operator[](int i) { return index[i]; }
    int operator[](int i) const { return index[i]; }
    bool operator==(const IA4&) const = default;
};

template <>
inline constexpr bool ak_is_stream_item<AK_Vec> = true;   // 3 doubles
template <>
inline constexpr bool ak_is_stream_item<IA4> = true;   // 4 ints
