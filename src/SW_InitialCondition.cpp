// Release areas: attributes, mass, files, container.

#include "SW_InitialCondition.h"

#include "SW_Mesh.h"
#include "SW_Particles.h"
#include "SW_Polyline_Text.h"

#include <algorithm>
#include <cstring>

std::span<const AK_Row> SW_InitialCondition::Rows()
{
    using S = SW_InitialCondition;
    using Text = const AK_String&;
    // clang-format off
    static constexpr Row rows[] = {
        {"Depth",              pair<[](const S& area) { return area._depth; }, &S::SetDepth>},       // m
        {"DepthVis",           editable<&S::HasConstantDepth>},
        {"Density",            pair<&S::Density, &S::SetDensity>},                                   // kg/m3
        {"Enthalpy",           finiteValue<S, &S::_enthalpy>},                                       // J/kg
        {"Mass",               shown<&S::Mass>},                                                     // kg
        {"UpdateMass",         command<&S::UpdateMass>},
        {"RelDepFuncName",     pair<[](const S& area) { return area._relDepFuncName; }, &S::SetRelDepFuncName>},
        {"RelDepFuncNameOpts", shown<&S::RelDepFuncNameOpts>},
        {"RelDepFuncPar",      pair<&S::RelDepFuncPar, &S::SetRelDepFuncPar>},
        {"RelDepFuncParVis",   visible<&S::HasParameters>},
        {"Polygon",            pair<[](const S& area) { return SW_PointsText(area); },
                                    [](S& area, Text text) { SW_SetPoints(area, text); area.UpdateMass(""); }>},
        {"ProjectOnto",        command<[](S& area, Text mesh) { area.ProjectOnto(mesh); area.UpdateMass(""); }>},
    };
    // clang-format on
    return rows;
}

SW_InitialCondition::SW_InitialCondition(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

SW_InitialCondition::~SW_InitialCondition() { UnloadDepthFunction(); }

void SW_InitialCondition::LoadFinalize()
{
    SW_ProjectOntoSimulationMesh(*this);
    UpdateMass("");
}

void SW_InitialCondition::SetDepth(const AK_String& text)
{
    SW_SetAmount(_depth, text);
    ComputeMass();
}

void SW_InitialCondition::SetDensity(const AK_String& text)
{
    SW_SetAmount(_density, text);
    ComputeMass();
}

// ----------------------------------------------------------------------------------------------------------------
// Mass
// ----------------------------------------------------------------------------------------------------------------

void SW_InitialCondition::ComputeMass()
{
    _mass = TrueArea() * _depth * _density;
    AK_String& keys = _line.annotations;
    keys.SetKeyValue("name", Id(), '=', ';');
    keys.SetKeyValue("d0", AK_ToText(_depth, nullptr), '=', ';');
    keys.SetKeyValue("rho", AK_ToText(_density, nullptr), '=', ';');
}

void SW_InitialCondition::UpdateMass(const AK_String&)
{
    const Call running(this);   // a formula may delete the area
    UpdateTrueArea();
    if (_depthFunction || _depthMesh.Find(*this)) {
        const SW_Mesh* mesh = SW_SimulationMesh(*this);
        if (!mesh) mesh = BaseMesh();
        if (mesh) _depth = MeanDepth(*mesh);
    }
    ComputeMass();
}

// Over the cells whose centre lies inside; the depth as it stands if there is none.
double SW_InitialCondition::MeanDepth(const SW_Mesh& mesh) const
{
    double volume = 0;   // m3
    double area = 0;     // m2, on the slope
    for (int cell = 0; cell < mesh.NumCells(); ++cell) {
        const AK_Vec center = mesh.CellCenter(cell);
        if (!Contains(center)) continue;
        const AK_Vec normal = mesh.CellNormal(cell);
        const double cellArea = Length(normal);
        volume += cellArea * Depth(center, Normalized(normal));
        area += cellArea;
    }
    return area > 0 ? volume / area : _depth;
}

// ----------------------------------------------------------------------------------------------------------------
// Files
// ----------------------------------------------------------------------------------------------------------------

bool SW_InitialCondition::ReadFromRelFile(AK_TextReader& reader)
{
    double values[2];   // depth, density; a third number, which tools write, says nothing new
    if (!SW_ReadAreaHeader(reader, values, 2, 2)) return false;
    if (ReadFromKORVO99Ascii(reader)) {
        SW_WarnOfArea(reader, InLanguage("the area is not complete and is left out",
                                         "das Gebiet ist unvollstaendig und entfaellt"));
        return false;
    }
    _depth = std::max(values[0], 0.0);
    _density = std::max(values[1], 0.0);
    return true;
}

// "d0" is the depth normal to the slope, "ah" the height of the crown measured plumb, which counts without "d0"; "temp"
// the temperature of the snow in degrees Celsius: dry snow, so not above 0.
void SW_InitialCondition::TakeKeys(const SW_KeysOfLine& keys)
{
    UpdateTrueArea();
    double value = 0;
    if (keys.Number("ah", value)) _depth = std::max(value * _cosMeanIncl, 0.0);
    if (keys.Number("d0", value)) _depth = std::max(value, 0.0);
    if (keys.Number("rho", value)) _density = std::max(value, 0.0);
    if (keys.Number("temp", value)) _enthalpy = SW_Particles::cp_ice * std::min(value, 0.0);
    UpdateMass("");
}

// ----------------------------------------------------------------------------------------------------------------
// The container
// ----------------------------------------------------------------------------------------------------------------

std::span<const AK_Row> SW_InitialConditions::Rows()
{
    using S = SW_InitialConditions;
    // clang-format off
    static constexpr Row rows[] = {
        {"Create",        command<&S::Create>},
        {"Clone",         command<&S::Clone>},
        {"LinesOfType",   shown<&S::LinesOfType>},
        {"Import",        command<&S::Import>},
        {"LoadRelFile",   command<&S::LoadRelFile>},
        {"NewDepth",      pair<&S::_newDepth, &S::NewDepth>},        // m
        {"NewDensity",    pair<&S::_newDensity, &S::NewDensity>},    // kg/m3
        {"ProjectOnto",   command<&S::ProjectOnto>},
        {"MeshPathsList", shown<&S::MeshPathsList>},
    };
    // clang-format on
    return rows;
}

SW_InitialConditions::SW_InitialConditions(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

SW_Polyline* SW_InitialConditions::NewLine(const AK_String& id, AK_Object* parent) const
{
    auto* area = new SW_InitialCondition(id, parent);
    if (!_newDepth.IsEmpty()) area->Set("Depth", _newDepth);
    if (!_newDensity.IsEmpty()) area->Set("Density", _newDensity);
    return area;
}

void SW_InitialConditions::SetNew(AK_String& value, const AK_String& text)
{
    double checked = 0;
    if (!text.IsEmpty()) SW_SetAmount(checked, text);
    if (_execStatus.IsEmpty()) value = text;
}

void SW_InitialConditions::Import(const AK_String& path)
{
    if (path.Extension() == "rel")
        LoadRelFile(path);
    else
        SW_ScenarioLines::Import(path);
}

void SW_InitialConditions::LoadRelFile(const AK_String& path)
{
    LoadAreas(path, "rel", [](SW_Polyline& area, AK_TextReader& reader) {
        return static_cast<SW_InitialCondition&>(area).ReadFromRelFile(reader);
    });
}

void SW_InitialConditions::TakeKeys(SW_Polyline& line, const SW_KeysOfLine& keys)
{
    static_cast<SW_InitialCondition&>(line).TakeKeys(keys);
}
