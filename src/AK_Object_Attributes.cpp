// The attributes that every object has, and how a name is looked up when no class knows it.
//
// Below the rows of all classes the names of AK_Object end in four forms: "$name" is a variable of the object,
// "x.macro" runs a macro, "Type::attr" sets attr on all objects of a type, "path:attr" passes on to another object.

#include "AK_Object.h"
#include "AK_Object_Class.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>

// ----------------------------------------------------------------------------------------------------------------
// Texts as numbers
// ----------------------------------------------------------------------------------------------------------------

void AK_FromText(int& value, const AK_String& text)
{
    const long number = std::strtol(text.c_str(), nullptr, 10);
    value = int(number < INT_MIN ? INT_MIN : number > INT_MAX ? INT_MAX : number);
}

void AK_FromText(float& value, const AK_String& text) { value = std::strtof(text.c_str(), nullptr); }

void AK_FromText(double& value, const AK_String& text) { value = std::strtod(text.c_str(), nullptr); }

void AK_FromText(AK_Vec& value, const AK_String& text)
{
    AK_Vec read;
    if (text.f3(&read.x)) value = read;
}

void AK_FromText(AK_Vec2& value, const AK_String& text)
{
    AK_Vec2 read;
    if (text.f2(&read.x)) value = read;
}

// ----------------------------------------------------------------------------------------------------------------
// The table
// ----------------------------------------------------------------------------------------------------------------

static AK_String ComponentList(const AK_Object& object)
{
    AK_List<AK_String> ids(object.NumComponents());
    for (int i = 0; i < object.NumComponents(); ++i) ids.Append(object.ComponentAt(i)->Id());
    return AK_String(ids, ak_sep);
}

static AK_String ObjectsOfSameType(const AK_Object& object)
{
    AK_List<AK_Object*> objects(1);
    object.Root()->GetObjectsOfType(object.Type(), objects);
    AK_List<AK_String> paths(objects.Size());
    for (const AK_Object* other : objects) paths.Append(other->IdAbs(&object));
    return AK_String(paths, ak_sep);
}

static const char* IdVisibility(const AK_Object& object)
{
    return object.Parent() && object.Parent()->IsOfType("Container") ? "w" : "r";
}

static const char* SaveVisibility(const AK_Object& object)
{
    return !object.ProjectDir().IsEmpty() && AK_System::FileExists(object.ProjectDir()) ? "w" : "r";
}

static void AssignFrom(AK_Object& object, const AK_String& path)
{
    if (AK_Object* source = object.ObjectById(path))
        object.AssignAttributesOf(source, AK_List<AK_String>(1));
    else
        AK_Object::_execStatus = AK_String("object '") + path + "' not found";
}

static void SetLanguage(AK_Object&, const AK_String& language)
{
    AK_Object::_language = language;
    AK_Object::_lang = language == "german";
}

// "attribute=value", as a default of the object's class.
static void SetDefaultFromText(AK_Object& object, const AK_String& assignment)
{
    const char* equals = std::strchr(assignment.c_str(), '=');
    if (!equals)
        AK_Object::_execStatus = AK_String("missing '=' in default assignment '") + assignment + "'";
    else if (object.SetDefault(AK_String(assignment.c_str(), equals), AK_String(equals + 1)))
        AK_Object::_execStatus = AK_String("cannot write the defaults of type '") + object.Type() + "'";
}

static void ReportUnwritten(int numFiles)
{
    if (numFiles > 0)
        AK_Object::_execStatus =
            AK_String("cannot write class variables to '") + AK_Object::_userApplicationDirectory + "'";
}

void AK_Object::AddNewComponent(const AK_String& id)
{
    if (_factory) AddComponent(_factory(id));
}

