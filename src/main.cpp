// The program: reads its arguments, builds the tree and hands over to the controller.
//
//   korvo [-files <dir>] [-macro <file>] [-offscreen <file>]
//
//   -files       directory of the attribute descriptions
//   -macro       plays the macro, then shows the menus
//   -offscreen   plays the macro and ends
//
// The arguments are read from left to right and the last name wins, but -offscreen stays in force. Other arguments, and
// an option without its value, are passed over. The status of the process is 0 whatever became of the macro.

#include "AK_Controller.h"
#include "SW_Workspace.h"
#include "qvt_sci.h"

#include <cstdlib>
#include <cstring>

static constexpr const char* credits = "\nKORVO: dense-flow snow avalanches over terrain";
static constexpr const char* rule = "=================================================================";   // 65 wide

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

// Before the first object, whose construction completes the directories and reads the descriptions.
static void SetDirectories(const AK_String& attributesDirectory)
{
    AK_MSG("Setting config files directory: " << attributesDirectory);
    AK_Object::SetAttributesDirectory(attributesDirectory);
    const char* ofUser = std::getenv("KORVO_USER_ATTRIBUTES");
    if (!ofUser || !*ofUser) return;
    AK_Object::SetUserAttributesDirectory(ofUser);
    AK_MSG("set user attributes directory to:" << AK_Object::_userAttributesDirectory);
}

int main(int argc, char** argv)
{
    AK_Object::_argc = argc;
    AK_Object::_argv = argv;
    AK_Object::_about = AK_String(argc > 0 ? argv[0] : "") + "\nCompiled " __DATE__ " " __TIME__ + credits;
    const Arguments arguments = ReadArguments(argc, argv);
    SetDirectories(arguments.attributesDirectory);
    qvt_sci_InitAll();   // before the first object: each class loads its formula code

    AK_Controller* root = new AK_TerminalController("Viewer", nullptr);
    AK_MSG(AK_Object::Arglist(" "));
    AK_MSG(rule << "\n" << AK_Object::_about << "\n" << rule << "\n");
    root->AddComponent(new SW_Workspace("Project", nullptr));
    root->FixComponents();
    root->Run(1024, 768, arguments.macro, "", arguments.exitAfterMacro);
    delete root;
    return 0;
}
