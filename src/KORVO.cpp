// Which subcommand it is, and the help of all.

#include "KORVO.h"

#include <algorithm>
#include <cstdio>

std::span<const KORVO_Subcommand* const> KORVO_Subcommands()
{
    static constexpr const KORVO_Subcommand* subcommands[] = {&korvo_simulate, &korvo_play, &korvo_watch, &korvo_manual,
                                                              &korvo_help};
    return subcommands;
}

std::span<const KORVO_Option> KORVO_CommonOptions()
{
    static constexpr KORVO_Option options[] = {
        {"lang", "en|de", "language of what is said", "Sprache der Ausgaben"},
        {"help", nullptr, "shows this", "zeigt das hier"},
    };
    return options;
}

static const KORVO_Subcommand* Named(const std::string& name)
{
    for (const KORVO_Subcommand* subcommand : KORVO_Subcommands())
        if (name == subcommand->name) return subcommand;
    return nullptr;
}

static int RefuseSubcommand(const std::string& word)
{
    std::vector<std::string> names = {"--help", "--version"};
    if (word[0] != '-') {
        names.clear();
        for (const KORVO_Subcommand* subcommand : KORVO_Subcommands()) names.push_back(subcommand->name);
    }
    std::fprintf(stderr,
                 InLanguage("korvo: there is no '%s'; the nearest is '%s'\n'korvo --help' tells what there is.\n",
                            "korvo: '%s' gibt es nicht; am naechsten ist '%s'\n'korvo --help' sagt, was es gibt.\n"),
                 word.c_str(), KORVO_Nearest(word, names).c_str());
    return KORVO_BAD_USAGE;
}

static int Run(const std::string& word, int argc, const char* const* argv)
{
    if (word == "--version") {
        KORVO_PrintVersion();
        return KORVO_DONE;
    }
    const KORVO_Subcommand* subcommand = word == "--help" ? &korvo_help : Named(word);
    if (!subcommand) return RefuseSubcommand(word);
    KORVO_Arguments arguments(*subcommand);
    if (!arguments.Read(argc, argv)) return KORVO_BAD_USAGE;
    if (!arguments.Has("help")) return subcommand->run(arguments);
    KORVO_PrintHelp(*subcommand);
    return KORVO_DONE;
}

// A single "-" begins the options of the menus, which pass over what they do not know.
bool KORVO_RunSubcommand(int argc, const char* const* argv, int& status)
{
    if (argc < 2) return false;
    const std::string word = argv[1];
    if (word.empty() || (word[0] == '-' && !word.starts_with("--"))) return false;
    status = Run(word, argc - 2, argv + 2);
    if (std::fflush(stdout) != 0 && status == KORVO_DONE) {
        std::fprintf(stderr, InLanguage("korvo: standard output cannot be written\n",
                                        "korvo: die Standardausgabe laesst sich nicht schreiben\n"));
        status = KORVO_FAILED;
    }
    return true;
}

// ----------------------------------------------------------------------------------------------------------------
// Help
// ----------------------------------------------------------------------------------------------------------------

// "  --name VALUE", and the text in a column of its own.
static void PrintOptions(std::span<const KORVO_Option> options)
{
    static constexpr int column = 32;
    for (const KORVO_Option& option : options) {
        std::string name = std::string("  --") + option.name;
        if (option.value) name += std::string(" ") + option.value;
        if (int(name.size()) + 2 > column) {
            std::printf("%s\n", name.c_str());
            name.clear();
        }
        std::string text = InLanguage(option.english, option.german);
        for (size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1))
            text.insert(at + 1, column, ' ');
        std::printf("%-*s%s\n", column, name.c_str(), text.c_str());
    }
}

void KORVO_PrintHelp(const KORVO_Subcommand& subcommand)
{
    std::printf(InLanguage("Usage: korvo %s%s%s%s\n\n%s\n\n", "Aufruf: korvo %s%s%s%s\n\n%s\n\n"), subcommand.name,
                *subcommand.words ? " " : "", subcommand.words, InLanguage(" [option...]", " [Option...]"),
                InLanguage(subcommand.english, subcommand.german));
    PrintOptions(subcommand.options);
    PrintOptions(KORVO_CommonOptions());
}

void KORVO_PrintOverview()
{
    std::printf("%s", InLanguage("KORVO: dense-flow snow avalanches over terrain\n\n"
                                 "  korvo                         the menus\n",
                                 "KORVO: Fliesslawinen auf Gelaende\n\n"
                                 "  korvo                         die Menues\n"));
    for (const KORVO_Subcommand* subcommand : KORVO_Subcommands()) {
        const std::string call = std::string("  korvo ") + subcommand->name + " " + subcommand->words;
        const std::string text = InLanguage(subcommand->english, subcommand->german);
        std::printf("%-31s %s\n", call.c_str(), text.substr(0, text.find('\n')).c_str());
    }
    std::printf("%s", InLanguage("  korvo --version               version, build and modules\n\n"
                                 "Of the menus: -macro FILE plays a macro first, -offscreen FILE plays it and ends,\n"
                                 "-files DIR is the directory of the attribute descriptions.\n",
                                 "  korvo --version               Version, Herstellung und Module\n\n"
                                 "Zu den Menues: -macro DATEI spielt zuerst ein Makro, -offscreen DATEI spielt es und\n"
                                 "endet, -files VERZEICHNIS nennt die Attributbeschreibungen.\n"));
}

static int Help(const KORVO_Arguments& arguments)
{
    if (arguments.Words().empty()) {
        KORVO_PrintOverview();
        return KORVO_DONE;
    }
    const KORVO_Subcommand* subcommand = Named(arguments.Words()[0]);
    if (!subcommand) return RefuseSubcommand(arguments.Words()[0]);
    KORVO_PrintHelp(*subcommand);
    return KORVO_DONE;
}

const KORVO_Subcommand korvo_help = {"help",
                                     "[NAME]",
                                     0,
                                     1,
                                     "tells what there is, or the options of a subcommand",
                                     "sagt, was es gibt, oder die Optionen eines Unterbefehls",
                                     {},
                                     Help};
