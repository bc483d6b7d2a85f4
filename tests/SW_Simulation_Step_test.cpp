// Whole time steps: what is kept, what is added, what does not depend on the number of workers.

#include "SW_Simulation_Fixture.h"

#include <map>

namespace {

class Steps : public SimulationTest {
protected:
    SW_Particles& P() { return sim->Particles(); }

    void Step(int n, double dt = 0.1)
    {
        for (int k = 0; k < n; ++k, t += dt) sim->ComputeTimeStep(t, dt, wallCells);
    }

    // Everything at once: a chute with entrainment, forest, a wall, a source line, a point source.
    void BuildBusyScene(const char* sphMode)
    {
        OnMesh(50, 40, 5, Chute);
        Set({{"SphMode", sphMode},
             {"MassPerParticleDeterminationMethod", "direct"},
             {"MassPerParticle", "500"},
             {"GlobalEntrainmentAreaWeight", "60"},
             {"EntrainmentShearResistance", "100"},
             {"FrictionType", "korvoAT"},
             {"InternalFrictionAngle", "35"},
             {"$sph_diffusion_coefficient", "0.1"},
             {"$cohesiveSurfaceTension", "3"},
             {"$source_strength", "3000"},
             {"$source_duration", "1"},
             {"$source_radius", "6"},
             {"$source_point", "60 60"},
             {"$source_velo", "12"},
             {"$source_velo_ang", "90"}});
        Release({10, 60}, {50, 140}, 1.5);
        sim->ResistanceAreas().Create("forest");
        sim->ResistanceAreas().Area(0)->SetLine(Rectangle(70, 80, 90, 130));
        sim->WallLines().Create("dam");
        SW_WallLine& wall = *sim->WallLines().Wall(0);
        AK_Polyline line;
        for (double y : {60.0, 140.0}) line._x.Append({70, y, 0});
        wall.SetLine(line);
        wall.ProjectOnto(*mesh);
        wall.Set("Slopes", "3");
        wall.Set("SetHeightOverGround", "2");
        sim->SourceLines().Create("inflow");
        SW_SourceLine& source = *sim->SourceLines().Line(0);
        source.Set("StartPoint", "30 150");
        source.Set("EndPoint", "30 170");
        source.Set("MassFlow", "2000");
        source.ProjectOnto(mesh);
        ASSERT_TRUE(sim->Initialize());
        sim->UpdateCellResistances();
        sim->UpdateWallLines(wallCells);
    }

    template <class T>
    static void Append(std::string& bytes, const AK_List<T>& list)
    {
        bytes.append(reinterpret_cast<const char*>(list.Data()), size_t(list.Size()) * sizeof(T));
    }

    std::string State()
    {
        std::string bytes;
        Append(bytes, P().cell);
        Append(bytes, P().Position()._x);
        Append(bytes, P().Velocity()._values);
        Append(bytes, P().Mass()._values);
        Append(bytes, P().TotalEnthalpy()._values);
        Append(bytes, Part("FlowDepth")._values);
        Append(bytes, Part("EntrainmentMass")._values);
        return bytes;
    }

    double t = 0;
    AK_List<unsigned char> wallCells{1};
};

}   // namespace

TEST_F(Steps, GiveTheSameBytesForAnyNumberOfWorkers)
{
    for (const char* sphMode : {"0", "2"}) {
        std::string expected;
        for (const char* workers : {"", "0", "1", "2", "3", "4", "9"}) {
            t = 0;
            sim->Set("$n_threads", workers);
            for (auto* lines :
                 {static_cast<AK_Object*>(&sim->ReleaseAreas()), static_cast<AK_Object*>(&sim->WallLines()),
                  static_cast<AK_Object*>(&sim->ResistanceAreas()), static_cast<AK_Object*>(&sim->SourceLines())})
                while (lines->NumComponents() > 0) lines->FreeComponent(0);
            BuildBusyScene(sphMode);
            Step(25);
            const std::string state = State();
            if (expected.empty()) expected = state;
            EXPECT_GT(P().NumParticles(), 1000);
            EXPECT_TRUE(state == expected) << sphMode << ", workers: " << workers;
        }
    }
}

