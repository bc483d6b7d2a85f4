// Objects of the world: local system, copies and clones, and the boxes around them.
//
// Boxes are held against matrices that are written out here, in 64 bits: each clone's corners by the chain of its own
// transformations, put together by hand for each case.

#include "AK_VisObj3d_Clones.h"
#include "AK_VisibleObject_TestSupport.h"
#include "AK_sogl_Canvas.h"

#include <cmath>

namespace
{

/// p -> the transformed p.
using Map = std::function<AK_Vec(AK_Vec)>;

Map Shifted(AK_Vec by)
{
    return [=](AK_Vec p) { return p + by; };
}

Map Scaled(AK_Vec by)
{
    return [=](AK_Vec p) { return AK_Vec{p.x * by.x, p.y * by.y, p.z * by.z}; };
}

/// Rodrigues' formula, about an axis through a point.
Map Turned(double degrees, AK_Vec axis, AK_Vec point = {})
{
    const double angle = degrees * std::acos(-1.0) / 180;
    const AK_Vec k = axis * (1 / Length(axis));
    return [=](AK_Vec p) {
        const AK_Vec v = p - point;
        return point + v * std::cos(angle) + Cross(k, v) * std::sin(angle) + k * (Dot(k, v) * (1 - std::cos(angle)));
    };
}

Map Mirrored(AK_Vec normal, AK_Vec point = {})
{
    const AK_Vec n = normal * (1 / Length(normal));
    return [=](AK_Vec p) { return p - n * (2 * Dot(p - point, n)); };
}

class AK_VisObj3d_Copies : public VisibleTest {
protected:
    AK_VisObj3d_Copies() : box("box", nullptr)
    {
        const float low[3] = {1, -2, 3}, high[3] = {4, 5, 7};
        std::copy_n(low, 3, box.low);
        std::copy_n(high, 3, box.high);
    }

    /// The box holds the corners of all copies, each by its chain of maps, and no more.
    void ExpectBoxAround(const std::vector<std::vector<Map>>& copies, const char* why)
    {
        AK_Vec lo{1e30, 1e30, 1e30}, hi = -lo;
        for (const auto& chain : copies) {
            for (int corner = 0; corner < 8; ++corner) {
                AK_Vec p{corner & 1 ? box.high[0] : box.low[0], corner & 2 ? box.high[1] : box.low[1],
                         corner & 4 ? box.high[2] : box.low[2]};
                for (const Map& map : chain) p = map(p);
                lo = {std::min(lo.x, p.x), std::min(lo.y, p.y), std::min(lo.z, p.z)};
                hi = {std::max(hi.x, p.x), std::max(hi.y, p.y), std::max(hi.z, p.z)};
            }
        }
        float got[6];
        ASSERT_EQ(box.BoundingBox(got, got + 3), 1) << why;
        const double expected[6] = {lo.x, lo.y, lo.z, hi.x, hi.y, hi.z};
        for (int i = 0; i < 6; ++i) EXPECT_NEAR(got[i], expected[i], 1e-5 * (1 + std::fabs(expected[i]))) << why << i;
    }

