// Friction on the bed: which law is in force, formulas of the user, the earth pressure for display.
//
// A formula comes in two ways. The inline formula is the body of one function of pressure, speed, depth and density. A
// rheology file is code of its own, chosen by its name like a built-in law:
//
//   double tau(double p, double u, double h, double rho, double t, double x[], double n[], double e)
//                                               the shear stress, N/m2; without it a file is of no use
//   double entrainment_energy_loss(double p, double u, double h, double rho, double t, double x[], double n[],
//                                  double tau, double m, double shear_resistance, double deformation_resistance)
//                                               J/m2 of swept area, where m is the mass entrained there, kg/m2
//   void get_par(char text[]), void set_par(char text[])    the parameters, as one text of the file's own form
//   void init()                                             runs when the file is loaded
//
// The two live in namespaces of their own directly below the language's root, so that loading a file, which clears its
// namespace, leaves the inline formula alone. A function of another form than these counts as missing.

#include "SW_Simulation.h"

#include "AK_Object_Namespace.h"
#include "SW_Simulation_Scenario.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

// ORDER FRICTION LAWS: the index of a law in SW_FrictionLaw.
static const char* const builtInLaws[] = {"Chezy", "Chezy + Mohr-Coulomb",
                                          "Mohr-Coulomb with max of dynamic and granular pressure (KORVO classic)",
                                          "korvoAT", "Nassschnee"};

int SW_Simulation::FrictionIndex() const
{
    int index = 0;
    for (const char* law : builtInLaws) {
        if (_parameters.frictionType == law) return index;
        ++index;
    }
    return frictionFormula;
}

AK_String SW_Simulation::ReasonAgainstFriction(const AK_String& start) const
{
    if (FrictionIndex() != frictionFormula || _formulas.tau) return "";
    // A file of that name may have been there when the simulation was saved: not silently another law.
    if (!_namedFormulaFile.IsEmpty())
        return start +
               InLanguage("the friction law cannot be loaded from ", "das Reibungsgesetz ist nicht ladbar aus ") +
               _namedFormulaFile;
    const AK_String problem = AK_String("FrictionType '") + _parameters.frictionType +
                              InLanguage("' is neither a built-in law nor a formula file without errors",
                                         "' ist weder ein eingebautes Gesetz noch eine Formeldatei ohne Fehler");
    if (!_formulas.shear || _bottomShearStressFormula == defaultFormula) return start + problem;
    AK_MSG("WARNING: simulation " << _id << ": " << problem
                                  << InLanguage(", BottomShearStressFormula is used",
                                                ", es gilt BottomShearStressFormula"));
    return "";
}

AK_String SW_Simulation::FrictionTypeOptions()
{
    AK_String list;
    for (const char* law : builtInLaws) list = list + law + ak_sep;
    return list + SW_FormulaNames("rheology");
}

void SW_Simulation::FrictionType(const AK_String& name)
{
    _parameters.frictionType = name;
    _formulas.tau = nullptr;
    _formulas.entrainment_energy_loss = nullptr;
    _namedFormulaFile = "";
    _formulaParameters = "";
    if (FrictionIndex() == frictionFormula) LoadFormulaFile(AttributeFile(name, "cint", "rheology"));
}

// ----------------------------------------------------------------------------------------------------------------
// What a user sees of a law
// ----------------------------------------------------------------------------------------------------------------

bool SW_Simulation::UsesMohrCoulomb() const
{
    const int law = FrictionIndex();
    return law == frictionChezyMohrCoulomb || law == frictionWetSnow || law == frictionClassic;
}

bool SW_Simulation::UsesDynamicFriction() const { return UsesMohrCoulomb() || FrictionIndex() == frictionChezy; }

bool SW_Simulation::HasFormulaParameters() const { return _formulas.tau && _formulas.set_par && _formulas.get_par; }

AK_String SW_Simulation::EarthPressureCoefficientsVis() const
{
    static constexpr double noInternalFriction = 0.1;   // degrees: below it the snow counts as a fluid
    const int law = FrictionIndex();
    if (_parameters.internalFrictionAngle < noInternalFriction) return "-";
    return law == frictionChezyMohrCoulomb || law == frictionClassic ? "r" : "-";
}

// ----------------------------------------------------------------------------------------------------------------
// Formulas
// ----------------------------------------------------------------------------------------------------------------

