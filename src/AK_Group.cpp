// Groups: selections of objects anywhere in the tree that are read and set as one.
//
//   set(group, "Value", "1%AK_SEP%2%AK_SEP%")     members a, b, c get 1, 2, 1
//   get(group, "Value", $x)                       "1%AK_SEP%2%AK_SEP%1%AK_SEP%"
//   set(group, "NoSuch", "1")                     no member knows it: AK_Object is asked
//
// What is passed on to a member can do anything, delete members or the group included. So each loop goes over a copy of
// the list and asks, before it touches an object, whether that is still there.

#include "AK_Group.h"

#include <cstring>

std::span<const AK_Row> AK_Group::Rows()
{
    using G = AK_Group;
    using Getter = AK_String (G::*)() const;
    using Setter = void (G::*)(const AK_String&);
    static constexpr auto getMembers = static_cast<Getter>(&G::ContainedObjectsList);
    static constexpr auto setMembers = static_cast<Setter>(&G::ContainedObjectsList);
    static constexpr auto setId = static_cast<void (AK_Object::*)(const AK_String&)>(&AK_Object::Id);
    static constexpr AK_Access members = pair<getMembers, setMembers>;
    static constexpr AK_Access filter = pair<&G::_filter, &G::Filter>;
    static constexpr AK_Access singleType = pair<&G::_singleType, &G::SetSingleType>;
    static constexpr AK_Access ownId = pair<&G::_id, setId>;   // never the members'
    // clang-format off
    static constexpr Row rows[] = {
        {"AppendObject",             command<&G::AppendObject>},
        {"RemoveObject",             command<&G::RemoveObject>},
        {"RemoveAllObjects",         command<&G::RemoveAllObjects>},
        {"ContainedObjectsList",     members},
        {"GetAllObjectsList",        shown<&G::GetAllObjectsList>},
        {"GetComponentList",         shown<&G::GetComponentList>},
        {"SelectedObjectType",       value<&G::_selectedObjectType>},
        {"GetObjectTypesList",       shown<&G::GetObjectTypesList>},
        {"GetObjectsOfTypeList",     shown<&G::GetObjectsOfTypeList>},
        {"Filter",                   filter},
        {"AppendAllObjectsOfType",   command<&G::AppendAllObjectsOfType>},
        {"RemoveAllObjectsOfType",   command<&G::RemoveAllObjectsOfType>},
        {"SelectedAttribute",        value<&G::_selectedAttribute>},
        {"AttributeOptions",         shown<&G::AttributeOptions>},
        {"AttributeVisibility",      visible<&G::HasSelectedAttribute>},
        {"SelectedValue",            value<&G::_selectedValue>},
        {"ValueOptions",             shown<&G::ValueOptions>},
        {"AppendAllMatchingObjects", command<&G::AppendAllMatchingObjects>},
        {"RemoveAllMatchingObjects", command<&G::RemoveAllMatchingObjects>},
        {"SingleType",               singleType},
        {"SingleTypeVisibility",     visible<&G::_singleType>},
        {"FullVisibility",           visible<&G::IsFull>},
        {"Id",                       ownId},
    };
    // clang-format on
    return rows;
}

AK_Group::AK_Group(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    UpdateAttributes();
    RunInitializationCommands();
}

bool AK_Group::IsOfType(const AK_String& type) const { return Type() == type; }

void AK_Group::SetSingleType(const AK_String& text) { _singleType = text == "1"; }

// ----------------------------------------------------------------------------------------------------------------
// Passing on to the members
// ----------------------------------------------------------------------------------------------------------------

/// Marks a group while it passes something on. Groups may hold each other: one that is met again is not entered.
class AK_Group::PassingOn {
public:
    explicit PassingOn(const AK_Group& group) : _group(group)
    {
        if (_depth == 1) _refusals = 0;   // the outermost one
        _allowed = !group._passingOn && !_guard.TooDeep() && _refusals < maxRefusals;
        if (_allowed)
            group._passingOn = true;
        else
            ++_refusals;
    }
    ~PassingOn()
    {
        if (_allowed) _group._passingOn = false;
    }
    PassingOn(const PassingOn&) = delete;
    PassingOn& operator=(const PassingOn&) = delete;
    bool Allowed() const { return _allowed; }

private:
    static constexpr int maxDepth = 100;        // groups in groups: a project must not choose how deep the stack gets
    static constexpr int maxRefusals = 10000;   // a dozen groups that all hold each other have 12! ways through them
    static inline int _depth = 0;
    static inline int _refusals = 0;   // since the outermost group began

    const AK_DepthGuard _guard{_depth, maxDepth};
    const AK_Group& _group;
    bool _allowed;
};

