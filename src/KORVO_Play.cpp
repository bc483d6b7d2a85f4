// korvo play: a macro with variables of the root, and a status that a script can test.

#include "KORVO.h"

// "name=value" or "$name=value" as the name and value of a variable; false if it is none.
static bool IsVariable(const std::string& assignment, std::string& name, std::string& value)
{
    if (!KORVO_SplitAssignment(assignment, name, value)) return false;
    if (name[0] != '$') name = '$' + name;
    return AK_Object::IsVariableName(name.c_str());
}

// A macro is looked for in the attribute directories too.
static bool IsThere(const std::string& file)
{
    const AK_String name = file.c_str();
    return AK_System::FileExists(name) || AK_System::FileExists(AK_Object::AttributeFile(name, nullptr, nullptr));
}

static int Play(const KORVO_Arguments& arguments)
{
    std::string name, value;
    for (const std::string& assignment : arguments.Values("set"))
        if (!IsVariable(assignment, name, value))
            return arguments.BadUsage(
                InLanguage("option '--set' needs NAME=VALUE, not '", "Option '--set' braucht NAME=WERT, nicht '") +
                assignment + "'");
    KORVO_Tree tree;
    const std::string file = arguments.Words()[0];
    if (!IsThere(file)) return arguments.Failed(InLanguage("there is no file '", "es gibt keine Datei '") + file + "'");
    if (AK_System::IsDirectory(file.c_str()))
        return arguments.Failed(InLanguage("this is a directory: '", "das ist ein Verzeichnis: '") + file + "'");
    for (const std::string& assignment : arguments.Values("set"))
        if (IsVariable(assignment, name, value)) tree.Set("", name, value);
    tree.Set("", "ExecMacro", file);
    const std::string status = AK_Object::_execStatus.c_str();
    if (!KORVO_WriteMacroOption(arguments, tree)) return KORVO_FAILED;
    if (tree.NumFailures() > 0) return arguments.Failed(tree.FirstFailure());
    return status.empty() ? KORVO_DONE : arguments.Failed(status);
}

static constexpr KORVO_Option options[] = {
    {"set", "NAME=VALUE", "sets the variable $NAME of the root before the macro; may be repeated",
     "setzt vor dem Makro die Variable $NAME der Wurzel; auch mehrmals", true},
    korvoMacroOption,
};

const KORVO_Subcommand korvo_play = {
    "play",
    "FILE",
    1,
    1,
    "plays a macro\n\nStatus 0 if all of its commands went well, else 1 with the first reason on standard error.",
    "spielt ein Makro\n\nStatus 0, wenn alle Befehle gelangen, sonst 1 mit dem ersten Grund auf der Fehlerausgabe.",
    options,
    Play};
