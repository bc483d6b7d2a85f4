// User objects: each has a description and formula code of its own, named by its attribute AttributesName.
//
//   set(object, "AttributesName", "Snow")            the files Snow.atr, Snow.cint, Snow.def, Snow.parsets
//   set(object, "AttributesName", "obj.Snow\n...")   the description itself; behind "//qvt_sci" its formula code
//
// The value is saved with the object, so in the second form a project carries the class with it. In a project an object
// of such a class lies under the class's name, which the program does not know: what tells it from a stranger's
// directory is that its attribute file sets AttributesName.

#include "AK_Group.h"

#include "qvt_sci.h"

#include <cstring>

// A command that carries a whole class with it is longer than any command of a macro; what is longer yet is no class.
static constexpr int maxClassText = 16 << 20;

std::span<const AK_Row> AK_UserObj::Rows()
{
    using U = AK_UserObj;
    static constexpr auto setName = static_cast<void (U::*)(const AK_String&)>(&U::AttributesName);
    static constexpr Row rows[] = {
        {"AttributesName", pair<&U::_attributesName, setName>},
    };
    return rows;
}

AK_UserObj::AK_UserObj(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

AK_UserObj::~AK_UserObj() { Retire(_namespace); }

void AK_UserObj::Retire(Namespace* space)
{
    static AK_List<Namespace*> retired(1);
    if (space) retired.Append(space);
    if (qvt_sci_StackDepth() > 0) return;
    for (Namespace* unused : retired) qvt_sci_NamespaceDestroy(unused);
    retired.Clear();
}

// ----------------------------------------------------------------------------------------------------------------
// The class of the object
// ----------------------------------------------------------------------------------------------------------------

void AK_UserObj::AttributesName(const AK_String& name)
{
    // Nothing to do for the text it has, which a macro that restores the object sets again: it would start anew with
    // the class's defaults.
    if (name == _attributesName) return;
    if (_isLoading) {   // two classes whose defaults name each other would go on for ever
        _execStatus = AK_String("cannot become '") + name + "' while '" + _attributesName + "' is being loaded";
        return;
    }
    const Call running(this);   // the new class's code may delete the object
    _isLoading = true;
    _attributesName = name;
    DeleteLoadedAttributes();
    _initCommands.Clear();
    Retire(_namespace);
    _namespace = nullptr;
    if (name.StartsWith("obj."))
        TakeClassFromText();
    else if (!name.IsEmpty())
        LoadClass();
    _isLoading = false;
}

void AK_UserObj::LoadClass()
{
    TakeDescription(_attributesName);
    _namespace = Load_QVT_SCI_code(_attributesName);
    if (_parameterSetsRead.IndexOf(_attributesName) < 0) {
        _parameterSetsRead.Append(_attributesName);
        ParameterSetsAppend(_attributesName);
    }
    ReadInitializationMacro(_attributesName, _initCommands);
    RunCommandsOf(_initCommands, 0);
}

void AK_UserObj::TakeClassFromText()
{
    const char* text = _attributesName.c_str();
    const char* code = std::strstr(text, codeMarker);
    TakeDescription(code ? AK_String(text, code) : _attributesName);
    if (code) _namespace = Load_QVT_SCI_code(AK_String(code));
}

void AK_UserObj::TakeDescription(const AK_String& nameOrText)
{
    const bool isText = nameOrText.StartsWith("obj.");
    if (isText && !std::strchr(nameOrText.c_str(), '\n')) return;   // no description, and fatal where it is read
    const AK_Attribute* root = CreateAttributes(nameOrText, _attributes);
    const auto destroy = [](const AK_Attribute* description) { DeleteAttributes(description, _attributes); };
    // The name stands in the object's file names.
    if (root && root->Id(0) == "obj" && !root->Id(1).IsEmpty())
        _loadedAttributes = AK_Description(root, destroy);
    else
        destroy(root);
}

void AK_UserObj::DeleteLoadedAttributes() { _loadedAttributes.reset(); }

// ----------------------------------------------------------------------------------------------------------------
// What every class overrides, with the object's own formula code
// ----------------------------------------------------------------------------------------------------------------

AK_String AK_UserObj::Get(const AK_String& attr) const
{
    AK_String result;
    if (qvt_sci_Get(_namespace, attr, result)) return result;
    if (GetByRows(Rows(), attr, result)) return result;
    return AK_Object::Get(attr);
}

int AK_UserObj::Set(const AK_String& attr, const AK_String& value)
{
    if (qvt_sci_Set(_namespace, attr, value)) return 1;
    if (SetByRows(Rows(), attr, value)) return 1;
    return AK_Object::Set(attr, value);
}

void AK_UserObj::Update()
{
    if (!_active) return;
    const Call running(this);
    AK_Object::Update();
    qvt_sci_Update(_namespace);
}

// ----------------------------------------------------------------------------------------------------------------
// From a project
// ----------------------------------------------------------------------------------------------------------------

// The command in the attribute file that gives the object its class; "" if there is none.
static AK_String ClassCommand(const AK_String& file)
{
    AK_String beginning = AK_Object::CommandString("", "AttributesName", "");   // up to the value's closing quote
    beginning = AK_String(beginning.c_str(), std::strrchr(beginning.c_str(), '"'));
    AK_TextReader reader(file);
    AK_String line;
    while (reader.ReadLine(line, maxClassText))
        if (line.StartsWith(beginning.c_str())) return line;
    return "";
}

AK_UserObj* AK_UserObj::CreateFromDirectory(const AK_String& id, AK_Object* parent, const AK_String& dir)
{
    const AK_List<AK_String> files = AK_System::FilesList(dir, "atr");
    const AK_String command = files.Size() == 1 ? ClassCommand(dir + "/" + files[0]) : AK_String();
    if (command.IsEmpty()) return nullptr;
    auto* object = new AK_UserObj(id, parent);
    object->ExecCommand(command, 1);
    if (object->Type() + ".atr" == files[0]) return object;
    delete object;   // its class is not to be found, or is another one by now
    AK_MSG("WARNING: " << dir << InLanguage(" is not loaded: its class is not to be found; its files are kept",
                                            " wird nicht geladen: die Klasse fehlt; die Dateien bleiben erhalten"));
    return nullptr;
}
