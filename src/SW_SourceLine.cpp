// Source lines: cells and fractions, attributes, drawing, container.

#include "SW_SourceLine.h"

#include "SW_Polyline_Shared.h"
#include "SW_Simulation_Scenario.h"

#include <algorithm>

std::span<const AK_Row> SW_SourceLine::Rows()
{
    using S = SW_SourceLine;
    // clang-format off
    static constexpr Row rows[] = {
        {"StartPoint", pair<[](const S& line) { return line._startPoint; }, &S::SetPoint<&S::_startPoint>>},   // m
        {"EndPoint",   pair<[](const S& line) { return line._endPoint; }, &S::SetPoint<&S::_endPoint>>},       // m
        {"MassFlow",   amount<S, &S::_massFlow>},                                                         // kg/s
    };
    // clang-format on
    return rows;
}

SW_SourceLine::SW_SourceLine(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

void SW_SourceLine::LoadFinalize() { FindCells(SW_SimulationMesh(*this)); }

template <AK_Vec2 SW_SourceLine::*point>
void SW_SourceLine::SetPoint(const AK_String& text)
{
    AK_Vec2 p;
    if (!AK_ReadFinite(text, &p.x, 2)) return;
    this->*point = p;
    LoadFinalize();
}

void SW_SourceLine::SetEnds(const AK_Vec2& start, const AK_Vec2& end)
{
    _startPoint = start;
    _endPoint = end;
    LoadFinalize();
}

// ----------------------------------------------------------------------------------------------------------------
// Cells
// ----------------------------------------------------------------------------------------------------------------

// Where p stands on the way from a to b: 0 to 1.
static float FractionAlong(const AK_Vec2& a, const AK_Vec2& b, const AK_Vec2& p)
{
    const AK_Vec2 ab = b - a;
    const double lengthSquared = Dot(ab, ab);
    const double fraction = lengthSquared > 0 ? Dot(ab, p - a) / lengthSquared : 0;
    return float(std::clamp(fraction, 0.0, 1.0));
}

void SW_SourceLine::ProjectOnto(const SW_Mesh* mesh)
{
    if (!FindCells(mesh))
        AK_MSG("WARNING:source line " << Id() << " does not lie on the terrain as a whole: no snow enters outside");
}

bool SW_SourceLine::FindCells(const SW_Mesh* mesh)
{
    _ends[0] = {_startPoint.x, _startPoint.y, 0};
    _ends[1] = {_endPoint.x, _endPoint.y, 0};
    _cells.Clear();
    _fractions.Clear();
    if (!mesh) return false;
    const bool startsInside = mesh->Project(_ends[0], -1) >= 0;
    const bool endsInside = mesh->Project(_ends[1], -1) >= 0;
    // A walk begins inside; from the end, its way is turned about afterwards.
    AK_List<AK_Vec2> crossings(1);
    const AK_Vec2 from = startsInside ? _startPoint : _endPoint;
    mesh->GetCellsAlongLine(from, startsInside ? _endPoint : _startPoint, &_cells, &crossings);
    const bool leavesMesh = _cells.Size() > 0 && crossings.Size() == _cells.Size();
    _fractions.Append(FractionAlong(_startPoint, _endPoint, from));
    for (const AK_Vec2& p : crossings) _fractions.Append(FractionAlong(_startPoint, _endPoint, p));
    if (!leavesMesh) _fractions.Append(startsInside ? 1.0f : 0.0f);
    if (!startsInside) {
        std::reverse(_cells.begin(), _cells.end());
        std::reverse(_fractions.begin(), _fractions.end());
    }
    return startsInside && endsInside;
}

float SW_SourceLine::MassGainInCell(int i, float dt) const
{
    return (_fractions[i + 1] - _fractions[i]) * (dt * float(_massFlow));
}

AK_Vec SW_SourceLine::PositionInCell(int i, float q) const
{
    const float s = (_fractions[i + 1] - _fractions[i]) * q + _fractions[i];
    return {_startPoint.x + (_endPoint.x - _startPoint.x) * double(s),
            _startPoint.y + (_endPoint.y - _startPoint.y) * double(s), 0};
}

// ----------------------------------------------------------------------------------------------------------------
// Drawing
// ----------------------------------------------------------------------------------------------------------------

int SW_SourceLine::BoundingBox(float* lo, float* hi) const
{
    const AK_Vec min{std::min(_startPoint.x, _endPoint.x), std::min(_startPoint.y, _endPoint.y),
                     std::min(_ends[0].z, _ends[1].z)};
    const AK_Vec max{std::max(_startPoint.x, _endPoint.x), std::max(_startPoint.y, _endPoint.y),
                     std::max(_ends[0].z, _ends[1].z)};
    ToFloats(min, lo);
    ToFloats(max, hi);
    return UpdateBoundingBox(lo, hi);
}

void SW_SourceLine::Draw()
{
    for (const auto shape : {GL_LINE_STRIP, GL_POINTS}) {
        aglBegin(shape);
        AK_DrawVertex(_ends[0]);
        AK_DrawVertex(_ends[1]);
        aglEnd();
    }
}

// ----------------------------------------------------------------------------------------------------------------
// The container
// ----------------------------------------------------------------------------------------------------------------

std::span<const AK_Row> SW_SourceLines::Rows()
{
    using S = SW_SourceLines;
    // clang-format off
    static constexpr Row rows[] = {
        {"Create",        command<&S::Create>},
        {"AddSourceLine", command<&S::Create>},
        {"Clone",         command<&S::Clone>},
        {"Import",        command<&S::Import>},
        {"LinesOfType",   shown<[](const S& lines) { return SW_PathsOfType(lines, SW_SourceLine::type); }>},
    };
    // clang-format on
    return rows;
}

SW_SourceLines::SW_SourceLines(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

AK_Object* SW_SourceLines::CreateComponent(const AK_String& id, const AK_String& type)
{
    return type == SW_SourceLine::type ? new SW_SourceLine(id, this) : nullptr;
}

void SW_SourceLines::Create(const AK_String& id)
{
    auto* line = new SW_SourceLine(id, this);
    AddComponent(line);
}

void SW_SourceLines::Import(const AK_String& path)
{
    const SW_LineFormat* format = SW_FormatOfFile(path);
    if (!format) {
        AK_MSG("WARNING:no lines are read from '" << path << "': unknown extension");
        return;
    }
    SW_UniqueIds ids(*this);
    const bool opened = SW_ReadLines(path, *format, [&](const SW_LineOfFile& file) {
        auto* line = new SW_SourceLine(ids.Unique(SW_IdOfLine(path, *format, file)), nullptr);
        SW_UniqueIds::Adopt(*this, line);
        line->SetEnds(file.line._x[0], file.line._x[file.line._x.Size() - 1]);
    });
    if (!opened) _execStatus = AK_String("cannot open file ") + path;
}

void SW_SourceLines::AddCopy(SW_SourceLine& source, const AK_String& id)
{
    auto* copy = new SW_SourceLine(id, this);
    AddComponent(copy);
    copy->AssignAttributesOf(&source, AK_List<AK_String>(1));
}

void SW_SourceLines::Clone(const AK_String& path)
{
    if (auto* source = dynamic_cast<SW_SourceLine*>(ObjectById(path)))
        AddCopy(*source, source->Id() + "_cloned");
    else
        _execStatus = AK_String("there is no ") + SW_SourceLine::type + " '" + path + "'";
}

void SW_SourceLines::CopyLinesOf(const SW_SourceLines& source)
{
    for (int i = 0; i < source.NumComponents(); ++i) AddCopy(*source.Line(i), source.Line(i)->Id());
}
