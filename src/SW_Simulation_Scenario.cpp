// The scenario's containers: creation, copies, import; and the way into a simulation.

#include "SW_Simulation_Scenario.h"

#include "SW_Mesh.h"
#include "SW_Polyline_Shared.h"
#include "SW_Polyline_Text.h"

#include <cstring>

// ----------------------------------------------------------------------------------------------------------------
// Simulation and mesh
// ----------------------------------------------------------------------------------------------------------------

SW_Mesh* SW_SimulationMesh(const AK_Object& object)
{
    for (const AK_Object* owner = object.Parent(); owner; owner = owner->Parent())
        if (owner->IsOfType("ShallowWaterSimulation")) return SW_MeshReference::Find(*owner, owner->Get("Mesh"));
    return nullptr;
}

void SW_ProjectOntoSimulationMesh(SW_Polyline& line)
{
    if (line.BaseMesh()) return;
    if (const SW_Mesh* mesh = SW_SimulationMesh(line)) line.Set("ProjectOnto", mesh->IdAbs(&line));
}

AK_String SW_FormulaNames(const char* directory)
{
    AK_List<AK_String> names = AK_Object::AttributesFilesList("cint", directory);
    for (AK_String& name : names) name = name.BaseName();
    return AK_String(names, ak_sep);
}

// ----------------------------------------------------------------------------------------------------------------
// Texts
// ----------------------------------------------------------------------------------------------------------------

AK_String SW_PointsText(const SW_Polyline& line)
{
    AK_List<AK_String> points(1);
    for (const AK_Vec& p : line.Points()) points.Append(AK_ToText(p, nullptr));
    return AK_String(points, ak_sep);
}

void SW_SetPoints(SW_Polyline& line, const AK_String& text)
{
    AK_List<AK_String> points(1);
    text.Split(ak_sep, points);
    AK_Polyline replaced = line.Line();
    replaced._x.Clear();
    for (const AK_String& point : points) {
        AK_Vec p;
        if (!ScanCoordinates(point.c_str(), false, &p.x, 3) && !ScanCoordinates(point.c_str(), false, &p.x, 2)) {
            AK_Object::_execStatus = AK_String("'") + point + "' is no point \"x y\" or \"x y z\"";
            return;
        }
        replaced._x.Append(p);
    }
    line.SetLine(replaced);
    const SW_Mesh* mesh = line.BaseMesh();
    if (!mesh) mesh = SW_SimulationMesh(line);
    if (mesh) line.Set("ProjectOnto", mesh->IdAbs(&line));
}

void SW_SetAmount(double& value, const AK_String& text, bool aboveZero)
{
    double number = 0;
    AK_AssignFinite(number, text);
    if (!AK_Object::_execStatus.IsEmpty()) return;
    if (number < 0 || (aboveZero && number == 0))
        AK_Object::_execStatus = AK_String("'") + text + (aboveZero ? "' is not above 0" : "' is negative");
    else
        value = number;
}

int SW_ScanNumbers(const char* text, double* numbers, int n)
{
    int found = 0;
    for (char* end = nullptr; found < n; text = end, ++found) {
        const double number = std::strtod(text, &end);
        if (end == text || !IsCoordinate(number)) break;
        numbers[found] = number;
    }
    return found;
}

void SW_WarnOfArea(const AK_TextReader& reader, const char* fault)
{
    AK_MSG("WARNING:" << reader.Place() << ": " << fault
                      << InLanguage(": the file is read up to there", ": die Datei wird bis dort gelesen"));
}

int SW_ReadAreaHeader(AK_TextReader& reader, double* numbers, int n, int needed)
{
    static constexpr int maxLine = 512;
    static constexpr const char* blanks = " \t\r\n\v\f";
    AK_String line;
    while (ReadTextLine(reader, line, maxLine)) {
        if (line.c_str()[std::strspn(line.c_str(), blanks)] == 0) continue;
        const int found = SW_ScanNumbers(line.c_str(), numbers, n);
        if (found >= needed) return found;
        SW_WarnOfArea(reader, InLanguage("no head of an area, which has more numbers",
                                         "kein Kopf eines Gebiets, der mehr Zahlen hat"));
        return 0;
    }
    return 0;
}

bool SW_KeysOfLine::Number(const char* key, double& value) const
{
    return SW_ScanNumbers(_valueOf(key).c_str(), &value, 1) == 1;   // "None" is no number
}

// ----------------------------------------------------------------------------------------------------------------
// Lines made and copied
// ----------------------------------------------------------------------------------------------------------------

AK_Object* SW_ScenarioLines::CreateComponent(const AK_String& id, const AK_String& type)
{
    return type == LineType() ? NewLine(id, this) : nullptr;
}

