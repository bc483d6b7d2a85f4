// Formula code of groups and user objects.

#include "AK_Group_TestSupport.h"

class AK_GroupScriptTest : public GroupTest {
protected:
    AK_GroupScriptTest()
    {
        int number = 0;
        for (const char* id : {"a", "b", "c"}) AddTo<TestThing>(root, id)->Set("Number", AK_String(++number, "%d"));
        group->Set("SelectedObjectType", "Thing");
        user->Set("AttributesName", "");
        Messages();
    }

    // Gives the user object formula code, with a description that names nothing.
    void Code(const std::string& code)
    {
        user->Set("AttributesName", ("obj.Made\n\tdoc:x\n//qvt_sci\n" + code).c_str());
    }

    AK_Container root{"Viewer", nullptr};
    AK_Group* group = AddTo<AK_Group>(root, "group");
    AK_UserObj* user = AddTo<AK_UserObj>(root, "user");
};

// ----------------------------------------------------------------------------------------------------------------
// Filters
// ----------------------------------------------------------------------------------------------------------------

TEST_F(AK_GroupScriptTest, AFilterChoosesAmongTheObjectsOfTheType)
{
    const struct {
        const char* filter;
        Lines members;
    } cases[] = {
        {"char n[20]; get(id, \"Number\", n); return atoi(n) > 1;", {"b", "c"}},
        {"return 0;", {}},
        {"return 256;", {"a", "b", "c"}},                                          // not 0 is yes
        {"return istrstr(id, \"Viewer/b\") == 0;", {"b"}},                         // the absolute path
        {"strcat(id, \"/..\"); strcat(id, \"/c\"); return 1;", {"a", "b", "c"}},   // it may write into its text
        {"char n[20]; get(\"\", \"Id\", n); return strcmp(n, \"group\") == 0;", {"a", "b", "c"}},   // paths begin here
        {"set(\"../user\", \"Active\", \"0\"); return 1;", {"a", "b", "c"}},
    };
    for (const auto& c : cases) {
        group->Set("RemoveAllObjects", "");
        group->Set("Filter", c.filter);
        EXPECT_EQ(Text(group->Get("Filter")), c.filter);
        EXPECT_EQ(Listed(group->Get("GetObjectsOfTypeList")).size(), c.members.size()) << c.filter;
        group->Set("AppendAllObjectsOfType", "");
        EXPECT_EQ(ComponentIds(*group), c.members) << c.filter;
    }
    EXPECT_EQ(Text(user->Get("Active")), "0");
    EXPECT_EQ(AK_Object::_curObj.Size(), 0);
}

TEST_F(AK_GroupScriptTest, AFilterThatAsksForItsOwnResultIsRefusedInWords)
{
    group->Set("Filter", "char s[99]; get(\"\", \"GetObjectsOfTypeList\", s); return strlen(s) == 0;");
    EXPECT_EQ(Listed(group->Get("GetObjectsOfTypeList")).size(), 3u);
    EXPECT_EQ(Text(AK_Object::_execStatus), "'Filter' of Viewer/group: the filter asks for its own result");
    AK_Group* other = AddTo<AK_Group>(root, "other");
    other->Set("SelectedObjectType", "Thing");
    other->Set("Filter", "char s[99]; get(\"../group\", \"GetObjectsOfTypeList\", s); return strlen(s) > 0;");
    EXPECT_EQ(Listed(other->Get("GetObjectsOfTypeList")).size(), 3u);
}

TEST_F(AK_GroupScriptTest, AFilterThatDoesNotCompileLeavesTheOldOne)
{
    testing::internal::CaptureStdout();   // the language says what is wrong, to one of the two
    testing::internal::CaptureStderr();
    group->Set("Filter", "return 0;");
    for (const char* bad : {"", "return nosuch;", "return 1", "}", "{", "int x; return", "#define"}) {
        EXPECT_EQ(group->Set("Filter", bad), 1);
        EXPECT_EQ(Text(group->Get("Filter")), "return 0;") << bad;
        EXPECT_EQ(Text(AK_Object::_execStatus), "") << bad;
    }
    testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(Messages(), Lines());
    EXPECT_EQ(Text(group->Get("GetObjectsOfTypeList")), "");
}

TEST_F(AK_GroupScriptTest, AFilterMayDeleteWhatItIsAskedAbout)
{
    group->Set("Filter", "set(\"..\", \"DeleteObject\", \"b\"); set(\"..\", \"DeleteObject\", \"a\"); return 1;");
    group->Set("AppendAllObjectsOfType", "");
    EXPECT_EQ(ComponentIds(*group), (Lines{"c"}));
    ExpectConsistent(root);
    group->Set("RemoveAllObjects", "");
    group->Set("Filter", "set(\"..\", \"DeleteObject\", \"group\"); return 1;");
    EXPECT_EQ(Run(root, "set(\"group\", \"AppendAllObjectsOfType\", \"\")"), Lines());
    EXPECT_EQ(ComponentIds(root), (Lines{"user", "c"}));
    ExpectConsistent(root);
}

