// Run control: start, loop of steps, progress, end.
//
// Two small files in the simulation's directory are all that another process sees of a run, and ".simulation_status" is
// also its only way to end it: the loop looks for the word "interrupted" before each step. They are replaced as a
// whole, so that a reader never meets half a line.
//
//   .simulation_status   started (by RunInBackground), running, finished, interrupted
//   .simulation_info     at time 35.4 s, run time 0:0:12, estimated remaining run time 0:0:22, CPU time 0:0:12
//
// A run that was killed leaves "running" behind: setting `Interrupt` tells that it is none any more.

#include "SW_Simulation.h"

#include "SW_InitialCondition.h"
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
    const AK_String temporary = AK_System::TemporaryName(path);
    std::FILE* file = std::fopen(temporary.c_str(), "w");
    if (!file) return;
    std::fprintf(file, "%s\n", line.c_str());
    const bool written = !std::ferror(file);
    if (std::fclose(file) == 0 && written) AK_System::RenameFile(temporary, path);
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

AK_String SW_Simulation::Status() const
{
    char word[64];
    return std::sscanf(FirstLine(StatusFile(".simulation_status")).c_str(), "%63s", word) == 1 ? word : "unknown";
}

AK_String SW_Simulation::StatusInfo() const { return FirstLine(StatusFile(".simulation_info")); }
void SW_Simulation::SetStatus(const char* word) const { ReplaceLine(StatusFile(".simulation_status"), word); }
void SW_Simulation::SetStatusInfo(const AK_String& line) const { ReplaceLine(StatusFile(".simulation_info"), line); }
void SW_Simulation::Interrupt() { SetStatus("interrupted"); }

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

bool SW_Simulation::MayRelease(const char* english, const char* german) const
{
    if (HasRelease()) return true;
    AK_MSG(InLanguage(english, german));
    return false;
}

namespace {

/// A parameter with which there is no run, and why.
struct Refusal {
    bool holds;
    const char* attribute;
    const char* english;
    const char* german;
};

}   // namespace

bool SW_Simulation::ParametersAllowRun() const
{
    const double farthest = std::max(std::fabs(_endTime), std::fabs(_currentTime));   // s
    int numThreads = 0;
    AK_FromText(numThreads, VariableValue("$n_threads"));
    const Refusal refusals[] = {
        {!(_deltaT > 0), "DeltaT", "must be above 0", "muss groesser als 0 sein"},
        {!std::isfinite(_endTime), "EndTime", "must be a number", "muss eine Zahl sein"},
        {farthest + _deltaT == farthest, "DeltaT", "is too small to change the time", "ist zu klein fuer die Zeit"},
        {farthest / _deltaT >= INT_MAX / 2, "DeltaT", "makes too many steps", "ergibt zu viele Schritte"},
        {!(_deltaOut >= _deltaT / 2), "DeltaOut", "must be at least half of DeltaT",
         "muss mindestens die Haelfte von DeltaT sein"},
        {numThreads < 0 || numThreads > 256, "$n_threads", "must be from 0 to 256", "muss von 0 bis 256 sein"},
        {_secondaryReleaseAreas->NumComponents() > 255, "SecondaryReleaseAreas", "must be 255 at most",
         "duerfen hoechstens 255 sein"},
    };
    for (const Refusal& refusal : refusals) {
        if (!refusal.holds) continue;
        AK_MSG("WARNING: simulation " << Id() << InLanguage(" is not started: ", " wird nicht gestartet: ")
                                      << refusal.attribute << " " << InLanguage(refusal.english, refusal.german));
        return false;
    }
    return true;
}

// Sources count their particles in units of the mass per particle.
bool SW_Simulation::SourcesHaveParticleMass() const
{
    const bool hasSource = _sourceLines->NumComponents() > 0 || PointSourceStrength() > 0;
    if (!hasSource || _massPerParticle > 0) return true;
    AK_MSG("WARNING: simulation " << Id() << InLanguage(" is not started: ", " wird nicht gestartet: ")
                                  << "MassPerParticle "
                                  << InLanguage("must be above 0 where there is a source",
                                                "muss groesser als 0 sein, wo es eine Quelle gibt"));
    return false;
}

