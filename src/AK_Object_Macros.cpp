// Macros: text files of commands, the program's way to run without a person at the terminal.
//
// The extension of the name decides: "cint" is formula code, "py" a script for a front end that brings such a language,
// anything else a file of commands. Lines outside comment blocks that do not begin with "set(" or "get(" are free text.
//
//   /*                          a comment block: shown with the next command in explanation mode
//   The terrain comes first.    text for the default language
//   %lang german                a block's text starts over if the line holds the current language; if it does not, the
//   Zuerst das Gelaende.        block ends here
//   */
//   set("Project/DHMs", "ImportESRI", "alp.asc")

#include "AK_Object.h"

#include <climits>
#include <cstdlib>
#include <cstring>

static constexpr int maxMacroLine = 40959;

// Each running macro holds a file open and a part of the call stack; long chains are written by programs.
static constexpr int maxRunningMacros = 500;

int AK_Object::Signal()
{
    if (!_signalFunction) return 0;
    const int result = _signalFunction();
    if (result) _execStatus = "interrupted";
    return result;
}

// The file itself, or that of the attribute directories when it does not exist and its name is relative.
static AK_String Resolved(const AK_String& name)
{
    if (AK_System::FileExists(name) || name.IsAbsolutePath()) return name;
    return AK_Object::AttributeFile(name, nullptr, nullptr);
}

static void RunPython(const AK_String& file, const AK_String& name)
{
    AK_String& status = AK_Object::_execStatus;
    if (!AK_System::FileExists(name)) {
        status = AK_String("can neither open python file '") + file + "' nor '" + name + "'";
        return;
    }
    if (!AK_Object::py_run_simple_string) {
        status = "Python macros not supported";
        return;
    }
    AK_TextReader reader(name);
    if (!reader.IsOpen()) {
        status = AK_String("can not open python file '") + name + "'";
        return;
    }
    if (reader.Size() >= INT_MAX / 2) {
        status = AK_String("out of memory when reading '") + name + "'";
        return;
    }
    AK_List<char> text(256);
    for (int byte = reader.ReadByte(); byte >= 0; byte = reader.ReadByte()) text.Append(char(byte));
    text.Append(0);
    AK_Object::py_run_simple_string(text.Data());
}

namespace {

// A macro while it runs. It is known by its one true path, so that no link and no other spelling of its name lets it
// run within itself. One that may not begin has its reason in the status.
class RunningMacro {
public:
    explicit RunningMacro(const AK_String& name)
    {
        AK_List<AK_String>& running = AK_Object::_macroFileNameStack;
        const AK_String path = TruePath(name);
        if (running.IndexOf(path) >= 0)
            AK_Object::_execStatus = "recursive macro call ignored";
        else if (running.Size() >= maxRunningMacros)
            AK_Object::_execStatus = AK_String(maxRunningMacros, InLanguage("more than %d macros within each other",
                                                                            "mehr als %d Makros ineinander"));
        else {
            running.Append(path);
            _mayRun = true;
        }
    }
    ~RunningMacro()
    {
        if (_mayRun) AK_Object::_macroFileNameStack.Remove(AK_Object::_macroFileNameStack.Size() - 1);
    }
    RunningMacro(const RunningMacro&) = delete;
    RunningMacro& operator=(const RunningMacro&) = delete;

    explicit operator bool() const { return _mayRun; }

private:
    static AK_String TruePath(const AK_String& name)
    {
        char* path = realpath(name.c_str(), nullptr);
        if (!path) return name;
        const AK_String result(path);
        std::free(path);
        return result;
    }

    bool _mayRun = false;
};

}   // namespace

