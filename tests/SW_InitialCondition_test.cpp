// Release areas: files, mass, depth functions; and the containers of scenarios, which all work alike.

#include "SW_InitialCondition.h"

#include "SW_Simulation_Fixture.h"

#include <unistd.h>

namespace {

/// The areas of a project, "ReleaseAreas", beside the simulation's own.
class SW_InitialConditionTest : public SimulationTest {
protected:
    SW_InitialConditionTest()
    {
        areas = AddedTo(*project, new SW_InitialConditions("ReleaseAreas", nullptr));
        obstacles = AddedTo(*project, new SW_ResistanceAreas("ResistanceAreas", nullptr));
        AK_Object::SetUserAttributesDirectory(directory.Path());
        AK_System::CreateDir(directory / "release_depth");
        Messages();
    }
    ~SW_InitialConditionTest() override { AK_Object::SetUserAttributesDirectory(""); }

    AK_String File(const char* name, const std::string& bytes)
    {
        WriteFile(directory / name, bytes);
        return directory / name;
    }

    static std::string SetOn(AK_Object& object, const char* attr, const AK_String& value)
    {
        EXPECT_EQ(object.Set(attr, value), 1) << attr;
        return AK_Object::_execStatus.c_str();
    }

    static double NumberOf(const AK_Object& object, const char* attr) { return std::atof(object.Get(attr).c_str()); }

    /// Makes a formula file and an area that uses it.
    SW_InitialCondition& WithFormula(const std::string& code)
    {
        WriteFile(directory / "release_depth/mine.cint", code);
        areas->Create("area");
        SW_InitialCondition& area = *areas->Area(areas->NumComponents() - 1);
        EXPECT_EQ(SetOn(area, "RelDepFuncName", "mine"), "");
        return area;
    }

    SW_InitialConditions* areas = nullptr;
    SW_ResistanceAreas* obstacles = nullptr;
};

// "id: Depth Density points" of each area.
std::vector<std::string> Read(const SW_InitialConditions& areas)
{
    std::vector<std::string> found;
    for (int i = 0; i < areas.NumComponents(); ++i) {
        const SW_InitialCondition& area = *areas.Area(i);
        const auto text = [&](const char* attr) { return std::string(area.Get(attr).c_str()); };
        found.push_back(text("Id") + ": " + text("Depth") + " " + text("Density") + " " + text("NumVertices"));
    }
    return found;
}

}   // namespace

// ----------------------------------------------------------------------------------------------------------------
// Files
// ----------------------------------------------------------------------------------------------------------------

TEST_F(SW_InitialConditionTest, ReleaseFilesAreReadAsFarAsTheyAreSound)
{
    const std::string good = "1.5 200 1\n3\n0 0\n0 10\n10 10\n";
    const std::string file = (directory / "a.rel").c_str(), warning = "WARNING:" + file + ", line ";
    const std::string noHead = "no head of an area", incomplete = "the area is not complete and is left out";
    const struct {
        const char* why;
        std::string bytes;
        std::vector<std::string> areas;
        std::string message;
    } cases[] = {
        {"two areas, empty lines, no third number",
         "\n \n" + good + "\n\n0.75 125\n3 1 1 2 2\r\n3 1",
         {"a_0001: 1.5 200 3", "a_0002: 0.75 125 3"},
         ""},
        {"Windows line ends", "1.5 200 1\r\n1\r\n5 6\r\n", {"a_0001: 1.5 200 1"}, ""},
        {"a line of other content ends it", good + "end\n" + good, {"a_0001: 1.5 200 3"}, warning + "6: " + noHead},
        {"so does one number alone", good + "1.5\n3\n0 0 0 1 1 1\n", {"a_0001: 1.5 200 3"}, warning + "6: " + noHead},
        {"and what is no finite number", good + "inf 200\n1\n0 0\n", {"a_0001: 1.5 200 3"}, warning + "6: " + noHead},
        {"an area without points", "1 1\n0\n" + good, {"a_0002: 1.5 200 3"}, ""},
        {"negative amounts", "-1 -200\n1\n0 0\n", {"a_0001: 0 0 1"}, ""},
        {"cut within the points",
         good + good.substr(0, good.size() - 6),
         {"a_0001: 1.5 200 3"},
         warning + "9: " + incomplete},
        {"a count that promises too much", "1 1\n2000000000\n0 0\n", {}, warning + "3: " + incomplete},
        {"a negative count", "1 1\n-3\n0 0\n", {}, warning + "2: " + incomplete},
        {"a coordinate that is none", "1 1\n1\n0 1e300\n", {}, warning + "3: " + incomplete},
        {"nothing", "", {}, "WARNING:no area found in '"},
        {"bytes", std::string("\0\xff\x80 1\n", 6), {}, "WARNING:no area found in '"},
        {"a byte-order mark",
         "\xEF\xBB\xBF" + good,
         {"a_0001: 1.5 200 3"},
         warning + "1: a byte-order mark is passed over"},
    };
    for (const auto& c : cases) {
        areas->DeleteAll();
        Messages();
        EXPECT_EQ(SetOn(*areas, "Import", File("a.rel", c.bytes)), "") << c.why;
        EXPECT_EQ(Read(*areas), c.areas) << c.why;
        EXPECT_TRUE(c.message.empty() || Said(c.message)) << c.why;
    }
    EXPECT_EQ(SetOn(*areas, "LoadRelFile", directory / "none.rel"), "");
    EXPECT_EQ(Messages(),
              std::vector<std::string>{std::string("cannot open rel file ") + (directory / "none.rel").c_str()});
}

