// What a run has come to, as a table for people and as one for programs.

#include "KORVO_Simulate.h"

#include "AK_Basic_NewFile.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>

namespace {

struct Figure {
    const char* name;   // in table.json
    const char* unit;
    double value;
    const char* english;
    const char* german;
    double shownPer;   // the table for people divides by it
    const char* shownUnit;
    const char* format;
};

/// A parameter of the run as the tree has it.
struct ParameterRow {
    std::string path, attribute, value, unit;
};

/// From the highest point of the outline to its point under the smallest angle.
struct RunOut {
    double length = 0;   // m, seen from above
    double drop = 0;     // m
    double angle = 0;    // degrees
};

}   // namespace

// ----------------------------------------------------------------------------------------------------------------
// Run-out
// ----------------------------------------------------------------------------------------------------------------

static const AK_Vec* HighestPoint(const AK_List<AK_Polyline>& outline)
{
    const AK_Vec* top = nullptr;
    for (const AK_Polyline& line : outline)
        for (const AK_Vec& p : line._x)
            if (!top || p.z > top->z) top = &p;
    return top;
}

// Travel angle (Heim 1932): the smallest angle under which the outline is seen from its highest point; among points
// under the same angle the farthest. Points of the upper half of the drop are of the crown and the flanks: beside the
// highest point, nearly level with it, there is always one under an angle of nearly 0.
static RunOut RunOutOf(const AK_List<AK_Polyline>& outline)
{
    static constexpr double crown = 0.5;   // of the largest drop
    const AK_Vec* top = HighestPoint(outline);
    double largestDrop = 0;   // m
    for (const AK_Polyline& line : outline)
        for (const AK_Vec& p : line._x) largestDrop = std::max(largestDrop, top->z - p.z);
    RunOut best;
    bool found = false;
    for (const AK_Polyline& line : outline)
        for (const AK_Vec& p : line._x) {
            const double length = std::hypot(p.x - top->x, p.y - top->y);
            const double drop = top->z - p.z;
            if (length == 0 || drop < crown * largestDrop) continue;
            const double angle = std::atan2(drop, length) * 180 / std::numbers::pi;
            if (found && (angle > best.angle || (angle == best.angle && length <= best.length))) continue;
            best = {length, drop, angle};
            found = true;
        }
    return best;
}

// ----------------------------------------------------------------------------------------------------------------
// Figures
// ----------------------------------------------------------------------------------------------------------------

static double Number(const AK_Object& object, const char* attribute)
{
    return std::strtod(object.Get(attribute).c_str(), nullptr);
}

static std::vector<Figure> Figures(const KORVO_Results& results, const std::string& directory)
{
    SW_Simulation& simulation = results.run.Simulation();
    const auto largest = [&](const char* field) { return Number(*simulation.Component(field), "Max"); };
    const double density = Number(simulation, "Density");     // kg/m3
    const double pressure = largest("DynamicPeakPressure");   // kPa
    AK_List<AK_Polyline> outline(1);
    SW_Polylines::LoadDxfFile((directory + "/outline.dxf").c_str(), outline);
    const RunOut runOut = RunOutOf(outline);
    return {
        {"released_mass", "kg", Number(simulation, "ReleaseMass"), "released mass", "Anbruchmasse", 1000, "t", "%.0f"},
        {"final_mass", "kg", Number(simulation, "CurrentMass"), "mass at the end", "Masse am Ende", 1000, "t", "%.0f"},
        {"mass_off_terrain", "kg", results.massOffMesh, "mass off the terrain", "Masse ausserhalb", 1000, "t", "%.0f"},
        {"particles", "1", double(simulation.Particles().NumParticles()), "particles", "Partikel", 1, "", "%.0f"},
        {"simulated_time", "s", simulation.CurrentTime(), "simulated time", "simulierte Zeit", 1, "s", "%g"},
        {"run_out", "m", runOut.length, "run-out", "Auslauflaenge", 1, "m", "%.0f"},
        {"drop", "m", runOut.drop, "drop", "Hoehenunterschied", 1, "m", "%.0f"},
        {"run_out_angle", "degrees", runOut.angle, "angle of the run-out", "Pauschalgefaelle", 1,
         InLanguage("degrees", "Grad"), "%.1f"},
        {"max_flow_depth", "m", largest("PeakFlowDepth"), "largest flow depth", "groesste Fliesshoehe", 1, "m", "%.2f"},
        {"max_speed", "m/s", std::sqrt(1000 * pressure / density), "largest speed", "groesste Geschwindigkeit", 1,
         "m/s", "%.1f"},
        {"max_pressure", "kPa", pressure, "largest pressure", "groesster Druck", 1, "kPa", "%.1f"},
        {"run_time", "s", results.runTime, "run time", "Rechenzeit", 1, "s", "%.1f"},
    };
}

