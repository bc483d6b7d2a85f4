// Friction laws and formulas as a user chooses them; the earth pressure that is displayed.

#include "SW_Simulation_Fixture.h"

#include "qvt_sci.h"

#include <csetjmp>
#include <csignal>

namespace {

class SW_Friction : public SimulationTest {
protected:
    AK_String Law(const char* name, const std::string& code)
    {
        const AK_String rheology = directory / "rheology";
        AK_System::CreateDir(rheology);
        AK_Object::SetUserAttributesDirectory(directory.Path());
        WriteFile(rheology + "/" + name + ".cint", code);
        return name;
    }
    ~SW_Friction() override { AK_Object::_userAttributesDirectory = ""; }

    bool HasLaw() const { return sim->ReasonAgainstFriction("").IsEmpty(); }

    // Of pressure, speed, depth and density, at rest in time and place.
    double Tau(double p, double v, double h, double rho)
    {
        const SW_FrictionFormulas& formulas = sim->Formulas();
        double t = 0, e = 0;
        AK_Vec x, n{0, 0, 1};
        if (!formulas.tau) return qvt_sci_AsDouble(qvt_sci_Call(formulas.shear, &p, &v, &h, &rho));
        return qvt_sci_AsDouble(qvt_sci_Call(formulas.tau, &p, &v, &h, &rho, &t, &x.x, &n.x, &e));
    }
};

const std::string tauHead =
    "double tau(double p, double v, double h, double rho, double t, double x[], double n[], double e)";

}   // namespace

TEST_F(SW_Friction, LawsHaveTheirIndexAndShowWhatTheyAskFor)
{
    const struct {
        const char* law;
        int index;
        const char* bedFriction;
        const char* dynamicFriction;
        const char* earthPressure;
    } cases[] = {{"Chezy", 0, "-", "w", "-"},
                 {"Chezy + Mohr-Coulomb", 1, "w", "w", "r"},
                 {"Mohr-Coulomb with max of dynamic and granular pressure (KORVO classic)", 2, "w", "w", "r"},
                 {"korvoAT", 3, "-", "-", "-"},
                 {"Nassschnee", 4, "w", "w", "-"},
                 {"voellmy", -1, "-", "-", "-"},
                 {"no such law", -1, "-", "-", "-"}};
    EXPECT_EQ(sim->FrictionIndex(), 2);
    const std::string options = Text("FrictionTypeOptions");
    for (const auto& c : cases) {
        sim->Set("FrictionType", c.law);
        EXPECT_EQ(sim->FrictionIndex(), c.index) << c.law;
        EXPECT_EQ(Text("FrictionAngleVisibility"), c.bedFriction) << c.law;
        EXPECT_EQ(Text("DynamicFrictionCoefficientVis"), c.dynamicFriction) << c.law;
        EXPECT_EQ(Text("EarthPressureCoefficientsVis"), c.earthPressure) << c.law;
        EXPECT_EQ(Text("FormulaParametersVis"), std::string(c.law) == "voellmy" ? "w" : "-") << c.law;
        EXPECT_EQ(options.find(std::string(c.law) + "%AK_SEP%") != std::string::npos, c.law != cases[6].law) << c.law;
        EXPECT_EQ(HasLaw(), c.law != cases[6].law);
    }
    sim->Set("FrictionType", "Chezy + Mohr-Coulomb");
    sim->Set("InternalFrictionAngle", "0.09");
    EXPECT_EQ(Text("EarthPressureCoefficientsVis"), "-");
}

