// korvo simulate: from terrain and release to results, in one command.

#include "KORVO_Simulate.h"

#include "AK_Basic_NewFile.h"
#include "KORVO_Sha256.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>

// ----------------------------------------------------------------------------------------------------------------
// Memory
// ----------------------------------------------------------------------------------------------------------------

// Texts, each ended by a NUL, which no argument can hold.
static constexpr const char* memoryFile = "/.continue";
static constexpr const char* memoryMark = "korvo simulate 1";

bool KORVO_SimulateMemory::Write(const std::string& partial) const
{
    return AK_WriteStream((partial + memoryFile).c_str(), [&](std::ostream& out) {
        const auto put = [&](const std::string& text) { out << text << '\0'; };
        put(memoryMark);
        put(directory);
        put(process);
        put(std::to_string(int(isSaved)));
        put(std::to_string(int(isRun)));
        put(AK_String(massOffMesh, "%.17g").c_str());
        put(AK_String(runTime, "%.17g").c_str());
        put(std::to_string(arguments.size()));
        for (const std::string& argument : arguments) put(argument);
        for (const KORVO_Input& input : inputs)
            for (const std::string& text : {input.path, input.bytes, input.sha256}) put(text);
    });
}

bool KORVO_SimulateMemory::Read(const std::string& partial)
{
    std::ifstream file(partial + memoryFile, std::ios::binary);
    std::vector<std::string> texts;
    for (std::string text; std::getline(file, text, '\0');) texts.push_back(text);
    constexpr size_t numFirst = 8;
    if (texts.size() < numFirst || texts[0] != memoryMark) return false;
    const size_t numArguments = std::strtoul(texts[7].c_str(), nullptr, 10);
    if (numArguments > texts.size() - numFirst) return false;
    directory = texts[1];
    process = texts[2];
    isSaved = texts[3] == "1";
    isRun = texts[4] == "1";
    massOffMesh = std::strtod(texts[5].c_str(), nullptr);
    runTime = std::strtod(texts[6].c_str(), nullptr);
    const auto first = texts.begin() + numFirst;
    arguments.assign(first, first + long(numArguments));
    for (size_t i = numFirst + numArguments; i + 2 < texts.size(); i += 3)
        inputs.push_back({texts[i], texts[i + 1], texts[i + 2]});
    return true;
}

// ----------------------------------------------------------------------------------------------------------------
// Log
// ----------------------------------------------------------------------------------------------------------------

static std::string logText;   // what was said before the file was there
static std::FILE* logFile = nullptr;

static void Log(const char* message, const char*)
{
    if (!logFile) {
        logText += std::string(message) + "\n";
        return;
    }
    std::fprintf(logFile, "%s\n", message);
    std::fflush(logFile);
}

static void OpenLog(const std::string& path)
{
    logFile = std::fopen(path.c_str(), "a");
    if (logFile) std::fputs(logText.c_str(), logFile);
}

static void CloseLog()
{
    if (logFile) std::fclose(logFile);
    logFile = nullptr;
}

// What was warned of in all processes that the run took.
static std::vector<std::string> Warnings(const std::string& log)
{
    static constexpr size_t most = 200;
    std::vector<std::string> warnings;
    std::ifstream file(log);
    for (std::string line; warnings.size() < most && std::getline(file, line);) {
        const std::string mark = "WARNING:";
        if (!line.starts_with(mark)) continue;
        line.erase(0, std::min(line.find_first_not_of(' ', mark.size()), line.size()));
        if (std::find(warnings.begin(), warnings.end(), line) == warnings.end()) warnings.push_back(line);
    }
    return warnings;
}

// ----------------------------------------------------------------------------------------------------------------
// What was typed
// ----------------------------------------------------------------------------------------------------------------

static KORVO_Stop Usage(const char* option, const std::string& sentence)
{
    return {KORVO_BAD_USAGE, std::string("--") + option + ": " + sentence};
}

