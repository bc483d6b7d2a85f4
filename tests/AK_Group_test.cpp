#include "AK_Group_TestSupport.h"

class AK_GroupTest : public GroupTest {
protected:
    // Viewer: Things (a, b, c of type Thing), special (SpecialThing), group.
    AK_GroupTest()
    {
        for (const char* id : {"a", "b", "c"}) things->Add(id);
        special = AddTo<TestSpecialThing>(root, "special");
        group = AddTo<AK_Group>(root, "group");
        Messages();
    }

    void Append(const Lines& paths)
    {
        for (const std::string& path : paths) group->Set("AppendObject", path.c_str());
    }

    std::string Numbers() const
    {
        std::string text;
        for (const char* id : {"a", "b", "c"}) text += Text(things->Component(id)->Get("Number")) + " ";
        return text + Text(special->Get("Number"));
    }

    // Name of the class whose entries all members share; "" for none.
    static std::string SharedClass(const AK_Group& of)
    {
        const AK_List<const AK_Attribute*>& nodes = of.Attributes()->_components;
        const AK_Attribute* last = nodes[nodes.Size() - 1];
        return last->Id(0) == "obj" ? Text(last->Id(1)) : "";
    }

    TestThing root{"Viewer", nullptr};
    TestContainer* things = AddTo<TestContainer>(root, "Things");
    TestSpecialThing* special;
    AK_Group* group;
};

static const Lines abc{"Things/a", "Things/b", "Things/c"};

// ----------------------------------------------------------------------------------------------------------------
// Passing on
// ----------------------------------------------------------------------------------------------------------------

TEST_F(AK_GroupTest, AValueGoesToAllMembersAndAListGivesOneToEach)
{
    const struct {
        const char* why;
        const char* value;
        const char* numbers;   // of a, b, c, special, which answers its number and 100
    } cases[] = {
        {"one value for all", "7", "7 7 7 100"},
        {"a list that is too short starts again", "1%AK_SEP%2%AK_SEP%", "1 2 1 100"},
        {"a list of one", "5%AK_SEP%", "5 5 5 100"},
        {"the last element needs no separator", "3%AK_SEP%4%AK_SEP%5", "3 4 5 100"},
        {"what is too much is left over", "1%AK_SEP%2%AK_SEP%3%AK_SEP%4%AK_SEP%", "1 2 3 100"},
        {"an empty element", "%AK_SEP%", "0 0 0 100"},
    };
    Append(abc);
    for (const auto& c : cases) {
        EXPECT_EQ(group->Set("Number", c.value), 3) << c.why;
        EXPECT_EQ(Numbers(), c.numbers) << c.why;
    }
}

TEST_F(AK_GroupTest, ItsOwnNamesAreItsOwnAndAllOthersItsMembers)
{
    Append(abc);
    group->Set("Id", "selection");
    EXPECT_EQ(Text(group->Id()), "selection");
    EXPECT_EQ(ComponentIds(*things), (Lines{"a", "b", "c"}));
    EXPECT_EQ(group->Set("Active", "0"), 3);
    for (int i = 0; i < things->NumComponents(); ++i) EXPECT_EQ(Text(things->ComponentAt(i)->Get("Active")), "0");
    EXPECT_EQ(Text(group->AK_Object::Get("Active")), "1");
    EXPECT_EQ(group->Set("NoSuch", "1"), 0);
    EXPECT_EQ(group->Set("NoSuch", "1%AK_SEP%"), 0);

    group->Set("RemoveAllObjects", "");   // without members it answers for itself
    EXPECT_EQ(group->Set("Active", "0"), 1);
    EXPECT_EQ(Text(group->AK_Object::Get("Active")), "0");
}

TEST_F(AK_GroupTest, OneMembersErrorNeitherStopsTheOthersNorGetsLost)
{
    Append({"Things/a", "special"});
    group->Set("DeleteMe", "");   // the special thing's parent deletes it, too: nobody is left
    EXPECT_EQ(group->NumComponents(), 0);

    Append({"Things/b", "Things/c"});
    EXPECT_EQ(group->Set("Fail", "first%AK_SEP%second%AK_SEP%"), 2);
    EXPECT_EQ(Text(AK_Object::_execStatus), "failed: first");
    EXPECT_EQ(group->Set("Count", ""), 2);
    EXPECT_EQ(Text(AK_Object::_execStatus), "");
}

