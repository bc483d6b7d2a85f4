// Particles that flow in during a step, from source lines and from a point, and the splitting of heavy ones.
//
// The number of particles of a step is seldom whole: the rest is rounded at random with a seed from the time, so that a
// weak source adds one now and then, and the same ones in every run.

#include "SW_Simulation.h"

#include "SW_SourceLine.h"

#include <bit>
#include <cmath>
#include <cstdint>

static unsigned long SeedOfTime(double t) { return std::bit_cast<std::uint64_t>(t) & 0xFFFFFFFFu; }

namespace {

/// Adds particles of one mass, at rest in their heat (enthalpy 0) and free, and counts them.
struct Inflow {
    SW_Particles& particles;
    double massPerParticle;   // kg
    int count = 0;
    double mass = 0;   // kg, with that of particles which lie off the mesh

    /// The number of particles of a gain [kg]; none, with a warning, if there would be more than can be counted.
    int NumberOf(double gain) const
    {
        const int n = SW_Particles::RoundedAtRandom(gain / massPerParticle);
        if (n < INT_MAX / 2 - particles.NumParticles()) return n;
        AK_MSG("WARNING: a source of " << gain << " kg in one step gives too many particles of " << massPerParticle
                                       << " kg");
        return 0;
    }

    void Add(const AK_Vec& position, const AK_Vec& velocity)
    {
        static constexpr int anywhere = -1;
        static constexpr unsigned char isFree = 0;
        count += particles.AddParticle(position, float(massPerParticle), velocity, 0.0f, isFree, anywhere);
        mass += massPerParticle;
    }
};

}   // namespace

// The particles of a cell stand at equal fractions of the line's stretch in it.
static void AddFromLine(const SW_SourceLine& line, double t, double dt, Inflow& inflow)
{
    AK_System::srand(SeedOfTime(t));
    for (int j = 0; j < line.Cells().Size(); ++j) {
        const int n = inflow.NumberOf(double(line.MassGainInCell(j, float(dt))));
        for (int k = 0; k < n; ++k) inflow.Add(line.PositionInCell(j, float(double(k) / n)), AK_Vec());
    }
}

// Speed and direction in the surface at a point of a cell.
static AK_Vec SourceVelocity(const SW_PointSource& source, const SW_Mesh& mesh, int cell, const AK_Vec2& p)
{
    static constexpr AK_Vec north{0, 1, 0};
    const double angle = (90 - source.angle) * ak_pi / 180;        // counter-clockwise from east
    const double eastwards = std::cos(angle) * source.velocity;    // m/s
    const double northwards = std::sin(angle) * source.velocity;   // m/s
    double weights[4];
    mesh.GetWeights(cell, p, weights);
    const AK_Vec normal = Normalized(mesh.InterpolatedVector(cell, weights, mesh._vertexNormals));
    const AK_Vec east = Normalized(Cross(north, normal));
    return Normalized(Cross(normal, east)) * northwards + east * eastwards;
}

static void AddFromPoint(const SW_PointSource& source, const SW_Mesh& mesh, double t, double dt, Inflow& inflow)
{
    if (!(source.strength > 0) || !(t < source.duration)) return;
    AK_System::srand(SeedOfTime(t));
    const int n = inflow.NumberOf(source.strength * dt);
    int cell = -1;
    for (int k = 0; k < n; ++k) {
        const double distance = SW_Particles::Draw() * source.radius;   // m
        const double angle = 2 * SW_Particles::Draw() * ak_pi;
        const AK_Vec p{source.point.x + distance * std::cos(angle), source.point.y + distance * std::sin(angle), 0};
        cell = mesh.CellContainingPoint(p, cell);
        inflow.Add(p, cell < 0 ? AK_Vec() : SourceVelocity(source, mesh, cell, p));
    }
}

void SW_Simulation::AddParticlesFromSources(double t, double dt)
{
    Inflow inflow{*_particles, _parameters.massPerParticle};
    for (int i = _sourceLines->NumComponents() - 1; i >= 0; --i) AddFromLine(*_sourceLines->Line(i), t, dt, inflow);
    AddFromPoint(_stepVariables.source, *_mesh, t, dt, inflow);
    if (inflow.count > 0)
        AK_MSG("\teffective source mass flow " << inflow.mass / dt << ", absolute " << inflow.mass << ", "
                                               << inflow.count << " particles");
}

// From last to first, since the new ones are appended.
void SW_Simulation::SplitParticles()
{
    for (int i = _particles->NumParticles() - 1; i >= 0; --i) {
        const double parts = double(_particles->Mass()._values[i]) / _parameters.massPerParticle + 0.5;
        const bool canBeCounted = parts < INT_MAX / 2 - _particles->NumParticles();
        if (parts >= 2 && canBeCounted && _particles->cell[i] >= 0) _particles->SplitParticle(i, int(parts));
    }
}