static void CheckNumbers(const KORVO_Arguments& arguments)
{
    static constexpr struct {
        const char* option;
        double largest;
        bool isWhole;
    } numbers[] = {{"depth", 1e6, false},       {"density", 1e6, false},
                   {"cell-size", 1e6, false},   {"particles-per-cell", 1e6, false},
                   {"time-step", 1e6, false},   {"end-time", 1e9, false},
                   {"output-step", 1e9, false}, {"threads", 256, true}};
    for (const auto& number : numbers) {
        if (!arguments.Has(number.option)) continue;
        const std::string text = arguments.Value(number.option);
        char* end = nullptr;
        const double value = std::strtod(text.c_str(), &end);
        if (*end || !std::isfinite(value))
            throw Usage(number.option, "'" + text + InLanguage("' is no number", "' ist keine Zahl"));
        if (!(value > 0))
            throw Usage(number.option, "'" + text + InLanguage("' is not above 0", "' ist nicht groesser als 0"));
        if (value > number.largest)
            throw Usage(number.option, "'" + text + InLanguage("' is too large", "' ist zu gross"));
        if (number.isWhole && value != std::floor(value))
            throw Usage(number.option, "'" + text + InLanguage("' is no whole number", "' ist keine ganze Zahl"));
    }
}

// Those that only make sense together, with the usual values in the place of those that are not given.
static void CheckTimes(const KORVO_Arguments& arguments)
{
    static constexpr double mostSteps = 1e9;
    const auto number = [&](const char* option) {
        return std::strtod(KORVO_ValueOrUsual(arguments, option).c_str(), nullptr);
    };
    if (number("output-step") < number("time-step") / 2)
        throw Usage("output-step",
                    InLanguage("is less than half of --time-step", "ist weniger als die Haelfte von --time-step"));
    if (number("end-time") / number("time-step") > mostSteps)
        throw Usage("time-step",
                    InLanguage("makes too many steps till --end-time", "ergibt zu viele Schritte bis --end-time"));
}

static void CheckFormats(const KORVO_Arguments& arguments)
{
    static const std::vector<std::string> known = {"asc", "dxf", "tif", "gpkg", "nc", "kmz"};
    const std::string list = arguments.Value("formats") + ",";
    for (size_t begin = 0; arguments.Has("formats") && begin < list.size();) {
        const size_t end = list.find(',', begin);
        const std::string format = list.substr(begin, end - begin);
        begin = end + 1;
        if (format == "asc" || format == "dxf") continue;
        if (std::find(known.begin(), known.end(), format) == known.end())
            throw Usage("formats", InLanguage("there is no format '", "es gibt kein Format '") + format +
                                       InLanguage("'; the nearest is '", "'; am naechsten ist '") +
                                       KORVO_Nearest(format, known) + "'");
        throw KORVO_Stop{KORVO_FAILED, KORVO_NeedsModule(format, "gis")};
    }
}

static void CheckUsage(const KORVO_Arguments& arguments)
{
    for (const char* option : {"terrain", "release", "out"})
        if (!arguments.Has(option))
            throw KORVO_Stop{KORVO_BAD_USAGE, InLanguage("there is no --", "es fehlt --") + std::string(option)};
    CheckNumbers(arguments);
    CheckTimes(arguments);
    CheckFormats(arguments);
    std::string name, value;
    for (const std::string& assignment : arguments.Values("set"))
        if (!KORVO_SplitAssignment(assignment, name, value))
            throw Usage("set",
                        InLanguage("PATH:ATTRIBUTE=VALUE is needed, not '", "PFAD:ATTRIBUT=WERT ist noetig, nicht '") +
                            assignment + "'");
    if (arguments.Has("friction")) KORVO_ParseFriction(arguments.Value("friction"));
}

// ----------------------------------------------------------------------------------------------------------------
// Directories
// ----------------------------------------------------------------------------------------------------------------

namespace {

/// Where it all goes.
struct Places {
    std::string out, partial, log;
    std::string name;   // of the simulation and, in the macro, of the directory