namespace {

// Makes a namespace below the language's root active, which it creates if there is none yet, and goes back at the end.
class FormulaSpace {
public:
    explicit FormulaSpace(Namespace*& space) : _root(AK_RootNamespace())
    {
        if (!space) space = qvt_sci_NamespaceCreate();
        AK_ASSERT_AS(space, "_formulaNameSpace");
        _space = space;
        qvt_sci_NamespaceSwitchTo(_space);
    }

    /// A parse that fails inside a function leaves the namespace of that function active.
    bool Parse(std::FILE* file, const char* text) const
    {
        const int errors = file ? qvt_sci_Parse(file) : qvt_sci_ParseString(text);
        qvt_sci_NamespaceSwitchTo(_space);
        return errors == 0;
    }

private:
    AK_ActiveNamespace _root;   // puts back at the end what was active before
    Namespace* _space;
};

}   // namespace

const char* SW_Simulation::BottomShearStressFormulaSignature()
{
    return "double shear( // return shear stress [N/m2]\n"
           "double p,     // bottom pressure [N/m2]\n"
           "double v,     // velocity [m/s]\n"
           "double h,     // flow depth [m]\n"
           "double d)     // density [kg/m3]\n";
}

void SW_Simulation::BottomShearStressFormula(const AK_String& body)
{
    const AK_String source = AK_String(BottomShearStressFormulaSignature()) + "{\n" + body + "\n}";
    const FormulaSpace space(_shearNameSpace);
    _formulas.shear = nullptr;
    qvt_sci_DeleteAll();   // a function is not defined twice
    if (space.Parse(nullptr, source.c_str()))
        _formulas.shear = AK_FunctionOfForm("shear", "double", {"double,double,double,double"});
    if (!_formulas.shear) {
        AK_MSG("syntax errors in formula!");
        return;
    }
    _bottomShearStressFormula = body;
    AK_MSG("formula syntax OK");
}

void SW_Simulation::ForgetFormulas()
{
    Symbol* const shear = _formulas.shear;   // is no function of the file
    _formulas = SW_FrictionFormulas();
    _formulas.shear = shear;
    _formulaFile = "";
}

bool SW_Simulation::LoadFormulaFile(const AK_String& path)
{
    std::FILE* const file = AK_System::IsDirectory(path) ? nullptr : std::fopen(path.c_str(), "r");
    ForgetFormulas();
    if (!file) return false;
    const CodeOf running(this);   // "init" may ask the object, and paths in it begin here
    const FormulaSpace space(_formulaNameSpace);
    qvt_sci_DeleteAll();
    const bool parsed = space.Parse(file, nullptr);
    std::fclose(file);
    if (!parsed) {
        AK_MSG("ERROR: syntax errors in " << path);
        return false;
    }
    static constexpr const char* lossFormals =
        "double,double,double,double,double,double[],double[],double,double,double,double";
    SW_FrictionFormulas found;
    found.tau = AK_FunctionOfForm("tau", "double", {"double,double,double,double,double,double[],double[],double"});
    if (!found.tau) {   // nothing of such a file is used
        AK_MSG("ERROR: function tau missing in " << path);
        return false;
    }
    found.shear = _formulas.shear;
    found.ku = qvt_sci_FuncPtr("ku");
    found.kv = qvt_sci_FuncPtr("kv");
    found.set_par = AK_FunctionOfForm("set_par", "void", {"char[]"});
    found.get_par = AK_FunctionOfForm("get_par", "void", {"char[]"});
    found.entrainment_energy_loss = AK_FunctionOfForm("entrainment_energy_loss", "double", {lossFormals});
    for (Symbol* function : {found.tau, found.entrainment_energy_loss})
        for (int i = 5; function && i < 7; ++i) qvt_sci_BindArgLength(function, i, 3);   // position, normal
    _formulas = found;
    AK_MSG("syntax OK, using " << path);
    qvt_sci_InitAll();
    if (Symbol* init = AK_FunctionOfForm("init", "void", {""})) qvt_sci_Call(init);
    _formulaFile = path;
    return true;
}

// The directory in which the program runs later may be another one.
static AK_String FromRootOfFiles(const AK_String& path)
{
    return path.StartsWith("/") ? path : AK_System::CurrentWorkingDirectory() + "/" + path;
}

