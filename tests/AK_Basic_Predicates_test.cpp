// Side and InCircle against whole numbers of 128 bits, where rounding in doubles fails.

#include "AK_Basic_Vec.h"

#include <gtest/gtest.h>

namespace {

__extension__ typedef __int128 Wide;

struct Point {
    long x, y;
    AK_Vec2 Scaled(double unit) const { return {double(x) * unit, double(y) * unit}; }   // unit: a power of 2
};

Wide Turn(const Point& a, const Point& b, const Point& p)   // above 0 to the left
{
    return Wide(b.x - a.x) * (p.y - a.y) - Wide(b.y - a.y) * (p.x - a.x);
}

// Above 0 if p lies inside the circle through a, b, c, which run counter-clockwise.
Wide Circle(const Point& a, const Point& b, const Point& c, const Point& p)
{
    const auto square = [&](const Point& q) { return Wide(q.x - p.x) * (q.x - p.x) + Wide(q.y - p.y) * (q.y - p.y); };
    return square(a) * Turn(p, b, c) + square(b) * Turn(p, c, a) + square(c) * Turn(p, a, b);
}

int Sign(Wide value) { return (value > 0) - (value < 0); }
int Sign(double value) { return (value > 0) - (value < 0); }

long Random(long range) { return (long(AK_System::rand()) << 20 ^ AK_System::rand()) % range; }
Point RandomPoint(long range) { return {Random(range), Random(range)}; }

}   // namespace

TEST(AK_Basic_Predicates, SideIsRightForPointsNextToALine)
{
    AK_System::srand(1);
    int onLine = 0, roundingFails = 0;
    for (int i = 0; i < 20000; ++i) {
        const Point a = RandomPoint(1L << 40);
        const Point step = RandomPoint(1L << 20);
        const Point b = {a.x + 1000 * step.x, a.y + 1000 * step.y};
        const long k = Random(3000);
        const Point p = {a.x + k * step.x + i % 3 - 1, a.y + k * step.y + i % 2};
        const int expected = -Sign(Turn(a, b, p));
        const AK_Vec2 da = a.Scaled(0x1p-20), db = b.Scaled(0x1p-20), dp = p.Scaled(0x1p-20);
        EXPECT_EQ(Sign(AK_Vec2::Side(da, db, dp)), expected);
        EXPECT_EQ(Sign(AK_Vec2::Side(db, da, dp)), -expected);
        onLine += expected == 0;
        roundingFails += Sign(Cross(dp, db - da) - Cross(da, db - da)) != expected;
    }
    EXPECT_GT(onLine, 1000);
    EXPECT_GT(roundingFails, 1000);   // what the exactness is for
}

TEST(AK_Basic_Predicates, InCircleIsRightForPointsNextToACircle)
{
    AK_System::srand(2);
    int onCircle = 0, inside = 0;
    for (int i = 0; i < 20000; ++i) {
        // Corners of a rectangle, one of them moved by at most one unit: a, b, p, c.
        const Point a = RandomPoint(1L << 26);
        const Point u = {1 + Random(1L << 24), 1 + Random(1L << 24)};
        const long s = 1 + Random(4);
        const Point b = {a.x + u.x, a.y + u.y};
        const Point c = {a.x - s * u.y, a.y + s * u.x};
        const Point p = {b.x + c.x - a.x + i % 3 - 1, b.y + c.y - a.y + i / 3 % 3 - 1};
        const int expected = Circle(a, b, c, p) > 0;
        const auto at = [](const Point& q) { return q.Scaled(0x1p-10); };
        EXPECT_EQ(AK_Vec2::InCircle(at(p), at(a), at(b), at(c)), expected);
        EXPECT_EQ(AK_Vec2::InCircle(at(a), at(p), at(c), at(b)), Circle(p, c, b, a) > 0);
        onCircle += Circle(a, b, c, p) == 0;
        inside += expected;
    }
    EXPECT_GT(onCircle, 1000);
    EXPECT_GT(inside, 1000);
}

TEST(AK_Basic_Predicates, InCircleSaysNoWhereTheDiagonalCannotChange)
{
    const AK_Vec2 a{0, 0}, b{4, 0}, c{0, 4};
    const struct {
        const char* why;
        AK_Vec2 p;
        int result;
    } cases[] = {
        {"inside the circle, beyond b -> c", {3, 3}, 1},
        {"on the circle", {4, 4}, 0},
        {"outside", {4, 5}, 0},
        {"on the line a -> b: no convex quadrilateral", {3, 0}, 0},
        {"beyond it", {3.5, -0.5}, 0},
    };
    for (const auto& k : cases) EXPECT_EQ(AK_Vec2::InCircle(k.p, a, b, c), k.result) << k.why;
    EXPECT_EQ(AK_Vec2::InCircle({5, 9}, {2, 2}, b, c), 1) << "a triangle without area may go, wherever p lies";
}