    explicit Places(std::string path)
    {
        while (path.size() > 1 && path.back() == '/') path.pop_back();
        out = path;
        partial = path + ".partial";
        log = path + ".log";
        name = path.substr(path.rfind('/') + 1);
    }
    std::string Id() const
    {
        AK_String id = name.c_str();
        id.ReplaceNonAlNum('_');
        return id.c_str();
    }
};

}   // namespace

static bool Exists(const std::string& path) { return AK_System::FileExists(path.c_str()); }

// What --force may remove: nothing but what this program has made.
static bool IsOurs(const std::string& directory)
{
    return Exists(directory + memoryFile) || (Exists(directory + "/table.json") && Exists(directory + "/case.macro"));
}

static KORVO_Stop NoPlace(const std::string& path, const char* english, const char* german)
{
    return {KORVO_FAILED, "'" + path + InLanguage(english, german)};
}

// A run that another process computes is nobody else's to touch.
static void RefuseIfUnderWay(const Places& places)
{
    KORVO_SimulateMemory memory;
    if (memory.Read(places.partial) && AK_System::ProcessLives(memory.process.c_str()))
        throw NoPlace(places.partial, "' is being computed by another process",
                      "' wird von einem anderen Prozess gerechnet");
}

static void MakePlace(const Places& places, bool force)
{
    if (places.name.empty() || places.name == "." || places.name == "..")
        throw Usage("out",
                    "'" + places.out +
                        InLanguage("' is no name for a new directory", "' ist kein Name fuer ein neues Verzeichnis"));
    RefuseIfUnderWay(places);
    if (Exists(places.out) && !force)
        throw NoPlace(places.out, "' is there already; --force replaces it", "' gibt es schon; --force ersetzt es");
    if (Exists(places.partial) && !force)
        throw NoPlace(places.partial, "' holds an interrupted run; --continue goes on with it, --force begins anew",
                      "' enthaelt eine unterbrochene Rechnung; --continue setzt sie fort, --force beginnt neu");
    for (const std::string& path : {places.out, places.partial})
        if (Exists(path) && !IsOurs(path))
            throw NoPlace(path, "' was not made by korvo simulate and is not replaced",
                          "' stammt nicht von korvo simulate und wird nicht ersetzt");
    AK_System::RemoveFileRecursively(places.partial.c_str());
    const size_t slash = places.out.rfind('/');
    if (slash != std::string::npos && slash > 0) AK_System::CreateDirRecursively(places.out.substr(0, slash).c_str());
    if (mkdir(places.partial.c_str(), 0777) != 0)   // one that has come up meanwhile is another process's
        throw NoPlace(places.partial, "' cannot be created", "' laesst sich nicht anlegen");
}

// What --force replaces is there until the new directory is.
static void MoveIntoPlace(const Places& places, bool force)
{
    const std::string replaced = places.out + ".replaced";
    const bool replaces = force && Exists(places.out) && IsOurs(places.out);
    if (replaces) AK_System::RenameFile(places.out.c_str(), replaced.c_str());
    if (AK_System::RenameFile(places.partial.c_str(), places.out.c_str()) != 0)
        throw NoPlace(places.out, "' cannot be created; --continue tries it again",
                      "' laesst sich nicht anlegen; --continue versucht es noch einmal");
    if (replaces) AK_System::RemoveFileRecursively(replaced.c_str());
    AK_System::RemoveFile((places.out + memoryFile).c_str());
    AK_System::RemoveFile(places.log.c_str());
}

// A failed run leaves its log at most.
static void Abandon(const Places& places, bool keepLog)
{
    if (keepLog) AK_System::RenameFile((places.partial + "/log.txt").c_str(), places.log.c_str());
    AK_System::RemoveFileRecursively(places.partial.c_str());
}

// ----------------------------------------------------------------------------------------------------------------
// The work
// ----------------------------------------------------------------------------------------------------------------

