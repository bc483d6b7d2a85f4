// Motion of single particles: force, drag, the surface, break lines, walls, heat, terrain without heights.

#include "SW_Simulation_Fixture.h"

namespace {

constexpr double g = 9.81;
constexpr double dt = 0.1;

class Positions : public SimulationTest {
protected:
    SW_Particles& P() { return sim->Particles(); }
    AK_Vec V() { return P().Velocity()._values[0]; }
    AK_Vec X() { return P().Position()._x[0]; }

    // One particle of 1000 kg, upon which nothing acts as yet.
    void Place(AK_Vec2 at, const AK_Vec& velocity, double enthalpy = 0)
    {
        P().Clear();
        PlaceParticle(at, 1000, velocity, enthalpy);
        P().SizeScratch(1);
        P().force[0] = {};
        for (AK_List<float>* list : {&P().dragCoefficient, &P().enthalpySource, &P().enthalpyDiffusion}) (*list)[0] = 0;
    }

    void Update(double cosBreak = -1) { UpdatePositions(sim, 0, 1, dt, cosBreak, &wallCells); }

    // A wall of 10 m, or as high as told, along x = 50, whose face looks towards -x with the slope 2: its foot is 5 m
    // before it.
    SW_WallLine& Wall(const char* heights)
    {
        sim->WallLines().Create("wall");
        SW_WallLine& wall = *sim->WallLines().Wall(0);
        AK_Polyline line;
        for (double y : {20.0, 80.0}) line._x.Append({50, y, 0});
        wall.SetLine(line);
        wall.Set("Slopes", "2");
        wall.Set("Heights", heights);
        wall.ProjectOnto(*mesh);
        wall.UpdateTangentsAndNormals();
        sim->UpdateWallLines(wallCells);
        return wall;
    }

    AK_List<unsigned char> wallCells{1};
};

}   // namespace

TEST_F(Positions, ForceActsAtOnceAndDragImplicitly)
{
    OnMesh(20, 20, 5, Incline(30));
    const AK_Vec down{std::cos(M_PI / 6), 0, -0.5}, across{0, 1, 0};
    for (double drag : {0.0, 3000.0, 1e9}) {
        Place({40, 50}, down * 20);
        const AK_Vec start = X();
        P().force[0] = down * 5000 + across * 2000;
        P().dragCoefficient[0] = float(drag);
        Update();
        const AK_Vec v = (down * 20.5 + across * 0.2) * (1 / (1 + double(float(drag)) * dt / 1000));
        EXPECT_NEAR(Length(X() - (start + (down * 20 + v) * (dt / 2))), 0, 1e-9);
        EXPECT_NEAR(Length(V() - v * (Length(v) / (Length(v) + 1e-6))), 0, 1e-12);
    }
    Place({40, 50}, {0, 0, 0});
    Update();
    EXPECT_EQ(V(), AK_Vec());   // at rest without force: no direction is invented
}

TEST_F(Positions, TheSurfaceTurnsTheVelocityAndABreakLineTakesItsNormalPart)
{
    const double zeta = 30 * M_PI / 180;
    OnMesh(20, 20, 5, [&](double x, double) { return 1000 - std::tan(zeta) * std::min(x, 50.0); });
    for (const double limit : {45.0, 20.0, -1.0}) {   // degrees between cells, -1: none counts
        Place({49.5, 52.5}, AK_Vec{std::cos(zeta), 0, -std::sin(zeta)} * 20);
        Update(limit < 0 ? -1 : std::cos(limit * M_PI / 180));
        double weights[4];
        const int cell = P().cell[0];
        mesh->GetWeights(cell, X(), weights);
        const AK_Vec n = Normalized(mesh->InterpolatedVector(cell, weights, mesh->_vertexNormals));
        EXPECT_NEAR(Dot(V(), n), 0, 1e-9);
        EXPECT_NEAR(X().z, 1000 - std::tan(zeta) * 50, 1e-9);
        const bool breaks = limit > 0 && limit < 30;
        const double normalPart = std::cos(zeta) * n.x - std::sin(zeta) * n.z;
        EXPECT_NEAR(Length(V()), breaks ? 20 * std::sqrt(1 - normalPart * normalPart) : 20, 2e-6) << limit;
    }
}

