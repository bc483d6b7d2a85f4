// Ids and paths: how an object gets its name, and how a path finds an object.
//
// An id is made of letters, digits and "_" and is unique among the components of the parent. A path is ids joined by
// "/", relative to the object it is asked of; "" is that object, a first "" or "root" the root, ".." the parent. A path
// also reaches what is not in memory: a component whose directory lies in the object's own is made and loaded on the
// way.

#include "AK_Object.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

// ----------------------------------------------------------------------------------------------------------------
// Ids
// ----------------------------------------------------------------------------------------------------------------

// The highest number an id may end in to become unique; beyond it ids grow by "x".
static constexpr long maxIdNumber = 9999;

namespace {

// The ids of an object's siblings. A hash, since an import can bring thousands of lines of one name, each of which
// tries all numbers up to its own.
class TakenIds {
public:
    TakenIds(const AK_Object* parent, const AK_Object* self)
    {
        for (int i = 0; i < parent->NumComponents(); ++i)
            if (parent->ComponentAt(i) != self) _ids[parent->ComponentAt(i)->Id()] = 1;
    }
    bool operator()(const AK_String& id) { return _ids[id] != 0; }

private:
    AK_Dict<AK_String, int> _ids;
};

}   // namespace

// "A" -> "A_0001", "A_0009" -> "A_0010", "B_7" -> "B_0008". False when the numbers are used up.
static bool NextId(AK_String& id)
{
    long n = 1;
    char* underscore = std::strrchr(&id[0], '_');
    if (underscore && AK_String::IsDigit(underscore[1])) {
        n = std::strtol(underscore + 1, nullptr, 10);
        if (n >= maxIdNumber) return false;
        ++n;
        id = AK_String(id.c_str(), underscore);
    }
    id.Append(AK_String(int(n), "_%04d"));
    return true;
}

static void MakeUnique(AK_String& id, const AK_Object* parent, const AK_Object* self)
{
    bool isTaken = false;
    for (int i = 0; i < parent->NumComponents(); ++i)
        isTaken = isTaken || (parent->ComponentAt(i) != self && parent->ComponentAt(i)->Id() == id);
    if (!isTaken) return;
    TakenIds taken(parent, self);
    while (taken(id) && NextId(id)) {}
    while (taken(id)) id.Append("x");
}

void AK_Object::Id(const AK_String& newId)
{
    AK_String id = newId;
    id.ReplaceNonAlNum('_');
    if (id.IsEmpty()) id = Type() + "_" + AK_String(_object_counter, "%d");
    if (_parent) MakeUnique(id, _parent, this);

    const AK_String oldId = _id;
    _id = id;
    if (oldId.IsEmpty() || _projectDir.IsEmpty()) return;
    AK_String dir = _projectDir;
    char* slash = std::strrchr(&dir[0], '/');
    dir = (slash ? AK_String(dir.c_str(), slash) : AK_String(".")) + "/" + id;
    if (AK_System::FileExists(_projectDir) && AK_System::RenameFile(_projectDir, dir) != 0)
        _id = oldId;
    else
        ProjectDir(dir);
}

AK_String AK_Object::Type() const { return Attributes()->Id(1); }

AK_String AK_Object::IdTyped() const { return _id + "." + Type(); }

AK_String AK_Object::IdAbs() const
{
    AK_String path = _id;
    for (const AK_Object* object = _parent; object; object = object->_parent) path = object->_id + "/" + path;
    return path;
}

AK_String AK_Object::IdAbs(const AK_Object* base) const
{
    AK_List<AK_String> to(1), from(1);
    IdAbs().Split('/', to);
    base->IdAbs().Split('/', from);
    int common = 0;
    while (common < to.Size() && common < from.Size() && to[common] == from[common]) ++common;
    AK_String path;
    for (int i = common; i < from.Size(); ++i) path.Append("../");
    for (int i = common; i < to.Size(); ++i) {
        if (i > common) path.Append("/");
        path.Append(to[i]);
    }
    return path;
}

void AK_Object::ProjectDir(const AK_String& dir)
{
    _projectDir = dir;
    for (AK_Object* component : _components) {   // below no directory there is none either, and never "/<id>"
        if (component->_parent == this) component->ProjectDir(dir.IsEmpty() ? dir : dir + "/" + component->_id);
    }
}

// ----------------------------------------------------------------------------------------------------------------
// Paths
// ----------------------------------------------------------------------------------------------------------------

AK_Object* AK_Object::ObjectById(const AK_String& path)
{
    AK_Object* object = this;
    const AK_Object* root = Root();
    const char* rest = path.c_str();
    while (object && *rest) {
        if (std::strncmp(rest, "%ak_ptr%", 8) == 0) {
            // Any text can look like an address: only that of an object in the tree is followed.
            auto* named = static_cast<AK_Object*>(AK_String(rest).Pointer());
            return root->HasInTree(named) ? named : nullptr;
        }
        const char* slash = std::strchr(rest, '/');
        const AK_String part = slash ? AK_String(rest, slash) : AK_String(rest);
        rest = slash ? slash + 1 : rest + part.Length();
        if (part.IsEmpty() || part == "root" || part == root->_id)
            object = const_cast<AK_Object*>(root);
        else if (AK_Object* component = object->Component(part))
            object = component;
        else if (part == ".." && object->_parent)
            object = object->_parent;
        else
            object = object->LoadedComponent(part);
    }
    return object;
}

AK_Object* AK_Object::ObjectFromCurrentById(const AK_String& path)
{
    AK_ASSERT(_curObj.Size());
    AK_Object* current = _curObj[_curObj.Size() - 1];
    return path == "root" ? current->Root() : current->ObjectById(path);
}