// ----------------------------------------------------------------------------------------------------------------
// Parameters
// ----------------------------------------------------------------------------------------------------------------

static const char* UnitOf(const std::string& attribute)
{
    static constexpr const char* units[][2] = {
        {"BedFrictionAngle", "degrees"},
        {"InternalFrictionAngle", "degrees"},
        {"DynamicFrictionCoefficient", "1"},
        {"Density", "kg/m3"},
        {"Depth", "m"},
        {"Height", "m"},
        {"Heights", "m"},
        {"Width", "m"},
        {"Spacing", "m"},
        {"ResistanceCoefficient", "1"},
        {"Slopes", "1"},
        {"MassFlow", "kg/s"},
        {"Dx", "m"},
        {"NumParticlesPerCell", "1"},
        {"DeltaT", "s"},
        {"EndTime", "s"},
        {"DeltaOut", "s"},
        {"$n_threads", "1"},
        {"GlobalEntrainmentAreaWeight", "kg/m2"},
        {"GlobalEntrainmentMinZ", "m"},
        {"GlobalEntrainmentTemperature", "degrees C"},
        {"EntrainmentErosionEnergy", "J/kg"},
        {"EntrainmentShearResistance", "J/m2"},
        {"EntrainmentDeformationResistance", "J/kg"},
        {"RestitutionCoefficient", "1"},
    };
    for (const auto& [name, unit] : units)
        if (attribute == name) return unit;
    return "";
}

static std::vector<ParameterRow> Parameters(const KORVO_Case& run)
{
    SW_Simulation& simulation = run.Simulation();
    std::vector<ParameterRow> rows;
    const auto add = [&](const std::string& path, const AK_Object& object,
                         std::initializer_list<const char*> attributes) {
        for (const char* attribute : attributes)
            rows.push_back({path, attribute, object.Get(attribute).c_str(), UnitOf(attribute)});
    };
    add(std::string("Project/DHMs/") + simulation.Mesh()->Id().c_str(), *simulation.Mesh(), {"Dx"});
    add(run.Path(), simulation,
        {"Mesh", "FrictionType", "BedFrictionAngle", "DynamicFrictionCoefficient", "InternalFrictionAngle",
         "FormulaParameters", "Density", "GlobalEntrainmentAreaWeight", "GlobalEntrainmentMinZ",
         "EntrainmentErosionEnergy", "EntrainmentShearResistance", "EntrainmentDeformationResistance",
         "RestitutionCoefficient", "NumParticlesPerCell", "DeltaT", "EndTime", "DeltaOut", "$n_threads", "$stop_crit"});
    const struct {
        const AK_Object& container;
        std::initializer_list<const char*> attributes;
    } areas[] = {{simulation.ReleaseAreas(), {"Depth", "Density"}},
                 {simulation.EntrainmentAreas(), {"Depth", "Density"}},
                 {simulation.ResistanceAreas(), {"Height", "Width", "Spacing", "ResistanceCoefficient"}},
                 {simulation.WallLines(), {"Heights", "Slopes"}},
                 {simulation.SourceLines(), {"MassFlow"}}};
    for (const auto& kind : areas)
        for (int i = 0; i < kind.container.NumComponents(); ++i) {
            const AK_Object& area = *kind.container.ComponentAt(i);
            add(run.Path() + "/" + kind.container.Id().c_str() + "/" + area.Id().c_str(), area, kind.attributes);
        }
    for (const KORVO_Case::Command& extra : run.Extra())
        if (std::none_of(rows.begin(), rows.end(), [&](const ParameterRow& row) {
                return row.path == extra.path && row.attribute == extra.attribute;
            }))
            rows.push_back({extra.path, extra.attribute, extra.value, UnitOf(extra.attribute)});
    return rows;
}

// ----------------------------------------------------------------------------------------------------------------
// JSON
// ----------------------------------------------------------------------------------------------------------------

