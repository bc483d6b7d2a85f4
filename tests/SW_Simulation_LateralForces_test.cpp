// Lateral forces: column sampling on single particles against formulas of its own, SPH against the plain sum over all
// pairs.

#include "SW_Simulation_Fixture.h"

#include <vector>

namespace {

constexpr double g = 9.81;

class LateralForces : public SimulationTest {
protected:
    LateralForces()
    {
        Set({{"Density", "200"},
             {"SubgridMixingFactor", "0"},
             {"FrictionType", "Chezy + Mohr-Coulomb"},
             {"BedFrictionAngle", "16"},
             {"MassPerParticle", "4000"},
             {"DynamicFrictionCoefficient", "0.01"}});
    }

    SW_Particles& P() { return sim->Particles(); }

    // The force that a step adds to gravity. All particles of these tests keep their places in the list.
    std::vector<AK_Vec> LateralForceOfStep(double dt)
    {
        const int n = P().NumParticles();
        const AK_List<AK_Vec> position = P().Position()._x;
        const AK_List<AK_Vec> velocity = P().Velocity()._values;
        const AK_List<float> flowDepth = Part("FlowDepth")._values;
        const AK_List<AK_Vec> flowVelocity = Part<SW_VectorField>("Velocity")._values;
        AK_List<unsigned char> noWalls(1);
        sim->ComputeTimeStep(0, dt, noWalls);
        EXPECT_EQ(P().NumParticles(), n);
        std::vector<AK_Vec> total(P().force.begin(), P().force.end());
        shearRatio.assign(P().shearRatio.begin(), P().shearRatio.end());
        bottomForce.assign(P().bottomForce.begin(), P().bottomForce.end());
        drag.assign(P().dragCoefficient.begin(), P().dragCoefficient.end());
        heatSource.assign(P().enthalpySource.begin(), P().enthalpySource.end());
        heatDiffusion.assign(P().enthalpyDiffusion.begin(), P().enthalpyDiffusion.end());
        // The same once more, without what happens between particles.
        P().Position()._x = position;
        P().Velocity()._values = velocity;
        Part("FlowDepth")._values = flowDepth;
        Part<SW_VectorField>("Velocity")._values = flowVelocity;
        for (int i = 0; i < n; ++i) P().cell[i] = mesh->CellContainingPoint(position[i], 0);
        ComputeBodyForces(sim, 0, n, 0, dt, std::tan(16 * M_PI / 180), frictionChezyMohrCoulomb);
        for (int i = 0; i < n; ++i) {
            total[size_t(i)] -= P().force[i];
            drag[size_t(i)] -= P().dragCoefficient[i];
        }
        return total;
    }

    std::vector<float> shearRatio, bottomForce, drag, heatSource, heatDiffusion;
};

struct Stretch {
    const char* why;
    const char* phi;        // degrees
    double along, across;   // 1/s
    int signX, signY;       // +1 passive, -1 active, 0 hardly deformed
};

}   // namespace

