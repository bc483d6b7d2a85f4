// From the scenario to the start: what lies in the cells, how many particles it makes, the store on the ground, areas
// that wait for the flow.

#include "SW_Simulation_Fixture.h"

#include <map>

namespace {

constexpr double cellSize = 5;   // m

class SW_Initialize : public SimulationTest {
protected:
    // Mass of the particles by the cell in which their centre of the plan lies, kg.
    std::map<int, double> MassByCell()
    {
        std::map<int, double> mass;
        const SW_Particles& particles = sim->Particles();
        for (int i = 0; i < particles.NumParticles(); ++i) {
            const AK_Vec& x = particles.Position()._x[i];
            const int cell = mesh->CellContainingPoint({x.x, x.y}, -1);
            EXPECT_EQ(cell, particles.cell[i]);
            mass[cell] += double(particles.Mass()._values[i]);
        }
        return mass;
    }

    double MassAt(AK_Vec2 p) { return MassByCell()[mesh->CellContainingPoint(p, -1)]; }

    // A mesh of depths beside the terrain.
    void DepthMesh(const char* id, const Height& depth, int n = 20)
    {
        SW_Mesh* depths = AddedTo(*releaseMeshes, CartesianMesh(n, n, cellSize, depth).release());
        depths->Set("Id", id);
    }

    double StoreAt(AK_Vec2 p, const char* field = "EntrainmentMass")
    {
        return double(Part(field)._values[mesh->CellContainingPoint(p, -1)]);
    }
};

}   // namespace

TEST_F(SW_Initialize, EachMethodDerivesTheOtherThreeValues)
{
    OnMesh(20, 20, cellSize, Flat);
    Release({20, 20}, {40, 40}, 2, 300);   // 16 cells of 25 m2: 240 t, made of 300 kg/m3 in a flow of 200
    const double mass = 240000, cells = 16, depthMass = 25 * 200;
    const struct {
        const char* method;
        const char* input;
        const char* value;
        double massPerParticle;
    } cases[] = {
        {"direct", "MassPerParticle", "700", 700},
        {"particles per cell", "NumParticlesPerCell", "12", mass / cells / 12},
        {"number of particles", "NumParticles", "1000", mass / 1000},
        {"delta-depth per particle", "DeltaDepthPerParticle", "0.25", depthMass * 0.25},
        {"no such method", "MassPerParticle", "1300", 1300},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.method);
        Set({{"MassPerParticleDeterminationMethod", c.method}, {c.input, c.value}});
        Messages();
        ASSERT_TRUE(sim->Initialize());
        const int n = sim->Particles().NumParticles();
        EXPECT_NEAR(n, mass / c.massPerParticle, 16);   // each cell is rounded by less than one
        EXPECT_NEAR(sim->Particles().TotalMass(), mass, 1e-6 * mass);
        const std::string method = c.method, input = c.input;
        EXPECT_NEAR(Number("MassPerParticle"), method == "direct" ? c.massPerParticle : mass / n, 1e-6 * mass / n);
        const std::pair<const char*, double> derived[] = {{"NumParticlesPerCell", mass / c.massPerParticle / cells},
                                                          {"NumParticles", std::floor(mass / c.massPerParticle)},
                                                          {"DeltaDepthPerParticle", c.massPerParticle / depthMass}};
        for (const auto& [name, value] : derived) {
            EXPECT_NEAR(Number(name), input == name ? std::atof(c.value) : value, 1e-9 * value) << name;
        }
        if (method == "no such method") continue;
        for (const std::string name :
             {"MassPerParticle", "NumParticlesPerCell", "NumParticles", "DeltaDepthPerParticle"})
            EXPECT_EQ(Text((name + "Visibility").c_str()), name == input ? "w" : "r") << name;
    }
}

