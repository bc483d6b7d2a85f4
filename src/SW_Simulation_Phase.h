// What the three phases of a time step share: the simulation as numbers and flat arrays. For SW_Simulation_* only.
//
// A phase takes this once, before its loop, and then knows no object: a worker reads fields on the mesh and its
// neighbours' entries, and writes the entries of its own particles. The mesh comes beside it as a view of its kind.

#pragma once

#include "SW_Simulation.h"

#include <cmath>

struct SW_SimulationPhase : SW_SimulationParameters {
    explicit SW_SimulationPhase(SW_Simulation& sim);

    SW_StepVariables variables;
    SW_FrictionFormulas formulas;
    const SW_WallLines* walls;

    // ---- terrain
    const IA4* cells;
    const AK_Vec* vertices;        // m
    const AK_Vec* vertexNormals;   // m2

    // ---- fields on vertices
    const float* flowDepth;        // m
    const AK_Vec* flowVelocity;    // m/s
    const float* bottomPressure;   // Pa

    // ---- on cells
    const float* entrainmentMass;                  // kg/m2
    const float* entrainmentEnthalpy;              // J/kg
    const SW_ResistanceArea* const* resistances;   // null if no cell has one

    // ---- particles
    int* cell;
    const unsigned char* tag;   // null if none is held
    AK_Vec* position;           // m
    AK_Vec* velocity;           // m/s
    float* mass;                // kg
    float* enthalpy;            // J/kg: thermal, potential and kinetic

    // ---- scratch of the step, see SW_Particles
    float* depth;
    float* dragCoefficient;
    AK_Vec* force;
    float* shearRatio;
    float* entrainedMass;
    float* enthalpySource;
    float* enthalpyDiffusion;
    float* bottomForce;

    /// Held particles of a secondary release area wait for the flow: the phases pass them by.
    bool IsHeld(int i) const { return tag && tag[i] != 0; }

    /// The unit normal of the surface, from those of the vertices.
    AK_Vec UnitNormal(int c, const double* weights) const
    {
        return Normalized(InterpolatedVectorIn(cells[c], weights, vertexNormals));
    }
    AK_Vec SurfacePoint(int c, const double* weights) const
    {
        return InterpolatedVectorIn(cells[c], weights, vertices);
    }
    double FlowDepth(int c, const double* weights) const
    {
        return double(InterpolatedScalarIn(cells[c], weights, flowDepth));
    }
};

/// Of the velocity, the part in the surface.
inline AK_Vec SW_Tangential(const AK_Vec& v, const AK_Vec& unitNormal) { return v - unitNormal * Dot(v, unitNormal); }

/// J/kg: what is left of the total enthalpy without potential and kinetic energy.
inline double SW_InternalEnergy(double enthalpy, const AK_Vec& position, const AK_Vec& velocity)
{
    return enthalpy - SW_Particles::grav * position.z - Dot(velocity, velocity) / 2;
}

/// The row or column of a grid of n that a position falls in; what lies beyond an end, or is no number, takes that end.
inline int SW_GridIndex(double position, int n)
{
    if (!(position >= 1)) return 0;
    return position < n ? int(position) : n - 1;
}

/// A grid of square cells over the terrain, by which particles find their neighbours. Cells of one row are adjacent.
/// What lies outside counts to the cells at the rim.
struct SW_LocationGrid {
    AK_Vec2 origin;        // m
    double cellSize = 1;   // m, at least the radius of the kernel
    int nx = 1, ny = 1;

    int ColumnOf(double x) const { return SW_GridIndex((x - origin.x) / cellSize, nx); }
    int RowOf(double y) const { return SW_GridIndex((y - origin.y) / cellSize, ny); }
    int CellOf(const AK_Vec& p) const { return RowOf(p.y) * nx + ColumnOf(p.x); }
};
