// The case of korvo simulate as commands on the tree.

#include "KORVO_Simulate.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

// ----------------------------------------------------------------------------------------------------------------
// Input files
// ----------------------------------------------------------------------------------------------------------------

namespace {

/// A kind of input, the container of the simulation it fills, and the extensions that are read.
struct InputKind {
    const char* option;
    const char* container;   // null for the terrain
    std::vector<std::string> extensions;
};

}   // namespace

static const std::vector<InputKind>& InputKinds()
{
    static const std::vector<InputKind> kinds = {
        {"terrain", nullptr, {"asc", "txt", "e00", "xyz", "nxyz", "tbp"}},
        {"release", "ReleaseAreas", {"dxf", "nxyz", "xyz", "xy", "ano", "rel"}},
        {"forest", "ResistanceAreas", {"dxf", "nxyz", "xyz", "xy", "ano", "res"}},
        {"entrainment", "EntrainmentAreas", {"dxf", "nxyz", "xyz", "xy", "ano", "rel"}},
        {"walls", "WallLines", {"dxf", "nxyz", "xyz", "xy", "ano"}},
        {"sources", "SourceLines", {"dxf", "nxyz", "xyz", "xy", "ano"}},
    };
    return kinds;
}

// Formats of a GIS that need its libraries.
static bool IsOfGis(const std::string& extension)
{
    static constexpr const char* extensions[] = {"tif",  "tiff", "vrt", "img", "gpkg", "shp", "geojson",
                                                 "json", "kml",  "gml", "las", "laz",  "nc"};
    return std::any_of(std::begin(extensions), std::end(extensions), [&](const char* e) { return extension == e; });
}

static std::string LowerExtension(const std::string& path)
{
    AK_String extension = AK_String(path.c_str()).Extension();
    extension.ToLower();
    return extension.c_str();
}

static void CheckExtension(const std::string& path, const InputKind& kind)
{
    const std::string extension = LowerExtension(path);
    if (std::find(kind.extensions.begin(), kind.extensions.end(), extension) != kind.extensions.end()) return;
    std::string known;
    for (const std::string& e : kind.extensions) known += (known.empty() ? "." : ", .") + e;
    if (IsOfGis(extension))
        throw KORVO_Stop{KORVO_FAILED, KORVO_NeedsModule("'" + path + "'", "gis") +
                                           InLanguage("; without it these are read: ", "; ohne es werden gelesen: ") +
                                           known};
    throw KORVO_Stop{KORVO_FAILED,
                     std::string("--") + kind.option + InLanguage(": the format of '", ": das Format von '") + path +
                         InLanguage("' is not known; these are read: ", "' ist nicht bekannt; gelesen werden: ") +
                         known};
}

static void CheckInput(const std::string& path, const InputKind& kind)
{
    const AK_String name = path.c_str();
    const std::string option = std::string("--") + kind.option + ": ";
    if (!AK_System::FileExists(name))
        throw KORVO_Stop{KORVO_FAILED, option + InLanguage("there is no file '", "es gibt keine Datei '") + path + "'"};
    if (AK_System::IsDirectory(name))
        throw KORVO_Stop{KORVO_FAILED,
                         option + InLanguage("this is a directory: '", "das ist ein Verzeichnis: '") + path + "'"};
    if (!AK_TextReader(name).IsOpen())
        throw KORVO_Stop{KORVO_FAILED, option + InLanguage("cannot read '", "kann nicht lesen: '") + path + "'"};
    CheckExtension(path, kind);
}

std::vector<std::string> KORVO_InputFiles(const KORVO_Arguments& arguments)
{
    std::vector<std::string> files;
    for (const InputKind& kind : InputKinds())
        for (const std::string& file : arguments.Values(kind.option)) {
            CheckInput(file, kind);
            files.push_back(file);
        }
    return files;
}

// ----------------------------------------------------------------------------------------------------------------
// Commands
// ----------------------------------------------------------------------------------------------------------------

