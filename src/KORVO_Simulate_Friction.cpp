// Friction laws as they are typed at the prompt.

#include "KORVO_Simulate.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

struct Parameter {
    const char* name;
    const char* attribute;
    const char* unit;
    const char* english;
    const char* german;
};

/// A law of the program; "" ends the parameters.
struct BuiltInLaw {
    const char* name;
    const char* type;   // value of FrictionType
    const char* formula;
    const char* source;
    std::vector<Parameter> parameters;
};

}   // namespace

static const std::vector<BuiltInLaw>& BuiltInLaws()
{
    static const Parameter angle = {"angle", "BedFrictionAngle", "degrees", "bed friction angle, mue is its tangent",
                                    "Bettreibungswinkel, mue ist sein Tangens"};
    static const Parameter c = {"c", "DynamicFrictionCoefficient", "1", "dynamic friction coefficient, g/xi",
                                "dynamischer Reibungsbeiwert, g/xi"};
    static const std::vector<BuiltInLaw> laws = {
        {"chezy", "Chezy", "tau = c rho v^2", "Chezy 1769, in Herschel 1897", {c}},
        {"coulomb-chezy", "Chezy + Mohr-Coulomb", "tau = mue p + c rho v^2", "Voellmy 1955", {angle, c}},
        {"classic",
         "Mohr-Coulomb with max of dynamic and granular pressure (KORVO classic)",
         "tau = mue max(p, c rho v^2)",
         "KORVO",
         {angle, c}},
        {"korvoat",
         "korvoAT",
         "tau = 0.155 p (1 + 0.222/(r + 0.222)) + rho v^2/(4.13 + ln(h/0.05)/0.43)^2, r = rho v^2/p",
         "KORVO",
         {}},
        {"wet-snow", "Nassschnee", "tau = mue exp(-e/20000) p + c rho v^2", "KORVO", {angle, c}},
    };
    return laws;
}

static std::vector<std::string> FormulaFiles()
{
    std::vector<std::string> names;
    for (const AK_String& file : AK_Object::AttributesFilesList("cint", "rheology"))
        names.push_back(file.BaseName().c_str());
    return names;
}

// ----------------------------------------------------------------------------------------------------------------
// What was typed
// ----------------------------------------------------------------------------------------------------------------

static KORVO_Stop BadFriction(const std::string& sentence) { return {KORVO_BAD_USAGE, "--friction: " + sentence}; }

static std::vector<std::string> Pieces(const std::string& text, char separator)
{
    std::vector<std::string> pieces;
    for (size_t begin = 0; begin <= text.size();) {
        const size_t end = std::min(text.find(separator, begin), text.size());
        pieces.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return pieces;
}

static void CheckNumber(const std::string& name, const std::string& value)
{
    char* end = nullptr;
    const double number = std::strtod(value.c_str(), &end);
    if (value.empty() || *end || !std::isfinite(number))
        throw BadFriction("'" + name + "=" + value + InLanguage("' is no number", "' ist keine Zahl"));
}

static void TakeParameter(const BuiltInLaw& law, const std::string& name, const std::string& value,
                          KORVO_Friction& friction)
{
    std::vector<std::string> names;
    for (const Parameter& parameter : law.parameters) {
        names.push_back(parameter.name);
        if (name == parameter.name || name == parameter.attribute) {
            friction.attributes.emplace_back(parameter.attribute, value);
            return;
        }
    }
    throw BadFriction(
        "'" + std::string(law.name) + InLanguage("' has no parameter '", "' hat keinen Parameter '") + name + "'" +
        (names.empty() ? ""
                       : InLanguage("; the nearest is '", "; am naechsten ist '") + KORVO_Nearest(name, names) + "'"));
}

KORVO_Friction KORVO_ParseFriction(const std::string& text)
{
    KORVO_Friction friction;
    const size_t colon = std::min(text.find(':'), text.size());
    const std::string name = text.substr(0, colon);
    const BuiltInLaw* builtIn = nullptr;
    std::vector<std::string> names;
    for (const BuiltInLaw& law : BuiltInLaws()) {
        names.push_back(law.name);
        if (name == law.name || name == law.type) builtIn = &law;
    }
    for (const std::string& file : FormulaFiles()) {
        names.push_back(file);
        if (name == file) friction.law = file;
    }
    if (builtIn) friction.law = builtIn->type;
    if (friction.law.empty())
        throw BadFriction(InLanguage("there is no law '", "es gibt kein Gesetz '") + name +
                          InLanguage("'; the nearest is '", "'; am naechsten ist '") + KORVO_Nearest(name, names) +
                          InLanguage("', 'list' shows all", "', 'list' zeigt alle"));
    if (colon == text.size()) return friction;
    for (const std::string& piece : Pieces(text.substr(colon + 1), ',')) {
        std::string parameter, value;
        if (!KORVO_SplitAssignment(piece, parameter, value))
            throw BadFriction(InLanguage("parameter=value is needed, not '", "Parameter=Wert ist noetig, nicht '") +
                              piece + "'");
        CheckNumber(parameter, value);
        if (builtIn)
            TakeParameter(*builtIn, parameter, value, friction);
        else
            friction.parameters.emplace_back(parameter, value);
    }
    return friction;
}

// ----------------------------------------------------------------------------------------------------------------
// The list
// ----------------------------------------------------------------------------------------------------------------

// The comment that a formula file begins with: formula, source and parameters with their units.
static void PrintHead(const AK_String& path)
{
    static constexpr int longestLine = 400;
    AK_TextReader reader(path);
    AK_String line;
    while (reader.ReadLine(line, longestLine) && line.StartsWith("//")) {
        line.RemoveLineEnd();
        std::printf("    %s\n", line.c_str() + (line.StartsWith("// ") ? 3 : 2));
    }
}

void KORVO_PrintFrictionLaws()
{
    const KORVO_Tree tree;
    SW_Simulation* simulation = new SW_Simulation("defaults", nullptr);
    for (const BuiltInLaw& law : BuiltInLaws()) {
        std::printf("%s\n    %s\n    %s%s\n", law.name, law.formula, InLanguage("Source: ", "Quelle: "), law.source);
        for (const Parameter& p : law.parameters)
            std::printf("    %-8s %-8s %s%s  %s\n", p.name, p.unit, InLanguage("default ", "Vorgabe "),
                        simulation->Get(p.attribute).c_str(), InLanguage(p.english, p.german));
        std::printf("\n");
    }
    for (const AK_String& file : AK_Object::AttributesFilesList("cint", "rheology")) {
        std::printf("%s\n", file.BaseName().c_str());
        PrintHead(file);
        simulation->FrictionType(file.BaseName());
        std::printf("    %s%s\n\n", InLanguage("Default: ", "Vorgabe: "), simulation->Get("FormulaParameters").c_str());
    }
    delete simulation;
}