// Bytes that are no UTF-8, as paths can hold, become U+FFFD: a reader of JSON refuses them.
static size_t LengthOfCharacter(const std::string& text, size_t at)
{
    const auto byte = [&](size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
    const unsigned first = byte(at);
    const size_t length = first < 0x80                    ? 1
                          : first >= 0xC2 && first < 0xE0 ? 2
                          : first >= 0xE0 && first < 0xF0 ? 3
                          : first >= 0xF0 && first < 0xF5 ? 4
                                                          : 0;
    for (size_t i = 1; i < length; ++i)
        if ((byte(at + i) & 0xC0) != 0x80) return 0;
    const bool isOverlong = (first == 0xE0 && byte(at + 1) < 0xA0) || (first == 0xF0 && byte(at + 1) < 0x90);
    const bool isOutside = (first == 0xED && byte(at + 1) > 0x9F) || (first == 0xF4 && byte(at + 1) > 0x8F);
    return isOverlong || isOutside ? 0 : length;
}

static std::string Quoted(const std::string& text)
{
    std::string quoted = "\"";
    for (size_t i = 0; i < text.size();) {
        const size_t length = LengthOfCharacter(text, i);
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned char>(text[i]));
        if (length == 0)
            quoted += "\\ufffd";
        else if (text[i] == '"' || text[i] == '\\')
            quoted += std::string("\\") + text[i];
        else if (length == 1 && static_cast<unsigned char>(text[i]) < 0x20)
            quoted += escape;
        else
            quoted += text.substr(i, length);
        i += length == 0 ? 1 : length;
    }
    return quoted + "\"";
}

// JSON has no infinity.
static std::string NumberText(double value)
{
    return std::isfinite(value) ? AK_String(value, "%.15g").c_str() : "null";
}

// Rows between brackets, one a line.
static void WriteRows(std::ostream& out, const char* name, char open, char close, const std::vector<std::string>& rows)
{
    out << "  " << Quoted(name) << ": " << open;
    for (size_t i = 0; i < rows.size(); ++i) out << (i ? ",\n    " : "\n    ") << rows[i];
    out << (rows.empty() ? "" : "\n  ") << close;
}

static void WriteJson(std::ostream& out, const KORVO_Results& results, const std::vector<Figure>& figures)
{
    std::vector<std::string> rows;
    out << "{\n  \"version\": " << Quoted(KORVO_Version()) << ",\n  \"status\": " << results.status << ",\n";
    for (const Figure& figure : figures)
        rows.push_back(Quoted(figure.name) + ": {\"value\": " + NumberText(figure.value) +
                       ", \"unit\": " + Quoted(figure.unit) + "}");
    WriteRows(out, "figures", '{', '}', rows);
    rows.clear();
    for (const KORVO_Input& input : results.inputs)
        rows.push_back("{\"path\": " + Quoted(input.path) + ", \"bytes\": " + input.bytes +
                       ", \"sha256\": " + Quoted(input.sha256) + "}");
    out << ",\n";
    WriteRows(out, "inputs", '[', ']', rows);
    rows.clear();
    for (const ParameterRow& row : Parameters(results.run))
        rows.push_back("{\"path\": " + Quoted(row.path) + ", \"attribute\": " + Quoted(row.attribute) +
                       ", \"value\": " + Quoted(row.value) + ", \"unit\": " + Quoted(row.unit) + "}");
    out << ",\n";
    WriteRows(out, "parameters", '[', ']', rows);
    rows.clear();
    for (const std::string& warning : results.warnings) rows.push_back(Quoted(warning));
    out << ",\n";
    WriteRows(out, "warnings", '[', ']', rows);
    out << "\n}\n";
}

// ----------------------------------------------------------------------------------------------------------------
// The files
// ----------------------------------------------------------------------------------------------------------------

static std::string TableText(const KORVO_Results& results, const std::vector<Figure>& figures)
{
    std::string text = std::string("Simulation ") + results.run.Id() + "\n";
    for (const Figure& figure : figures) {
        char line[120], value[40];
        std::snprintf(value, sizeof value, figure.format, figure.value / figure.shownPer);
        std::snprintf(line, sizeof line, "  %-25s %s %s", InLanguage(figure.english, figure.german), value,
                      figure.shownUnit);
        text += line;
        text.erase(text.find_last_not_of(' ') + 1);
        text += '\n';
    }
    for (const std::string& warning : results.warnings) text += InLanguage("Warning: ", "Warnung: ") + warning + "\n";
    return text;
}

std::string KORVO_WriteTables(const KORVO_Results& results, const std::string& directory)
{
    const std::vector<Figure> figures = Figures(results, directory);
    const std::string text = TableText(results, figures);
    const bool written = AK_WriteStream((directory + "/table.txt").c_str(), [&](std::ostream& out) { out << text; }) &&
                         AK_WriteStream((directory + "/table.json").c_str(),
                                        [&](std::ostream& out) { WriteJson(out, results, figures); });
    if (!written)
        throw KORVO_Stop{KORVO_FAILED,
                         InLanguage("cannot write the tables into '", "kann die Tabellen nicht schreiben: '") +
                             directory + "'"};
    return text;
}