    TestBox box;
};

TEST_F(AK_VisObj3d_Copies, BoxesHoldRotatedCopies)
{
    ExpectBoxAround({{}}, "the object itself");
    const struct {
        int n;
        const char *point, *direction;
        AK_Vec axis, at;
    } cases[] = {
        {1, "0 0 0",     "0 0 1",  {0, 0, 1},  {}          },
        {2, "0 0 0",     "0 0 1",  {0, 0, 1},  {}          },
        {3, "10 -4 2",   "0 0 -7", {0, 0, -1}, {10, -4, 2} },
        {7, "1 2 3",     "1 1 1",  {1, 1, 1},  {1, 2, 3}   },
        {5, "100 50 20", "0 3 -4", {0, 3, -4}, {100, 50, 20}}
    };
    for (const auto& c : cases) {
        ASSERT_EQ(Set(box, "RotatedCopiesAxisPoint", c.point) + Set(box, "RotatedCopiesAxisDir", c.direction), "");
        ASSERT_EQ(Set(box, "NumberOfRotatedCopies", AK_String(c.n, "%d")), "");
        std::vector<std::vector<Map>> copies;
        for (int i = 0; i < c.n; ++i) copies.push_back({Turned(i * 360.0 / c.n, c.axis, c.at)});
        ExpectBoxAround(copies, c.direction);
    }
}

TEST_F(AK_VisObj3d_Copies, BoxesHoldClonesAndThoseOnly)
{
    const AK_Vec up{0, 0, 1}, diagonal{1, 2, -1}, point{3, -5, 8};
    const struct {
        const char* text;
        std::vector<std::vector<Map>> clones;
    } cases[] = {
        {"trans 100 0 0", {{Shifted({100, 0, 0})}}},
        {"trans 10 0 0\nrot 90 0 0 1", {{Shifted({10, 0, 0}), Turned(90, up)}}},
        {"rot 90 0 0 1\ntrans 10 0 0", {{Turned(90, up), Shifted({10, 0, 0})}}},
        {"rot -33 3 -5 8 1 2 -1\nscale 1 -2 0.5", {{Turned(-33, diagonal, point), Scaled({1, -2, 0.5})}}},
        {"mirror 3 -5 8 1 2 -1\nmirror 0 0 1", {{Mirrored(diagonal, point), Mirrored(up)}}},
        {"cp 3\n2:rot 90 0 0 1\n3:trans 0 0 50", {{}, {Turned(90, up)}, {Shifted({0, 0, 50})}}},
        {"cp 2\n2:trans 20 0 0\nrot 45 1 2 -1\ncp 2\n1:mirror 0 0 1",
         {{Turned(45, diagonal), Mirrored(up)}, {Shifted({20, 0, 0}), Turned(45, diagonal), Mirrored(up)},
          {Turned(45, diagonal)}, {Shifted({20, 0, 0}), Turned(45, diagonal)}}},
        {"5:trans 1e6 0 0", {{}}},
    };
    for (const auto& c : cases) {
        ASSERT_EQ(Set(box, "CloneTrafos", c.text), "");
        ExpectBoxAround(c.clones, c.text);
    }
    ASSERT_EQ(Set(box, "CloneTrafos", "cp 0"), "");
    EXPECT_EQ(Get(box, "BoundingBox"), "") << "nothing is shown";
    Set(box, "NumberOfRotatedCopies", "2");
    EXPECT_EQ(Get(box, "BoundingBox"), "-4 -5 3 4 5 7") << "rotated copies come before clones";
    EXPECT_NE(Set(box, "CloneTrafos", "rot 90 0 0 0"), "");
    EXPECT_EQ(Get(box, "CloneTrafos"), "cp 0");
}

TEST_F(AK_VisObj3d_Copies, BoxesLeaveTheMatricesAsTheyWere)
{
    const Canvas canvas(8, 8);
    soglTranslatef(1, 2, 3);
    soglPushMatrix();
    soglMatrixMode(GL_PROJECTION);
    soglScalef(2, 2, 2);
    soglMatrixMode(GL_MODELVIEW);
    std::string deepest = "cp 1";
    for (int i = 1; i < 24; ++i) deepest += "\ncp 1";
    ASSERT_EQ(Set(box, "CloneTrafos", deepest.c_str()), "");
    ExpectBoxAround({{}}, "amid a view");
    float modelview[16], projection[16];
    soglGetFloatv(GL_MODELVIEW_MATRIX, modelview);
    soglGetFloatv(GL_PROJECTION_MATRIX, projection);
    EXPECT_EQ(modelview[13], 2);
    EXPECT_EQ(projection[5], 2);
    EXPECT_EQ(std::pair(soglMatIndex[0], soglMatIndex[1]), std::pair(0, 1));
    EXPECT_EQ(soglMatMode, 1);
}

// ----------------------------------------------------------------------------------------------------------------
// Drawing
// ----------------------------------------------------------------------------------------------------------------

/// Notes the matrix and the front face with which it is drawn.
class Probe : public TestBox {
public:
    using TestBox::TestBox;
    std::vector<AK_Vec> origins, xAxes;   // where (0, 0, 0) and the direction (1, 0, 0) come to
    std::string faces;
    bool updatesItself = false;

protected:
    void Draw() override
    {
        float m[16];
        aglGetFloatv(GL_MODELVIEW_MATRIX, m);
        origins.push_back({m[12], m[13], m[14]});
        xAxes.push_back({m[0], m[1], m[2]});
        faces += soglReverseNormals ? '/' : '*';
        if (updatesItself) Update();
    }
};

class AK_VisObj3d_Update : public VisibleTest {
protected:
    AK_VisObj3d_Update() : canvas(8, 8), probe("probe", nullptr)
    {
        AK_SetSoglContext();
        for (const unsigned stack : {GL_PROJECTION, GL_MODELVIEW}) {   // the host's view, and a level for the objects
            aglMatrixMode(stack);
            aglTranslatef(0, 0, stack == GL_MODELVIEW ? 5 : 0);
            aglPushMatrix();
        }
    }

    static void ExpectNear(const std::vector<AK_Vec>& got, const std::vector<AK_Vec>& expected, const char* why)
    {
        ASSERT_EQ(got.size(), expected.size()) << why;
        for (size_t i = 0; i < got.size(); ++i) EXPECT_LT(Length(got[i] - expected[i]), 1e-5) << why << ", " << i;
    }

    Canvas canvas;
    const RestoredTable table;
    Probe probe;
};

TEST_F(AK_VisObj3d_Update, PutsTheLocalSystemOnTheView)
{
    Set(probe, "Position", "1 2 3");
    Set(probe, "LocalX", "0 5 0");
    Set(probe, "LocalY", "-1 1 0");   // made perpendicular: -x
    Set(probe, "Scale", "2");
    for (int i = 0; i < 2; ++i) probe.Update();   // from the host's view each time
    ExpectNear(probe.origins, {{4, -2, -1}, {4, -2, -1}}, "2 (-x y z) of the position, on z = 5");
    ExpectNear(probe.xAxes, {{0, 2, 0}, {0, 2, 0}}, "x comes to y");
}

TEST_F(AK_VisObj3d_Update, DrawsClonesAndThenAPoint)
{
    Set(probe, "Position", "-1 0 0");
    Set(probe, "CloneTrafos", "cp 3\n2:rot 90 0 0 1\n3:trans 0 0 1\nmirror 1 0 0");
    probe.Update();
    ExpectNear(probe.origins, {{-1, 0, 5}, {0, 1, 5}, {-1, 0, 6}, {0, 0, 5}}, "mirrored");
    EXPECT_EQ(probe.faces, "///*");
    EXPECT_LT(Length(probe.xAxes[3]), 1e-9) << "the object itself has shrunk to a point";
    Set(probe, "CloneTrafos", "mirror 1 0 0\nmirror 0 1 0\ncp 0");
    probe.Update();
    EXPECT_EQ(probe.faces, "///**");
    EXPECT_EQ(std::pair(soglMatIndex[0], soglMatIndex[1]), std::pair(1, 1));
}

TEST_F(AK_VisObj3d_Update, DoesNotBeginAnewWhileItDraws)
{
    probe.updatesItself = true;
    Set(probe, "CloneTrafos", "cp 2");
    probe.Update();
    EXPECT_EQ(probe.faces, "***");
}

}   // namespace
