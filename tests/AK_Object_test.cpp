// The tree itself: components and references, what happens to objects that are deleted while they run, construction.

#include "AK_Object_TestSupport.h"

class AK_ObjectTest : public ObjectTest {
protected:
    // Ids of the entries, references in brackets.
    static std::string Entries(const AK_Object& object)
    {
        std::string text;
        for (int i = 0; i < object.NumComponents(); ++i) {
            const std::string id = Text(object.ComponentAt(i)->Id());
            text += object.Owns(i) ? id + " " : "(" + id + ") ";
        }
        return text;
    }
};

// ---------------------------------------------------------------------------------------- components and references

TEST_F(AK_ObjectTest, EntriesAreOwnedComponentsAndReferences)
{
    TestThing root("Viewer", nullptr);
    TestThing* a = root.Add("a");
    TestThing* b = root.Add("b");
    a->AppendComponent(b);
    a->AppendComponent(b);   // in the list already
    a->Add("c");
    EXPECT_EQ(Entries(*a), "(b) c ");
    EXPECT_EQ(a->Get("$latest_comp"), "c");
    EXPECT_EQ(a->Get("GetComponentList"), "b%AK_SEP%c%AK_SEP%");
    EXPECT_EQ(b->Parent(), &root);
    EXPECT_EQ(root.NumObjects(), 4);   // b once, at its owner
    ExpectConsistent(root);

    EXPECT_FALSE(a->RemoveComponent("c")) << "owned";
    EXPECT_FALSE(a->RemoveComponent("d")) << "unknown";
    EXPECT_TRUE(a->RemoveComponent("b"));
    EXPECT_EQ(Entries(*a), "c ");
    EXPECT_EQ(TestThing::alive, 4);
}

TEST_F(AK_ObjectTest, AReferenceToAnAncestorMakesNoEndlessWalk)
{
    TestThing root("Viewer", nullptr);
    TestThing* a = root.Add("a");
    a->AppendComponent(&root);
    EXPECT_EQ(root.NumObjects(), 2);
    EXPECT_EQ(root.Get("AllObjectsOfSameTypeList"), "%AK_SEP%a%AK_SEP%");
    EXPECT_EQ(root.Set("Thing::Number", "4"), 1);
    root.Update();
    root.RemoveAllReferencesTo(&root);
    EXPECT_EQ(Entries(*a), "");
}

TEST_F(AK_ObjectTest, DeletingRemovesTheReferencesToAllOfTheSubtree)
{
    TestThing root("Viewer", nullptr);
    TestThing* a = root.Add("a");
    TestThing* inner = a->Add("inner");
    TestThing* keeper = root.Add("keeper")->Add("deep");
    keeper->AppendComponent(inner);
    keeper->AppendComponent(a);
    keeper->AppendComponent(&root);
    root.AppendComponent(inner);
    EXPECT_EQ(Entries(root), "a keeper (inner) ");

    EXPECT_EQ(root.DeleteComponent("inner"), 0) << "a reference is not deleted";
    EXPECT_EQ(root.DeleteComponent("nosuch"), 0);
    EXPECT_EQ(root.DeleteComponent("a"), 1);
    EXPECT_EQ(Entries(root), "keeper ");
    EXPECT_EQ(Entries(*keeper), "(Viewer) ");
    EXPECT_EQ(TestThing::alive, 3);
    ExpectConsistent(root);
}

TEST_F(AK_ObjectTest, DeletingRemovesTheDirectoryOnDisc)
{
    TestThing root("Viewer", nullptr);
    root.ProjectDir(directory / "project");
    AK_System::CreateDirRecursively(root.ProjectDir() + "/a/b");
    root.Add("a");
    EXPECT_EQ(root.DeleteComponent("a"), 1);
    EXPECT_FALSE(AK_System::FileExists(root.ProjectDir() + "/a"));
    EXPECT_TRUE(AK_System::FileExists(root.ProjectDir()));
}

TEST_F(AK_ObjectTest, SortingIsByBytesOfTheIds)
{
    TestThing root("Viewer", nullptr);
    root.SortComponentsByIds();   // nothing to sort
    for (const char* id : {"b", "a10", "B", "_", "a9"}) root.Add(id);
    root.SortComponentsByIds();
    EXPECT_EQ(Entries(root), "B _ a10 a9 b ");
    ExpectConsistent(root);
}

