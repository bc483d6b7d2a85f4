// From the scenario to the start of a run: release depth and enthalpy of each cell, mass of a particle, particles.
//
// A cell gets its snow from the last area in the list of all primary and then all secondary release areas whose polygon
// holds the cell's centre, else from the mesh of release depths. While that is worked out, flow depth, velocity and a
// temporary field of enthalpy have a value for each cell; they go back to the vertices when the particles stand.

#include "SW_Simulation.h"

#include "SW_InitialCondition.h"

#include <climits>
#include <cmath>
#include <cstdlib>

// What a cell without snow would have: ice at -10 degrees C, J/kg.
static constexpr double enthalpyWithoutRelease = -20500.0;

/// What the cells hold at the start.
struct SW_Simulation::Release {
    AK_List<const SW_InitialCondition*> areas{1};   // primary ones first
    int numPrimary = 0;
    const SW_Mesh* depthMesh = nullptr;             // null for none
    SW_ScalarField enthalpy{"enthalpy", nullptr};   // J/kg, on cells
    AK_List<unsigned char> tags{1};   // for each cell the number of its secondary area from 1, 0 for none; or empty
    double mass = 0;                  // kg
    int numCells = 0, numSecondaryCells = 0;
};

double SW_Simulation::PointSourceStrength() const
{
    return std::strtod(VariableValue("$source_strength").c_str(), nullptr);
}

bool SW_Simulation::HasRelease() const
{
    const bool hasDepthMesh = !_releaseDHM.IsEmpty() && !(_releaseDHM == "none");
    return _releaseAreas->NumComponents() > 0 || hasDepthMesh || PointSourceStrength() > 0;
}

// ----------------------------------------------------------------------------------------------------------------
// Cells
// ----------------------------------------------------------------------------------------------------------------

void SW_Simulation::FindRelease(Release& release)
{
    for (const SW_InitialConditions* areas : {_releaseAreas, _secondaryReleaseAreas})
        for (int i = 0; i < areas->NumComponents(); ++i) release.areas.Append(areas->Area(i));
    release.numPrimary = _releaseAreas->NumComponents();
    if (_secondaryReleaseAreas->NumComponents() > 0) release.tags.Fill(_mesh->NumCells(), 0);
    AK_ASSERT_AS(_entrainmentMass->_values.Size() == _mesh->NumCells(),
                 "_entrainmentMass->v.Size() == _mesh->NumCells()");
    AK_ASSERT_AS(_entrainmentEnth->_values.Size() == _mesh->NumCells(),
                 "_entrainmentEnth->v.Size() == _mesh->NumCells()");
    UpdateReleaseMass();
    release.mass = double(float(SW_AsShown(ReleaseMass())) + float(SW_AsShown(SecondaryReleaseMass())));
    if (_releaseDHM == "none" || _releaseDHM.IsEmpty()) return;
    release.depthMesh = DepthMesh(_releaseDHM);
    if (release.depthMesh)
        AK_MSG("using release depth from " << _releaseDHM);
    else
        AK_MSG("WARNING: using release depth from " << _releaseDHM << " failed!");
}

void SW_Simulation::FillCells(Release& release)
{
    int depthCell = -1;
    for (int cell = 0; cell < _mesh->NumCells(); ++cell) {
        const AK_Vec center = _mesh->CellCenter(cell);
        const AK_Vec normal = _mesh->CellNormal(cell);   // as long as the cell's surface is large, m2
        double depth = 0;                                // m, of snow of the flow's density
        double enthalpy = enthalpyWithoutRelease;
        int index = release.areas.Size() - 1;
        while (index >= 0 && !release.areas[index]->Contains({center.x, center.y})) --index;
        if (index >= 0) {
            const SW_InitialCondition& area = *release.areas[index];
            depth = area.Depth(center, Normalized(normal)) * area.Density() / _density;
            enthalpy = SW_AsShown(area.Enthalpy());
            if (index >= release.numPrimary) {
                release.tags[cell] = static_cast<unsigned char>(index - release.numPrimary + 1);
                ++release.numSecondaryCells;
            }
        } else if (release.depthMesh) {
            AK_Vec onDepthMesh = center;
            depthCell = release.depthMesh->Project(onDepthMesh, depthCell);
            if (depthCell >= 0 && onDepthMesh.z >= 0) {
                depth = onDepthMesh.z * _releaseDHMDensity / _density;
                enthalpy = _releaseDHMTemperature * SW_Particles::cp_ice;
                release.mass += Length(normal) * depth * _density;
            }
        }
        if (depth > 0) {
            ++release.numCells;
            _entrainmentMass->_values[cell] = 0;
        }
        _flowDepth->_values[cell] = float(depth);
        release.enthalpy._values[cell] = float(enthalpy);
        _velocity->_values[cell] = {0, 0, 0};
    }
}

