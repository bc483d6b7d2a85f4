// The simulation in its project: attributes, saving and loading, copies, batches, cleanup; its mesh.

#include "SW_Simulation_Fixture.h"

#include <set>

namespace {

class SW_SimulationProject : public SimulationTest {
protected:
    SW_SimulationProject() { OnMesh(20, 20, 5, Incline(30)); }

    // What the description of the class says can be saved, with a value of the simulation: "name=value".
    static std::set<std::string> SavedAttributes(const AK_Object& object)
    {
        std::set<std::string> saved;
        Collect(object, object.Attributes(), saved);
        return saved;
    }

    static void Collect(const AK_Object& object, const AK_Attribute* node, std::set<std::string>& saved)
    {
        const AK_Attribute* set = node->Component("set");
        if (node->Component("volatile") || node->_cmd == "Id") return;
        if (set && !node->_cmd.IsEmpty()) saved.insert((set->_cmd + "=" + object.Get(node->_cmd)).c_str());
        for (const AK_Attribute* component : node->_components) Collect(object, component, saved);
    }

    // By the record of a saved state.
    void SetPeakKineticEnergy(double energy)
    {
        AK_Stream out(directory / "record", "wb");
        out.Write(AK_String("SW_Simulation:v1"));
        out.Write(0.0);
        out.Write(energy);
        out.Close();
        AK_Stream in(directory / "record", "rb");
        EXPECT_EQ(sim->LoadDataFrom(in), 0);
    }

    // Another value for everything that can be set and saved, and a scenario.
    void ChangeEverything()
    {
        const std::set<std::string> kept = {"Mesh",
                                            "FrictionType",
                                            "FormulaParameters",
                                            "LoadTimeStep",
                                            "Active",
                                            "BottomShearStressFormula",
                                            "ReportCommands",
                                            "SuppressCreatingComponents"};
        int number = 2;
        for (const std::string& attribute : SavedAttributes(*sim)) {
            const std::string name = attribute.substr(0, attribute.find('='));
            if (!kept.count(name)) sim->Set(name.c_str(), AK_String(++number, "%d"));
        }
        Set({{"FrictionType", "voellmy"},
             {"FormulaParameters", "mu=0.31;xi=777"},
             {"Remark", "two\nlines, \"quoted\""},
             {"BottomShearStressFormula", "return 3 * p;"},
             {"CleanupBehavior", "remove all time steps"}});
        Release({20, 20}, {40, 40}, 1.5);
        Snow(sim->EntrainmentAreas(), "entrainment", {50, 20}, {90, 40}, 0.3);
        Snow(sim->SecondaryReleaseAreas(), "held", {50, 50}, {60, 60}, 1);
        sim->ResistanceAreas().Create("forest");
        sim->ResistanceAreas().Area(0)->SetLine(Rectangle(60, 20, 80, 60));
        sim->ResistanceAreas().Area(0)->Set("Spacing", "7");
        sim->WallLines().Create("wall");
        sim->WallLines().Wall(0)->SetLine(Ring({{70, 10, 0}, {70, 90, 0}}));
        sim->WallLines().Wall(0)->Set("Heights", "990%AK_SEP%991%AK_SEP%");
        sim->SourceLines().Set("Create", "source");
        sim->SourceLines().Line(0)->Set("MassFlow", "1234");
    }

    static void ExpectSameScenario(const SW_Simulation& a, const SW_Simulation& b)
    {
        for (const char* id : {"ReleaseAreas", "EntrainmentAreas", "SecondaryReleaseAreas", "ResistanceAreas",
                               "WallLines", "SourceLines"}) {
            const AK_Object& left = *a.Component(id);
            const AK_Object& right = *b.Component(id);
            ASSERT_EQ(left.NumComponents(), right.NumComponents()) << id;
            ASSERT_EQ(left.NumComponents(), 1) << id;
            EXPECT_EQ(SavedAttributes(*left.ComponentAt(0)), SavedAttributes(*right.ComponentAt(0))) << id;
            const auto* line = dynamic_cast<const SW_Polyline*>(left.ComponentAt(0));
            if (!line) continue;
            const auto* other = static_cast<const SW_Polyline*>(right.ComponentAt(0));
            ASSERT_EQ(line->NumVertices(), other->NumVertices()) << id;
            for (int i = 0; i < line->NumVertices(); ++i)
                EXPECT_EQ(Length(line->Points()[i] - other->Points()[i]), 0) << id;
        }
        EXPECT_GT(b.ReleaseMass(), 0);
        EXPECT_EQ(a.ReleaseMass(), b.ReleaseMass());
    }
};

}   // namespace

