// The model against closed forms of dense flows. Each tolerance has its reason; the step is first order in time, so an
// error in speed is about the acceleration times the step.
//
// Symbols: zeta slope, mu friction, h depth normal to the bed, x along the slope, g' = g cos(zeta).

#include "SW_Simulation_Fixture.h"

namespace {

constexpr double g = 9.81;
constexpr double rad = M_PI / 180;

class Verification : public SimulationTest {
protected:
    Verification()
    {
        Set({{"InternalFrictionAngle", "0"},
             {"SubgridMixingFactor", "0"},
             {"Density", "200"},
             {"MassPerParticle", "1000"},
             {"FrictionType", "Chezy + Mohr-Coulomb"},
             {"DynamicFrictionCoefficient", "0"}});
    }

    SW_Particles& P() { return sim->Particles(); }

    void Friction(double mu, double cf)
    {
        sim->Set("BedFrictionAngle", AK_String(std::atan(mu) / rad, "%.15g"));
        sim->Set("DynamicFrictionCoefficient", AK_String(cf, "%.15g"));
    }

    // Until the end or until the flow stands still; returns that time.
    double RunTo(double end, double dt, double stopped = -1)
    {
        for (; t < end - dt / 2; t += dt) {
            sim->ComputeTimeStep(t, dt, noWalls);
            if (Length(P().Velocity()._values[0]) <= stopped) return t + dt;
        }
        return t;
    }

    // A lone particle, in an SPH mode: no neighbours, so no lateral force.
    void Lone(AK_Vec2 at, const AK_Vec& velocity)
    {
        t = 0;
        sim->Set("SphMode", "1");
        P().Clear();
        PlaceParticle(at, 1000, velocity);
    }

    // A slab of even depth: particles in step with the mesh, four to a cell, so that their depth stays even while they
    // all move alike. Its inner particle tells, which no wave from the rim reaches within 12 s.
    void Slab(double zeta, double length, double depth, double speed)
    {
        t = 0;
        const double dx = 4;   // m, in plan
        OnMesh(int((length + 150) / dx), 30, dx, Incline(zeta / rad));
        P().Clear();
        const double mass = 200 * depth * dx * dx / 4 / std::cos(zeta);
        sim->Set("MassPerParticle", AK_String(mass, "%.15g"));
        for (double x = 21; x < 121; x += dx / 2)
            for (double y = 11; y < 109; y += dx / 2)
                P().AddParticle({x, y, 0}, float(mass), AK_Vec{std::cos(zeta), 0, -std::sin(zeta)} * speed, 0, 0, -1);
        sim->UpdateFields(0);
        inner = 25 * 49 + 24;   // of 50 rows of 49
    }

    // m/s by which a block on 35 degrees with a friction of 25 is too fast after a time, since its friction is that of
    // a speed half a step of gravity ahead: the sum of friction * (g sin(zeta) / 2 - a) dt / (a t) over the steps.
    static double LookAhead(double dt, double time)
    {
        const double gravity = g * std::sin(35 * rad);                         // m/s2
        const double friction = g * std::cos(35 * rad) * std::tan(25 * rad);   // m/s2
        const double a = gravity - friction;
        return friction * (gravity / 2 - a) * dt / a * (1 + std::log(time / dt));
    }

    double InnerSpeed() { return Length(P().Velocity()._values[inner]); }
    double Speed() { return Length(P().Velocity()._values[0]); }
    AK_Vec X(int i = 0) { return P().Position()._x[i]; }

    int inner = 0;
    double t = 0;
    AK_List<unsigned char> noWalls{1};
};

}   // namespace

// A row of particles at random distances, which push each other along the slope only. The estimate of the speed looks
// half of what gravity adds in a step ahead, so that friction is lower by the share of that in the speed: in all by
// LookAhead(dt, t) m/s.
TEST_F(Verification, TheCentreOfMassFallsLikeABlock)
{
    const double zeta = 35 * rad, delta = 25 * rad, dt = 0.002;
    const double a = g * (std::sin(zeta) - std::cos(zeta) * std::tan(delta));
    OnMesh(100, 6, 5, Incline(35));
    Set({{"SphMode", "2"}, {"$compat", "v2017"}, {"MassPerParticle", "100"}});
    Friction(std::tan(delta), 0);
    AK_System::srand(4);
    for (int i = 0; i < 60; ++i) P().AddParticle({60 + 30 * SW_Particles::Draw(), 15, 0}, 100, {}, 0, 0, -1);
    sim->UpdateFields(0);
    const auto centre = [&] {
        double sum = 0;
        for (const AK_Vec& x : P().Position()._x) sum += x.x;
        return sum / P().NumParticles();
    };
    const double start = centre();
    RunTo(6, dt);
    EXPECT_NEAR((centre() - start) / std::cos(zeta), a * 18, LookAhead(dt, 6) * 6);
}

