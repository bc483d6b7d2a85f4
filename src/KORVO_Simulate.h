// Parts of korvo simulate; for KORVO_Simulate*.cpp only.
//
//   options  ->  case: commands that make the scenario    KORVO_Simulate_Case.cpp
//                  |   friction laws by short names       KORVO_Simulate_Friction.cpp
//                  v
//                run, watched and interrupted             KORVO_Simulate_Progress.cpp
//                  |
//                  v
//                results, table                           KORVO_Simulate_Exports.cpp, KORVO_Simulate_Table.cpp
//
// All of it lies in "<out>.partial" and is renamed when it is whole. What must outlive the process, so that an
// interrupted run can go on, stands in a file of that directory: KORVO_Simulate_Places.cpp. What was typed is checked
// in KORVO_Simulate_Usage.cpp.

#pragma once

#include "KORVO.h"
#include "SW_InitialCondition.h"
#include "SW_Mesh.h"
#include "SW_Particles.h"
#include "SW_ResistanceArea.h"
#include "SW_Simulation.h"
#include "SW_SourceLine.h"
#include "SW_WallLine.h"

#include <functional>

/// A refusal or failure on the way, with its reason as one sentence and the status that the process ends with.
struct KORVO_Stop {
    int status;
    std::string reason;
};

// ----------------------------------------------------------------------------------------------------------------
// Friction
// ----------------------------------------------------------------------------------------------------------------

/// A friction law as it is typed: "voellmy:mu=0.3,xi=1500".
struct KORVO_Friction {
    std::string law;                                               // value of FrictionType; "" for the default
    std::vector<std::pair<std::string, std::string>> attributes;   // of a built-in law: attribute, value
    std::vector<std::pair<std::string, std::string>> parameters;   // of a formula file: name, value
};

/// Stops with a sentence for an unknown law or parameter, or a value that is none. The attribute directories are set.
KORVO_Friction KORVO_ParseFriction(const std::string& text);
/// All laws with their parameters, on standard output.
void KORVO_PrintFrictionLaws();

// ----------------------------------------------------------------------------------------------------------------
// The case
// ----------------------------------------------------------------------------------------------------------------

/// An input file as it was typed, and what it held.
struct KORVO_Input {
    std::string path;
    std::string bytes;   // their number
    std::string sha256;
};

/// The case as commands. Each is executed at once on the tree, or kept for later; all of them together are the macro.
/// Results are named by "<results>/...", which leads to the partial directory here and to the final name in the macro.
class KORVO_Case {
public:
    /// id: of the simulation. name: of the directory that will hold the results, partial: of the one that does so now.
    KORVO_Case(const KORVO_Arguments& arguments, KORVO_Tree& tree, const std::string& id, const std::string& name,
               const std::string& partial)
        : _arguments(arguments),
          _tree(tree),
          _id(id),
          _name(name),
          _partial(partial),
          _path("Project/Simulations/" + id)
    {
    }

    /// Terrain, areas, walls, friction, parameters. Stops with the reason if something cannot be had.
    void Build();
    /// Finds what a project that was loaded has of it.
    void Find();
    /// All commands from the first to the last result, whether they have been executed or not.
    std::string Macro() const;
    // The rest in its order. A run goes on from the state that was loaded, if there is one.
    void Save();
    void LoadState();
    void Run();
    void SaveEnd();
    void Export();

    SW_Simulation& Simulation() const { return *_simulation; }
    const std::string& Path() const { return _path; }
    const std::string& Id() const { return _id; }