TEST_F(SW_SimulationProject, HasItsPartsInTheirOrder)
{
    std::string parts;
    for (int i = 0; i < sim->NumComponents(); ++i) parts += std::string(sim->ComponentAt(i)->Id().c_str()) + " ";
    EXPECT_EQ(parts, "ReleaseAreas EntrainmentAreas SecondaryReleaseAreas ResistanceAreas WallLines SourceLines "
                     "FlowDepth PeakFlowDepth Velocity DynamicPeakPressure PeakForcePerWidth PeakTorquePerWidth "
                     "FrontArrivalTime EntrainmentMass EntrainmentEnthalpy Particles ");
    EXPECT_STREQ(sim->Type().c_str(), "ShallowWaterSimulation");
    for (const char* field : {"FlowDepth", "FrontArrivalTime"})
        EXPECT_EQ(Part(field)._values.Size(), mesh->NumVertices());
    for (const char* store : {"EntrainmentMass", "EntrainmentEnthalpy"})
        EXPECT_EQ(Part(store)._values.Size(), mesh->NumCells());
}

TEST_F(SW_SimulationProject, ComesBackFromDiscAsItWas)
{
    ChangeEverything();
    const std::set<std::string> saved = SavedAttributes(*sim);
    EXPECT_GT(saved.size(), 75u);
    root.Set("SaveProjectAs", directory / "p");
    ASSERT_EQ(AK_Object::_execStatus, "");

    auto* loaded = AddedTo(*simulations, new SW_Simulation("loaded", simulations));
    loaded->Set("LoadProject", directory / "p/Project/Simulations/avalanche");
    ASSERT_EQ(AK_Object::_execStatus, "");
    EXPECT_EQ(SavedAttributes(*loaded), saved);
    EXPECT_EQ(loaded->Mesh(), mesh);
    EXPECT_NE(loaded->Formulas().tau, nullptr);
    EXPECT_STREQ(loaded->Get("FormulaParameters").c_str(), "mu=0.31;xi=777");
    ExpectSameScenario(*sim, *loaded);
}

TEST_F(SW_SimulationProject, AnInputThatIsAVariableIsSavedWhenItChanges)
{
    root.Set("SaveProjectAs", directory / "p");
    const AK_String file = directory / "p/Project/Simulations/avalanche/ShallowWaterSimulation.atr";
    for (const char* name : {"$n_threads", "$stop_crit", "$source_point", "$autosave"}) {
        sim->Set(name, "12345");
        root.Set("SaveProject", "");
        EXPECT_NE(FileBytes(file).find(std::string("\"") + name + "\", \"12345\""), std::string::npos) << name;
    }
    const std::string before = FileBytes(file);
    for (const char* name : {"$endITC", "$DepositionError", "$animationFiles"}) {
        sim->Set(name, "777");
        EXPECT_EQ(sim->Get(name), "777");
        root.Set("SaveProject", "");
        EXPECT_EQ(FileBytes(file), before) << name << " is written by runs";
    }
    EXPECT_LT(before.find("\"Mesh\""), before.find("\"FrictionType\""));
    EXPECT_LT(before.find("\"FrictionType\""), before.find("\"FormulaParameters\""));
    EXPECT_LT(before.find("\"AnimationStepDelay\""), before.find("\"LoadTimeStep\""));
    EXPECT_LT(before.find("\"PsaNumMPI\""), before.find("\"LoadTimeStep\""));
}

