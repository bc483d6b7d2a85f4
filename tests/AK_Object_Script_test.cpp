// Formula code of classes and "cint" macros: loading, attributes, updates, the functions of the tree, errors.

#include "AK_Object_TestSupport.h"

namespace {

class AK_Object_Script : public ObjectTest {
protected:
    /// A thing whose class has this formula code.
    TestThing& WithCode(const std::string& code)
    {
        ClassFile("TestThing.cint", code);
        root = std::make_unique<AK_Object>("Viewer", nullptr);
        return *static_cast<TestThing*>(Added(new TestThing("a", root.get())));
    }

    AK_Object* Added(AK_Object* object)
    {
        root->AddComponent(object);
        return object;
    }

    /// Runs the text as the function main of a macro on the root; what it leaves in the root's variable "$out".
    std::string Main(const std::string& body)
    {
        if (!root) WithCode("");
        ClassFile("try.cint", "void main() { char s[200] = \"\"; int n = 0; double d = 0;" + body + "}");
        AK_Object::_execStatus = "";
        root->ExecMacro(directory / "attributes/try.cint", 0);
        return Text(root->VariableValue("$out"));
    }

    std::unique_ptr<AK_Object> root;
};

} // namespace

TEST_F(AK_Object_Script, AFunctionOfOneTextServesTheAttributeOfItsName)
{
    TestThing& thing = WithCode("char kept[100] = \"none\";\n"
                                "void Text(char value[]) { if (strlen(value)) strcpy(kept, value);"
                                " else strcpy(value, kept); }\n"
                                "int Number() { return 7; }\n"               // takes nothing: no attribute function
                                "double Ratio(double x) { return x; }\n");   // takes no text
    EXPECT_STREQ(thing.Get("Text").c_str(), "none");
    EXPECT_EQ(thing.Set("Text", "given"), 1);
    EXPECT_STREQ(thing.Get("Text").c_str(), "given");
    EXPECT_GT(thing.ExecTime("Text"), 0);
    EXPECT_EQ(thing.Set("Number", "3"), 1);
    EXPECT_STREQ(thing.Get("Number").c_str(), "3");
    EXPECT_STREQ(thing.Get("Ratio").c_str(), "0");
    EXPECT_STREQ(thing.Get("kept").c_str(), "%AK_NULL%");
}

TEST_F(AK_Object_Script, InitRunsWhenTheCodeIsLoadedAndUpdateWithTheObject)
{
    WithCode("void Init() { message(\"code loaded\", \"here\"); }\n"
             "void Update() { char id[100]; get(\"\", \"Id\", id); message(id, \"updated\"); }");
    EXPECT_EQ(Messages(), Lines{"code loaded"});
    Added(new TestThing("b", root.get()));
    EXPECT_EQ(Messages(), Lines{});   // the code of a class is loaded once
    root->Update();
    EXPECT_EQ(Messages(), (Lines{"a", "b"}));
}

TEST_F(AK_Object_Script, FunctionsOfAnotherFormThanIsCalledAreTold)
{
    WithCode("void Init(char v[]) { } double Update(double x) { return x; }");
    ClassFile("main.cint", "int main(int n) { return n; }");
    root->ExecMacro(directory / "attributes/main.cint", 0);
    EXPECT_EQ(Messages(), (Lines{"ERROR: function 'Update' is not of the form that is expected: void Update()",
                                 "ERROR: function 'Init' is not of the form that is expected: void Init()",
                                 "ERROR: function 'main' is not of the form that is expected: void main()"}));
}

TEST_F(AK_Object_Script, SyntaxErrorsAreReportedAndTheClassWorksWithoutItsCode)
{
    TestThing& thing = WithCode("void Text(char v[]) { strcpy(v, \"x\") }");
    const Lines messages = Messages();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].rfind("INFO:1 syntax errors in QVT_SCI file ", 0), 0u) << messages[0];
    EXPECT_NE(messages[0].find("TestThing.cint:\n"), std::string::npos) << messages[0];
    EXPECT_NE(messages[0].find("strcpy"), std::string::npos) << "the listing of the line: " << messages[0];
    thing.Set("Text", "as ever");
    EXPECT_STREQ(thing.Get("Text").c_str(), "as ever");
}