TEST_F(AK_GroupTest, MembersMayDeleteThemselvesAndTheGroupOnTheWay)
{
    Append(abc);
    EXPECT_EQ(group->Set("DeleteMe", ""), 3);
    EXPECT_EQ(things->NumComponents(), 0);
    EXPECT_EQ(TestThing::alive, 2);
    ExpectConsistent(root);

    auto* owner = things->Add("owner");
    auto* inner = AddTo<AK_Group>(*owner, "inner");
    inner->Set("AppendObject", "Things/owner");
    inner->Set("AppendObject", "special");
    EXPECT_EQ(Run(root, "set(\"Things/owner/inner\", \"DeleteMe\", \"\")"), Lines());
    EXPECT_EQ(things->NumComponents(), 0);
    ExpectConsistent(root);
}

TEST_F(AK_GroupTest, GroupsThatHoldEachOtherComeToAnEnd)
{
    auto* other = AddTo<AK_Group>(root, "other");
    Append({"other", "Things/a"});
    other->Set("AppendObject", "group");
    other->Set("AppendObject", "Things/b");

    EXPECT_EQ(group->Set("Number", "5"), 2);
    EXPECT_EQ(Numbers(), "5 5 0 100");
    EXPECT_EQ(Text(group->Get("Number")), "%AK_SEP%5%AK_SEP%%AK_SEP%5%AK_SEP%");   // a group in a group is a list
    EXPECT_EQ(group->Set("Active", "0"), 3);                                       // met again: answers for itself
    EXPECT_EQ(Text(group->AK_Object::Get("Active")), "0");
    EXPECT_EQ(Text(group->Get("NoSuch")), ak_null);
    EXPECT_GT(group->ExecTime("Number"), 0);
}

TEST_F(AK_GroupTest, AChainOfGroupsEndsBeforeTheStackDoes)
{
    AK_Group* last = group;
    for (int i = 0; i < 3000; ++i) {
        auto* next = new AK_Group("", &root);
        root.AddComponent(next);
        last->AppendComponent(next);
        last = next;
    }
    last->AppendComponent(special);
    group->Set("Extra", "far away");
    EXPECT_EQ(Text(special->Get("Extra")), "");
    EXPECT_EQ(Text(group->Get("Extra")).find("far"), std::string::npos);
}

// ----------------------------------------------------------------------------------------------------------------
// Members
// ----------------------------------------------------------------------------------------------------------------

TEST_F(AK_GroupTest, WhatIsNoObjectTheGroupItselfAndWhatIsAMemberAreNotAdded)
{
    Append({"Things/a", "nosuch", "Things/nosuch", "group", "Things/a", "Viewer/Things/b", "root/special"});
    EXPECT_EQ(Listed(group->Get("GetComponentList")), (Lines{"a", "b", "special"}));
    EXPECT_EQ(Listed(group->Get("ContainedObjectsList")), (Lines{"../Things/a", "../Things/b", "../special"}));
    EXPECT_EQ(Listed(group->Get("GetAllObjectsList")), (Lines{"Viewer", "Viewer/Things", "Viewer/Things/c"}));
    EXPECT_EQ(things->Component("a")->Parent(), things);
    ExpectConsistent(root);

    group->Set("RemoveObject", "b");
    group->Set("RemoveObject", "nosuch");
    EXPECT_EQ(Listed(group->Get("GetComponentList")), (Lines{"a", "special"}));
    group->Set("ContainedObjectsList", "../Things/c%AK_SEP%nosuch%AK_SEP%../group%AK_SEP%../special%AK_SEP%");
    EXPECT_EQ(Listed(group->Get("GetComponentList")), (Lines{"a", "special", "c"}));
    group->UnloadAllContainers("");
    EXPECT_EQ(group->NumComponents(), 0);
    EXPECT_EQ(root.NumObjects(), 7);
    ExpectConsistent(root);
}