TEST_F(SW_InitialConditionTest, ResistanceFilesGiveTheObstacles)
{
    const std::string ring = "\n3\n0 0\n0 10\n10 10\n";
    const struct {
        const char* why;
        const char* header;
        const char* obstacles;   // Height Width Spacing coefficient, then the same of the powder part without height
    } cases[] = {
        {"four numbers", "20 0.4 1.2 0.04", "20 0.4 5 1.2 / 1 1 0"},
        {"a flag that is set", "20 0.4 1.2 0.04 1 7", "20 0.4 5 1.2 / 1 1 0"},
        {"powder only", "20 0.4 1.2 0.04 0 7", "20 0.4 5 0 / 0.4 5 1.2"},
        {"powder only, no sixth number", "20 0.4 1.2 0.04 0", "20 0.4 5 0 / 0.4 5 1.2"},
        {"three numbers", "20 0.4 1.2", ""},
        {"no obstacles", "20 0.4 1.2 0 1", ""},
        {"fewer than none", "20 0.4 1.2 -0.04 1", ""},
    };
    for (const auto& c : cases) {
        obstacles->DeleteAll();
        EXPECT_EQ(SetOn(*obstacles, "Import", File("forest.res", c.header + ring)), "") << c.why;
        std::string found;
        if (obstacles->NumComponents() > 0) {
            const auto text = [&](const char* attr) { return std::string(obstacles->Area(0)->Get(attr).c_str()); };
            found = text("Height") + " " + text("Width") + " " + text("Spacing") + " " + text("ResistanceCoefficient") +
                    " / " + text("PsaWidth") + " " + text("PsaSpacing") + " " + text("PsaResistanceCoefficient");
        }
        EXPECT_EQ(found, c.obstacles) << c.why;
    }
    obstacles->Create("area");
    EXPECT_EQ(SetOn(*obstacles->Area(0), "Spacing", "0"), "'0' is not above 0") << "what brakes is divided by it";
    EXPECT_EQ(SetOn(*obstacles->Area(0), "Width", "0"), "");
    EXPECT_EQ(SetOn(*obstacles->Area(0), "ResistanceCoefficient", "-1"), "'-1' is negative");
    obstacles->DeleteAll();
    SetOn(*obstacles, "LoadResFile", File("forest.res", "2 3 5 0.04\n2\n3 4\n0 7\n"));
    EXPECT_DOUBLE_EQ(obstacles->Area(0)->CheckSum(), 2 * 3 * 5 * 5 * (5 + 7));   // the points are 5 and 7 m away
}