TEST_F(AK_Object_Script, LongTextsPassAndTheirEndIsGuarded)
{
    TestThing& thing = WithCode("void Text(char v[]) { char s[10]; get(\"\", \"Scratch\", s); strcpy(v, s); }\n"
                                "void Kind(char v[]) { int i; for (i = 0; i < 131071; i = i + 1) v[i] = 'x'; }");
    thing.Set("Scratch", "0123456789abc");
    EXPECT_STREQ(thing.Get("Text").c_str(), "012345678");   // cut at the end of the caller's array
    EXPECT_EQ(thing.Get("Kind").Length(), 131071);
    const std::string large(300000, 'y');
    EXPECT_EQ(thing.Set("Kind", large.c_str()), 1);
}

TEST_F(AK_Object_Script, AFunctionThatReachesItselfIsRefusedInWordsAndKeepsItsArgument)
{
    TestThing& a =
        WithCode("void Text(char v[]) { char other[99]; strcat(v, \"mine\"); set(\"root/a\", \"$twice\", v);"
                 " get(\"root/b\", \"Text\", other); strcat(v, \"!\"); strcat(v, other); }\n"
                 "void Kind(char v[]) { set(\"root/b\", \"Scratch\", v); strcat(v, \" kept\"); }\n"
                 "void Scratch(char v[]) { set(\"root/a\", \"Kind\", \"inner\"); strcat(v, \" round\"); }\n"
                 "void Update() { set(\"root/a\", \"$twice\", \"updated\"); set(\"root/b\", \"Update\", \"\"); }");
    Added(new TestThing("b", root.get()));
    const auto expectRefused = [&](const char* name) {
        const std::string status = Text(AK_Object::_execStatus);
        EXPECT_NE(status.find(name), std::string::npos) << status;
        EXPECT_NE(status.find("is running and cannot be called again"), std::string::npos) << status;
    };
    EXPECT_STREQ(a.Get("Text").c_str(), "mine!");
    expectRefused("'Text' of Viewer/b");
    a.Set("Kind", "outer");
    expectRefused("'Kind' of Viewer/a");
    EXPECT_STREQ(a.Get("Kind").c_str(), " kept");
    a.Set("Update", "");
    expectRefused("'Update' of Viewer/b");
    EXPECT_STREQ(a.VariableValue("$twice").c_str(), "updated");
}

TEST_F(AK_Object_Script, FunctionsOfTheTreeDoAndReportWhatTheyShould)
{
    WithCode("");
    const struct {
        const char* body;
        const char* out;
    } cases[] = {
        {"n = set(\"a\", \"Number\", \"5\"); sprintf(s, \"%d\", n); set(\"\", \"$out\", s);", "0"},
        {"get(\"a\", \"Number\", s); set(\"\", \"$out\", s);", "5"},
        {"n = set(\"nosuch\", \"Number\", \"5\"); sprintf(s, \"%d\", n); set(\"\", \"$out\", s);", "2"},
        {"strcpy(s, \"before\"); get(\"nosuch\", \"Id\", s); set(\"\", \"$out\", s);", ""},
        {"n = set(\"a\", \"Fail\", \"so\"); error(s); set_error(\"\"); set(\"root\", \"$out\", s);", "failed: so"},
        {"sprintf(s, \"%d\", list_size(\"a%AK_SEP%b%AK_SEP%\")); set(\"\", \"$out\", s);", "2"},
        {"get_list_element(\"a%AK_SEP%bc\", 1, s); set(\"\", \"$out\", s);", "bc"},
        {"strcpy(s, \"kept\"); n = get_list_element(\"a%AK_SEP%b%AK_SEP%\", 2, s); if (n == 0) set(\"\", \"$out\", s);",
         "kept"},
        {"strcpy(s, \"a/b\"); add_id(s, \"c\"); set(\"\", \"$out\", s);", "a/b/c"},
        {"char t[50]; strcpy(s, \"a/b/c\"); cut_name(s, t); strcat(s, \"|\"); strcat(s, t); set(\"\", \"$out\", s);",
         "a/b|c"},
        {"char t[50]; strcpy(s, \"a.b/c\"); cut_extension(s, t); strcat(s, \"|\"); strcat(s, t);"
         " set(\"\", \"$out\", s);",
         "a|"},
        {"char t[50]; strcpy(s, \"f.asc\"); cut_extension(s, t); add_extension(s, \"prj\"); strcat(s, t);"
         " set(\"\", \"$out\", s);",
         "f.prjasc"},
        {"get_attribute_file(\"AK_Object\", \"atr\", s); n = cut_name(s, s); sprintf(s, \"%d\", n);"
         " set(\"\", \"$out\", s);",
         "1"},
        {"d = exec_time(\"nosuch\", \"x\"); if (d == -1.0e30) set(\"\", \"$out\", \"none\");", "none"},
        {"if (exec_time(\"a\", \"Number\") <= modification_time(\"a\") &&"
         " modification_time_recursive(\"\") >= modification_time(\"a\")) set(\"\", \"$out\", \"ordered\");",
         "ordered"},
        {"strcpy(s, AK_SEP); s[7] = DIR_SEP; set(\"\", \"$out\", s);", "%AK_SEP/"},
    };
    for (const auto& c : cases) {
        root->SetVariableValue("$out", "");
        EXPECT_EQ(Main(c.body), c.out) << c.body;
    }
}

