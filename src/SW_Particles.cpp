// Particles: the object, creation from cell depths, adding, splitting, removal, record, states of snow.

#include "SW_Particles.h"

#include "AK_Object_Namespace.h"

#include <algorithm>
#include <cmath>

// ----------------------------------------------------------------------------------------------------------------
// The object
// ----------------------------------------------------------------------------------------------------------------

std::span<const AK_Row> SW_Particles::Rows()
{
    using P = SW_Particles;
    static constexpr Row rows[] = {
        {"NumberOfParticles", shown<&P::NumParticles>},
        {"TotalParticlesMass", shown<&P::TotalMass>},                     // kg
        {"TotalParticlesKineticEnergy", shown<&P::TotalKineticEnergy>},   // J
    };
    return rows;
}

SW_Particles::SW_Particles(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    _position = new SW_Mesh("Position", nullptr);
    _mass = new SW_ScalarField("Mass", nullptr);
    _velocity = new SW_VectorField("Velocity", nullptr);
    _totalEnthalpy = new SW_ScalarField("TotalEnthalpy", nullptr);
    _mass->SetLabel("Mass [kg]");
    _velocity->SetLabel("Velocity [m/s]");
    _totalEnthalpy->SetLabel("TotalEnthalpy [J/kg]");
    for (AK_Object* component : {static_cast<AK_Object*>(_position), static_cast<AK_Object*>(_mass),
                                 static_cast<AK_Object*>(_velocity), static_cast<AK_Object*>(_totalEnthalpy)})
        AddComponent(component);
    LayFieldsOnPositions();
    RunInitializationCommands();
}

void SW_Particles::LayFieldsOnPositions()
{
    _mass->_onVertices = _velocity->_onVertices = _totalEnthalpy->_onVertices = 1;
    _mass->SetMesh(_position);
    _velocity->SetMesh(_position);
    _totalEnthalpy->SetMesh(_position);
}

void SW_Particles::Clear()
{
    cell.Clear();
    tag.Clear();
    _position->Clear();
    LayFieldsOnPositions();
}

// Calls `change` with each list of the scratch.
template <class Change>
void SW_Particles::ForEachScratch(const Change& change)
{
    change(force);
    for (AK_List<float>* list :
         {&depth, &dragCoefficient, &shearRatio, &entrainedMass, &enthalpySource, &enthalpyDiffusion, &bottomForce})
        change(*list);
}

void SW_Particles::SizeScratch(int n)
{
    ForEachScratch([n](auto& list) { list.SetSize(n); });
}

void SW_Particles::FreeScratch()
{
    ForEachScratch([](auto& list) {
        list.Clear();
        list.Redimension(0);
    });
}

// ----------------------------------------------------------------------------------------------------------------
// Creation
// ----------------------------------------------------------------------------------------------------------------

int SW_Particles::RoundedAtRandom(double count)
{
    const double drawn = Draw();   // always one, so that what follows does not depend on this count
    if (!(count > 0)) return 0;    // nothing, or no number
    if (count >= INT_MAX) return INT_MAX;
    const int whole = int(count);
    return whole + (drawn < count - whole ? 1 : 0);
}

// The number of particles of each cell; false if they are too many to be counted by an int.
static bool CountParticles(const SW_Mesh& mesh, const AK_List<float>& depth, float rho, float massPerParticle,
                           AK_List<int>& counts, int& total)
{
    static constexpr unsigned long roundingSeed = 942;
    AK_System::srand(roundingSeed);
    counts.SetSize(mesh.NumCells());
    long long sum = 0;
    for (int c = 0; c < mesh.NumCells(); ++c) {
        const double area = Length(mesh.CellNormal(c));   // m2
        counts[c] = SW_Particles::RoundedAtRandom(area * double(depth[c]) * double(rho) / double(massPerParticle));
        sum += counts[c];
    }
    total = int(std::min<long long>(sum, INT_MAX));
    return sum < INT_MAX;
}