TEST_F(SW_InitialConditionTest, ExtendedDataOfDrawingsGiveTheValues)
{
    OnMesh(20, 20, 10, Incline(30));
    const char* drawing = "  2\nENTITIES\n  0\nLWPOLYLINE\n{ACAD_XDICTIONARY\n360\n3A\n102\n  8\nslab\n 90\n3\n"
                          " 10\n10\n 20\n10\n 10\n10\n 20\n90\n 10\n90\n 20\n90\n  0\nENDSEC\n"
                          "  0\nDICTIONARY\n  5\n3A\n  3\nESRI_Attributes\n360\n3B\n"
                          "  0\nDICTIONARY\n  5\n3B\n  3\nNAME\n360\n4A\n  3\nD0\n360\n4B\n  3\nAH\n360\n4C\n"
                          "  3\nRHO\n360\n4D\n  3\nTemp\n360\n4E\n";
    const auto record = [](const char* handle, const std::string& value) {
        return std::string("  0\nXRECORD\n  5\n") + handle + "\n100\n" + value + "\n";
    };
    const struct {
        const char* why;
        const char *d0, *ah, *rho, *temp;
        double depth;
        const char *density, *enthalpy;
    } cases[] = {
        {"all", "1.25", "9", "180", "-4", 1.25, "180", "-8200"},
        {"none", "None", "None", "None", "None", 1, "125", "-20500"},
        {"the crown measured plumb: times cos 30", "None", "2", "None", "None", 2 * std::sqrt(0.75), "125", "-20500"},
        {"no numbers, no snow above melting", "deep", "nan", "inf", "5", 1, "125", "0"},
    };
    for (const auto& c : cases) {
        sim->ReleaseAreas().DeleteAll();
        const std::string bytes = drawing + record("4A", "upper slab") + record("4B", c.d0) + record("4C", c.ah) +
                                  record("4D", c.rho) + record("4E", c.temp) + "  0\nEOF\n";
        EXPECT_EQ(SetOn(sim->ReleaseAreas(), "Import", File("gis.dxf", bytes)), "") << c.why;
        ASSERT_EQ(sim->ReleaseAreas().NumComponents(), 1) << c.why;
        const SW_InitialCondition& area = *sim->ReleaseAreas().Area(0);
        EXPECT_EQ(area.Id(), "upper_slab") << c.why;
        EXPECT_NEAR(NumberOf(area, "Depth"), c.depth, 1e-12) << c.why;
        EXPECT_EQ(area.Get("Density"), c.density) << c.why;
        EXPECT_EQ(area.Get("Enthalpy"), c.enthalpy) << c.why;
        EXPECT_NEAR(area.Mass(), 3200 / std::sqrt(0.75) * c.depth * area.Density(), 1e-6 * area.Mass()) << c.why;
    }
    EXPECT_EQ(AK_Polyline::_importXDICT, 0) << "other imports go on as before";
    EXPECT_EQ(SetOn(*areas, "Import", File("plain.dxf", "LWPOLYLINE\n  8\nlayer\n 90\n1\n 10\n1\n 20\n2\n")), "");
    EXPECT_EQ(SetOn(*areas, "Import", File("notes.nxyz", "d0=0.5\nrho=300\nname=note\n1\n1 2 3\n")), "");
    EXPECT_EQ(Read(*areas), (std::vector<std::string>{"plain_layer: 1 125 1", "note: 0.5 300 1"}));
}

// ----------------------------------------------------------------------------------------------------------------
// Mass
// ----------------------------------------------------------------------------------------------------------------

