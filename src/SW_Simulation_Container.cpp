// Creation, copies, batches and cleanup of simulations.

#include "SW_Simulation_Container.h"

#include "AK_Basic_NewFile.h"
#include "SW_InitialCondition.h"
#include "SW_ResistanceArea.h"
#include "SW_Simulation.h"
#include "SW_SourceLine.h"
#include "SW_WallLine.h"

#include <algorithm>
#include <cstring>
#include <sstream>

static const char* const simulationType = "ShallowWaterSimulation";

std::span<const AK_Row> SW_Simulations::Rows()
{
    using S = SW_Simulations;
    using Text = const AK_String&;
    static constexpr Row rows[] = {
        {"CreateSimulation", command<&S::CreateSimulation>},
        {"CloneSimulation", command<&S::CloneSimulation>},
        {"SimVis", visible<&S::NumComponents>},
        {"StartActive", command<&S::StartActive>},
        {"PauseTime", value<&S::_pauseTime>},   // s
        {"WriteStartMacroAndBat", command<&S::WriteStartMacroAndBat>},
        {"Cleanup", command<[](S& s, Text) { s.Cleanup(); }>},
        {"AnimateActive", command<[](S& s, Text) { s.ForwardToActive("AnimateTimeSteps"); }>},
        {"NextTimeStepActive", command<[](S& s, Text) { s.ForwardToActive("LoadNextTimeStep"); }>},
        {"PrevTimeStepActive", command<[](S& s, Text) { s.ForwardToActive("LoadPrevTimeStep"); }>},
    };
    return rows;
}

