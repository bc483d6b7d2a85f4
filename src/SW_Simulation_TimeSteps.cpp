// Time steps on disc: what lies in a simulation's directory after a run.
//
//   <directory>/at_0000105.0000.TimeStep
//
//   "SW_Simulation::TimeStep:v0"     the simulation's record: "SW_Simulation:v1", time (s), peak kinetic energy (J)
//   <tag> <record>                   as often as there are rows in the table of records below
//   "SW_Simulation::TimeStep:end"    older files end here
//   <tag> <record>                   the block of enthalpies
//   "SW_Simulation_Enthalpy::TimeStep:end"
//   "SW_Simulation:MassPerParticle"  a double, kg: by it particles are split and removed; older files lack it
//
// A tag is a string of AK_Stream. A reader takes the records of a block in any order. Flow depth and velocity on the
// mesh are not stored: the particles give them. A step appears under its name only when it is whole.

#include "SW_Simulation.h"

#include "AK_Basic_NewFile.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

static constexpr const char* extension = "TimeStep";
static constexpr const char* startTag = "SW_Simulation::TimeStep:v0";
static constexpr const char* endTag = "SW_Simulation::TimeStep:end";
static constexpr const char* enthalpyEndTag = "SW_Simulation_Enthalpy::TimeStep:end";
static constexpr const char* massTag = "SW_Simulation:MassPerParticle";

// ----------------------------------------------------------------------------------------------------------------
// Names
// ----------------------------------------------------------------------------------------------------------------

AK_String SW_Simulation::TimeStepFileName(double t) { return AK_String(t, "at_%012.4f"); }

double SW_Simulation::TimeStepFromName(const AK_String& name)
{
    double t = 0;
    return std::sscanf(name.c_str(), "at_%lf", &t) == 1 ? t : -1.0;
}

static AK_String TimeStepPath(const AK_String& directory, const AK_String& name)
{
    return directory + "/" + name + "." + extension;
}

// ----------------------------------------------------------------------------------------------------------------
// Records
// ----------------------------------------------------------------------------------------------------------------

int SW_Simulation::SaveDataTo(AK_Stream& stream) const
{
    stream.Write(AK_String("SW_Simulation:v1"));
    stream.Write(_currentTime);
    stream.Write(_peakKineticEnergy);
    return stream.Failed() ? IoError(AK_HERE) : 0;
}

int SW_Simulation::LoadDataFrom(AK_Stream& stream)
{
    AK_String header;
    double time = 0, peak = 0;
    stream.Read(header);
    const bool hasPeak = header == "SW_Simulation:v1";
    if (!hasPeak && !(header == "SW_Simulation:v0")) return IoError(AK_HERE);
    stream.Read(time);
    if (hasPeak) stream.Read(peak);
    if (stream.Failed() || !std::isfinite(time) || !std::isfinite(peak)) return IoError(AK_HERE);
    _currentTime = time;
    if (hasPeak) _peakKineticEnergy = peak;
    return 0;
}

/// A part of a time step that has a tag of its own. The rows stand in the order in which they are written.
struct SW_Simulation::TimeStepRecord {
    const char* tag;
    int (*save)(const SW_Simulation&, AK_Stream&);
    int (*load)(SW_Simulation&, AK_Stream&);
    bool ofEnthalpyBlock = false;
};

// Positions are a mesh whose record is left out of the project: it is written with the time steps only.
template <class Action>
static int WithRecord(SW_Mesh& positions, const Action& action)
{
    const int skip = positions._skipData;
    positions._skipData = 0;
    const int failed = action();
    positions._skipData = skip;
    return failed;
}