TEST_F(SW_InitialConditionTest, MassCountsTheAreaOnTheSlopeWhicheverWayTheRingRuns)
{
    OnMesh(20, 20, 10, Incline(30));
    const double area = 80 * 50 / std::sqrt(0.75);   // m2
    for (const char* ring :
         {"20 20%AK_SEP%20 70%AK_SEP%100 70%AK_SEP%100 20", "20 20%AK_SEP%100 20%AK_SEP%100 70%AK_SEP%20 70%AK_SEP%"}) {
        sim->ReleaseAreas().Create("");
        SW_InitialCondition& slab = *sim->ReleaseAreas().Area(sim->ReleaseAreas().NumComponents() - 1);
        EXPECT_EQ(SetOn(slab, "Polygon", ring), "");
        EXPECT_NEAR(slab.Points()[2].z, 1000 - 100 * std::tan(M_PI / 6), 1e-9) << "it lies on the terrain";
        EXPECT_NEAR(slab.Mass(), area * 1.0 * 125, 1e-6);
        EXPECT_NEAR(slab.MeanInclination(), 30, 1e-9);
        SetOn(slab, "Depth", "1.5");
        SetOn(slab, "Density", "200");
        EXPECT_NEAR(slab.Mass(), area * 1.5 * 200, 1e-6);
        EXPECT_EQ(slab.Get("Annotations"), AK_String("name=") + slab.Id() + ";d0=1.5;rho=200;");
    }
    SW_InitialCondition& slab = *sim->ReleaseAreas().Area(0);
    const AK_String points = slab.Get("Polygon");
    EXPECT_EQ(SetOn(slab, "Depth", "-1"), "'-1' is negative");
    EXPECT_NE(SetOn(slab, "Density", "nan"), "");
    EXPECT_EQ(SetOn(slab, "Polygon", "1 2%AK_SEP%3"), "'3' is no point \"x y\" or \"x y z\"");
    EXPECT_EQ(slab.Get("Polygon"), points);
    EXPECT_NEAR(slab.Mass(), area * 1.5 * 200, 1e-6);
}

TEST_F(SW_InitialConditionTest, AreasBesideARasterComeAlong)
{
    // Two slopes of the Serles: sides of 120 m; area on the slope and mean slope angle by Horn's formula from the same
    // raster, to three digits.
    const char* asc = KORVO_SOURCE_DIR "/examples/serles/serles_10m.asc";
    ASSERT_EQ(symlink(asc, (directory / "serles.asc").c_str()), 0);
    File("serles.rel", "1.2 200 1\n4\n79481 220927\n79453 220811\n79569 220783\n79597 220899\n"
                       "0.8 150 1\n4\n79444 219732\n79508 219834\n79406 219898\n79342 219796\n");
    File("serles.res", "20 0.4 1 0.04 1 0\n3\n80000 220000\n80000 220100\n80100 220100\n");
    EXPECT_EQ(SetOn(*meshes, "Import", directory / "serles.asc"), "");
    EXPECT_EQ(Read(*areas), (std::vector<std::string>{"serles_0001: 1.2 200 4", "serles_0002: 0.8 150 4"}));
    EXPECT_EQ(obstacles->NumComponents(), 1);

    sim->Set("Mesh", "serles");
    const struct {
        const char* id;
        double plan, area;    // m2
        double inclination;   // degrees
        double massPerArea;   // kg/m2
    } cases[] = {{"serles_0001", 14240, 17700, 36.6, 240}, {"serles_0002", 14500, 18200, 37.2, 120}};
    for (const auto& c : cases) {
        const auto* inProject = static_cast<const SW_InitialCondition*>(areas->Component(c.id));
        EXPECT_NEAR(inProject->Mass(), c.plan * c.massPerArea, 0.001 * inProject->Mass()) << "level ground as yet";
        EXPECT_EQ(SetOn(sim->ReleaseAreas(), "Clone", AK_String("../../../ReleaseAreas/") + c.id), "");
        const auto* slab =
            static_cast<const SW_InitialCondition*>(sim->ReleaseAreas().Component(AK_String(c.id) + "_cloned"));
        ASSERT_TRUE(slab);
        EXPECT_EQ(slab->BaseMesh(), sim->Mesh());
        EXPECT_NEAR(slab->Mass(), c.area * c.massPerArea, 0.02 * slab->Mass()) << "Horn's window smooths";
        EXPECT_NEAR(slab->MeanInclination(), c.inclination, 1.2) << "the same";
    }
}

// ----------------------------------------------------------------------------------------------------------------
// Depth functions
// ----------------------------------------------------------------------------------------------------------------

