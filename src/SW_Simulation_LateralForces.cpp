// The second phase of a step: what the flow around a column does to it. Two ways to find it:
//
// Column sampling (SphMode 0). The column is a box of width w along and across its motion. The pressure on each of its
// four sides comes from the fields on the mesh, half a width away; the earth pressure coefficient k tells how much of
// the pressure on the bed acts sideways. Snow that is pushed together resists (passive), snow that is drawn out gives
// way (active): Savage and Hutter (1989), with the friction ratio that the column has found in this step.
//
//              C                 e1: along the motion, e2: across it
//          +---+---+
//        A |   o-->| B  e1       force = e1 (F_A - F_B) + e2 (F_C - F_D)
//          +---+---+
//              D
//
// SPH. The gradient of the flow depth is the sum over the neighbours within the radius r of mass times the gradient of
// the kernel 10 / (pi r^5) (r - d)^3, in plan. Neighbours come from a grid of cells of at least r: the cells of one of
// its rows lie side by side in `sorted`, so that three ranges hold all candidates. Neighbours are also what momentum
// and heat diffuse to.

#include "SW_Simulation.h"

#include "SW_Simulation_Phase.h"

#include <algorithm>

// ----------------------------------------------------------------------------------------------------------------
// Column sampling
// ----------------------------------------------------------------------------------------------------------------

static constexpr double standsStill = 1e-12;   // m2/s2: below it a velocity has no direction

// The horizontal or vertical axis that the normal leans to least, crossed with it: some direction in the surface.
static AK_Vec AnyDirection(const AK_Vec& n)
{
    AK_Vec axis = std::fabs(n.y) < std::fabs(n.x) ? AK_Vec{0, 1, 0} : AK_Vec{1, 0, 0};
    if (std::fabs(n.z) < std::fabs(Dot(n, axis))) axis = {0, 0, 1};
    return Cross(n, axis);
}

namespace {

/// Half a column's width away from its centre.
struct Side {
    AK_Vec velocity;   // m/s of the flow
    float pressure;    // Pa on the bed
    float depth;       // m
};

/// Earth pressure coefficients along and across the motion.
struct EarthPressure {
    float along = 1, across = 1;
};

template <class View>
struct ColumnSampling {
    const SW_SimulationPhase& phase;
    const View& terrain;
    double dt;                 // s
    double cos2Phi, tan2Phi;   // of the internal friction angle

    void Act(int i) const;
    AK_Vec Direction(int i, const AK_Vec& normal) const;
    Side SideAt(int cell, AK_Vec2 p) const;
    EarthPressure Coefficients(int i, double stretchAlong, double stretchAcross) const;
};

}   // namespace

template <class View>
AK_Vec ColumnSampling<View>::Direction(int i, const AK_Vec& normal) const
{
    AK_Vec d = phase.velocity[i];
    if (Dot(d, d) <= standsStill) d = d + phase.force[i] * (dt / double(phase.mass[i]));
    if (Dot(d, d) <= standsStill) d = AnyDirection(normal);
    return Normalized(d);
}

template <class View>
Side ColumnSampling<View>::SideAt(int cell, AK_Vec2 p) const
{
    double weights[4];
    terrain.GetWeights(cell, p, weights);   // in the column's own cell: a side may lie outside it
    const IA4& c = phase.cells[cell];
    return {InterpolatedVectorIn(c, weights, phase.flowVelocity),
            InterpolatedScalarIn(c, weights, phase.bottomPressure), InterpolatedScalarIn(c, weights, phase.flowDepth)};
}

// stretch [m/s]: by how much the flow at the far side is faster than at the near one. A flow that hardly deforms, by
// less than a hundredth of its speed, has the coefficient 1.
template <class View>
EarthPressure ColumnSampling<View>::Coefficients(int i, double stretchAlong, double stretchAcross) const
{
    static constexpr double noInternalFriction = 0.1;   // degrees
    static constexpr double hardlyDeforms = 0.01;
    EarthPressure k;
    if (!(phase.internalFrictionAngle > noInternalFriction)) return k;
    const double threshold = hardlyDeforms * Length(phase.velocity[i]);   // m/s
    const double ratio = double(phase.shearRatio[i]);
    double ratio2 = ratio * ratio;
    double root = 0;
    const double yield = (ratio2 + 1) * cos2Phi;
    if (yield < 1)
        root = std::sqrt(1 - yield);
    else   // the bed is rougher than the snow is strong: it yields inside first
        ratio2 = tan2Phi;
    if (threshold <= std::fabs(stretchAlong)) {
        const double sign = stretchAlong <= 0 ? 1 : -1;   // passive, active
        k.along = float(2 * (1 + sign * root) / cos2Phi - 1);
    }
    if (threshold <= std::fabs(stretchAcross)) {
        const double kx = double(k.along);
        const double q = std::sqrt((1 - kx) * (1 - kx) + 4 * ratio2);
        k.across = float(stretchAcross <= 0 ? (kx + 1 + q) / 2 : (kx + 1 - q) / 2);
    }
    return k;
}

