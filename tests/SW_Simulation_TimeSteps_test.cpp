// Time-step files: names, the layout byte for byte, what comes back, hostile files, the files of a directory.

#include "SW_Simulation_Fixture.h"

#include <climits>
#include <cstring>
#include <set>

namespace {

/// Bytes of a record, put together by hand.
class Bytes {
public:
    Bytes& Text(const std::string& text) { return Int(int(text.size())).Raw(text.data(), text.size()); }
    Bytes& Int(int value) { return Raw(&value, sizeof value); }
    Bytes& Double(double value) { return Raw(&value, sizeof value); }
    Bytes& Floats(std::initializer_list<float> values)
    {
        Text("SW_ScalarField:v0").Int(int(values.size()));
        for (float value : values) Raw(&value, sizeof value);
        return *this;
    }
    Bytes& Zeros(int n)
    {
        Text("SW_ScalarField:v0").Int(n);
        bytes.append(4 * std::size_t(n), '\0');
        return *this;
    }
    Bytes& Vectors(std::initializer_list<AK_Vec> values)
    {
        Int(int(values.size()));
        for (const AK_Vec& v : values) Double(v.x).Double(v.y).Double(v.z);
        return *this;
    }
    std::string bytes;

private:
    Bytes& Raw(const void* from, std::size_t n)
    {
        bytes.append(static_cast<const char*>(from), n);
        return *this;
    }
};

}   // namespace

class SW_Simulation_TimeSteps : public SimulationTest {
protected:
    SW_Simulation_TimeSteps() { sim->ProjectDir(directory.Path()); }

    AK_String Path(const char* name) const { return directory / (std::string(name) + ".TimeStep").c_str(); }

    /// Two cells of 10 m, two particles with all that a particle can have.
    void MakeState()
    {
        OnMesh(2, 1, 10, Flat);
        PlaceParticle({5, 5}, 4000, {1, 2, 3}, 10);
        PlaceParticle({15, 2}, 1000, {4, 0, 0}, 20);
        sim->Particles().tag.Fill(2, 0);
        sim->Particles().tag[1] = 7;
        Part("EntrainmentMass")._values[1] = 5;
        Part("EntrainmentEnthalpy")._values[0] = -20;
        sim->UpdateFields(2.5f);   // s: arrival
    }

    /// Whatever was loaded: every list has the length that the others rely on.
    void ExpectSound(const std::string& why)
    {
        const SW_Particles& particles = sim->Particles();
        const int n = particles.NumParticles();
        ASSERT_EQ(particles.Position().NumVertices(), n) << why;
        ASSERT_EQ(particles.Mass()._values.Size(), n) << why;
        ASSERT_EQ(particles.Velocity()._values.Size(), n) << why;
        ASSERT_EQ(particles.TotalEnthalpy()._values.Size(), n) << why;
        ASSERT_TRUE(particles.tag.Size() == 0 || particles.tag.Size() == n) << why;
        for (const char* field : {"FlowDepth", "PeakFlowDepth", "DynamicPeakPressure", "FrontArrivalTime"})
            ASSERT_EQ(Part(field)._values.Size(), mesh->NumVertices()) << why;
        for (const char* field : {"EntrainmentMass", "EntrainmentEnthalpy"})
            ASSERT_EQ(Part(field)._values.Size(), mesh->NumCells()) << why;
    }
};

// ----------------------------------------------------------------------------------------------------------------
// Names
// ----------------------------------------------------------------------------------------------------------------

TEST_F(SW_Simulation_TimeSteps, NamesSortByTime)
{
    const struct {
        double t;
        const char* name;
    } cases[] = {{0, "at_0000000.0000"}, {105, "at_0000105.0000"}, {0.30000000000000004, "at_0000000.3000"}};
    for (const auto& c : cases) {
        EXPECT_EQ(SW_Simulation::TimeStepFileName(c.t), c.name);
        EXPECT_NEAR(SW_Simulation::TimeStepFromName(c.name), c.t, 1e-4);
    }
    for (const char* other : {"", "notes", "at_", "at_x"}) EXPECT_EQ(SW_Simulation::TimeStepFromName(other), -1.0);
}