TEST_F(SW_SimulationProject, ACloneHasParametersAndScenarioAndNoState)
{
    ChangeEverything();
    sim->Set("MassPerParticleDeterminationMethod", "delta-depth per particle");
    sim->Set("DeltaDepthPerParticle", "0.2");
    ASSERT_TRUE(sim->Initialize());
    ASSERT_GT(sim->Particles().NumParticles(), 0);
    simulations->Set("CloneSimulation", "avalanche");
    auto* clone = dynamic_cast<SW_Simulation*>(simulations->Component("avalanche_cloned"));
    ASSERT_TRUE(clone);
    EXPECT_EQ(SavedAttributes(*clone), SavedAttributes(*sim));
    ExpectSameScenario(*sim, *clone);
    EXPECT_EQ(clone->Mesh(), mesh);
    EXPECT_EQ(clone->Particles().NumParticles(), 0);
    EXPECT_NE(clone->Formulas().tau, nullptr);
    EXPECT_NE(clone->Formulas().tau, sim->Formulas().tau);
    sim->Set("FormulaParameters", "mu=0.5;xi=1");
    EXPECT_STREQ(clone->Get("FormulaParameters").c_str(), "mu=0.31;xi=777");
    EXPECT_DEATH(simulations->Set("CloneSimulation", "nobody"), "");
}

TEST_F(SW_SimulationProject, TheMeshIsFoundByNameOrPathAndTakesWhatHasNoneOfItsOwn)
{
    SW_Mesh* other = AddedTo(*meshes, CartesianMesh(10, 10, 10, Flat).release());
    other->Set("Id", "other");
    SW_InitialCondition& area = Release({20, 20}, {40, 40}, 1);
    sim->WallLines().Create("wall");
    sim->WallLines().Wall(0)->SetLine(Ring({{10, 10, 0}, {20, 20, 0}}));
    sim->WallLines().Wall(0)->SetBaseMeshName("");
    ASSERT_TRUE(sim->Initialize());
    ASSERT_GT(sim->Particles().NumParticles(), 0);
    EXPECT_EQ(Text("GetMeshNamesList"), "../../DHMs/terrain%AK_SEP%../../DHMs/other%AK_SEP%");
    sim->Set("Mesh", "../../DHMs/other");
    EXPECT_EQ(sim->Mesh(), other);
    EXPECT_EQ(Part("FlowDepth")._values.Size(), other->NumVertices());
    EXPECT_EQ(sim->Particles().NumParticles(), 0) << "they stood in cells of another mesh";
    EXPECT_EQ(area.BaseMesh(), mesh);
    EXPECT_EQ(sim->WallLines().Wall(0)->BaseMesh(), other);
    Messages();
    sim->Set("Mesh", "nowhere");
    EXPECT_TRUE(Said("WARNING: simulation avalanche finds no mesh 'nowhere'"));
    EXPECT_EQ(sim->Mesh(), nullptr);
    EXPECT_EQ(Text("Mesh"), "nowhere");
    EXPECT_EQ(Text("RunVis"), "r");
    EXPECT_EQ(Part("FlowDepth")._values.Size(), 0);
    for (const char* text : {"terrain", "Project/DHMs/terrain", "../../DHMs/terrain"}) {
        sim->Set("Mesh", text);
        EXPECT_EQ(sim->Mesh(), mesh) << text;
        EXPECT_EQ(Text("Mesh"), "../../DHMs/terrain");
    }
}

TEST_F(SW_SimulationProject, AMeshThatIsDeletedOrReadAnewLeavesNothingBehindThatPointsToIt)
{
    Release({20, 20}, {40, 40}, 1);
    ASSERT_TRUE(sim->Initialize());
    const auto larger = CartesianMesh(30, 30, 5, Flat);
    mesh->_x = larger->_x;
    mesh->SetCartesianCells(larger->Grid());
    Finish(*mesh);
    sim->Set("EndTime", "0");
    sim->Set("Continue", "");
    EXPECT_TRUE(Said("WARNING: the mesh of simulation avalanche has changed"));
    EXPECT_EQ(Part("FlowDepth")._values.Size(), mesh->NumVertices());

    ASSERT_GT(sim->Particles().NumParticles(), 0);
    meshes->Set("DeleteComponent", "terrain");
    EXPECT_EQ(sim->Mesh(), nullptr);
    Messages();
    sim->Set("Run", "");
    EXPECT_TRUE(Said("INFO: simulation avalanche has no valid mesh assigned!"));
    project->Set("Update", "");
    Part("FlowDepth").Set("ValueAtPoint", "30 30");
    EXPECT_EQ(Text("EntrainableMass"), "0");
}

