// Ids and paths: how an object gets its name, and how a path finds an object.
//
// An id is made of letters, digits and "_" and is unique among the components of the parent. A path is ids joined by
// "/", relative to the object it is asked of; "" is that object, a first "" or "root" the root, ".." the parent. A path
// also reaches what is not in memory: a component whose directory lies in the object's own is made and loaded on the
// way.

#include "AK_Object.h"

#include <cstdlib>
#include <cstring>

// ----------------------------------------------------------------------------------------------------------------
// Ids
// ----------------------------------------------------------------------------------------------------------------

// The highest number an id may end in to become unique; beyond it ids grow by "x".
static constexpr int maxIdNumber = 9999;

namespace {

// The ids of an object's siblings. An import can bring thousands of lines of one name, so a free id is found by one
// walk that notes which are taken, and not by trying them one after the other.
class Siblings {
public:
    /// `beingLoaded` is the directory of the object that is made from disc, and so may bear its name. In a container a
    /// new one would be saved over what is not loaded.
    Siblings(const AK_Object* parent, const AK_Object* self, const AK_String& beingLoaded)
        : _parent(*parent), _self(self)
    {
        const AK_String& dir = parent->ProjectDir();
        const bool isLoading = beingLoaded.StartsWith((dir + "/").c_str());
        if (!dir.IsEmpty() && parent->IsOfType("Container") && !isLoading) _directory = dir;
    }

    bool Have(const AK_String& id) const
    {
        bool found = false;
        ForEach([&](const char* other) { found = found || id == other; });
        return found || IsOnDisc(id);
    }

    // The first number above n for which nobody is called "<stem>_<number in four digits>"; maxIdNumber + 1 for none.
    int FreeNumber(const AK_String& stem, int n) const
    {
        AK_List<char> taken(1);
        taken.Fill(maxIdNumber + 1, 0);
        const size_t length = size_t(stem.Length());
        ForEach([&](const char* other) {
            if (std::strncmp(other, stem.c_str(), length) != 0 || other[length] != '_') return;
            const char* digits = other + length + 1;
            if (std::strlen(digits) == 4 && std::strspn(digits, "0123456789") == 4) taken[std::atoi(digits)] = 1;
        });
        for (++n; n <= maxIdNumber && (taken[n] || IsOnDisc(stem + AK_String(n, "_%04d")));) ++n;
        return n;
    }

    // The least count of "x" behind the id that makes it free.
    int FreeCountOfX(const AK_String& id) const
    {
        AK_List<char> taken(1);
        taken.Fill(_parent.NumComponents() + 1, 0);   // one more than there can be
        const size_t length = size_t(id.Length());
        ForEach([&](const char* other) {
            if (std::strncmp(other, id.c_str(), length) != 0) return;
            const size_t count = std::strspn(other + length, "x");
            if (!other[length + count] && count < size_t(taken.Size())) taken[int(count)] = 1;
        });
        return taken.IndexOf(0);
    }

private:
    bool IsOnDisc(const AK_String& id) const
    {
        return !_directory.IsEmpty() && !(id == _self->Id()) &&
               AK_System::FilesList(_directory + "/" + id, "atr").Size() == 1;
    }

    template <class Action>
    void ForEach(const Action& action) const
    {
        for (int i = 0; i < _parent.NumComponents(); ++i)
            if (_parent.ComponentAt(i) != _self) action(_parent.ComponentAt(i)->Id().c_str());
    }

    const AK_Object& _parent;
    const AK_Object* _self;
    AK_String _directory;   // of a container that a new object joins
};

}   // namespace

// "A" -> "A_0001", "A_0009" -> "A_0010", "B_7" -> "B_0008", "A_9999" -> "A_9999x": the first of these that is free.
static void MakeUnique(AK_String& id, const Siblings& siblings)
{
    if (!siblings.Have(id)) return;
    long number = 0;
    AK_String stem = id;
    const char* underscore = std::strrchr(id.c_str(), '_');
    if (underscore && AK_String::IsDigit(underscore[1])) {
        number = std::strtol(underscore + 1, nullptr, 10);
        stem = AK_String(id.c_str(), underscore);
    }
    if (number < maxIdNumber) {
        const int free = siblings.FreeNumber(stem, int(number));
        id = stem + AK_String(std::min(free, maxIdNumber), "_%04d");
        if (free <= maxIdNumber) return;
    }
    for (int n = siblings.FreeCountOfX(id); n > 0; --n) id.Append("x");
}

// A path with such a part leads to the root.
static bool IsNameOfRoot(const AK_String& id, const AK_Object& root) { return id == "root" || id == root.Id(); }

void AK_Object::Id(const AK_String& newId)
{
    AK_String id = newId;
    id.ReplaceNonAlNum('_');
    if (id.IsEmpty()) id = Type() + "_" + AK_String(_object_counter, "%d");
    const AK_String oldId = _id;
    if (!oldId.IsEmpty() && !(id == oldId) && RefusesAsFixed()) return;
    if (_parent && IsNameOfRoot(id, *Root())) {
        const AK_String refusal =
            AK_String("'") + id + InLanguage("' means the root of all objects: no other bears it",
                                             "' meint die Wurzel aller Objekte: kein anderes heisst so");
        if (!oldId.IsEmpty()) {
            _execStatus = refusal;
            return;
        }
        AK_MSG("WARNING: " << refusal);
        id = id + "_0001";
    }
    if (_parent) MakeUnique(id, Siblings(_parent, this, _directoryToLoad));

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