// ----------------------------------------------------------------------------------------------------------------
// The file
// ----------------------------------------------------------------------------------------------------------------

TEST_F(SW_Simulation_TimeSteps, TheFileIsWrittenAsDescribed)
{
    MakeState();
    sim->Set("SaveTimeStep", "");
    ASSERT_EQ(AK_Object::_execStatus, "");
    Bytes file;
    file.Text("SW_Simulation::TimeStep:v0").Text("SW_Simulation:v1").Double(0).Double(0);
    file.Text("particles").Text("SW_Particles:v0").Int(2);
    file.bytes += std::string("\0\7", 2);
    file.Text("particles:Position").Text("SW_Mesh:v1").Int(2).Int(0).Int(0);
    file.Vectors({{5, 5, 1000}, {15, 2, 1000}}).Int(0);
    file.Text("particles:Velocity").Text("SW_VectorField:v0").Vectors({{1, 2, 3}, {4, 0, 0}});
    file.Text("particles:Mass").Floats({4000, 1000});
    // What the fields hold is the business of other tests.
    const auto field = [&](const char* id) {
        file.Zeros(6);
        const AK_List<float>& values = Part(id)._values;
        std::memcpy(file.bytes.data() + file.bytes.size() - 24, values.Data(), 24);
    };
    file.Text("peakDepth"), field("PeakFlowDepth");
    file.Text("dynPeakPressure"), field("DynamicPeakPressure");
    file.Text("peakPressPerWidth"), field("PeakForcePerWidth");
    file.Text("peakTorquePerWidth"), field("PeakTorquePerWidth");
    file.Text("frontArrivalTime"), field("FrontArrivalTime");
    file.Text("entrainmentMass").Floats({0, 5});
    file.Text("SW_Simulation::TimeStep:end");
    file.Text("particles:TotalEnthalpy").Floats({10, 20});
    file.Text("entrainmentEnthalpy").Floats({-20, 0});
    file.Text("SW_Simulation_Enthalpy::TimeStep:end");
    file.Text("SW_Simulation:MassPerParticle").Double(Number("MassPerParticle"));
    EXPECT_EQ(FileBytes(Path("at_0000000.0000")), file.bytes);
    EXPECT_EQ(Joined(AK_System::FilesList(directory.Path(), "")).find(".tmp"), std::string::npos);
}

TEST_F(SW_Simulation_TimeSteps, AStateComesBack)
{
    MakeState();
    sim->SaveTimeStep("");
    const std::string bytes = FileBytes(Path("at_0000000.0000"));
    const AK_List<float> depth = Part("FlowDepth")._values;
    sim->Particles().Clear();
    for (float& peak : Part("PeakFlowDepth")._values) peak = 9;
    sim->UpdateFields(0);
    Messages();

    sim->Set("LoadTimeStep", "at_0000000.0000");
    EXPECT_EQ(AK_Object::_execStatus, "");
    EXPECT_TRUE(Said("loading time step data from "));
    EXPECT_EQ(Text("CurrentTimeStep"), "at_0000000.0000");
    ExpectSound("loaded");
    EXPECT_EQ(sim->Particles().NumParticles(), 2);
    EXPECT_EQ(sim->Particles().cell[1], 1);
    EXPECT_EQ(sim->Particles().tag[1], 7);
    for (int i = 0; i < depth.Size(); ++i) EXPECT_EQ(Part("FlowDepth")._values[i], depth[i]) << "rebuilt, vertex " << i;
    sim->SaveTimeStep("");
    EXPECT_EQ(FileBytes(Path("at_0000000.0000")), bytes);
}

