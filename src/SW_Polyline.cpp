// A single line: attributes, editing, record, projection, geometry.

#include "SW_Polyline.h"

#include "AK_Text2d.h"
#include "SW_Mesh.h"
#include "SW_Polyline_Shared.h"
#include "SW_Polyline_Text.h"

#include <algorithm>
#include <cstring>
#include <string>

// ----------------------------------------------------------------------------------------------------------------
// Attributes
// ----------------------------------------------------------------------------------------------------------------

std::span<const AK_Row> SW_Polyline::Rows()
{
    using S = SW_Polyline;
    using Text = const AK_String&;
    // clang-format off
    static constexpr Row rows[] = {
        {"Import",                 command<&S::Import>},
        {"Export",                 command<&S::Export>},
        {"ProjectOnto",            command<[](S& line, Text mesh) { line.ProjectOnto(mesh); }>},
        {"BaseMeshName",           pair<&S::BaseMeshName, &S::SetBaseMeshName>},
        {"MeshNamesList",          shown<[](const S& line) { return SW_PathsOfType(line, "DHM"); }>},
        {"PolylinesList",          shown<[](const S& line) { return SW_PathsOfType(line, "Polyline"); }>},

        {"ListPoints",             command<&S::ListPoints>},
        {"AppendPoint",            command<&S::AppendPoint>},
        {"SelectedVertex",         pair<[](const S& line) { return line._selected + 1; }, &S::SelectedVertex>},
        {"UnselectVertex",         command<[](S& line) { line._selected = -1; }>},
        {"CoordsOfSelectedVertex", shown<&S::CoordsOfSelectedVertex>},
        {"MoveVertex",             command<&S::MoveVertex>},
        {"InsertPoint",            command<&S::InsertPoint>},
        {"RemoveVertex",           command<&S::RemoveVertex>},
        {"Reverse",                command<&S::Reverse>},
        {"Clear",                  command<&S::Clear>},
        {"CopyCoordsOf",           command<&S::CopyCoordsOf>},
        {"Annotations",            pair<&S::Annotations, &S::SetAnnotations>},

        {"NumVertices",            shown<&S::NumVertices>},
        {"ProjectedLength",        shown<&S::ProjectedLength>},   // m
        {"ProjectedDistance",      command<&S::ProjectedDistance>},

        {"DrawResampled",          value<&S::_drawResampled>},
        {"VertexLabels",           value<&S::_vertexLabels>},
        {"LabelFont",              value<&S::_labelFont>},
        {"FontList",               shown<[](const S&) { return AK_Text2d::FontList(); }>},
    };
    // clang-format on
    return rows;
}

SW_Polyline::SW_Polyline(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    _pointSize = 3;
    _lineWidth = 2;
    RunInitializationCommands();
}

void SW_Polyline::SetLine(const AK_Polyline& line)
{
    _line = line;
    PointsChanged();
}

void SW_Polyline::PointsChanged()
{
    SW_PointBox box;
    box.Add(_line._x);
    _xMin = box.Lo();
    _xMax = box.Hi();
    if (const int number = _line.NumNoCoordinates(); number > 0) SW_WarnOfNoCoordinates(IdAbs(), number);
}

void SW_WarnOfNoCoordinates(const AK_String& line, int numPoints)
{
    AK_MSG("WARNING:" << line
                      << InLanguage(": points with coordinates that are no numbers or too large: ",
                                    ": Punkte mit Koordinaten, die keine Zahlen oder zu gross sind: ")
                      << numPoints);
}

int SW_Polyline::BoundingBox(float* lo, float* hi) const
{
    if (NumVertices() == 0) return 0;
    ToFloats(_xMin, lo);
    ToFloats(_xMax, hi);
    return UpdateBoundingBox(lo, hi);
}

// ----------------------------------------------------------------------------------------------------------------
// Editing
// ----------------------------------------------------------------------------------------------------------------

static constexpr double farthest = 1e30;   // m, and m2: what lies beyond is not found

static bool ReadPoint(const AK_String& text, AK_Vec& p) { return AK_ReadFinite(text, &p.x, 3); }

