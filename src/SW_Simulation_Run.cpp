// Run control: start, loop of steps, progress, end.
//
// Two small files in the simulation's directory are all that another process sees of a run, and ".simulation_status" is
// also its only way to end it: the loop looks for the word "interrupted" before each step. They are replaced as a
// whole, so that a reader never meets half a line.
//
//   .simulation_status   started (by RunInBackground), running, finished, interrupted
//   .simulation_info     at time 35.4 s, run time 0:0:12, estimated remaining run time 0:0:22, CPU time 0:0:12
//
// Behind "started", "running" and the "interrupted" of a run that still has to see it stands the process, by its id and
// the time of its start. So a run whose process was killed is known for what it is: interrupted. A word without a
// process, as older programs wrote it, is believed.

#include "SW_Simulation_Release.h"

#include "AK_Basic_NewFile.h"
#include "SW_SourceLine.h"

#include <chrono>
#include <climits>
#include <cmath>
#include <cstdio>
#include <ctime>

// ----------------------------------------------------------------------------------------------------------------
// Status files
// ----------------------------------------------------------------------------------------------------------------

AK_String SW_Simulation::StatusFile(const char* name) const
{
    AK_String path = ProjectDir();
    path.AppendName(name, '/');
    return path;
}

// A directory that is gone is no reason to end a run, and the next file of results tells of it.
static void ReplaceLine(const AK_String& path, const AK_String& line)
{
    AK_WriteFile(path, [&](std::FILE* file) { std::fprintf(file, "%s\n", line.c_str()); });
}

static AK_String FirstLine(const AK_String& path)
{
    constexpr int longestLine = 1024;
    AK_TextReader reader(path);
    AK_String line;
    reader.ReadLine(line, longestLine);
    line.RemoveLineEnd();
    return line;
}

namespace {

/// The status file as it stands: a word, and the process that wrote it.
struct StatusLine {
    AK_String word = "unknown";
    AK_String process;   // "" for none

    explicit StatusLine(const AK_String& line)
    {
        char text[64];
        int length = 0;
        if (std::sscanf(line.c_str(), "%63s %n", text, &length) != 1) return;
        word = text;
        process = line.c_str() + length;
    }
    bool IsUnderWay() const { return word == "started" || word == "running"; }
    bool ProcessIsGone() const { return !process.IsEmpty() && !AK_System::ProcessLives(process); }
};

}   // namespace

AK_String SW_Simulation::Status() const
{
    const StatusLine line(FirstLine(StatusFile(".simulation_status")));
    return line.IsUnderWay() && line.ProcessIsGone() ? AK_String("interrupted") : line.word;
}

bool SW_Simulation::AnotherProcessRuns() const
{
    const StatusLine line(FirstLine(StatusFile(".simulation_status")));
    return AK_System::ProcessLives(line.process) && !AK_System::ProcessIsOurs(line.process);
}

AK_String SW_Simulation::StatusInfo() const { return FirstLine(StatusFile(".simulation_info")); }
void SW_Simulation::SetStatusInfo(const AK_String& line) const { ReplaceLine(StatusFile(".simulation_info"), line); }

void SW_Simulation::SetStatus(const char* word) const
{
    AK_String line = word;
    if (StatusLine(line).IsUnderWay()) line = line + " " + AK_System::ProcessMark();
    ReplaceLine(StatusFile(".simulation_status"), line);
}

void SW_Simulation::Interrupt()
{
    const StatusLine line(FirstLine(StatusFile(".simulation_status")));
    const bool runs = !line.process.IsEmpty() && !line.ProcessIsGone();
    ReplaceLine(StatusFile(".simulation_status"), runs ? AK_String("interrupted ") + line.process : "interrupted");
}

// ----------------------------------------------------------------------------------------------------------------
// What can be started
// ----------------------------------------------------------------------------------------------------------------

bool SW_Simulation::IsCoupled() const { return !(_interactionTypeWithFluidAbove == "none"); }

AK_String SW_Simulation::RunVis() const
{
    const AK_String status = Status();
    if (!_mesh || status == "running" || status == "started") return "r";
    if (!IsCoupled()) return "w";
    return !_psaMesh.IsEmpty() && const_cast<SW_Simulation*>(this)->ObjectById(_psaMesh) ? "w" : "r";
}

AK_String SW_Simulation::ContinueVis() const
{
    if (RunVis() == "r") return "r";
    if (!IsCoupled()) return "w";
    return PsaCurrentRestartFile().IsEmpty() ? "r" : "w";
}