int AK_Group::SetMembers(const AK_String& attr, const AK_List<AK_String>& values)
{
    const Call running(this);
    const PassingOn passing(*this);
    if (!passing.Allowed()) return 0;
    const AK_List<AK_Object*> members = _components;
    int known = 0;
    AK_String firstError;   // one member's failure keeps no other from being set, nor is it hidden by a later success
    for (int i = 0; i < members.Size(); ++i) {
        if (_components.IndexOf(members[i]) < 0) continue;
        const int result = members[i]->Set(attr, values[i % values.Size()]);
        if (result && firstError.IsEmpty()) firstError = _execStatus;
        known += result;
    }
    if (known) _execStatus = firstError;
    return known;
}

AK_String AK_Group::GetFromMembers(const AK_String& attr) const
{
    const Call running(this);
    const PassingOn passing(*this);
    AK_List<AK_String> values(1);
    if (passing.Allowed()) {
        const AK_List<AK_Object*> members = _components;
        for (const AK_Object* member : members)
            if (_components.IndexOf(const_cast<AK_Object*>(member)) >= 0) values.Append(member->Get(attr));
    }
    return AK_String(values, ak_sep);
}

AK_String AK_Group::Get(const AK_String& attr) const
{
    AK_String result;
    if (qvt_sci_Get(_qvt_sci_namespace, attr, result)) return result;
    if (GetByRows(Rows(), attr, result)) return result;
    result = GetFromMembers(attr);
    if (!std::strstr(result.c_str(), ak_null)) return result;
    return AK_Object::Get(attr);
}

int AK_Group::Set(const AK_String& attr, const AK_String& value)
{
    const Call running(this);
    if (qvt_sci_Set(_qvt_sci_namespace, attr, value)) return 1;
    if (std::strstr(value.c_str(), ak_sep)) {
        AK_List<AK_String> values(1);
        value.Split(ak_sep, values);
        if (const int known = SetMembers(attr, values)) return known;
    }
    if (SetByRows(Rows(), attr, value)) return 1;
    AK_List<AK_String> same(1);
    same.Append(value);
    if (const int known = SetMembers(attr, same)) return known;
    return AK_Object::Set(attr, value);
}

long AK_Group::ExecTime(const AK_String& attr) const
{
    long latest = AK_Object::ExecTime(attr);
    if (latest) return latest;
    const PassingOn passing(*this);
    for (int i = 0; passing.Allowed() && i < NumComponents(); ++i)
        latest = std::max(latest, ComponentAt(i)->ExecTime(attr));
    return latest;
}

// ----------------------------------------------------------------------------------------------------------------
// Members
// ----------------------------------------------------------------------------------------------------------------

// True if the object has become a member by this.
bool AK_Group::Append(AK_Object* object)
{
    const int before = NumComponents();
    if (object && object != this) AppendComponent(object);
    return NumComponents() > before;
}

// From the last to the first; the test may read attributes.
template <class Test>
void AK_Group::RemoveMembers(const Test& test)
{
    const AK_List<AK_Object*> members = _components;
    for (int i = members.Size() - 1; i >= 0; --i) {
        if (_components.IndexOf(members[i]) < 0 || !test(members[i])) continue;
        if (const int at = _components.IndexOf(members[i]); at >= 0 && !Owns(at)) RemoveEntry(at);
    }
}

void AK_Group::AppendObject(const AK_String& path)
{
    Append(Root()->ObjectById(path));
    UpdateAttributes();
}

void AK_Group::RemoveObject(const AK_String& id) { RemoveComponent(id); }

void AK_Group::RemoveAllObjects()
{
    RemoveMembers([](const AK_Object*) { return true; });
}

void AK_Group::UnloadAllContainers(const AK_String&) { RemoveAllObjects(); }

AK_String AK_Group::ContainedObjectsList() const
{
    AK_List<AK_String> paths(1);
    for (const AK_Object* member : _components) paths.Append(member->IdAbs(this));
    return AK_String(paths, ak_sep);
}

void AK_Group::ContainedObjectsList(const AK_String& list)
{
    AK_List<AK_String> paths(1);
    list.Split(ak_sep, paths);
    for (const AK_String& path : paths) Append(ObjectById(path));
    UpdateAttributes();
}

void AK_Group::RemoveAllObjectsOfType()
{
    RemoveMembers([this](const AK_Object* member) { return member->IsOfType(_selectedObjectType); });
}

bool AK_Group::Matches(const AK_Object* object) const
{
    return _selectedAttribute.IsEmpty() || object->Get(_selectedAttribute) == _selectedValue;
}

void AK_Group::AppendAllMatchingObjects()
{
    for (AK_Object* object : ObjectsOfSelectedType())
        if (IsAlive(object) && Matches(object) && IsAlive(object)) Append(object);
    UpdateAttributes();
}

