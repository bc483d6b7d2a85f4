// The third phase of a step: forces become motion.
//
// The velocity takes up the force, then the drag implicitly; the position follows by the mean of old and new velocity
// and is laid back on the surface, which turns the velocity into it. At a break line the part of the speed along the
// normal is lost, elsewhere the speed is kept. What has crossed the foot of a wall is thrown back at its face:
//
//              crown               wn: normal of the face, through the crown and the point r, which is half the
//             /|                   flow's depth above the foot
//      r --> x |     p0: before    A particle may then climb the wall: at most with the speed that reaches the crown.
//           /  |     p: after
//   -p0----foot--p--

#include "SW_Simulation.h"

#include "SW_Simulation_Phase.h"
#include "SW_WallLine.h"

#include <algorithm>

namespace {

template <class View>
struct Motion {
    const SW_SimulationPhase& phase;
    const View& terrain;
    double dt;         // s
    double cosBreak;   // of the angle between cells that makes a break line; -1: there are none
    const unsigned char* wallCells;

    void Act(int i) const;
    void Move(int i, const SW_WallLine* wall) const;
    bool KeepsSpeed(double speed, int oldCell, int newCell) const;
    void UpdateEnthalpy(int i) const;
    void Reflect(int i, const AK_Vec& before, const SW_WallLine& wall) const;
    bool FaceNormal(int cellOfFoot, AK_Vec& foot, const AK_Vec& crown, const AK_Vec& tangent, AK_Vec& faceNormal) const;
};

}   // namespace

// The vector with another length; one of no length stays.
static AK_Vec WithLength(const AK_Vec& v, double length)
{
    const double now = Length(v);
    return now > 0 ? v * (length / now) : v;
}

// False for a position or velocity that is no number, as terrain without a height makes them.
static bool IsFinite(const AK_Vec& position, const AK_Vec& velocity)
{
    return std::isfinite(position.x + position.y + position.z + velocity.x + velocity.y + velocity.z);
}

template <class View>
bool Motion<View>::KeepsSpeed(double speed, int oldCell, int newCell) const
{
    if (!(speed > 0)) return false;
    if (cosBreak <= -1) return true;
    const AK_Vec before = Normalized(AreaVector(phase.cells[oldCell], phase.vertices));
    const AK_Vec after = Normalized(AreaVector(phase.cells[newCell], phase.vertices));
    return Dot(before, after) > cosBreak;
}

// Heat that has diffused, its own part implicitly.
template <class View>
void Motion<View>::UpdateEnthalpy(int i) const
{
    const double m = double(phase.mass[i]);                                         // kg
    const double h = double(phase.enthalpy[i]);                                     // J/kg
    const double source = double(phase.enthalpySource[i]);                          // W
    const double diffusion = double(phase.enthalpyDiffusion[i]);                    // kg/s
    const double e = SW_InternalEnergy(h, phase.position[i], phase.velocity[i]);    // J/kg
    const double gain = (source - e * diffusion) * dt / (diffusion * dt / m + 1);   // J
    phase.enthalpy[i] = float(gain / m + h);
}

// ----------------------------------------------------------------------------------------------------------------
// Walls
// ----------------------------------------------------------------------------------------------------------------

// Lays the foot on the surface and finds the normal of the wall's face above it.
template <class View>
bool Motion<View>::FaceNormal(int hint, AK_Vec& foot, const AK_Vec& crown, const AK_Vec& tangent,
                              AK_Vec& faceNormal) const
{
    static constexpr double steepest = 0.01;   // of the normal's z: guards the division
    const int cell = terrain.CellContainingPoint(foot, hint);
    if (cell < 0) return false;
    double weights[4];
    terrain.GetWeights(cell, foot, weights);
    foot = phase.SurfacePoint(cell, weights);
    const double depth = phase.FlowDepth(cell, weights);                                   // m
    const double verticalDepth = depth / (phase.UnitNormal(cell, weights).z + steepest);   // m
    const AK_Vec halfUp{foot.x, foot.y, foot.z + 0.5 * verticalDepth};
    faceNormal = Normalized(Cross(crown - halfUp, tangent));
    return true;
}

