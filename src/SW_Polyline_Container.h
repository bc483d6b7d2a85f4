// The containers of lines and of polygons, and what they share: import of files, projection.

#pragma once

#include "AK_Group.h"
#include "SW_Mesh_Reference.h"
#include "SW_Polyline_Points.h"

#include <functional>

class SW_Polyline;

/// A container of line objects of one class.
class SW_LineContainer : public AK_Container {
public:
    /// Adds the lines of a file as components, by its extension: xy, xyz, nxyz, ano, dxf. With a base mesh they are
    /// projected on it. Ids: the name of the file (xy, xyz); behind it "_" and the layer (dxf) or a number (dxf, nxyz,
    /// ano); a name in the file replaces it. Ids that are taken get a number behind them.
    void Import(const AK_String& path);
    /// Projects all components on a mesh, which becomes the base mesh; nothing if there is no such mesh.
    void ProjectOnto(const AK_String& mesh);
    /// The meshes of the container "DHMs" beside this one, as paths from here; without that container fatal.
    AK_String MeshNamesList() const;
    AK_String BaseMeshName() const { return _baseMesh.Path(*this); }
    void SetBaseMeshName(const AK_String& name) { _baseMesh.Set(name); }

protected:
    using AK_Container::AK_Container;

    /// A new line of the container's class, which is no component yet.
    virtual SW_Polyline* NewLine(const AK_String& id, AK_Object* parent) const = 0;
    /// Called for each line that has been imported from a file, when it stands.
    virtual void FinishImport(SW_Polyline&, const AK_String& /*path*/) {}
    /// The status for a file that cannot be opened.
    virtual AK_String CannotOpen(const AK_String& path) const;

    SW_MeshReference _baseMesh;
};

/// Lines and sets of lines.
class SW_Polylines : public AK_Class<SW_Polylines, SW_LineContainer> {
public:
    static constexpr const char* className = "SW_Polylines";
    static std::span<const Row> Rows();

    SW_Polylines(const AK_String& id, AK_Object* parent);
    AK_Object* CreateComponent(const AK_String& id, const AK_String& type) override;
    virtual void Create(const AK_String& id);

    void CreateSet(const AK_String& id);
    /// A set named after the file, with its lines.
    void ImportSet(const AK_String& path);

    /// The lines of a file without objects: break lines of meshes. False, with a status text, if it cannot be opened.
    /// `look` is shown each line, and the place in the file at which it ends.
    static bool LoadLines(const AK_String& path, const char* extension, AK_List<AK_Polyline>& lines,
                          const std::function<void(const AK_Polyline&, const AK_String& place)>& look = nullptr);
    static bool LoadNxyzFile(const AK_String& path, AK_List<AK_Polyline>& lines);
    static bool LoadDxfFile(const AK_String& path, AK_List<AK_Polyline>& lines);

protected:
    SW_Polyline* NewLine(const AK_String& id, AK_Object* parent) const override;
};

class SW_Polygons : public AK_Class<SW_Polygons, SW_LineContainer> {
public:
    static constexpr const char* className = "SW_Polygons";
    static std::span<const Row> Rows();

    SW_Polygons(const AK_String& id, AK_Object* parent);
    AK_Object* CreateComponent(const AK_String& id, const AK_String& type) override;
    virtual void Create(const AK_String& id);

protected:
    SW_Polyline* NewLine(const AK_String& id, AK_Object* parent) const override;
    void FinishImport(SW_Polyline& line, const AK_String& path) override;
    AK_String CannotOpen(const AK_String& path) const override;
};
