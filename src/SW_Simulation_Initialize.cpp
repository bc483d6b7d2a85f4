// From the scenario to the start of a run: release depth and enthalpy of each cell, mass of a particle, particles.
//
// A cell gets its snow from the last area in the list of all primary and then all secondary release areas whose polygon
// holds the cell's centre, else from the mesh of release depths. All of that is found before anything of the simulation
// changes, so that a run can still be refused; then the particles are made of it.

#include "SW_Simulation_Release.h"

#include <climits>
#include <cmath>
#include <cstdlib>

// What a cell without snow would have: ice at -10 degrees C, J/kg.
static constexpr double enthalpyWithoutRelease = -20500.0;

double SW_Simulation::PointSourceStrength() const
{
    return std::strtod(VariableValue("$source_strength").c_str(), nullptr);
}

static bool HasDepthMesh(const AK_String& name) { return !name.IsEmpty() && !(name == "none"); }

bool SW_Simulation::HasRelease() const
{
    return _releaseAreas->NumComponents() > 0 || HasDepthMesh(_releaseDHM) || PointSourceStrength() > 0;
}

// ----------------------------------------------------------------------------------------------------------------
// Cells
// ----------------------------------------------------------------------------------------------------------------

void SW_Simulation::FindAreas(Release& release)
{
    for (const SW_InitialConditions* areas : {_releaseAreas, _secondaryReleaseAreas})
        for (int i = 0; i < areas->NumComponents(); ++i) release.areas.Append(areas->Area(i));
    release.numPrimary = _releaseAreas->NumComponents();
    if (_secondaryReleaseAreas->NumComponents() > 0) release.tags.Fill(_mesh->NumCells(), 0);
    UpdateReleaseMass();
    release.mass = double(float(SW_AsShown(ReleaseMass())) + float(SW_AsShown(SecondaryReleaseMass())));
    if (HasDepthMesh(_releaseDHM)) release.depthMesh = DepthMesh(_releaseDHM);
}

void SW_Simulation::FindCells(Release& release) const
{
    int depthCell = -1;
    for (int cell = 0; cell < _mesh->NumCells(); ++cell) {
        const AK_Vec center = _mesh->CellCenter(cell);
        const AK_Vec normal = _mesh->CellNormal(cell);   // as long as the cell's surface is large, m2
        double depth = 0;                                // m, of snow of the flow's density
        double enthalpy = enthalpyWithoutRelease;
        bool secondary = false;
        int index = release.areas.Size() - 1;
        while (index >= 0 && !release.areas[index]->Contains({center.x, center.y})) --index;
        if (index >= 0) {
            const SW_InitialCondition& area = *release.areas[index];
            depth = area.Depth(center, Normalized(normal)) * area.Density() / _density;
            enthalpy = SW_AsShown(area.Enthalpy());
            secondary = index >= release.numPrimary;
            if (secondary) release.tags[cell] = static_cast<unsigned char>(index - release.numPrimary + 1);
        } else if (release.depthMesh) {
            AK_Vec onDepthMesh = center;
            depthCell = release.depthMesh->Project(onDepthMesh, depthCell);
            if (depthCell >= 0 && onDepthMesh.z >= 0) {
                depth = onDepthMesh.z * _releaseDHMDensity / _density;
                enthalpy = _releaseDHMTemperature * SW_Particles::cp_ice;
                release.mass += Length(normal) * depth * _density;
            }
        }
        release.numSecondaryCells += secondary;
        if (depth > 0) {
            ++release.numCells;
            release.numFreeCells += !secondary;
            release.massOfCells += Length(normal) * depth * _density;
        }
        release.depth._values[cell] = float(depth);
        release.enthalpy._values[cell] = float(enthalpy);
    }
}

template <class Field>
static void LayOn(Field& field, const SW_Mesh* mesh, int onVertices)
{
    field._onVertices = onVertices;
    field.SetMesh(mesh);
}

void SW_Simulation::FindRelease(Release& release)
{
    LayOn(release.enthalpy, _mesh, 0);
    LayOn(release.depth, _mesh, 0);
    FindAreas(release);
    FindCells(release);
    DetermineMassPerParticle(release);
}

void SW_Simulation::TellDepthMesh(const Release& release) const
{
    if (release.depthMesh)
        AK_MSG("using release depth from " << _releaseDHM);
    else if (HasDepthMesh(_releaseDHM))
        AK_MSG("WARNING: using release depth from " << _releaseDHM << " failed!");
}

void SW_Simulation::TellRelease(const Release& release) const
{
    AK_MSG("computing release depths in cells...");
    TellDepthMesh(release);
    AK_MSG("computing release depths in cells done");
    AK_MSG("total mass:" << release.mass << " kg in " << release.numCells << " cells");
    if (release.numSecondaryCells > 0) AK_MSG(release.numSecondaryCells << " cells in secondary release areas");
    CompareMasses(release);
}