std::span<const AK_Row> AK_Object::Rows()
{
    using O = AK_Object;
    using R = AK_RowsOf<AK_Object>;
    using Text = const AK_String&;
    // clang-format off
    static constexpr Row rows[] = {
        {"Type",                       R::shown<&O::Type>},
        {"Id",                         R::pair<[](const O& o) { return o._id; }, [](O& o, Text id) { o.Id(id); }>},
        {"IdAbs",                      R::shown<[](const O& o) { return o.IdAbs(); }>},
        {"IdVis",                      R::shown<&IdVisibility>},
        {"Active",                     R::value<&O::_active>},
        {"GetComponentList",           R::shown<&ComponentList>},
        {"$latest_comp",               R::shown<[](const O& o) { return o.VariableValue("$latest_comp"); }>},
        {"ProjectDir",                 R::pair<[](const O& o) { return o._projectDir; },
                                               [](O& o, Text dir) {
                                                   const bool isOther = !(dir == o._projectDir);
                                                   o.ProjectDir(dir);
                                                   o.KeepUnreadFiles(isOther);
                                               }>},
        {"SaveAs",                     R::command<&O::SaveAs>},
        {"Save",                       stampsItself(R::command<&O::Save>)},   // only a success makes the object clean
        {"Load",                       stampsItself(R::command<&O::Load>)},
        {"SaveVis",                    R::shown<&SaveVisibility>},
        {"SaveProject",                R::command<&O::SaveProject>},
        {"SaveProjectAs",              R::command<&O::SaveProjectAs>},
        {"LoadProject",                R::command<&O::LoadProject>},
        {"SaveAttributes",             R::command<&O::SaveAttributes>},
        {"SaveAttributesRecursively",  R::command<&O::SaveAttributesRecursively>},
        {"AssignAttributesOf",         R::command<&AssignFrom>},
        {"DeleteComponent",            R::command<&O::DeleteComponent>},
        {"RemoveComponent",            R::command<&O::RemoveComponent>},
        {"RemoveFromDisc",             R::command<[](O& o, Text) { o.RemoveFromDisc(); }>},
        {"Detach",                     R::command<&O::Detach>},
        {"AddNewComponent",            R::command<&O::AddNewComponent>},
        {"SuppressCreatingComponents", R::value<&O::_suppressCreatingComponents>},
        {"UnloadAllContainers",        R::command<&O::UnloadAllContainers>},
        {"Update",                     R::command<[](O& o, Text) { o.Update(); }>},

        {"MacroFileName",              R::value<&O::_macroFileName>},
        {"MacroRepetitions",           R::value<&O::_macroRepetitions>},
        {"ExecMacro",                  R::command<[](O& o, Text file) { o.ExecMacro(file, 0); }>},
        {"StartInBackground",          R::command<&O::StartInBackground>},
        {"ReportCommands",             R::shared<&O::_reportCommands>},
        {"ExplainCommands",            R::shared<&O::_explainCommands>},
        {"SetVariableValue",           R::command<[](O& o, Text assignment) { o.SetVariableValue(assignment); }>},
        {"VariableValues",             R::pair<[](const O& o) { return o.VariableValues(); },
                                               [](O& o, Text list) { o.VariableValues(list); }>},
        {"List_QVT_SCI_predefined",    R::command<&O::List_QVT_SCI_predefined>},
        {"WriteHtmlReferenceRecursive", R::command<&O::WriteHtmlReferenceRecursive>},
        {"WriteEntireHtmlReference",   R::command<&O::WriteEntireHtmlReference>},

        {"ParameterSet",               R::pair<[](const O& o) { return o.ParameterSet(); },
                                               [](O& o, Text name) { o.ParameterSet(name); }>},
        {"ParameterSetOptions",        R::shown<[](const O&) { return ParameterSetOptions(); }>},
        {"SetDefault",                 R::command<&SetDefaultFromText>},
        {"SaveClassVariables",         R::command<[](O& o, Text) { ReportUnwritten(o.SaveClassVariables()); }>},
        {"SaveClassVariablesRec",      R::command<[](O& o, Text) { ReportUnwritten(o.SaveClassVariablesRec()); }>},

        {"Language",                   R::shown<[](const O&) { return _language; }>},
        {"SetLanguage",                R::command<&::SetLanguage>},
        {"LanguageOptions",            R::shown<[](const O&) { return AK_String("default") + ak_sep + "german"; }>},
        {"AllObjectsOfSameTypeList",   R::shown<&ObjectsOfSameType>},
        {"Arglist",                    R::shown<[](const O&) { return Arglist(" "); }>},
        {"ArglistSep",                 R::shown<[](const O&) { return Arglist(ak_sep); }>},
        {"GetCommandsList",            R::shown<[](const O& o) { return o.AttributeNamesList('g', false, false); }>},
        {"VisibleGetCommandsList",     R::shown<[](const O& o) { return o.AttributeNamesList('g', true, false); }>},
        {"GetLabelsList",              R::shown<[](const O& o) { return o.AttributeNamesList('g', false, true); }>},
        {"VisibleGetLabelsList",       R::shown<[](const O& o) { return o.AttributeNamesList('g', true, true); }>},
        {"AttributesDirectory",        R::shown<[](const O&) { return _attributesDirectory; }>},
        {"UserAttributesDirectory",    R::shown<[](const O&) { return _userAttributesDirectory; }>},
        {"UserApplicationDirectory",   R::shown<[](const O&) { return _userApplicationDirectory; }>},
        {"Address",                    R::shown<[](const O& o) { return AK_String::PtrString(&o); }>},
        {"VisWrite",                   R::shown<[](const O&) { return "w"; }>},   // a description can pin a visibility
        {"VisRead",                    R::shown<[](const O&) { return "r"; }>},
        {"VisNone",                    R::shown<[](const O&) { return "-"; }>},
    };
    // clang-format on
    return rows;
}

