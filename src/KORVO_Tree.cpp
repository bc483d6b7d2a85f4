// The object tree of a subcommand.

#include "KORVO.h"

#include "AK_Basic_NewFile.h"
#include "SW_Workspace.h"
#include "qvt_sci.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

// ----------------------------------------------------------------------------------------------------------------
// The root
// ----------------------------------------------------------------------------------------------------------------

// Before the first object, whose construction completes the directories and reads the descriptions.
static void SetDirectories(const AK_String& attributesDirectory, bool tell)
{
    if (tell) AK_MSG("Setting config files directory: " << attributesDirectory);
    AK_Object::SetAttributesDirectory(attributesDirectory);
    const char* ofUser = std::getenv("KORVO_USER_ATTRIBUTES");
    if (!ofUser || !*ofUser) return;
    AK_Object::SetUserAttributesDirectory(ofUser);
    if (tell) AK_MSG("set user attributes directory to:" << AK_Object::_userAttributesDirectory);
}

static void Introduce()
{
    static constexpr const char* rule =
        "=================================================================";   // 65 wide
    AK_MSG(AK_Object::Arglist(" "));
    AK_MSG(rule << "\n" << AK_Object::_about << "\n" << rule << "\n");
}

std::unique_ptr<AK_Controller> KORVO_MakeRoot(const AK_String& attributesDirectory, bool tell)
{
    SetDirectories(attributesDirectory, tell);
    qvt_sci_InitAll();   // before the first object: each class loads its formula code
    std::unique_ptr<AK_Controller> root = std::make_unique<AK_TerminalController>("Viewer", nullptr);
    if (tell) Introduce();
    root->AddComponent(new SW_Workspace("Project", nullptr));
    root->FixComponents();
    return root;
}

// ----------------------------------------------------------------------------------------------------------------
// Messages
// ----------------------------------------------------------------------------------------------------------------

// Many operations only say that they could not do what was asked: a file that cannot be opened, a line that is no
// command, a number that was read as another one. What they say begins or goes on like this, behind a prefix; other
// warnings are of what was worked around.
static constexpr const char* beginnings[] = {
    "cannot ",
    "could not ",
    "error ",
    "invalid ",
    "unkown ",
    "wrong number",
    "syntax errors",
    "no points",
    "no-data values",
    "no line",
    "no polyline",
    "no area",
    "third argument of get()",
};
static constexpr const char* parts[] = {" syntax errors in ", " finds no ", "' is not all a number",
                                        "' ist nicht ganz eine Zahl", " failed!"};

bool KORVO_TellsOfFailure(const char* message)
{
    std::string text = message;
    if (text.starts_with("ERROR")) return true;
    for (const char* prefix : {"WARNING:", "INFO:", "W:"})
        if (text.starts_with(prefix)) text.erase(0, std::strlen(prefix));
    text.erase(0, std::min(text.find_first_not_of(' '), text.size()));
    for (const char* beginning : beginnings)
        if (text.starts_with(beginning)) return true;
    for (const char* part : parts)
        if (text.find(part) != std::string::npos) return true;
    return false;
}

static int numFailures = 0;
static std::string firstFailure;
static std::vector<std::string> reasons;   // what was said of the present command from its first failure on
static void (*listener)(const char* message, const char* location) = nullptr;   // who heard the messages before

static void Listen(const char* message, const char* location)
{
    static constexpr size_t mostReasons = 3;
    const bool tellsOfFailure = KORVO_TellsOfFailure(message);
    if (tellsOfFailure && ++numFailures == 1) firstFailure = message;
    const bool repeats = std::strncmp(message, "error ", 6) == 0;   // the status, with the command around it
    if (!repeats && reasons.size() < mostReasons && (tellsOfFailure || !reasons.empty()))
        reasons.push_back(KORVO_Sentence(message));
    listener(message, location);
}

// What a running formula says when it cannot go on, behind the name of the part that says it. What is said while
// formulas are read goes where it went before: the objects gather that.
static std::string formulaText;
static int (*formulaSink)(const char* format, ...) = nullptr;
static void (*flushFormulaSink)() = nullptr;

static int TakeFormulaText(const char* format, ...)
{
    char piece[1000];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(piece, sizeof piece, format, arguments);
    va_end(arguments);
    if (qvt_sci_StackDepth() == 0) return formulaSink("%s", piece);
    formulaText += piece;
    return length;
}

static void SayFormulaText()
{
    flushFormulaSink();
    if (formulaText.empty()) return;
    const size_t error = formulaText.find("ERROR");
    const std::string text = formulaText.substr(error == std::string::npos ? 0 : error);
    formulaText.clear();
    AK_MSG(text);
}

// In place of the signal, which would end the process without a word of which call it was.
static int EndOnFault(int)
{
    SayFormulaText();
    std::fflush(stdout);
    korvoAtFault(KORVO_Sentence(firstFailure));
    std::_Exit(KORVO_FAILED);
}

void (*korvoAtFault)(const std::string& reason) = [](const std::string& reason) {
    std::fprintf(stderr, "korvo: %s\n", reason.c_str());
};

int KORVO_Tree::NumFailures() const { return numFailures; }
std::string KORVO_Tree::FirstFailure() const { return firstFailure; }

// ----------------------------------------------------------------------------------------------------------------
// The tree
// ----------------------------------------------------------------------------------------------------------------

KORVO_Tree::KORVO_Tree() : _root(KORVO_MakeRoot(KORVO_OwnAttributesDirectory().c_str(), false))
{
    listener = ak_msg_func;
    ak_msg_func = Listen;
    formulaSink = qvt_sci_msg;
    flushFormulaSink = qvt_sci_flush_msg;
    qvt_sci_ResetPrintf(TakeFormulaText, SayFormulaText);
    qvt_sci_raise = EndOnFault;
}

KORVO_Tree::~KORVO_Tree()
{
    _root.reset();
    ak_msg_func = listener;
}

bool KORVO_Tree::Set(const std::string& path, const std::string& attribute, const std::string& value)
{
    const AK_String command = AK_Object::CommandString(path.c_str(), attribute.c_str(), value.c_str());
    _macro += std::string(command.c_str()) + "\n";
    const int before = numFailures;
    reasons.clear();
    AK_Object::_execStatus = "";
    _root->ExecCommand(command, 1);
    return AK_Object::_execStatus.IsEmpty() && numFailures == before;
}

// A reader tells what is wrong with a file in messages, and by the status that there was something.
std::string KORVO_Tree::Reason() const
{
    const std::string status = KORVO_Sentence(AK_Object::_execStatus.c_str());
    std::string text;
    for (const std::string& reason : reasons) text += (text.empty() ? "" : "; ") + reason;
    const bool isBare =
        text.empty() || text.starts_with("could not execute");   // the status knows more, if there is one
    return isBare && !status.empty() ? status : text;
}

bool KORVO_Tree::WriteMacro(const std::string& file) const
{
    return AK_WriteStream(file.c_str(), [&](std::ostream& out) { out << _macro; });
}

bool KORVO_WriteMacroOption(const KORVO_Arguments& arguments, const KORVO_Tree& tree)
{
    const std::string file = arguments.Value("macro");
    if (file.empty() || tree.WriteMacro(file)) return true;
    arguments.Failed(InLanguage("cannot write '", "kann nicht schreiben: '") + file + "'");
    return false;
}