bool SW_Polyline::FindVertex(const AK_String& text, int& vertex) const
{
    if (!std::strpbrk(text.c_str(), " .")) {
        int number = 0;
        AK_FromText(number, text);
        vertex = std::min(std::max(number, 0), NumVertices()) - 1;
        return true;
    }
    AK_Vec p;
    if (!ReadPoint(text, p)) return false;
    double nearest = farthest;
    vertex = -1;
    for (int i = 0; i < NumVertices(); ++i) {
        const AK_Vec away = _line._x[i] - p;
        if (!(Dot(away, away) < nearest)) continue;
        nearest = Dot(away, away);
        vertex = i;
    }
    return true;
}

void SW_Polyline::SelectedVertex(const AK_String& text)
{
    int vertex;
    if (FindVertex(text, vertex)) _selected = vertex;
}

AK_String SW_Polyline::CoordsOfSelectedVertex() const
{
    return HasSelectedVertex() ? AK_ToText(_line._x[_selected], nullptr) : AK_String();
}

void SW_Polyline::AppendPoint(const AK_String& text)
{
    AK_Vec p;
    if (!ReadPoint(text, p)) return;
    if (const SW_Mesh* mesh = BaseMesh()) mesh->Project(p, -1);
    _selected = _line._x.Append(p);
    PointsChanged();
}

// What the commands on the selected vertex begin with.
bool SW_Polyline::RequireSelectedVertex() const
{
    if (!HasSelectedVertex()) _execStatus = "no vertex is selected";
    return HasSelectedVertex();
}

void SW_Polyline::MoveVertex(const AK_String& text)
{
    AK_Vec p;
    if (!RequireSelectedVertex() || !ReadPoint(text, p)) return;
    _line._x[_selected] = p;
    PointsChanged();
}

void SW_Polyline::InsertPoint(const AK_String& text)
{
    AK_Vec p;
    const bool isFirst = NumVertices() == 0 && _selected == 0;
    if ((!isFirst && !RequireSelectedVertex()) || !ReadPoint(text, p)) return;
    AK_List<AK_Vec>& x = _line._x;
    x.Append(p);
    std::rotate(x.begin() + _selected, x.end() - 1, x.end());
    PointsChanged();
}

void SW_Polyline::RemoveVertex()
{
    if (!RequireSelectedVertex()) return;
    _line._x.Remove(_selected);
    _selected = std::max(std::min(_selected, NumVertices() - 1), 0);
    PointsChanged();
}

void SW_Polyline::Reverse() { std::reverse(_line._x.begin(), _line._x.end()); }

void SW_Polyline::Clear()
{
    SetLine(AK_Polyline());
    _selected = -1;
}

void SW_Polyline::CopyCoordsOf(const AK_String& id)
{
    if (const SW_Polyline* other = SW_FindLine(*this, id))
        SetLine(AK_Polyline(other->_line));
    else
        SW_TellNoLine(id);
}

void SW_TellNoLine(const AK_String& id) { AK_Object::_execStatus = AK_String("there is no line '") + id + "'"; }

void SW_Polyline::ListPoints()
{
    std::string list = "INFO:index: x y z:\n";   // a line can have very many points
    for (int i = 0; i < NumVertices(); ++i) {
        const AK_Vec& p = _line._x[i];
        list.append(AK_String(i + 1, "%d").c_str()).append(":  ");
        list.append(AK_String(p.x, "%.15g").c_str()).append("  ");
        list.append(AK_String(p.y, "%.15g").c_str()).append("  ");
        list.append(AK_String(p.z, "%.15g").c_str()).append("\n");
    }
    _execStatus = list.c_str();
}

void SW_Polyline::ProjectedDistance(const AK_String& text)
{
    AK_Vec2 p;
    if (!AK_ReadFinite(text, &p.x, 2)) return;
    _execStatus = AK_String("INFO: distance to ") + AK_ToText(p, nullptr) + " is " + AK_ToText(Distance(p), nullptr);
}

// ----------------------------------------------------------------------------------------------------------------
// Record
//
//   "SW_Polyline:v0"   string; "SW_Polygon:v0" in old files
//   number of points   int
//   points             x, y, z each, doubles
// ----------------------------------------------------------------------------------------------------------------

int SW_Polyline::SaveData(AK_Stream& stream) const
{
    stream.Write(AK_String("SW_Polyline:v0"));
    stream.Write(_line._x);
    return stream.Failed() ? IoError(AK_HERE) : 0;
}

int SW_Polyline::LoadData(AK_Stream& stream)
{
    AK_String header;
    stream.Read(header);
    if (!(header == "SW_Polyline:v0") && !(header == "SW_Polygon:v0")) return IoError(AK_HERE);
    AK_List<AK_Vec> points(1);
    stream.Read(points);
    if (stream._status != 0) return IoError(AK_HERE);
    _line._x.Swap(points);
    PointsChanged();
    return 0;
}

