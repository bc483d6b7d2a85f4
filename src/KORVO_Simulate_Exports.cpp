// What korvo simulate leaves of a run, as commands; and the macro of all commands.

#include "KORVO_Simulate.h"

#include <algorithm>

namespace {

/// A field of the run as a result: its name as a file, and the lines of equal value that are drawn of it.
struct Result {
    const char* field;
    const char* conversion;   // null for none
    const char* name;
    const char* min;   // "" for no lines
    const char* max;
    const char* segments;   // equal steps between the two, or...
    const char* steps;      // ...these
};

}   // namespace

static constexpr Result results[] = {
    {"PeakFlowDepth", nullptr, "peak_depth", "0.5", "10", "19", ""},                // m
    {"DynamicPeakPressure", nullptr, "peak_pressure", "1", "30", "1", "3 10"},      // kPa
    {"DynamicPeakPressure", "SpeedOfPressure", "peak_speed", "5", "50", "9", ""},   // m/s
    {"FrontArrivalTime", nullptr, "arrival_time", "", "", "", ""},                  // s; 0 where nothing arrives
};

// The outline: where the flow was deeper than 10 cm.
static constexpr Result outline = {"PeakFlowDepth", nullptr, "outline", "0.1", "1000", "1", ""};

static bool HasFormat(const KORVO_Arguments& arguments, const std::string& format)
{
    if (!arguments.Has("formats")) return format == "asc";
    return ("," + arguments.Value("formats") + ",").find("," + format + ",") != std::string::npos;
}

// All rasters have a point at each vertex of the terrain, so that nothing is interpolated and one lies on the other.
std::vector<KORVO_Case::Command> KORVO_Case::RasterOf(const std::string& field, const std::string& file) const
{
    const SW_Grid& grid = _simulation->Mesh()->Grid();
    const auto number = [](double x) { return std::string(AK_String(x, "%.15g").c_str()); };
    const std::string path = _path + "/" + field;
    return {{path, "ExportRasterAutoRange", "0", false},
            {path, "ExportRasterSize", number(grid.dx), false},
            {path, "ExportRasterLL", number(grid.xll.x) + " " + number(grid.xll.y), false},
            {path, "ExportRasterNumColumns", std::to_string(grid.nx + 1), false},
            {path, "ExportRasterNumRows", std::to_string(grid.ny + 1), false},
            {path, "ExportFieldRasterAscii", file, true}};
}

// The steps of the colour bar are the levels; it is given back to its own range.
static std::vector<KORVO_Case::Command> LinesOf(const Result& result, const std::string& path)
{
    const std::string bar = path + "/Colorbar";
    std::vector<KORVO_Case::Command> commands = {{bar, "Autoscale", "0", false},
                                                 {bar, "Min", result.min, false},
                                                 {bar, "Max", result.max, false},
                                                 {bar, "Segments", result.segments, false}};
    if (*result.steps) {
        commands.push_back({bar, "ArbitrarySteps", "1", false});
        commands.push_back({bar, "StepValues", result.steps, false});
    }
    commands.push_back({path, "ExportContourLines", std::string(result.name) + ".dxf", true});
    if (*result.steps) commands.push_back({bar, "ArbitrarySteps", "0", false});
    commands.push_back({bar, "Autoscale", "1", false});
    return commands;
}

std::vector<KORVO_Case::Command> KORVO_Case::Exports() const
{
    std::vector<Command> commands;
    const auto append = [&](const std::vector<Command>& more) {
        commands.insert(commands.end(), more.begin(), more.end());
    };
    for (const Result& result : results) {
        const std::string path = _path + "/" + result.field;
        if (result.conversion)
            append({{path, "$density", _simulation->Get("Density").c_str(), false},
                    {path, "$conversion", result.conversion, false}});
        if (HasFormat(_arguments, "asc")) append(RasterOf(result.field, std::string(result.name) + ".asc"));
        if (HasFormat(_arguments, "dxf") && *result.min) append(LinesOf(result, path));
        if (result.conversion) append({{path, "$conversion", "none", false}});
    }
    append(LinesOf(outline, _path + "/" + outline.field));
    return commands;
}

// ----------------------------------------------------------------------------------------------------------------
// Run
// ----------------------------------------------------------------------------------------------------------------

// SaveProjectAs makes one level of directories only.
std::vector<KORVO_Case::Command> KORVO_Case::Saving() const
{
    return {{"", "$results", "", true},
            {"", "ExecMacro", "make_results.cint", false},
            {"", "SaveProjectAs", "project", true}};
}

std::string KORVO_Case::Macro() const
{
    std::string text = "Made by korvo simulate; korvo play does the same where its input files lie.\n\n";
    const std::vector<Command> run = {{_path, "Run", "", false}, {"", "SaveProject", "", false}};
    for (const std::vector<Command>& commands : {_done, Saving(), run, Exports()})
        for (const Command& command : commands) {
            const std::string value = ValueIn(_name, command);
            text += AK_Object::CommandString(command.path.c_str(), command.attribute.c_str(), value.c_str()).c_str();
            text += "\n";
        }
    return text;
}

void KORVO_Case::Save()
{
    for (const Command& command : Saving()) Do(command);
}

void KORVO_Case::LoadState()
{
    Do({_path, "LoadLastTimeStep", "", false});
    _goesOn = true;
}

void KORVO_Case::Run() { Do({_path, _goesOn ? "Continue" : "Run", "", false}); }

void KORVO_Case::SaveEnd() { Do({"", "SaveProject", "", false}); }

void KORVO_Case::Export()
{
    for (const Command& command : Exports()) Do(command);
}
