// Body forces on single particles: friction laws, curvature, mixing, entrainment, resistance. Expected values are
// formulas of their own, with the geometry of a plane instead of that of a mesh.

#include "SW_Simulation_Fixture.h"

#include <limits>

namespace {

constexpr double g = 9.81;
constexpr double rho = 200;
constexpr double rad = M_PI / 180;

/// One particle on an incline of 30 degrees, in a flow of even depth and velocity.
class BodyForces : public SimulationTest {
protected:
    static constexpr double zeta = 30 * rad;
    static constexpr double mass = 4000;
    static constexpr double depth = 1.25;
    static constexpr double dt = 0.1;
    static constexpr double tanDelta = 0.2;

    BodyForces()
    {
        OnMesh(10, 10, 5, Incline(30));
        Set({{"Density", "200"}, {"SubgridMixingFactor", "0"}, {"DynamicFrictionCoefficient", "0.01"}});
    }

    static AK_Vec Down(double speed) { return AK_Vec{std::cos(zeta), 0, -std::sin(zeta)} * speed; }
    static AK_Vec Normal() { return {std::sin(zeta), 0, std::cos(zeta)}; }

    void Place(double speed, double enthalpy = 0) { Place(Down(speed), enthalpy); }
    void Place(const AK_Vec& velocity, double enthalpy)
    {
        particle = PlaceParticle({22.5, 22.5}, mass, velocity, enthalpy);
        Part("FlowDepth")._values.Fill(mesh->NumVertices(), float(depth));
    }

    void Compute(int law)
    {
        sim->ReadStepVariables();
        P().SizeScratch(P().NumParticles());
        ComputeBodyForces(sim, 0, P().NumParticles(), 7, dt, tanDelta, law);
    }

    SW_Particles& P() { return sim->Particles(); }
    double Speed() { return Length(P().Velocity()._values[particle]); }
    double Z() { return P().Position()._x[particle].z; }

    // kg/s that a shear stress makes at a speed.
    static double Drag(double tau, double u) { return mass / (depth * rho) * tau / u; }

    int particle = 0;
};

struct Law {
    const char* name;
    int index;
    double (*tau)(double pn, double u, double e);   // Pa
};

const Law laws[] = {
    {"Chezy", 0, [](double, double u, double) { return rho * 0.01 * u * u; }},
    {"Voellmy", 1, [](double pn, double u, double) { return rho * (1.25 * pn * 0.2 + 0.01 * u * u); }},
    {"the larger", 2, [](double pn, double u, double) { return rho * 0.2 * std::max(0.01 * u * u, 1.25 * pn); }},
    {"korvoAT", 3,
     [](double pn, double u, double) {
         const double p = pn * rho * 1.25;
         const double q = rho * u * u;
         const double profile = std::log(1.25 / 0.05) / 0.43 + 4.13;
         return 0.155 * p * (1 + 0.222 / (0.222 + q / (p + 0.001))) + q / profile / profile;
     }},
    {"wet snow", 4,
     [](double pn, double u, double e) { return rho * (1.25 * pn * 0.2 * std::exp(-e / 2e4) + 0.01 * u * u); }},
};

}   // namespace

TEST_F(BodyForces, EachFrictionLawGivesItsDrag)
{
    for (const Law& law : laws)
        for (double u : {0.0, 0.5, 20.0, 60.0}) {
            SCOPED_TRACE(std::string(law.name) + " at " + std::to_string(u));
            P().Clear();
            Place(u, 1500 + g * 1000);
            Compute(law.index);
            const double pn = g * std::cos(zeta);
            const double e = 1500 + g * (1000 - Z()) - u * u / 2;
            const double tau = law.tau(pn, u, e);
            const double wanted = Drag(tau, std::max(u, 1e-6));
            EXPECT_NEAR(P().dragCoefficient[0], wanted, 2e-6 * wanted);
            EXPECT_NEAR(P().shearRatio[0], tau / (pn * rho * depth), 2e-6);
            EXPECT_NEAR(P().bottomForce[0], mass * pn, 1e-6 * mass * pn);
            EXPECT_NEAR(Length(P().force[0] - Down(mass * g * std::sin(zeta))), 0, 1e-8 * mass);
            EXPECT_EQ(P().depth[0], float(depth));
        }
}