// ----------------------------------------------------------------------------------------------------------------
// Run and Continue
// ----------------------------------------------------------------------------------------------------------------

void SW_Simulation::Run(const AK_String&)
{
    if (ProjectDir().IsEmpty() && !IsCoupled())
        AK_MSG(InLanguage("WARNING: Save project first!", "WARNING: Zuerst Projekt speichern!"));
    Release release;
    if (!MayRun(true,
                InLanguage("INFO: No release areas defined! Simulation will not be started!",
                           "INFO: Keine Anbruchgebiete definiert! Simulation wird nicht gestartet!"),
                release))
        return;
    AK_MSG("running simulation " << Id() << "...");
    if (!ProjectDir().IsEmpty() && ExecTime("LoadFinalize") < ModificationTime()) SaveProject("");
    RunToEnd(&release);
}

bool SW_Simulation::StartsAfresh() const
{
    return _currentTime < _deltaT / 2 || _particles->NumParticles() == 0 || MeshHasChanged();
}

void SW_Simulation::Continue(const AK_String&)
{
    const bool afresh = StartsAfresh();
    Release release;
    if (!MayRun(afresh, nullptr, release)) return;
    int current;
    if (_particles->NumParticles() == 0 && TimeStepInfo(current).Size() > 0)
        AK_MSG("WARNING: simulation " << Id()
                                      << InLanguage(" has time steps, but none is loaded: it starts afresh!",
                                                    " hat Zeitschritte, aber keiner ist geladen: sie beginnt neu!"));
    RunToEnd(afresh ? &release : nullptr);
}

namespace {

/// Wall and processor time since it was made, s.
class Stopwatch {
public:
    double Wall() const { return std::chrono::duration<double>(Clock::now() - _wall).count(); }
    double Cpu() const { return double(std::clock() - _cpu) / CLOCKS_PER_SEC; }

private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point _wall = Clock::now();
    std::clock_t _cpu = std::clock();
};

}   // namespace

static AK_String HoursMinutesSeconds(double seconds)
{
    const long s = seconds > 0 ? long(std::min(seconds, 3600.0 * INT_MAX)) : 0;
    char text[64];
    std::snprintf(text, sizeof text, "%ld:%ld:%ld", s / 3600, s / 60 % 60, s % 60);
    return text;
}

/// What a run is on its way with.
struct SW_Simulation::RunState {
    Stopwatch watch{};
    double t0 = 0;                         // s: where it began
    double end = 0;                        // s: where it ends
    bool stopped = false;                  // by the criterion: one more step follows
    AK_List<unsigned char> wallCells{1};   // see UpdateWallLines
    AK_String trouble{};                   // the first error of the run, told when it is over
};

void SW_Simulation::TellDoubts() const
{
    if (ProjectDir().IsEmpty()) AK_MSG("WARNING: Save project first, otherwise output data cannot be saved!");
    if (!_mesh->IsCartesian() && !_mesh->IsHoneyComb())
        AK_MSG(InLanguage("WARNING: The simulation mesh should be a regular grid!",
                          "WARNING: Das Simulationsnetz sollte ein regelmaessiges Gitter sein!")
               << " " << _mesh->Id() << InLanguage(" is none!", " ist keines!"));
}

void SW_Simulation::RunToEnd(const Release* release)
{
    TellDoubts();
    RunState run;
    PrepareRun(run, release);
    if (std::fabs(std::fmod(_currentTime, _deltaOut)) < _deltaT / 2) ShowAndSave(run);
    // A saved state does not count its own step yet: the loop saves first.
    _peakKineticEnergy = std::max(_peakKineticEnergy, _particles->TotalKineticEnergy());
    SetStatus("running");
    SetStatusInfo(AK_String("at time ") + AK_String(_currentTime, "%.15g") + "s");
    _particles->SizeScratch(int(long(_particles->NumParticles()) * 6 / 5));

    const int outputInterval = int(std::min(_deltaOut / _deltaT + 0.5, double(INT_MAX)));   // steps
    int step = int(_currentTime / _deltaT + 0.5);
    while (_currentTime < run.end - _deltaT / 2) {
        if (Status() == "interrupted") break;
        if (Signal()) {
            run.trouble = _execStatus;
            break;
        }
        SetVariableValue("$endITC", AK_String(run.end, "%.15g"));
        ComputeTimeStep(_currentTime, _deltaT, run.wallCells);
        _currentTime += _deltaT;
        ++step;
        if (!run.stopped) TellProgress(run);
        if (step % outputInterval == 0 || std::fabs(_currentTime - run.end) < _deltaT / 2) ShowAndSave(run);
        _peakKineticEnergy = std::max(_peakKineticEnergy, _particles->TotalKineticEnergy());
        if (!run.stopped && !EvaluateStopCriterion(run)) break;
    }
    FinishRun(run);
}