TEST_F(Steps, LoseNoMass)
{
    for (const char* sphMode : {"0", "2"}) {
        OnMesh(50, 40, 5, Chute);
        Set({{"SphMode", sphMode},
             {"MassPerParticleDeterminationMethod", "direct"},
             {"MassPerParticle", "500"},
             {"GlobalEntrainmentAreaWeight", "60"},
             {"$source_strength", "3000"},
             {"$source_duration", "100"},
             {"$source_point", "60 60"}});
        while (sim->ReleaseAreas().NumComponents() > 0) sim->ReleaseAreas().FreeComponent(0);
        Release({10, 60}, {50, 140}, 1.5);
        ASSERT_TRUE(sim->Initialize());
        t = 0;
        Messages();
        const double start = P().TotalMass() + sim->MassOffMesh();
        const double store = sim->EntrainableMass();
        double entrained = 0, flowedIn = 0, told = 0;
        for (int k = 0; k < 60; ++k) {
            Step(1);
            for (const std::string& text : Messages()) {
                double value = 0, rate = 0;
                if (std::sscanf(text.c_str(), "\tentrained DFA mass: %lf", &value) == 1) entrained += value;
                if (std::sscanf(text.c_str(), "\ttotal DFA mass: %lf", &value) == 1) told = value;
                if (std::sscanf(text.c_str(), "\teffective source mass flow %lf, absolute %lf", &rate, &value) == 2)
                    flowedIn += value;
            }
        }
        const double now = P().TotalMass() + sim->MassOffMesh();
        const double expected = start + entrained + flowedIn;
        EXPECT_GT(entrained, 1000);
        EXPECT_NEAR(flowedIn, 3000 * 6, 3 * std::sqrt(60 * 0.24) * 500);   // 3 standard deviations of the draws
        // Messages carry six digits, masses are kept in 32 bits.
        EXPECT_NEAR(now, expected, 2e-5 * expected);
        EXPECT_NEAR(told, P().TotalMass(), 1e-5 * told);
        EXPECT_GE(entrained, (store - sim->EntrainableMass()) * (1 - 1e-5));   // the store is never overdrawn
    }
}

TEST_F(Steps, RoundTheNumberOfSourceParticlesAtRandomButAlwaysTheSameWay)
{
    OnMesh(20, 20, 5, Flat);
    Set({{"MassPerParticle", "1000"},
         {"$source_strength", "3000"},
         {"$source_duration", "30"},
         {"$source_radius", "5"},
         {"$source_point", "50 50"},
         {"$source_velo", "4"},
         {"$source_velo_ang", "30"}});
    std::map<int, int> counts;
    int total = 0;
    // The seed is the lower half of the time's bits: those of sums of 0.1 are as good as random.
    for (double time = 0; time < 29.95; time += 0.1) {
        P().Clear();
        t = time;
        Step(1);
        const int n = P().NumParticles();
        ++counts[n];
        total += n;
        if (n == 0) continue;
        EXPECT_LE(Length(AK_Vec2(P().Position()._x[0]) - AK_Vec2(50, 50)), 5 + 1e-9);
        EXPECT_NEAR(P().Velocity()._values[0].x, 2, 1e-9);   // 30 degrees from north
        EXPECT_NEAR(P().Velocity()._values[0].y, 2 * std::sqrt(3.0), 1e-9);
        const AK_Vec first = P().Position()._x[0];
        P().Clear();
        t = time;
        Step(1);
        EXPECT_EQ(P().Position()._x[0], first);
    }
    EXPECT_EQ(counts.size(), 2u);                  // none or one of 0.3
    EXPECT_NEAR(total, 90, 3 * std::sqrt(63.0));   // 3 standard deviations
    P().Clear();
    t = 30;
    Step(1);
    EXPECT_EQ(P().NumParticles(), 0);   // its time is over
    t = 0;
    Set({{"$source_strength", "2e4"}, {"$source_point", "-500 50"}});
    Step(1);
    EXPECT_EQ(P().NumParticles(), 0);
    Set({{"$source_strength", "1e300"}, {"$source_point", "50 50"}});
    Messages();
    Step(1);
    EXPECT_EQ(P().NumParticles(), 0);
    EXPECT_TRUE(Said("WARNING: a source of "));
}