// clang-format off
std::span<const SW_Simulation::TimeStepRecord> SW_Simulation::TimeStepRecords()
{
    using S = SW_Simulation;
    // A row for what `part` finds in a simulation.
    constexpr auto record = [](const char* tag, auto part, bool ofEnthalpyBlock = false) {
        return TimeStepRecord{tag,
            [](const S& s, AK_Stream& stream) { return decltype(part)()(s)->SaveDataTo(stream); },
            [](S& s, AK_Stream& stream) { return decltype(part)()(s)->LoadDataFrom(stream); }, ofEnthalpyBlock};
    };
    static constexpr TimeStepRecord rows[] = {
        record("particles",               [](const S& s) { return s._particles; }),
        {"particles:Position",
            [](const S& s, AK_Stream& stream) {
                SW_Mesh& positions = s._particles->Position();
                return WithRecord(positions, [&] { return positions.SaveData(stream); });
            },
            [](S& s, AK_Stream& stream) {
                SW_Mesh& positions = s._particles->Position();
                return WithRecord(positions, [&] { return positions.LoadData(stream); });
            }},
        record("particles:Velocity",      [](const S& s) { return &s._particles->Velocity(); }),
        record("particles:Mass",          [](const S& s) { return &s._particles->Mass(); }),
        record("peakDepth",               [](const S& s) { return s._peakFlowDepth; }),
        record("dynPeakPressure",         [](const S& s) { return s._dynamicPeakPressure; }),
        record("peakPressPerWidth",       [](const S& s) { return s._peakForcePerWidth; }),
        record("peakTorquePerWidth",      [](const S& s) { return s._peakTorquePerWidth; }),
        record("frontArrivalTime",        [](const S& s) { return s._frontArrivalTime; }),
        record("entrainmentMass",         [](const S& s) { return s._entrainmentMass; }),
        // Read, never written: a working field.
        {"bottomPressure", nullptr,
            [](S& s, AK_Stream& stream) { return s._bottomPressure->LoadDataFrom(stream); }},
        record("particles:TotalEnthalpy", [](const S& s) { return &s._particles->TotalEnthalpy(); }, true),
        record("entrainmentEnthalpy",     [](const S& s) { return s._entrainmentEnth; }, true),
    };
    return rows;
}
// clang-format on

// ----------------------------------------------------------------------------------------------------------------
// Saving
// ----------------------------------------------------------------------------------------------------------------

bool SW_Simulation::WriteTimeStep(AK_Stream& stream) const
{
    const auto writeBlock = [&](bool enthalpies, const char* end) {
        for (const TimeStepRecord& row : TimeStepRecords()) {
            if (!row.save || row.ofEnthalpyBlock != enthalpies) continue;
            stream.Write(AK_String(row.tag));
            if (row.save(*this, stream) != 0) return false;
        }
        stream.Write(AK_String(end));
        return !stream.Failed();
    };
    stream.Write(AK_String(startTag));
    if (SaveDataTo(stream) != 0 || !writeBlock(false, endTag) || !writeBlock(true, enthalpyEndTag)) return false;
    stream.Write(AK_String(massTag));
    stream.Write(_massPerParticle);
    return !stream.Failed();
}

void SW_Simulation::SaveTimeStep(const AK_String&)
{
    if (ProjectDir().IsEmpty()) return;
    const AK_String name = TimeStepFileName(_currentTime);
    const AK_String path = TimeStepPath(ProjectDir(), name);
    AK_MSG("saving time step data to " << path << "...");
    bool opened = false;
    const bool written = AK_WriteRecord(path, [&](AK_Stream& stream) {
        opened = true;
        return WriteTimeStep(stream);
    });
    if (!written) {
        _execStatus = opened ? IdAbs() + " cannot save timestep data" : IdAbs() + " cannot open " + path;
        return;
    }
    _currentTimeStep = name;   // what a project that is saved now comes back with
    AK_MSG("saving time step data to " << path << " done.");
}

// ----------------------------------------------------------------------------------------------------------------
// Loading
// ----------------------------------------------------------------------------------------------------------------

// Reads the records of one block up to its end tag.
bool SW_Simulation::ReadTimeStepBlock(AK_Stream& stream, bool enthalpies, const char* end)
{
    for (;;) {
        AK_String tag;
        stream.Read(tag);
        if (stream.Failed()) return false;
        if (tag == end) return true;
        const TimeStepRecord* known = nullptr;
        for (const TimeStepRecord& row : TimeStepRecords())
            if (tag == row.tag && row.ofEnthalpyBlock == enthalpies) known = &row;
        if (!known || known->load(*this, stream) != 0) return false;
    }
}

// The mass per particle of the run that the state belongs to; 0 where an older file does not tell it.
static bool ReadMassPerParticle(AK_Stream& stream, double& mass)
{
    mass = 0;
    if (stream.Remaining() == 0) return true;
    AK_String tag;
    stream.Read(tag);
    if (stream.Failed() || !(tag == massTag)) return false;
    stream.Read(mass);
    return !stream.Failed() && std::isfinite(mass) && mass >= 0;
}

// The attribute may be that of another run: this one's if particles of about that mass are there, else their mean.
void SW_Simulation::TakeMassPerParticleOfState(double recorded)
{
    static constexpr double mostOfMean = 2;                        // what is heavier is split
    if (_massPerParticleDeterminationMethod == "direct") return;   // the user gives it
    if (recorded > 0) {
        _massPerParticle = recorded;
        return;
    }
    if (_particles->NumParticles() == 0) return;
    const double mean = _particles->TotalMass() / _particles->NumParticles();   // kg
    if (!(_massPerParticle > mean / mostOfMean && _massPerParticle < mean * mostOfMean)) _massPerParticle = mean;
}

