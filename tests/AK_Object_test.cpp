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