template <class View>
void ColumnSampling<View>::Act(int i) const
{
    if (phase.IsHeld(i)) return;
    const int cell = phase.cell[i];
    const AK_Vec2 p = phase.position[i];
    double weights[4];
    terrain.GetWeights(cell, p, weights);
    const AK_Vec normal = phase.UnitNormal(cell, weights);
    const AK_Vec e1 = Direction(i, normal);
    const AK_Vec e2 = Normalized(Cross(normal, e1));
    const float depth = std::max(float(phase.FlowDepth(cell, weights)), float(SW_Simulation::depMin));   // m
    const float width = float(std::sqrt(double(phase.mass[i]) / phase.density / double(depth)));         // m
    const double half = double(width) / 2;                                                               // m
    const Side a = SideAt(cell, p - AK_Vec2(e1) * half);
    const Side b = SideAt(cell, p + AK_Vec2(e1) * half);
    const Side c = SideAt(cell, p - AK_Vec2(e2) * half);
    const Side d = SideAt(cell, p + AK_Vec2(e2) * half);
    const EarthPressure k = Coefficients(i, Dot(b.velocity - a.velocity, e1), Dot(d.velocity - c.velocity, e2));

    // N: the pressure grows with the depth below the surface, hence its half.
    const auto sideForce = [width](float coefficient, const Side& side) {
        return double(coefficient * side.pressure) * 0.5 * double(side.depth) * double(width);
    };
    AK_Vec force = phase.force[i];
    force += e1 * sideForce(k.along, a);
    force -= e1 * sideForce(k.along, b);
    force += e2 * sideForce(k.across, c);
    force -= e2 * sideForce(k.across, d);
    phase.force[i] = force;
}

// ----------------------------------------------------------------------------------------------------------------
// SPH
// ----------------------------------------------------------------------------------------------------------------

namespace {

enum class Diffusion { none, explicitly, implicitly };

/// What diffuses to a particle from its neighbours, each a sum over them.
struct Exchange {
    AK_Vec velocity;       // sum of weight * velocity, or of its difference
    double energy = 0;     // the same of the internal energy
    double momentum = 0;   // sum of the weights: the implicit part for the velocity
    double heat = 0;       // ... and for the energy
};

struct Sph {
    const SW_SimulationPhase& phase;
    const SW_LocationGrid grid;
    const int* counts;   // cell -> its first entry in `sorted`
    const int* sorted;   // particles
    double r;            // m: radius of the kernel
    double gradCoefficient, lapCoefficient;

    template <Diffusion diffusion>
    void Act(int i, bool report) const;
    template <Diffusion diffusion>
    void Visit(int i, AK_Vec2& gradient, Exchange& exchange) const;
    template <Diffusion diffusion>
    void Exchanged(int i, int j, double gap, Exchange& exchange) const;
    void Report(int i, const AK_Vec& gradient) const;
};

}   // namespace

static double InternalEnergy(const SW_SimulationPhase& phase, int i)
{
    return SW_InternalEnergy(double(phase.enthalpy[i]), phase.position[i], phase.velocity[i]);
}

// The viscosity of the flow is the mean speed times the mean depth, times the coefficient that is applied later.
template <Diffusion diffusion>
void Sph::Exchanged(int i, int j, double gap, Exchange& exchange) const
{
    const double laplacian = gap * lapCoefficient;                                      // 1/m4
    const double speed = (Length(phase.velocity[j]) + Length(phase.velocity[i])) / 2;   // m/s
    const double depth = (double(phase.depth[i]) + double(phase.depth[j])) / 2;         // m
    const double weight = speed * depth * double(phase.mass[j]) * laplacian;
    const double energy = InternalEnergy(phase, j);   // J/kg
    if constexpr (diffusion == Diffusion::implicitly) {
        exchange.velocity += phase.velocity[j] * weight;
        exchange.momentum += weight;
        exchange.energy += energy * weight;
        exchange.heat += weight;
    } else {
        exchange.velocity += (phase.velocity[j] - phase.velocity[i]) * weight;
        exchange.energy += weight * (energy - InternalEnergy(phase, i));
    }
}