TEST_F(BodyForces, TheOlderSpeedEstimateLooksAheadOverTheStep)
{
    Set({{"$compat", "v2017"}});
    Place(20.0);
    Compute(frictionChezy);
    const double u = 20 + dt * g * std::sin(zeta) / 2;   // m/s: the mean over the step
    EXPECT_NEAR(P().dragCoefficient[0], Drag(rho * 0.01 * u * u, u), 1e-4);
    P().Clear();
    Place(0.0);
    Compute(frictionChezyMohrCoulomb);
    const double start = dt * g * std::sin(zeta) / 2;
    const double tau = rho * (depth * g * std::cos(zeta) * tanDelta + 0.01 * start * start);
    EXPECT_NEAR(P().dragCoefficient[0], Drag(tau, start), 1e-6 * Drag(tau, start));
}

TEST_F(BodyForces, FormulasGetTheStateOfTheColumn)
{
    Set({{"BottomShearStressFormula", "return p * 0.1 + v + 10 * h + 100 * d;"}, {"$n_threads", "2"}});
    Place(20.0, 5000);
    Compute(frictionFormula);
    const double p = g * std::cos(zeta) * rho * depth;
    EXPECT_NEAR(P().shearRatio[0] * p, p * 0.1 + 20 + 12.5 + 100 * rho, 0.01);
    WriteFile(directory / "r.cint", "double tau(double p, double u, double h, double rho, double t, double x[], "
                                    "double n[], double e) { return e + 10 * t + x[0] + 100 * n[2] + 0 * x[2]; }");
    Set({{"BottomShearStressFormulaFile", (directory / "r.cint").c_str()}});
    Compute(frictionFormula);
    const double e = 5000 - g * Z() - 200;
    EXPECT_NEAR(P().shearRatio[0] * p, e + 70 + 22.5 + 100 * std::cos(zeta), 0.01);
}

TEST_F(BodyForces, CurvaturePressesInAValleyAndLiftsOffACrest)
{
    const auto circle = [](double radius) {
        return [radius](double x, double) {
            const double s = (x - 100) / radius;
            return 1000 + radius * (1 - std::sqrt(1 - s * s));
        };
    };
    const double u = 30;
    for (double radius : {200.0, -200.0, -50.0}) {   // m: valley, crest, a crest that the flow leaves
        OnMesh(CartesianMesh(200, 4, 1, circle(std::fabs(radius) < 100 ? -150 : radius)));
        const double curvature = std::fabs(radius) < 100 ? -1.0 / 150 : 1 / radius;   // 1/m
        for (double factor : {1.0, 0.5, 0.0}) {
            Set({{"CurvatureReductionFactor", std::to_string(factor).c_str()}});
            P().Clear();
            const double speed = std::fabs(radius) < 100 ? 2 * u : u;
            particle = PlaceParticle({100, 2}, mass, {speed, 0, 0});
            Part("FlowDepth")._values.Fill(mesh->NumVertices(), float(depth));
            sim->ReadStepVariables();
            P().SizeScratch(1);
            ComputeBodyForces(sim, 0, 1, 0, 0.02, tanDelta, frictionChezyMohrCoulomb);
            const double pn = g + factor * speed * speed * curvature;
            // The normals of a mesh of 1 m on an arc of 200 m turn by steps of the second order.
            if (pn > 0) {
                EXPECT_NEAR(P().bottomForce[0] / mass, pn, 0.01 * g) << radius << " " << factor;
            } else {
                EXPECT_EQ(P().bottomForce[0], 0);
                EXPECT_EQ(P().dragCoefficient[0], 0);
                EXPECT_EQ(P().shearRatio[0], 0);
                EXPECT_GT(Length(P().force[0]), 0);
            }
        }
    }
}

TEST_F(BodyForces, VelocitiesRelaxTowardsTheFlowInTheSurface)
{
    Set({{"SubgridMixingFactor", "3"}});
    const AK_Vec across{0, 4, 0};
    Place(Down(20), 0);
    Part<SW_VectorField>("Velocity")._values.Fill(mesh->NumVertices(), Down(12) + across + Normal() * 5);
    Compute(frictionChezy);
    const AK_Vec flow = Down(12) + across;
    const double k = Length(flow - Down(20)) * 3 * rho * std::sqrt(mass * depth / rho) * dt / mass;
    const AK_Vec wanted = (Down(20) + flow * k) * (1 / (1 + k));
    EXPECT_NEAR(Length(P().Velocity()._values[0] - wanted), 0, 1e-12);
}