TEST_F(SW_Initialize, TellsWhatItDoesAndLeavesEmptyFields)
{
    OnMesh(20, 20, cellSize, Flat);
    Release({20, 20}, {40, 40}, 2);
    Set({{"MassPerParticleDeterminationMethod", "direct"}, {"MassPerParticle", "1000"}});
    Part("PeakFlowDepth")._values.Fill(mesh->NumVertices(), 9.0f);
    Part("DynamicPeakPressure")._values.Fill(mesh->NumVertices(), 9.0f);
    Messages();
    sim->Initialize();
    std::vector<std::string> told;
    for (const std::string& message : Messages())
        if (message.find("loading") == std::string::npos && message.find("user-specific") == std::string::npos)
            told.push_back(message);
    EXPECT_EQ(told, (std::vector<std::string>{
                        "initializing cell entrainment area weights...", "updating cell entrainment area weights done",
                        "computing release depths in cells...", "computing release depths in cells done",
                        "total mass:160000 kg in 16 cells", "estimated number of particles:160",
                        "estimated mass per particle:1000", "generating 160 particles...", "160 particles generated",
                        "total mass:160000 kg"}));
    EXPECT_EQ(Number("CurrentTime"), 0);
    EXPECT_EQ(Text("CurrentTimeStep"), "");
    for (const char* peak : {"DynamicPeakPressure", "PeakForcePerWidth"}) EXPECT_EQ(Part(peak).Get("Max"), "0") << peak;
    EXPECT_EQ(Part("FlowDepth")._values.Size(), mesh->NumVertices());
    EXPECT_EQ(Part<SW_VectorField>("Velocity")._values.Size(), mesh->NumVertices());
    // The middle of the area is laid down as it was released; the corners of its cells share it with those outside.
    const int inner = 6 * 21 + 6;
    EXPECT_NEAR(double(Part("FlowDepth")._values[inner]), 2, 1);
    EXPECT_EQ(Part("PeakFlowDepth")._values[inner], Part("FlowDepth")._values[inner]);
    EXPECT_EQ(Part("FrontArrivalTime")._values[inner], 1e30f);
    EXPECT_EQ(Part("FrontArrivalTime")._values[0], 0);
}

TEST_F(SW_Initialize, AreasAreMeasuredOnTheSlope)
{
    OnMesh(20, 20, cellSize, Incline(40));
    Release({20, 20}, {40, 40}, 1.5);
    const double mass = 400 / std::cos(40 * M_PI / 180) * 1.5 * 200;
    EXPECT_NEAR(Number("ReleaseMass"), mass, 1e-6 * mass);
    sim->Initialize();
    EXPECT_NEAR(Number("CurrentMass"), mass, 1e-6 * mass);
    double sum = 0;
    for (const auto& [cell, massOfCell] : MassByCell()) sum += massOfCell;
    EXPECT_NEAR(sum, mass, 1e-6 * mass);
}

TEST_F(SW_Initialize, TheLastOfOverlappingAreasCountsAndASecondaryOneBeforeAPrimaryOne)
{
    OnMesh(20, 20, cellSize, Flat);
    Set({{"MassPerParticleDeterminationMethod", "direct"}, {"MassPerParticle", "100"}});
    Snow(sim->ReleaseAreas(), "first", {20, 20}, {40, 40}, 1);
    Snow(sim->ReleaseAreas(), "second", {30, 20}, {50, 40}, 2);
    Snow(sim->SecondaryReleaseAreas(), "held", {40, 20}, {60, 40}, 3);
    Snow(sim->SecondaryReleaseAreas(), "held_too", {55, 20}, {70, 40}, 4).Set("Enthalpy", "-1000");
    sim->Initialize();
    const struct {
        double x, depth;
        int tag;
    } cases[] = {{22, 1, 0}, {32, 2, 0}, {42, 3, 1}, {52, 3, 1}, {57, 4, 2}, {67, 4, 2}};
    const SW_Particles& particles = sim->Particles();
    ASSERT_EQ(particles.tag.Size(), particles.NumParticles());
    for (const auto& c : cases) {
        EXPECT_NEAR(MassAt({c.x, 22}), 25 * 200 * c.depth, 0.01) << c.x;
        for (int i = 0; i < particles.NumParticles(); ++i) {
            if (particles.cell[i] != mesh->CellContainingPoint({c.x, 22}, -1)) continue;
            EXPECT_EQ(int(particles.tag[i]), c.tag) << c.x;
            const double thermal = double(particles.TotalEnthalpy()._values[i]) - 9.81 * 1000;
            EXPECT_NEAR(thermal, c.tag == 2 ? -1000 : -20500, 0.01) << c.x;
        }
    }
    EXPECT_EQ(MassAt({72, 22}), 0);
    EXPECT_TRUE(Said("24 cells in secondary release areas"));
}

