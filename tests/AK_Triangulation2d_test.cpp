// The triangulation in arrays, through its face for C.

#include "AK_Triangulation2d_C.h"

#include "AK_Basic_TestTools.h"
#include "AK_Basic_Vec.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr int side = 21;   // points a side of the square from (0, 0) to (20, 20), one unit apart

// A lattice whose inner points are moved about.
std::vector<double> Lattice()
{
    AK_System::srand(8);
    const auto jitter = [] { return 0.6 * (AK_System::rand() / double(AK_System::rand_max) - 0.5); };
    std::vector<double> x;
    for (int i = 0; i < side; ++i)
        for (int j = 0; j < side; ++j) {
            const bool inner = i > 0 && i < side - 1 && j > 0 && j < side - 1;
            x.push_back(i + (inner ? jitter() : 0));
            x.push_back(j + (inner ? jitter() : 0));
        }
    return x;
}

class AK_Triangulation2dTest : public testing::Test {
protected:
    AK_Triangulation2dTest() : x(Lattice()), t(AK_Triangulation2d_Construct(side * side, x.data())) {}
    ~AK_Triangulation2dTest() override { AK_Triangulation2d_Destroy(t); }

    std::vector<double> Values(double (*f)(double x, double y)) const
    {
        std::vector<double> values;
        for (size_t i = 0; i < x.size(); i += 2) values.push_back(f(x[i], x[i + 1]));
        return values;
    }

    // The lines of a level, split at the separators.
    std::vector<std::vector<AK_Vec2>> Isolines(const std::vector<double>& f, double level, int closedOnly) const
    {
        double* out = nullptr;
        int n = 0;
        AK_Triangulation2d_CreateIsolines(t, x.data(), f.data(), level, closedOnly, &out, &n);
        std::vector<std::vector<AK_Vec2>> lines;
        for (int i = 0; i < n; ++i) {
            const bool separates = out[2 * i] == AK_Triangulation2d_sep && out[2 * i + 1] == AK_Triangulation2d_sep;
            if (i == 0 || separates) lines.emplace_back();
            if (!separates) lines.back().push_back({out[2 * i], out[2 * i + 1]});
        }
        std::free(out);
        return lines;
    }

    CaughtMessages messages;
    std::vector<double> x;
    AK_Triangulation2d* t;
};

double Distance(double x, double y) { return std::hypot(x - 10, y - 10); }
double West(double x, double) { return x; }

}   // namespace

TEST_F(AK_Triangulation2dTest, NumbersCornersAndNeighbours)
{
    ASSERT_EQ(AK_Triangulation2d_NumPts(t), side * side);
    const int numTris = AK_Triangulation2d_NumTris(t);
    ASSERT_EQ(numTris, 2 + 2 * side * side);
    double area = 0;
    int hull = 0;
    for (int n = 0; n < numTris; ++n) {
        bool auxiliary = false;
        AK_Vec2 p[3];
        for (int i = 0; i < 3; ++i) {
            const int corner = AK_Triangulation2d_TriPt(t, n, i);
            ASSERT_GE(corner, -4);
            ASSERT_LT(corner, side * side);
            auxiliary = auxiliary || corner < 0;
            if (corner >= 0) p[i] = {x[2 * corner], x[2 * corner + 1]};
            const int other = AK_Triangulation2d_TriNeigh(t, n, i);
            hull += other < 0;
            if (other < 0) continue;
            int back = 0;
            for (int k = 0; k < 3; ++k) back += AK_Triangulation2d_TriNeigh(t, other, k) == n;
            EXPECT_EQ(back, 1);
        }
        EXPECT_EQ(AK_Triangulation2d_TriOut(t, n), auxiliary);
        if (!auxiliary) area += 0.5 * Cross(p[1] - p[0], p[2] - p[0]);
    }
    EXPECT_EQ(hull, 4);
    EXPECT_NEAR(area, 400, 1e-9);
}

