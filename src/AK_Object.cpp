// Objects and their tree: construction, components and references, the end of an object's life.
//
// _components and _isReference are parallel lists. An entry is owned when its flag is 0 and its parent is this object;
// both are asked, since sorting by ids moves the entries and not the flags.
//
// An object can be deleted while code of its own still runs: by its command, its macro or its formula code. Call marks
// the objects for which something runs. FreeComponent takes such an object out of the tree at once and keeps it aside
// until the last mark is gone.

#include "AK_Object.h"

#include <cstdlib>
#include <cstring>
#include <ctime>

int AK_Object::_lang = 0;
int AK_Object::_argc = 0;
char** AK_Object::_argv = nullptr;
AK_String AK_Object::_about;
AK_String AK_Object::_attributesDirectory;
AK_String AK_Object::_userAttributesDirectory;
AK_String AK_Object::_userApplicationDirectory;
AK_List<AK_ParameterSet> AK_Object::_parsets(1);
AK_String AK_Object::_execStatus;
AK_List<AK_String> AK_Object::_macroFileNameStack(1);
long AK_Object::_clock_t0 = long(clock()) - 1;   // so that no stamp is 0, which means never
AK_String AK_Object::_macroComment;
int AK_Object::_macroFigure = 0;
int AK_Object::_reportCommands = 0;
int AK_Object::_explainCommands = 0;
AK_String AK_Object::_language = "default";
AK_List<AK_Object*> AK_Object::_curObj(1);
int AK_Object::_object_counter = 0;
int (*AK_Object::_signalFunction)() = nullptr;
int (*AK_Object::py_run_simple_string)(const char*) = nullptr;
int AK_Object::_viewerWidth = 500;
int AK_Object::_viewerHeight = 500;
float AK_Object::_viewerBgCol[3] = {1, 1, 1};

const AK_Attribute* AK_Object::_attributes = nullptr;
Namespace* AK_Object::_qvt_sci_namespace = nullptr;
AK_List<AK_String> AK_Object::_classVariables(1);
AK_List<AK_String> AK_Object::_initializationCommands(1);
int AK_Object::_parameterSetsAppended = 0;

static AK_List<const AK_Object*> callStack(1);   // objects for which a command, macro or formula runs
static AK_List<AK_Object*> deleted(1);           // out of the tree, to be freed when the stack is empty

// ----------------------------------------------------------------------------------------------------------------
// Construction and the end
// ----------------------------------------------------------------------------------------------------------------

// "<home>/.<program>/", made if it is missing; "" without a program name or if it cannot be made.
static AK_String UserApplicationDirectory()
{
    if (AK_Object::_argc == 0) return "";
    const AK_String program = AK_String(AK_Object::_argv[0]).BaseName();
    AK_String dir = AK_System::HomeDirectory();
    if (!dir.EndsWith("/")) dir.Append("/");
    dir = dir + "." + program + "/";
    if (!AK_System::FileExists(dir) && AK_System::CreateDir(dir) != 0) return "";
    return dir;
}

AK_Object::AK_Object(const AK_String& id, AK_Object* parent)
{
    if (!_attributes) {
        _userApplicationDirectory = UserApplicationDirectory();
        if (_userAttributesDirectory.IsEmpty()) _userAttributesDirectory = _userApplicationDirectory;
        _attributes = CreateAttributes(className, nullptr);
        _qvt_sci_namespace = Load_QVT_SCI_code(className);
        ReadInitializationMacro(className, _initializationCommands);
        ReadClassVariables(className, _classVariables);
    }
    ++_object_counter;
    _parent = parent;   // before the id, which is made unique among the parent's components
    Id(id);
    _macroFileName = _id + ".macro";
    if (parent && !parent->_projectDir.IsEmpty()) _projectDir = parent->_projectDir + "/" + _id;
    if (!_parameterSetsAppended) {
        ParameterSetsAppend(className);
        _parameterSetsAppended = 1;
    }
    RunCommandsOf(_initializationCommands, 1);
}

AK_Object::~AK_Object()
{
    for (int i = 0; i < _components.Size(); ++i)
        if (Owns(i)) delete _components[i];
}

