// Polygons: areas, inclination, colours, corners.

#include "SW_Polygon.h"

#include "SW_Mesh.h"
#include "SW_Polyline_Shared.h"

#include <algorithm>

static constexpr double degrees = 180 / ak_pi;
static constexpr double noArea = 1e-30;   // m2: guards divisions

std::span<const AK_Row> SW_Polygon::Rows()
{
    using S = SW_Polygon;
    // clang-format off
    static constexpr Row rows[] = {
        {"ProjectedArea",   shown<[](const S& polygon) { return std::fabs(polygon.ProjectedAreaValue()); }>},   // m2
        {"TrueArea",        shown<&S::TrueArea>},                                                                    // m2
        {"MeanInclination", shown<&S::MeanInclination>},                                                      // degrees
        {"UpdateTrueArea",  command<&S::UpdateTrueArea>},
    };
    // clang-format on
    return rows;
}

SW_Polygon::SW_Polygon(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    _closed = 1;
    RunInitializationCommands();
}

bool SW_Polygon::Contains(const AK_Vec2& p) const
{
    const int n = NumVertices();
    if (n == 0 || p.x < _xMin.x || p.x > _xMax.x || p.y < _xMin.y || p.y > _xMax.y) return false;
    const AK_Vec* x = Points().Data();
    bool inside = false;
    for (int i = 0; i < n; ++i) {
        const AK_Vec2 a = x[i];
        const AK_Vec2 b = x[i + 1 < n ? i + 1 : 0];
        const double side = (b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x);
        const bool crossesUpwards = a.y < p.y && p.y <= b.y && side > 0;
        const bool crossesDownwards = b.y < p.y && p.y <= a.y && !(side > 0);
        if (crossesUpwards || crossesDownwards) inside = !inside;
    }
    return inside;
}

double SW_Polygon::ProjectedAreaValue() const
{
    const AK_List<AK_Vec>& x = Points();
    double twice = 0;
    for (int i = 1; i + 1 < NumVertices(); ++i)
        twice += (x[i + 1].x - x[0].x) * (x[i].y - x[0].y) - (x[i + 1].y - x[0].y) * (x[i].x - x[0].x);
    return 0.5 * twice;
}

double SW_Polygon::CosMeanInclination() const
{
    const SW_Mesh* mesh = NumVertices() > 0 ? BaseMesh() : nullptr;
    double projected = 0;   // m2
    double area = 0;        // m2
    for (int cell = 0; mesh && cell < mesh->NumCells(); ++cell) {
        if (!Contains(mesh->CellCenter(cell))) continue;
        const AK_Vec normal = mesh->CellNormal(cell);
        projected += normal.z;
        area += Length(normal);
    }
    return area < noArea ? 1.0 : projected / area;
}

void SW_Polygon::UpdateTrueArea()
{
    _cosMeanIncl = CosMeanInclination();
    _trueArea = ProjectedAreaValue() / (_cosMeanIncl + noArea);
}

double SW_Polygon::MeanInclination() const { return std::acos(std::clamp(_cosMeanIncl, -1.0, 1.0)) * degrees; }

void SW_Polygon::SetNameSpecificColor()
{
    static constexpr struct {
        const char* prefix;
        AK_Color color;
    } colors[] = {{"rel", {1, 0, 0}}, {"sec", {1, 0, 1}}, {"ent", {1, 0.67f, 0}}, {"res", {0, 0.67f, 0}}};
    for (const auto& item : colors)
        if (Id().StartsWith(item.prefix)) _color = item.color;
}

// ----------------------------------------------------------------------------------------------------------------
// Four corners
// ----------------------------------------------------------------------------------------------------------------

std::span<const AK_Row> SW_MeshContourPolygon::Rows()
{
    using S = SW_MeshContourPolygon;
    // clang-format off
    static constexpr Row rows[] = {
        {"NWCorner", pair<&S::CornerNumber<0>, &S::SetCorner<0>>},
        {"SWCorner", pair<&S::CornerNumber<1>, &S::SetCorner<1>>},
        {"SECorner", pair<&S::CornerNumber<2>, &S::SetCorner<2>>},
        {"NECorner", pair<&S::CornerNumber<3>, &S::SetCorner<3>>},
    };
    // clang-format on
    return rows;
}

SW_MeshContourPolygon::SW_MeshContourPolygon(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

template <int k>
void SW_MeshContourPolygon::SetCorner(const AK_String& text)
{
    int vertex;
    if (FindVertex(text, vertex)) _corners[k] = _selected = vertex;
}

bool SW_MeshContourPolygon::IsValid() const
{
    if (NumVertices() < 4) return false;
    return std::all_of(_corners, _corners + 4, [this](int corner) { return corner >= 0 && corner < NumVertices(); });
}

double SW_MeshContourPolygon::ProjectedSideLength(int k) const
{
    if (!IsValid()) return 0;
    const int end = _corners[(k + 1) % 4];
    double length = 0;
    for (int i = _corners[k % 4]; i != end;) {
        const int next = (i + 1) % NumVertices();
        length += Length(AK_Vec2(Points()[next]) - AK_Vec2(Points()[i]));
        i = next;
    }
    return length;
}

void SW_MeshContourPolygon::Draw()
{
    static constexpr const char* english[] = {"NW", "SW", "SE", "NE"};
    static constexpr const char* german[] = {"ObenRechts", "UntenRechts", "UntenLinks", "ObenLinks"};
    AK_Class::Draw();
    for (int k = 0; k < 4; ++k) {
        const int vertex = _corners[k];
        if (vertex < 0 || vertex >= NumVertices()) continue;
        SW_DrawText(Points()[vertex], _labelFont, InLanguage(english[k], german[k]));
    }
}
