// Names of meshes and lines: from the text of an attribute to the object, and back to the path that is shown.

#include "SW_Mesh_Reference.h"

#include "SW_Mesh.h"
#include "SW_Polyline.h"

#include <cstring>

void SW_MeshReference::Set(const AK_Object& owner, const SW_Mesh& mesh) { _text = mesh.IdAbs(&owner); }

AK_String SW_MeshReference::Path(const AK_Object& owner) const
{
    // What is a relative path is not looked up: that would load a mesh from disc only to print its name.
    if (_text.IsEmpty() || _text.StartsWith("../")) return _text;
    const SW_Mesh* mesh = Find(owner);
    return mesh ? mesh->IdAbs(&owner) : _text;
}

// The object of a class that a text leads to: from the owner, from the root or, as a bare name, in the containers.
template <class Class>
static Class* FindNamed(const AK_Object& owner, const AK_String& text, std::initializer_list<const char*> containers)
{
    if (text.IsEmpty()) return nullptr;
    AK_Object* root = owner.Root();
    auto* found = dynamic_cast<Class*>(const_cast<AK_Object&>(owner).ObjectById(text));
    if (!found) found = dynamic_cast<Class*>(root->ObjectById(text));
    for (const char* container : containers)
        if (!found && !std::strchr(text.c_str(), '/'))
            found = dynamic_cast<Class*>(root->ObjectById(AK_String(container) + "/" + text));
    return found;
}

SW_Mesh* SW_MeshReference::Find(const AK_Object& owner, const AK_String& text)
{
    return FindNamed<SW_Mesh>(owner, text, {"Project/DHMs"});
}

SW_Polyline* SW_FindLine(const AK_Object& owner, const AK_String& text)
{
    return FindNamed<SW_Polyline>(owner, text, {"Project/Polylines", "Project/Polygons"});
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
