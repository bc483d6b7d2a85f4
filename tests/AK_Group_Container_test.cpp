#include "AK_Group_TestSupport.h"

class AK_ContainerTest : public GroupTest {
protected:
    TestThing root{"Viewer", nullptr};
    TestContainer* things = AddTo<TestContainer>(root, "Things");

    // a, b and c with the numbers 1, 2, 3, saved below the test's directory.
    void SaveThreeThings()
    {
        int number = 0;
        for (const char* id : {"a", "b", "c"}) things->Add(id)->Set("Number", AK_String(++number, "%d"));
        root.Set("SaveProjectAs", directory / "project");
        EXPECT_EQ(Text(AK_Object::_execStatus), "");
        Messages();
    }
};

TEST_F(AK_ContainerTest, DeletingAnObjectTakesItsDirectoryAndTheReferencesToItAlong)
{
    SaveThreeThings();
    auto* group = AddTo<AK_Group>(root, "group");
    group->Set("AppendObject", "Things/b");
    EXPECT_EQ(Text(things->Get("DeleteVisibility")), "w");
    things->Set("DeleteObject", "b");
    EXPECT_EQ(ComponentIds(*things), (Lines{"a", "c"}));
    EXPECT_EQ(group->NumComponents(), 0);
    EXPECT_FALSE(AK_System::FileExists(directory / "project/Things/b"));
    EXPECT_TRUE(AK_System::FileExists(directory / "project/Things/a"));

    things->Set("DeleteObject", "nosuch");
    EXPECT_EQ(things->NumComponents(), 2);
    ExpectConsistent(root);
}

TEST_F(AK_ContainerTest, WhatIsUnloadedIsListedAndComesBackAsItWasSaved)
{
    SaveThreeThings();
    auto* group = AddTo<AK_Group>(root, "group");
    group->Set("AppendObject", "Things/b");
    things->Component("b")->Set("Number", "99");   // not saved, so lost
    EXPECT_EQ(Text(things->Get("UnloadedComponentsList")), "");

    EXPECT_EQ(Run(root, "set(\"Things\", \"UnloadComponent\", \"b\")"), (Lines{"unloading b"}));
    EXPECT_EQ(ComponentIds(*things), (Lines{"a", "c"}));
    EXPECT_EQ(group->NumComponents(), 0);
    EXPECT_EQ(Listed(things->Get("UnloadedComponentsList")), (Lines{"b"}));
    ExpectConsistent(root);

    things->Set("LoadComponent", "b");
    ASSERT_TRUE(things->Component("b"));
    EXPECT_EQ(Text(things->Component("b")->Get("Number")), "2");
    EXPECT_EQ(Text(things->Get("UnloadedComponentsList")), "");

    things->Component("b")->Set("Number", "99");
    things->Set("LoadComponent", "b");   // in memory: read again
    EXPECT_EQ(Text(things->Component("b")->Get("Number")), "2");
    EXPECT_EQ(Run(root, "set(\"Things\", \"UnloadComponent\", \"nosuch\")"), (Lines{"unloading nosuch"}));
    EXPECT_EQ(things->NumComponents(), 3);
    ExpectConsistent(root);
}

TEST_F(AK_ContainerTest, ANewObjectTakesNoNameOfOneThatIsNotLoaded)
{
    SaveThreeThings();
    const std::string saved = FileBytes(directory / "project/Things/b/Thing.atr");
    things->Set("UnloadComponent", "b");
    things->Add("b")->Set("Number", "7");
    things->Component("c")->Set("Id", "b");
    root.Set("SaveProject", "");
    EXPECT_EQ(ComponentIds(*things), (Lines{"a", "b_0002", "b_0001"}));
    EXPECT_EQ(FileBytes(directory / "project/Things/b/Thing.atr"), saved);
    things->Set("LoadComponent", "b");
    EXPECT_EQ(Text(root.Get("Things/b:Number")), "2");
    ExpectConsistent(root);
}

TEST_F(AK_ContainerTest, OnlyWhatIsADirectoryOfAKnownTypeCanBeLoaded)
{
    SaveThreeThings();
    things->UnloadAllContainers("");
    const AK_String dir = directory / "project/Things/";
    for (const char* name : {"none", "two", "other"}) AK_System::CreateDir(dir + name);
    for (const char* name : {"two/Thing.atr", "two/Special.atr", "other/Foreign.atr", "file.txt", "plain"})
        WriteFile(dir + name, "");
    EXPECT_EQ(Listed(things->Get("UnloadedComponentsList")), (Lines{"a", "b", "c", "none", "other", "plain", "two"}));

    Messages();
    for (const char* id : {"nosuch", "none", "two", "other", "plain", "file.txt", "", ".", "..", "../Things/a", "/"}) {
        EXPECT_EQ(things->Set("LoadComponent", id), 1) << id;
        EXPECT_EQ(Text(AK_Object::_execStatus), "") << id;
        EXPECT_EQ(things->NumComponents(), 0) << id;
    }
    EXPECT_EQ(Messages(), Lines());

    TestContainer homeless("homeless", nullptr);   // without a directory there is nothing to load and nothing listed
    homeless.Add("tmp");
    homeless.Set("LoadComponent", "tmp");
    EXPECT_EQ(Text(AK_Object::_execStatus), "");
    EXPECT_EQ(Text(homeless.Get("UnloadedComponentsList")), "");
}

TEST_F(AK_ContainerTest, UnloadingAllContainersKeepsTheSkeletonOfTheTree)
{
    SaveThreeThings();
    auto* more = AddTo<TestContainer>(root, "More");
    more->Add("x")->Add("below");
    Messages();
    root.Set("UnloadAllContainers", "");
    EXPECT_EQ(Messages(), (Lines{"unloading container Viewer/More", "unloading x", "unloading container Viewer/Things",
                                 "unloading c", "unloading b", "unloading a"}));
    EXPECT_EQ(ComponentIds(root), (Lines{"Things", "More"}));
    EXPECT_EQ(root.NumObjects(), 3);
    EXPECT_EQ(TestThing::alive, 1);

    EXPECT_EQ(Text(root.Get("Things/c:Number")), "3");   // a path brings back what it names, and no more
    EXPECT_EQ(ComponentIds(*things), (Lines{"c"}));
    ExpectConsistent(root);
}