void SW_Particles::CreateFromDepthField(const SW_ScalarField* depthInCells, const SW_VectorField* velocity,
                                        const SW_ScalarField* enthalpy, const AK_List<unsigned char>& tags, float rho,
                                        float massPerParticle)
{
    static constexpr unsigned long positionSeed = 1;
    if (!_mesh || !(massPerParticle > 0.0f) || _mesh->NumCells() == 0) return;
    AK_List<int> counts(1);
    int total = 0;
    if (!CountParticles(*_mesh, depthInCells->_values, rho, massPerParticle, counts, total)) {
        AK_MSG("WARNING: the mass per particle of " << massPerParticle
                                                    << " kg gives more particles than can be counted");
        return;
    }
    if (total == 0) return;
    AK_MSG("generating " << total << " particles...");
    cell.Clear();
    tag.Clear();
    cell.Redimension(total);
    _position->SetVertexMesh(total);
    LayFieldsOnPositions();

    AK_System::srand(positionSeed);
    int held = 0;
    double totalMass = 0;   // kg
    for (int c = 0; c < _mesh->NumCells(); ++c) {
        const double cellMass = Length(_mesh->CellNormal(c)) * double(depthInCells->_values[c]) * double(rho);   // kg
        for (int k = 0; k < counts[c]; ++k) {
            const int i = cell.Append(c);
            const AK_Vec position = _mesh->RandomPointInCell(c);
            _position->_x[i] = position;
            _mass->_values[i] = float(cellMass / counts[c]);
            _velocity->_values[i] = velocity->_values[c];
            _totalEnthalpy->_values[i] = float(position.z * grav + double(enthalpy->_values[c]));
            totalMass += double(_mass->_values[i]);
            if (tags.IsEmpty()) continue;
            tag.Append(tags[c]);
            if (tags[c]) ++held;
        }
    }
    AK_MSG(total << " particles generated");
    AK_MSG("total mass:" << totalMass << " kg");
    if (!tags.IsEmpty()) AK_MSG(held << " particles in secondary release areas");
}

// ----------------------------------------------------------------------------------------------------------------
// Adding and removing
// ----------------------------------------------------------------------------------------------------------------

int SW_Particles::AddParticle(AK_Vec pos, float mass, AK_Vec vel, float enthalpy, unsigned char newTag, int hintCell)
{
    const int c = _mesh ? _mesh->CellContainingPoint(pos, hintCell) : -1;
    if (c < 0) return 0;
    _mesh->Project(pos, -1);
    cell.Append(c);
    _position->AddVertex(pos);
    _mass->_values.Append(mass);
    _velocity->_values.Append(vel);
    _totalEnthalpy->_values.Append(enthalpy);
    if (!tag.IsEmpty()) tag.Append(newTag);
    return 1;
}

int SW_Particles::SplitParticle(int i, int n)
{
    if (n < 1) return 0;
    const float share = _mass->_values[i] / float(n);   // kg
    _mass->_values[i] = share;
    const unsigned char itsTag = tag.IsEmpty() ? 0 : tag[i];
    int added = 0;
    for (int k = 1; k < n; ++k)
        added +=
            AddParticle(_position->_x[i], share, _velocity->_values[i], _totalEnthalpy->_values[i], itsTag, cell[i]);
    return added;
}

SW_Particles::Removal SW_Particles::RemoveUnlocatedParticles(double massThreshold)
{
    int removed = 0;
    Removal removal;
    // Backwards: removing a particle moves the last one into its place, and that one has been visited already.
    for (int i = NumParticles() - 1; i >= 0; --i) {
        const double mass = double(_mass->_values[i]);   // kg
        if (cell[i] >= 0 && mass > massThreshold) continue;
        const AK_Vec sum = _position->_x[i] + _velocity->_values[i];
        if (!std::isfinite(mass + sum.x + sum.y + sum.z))
            ++removal.numNoNumber;
        else if (cell[i] < 0)
            removal.massOffMesh += mass;
        else {
            ++removal.numTooLight;
            removal.massTooLight += mass;
        }
        cell.RemoveUnordered(i);
        if (!tag.IsEmpty()) tag.RemoveUnordered(i);
        _mass->RemoveValue(i);
        _velocity->RemoveValue(i);
        _totalEnthalpy->RemoveValue(i);
        _position->RemoveVertex(i);
        ++removed;
    }
    Touch();
    if (removed > 0) AK_MSG(removed << " particles removed");
    return removal;
}

