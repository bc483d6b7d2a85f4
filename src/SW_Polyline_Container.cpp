// Containers of lines and polygons.

#include "SW_Polyline_Container.h"

#include "SW_Mesh.h"
#include "SW_Polygon.h"
#include "SW_Polyline_Set.h"
#include "SW_Polyline_Shared.h"

// ----------------------------------------------------------------------------------------------------------------
// What they share
// ----------------------------------------------------------------------------------------------------------------

AK_String SW_LineContainer::CannotOpen(const AK_String& path) const
{
    return AK_String("cannot open dxf file ") + path;
}

void SW_LineContainer::Import(const AK_String& path)
{
    const SW_LineFormat* format = SW_FormatOfFile(path);
    if (!format) {
        AK_MSG("WARNING:no lines are read from '" << path << "': unknown extension");
        return;
    }
    const SW_Mesh* mesh = _baseMesh.Find(*this);
    SW_UniqueIds ids(*this);
    const bool opened = SW_ReadLines(path, *format, [&](const SW_LineOfFile& file) {
        SW_Polyline* line = NewLine(ids.Unique(SW_IdOfLine(path, *format, file)), nullptr);
        line->SetLine(file.line);
        if (!file.colour.IsEmpty()) line->SetColor(file.colour);
        SW_UniqueIds::Adopt(*this, line);
        if (mesh) line->Set("ProjectOnto", mesh->IdAbs(line));
        FinishImport(*line, path);
    });
    if (!opened) _execStatus = CannotOpen(path);
}

void SW_LineContainer::ProjectOnto(const AK_String& name)
{
    const SW_Mesh* mesh = SW_MeshReference::Find(*this, name);
    if (!mesh || !mesh->HasSurfaceFor(*this)) return;
    for (int i = 0; i < NumComponents(); ++i) ComponentAt(i)->Set("ProjectOnto", mesh->IdAbs(ComponentAt(i)));
    _baseMesh.Set(*this, *mesh);
}

AK_String SW_LineContainer::MeshNamesList() const
{
    const AK_Object* meshes = Parent() ? Parent()->Component("DHMs") : nullptr;
    AK_ASSERT_AS(meshes, "Parent()->Component(\"DHMs\")");
    return SW_PathsOfMeshesIn(meshes, *this);
}

// ----------------------------------------------------------------------------------------------------------------
// Lines
// ----------------------------------------------------------------------------------------------------------------

std::span<const AK_Row> SW_Polylines::Rows()
{
    using S = SW_Polylines;
    // clang-format off
    static constexpr Row rows[] = {
        {"Create",        command<&S::Create>},
        {"CreateSet",     command<&S::CreateSet>},
        {"Import",        command<&S::Import>},
        {"ImportSet",     command<&S::ImportSet>},
        {"ProjectOnto",   command<&S::ProjectOnto>},
        {"BaseMeshName",  pair<&S::BaseMeshName, &S::SetBaseMeshName>},
        {"MeshNamesList", shown<&S::MeshNamesList>},
    };
    // clang-format on
    return rows;
}

SW_Polylines::SW_Polylines(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

AK_Object* SW_Polylines::CreateComponent(const AK_String& id, const AK_String& type)
{
    if (type == "Polyline") return NewLine(id, this);
    return type == "PolylineSet" ? new SW_PolylineSet(id, this) : nullptr;
}

SW_Polyline* SW_Polylines::NewLine(const AK_String& id, AK_Object* parent) const { return new SW_Polyline(id, parent); }

void SW_Polylines::Create(const AK_String& id) { AddComponent(NewLine(id, this)); }

void SW_Polylines::CreateSet(const AK_String& id) { AddComponent(new SW_PolylineSet(id, this)); }

void SW_Polylines::ImportSet(const AK_String& path)
{
    if (!AK_System::FileExists(path)) return SW_TellMissingFile(path);
    auto* set = new SW_PolylineSet(path.BaseName(), this);
    AddComponent(set);
    set->Import(path);
}

bool SW_Polylines::LoadLines(const AK_String& path, const char* extension, AK_List<AK_Polyline>& lines,
                             const std::function<void(const AK_Polyline&, const AK_String& place)>& look)
{
    const auto take = [&](const SW_LineOfFile& file) {
        if (look) look(file.line, file.place);
        lines.Append(file.line);
    };
    if (SW_ReadLines(path, *SW_FormatOfExtension(extension), take)) return true;
    AK_Object::_execStatus = AK_String("cannot open dxf file ") + path;
    return false;
}

bool SW_Polylines::LoadNxyzFile(const AK_String& path, AK_List<AK_Polyline>& lines)
{
    return LoadLines(path, "nxyz", lines);
}

bool SW_Polylines::LoadDxfFile(const AK_String& path, AK_List<AK_Polyline>& lines)
{
    return LoadLines(path, "dxf", lines);
}

// ----------------------------------------------------------------------------------------------------------------
// Polygons
// ----------------------------------------------------------------------------------------------------------------

std::span<const AK_Row> SW_Polygons::Rows()
{
    using S = SW_Polygons;
    // clang-format off
    static constexpr Row rows[] = {
        {"Create",        command<&S::Create>},
        {"Import",        command<&S::Import>},
        {"ProjectOnto",   command<&S::ProjectOnto>},
        {"BaseMeshName",  pair<&S::BaseMeshName, &S::SetBaseMeshName>},
        {"MeshNamesList", shown<&S::MeshNamesList>},
    };
    // clang-format on
    return rows;
}

SW_Polygons::SW_Polygons(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

AK_Object* SW_Polygons::CreateComponent(const AK_String& id, const AK_String& type)
{
    return type == "Polygon" ? NewLine(id, this) : nullptr;
}

SW_Polyline* SW_Polygons::NewLine(const AK_String& id, AK_Object* parent) const { return new SW_Polygon(id, parent); }

void SW_Polygons::Create(const AK_String& id) { AddComponent(NewLine(id, this)); }

void SW_Polygons::FinishImport(SW_Polyline& line, const AK_String&)
{
    static_cast<SW_Polygon&>(line).SetNameSpecificColor();
}

AK_String SW_Polygons::CannotOpen(const AK_String& path) const
{
    return path.Extension() == "nxyz" ? AK_String("cannot open file ") + path : SW_LineContainer::CannotOpen(path);
}