static void WriteText(const std::string& path, const std::string& text)
{
    if (!AK_WriteStream(path.c_str(), [&](std::ostream& out) { out << text; }))
        throw KORVO_Stop{KORVO_FAILED, InLanguage("cannot write '", "kann nicht schreiben: '") + path + "'"};
}

static void Note(const KORVO_SimulateMemory& memory, const Places& places)
{
    if (!memory.Write(places.partial))
        throw KORVO_Stop{KORVO_FAILED,
                         InLanguage("cannot write into '", "kann nicht schreiben in '") + places.partial + "'"};
}

// From what is there to a state at the end of the run.
static void Compute(const KORVO_Arguments& arguments, KORVO_Case& run, KORVO_Tree& tree, const Places& places,
                    KORVO_Watched& watched, KORVO_SimulateMemory& memory)
{
    if (memory.isSaved) {
        tree.Set("", "LoadProject", places.partial + "/project");
        run.Find();
        run.LoadState();
    } else {
        run.Build();
        WriteText(places.partial + "/case.macro", run.Macro());
        if (arguments.Has("macro")) WriteText(arguments.Value("macro"), run.Macro());
        run.Save();
        memory.isSaved = true;
        Note(memory, places);
    }
    if (memory.isRun) return;
    watched.Follow(run.Simulation());
    run.Run();
    watched.Finish();
    run.SaveEnd();
    memory.isRun = true;
    Note(memory, places);
}

static int WriteResults(KORVO_Case& run, const Places& places, const KORVO_SimulateMemory& memory, std::string& table)
{
    run.Export();
    if (!run.Simulation().StatusInfo().StartsWith("stopped"))
        AK_MSG(InLanguage("WARNING: the flow was still in motion at the end time",
                          "WARNING: die Lawine war zur Endzeit noch in Bewegung"));
    const int status = memory.massOffMesh > 0 ? KORVO_SNOW_LEFT_TERRAIN : KORVO_DONE;
    table = KORVO_WriteTables(
        {run, memory.inputs, Warnings(places.partial + "/log.txt"), memory.massOffMesh, memory.runTime, status},
        places.partial);
    return status;
}

// For a friction law or a criterion that cannot go on; it leaves the process without a way back to here.
static const Places* placesAtFault = nullptr;

static void AbandonAtFault(const std::string& reason)
{
    std::fprintf(stderr, "korvo simulate: %s\n", reason.c_str());
    CloseLog();
    if (placesAtFault) Abandon(*placesAtFault, true);
}

static void TellInterrupted(const Places& places)
{
    std::fprintf(stderr,
                 InLanguage("korvo simulate: interrupted; 'korvo simulate --continue %s' goes on\n",
                            "korvo simulate: unterbrochen; 'korvo simulate --continue %s' setzt fort\n"),
                 places.out.c_str());
}

// What a failure leaves is thrown away, unless it holds what was computed before or all there is.
static int Work(const KORVO_Arguments& arguments, const Places& places, KORVO_SimulateMemory& memory, KORVO_Tree& tree,
                bool isContinued)
{
    KORVO_Watched watched(arguments.Has("quiet"), places.partial, memory);
    bool isWorthKeeping = isContinued;
    std::string table;
    int status = KORVO_DONE;
    try {
        memory.process = AK_System::ProcessMark().c_str();
        korvoAtFault = AbandonAtFault;
        placesAtFault = isContinued ? nullptr : &places;
        Note(memory, places);
        OpenLog(places.partial + "/log.txt");
        KORVO_Case run(arguments, tree, places.Id(), places.name, places.partial);
        Compute(arguments, run, tree, places, watched, memory);
        status = WriteResults(run, places, memory, table);
        isWorthKeeping = true;
        CloseLog();
        MoveIntoPlace(places, arguments.Has("force"));
    } catch (const KORVO_Stop& stop) {
        watched.Finish();
        CloseLog();
        if (stop.status == KORVO_INTERRUPTED)
            TellInterrupted(places);
        else if (!isWorthKeeping)
            Abandon(places, stop.status != KORVO_BAD_USAGE);
        throw;
    }
    if (!arguments.Has("quiet"))
        std::printf(InLanguage("%s\nResults in %s\n", "%s\nErgebnisse in %s\n"), table.c_str(), places.out.c_str());
    if (std::fflush(stdout) != 0) std::clearerr(stdout);   // nobody may listen any more; the results are there
    return status;
}