TEST_F(AK_ObjectTest, ADetachedObjectIsARootOfItsOwn)
{
    TestThing root("Viewer", nullptr);
    auto* a = root.Add("a");
    root.Add("b")->AppendComponent(a);
    Run(root, R"(set("a", "Detach", ""))");
    const std::unique_ptr<AK_Object> owner(a);
    EXPECT_EQ(Entries(root), "b ");
    EXPECT_EQ(a->Root(), a);
    EXPECT_EQ(a->IdAbs(), "a");
    a->Detach("");   // again: nothing to do
    root.RemoveAllReferencesTo(a);
    ExpectConsistent(root);
}

TEST_F(AK_ObjectTest, AddNewComponentUsesTheFactoryOfTheClass)
{
    TestThing root("Viewer", nullptr);
    EXPECT_EQ(root.Set("AddNewComponent", "x y"), 1);
    EXPECT_EQ(Entries(root), "x_y ");
    EXPECT_EQ(root.Get("x_y:Type"), "Thing");

    AK_Object plain("Plain", nullptr);
    EXPECT_EQ(plain.Set("AddNewComponent", "x"), 1);
    EXPECT_EQ(plain.NumComponents(), 0);
}

// ------------------------------------------------------------------------------- objects that are deleted as they run

TEST_F(AK_ObjectTest, AnObjectMayDeleteItselfByItsOwnCommand)
{
    TestThing root("Viewer", nullptr);
    root.Add("a")->Add("b");
    EXPECT_EQ(Run(root, R"(set("a/b", "DeleteMe", ""))"), Lines{});
    EXPECT_EQ(TestThing::alive, 2);
    EXPECT_EQ(root.Component("a")->Set("DeleteMe", ""), 1);
    EXPECT_EQ(TestThing::alive, 1);
    ExpectConsistent(root);
}

TEST_F(AK_ObjectTest, AnObjectWhoseMacroDeletesItRunsTheMacroToItsEnd)
{
    const struct {
        const char* why;
        const char* deletion;
    } cases[] = {
        {"itself",             R"(set("", "DeleteMe", ""))"                                   },
        {"its parent",         R"(set("..", "DeleteMe", ""))"                                 },
        {"its grandparent",    R"(set("root", "DeleteComponent", "a"))"                       },
        {"all of its type",    R"(set("root/a", "Thing::DeleteMe", ""))"                      },
        {"by a remote name",   R"(set("root", "a/b/c:DeleteMe", ""))"                         },
        {"by another macro",   R"(set("root", "ExecMacro", $delete))"                         },
        {"detached, then the", "set(\"\", \"Detach\", \"\")\nset(\"root\", \"Number\", \"7\")"},
    };
    WriteFile(directory / "delete.macro", "set(\"a\", \"DeleteComponent\", \"b\")\n");
    for (const auto& c : cases) {
        TestThing root("Viewer", nullptr);
        TestThing* runner = root.Add("a")->Add("b")->Add("c");
        root.Add("watcher")->AppendComponent(runner);
        runner->SetVariableValue("$delete", directory / "delete.macro");
        WriteFile(directory / "m", std::string(c.deletion) + "\n"
                                                             "set(\"\", \"Number\", \"5\")\n"
                                                             "get(\"root\", \"Id\", $root)\n"
                                                             "set(\"..\", \"Number\", \"6\")\n");
        root.Set("a/b/c:ExecMacro", directory / "m");
        EXPECT_EQ(root.ObjectById("a/b/c"), nullptr) << c.why;
        if (AK_Object* detached = root.Component("watcher")->Component("c")) {
            root.Component("watcher")->RemoveComponent("c");
            delete detached;
        }
        ExpectConsistent(root);
        Messages();
    }
    EXPECT_EQ(TestThing::alive, 0);
}