// ----------------------------------------------------------------------------------------------------------------
// Get and Set
// ----------------------------------------------------------------------------------------------------------------

namespace {

// "root:root:root:..." passes on once for each part: a name from outside must not choose how deep that goes, nor
// "Object::Object::..." how often all objects are asked to ask all objects.
class PassedOn {
public:
    enum Way { toOneObject, toAllObjects };
    explicit PassedOn(Way way = toOneObject) : _way(way) { ++_depth[_way]; }
    ~PassedOn() { --_depth[_way]; }
    PassedOn(const PassedOn&) = delete;
    PassedOn& operator=(const PassedOn&) = delete;
    bool TooOften() const { return _depth[_way] > (_way == toOneObject ? 100 : 3); }

private:
    static inline int _depth[2] = {0, 0};
    Way _way;
};

}   // namespace

int AK_Object::SetByRows(std::span<const Row> rows, const AK_String& attr, const AK_String& value)
{
    for (const Row& row : rows) {
        if (!row.access.set || !(attr == row.name)) continue;
        const Call running(this);
        _execStatus = "";
        row.access.set(*this, value);
        if (!row.access.stampsItself) SetExecTime(attr);
        return 1;
    }
    return 0;
}

bool AK_Object::GetByRows(std::span<const Row> rows, const AK_String& attr, AK_String& result) const
{
    for (const Row& row : rows) {
        if (!row.access.get || !(attr == row.name)) continue;
        const Call running(this);
        _execStatus = "";
        result = row.access.get(*this, row.format);
        return true;
    }
    return false;
}

AK_String AK_Object::Get(const AK_String& attr) const
{
    AK_String result;
    if (qvt_sci_Get(_qvt_sci_namespace, attr, result)) return result;
    if (GetByRows(Rows(), attr, result)) return result;
    if (IsVariableName(attr)) return VariableValue(attr);

    AK_String path, remote;
    const PassedOn passed;
    if (!passed.TooOften() && ParseRemoteCommand(attr, path, remote))
        if (const AK_Object* object = const_cast<AK_Object*>(this)->ObjectById(path)) return object->Get(remote);
    return ak_null;
}

int AK_Object::Set(const AK_String& attr, const AK_String& value)
{
    if (qvt_sci_Set(_qvt_sci_namespace, attr, value)) return 1;
    if (SetByRows(Rows(), attr, value)) return 1;
    if (IsVariableName(attr)) {
        _execStatus = "";
        SetVariableValue(attr, value);
        SetExecTime(attr);   // a class of the user's may save it
        return 1;
    }
    const Call running(this);
    if (attr.EndsWith(".macro")) {
        _execStatus = "";
        ExecMacro(attr, 0);
        return 1;
    }
    const char* colons = std::strstr(attr.c_str(), "::");
    const PassedOn passed(colons ? PassedOn::toAllObjects : PassedOn::toOneObject);
    if (passed.TooOften()) return 0;
    if (colons) return SetForAllObjectsOfType(AK_String(attr.c_str(), colons), AK_String(colons + 2), value) > 0;
    AK_String path, remote;
    if (ParseRemoteCommand(attr, path, remote))
        if (AK_Object* object = ObjectById(path)) return object->Set(remote, value);
    return 0;
}

bool AK_Object::ParseRemoteCommand(const AK_String& text, AK_String& path, AK_String& attr)
{
    const char* colon = std::strchr(text.c_str(), ':');
    if (!colon || !colon[1] || colon[1] == ':') return false;
    path = AK_String(text.c_str(), colon);
    attr = AK_String(colon + 1);
    return true;
}