// ----------------------------------------------------------------------------------------------------------------
// Projection
// ----------------------------------------------------------------------------------------------------------------

void SW_ProjectPoints(AK_List<AK_Vec>& points, const SW_Mesh& mesh)
{
    int cell = -1;
    for (AK_Vec& p : points) cell = mesh.Project(p, cell);
}

void SW_Polyline::ProjectOnto(const AK_String& name)
{
    if (const SW_Mesh* mesh = SW_MeshReference::Find(*this, name)) ProjectOnto(*mesh);
}

void SW_Polyline::ProjectOnto(const SW_Mesh& mesh)
{
    constexpr int worthALog = 100;   // points: above that it can take a while
    if (!mesh.HasSurfaceFor(*this)) return;
    const bool log = NumVertices() > worthALog;
    if (log) AK_MSG("projecting polygon " << Id() << " onto mesh " << mesh.Id() << "...");
    _baseMesh.Set(*this, mesh);
    SW_ProjectPoints(_line._x, mesh);
    PointsChanged();
    if (log) AK_MSG("projecting polygon " << Id() << " onto mesh " << mesh.Id() << " done");
}

void SW_Polyline::ProjectAutomatically()
{
    if (!_baseMesh.IsEmpty() || !Parent() || !Parent()->Parent()) return;
    const AK_Object* meshes = Parent()->Parent()->Component("DHMs");
    const SW_Mesh* first =
        meshes && meshes->NumComponents() > 0 ? dynamic_cast<const SW_Mesh*>(meshes->ComponentAt(0)) : nullptr;
    if (!first || first->NumCells() == 0) return;
    ProjectOnto(*first);
    SetExecTime("ProjectOnto");   // the points have changed, so the line is to be saved
}

void SW_Polyline::Update()
{
    if (_active) ProjectAutomatically();
    AK_Class::Update();
}

// ----------------------------------------------------------------------------------------------------------------
// Geometry
// ----------------------------------------------------------------------------------------------------------------

int SW_Polyline::NumSegments() const { return _closed ? NumVertices() : std::max(NumVertices() - 1, 0); }

double SW_Polyline::ProjectedLength() const
{
    double length = 0;
    for (int i = 0; i + 1 < NumVertices(); ++i) length += Length(AK_Vec2(_line._x[i + 1]) - AK_Vec2(_line._x[i]));
    return length;
}

double SW_Polyline::Distance(const AK_Vec2& p) const
{
    const AK_List<AK_Vec>& x = _line._x;
    double best = -farthest;
    for (int i = 0; i < NumSegments(); ++i) {
        const AK_Vec2 a = x[i];
        const AK_Vec2 ab = AK_Vec2(SegmentEnd(i)) - a;
        const AK_Vec2 ap = p - a;
        const double lengthSquared = Dot(ab, ab);
        const double along = Dot(ab, ap);
        if (!(lengthSquared > 0) || along < 0 || along > lengthSquared) continue;
        const double distance = Cross(ab, ap) / std::sqrt(lengthSquared);
        if (std::fabs(distance) < std::fabs(best)) best = distance;
    }
    const int n = NumVertices();
    for (int i = 0; i < n; ++i) {
        const AK_Vec2 v = x[i];
        const double distance = Length(p - v);
        if (!(distance < std::fabs(best))) continue;
        const AK_Vec2 in = v - AK_Vec2(x[(i + n - 1) % n]);
        const AK_Vec2 out = AK_Vec2(x[(i + 1) % n]) - v;
        const bool turnsLeft = Cross(in, out) > 0;   // what is nearest to such a corner lies on the right
        best = turnsLeft ? -distance : distance;
    }
    return best;
}

double SW_Polyline::CosAngleAtVertex(int i) const
{
    const AK_List<AK_Vec>& x = _line._x;
    const int n = NumVertices();
    const AK_Vec in = x[i] - x[(i + n - 1) % n];
    const AK_Vec out = x[(i + 1) % n] - x[i];
    const double lengths = Length(in) * Length(out);
    return lengths > 0 ? Dot(in, out) / lengths : 1.0;
}

double SW_Polyline::CheckSum() const
{
    double sum = 0;
    for (const AK_Vec& p : _line._x) sum += Length(p);
    return sum;
}
