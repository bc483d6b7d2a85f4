// Walls: heights and slopes as texts, the foot on the terrain, crossings.

#include "SW_WallLine.h"

#include "SW_Simulation_Fixture.h"

namespace {

class SW_WallLineTest : public SimulationTest {
protected:
    SW_WallLine& Wall(const char* points, const char* heights, const char* slopes)
    {
        sim->WallLines().Create("");
        SW_WallLine& wall = *sim->WallLines().Wall(sim->WallLines().NumComponents() - 1);
        EXPECT_EQ(SetOn(wall, "Polyline", points), "");
        EXPECT_EQ(SetOn(wall, "Heights", heights), "");
        EXPECT_EQ(SetOn(wall, "Slopes", slopes), "");
        return wall;
    }

    static std::string SetOn(AK_Object& object, const char* attr, const char* value)
    {
        EXPECT_EQ(object.Set(attr, value), 1) << attr;
        return AK_Object::_execStatus.c_str();
    }
};

void ExpectNear(const AK_Vec& found, const AK_Vec& expected, const std::string& why)
{
    EXPECT_NEAR(found.x, expected.x, 1e-9) << why;
    EXPECT_NEAR(found.y, expected.y, 1e-9) << why;
    EXPECT_NEAR(found.z, expected.z, 1e-9) << why;
}

}   // namespace

TEST_F(SW_WallLineTest, HeightsAndSlopesAreListsThatVerticesTakeInTurn)
{
    OnMesh(10, 10, 10, Flat);
    SW_WallLine& wall = Wall("50 20%AK_SEP%50 50%AK_SEP%50 80", "", "");
    const struct {
        const char* attr;
        const char* value;
        const char* status;
        const char* heights;
        const char* slopes;
        const char *atVertex, *angle;   // of the second vertex, which is selected
    } steps[] = {
        {"SelectedVertex", "2", "", "", "", "", "0"},
        {"Heights", "1010 1020%AK_SEP%", "", "1010%AK_SEP%1020%AK_SEP%", "", "1020", "0"},
        {"Heights", "1010 x", "'1010 x' is no list of numbers", "1010%AK_SEP%1020%AK_SEP%", "", "1020", "0"},
        {"AbsHeightAtCurrentVertex", "1030", "", "1010%AK_SEP%1030%AK_SEP%1010%AK_SEP%", "", "1030", "0"},
        {"SetHeightOverGround", "5", "", "1005%AK_SEP%1005%AK_SEP%1005%AK_SEP%", "", "1005", "0"},
        {"SetHeightOverGround", "5 6", "", "1005%AK_SEP%1006%AK_SEP%1005%AK_SEP%", "", "1006", "0"},
        {"SetHeightOverGround", "", "no height over the ground is given", "1005%AK_SEP%1006%AK_SEP%1005%AK_SEP%", "",
         "1006", "0"},
        {"Slopes", "1%AK_SEP%", "", "1005%AK_SEP%1006%AK_SEP%1005%AK_SEP%", "1%AK_SEP%", "1006", "45"},
        {"SlopeAngleAtCurrentVertex", "90", "'90' is no angle below 90 degrees", "1005%AK_SEP%1006%AK_SEP%1005%AK_SEP%",
         "1%AK_SEP%", "1006", "45"},
        {"SlopeAngleAtCurrentVertex", "0", "", "1005%AK_SEP%1006%AK_SEP%1005%AK_SEP%", "1%AK_SEP%0%AK_SEP%1%AK_SEP%",
         "1006", "0"},
        {"Heights", "nan 1e300", "", "nan%AK_SEP%1e+300%AK_SEP%", "1%AK_SEP%0%AK_SEP%1%AK_SEP%", "1e+300", "0"},
        {"Heights", "", "", "", "1%AK_SEP%0%AK_SEP%1%AK_SEP%", "", "0"},
        {"AbsHeightAtCurrentVertex", "7", "", "7%AK_SEP%7%AK_SEP%7%AK_SEP%", "1%AK_SEP%0%AK_SEP%1%AK_SEP%", "7", "0"},
        {"UnselectVertex", "", "", "7%AK_SEP%7%AK_SEP%7%AK_SEP%", "1%AK_SEP%0%AK_SEP%1%AK_SEP%", "", ""},
        {"AbsHeightAtCurrentVertex", "7", "no vertex is selected", "7%AK_SEP%7%AK_SEP%7%AK_SEP%",
         "1%AK_SEP%0%AK_SEP%1%AK_SEP%", "", ""},
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(std::string(step.attr) + " " + step.value);
        Messages();
        EXPECT_EQ(SetOn(wall, step.attr, step.value), step.status);
        EXPECT_EQ(Said("WARNING:" + std::string(wall.IdAbs().c_str()) + ": heights or slopes of the wall are no"),
                  std::string(step.heights).rfind("nan", 0) == 0) << "what was saved is to load";
        EXPECT_EQ(wall.Get("Heights"), step.heights);
        EXPECT_EQ(wall.Get("Slopes"), step.slopes);
        EXPECT_EQ(wall.Get("AbsHeightAtCurrentVertex"), step.atVertex);
        EXPECT_EQ(wall.Get("SlopeAngleAtCurrentVertex"), step.angle);
    }
    SW_WallLine stray("stray", nullptr);
    EXPECT_EQ(SetOn(stray, "SetHeightOverGround", "5"), "the wall lies on no terrain: project it first");
}

