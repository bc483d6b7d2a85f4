// The first phase of a step: what acts on a column by itself.
//
//         v        The column of depth h stands on the bed, gravity g and the turning of the bed along its path press
//   __   -->       it down with the acceleration pn. What is left of gravity drives it along the bed; friction, the
//  |  |            shear stress tau at its foot, and obstacles brake it. Both brakes are kept as a drag coefficient,
//  |__| h          since the position update applies them implicitly.
//  ====  tau, pn   A moving column sweeps over the snow at its foot and takes a part of it along.
//
// The depth comes from the field of the step before. Friction: Chezy, Coulomb and their sum (Voellmy 1955). The law
// "korvoAT" brings its own constants; in the wet snow law the Coulomb part falls as the internal energy rises.

#include "SW_Simulation.h"

#include "SW_ResistanceArea.h"
#include "SW_Simulation_Phase.h"
#include "qvt_sci.h"

#include <algorithm>

namespace {

/// One particle on its way through the phase.
struct Column {
    int cell;                    // at the start of the step
    AK_Vec position;             // m
    AK_Vec velocity;             // m/s
    float mass;                  // kg
    float enthalpy;              // J/kg
    double depth;                // m
    AK_Vec normal;               // unit: mean of those at both ends of the step
    double normalAcceleration;   // m/s2: presses the column on the bed; below 0 it has lost contact
    double speed;                // m/s, as friction feels it
    double pressure;             // Pa on the bed
    double shearStress;          // Pa on the bed
};

template <class View>
struct BodyForces {
    const SW_SimulationPhase& phase;
    const View& terrain;
    double t, dt;      // s
    double tanDelta;   // Coulomb coefficient
    int law;           // SW_FrictionLaw

    void Act(int i) const;
    void MixWithFlow(Column& column, const double* weights, const AK_Vec& normal) const;
    void PressOnBed(Column& column, const AK_Vec& normal) const;
    double Speed(const Column& column, const AK_Vec& tangentialGravity) const;
    double ShearStress(const Column& column) const;
    double KorvoATStress(const Column& column) const;
    double FormulaStress(const Column& column) const;
    float Entrain(Column& column) const;
    double EntrainmentLoss(const Column& column, double entrained, double sweptArea) const;
    float ResistanceDrag(const Column& column) const;
};

}   // namespace

// ----------------------------------------------------------------------------------------------------------------
// Motion of the column and its weight on the bed
// ----------------------------------------------------------------------------------------------------------------

// Columns are finer than the mesh: their velocities relax towards that of the flow around them, the more the larger
// the difference is.
template <class View>
void BodyForces<View>::MixWithFlow(Column& column, const double* weights, const AK_Vec& normal) const
{
    const double rho = phase.density;
    const double m = double(column.mass);
    const AK_Vec flow =
        SW_Tangential(InterpolatedVectorIn(phase.cells[column.cell], weights, phase.flowVelocity), normal);   // m/s
    const double difference = Length(flow - column.velocity);                                                 // m/s
    const double stressFactor = phase.subgridMixingFactor * 0.5 * rho;                                        // kg/m3
    const double sideArea = 2 * std::sqrt(m * column.depth / rho);                                            // m2/m
    const double mixing = difference * stressFactor * sideArea * dt / m;
    column.velocity = (column.velocity + flow * mixing) * (1 / (1 + mixing));
}

// The turning of the normal along the path is the curvature that the column feels.
template <class View>
void BodyForces<View>::PressOnBed(Column& column, const AK_Vec& normal) const
{
    const AK_Vec ahead = column.position + column.velocity * dt;   // m
    int cellAhead = CellContainingPointIterativeIn(terrain, ahead, column.cell, nullptr);
    if (cellAhead < 0) cellAhead = column.cell;
    double weights[4];
    terrain.GetWeights(cellAhead, ahead, weights);
    const AK_Vec normalAhead = phase.UnitNormal(cellAhead, weights);
    column.normal = Normalized(normal + normalAhead);
    const double gravity = -Dot(SW_Simulation::gravAcc, column.normal);            // m/s2
    const double centrifugal = -Dot(normalAhead - normal, column.velocity) / dt;   // m/s2
    column.normalAcceleration = gravity + phase.curvatureReductionFactor * centrifugal;
}

template <class View>
double BodyForces<View>::Speed(const Column& column, const AK_Vec& tangentialGravity) const
{
    const double now = Length(column.velocity);   // m/s
    if (!phase.variables.v2017) return now;
    const double atEnd = Length(column.velocity + tangentialGravity * dt);
    return std::max((atEnd + now) / 2, SW_Simulation::velMagMin);
}