TEST_F(AK_Triangulation2dTest, FindsTheTriangleUnderAPointFromAnyStart)
{
    const int numTris = AK_Triangulation2d_NumTris(t);
    for (int n = 0; n < numTris; ++n) {
        double center[2], circum[2];
        AK_Triangulation2d_GetCenter(t, x.data(), n, center);
        AK_Triangulation2d_GetCircumcenter(t, x.data(), n, circum);
        EXPECT_EQ(AK_Triangulation2d_TriContaining(t, x.data(), center, n % 3 ? -1 : (n * 7) % numTris), n);
        if (AK_Triangulation2d_TriOut(t, n)) continue;
        double distance[3];
        for (int i = 0; i < 3; ++i) {
            const int p = AK_Triangulation2d_TriPt(t, n, i);
            distance[i] = std::hypot(x[2 * p] - circum[0], x[2 * p + 1] - circum[1]);
        }
        EXPECT_NEAR(distance[0], distance[1], 1e-9 * distance[0]);
        EXPECT_NEAR(distance[0], distance[2], 1e-9 * distance[0]);
    }
    const double far[2] = {1000, 5};
    EXPECT_EQ(AK_Triangulation2d_TriContaining(t, x.data(), far, -1), -1);
}

TEST_F(AK_Triangulation2dTest, LinesOfALevelAreWholeAndSeparated)
{
    const auto rings = Isolines(Values(Distance), 5, 1);
    ASSERT_EQ(rings.size(), 1u);
    EXPECT_EQ(rings[0].front(), rings[0].back());
    EXPECT_GT(rings[0].size(), 30u);
    for (const AK_Vec2& p : rings[0]) EXPECT_NEAR(Distance(p.x, p.y), 5, 0.15);

    // A level that the corners of the square cut into four lines, which all end at the border.
    EXPECT_EQ(Isolines(Values(Distance), 12, 1).size(), 0u);
    const auto corners = Isolines(Values(Distance), 12, 0);
    ASSERT_EQ(corners.size(), 4u);
    for (const auto& line : corners) EXPECT_FALSE(line.front() == line.back());

    const auto west = Isolines(Values(West), 7.5, 0);
    ASSERT_EQ(west.size(), 1u);
    double length = 0;
    for (size_t i = 1; i < west[0].size(); ++i) length += Length(west[0][i] - west[0][i - 1]);
    EXPECT_NEAR(length, 20, 1e-9);
    EXPECT_EQ(Isolines(Values(West), 100, 0).size(), 0u);
}

TEST_F(AK_Triangulation2dTest, SmoothsTowardsTheMeanAndTrimsFromTheRim)
{
    std::vector<double> f = Values(West);
    f[220] = 1000;   // the point in the middle
    AK_Triangulation2d_SmoothValues(t, f.data());
    EXPECT_LT(f[220], 400);
    EXPECT_GT(f[220], 300);
    EXPECT_NEAR(f[0], 0.5, 0.5);

    EXPECT_EQ(AK_Triangulation2d_Trim(t, x.data(), 100), 0);
    const int inner = 2 * (side - 1) * (side - 1);
    EXPECT_EQ(AK_Triangulation2d_Trim(t, x.data(), 0), inner);
    EXPECT_EQ(Isolines(Values(West), 7.5, 0).size(), 0u);
    EXPECT_EQ(AK_Triangulation2d_Trim(t, x.data(), 0), 0);
}

TEST_F(AK_Triangulation2dTest, IsTheSameEveryTimeAndDrawsNobodysRandomNumbers)
{
    AK_System::srand(1);
    AK_Triangulation2d* again = AK_Triangulation2d_Construct(side * side, x.data());
    EXPECT_EQ(AK_System::rand_next, 1u);
    for (int n = 0; n < AK_Triangulation2d_NumTris(t); ++n)
        ASSERT_EQ(AK_Triangulation2d_TriPt(t, n, 0), AK_Triangulation2d_TriPt(again, n, 0));
    AK_Triangulation2d_Destroy(again);
    const double bad[] = {NAN, 0, 1, 1, 1, 1, HUGE_VAL, -HUGE_VAL};
    AK_Triangulation2d_Destroy(AK_Triangulation2d_Construct(4, bad));
    EXPECT_DEATH(AK_Triangulation2d_Construct(2, bad), "");
}