TEST_F(Positions, WallsReflectAtTheirFaceAndCostWhatClimbingTakes)
{
    OnMesh(20, 20, 5, Flat);
    const struct {
        const char *why, *height;
        double restitution, depth;
        AK_Vec velocity;
    } cases[] = {
        {"slides up a high wall and stops", "1010", 0, 0, {20, 0, 0}},
        {"is thrown back", "1010", 1, 0, {20, 0, 0}},
        {"bounces a little, with depth", "1010", 0.3, 2, {20, 0, 0}},
        {"goes over a low wall", "1001", 0, 0, {30, 0, 0}},
        {"aslant", "1010", 0.2, 1, {18, 9, 0}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        SW_WallLine& wall = Wall(c.height);
        Set({{"RestitutionCoefficient", AK_String(c.restitution, "%g").c_str()}});
        const double high = std::atof(c.height) - 1000;   // m
        const double footX = 50 - high / 2;
        Place({footX - 1, 50}, c.velocity);
        Part("FlowDepth")._values.Fill(mesh->NumVertices(), float(c.depth));
        Update();

        const AK_Vec b{high / 2, 0, high - 0.5 * c.depth / 1.01};
        const AK_Vec wn = Normalized(AK_Vec{-b.z, 0, b.x});   // b x (0, 1, 0)
        const double bounce = 1 + c.restitution;
        const double beyond = c.velocity.x * dt - 1;   // m behind the foot
        EXPECT_NEAR(X().x, footX - 1 - wn.x * (beyond * wn.x * bounce), 1e-6);
        EXPECT_NEAR(X().y, 50, 1e-9);
        const double speed = Length(c.velocity);
        AK_Vec v = c.velocity * (speed / (speed + 1e-6));
        v -= wn * (Dot(v, wn) * bounce);
        const AK_Vec flat{v.x, v.y, 0};
        v = flat * (Length(v) / Length(flat));
        const double climb = std::min(v.x, std::sqrt(2 * g * high));
        if (climb > 0) v.x -= climb;   // on level ground there is nothing to project
        EXPECT_NEAR(Length(V() - v), 0, 1e-6);
        EXPECT_EQ(P().cell[0], mesh->CellContainingPoint(X(), 0));
        sim->WallLines().DeleteComponent(wall.Id());
    }
}

TEST_F(Positions, WallsThatAreSwitchedOffOrWithoutHeightsDoNotReflect)
{
    OnMesh(20, 20, 5, Incline(10));
    Wall("0");
    const double z = 10 * M_PI / 180;
    const AK_Vec down{std::cos(z), 0, -std::sin(z)};
    const AK_Vec offSurface = AK_Vec{std::sin(z), 0, std::cos(z)} * 5000;
    wallCells.Fill(mesh->NumCells(), 1);
    Place({49, 50}, down * 20);
    P().force[0] = offSurface;   // 0.5 m/s off the surface
    Update();
    EXPECT_NEAR(Length(V()), 20, 1e-9);   // and the projection takes it for good
    sim->WallLines().Wall(0)->Set("Heights", "");
    Place({49, 50}, down * 20);
    P().force[0] = offSurface;
    Update();
    EXPECT_NEAR(Length(V()), std::sqrt(400.25), 2e-6);
    EXPECT_GT(X().x, 50.5);
}

TEST_F(Positions, HeatDiffusesImplicitly)
{
    OnMesh(20, 20, 5, Flat);
    for (double diffusion : {0.0, 500.0}) {
        Place({40, 50}, {10, 0, 0}, 2500 + g * 1000);
        P().enthalpySource[0] = 3e6f;
        P().enthalpyDiffusion[0] = float(diffusion);
        Update();
        const double e = 2500 - 50;   // J/kg
        const double gain = (3e6 - e * diffusion) * dt / (1 + diffusion * dt / 1000) / 1000;
        EXPECT_NEAR(P().TotalEnthalpy()._values[0], 2500 + g * 1000 + gain, 0.01);
    }
}

TEST_F(Positions, ParticlesThatLeaveTheMeshAreUnlocatedAndHeldOnesStay)
{
    OnMesh(20, 20, 5, Flat);
    Place({99, 50}, {20, 0, 0}, 77);
    Update();
    EXPECT_LT(P().cell[0], 0);
    EXPECT_EQ(V().x, 20);
    EXPECT_EQ(P().TotalEnthalpy()._values[0], 77);
    Place({50, 50}, {20, 0, 0});
    P().tag.Append(2);
    const AK_Vec before = X();
    Update();
    EXPECT_EQ(V(), AK_Vec());
    EXPECT_EQ(X(), before);
}

// Heights and normals are no numbers around the point. In all modes and on all kinds of mesh a particle there is lost,
// and the others are not touched by it.
TEST_F(Positions, TerrainWithoutHeightsLosesItsParticlesOnly)
{
    const auto hole = [](double x, double y) { return std::hypot(x - 50, y - 50) < 8 ? std::nan("") : 1000 - 0.3 * x; };
    for (int kind = 0; kind < 3; ++kind)
        for (const char* sphMode : {"0", "2"}) {
            OnMesh(kind == 0   ? CartesianMesh(20, 20, 5, hole)
                   : kind == 1 ? HoneyCombMesh(20, 22, 5, hole)
                               : IrregularMesh(20, 20, 5, hole));
            P().Clear();
            Set({{"SphMode", sphMode}, {"MassPerParticle", "1000"}, {"GlobalEntrainmentAreaWeight", "0.1"}});
            sim->InitializeCellEntrainmentMass();
            PlaceParticle({50, 50}, 1000, {10, 0, 0});
            PlaceParticle({36, 50}, 1000, {30, 0, 0});
            PlaceParticle({20, 20}, 1000, {10, 0, 0});
            for (int step = 0; step < 10; ++step) sim->ComputeTimeStep(0.1 * step, 0.1, wallCells);
            ASSERT_EQ(P().NumParticles(), 1) << kind << sphMode;
            EXPECT_TRUE(std::isfinite(Dot(X(), V())));
            for (float depth : Part("FlowDepth")._values) ASSERT_TRUE(std::isfinite(depth));
            for (const AK_Vec& v : Part<SW_VectorField>("Velocity")._values) ASSERT_TRUE(std::isfinite(Length(v)));
        }
}
