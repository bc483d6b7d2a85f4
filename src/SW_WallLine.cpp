// Walls: heights and slopes, foot line, crossing, drawing, container.

#include "SW_WallLine.h"

#include "SW_Mesh.h"
#include "SW_Polyline_Shared.h"
#include "SW_Polyline_Text.h"

#include <algorithm>
#include <cmath>
#include <cstring>

static constexpr double degrees = 180 / ak_pi;

// ----------------------------------------------------------------------------------------------------------------
// Attributes
// ----------------------------------------------------------------------------------------------------------------

static AK_String TextOfNumbers(const AK_List<double>& numbers)
{
    AK_List<AK_String> texts(1);
    for (const double number : numbers) texts.Append(AK_ToText(number, nullptr));
    return AK_String(texts, ak_sep);
}

// Numbers with the list separator or blanks between them. False, with a status and nothing changed, for anything else.
// "nan" and "inf" are taken, as heights over ground that has none: what was saved is to load.
static bool NumbersFromText(AK_List<double>& numbers, const AK_String& text)
{
    AK_List<AK_String> pieces(1);
    text.Split(ak_sep, pieces);
    AK_List<double> found(1);
    for (const AK_String& piece : pieces)
        for (const char* s = piece.c_str(); s[std::strspn(s, " ")];) {
            char* end = nullptr;
            const double number = std::strtod(s, &end);
            if (end == s) {
                AK_Object::_execStatus = AK_String("'") + text + "' is no list of numbers";
                return false;
            }
            found.Append(number);
            s = end;
        }
    numbers.Swap(found);
    return true;
}

template <auto list>
static void SetNumbers(SW_WallLine& wall, const AK_String& text)
{
    if (NumbersFromText(wall.*list, text)) wall.UpdateTangentsAndNormals();
}

std::span<const AK_Row> SW_WallLine::Rows()
{
    using S = SW_WallLine;
    using Text = const AK_String&;
    // clang-format off
    static constexpr Row rows[] = {
        {"Polyline",                  pair<[](const S& wall) { return SW_PointsText(wall); },
                                           [](S& wall, Text text) { SW_SetPoints(wall, text); }>},
        {"Heights",                   pair<[](const S& wall) { return TextOfNumbers(wall._heights); },
                                           &SetNumbers<&S::_heights>>},                                 // m
        {"Slopes",                    pair<[](const S& wall) { return TextOfNumbers(wall._slopes); },
                                           &SetNumbers<&S::_slopes>>},
        {"AbsHeightAtCurrentVertex",  pair<&S::HeightAtCurrentVertex, &S::SetHeightAtCurrentVertex>},   // m
        {"SlopeAngleAtCurrentVertex", pair<&S::SlopeAngleAtCurrentVertex,
                                           &S::SetSlopeAngleAtCurrentVertex>},                          // degrees
        {"SetHeightOverGround",       command<&S::SetHeightOverGround>},                                // m
        {"ProjectOnto",               command<[](S& wall, Text mesh) {
                                          wall.ProjectOnto(mesh);
                                          wall.UpdateTangentsAndNormals();
                                          wall.WarnOfPointsOutside();
                                      }>},
    };
    // clang-format on
    return rows;
}