TEST_F(SW_Initialize, AMeshOfDepthsFillsWhatNoAreaCovers)
{
    OnMesh(24, 20, cellSize, Flat);   // four columns wider than the depths
    DepthMesh("depths", [](double x, double) { return x < 50 ? -1 : 3; });
    Release({80, 20}, {90, 40}, 1);
    Set({{"MassPerParticleDeterminationMethod", "direct"}, {"MassPerParticle", "100"}, {"ReleaseDHMDensity", "100"}});
    for (const char* name : {"../../ReleaseDHMs/depths", "depths"}) {
        sim->Set("ReleaseDHM", name);
        sim->Initialize();
        EXPECT_TRUE(Said(std::string("using release depth from ") + name));
        EXPECT_EQ(MassAt({22, 22}), 0);
        EXPECT_NEAR(MassAt({62, 22}), 25 * 3 * 100, 0.01);
        EXPECT_NEAR(MassAt({82, 22}), 25 * 200, 0.01);
        EXPECT_EQ(MassAt({102, 22}), 0);
    }
    EXPECT_EQ(Text("ReleaseDHM_Options"), "none%AK_SEP%../../ReleaseDHMs/depths%AK_SEP%");
    EXPECT_TRUE(sim->HasRelease());
    // The total holds both, and the correction of the mass per particle leans on it.
    sim->Set("MassPerParticleDeterminationMethod", "number of particles");
    sim->Initialize();
    const double mass = Number("CurrentMass");
    EXPECT_NEAR(mass, 200 * 200 + 25 * 100 * 3 * (10 * 20 - 2 * 4) + 25 * 100 * 1 * 20, 0.02 * mass);
    sim->Set("ReleaseDHM", "nowhere");
    sim->Initialize();
    EXPECT_TRUE(Said("WARNING: using release depth from nowhere failed!"));
    EXPECT_NEAR(Number("CurrentMass"), 40000, 0.01);
}

TEST_F(SW_Initialize, WarnsIfTheAreasHoldMoreThanTheirCells)
{
    OnMesh(20, 20, cellSize, Flat);
    const struct {
        AK_Vec2 from, to;
        bool warns;
    } cases[] = {{{20, 20}, {40, 40}, false}, {{20, 20}, {41, 41}, true}, {{-20, 20}, {40, 40}, true}};
    for (const auto& c : cases) {
        sim->ReleaseAreas().DeleteAll();
        Release(c.from, c.to, 2);
        Messages();
        ASSERT_TRUE(sim->Initialize());
        EXPECT_EQ(Said("WARNING: simulation avalanche: the release areas hold "), c.warns) << c.to.x;
    }
    sim->ReleaseAreas().DeleteAll();
    Release({20, 20}, {40, 40}, 2);
    Snow(sim->ReleaseAreas(), "again", {20, 20}, {40, 40}, 1);
    Messages();
    ASSERT_TRUE(sim->Initialize());
    EXPECT_TRUE(
        Said("WARNING: simulation avalanche: the release areas hold 240000 kg, their cells of the mesh 80000 kg"));
}

TEST_F(SW_Initialize, WhatCannotStartSaysSo)
{
    EXPECT_TRUE(sim->Initialize());   // no mesh: nothing happens
    OnMesh(20, 20, cellSize, Flat);
    EXPECT_FALSE(sim->HasRelease());
    const struct {
        const char* attribute;
        const char* value;
        double depth;
        bool starts;
        const char* said;
    } cases[] = {
        {"DeltaDepthPerParticle", "1e-15", 2, false, "WARNING: simulation avalanche is not started: MassPerParticle"},
        {"DeltaDepthPerParticle", "nan", 2, false, "WARNING: simulation avalanche is not started: MassPerParticle"},
        {"DeltaDepthPerParticle", "0", 2, false, "WARNING: simulation avalanche is not started: MassPerParticle"},
        {"DeltaDepthPerParticle", "-1", 2, false, "WARNING: simulation avalanche is not started: MassPerParticle"},
        {"DeltaDepthPerParticle", "0.5", 0, false, "WARNING: simulation avalanche is not started: the release lies"},
        {"Density", "0", 2, false, "WARNING: simulation avalanche is not started: Density"},
        {"Density", "-200", 2, false, "WARNING: simulation avalanche is not started: Density"},
    };
    SW_InitialCondition& area = Release({20, 20}, {40, 40}, 2);
    EXPECT_TRUE(sim->HasRelease());
    for (const auto& c : cases) {
        Set({{"DeltaDepthPerParticle", "0.5"}, {"Density", "200"}, {c.attribute, c.value}});
        area.Set("Depth", AK_String(c.depth, "%g"));
        Messages();
        EXPECT_EQ(sim->Initialize(), c.starts) << c.attribute << " " << c.value;
        EXPECT_TRUE(Said(c.said)) << c.attribute << " " << c.value;
        EXPECT_EQ(sim->Particles().NumParticles(), 0) << c.attribute << " " << c.value;
    }
    Set({{"DeltaDepthPerParticle", "0.5"}, {"MassPerParticleDeterminationMethod", "number of particles"}});
    area.Set("Depth", "2");
    sim->Set("NumParticles", "0");
    EXPECT_FALSE(sim->Initialize());
}