void AK_Object::RunCommandsOf(const AK_List<AK_String>& commands, int noExplain)
{
    static AK_List<const AK_List<AK_String>*> running(1);
    if (running.IndexOf(&commands) >= 0) {
        AK_MSG("W:initialisation commands are not executed on '" << _id << "', which they have made");
        return;
    }
    running.Append(&commands);
    for (int i = 1; i < commands.Size(); ++i) ExecCommand(commands[i], noExplain);
    running.Remove(running.Size() - 1);
}

AK_Object::Call::Call(const AK_Object* object) { callStack.Append(object); }

AK_Object::Call::~Call()
{
    callStack.Remove(callStack.Size() - 1);
    if (callStack.Size() > 0) return;
    while (deleted.Size() > 0) {
        AK_Object* object = deleted[deleted.Size() - 1];
        deleted.Remove(deleted.Size() - 1);
        delete object;
    }
}

// ----------------------------------------------------------------------------------------------------------------
// Components
// ----------------------------------------------------------------------------------------------------------------

AK_Object* AK_Object::Root() const
{
    const AK_Object* object = this;
    while (object->_parent) object = object->_parent;
    return const_cast<AK_Object*>(object);
}

AK_Object* AK_Object::Component(const AK_String& id) const
{
    for (AK_Object* component : _components)
        if (component->_id == id) return component;
    return nullptr;
}

void AK_Object::AddComponent(AK_Object* object)
{
    _components.Append(object);
    _isReference.Append(0);
    object->_parent = this;
    SetVariableValue("$latest_comp", object->_id);
}

void AK_Object::AppendComponent(AK_Object* object)
{
    for (const AK_Object* component : _components)
        if (component == object) return;
    _components.Append(object);
    _isReference.Append(1);
    SetVariableValue("$latest_comp", object->_id);
}

void AK_Object::RemoveEntry(int index)
{
    _components.Remove(index);
    _isReference.Remove(index);
}

void AK_Object::FixComponents()
{
    for (int i = 0; i < _components.Size(); ++i)
        if (Owns(i)) _components[i]->_isFixed = true;
}

bool AK_Object::RefusesAsFixed() const
{
    if (!_isFixed || !_parent) return false;
    _execStatus = AK_String("'") + _id + InLanguage("' is a fixed part of '", "' ist ein fester Teil von '") +
                  _parent->_id + InLanguage("' and stays there under its name", "' und bleibt dort unter seinem Namen");
    return true;
}

bool AK_Object::RemoveComponent(const AK_String& id)
{
    if (const AK_Object* component = Component(id); component && component->_parent == this && component->RefusesAsFixed())
        return false;
    for (int i = 0; i < _components.Size(); ++i) {
        if (_components[i]->_parent == this || !(_components[i]->_id == id)) continue;
        RemoveEntry(i);
        return true;
    }
    return false;
}

void AK_Object::Detach(const AK_String&)
{
    if (!_parent || RefusesAsFixed()) return;
    for (int i = _parent->_components.Size() - 1; i >= 0; --i)
        if (_parent->_components[i] == this) _parent->RemoveEntry(i);
    _parent = nullptr;   // which may be freed from now on without this object
}

void AK_Object::RemoveAllReferencesTo(const AK_Object* object)
{
    for (int i = _components.Size() - 1; i >= 0; --i) {
        if (_components[i] == object && !Owns(i))
            RemoveEntry(i);
        else if (Owns(i))
            _components[i]->RemoveAllReferencesTo(object);
    }
}

int AK_Object::DeleteComponent(const AK_String& id)
{
    for (int i = 0; i < _components.Size(); ++i) {
        if (!Owns(i) || !(_components[i]->_id == id)) continue;
        if (_components[i]->RefusesAsFixed()) return 0;
        _components[i]->RemoveFromDisc();
        FreeComponent(i);
        return 1;
    }
    return 0;
}

static bool IsAtOrBelow(const AK_Object* object, const AK_Object* ancestor)
{
    while (object && object != ancestor) object = object->Parent();
    return object != nullptr;
}