// ----------------------------------------------------------------------------------------------------------------
// Friction
// ----------------------------------------------------------------------------------------------------------------

template <class View>
double BodyForces<View>::KorvoATStress(const Column& column) const
{
    static constexpr double coulomb = 0.155;
    static constexpr double suspension = 0.222;   // of the ratio of dynamic pressure to weight
    static constexpr double roughness = 0.05;     // m
    static constexpr double karman = 0.43;
    static constexpr double smallest = 4.13;                              // of the logarithmic profile
    static constexpr double pressureFloor = 0.001;                        // Pa; a column without weight divides by this
    const double dynamic = phase.density * column.speed * column.speed;   // Pa
    const double ratio = dynamic / (column.pressure + pressureFloor);
    const double profile = std::log(std::max(column.depth / roughness, 1.0)) / karman + smallest;
    return column.pressure * coulomb * (suspension / (ratio + suspension) + 1.0) + dynamic / (profile * profile);
}

template <class View>
double BodyForces<View>::FormulaStress(const Column& column) const
{
    double p = column.pressure;   // Pa
    double u = column.speed;      // m/s
    double h = column.depth;      // m
    double rho = phase.density;   // kg/m3
    double time = t;              // s
    AK_Vec position = column.position;
    AK_Vec normal = column.normal;
    double e = double(column.enthalpy) + SW_Simulation::gravAcc.z * position.z - u * u / 2;   // J/kg
    const SW_FrictionFormulas& f = phase.formulas;
    if (f.tau) return qvt_sci_AsDouble(qvt_sci_Call(f.tau, &p, &u, &h, &rho, &time, &position.x, &normal.x, &e));
    return f.shear ? qvt_sci_AsDouble(qvt_sci_Call(f.shear, &p, &u, &h, &rho)) : 0.0;
}

template <class View>
double BodyForces<View>::ShearStress(const Column& column) const
{
    static constexpr double wetSnowEnergy = 20000;   // J/kg: over which the Coulomb part falls to its e-th part
    const double rho = phase.density;
    const double h = column.depth;
    const double pn = column.normalAcceleration;
    const double chezy = phase.dynamicFrictionCoefficient * column.speed * column.speed / h;   // m/s2
    switch (law) {
    case frictionChezy: return rho * h * chezy;
    case frictionChezyMohrCoulomb: return rho * h * (pn * tanDelta + chezy);
    case frictionClassic: return rho * h * tanDelta * std::max(chezy, pn);
    case frictionKorvoAT: return KorvoATStress(column);
    case frictionWetSnow: {
        const double e = SW_InternalEnergy(double(column.enthalpy), column.position, column.velocity);   // J/kg
        return (std::exp(-e / wetSnowEnergy) * tanDelta * pn + chezy) * h * rho;
    }
    default: return FormulaStress(column);
    }
}

// ----------------------------------------------------------------------------------------------------------------
// Entrainment
// ----------------------------------------------------------------------------------------------------------------

// J: what tearing the snow off and breaking it up costs.
template <class View>
double BodyForces<View>::EntrainmentLoss(const Column& column, double entrained, double sweptArea) const
{
    double perArea = phase.entrainmentShearResistance;         // J/m2
    double perMass = phase.entrainmentDeformationResistance;   // J/kg
    Symbol* const formula = phase.formulas.entrainment_energy_loss;
    if (!formula) return sweptArea * perArea + entrained * perMass;
    double p = column.pressure, u = column.speed, h = column.depth, rho = phase.density, time = t;
    double tau = column.shearStress;
    double entrainedPerArea = entrained / sweptArea;   // kg/m2
    AK_Vec position = column.position;
    AK_Vec normal = column.normal;
    return sweptArea * qvt_sci_AsDouble(qvt_sci_Call(formula, &p, &u, &h, &rho, &time, &position.x, &normal.x, &tau,
                                                     &entrainedPerArea, &perArea, &perMass));
}

