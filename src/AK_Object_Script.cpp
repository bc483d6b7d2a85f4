// Formula code of classes and macros: the seam between the object tree and the formula language.
//
// A class may bring a file of formula code. A function in it that takes one char array and bears the name of an
// attribute serves that attribute, for Get (it fills the array) as for Set (it finds the value there); "Init" runs when
// the code is loaded and "Update" when an object is updated. A "cint" macro is such code too: its "main" runs, and
// nothing of it stays defined.
//
// Code runs on behalf of an object, the top of the stack _curObj: its paths begin there. The namespaces of all classes
// lie directly below the language's root, whatever code is running while a class is first used: a class outlives the
// macro that needed it.

#include "AK_Basic_NewFile.h"
#include "AK_Object.h"
#include "AK_Object_Internal.h"
#include "AK_Object_Namespace.h"

#include "qvt_sci.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

// An attribute's text as formula code receives and returns it; a longer value gets a buffer of its own length.
static constexpr size_t textBufferSize = 131072;

// A line of the language's messages in a report.
static constexpr int maxMessageLine = 511;

namespace {

// Collects the messages of a parse; afterwards they go to standard output, where the terminal shows them.
class CapturedMessages {
public:
    CapturedMessages() : _file(std::tmpfile())
    {
        if (_file) qvt_sci_ResetOutputStream(_file);
    }
    ~CapturedMessages()
    {
        qvt_sci_ResetOutputStream(stdout);
        if (_file) std::fclose(_file);
    }
    CapturedMessages(const CapturedMessages&) = delete;
    CapturedMessages& operator=(const CapturedMessages&) = delete;

    AK_String Text()
    {
        AK_String text;
        if (!_file) return text;
        std::rewind(_file);
        char line[maxMessageLine + 1];
        while (std::fgets(line, sizeof line, _file)) text.Append(line);
        return text;
    }

private:
    std::FILE* _file;
};

}   // namespace

/// The language's root, with the functions of the object tree defined in it.
static Namespace* GlobalNamespace()
{
    static Namespace* global = nullptr;
    if (!global) {
        global = qvt_sci_NamespaceGetCurrent();
        DefineObjectFunctions();
    }
    return global;
}

// Parses into the active namespace; the number of errors, which are reported.
static int ParseCode(std::FILE* file, const AK_String& source)
{
    CapturedMessages messages;
    Namespace* space = qvt_sci_NamespaceGetCurrent();
    const int errors = file ? qvt_sci_Parse(file) : qvt_sci_ParseString(source.c_str());
    qvt_sci_NamespaceSwitchTo(space);   // an error inside a function leaves that function's namespace active
    if (errors) AK_MSG("INFO:" << errors << " syntax errors in QVT_SCI file " << source << ":\n" << messages.Text());
    return errors;
}

Symbol* AK_Object::FormulaFunction(Namespace* space, const AK_String& name, const char* formals)
{
    if (!space) return nullptr;
    const AK_ActiveNamespace active(space);
    Symbol* function = qvt_sci_FuncPtr(name.c_str());
    return qvt_sci_Takes(function, formals) ? function : nullptr;
}

// What a function must take to serve an attribute.
static const char* const oneText = "char[]";

AK_Object::CodeOf::CodeOf(const AK_Object* object) : _call(object) { _curObj.Append(const_cast<AK_Object*>(object)); }

AK_Object::CodeOf::~CodeOf() { _curObj.Remove(_curObj.Size() - 1); }

// A function that would be called if it took nothing.
static void TellOfOtherForm(const char* name)
{
    const Symbol* function = qvt_sci_FuncPtr(name);
    if (!function || qvt_sci_Takes(function, "")) return;
    AK_MSG("ERROR: function '" << name << "' is not of the form that is expected: void " << name << "()");
}

// Runs the code that belongs to no function, then a function that takes nothing, if there is one of that name.
void AK_Object::RunLoadedCode(const char* function)
{
    const CodeOf running(this);
    TellOfOtherForm(function);
    qvt_sci_InitAll();
    if (Symbol* symbol = FormulaFunction(qvt_sci_NamespaceGetCurrent(), function, "")) qvt_sci_Call(symbol);
}

// ----------------------------------------------------------------------------------------------------------------
// Loading
// ----------------------------------------------------------------------------------------------------------------

Namespace* AK_Object::Load_QVT_SCI_code(const AK_String& source)
{
    const AK_ActiveNamespace global(GlobalNamespace());
    std::FILE* file = nullptr;
    AK_String name = source;
    if (!source.StartsWith(codeMarker)) {
        name = AttributeFile(source, "cint", nullptr);
        if (!AK_System::FileExists(name)) return nullptr;   // a class without code is normal
        file = std::fopen(name.c_str(), "r");
        if (!file) {
            AK_MSG("cannot open QVT_SCI file " << name);
            return nullptr;
        }
    }
    Namespace* space = qvt_sci_NamespaceCreate();
    if (space) {
        const AK_ActiveNamespace active(space);
        if (ParseCode(file, name) == 0) {
            TellOfOtherForm("Update");
            RunLoadedCode("Init");
        }
    } else
        AK_MSG("cannot create QVT_SCI namespace!");
    if (file) std::fclose(file);
    return space;
}