TEST_F(Steps, SplitHeavyParticlesAndRemoveLightOnes)
{
    OnMesh(20, 20, 5, Flat);
    Set({{"MassPerParticle", "1000"}, {"FrictionType", "Chezy"}});
    const struct {
        double mass;
        int parts;
    } cases[] = {{10, 0}, {10.1, 1}, {1499, 1}, {1500, 2}, {2499, 2}, {10600, 11}};
    for (const auto& c : cases) {
        P().Clear();
        PlaceParticle({50, 50}, c.mass);
        Step(1);
        ASSERT_EQ(P().NumParticles(), c.parts) << c.mass;
        EXPECT_NEAR(P().TotalMass(), c.parts > 0 ? c.mass : 0, 1e-3);
    }
}

TEST_F(Steps, WithoutParticlesTellTheirTimesAllTheSame)
{
    OnMesh(20, 20, 5, Flat);
    Set({{"SphMode", "1"}, {"$sph_verbose", "1"}, {"$n_threads", "4"}});
    Messages();
    Step(1);
    std::string all;
    for (const std::string& text : Messages()) all += text + "\n";
    for (const char* text : {"computing time step 0.1...\n", "body forces ", "lateral forces ", "nan neighs/particle\n",
                             "\tentrained DFA mass: 0\n", "\ttotal DFA mass: 0\n"})
        EXPECT_NE(all.find(text), std::string::npos) << text << " in\n" << all;
    Set({{"SphMode", "0"}});
    Step(1);
    for (const std::string& text : Messages()) EXPECT_EQ(text.find("SPH"), std::string::npos) << text;
}

// Particles that begin as mirror images of each other across y = 100 remain so: sums over particles run in one order,
// so that their last bits differ, hence the bound.
TEST_F(Steps, KeepMirrorImagesMirrored)
{
    for (const char* sphMode : {"0", "2"}) {
        OnMesh(60, 40, 5, Chute);
        Set({{"SphMode", sphMode}, {"MassPerParticle", "1000"}});
        P().Clear();
        AK_System::srand(8);
        const auto draw = [] { return AK_System::rand() / 2147483647.0; };
        for (int i = 0; i < 200; ++i) {
            const double x = 20 + 40 * draw(), y = 30 * draw();
            for (double side : {-1.0, 1.0}) P().AddParticle({x, 100 + side * y, 0}, 1000, {5, side, 0}, 0, 0, -1);
        }
        sim->UpdateFields(0);
        const double start = P().Position()._x[0].x;
        t = 0;
        Step(40);
        ASSERT_EQ(P().NumParticles(), 400);
        for (int i = 0; i < 400; i += 2) {
            const AK_Vec a = P().Position()._x[i], b = P().Position()._x[i + 1];
            EXPECT_NEAR(a.x, b.x, 1e-3) << sphMode << " " << i;
            EXPECT_NEAR(a.y - 100, 100 - b.y, 1e-3) << sphMode << " " << i;
        }
        EXPECT_GT(P().Position()._x[0].x, start + 10);
    }
}

// A heap whose surface is nowhere steeper than the friction angle does not run: it stays within a cell.
TEST_F(Steps, LeaveAHeapAtRestThatFrictionHolds)
{
    for (const char* sphMode : {"0", "2"}) {
        OnMesh(40, 40, 5, Flat);
        Set({{"SphMode", sphMode},
             {"MassPerParticle", "4000"},
             {"FrictionType", "Chezy + Mohr-Coulomb"},
             {"BedFrictionAngle", "25"},
             {"InternalFrictionAngle", "0"},
             {"SubgridMixingFactor", "0"}});
        P().Clear();
        for (double x = 41.25; x < 160; x += 2.5)
            for (double y = 41.25; y < 160; y += 2.5) {
                const double depth = 3 * (1 - std::hypot(x - 100, y - 100) / 55);   // m: 3 degrees
                if (depth > 0.1) P().AddParticle({x, y, 0}, float(depth * 200 * 6.25), {}, 0, 0, -1);
            }
        sim->UpdateFields(0);
        const AK_List<AK_Vec> start = P().Position()._x;
        const int n = P().NumParticles();
        t = 0;
        Step(100);
        ASSERT_EQ(P().NumParticles(), n);
        double farthest = 0;
        for (int i = 0; i < n; ++i) farthest = std::max(farthest, Length(P().Position()._x[i] - start[i]));
        EXPECT_LT(farthest, 0.01) << sphMode;
        EXPECT_LT(std::sqrt(2 * P().TotalKineticEnergy() / P().TotalMass()), 1e-5) << sphMode;
    }
}