void SW_Simulation::PrepareRun(RunState& run, const Release* release)
{
    ForgetStateOfChangedMesh();
    _massOffMesh = 0;
    _particlesLost = 0;
    _longStepIsReported = false;
    if (release) {
        StartFrom(*release);
        _peakKineticEnergy = 0;
    }
    run.t0 = _currentTime;
    run.end = _endTime;
    ComputeEarthPressureCoefficients();
    UpdateCellResistances();
    UpdateWallLines(run.wallCells);
    for (int i = _sourceLines->NumComponents() - 1; i >= 0; --i) _sourceLines->Line(i)->ProjectOnto(_mesh);
    _bottomPressure->SetMesh(_mesh);
    RemoveObsoleteTimeStepFiles();
    run.trouble = _execStatus;
}

void SW_Simulation::ShowAndSave(RunState& run)
{
    if (Root()->Get("Offscreen") == "0") Root()->Set("Draw", "");
    _execStatus = "";
    SaveTimeStep("");
    if (run.trouble.IsEmpty()) run.trouble = _execStatus;
}

void SW_Simulation::TellProgress(const RunState& run) const
{
    const double runTime = run.watch.Wall();   // s
    const double remaining = runTime / (_currentTime - run.t0) * (run.end - _currentTime);
    SetStatusInfo(AK_String("at time ") + AK_String(_currentTime, "%g") + " s, run time " +
                  HoursMinutesSeconds(runTime) + ", estimated remaining run time " + HoursMinutesSeconds(remaining) +
                  ", CPU time " + HoursMinutesSeconds(run.watch.Cpu()));
}

// An attribute, often of formula code, that answers with a reason to stop, or with nothing. False if it cannot be
// asked.
bool SW_Simulation::EvaluateStopCriterion(RunState& run)
{
    const AK_String criterion = Get("$stop_crit");
    if (criterion.IsEmpty() || criterion == "none" || criterion == ak_null) return true;
    _execStatus = "";
    const AK_String reason = Get(criterion);
    if (!_execStatus.IsEmpty()) return false;
    if (reason.IsEmpty() || reason == ak_null) return true;
    AK_MSG("simulation " << Id() << " STOPPED:\n" << reason);
    SetStatusInfo(AK_String("stopped at ") + AK_String(_currentTime, "%g") + "s due to stop-criterion:" + reason);
    run.end = _currentTime + _deltaT;
    run.stopped = true;
    return true;
}

void SW_Simulation::FinishRun(const RunState& run)
{
    _particles->FreeScratch();
    _bottomPressure->SetMesh(nullptr);
    AK_Object* const changed[] = {this,
                                  _particles,
                                  _flowDepth,
                                  _velocity,
                                  _dynamicPeakPressure,
                                  _bottomPressure.get(),
                                  _peakForcePerWidth,
                                  _peakTorquePerWidth,
                                  _peakFlowDepth,
                                  _frontArrivalTime,
                                  _entrainmentMass};
    for (AK_Object* object : changed) object->SetExecTime("touch");
    LabelFields();
    SetVariableValue("$run_time", AK_String(run.watch.Wall(), "%.15g"));   // s
    SetStatus("finished");
    if (_massOffMesh > 0)
        AK_MSG(
            "WARNING: " << _massOffMesh
                        << InLanguage(" kg have left the mesh: the flow goes on beyond the terrain!",
                                      " kg haben das Netz verlassen: die Lawine fliesst ueber das Gelaende hinaus!"));
    if (_particlesLost > 0)
        AK_MSG("WARNING: " << _particlesLost
                           << InLanguage(" particles had a place or speed that is no number and were taken away: look "
                                         "at the friction law and at heights of the terrain!",
                                         " Teilchen hatten Ort oder Geschwindigkeit, die keine Zahl ist, und wurden "
                                         "entfernt: Reibungsgesetz und Hoehen des Gelaendes pruefen!"));
    AK_MSG("simulation " << Id() << " terminated; CPU time " << run.watch.Cpu() << " sec");
    _execStatus = run.trouble;
}