TEST_F(SW_Friction, ShippedFormulasFollowTheirPapersAndTakeParameters)
{
    const double p = 2500, v = 20, h = 1.5, rho = 300, g = 9.81;
    const struct {
        const char* law;
        const char* parameters;
        double stress;
    } cases[] = {
        {"voellmy", "mu=0.2;xi=2000", 0.2 * p + rho * g * v * v / 2000},
        {"voellmy", "mu=0.155;xi=1000", 0.155 * p + rho * g * v * v / 1000},
        {"bingham", "tau0=500;eta=10", 500 + 3 * 10 * v / h},
        {"voellmy_cohesion", "mu=0.3;xi=500;c=200;layer=100",
         0.3 * p + rho * g * v * v / 500 + 200 * 0.7 * (1 - std::exp(-p / 200))},
        {"voellmy_cohesion", "mu=0.3;xi=500;c=0;layer=100", 0.3 * p + rho * g * v * v / 500},
    };
    for (const auto& c : cases) {
        sim->Set("FrictionType", c.law);
        EXPECT_TRUE(Said("syntax OK, using "));
        sim->Set("FormulaParameters", c.parameters);
        EXPECT_EQ(Text("FormulaParameters"), c.parameters);
        EXPECT_NEAR(Tau(p, v, h, rho), c.stress, 1e-9 * c.stress) << c.law;
        for (const char* senseless : {"", "mu", "mu=x;xi=y", "tau0=-1;eta=-3", "mu=-1;xi=-1;c=-1;layer=0"})
            sim->Set("FormulaParameters", senseless);
        EXPECT_EQ(Text("FormulaParameters"), c.parameters) << c.law;
        EXPECT_EQ(Text("BottomShearStressFormulaFile"), c.law);
        EXPECT_EQ(sim->Formulas().entrainment_energy_loss != nullptr, std::string(c.law) == "voellmy_cohesion");
    }
    sim->Set("FrictionType", "Chezy");
    EXPECT_EQ(sim->Formulas().tau, nullptr);
    EXPECT_EQ(sim->Formulas().entrainment_energy_loss, nullptr);
    EXPECT_EQ(Text("FormulaParameters"), "");
}

TEST_F(SW_Friction, TheEnergyLossOfTheCohesiveLawAddsWhatBreaksTheLayer)
{
    sim->Set("FrictionType", "voellmy_cohesion");
    sim->Set("FormulaParameters", "mu=0.3;xi=500;c=200;layer=100");
    double p = 1, v = 2, h = 3, rho = 4, t = 5, stress = 6, m = 20, shear = 7, deformation = 8;
    AK_Vec x, n;
    const double loss = qvt_sci_AsDouble(qvt_sci_Call(sim->Formulas().entrainment_energy_loss, &p, &v, &h, &rho, &t,
                                                      &x.x, &n.x, &stress, &m, &shear, &deformation));
    EXPECT_DOUBLE_EQ(loss, 7 + 8 * 20 + 200 * 20 / 100.0);
}

TEST_F(SW_Friction, AFileThatIsNoLawLeavesNoneOfItsFunctions)
{
    const struct {
        const char* name;
        std::string code;
        const char* said;
    } cases[] = {
        {"broken", tauHead + " { return p * ; }", "ERROR: syntax errors in "},
        {"broken_function", "void get_par(char t[]) { }\ndouble f() { return 1 +; }", "ERROR: syntax errors in "},
        {"empty", "", "ERROR: function tau missing in "},
        {"no_tau", "void get_par(char text[]) { }", "ERROR: function tau missing in "},
        {"too_few", "double tau(double p) { return p; }", "ERROR: function tau missing in "},
        {"other_types",
         "float tau(double p, double v, double h, double rho, double t, double x[], double n[], double e)"
         " { return 1.0; }",
         "ERROR: function tau missing in "},
        {"a_variable", "double tau;", "ERROR: function tau missing in "},
    };
    const SW_FrictionFormulas& formulas = sim->Formulas();
    for (const auto& c : cases) {
        sim->Set("FrictionType", "voellmy_cohesion");
        Messages();
        sim->Set("FrictionType", Law(c.name, c.code));
        EXPECT_TRUE(Said(c.said)) << c.name;
        EXPECT_EQ(formulas.tau, nullptr) << c.name;
        EXPECT_EQ(formulas.set_par, nullptr) << c.name;
        EXPECT_EQ(formulas.entrainment_energy_loss, nullptr) << c.name;
        EXPECT_FALSE(HasLaw()) << c.name;
        EXPECT_EQ(Text("FormulaParameters"), "") << c.name;
        EXPECT_EQ(Text("FrictionType"), c.name);
    }
    sim->Set("FrictionType", "voellmy");
    sim->Set("BottomShearStressFormulaFile", "/nowhere/at/all.cint");
    EXPECT_EQ(formulas.tau, nullptr);
    sim->Set("BottomShearStressFormulaFile", directory.Path());
    EXPECT_EQ(formulas.tau, nullptr);
}