// Areas that overlap count twice, and what reaches over the rim of the terrain counts too: the particles carry it all.
void SW_Simulation::CompareMasses(const Release& release) const
{
    static constexpr double tolerance = 0.05;   // of the mass of the cells
    if (std::fabs(release.mass - release.massOfCells) <= tolerance * release.massOfCells) return;
    AK_MSG("WARNING: simulation " << _id << ": "
                                  << InLanguage("the release areas hold ", "die Anbruchgebiete enthalten ")
                                  << release.mass << " kg, "
                                  << InLanguage("their cells of the mesh ", "ihre Zellen des Netzes ")
                                  << release.massOfCells
                                  << InLanguage(" kg: areas overlap, reach over the rim or are small for the cells",
                                                " kg: Gebiete ueberlappen, reichen ueber den Rand oder sind klein fuer "
                                                "die Zellen"));
}

// ----------------------------------------------------------------------------------------------------------------
// Mass of a particle
// ----------------------------------------------------------------------------------------------------------------

// One of the four is the input and gives the mass of a particle, from which the others follow.
void SW_Simulation::DetermineMassPerParticle(Release& release) const
{
    const double dx = SW_AsShown(_mesh->Resolution());   // m
    const double massOfDepth = dx * _density * dx;       // kg/m: mass of a mean cell for each metre of snow
    const double mass = release.mass;                    // kg
    const double numCells = release.numCells > 0 ? release.numCells : 1;
    const AK_String& method = _massPerParticleDeterminationMethod;
    const bool byDepth = method == "delta-depth per particle";
    const bool byCell = method == "particles per cell";
    const bool byNumber = method == "number of particles";

    double massPerParticle = _massPerParticle;   // kg
    if (byDepth) massPerParticle = massOfDepth * _deltaDepthPerParticle;
    if (byCell) massPerParticle = mass / numCells / _numParticlesPerCell;
    if (byNumber) massPerParticle = mass / _numParticles;

    release.massPerParticle = massPerParticle;
    release.numParticles = massPerParticle > 0 ? mass / massPerParticle : 0;
    release.numParticlesPerCell = byCell ? _numParticlesPerCell : release.numParticles / numCells;
    release.deltaDepthPerParticle = byDepth ? _deltaDepthPerParticle : massPerParticle / massOfDepth;
    release.countIsGiven = byNumber;
}

void SW_Simulation::TakeMassPerParticle(const Release& release)
{
    _massPerParticle = release.massPerParticle;
    _numParticlesPerCell = release.numParticlesPerCell;
    _deltaDepthPerParticle = release.deltaDepthPerParticle;
    if (!release.countIsGiven) _numParticles = int(release.numParticles);
    AK_MSG("estimated number of particles:" << _numParticles);
    AK_MSG("estimated mass per particle:" << AK_String(_massPerParticle, "%.15g"));
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
    Release release;
    if (_mesh && _mesh->NumCells() > 0) {
        const AK_String reason = ReasonAgainstRelease(release);
        if (!reason.IsEmpty()) return Refuse(reason);
    }
    StartFrom(release);
    return true;
}

void SW_Simulation::StartFrom(const Release& release)
{
    _currentTime = 0;
    _currentTimeStep = "";
    if (!_mesh || _mesh->NumCells() == 0) return;
    InitializeCellEntrainmentMass();
    AK_ASSERT_AS(_entrainmentMass->_values.Size() == _mesh->NumCells(),
                 "_entrainmentMass->v.Size() == _mesh->NumCells()");
    AK_ASSERT_AS(_entrainmentEnth->_values.Size() == _mesh->NumCells(),
                 "_entrainmentEnth->v.Size() == _mesh->NumCells()");
    for (int cell = 0; cell < _mesh->NumCells(); ++cell)
        if (release.depth._values[cell] > 0.0f) _entrainmentMass->_values[cell] = 0;
    TellRelease(release);

    TakeMassPerParticle(release);
    _particles->Clear();
    _particles->SetMesh(_mesh);
    LayOn(*_velocity, _mesh, 0);
    _velocity->_values.Fill(_mesh->NumCells(), AK_Vec());
    _particles->CreateFromDepthField(&release.depth, _velocity, &release.enthalpy, release.tags, float(_density),
                                     float(_massPerParticle));
    CorrectMassPerParticle(release.mass);
    if (release.mass > 0 && _particles->NumParticles() == 0)
        AK_MSG("WARNING: simulation " << _id << ": MassPerParticle " << _massPerParticle << " kg makes no particle of "
                                      << release.mass << " kg");
    ClearResults();
    LoadFinalizePriv();
}
