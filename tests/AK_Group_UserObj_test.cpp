#include "AK_Group_TestSupport.h"

/// The root of a project with groups and user objects, as the workspace makes them.
class TestWorkspace : public TestContainer {
public:
    using TestContainer::TestContainer;

    AK_Object* CreateComponent(const AK_String& id, const AK_String& type) override
    {
        if (type == "Group") return new AK_Group(id, this);
        if (AK_Object* thing = TestContainer::CreateComponent(id, type)) return thing;
        return AK_UserObj::CreateFromDirectory(id, this, _directoryToLoad);
    }
};

class AK_UserObjTest : public GroupTest {
protected:
    AK_UserObjTest()
    {
        Describe("Snow", "obj.Snow\n\tbool.Wet:$wet\n\t\tset:$wet\n");
        Describe("Rock", "obj.Rock\n\ttext.Kind:$kind\n\t\tset:$kind\n");
        Messages();
    }

    TestWorkspace root{"Viewer", nullptr};
    AK_UserObj* object = AddTo<AK_UserObj>(root, "object");
};

TEST_F(AK_UserObjTest, HasTheClassThatItsAttributesNameTells)
{
    const struct {
        const char* name;
        const char* type;
        const char* ownAttribute;   // "" for none
    } steps[] = {{"", "UserObj", ""},
                 {"Snow", "Snow", "Wet"},
                 {"Rock", "Rock", "Kind"},
                 {"obj.Ice\n\ttext.Age:$age\n\t\tset:$age\n", "Ice", "Age"},
                 {"obj.Water\n\ttext.Depth:$depth\n//qvt_sci\nint x;\n", "Water", "Depth"},
                 {"Nowhere", "UserObj", ""},
                 {"obj.NoLineEnd", "UserObj", ""},
                 {"obj.\n", "UserObj", ""},
                 {"", "UserObj", ""}};
    for (const auto& step : steps) {
        EXPECT_EQ(object->Set("AttributesName", step.name), 1);
        EXPECT_EQ(Text(object->Get("AttributesName")), step.name);
        EXPECT_EQ(Text(object->Type()), step.type) << step.name;
        EXPECT_EQ(Text(object->Attributes()->_components[0]->Id(1)), *step.ownAttribute ? step.ownAttribute : "")
            << step.name;
        for (const char* base : {"UserObj", "Object"}) EXPECT_TRUE(object->IsOfType(base)) << step.name;
        EXPECT_TRUE(object->Attributes()->AttributeOfSetCmd("AttributesName")) << step.name;
    }
    auto* other = AddTo<AK_UserObj>(root, "other");   // one class of the program, two of the user
    object->Set("AttributesName", "Snow");
    other->Set("AttributesName", "Rock");
    EXPECT_NE(Text(object->Type()), Text(other->Type()));
}

TEST_F(AK_UserObjTest, ClassesWhoseDefaultsNameEachOtherDoNotGoOnForEver)
{
    ClassFile("Snow.def", "set(\"\", \"AttributesName\", \"Rock\")\n");
    ClassFile("Rock.def", "set(\"\", \"AttributesName\", \"Snow\")\n");
    object->Set("AttributesName", "Snow");
    EXPECT_EQ(Text(object->Type()), "Snow");
    EXPECT_EQ(Text(AK_Object::_execStatus), "cannot become 'Rock' while 'Snow' is being loaded");
}

TEST_F(AK_UserObjTest, ItsDescriptionOutlivesItWhereAGroupShowsIt)
{
    auto* group = AddTo<AK_Group>(root, "group");
    object->Set("AttributesName", "Snow");
    group->Set("AppendObject", "object");
    EXPECT_TRUE(group->Attributes()->Attribute("Wet"));
    object->Set("AttributesName", "Rock");
    EXPECT_TRUE(group->Attributes()->Attribute("Wet"));   // until the group looks again
    root.DeleteComponent("object");
    EXPECT_TRUE(group->Attributes()->Attribute("Wet"));
    EXPECT_TRUE(group->Attributes()->Attribute("AttributesName"));
    group->UpdateAttributes();
    EXPECT_FALSE(group->Attributes()->Attribute("Wet"));
}

// ----------------------------------------------------------------------------------------------------------------
// In a project
// ----------------------------------------------------------------------------------------------------------------