// The velocity of a particle that climbs the face: slower by no more than it takes to reach the crown.
static AK_Vec Climb(const AK_Vec& velocity, const AK_Vec& normal, const AK_Vec& tangent, const AK_Vec& footToCrown)
{
    const double energy = Dot(footToCrown, SW_Simulation::gravAcc);   // m2/s2, below 0: the crown stands above the foot
    if (!(energy < 0)) return velocity;
    const AK_Vec upwards = Normalized(Cross(normal, tangent));
    const double climbed = std::min(-Dot(upwards, velocity), std::sqrt(-2 * energy));   // m/s
    if (!(climbed > 0)) return velocity;
    const AK_Vec slowed = velocity + upwards * climbed;
    return WithLength(SW_Tangential(slowed, normal), Length(slowed));
}

template <class View>
void Motion<View>::Reflect(int i, const AK_Vec& before, const SW_WallLine& wall) const
{
    AK_Vec foot, crown, tangent, faceNormal;
    if (!wall.GetIntersection(before, phase.position[i], foot, crown, tangent)) return;
    if (!FaceNormal(phase.cell[i], foot, crown, tangent, faceNormal)) return;
    const double bounce = 1 + phase.restitutionCoefficient;
    const double back = Dot(phase.position[i] - foot, faceNormal) * bounce;   // m
    const AK_Vec2 plan(before.x - faceNormal.x * back, before.y - faceNormal.y * back);
    const int cell = terrain.CellContainingPoint(plan, phase.cell[i]);
    phase.cell[i] = cell;
    if (cell < 0) return;
    double weights[4];
    terrain.GetWeights(cell, plan, weights);
    phase.position[i] = phase.SurfacePoint(cell, weights);
    const AK_Vec normal = phase.UnitNormal(cell, weights);
    const AK_Vec reflected = phase.velocity[i] - faceNormal * (Dot(phase.velocity[i], faceNormal) * bounce);
    const AK_Vec along = WithLength(SW_Tangential(reflected, normal), Length(reflected));
    phase.velocity[i] = Climb(along, normal, tangent, crown - foot);
}

// ----------------------------------------------------------------------------------------------------------------
// The phase
// ----------------------------------------------------------------------------------------------------------------

template <class View>
void Motion<View>::Move(int i, const SW_WallLine* wall) const
{
    static constexpr double atRest = 1e-06;   // m/s: guards the division by the speed
    const int oldCell = phase.cell[i];
    const double m = double(phase.mass[i]);   // kg
    const double damping = double(phase.dragCoefficient[i]) * dt / m + 1;
    const AK_Vec oldVelocity = phase.velocity[i];                                  // m/s
    AK_Vec velocity = (oldVelocity + phase.force[i] * (dt / m)) * (1 / damping);   // m/s
    AK_Vec position = phase.position[i] + (oldVelocity + velocity) * (dt / 2);     // m
    double weights[4];
    const int cell = CellContainingPointIterativeIn(terrain, position, oldCell, weights);
    phase.cell[i] = cell;
    if (cell >= 0) {
        position = phase.SurfacePoint(cell, weights);
        const double speed = Length(velocity);
        velocity = SW_Tangential(velocity, phase.UnitNormal(cell, weights));
        const bool wallStands = !wall || wall->IsActive();
        if (wallStands && KeepsSpeed(speed, oldCell, cell)) velocity *= speed / (Length(velocity) + atRest);
    }
    phase.position[i] = position;
    phase.velocity[i] = velocity;
}

template <class View>
void Motion<View>::Act(int i) const
{
    if (phase.IsHeld(i)) {
        phase.velocity[i] = AK_Vec();
        return;
    }
    // That of the cell where the step began; the marks reach one cell beyond the wall.
    const int wallNumber = wallCells ? wallCells[phase.cell[i]] : 0;
    const SW_WallLine* const wall = wallNumber > 0 ? phase.walls->Wall(wallNumber - 1) : nullptr;
    const AK_Vec before = phase.position[i];
    Move(i, wall);
    if (phase.cell[i] < 0) return;
    UpdateEnthalpy(i);
    if (wall && wall->HasHeights() && wall->IsActive()) Reflect(i, before, *wall);
    if (!IsFinite(phase.position[i], phase.velocity[i])) phase.cell[i] = -1;
}

void UpdatePositions(SW_Simulation* sim, int first, int end, double dt, double cosBreak,
                     const AK_List<unsigned char>* wallCells)
{
    const SW_SimulationPhase phase(*sim);
    const unsigned char* const walls = wallCells->IsEmpty() ? nullptr : wallCells->Data();
    sim->Mesh()->WithView([&](const auto& view) {
        const Motion<std::decay_t<decltype(view)>> motion{phase, view, dt, cosBreak, walls};
        for (int i = first; i < end; ++i) motion.Act(i);
    });
}
