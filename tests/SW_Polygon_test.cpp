// Polygons: what lies inside, areas, inclination; the corners of mesh contours.

#include "SW_Polyline_TestSupport.h"

#include <cmath>

namespace {

class SW_PolygonTest : public LineTest {
protected:
    SW_MeshContourPolygon* AddContour(const std::string& points)
    {
        auto* contour = Add<SW_MeshContourPolygon>(*polygons, "contour");
        SetPoints(*contour, points);
        return contour;
    }
};

const char* const square = "0 0;10 0;10 10;0 10";   // counter-clockwise

}   // namespace

TEST_F(SW_PolygonTest, ContainsWhatLiesInside)
{
    const char* const clockwise = "0 0;0 10;10 10;10 0";
    const char* const bowTie = "0 0;10 10;10 0;0 10";
    const struct {
        const char* why;
        const char* polygon;
        AK_Vec2 p;
        bool inside;
    } cases[] = {
        {"the line itself belongs to clockwise rings", clockwise, {0, 5}, true},
        {"on both sides", clockwise, {10, 5}, true},
        {"and not to others", square, {0, 5}, false},
        {"nor there", square, {10, 5}, false},
        {"crossing itself: the left part", bowTie, {1, 5}, true},
        {"crossing itself: the upper part", bowTie, {5, 9}, false},
        {"no points", "", {0, 0}, false},
        {"one point", "0 0", {0, 0}, false},
        {"on the level of a vertex", "0 0;10 5;0 10", {2, 5}, true},
        {"on the level of a vertex, outside", "0 0;10 5;10 -5;20 20;0 20", {9, 5}, true},
    };
    for (const auto& c : cases) EXPECT_EQ(AddPolygon("p", c.polygon)->Contains(c.p), c.inside) << c.why;
}

TEST_F(SW_PolygonTest, ContainsAgreesWithTheAngleAroundThePoint)
{
    AK_System::srand(5);
    const auto random = [] { return AK_System::rand() / double(AK_System::rand_max); };
    for (int i = 0; i < 2000; ++i) {
        AK_Polyline ring;   // star-shaped around the origin, so that the radius at an angle is known
        const int n = 3 + AK_System::rand() % 9;
        for (int k = 0; k < n; ++k) {
            const double angle = 2 * M_PI * (k + 0.9 * random()) / n;
            const double radius = 1 + 9 * random();
            ring._x.Append({radius * std::cos(angle), radius * std::sin(angle), 0});
        }
        SW_Polygon polygon("p", nullptr);
        polygon.SetLine(ring);
        const AK_Vec2 p{20 * random() - 10, 20 * random() - 10};
        double turned = 0;   // the angle that the ring sweeps as seen from p: 2 pi for a point inside, else 0
        for (int k = 0; k < n; ++k) {
            const AK_Vec2 a = AK_Vec2(ring._x[k]) - p;
            const AK_Vec2 b = AK_Vec2(ring._x[(k + 1) % n]) - p;
            turned += std::atan2(Cross(a, b), Dot(a, b));
        }
        EXPECT_EQ(polygon.Contains(p), turned > M_PI) << i;
    }
}

TEST_F(SW_PolygonTest, AreasHaveASignAndAreShownWithout)
{
    const struct {
        const char* polygon;
        double area;
    } cases[] = {{square, -100}, {"0 0;0 10;10 10;10 0", 100}, {"0 0;10 0;10 10;5 2;0 10", -60}, {"0 0 5;10 0 99", 0},
                 {"", 0},        {"0 0;10 10;10 0;0 10", 0}};
    for (const auto& c : cases) {
        const SW_Polygon* polygon = AddPolygon("p", c.polygon);
        EXPECT_EQ(polygon->ProjectedAreaValue(), c.area) << c.polygon;
        EXPECT_EQ(polygon->Get("ProjectedArea"), AK_String(std::fabs(c.area), "%.15g")) << c.polygon;
    }
}

TEST_F(SW_PolygonTest, TrueAreaFollowsTheInclinationInside)
{
    AddPlane("alp", std::tan(std::acos(0.8)));   // a slope of cosine 0.8
    SW_Polygon* polygon = AddPolygon("p", "20 20;80 20;80 80;20 80");
    EXPECT_EQ(polygon->Get("TrueArea") + " " + polygon->Get("MeanInclination"), "0 0");
    SetOn(*polygon, "UpdateTrueArea", "");
    EXPECT_EQ(polygon->Get("TrueArea") + " " + polygon->Get("MeanInclination"), "3600 0") << "without a mesh";
    SetOn(*polygon, "BaseMeshName", "alp");
    EXPECT_NEAR(polygon->CosMeanInclination(), 0.8, 1e-12);
    EXPECT_EQ(polygon->Get("MeanInclination"), "0") << "as of the last update";
    SetOn(*polygon, "UpdateTrueArea", "");
    EXPECT_NEAR(polygon->TrueArea(), 4500, 1e-9);
    EXPECT_NEAR(polygon->MeanInclination(), std::acos(0.8) * 180 / M_PI, 1e-9);
    SetPoints(*polygon, "1 1;2 1;2 2");
    EXPECT_EQ(polygon->CosMeanInclination(), 1) << "no centre of a cell inside";
}

TEST_F(SW_PolygonTest, ContoursHaveFourCorners)
{
    SW_MeshContourPolygon* contour = AddContour("0 0;3 4;10 4;10 0;5 0");
    EXPECT_EQ(contour->Get("NWCorner") + contour->Get("SWCorner") + contour->Get("SECorner") + contour->Get("NECorner"),
              "1234");
    EXPECT_TRUE(contour->IsValid());
    const double sides[] = {5, 7, 4, 10};   // the last one over the fifth point
    for (int k = 0; k < 4; ++k) EXPECT_EQ(contour->ProjectedSideLength(k), sides[k]) << k;

    EXPECT_EQ(SetOn(*contour, "NECorner", "5"), "");
    EXPECT_EQ(contour->ProjectedSideLength(3), 5);
    EXPECT_EQ(SetOn(*contour, "SWCorner", "4.9 0.1 0"), "");
    EXPECT_EQ(contour->Get("SWCorner") + contour->Get("SelectedVertex"), "55");
    EXPECT_EQ(contour->ProjectedSideLength(1), 5 + 5 + 7) << "on over the first point to the third";
    EXPECT_NE(SetOn(*contour, "SWCorner", "x y"), "");
    EXPECT_EQ(contour->Get("SWCorner"), "5");
    EXPECT_EQ(SetOn(*contour, "NWCorner", "0"), "");
    EXPECT_FALSE(contour->IsValid());
    EXPECT_EQ(contour->ProjectedSideLength(0), 0);
    EXPECT_FALSE(AddContour("0 0;3 4;10 4")->IsValid());
    contour->Update();   // a corner that is none prints no label
}