void AK_Object::ExecMacro(const AK_String& file, int noExplain)
{
    const Call running(this);
    const AK_String name = file.IsEmpty() ? _macroFileName : file;
    const AK_String extension = name.Extension();
    if (extension == "cint") {
        const AK_String resolved = Resolved(name);
        if (AK_System::FileExists(resolved)) {
            if (const RunningMacro macro(resolved); macro) Execute_QVT_SCI_code(resolved);
        } else
            _execStatus = AK_String("can neither open macro file '") + file + "' nor '" + resolved + "'";
    } else if (extension == "py")
        RunPython(file, Resolved(name));
    else
        ExecCommandFile(name, noExplain);
}

// ----------------------------------------------------------------------------------------------------------------
// Command files
// ----------------------------------------------------------------------------------------------------------------

namespace {

// Follows the comment blocks of a macro; its state lives on from one repetition to the next. Commands stand outside all
// blocks, so it is enough that the comment is handed over when a block ends, and when the macro does within one.
class CommentBlocks {
public:
    explicit CommentBlocks(const AK_String& macro) : _macro(macro)
    {
        AK_Object::_macroComment = "";
        AK_Object::_macroFigure = 0;
    }
    ~CommentBlocks()
    {
        if (!_inside) return;
        End("");
        AK_MSG("WARNING:" << _macro << ", line " << _beginLine
                          << ": the comment that begins here does not end: no command behind it is executed");
    }
    CommentBlocks(const CommentBlocks&) = delete;
    CommentBlocks& operator=(const CommentBlocks&) = delete;

    // True if the line is outside all blocks and may be a command.
    bool Outside(const AK_String& line, long number)
    {
        if (!_inside) _beginLine = number;
        if (line.StartsWith("//fi"))
            AK_Object::_macroFigure = 1;
        else if (line.StartsWith("/*"))
            Begin();
        else if (!_inside)
            return true;
        else if (line.StartsWith("*/"))
            End("\n*/");
        else if (!line.StartsWith("%lang")) {
            Collect(line.c_str());
            Collect("\n");
        } else if (std::strstr(line.c_str(), AK_Object::_language.c_str()))
            Begin();
        else
            End("");
        return false;
    }

private:
    void Begin()
    {
        _inside = true;
        _text.Clear();
        Collect("/*\n");
    }
    void Collect(const char* s)
    {
        while (*s) _text.Append(*s++);
    }
    void End(const char* s)
    {
        _inside = false;
        Collect(s);
        AK_Object::_macroComment = AK_String(_text.begin(), _text.end());
    }

    const AK_String _macro;
    long _beginLine = 0;   // of the block in the file
    bool _inside = false;
    AK_List<char> _text{1};
};

}   // namespace

// A directory counts as a file without lines: an empty name, the macro of a start without one, ends up at a directory.
static bool CanBeRead(const AK_String& name) { return AK_System::IsDirectory(name) || AK_TextReader(name).IsOpen(); }

// Runs the file once; false when something ended the macro.
static bool PlayOnce(AK_Object& object, const AK_String& name, CommentBlocks& comments, int noExplain)
{
    AK_TextReader reader(name);
    AK_String line;
    while (reader.ReadLine(line, maxMacroLine)) {
        line.RemoveLineEnd();
        if (!comments.Outside(line, reader.Line()) || (!line.StartsWith("set(") && !line.StartsWith("get("))) continue;
        if (AK_Object::Signal()) return false;
        object.ExecCommand(line, noExplain);
        if (AK_Object::_execStatus.IsEmpty()) continue;
        AK_MSG("error '" << AK_Object::_execStatus << "' when executing macro command '" << line << "'!");
        return false;
    }
    return true;
}

void AK_Object::ExecCommandFile(const AK_String& calledName, int noExplain)
{
    AK_String name = calledName;
    if (!CanBeRead(name) && !name.IsAbsolutePath()) name = AttributeFile(name, nullptr, nullptr);
    if (!CanBeRead(name)) {
        _execStatus = AK_String("cannot open macro file '") + name + "'";
        return;
    }
    const RunningMacro macro(name);
    if (!macro) return;
    CommentBlocks comments(name);
    for (int i = _macroRepetitions; i > 0 && PlayOnce(*this, name, comments, noExplain); --i) {}
}
