// Get and Set: values as texts, the chain of classes, names that lead elsewhere, stamps, variables.

#include "AK_Object_TestSupport.h"

class AK_AttributesTest : public ObjectTest {
protected:
    AK_AttributesTest() : root("Viewer", nullptr)
    {
        a = root.Add("a");
        b = a->Add("b");
    }

    TestThing root;
    TestThing* a;
    TestThing* b;
};

// ----------------------------------------------------------------------------------------------------- values as texts

TEST_F(AK_AttributesTest, ValuesAreReadAndWrittenInTheirFormats)
{
    const struct {
        const char* attribute;
        const char* set;
        const char* get;
    } cases[] = {
        {"Number", "-17",                       "-17"                      },
        {"Number", " 12 apples",                "12"                       },
        {"Number", "1e3",                       "1"                        },
        {"Number", "0x10",                      "0"                        },
        {"Number", "",                          "0"                        },
        {"Number", "99999999999999999999",      "2147483647"               },
        {"Number", "-2147483649",               "-2147483648"              },
        {"Ratio",  "0.1",                       "0.1"                      },
        {"Ratio",  "123456789",                 "1.23457e+08"              },
        {"Ratio",  "1e99",                      "inf"                      },
        {"Length", "0.1",                       "0.1"                      },
        {"Length", "3.14159265358979312",       "3.14159265358979"         },
        {"Length", "-1e-300 m",                 "-1e-300"                  },
        {"Length", "none",                      "0"                        },
        {"Text",   "any \"text\"\n\ttwo lines", "any \"text\"\n\ttwo lines"},
        {"Text",   "",                          ""                         },
    };
    for (const auto& c : cases) {
        EXPECT_EQ(root.Set(c.attribute, c.set), 1) << c.attribute;
        EXPECT_EQ(Text(root.Get(c.attribute)), c.get) << c.attribute << " " << c.set;
    }
    root.Set("Ratio", "0.126");
    EXPECT_EQ(root.Get("RatioText"), "0.13") << "a row's own format";
    const std::string megabyte(1 << 20, 'x');
    root.Set("Text", megabyte.c_str());
    EXPECT_EQ(Text(root.Get("Text")), megabyte);
}

// -------------------------------------------------------------------------------------------- whose a name is

TEST_F(AK_AttributesTest, WhatNobodyKnowsLeavesTheStatusAlone)
{
    AK_Object::_execStatus = "old";
    for (const char* name : {"NoSuch", "", "Count", "number", "Number ", "$", "$a b", "nosuch:Number", "a:NoSuch",
                             "a:", "a::", ":", "::", "NoType::Number"})
        EXPECT_EQ(root.Get(name), "%AK_NULL%") << name;
    for (const char* name : {"NoSuch", "", "Type", "number", "$", "nosuch:Number", "a:NoSuch", "a:", "a::", ":",
                             "::", "NoType::Number", "Thing::NoSuch", "Thing::"})
        EXPECT_EQ(root.Set(name, "1"), 0) << name;
    EXPECT_EQ(Text(AK_Object::_execStatus), "old");
    EXPECT_EQ(Messages(), Lines{});
}

TEST_F(AK_AttributesTest, PathsInNamesReachOtherObjects)
{
    b->Set("Number", "3");
    EXPECT_EQ(root.Get("a/b:Number"), "3");
    EXPECT_EQ(root.Get("a:b:Number"), "3");
    EXPECT_EQ(b->Get("root:a:b:Number"), "3");
    EXPECT_EQ(b->Get(":Number"), "3") << "an empty path is the object itself";
    EXPECT_EQ(root.Set("a/b:Number", "4"), 1);
    EXPECT_EQ(b->Set("..:Number", "5"), 1);
    EXPECT_EQ(a->Get("Number"), "5");
    EXPECT_EQ(root.Set("a:$v", "x"), 1);
    EXPECT_EQ(a->Get("$v"), "x");
    EXPECT_EQ(root.Get("$v"), "");

    AK_String path, attr;
    EXPECT_TRUE(AK_Object::ParseRemoteCommand("p/q:r:s", path, attr));
    EXPECT_EQ(Text(path) + "|" + Text(attr), "p/q|r:s");
    for (const char* text : {"p", "", "p:", "p::q", "::q", ":"})
        EXPECT_FALSE(AK_Object::ParseRemoteCommand(text, path, attr)) << text;
}

TEST_F(AK_AttributesTest, BroadcastsReachATypeAndThoseDerivedFromIt)
{
    auto* special = new TestSpecialThing("s", b);
    b->AddComponent(special);
    auto* plain = new AK_Object("plain", a);
    a->AddComponent(plain);
    root.AppendComponent(b);   // reached once, at its owner

    EXPECT_EQ(root.Set("Thing::Count", ""), 1);
    for (const TestThing* thing : {&root, a, b, static_cast<TestThing*>(special)})
        EXPECT_EQ(thing->_count, 1) << thing->Id();
    EXPECT_EQ(a->Set("SpecialThing::Extra", "e"), 1);
    EXPECT_EQ(special->Get("Extra"), "e");
    EXPECT_EQ(plain->Set("Object::Active", "0"), 1) << "the object itself counts";
    EXPECT_EQ(root.Set("Object::Active", "0"), 1);
    EXPECT_EQ(special->Get("Active"), "0");
    EXPECT_EQ(special->Set("Thing::NoSuch", "1"), 0);
    EXPECT_EQ(root.Set("SpecialThing::Number", "9"), 1);
    EXPECT_EQ(root.Get("Number"), "0");
}

