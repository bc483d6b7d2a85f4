// korvo simulate: from terrain and release to results, in one command.

#include "KORVO_Simulate.h"

#include "AK_Basic_NewFile.h"
#include "KORVO_Sha256.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <unistd.h>

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
// The work
// ----------------------------------------------------------------------------------------------------------------

static void WriteText(const std::string& path, const std::string& text)
{
    if (!AK_WriteStream(path.c_str(), [&](std::ostream& out) { out << text; }))
        throw KORVO_Stop{KORVO_FAILED, InLanguage("cannot write '", "kann nicht schreiben: '") + path + "'"};
}

static void Note(const KORVO_SimulateMemory& memory, const KORVO_Places& places)
{
    if (!memory.Write(places.partial))
        throw KORVO_Stop{KORVO_FAILED,
                         InLanguage("cannot write into '", "kann nicht schreiben in '") + places.partial + "'"};
}

static KORVO_Stop CannotLoad(const KORVO_Places& places, const KORVO_Tree& tree)
{
    return {KORVO_FAILED, InLanguage("the run cannot be loaded from '", "die Rechnung ist nicht ladbar aus '") +
                              places.partial + "': " + tree.Reason()};
}

// From what is there to a state at the end of the run.
static void Compute(const KORVO_Arguments& arguments, KORVO_Case& run, KORVO_Tree& tree, const KORVO_Places& places,
                    KORVO_Watched& watched, KORVO_SimulateMemory& memory)
{
    if (memory.isSaved) {
        if (!tree.Set("", "LoadProject", places.partial + "/project")) throw CannotLoad(places, tree);
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

static int WriteResults(KORVO_Case& run, const KORVO_Places& places, const KORVO_SimulateMemory& memory,
                        std::string& table)
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
static const KORVO_Places* placesAtFault = nullptr;

static void AbandonAtFault(const std::string& reason)
{
    std::fprintf(stderr, "korvo simulate: %s\n", reason.c_str());
    CloseLog();
    if (placesAtFault) placesAtFault->Abandon(true);
}

static void TellInterrupted(const KORVO_Places& places)
{
    std::fprintf(stderr,
                 InLanguage("korvo simulate: interrupted; 'korvo simulate --continue %s' goes on\n",
                            "korvo simulate: unterbrochen; 'korvo simulate --continue %s' setzt fort\n"),
                 places.out.c_str());
}

// What a failure leaves is thrown away, unless it holds what was computed before or all there is. now: what was typed
// to go on with an interrupted run, null for one that begins.
static int Work(const KORVO_Arguments& arguments, const KORVO_Places& places, KORVO_SimulateMemory& memory,
                KORVO_Tree& tree, const KORVO_Arguments* now)
{
    const bool isQuiet = (now ? *now : arguments).Has("quiet");
    KORVO_Watched watched(isQuiet, places.partial, memory);
    bool isWorthKeeping = now != nullptr;
    std::string table;
    int status = KORVO_DONE;
    try {
        memory.process = AK_System::ProcessMark().c_str();
        korvoAtFault = AbandonAtFault;
        placesAtFault = now ? nullptr : &places;
        Note(memory, places);
        OpenLog(places.partial + "/log.txt");
        KORVO_Case run(arguments, tree, places.Id(), places.name, places.partial);
        Compute(arguments, run, tree, places, watched, memory);
        status = WriteResults(run, places, memory, table);
        isWorthKeeping = true;
        CloseLog();
        places.MoveIntoPlace(arguments.Has("force"));
    } catch (const KORVO_Stop& stop) {
        watched.Finish();
        CloseLog();
        if (stop.status == KORVO_INTERRUPTED)
            TellInterrupted(places);
        else if (!isWorthKeeping)
            places.Abandon(stop.status != KORVO_BAD_USAGE);
        throw;
    }
    if (!isQuiet)
        std::printf(InLanguage("%s\nResults in %s\n", "%s\nErgebnisse in %s\n"), table.c_str(), places.out.c_str());
    if (std::fflush(stdout) != 0) std::clearerr(stdout);   // nobody may listen any more; the results are there
    return status;
}

static int Start(const KORVO_Arguments& arguments, const std::vector<std::string>& typed)
{
    KORVO_Tree tree;   // before the usage: formula files are looked for where it finds them
    KORVO_CheckSimulateUsage(arguments);
    KORVO_SimulateMemory memory;
    memory.arguments = typed;
    memory.directory = AK_System::CurrentWorkingDirectory().c_str();
    for (const std::string& path : KORVO_InputFiles(arguments)) {
        unsigned long long numBytes = 0;
        const std::string sum = KORVO_Sha256OfFile(path, numBytes);
        memory.inputs.push_back({path, std::to_string(numBytes), sum});
    }
    const KORVO_Places places(arguments.Value("out"));
    places.Make(arguments.Has("force"));
    return Work(arguments, places, memory, tree, nullptr);
}

// With the words that were typed then, in the directory where they were typed.
static int Continue(const KORVO_Arguments& given)
{
    for (const KORVO_Option& option : given.Subcommand().options) {
        const std::string name = option.name;
        if (given.Has(option.name) && name != "continue" && name != "quiet")
            throw KORVO_Stop{KORVO_BAD_USAGE,
                             "--continue: " +
                                 std::string(InLanguage("the options are those of then, without '--",
                                                        "die Optionen sind die von damals, ohne '--")) +
                                 name + "'"};
    }
    const KORVO_Places wanted(given.Value("continue"));
    KORVO_SimulateMemory memory;
    if (!memory.Read(wanted.partial))
        throw KORVO_Stop{KORVO_FAILED,
                         InLanguage("there is no interrupted run in '", "es gibt keine unterbrochene Rechnung in '") +
                             wanted.partial + "'"};
    wanted.RefuseIfUnderWay();
    std::vector<const char*> words;
    for (const std::string& word : memory.arguments) words.push_back(word.c_str());
    KORVO_Arguments arguments(given.Subcommand());
    if (!arguments.Read(int(words.size()), words.data())) return KORVO_BAD_USAGE;
    const bool isHere = std::string(AK_System::CurrentWorkingDirectory().c_str()) == memory.directory;
    const KORVO_Places places(isHere
                                  ? wanted.out
                                  : std::string(wanted.out.starts_with("/")
                                                    ? ""
                                                    : AK_System::CurrentWorkingDirectory().c_str() + std::string("/")) +
                                        wanted.out);
    if (!isHere && chdir(memory.directory.c_str()) != 0)
        throw KORVO_Stop{KORVO_FAILED,
                         InLanguage("the directory is gone: '", "das Verzeichnis ist weg: '") + memory.directory + "'"};
    KORVO_Tree tree;
    return Work(arguments, places, memory, tree, &given);
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