TEST_F(Verification, ASlabReachesTheVoellmySpeed)
{
    const double zeta = 30 * rad, mu = 0.2, xi = 2000, h = 1.5;
    const double A = g * (std::sin(zeta) - mu * std::cos(zeta)), B = g / (xi * h);
    const double dt = 0.05;
    Friction(mu, g / xi);
    Set({{"$compat", "v2017"}});
    Slab(zeta, 330, h, 0);
    double before = 0;
    for (double end : {2.0, 5.0, 10.0}) {
        RunTo(end, dt);
        const double u = std::sqrt(A / B) * std::tanh(std::sqrt(A * B) * end);
        EXPECT_NEAR(InnerSpeed(), u, g * std::sin(zeta) * dt / 2) << end;   // the estimate of the speed looks ahead
        EXPECT_GT(InnerSpeed(), before);
        before = InnerSpeed();
    }
    EXPECT_NEAR(before, 24.1546, g * std::sin(zeta) * dt / 2);
    Slab(0, 200, h, 31.31110);
    const double start = X(inner).x;
    RunTo(12, dt);
    EXPECT_NEAR(X(inner).x - start, 148.0878, 148.0878 * 0.01);   // 31 m/s over half a step, and the last creep
    EXPECT_LT(InnerSpeed(), 1e-4);
}

TEST_F(Verification, WhatFrictionStopsStaysAndDoesNotTurnBack)
{
    const double zeta = 15 * rad, mu = 0.4, u0 = 12;
    OnMesh(40, 6, 5, Incline(15));
    Friction(mu, 0);
    for (double dt : {0.1, 0.02}) {
        Lone({20, 15}, AK_Vec{std::cos(zeta), 0, -std::sin(zeta)} * u0);
        const double stop = RunTo(20, dt, 1e-5);
        const double at = (X().x - 20) / std::cos(zeta);
        // Friction of the step's end speed is too low by the share b dt of it, with b the friction: over the way to
        // rest b dt u0 / d in length. In the end each step leaves tan(zeta) / mu of the speed: 26 steps from b dt to
        // 1e-5.
        const double b = mu * g * std::cos(zeta), d = b - g * std::sin(zeta);
        EXPECT_NEAR(at, 57.54116, 1.1 * b * dt * u0 / d);
        EXPECT_NEAR(stop, 9.59019, 40 * dt);
        RunTo(20, dt);
        EXPECT_NEAR((X().x - 20) / std::cos(zeta), at, 1e-3);
        EXPECT_LT(Speed(), 1e-5);
    }
}

TEST_F(Verification, ABlockFollowsTheEnergyLine)
{
    // 40 degrees, then 10: without curvature the speed is that of the energy line; with it the kink costs a factor.
    const double steep = 40 * rad, gentle = 10 * rad, mu = 0.2, kink = 60;
    OnMesh(200, 6, 1, [&](double x, double) {
        return 1000 - std::tan(steep) * std::min(x, kink) - std::tan(gentle) * std::max(x - kink, 0.0);
    });
    Friction(mu, 0);
    for (double factor : {0.0, 1.0}) {
        sim->Set("CurvatureReductionFactor", AK_String(factor, "%g"));
        Lone({5, 3}, AK_Vec{std::cos(steep), 0, -std::sin(steep)} * 5);
        const double z0 = X().z;
        for (const double dt = 0.005; X().x < 50;) RunTo(t + dt, dt);
        const double drop = z0 - X().z, run = X().x - 5;
        const double v2 = 25 + 2 * g * (drop - mu * run);
        EXPECT_NEAR(Speed() * Speed(), v2, 0.004 * v2) << factor;   // the step: g dt of 20 m/s, twice
        const double x50 = X().x, z50 = X().z, u50 = Speed() * Speed();
        for (const double dt = 0.005; X().x < 120;) RunTo(t + dt, dt);
        const double toKink = u50 + 2 * g * (std::tan(steep) - mu) * (kink - x50);
        const double zKink = 1000 - std::tan(steep) * kink;
        const double behind =
            toKink * std::exp(-2 * factor * mu * (steep - gentle)) + 2 * g * (zKink - X().z - mu * (X().x - kink));
        // The kink is as wide as a cell: in the middle of it the slope is neither.
        EXPECT_NEAR(Speed() * Speed(), behind, 0.015 * behind) << factor << " " << z50;
    }
}

