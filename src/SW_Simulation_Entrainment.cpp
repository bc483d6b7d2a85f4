// The store of snow on the ground that the flow can take up, and snow that is held until the flow reaches it.
//
// The store has a mass for each m2 of surface and an enthalpy for each cell. It is filled from entrainment areas, where
// there is none from the mesh of entrainment depths, else by an even weight above an altitude. Taking from it is part
// of the time step.

#include "SW_Simulation.h"

#include "SW_InitialCondition.h"

// Thermal enthalpy of the snow at an altitude, J/kg. The form for warm snow is that of the model, and is not the
// inverse of the temperature of an enthalpy.
static double EnthalpyAtTemperature(double temperature)   // degrees C
{
    return temperature < 0 ? temperature * SW_Particles::cp_ice
                           : temperature * SW_Particles::cp_wtr / SW_Particles::h_fusion;
}

double SW_Simulation::GlobalEntrainmentEnthalpy(double z) const
{
    const double temperature =   // degrees C
        (z - _parameters.globalEntrainmentMinZ) * _parameters.globalEntrainmentTemperatureGradient + _parameters.globalEntrainmentTemperature;
    return EnthalpyAtTemperature(temperature);
}

// ----------------------------------------------------------------------------------------------------------------
// Filling
// ----------------------------------------------------------------------------------------------------------------

void SW_Simulation::FillStoreByAltitude()
{
    for (int cell = 0; cell < _mesh->NumCells(); ++cell) {
        const double z = _mesh->CellCenter(cell).z;
        if (!(z > _parameters.globalEntrainmentMinZ)) continue;
        _entrainmentMass->_values[cell] = float(_parameters.globalEntrainmentAreaWeight);
        _entrainmentEnth->_values[cell] = float(GlobalEntrainmentEnthalpy(z));
    }
}

const SW_InitialCondition* SW_Simulation::EntrainmentAreaAt(const AK_Vec2& p) const
{
    for (int i = _entrainmentAreas->NumComponents() - 1; i >= 0; --i)
        if (_entrainmentAreas->Area(i)->Contains(p)) return _entrainmentAreas->Area(i);
    return nullptr;
}

void SW_Simulation::FillStoreFromAreasAndMesh()
{
    const bool wantsMesh = !_parameters.entrainmentDHM.IsEmpty() && !(_parameters.entrainmentDHM == "none");
    const SW_Mesh* const depthMesh = wantsMesh ? DepthMesh(_parameters.entrainmentDHM) : nullptr;
    if (depthMesh)
        AK_MSG("using entrainment depth from " << _parameters.entrainmentDHM);
    else if (wantsMesh)
        AK_MSG("WARNING: using entrainment depth from " << _parameters.entrainmentDHM << " failed!");

    int depthCell = -1;
    for (int cell = 0; cell < _mesh->NumCells(); ++cell) {
        const AK_Vec center = _mesh->CellCenter(cell);
        if (const SW_InitialCondition* area = EntrainmentAreaAt({center.x, center.y})) {
            const AK_Vec normal = Normalized(_mesh->CellNormal(cell));
            _entrainmentMass->_values[cell] = float(area->Depth(center, normal) * area->Density());
            _entrainmentEnth->_values[cell] = float(SW_AsShown(area->Enthalpy()));
            continue;
        }
        if (!depthMesh) continue;
        AK_Vec onDepthMesh = center;
        depthCell = depthMesh->Project(onDepthMesh, depthCell);
        if (depthCell < 0 || !(onDepthMesh.z > 0)) continue;
        _entrainmentMass->_values[cell] = float(onDepthMesh.z * _parameters.entrainmentDHMDensity);
        _entrainmentEnth->_values[cell] = float(GlobalEntrainmentEnthalpy(center.z));
    }
}

void SW_Simulation::InitializeCellEntrainmentMass()
{
    AK_MSG("initializing cell entrainment area weights...");
    for (SW_ScalarField* field : {_entrainmentMass, _entrainmentEnth}) {
        field->SetMesh(_mesh);
        field->_values.Fill(_mesh->NumCells(), 0.0f);
    }
    FillStoreByAltitude();
    FillStoreFromAreasAndMesh();
    _entrainmentMass->SetExecTime("touch");
    _entrainmentEnth->SetExecTime("touch");
    AK_MSG("updating cell entrainment area weights done");
}

double SW_Simulation::EntrainableMass() const
{
    if (!_mesh || _entrainmentMass->_values.Size() != _mesh->NumCells()) return 0;
    double mass = 0;
    for (int cell = 0; cell < _mesh->NumCells(); ++cell)
        mass += double(_entrainmentMass->_values[cell]) * Length(_mesh->CellNormal(cell));
    return mass;
}

// ----------------------------------------------------------------------------------------------------------------
// Secondary release
// ----------------------------------------------------------------------------------------------------------------

void SW_Simulation::ReleaseSecondaryAreas()
{
    AK_List<unsigned char>& tags = _particles->tag;
    AK_List<AK_Vec>& velocities = _particles->Velocity()._values;
    for (int i = tags.Size() - 1; i >= 0; --i) {
        const int area = tags[i];
        if (area == 0) continue;
        // The field is that of the step before: what has reached the area then sets it free now.
        const AK_Vec& flow = _velocity->_values[_mesh->_lcv[_particles->cell[i]][0]];
        if (!(Dot(flow, flow) > 0)) continue;
        if (area <= _secondaryReleaseAreas->NumComponents())
            AK_MSG("releasing secondary release area " << _secondaryReleaseAreas->ComponentAt(area - 1)->Id());
        for (int k = 0; k < tags.Size(); ++k) {
            if (tags[k] != area) continue;
            tags[k] = 0;
            velocities[k] = {0, 0, 0};
        }
    }
}