TEST_F(SW_InitialConditionTest, FormulasGiveTheDepthOrSayWhyNot)
{
    const AK_Vec p{10, 20, 3000}, n{0, 0.6, 0.8};
    const std::string file = (directory / "release_depth/mine.cint").c_str();
    const std::string missing = "ERROR: formula mine does not contain function 'depth'";
    const struct {
        const char* why;
        const char* code;
        double depth;   // 1, the constant, for what cannot be used
        std::string message;
    } cases[] = {
        {"point and normal", "double depth(double p[], double n[]) { return p[2]/1000 + n[1]; }", 3.6, ""},
        {"point alone", "double depth(double p[]) { return p[0] + p[1]; }", 30, ""},
        {"globals and init", "double a = 2; void init() { a = a*3; } double depth(double p[]) { return a; }", 6, ""},
        {"negative", "double depth(double p[]) { return -1; }", 0, ""},
        {"no number", "double depth(double p[]) { return sqrt(-1); }", 0, ""},
        {"it may change what it got", "double depth(double p[]) { p[0] = 7; return p[0]; }", 7, ""},
        {"no number of float type", "float depth(double p[]) { return 2; }", 1, missing},
        {"too many formals", "double depth(double p[], double n[], double x) { return 2; }", 1, missing},
        {"other formals", "double depth(double p) { return 2; }", 1, missing},
        {"none", "double deepness(double p[]) { return 2; }", 1, missing},
        {"errors", "double depth(double p[]) { return 2 }", 1, "ERROR: syntax errors in " + file},
    };
    for (const auto& c : cases) {
        Messages();
        SW_InitialCondition& area = WithFormula(c.code);
        EXPECT_DOUBLE_EQ(area.Depth(p, n), c.depth) << c.why;
        EXPECT_TRUE(c.message.empty() || Said(c.message)) << c.why;
        EXPECT_EQ(area.Get("DepthVis"), "r");
        SetOn(area, "RelDepFuncName", "");
        EXPECT_EQ(area.Depth(p, n), 1) << c.why;
        EXPECT_EQ(area.Get("RelDepFuncName"), "const");
        EXPECT_EQ(area.Get("DepthVis"), "w");
    }
    SetOn(*areas->Area(0), "RelDepFuncName", "nowhere");
    EXPECT_TRUE(Said("ERROR: could not open formula file ")) << "with the path behind it";
}

TEST_F(SW_InitialConditionTest, FormulasThatTouchTheirOwnAreaDoNoHarm)
{
    const AK_Vec p{0, 0, 0}, n{0, 0, 1};
    SW_InitialCondition& changing =
        WithFormula("double depth(double p[]) { set(\"\", \"RelDepFuncName\", \"const\"); return 2; }");
    EXPECT_EQ(changing.Depth(p, n), 2);
    EXPECT_EQ(changing.Depth(p, n), 1) << "constant now";
    SW_InitialCondition& deleting =
        WithFormula("double depth(double p[]) { set(\"..\", \"DeleteAll\", \"\"); return 2; }");
    EXPECT_EQ(deleting.Depth(p, n), 2);
    EXPECT_EQ(areas->NumComponents(), 0);
}