TEST_F(SW_Simulation_TimeSteps, OlderAndOtherwiseOrderedFilesLoad)
{
    MakeState();
    sim->SaveTimeStep("");
    const std::string whole = FileBytes(Path("at_0000000.0000"));
    const auto at = [&](const char* tag) { return whole.find(tag) - 4; };
    const std::string end = "SW_Simulation::TimeStep:end";
    const std::size_t endOfBasics = at(end.c_str()) + 4 + end.size();

    Part("EntrainmentEnthalpy")._values[0] = -33;
    WriteFile(Path("old"), whole.substr(0, endOfBasics));
    sim->LoadTimeStep("old");
    EXPECT_EQ(Text("CurrentTimeStep"), "old");
    EXPECT_EQ(Part("EntrainmentEnthalpy")._values[0], -33) << "as it was";
    EXPECT_EQ(sim->Particles().TotalEnthalpy()._values[1], 20) << "as it was";

    // The masses before the positions, and the field that is read only.
    const std::string head = whole.substr(0, at("particles:Position"));
    const std::string position = whole.substr(head.size(), at("particles:Velocity") - head.size());
    const std::string velocity =
        whole.substr(at("particles:Velocity"), at("particles:Mass") - at("particles:Velocity"));
    Bytes pressure;
    pressure.Text("bottomPressure").Zeros(6);
    WriteFile(Path("other"), head + velocity + pressure.bytes + position + whole.substr(at("particles:Mass")));
    sim->LoadTimeStep("other");
    EXPECT_EQ(Text("CurrentTimeStep"), "other");
    sim->SaveTimeStep("");

    // A record of the simulation without the energy.
    Bytes v0;
    v0.Text("SW_Simulation::TimeStep:v0").Text("SW_Simulation:v0").Double(2);
    WriteFile(Path("v0"), v0.bytes + whole.substr(at("particles")));
    sim->LoadTimeStep("v0");
    EXPECT_EQ(Number("CurrentTime"), 2);
}

TEST_F(SW_Simulation_TimeSteps, AFileThatIsNoneLeavesAValidSimulation)
{
    MakeState();
    sim->SaveTimeStep("");
    const std::string whole = FileBytes(Path("at_0000000.0000"));
    const auto load = [&](const std::string& bytes, const std::string& why) {
        WriteFile(Path("x"), bytes);
        AK_Object::_execStatus = "";
        sim->LoadTimeStep("x");
        ExpectSound(why);
        Messages();
        return std::string(AK_Object::_execStatus.c_str());
    };
    const std::string basic = "Viewer/Project/Simulations/avalanche cannot load basic data";
    const std::string data = "Viewer/Project/Simulations/avalanche cannot load timestep data";

    std::set<std::size_t> endsOfBlocks;   // where files of older programs end
    for (const std::string end : {"SW_Simulation::TimeStep:end", "SW_Simulation_Enthalpy::TimeStep:end"})
        endsOfBlocks.insert(whole.find(end) + end.size());
    for (std::size_t n = 0; n < whole.size(); ++n) {
        const std::string status = load(whole.substr(0, n), "prefix of " + std::to_string(n));
        EXPECT_EQ(status, n < 30 ? basic : endsOfBlocks.count(n) ? "" : data) << "prefix of " << n;
    }
    for (std::size_t n = 0; n < whole.size(); ++n)
        for (char flip : {char(0xff), char(0x01), char(0x80)}) {
            std::string bytes = whole;
            bytes[n] = char(bytes[n] ^ flip);
            load(bytes, "byte " + std::to_string(n));
        }

    const auto tagged = [&](const char* tag) {
        Bytes start;
        start.Text("SW_Simulation::TimeStep:v0").Text("SW_Simulation:v1").Double(0).Double(0);
        return start.Text(tag);
    };
    const struct {
        const char* why;
        std::string bytes;
        std::string status;
    } cases[] = {
        {"no file", "", basic},
        {"another file", whole.substr(30), basic},
        {"an unknown tag", tagged("particles:Colour").bytes, data},
        {"a count without bytes", tagged("peakDepth").Text("SW_ScalarField:v0").Int(INT_MAX).bytes, data},
        {"a negative count", tagged("peakDepth").Text("SW_ScalarField:v0").Int(-1).bytes, data},
        {"another record", tagged("peakDepth").Text("SW_VectorField:v0").Int(0).bytes, data},
        {"fields of another mesh", tagged("peakDepth").Zeros(7).Text("SW_Simulation::TimeStep:end").bytes, data},
        {"masses without places", tagged("particles:Mass").Floats({1, 2, 3}).Text("SW_Simulation::TimeStep:end").bytes,
         data},
        {"a mass that is no number",
         [&] {
             std::string bytes = whole;
             const float nan = std::nanf("");
             std::memcpy(bytes.data() + bytes.find("particles:Mass") + 14 + 21 + 4, &nan, 4);
             return bytes;
         }(),
         data},
        {"a time that is no number",
         Bytes()
             .Text("SW_Simulation::TimeStep:v0")
             .Text("SW_Simulation:v1")
             .Double(std::nan(""))
             .Double(0)
             .Text("SW_Simulation::TimeStep:end")
             .bytes,
         data},
    };
    for (const auto& c : cases) EXPECT_EQ(load(c.bytes, c.why), c.status) << c.why;
    EXPECT_EQ(sim->Particles().NumParticles(), 0) << "no mixture of two states";
    EXPECT_EQ(load(whole, "whole"), "");
    EXPECT_EQ(sim->Particles().NumParticles(), 2);
}