SW_WallLine::SW_WallLine(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

void SW_WallLine::LoadFinalize()
{
    SW_ProjectOntoSimulationMesh(*this);
    UpdateTangentsAndNormals();
}

int SW_WallLine::CurrentVertex() const { return _selected < NumVertices() ? _selected : -1; }

AK_String SW_WallLine::HeightAtCurrentVertex() const
{
    const int i = CurrentVertex();
    return i >= 0 && HasHeights() ? AK_ToText(Crown(i).z, nullptr) : AK_String();
}

AK_String SW_WallLine::SlopeAngleAtCurrentVertex() const
{
    const int i = CurrentVertex();
    return i >= 0 ? AK_ToText(std::atan(SlopeAt(i)) * degrees, nullptr) : AK_String();
}

// Gives every vertex an entry of its own, with what it had, or `number` where there was nothing, and changes one.
static void SetEntry(AK_List<double>& list, int numVertices, int i, double number)
{
    AK_List<double> each(1);
    for (int k = 0; k < numVertices; ++k) each.Append(list.Size() > 0 ? list[k % list.Size()] : number);
    each[i] = number;
    list.Swap(each);
}

void SW_WallLine::SetHeightAtCurrentVertex(const AK_String& text)
{
    double height = 0;
    if (CurrentVertex() < 0)
        _execStatus = "no vertex is selected";
    else if (AK_ReadFinite(text, &height, 1)) {
        SetEntry(_heights, NumVertices(), CurrentVertex(), height);
        UpdateTangentsAndNormals();
    }
}

void SW_WallLine::SetSlopeAngleAtCurrentVertex(const AK_String& text)
{
    double angle = 0;
    if (CurrentVertex() < 0)
        _execStatus = "no vertex is selected";
    else if (AK_ReadFinite(text, &angle, 1)) {
        if (!(std::fabs(angle) < 90)) {
            _execStatus = AK_String("'") + text + "' is no angle below 90 degrees";
            return;
        }
        SetEntry(_slopes, NumVertices(), CurrentVertex(), std::tan(angle / degrees));
        UpdateTangentsAndNormals();
    }
}

void SW_WallLine::SetHeightOverGround(const AK_String& text)
{
    AK_List<double> over(1);
    if (!NumbersFromText(over, text)) return;
    const SW_Mesh* mesh = BaseMesh();
    if (!mesh || over.Size() == 0) {
        _execStatus = mesh ? "no height over the ground is given" : "the wall lies on no terrain: project it first";
        return;
    }
    _heights.Clear();
    for (int i = 0; i < NumVertices(); ++i) {
        AK_Vec ground = Points()[i];
        mesh->Project(ground, -1);   // off the mesh the point's own height counts
        _heights.Append(ground.z + over[i % over.Size()]);
    }
    UpdateTangentsAndNormals();
}

void SW_WallLine::TakeHeightsFromPoints()
{
    _heights.Clear();
    for (const AK_Vec& p : Points()) _heights.Append(p.z);
}

// ----------------------------------------------------------------------------------------------------------------
// Geometry
// ----------------------------------------------------------------------------------------------------------------

AK_Vec SW_WallLine::Crown(int i) const
{
    const AK_Vec& p = Points()[i];
    return {p.x, p.y, _heights[i % _heights.Size()]};
}

// The direction of a vertex is between those of its two segments; an end takes that of its one segment.
void SW_WallLine::UpdateTangents()
{
    const AK_List<AK_Vec>& x = Points();
    _tangents.Clear();
    for (int i = 0; i < NumVertices(); ++i) {
        AK_Vec sum;
        if (i > 0) sum += Normalized(x[i] - x[i - 1]);
        if (i + 1 < NumVertices()) sum += Normalized(x[i + 1] - x[i]);
        _tangents.Append(Normalized(sum));
    }
}

// Where the face goes down from the crown, to the left, until it meets the tangent plane of the terrain in the vertex.
AK_Vec SW_WallLine::Foot(int i, const SW_Mesh& mesh, int cell) const
{
    const AK_Vec vertex = Points()[i];
    double weights[4];
    mesh.GetWeights(cell, vertex, weights);
    const AK_Vec normal = mesh.InterpolatedVector(cell, weights, mesh._vertexNormals);   // m2, not normalised
    const AK_Vec t = _tangents[i];
    const AK_Vec crown = Crown(i);
    const AK_Vec down{-t.y, t.x, -std::sqrt(t.x * t.x + t.y * t.y) * SlopeAt(i)};
    const double s = ((vertex.z - crown.z) * normal.z) / Dot(normal, down);
    AK_Vec foot = crown + down * s;
    if (!IsCoordinate(foot.x) || !IsCoordinate(foot.y) || !IsCoordinate(foot.z)) return vertex;
    mesh.Project(foot, -1);
    return foot;
}

void SW_WallLine::WarnOfPointsOutside() const
{
    const SW_Mesh* mesh = BaseMesh();
    const auto isOutside = [mesh](const AK_Vec& p) { return mesh->CellContainingPoint(p, -1) < 0; };
    const auto outside = mesh ? std::count_if(Points().begin(), Points().end(), isOutside) : 0;
    if (outside > 0)
        AK_MSG("WARNING:" << IdAbs() << ": " << outside << InLanguage(" of ", " von ") << NumVertices()
                          << InLanguage(" points of the wall lie outside the terrain ",
                                        " Punkten der Wand liegen ausserhalb des Gelaendes ")
                          << mesh->IdAbs());
}

void SW_WallLine::WarnOfNoNumbers() const
{
    const auto isNone = [](double number) { return !IsCoordinate(number); };
    if (std::any_of(_heights.begin(), _heights.end(), isNone) || std::any_of(_slopes.begin(), _slopes.end(), isNone))
        AK_MSG("WARNING:" << IdAbs()
                          << InLanguage(": heights or slopes of the wall are no numbers or too large",
                                        ": Hoehen oder Neigungen der Wand sind keine Zahlen oder zu gross"));
}

void SW_WallLine::UpdateTangentsAndNormals()
{
    _tangents.Clear();
    _footLine._x.Clear();
    WarnOfNoNumbers();
    const SW_Mesh* mesh = BaseMesh();
    if (!mesh) return;
    UpdateTangents();
    if (!HasHeights() || !IsActive()) return;
    for (int i = 0; i < NumVertices(); ++i) {
        const int cell = mesh->CellContainingPoint(Points()[i], -1);
        _footLine._x.Append(cell < 0 ? Points()[i] : Foot(i, *mesh, cell));
    }
}

// True if the segments a -> b and c -> d meet, their ends included; s is the place on the second one. Parallel segments
// do not cross.
static bool LinesIntersect(const AK_Vec2& a, const AK_Vec2& b, const AK_Vec2& c, const AK_Vec2& d, double& s)
{
    const AK_Vec2 ab = b - a;
    const AK_Vec2 cd = d - c;
    const AK_Vec2 ca = a - c;
    const double det = Cross(cd, ab);
    if (!(std::fabs(det) > 0)) return false;
    s = Cross(ca, ab) / det;
    const double r = Cross(ca, cd) / det;   // the place on the first one
    return s >= 0 && s <= 1 && r >= 0 && r <= 1;
}

bool SW_WallLine::GetIntersection(const AK_Vec& a, const AK_Vec& b, AK_Vec& foot, AK_Vec& crown, AK_Vec& tangent) const
{
    const AK_List<AK_Vec>& x = _footLine._x;
    for (int k = 1; k < x.Size(); ++k) {
        double s;
        if (!LinesIntersect(a, b, x[k - 1], x[k], s)) continue;
        foot = (1 - s) * x[k - 1] + s * x[k];
        crown = (1 - s) * Crown(k - 1) + s * Crown(k);
        if (!AreCoordinates(crown)) continue;   // a wall whose height is no number there stops nothing
        tangent = Normalized(s * _tangents[k] + _tangents[k - 1]);   // lopsided, as results of this model have it
        return true;
    }
    return false;
}

void SW_WallLine::Draw()
{
    AK_Class::Draw();
    const AK_List<AK_Vec>& foot = _footLine._x;
    if (!HasHeights() || foot.Size() != NumVertices()) return;
    aglBegin(GL_LINE_STRIP);
    for (int i = 0; i < NumVertices(); ++i) AK_DrawVertex(Crown(i));
    aglEnd();
    aglBegin(GL_LINES);
    for (int i = 0; i < NumVertices(); ++i) {
        AK_DrawVertex(Crown(i));
        AK_DrawVertex(foot[i]);
    }
    aglEnd();
}

// ----------------------------------------------------------------------------------------------------------------
// The container
// ----------------------------------------------------------------------------------------------------------------

std::span<const AK_Row> SW_WallLines::Rows()
{
    using S = SW_WallLines;
    // clang-format off
    static constexpr Row rows[] = {
        {"Create",        command<&S::Create>},
        {"AddWallLine",   command<&S::Create>},
        {"Clone",         command<&S::Clone>},
        {"LinesOfType",   shown<&S::LinesOfType>},
        {"Import",        command<[](S& walls, const AK_String& path) { walls.Import(path); }>},
        {"ProjectOnto",   command<&S::ProjectOnto>},
        {"MeshPathsList", shown<&S::MeshPathsList>},
    };
    // clang-format on
    return rows;
}

SW_WallLines::SW_WallLines(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

SW_Polyline* SW_WallLines::NewLine(const AK_String& id, AK_Object* parent) const { return new SW_WallLine(id, parent); }

void SW_WallLines::FinishImport(SW_Polyline& line, const AK_String& path)
{
    const AK_List<AK_Vec>& points = line.Points();
    const bool hasHeights = std::any_of(points.begin(), points.end(), [](const AK_Vec& p) { return p.z != 0; });
    if (hasHeights) static_cast<SW_WallLine&>(line).TakeHeightsFromPoints();
    SW_ScenarioLines::FinishImport(line, path);
}