std::string KORVO_Case::ValueIn(const std::string& directory, const Command& command)
{
    if (!command.isResult) return command.value;
    return command.value.empty() ? directory : directory + "/" + command.value;
}

void KORVO_Case::Do(const Command& command)
{
    if (KORVO_Watched::IsInterrupted()) throw KORVO_Stop{KORVO_INTERRUPTED, ""};
    if (_tree.Set(command.path, command.attribute, ValueIn(_partial, command))) return;
    if (KORVO_Watched::IsInterrupted()) throw KORVO_Stop{KORVO_INTERRUPTED, ""};
    throw KORVO_Stop{KORVO_FAILED, _tree.Reason()};
}

void KORVO_Case::DoAndKeep(const std::string& path, const std::string& attribute, const std::string& value)
{
    _done.push_back({path, attribute, value, false});
    Do(_done.back());
}

void KORVO_Case::Import(const std::string& path, const char* command, const char* option, const std::string& file)
{
    try {
        DoAndKeep(path, command, file);
    } catch (const KORVO_Stop& stop) {
        throw KORVO_Stop{stop.status, std::string("--") + option + " " + file + ": " + stop.reason};
    }
}

void KORVO_Case::Build()
{
    if (_arguments.Value("lang") == "de") DoAndKeep("", "SetLanguage", "german");
    ImportTerrain();
    SetParameters();
    for (const InputKind& kind : InputKinds())
        if (kind.container) ImportAreas(kind.option, kind.container);
    CheckRelease();
    SetExtra();
}

void KORVO_Case::Find()
{
    _simulation = dynamic_cast<SW_Simulation*>(_tree.Root().ObjectById(_path.c_str()));
    if (!_simulation || !_simulation->Mesh())
        throw KORVO_Stop{KORVO_FAILED, InLanguage("the interrupted run cannot be loaded from '",
                                                  "die unterbrochene Rechnung ist nicht ladbar aus '") +
                                           _partial + "'"};
}

// ----------------------------------------------------------------------------------------------------------------
// Terrain
// ----------------------------------------------------------------------------------------------------------------

// A coordinate system in degrees by the text that goes with a raster, or, without one, by the numbers.
static bool IsInDegrees(const SW_Mesh& mesh)
{
    static constexpr double largestCell = 0.1;   // degrees: beyond it there is no slope in a cell any more
    static constexpr float farthest = 360;       // degrees
    const AK_String projection = mesh.Get("Projection");
    if (!projection.IsEmpty() && !(projection == ak_null))
        return projection.StartsWith("GEOG") || projection.StartsWith("Projection    GEOGRAPHIC");
    float lo[3], hi[3];
    if (!mesh.BoundingBox(lo, hi) || !mesh.IsCartesian() || mesh.Grid().dx > largestCell) return false;
    return std::max(std::max(std::fabs(lo[0]), std::fabs(hi[0])), std::max(std::fabs(lo[1]), std::fabs(hi[1]))) <=
           farthest;
}