TEST_F(SW_Simulation_TimeSteps, WhatCannotBeWrittenIsTold)
{
    MakeState();
    sim->ProjectDir("");
    sim->Set("SaveTimeStep", "");
    EXPECT_EQ(AK_Object::_execStatus, "");   // nowhere to write to

    sim->ProjectDir(directory / "gone");
    sim->Set("SaveTimeStep", "");
    EXPECT_EQ(AK_Object::_execStatus, AK_String("Viewer/Project/Simulations/avalanche cannot open ") +
                                          (directory / "gone/at_0000000.0000.TimeStep"));
    sim->Set("LoadTimeStep", "at_0000000.0000");
    EXPECT_TRUE(Said("INFO:cannot open "));
    EXPECT_EQ(AK_Object::_execStatus, "");

    if (!AK_System::FileExists("/dev/full")) GTEST_SKIP();
    sim->ProjectDir(directory.Path());
    ASSERT_EQ(symlink("/dev/full", Path("at_0000000.0000").c_str()), 0);
    sim->Set("SaveTimeStep", "");
    EXPECT_EQ(AK_Object::_execStatus, "Viewer/Project/Simulations/avalanche cannot save timestep data");
    EXPECT_EQ(Text("CurrentTimeStep"), "");
}

// ----------------------------------------------------------------------------------------------------------------
// The steps of a directory
// ----------------------------------------------------------------------------------------------------------------

class SW_Simulation_TimeStepsList : public SW_Simulation_TimeSteps {
protected:
    /// Steps at 0, 5, 10 s; the state is that of 10 s.
    SW_Simulation_TimeStepsList()
    {
        MakeState();
        for (const char* t : {"0", "5", "10"}) {
            Bytes v0;
            v0.Text("SW_Simulation::TimeStep:v0").Text("SW_Simulation:v1").Double(std::atof(t)).Double(0);
            sim->SaveTimeStep("");
            const std::string whole = FileBytes(Path("at_0000000.0000"));
            WriteFile(Path(SW_Simulation::TimeStepFileName(std::atof(t)).c_str()),
                      v0.bytes + whole.substr(v0.bytes.size()));
        }
        sim->LoadLastTimeStep();
        WriteFile(directory / "at_0000020.0000.TimeStep.tmp", "half of a step");
    }

