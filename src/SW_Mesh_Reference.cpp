// Names of meshes: from the text of an attribute to the mesh, and back to the path that is shown.

#include "SW_Mesh_Reference.h"

#include "SW_Mesh.h"

#include <cstring>

void SW_MeshReference::Set(const AK_Object& owner, const SW_Mesh& mesh) { _text = mesh.IdAbs(&owner); }

AK_String SW_MeshReference::Path(const AK_Object& owner) const
{
    // What is a relative path is not looked up: that would load a mesh from disc only to print its name.
    if (_text.IsEmpty() || _text.StartsWith("../")) return _text;
    const SW_Mesh* mesh = Find(owner);
    return mesh ? mesh->IdAbs(&owner) : _text;
}

SW_Mesh* SW_MeshReference::Find(const AK_Object& owner, const AK_String& text)
{
    if (text.IsEmpty()) return nullptr;
    AK_Object* root = owner.Root();
    SW_Mesh* mesh = dynamic_cast<SW_Mesh*>(const_cast<AK_Object&>(owner).ObjectById(text));
    if (!mesh) mesh = dynamic_cast<SW_Mesh*>(root->ObjectById(text));
    if (!mesh && !std::strchr(text.c_str(), '/'))
        mesh = dynamic_cast<SW_Mesh*>(root->ObjectById(AK_String("Project/DHMs/") + text));
    return mesh;
}

AK_String SW_PathsOfType(const AK_Object& from, const char* type)
{
    AK_List<AK_Object*> found(1);
    from.Root()->GetObjectsOfType(type, found);
    AK_List<AK_String> paths(found.Size());   // a project can have very many lines
    for (const AK_Object* object : found)
        if (object != &from) paths.Append(object->IdAbs(&from));
    return AK_String(paths, ak_sep);
}

AK_String SW_PathsOfMeshesIn(const AK_Object* container, const AK_Object& from)
{
    AK_List<AK_String> paths(1);
    for (int i = 0; container && i < container->NumComponents(); ++i)
        if (container->ComponentAt(i)->IsOfType("DHM")) paths.Append(container->ComponentAt(i)->IdAbs(&from));
    return AK_String(paths, ak_sep);
}