TEST_F(SW_Initialize, TheStoreComesFromAreasThenFromAMeshThenFromTheAltitude)
{
    OnMesh(20, 20, cellSize, [](double x, double) { return 1000 - x; });
    DepthMesh("fresh", [](double, double y) { return y < 50 ? 0.4 : 0.0; });
    Set({{"GlobalEntrainmentAreaWeight", "30"},
         {"GlobalEntrainmentMinZ", "937.5"},
         {"EntrainmentDHM", "fresh"},
         {"EntrainmentDHMDensity", "80"},
         {"GlobalEntrainmentTemperature", "-4"},
         {"GlobalEntrainmentTemperatureGradient", "-0.01"},
         {"DeltaDepthPerParticle", "0.1"}});
    Snow(sim->EntrainmentAreas(), "below", {10, 10}, {30, 30}, 1, 100);
    Snow(sim->EntrainmentAreas(), "above", {20, 10}, {30, 30}, 2, 150).Set("Enthalpy", "-5000");
    Release({10, 70}, {20, 80}, 1);
    Messages();
    sim->Initialize();
    EXPECT_TRUE(Said("using entrainment depth from fresh"));
    const auto cold = [](double z) { return (-4 - 0.01 * (z - 937.5)) * 2050; };
    const struct {
        const char* why;
        AK_Vec2 p;
        double mass, enthalpy;
    } cases[] = {{"an area, although there is a mesh", {12, 12}, 1 * 100, -20500},
                 {"the last of two areas", {22, 12}, 2 * 150, -5000},
                 {"the mesh", {42, 12}, 0.4 * 80, cold(957.5)},
                 {"the mesh below the altitude", {92, 12}, 0.4 * 80, cold(907.5)},
                 {"a depth of 0 is none: the altitude", {42, 62}, 30, cold(957.5)},
                 {"on the altitude is not above it", {62, 62}, 0, 0},
                 {"below it", {92, 62}, 0, 0},
                 {"released", {12, 72}, 0, cold(987.5)}};
    for (const auto& c : cases) {
        EXPECT_NEAR(StoreAt(c.p), c.mass, 1e-4) << c.why;
        EXPECT_NEAR(StoreAt(c.p, "EntrainmentEnthalpy"), c.enthalpy, 0.01) << c.why;
    }
    double mass = 0;
    for (int cell = 0; cell < mesh->NumCells(); ++cell)
        mass += double(Part("EntrainmentMass")._values[cell]) * 25 * std::sqrt(2);
    EXPECT_NEAR(Number("EntrainableMass"), mass, 1e-9 * mass);
    EXPECT_NEAR(Number("EntrainmentMass"), (400 * 100 + 200 * 2 * 150) * std::sqrt(2), 1);
    Set({{"EntrainmentDHM", "gone"},
         {"GlobalEntrainmentTemperature", "10"},
         {"GlobalEntrainmentTemperatureGradient", "0"}});
    sim->InitializeCellEntrainmentMass();
    EXPECT_TRUE(Said("WARNING: using entrainment depth from gone failed!"));
    EXPECT_NEAR(StoreAt({42, 12}), 30, 0);
    EXPECT_NEAR(StoreAt({42, 12}, "EntrainmentEnthalpy"), 10 * 4187 / 333500.0, 1e-6)
        << "warm snow, in the model's own form";
}

TEST_F(SW_Initialize, HeldSnowIsReleasedWhereTheFlowHasArrived)
{
    OnMesh(20, 20, cellSize, Flat);
    Set({{"MassPerParticleDeterminationMethod", "direct"}, {"MassPerParticle", "1000"}});
    Release({20, 60}, {40, 80}, 1);
    Snow(sim->SecondaryReleaseAreas(), "left", {20, 20}, {40, 40}, 1);
    Snow(sim->SecondaryReleaseAreas(), "right", {60, 20}, {80, 40}, 1);
    sim->Initialize();
    SW_Particles& particles = sim->Particles();
    const auto held = [&](int area) {
        int n = 0;
        for (unsigned char tag : particles.tag) n += tag == area;
        return n;
    };
    const int left = held(1), right = held(2);
    EXPECT_GT(left, 0);
    EXPECT_GT(right, 0);
    sim->ReleaseSecondaryAreas();
    EXPECT_EQ(held(1) + held(2), left + right) << "nothing moves";
    Messages();
    const int cell = mesh->CellContainingPoint({67, 27}, -1);
    Part<SW_VectorField>("Velocity")._values[mesh->_lcv[cell][0]] = {0, 1e-3, 0};
    sim->ReleaseSecondaryAreas();
    EXPECT_TRUE(Said("releasing secondary release area right"));
    EXPECT_EQ(held(1), left);
    EXPECT_EQ(held(2), 0);
    // A tag that names no area any more sets its particles free without a name.
    sim->SecondaryReleaseAreas().Set("DeleteAll", "");
    Part<SW_VectorField>("Velocity")._values.Fill(mesh->NumVertices(), {1, 0, 0});
    Messages();
    sim->ReleaseSecondaryAreas();
    EXPECT_EQ(held(0), particles.NumParticles());
    EXPECT_FALSE(Said("releasing"));
}