static bool IsFinite(float value) { return std::isfinite(value); }
static bool IsFinite(const AK_Vec& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

template <class Value>
static bool AllFinite(const AK_List<Value>& values)
{
    for (const Value& value : values)
        if (!IsFinite(value)) return false;
    return true;
}

// What the run relies on and a file may break: as many values as places, and particles whose values are numbers. Fields
// may hold anything: a peak can be infinite. Without a mesh they are held against nothing, and do not survive either.
bool SW_Simulation::TimeStepIsSound() const
{
    const int n = _particles->Position().NumVertices();
    const int numTags = _particles->tag.Size();
    if (_particles->Position().NumCells() != 0 || (numTags != 0 && numTags != n)) return false;
    if (_particles->Mass()._values.Size() != n || _particles->Velocity()._values.Size() != n) return false;
    if (!AllFinite(_particles->Position()._x) || !AllFinite(_particles->Velocity()._values)) return false;
    if (!AllFinite(_particles->Mass()._values) || !AllFinite(_particles->TotalEnthalpy()._values)) return false;
    for (const SW_ScalarField* field : StoredFields()) {
        const int size = !_mesh                ? field->_values.Size()
                         : field->OnVertices() ? _mesh->NumVertices()
                                               : _mesh->NumCells();
        if (field->_values.Size() != size) return false;
    }
    return true;
}

// A load that failed leaves no mixture of two states: there is none, as before a run.
void SW_Simulation::ForgetState()
{
    _particles->Clear();
    _currentTime = 0;
    _currentTimeStep = "";
    for (SW_ScalarField* field : StoredFields()) {
        field->SetMesh(nullptr);
        field->SetMesh(_mesh);
    }
    LoadFinalizePriv();
}

bool SW_Simulation::ReadTimeStep(const AK_String& name)
{
    const AK_String path = TimeStepPath(ProjectDir(), name);
    AK_Stream stream(path, "rb");
    if (stream._status != 0) {
        AK_MSG("INFO:cannot open " << path);
        return false;
    }
    AK_MSG("loading time step data from " << path);
    AK_String tag;
    stream.Read(tag);
    if (!(tag == startTag)) {
        _execStatus = IdAbs() + " cannot load basic data";
        return false;
    }
    // Older files end behind the first block; what they lack stays as it was.
    double massPerParticle = 0;   // kg
    const bool loaded = LoadDataFrom(stream) == 0 && ReadTimeStepBlock(stream, false, endTag) &&
                        (stream.Remaining() == 0 || ReadTimeStepBlock(stream, true, enthalpyEndTag)) &&
                        ReadMassPerParticle(stream, massPerParticle) && TimeStepIsSound();
    if (!loaded) {
        ForgetState();
        _execStatus = IdAbs() + " cannot load timestep data";
        return false;
    }
    AK_MSG(path << " done.");
    _currentTimeStep = name;
    LoadFinalizePriv();
    TakeMassPerParticleOfState(massPerParticle);
    return true;
}

// A simulation that is loaded comes without its state rather than not at all: scenario and parameters are there, and
// what follows in the project.
void SW_Simulation::LoadTimeStep(const AK_String& name)
{
    if (name.IsEmpty() || ReadTimeStep(name) || !_isBeingLoaded) return;
    AK_MSG("WARNING: simulation " << _id
                                  << InLanguage(" is loaded without its state: time step ",
                                                " wird ohne ihren Stand geladen: Zeitschritt ")
                                  << name
                                  << InLanguage(" cannot be read or is of another mesh",
                                                " ist nicht lesbar oder von einem anderen Netz"));
    _execStatus = "";
}

void SW_Simulation::LoadFinalizePriv()
{
    if (_mesh && _mesh->_vertexNormals.Size() != _mesh->NumVertices()) _mesh->ComputeVertexNormals();
    BindFields();
    _particles->LoadFinalizePriv();
    constexpr float never = 1e30f;   // s: whatever is really reached later overwrites it
    UpdateFields(never);
    LabelFields();
}

// ----------------------------------------------------------------------------------------------------------------
// The steps of a directory
// ----------------------------------------------------------------------------------------------------------------

AK_List<AK_String> SW_Simulation::TimeStepInfo(int& current) const
{
    AK_List<AK_String> names = AK_System::FilesList(ProjectDir(), extension);
    const AK_String loaded = TimeStepFileName(_currentTime);
    current = -1;
    for (int i = 0; i < names.Size(); ++i) {
        names[i].RemoveExtension();
        if (names[i] == loaded) current = i;
    }
    return names;
}

AK_String SW_Simulation::TimeStepsList() const
{
    int current;
    return AK_String(TimeStepInfo(current), ak_sep);
}

// The step `offset` away from the loaded one; "" if there is none.
AK_String SW_Simulation::NeighbourStep(int offset) const
{
    int current;
    const AK_List<AK_String> names = TimeStepInfo(current);
    const int wanted = current + offset;
    return current >= 0 && wanted >= 0 && wanted < names.Size() ? names[wanted] : AK_String();
}

void SW_Simulation::LoadNextTimeStep() { LoadTimeStep(NeighbourStep(1)); }
void SW_Simulation::LoadPrevTimeStep() { LoadTimeStep(NeighbourStep(-1)); }
AK_String SW_Simulation::NextTimeStepVis() const { return NeighbourStep(1).IsEmpty() ? "-" : "w"; }
AK_String SW_Simulation::PrevTimeStepVis() const { return NeighbourStep(-1).IsEmpty() ? "-" : "w"; }

void SW_Simulation::LoadFirstTimeStep()
{
    int current;
    const AK_List<AK_String> names = TimeStepInfo(current);
    if (names.Size() > 0) LoadTimeStep(names[0]);
}

void SW_Simulation::LoadLastTimeStep()
{
    int current;
    const AK_List<AK_String> names = TimeStepInfo(current);
    if (names.Size() > 0) LoadTimeStep(names[names.Size() - 1]);
}

void SW_Simulation::Time(const AK_String& time)
{
    char* end;
    const double t = std::strtod(time.c_str(), &end);   // s
    if (end != time.c_str() && !*end && std::isfinite(t))
        LoadTimeStep(TimeStepFileName(t));
    else
        _execStatus = AK_String("'") + time + InLanguage("' is no time in s", "' ist keine Zeit in s");
}

// ----------------------------------------------------------------------------------------------------------------
// Removing and copying
// ----------------------------------------------------------------------------------------------------------------

// One that stays would be taken for a state of a run that it is not of.
static void RemoveTimeStep(const AK_String& path)
{
    AK_MSG("removing " << path);
    if (AK_System::RemoveFile(path) == 0) return;
    AK_MSG("WARNING: " << path << InLanguage(" cannot be removed", " laesst sich nicht entfernen"));
    AK_Object::_execStatus = AK_String("cannot remove ") + path;
}

void SW_Simulation::DeleteTimesteps(const AK_String& mode)
{
    int current;
    const AK_List<AK_String> names = TimeStepInfo(current);
    const int last = names.Size() - 1;
    if (last < 0) return;
    const bool all = mode == "all";
    if (current != last) {
        LoadTimeStep(names[last]);
        const bool loaded = _currentTimeStep == names[last];
        if (!all && !loaded) return;   // the one to stay cannot be read: the others may be all there is
    }
    for (int i = 0; i <= (all ? last : last - 1); ++i) RemoveTimeStep(TimeStepPath(ProjectDir(), names[i]));
    if (all) _currentTimeStep = "";
}

void SW_Simulation::RemoveObsoleteTimeStepFiles() const
{
    int current;
    for (const AK_String& name : TimeStepInfo(current))
        if (TimeStepFromName(name) > _currentTime + _deltaT / 2) RemoveTimeStep(TimeStepPath(ProjectDir(), name));
}

// A project that goes to another directory takes its time steps along.
bool SW_Simulation::BringTimeStepsFrom(const AK_String& oldDirectory) const
{
    AK_String from = oldDirectory, to = ProjectDir();
    from.CleanupPath();
    to.CleanupPath();
    if (oldDirectory.IsEmpty() || from == to) return true;
    bool copied = false;
    for (const AK_String& file : AK_System::FilesList(from, extension)) {
        const AK_String source = from + "/" + file, target = to + "/" + file;
        AK_MSG("copying " << source << " to " << target << "...");
        if (!AK_CopyWhole(source, target)) return false;
        copied = true;
    }
    if (!copied) return true;
    SetStatus("finished");
    const AK_String log = from + "/start.log";
    return !AK_System::FileExists(log) || AK_CopyWhole(log, to + "/start.log");
}

int SW_Simulation::SaveData(AK_Stream& stream) const
{
    if (AK_Class::SaveData(stream) != 0) return 1;
    if (!BringTimeStepsFrom(_dataDirectory)) return IoError(AK_HERE);
    _dataDirectory = ProjectDir();
    return 0;
}

int SW_Simulation::LoadData(AK_Stream& stream)
{
    _dataDirectory = ProjectDir();
    return AK_Class::LoadData(stream);
}