TEST_F(SW_InitialConditionTest, TheDepthShownIsTheMeanOverTheCellsInside)
{
    OnMesh(20, 20, 10, Incline(30));
    WriteFile(directory / "release_depth/mine.cint", "double a = 0;\n"
                                                     "double depth(double p[]) { return a + p[0]/100; }\n"
                                                     "void getpar(char text[]) { sprintf(text, \"a=%g\", a); }\n"
                                                     "void setpar(char text[]) { sscanf(text, \"a=%lf\", a); }\n");
    SW_InitialCondition& area = Release({20, 20}, {60, 60}, 5);
    SetOn(area, "RelDepFuncName", "mine");
    EXPECT_NEAR(NumberOf(area, "Depth"), 0.4, 1e-12);   // centres at 25, 35, 45, 55
    EXPECT_NEAR(area.Mass(), 1600 / std::sqrt(0.75) * 0.4 * 200, 1e-6);
    EXPECT_EQ(area.Get("RelDepFuncParVis"), "w");
    EXPECT_EQ(SetOn(area, "RelDepFuncPar", "a=2"), "");
    EXPECT_EQ(area.Get("RelDepFuncPar"), "a=2");
    EXPECT_NEAR(NumberOf(area, "Depth"), 2.4, 1e-12);

    // All of it comes back from disc, and with a copy.
    sim->ReleaseAreas().SaveProjectAs(directory / "saved");
    EXPECT_EQ(AK_Object::_execStatus, "");
    sim->ReleaseAreas().UnloadComponent("release");
    EXPECT_EQ(SetOn(sim->ReleaseAreas(), "LoadComponent", "release"), "");
    EXPECT_EQ(SetOn(sim->ReleaseAreas(), "Clone", "release"), "");
    ASSERT_EQ(sim->ReleaseAreas().NumComponents(), 2);
    for (int i = 0; i < 2; ++i) {
        const SW_InitialCondition& again = *sim->ReleaseAreas().Area(i);
        EXPECT_EQ(again.Get("RelDepFuncPar"), "a=2") << again.Id();
        EXPECT_NEAR(again.Mass(), 1600 / std::sqrt(0.75) * 2.4 * 200, 1e-6) << again.Id();
    }
    EXPECT_EQ(sim->ReleaseAreas().Area(1)->Id(), "release_cloned");
}

TEST_F(SW_InitialConditionTest, ReleaseMeshesGiveTheDepth)
{
    OnMesh(20, 20, 10, Incline(30));
    auto depths = CartesianMesh(4, 4, 10, [](double x, double) { return x / 20 - 0.5; }, {20, 20});
    depths->Set("Id", "snow");
    AddedTo(*releaseMeshes, depths.release());
    AddedTo(*releaseMeshes, new SW_InitialCondition("area", nullptr));
    SW_InitialCondition& area = Release({0, 0}, {100, 100}, 5);
    const std::string choices = area.Get("RelDepFuncNameOpts").c_str();
    EXPECT_EQ(choices.rfind("const%AK_SEP%from_ReleaseDHM_snow%AK_SEP%", 0), 0u) << choices;
    EXPECT_NE(choices.find("%AK_SEP%Salm_Burkard_Gubler_1990%AK_SEP%"), std::string::npos) << choices;

    SetOn(area, "RelDepFuncName", "from_ReleaseDHM_none");
    EXPECT_TRUE(Said("WARNING:cannot find ReleaseDHM 'none' for release area release"));
    SetOn(area, "RelDepFuncName", "from_ReleaseDHM_area");
    EXPECT_TRUE(Said("WARNING:object 'area' is not a DHM "));
    EXPECT_EQ(area.Depth({30, 30, 900}, {0, 0, 1}), 5);

    SetOn(area, "RelDepFuncName", "from_ReleaseDHM_snow");
    const struct {
        const char* why;
        AK_Vec p;
        double depth;
    } cases[] = {{"inside", {35, 30, 900}, 1.25},
                 {"again", {55, 25, 900}, 2.25},
                 {"outside: no snow", {90, 30, 900}, 0},
                 {"inside after that", {30, 50, 900}, 1},
                 {"outside at the left", {5, 30, 900}, 0}};
    for (const auto& c : cases) EXPECT_NEAR(area.Depth(c.p, {0, 0, 1}), c.depth, 1e-12) << c.why;
    SetOn(area, "UpdateMass", "");
    // Centres at 15 to 55: a regular grid counts points less than a cell beyond its lower edges as its own.
    EXPECT_NEAR(NumberOf(area, "Depth"), (0.25 + 0.75 + 1.25 + 1.75 + 2.25) * 5 / 100, 1e-12);
}