TEST_F(SW_SimulationProject, CleanupDoesWhatEachSimulationWants)
{
    root.Set("SaveProjectAs", directory / "p");
    const struct {
        const char* behavior;
        size_t steps;
        bool exists;
    } cases[] = {{"keep all time steps", 2, true}, {"delete entirely", 0, false},      {"keep last time step", 1, true},
                 {"delete entirely", 0, false},    {"remove all time steps", 0, true}, {"nonsense", 2, true}};
    int number = 0;
    for (const auto& c : cases) {
        const AK_String id = AK_String(number++, "s%d");
        simulations->Set("CreateSimulation", id);
        auto* simulation = static_cast<SW_Simulation*>(simulations->Component(id));
        simulation->Set("Mesh", "terrain");
        simulation->Set("CleanupBehavior", c.behavior);
        root.Set("SaveProject", "");
        simulation->Set("SaveTimeStep", "");
        AK_System::CpyFile(simulation->ProjectDir() + "/at_0000000.0000.TimeStep",
                           simulation->ProjectDir() + "/at_0000005.0000.TimeStep");
    }
    simulations->Set("Cleanup", "");
    number = 0;
    for (const auto& c : cases) {
        const AK_String id = AK_String(number++, "s%d");
        const AK_String dir = directory / "p/Project/Simulations/" + id;
        EXPECT_EQ(simulations->Component(id) != nullptr, c.exists) << c.behavior;
        EXPECT_EQ(AK_System::FileExists(dir), c.exists) << c.behavior;
        EXPECT_EQ(size_t(AK_System::FilesList(dir, "TimeStep").Size()), c.steps) << c.behavior;
    }
}

TEST_F(SW_SimulationProject, StartFilesAndBatchesNameTheirSimulations)
{
    simulations->Set("StartActive", "0=1");
    EXPECT_EQ(AK_Object::_execStatus, "project must be saved first");
    EXPECT_TRUE(Said("INFO: please save project first!"));
    const struct {
        const char* path;
        const char* status;
    } cases[] = {{"x/y", "invalid simulation path 'x/y' does not contain 'Simulations'"},
                 {"Simulations/y", "invalid simulation path 'Simulations/y' does not contain 'Project'"},
                 {"Project/Simulations/y", "object 'Project/Simulations/y' not found"}};
    for (const auto& c : cases) {
        simulations->Set("WriteStartMacroAndBat", c.path);
        EXPECT_EQ(AK_Object::_execStatus, c.status);
    }
    root.Set("SaveProjectAs", directory / "p");
    simulations->Set("CreateSimulation", "second");
    const std::string p = (directory / "p").c_str();
    static char program[] = "korvo";
    static char* arguments[] = {program, nullptr};
    AK_Object::_argv = arguments;
    AK_Object::_argc = 1;
    simulations->Set("WriteStartMacroAndBat", "Project/Simulations/avalanche");
    EXPECT_EQ(AK_Object::_execStatus, "");
    const std::string dir = p + "/Project/Simulations/avalanche/";
    EXPECT_EQ(FileBytes((dir + "start.macro").c_str()),
              "set(\"\", \"ProjectDir\", \"" + p + "\")\n" +
                  "set(\"Project/Simulations\", \"CreateSimulation\", \"avalanche\")\n"
                  "set(\"Project/Simulations/avalanche\", \"DeactivateLoadingPsaResults\", \"\")\n"
                  "set(\"Project/Simulations/avalanche\", \"LoadProject\", \"\")\n"
                  "set(\"Project/Simulations/avalanche\", \"Run\", \"\")\n");
    EXPECT_EQ(FileBytes((dir + "start.bat").c_str()),
              std::string("cd \"") + AK_System::CurrentWorkingDirectory().c_str() +
                  "\" || exit\n\"korvo\" -offscreen \"" + dir + "start.macro\" > \"" + dir + "start.log\"\n");

    simulations->Set("StartActive", "0=1;1=1");
    EXPECT_EQ(AK_Object::_execStatus,
              "start not possible because the following simulations are not ready to run:\nsecond\n");
    EXPECT_FALSE(AK_System::FileExists(directory / "p/Project/batch.bat"));
    simulations->Set("StartActive", "1=0;2=1");   // nobody: no batch
    EXPECT_FALSE(AK_System::FileExists(directory / "p/Project/batch.bat"));
    Release({20, 20}, {40, 40}, 1);
    static char nothing[] = "true";
    arguments[0] = nothing;
    simulations->Set("StartActive", "0=1");
    EXPECT_EQ(AK_Object::_execStatus, "");
    EXPECT_EQ(FileBytes(directory / "p/Project/batch.bat"),
              "\"true\" -offscreen \"" + dir + "start.macro\" > \"" + dir + "start.log\"\n");
}