// A flat mesh, on which depth, pressure and velocity are linear in x and y within the particle's cell.
TEST_F(LateralForces, ColumnSamplingIsTheEarthPressureOnFourSides)
{
    OnMesh(6, 6, 10, Flat);
    const Stretch cases[] = {{"without internal friction", "0", -0.5, 0.5, 0, 0},
                             {"hardly deformed", "35", 1e-3, -1e-3, 0, 0},
                             {"pushed together both ways", "35", -0.5, -0.5, 1, 1},
                             {"drawn out both ways", "35", 0.5, 0.5, -1, -1},
                             {"drawn out along, pushed together across", "35", 0.5, -0.5, -1, 1},
                             {"only across", "35", 1e-3, 0.5, 0, -1},
                             {"a bed rougher than the snow is strong", "10", -0.5, 0.5, 1, -1}};
    const AK_Vec2 p(27, 34);
    const double m = 4000, rho = 200;
    for (const Stretch& c : cases) {
        SCOPED_TRACE(c.why);
        Set({{"InternalFrictionAngle", c.phi}});
        P().Clear();
        PlaceParticle(p, m, {3, 4, 0});
        const AK_Vec e1{0.6, 0.8, 0}, e2{-0.8, 0.6, 0};
        const auto depth = [&](const AK_Vec& x) { return 1 + 0.02 * (x.x - p.x) - 0.03 * (x.y - p.y); };
        for (int v = 0; v < mesh->NumVertices(); ++v) {
            const AK_Vec d = mesh->_x[v] - AK_Vec{p.x, p.y, 0};
            Part("FlowDepth")._values[v] = float(depth(mesh->_x[v]));
            Part<SW_VectorField>("Velocity")._values[v] =
                AK_Vec{3, 4, 0} + e1 * (c.along * Dot(d, e1)) + e2 * (c.across * Dot(d, e2));
        }
        const AK_Vec force = LateralForceOfStep(1e-3)[0];

        const double phi = std::atof(c.phi) * M_PI / 180;
        const double c2 = std::pow(std::cos(phi), 2);
        double t2 = std::pow(shearRatio[0], 2);
        double root = 0;
        if ((t2 + 1) * c2 < 1)
            root = std::sqrt(1 - (t2 + 1) * c2);
        else
            t2 = std::pow(std::tan(phi), 2);
        const double kx = c.signX ? 2 * (1 + c.signX * root) / c2 - 1 : 1;
        const double ky = c.signY ? (kx + 1 + c.signY * std::sqrt((1 - kx) * (1 - kx) + 4 * t2)) / 2 : 1;
        // Pressure from the one particle: its weight on the four corners, bilinear.
        const auto pressure = [&](const AK_Vec& x) {
            const double s = 0.7, t = 0.4, f = m * g / 100;   // place in the cell, weight by the area of a vertex
            const double u = (x.x - 20) / 10, v = (x.y - 30) / 10;
            return f * ((1 - s) * (1 - t) * (1 - u) * (1 - v) + s * (1 - t) * u * (1 - v) + s * t * u * v +
                        (1 - s) * t * (1 - u) * v);
        };
        const double w = std::sqrt(m / rho / depth({p.x, p.y, 0}));
        const auto side = [&](double k, const AK_Vec& offset) {
            const AK_Vec x = AK_Vec{p.x, p.y, 0} + offset * (w / 2);
            return k * pressure(x) * 0.5 * depth(x) * w;
        };
        const AK_Vec wanted = e1 * (side(kx, e1 * -1) - side(kx, e1)) + e2 * (side(ky, e2 * -1) - side(ky, e2));
        EXPECT_NEAR(Length(force - wanted), 0, 2e-6 * (Length(wanted) + side(kx, e1)));
        EXPECT_NEAR(bottomForce[0], m * g, 1e-2);
    }
}

TEST_F(LateralForces, AColumnAtRestTakesTheDirectionItIsAboutToTakeOrAny)
{
    for (const bool tilted : {false, true}) {
        OnMesh(6, 6, 10, tilted ? Incline(20) : Height(Flat));
        Set({{"InternalFrictionAngle", "0"}});
        P().Clear();
        PlaceParticle({27, 34}, 1000);
        for (int v = 0; v < mesh->NumVertices(); ++v) Part("FlowDepth")._values[v] = float(1 + 0.01 * mesh->_x[v].x);
        const AK_Vec force = LateralForceOfStep(0.1)[0];
        const AK_Vec normal = Normalized(mesh->CellNormal(0));
        EXPECT_TRUE(std::isfinite(Length(force)));
        EXPECT_GT(Length(force), 1);
        EXPECT_NEAR(Dot(force, normal), 0, 1e-9 * Length(force));   // the sides stand on the bed
    }
}

// ----------------------------------------------------------------------------------------------------------------
// SPH
// ----------------------------------------------------------------------------------------------------------------

namespace {

struct Mode {
    const char *sphMode, *diffusion, *implicitly, *cohesion;
};

}   // namespace