TEST_F(SW_WallLineTest, AWallThatLeavesTheTerrainIsTold)
{
    OnMesh(10, 10, 10, Flat);
    const auto warning = [this](const SW_WallLine& wall) {
        return Said(("WARNING:" + wall.IdAbs() + ": 1 of 3 points of the wall lie outside the terrain ").c_str());
    };
    Messages();
    EXPECT_FALSE(warning(Wall("50 20%AK_SEP%50 50%AK_SEP%50 80", "1010", "")));
    EXPECT_TRUE(warning(Wall("50 20%AK_SEP%50 80%AK_SEP%50 180", "1010", "")));
}

TEST_F(SW_WallLineTest, SurveyedLinesBringTheirCrowns)
{
    OnMesh(10, 10, 10, Flat);
    WriteFile(directory / "walls.nxyz", "2\n50 20 1004\n50 80 1006\n2\n20 20 0\n20 80 0\n");
    EXPECT_EQ(SetOn(sim->WallLines(), "Import", (directory / "walls.nxyz").c_str()), "");
    ASSERT_EQ(sim->WallLines().NumComponents(), 2);
    EXPECT_EQ(sim->WallLines().Wall(0)->Get("Heights"), "1004%AK_SEP%1006%AK_SEP%");
    EXPECT_EQ(sim->WallLines().Wall(0)->Points()[0].z, 1000) << "the line itself lies on the terrain";
    EXPECT_EQ(sim->WallLines().Wall(1)->Get("Heights"), "");
}

TEST_F(SW_WallLineTest, TheFootIsWhereTheFaceMeetsTheTerrain)
{
    const struct {
        const char* why;
        Height terrain;
        const char *points, *heights, *slopes;
        std::vector<AK_Vec> foot;
    } cases[] = {
        {"left of a line to the north, 10 m high, slope 1",
         Flat,
         "50 20%AK_SEP%50 80",
         "1010",
         "1",
         {{40, 20, 1000}, {40, 80, 1000}}},
        {"left of a line to the south", Flat, "50 80%AK_SEP%50 20", "1010", "1", {{60, 80, 1000}, {60, 20, 1000}}},
        {"steep, with a crown that rises",
         Flat,
         "50 20%AK_SEP%50 80",
         "1010 1020",
         "5",
         {{48, 20, 1000}, {46, 80, 1000}}},
        // The terrain falls by 1 in 2 towards +x: left of the line it rises to meet the face, 10 = (1 + 1/2) * 20/3.
        {"against the slope",
         [](double x, double) { return 1000 - 0.5 * x; },
         "50 20%AK_SEP%50 80",
         "985",
         "1",
         {{50 - 20 / 3.0, 20, 975 + 10 / 3.0}, {50 - 20 / 3.0, 80, 975 + 10 / 3.0}}},
        {"along the slope: 10 = (1 - 1/2) * 20",
         [](double x, double) { return 1000 - 0.5 * x; },
         "50 80%AK_SEP%50 20",
         "985",
         "1",
         {{70, 80, 965}, {70, 20, 965}}},
        {"a corner takes the mean direction",
         Flat,
         "20 50%AK_SEP%50 50%AK_SEP%50 80",
         "1001",
         "1",
         {{20, 51, 1000}, {50 - std::sqrt(0.5), 50 + std::sqrt(0.5), 1000}, {49, 80, 1000}}},
        {"a level face never meets level ground",
         Flat,
         "50 20%AK_SEP%50 80",
         "1010",
         "",
         {{50, 20, 1000}, {50, 80, 1000}}},
        {"off the terrain", Flat, "50 20%AK_SEP%50 150 7", "1010", "1", {{40, 20, 1000}, {50, 150, 7}}},
        {"switched off", Flat, "50 20%AK_SEP%50 80", "0 1010", "1", {}},
        {"switched off below sea level too", Flat, "50 20%AK_SEP%50 80", "-1", "1", {}},
        {"without heights", Flat, "50 20%AK_SEP%50 80", "", "1", {}},
        {"without points", Flat, "", "1010", "1", {}},
    };
    for (const auto& c : cases) {
        OnMesh(10, 10, 10, c.terrain, "");
        const SW_WallLine& wall = Wall(c.points, c.heights, c.slopes);
        ASSERT_EQ(wall.FootLine()._x.Size(), int(c.foot.size())) << c.why;
        for (size_t i = 0; i < c.foot.size(); ++i) ExpectNear(wall.FootLine()._x[int(i)], c.foot[i], c.why);
        sim->Set("Mesh", "");
    }
}