// The mesh bears the name of the file; a grid of another cell size, and that of terrain which is no raster, is laid
// over it.
void KORVO_Case::ImportTerrain()
{
    static constexpr const char* meshes = "Project/DHMs";
    static constexpr const char* usualCellSize = "5";   // m
    const std::string file = _arguments.Value("terrain");
    DoAndKeep(meshes, "SimulationDefaultCellSize", "0");
    DoAndKeep(meshes, "AutoCreateSimulationMesh", "0");
    Import(meshes, "Import", "terrain", file);
    AK_Object* container = _tree.Root().ObjectById(meshes);
    const auto latest = [&] {
        return container->NumComponents() > 0
                   ? dynamic_cast<SW_Mesh*>(container->ComponentAt(container->NumComponents() - 1))
                   : nullptr;
    };
    const SW_Mesh* mesh = latest();
    if (!mesh || mesh->NumCells() == 0)
        throw KORVO_Stop{KORVO_FAILED,
                         InLanguage("there is no terrain in '", "es ist kein Gelaende in '") + file + "'"};
    if (IsInDegrees(*mesh))
        throw KORVO_Stop{
            KORVO_FAILED,
            "'" + file +
                InLanguage("' is in degrees; the terrain has to be in metres, in a projected coordinate system",
                           "' ist in Grad; das Gelaende muss in Metern sein, in einem projizierten Koordinatensystem")};
    const bool isGiven = _arguments.Has("cell-size");
    const std::string cellSize = isGiven ? _arguments.Value("cell-size") : mesh->IsCartesian() ? "" : usualCellSize;
    if (!cellSize.empty() && !(mesh->IsCartesian() && mesh->Grid().dx == std::strtod(cellSize.c_str(), nullptr))) {
        DoAndKeep(meshes, "SimulationDefaultCellSize", cellSize);
        DoAndKeep(meshes, "CreateSimulationMesh", mesh->Id().c_str());
        mesh = latest();
    }
    DoAndKeep("Project/Simulations", "CreateSimulation", _id);
    DoAndKeep(_path, "Mesh", mesh->Id().c_str());
    Find();
}

// ----------------------------------------------------------------------------------------------------------------
// Parameters
// ----------------------------------------------------------------------------------------------------------------

void KORVO_Case::SetFriction()
{
    const std::string typed = _arguments.Value("friction");
    if (typed.empty()) return;
    const KORVO_Friction friction = KORVO_ParseFriction(typed);
    DoAndKeep(_path, "FrictionType", friction.law);
    for (const auto& [attribute, value] : friction.attributes) DoAndKeep(_path, attribute, value);
    if (friction.parameters.empty()) return;
    AK_String parameters = _simulation->Get("FormulaParameters");
    for (const auto& [name, value] : friction.parameters) {
        if (parameters.KeyValue(name.c_str(), '=', ';').IsEmpty())
            throw KORVO_Stop{KORVO_BAD_USAGE, "--friction: '" + friction.law +
                                                  InLanguage("' has no parameter '", "' hat keinen Parameter '") +
                                                  name +
                                                  InLanguage("'; its parameters are ", "'; seine Parameter sind ") +
                                                  _simulation->Get("FormulaParameters").c_str()};
        parameters.SetKeyValue(name.c_str(), value.c_str(), '=', ';');
    }
    DoAndKeep(_path, "FormulaParameters", parameters.c_str());
    for (const auto& [name, value] : friction.parameters) {   // a file leaves what makes no sense as it was
        const AK_String taken = _simulation->Get("FormulaParameters").KeyValue(name.c_str(), '=', ';');
        const double wanted = std::strtod(value.c_str(), nullptr);
        if (!(std::fabs(std::strtod(taken.c_str(), nullptr) - wanted) <= 1e-5 * std::fabs(wanted)))
            throw KORVO_Stop{KORVO_BAD_USAGE, "--friction: '" + friction.law +
                                                  InLanguage("' does not take '", "' nimmt nicht an: '") + name + "=" +
                                                  value + "'"};
    }
}

std::string KORVO_ValueOrUsual(const KORVO_Arguments& arguments, const std::string& option)
{
    static constexpr const char* usual[][2] = {
        {"particles-per-cell", "20"}, {"time-step", "0.1"}, {"end-time", "300"}, {"output-step", "5"}};
    if (arguments.Has(option.c_str())) return arguments.Value(option.c_str());
    for (const auto& [name, value] : usual)
        if (option == name) return value;
    return std::to_string(std::min(AK_System::NumCpus(), 256));   // of threads, as many as a run can have
}

