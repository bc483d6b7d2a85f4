// korvo manual: the reference manual in both languages.

#include "KORVO.h"

#include <cstdio>

static int Manual(const KORVO_Arguments& arguments)
{
    const std::string directory = arguments.Has("out") ? arguments.Value("out") : "manual";
    if (AK_System::CreateDirRecursively(directory.c_str()) != 0 || !AK_System::IsDirectory(directory.c_str()))
        return arguments.Failed(InLanguage("cannot create the directory '", "kann das Verzeichnis nicht anlegen: '") +
                                directory + "'");
    KORVO_Tree tree;
    static constexpr struct {
        const char* language;
        const char* file;
    } manuals[] = {{"default", "/reference.html"}, {"german", "/handbuch.html"}};
    for (const auto& manual : manuals) {
        tree.Set("", "SetLanguage", manual.language);
        if (!tree.Set("", "WriteEntireHtmlReference", directory + manual.file))
            return arguments.Failed(AK_Object::_execStatus.c_str());
        std::printf("%s%s\n", directory.c_str(), manual.file);
    }
    return KORVO_WriteMacroOption(arguments, tree) ? KORVO_DONE : KORVO_FAILED;
}

static constexpr KORVO_Option options[] = {
    {"out", "DIR", "where to; 'manual' if it is not given", "wohin; 'manual', wenn nichts gesagt wird"},
    korvoMacroOption,
};

const KORVO_Subcommand korvo_manual = {"manual",
                                       "",
                                       0,
                                       0,
                                       "writes the reference manual, English and German, as web pages",
                                       "schreibt das Referenzhandbuch, deutsch und englisch, als Webseiten",
                                       options,
                                       Manual};
