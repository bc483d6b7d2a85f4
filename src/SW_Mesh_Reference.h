// How one object names a mesh: by a path, or by the bare name of a mesh of the project's terrain.

#pragma once

#include "AK_Object.h"

class SW_Mesh;
class SW_Polyline;

/// A mesh that an object refers to by name: what lies behind attributes such as BaseMeshName.
///
/// The text is kept as it was given, since the mesh may not be there yet, or no longer. It can be a path from the
/// object, a path from the root with or without the root's id or "root", or the bare name of a mesh under
/// "Project/DHMs".
class SW_MeshReference {
public:
    void Set(const AK_String& text) { _text = text; }
    void Set(const AK_Object& owner, const SW_Mesh& mesh);

    bool IsEmpty() const { return _text.IsEmpty(); }
    /// The path of the mesh from the object; a text that leads to no mesh as it is.
    AK_String Path(const AK_Object& owner) const;
    /// The mesh, null if there is none of that name. It is loaded if it lies on disc only.
    SW_Mesh* Find(const AK_Object& owner) const { return Find(owner, _text); }
    static SW_Mesh* Find(const AK_Object& owner, const AK_String& text);

private:
    AK_String _text;
};

/// The line that a text names, null if there is none: by the same paths as meshes, a bare name being that of a line
/// under "Project/Polylines" or "Project/Polygons".
SW_Polyline* SW_FindLine(const AK_Object& owner, const AK_String& text);

/// All objects of a type in the tree but `from` itself, as paths from it, each followed by the list separator.
AK_String SW_PathsOfType(const AK_Object& from, const char* type);
/// The meshes among the components of a container, in the same form; none without a container.
AK_String SW_PathsOfMeshesIn(const AK_Object* container, const AK_Object& from);