// What a line gets when it has become a component: the colour of its kind, its place on the terrain.
void SW_ScenarioLines::Enter(SW_Polyline& line)
{
    static constexpr struct {
        const char* container;
        const char* color;
    } colors[] = {{"ReleaseAreas", "1 0 0"},
                  {"SecondaryReleaseAreas", "1 0 1"},
                  {"EntrainmentAreas", "1 0.67 0"},
                  {"ResistanceAreas", "0 0.67 0"}};
    for (const auto& item : colors)
        if (Id() == item.container) line.Set("Color", item.color);
    line.LoadFinalize();
}

void SW_ScenarioLines::Create(const AK_String& id)
{
    SW_Polyline* line = NewLine(id, this);
    AddComponent(line);
    Enter(*line);
}

void SW_ScenarioLines::AddCopy(SW_Polyline& source, const AK_String& id)
{
    SW_Polyline* copy = NewLine(id, this);
    AddComponent(copy);
    copy->SetLine(source.Line());
    // A path to a mesh leads elsewhere from here.
    const SW_Mesh* mesh = source.BaseMesh();
    copy->SetBaseMeshName(mesh ? mesh->IdAbs(copy) : source.BaseMeshName());
    AK_List<AK_String> excluded(1);
    excluded.Append("BaseMeshName");
    copy->AssignAttributesOf(&source, excluded);
    copy->LoadFinalize();
}

void SW_ScenarioLines::Clone(const AK_String& path)
{
    auto* source = dynamic_cast<SW_Polyline*>(ObjectById(path));
    if (!source || !(source->Type() == LineType())) {
        _execStatus = AK_String("there is no ") + LineType() + " '" + path + "'";
        return;
    }
    AddCopy(*source, source->Id() + "_cloned");
}

void SW_ScenarioLines::CopyLinesOf(const SW_ScenarioLines& source)
{
    for (int i = 0; i < source.NumComponents(); ++i) {
        auto* line = dynamic_cast<SW_Polyline*>(source.ComponentAt(i));
        if (line) AddCopy(*line, line->Id());
    }
}

void SW_ScenarioLines::ProjectOntoSimulationMesh()
{
    for (int i = 0; i < NumComponents(); ++i)
        if (auto* line = dynamic_cast<SW_Polyline*>(ComponentAt(i))) SW_ProjectOntoSimulationMesh(*line);
}

// ----------------------------------------------------------------------------------------------------------------
// Files
// ----------------------------------------------------------------------------------------------------------------

void SW_ScenarioLines::Import(const AK_String& path)
{
    const bool isDxf = path.Extension() == "dxf" || path.Extension() == "DXF";
    if (isDxf) _dxfAttributes = std::make_unique<AK_DxfAttributes>(path);
    AK_Polyline::_importXDICT = isDxf;
    SW_LineContainer::Import(path);
    AK_Polyline::_importXDICT = 0;
    _dxfAttributes.reset();
}

// The label of a DXF polyline stands in its id: "file_XDICT_3A_layer" with the handle of its data, "file__layer"
// without.
static AK_String WithoutHandle(const AK_String& label, const AK_String& path)
{
    static constexpr const char* mark = "_XDICT_";
    const char* begin = std::strstr(label.c_str(), mark);
    const char* layer = begin ? std::strchr(begin + std::strlen(mark), '_') : nullptr;
    if (layer) return AK_String(label.c_str(), begin) + layer;
    const int length = path.BaseName().Length();
    const bool isDouble = label.Length() > length + 1 && label[length] == '_' && label[length + 1] == '_';
    return isDouble ? AK_String(label.c_str(), label.c_str() + length) + (label.c_str() + length + 1) : label;
}

void SW_ScenarioLines::FinishImport(SW_Polyline& line, const AK_String& path)
{
    const AK_String label = line.Id();
    const AK_String annotations = line.Line().annotations;   // an area writes its own there
    const SW_KeysOfLine keys([&](const char* key) {
        const AK_String value = _dxfAttributes ? _dxfAttributes->Value(label, key) : AK_String();
        return value.IsEmpty() ? annotations.KeyValue(key, '=', ';') : value;
    });
    if (_dxfAttributes) {
        const AK_String name = _dxfAttributes->Name(label);
        line.Id(name.IsEmpty() ? WithoutHandle(label, path) : name);
    }
    Enter(line);
    TakeKeys(line, keys);
}

void SW_ScenarioLines::LoadAreas(const AK_String& path, const char* kind,
                                 const std::function<bool(SW_Polyline&, AK_TextReader&)>& read)
{
    AK_TextReader reader(path);
    if (!reader.IsOpen()) {
        AK_MSG("cannot open " << kind << " file " << path);
        return;
    }
    SW_UniqueIds ids(*this);
    bool found = false;
    for (int number = 1;; ++number) {
        const AK_String id = path.BaseName() + AK_String(number, "_%04d");
        std::unique_ptr<SW_Polyline> area(NewLine(id, nullptr));
        if (!read(*area, reader)) break;
        if (area->NumVertices() == 0) continue;
        found = true;
        area->Id(ids.Unique(id));
        SW_UniqueIds::Adopt(*this, area.get());
        Enter(*area.release());
    }
    if (!found) AK_MSG("WARNING:no area found in '" << path << "'");
}
