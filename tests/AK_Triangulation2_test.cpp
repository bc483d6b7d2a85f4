// The Delaunay triangulation: what holds of every one, over arrangements of points that break careless arithmetic.

#include "AK_Triangulation2.h"

#include "AK_Basic_TestTools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace {

double Random() { return AK_System::rand() / double(AK_System::rand_max); }

using Points = std::vector<AK_Vec2>;

std::unique_ptr<AK_Triangulation2> Triangulate(const Points& points)
{
    AK_Vec2 lo = points[0], hi = points[0];
    for (const AK_Vec2& p : points) {
        lo = {std::min(lo.x, p.x), std::min(lo.y, p.y)};
        hi = {std::max(hi.x, p.x), std::max(hi.y, p.y)};
    }
    auto net = std::make_unique<AK_Triangulation2>(lo, hi);
    for (const AK_Vec2& p : points) net->Insert(&p);
    return net;
}

// No triangle is turned over, neighbours share an edge, no circle through the corners of one holds the far corner of
// the other, and all together cover the rectangle: with that no circle holds any point.
void ExpectDelaunay(const AK_Triangulation2& net, const char* why)
{
    EXPECT_EQ(net.NumTris(), 2 + 2 * net.NumInserted()) << why;
    int faults = 0, hullEdges = 0;
    double area = 0;
    for (int n = 0; n < net.NumTris(); ++n) {
        const AK_Tri2& t = *net.Tri(n);
        faults += !(AK_Vec2::Side(*t.Pt(0), *t.Pt(1), *t.Pt(2)) < 0);
        area += 0.5 * Cross(*t.Pt(1) - *t.Pt(0), *t.Pt(2) - *t.Pt(0));
        for (int i = 0; i < 3; ++i) {
            const AK_Tri2* other = t.Neighbor(i);
            hullEdges += !other;
            if (!other) continue;
            const int k = other->Index(&t);
            faults += other->Pt((k + 1) % 3) != t.Pt((i + 2) % 3) || other->Pt((k + 2) % 3) != t.Pt((i + 1) % 3);
            faults += AK_Vec2::InCircle(*other->Pt(k), *t.Pt(i), *t.Pt((i + 1) % 3), *t.Pt((i + 2) % 3));
        }
    }
    const AK_Vec2 size = net.BoundingPoint(2) - net.BoundingPoint(0);
    EXPECT_EQ(faults, 0) << why;
    EXPECT_EQ(hullEdges, 4) << why;
    EXPECT_NEAR(area, size.x * size.y, 1e-9 * size.x * size.y) << why;
}

class AK_Triangulation2Test : public testing::Test {
protected:
    TemporaryDirectory directory;
    CaughtMessages messages;
};

}   // namespace

TEST_F(AK_Triangulation2Test, HoldsForEveryArrangementOfPoints)
{
    const double pi = 3.14159265358979323846;
    const struct {
        const char* why;
        int n;
        std::function<AK_Vec2(int)> point;
        int refused;   // points that are not inserted; -1: some or none
    } cases[] = {
        {"random", 50000, [](int) { return AK_Vec2(1000 * Random(), 500 * Random()); }, 0},
        {"clusters of a millimetre in 100 km", 5000,
         [](int i) { return AK_Vec2(1e5 * (i % 7) + 1e-3 * Random(), 1e5 * (i % 3) + 1e-3 * Random()); }, -1},
        {"raster, sorted", 2500, [](int i) { return AK_Vec2(10 * (i / 50), 10 * (i % 50)); }, 0},
        {"raster of decimetres, Gauss-Krueger metres", 10000,
         [](int i) { return AK_Vec2(4567890.1 + 0.1 * (i * 7919 % 10000 / 100), 5237123.3 + 0.1 * (i * 7919 % 100)); },
         0},
        {"on a slanting line, UTM metres", 3000, [](int i) { return AK_Vec2(678901.2 + 0.1 * i, 5237000 + 0.3 * i); },
         0},
        {"along a road, a nanometre beside the line", 3000,
         [](int i) { return AK_Vec2(i + 1e-9 * Random(), 3.0 * i + 1e-9 * Random()); }, 0},
        {"on a level line", 1000, [](int i) { return AK_Vec2(0.1 * (i * 7919 % 1000), 7.7); }, 0},
        {"on a circle and its centre", 1001,
         [pi](int i) {
             return i ? AK_Vec2(5e6 + 100 * cos(pi * i / 500), 5e6 + 100 * sin(pi * i / 500)) : AK_Vec2(5e6, 5e6);
         },
         0},
        {"every point four times", 4000, [](int i) { return AK_Vec2(i / 4 % 32, i / 128); }, 3000},
        {"huge", 2000, [](int) { return AK_Vec2(1e38 * Random(), 1e38 * Random()); }, 0},
        {"a micrometre wide, far away", 200, [](int) { return AK_Vec2(5e6 + 1e-6 * Random(), 5e6 + 1e-6 * Random()); },
         -1},
        {"many orders of magnitude", 600, [](int i) { return AK_Vec2(pow(2.0, -i / 20), i % 20 * pow(2.0, -i / 10)); },
         -1},
    };
    for (const auto& c : cases) {
        AK_System::srand(11);
        Points points;
        for (int i = 0; i < c.n; ++i) points.push_back(c.point(i));
        const auto net = Triangulate(points);
        ExpectDelaunay(*net, c.why);
        if (c.refused >= 0) {
            EXPECT_EQ(c.n - net->NumInserted(), c.refused) << c.why;
        } else {
            EXPECT_GT(net->NumInserted(), 10) << c.why;
        }
    }
}