int AK_Object::SetForAllObjectsOfType(const AK_String& type, const AK_String& attr, const AK_String& value)
{
    const Call running(this);   // what is set may make and delete objects, this one included
    const AK_List<AK_Object*> components = _components;
    int known = IsOfType(type) ? Set(attr, value) : 0;
    for (AK_Object* component : components) {
        const bool stillListed = _components.IndexOf(component) >= 0;
        if (stillListed && component->_parent == this) known += component->SetForAllObjectsOfType(type, attr, value);
    }
    return known;
}

// ----------------------------------------------------------------------------------------------------------------
// What the description tells
// ----------------------------------------------------------------------------------------------------------------

static void AssignNode(AK_Object* to, const AK_Object* from, const AK_Attribute* node,
                       const AK_List<AK_String>& excluded)
{
    if (node->Component("volatile") || node->_cmd == "Id") return;
    if (const AK_Attribute* set = node->Component("set"); set && !node->_cmd.IsEmpty()) {
        bool wanted = true;
        for (const AK_String& name : excluded) wanted = wanted && !(name == set->_cmd);
        if (wanted) to->Set(set->_cmd, from->Get(node->_cmd));
    }
    for (const AK_Attribute* component : node->_components) AssignNode(to, from, component, excluded);
}

void AK_Object::AssignAttributesOf(AK_Object* source, const AK_List<AK_String>& excluded)
{
    const AK_Description description = Description();
    AssignNode(this, source, description.get(), excluded);
}

AK_String AK_Object::Label(const AK_Attribute* attribute)
{
    const AK_Attribute* translated = _language == "default" ? nullptr : attribute->Component(_language.c_str());
    if (translated) return translated->_cmd;
    const AK_String name = attribute->Id(1);
    return name.IsEmpty() ? attribute->Id(0) : name;
}

namespace {

struct NameListing {
    const AK_Object& object;
    char kind;
    bool visibleOnly;
    bool labels;
    AK_String list;

    void Add(const AK_Attribute* node)
    {
        if (node->Id(1).IsEmpty()) return;
        const AK_Attribute* vis = node->Component("vis");
        if (visibleOnly && (node->Component("volatile") || (vis && object.Get(vis->_cmd) == "-"))) return;
        const AK_Attribute* set = node->Component("set");
        if (kind == 'g' && !node->_cmd.IsEmpty()) list = list + (labels ? AK_Object::Label(node) : node->_cmd) + ak_sep;
        if (kind == 's' && set) list = list + (labels ? AK_Object::Label(node) : set->_cmd) + ak_sep;
        if (set || !node->_cmd.IsEmpty()) return;
        for (const AK_Attribute* component : node->_components) Add(component);
    }
};

}   // namespace

AK_String AK_Object::AttributeNamesList(char kind, bool visibleOnly, bool labels) const
{
    NameListing listing{*this, kind, visibleOnly, labels, {}};
    const AK_Description description = Description();
    listing.Add(description.get());
    return listing.list;
}

// What the description says of an attribute beyond its own text.
static const char* KindSentence(const AK_Attribute* attribute)
{
    const bool hasSet = attribute->Component("set") != nullptr;
    const bool hasValue = !attribute->_cmd.IsEmpty();
    if (hasSet && hasValue && attribute->Component("volatile"))
        return InLanguage(" \nThis attribute is NOT saved with the object.",
                          " \nDieses Attribut wird NICHT mit dem Objekt gespeichert.");
    if (hasSet && hasValue)
        return InLanguage(" \nThis attribute is saved with the object.",
                          " \nDieses Attribut wird mit dem Objekt gespeichert.");
    if (hasSet)
        return InLanguage(" \nThis is an operation on the object.", " \nDies ist eine Operation auf dem Objekt.");
    if (hasValue)
        return InLanguage(" \nThis attribute cannot be edited.", " \nDieses Attribut kann nicht editiert werden.");
    if (attribute->Id(0) == "opr" || attribute->Id(0) == "obj") return "";
    return InLanguage(" \n(This label comprises of a group of attributes or opertions.)",
                      " \n(Dieser Titel fasst eine Gruppe von Attributen oder Operationen zusammen.)");
}

// A description's text without its backslashes, runs of blanks and blanks at the start of a line.
static AK_String CleanDocumentation(const AK_String& text)
{
    AK_String result = text;
    char* to = &result[0];
    char last = 0;
    for (const char* from = text.c_str(); *from; ++from) {
        if (*from == '\\' || (*from == ' ' && (last == ' ' || last == '\n'))) continue;
        *to++ = last = *from;
    }
    *to = 0;
    return result;
}