void AK_Object::Execute_QVT_SCI_code(const AK_String& name)
{
    if (!AK_System::FileExists(name)) return;
    std::FILE* file = std::fopen(name.c_str(), "r");
    if (!file) {
        AK_MSG("cannot open QVT_SCI file " << name);
        return;
    }
    const AK_ActiveNamespace global(GlobalNamespace());
    Namespace* space = qvt_sci_NamespaceCreate();
    if (space) {
        const AK_ActiveNamespace active(space);
        if (ParseCode(file, name) == 0)
            RunLoadedCode("main");
        else
            _execStatus = AK_String("syntax errors in QVT_SCI file ") + name;
    } else
        AK_MSG("cannot create QVT_SCI namespace!");
    std::fclose(file);
    qvt_sci_NamespaceDestroy(space);
}

// ----------------------------------------------------------------------------------------------------------------
// Attributes and updates
// ----------------------------------------------------------------------------------------------------------------

// Calls an attribute function with a buffer that holds `text` and has room for what the function makes of it.
AK_String AK_Object::CallWithText(Symbol* function, const AK_String& text)
{
    const size_t length = size_t(text.Length());
    const size_t size = length < textBufferSize ? textBufferSize : length + 1;
    auto* buf = static_cast<char*>(std::calloc(size, 1));
    AK_ASSERT(buf);
    std::memcpy(buf, text.c_str(), length);
    qvt_sci_BindArgLength(function, 0, int64_t(size));
    qvt_sci_Call(function, buf);
    buf[size - 1] = 0;
    AK_String result(buf);
    std::free(buf);
    return result;
}

// A function that asks for its own attribute, of whatever object, would do so for ever; nor has the language room for
// two calls of one function at a time.
static bool IsInItsOwnFunction(Symbol* function, const AK_Object* object, const AK_String& attr)
{
    if (!qvt_sci_IsRunning(function)) return false;
    AK_Object::_execStatus =
        AK_String("'") + attr + InLanguage("' of ", "' von ") + object->IdAbs() +
        InLanguage(": the function of this name is running and cannot be called again before it ends",
                   ": die Funktion dieses Namens ist aktiv und nicht noch einmal aufrufbar, bevor sie endet");
    AK_MSG("ERROR: " << AK_Object::_execStatus);
    return true;
}

int AK_Object::qvt_sci_Get(Namespace* space, const AK_String& attr, AK_String& result) const
{
    Symbol* function = FormulaFunction(space, attr, oneText);
    if (!function) return 0;
    if (IsInItsOwnFunction(function, this, attr)) return 1;
    _execStatus = "";
    const CodeOf running(this);
    result = CallWithText(function, "");
    return 1;
}

int AK_Object::qvt_sci_Set(Namespace* space, const AK_String& attr, const AK_String& value)
{
    Symbol* function = FormulaFunction(space, attr, oneText);
    if (!function) return 0;
    if (IsInItsOwnFunction(function, this, attr)) return 1;
    _execStatus = "";
    const CodeOf running(this);
    CallWithText(function, value);
    SetExecTime(attr);
    return 1;
}

void AK_Object::qvt_sci_Update(Namespace* space)
{
    Symbol* function = FormulaFunction(space, "Update", "");
    if (!function || IsInItsOwnFunction(function, this, "Update")) return;
    const CodeOf running(this);
    qvt_sci_Call(function);
}

// ----------------------------------------------------------------------------------------------------------------
// The language for its users; background runs
// ----------------------------------------------------------------------------------------------------------------

void AK_Object::List_QVT_SCI_predefined(const AK_String& fileName)
{
    const AK_String text = AK_String("INFO:QVT_SCI-Interpreter predefined variables and functions\n") +
                           ObjectFunctionsText() + "\n" + qvt_sci_intrinsics() + "\n" + qvt_sci_explanations();
    AK_MSG(text);
    if (fileName.IsEmpty()) return;
    if (!AK_WriteFile(fileName, [&](std::FILE* file) { std::fputs(text.c_str(), file); }))
        _execStatus = AK_String("cannot open ") + fileName;
}

void AK_Object::StartInBackground(const AK_String& args)
{
    const AK_String program = _argc > 0 ? AK_String(_argv[0]) : AK_String();
    AK_System::_tmpBatFileName = _userApplicationDirectory + "/" + "start.bat";
    AK_MSG("starting " << program << " " << args << " in background...");
    if (AK_System::Command(program.c_str(), args.c_str(), 1, 1) != 0)
        _execStatus = AK_String("cannot start ") + program + " " + args;
    AK_System::_tmpBatFileName = "";
}