// All that the result depends on is said, so that a user's own defaults of the class do not change it.
void KORVO_Case::SetParameters()
{
    SetFriction();
    DoAndKeep(_path, "MassPerParticleDeterminationMethod", "particles per cell");
    DoAndKeep(_path, "NumParticlesPerCell", KORVO_ValueOrUsual(_arguments, "particles-per-cell"));
    DoAndKeep(_path, "DeltaT", KORVO_ValueOrUsual(_arguments, "time-step"));
    DoAndKeep(_path, "EndTime", KORVO_ValueOrUsual(_arguments, "end-time"));
    DoAndKeep(_path, "DeltaOut", KORVO_ValueOrUsual(_arguments, "output-step"));
    DoAndKeep(_path, "$n_threads", KORVO_ValueOrUsual(_arguments, "threads"));
    DoAndKeep(_path, "$stop_crit", "stop_at_low_energy");
    if (_arguments.Has("depth")) DoAndKeep(_path + "/ReleaseAreas", "NewDepth", _arguments.Value("depth"));
    if (_arguments.Has("density")) DoAndKeep(_path + "/ReleaseAreas", "NewDensity", _arguments.Value("density"));
}

// "path:attribute=value". A path that begins at the project is that of a macro; any other leads on from the simulation.
std::vector<KORVO_Case::Command> KORVO_Case::Extra() const
{
    std::vector<Command> commands;
    for (const std::string& assignment : _arguments.Values("set")) {
        std::string name, value;
        KORVO_SplitAssignment(assignment, name, value);
        const size_t colon = name.find(':');
        const bool hasPath = colon != std::string::npos && name.compare(colon, 2, "::") != 0;
        const std::string typed = hasPath ? name.substr(0, colon) : "";
        const bool isFull = typed == "Project" || typed.starts_with("Project/");
        const std::string path = isFull ? typed : typed.empty() ? _path : _path + "/" + typed;
        commands.push_back({path, hasPath ? name.substr(colon + 1) : name, value, false});
    }
    return commands;
}

void KORVO_Case::SetExtra()
{
    for (const Command& command : Extra()) try {
            DoAndKeep(command.path, command.attribute, command.value);
        } catch (const KORVO_Stop& stop) {
            throw KORVO_Stop{stop.status, "--set " + command.attribute + ": " + stop.reason};
        }
}

// ----------------------------------------------------------------------------------------------------------------
// Areas and lines
// ----------------------------------------------------------------------------------------------------------------

void KORVO_Case::ImportAreas(const char* option, const char* container)
{
    const std::string path = _path + "/" + container;
    for (const std::string& file : _arguments.Values(option))
        Import(path, LowerExtension(file) == "res" ? "LoadResFile" : "Import", option, file);
}

static bool LiesOn(const SW_Polyline& area, const SW_Mesh& mesh)
{
    float lo[3], hi[3], areaLo[3], areaHi[3];
    if (!mesh.BoundingBox(lo, hi) || !area.BoundingBox(areaLo, areaHi)) return false;
    for (int i : {0, 1})
        if (areaHi[i] < lo[i] || areaLo[i] > hi[i]) return false;
    return true;
}

// A release that a run would refuse, told in the words of a file.
void KORVO_Case::CheckRelease() const
{
    static constexpr double smallestArea = 1e-6;   // m2
    const SW_InitialConditions& areas = _simulation->ReleaseAreas();
    for (int i = 0; i < areas.NumComponents(); ++i) {
        const SW_InitialCondition& area = *areas.Area(i);
        const std::string id = area.Id().c_str();
        if (!(std::strtod(area.Get("TrueArea").c_str(), nullptr) > smallestArea))
            throw KORVO_Stop{KORVO_FAILED, InLanguage("the release polygon '", "das Anbruchpolygon '") + id +
                                               InLanguage("' has no area", "' hat keine Flaeche")};
        if (!LiesOn(area, *_simulation->Mesh()))
            throw KORVO_Stop{KORVO_FAILED,
                             InLanguage("the release polygon '", "das Anbruchpolygon '") + id +
                                 InLanguage("' lies off the terrain: are its coordinates those of the terrain?",
                                            "' liegt neben dem Gelaende: sind seine Koordinaten die des Gelaendes?")};
    }
}