TEST_F(SW_SimulationProject, AnAnimationGoesThroughTheSavedStepsFromTheLoadedOneOn)
{
    AK_Object* views =
        AddedTo(*AddedTo(root, new AK_Object("KeyViewSequences", nullptr)), new AK_Object("Views", nullptr));
    AddedTo(*views, new AK_Object("front", nullptr));
    EXPECT_EQ(Text("get_assigned_animation_view_options"), "none%AK_SEP%front%AK_SEP%");
    sim->Set("set_assigned_animation_view", "front");
    EXPECT_EQ(AK_Object::_execStatus, "no time step is loaded");
    root.Set("SaveProjectAs", directory / "p");
    sim->Set("SaveTimeStep", "");
    const std::string dir = std::string(sim->ProjectDir().c_str()) + "/at_";
    for (const char* time : {"0000005.0000", "0000010.0000", "0000015.0000"})
        AK_System::CpyFile((dir + "0000000.0000.TimeStep").c_str(), (dir + time + ".TimeStep").c_str());
    const auto loaded = [&] {
        std::string names;
        for (const std::string& message : Messages())
            if (message.rfind("loading time step data from ", 0) == 0)
                names += message.substr(message.rfind("at_") + 3, 7) + " ";
        return names;
    };
    const struct {
        const char* command;
        const char* increment;
        const char* first;
        const char* steps;
    } cases[] = {{"AnimateTimeSteps", "1", "", "0000000 0000005 0000010 0000015 "},
                 {"AnimateTimeSteps", "2", "at_0000000.0000", "0000000 0000010 "},
                 {"animate_with_assigned_views", "0", "at_0000000.0000", "0000000 0000005 0000010 0000015 "}};
    for (const auto& c : cases) {
        Set({{"AnimationStepIncrement", c.increment}, {"LoadTimeStep", c.first}, {"AnimationWriteImageFiles", "1"}});
        Messages();
        sim->Set(c.command, "");
        EXPECT_EQ(AK_Object::_execStatus, "");
        EXPECT_EQ(loaded(), c.steps);
        EXPECT_EQ(Text("$animationFiles"), "") << "no front end writes pictures here";
    }
    sim->Set("LoadTimeStep", "at_0000005.0000");
    sim->Set("set_assigned_animation_view", "front");
    EXPECT_EQ(Text("get_assigned_animation_view"), "front");
    EXPECT_EQ(Text("get_assigned_views"), "at_0000005.0000=front%AK_SEP%");
    sim->Set("LoadTimeStep", "at_0000000.0000");
    EXPECT_EQ(Text("get_assigned_animation_view"), "none");
    sim->Set("set_assigned_animation_view", "front");
    sim->Set("set_assigned_animation_view", "none");
    EXPECT_EQ(Text("$assigned_views"), "at_0000005.0000=front%AK_SEP%");
    sim->Set("clear_animation_views", "");
    EXPECT_EQ(Text("get_assigned_views"), "");
}

TEST_F(SW_SimulationProject, ARunStopsWhenTheFlowHasNearlyComeToRest)
{
    EXPECT_EQ(Text("stop_at_low_energy"), "") << "before a run";
    Release({20, 20}, {40, 40}, 1);
    sim->Initialize();
    const struct {
        double speed, peak;   // m/s, share of the energy at that speed
        bool stops;
    } cases[] = {{10, 1, false}, {10, 19.9, false}, {10, 20.1, true}, {0, 1, true}};
    for (const auto& c : cases) {
        sim->Particles().Velocity()._values.Fill(sim->Particles().NumParticles(), {10, 0, 0});
        const double energy = sim->Particles().TotalKineticEnergy();
        SetPeakKineticEnergy(energy * c.peak);
        sim->Particles().Velocity()._values.Fill(sim->Particles().NumParticles(), {c.speed, 0, 0});
        EXPECT_EQ(!Text("stop_at_low_energy").empty(), c.stops) << c.speed << " " << c.peak;
    }
}