void SW_Particles::Touch()
{
    _position->SetExecTime("touch");
    _mass->SetExecTime("touch");
    _velocity->SetExecTime("touch");
}

// ----------------------------------------------------------------------------------------------------------------
// Totals
// ----------------------------------------------------------------------------------------------------------------

double SW_Particles::TotalMass() const
{
    double sum = 0;   // kg
    for (float mass : _mass->_values) sum += double(mass);
    return sum;
}

double SW_Particles::TotalKineticEnergy() const
{
    double sum = 0;   // J
    for (int i = 0; i < NumParticles(); ++i)
        sum += double(_mass->_values[i]) * 0.5 * Dot(_velocity->_values[i], _velocity->_values[i]);
    return sum;
}

// ----------------------------------------------------------------------------------------------------------------
// Record: the tag, then the list of the particles' tags. The rest lies in the components.
// ----------------------------------------------------------------------------------------------------------------

void SW_Particles::LoadFinalizePriv()
{
    LayFieldsOnPositions();
    const int n = _position->NumVertices();
    if (tag.Size() != n) tag.Clear();   // a record that does not belong to these positions
    cell.Fill(n, -1);
    if (_mesh)
        for (int i = 0; i < n; ++i) cell[i] = _mesh->CellContainingPoint(_position->_x[i], -1);
    RemoveUnlocatedParticles(0.0);
    Touch();
}

int SW_Particles::SaveDataTo(AK_Stream& stream) const
{
    stream.Write(AK_String(recordTag));
    stream.Write(tag);
    return stream.Failed() ? IoError(AK_HERE) : 0;
}

int SW_Particles::LoadDataFrom(AK_Stream& stream)
{
    tag.Clear();
    AK_String header;
    stream.Read(header);
    if (!(header == recordTag)) return IoError(AK_HERE);
    stream.Read(tag);
    return stream.Failed() ? IoError(AK_HERE) : 0;
}

// ----------------------------------------------------------------------------------------------------------------
// States of snow
// ----------------------------------------------------------------------------------------------------------------

double SW_Particles::TemperatureFromEnthalpy(const double* h)
{
    if (*h < 0) return *h / cp_ice + T_melt;
    if (*h <= h_fusion) return T_melt;
    return (*h - h_fusion) / cp_wtr + T_melt;
}

double SW_Particles::WaterMassFractionFromEnthalpy(const double* h) { return std::clamp(*h / h_fusion, 0.0, 1.0); }

double SW_Particles::EnthalpyFromTemperatureAndWaterMassFraction(const double* T, const double* w)
{
    return h_fusion * *w + (*T < 0 ? *T * cp_ice : *T * cp_wtr);
}

void SW_Particles::RegisterInFormulaLanguage()
{
    static bool registered = false;
    if (registered) return;
    registered = true;
    const AK_ActiveNamespace root(AK_RootNamespace());
    qvt_sci_ParseString("double TemperatureFromEnthalpy(double h);"
                        "double WaterMassFractionFromEnthalpy(double h);"
                        "double EnthalpyFromTemperatureAndWaterMassFraction(double T, double w);");
    qvt_sci_Bind("TemperatureFromEnthalpy", TemperatureFromEnthalpy);
    qvt_sci_Bind("WaterMassFractionFromEnthalpy", WaterMassFractionFromEnthalpy);
    qvt_sci_Bind("EnthalpyFromTemperatureAndWaterMassFraction", EnthalpyFromTemperatureAndWaterMassFraction);
}