void AK_Group::RemoveAllMatchingObjects()
{
    RemoveMembers([this](const AK_Object* member) { return member->IsOfType(_selectedObjectType) && Matches(member); });
}

// ----------------------------------------------------------------------------------------------------------------
// The group's own description
// ----------------------------------------------------------------------------------------------------------------

/// The class roots of an object, the most basic first, and what keeps them alive.
struct AK_Group::Ancestry {
    AK_Description description;
    AK_List<const AK_Attribute*> roots{1};
};

AK_Group::Ancestry AK_Group::AncestryOf(const AK_Object* member)
{
    Ancestry ancestry;
    if (const auto* group = dynamic_cast<const AK_Group*>(member)) {
        // Its class and what its members share, not the node it has made itself: two groups that hold each other would
        // describe each other in a circle.
        ancestry.roots.Append(_attributes);
        ancestry.description = group->_common;
    } else
        ancestry.description = member->Description();
    if (ancestry.description) ancestry.description->GetObjHierarchy(ancestry.roots);
    std::reverse(ancestry.roots.begin(), ancestry.roots.end());
    return ancestry;
}

void AK_Group::UpdateAttributes()
{
    Ancestry shared;
    for (int i = 0; i < NumComponents(); ++i) {
        const Ancestry other = AncestryOf(ComponentAt(i));
        if (i == 0) shared = other;
        int n = 0;
        while (n < shared.roots.Size() && n < other.roots.Size() && shared.roots[n]->_id == other.roots[n]->_id) ++n;
        shared.roots.SetSize(n);
    }
    const int n = shared.roots.Size();
    _common = n > 0 ? AK_Description(shared.description, shared.roots[n - 1]) : AK_Description();

    struct OwnDescription {
        AK_Attribute root;
        AK_Description common;
    };
    auto own = std::make_shared<OwnDescription>();
    own->root = *_attributes;
    own->common = _common;
    if (_common) own->root._components.Append(_common.get());
    _attr = AK_Description(own, &own->root);
}

// ----------------------------------------------------------------------------------------------------------------
// Lists to choose from
// ----------------------------------------------------------------------------------------------------------------

namespace {

/// Texts in the order of their first appearance.
class DistinctTexts {
public:
    void Add(const AK_String& text)
    {
        int& seen = _seen[text];
        if (!seen) _list.Append(text);
        seen = 1;
    }
    AK_String List() const { return AK_String(_list, ak_sep); }

private:
    AK_Dict<AK_String, int> _seen;
    AK_List<AK_String> _list{1};
};

}   // namespace

AK_List<AK_Object*> AK_Group::ObjectsOfSelectedType() const
{
    AK_List<AK_Object*> objects(1);
    Root()->GetObjectsOfType(_selectedObjectType, objects);
    return objects;
}

static void GetPathsRecursive(const AK_Object* object, const AK_Object* group,
                              const AK_Dict<const AK_Object*, int>& members, AK_List<AK_String>& paths)
{
    if (object != group && !members.Find(object)) paths.Append(object->IdAbs());
    for (int i = 0; i < object->NumComponents(); ++i)
        if (object->Owns(i)) GetPathsRecursive(object->ComponentAt(i), group, members, paths);
}

AK_String AK_Group::GetComponentList() const { return AK_Object::Get("GetComponentList"); }

AK_String AK_Group::GetAllObjectsList() const
{
    AK_Dict<const AK_Object*, int> members;
    for (const AK_Object* member : _components) members[member] = 1;
    AK_List<AK_String> paths(1);
    GetPathsRecursive(Root(), this, members, paths);
    return AK_String(paths, ak_sep);
}

static void GetTypesListRecursive(const AK_Object* object, DistinctTexts& types)
{
    types.Add(object->Type());
    for (int i = 0; i < object->NumComponents(); ++i)
        if (object->Owns(i)) GetTypesListRecursive(object->ComponentAt(i), types);
}

AK_String AK_Group::GetObjectTypesList() const
{
    DistinctTexts types;
    GetTypesListRecursive(Root(), types);
    return types.List();
}

AK_String AK_Group::AttributeOptions() const
{
    DistinctTexts names;
    for (const AK_Object* object : ObjectsOfSelectedType()) {
        if (!IsAlive(object)) continue;
        AK_List<AK_String> shown(1);
        object->AttributeNamesList('g', true, false).Split(ak_sep, shown);
        for (const AK_String& name : shown) names.Add(name);
    }
    return names.List();
}

AK_String AK_Group::ValueOptions() const
{
    DistinctTexts values;
    if (_selectedAttribute.IsEmpty()) return "";
    for (const AK_Object* object : ObjectsOfSelectedType())
        if (IsAlive(object)) values.Add(object->Get(_selectedAttribute));
    return values.List();
}
