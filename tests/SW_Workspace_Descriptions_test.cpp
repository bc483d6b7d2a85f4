// The description files of all classes against the classes: what can be set is described in both languages, what is
// described is answered, and what is referred to is there.

#include "SW_Workspace.h"

#include "AK_Basic_TestTools.h"
#include "AK_Controller.h"
#include "AK_Group.h"
#include "SW_InitialCondition.h"
#include "SW_Mesh.h"
#include "SW_Mesh_Container.h"
#include "SW_Polygon.h"
#include "SW_Polyline_Container.h"
#include "SW_Polyline_Labels.h"
#include "SW_Polyline_Set.h"
#include "SW_ResistanceArea.h"
#include "SW_ScalarField.h"
#include "SW_Simulation.h"
#include "SW_Simulation_Container.h"
#include "SW_SourceLine.h"
#include "SW_VectorField.h"
#include "SW_WallLine.h"

#include <gtest/gtest.h>

#include <memory>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace {

/// A class of the program: an object of it, and its rows with those of its bases, its own first.
struct Described {
    const char* className;
    const AK_Object* object;
    std::vector<std::span<const AK_Row>> rows;
};

class Descriptions : public testing::Test {
protected:
    Descriptions()
    {
        setenv("HOME", directory.Path().c_str(), 1);
        AK_Object::SetAttributesDirectory(KORVO_SOURCE_DIR "/files/AK_Attributes");
        AK_Object::SetUserAttributesDirectory(directory.Path());
        Add<AK_TerminalController, AK_Controller, AK_Object>();
        Add<AK_Container, AK_Object>();
        Add<AK_Group>();
        Add<AK_UserObj, AK_Object>();
        const AK_Object* project = Add<SW_Workspace, AK_Object>();
        AddFrom<SW_Meshes, AK_Container, AK_Object>(project->Component("DHMs"));
        AddFrom<SW_Polylines, AK_Container, AK_Object>(project->Component("Polylines"));
        AddFrom<SW_Polygons, AK_Container, AK_Object>(project->Component("Polygons"));
        AddFrom<SW_Labels, AK_Container, AK_Object>(project->Component("Labels"));
        AddVisible<SW_Mesh>();
        AddVisible<SW_Polyline>();
        AddVisible<SW_PolylineSet>();
        AddVisible<SW_Polygon, SW_Polyline>();
        AddVisible<SW_MeshContourPolygon, SW_Polygon, SW_Polyline>();
        AddVisible<SW_ScalarField>();
        AddVisible<SW_VectorField>();
        AddVisible<SW_InitialCondition, SW_Polygon, SW_Polyline>();
        AddVisible<SW_ResistanceArea, SW_Polygon, SW_Polyline>();
        AddVisible<SW_WallLine, SW_Polyline>();
        AddVisible<SW_SourceLine>();
        AddFrom<SW_InitialConditions, AK_Container, AK_Object>(project->Component("ReleaseAreas"));
        AddFrom<SW_ResistanceAreas, AK_Container, AK_Object>(project->Component("ResistanceAreas"));
        AddFrom<SW_WallLines, AK_Container, AK_Object>(project->Component("WallLines"));
        AddFrom<SW_SourceLines, AK_Container, AK_Object>(project->Component("SourceLines"));
        Add<SW_Simulation, AK_Object>();
        Add<SW_Particles, AK_Object>();
        Add<SW_Simulations, AK_Container, AK_Object>();
        Add<SW_PsaMeshes, AK_Container, AK_Object>();
    }

    template <class Class, class... Bases>
    const AK_Object* Add()
    {
        owned.push_back(std::make_unique<Class>("object", nullptr));
        return AddFrom<Class, Bases...>(owned.back().get());
    }
    template <class Class, class... Bases>
    void AddVisible()
    {
        Add<Class, Bases..., AK_VisObj3d, AK_VisibleObject, AK_Object>();
    }
    template <class Class, class... Bases>
    const AK_Object* AddFrom(const AK_Object* object)
    {
        classes.push_back({Class::className, object, {Class::Rows(), Bases::Rows()...}});
        return object;
    }