TEST_F(Verification, ACircularValleySlowsByTheCentrifugalForce)
{
    const double R = 200, mu = 0.2, phi0 = 30 * rad;
    OnMesh(240, 4, 1, [&](double x, double) { return 1200 - std::sqrt(R * R - (x - 120) * (x - 120)); });
    Friction(mu, 0);
    const struct {
        double factor, speed;   // at the bottom, m/s
    } cases[] = {{1, 28.8635}, {0, 32.1452}};
    for (const auto& c : cases) {
        sim->Set("CurvatureReductionFactor", AK_String(c.factor, "%g"));
        Lone({120 - R * std::sin(phi0), 2}, AK_Vec{std::cos(phi0), 0, -std::sin(phi0)} * 30);
        for (const double dt = 0.01; X().x < 120;) RunTo(t + dt, dt);
        EXPECT_NEAR(Speed(), c.speed, 0.005 * c.speed);   // chords of 1 m, and half a step beyond the bottom
    }
}

TEST_F(Verification, ErosionByAnEnergyGrowsAsTheHyperbolicCosine)
{
    const double zeta = 30 * rad, mu = 0.2, W = 2000;
    const double kappa = mu * g * std::cos(zeta) / W, A = g * (std::sin(zeta) - mu * std::cos(zeta));
    OnMesh(230, 6, 5, Incline(30));
    Friction(mu, 0);
    Set({{"EntrainmentErosionEnergy", "2000"}, {"GlobalEntrainmentAreaWeight", "1e6"}, {"$compat", "v2017"}});
    sim->InitializeCellEntrainmentMass();
    Lone({10, 15}, {});
    sim->Set("MassPerParticle", "9000");   // it shall neither be split nor removed
    for (double end : {5.0, 10.0, 20.0}) {
        RunTo(end, 0.05);
        const double u = std::sqrt(A / kappa) * std::tanh(std::sqrt(A * kappa) * end);
        EXPECT_NEAR(Speed(), u, g * std::sin(zeta) * 0.05 / 2) << end;   // the estimate of the speed looks ahead
        EXPECT_NEAR(P().Mass()._values[0] / 1000, std::cosh(std::sqrt(A * kappa) * end), 0.004) << end;
    }
}

// ----------------------------------------------------------------------------------------------------------------
// Spreading
// ----------------------------------------------------------------------------------------------------------------

// Savage and Hutter (1989): a parabolic cap on an incline stays one. The front moves with the outermost particles,
// whose mass is that of a cell at the rim, hence 4 % of the length; depth at the crest is a mean over cells with
// particles on a lattice: 4 %.
TEST_F(Verification, AParabolicCapStaysAParabolaOnAnIncline)
{
    const double zeta = 35 * rad, h0 = 1, L0 = 20, dx = 1, dt = 0.01;
    OnMesh(140, 8, dx, Incline(35));
    Set({{"SphMode", "0"}, {"$compat", "v2017"}});
    Friction(std::tan(25 * rad), 0);
    const double start = 40, spacing = 0.25;   // m, in plan
    for (double x = spacing / 2; x < 140; x += spacing)
        for (double y = spacing / 2; y < 8; y += spacing) {
            const double s = (x - start) / std::cos(zeta) / L0;
            const double depth = h0 * (1 - s * s);
            if (depth > 0)
                P().AddParticle({x, y, 0}, float(200 * depth * spacing * spacing / std::cos(zeta)), {}, 0, 0, -1);
        }
    sim->Set("MassPerParticle", "15");
    sim->UpdateFields(0);
    const struct {
        double time, halfLength, crest;
    } states[] = {{2, 21.5665, 0.92736}, {4, 25.8653, 0.77324}, {6, 32.1024, 0.62301}};
    t = 0;
    for (const auto& s : states) {
        RunTo(s.time, dt);
        double mass = 0, sum = 0, square = 0;
        for (int i = 0; i < P().NumParticles(); ++i) {
            const double m = P().Mass()._values[i], x = X(i).x / std::cos(zeta);
            mass += m;
            sum += m * x;
            square += m * x * x;
        }
        const double centre = sum / mass;
        EXPECT_NEAR(centre - start / std::cos(zeta), 0.5 * 1.87959 * s.time * s.time, LookAhead(dt, s.time) * s.time)
            << s.time;
        // Of a parabola the variance is L^2 / 5.
        EXPECT_NEAR(std::sqrt(5 * (square / mass - centre * centre)), s.halfLength, 0.02 * s.halfLength) << s.time;
        const double depth = Part("FlowDepth").ValueAtPoint(AK_Vec2(centre * std::cos(zeta), 4));
        EXPECT_NEAR(depth, s.crest, 0.04 * s.crest) << s.time;
    }
}

