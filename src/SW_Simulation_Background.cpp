// Runs in the background: the program started again with a macro that it writes for itself.
//
//   <directory>/start.macro   makes the simulation in an otherwise empty tree, loads it, runs it
//   <directory>/start.log     what that process says
//
// The new process finds mesh and scenario on disc by the paths that the simulation's attributes name, so a project has
// to be saved before.

#include "SW_Simulation.h"

static AK_String NameInDirectory(const AK_Object& simulation, const char* extension)
{
    AK_String name = simulation.ProjectDir() + "/start";
    name.AppendExtension(extension);
    return name;
}

// The topmost object that has a directory, from which all others below it follow: usually the root.
static AK_Object* TopOfProject(AK_Object* object)
{
    while (object->Parent() && !object->Parent()->ProjectDir().IsEmpty()) object = object->Parent();
    return object;
}

// The path from the root, "" for the root itself.
static AK_String IdFromRoot(const AK_Object& object) { return object.IdAbs(object.Root()); }

static bool WriteStartMacro(const AK_String& name, AK_Object& simulation, const AK_Object& top, bool goOn)
{
    const AK_String container = IdFromRoot(*simulation.Parent());
    const AK_String id = IdFromRoot(simulation);
    std::ofstream macro(name.c_str());
    for (const AK_String& line :
         {AK_Object::CommandString(IdFromRoot(top), "ProjectDir", top.ProjectDir()),
          AK_Object::CommandString(container, "CreateSimulation", simulation.Id()),
          AK_Object::CommandString(id, "DeactivateLoadingPsaResults", ""),
          AK_Object::CommandString(id, "LoadProject", ""), AK_Object::CommandString(id, goOn ? "Continue" : "Run", "")})
        macro << line << "\n";
    macro.close();
    return bool(macro);
}

void SW_Simulation::RunInBackground(int cont, std::ofstream* out)
{
    if (!MayRelease("INFO: no release areas defined! Simulation will not be started!",
                    "INFO: keine Anbruchgebiete definiert! Simulation wird nicht gestartet!"))
        return;
    AK_ASSERT(RunVis() == "w");
    if (ProjectDir().IsEmpty()) {
        AK_MSG("WARNING: Save project first!");
        return;
    }
    AK_Object* const top = TopOfProject(this);
    if (!(Get("$autosave") == "0")) {
        top->SaveProject("");
        if (!_execStatus.IsEmpty()) return;
    }
    const AK_String macro = NameInDirectory(*this, "macro");
    if (!WriteStartMacro(macro, *this, *top, cont != 0)) {
        _execStatus = AK_String("cannot create start macro file ") + macro;
        return;
    }
    const AK_String command = AK_String("\"") + _argv[0] + "\" -offscreen \"" + macro + "\" " + (cont ? ">>" : ">") +
                              " \"" + NameInDirectory(*this, "log") + "\"";
    if (out)
        *out << command << "\n";
    else
        StartCommand(command);
}

void SW_Simulation::StartCommand(const AK_String& command)
{
    const AK_String former = Status();
    AK_System::_tmpBatFileName = NameInDirectory(*this, "bat");
    AK_MSG("starting " << command << " in background...");
    SetStatus("started");   // before the process starts, which soon says "running"
    SetStatusInfo("started");
    const int failed = AK_System::Command(command.c_str(), "", 1, 0);
    AK_System::_tmpBatFileName = "";
    if (failed) {
        SetStatus(former.c_str());
        _execStatus = AK_String("cannot start ") + command;
        return;
    }
    AK_MSG("started " << command);
}

void SW_Simulation::RunInBackground(const AK_String&) { RunInBackground(0, nullptr); }
void SW_Simulation::ContinueInBackground(const AK_String&) { RunInBackground(1, nullptr); }

void SW_Simulation::ShowShallowWaterLogFile() { AK_MSG("SHOW_FILE:" << NameInDirectory(*this, "log")); }