TEST_F(SW_InitialConditionTest, TheSwissProcedureGrowsWithAltitudeAndThinsWithSlope)
{
    areas->Create("slab");
    SW_InitialCondition& slab = *areas->Area(0);
    SetOn(slab, "RelDepFuncName", "Salm_Burkard_Gubler_1990");
    EXPECT_EQ(SetOn(slab, "RelDepFuncPar", "dhs3=1.5 altitude=2000 gradient=0.05 drift=0.3"), "");
    const struct {
        double altitude, slope;   // m, degrees
        double depth;             // m: 0.291/(sin - 0.202 cos) by a pocket calculator, times cos 28 degrees
    } cases[] = {{2000, 28, 1.8 * 0.8829},          {2000, 20, 1.8 * 0.8829},
                 {2000, 0, 1.8 * 0.8829},           {2000, 35, 1.8 * 0.8829 * 0.7131},
                 {2000, 45, 1.8 * 0.8829 * 0.5157}, {2600, 35, 2.1 * 0.8829 * 0.7131},
                 {1500, 35, 1.55 * 0.8829 * 0.7131}};
    for (const auto& c : cases) {
        const double psi = c.slope * M_PI / 180;
        EXPECT_NEAR(slab.Depth({0, 0, c.altitude}, {0, -std::sin(psi), std::cos(psi)}), c.depth, 1e-3)
            << c.altitude << " m, " << c.slope << " degrees";
    }
    SetOn(slab, "RelDepFuncPar", "dhs3=deep");
    EXPECT_EQ(slab.Get("RelDepFuncPar"), "dhs3=1.5 altitude=2000 gradient=0.05 drift=0.3");
}

// ----------------------------------------------------------------------------------------------------------------
// The way into a simulation
// ----------------------------------------------------------------------------------------------------------------

TEST_F(SW_InitialConditionTest, WhatComesIntoASimulationLiesOnItsMeshUnlessItHasOne)
{
    SW_Mesh* other = AddedTo(*meshes, CartesianMesh(20, 20, 10, Flat).release());
    other->Set("Id", "other");
    const AK_String ring = "20 20%AK_SEP%20 70%AK_SEP%100 70%AK_SEP%100 20";
    for (const char* id : {"own", "none"}) {
        areas->Create(id);
        SetOn(*areas->Component(id), "Polygon", ring);
    }
    SetOn(*areas->Component("own"), "ProjectOnto", "other");
    sim->ReleaseAreas().Create("before");
    SetOn(*sim->ReleaseAreas().Component("before"), "Polygon", ring);
    SetOn(sim->ReleaseAreas(), "Clone", "../../../ReleaseAreas/own");
    EXPECT_EQ(SetOn(sim->ReleaseAreas(), "Clone", "../../../ReleaseAreas"),
              "there is no ReleaseArea '../../../ReleaseAreas'");
    EXPECT_EQ(SetOn(sim->ReleaseAreas(), "Clone", "gone"), "there is no ReleaseArea 'gone'");

    OnMesh(20, 20, 10, Incline(30));
    SetOn(sim->ReleaseAreas(), "Clone", "../../../ReleaseAreas/none");
    SetOn(sim->ReleaseAreas(), "Import", File("read.nxyz", "3\n20 20 0\n20 70 0\n100 70 0\n"));
    SetOn(sim->ReleaseAreas(), "LoadRelFile", File("file.rel", "1 1\n3\n20 20\n20 70\n100 70\n"));
    const struct {
        const char* id;
        const SW_Mesh* mesh;
        double inclination;   // degrees
    } cases[] = {{"before", mesh, 30},
                 {"own_cloned", other, 0},
                 {"none_cloned", mesh, 30},
                 {"read_0001", mesh, 30},
                 {"file_0001", mesh, 30}};
    ASSERT_EQ(sim->ReleaseAreas().NumComponents(), 5);
    for (const auto& c : cases) {
        const auto* area = static_cast<const SW_InitialCondition*>(sim->ReleaseAreas().Component(c.id));
        ASSERT_TRUE(area) << c.id;
        EXPECT_EQ(area->BaseMesh(), c.mesh) << c.id;
        EXPECT_NEAR(area->MeanInclination(), c.inclination, 1e-6) << c.id;
        EXPECT_EQ(area->Get("Color"), "1 0 0") << c.id;
    }
    SetOn(*areas, "ProjectOnto", "terrain");
    EXPECT_NEAR(areas->Area(1)->Mass(), 4000 / std::sqrt(0.75) * 125, 1e-6) << "all are projected, and weighed anew";
}