TEST_F(Verification, ACapWithoutFrictionSpreadsAsACircleInTheBedPlane)
{
    const double zeta = 20 * rad, H0 = 2, R0 = 50;
    OnMesh(110, 80, 4, Incline(20));
    Set({{"SphMode", "0"}, {"FrictionType", "Chezy"}, {"DynamicFrictionCoefficient", "0"}});
    const AK_Vec2 start(100, 160);
    for (double x = 1; x < 440; x += 2)
        for (double y = 1; y < 320; y += 2) {
            const double r2 = std::pow((x - start.x) / std::cos(zeta), 2) + std::pow(y - start.y, 2);
            const double depth = H0 * (1 - r2 / R0 / R0);
            if (depth > 0) P().AddParticle({x, y, 0}, float(200 * depth * 4 / std::cos(zeta)), {}, 0, 0, -1);
        }
    sim->Set("MassPerParticle", "1500");
    sim->UpdateFields(0);
    const struct {
        double time, radius;
    } states[] = {{2, 51.4538}, {5, 58.4965}, {8, 69.7130}};
    t = 0;
    for (const auto& s : states) {
        RunTo(s.time, 0.05);
        const double radius = std::sqrt(R0 * R0 + 2 * g * std::cos(zeta) * H0 * s.time * s.time);
        EXPECT_NEAR(radius, s.radius, 1e-3);
        double mass = 0, x = 0, xx = 0, yy = 0;
        for (int i = 0; i < P().NumParticles(); ++i) {
            const double m = P().Mass()._values[i];
            const double along = (X(i).x - start.x) / std::cos(zeta), across = X(i).y - start.y;
            mass += m;
            x += m * along;
            xx += m * along * along;
            yy += m * across * across;
        }
        const double centre = x / mass;
        EXPECT_NEAR(centre, 0.5 * g * std::sin(zeta) * s.time * s.time, 0.01 * centre) << s.time;
        // Of the paraboloid the variance along each axis is R^2 / 6; 25 cells on a diameter.
        EXPECT_NEAR(std::sqrt(6 * (xx / mass - centre * centre)), radius, 0.02 * radius) << s.time;
        EXPECT_NEAR(std::sqrt(6 * yy / mass), radius, 0.02 * radius) << s.time;
    }
}

// The run-out of a release in a chute with half the mass per particle and half the step.
TEST_F(Verification, TheRunOutChangesLittleWithRefinement)
{
    double front[2];
    for (int fine = 0; fine < 2; ++fine) {
        OnMesh(140, 40, 5, Chute);
        while (sim->ReleaseAreas().NumComponents() > 0) sim->ReleaseAreas().FreeComponent(0);
        Set({{"SphMode", "0"},
             {"MassPerParticleDeterminationMethod", "direct"},
             {"MassPerParticle", fine ? "1000" : "2000"},
             {"InternalFrictionAngle", "35"},
             {"SubgridMixingFactor", "100"},
             {"FrictionType", "Mohr-Coulomb with max of dynamic and granular pressure (KORVO classic)"}});
        Friction(0.28, 0.01);
        Release({10, 70}, {60, 130}, 1.5);
        ASSERT_TRUE(sim->Initialize());
        t = 0;
        RunTo(30, fine ? 0.05 : 0.1);
        double mass = 0, sum = 0;
        for (int i = 0; i < P().NumParticles(); ++i) {
            mass += P().Mass()._values[i];
            sum += P().Mass()._values[i] * X(i).x;
        }
        front[fine] = sum / mass;
        EXPECT_GT(front[fine], 150);   // it has run
    }
    EXPECT_NEAR(front[0], front[1], 0.02 * front[1]);
}