TEST_F(AK_Triangulation2Test, RefusesWhatIsNoNewPointOfItsBox)
{
    AK_Triangulation2 net({0, 0}, {1000, 0});
    EXPECT_EQ(messages.Texts().back(), "Delaunay triangulation min point distance:1e-07");
    net.PrintStatistics();   // divides by no points, and lives
    const struct {
        const char* why;
        AK_Vec2 p;
        int inserted;
    } cases[] = {
        {"a point", {500, 0}, 1},
        {"the same place", {500, 0}, 0},
        {"nearer than the minimum", {500, 0.9e-7}, 0},
        {"a little further", {500, 1.1e-7}, 1},
        {"outside the box, within the rectangle", {-5, 5}, 1},
        {"outside", {-11, 0}, 0},
        {"on the border", {300, net.BoundingPoint(0).y}, 0},
        {"a corner of the rectangle", net.BoundingPoint(3), 0},
        {"no number", {NAN, 0}, 0},
        {"endless", {0, HUGE_VAL}, 0},
    };
    for (const auto& c : cases) EXPECT_EQ(net.Insert(&c.p), c.inserted) << c.why;
    ExpectDelaunay(net, "after refusals");

    const AK_Vec2 only{5, 5};
    AK_Triangulation2 point(only, only);   // a box without extent has no inside
    EXPECT_EQ(point.Insert(&only), 0);
    EXPECT_EQ(AK_Triangulation2::Point({1e-31, -1e38}), AK_Vec2(0, -1e38));
    EXPECT_TRUE(std::isnan(AK_Triangulation2::Point({0, 1.1e38}).y));
}

TEST_F(AK_Triangulation2Test, FourPointsOnACircleKeepTheirDiagonal)
{
    const Points square = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    for (int last = 0; last < 4; ++last) {
        Points points = square;
        std::swap(points[last], points[3]);
        const auto net = Triangulate(points);
        ExpectDelaunay(*net, "square");
        const bool first = net->Referencer(&points[0], &points[2], nullptr);
        const bool second = net->Referencer(&points[1], &points[3], nullptr);
        EXPECT_EQ(first + second + (net->Referencer(&points[0], &points[1], nullptr) != nullptr) +
                      (net->Referencer(&points[0], &points[3], nullptr) != nullptr) +
                      (net->Referencer(&points[2], &points[3], nullptr) != nullptr) +
                      (net->Referencer(&points[1], &points[2], nullptr) != nullptr),
                  5);
    }
}