TEST_F(BodyForces, EntrainmentKeepsMassMomentumAndEnergy)
{
    const double store = 40, snow = -15000, u = 20, enthalpy = 2000;
    const double sweep = std::sqrt(mass / rho / depth) * u * dt;   // m2
    const double plough = store * sweep;
    const double tau = rho * (depth * g * std::cos(zeta) * tanDelta + 0.01 * u * u);
    const double eroded = mass / (depth * rho) * tau * u * dt / 500;
    const struct {
        const char *why, *erosionEnergy, *shear, *deformation;
        double entrained, loss;
    } cases[] = {
        {"takes all in its way", "0", "0", "0", plough, 0},
        {"erodes by its work", "500", "0", "0", eroded, 0},
        {"pays for area and mass", "0", "300", "50", plough, 300 * sweep + 50 * plough},
        {"stops when it cannot pay", "0", "1e9", "0", plough, std::numeric_limits<double>::infinity()},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        Set({{"EntrainmentErosionEnergy", c.erosionEnergy},
             {"EntrainmentShearResistance", c.shear},
             {"EntrainmentDeformationResistance", c.deformation}});
        P().Clear();
        Place(u, enthalpy);
        Part("EntrainmentMass")._values.Fill(mesh->NumCells(), float(store));
        Part("EntrainmentEnthalpy")._values.Fill(mesh->NumCells(), float(snow));
        Compute(frictionChezyMohrCoulomb);
        const double m = mass + c.entrained;
        EXPECT_NEAR(P().entrainedMass[0], c.entrained, 1e-6 * c.entrained);
        EXPECT_NEAR(P().Mass()._values[0], m, 1e-6 * m);
        EXPECT_NEAR(P().TotalEnthalpy()._values[0] * m, mass * enthalpy + (snow + g * Z()) * c.entrained,
                    1e-6 * m * 5000);
        const double slowed = u * mass / m;
        const double kept = std::max(0.0, 1 - c.loss / (0.5 * m * (slowed * slowed + 1e-6)));
        EXPECT_NEAR(Speed(), slowed * std::sqrt(kept), 1e-6);
    }
}

TEST_F(BodyForces, TheLossOfEntrainmentCanBeAFormula)
{
    WriteFile(
        directory / "r.cint",
        "double tau(double p, double u, double h, double rho, double t, double x[], double n[], double e) "
        "{ return 0.1 * p; }\n"
        "double entrainment_energy_loss(double p, double u, double h, double rho, double t, double x[], "
        "double n[], double tau, double m, double a, double b) { return tau + 10 * m + 100 * a + b + 0 * n[2]; }");
    Set({{"BottomShearStressFormulaFile", (directory / "r.cint").c_str()},
         {"EntrainmentShearResistance", "2"},
         {"EntrainmentDeformationResistance", "3"}});
    Place(20.0);
    Part("EntrainmentMass")._values.Fill(mesh->NumCells(), 40.0f);
    Compute(frictionFormula);
    const double sweep = std::sqrt(mass / rho / depth) * 20 * dt;
    const double m = mass + 40 * sweep;
    const double loss = sweep * (0.1 * g * std::cos(zeta) * rho * depth + 400 + 200 + 3);
    const double slowed = 20 * mass / m;
    EXPECT_NEAR(Speed(), slowed * std::sqrt(1 - loss / (0.5 * m * (slowed * slowed + 1e-6))), 1e-6);
}

TEST_F(BodyForces, ObstaclesDragAsFarAsTheFlowReaches)
{
    sim->ResistanceAreas().Create("forest");
    SW_ResistanceArea& area = *sim->ResistanceAreas().Area(0);
    area.SetLine(Rectangle(0, 0, 50, 50));
    for (const auto& [name, value] : {std::pair{"Width", "0.4"}, {"Spacing", "4"}, {"ResistanceCoefficient", "1.5"}})
        area.Set(name, value);
    for (double height : {0.5, 9.0}) {
        area.Set("Height", AK_String(height, "%g"));
        sim->UpdateCellResistances();
        P().Clear();
        Place(20.0);
        Compute(frictionChezy);
        const double front = 0.4 * 1.5 / 16 * std::min(height, depth) * mass / rho / depth;   // m2
        const double wanted = Drag(rho * 0.01 * 400, 20) + 20 * front * rho * 0.5;
        EXPECT_NEAR(P().dragCoefficient[0], wanted, 2e-6 * wanted);
    }
}

TEST_F(BodyForces, PassByHeldParticlesAndLeaveNothingOfFormerSteps)
{
    Place(20.0);
    Part("EntrainmentMass")._values.Fill(mesh->NumCells(), 40.0f);
    Compute(frictionChezy);
    P().tag.Append(1);
    const AK_Vec velocity = P().Velocity()._values[0];
    Compute(frictionChezy);
    EXPECT_EQ(P().Velocity()._values[0], velocity);
    for (const AK_List<float>* list : {&P().depth, &P().dragCoefficient, &P().shearRatio, &P().entrainedMass,
                                       &P().bottomForce, &P().enthalpySource, &P().enthalpyDiffusion})
        EXPECT_EQ((*list)[0], 0);
    EXPECT_EQ(P().force[0], AK_Vec());
}