AK_String AK_Object::DocText(const AK_Attribute* attribute)
{
    const AK_Attribute* doc = attribute->Component("doc");
    AK_String text = doc ? CleanDocumentation(doc->InLanguage(_language))
                         : AK_String(InLanguage("No documentation available.", "Keine Dokumentation verfuegbar."));
    text.Append(KindSentence(attribute));
    if (const AK_Attribute* set = attribute->Component("set")) text = text + " \n(set-ID:" + set->_cmd + ")";
    if (!attribute->_cmd.IsEmpty()) text = text + " \n(get-ID:" + attribute->_cmd + ")";
    return text;
}

// ----------------------------------------------------------------------------------------------------------------
// Stamps
// ----------------------------------------------------------------------------------------------------------------

void AK_Object::SetExecTime(const AK_String& attr)
{
    int i = _execTimeIds.IndexOf(attr);
    if (i < 0) {
        i = _execTimeIds.Append(attr);
        _execTimes.Append(0);
    }
    _execTimes[i] = long(clock()) - _clock_t0;
    --_clock_t0;   // every later stamp is larger, or a change right after a save would pass for saved
}

long AK_Object::ExecTime(const AK_String& attr) const
{
    const int i = _execTimeIds.IndexOf(attr);
    if (i >= 0) return _execTimes[i];
    AK_String path, remote;
    if (!ParseRemoteCommand(attr, path, remote)) return 0;
    const PassedOn passed;
    const AK_Object* object = passed.TooOften() ? nullptr : const_cast<AK_Object*>(this)->ObjectById(path);
    return object ? object->ExecTime(remote) : 0;
}

long AK_Object::ExecTimeRec(const AK_String& attr) const
{
    long latest = ExecTime(attr);
    for (int i = 0; i < _components.Size(); ++i)
        if (Owns(i)) latest = std::max(latest, _components[i]->ExecTimeRec(attr));
    return latest;
}

long AK_Object::ModificationTime() const
{
    long latest = 0;
    for (long stamp : _execTimes) latest = std::max(latest, stamp);
    return latest;
}

long AK_Object::ModificationTimeRec() const
{
    long latest = ModificationTime();
    for (int i = 0; i < _components.Size(); ++i)
        if (Owns(i)) latest = std::max(latest, _components[i]->ModificationTimeRec());
    return latest;
}

// ----------------------------------------------------------------------------------------------------------------
// Variables
// ----------------------------------------------------------------------------------------------------------------

bool AK_Object::IsVariableName(const AK_String& name)
{
    const char* s = name.c_str();
    if (s[0] != '$' || !s[1]) return false;
    while (AK_String::IsAlnum(*++s)) {}
    return !*s;
}

AK_String AK_Object::VariableValue(const AK_String& name) const
{
    const int i = _variableNames.IndexOf(name);
    if (i >= 0) return _variableValues[i];
    _variableNames.Append(name);
    _variableValues.Append("");
    return "";
}

void AK_Object::SetVariableValue(const AK_String& name, const AK_String& value)
{
    if (name.IsEmpty()) return;
    const int i = _variableNames.IndexOf(name);
    if (i >= 0) {
        _variableValues[i] = value;
        return;
    }
    _variableNames.Append(name);
    _variableValues.Append(value);
}

void AK_Object::SetVariableValue(const AK_String& assignment)
{
    const char* equals = std::strchr(assignment.c_str(), '=');
    if (!equals) {
        _execStatus = AK_String("missing '=' in variable assignment '") + assignment + "'";
        return;
    }
    const AK_String name(assignment.c_str(), equals);
    if (!IsVariableName(name))
        _execStatus = AK_String("invalid variable name '") + name + "'";
    else
        SetVariableValue(name, equals + 1);
}

AK_String AK_Object::VariableValues() const
{
    AK_List<AK_String> assignments(_variableNames.Size());
    for (int i = 0; i < _variableNames.Size(); ++i) assignments.Append(_variableNames[i] + "=" + _variableValues[i]);
    return AK_String(assignments, ak_sep);
}

void AK_Object::VariableValues(const AK_String& list)
{
    AK_List<AK_String> assignments(1);
    list.Split(ak_sep, assignments);
    for (const AK_String& assignment : assignments) SetVariableValue(assignment);
}