TEST_F(AK_GroupTest, ObjectsAreChosenByTypeAndByValue)
{
    things->Component("a")->Set("Text", "x");
    things->Component("c")->Set("Text", "x");
    special->Set("Text", "x");
    const struct {
        const char* why;
        Lines commands;   // "attribute=value"
        Lines members;
    } cases[] = {
        {"a type with what derives from it",
         {"SelectedObjectType=Thing", "AppendAllObjectsOfType="},
         {"Viewer", "a", "b", "c", "special"}},
        {"a derived type", {"SelectedObjectType=SpecialThing", "AppendAllObjectsOfType="}, {"special"}},
        {"every object is an Object, groups apart",
         {"AppendAllObjectsOfType="},
         {"Viewer", "Things", "a", "b", "c", "special"}},
        {"never the group itself", {"SelectedObjectType=Group", "AppendAllObjectsOfType="}, {"group", "other"}},
        {"a type that is not there", {"SelectedObjectType=Nothing", "AppendAllObjectsOfType="}, {}},
        {"without an attribute the type decides",
         {"SelectedObjectType=SpecialThing", "AppendAllMatchingObjects="},
         {"special"}},
        {"a value", {"SelectedAttribute=Text", "SelectedValue=x", "AppendAllMatchingObjects="}, {"a", "c", "special"}},
        {"a value of one type",
         {"SelectedObjectType=SpecialThing", "SelectedAttribute=Text", "SelectedValue=x", "AppendAllMatchingObjects="},
         {"special"}},
        {"removing by type",
         {"AppendAllObjectsOfType=", "SelectedObjectType=Thing", "RemoveAllObjectsOfType="},
         {"Things"}},
        {"removing by value",
         {"AppendAllObjectsOfType=", "SelectedAttribute=Text", "SelectedValue=x", "RemoveAllMatchingObjects="},
         {"Viewer", "Things", "b"}},
        {"removing without an attribute", {"AppendAllObjectsOfType=", "RemoveAllMatchingObjects="}, {}},
    };
    AddTo<AK_Group>(root, "other");
    for (const auto& c : cases) {
        auto* fresh = AddTo<AK_Group>(root, "fresh");
        for (const std::string& command : c.commands) {
            const size_t equals = command.find('=');
            EXPECT_EQ(fresh->Set(command.substr(0, equals).c_str(), command.substr(equals + 1).c_str()), 1) << c.why;
        }
        EXPECT_EQ(ComponentIds(*fresh), c.members) << c.why;
        root.DeleteComponent("fresh");
    }
    ExpectConsistent(root);
}

// ----------------------------------------------------------------------------------------------------------------
// The description
// ----------------------------------------------------------------------------------------------------------------

TEST_F(AK_GroupTest, TheDescriptionEndsWithWhatAllMembersShare)
{
    auto* nested = AddTo<AK_Group>(root, "nested");
    nested->Set("AppendObject", "special");
    const struct {
        const char* added;
        const char* shared;
    } steps[] = {{"special", "SpecialThing"}, {"nested", "SpecialThing"}, {"Things/a", "Thing"}, {"Things", "Object"}};
    EXPECT_EQ(SharedClass(*group), "");
    for (const auto& step : steps) {
        Append({step.added});
        EXPECT_EQ(SharedClass(*group), step.shared) << step.added;
        EXPECT_EQ(Text(group->Type()), "Group");
    }
    EXPECT_TRUE(group->Attributes()->AttributeOfSetCmd("Active"));

    AddTo<AK_Group>(root, "empty");
    Append({"empty"});   // a group without members has nothing of an object
    EXPECT_EQ(SharedClass(*group), "");
    EXPECT_FALSE(group->Attributes()->AttributeOfSetCmd("Active"));
}

TEST_F(AK_GroupTest, GroupsThatHoldEachOtherAreDescribedWithoutACircle)
{
    auto* other = AddTo<AK_Group>(root, "other");
    for (int times = 0; times < 3; ++times) {
        group->Set("AppendObject", "other");
        other->Set("AppendObject", "group");
    }
    EXPECT_EQ(SharedClass(*group), "Group");
    EXPECT_FALSE(group->Attributes()->Attribute("NoSuch"));   // walks all of it
    root.DeleteComponent("other");
    EXPECT_FALSE(group->Attributes()->Attribute("NoSuch"));   // as it was, until the members change
}

TEST_F(AK_GroupTest, IsSavedWithItsMembersPathsAndNothingOfTheirs)
{
    Append(abc);
    group->Set("SelectedObjectType", "Thing");
    group->Set("SelectedValue", "two\nlines and \"quotes\"");
    group->SaveAttributes(directory / "group.macro");
    EXPECT_EQ(FileBytes(directory / "group.macro"),
              "set(\"\", \"SingleType\", \"0\")\n"
              "set(\"\", \"SelectedObjectType\", \"Thing\")\n"
              "set(\"\", \"Filter\", \"\")\n"
              "set(\"\", \"SelectedAttribute\", \"\")\n"
              "set(\"\", \"SelectedValue\", \"two%%nlines and %%qquotes%%q\")\n"
              "set(\"\", \"ContainedObjectsList\", \"../Things/a%AK_SEP%../Things/b%AK_SEP%../Things/c%AK_SEP%\")\n");
    auto* copy = AddTo<AK_Group>(root, "copy");
    copy->ExecMacro(directory / "group.macro", 1);
    EXPECT_EQ(ComponentIds(*copy), (Lines{"a", "b", "c"}));
    EXPECT_EQ(SharedClass(*copy), "Thing");
    for (const char* name : {"SelectedObjectType", "SelectedValue"})
        EXPECT_EQ(Text(copy->Get(name)), Text(group->Get(name)));
}