TEST_F(AK_UserObjTest, ComesBackWithItsProject)
{
    const char* ownClass = "obj.Ice\n\tdoc:Says \"ice\".\n\ttext.Age:$age\n\t\tset:$age\n";
    object->Set("AttributesName", "Snow");
    object->Set("$wet", "1");
    AddTo<AK_UserObj>(root, "ice")->Set("AttributesName", ownClass);
    root.Component("ice")->Set("$age", "1000");
    AddTo<AK_UserObj>(root, "plain");
    root.SaveProjectAs(directory / "project");
    EXPECT_TRUE(AK_System::FileExists(directory / "project/ice/Ice.atr"));

    TestWorkspace again("Viewer", nullptr);
    again.LoadProject(directory / "project");
    EXPECT_EQ(Text(AK_Object::_execStatus), "");
    EXPECT_EQ(ComponentIds(again), (Lines{"ice", "object", "plain"}));
    EXPECT_EQ(Text(again.Get("object:$wet")), "1");
    EXPECT_EQ(Text(again.Get("ice:AttributesName")), ownClass);
    EXPECT_EQ(Text(again.Get("ice:$age")), "1000");
    EXPECT_EQ(Text(again.Component("plain")->Type()), "UserObj");
    again.SaveProjectAs(directory / "copy");
    for (const char* file : {"/ice/Ice.atr", "/object/Snow.atr", "/plain/UserObj.atr"})
        EXPECT_EQ(FileBytes(directory / "project" + file), FileBytes(directory / "copy" + file)) << file;

    TestWorkspace lazy("Viewer", nullptr);
    lazy.ProjectDir(directory / "project");
    EXPECT_EQ(Text(lazy.Get("ice:$age")), "1000");   // made and loaded because a path names it
    EXPECT_EQ(ComponentIds(lazy), (Lines{"ice"}));
}

TEST_F(AK_UserObjTest, DirectoriesThatAreNotItsAreLeftAlone)
{
    object->Set("AttributesName", "Snow");
    root.SaveProjectAs(directory / "project");
    const AK_String dir = directory / "project/";
    for (const char* name : {"foreign", "other", "two"}) AK_System::CreateDir(dir + name);
    WriteFile(dir + "foreign/Strange.atr", "set(\"\", \"Number\", \"1\")\nset(\"x\", \"AttributesName\", \"Snow\")\n");
    WriteFile(dir + "other/Rock.atr", "set(\"\", \"AttributesName\", \"Snow\")\n");   // another class by now
    for (const char* name : {"two/Snow.atr", "two/Rock.atr"})
        WriteFile(dir + name, "set(\"\", \"AttributesName\", \"Snow\")\n");
    TestWorkspace again("Viewer", nullptr);
    again.LoadProject(directory / "project");
    EXPECT_EQ(Text(AK_Object::_execStatus), "");
    EXPECT_EQ(ComponentIds(again), (Lines{"object"}));

    AK_System::RemoveFile(directory / "attributes/Snow.atr");   // the class is not on this machine
    TestWorkspace elsewhere("Viewer", nullptr);
    Messages();
    elsewhere.LoadProject(directory / "project");
    EXPECT_EQ(Text(AK_Object::_execStatus), "");
    EXPECT_EQ(ComponentIds(elsewhere), Lines());
    const Lines said = Messages();
    EXPECT_EQ(std::count(said.begin(), said.end(),
                         "WARNING: " + Text(dir) + "object is not loaded: its class is not to be found; its files are kept"),
              1);
    elsewhere.SaveProject("");
    elsewhere.SaveProjectAs(directory / "taken");
    for (const AK_String& kept : {dir, directory / "taken/"})
        EXPECT_NE(FileBytes(kept + "object/Snow.atr").find("\"Snow\""), std::string::npos) << kept;
}

TEST_F(AK_UserObjTest, AnotherClassLeavesNoFilesOfTheFormerOne)
{
    object->Set("AttributesName", "Snow");
    root.SaveProjectAs(directory / "project");
    for (const char* next : {"Rock", "", "Snow"}) {
        object->Set("AttributesName", next);
        root.SaveProject("");
        EXPECT_EQ(AK_System::FilesList(directory / "project/object", "atr").Size(), 1) << next;
        TestWorkspace again("Viewer", nullptr);
        again.LoadProject(directory / "project");
        ASSERT_EQ(ComponentIds(again), (Lines{"object"})) << next;
        EXPECT_EQ(Text(again.Get("object:AttributesName")), next);
    }
}