SW_Simulations::SW_Simulations(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

AK_List<SW_Simulation*> SW_Simulations::Simulations() const
{
    AK_List<SW_Simulation*> simulations(1);
    for (AK_Object* component : _components) simulations.Append(static_cast<SW_Simulation*>(component));
    return simulations;
}

// ----------------------------------------------------------------------------------------------------------------
// Creation
// ----------------------------------------------------------------------------------------------------------------

AK_Object* SW_Simulations::CreateComponent(const AK_String& id, const AK_String& type)
{
    return type == simulationType ? new SW_Simulation(id, this) : nullptr;
}

void SW_Simulations::CreateSimulation(const AK_String& name) { AddComponent(CreateComponent(name, simulationType)); }

void SW_Simulations::CloneSimulation(const AK_String& path)
{
    auto* const source = dynamic_cast<SW_Simulation*>(ObjectById(path));
    AK_ASSERT(source);
    auto* const clone = new SW_Simulation(source->Id() + "_cloned", this);
    AddComponent(clone);
    // The mesh first: what is copied is projected on it. Then the formula file, whose parameters come later.
    AK_List<AK_String> excluded(1);
    excluded.Append("LoadTimeStep");
    clone->AssignAttributesOf(source, excluded);
    if (const SW_Mesh* mesh = source->Mesh()) clone->SetMesh(mesh->IdAbs(clone));
    clone->ReleaseAreas().CopyLinesOf(source->ReleaseAreas());
    clone->EntrainmentAreas().CopyLinesOf(source->EntrainmentAreas());
    clone->SecondaryReleaseAreas().CopyLinesOf(source->SecondaryReleaseAreas());
    clone->ResistanceAreas().CopyLinesOf(source->ResistanceAreas());
    clone->WallLines().CopyLinesOf(source->WallLines());
    clone->SourceLines().CopyLinesOf(source->SourceLines());
    clone->Set("LoadTimeStep", "");
}

// ----------------------------------------------------------------------------------------------------------------
// Results
// ----------------------------------------------------------------------------------------------------------------

void SW_Simulations::Cleanup()
{
    AK_String firstError;
    for (SW_Simulation* simulation : Simulations()) {
        const AK_String behavior = simulation->Get("CleanupBehavior");
        if (behavior == "keep last time step") simulation->Set("DeleteTimesteps", "except last");
        if (behavior == "remove all time steps") simulation->Set("DeleteTimesteps", "all");
        if (behavior == "delete entirely") DeleteComponent(simulation->Id());
        if (firstError.IsEmpty()) firstError = _execStatus;
    }
    _execStatus = firstError;
}

void SW_Simulations::ForwardToActive(const char* command)
{
    for (SW_Simulation* simulation : Simulations()) {
        if (simulation->Get("Active") == "0") continue;
        simulation->Set(command, "");
        return;
    }
}

// ----------------------------------------------------------------------------------------------------------------
// Batches
// ----------------------------------------------------------------------------------------------------------------

bool SW_Simulations::WriteBatch(const AK_String& path, const AK_List<SW_Simulation*>& active)
{
    std::ostringstream commands;
    for (SW_Simulation* simulation : active) {
        simulation->RunInBackground(0, &commands);
        if (!_execStatus.IsEmpty()) return false;
        if (simulation->Get("InteractionTypeWithFluidAbove") == "particles suspension")
            commands << "sleep " << std::max(0, _pauseTime) << "\n";
    }
    const bool written = AK_WriteStream(path, [&](std::ostream& batch) { batch << commands.str(); });
    if (!written) _execStatus = AK_String("cannot open batch file ") + path;
    return written;
}

void SW_Simulations::StartActive(const AK_String& text)
{
    const AK_String dir = Parent() ? Parent()->ProjectDir() : ProjectDir();
    if (dir.IsEmpty() || !AK_System::FileExists(dir)) {
        AK_MSG("INFO: please save project first!");
        _execStatus = "project must be saved first";
        return;
    }
    AK_List<SW_Simulation*> active(1);
    AK_String notReady;
    for (int i = 0; i < NumComponents(); ++i) {
        if (!(text.KeyValue(AK_String(i, "%d"), '=', ';') == "1")) continue;
        auto* simulation = static_cast<SW_Simulation*>(ComponentAt(i));
        active.Append(simulation);
        if (!(simulation->RunVis() == "w")) notReady = notReady + simulation->Id() + "\n";
    }
    if (!notReady.IsEmpty()) {
        _execStatus =
            AK_String("start not possible because the following simulations are not ready to run:\n") + notReady;
        return;
    }
    const AK_String batch = dir + "/batch.bat";
    if (active.Size() == 0 || !WriteBatch(batch, active)) return;
    // One after the other, so the shell that runs the whole file is what goes to the background.
    if (AK_System::Command("sh", AK_System::ShellQuoted(batch).c_str(), 1, 0) != 0)
        _execStatus = "starting batch command failed";
}

void SW_Simulations::WriteStartMacroAndBat(const AK_String& path)
{
    for (const char* part : {"Simulations", "Project"}) {
        if (std::strstr(path.c_str(), part)) continue;
        _execStatus = AK_String("invalid simulation path '") + path + "' does not contain '" + part + "'";
        return;
    }
    auto* simulation = dynamic_cast<SW_Simulation*>(ObjectById(path));
    if (!simulation) simulation = dynamic_cast<SW_Simulation*>(Root()->ObjectById(path));
    if (!simulation) {
        _execStatus = AK_String("object '") + path + "' not found";
        return;
    }
    if (simulation->ProjectDir().IsEmpty()) {
        _execStatus = "project must be saved first";
        return;
    }
    const AK_String macro = simulation->StartFile("macro");
    const AK_String start = simulation->StartFile("bat");
    if (!simulation->WriteStartMacro("Run")) {
        _execStatus = AK_String("cannot create start macro file '") + macro + "'";
        return;
    }
    // The names of the program and of the project may count from the directory that the program runs in.
    const bool written = AK_WriteStream(start, [&](std::ostream& file) {
        file << "cd " << AK_System::ShellQuoted(AK_System::CurrentWorkingDirectory()) << " || exit\n"
             << simulation->StartCommandLine(">") << "\n";
    });
    if (!written) _execStatus = AK_String("cannot create start bat file '") + start + "'";
}

// ----------------------------------------------------------------------------------------------------------------
// The powder part
// ----------------------------------------------------------------------------------------------------------------

std::span<const AK_Row> SW_PsaMeshes::Rows()
{
    using S = SW_PsaMeshes;
    static constexpr auto nothing = [](S&, const AK_String&) {};
    static constexpr Row rows[] = {
        {"CreationVisibility", shown<[](const S&) { return "-"; }>},
        {"Create", command<nothing>},
        {"CreateRastered", command<nothing>},
        {"UpdateCellNumbers", command<nothing>},
        {"Clone", command<nothing>},
    };
    return rows;
}

SW_PsaMeshes::SW_PsaMeshes(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}