void AK_Object::RemoveReferencesInto(const AK_Object* ancestor)
{
    for (int i = _components.Size() - 1; i >= 0; --i) {
        if (Owns(i))
            _components[i]->RemoveReferencesInto(ancestor);
        else if (IsAtOrBelow(_components[i], ancestor))
            RemoveEntry(i);
    }
}

void AK_Object::FreeComponent(int index)
{
    AK_Object* object = _components[index];
    Root()->RemoveReferencesInto(object);
    for (int i = _components.Size() - 1; i >= 0; --i)   // the references that went may have moved it
        if (_components[i] == object) RemoveEntry(i);
    for (const AK_Object* running : callStack) {
        if (!IsAtOrBelow(running, object)) continue;   // what is being constructed is below without being listed
        object->_parent = nullptr;
        deleted.Append(object);
        return;
    }
    delete object;
}

static int CompareIds(const void* a, const void* b)
{
    const auto* left = *static_cast<AK_Object* const*>(a);
    const auto* right = *static_cast<AK_Object* const*>(b);
    return std::strcmp(left->Id().c_str(), right->Id().c_str());
}

void AK_Object::SortComponentsByIds()
{
    std::qsort(&_components[0], size_t(_components.Size()), sizeof(AK_Object*), CompareIds);
}

int AK_Object::NumObjects() const
{
    int n = 1;
    for (int i = 0; i < _components.Size(); ++i)
        if (Owns(i)) n += _components[i]->NumObjects();
    return n;
}

bool AK_Object::HasInTree(const AK_Object* object) const
{
    if (object == this) return true;
    for (int i = 0; i < _components.Size(); ++i)
        if (Owns(i) && _components[i]->HasInTree(object)) return true;
    return false;
}

void AK_Object::GetObjectsOfType(const AK_String& type, AK_List<AK_Object*>& list)
{
    if (IsOfType(type)) list.Append(this);
    for (int i = 0; i < _components.Size(); ++i)
        if (Owns(i)) _components[i]->GetObjectsOfType(type, list);
}

// ----------------------------------------------------------------------------------------------------------------
// Virtual operations that most classes leave as they are
// ----------------------------------------------------------------------------------------------------------------

const AK_Attribute* AK_Object::Attributes() const
{
    static const AK_Attribute nothing;   // a missing file is fatal to the classes only, which tell of their own
    return _attributes ? _attributes : &nothing;
}

void AK_Object::Update()
{
    if (!_active) return;
    const Call running(this);
    qvt_sci_Update(_qvt_sci_namespace);
    for (int i = 0; i < _components.Size(); ++i)
        if (_components[i]->_active && _components[i]->_parent == this) _components[i]->Update();
    _updateTime = long(clock()) - _clock_t0;
    --_clock_t0;   // the next stamp is later than this one even when clock has not moved
}

bool AK_Object::IsOfType(const AK_String& type) const
{
    const AK_Attribute* node = Attributes();
    if (node->Id(1) == type) return true;
    while (node->_components.Size() > 0) {
        node = node->_components[node->_components.Size() - 1];
        if (node->Id(0) == "obj" && node->Id(1) == type) return true;
    }
    return false;
}

int AK_Object::SaveData(AK_Stream&) const { return 0; }

int AK_Object::LoadData(AK_Stream&) { return 0; }

int AK_Object::IoError(const char* where) const
{
    _execStatus = IdAbs() + ": IO error at " + where;
    return 1;
}

AK_Object* AK_Object::CreateComponent(const AK_String&, const AK_String&) { return nullptr; }

void AK_Object::UnloadAllContainers(const AK_String& ignored)
{
    for (int i = _components.Size() - 1; i >= 0; --i)
        if (i < _components.Size() && Owns(i)) _components[i]->UnloadAllContainers(ignored);
}

int AK_Object::SetDefault(const AK_String& attr, const AK_String& value) const
{
    return SetClassDefault(className, attr, value);
}

int AK_Object::SaveClassVariables() const { return WriteClassVariables(className, _classVariables); }