static int Start(const KORVO_Arguments& arguments, const std::vector<std::string>& typed)
{
    KORVO_Tree tree;   // before the usage: formula files are looked for where it finds them
    CheckUsage(arguments);
    KORVO_SimulateMemory memory;
    memory.arguments = typed;
    memory.directory = AK_System::CurrentWorkingDirectory().c_str();
    for (const std::string& path : KORVO_InputFiles(arguments)) {
        unsigned long long numBytes = 0;
        const std::string sum = KORVO_Sha256OfFile(path, numBytes);
        memory.inputs.push_back({path, std::to_string(numBytes), sum});
    }
    const Places places(arguments.Value("out"));
    MakePlace(places, arguments.Has("force"));
    return Work(arguments, places, memory, tree, false);
}

// With the words that were typed then, in the directory where they were typed.
static int Continue(const KORVO_Arguments& given)
{
    const Places wanted(given.Value("continue"));
    KORVO_SimulateMemory memory;
    if (!memory.Read(wanted.partial))
        throw KORVO_Stop{KORVO_FAILED,
                         InLanguage("there is no interrupted run in '", "es gibt keine unterbrochene Rechnung in '") +
                             wanted.partial + "'"};
    RefuseIfUnderWay(wanted);
    std::vector<const char*> words;
    for (const std::string& word : memory.arguments) words.push_back(word.c_str());
    KORVO_Arguments arguments(given.Subcommand());
    if (!arguments.Read(int(words.size()), words.data())) return KORVO_BAD_USAGE;
    const bool isHere = std::string(AK_System::CurrentWorkingDirectory().c_str()) == memory.directory;
    const Places places(isHere ? wanted.out
                               : std::string(wanted.out.starts_with("/")
                                                 ? ""
                                                 : AK_System::CurrentWorkingDirectory().c_str() + std::string("/")) +
                                     wanted.out);
    if (!isHere && chdir(memory.directory.c_str()) != 0)
        throw KORVO_Stop{KORVO_FAILED,
                         InLanguage("the directory is gone: '", "das Verzeichnis ist weg: '") + memory.directory + "'"};
    KORVO_Tree tree;
    return Work(arguments, places, memory, tree, true);
}

static int Simulate(const KORVO_Arguments& arguments)
{
    ak_msg_func = Log;
    if (arguments.Value("friction") == "list") {
        KORVO_PrintFrictionLaws();
        return KORVO_DONE;
    }
    try {
        return arguments.Has("continue") ? Continue(arguments) : Start(arguments, arguments.Typed());
    } catch (const KORVO_Stop& stop) {
        if (stop.status == KORVO_BAD_USAGE) return arguments.BadUsage(stop.reason);
        if (stop.status == KORVO_FAILED) arguments.Failed(stop.reason);
        return stop.status;
    }
}

// ----------------------------------------------------------------------------------------------------------------
// Options
// ----------------------------------------------------------------------------------------------------------------