TEST_F(LateralForces, SphIsTheSumOverAllPairsWithinTheRadius)
{
    const double rho = 200;
    OnMesh(7, 5, 10, Flat, "terrain", {1000, 2000});
    for (const Mode& mode :
         {Mode{"1", "", "", ""}, Mode{"-2", "", "", ""}, Mode{"3", "", "", "50"}, Mode{"2", "0.3", "", ""},
          Mode{"2", "0.3", "yes", ""}, Mode{"100", "", "", ""}, Mode{"-2000000000", "", "", ""}}) {
        SCOPED_TRACE(std::string(mode.sphMode) + " " + mode.diffusion + mode.implicitly);
        Set({{"SphMode", mode.sphMode},
             {"$sph_diffusion_coefficient", mode.diffusion},
             {"$sph_diffusion_implicit", mode.implicitly},
             {"$cohesiveSurfaceTension", mode.cohesion}});
        P().Clear();
        AK_System::srand(3);
        const auto draw = [] { return AK_System::rand() / 2147483647.0; };
        for (int i = 0; i < 300; ++i)   // up to the very edges, where the grid ends
            P().AddParticle({1000 + 69.999 * draw(), 2000 + 49.999 * draw(), 0}, float(1000 + 100 * draw()),
                            {draw(), draw(), 0}, float(20000 * draw()), 0, -1);
        P().AddParticle(P().Position()._x[0], 900, {1, 0, 0}, 0, 0, -1);   // two at one point
        sim->UpdateFields(0);
        const std::vector<AK_Vec> x(P().Position()._x.begin(), P().Position()._x.end());
        const std::vector<AK_Vec> v(P().Velocity()._values.begin(), P().Velocity()._values.end());
        const std::vector<float> m(P().Mass()._values.begin(), P().Mass()._values.end());
        const std::vector<float> H(P().TotalEnthalpy()._values.begin(), P().TotalEnthalpy()._values.end());
        const std::vector<AK_Vec> force = LateralForceOfStep(1e-6);
        const AK_List<float>& h = P().depth;

        const double number = std::atof(mode.sphMode);
        const double r = number < 0 ? 10 / -number : 10 * number;
        const double D = std::atof(mode.diffusion), sigma = std::atof(mode.cohesion);
        const bool implicitly = mode.implicitly[0] != 0;
        const auto energy = [&](size_t i) { return H[i] - g * x[i].z - Dot(v[i], v[i]) / 2; };
        for (size_t i = 0; i < x.size(); ++i) {
            AK_Vec G, V;
            double W = 0, E = 0, scale = 0;
            for (size_t j = 0; j < x.size(); ++j) {
                const double dx = x[j].x - x[i].x, dy = x[j].y - x[i].y;
                const double d = std::max(std::hypot(dx, dy), 0.001 * r);
                if (j == i || d >= r) continue;
                const double slope = -30 / (M_PI * std::pow(r, 5)) * std::pow(r - d, 2) * m[j] / d;
                G += AK_Vec{dx, dy, 0} * slope;
                scale += std::fabs(slope) * d;
                const double weight = (Length(v[i]) + Length(v[j])) / 2 * (h[int(i)] + h[int(j)]) / 2 * m[j] * (r - d) *
                                      60 / (M_PI * std::pow(r, 5));
                V += (implicitly ? v[j] : v[j] - v[i]) * weight;
                E += (implicitly ? energy(j) : energy(j) - energy(i)) * weight;
                W += weight;
            }
            const double S = m[i] / (h[int(i)] * rho);
            const AK_Vec wanted = G * (m[i] * g / rho) + G * (sigma * S / rho) + V * (S * D);
            EXPECT_NEAR(Length(force[i] - wanted), 0, 1e-7 * (m[i] * g * (1 + scale / rho) + S * D * W)) << i;
            EXPECT_NEAR(drag[i], implicitly ? W * S * D : 0, 1e-6 * (W * S * D + P().dragCoefficient[int(i)])) << i;
            EXPECT_NEAR(heatSource[i], E * S * D, 1e-6 * S * D * W * 2e4 + 1e-30) << i;
            EXPECT_NEAR(heatDiffusion[i], implicitly ? W * S * D : 0, 1e-6 * W * S * D + 1e-30) << i;
        }
    }
}

TEST_F(LateralForces, SphForcesOfAnEvenLayerCancel)
{
    OnMesh(20, 20, 5, Flat);
    Set({{"SphMode", "2"}});
    for (int i = 0; i < 40; ++i)
        for (int j = 0; j < 40; ++j) P().AddParticle({1.25 + 2.5 * i, 1.25 + 2.5 * j, 0}, 1000, {}, 0, 0, -1);
    sim->UpdateFields(0);
    const std::vector<AK_Vec> force = LateralForceOfStep(0.01);
    double sum = 0;
    for (int i = 8; i < 32; ++i)
        for (int j = 8; j < 32; ++j) sum = std::max(sum, Length(force[size_t(40 * i + j)]));
    EXPECT_LT(sum, 1e-9 * 1000 * g);   // the pairs cancel but for rounding
    EXPECT_GT(Length(force[0]), 1);    // at the rim they do not
}

TEST_F(LateralForces, SphTellsOfItsParticlesWhenAsked)
{
    OnMesh(6, 6, 10, Flat);
    Set({{"SphMode", "1"}, {"$sph_verbose", "2"}, {"$n_threads", "2"}});
    PlaceParticle({25, 35}, 4000);
    Messages();
    LateralForceOfStep(0.1);
    std::string all;
    for (const std::string& text : Messages()) all += text + "\n";
    for (const char* text :
         {"SPH kernel radius 10\n", "1 SPH particles, location grid size 10 origin 0 0 cells 7 x 7\n",
          "SPH location grid in ", "body forces ", "SPH particle 1 at 25 35 1000 i 2 j 3 grad_h 0 0 0\n",
          "lateral forces ", " clocks), 0 neighs/particle\n", "position update ", "particles removal/splitting ",
          "field update ", "timestep total "})
        EXPECT_NE(all.find(text), std::string::npos) << text << " in\n" << all;
}