void SW_Simulation::BottomShearStressFormulaFile(const AK_String& path)
{
    _formulaParameters = "";
    _namedFormulaFile = path.IsEmpty() ? path : FromRootOfFiles(path);
    LoadFormulaFile(path);
}

AK_String SW_Simulation::BottomShearStressFormulaFile() const { return _formulaFile.BaseName(); }

void SW_Simulation::FormulaFilePath(const AK_String& path)
{
    if (path.IsEmpty()) return;
    _namedFormulaFile = FromRootOfFiles(path);
    _formulaParameters = "";
    if (!LoadFormulaFile(_namedFormulaFile))
        AK_MSG("WARNING: simulation " << _id << ": "
                                      << InLanguage("the friction law cannot be loaded from ",
                                                    "das Reibungsgesetz ist nicht ladbar aus ")
                                      << _namedFormulaFile);
}

AK_String SW_Simulation::FormulaFilePath() const { return _namedFormulaFile; }

AK_String SW_Simulation::FormulaParameters() const
{
    // Where the file of a law is missing its parameters are kept for the day when it is back.
    if (!_formulas.tau && FrictionIndex() == frictionFormula) return _formulaParameters;
    if (!_formulas.tau || !_formulas.get_par) return "";
    const CodeOf running(this);
    return CallWithText(_formulas.get_par, "");
}

void SW_Simulation::FormulaParameters(const AK_String& text)
{
    if (FrictionIndex() == frictionFormula) _formulaParameters = text;
    if (!_formulas.tau || !_formulas.set_par) return;
    const CodeOf running(this);
    CallWithText(_formulas.set_par, text);
}

// ----------------------------------------------------------------------------------------------------------------
// Earth pressure
// ----------------------------------------------------------------------------------------------------------------

// The principal stress across the flow that belongs to one along it: the two circles of Mohr that touch the bed's
// friction, the smaller (active) and the larger one (passive).
static double AcrossFlow(double alongFlow, double tan2Delta, int sign)
{
    const double diameter = std::sqrt((1 - alongFlow) * (1 - alongFlow) + 4 * tan2Delta);
    return (alongFlow + 1 + sign * diameter) / 2;
}

void SW_Simulation::ComputeEarthPressureCoefficients()
{
    if (EarthPressureCoefficientsVis() == "-") return;
    if (_parameters.internalFrictionAngle < _parameters.bedFrictionAngle) {
        AK_MSG("WARNING: internal friction angle cannot be smaller than bed friction angle!");
        _parameters.internalFrictionAngle = _parameters.bedFrictionAngle;
    }
    const double phi = _parameters.internalFrictionAngle * ak_pi / 180;   // rad
    const double delta = _parameters.bedFrictionAngle * ak_pi / 180;
    const double cos2Phi = std::cos(phi) * std::cos(phi);
    const double cosDelta = std::cos(delta);
    const double tan2Delta = std::tan(delta) * std::tan(delta);
    // Equal angles make the root 0, which rounding must not turn into that of a negative number.
    const double s = std::sqrt(std::max(0.0, 1 - cos2Phi / (cosDelta * cosDelta)));
    const double active = 2 * (1 - s) / cos2Phi - 1;
    const double passive = 2 * (1 + s) / cos2Phi - 1;
    // ORDER EARTH PRESSURE
    const double all[] = {active,
                          passive,
                          AcrossFlow(active, tan2Delta, -1),
                          AcrossFlow(active, tan2Delta, +1),
                          AcrossFlow(passive, tan2Delta, -1),
                          AcrossFlow(passive, tan2Delta, +1)};
    for (int i = 0; i < 6; ++i) _earthPressureCoefficients[i] = float(all[i]);
}

AK_String SW_Simulation::EarthPressureCoefficients() const
{
    // ORDER EARTH PRESSURE: the table has the values across the flow by that along it, the text by their own state.
    static constexpr struct {
        const char* label;
        int index;
    } shown[] = {{"k_x_act:", 0},         {", k_x_pas:", 1},       {", k_y_act_x_act:", 2},
                 {", k_y_act_x_pas:", 4}, {", k_y_pas_x_act:", 3}, {", k_y_pas_x_pas:", 5}};
    AK_String text;
    for (const auto& [label, index] : shown)
        text = text + label + AK_String(double(_earthPressureCoefficients[index]), "%g");
    return text;
}