TEST_F(AK_Triangulation2Test, FindsPointsByAddressAndEdgesByTheirEnds)
{
    AK_System::srand(4);
    Points points;
    for (int i = 0; i < 2000; ++i) points.push_back({Random(), Random()});
    const auto net = Triangulate(points);
    AK_Tri2* last = nullptr;
    for (const AK_Vec2& p : points) {
        last = net->Referencer(&p, last);
        ASSERT_TRUE(last);
        const int i = last->Index(&p);
        const AK_Vec2* q = last->Pt((i + 2) % 3);
        const AK_Tri2* behind = net->Referencer(&p, q, nullptr);   // the edge as seen from the other side
        ASSERT_TRUE(behind);
        EXPECT_EQ(behind, last->Neighbor((i + 1) % 3));
    }
    const AK_Vec2 copy = points[7];
    EXPECT_FALSE(net->Referencer(&copy, nullptr));
    const auto byX = [](const AK_Vec2& a, const AK_Vec2& b) { return a.x < b.x; };
    const AK_Vec2* west = &*std::min_element(points.begin(), points.end(), byX);
    const AK_Vec2* east = &*std::max_element(points.begin(), points.end(), byX);
    EXPECT_FALSE(net->Referencer(west, east, nullptr));
    EXPECT_DEATH(net->Tri(0)->Index(&copy), "");
}

TEST_F(AK_Triangulation2Test, ATriangleTellsWhereALevelCrossesIt)
{
    const Points p = {{0, 0}, {4, 0}, {0, 2}};
    const AK_Tri2 t{{&p[0], &p[1], &p[2]}, {}};
    const double values[] = {10, 20, 30};
    int n = -1;
    double out[4];
    t.GetIsoLinePoints(values, 15, &n, out);
    ASSERT_EQ(n, 2);
    EXPECT_EQ(std::vector<double>(out, out + 4), (std::vector<double>{2, 0, 0, 0.5}));
    t.GetIsoLinePoints(values, 31, &n, out);
    EXPECT_EQ(n, 0);
    const AK_String file = directory / "t.grf";
    {
        std::ofstream stream(file.c_str());
        t.WriteGrf(stream, "red");
    }
    EXPECT_EQ(FileBytes(file), "t red 0 0 0 4 0 0 0 2 0\n");
}

TEST_F(AK_Triangulation2Test, BucketsRememberTheLatestNearby)
{
    AK_IndexBuckets2 buckets;
    buckets.Init({0, 0}, 10, 10, -1, 3);
    AK_System::srand(5);
    const auto random = [] { return AK_Vec2(100 * Random(), 100 * Random() * Random()); };
    for (int i = 0; i < 20000; ++i) {
        const AK_Vec2 p = random();
        buckets.AddEntry(p, i);
        ASSERT_EQ(buckets.Entry(p), i);
    }
    for (const AK_Vec2& p : {AK_Vec2(100, 100), AK_Vec2(-5, 1e300), AK_Vec2(NAN, 3)}) EXPECT_GE(buckets.Entry(p), 0);
}

// The sets of triangles of Qhull and of ours, on the points and the four corners of the rectangle.
TEST_F(AK_Triangulation2Test, AgreesWithScipy)
{
    const std::string python = "/usr/bin/python3";   // the system's own: the one that has its package of scipy
    if (std::system((python + " -c 'import scipy.spatial' 2>/dev/null").c_str()) != 0)
        GTEST_SKIP() << "scipy is not installed";
    AK_System::srand(6);
    Points points;
    for (int i = 0; i < 50000; ++i) points.push_back({1000 * Random(), 700 * Random()});
    const auto net = Triangulate(points);
    const auto write = [&](const char* name, const auto& numbers) {
        std::ofstream(std::string((directory / name).c_str()), std::ios::binary)
            .write(reinterpret_cast<const char*>(numbers.data()), long(numbers.size() * sizeof numbers[0]));
    };
    std::vector<int> corners;
    for (int n = 0; n < net->NumTris(); ++n)
        for (int i = 0; i < 3; ++i) {
            const AK_Vec2* p = net->Tri(n)->Pt(i);
            corners.push_back(
                int(net->IsBoundingPoint(p) ? p - &net->BoundingPoint(0) + long(points.size()) : p - points.data()));
        }
    for (int k = 0; k < 4; ++k) points.push_back(net->BoundingPoint(k));
    write("points", points);
    write("triangles", corners);
    const std::string command = python + " " KORVO_SOURCE_DIR "/tests/AK_Triangulation2_scipy.py " +
                                std::string((directory / "points").c_str()) + " " + (directory / "triangles").c_str();
    EXPECT_EQ(std::system(command.c_str()), 0);
}
