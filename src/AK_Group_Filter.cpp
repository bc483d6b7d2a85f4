// The filter of a group: a formula that chooses among the objects of the selected type.
//
// The user writes the inside of `int pass(char id[])`. It is compiled anew for each operation, in a namespace of its
// own directly below the language's root, so that it sees the same names whatever code is running; and it runs on
// behalf of the group, so that paths in it begin there, and the absolute path that it is given leads to the object.

#include "AK_Group.h"

#include "AK_Object_Namespace.h"

#include <cstring>

// Room for a path, and for what the formula may append to it.
static constexpr int pathBufferSize = 131072;

/// A filter that is compiled as long as this lives.
class AK_Group::CompiledFilter {
public:
    CompiledFilter(const AK_Group* group, const AK_String& text) : _group(group), _isEmpty(text.IsEmpty())
    {
        if (_isEmpty || AsksItself()) return;
        const AK_ActiveNamespace root(AK_RootNamespace());
        _space = qvt_sci_NamespaceOpen();
        const AK_String code = AK_String("int pass(char id[]){") + text + "}";
        const int errors = qvt_sci_ParseAny(nullptr, code.c_str());
        qvt_sci_NamespaceSwitchTo(_space);   // an error inside the function leaves the function's namespace active
        Symbol* function = errors ? nullptr : qvt_sci_FuncPtr("pass");
        if (qvt_sci_Takes(function, "char[]")) _pass = function;
        _path.SetSize(pathBufferSize);
    }
    ~CompiledFilter() { qvt_sci_NamespaceDestroy(_space); }
    CompiledFilter(const CompiledFilter&) = delete;
    CompiledFilter& operator=(const CompiledFilter&) = delete;

    bool Compiles() const { return _pass != nullptr; }

    /// No filter lets everything pass, one that does not compile nothing.
    bool Passes(const AK_Object* object)
    {
        if (!_pass) return _isEmpty;
        const AK_String path = object->IdAbs();
        _path.SetSize(std::max(pathBufferSize, path.Length() + 1));
        std::memcpy(_path.Data(), path.c_str(), size_t(path.Length()) + 1);
        qvt_sci_BindArgLength(_pass, 0, _path.Size());
        const CodeOf running(_group);
        _asked.Append(_group);
        const uint64_t answer = qvt_sci_Call(_pass, _path.Data());
        _asked.Remove(_asked.Size() - 1);
        return int(uint32_t(answer)) != 0;   // an int comes in the low 4 bytes
    }

private:
    // A filter that needs its own result would look for it for ever.
    bool AsksItself() const
    {
        if (_asked.IndexOf(_group) < 0) return false;
        _execStatus =
            AK_String("'Filter'") + InLanguage(" of ", " von ") + _group->IdAbs() +
            InLanguage(": the filter asks for its own result", ": der Filter fragt nach seinem eigenen Ergebnis");
        AK_MSG("ERROR: " << _execStatus);
        return true;
    }

    inline static AK_List<const AK_Group*> _asked{1};   // groups whose filters are running
    const AK_Group* _group;
    Namespace* _space = nullptr;
    Symbol* _pass = nullptr;
    AK_List<char> _path{1};   // what the formula gets, which may write into it
    bool _isEmpty;
};

void AK_Group::Filter(const AK_String& text)
{
    if (CompiledFilter(nullptr, text).Compiles()) _filter = text;
}

void AK_Group::AppendAllObjectsOfType()
{
    CompiledFilter filter(this, _filter);
    for (AK_Object* object : ObjectsOfSelectedType()) {
        if (!IsAlive(object) || object == this || _components.IndexOf(object) >= 0) continue;
        if (filter.Passes(object) && IsAlive(object)) Append(object);
    }
    UpdateAttributes();
}

AK_String AK_Group::GetObjectsOfTypeList() const
{
    CompiledFilter filter(this, _filter);
    AK_List<AK_String> paths(1);
    for (const AK_Object* object : ObjectsOfSelectedType()) {
        if (!IsAlive(object)) continue;
        const AK_String path = object->IdAbs();
        if (filter.Passes(object)) paths.Append(path);
    }
    return AK_String(paths, ak_sep);
}
