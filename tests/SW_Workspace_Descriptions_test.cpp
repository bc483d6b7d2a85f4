// The description files of all classes against the classes: what can be set is described in both languages, and what is
// described is answered.

#include "SW_Workspace.h"

#include "AK_Basic_TestTools.h"
#include "AK_Controller.h"
#include "AK_Group.h"
#include "SW_InitialCondition.h"
#include "SW_ResistanceArea.h"
#include "SW_Simulation.h"
#include "SW_Simulation_Container.h"
#include "SW_SourceLine.h"
#include "SW_WallLine.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

namespace {

/// A class of the program: an object of it, and its rows with those of its bases, its own first.
struct Described {
    const char* className;
    std::unique_ptr<AK_Object> object;
    std::vector<std::span<const AK_Row>> rows;
};

class Descriptions : public testing::Test {
protected:
    Descriptions()
    {
        setenv("HOME", directory.Path().c_str(), 1);
        AK_Object::SetAttributesDirectory(KORVO_SOURCE_DIR "/files/AK_Attributes");
        AK_Object::SetUserAttributesDirectory(directory.Path());
        Add<AK_TerminalController, AK_Controller, AK_Object>("Viewer");
        Add<SW_Workspace, AK_Object>("Project");
        Add<AK_Container, AK_Object>("DHMs");
        Add<AK_Group>("Group");
        Add<AK_UserObj, AK_Object>("User");
        Add<SW_InitialCondition, SW_Polygon, SW_Polyline, AK_VisObj3d, AK_VisibleObject, AK_Object>("Area");
        Add<SW_ResistanceArea, SW_Polygon, SW_Polyline, AK_VisObj3d, AK_VisibleObject, AK_Object>("Obstacles");
        Add<SW_WallLine, SW_Polyline, AK_VisObj3d, AK_VisibleObject, AK_Object>("Wall");
        Add<SW_SourceLine, AK_VisObj3d, AK_VisibleObject, AK_Object>("Source");
        Add<SW_InitialConditions, AK_Container, AK_Object>("ReleaseAreas");
        Add<SW_ResistanceAreas, AK_Container, AK_Object>("ResistanceAreas");
        Add<SW_WallLines, AK_Container, AK_Object>("WallLines");
        Add<SW_SourceLines, AK_Container, AK_Object>("SourceLines");
        Add<SW_Simulation, AK_Object>("avalanche");
        Add<SW_Simulations, AK_Container, AK_Object>("Simulations");
        Add<SW_PsaMeshes, AK_Container, AK_Object>("PsaMeshes");
    }

    template <class Class, class... Bases>
    void Add(const char* id)
    {
        classes.push_back({Class::className, std::make_unique<Class>(id, nullptr), {Class::Rows(), Bases::Rows()...}});
    }

    TemporaryDirectory directory;
    CaughtMessages messages;
    std::vector<Described> classes;
};

using Nodes = std::vector<const AK_Attribute*>;

void Collect(const AK_Attribute* node, Nodes& nodes)
{
    nodes.push_back(node);
    for (const AK_Attribute* component : node->_components) Collect(component, nodes);
}

// The nodes of a description that are attributes, operations or groups, and not properties of one.
Nodes Entries(const AK_Object& object)
{
    Nodes nodes, entries;
    Collect(object.Attributes(), nodes);
    for (const AK_Attribute* node : nodes)
        if (!node->Id(1).IsEmpty()) entries.push_back(node);
    return entries;
}

std::string Name(const AK_Attribute* node) { return node->_id.c_str(); }

bool CanBeSet(const Described& c, const AK_String& name)
{
    for (const auto& rows : c.rows)
        for (const AK_Row& row : rows)
            if (row.access.set && name == row.name) return true;
    return false;
}

// Answers of this kind exist for descriptions and front ends only.
bool IsHelper(const std::string& name)
{
    const auto endsWith = [&](const char* end) { return AK_String(name.c_str()).EndsWith(end); };
    return name.rfind("Vis", 0) == 0 || endsWith("Vis") || endsWith("Visibility") || endsWith("Options");
}

}   // namespace