bool SW_Simulation::HasPlaceToRun() const
{
    if (!_mesh || _mesh->NumCells() == 0) {
        AK_MSG("INFO: simulation " << Id() << " has no valid mesh assigned!");
        return false;
    }
    if (ProjectDir().IsEmpty()) {
        if (IsCoupled()) {
            AK_MSG("WARNING: Save project first!");
            return false;
        }
        AK_MSG("WARNING: Save project first, otherwise output data cannot be saved!");
    }
    if (!_mesh->IsCartesian() && !_mesh->IsHoneyComb())
        AK_MSG(InLanguage("WARNING: The simulation mesh should be a regular grid!",
                          "WARNING: Das Simulationsnetz sollte ein regelmaessiges Gitter sein!")
               << " " << _mesh->Id() << InLanguage(" is none!", " ist keines!"));
    return true;
}

// ----------------------------------------------------------------------------------------------------------------
// Run and Continue
// ----------------------------------------------------------------------------------------------------------------

void SW_Simulation::Run(const AK_String&)
{
    if (ProjectDir().IsEmpty()) {
        AK_MSG(InLanguage("WARNING: Save project first!", "WARNING: Zuerst Projekt speichern!"));
        if (IsCoupled()) return;
    }
    if (!MayRelease("INFO: No release areas defined! Simulation will not be started!",
                    "INFO: Keine Anbruchgebiete definiert! Simulation wird nicht gestartet!"))
        return;
    AK_MSG("running simulation " << Id() << "...");
    if (!ProjectDir().IsEmpty() && ExecTime("LoadFinalize") < ModificationTime()) SaveProject("");
    _currentTime = 0;
    RunToEnd();
}

void SW_Simulation::Continue(const AK_String&)
{
    int current;
    if (_particles->NumParticles() == 0 && TimeStepInfo(current).Size() > 0)
        AK_MSG("WARNING: simulation " << Id()
                                      << InLanguage(" has time steps, but none is loaded: it starts afresh!",
                                                    " hat Zeitschritte, aber keiner ist geladen: sie beginnt neu!"));
    RunToEnd();
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

void SW_Simulation::RunToEnd()
{
    ForgetStateOfChangedMesh();
    RunState run;
    run.t0 = _currentTime;
    run.end = _endTime;
    if (!HasPlaceToRun() || !ParametersAllowRun() || !HasFrictionLaw() || !PrepareRun(run)) {
        if (Status() == "started") SetStatus("finished");   // a background run that ends before it has begun
        return;
    }
    if (std::fabs(std::fmod(_currentTime, _deltaOut)) < _deltaT / 2) ShowAndSave(run);
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

bool SW_Simulation::PrepareRun(RunState& run)
{
    _massOffMesh = 0;
    if (run.t0 < _deltaT / 2 || _particles->NumParticles() == 0) {
        if (!Initialize()) return false;
        run.t0 = _currentTime;
        _peakKineticEnergy = 0;
        // The mass per particle is now that of the particles: a run that goes on in another process splits by it.
        if (!ProjectDir().IsEmpty()) SaveAttributes(ProjectDir() + "/" + Type() + ".atr");
        run.trouble = _execStatus;
    }
    if (!SourcesHaveParticleMass()) return false;
    ComputeEarthPressureCoefficients();
    UpdateCellResistances();
    UpdateWallLines(run.wallCells);
    for (int i = _sourceLines->NumComponents() - 1; i >= 0; --i) _sourceLines->Line(i)->ProjectOnto(_mesh);
    _bottomPressure->SetMesh(_mesh);
    RemoveObsoleteTimeStepFiles();
    return true;
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
    AK_MSG("simulation " << Id() << " terminated; CPU time " << run.watch.Cpu() << " sec");
    _execStatus = run.trouble;
}
