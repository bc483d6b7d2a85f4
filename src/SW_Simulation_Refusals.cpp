// Why a run is not started. All of it is found here, before anything of the simulation changes: its state, its time and
// its attributes are still those of before when the reason is told. The reason is left in the status too, so that a
// macro stops instead of going on with results of an earlier run.

#include "SW_Simulation_Release.h"

#include "SW_ResistanceArea.h"
#include "SW_SourceLine.h"

#include <climits>
#include <cmath>
#include <cstring>

namespace {

/// Something that holds or not, and what is to be said where it does.
struct Reason {
    bool holds;
    const char* attribute;
    const char* english;
    const char* german;
};

}   // namespace

static AK_String NotStarted(const AK_String& id)
{
    return AK_String("WARNING: simulation ") + id + InLanguage(" is not started: ", " wird nicht gestartet: ");
}

// The first reason that holds, as a sentence behind `start`; "" if none does.
template <int n>
static AK_String FirstOf(const Reason (&reasons)[n], const AK_String& start)
{
    for (const Reason& reason : reasons)
        if (reason.holds) return start + reason.attribute + " " + InLanguage(reason.english, reason.german);
    return "";
}

bool SW_Simulation::Refuse(const AK_String& sentence) const
{
    AK_MSG(sentence);
    const char* text = sentence.c_str();
    for (const char* prefix : {"WARNING: ", "INFO: "})
        if (sentence.StartsWith(prefix)) text += std::strlen(prefix);
    _execStatus = text;
    return false;
}

// What is the same for every run.
AK_String SW_Simulation::ReasonAgainstParameters() const
{
    const double farthest = std::max(std::fabs(_endTime), std::fabs(_currentTime));   // s
    int numThreads = 0;
    AK_FromText(numThreads, VariableValue("$n_threads"));
    const Reason reasons[] = {
        {!(_density > 0), "Density", "must be above 0", "muss groesser als 0 sein"},
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
    return FirstOf(reasons, NotStarted(_id));
}

AK_String SW_Simulation::ReasonAgainstStart(const AK_String& noRelease) const
{
    if (IsCoupled() && ProjectDir().IsEmpty())
        return InLanguage("WARNING: Save project first!", "WARNING: Zuerst Projekt speichern!");
    if (!noRelease.IsEmpty() && !HasRelease()) return noRelease;
    if (!_mesh || _mesh->NumCells() == 0)
        return AK_String("INFO: simulation ") + _id +
               InLanguage(" has no valid mesh assigned!", " hat kein gueltiges Netz!");
    if (AnotherProcessRuns())
        return NotStarted(_id) + InLanguage("another process runs it", "ein anderer Prozess rechnet sie");
    const AK_String parameters = ReasonAgainstParameters();
    return parameters.IsEmpty() ? ReasonAgainstFriction(NotStarted(_id)) : parameters;
}

// Sources count their particles in units of the mass per particle.
AK_String SW_Simulation::ReasonAgainstSources(double massPerParticle) const
{
    const bool hasSource = _sourceLines->NumComponents() > 0 || PointSourceStrength() > 0;
    const Reason reasons[] = {{hasSource && !(massPerParticle > 0), "MassPerParticle",
                               "must be above 0 where there is a source",
                               "muss groesser als 0 sein, wo es eine Quelle gibt"}};
    return FirstOf(reasons, NotStarted(_id));
}

AK_String SW_Simulation::ReasonAgainstRelease(Release& release)
{
    FindRelease(release);
    const bool hasSource = _sourceLines->NumComponents() > 0 || PointSourceStrength() > 0;
    if (_density > 0 && !hasSource && release.numFreeCells == 0) {
        TellDepthMesh(release);
        return NotStarted(_id) +
               InLanguage("the release lies off the terrain or in no cell of it: there is nothing that could flow",
                          "der Anbruch liegt neben dem Gelaende oder in keiner seiner Zellen: es gibt nichts, was "
                          "fliessen koennte");
    }
    const bool countIsPossible = release.numParticles < double(INT_MAX) && std::isfinite(release.massPerParticle);
    if (!(_density > 0) || !countIsPossible || (release.mass > 0 && !(release.massPerParticle > 0))) {
        const AK_String number = AK_String(release.mass, "%g") + " kg";
        return NotStarted(_id) + (_density > 0 ? "MassPerParticle" : "Density") +
               InLanguage(" is no use for ", " taugt nicht fuer ") + number +
               InLanguage(" in particles of ", " in Teilchen von ") + AK_String(release.massPerParticle, "%g") + " kg";
    }
    return ReasonAgainstSources(release.massPerParticle);
}

bool SW_Simulation::MayRun(bool afresh, const char* noRelease, Release& release)
{
    AK_String reason = ReasonAgainstStart(noRelease ? noRelease : "");
    if (reason.IsEmpty()) reason = afresh ? ReasonAgainstRelease(release) : ReasonAgainstSources(_massPerParticle);
    if (reason.IsEmpty()) return true;
    if (Status() == "started" && !AnotherProcessRuns()) SetStatus("finished");   // it ends before it has begun
    return Refuse(reason);
}
