// The program: reads its arguments and runs a subcommand, or builds the tree and hands over to the menus.
//
//   korvo <subcommand> [argument...], korvo --help, korvo --version: KORVO.h
//   korvo [-files <dir>] [-macro <file>] [-offscreen <file>]
//
//   -files       directory of the attribute descriptions
//   -macro       plays the macro, then shows the menus
//   -offscreen   plays the macro and ends
//
// These are read from left to right and the last name wins, but -offscreen stays in force. Other words beside them, and
// one of them without its value, are passed over. The status is then 0 whatever became of the macro.

#include "KORVO.h"

#include <cstring>

static constexpr const char* credits = "\nKORVO: dense-flow snow avalanches over terrain";

namespace {

struct Arguments {
    AK_String macro;
    int exitAfterMacro = 0;
    AK_String attributesDirectory = "../files/AK_Attributes";
};

}   // namespace

static Arguments ReadArguments(int argc, char** argv)
{
    Arguments arguments;
    if (!AK_System::IsDirectory(arguments.attributesDirectory)) {
        const std::string own = KORVO_OwnAttributesDirectory();
        if (!own.empty()) arguments.attributesDirectory = own.c_str();
    }
    for (int i = 1; i + 1 < argc; ++i) {
        if (std::strcmp(argv[i], "-files") == 0)
            arguments.attributesDirectory = argv[++i];
        else if (std::strcmp(argv[i], "-macro") == 0)
            arguments.macro = argv[++i];
        else if (std::strcmp(argv[i], "-offscreen") == 0) {
            arguments.macro = argv[++i];
            arguments.exitAfterMacro = 1;
        }
    }
    return arguments;
}

int main(int argc, char** argv)
{
    AK_Object::_argc = argc;
    AK_Object::_argv = argv;
    AK_Object::_about = AK_String(argc > 0 ? argv[0] : "") + "\nCompiled " __DATE__ " " __TIME__ + credits;
    int status = 0;
    if (KORVO_RunSubcommand(argc, argv, status)) return status;
    const Arguments arguments = ReadArguments(argc, argv);
    const std::unique_ptr<AK_Controller> root = KORVO_MakeRoot(arguments.attributesDirectory, true);
    root->Run(1024, 768, arguments.macro, "", arguments.exitAfterMacro);
    return 0;
}