TEST_F(SW_Friction, AFileRunsItsInitAndEachSimulationHasItsOwnVariables)
{
    const std::string code = "double a = 2; double b; void init() { b = 3; }\n" + tauHead + " { return a * b * p; }\n" +
                             "void set_par(char text[]) { sscanf(text, \"%lf\", b); }";
    sim->Set("FrictionType", Law("own", code));
    EXPECT_EQ(Tau(10, 0, 1, 1), 60);
    SW_Simulation other("other", simulations);
    other.Set("FrictionType", "own");
    other.Set("FormulaParameters", "5");
    EXPECT_EQ(Tau(10, 0, 1, 1), 60);
    EXPECT_EQ(Text("FormulaParameters"), "");   // there is no get_par
    EXPECT_NE(Text("FrictionTypeOptions").find("own%AK_SEP%"), std::string::npos);
    // The user's file of a name comes before the program's, and is listed once.
    Law("voellmy", tauHead + " { return 7; }");
    sim->Set("FrictionType", "voellmy");
    EXPECT_EQ(Tau(10, 0, 1, 1), 7);
    const std::string options = Text("FrictionTypeOptions");
    EXPECT_EQ(options.find("voellmy%AK_SEP%"), options.rfind("voellmy%AK_SEP%"));
}

jmp_buf left;

// A frame of its own for the jump: nothing in it needs to be destroyed.
bool Raises(Symbol* tau, double* scalars, double* vectors)
{
    if (setjmp(left) != 0) return true;
    qvt_sci_Call(tau, scalars, scalars, scalars, scalars, scalars, vectors, vectors, scalars);
    return false;
}

TEST_F(SW_Friction, ALawThatReachesBeyondItsPlaceOrNormalIsStopped)
{
    qvt_sci_raise = [](int) -> int { std::longjmp(left, 1); };
    double one = 1, vectors[9] = {};
    for (const auto& [code, raises] : {std::pair(" { return x[2] + n[2]; }", false),
                                       {" { return x[3]; }", true},
                                       {" { n[3] = 1; return 0; }", true}}) {
        sim->Set("FrictionType", Law("far", tauHead + code));
        EXPECT_EQ(Raises(sim->Formulas().tau, &one, vectors), raises) << code;
        qvt_sci_AbandonRun();
    }
    qvt_sci_raise = raise;
}

TEST_F(SW_Friction, TheInlineFormulaStandsBesideTheFiles)
{
    EXPECT_EQ(Text("BottomShearStressFormula"), "return v / h * 1.0;");
    EXPECT_EQ(Text("BottomShearStressFormulaSignature"), "double shear( // return shear stress [N/m2]\n"
                                                         "double p,     // bottom pressure [N/m2]\n"
                                                         "double v,     // velocity [m/s]\n"
                                                         "double h,     // flow depth [m]\n"
                                                         "double d)     // density [kg/m3]\n");
    sim->Set("FrictionType", "mine");
    sim->Set("BottomShearStressFormula", "double a; a = 0.1; return a * p + v + h + d;");
    EXPECT_TRUE(Said("formula syntax OK"));
    EXPECT_DOUBLE_EQ(Tau(100, 2, 3, 4), 19);
    sim->Set("FrictionType", "voellmy");   // loading a file clears that file's functions only
    sim->Set("FrictionType", "mine");
    EXPECT_DOUBLE_EQ(Tau(100, 2, 3, 4), 19);
    sim->Set("BottomShearStressFormula", "return 2 * p;");
    EXPECT_DOUBLE_EQ(Tau(100, 2, 3, 4), 200);
    for (const char* broken : {"return p *;", "return q;", "}", "} double f() {"}) {
        sim->Set("BottomShearStressFormula", broken);
        const bool compiled = std::string(broken) == "} double f() {";   // odd, but it compiles
        EXPECT_EQ(Said("syntax errors in formula!"), !compiled) << broken;
        EXPECT_EQ(sim->Formulas().shear == nullptr, !compiled) << broken;
    }
    sim->Set("BottomShearStressFormula", "return (p;");
    EXPECT_EQ(sim->Formulas().shear, nullptr);
    EXPECT_EQ(Text("BottomShearStressFormula"), "} double f() {");
    EXPECT_FALSE(HasLaw());
    EXPECT_EQ(qvt_sci_NamespaceParent(qvt_sci_NamespaceGetCurrent()), nullptr) << "the language is left at its root";
}