    struct Command {
        std::string path, attribute, value;
        bool isResult;   // the value is a file below the directory of the results, or "" for that directory
    };
    /// What --set asks for.
    std::vector<Command> Extra() const;

private:
    void Do(const Command& command);
    void DoAndKeep(const std::string& path, const std::string& attribute, const std::string& value);
    void Import(const std::string& path, const char* command, const char* option, const std::string& file);
    void ImportTerrain();
    void ImportAreas(const char* option, const char* container);
    void CheckRelease() const;
    void SetFriction();
    void SetParameters();
    void SetExtra();
    std::vector<Command> Saving() const;
    std::vector<Command> RasterOf(const std::string& field, const std::string& file) const;
    std::vector<Command> Exports() const;
    static std::string ValueIn(const std::string& directory, const Command& command);

    const KORVO_Arguments& _arguments;
    KORVO_Tree& _tree;
    const std::string _id, _name, _partial, _path;
    std::vector<Command> _done;
    bool _goesOn = false;   // from a state that was loaded
    SW_Simulation* _simulation = nullptr;
};

/// The value of an option that has a usual one: a number of the run, or the number of threads.
std::string KORVO_ValueOrUsual(const KORVO_Arguments& arguments, const std::string& option);

/// The input files that the options name, in their order.
std::vector<std::string> KORVO_InputFiles(const KORVO_Arguments& arguments);

/// Stops with a sentence that names the option if something of the words cannot be meant.
void KORVO_CheckSimulateUsage(const KORVO_Arguments& arguments);

// ----------------------------------------------------------------------------------------------------------------
// The run
// ----------------------------------------------------------------------------------------------------------------

/// Where it all goes. What cannot be done stops with the reason.
struct KORVO_Places {
    std::string out;       // the directory that was asked for, without "/" at its end
    std::string partial;   // its stand-in until it is whole
    std::string log;       // what a failed run leaves
    std::string name;      // of the directory, in the macro

    explicit KORVO_Places(std::string path);
    std::string Id() const;   // the name as the simulation bears it
    /// Makes the partial directory. force: what this program has left there may go.
    void Make(bool force) const;
    /// A run that another process computes is nobody else's to touch.
    void RefuseIfUnderWay() const;
    void MoveIntoPlace(bool force) const;
    /// Removes the partial directory.
    void Abandon(bool keepLog) const;
};

/// What a run leaves in the partial directory for the process that goes on with it.
struct KORVO_SimulateMemory {
    std::vector<std::string> arguments;   // as typed behind "simulate"
    std::string directory;                // where they were typed
    std::string process;                  // its mark (AK_System::ProcessMark)
    std::vector<KORVO_Input> inputs;
    bool isSaved = false;     // the project with the case is whole
    bool isRun = false;       // the run has come to its end; only results are missing
    double massOffMesh = 0;   // kg, up to the last saved state
    double runTime = 0;       // s

    bool Read(const std::string& partial);
    bool Write(const std::string& partial) const;
};

/// While one lives the run of a simulation is watched: progress is shown on standard output, states are noted in the
/// memory, and an interrupt (Ctrl-C, the end of the terminal) ends the run between two steps. A second one ends the
/// process.
class KORVO_Watched {
public:
    KORVO_Watched(bool isQuiet, const std::string& partial, KORVO_SimulateMemory& memory);
    ~KORVO_Watched();
    KORVO_Watched(const KORVO_Watched&) = delete;
    KORVO_Watched& operator=(const KORVO_Watched&) = delete;

    void Follow(const SW_Simulation& simulation);
    /// The run is over: what it has come to goes into the memory.
    void Finish();
    static bool IsInterrupted();
};

// ----------------------------------------------------------------------------------------------------------------
// Results
// ----------------------------------------------------------------------------------------------------------------

/// Everything that the tables tell.
struct KORVO_Results {
    const KORVO_Case& run;
    const std::vector<KORVO_Input>& inputs;
    std::vector<std::string> warnings;
    double massOffMesh;   // kg: in all processes that the run took
    double runTime;       // s: the same
    int status;           // of the process
};

/// Writes table.txt and table.json into the directory, where outline.dxf lies; the text of the first is the result.
/// Stops if they cannot be written.
std::string KORVO_WriteTables(const KORVO_Results& results, const std::string& directory);
