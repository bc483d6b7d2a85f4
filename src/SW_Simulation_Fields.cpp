// Particles -> fields: what each step lays down on the vertices of the mesh, and what is read from the fields.
//
// A particle's mass spreads over the vertices of its own cell by the interpolation weights, so that the masses on the
// vertices sum to that of the particles. Divided by the vertex's share of the surface and by the density that is the
// flow depth, measured normal to the surface. Peaks only grow; where nothing flows they stay as they are.

#include "SW_Simulation.h"

#include "SW_Polyline.h"

#include <algorithm>
#include <cmath>

// ----------------------------------------------------------------------------------------------------------------
// Laying down
// ----------------------------------------------------------------------------------------------------------------

// Mass (kg) and momentum (kg m/s) of the particles on the vertices, in the order that fixes the last bits of the sums:
// from the last particle to the first, in each from the first corner to the last.
static void LayDown(const SW_Mesh& mesh, const SW_Particles& particles, float* mass, AK_Vec* momentum)
{
    const AK_Vec* position = particles.Position()._x.Data();
    const float* particleMass = particles.Mass()._values.Data();
    const AK_Vec* particleVelocity = particles.Velocity()._values.Data();
    const int* cellOf = particles.cell.Data();
    mesh.WithView([&](const auto& view) {
        for (int i = particles.NumParticles() - 1; i >= 0; --i) {
            const int cell = cellOf[i];
            if (cell < 0) continue;
            double weights[4];
            view.GetWeights(cell, position[i], weights);
            const double m = double(particleMass[i]);    // kg
            const AK_Vec mv = particleVelocity[i] * m;   // kg m/s
            const IA4& corners = view.lcv[cell];
            const int numCorners = NumCorners(corners);
            for (int k = 0; k < numCorners; ++k) {
                float& there = mass[corners[k]];
                there = float(double(there) + m * weights[k]);
                momentum[corners[k]] += mv * weights[k];
            }
        }
    });
}

static void Raise(float& peak, float value) { peak = std::max(peak, value); }

void SW_Simulation::UpdateFields(float t)
{
    if (!_mesh) return;
    const int numVertices = _mesh->NumVertices();
    _flowDepth->_values.Fill(numVertices, 0.0f);
    _velocity->_values.Fill(numVertices, AK_Vec());
    float* const depth = _flowDepth->_values.Data();   // the mass, kg, until it is divided
    AK_Vec* const velocity = _velocity->_values.Data();
    LayDown(*_mesh, *_particles, depth, velocity);

    float* const peakDepth = _peakFlowDepth->_values.Data();
    float* const peakPressure = _dynamicPeakPressure->_values.Data();
    float* const peakForce = _peakForcePerWidth->_values.Data();
    float* const peakTorque = _peakTorquePerWidth->_values.Data();
    float* const arrival = _frontArrivalTime->_values.Data();
    const AK_Vec* const vertexNormals = _mesh->_vertexNormals.Data();
    const double rho = _parameters.density;
    for (int i = 0; i < numVertices; ++i) {
        if (!(depth[i] > 0)) continue;
        const double mass = double(depth[i]);           // kg
        const double area = Length(vertexNormals[i]);   // m2
        velocity[i] = {velocity[i].x / mass, velocity[i].y / mass, velocity[i].z / mass};
        const float h = float(mass / (area * rho));                              // m
        const float pdyn = float(Dot(velocity[i], velocity[i]) * 0.001 * rho);   // kPa
        const float force = pdyn * h;                                            // kN/m
        const float torque = float(double(force) * (double(h) * 0.5));           // kNm/m
        depth[i] = h;
        Raise(peakPressure[i], pdyn);
        Raise(peakForce[i], force);
        Raise(peakTorque[i], torque);
        Raise(peakDepth[i], h);
        if (arrival[i] == 0.0f || arrival[i] > t) arrival[i] = t;   // 0 is "not yet", as is the 1e30 of a start state
    }
}

// ----------------------------------------------------------------------------------------------------------------
// Labels
// ----------------------------------------------------------------------------------------------------------------

// The legends name simulation, quantity, unit and time, from which exported tables, layers and file names take theirs.
void SW_Simulation::LabelFields()
{
    const struct {
        AK_Object* field;
        const char* quantity;
    } labels[] = {
        {_flowDepth, " flow depth [m] at "},
        {_velocity, " velocity [m/s] at "},
        {_dynamicPeakPressure, " dynamic peak pressure [KPa] at "},
        {_bottomPressure.get(), " bottom pressure [Pa] at "},
        {_peakForcePerWidth, " peak force per width [kN/m] at "},
        {_peakTorquePerWidth, " peak torque per width [kNm/m] at "},
        {_peakFlowDepth, " peak flow depth [m] at "},
        {_frontArrivalTime, " front arrival time [s] at "},
        {_entrainmentMass, " entrainment mass [kg/m2] at "},
        {_entrainmentEnth, " entrainment enthalpy [J/kg] at "},
        {&_particles->Mass(), " SPH mass [kg] at "},
        {&_particles->Velocity(), " SPH velocity [m/s] at "},
        {&_particles->TotalEnthalpy(), " SPH total enthalpy [J/kg] at "},
    };
    const AK_String time(_currentTime, "%g");
    for (const auto& [field, quantity] : labels) field->Set("SetLabel", Id() + quantity + time);
}

void SW_Simulation::Update()
{
    LabelFields();
    AK_Class::Update();
}

// ----------------------------------------------------------------------------------------------------------------
// Deposition
// ----------------------------------------------------------------------------------------------------------------

// How far the outline of the flow lies from a reference line: the share of the area around the line, weighted by the
// distance from it, where there is no flow inside the line or flow outside of it. Inside is the left side. Only the
// side of the chord from the first to the last point on which the line's end lies counts.
void SW_Simulation::EvaluateDepositionWith(const AK_String& id)
{
    const SW_Polyline* line = SW_FindLine(*this, id);
    if (!line || line->NumVertices() < 2 || !_mesh) {
        _execStatus = AK_String("cannot evaluate the deposition with '") + id + "'";
        return;
    }
    const AK_Vec2 first = line->Points()[0];
    const AK_Vec2 last = line->Points()[line->NumVertices() - 1];
    double err = 0, total = 0;   // m, summed over vertices
    for (int i = 0; i < _mesh->NumVertices(); ++i) {
        const AK_Vec2 p = _mesh->_x[i];
        if (SideOfLine(first, last, p) > 0) continue;
        const double q = _flowDepth->_values[i] > 0 ? 1 : 0;
        const double s = line->Distance(p);
        if (s <= 0) {
            err -= q * s;
            total -= q * s;
        } else {
            err += (1 - q) * s;
            total += s;
        }
    }
    if (total > 0) err /= total;
    const AK_String result(err, "%.15g");
    AK_MSG("INFO: deposition error relative to '" << line->Id() << "' is " << result);
    SetVariableValue("$DepositionError", result);
}