TEST_F(SW_WallLineTest, CrossingsAreFoundOnTheFootLine)
{
    OnMesh(10, 10, 10, Flat);
    // The foot runs from (20, 51) over the corner below to (45, 80); the tangents are (1, 0), their mean, (0, 1).
    const AK_Vec2 atCorner{50 - 3 * std::sqrt(0.5), 50 + 3 * std::sqrt(0.5)};
    const AK_Vec2 half{(20 + atCorner.x) / 2, (51 + atCorner.y) / 2};
    const SW_WallLine& corner = Wall("20 50%AK_SEP%50 50%AK_SEP%50 80", "1001 1003 1005", "1");
    const SW_WallLine& straight = Wall("50 20%AK_SEP%50 80", "1010 1020", "10");
    const AK_Vec lopsided = Normalized(AK_Vec{0.5 * std::sqrt(0.5) + 1, 0.5 * std::sqrt(0.5), 0});
    const double x0 = 49, x1 = 48;   // of the straight wall's foot
    const struct {
        const char* why;
        const SW_WallLine& wall;
        AK_Vec a, b;
        bool crosses;
        AK_Vec foot, crown, tangent;
    } cases[] = {
        {"in the middle",
         straight,
         {30, 50, 0},
         {60, 50, 0},
         true,
         {(x0 + x1) / 2, 50, 1000},
         {50, 50, 1015},
         {0, 1, 0}},
        {"from the other side",
         straight,
         {60, 50, 0},
         {30, 50, 0},
         true,
         {(x0 + x1) / 2, 50, 1000},
         {50, 50, 1015},
         {0, 1, 0}},
        {"at its end", straight, {30, 20, 0}, {60, 20, 0}, true, {x0, 20, 1000}, {50, 20, 1010}, {0, 1, 0}},
        {"it ends on the line", straight, {30, 20, 0}, {x0, 20, 0}, true, {x0, 20, 1000}, {50, 20, 1010}, {0, 1, 0}},
        {"short of it", straight, {30, 50, 0}, {48, 50, 0}, false, {}, {}, {}},
        {"beside it", straight, {30, 81, 0}, {60, 81, 0}, false, {}, {}, {}},
        {"without length", straight, {x0, 20, 0}, {x0, 20, 0}, false, {}, {}, {}},
        {"only the second tangent carries a weight",
         corner,
         {half.x, 40, 0},
         {half.x, 60, 0},
         true,
         {half.x, half.y, 1000},
         {35, 50, 1002},
         lopsided},
    };
    for (const auto& c : cases) {
        AK_Vec foot, crown, tangent;
        ASSERT_EQ(c.wall.GetIntersection(c.a, c.b, foot, crown, tangent), c.crosses) << c.why;
        ExpectNear(foot, c.foot, c.why);
        ExpectNear(crown, c.crown, c.why);
        ExpectNear(tangent, c.tangent, c.why);
    }
    AK_Vec foot, crown, tangent;
    EXPECT_TRUE(corner.GetIntersection({40, 40, 0}, {50, 70, 0}, foot, crown, tangent)) << "both segments";
    EXPECT_LT(foot.y, 53) << "the first one counts";
    EXPECT_FALSE(Wall("50 20", "1010", "1").GetIntersection({30, 20, 0}, {60, 20, 0}, foot, crown, tangent));
}
