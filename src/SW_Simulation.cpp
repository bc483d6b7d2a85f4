// The simulation object: its components, its mesh, and what the areas of its scenario add up to.

#include "SW_Simulation.h"

#include "SW_InitialCondition.h"
#include "SW_ResistanceArea.h"
#include "SW_SourceLine.h"
#include "SW_WallLine.h"

#include <cstdlib>

// ----------------------------------------------------------------------------------------------------------------
// Construction
// ----------------------------------------------------------------------------------------------------------------

template <class Container>
static void AddContainer(AK_Object& simulation, Container*& container, const char* id)
{
    container = new Container(id, nullptr);
    simulation.AddComponent(container);
}

template <class Field>
static void AddField(AK_Object& simulation, Field*& field, const char* id)
{
    field = new Field(id, nullptr);
    field->_onVertices = 1;
    simulation.AddComponent(field);
}

// Projects that have been saved, macros and the order of drawing rely on ids and order.
void SW_Simulation::AddFields()
{
    AddField(*this, _flowDepth, "FlowDepth");
    AddField(*this, _peakFlowDepth, "PeakFlowDepth");
    AddField(*this, _velocity, "Velocity");
    AddField(*this, _dynamicPeakPressure, "DynamicPeakPressure");
    AddField(*this, _peakForcePerWidth, "PeakForcePerWidth");
    AddField(*this, _peakTorquePerWidth, "PeakTorquePerWidth");
    AddField(*this, _frontArrivalTime, "FrontArrivalTime");
    AddField(*this, _entrainmentMass, "EntrainmentMass");
    AddField(*this, _entrainmentEnth, "EntrainmentEnthalpy");
    _entrainmentMass->_onVertices = 0;
    _entrainmentEnth->_onVertices = 0;
}

SW_Simulation::SW_Simulation(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    AddContainer(*this, _releaseAreas, "ReleaseAreas");
    AddContainer(*this, _entrainmentAreas, "EntrainmentAreas");
    AddContainer(*this, _secondaryReleaseAreas, "SecondaryReleaseAreas");
    AddContainer(*this, _resistanceAreas, "ResistanceAreas");
    AddContainer(*this, _wallLines, "WallLines");
    AddContainer(*this, _sourceLines, "SourceLines");
    AddFields();
    _particles = new SW_Particles("Particles", nullptr);
    AddComponent(_particles);
    _particles->Position()._skipData = 1;   // a time step holds the positions; they are no part of a saved project
    _bottomPressure = std::make_unique<SW_ScalarField>("BottomPressure", this);
    _bottomPressure->_onVertices = 1;
    RunInitializationCommands();
}

SW_Simulation::~SW_Simulation()
{
    qvt_sci_NamespaceDestroy(_formulaNameSpace);
    qvt_sci_NamespaceDestroy(_shearNameSpace);
}

void SW_Simulation::Load(const AK_String& dir)
{
    _isBeingLoaded = true;
    AK_Object::Load(dir);
    _isBeingLoaded = false;
}

void SW_Simulation::LoadFinalize() { SetExecTime("LoadFinalize"); }

// ----------------------------------------------------------------------------------------------------------------
// The mesh
// ----------------------------------------------------------------------------------------------------------------

std::array<SW_ScalarField*, 7> SW_Simulation::StoredFields() const
{
    return {_peakFlowDepth,    _dynamicPeakPressure, _peakForcePerWidth, _peakTorquePerWidth,
            _frontArrivalTime, _entrainmentMass,     _entrainmentEnth};
}

void SW_Simulation::BindFields()
{
    for (SW_ScalarField* field : StoredFields()) field->SetMesh(_mesh);
    _flowDepth->SetMesh(_mesh);
    _velocity->SetMesh(_mesh);
    _particles->SetMesh(_mesh);
    _cellResistances.Clear();
    _boundVertices = _mesh ? _mesh->NumVertices() : 0;
    _boundCells = _mesh ? _mesh->NumCells() : 0;
}

void SW_Simulation::SetMesh(const AK_String& path)
{
    _meshReference.Set(path);
    SW_Mesh* const mesh = _meshReference.Find(*this);
    if (!mesh && !path.IsEmpty()) AK_MSG("WARNING: simulation " << _id << " finds no mesh '" << path << "'");
    if (mesh != _mesh) {
        _mesh = mesh;
        ForgetState();
    }
    BindFields();
    if (!_mesh) return;
    for (SW_ScenarioLines* lines :
         {static_cast<SW_ScenarioLines*>(_releaseAreas), static_cast<SW_ScenarioLines*>(_entrainmentAreas),
          static_cast<SW_ScenarioLines*>(_secondaryReleaseAreas), static_cast<SW_ScenarioLines*>(_resistanceAreas),
          static_cast<SW_ScenarioLines*>(_wallLines)})
        lines->ProjectOntoSimulationMesh();
    UpdateReleaseMass();
}

// Particles name cells of the mesh and fields have a value for each vertex of it: after a new import under the same
// name neither means anything any more.
bool SW_Simulation::MeshHasChanged() const
{
    return _mesh && (_mesh->NumVertices() != _boundVertices || _mesh->NumCells() != _boundCells);
}

void SW_Simulation::ForgetStateOfChangedMesh()
{
    if (!MeshHasChanged()) return;
    if (_particles->NumParticles() > 0)
        AK_MSG("WARNING: the mesh of simulation " << _id << " has changed, its state is lost");
    ForgetState();
    BindFields();
}

// A container of the project that the simulation lies in; null in a tree of another kind.
AK_Object* SW_Simulation::ProjectContainer(const char* id) const
{
    const AK_Object* simulations = Parent();
    const AK_Object* project = simulations ? simulations->Parent() : nullptr;
    return project ? project->Component(id) : nullptr;
}

AK_String SW_Simulation::MeshNamesList() const { return SW_PathsOfMeshesIn(ProjectContainer("DHMs"), *this); }

AK_String SW_Simulation::DepthMeshOptions() const
{
    return AK_String("none") + ak_sep + SW_PathsOfMeshesIn(ProjectContainer("ReleaseDHMs"), *this);
}

const SW_Mesh* SW_Simulation::DepthMesh(const AK_String& name) const
{
    if (const SW_Mesh* mesh = SW_MeshReference::Find(*this, name)) return mesh;
    return SW_MeshReference::Find(*this, AK_String("Project/ReleaseDHMs/") + name);
}

// ----------------------------------------------------------------------------------------------------------------
// Masses, kg
// ----------------------------------------------------------------------------------------------------------------

static double MassOf(const SW_InitialConditions& areas)
{
    double mass = 0;
    for (int i = 0; i < areas.NumComponents(); ++i) mass += areas.Area(i)->Mass();
    return mass;
}

double SW_Simulation::ReleaseMass() const { return MassOf(*_releaseAreas); }

double SW_Simulation::SecondaryReleaseMass() const { return MassOf(*_secondaryReleaseAreas); }

double SW_Simulation::EntrainmentAreasMass() const { return MassOf(*_entrainmentAreas); }

void SW_Simulation::UpdateReleaseMass()
{
    for (const SW_InitialConditions* areas : {_releaseAreas, _secondaryReleaseAreas})
        for (int i = 0; i < areas->NumComponents(); ++i) areas->Area(i)->Set("UpdateMass", "");
}

AK_String SW_Simulation::PsaCurrentRestartFile() const
{
    const AK_String name = VariableValue("$psaRestartFile");
    if (name.IsEmpty() || ProjectDir().IsEmpty()) return "";
    const AK_String path = ProjectDir() + "/" + name;
    return AK_System::FileExists(path) ? path : AK_String();
}