// The stresses in the snow by the two circles of Mohr through the stress on the bed, (1, tan delta), that touch the
// line of internal friction: the other end of the circle's diameter gives the pressure along the flow.
static void MohrPressures(double phi, double delta, double* active, double* passive)
{
    const double tanDelta = std::tan(delta), sinPhi = std::sin(phi);
    const double b = 1 / (std::cos(phi) * std::cos(phi));   // (c - 1)^2 + tan^2 delta = c^2 sin^2 phi, for the centre c
    const double root = std::sqrt(b * b - b * (1 + tanDelta * tanDelta));
    EXPECT_NEAR((b - root - 1) * (b - root - 1) + tanDelta * tanDelta, (b - root) * (b - root) * sinPhi * sinPhi,
                1e-12);
    *active = 2 * (b - root) - 1;
    *passive = 2 * (b + root) - 1;
}

TEST_F(SW_Friction, EarthPressureIsThatOfMohrsCircles)
{
    const auto across = [](double along, double delta,
                           int sign) {   // principal stresses of the tensor along, 1, tan delta
        const double mean = (along + 1) / 2, half = std::hypot((1 - along) / 2, std::tan(delta));
        return mean + sign * half;
    };
    for (const auto& [phi, delta] : {std::pair(35.0, 16.0), std::pair(40.0, 25.0), std::pair(30.0, 0.0)}) {
        Set({{"InternalFrictionAngle", AK_String(phi, "%g").c_str()},
             {"BedFrictionAngle", AK_String(delta, "%g").c_str()}});
        sim->ComputeEarthPressureCoefficients();
        double active, passive;
        const double d = delta * M_PI / 180;
        MohrPressures(phi * M_PI / 180, d, &active, &passive);
        const double expected[] = {active,
                                   passive,
                                   across(active, d, -1),
                                   across(active, d, 1),
                                   across(passive, d, -1),
                                   across(passive, d, 1)};
        for (int i = 0; i < 6; ++i)
            EXPECT_NEAR(double(SW_Simulation::_earthPressureCoefficients[i]), expected[i], 1e-5) << i;
        char text[300];
        std::snprintf(text, sizeof text,
                      "k_x_act:%g, k_x_pas:%g, k_y_act_x_act:%g, k_y_act_x_pas:%g, k_y_pas_x_act:%g, k_y_pas_x_pas:%g",
                      double(float(expected[0])), double(float(expected[1])), double(float(expected[2])),
                      double(float(expected[4])), double(float(expected[3])), double(float(expected[5])));
        EXPECT_EQ(Text("EarthPressureCoefficients"), text);
    }
}

TEST_F(SW_Friction, ABedThatIsRougherThanTheSnowRaisesTheInternalAngleWhereItMatters)
{
    Set({{"InternalFrictionAngle", "10"}, {"BedFrictionAngle", "20"}, {"FrictionType", "Nassschnee"}});
    sim->ComputeEarthPressureCoefficients();
    EXPECT_EQ(Text("InternalFrictionAngle"), "10");
    sim->Set("FrictionType", "Chezy + Mohr-Coulomb");
    sim->ComputeEarthPressureCoefficients();
    EXPECT_EQ(Text("InternalFrictionAngle"), "20");
    EXPECT_TRUE(Said("WARNING: internal friction angle cannot be smaller than bed friction angle!"));
    EXPECT_FLOAT_EQ(SW_Simulation::_earthPressureCoefficients[0], SW_Simulation::_earthPressureCoefficients[1]);
}