TEST_F(AK_ObjectTest, ADetachedObjectThatRunsOutlivesItsFormerParent)
{
    TestThing root("Viewer", nullptr);
    TestThing* c = root.Add("a")->Add("b")->Add("c");
    const std::unique_ptr<AK_Object> owner(c);
    c->AppendComponent(&root);   // its way back
    WriteFile(directory / "m", "set(\"\", \"Detach\", \"\")\n"
                               "set(\"Viewer\", \"DeleteComponent\", \"a\")\n"
                               "get(\"\", \"IdAbs\", $path)\n"
                               "set(\"..\", \"Number\", \"1\")\n");
    c->Set("ExecMacro", directory / "m");
    EXPECT_EQ(c->Get("$path"), "c");
    EXPECT_EQ(Text(AK_Object::_execStatus), "object '..' not found");
    EXPECT_EQ(TestThing::alive, 2);
    c->RemoveComponent("Viewer");
}

TEST_F(AK_ObjectTest, ABroadcastVisitsWhatWasThereAtItsStart)
{
    TestThing root("Viewer", nullptr);
    for (const char* id : {"a", "b", "c"}) root.Add(id);
    EXPECT_EQ(root.Set("Thing::AddNewComponent", "new"), 1);
    EXPECT_EQ(root.NumObjects(), 8) << "one for each, and none in the new ones";
    ExpectConsistent(root);

    TestThing other("Viewer", nullptr);
    AK_Object* group = new AK_Object("group", &other);
    other.AddComponent(group);
    for (const char* id : {"a", "b", "c"}) {
        auto* thing = new TestThing(id, group);
        group->AddComponent(thing);
    }
    EXPECT_EQ(group->Set("Thing::DeleteMe", ""), 1);
    EXPECT_EQ(group->NumComponents(), 0) << "none is passed over when those before it go";
}

// ------------------------------------------------------------------------------------------------------ construction

TEST_F(AK_ObjectTest, AnObjectStartsWithItsDefaults)
{
    TestThing root("Viewer", nullptr);
    root.ProjectDir("/tmp/p");
    const TestThing child("a b", &root);   // not added
    const struct {
        const char* attribute;
        const char* value;
    } cases[] = {
        {"Id",                         "a_b"       },
        {"IdAbs",                      "Viewer/a_b"},
        {"Active",                     "1"         },
        {"SuppressCreatingComponents", "0"         },
        {"MacroFileName",              "a_b.macro" },
        {"MacroRepetitions",           "1"         },
        {"ProjectDir",                 "/tmp/p/a_b"},
        {"ParameterSet",               "none"      },
        {"VariableValues",             ""          },
        {"GetComponentList",           ""          },
    };
    for (const auto& c : cases) EXPECT_EQ(Text(child.Get(c.attribute)), c.value) << c.attribute;
    EXPECT_EQ(child.ExecTime("Active"), 0);
    EXPECT_EQ(root.NumComponents(), 0);
    EXPECT_EQ(Text(AK_Object("", nullptr).Id()), "Object_3") << "type and running number";
}

TEST_F(AK_ObjectTest, TheFirstObjectFindsTheUsersDirectory)
{
    const AK_String made = directory / "home/.korvo/";
    EXPECT_FALSE(AK_System::FileExists(made));
    AK_Object::_userAttributesDirectory = "";
    TestThing first("x", nullptr);
    EXPECT_TRUE(AK_System::IsDirectory(made));
    EXPECT_EQ(first.Get("UserApplicationDirectory"), made);
    EXPECT_EQ(first.Get("UserAttributesDirectory"), made) << "unless it has been given";
}

TEST_F(AK_ObjectTest, AUsersDirectoryThatCannotBeMadeCountsAsNone)
{
    setenv("HOME", (directory / "nosuch/place").c_str(), 1);
    EXPECT_EQ(TestThing("x", nullptr).Get("UserApplicationDirectory"), "");
    Fresh<AK_Object>();
    setenv("HOME", (directory / "home").c_str(), 1);
    AK_Object::_argc = 0;
    EXPECT_EQ(TestThing("x", nullptr).Get("UserApplicationDirectory"), "") << "no program name";
}

