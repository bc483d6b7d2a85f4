// What this program is, and where its own files lie.

#include "KORVO.h"

#include <cstdio>
#include <unistd.h>

void KORVO_PrintVersion()
{
    std::printf("korvo %s\n", KORVO_Version().c_str());
    std::printf(InLanguage("build: %s, %s\n", "Herstellung: %s, %s\n"), __DATE__ " " __TIME__, "compiler " __VERSION__);
    std::printf(InLanguage("modules: %s\n", "Module: %s\n"), KORVO_ModulesPresent().c_str());
}

std::string KORVO_Version() { return KORVO_VERSION; }

std::string KORVO_NeedsModule(const std::string& what, const char* module)
{
    return what + InLanguage(" needs the module '", " braucht das Modul '") + module +
           InLanguage("' of the package korvo-", "' des Pakets korvo-") + module +
           InLanguage(", which is not installed", ", das nicht installiert ist");
}

std::string KORVO_ModulesPresent() { return InLanguage("none", "keine"); }

// Neither argv[0] nor the search path of a shell: a launcher can give the process any name.
static std::string OwnDirectory()
{
    char path[4096];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    if (length <= 0 || length == ssize_t(sizeof path)) return "";
    const std::string name(path, size_t(length));
    return name.substr(0, name.rfind('/'));
}

// Installed in bin/ or libexec/ of a prefix, or built in build/<preset>/ of a source tree.
std::string KORVO_OwnAttributesDirectory()
{
    const std::string own = OwnDirectory();
    for (const char* place : {"/../share/korvo/files/AK_Attributes", "/../../files/AK_Attributes"})
        if (!own.empty() && AK_System::IsDirectory((own + place).c_str())) return own + place;
    return "";
}