TEST_F(AK_Object_Script, TheListOfNamesHasThoseOfTheTreeThoseOfTheLanguageAndTheManual)
{
    WithCode("");
    root->Set("List_QVT_SCI_predefined", "");
    const Lines messages = Messages();
    ASSERT_EQ(messages.size(), 1u);
    const std::string& text = messages[0];
    size_t at = 0;
    for (const char* part : {"INFO:QVT_SCI-Interpreter predefined variables and functions\n", "int set(char objId[]",
                             "double sqrt(double x);", "square root", "LIMITATIONS"})
        EXPECT_NE(at = text.find(part, at), std::string::npos) << part;
}

TEST_F(AK_Object_Script, AMacroLeavesNothingAndTellsItsErrors)
{
    WithCode("");
    Main("message(\"runs\", \"x\"); set_error(\"stop here\");");
    EXPECT_STREQ(AK_Object::_execStatus.c_str(), "stop here");
    ClassFile("bad.cint", "void main( {}");
    root->ExecMacro(directory / "attributes/bad.cint", 0);
    EXPECT_EQ(Text(AK_Object::_execStatus),
              Text(AK_String("syntax errors in QVT_SCI file ") + (directory / "attributes/bad.cint")));
    ClassFile("nomain.cint", "int x = 1;");
    AK_Object::_execStatus = "";
    root->ExecMacro(directory / "attributes/nomain.cint", 0);
    EXPECT_STREQ(AK_Object::_execStatus.c_str(), "");
    root->ExecMacro("nosuch.cint", 0);
    EXPECT_EQ(Text(AK_Object::_execStatus).rfind("can neither open macro file 'nosuch.cint' nor '", 0), 0u);
    // A macro of commands stops at a cint macro's error.
    ClassFile("outer.macro", Text(AK_String("set(\"\", \"ExecMacro\", \"") + (directory / "attributes/bad.cint") +
                                  "\")\nset(\"a\", \"Number\", \"99\")\n"));
    root->ExecMacro(directory / "attributes/outer.macro", 0);
    EXPECT_STRNE(root->Component("a")->Get("Number").c_str(), "99");
}

// Makes the first object of a class when a macro tells it to.
class TestMaker : public AK_Class<TestMaker, AK_Object> {
public:
    static constexpr const char* className = "TestMaker";
    static std::span<const Row> Rows()
    {
        static constexpr Row rows[] = {
            {"Make", command<[](TestMaker& m) { m.AddComponent(new TestSpecialThing("special", nullptr)); }>},
        };
        return rows;
    }
    TestMaker(const AK_String& id, AK_Object* parent) : AK_Class(id, parent) { ReadClassFiles(); }
};

TEST_F(AK_Object_Script, AClassThatAMacroUsesFirstOutlivesTheMacro)
{
    Describe("TestMaker", "obj.Maker\n");
    ClassFile("TestSpecialThing.cint", "void Extra(char v[]) { strcpy(v, \"from code\"); }");
    WithCode("");
    Fresh<TestMaker>();
    AK_Object* maker = Added(new TestMaker("maker", nullptr));
    Main("set(\"maker\", \"Make\", \"\");");
    Main("n = 1;");
    ASSERT_TRUE(maker->Component("special"));
    EXPECT_STREQ(maker->Component("special")->Get("Extra").c_str(), "from code");
}
