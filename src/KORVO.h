// The program at the prompt: subcommands, their options and the object tree that they work on.
//
//   korvo play avalanche.macro --set depth=1.2
//         |          |           |      |
//    subcommand     word      option  value         also --set=depth=1.2; behind "--" everything is a word
//
// A subcommand is one row (KORVO_Subcommand) in a file of its own, KORVO_<Name>.cpp. What it does to the tree it does
// by commands, through a KORVO_Tree, which can write them down as a macro.
//
// Nobody has to know the whole command line: each error is one sentence on standard error that names what was meant.

#pragma once

#include "AK_Controller.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

/// The status of the process, the same for all subcommands.
enum KORVO_Status {
    KORVO_DONE = 0,
    KORVO_FAILED = 1,      // the reason was told
    KORVO_BAD_USAGE = 2,   // what was typed cannot be meant; nothing was done
    KORVO_SNOW_LEFT_TERRAIN = 3,
    KORVO_INTERRUPTED = 130   // what a shell reports of a process that Ctrl-C has ended
};

// ----------------------------------------------------------------------------------------------------------------
// Subcommands and options
// ----------------------------------------------------------------------------------------------------------------

struct KORVO_Option {
    const char* name;    // without the "--"
    const char* value;   // what stands for the value in the help, such as "FILE"; null for an option without one
    const char* english;
    const char* german;
    bool repeats = false;   // else it may be given once
};

class KORVO_Arguments;

struct KORVO_Subcommand {
    const char* name;
    const char* words;   // what stands for its words in the help; "" for none
    int minWords;
    int maxWords;
    const char* english;
    const char* german;
    std::span<const KORVO_Option> options;
    int (*run)(const KORVO_Arguments& arguments);   // the status of the process
};

extern const KORVO_Subcommand korvo_simulate, korvo_play, korvo_watch, korvo_manual, korvo_help;

/// All of them, in the order of the help.
std::span<const KORVO_Subcommand* const> KORVO_Subcommands();

/// What was typed behind a subcommand. Options of all subcommands: --help, --lang.
class KORVO_Arguments {
public:
    explicit KORVO_Arguments(const KORVO_Subcommand& subcommand) : _subcommand(subcommand) {}

    /// False, after a sentence on standard error, if something of it is unknown, missing or too much.
    bool Read(int argc, const char* const* argv);

    bool Has(const char* option) const;
    std::string Value(const char* option) const;   // the last one; "" if the option is not there
    std::vector<std::string> Values(const char* option) const;
    const std::vector<std::string>& Words() const { return _words; }
    const std::vector<std::string>& Typed() const { return _typed; }   // all of it
    const KORVO_Subcommand& Subcommand() const { return _subcommand; }

    /// Tells on standard error what is wrong with the arguments; always KORVO_BAD_USAGE.
    int BadUsage(const std::string& sentence) const;
    /// The same for what went wrong later; always KORVO_FAILED.
    int Failed(const std::string& sentence) const;

private:
    struct Given {
        const KORVO_Option* option;
        std::string value;
    };

    const KORVO_Option* Find(const std::string& name) const;
    bool TakeOption(const std::string& word, int argc, const char* const* argv, int& i);
    bool Refuse(const std::string& sentence) const;

    const KORVO_Subcommand& _subcommand;
    std::vector<Given> _given;
    std::vector<std::string> _words;
    std::vector<std::string> _typed;
};

/// Splits "name=value"; false if there is no "=" or nothing before it.
bool KORVO_SplitAssignment(const std::string& text, std::string& name, std::string& value);

/// A message as one line, without the mark that it begins with.
std::string KORVO_Sentence(std::string text);

/// The one of the names that takes the fewest letters to be changed into; "" for no names.
std::string KORVO_Nearest(const std::string& word, std::span<const std::string> names);

/// Runs what the arguments of the program begin with, a subcommand, --help or --version. False if they begin with none
/// of them: then they are for the menus.
bool KORVO_RunSubcommand(int argc, const char* const* argv, int& status);

/// Options that every subcommand has.
std::span<const KORVO_Option> KORVO_CommonOptions();

/// Help of one subcommand, on standard output.
void KORVO_PrintHelp(const KORVO_Subcommand& subcommand);
void KORVO_PrintOverview();

// ----------------------------------------------------------------------------------------------------------------
// The program itself
// ----------------------------------------------------------------------------------------------------------------

/// "1.0.0"
std::string KORVO_Version();
/// The sentence that something needs a module that is not there, and which package brings it.
std::string KORVO_NeedsModule(const std::string& what, const char* module);
/// Version, build and modules, on standard output.
void KORVO_PrintVersion();
/// The modules that are installed beside the program, joined by blanks; "none" without any.
std::string KORVO_ModulesPresent();

/// The directory of the attribute descriptions that belong to this executable, wherever it was started from: that of
/// the installation or of the source tree it was built in; "" if there is neither.
std::string KORVO_OwnAttributesDirectory();

// ----------------------------------------------------------------------------------------------------------------
// The tree
// ----------------------------------------------------------------------------------------------------------------

/// The object tree of a process, with the program's own descriptions. One a process. While it lives it listens to the
/// messages, since many an operation tells of its failure in no other way.
class KORVO_Tree {
public:
    KORVO_Tree();
    ~KORVO_Tree();
    KORVO_Tree(const KORVO_Tree&) = delete;
    KORVO_Tree& operator=(const KORVO_Tree&) = delete;

    AK_Controller& Root() { return *_root; }

    /// Executes set("<path>", "<attribute>", "<value>") on the root and writes it down. False if it went wrong.
    bool Set(const std::string& path, const std::string& attribute, const std::string& value);

    /// Why the last command went wrong, as one sentence.
    std::string Reason() const;

    /// The commands so far as a macro.
    bool WriteMacro(const std::string& file) const;

    /// How many messages told of a failure, and the first of them; commands that were passed over count.
    int NumFailures() const;
    std::string FirstFailure() const;

private:
    std::unique_ptr<AK_Controller> _root;
    std::string _macro;
};

/// Called with the reason when formula code cannot go on, before the process ends with KORVO_FAILED.
extern void (*korvoAtFault)(const std::string& reason);

/// The option of all subcommands that work on a tree; what it asks for, done. False, with the reason told, if the file
/// cannot be written.
inline constexpr KORVO_Option korvoMacroOption = {
    "macro", "FILE", "writes what is done as a macro too, which does the same when it is played",
    "schreibt auch als Makro, was geschieht; gespielt tut es dasselbe"};
bool KORVO_WriteMacroOption(const KORVO_Arguments& arguments, const KORVO_Tree& tree);

/// Whether a message tells that something was not done.
bool KORVO_TellsOfFailure(const char* message);

/// Makes the root with its project; the directories and the formula language before it. `tell`: with messages of each
/// step, as the menus begin.
std::unique_ptr<AK_Controller> KORVO_MakeRoot(const AK_String& attributesDirectory, bool tell);