// ----------------------------------------------------------------------------------------------------------------
// Mass of a particle
// ----------------------------------------------------------------------------------------------------------------

// One of the four is the input and gives the mass of a particle, from which the others follow.
bool SW_Simulation::DetermineMassPerParticle(const Release& release)
{
    const double dx = SW_AsShown(_mesh->Resolution());   // m
    const double massOfDepth = dx * _density * dx;       // kg/m: mass of a mean cell for each metre of snow
    const double mass = release.mass;                    // kg
    const double numCells = release.numCells > 0 ? release.numCells : 1;
    const AK_String& method = _massPerParticleDeterminationMethod;
    const bool byDepth = method == "delta-depth per particle";
    const bool byCell = method == "particles per cell";
    const bool byNumber = method == "number of particles";

    if (byDepth) _massPerParticle = massOfDepth * _deltaDepthPerParticle;
    if (byCell) _massPerParticle = mass / numCells / _numParticlesPerCell;
    if (byNumber) _massPerParticle = mass / _numParticles;

    const double number = _massPerParticle > 0 ? mass / _massPerParticle : 0;
    if (!byCell) _numParticlesPerCell = number / numCells;
    if (!byDepth) _deltaDepthPerParticle = _massPerParticle / massOfDepth;
    if (!(_density > 0) || !(number < double(INT_MAX)) || !std::isfinite(_massPerParticle)) {
        const char* const attribute = _density > 0 ? "MassPerParticle" : "Density";
        AK_MSG("WARNING: simulation " << _id << " is not started: " << attribute << " is no use for " << mass
                                      << " kg in particles of " << _massPerParticle << " kg");
        return false;
    }
    if (!byNumber) _numParticles = int(number);
    AK_MSG("estimated number of particles:" << _numParticles);
    AK_MSG("estimated mass per particle:" << AK_String(_massPerParticle, "%.15g"));
    return true;
}

// Rounding to whole particles leaves a trace in the sum, which spreading it over all of them takes away.
void SW_Simulation::CorrectMassPerParticle(double mass)
{
    if (_massPerParticleDeterminationMethod == "direct" || _particles->NumParticles() == 0) return;
    const double correction = mass / _particles->TotalMass();
    for (float& particleMass : _particles->Mass()._values) particleMass = float(double(particleMass) * correction);
    _massPerParticle = _particles->TotalMass() / _particles->NumParticles();
    AK_MSG("mass per particle corrected:" << AK_String(_massPerParticle, "%.15g"));
}

// ----------------------------------------------------------------------------------------------------------------
// Initialize
// ----------------------------------------------------------------------------------------------------------------

template <class Field>
static void LayOn(Field& field, const SW_Mesh* mesh, int onVertices)
{
    field._onVertices = onVertices;
    field.SetMesh(mesh);
}

void SW_Simulation::ClearResults()
{
    LayOn(*_flowDepth, _mesh, 1);
    LayOn(*_velocity, _mesh, 1);
    _bottomPressure->SetMesh(_mesh);
    for (SW_ScalarField* field : {_flowDepth, _dynamicPeakPressure, _bottomPressure.get(), _peakForcePerWidth,
                                  _peakTorquePerWidth, _peakFlowDepth, _frontArrivalTime})
        field->_values.Fill(_mesh->NumVertices(), 0.0f);
    _velocity->_values.Fill(_mesh->NumVertices(), AK_Vec());
}

bool SW_Simulation::Initialize()
{
    _currentTime = 0;
    _currentTimeStep = "";
    if (!_mesh || _mesh->NumCells() == 0) return true;
    InitializeCellEntrainmentMass();

    Release release;
    LayOn(release.enthalpy, _mesh, 0);
    LayOn(*_flowDepth, _mesh, 0);
    LayOn(*_velocity, _mesh, 0);
    AK_MSG("computing release depths in cells...");
    FindRelease(release);
    FillCells(release);
    AK_MSG("computing release depths in cells done");
    AK_MSG("total mass:" << release.mass << " kg in " << release.numCells << " cells");
    if (release.numSecondaryCells > 0) AK_MSG(release.numSecondaryCells << " cells in secondary release areas");

    _particles->Clear();
    _particles->SetMesh(_mesh);
    const bool possible = DetermineMassPerParticle(release);
    if (possible) {
        _particles->CreateFromDepthField(_flowDepth, _velocity, &release.enthalpy, release.tags, float(_density),
                                         float(_massPerParticle));
        CorrectMassPerParticle(release.mass);
        if (release.mass > 0 && _particles->NumParticles() == 0)
            AK_MSG("WARNING: simulation " << _id << ": MassPerParticle " << _massPerParticle
                                          << " kg makes no particle of " << release.mass << " kg");
    }
    ClearResults();
    LoadFinalizePriv();
    return possible;
}