    TemporaryDirectory directory;
    CaughtMessages messages;
    std::vector<std::unique_ptr<AK_Object>> owned;
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
    return name.rfind("Vis", 0) == 0 || endsWith("Vis") || endsWith("Visibility") || endsWith("Options") ||
           name == "Polylines";
}

}   // namespace

TEST_F(Descriptions, HaveTextsInBothLanguagesForEveryEntry)
{
    for (const Described& c : classes) {
        SCOPED_TRACE(c.className);
        for (const AK_Attribute* node : Entries(*c.object)) {
            const AK_Attribute* doc = node->Component("doc");
            ASSERT_TRUE(doc) << Name(node);
            EXPECT_GT(doc->_cmd.Length(), 10) << Name(node);
            const AK_Attribute* german = doc->Component("german");
            ASSERT_TRUE(german) << Name(node);
            EXPECT_GT(german->_cmd.Length(), 10) << Name(node);
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

// "->Type" and "->Type.attr" become links of the manual, which look for the attribute in the class itself: by its name,
// or by what sets it.
TEST_F(Descriptions, ReferOnlyToTypesAndAttributesThatThereAre)
{
    std::set<std::string> targets;
    for (const Described& c : classes)
        for (const AK_Attribute *root = c.object->Attributes(), *base; root; root = base) {
            base = nullptr;
            const std::string type = root->Id(1).c_str();
            targets.insert(type);
            Nodes nodes;
            Collect(root, nodes);
            for (const AK_Attribute* node : nodes) {
                if (node != root && node->Id(0) == "obj") {
                    base = node;
                    break;
                }
                targets.insert(type + "." + node->Id(1).c_str());
                targets.insert(type + "." + node->SetCmd().c_str());
            }
        }
    const std::regex reference("->([A-Za-z0-9_$.]*[A-Za-z0-9_$])?");
    int numReferences = 0;
    for (const Described& c : classes)
        for (const AK_Attribute* node : Entries(*c.object))
            for (const char* language : {"default", "german"}) {
                const std::string text = node->Component("doc")->InLanguage(language).c_str();
                for (std::sregex_iterator match(text.begin(), text.end(), reference), end; match != end; ++match) {
                    const std::string target = match->str(1);
                    EXPECT_TRUE(targets.count(target)) << c.className << ", " << Name(node) << ": " << match->str();
                    ++numReferences;
                }
            }
    EXPECT_GT(numReferences, 50) << "there are many";
}

// The page as it is written: what a reader clicks on in either language, from the start page on.
TEST_F(Descriptions, MakeAManualWhoseLinksAllLeadToOnePlace)
{
    for (const char* language : {"default", "german"}) {
        SCOPED_TRACE(language);
        AK_Object* root = owned.front().get();
        root->Set("SetLanguage", language);
        root->Set("WriteEntireHtmlReference", directory / "manual.html");
        const std::string page = FileBytes(directory / "manual.html");
        std::set<std::string> anchors;
        const std::regex anchor("<A NAME=\"([^\"]*)\">"), link("<A HREF=\"#([^\"]*)\">");
        for (std::sregex_iterator match(page.begin(), page.end(), anchor), end; match != end; ++match)
            EXPECT_TRUE(anchors.insert(match->str(1)).second) << "twice: " << match->str(1);
        for (std::sregex_iterator match(page.begin(), page.end(), link), end; match != end; ++match)
            EXPECT_TRUE(anchors.count(match->str(1))) << match->str();
        const std::string start = page.substr(0, page.find("<H1"));
        for (const Described& c : classes)
            EXPECT_NE(start.find(std::string("\"#") + c.object->Type().c_str() + "\""), std::string::npos) << c.className;
        for (const char* stray : {"\"->", " '", "' ", ">'", "'<"})
            EXPECT_EQ(page.find(stray), std::string::npos) << page.substr(page.find(stray), 100);
    }
    owned.front()->Set("SetLanguage", "default");
}

TEST_F(Descriptions, AreWrittenInTheFormThatTheProgramReads)
{
    const std::set<std::string> kinds = {"obj",       "opr",  "text",  "int",   "double", "bool", "filename",
                                         "directory", "list", "apply", "float", "color",  "point"};
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