// The snow arrives at rest, with its own heat and the potential energy of its height. Returns its mass, kg.
template <class View>
float BodyForces<View>::Entrain(Column& column) const
{
    static constexpr double restEnergy = 1e-06;   // m2/s2: guards the division by the kinetic energy
    const double store = double(phase.entrainmentMass[column.cell]);   // kg/m2
    if (!(store > 0)) return 0;
    const double rho = phase.density;
    const double h = column.depth;
    const double m = double(column.mass);
    const double width = std::sqrt(m / rho / h);          // m
    const double sweptArea = width * column.speed * dt;   // m2
    const double erosionEnergy = phase.entrainmentErosionEnergy;
    const double entrained =
        erosionEnergy <= 0 ? store * sweptArea : m / (h * rho) * column.shearStress * column.speed * dt / erosionEnergy;
    if (std::isnan(entrained)) return 0;   // the terrain has no height here: the column is lost, its mass is known yet
    const double loss = EntrainmentLoss(column, entrained, sweptArea);   // J

    const double snowEnergy =
        double(phase.entrainmentEnthalpy[column.cell]) - SW_Simulation::gravAcc.z * column.position.z;   // J/kg
    const double energy = m * double(column.enthalpy) + snowEnergy * entrained;                          // J
    column.velocity *= m / (entrained + m);
    column.mass = float(m + entrained);
    const double newMass = double(column.mass);
    if (loss > 0) {
        const double kinetic = newMass * 0.5 * (Dot(column.velocity, column.velocity) + restEnergy);   // J
        column.velocity *= std::sqrt(std::max(1 - loss / kinetic, 0.0));
    }
    column.enthalpy = float(energy / newMass);
    return float(entrained);
}

// ----------------------------------------------------------------------------------------------------------------
// Resistance
// ----------------------------------------------------------------------------------------------------------------

// kg/s: the drag of the obstacles in the column's way, as far up as the flow reaches on them.
template <class View>
float BodyForces<View>::ResistanceDrag(const Column& column) const
{
    const SW_ResistanceArea* const area = phase.resistances ? phase.resistances[column.cell] : nullptr;
    if (!area) return 0;
    const double rho = phase.density;
    const double spacing = area->Spacing();                                                                  // m
    const float height = std::min(float(area->Height()), float(column.depth));                               // m
    const float frontPerArea = float(area->Width() * area->ResistanceCoefficient() / (spacing * spacing));   // 1/m
    const float base = float(double(column.mass) / rho / column.depth);                                      // m2
    const double dragPerSpeed = double(frontPerArea * height * base) * rho * 0.5;                            // kg/m
    return float(Length(column.velocity) * dragPerSpeed);
}

// ----------------------------------------------------------------------------------------------------------------
// The phase
// ----------------------------------------------------------------------------------------------------------------

template <class View>
void BodyForces<View>::Act(int i) const
{
    phase.force[i] = AK_Vec();
    phase.depth[i] = phase.dragCoefficient[i] = phase.shearRatio[i] = phase.bottomForce[i] = 0;
    phase.entrainedMass[i] = phase.enthalpySource[i] = phase.enthalpyDiffusion[i] = 0;
    if (phase.IsHeld(i)) return;

    Column column;
    column.cell = phase.cell[i];
    column.position = phase.position[i];
    column.velocity = phase.velocity[i];
    column.mass = phase.mass[i];
    column.enthalpy = phase.enthalpy[i];
    double weights[4];
    terrain.GetWeights(column.cell, column.position, weights);
    const AK_Vec normal = phase.UnitNormal(column.cell, weights);
    column.depth = std::max(phase.FlowDepth(column.cell, weights), SW_Simulation::depMin);
    phase.depth[i] = float(column.depth);
    MixWithFlow(column, weights, normal);
    PressOnBed(column, normal);

    const double m = double(column.mass);
    const double pn = column.normalAcceleration;
    if (pn > 0) phase.bottomForce[i] = float(m * pn);
    const double gravity = -Dot(SW_Simulation::gravAcc, column.normal);                  // m/s2
    const AK_Vec tangentialGravity = SW_Simulation::gravAcc + column.normal * gravity;   // m/s2
    phase.force[i] = tangentialGravity * m;

    column.speed = Speed(column, tangentialGravity);
    column.pressure = pn * phase.density * column.depth;
    column.shearStress = 0;
    if (!(pn < 0)) {
        column.shearStress = ShearStress(column);
        const double base = m / (column.depth * phase.density);                  // m2
        const double speed = std::max(column.speed, SW_Simulation::velMagMin);   // m/s; at rest it divides by this
        phase.dragCoefficient[i] = float(base * column.shearStress / speed);
        phase.shearRatio[i] = float(column.shearStress / column.pressure);
    }
    phase.entrainedMass[i] = Entrain(column);
    phase.dragCoefficient[i] += ResistanceDrag(column);

    phase.velocity[i] = column.velocity;
    phase.mass[i] = column.mass;
    phase.enthalpy[i] = column.enthalpy;
}

void ComputeBodyForces(SW_Simulation* sim, int first, int end, double t, double dt, double tanDelta, int frictionIndex)
{
    const SW_SimulationPhase phase(*sim);
    sim->Mesh()->WithView([&](const auto& view) {
        const BodyForces<std::decay_t<decltype(view)>> forces{phase, view, t, dt, tanDelta, frictionIndex};
        for (int i = first; i < end; ++i) forces.Act(i);
    });
}
