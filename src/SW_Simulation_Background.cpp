// Runs in the background: the program started again with a macro that it writes for itself.
//
//   <directory>/start.macro   makes the simulation in an otherwise empty tree, loads it, runs it
//   <directory>/start.log     what that process says
//
// The new process finds mesh and scenario on disc by the paths that the simulation's attributes name, so a project has
// to be saved before.

#include "SW_Simulation_Release.h"

#include "AK_Basic_NewFile.h"

AK_String SW_Simulation::StartFile(const char* extension) const
{
    AK_String name = ProjectDir() + "/start";
    name.AppendExtension(extension);
    return name;
}

// The topmost object that has a directory, from which all others below it follow: usually the root.
template <class Object>
static Object* TopOfProject(Object* object)
{
    while (object->Parent() && !object->Parent()->ProjectDir().IsEmpty()) object = object->Parent();
    return object;
}

// The path from the root, "" for the root itself.
static AK_String IdFromRoot(const AK_Object& object) { return object.IdAbs(object.Root()); }

bool SW_Simulation::WriteStartMacro(const char* command) const
{
    const AK_String container = IdFromRoot(*Parent());
    const AK_String id = IdFromRoot(*this);
    const AK_Object& top = *TopOfProject(static_cast<const AK_Object*>(this));
    return AK_WriteStream(StartFile("macro"), [&](std::ostream& macro) {
        for (const AK_String& line :
             {CommandString(IdFromRoot(top), "ProjectDir", top.ProjectDir()),
              CommandString(container, "CreateSimulation", Id()), CommandString(id, "DeactivateLoadingPsaResults", ""),
              CommandString(id, "LoadProject", ""), CommandString(id, command, "")})
            macro << line << "\n";
    });
}

AK_String SW_Simulation::StartCommandLine(const char* redirect) const
{
    using Sys = AK_System;
    return Sys::ShellQuoted(_argv[0]) + " -offscreen " + Sys::ShellQuoted(StartFile("macro")) + " " + redirect + " " +
           Sys::ShellQuoted(StartFile("log"));
}

void SW_Simulation::RunInBackground(int cont, std::ostream* out)
{
    const char* noRelease = InLanguage("INFO: no release areas defined! Simulation will not be started!",
                                       "INFO: keine Anbruchgebiete definiert! Simulation wird nicht gestartet!");
    if (!HasRelease()) {
        Refuse(noRelease);
        return;
    }
    AK_ASSERT(RunVis() == "w");
    if (ProjectDir().IsEmpty()) {
        Refuse(InLanguage("WARNING: Save project first!", "WARNING: Zuerst Projekt speichern!"));
        return;
    }
    Release release;
    if (!MayRun(!cont || StartsAfresh(), noRelease, release)) return;
    AK_Object* const top = TopOfProject(static_cast<AK_Object*>(this));
    if (!(Get("$autosave") == "0")) {
        top->SaveProject("");
        if (!_execStatus.IsEmpty()) return;
    }
    if (!WriteStartMacro(cont ? "Continue" : "Run")) {
        _execStatus = AK_String("cannot create start macro file ") + StartFile("macro");
        return;
    }
    const AK_String command = StartCommandLine(cont ? ">>" : ">");
    if (out)
        *out << command << "\n";
    else
        StartCommand(command);
}

// A shell that enters itself as the process of the run and then becomes the program: the state "started" is known to
// be over when the program ends before it has said "running".
AK_String SW_Simulation::MarkedCommand(const AK_String& command) const
{
    const AK_String status = AK_System::ShellQuoted(StatusFile(".simulation_status"));
    const AK_String temporary = AK_System::ShellQuoted(StatusFile(".simulation_status.start"));
    return AK_String("sh -c ") +
           AK_System::ShellQuoted(AK_String("echo started $$ $(cut -d ' ' -f 22 /proc/$$/stat) > ") + temporary +
                                  " && mv " + temporary + " " + status + "; exec " + command);
}

void SW_Simulation::StartCommand(const AK_String& command)
{
    const AK_String former = Status();
    AK_System::_tmpBatFileName = StartFile("bat");
    AK_MSG("starting " << command << " in background...");
    SetStatus("started");   // before the process starts, which soon says "running"
    SetStatusInfo("started");
    const int failed = AK_System::Command(MarkedCommand(command).c_str(), "", 1, 0);
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

void SW_Simulation::ShowShallowWaterLogFile() { AK_MSG("SHOW_FILE:" << StartFile("log")); }