    std::string Files() const { return Joined(AK_System::FilesList(directory.Path(), "TimeStep")); }
};

TEST_F(SW_Simulation_TimeStepsList, IsWalkedInTheOrderOfTime)
{
    EXPECT_EQ(Text("TimeStepsList"), "at_0000000.0000%AK_SEP%at_0000005.0000%AK_SEP%at_0000010.0000%AK_SEP%");
    const struct {
        const char* command;
        const char* value;
        double time;
        const char *prev, *next;
    } steps[] = {{"LoadLastTimeStep", "", 10, "w", "-"}, {"LoadPrevTimeStep", "", 5, "w", "w"},
                 {"LoadPrevTimeStep", "", 0, "-", "w"},  {"LoadPrevTimeStep", "", 0, "-", "w"},
                 {"LoadNextTimeStep", "", 5, "w", "w"},  {"LoadFirstTimeStep", "", 0, "-", "w"},
                 {"Time", "10", 10, "w", "-"},           {"LoadNextTimeStep", "", 10, "w", "-"}};
    for (const auto& step : steps) {
        sim->Set(step.command, step.value);
        EXPECT_EQ(Number("CurrentTime"), step.time) << step.command;
        EXPECT_EQ(Text("PrevTimeStepVis"), step.prev) << step.command;
        EXPECT_EQ(Text("NextTimeStepVis"), step.next) << step.command;
    }
}

TEST_F(SW_Simulation_TimeStepsList, IsCutBehindTheStateByARunThatGoesOn)
{
    Set({{"Time", "5"}, {"DeltaT", "0.1"}});
    WriteFile(Path("at_0000005.0499"), "within half a step");
    WriteFile(Path("notes"), "");
    sim->RemoveObsoleteTimeStepFiles();
    EXPECT_EQ(Files(), "at_0000000.0000.TimeStep|at_0000005.0000.TimeStep|at_0000005.0499.TimeStep|notes.TimeStep|");
}

TEST_F(SW_Simulation_TimeStepsList, IsDeletedButForTheLastOrWhole)
{
    sim->Set("LoadFirstTimeStep", "");
    sim->Set("DeleteTimesteps", "except last");
    EXPECT_EQ(Files(), "at_0000010.0000.TimeStep|");
    EXPECT_EQ(Number("CurrentTime"), 10) << "the last one is loaded first";
    EXPECT_TRUE(Said("removing "));
    sim->Set("DeleteTimesteps", "all");
    EXPECT_EQ(Files(), "");
    sim->Set("DeleteTimesteps", "all");
    EXPECT_EQ(AK_Object::_execStatus, "");

    sim->SaveTimeStep("");
    WriteFile(Path("at_0000099.0000"), "broken");
    sim->Set("DeleteTimesteps", "except last");
    EXPECT_EQ(Files(), "at_0000010.0000.TimeStep|at_0000099.0000.TimeStep|") << "the last whole one is not given up";
}

TEST_F(SW_Simulation_TimeStepsList, GoesAlongWithAProjectThatIsSavedElsewhere)
{
    WriteFile(directory / "start.log", "log");
    sim->Set("SaveProject", "");
    Messages();
    const AK_String other = directory / "other";
    sim->Set("SaveProjectAs", other);
    EXPECT_EQ(AK_Object::_execStatus, "");
    EXPECT_TRUE(Said("copying "));
    for (const char* file : {"at_0000000.0000.TimeStep", "at_0000005.0000.TimeStep", "at_0000010.0000.TimeStep"})
        EXPECT_EQ(FileBytes(other + "/" + file), FileBytes(directory / file)) << file;
    EXPECT_EQ(FileBytes(other + "/start.log"), "log");
    EXPECT_EQ(Text("Status"), "finished");
    EXPECT_EQ(FileBytes(other + "/.simulation_status"), "finished\n");
    sim->Set("SaveProject", "");
    EXPECT_FALSE(Said("copying ")) << "they are there already";
}