TEST_F(AK_ObjectTest, InitialisationCommandsRunAtTheEndOfEachConstructorBaseFirst)
{
    ClassFile("AK_Object.def", "set(\"\", \"MacroRepetitions\", \"2\")\n"
                               "set(\"\", \"Number\", \"1\")\n");   // no such attribute as yet
    ClassFile("TestThing.def", "set(\"\", \"MacroRepetitions\", \"3\")\nset(\"\", \"Extra\", \"x\")\n"
                               "# a comment\r\nset(\"\", \"Number\", \"7\")\n");
    ClassFile("TestSpecialThing.def", "get(\"\", \"Number\", $n)\nset(\"\", \"Extra\", $n)\n");
    const TestSpecialThing special("s", nullptr);
    EXPECT_EQ(Messages(), (Lines{"could not execute command set(\"\", \"Number\", \"1\"), ignored!",
                                 "could not execute command set(\"\", \"Extra\", \"x\"), ignored!"}));
    EXPECT_EQ(special.Get("MacroRepetitions"), "3");
    EXPECT_EQ(special.Get("Extra"), "107") << "the most derived class answers";
}

TEST_F(AK_ObjectTest, InitialisationCommandsThatMakeObjectsOfTheirClassEnd)
{
    ClassFile("TestThing.def", "set(\"\", \"AddNewComponent\", \"x\")\nset(\"\", \"AddNewComponent\", \"y\")\n");
    const TestThing root("Viewer", nullptr);
    EXPECT_EQ(Entries(root), "x y ");
    EXPECT_EQ(Messages(), (Lines{"W:initialisation commands are not executed on 'x', which they have made",
                                 "W:initialisation commands are not executed on 'y', which they have made"}));
    ExpectConsistent(root);
}

TEST_F(AK_ObjectTest, AClassWithoutADescriptionIsFatal)
{
    AK_System::RemoveFile(directory / "attributes/TestThing.atr");
    ak_msg_func = [](const char* message, const char*) { std::fprintf(stderr, "%s\n", message); };
    EXPECT_EXIT(TestThing("x", nullptr), testing::KilledBySignal(SIGABRT),
                "cannot open attribute file .*/attributes/TestThing.atr!\nERROR:FATAL:_attributes failed!");
}

TEST_F(AK_ObjectTest, AnObjectOfNoClassGetsByWithoutADescription)
{
    AK_System::RemoveFile(directory / "attributes/AK_Object.atr");
    AK_Object plain("x", nullptr);
    EXPECT_EQ(Messages(), Lines{"cannot open attribute file " + Text(directory / "attributes/AK_Object.atr!")});
    EXPECT_EQ(plain.Get("Type"), "");
    EXPECT_FALSE(plain.IsOfType("Object"));
    EXPECT_EQ(plain.Get("GetCommandsList"), "");
    AK_Object::_explainCommands = 1;
    EXPECT_EQ(Run(plain, R"(set("", "Active", "0"))"),
              Lines{"CMD-INFO:\nSelect the object 'x' (->.),\nselect ->.Active and enter '0'. \n"
                    "(The corresponding macro command is 'set(\"\", \"Active\", \"0\")'.)"});
    EXPECT_EQ(plain.Get("Active"), "0");
}

// ---------------------------------------------------------------------------------------------------- types, updating

TEST_F(AK_ObjectTest, TypesAreThoseOfTheClassAndItsBases)
{
    const TestSpecialThing special("s", nullptr);
    for (const char* type : {"SpecialThing", "Thing", "Object"}) EXPECT_TRUE(special.IsOfType(type)) << type;
    for (const char* type : {"Special", "TestThing", "Operations", ""}) EXPECT_FALSE(special.IsOfType(type)) << type;
    EXPECT_FALSE(TestThing("t", nullptr).IsOfType("SpecialThing"));
    EXPECT_EQ(Text(special.IdTyped()), "s.SpecialThing");
}

TEST_F(AK_ObjectTest, UpdateReachesActiveComponentsOnly)
{
    struct Counting : TestThing {
        using TestThing::TestThing;
        void Update() override { ++updates; }
        int updates = 0;
    };
    TestThing root("Viewer", nullptr);
    TestThing* off = root.Add("off");
    auto* on = new Counting("on", &root);
    auto* below = new Counting("below", off);
    auto* referenced = new Counting("referenced", off);
    root.AddComponent(on);
    off->AddComponent(below);
    off->AddComponent(referenced);
    root.AppendComponent(referenced);
    off->Set("Active", "0");
    EXPECT_EQ(root.Set("Update", ""), 1);
    EXPECT_EQ(on->updates, 1);
    EXPECT_EQ(below->updates, 0) << "its parent is switched off";
    EXPECT_EQ(referenced->updates, 0) << "updated by its owner alone";
}