template <Diffusion diffusion>
void Sph::Visit(int i, AK_Vec2& gradient, Exchange& exchange) const
{
    static constexpr double closest = 0.001;   // of r: particles at one point
    const AK_Vec2 p = phase.position[i];
    const double minDistance = closest * r;
    const int ix = grid.ColumnOf(p.x);
    const int iy = grid.RowOf(p.y);
    const int firstColumn = std::max(ix - 1, 0);
    const int lastColumn = std::min(ix + 1, grid.nx - 1);
    const int lastRow = std::min(iy + 1, grid.ny - 1);
    for (int row = std::max(iy - 1, 0); row <= lastRow; ++row) {
        const int end = counts[row * grid.nx + lastColumn + 1];
        for (int entry = counts[row * grid.nx + firstColumn]; entry < end; ++entry) {
            const int j = sorted[entry];
            const double dx = phase.position[j].x - p.x;   // m
            const double dy = phase.position[j].y - p.y;   // m
            const double d = std::max(std::sqrt(dx * dx + dy * dy), minDistance);
            if (!(d < r) || j == i) continue;
            const double gap = r - d;                                                     // m
            const double slope = gradCoefficient * (gap * gap) * double(phase.mass[j]);   // kg/m3
            const double slopePerLength = slope / d;                                      // kg/m4
            gradient.x += dx * slopePerLength;
            gradient.y += dy * slopePerLength;
            if constexpr (diffusion != Diffusion::none) Exchanged<diffusion>(i, j, gap, exchange);
        }
    }
}

// For whoever looks into the method: with "$sph_verbose" above 1, every thousandth particle.
void Sph::Report(int i, const AK_Vec& gradient) const
{
    const AK_Vec& p = phase.position[i];
    AK_MSG("SPH particle " << i + 1 << " at " << p.x << " " << p.y << " " << p.z << " i "
                           << grid.ColumnOf(p.x) << " j " << grid.RowOf(p.y) << " grad_h " << gradient.x << " "
                           << gradient.y << " " << gradient.z);
}

template <Diffusion diffusion>
void Sph::Act(int i, bool report) const
{
    if (phase.IsHeld(i)) return;
    AK_Vec2 sum;   // kg/m3
    Exchange exchange;
    Visit<diffusion>(i, sum, exchange);
    const double m = double(phase.mass[i]);
    const double rho = phase.density;
    const AK_Vec gradient{sum.x / rho, sum.y / rho, 0};   // negative gradient of the flow depth
    if (report) Report(i, gradient);
    AK_Vec force = phase.force[i];
    force -= gradient * (m * SW_Simulation::gravAcc.z);
    const double base = m / (double(phase.depth[i]) * rho);   // m2
    if (phase.variables.cohesiveSurfaceTension > 0) force += gradient * (phase.variables.cohesiveSurfaceTension * base);
    if constexpr (diffusion != Diffusion::none) {
        const double scale = base * phase.variables.sphDiffusionCoefficient;
        force += exchange.velocity * scale;
        phase.dragCoefficient[i] += float(exchange.momentum * scale);
        phase.enthalpySource[i] = float(exchange.energy * scale);
        phase.enthalpyDiffusion[i] = float(scale * exchange.heat);
    }
    phase.force[i] = force;
}

// ----------------------------------------------------------------------------------------------------------------
// The phase
// ----------------------------------------------------------------------------------------------------------------

template <Diffusion diffusion>
static void ActOnRange(const Sph& sph, int first, int end, bool report)
{
    static constexpr int reportEvery = 1000;
    for (int i = first; i < end; ++i) sph.Act<diffusion>(i, report && i % reportEvery == 0);
}

void ComputeLateralForces(SW_Simulation* sim, int first, int end, double dt, double cos2Phi, double tan2Phi,
                          int sphMode, double r, double gradCoefficient, double lapCoefficient, int nx, AK_Vec2 origin,
                          double gridSize, const AK_List<int>* counts, const AK_List<int>* sorted, int verbose)
{
    const SW_SimulationPhase phase(*sim);
    if (sphMode == 0) {
        sim->Mesh()->WithView([&](const auto& view) {
            const ColumnSampling<std::decay_t<decltype(view)>> sampling{phase, view, dt, cos2Phi, tan2Phi};
            for (int i = first; i < end; ++i) sampling.Act(i);
        });
        return;
    }
    const SW_LocationGrid grid{origin, gridSize, nx, (counts->Size() - 1) / nx};
    const Sph sph{phase, grid, counts->Data(), sorted->Data(), r, gradCoefficient, lapCoefficient};
    const bool report = verbose > 1;
    if (!(phase.variables.sphDiffusionCoefficient > 0))
        ActOnRange<Diffusion::none>(sph, first, end, report);
    else if (phase.variables.sphDiffusionImplicit)
        ActOnRange<Diffusion::implicitly>(sph, first, end, report);
    else
        ActOnRange<Diffusion::explicitly>(sph, first, end, report);
}