TEST_F(AK_AttributesTest, NamesChooseNeitherDepthNorWork)
{
    std::string path, type;
    for (int i = 0; i < 100000; ++i) path += "root:";
    for (int i = 0; i < 4000; ++i) type += "Object::";
    EXPECT_EQ(root.Get((path + "Number").c_str()), "%AK_NULL%");
    EXPECT_EQ(root.Set((path + "Number").c_str(), "1"), 0);
    EXPECT_EQ(root.ExecTime((path + "Number").c_str()), 0);
    for (int i = 0; i < 50; ++i) b = b->Add("deep");
    EXPECT_EQ(root.Set((type + "Active").c_str(), "0"), 0);
    EXPECT_EQ(root.Get("Active"), "1");
    root.Set((std::string(100000, ':') + "x").c_str(), "1");
    EXPECT_EQ(root.Set("a:a:b:..:b:Number", "1"), 0);
    EXPECT_EQ(root.Set("root:a:root:a:b:Number", "8"), 1) << "a few are fine, before and after";
}

// ----------------------------------------------------------------------------------------- what the description says

TEST_F(AK_AttributesTest, AssigningTakesOverWhatIsSaved)
{
    for (const char* name : {"Number", "Ratio", "Length", "Text", "Scratch"}) a->Set(name, "7");
    a->Set("Active", "0");
    EXPECT_EQ(root.Set("AssignAttributesOf", "a"), 1);
    for (const char* name : {"Number", "Ratio", "Length", "Text"}) EXPECT_EQ(root.Get(name), "7") << name;
    EXPECT_EQ(root.Get("Scratch"), "") << "volatile";
    EXPECT_EQ(root.Get("Active"), "0") << "of the base class too";
    EXPECT_EQ(root.Get("Id"), "Viewer");
    EXPECT_EQ(root._count, 0) << "operations have no value to take over";

    AK_List<AK_String> excluded(1);
    excluded.Append("Number");
    b->AssignAttributesOf(a, excluded);
    EXPECT_EQ(b->Get("Number"), "0");
    EXPECT_EQ(b->Get("Text"), "7");

    root.Set("AssignAttributesOf", "nosuch");
    EXPECT_EQ(Text(AK_Object::_execStatus), "object 'nosuch' not found");
    root.AssignAttributesOf(&root, excluded);
    EXPECT_EQ(root.Get("Text"), "7");
}

// -------------------------------------------------------------------------------------------------------------- stamps

TEST_F(AK_AttributesTest, EachSetIsStampedLaterThanAllBefore)
{
    EXPECT_EQ(a->ExecTime("Number"), 0);
    long last = 0;
    for (int i = 0; i < 1000; ++i) {
        (i % 2 ? a : b)->Set("Number", "1");
        const long stamp = (i % 2 ? a : b)->ExecTime("Number");
        ASSERT_GT(stamp, last);
        last = stamp;
    }
    a->Get("Number");
    EXPECT_EQ(a->ModificationTime(), last) << "reading changes nothing";
    EXPECT_EQ(root.ExecTime("a:Number"), last);
    EXPECT_EQ(root.ExecTime("a/b:Number"), b->ExecTime("Number"));
    EXPECT_EQ(root.ExecTime("nosuch:Number"), 0);
    EXPECT_EQ(root.ExecTimeRec("Number"), last);
    EXPECT_EQ(root.ModificationTime(), 0);
    EXPECT_EQ(root.ModificationTimeRec(), last);
    b->Set("Fail", "");
    EXPECT_EQ(root.ModificationTimeRec(), b->ExecTime("Fail")) << "a failure counts";
    root.Update();
    root.Set("Text", "x");
    EXPECT_GT(root.ExecTime("Text"), b->ExecTime("Fail"));
}

// ----------------------------------------------------------------------------------------------------------- variables

TEST_F(AK_AttributesTest, VariablesBelongToTheirObject)
{
    EXPECT_EQ(a->Get("$x"), "") << "made by asking";
    EXPECT_EQ(a->Get("VariableValues"), "$latest_comp=b%AK_SEP%$x=%AK_SEP%");
    EXPECT_EQ(a->Set("$x", "1=2"), 1);
    EXPECT_EQ(b->Get("$x"), "");
    a->Set("SetVariableValue", "$y=p=q");
    a->Set("SetVariableValue", "$x=");
    a->SetVariableValue("", "ignored");
    EXPECT_EQ(a->Get("VariableValues"), "$latest_comp=b%AK_SEP%$x=%AK_SEP%$y=p=q%AK_SEP%");

    b->Set("VariableValues", a->Get("VariableValues"));
    EXPECT_EQ(b->Get("$y"), "p=q");
    EXPECT_EQ(b->Get("$latest_comp"), "b");
    ExpectConsistent(root);
}