TEST_F(Descriptions, HaveTextsInBothLanguagesForEveryEntry)
{
    for (const Described& c : classes) {
        SCOPED_TRACE(c.className);
        for (const AK_Attribute* node : Entries(*c.object)) {
            const AK_Attribute* doc = node->Component("doc");
            ASSERT_TRUE(doc) << Name(node);
            EXPECT_GT(doc->_cmd.Length(), 15) << Name(node);
            const AK_Attribute* german = doc->Component("german");
            ASSERT_TRUE(german) << Name(node);
            EXPECT_GT(german->_cmd.Length(), 15) << Name(node);
            EXPECT_FALSE(german->_cmd == doc->_cmd) << Name(node);
            ASSERT_TRUE(node->Component("german")) << Name(node);
            EXPECT_FALSE(node->Component("german")->_cmd.IsEmpty()) << Name(node);
        }
    }
}

TEST_F(Descriptions, NameOnlyWhatTheClassAnswers)
{
    for (const Described& c : classes) {
        SCOPED_TRACE(c.className);
        for (const AK_Attribute* node : Entries(*c.object)) {
            const AK_Attribute* set = node->Component("set");
            const AK_Attribute* options = node->Component("options");
            EXPECT_TRUE(node->_cmd.IsEmpty() || !(c.object->Get(node->_cmd) == ak_null)) << Name(node);
            EXPECT_TRUE(!set || CanBeSet(c, set->_cmd)) << Name(node);
            EXPECT_TRUE(!options || !(c.object->Get(options->_cmd) == ak_null)) << Name(node);
            if (const AK_Attribute* vis = node->Component("vis")) {
                const std::string answer = c.object->Get(vis->_cmd).c_str();
                EXPECT_TRUE(answer == "w" || answer == "r" || answer == "-") << Name(node) << ": " << answer;
            }
        }
    }
}

TEST_F(Descriptions, HoldEveryNameThatTheClassAnswers)
{
    for (const Described& c : classes) {
        SCOPED_TRACE(c.className);
        std::set<std::string> gets, sets;
        for (const AK_Attribute* node : Entries(*c.object)) {
            gets.insert(node->_cmd.c_str());
            sets.insert(node->SetCmd().c_str());
            if (const AK_Attribute* options = node->Component("options")) gets.insert(options->_cmd.c_str());
        }
        for (const auto& rows : c.rows)
            for (const AK_Row& row : rows) {
                EXPECT_TRUE(!row.access.set || sets.count(row.name)) << row.name << " can be set";
                EXPECT_TRUE(!row.access.get || IsHelper(row.name) || gets.count(row.name)) << row.name;
            }
    }
}

TEST_F(Descriptions, AreWrittenInTheFormThatTheProgramReads)
{
    const std::set<std::string> kinds = {"obj",  "opr",      "text",      "int",  "float", "double", "point",
                                         "bool", "filename", "directory", "list", "apply", "color"};
    const std::set<std::string> properties = {"doc", "german",   "set",        "options",
                                              "vis", "volatile", "pick world", "pick world multiple"};
    for (const Described& c : classes) {
        SCOPED_TRACE(c.className);
        Nodes nodes;
        Collect(c.object->Attributes(), nodes);
        for (const AK_Attribute* node : nodes) {
            const bool isEntry = !node->Id(1).IsEmpty();
            EXPECT_TRUE(isEntry ? kinds.count(node->Id(0).c_str()) : properties.count(Name(node))) << Name(node);
            EXPECT_TRUE(!(node->Id(0) == "apply") || node->_cmd.IsEmpty()) << Name(node) << " takes no value";
            EXPECT_FALSE(node->Id(0) == "bool" && node->_cmd.IsEmpty()) << Name(node) << " needs one to toggle";
            std::set<std::string> ids;
            for (const AK_Attribute* component : node->_components)
                EXPECT_TRUE(ids.insert(Name(component)).second) << Name(node) << ": twice " << Name(component);
            for (const char* s = node->_cmd.c_str(); *s; ++s) EXPECT_GT(*s, 0) << "no ASCII in " << Name(node);
        }
    }
}

TEST_F(Descriptions, KeepWhatMustNotBeReplayedOutOfSavedObjects)
{
    const std::set<std::string> neverSaved = {"ProjectDir",     "Language",     "ReportCommands", "ExplainCommands",
                                              "VariableValues", "ParameterSet", "Recording"};
    for (const Described& c : classes)
        for (const AK_Attribute* node : Entries(*c.object))
            EXPECT_TRUE(!neverSaved.count(node->_cmd.c_str()) || node->Component("volatile"))
                << c.className << ": " << Name(node);
}