// clang-format off
static constexpr KORVO_Option options[] = {
    {"terrain", "FILE",
     "elevations in metres: .asc, .e00, .xyz, .nxyz",
     "Hoehen in Metern: .asc, .e00, .xyz, .nxyz"},
    {"release", "FILE",
     "release polygons: .dxf, .nxyz, .xyz, .xy, .ano, .rel",
     "Anbruchpolygone: .dxf, .nxyz, .xyz, .xy, .ano, .rel", true},
    {"out", "DIR",
     "new directory for the results",
     "neues Verzeichnis fuer die Ergebnisse"},
    {"depth", "M",
     "release depth normal to the slope, m; a polygon's own wins",
     "Anbruchhoehe rechtwinklig zum Hang, m; die eigene eines\nPolygons geht vor"},
    {"density", "KG/M3",
     "density of the release, kg/m3; a polygon's own wins",
     "Dichte des Anbruchs, kg/m3; die eigene eines Polygons\ngeht vor"},
    {"forest", "FILE",
     "areas that brake: .dxf, .nxyz, .xyz, .xy, .ano, .res",
     "Flaechen, die bremsen: .dxf, .nxyz, .xyz, .xy, .ano, .res", true},
    {"entrainment", "FILE",
     "areas whose snow is taken up",
     "Flaechen, deren Schnee aufgenommen wird", true},
    {"walls", "FILE",
     "crowns of dams and walls; the flow comes from their left",
     "Kronen von Daemmen und Mauern; die Lawine kommt von links", true},
    {"sources", "FILE",
     "lines where snow flows in",
     "Linien, an denen Schnee eintritt", true},
    {"friction", "NAME[:P=V,...]",
     "friction law and its parameters; 'list' shows all laws",
     "Reibungsgesetz und seine Parameter; 'list' zeigt alle"},
    {"cell-size", "M",
     "cells of the flow, m; those of the terrain if not given",
     "Zellen der Lawine, m; sonst die des Gelaendes"},
    {"particles-per-cell", "N",
     "in each released cell; 20",
     "in jeder Zelle des Anbruchs; 20"},
    {"time-step", "S",
     "s; 0.1",
     "s; 0.1"},
    {"end-time", "S",
     "the latest end, s; 300. A flow at rest ends the run",
     "das spaeteste Ende, s; 300. Ruht die Lawine, endet die\nRechnung"},
    {"output-step", "S",
     "interval of saved states, s; 5",
     "Abstand der gespeicherten Zustaende, s; 5"},
    {"threads", "N",
     "the cores there are if not given; the result is the same",
     "sonst so viele wie Kerne; das Ergebnis ist dasselbe"},
    {"set", "PATH:ATTRIBUTE=VALUE",
     "everything else; PATH as in macros or from the simulation\non, empty for the simulation itself; may be repeated",
     "alles Uebrige; PFAD wie in Makros oder von der Simulation\naus, leer fuer sie selbst; auch mehrmals", true},
    {"formats", "LIST",
     "of the results, with commas: asc, dxf (lines of equal\nvalue); asc if not given",
     "der Ergebnisse, mit Kommas: asc, dxf (Linien gleichen\nWertes); sonst asc"},
    korvoMacroOption,
    {"continue", "DIR",
     "goes on with an interrupted run, with the options of then",
     "setzt eine unterbrochene Rechnung fort, mit den Optionen\nvon damals"},
    {"force", nullptr,
     "replaces earlier results",
     "ersetzt fruehere Ergebnisse"},
    {"quiet", nullptr,
     "says nothing but errors",
     "sagt nichts ausser Fehlern"},
};
// clang-format on

const KORVO_Subcommand korvo_simulate = {
    "simulate",
    "--terrain FILE --release FILE --out DIR",
    0,
    0,
    "runs an avalanche and writes its results\n\n"
    "DIR holds peak_depth, peak_pressure, peak_speed and arrival_time (.asc with .prj), outline.dxf, table.txt,\n"
    "table.json, case.macro, log.txt and project/. It appears when it is whole.\n\n"
    "Status 0 done, 1 refused or failed, 2 bad usage, 3 done but snow left the terrain, 130 interrupted.",
    "rechnet eine Lawine und schreibt ihre Ergebnisse\n\n"
    "DIR enthaelt peak_depth, peak_pressure, peak_speed und arrival_time (.asc mit .prj), outline.dxf, table.txt,\n"
    "table.json, case.macro, log.txt und project/. Es erscheint, wenn es vollstaendig ist.\n\n"
    "Status 0 fertig, 1 abgelehnt oder misslungen, 2 falscher Aufruf, 3 fertig, aber Schnee verliess das Gelaende,\n"
    "130 unterbrochen.",
    options,
    Simulate};