// ----------------------------------------------------------------------------------------------------------------
// User objects
// ----------------------------------------------------------------------------------------------------------------

TEST_F(AK_GroupScriptTest, EachUserObjectHasItsOwnCopyOfTheCodeOfItsClass)
{
    Describe("Counter", "obj.Counter\n\tint.Count:Count\n\t\tset:Add\n");
    ClassFile("Counter.cint", "int n = 10;\n"
                              "void Init() { set(\"\", \"$loaded\", \"yes\"); }\n"
                              "void Update() { n++; }\n"
                              "void Count(char s[]) { sprintf(s, \"%d\", n); }\n"
                              "void Add(char s[]) { n += atoi(s); }\n"
                              "void Active(char s[]) { set_error(\"not with me\"); }\n");
    ClassFile("Counter.def", "set(\"\", \"Add\", \"5\")\n");
    auto* other = AddTo<AK_UserObj>(root, "other");
    for (AK_UserObj* object : {user, other}) object->Set("AttributesName", "Counter");
    EXPECT_EQ(Text(user->Get("$loaded")), "yes");
    user->Set("Add", "100");
    root.Update();
    EXPECT_EQ(Text(user->Get("Count")), "116");
    EXPECT_EQ(Text(other->Get("Count")), "16");
    EXPECT_GT(user->ExecTime("Add"), other->ExecTime("Add"));
    EXPECT_EQ(Run(root, "set(\"user\", \"Active\", \"0\")"),   // its code comes before the program
              (Lines{"error when executing 'set(\"user\", \"Active\", \"0\")':not with me"}));

    user->Set("AttributesName", "");
    EXPECT_EQ(Text(user->Get("Count")), ak_null);
    EXPECT_EQ(user->Set("Active", "0"), 1);
    EXPECT_EQ(Text(AK_Object::_execStatus), "");
}

TEST_F(AK_GroupScriptTest, CodeMayExchangeTheClassOfItsObjectAndDeleteTheObject)
{
    Code("void Other(char s[]) { set(\"\", \"AttributesName\", \"\"); strcpy(s, \"still here\"); }");
    EXPECT_EQ(Text(user->Get("Other")), "still here");
    EXPECT_EQ(Text(user->Type()), "UserObj");
    EXPECT_EQ(Text(user->Get("Other")), ak_null);

    Code("void End(char s[]) { set(\"..\", \"DeleteObject\", \"user\"); set(\"\", \"Active\", \"0\"); }");
    root.ExecCommand("set(\"user\", \"End\", \"\")", 0);
    EXPECT_EQ(root.Component("user"), nullptr);

    user = AddTo<AK_UserObj>(root, "user");
    Code("void Init() { set(\"..\", \"DeleteObject\", \"user\"); }");
    EXPECT_EQ(root.Component("user"), nullptr);
    ExpectConsistent(root);
}

// ----------------------------------------------------------------------------------------------------------------
// The example
// ----------------------------------------------------------------------------------------------------------------

class AK_UserClassExample : public AK_GroupScriptTest {
protected:
    AK_UserClassExample() { AK_Object::SetUserAttributesDirectory(KORVO_SOURCE_DIR "/examples/user_class"); }
};

// The figures by hand: 0.1 and 0.2 of 333500 J/kg are melted; 400/0.9 and 400/0.8 kg/m3; -10250/2050 degrees.
TEST_F(AK_UserClassExample, ItsMacroReportsWhatItsReadmeSays)
{
    struct Workspace : AK_Container {
        using AK_Container::AK_Container;
        int Set(const AK_String& attr, const AK_String& value) override
        {
            if (!(attr == "CreateUserObject")) return AK_Container::Set(attr, value);
            AddComponent(new AK_UserObj(value, this));
            return 1;
        }
    };
    AddTo<Workspace>(root, "Project");
    root.ExecMacro(KORVO_SOURCE_DIR "/examples/user_class/snow.macro", 0);
    EXPECT_EQ(Text(AK_Object::_execStatus), "");
    Lines reports;
    for (const std::string& message : Messages())
        if (message.rfind("INFO:", 0) == 0) reports.push_back(message.substr(5));
    EXPECT_EQ(reports,
              (Lines{"-5 degrees C, 0 kg water in a kg, 200 kg/m3", "0 degrees C, 0.1 kg water in a kg, 444.444 kg/m3",
                     "0 degrees C, 0.2 kg water in a kg, 500 kg/m3"}));
}
