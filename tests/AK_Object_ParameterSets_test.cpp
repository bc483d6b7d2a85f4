// Parameter sets: reading the files, setting them, and whether a set still is in force.

#include "AK_Object_TestSupport.h"

class AK_ParameterSetsTest : public ObjectTest {
protected:
    // The sets of the file as "name{attribute=value;...}".
    static std::string Sets()
    {
        std::string text;
        for (const AK_ParameterSet& set : AK_Object::_parsets) {
            text += Text(set._name) + "{";
            for (int i = 0; i < set._attributes.Size(); ++i)
                text += Text(set._attributes[i]) + "=" + Text(set._values[i]) + ";";
            text += "}";
        }
        return text;
    }
};

TEST_F(AK_ParameterSetsTest, FilesHoldNamedLists)
{
    // clang-format off
    const struct {
        const char* why;
        std::string text;
        std::string sets;
    } cases[] = {
        {"trimmed everywhere", "= dense snow \r\n\tNumber =  1 \t\n Text=a b\n", "dense snow{Number=1;Text=a b;}"},
        {"lines without = say nothing", "comment\n=a\nNumber\n\n# x\n", "a{}"},
        {"split at the first =", "=a=b\nText=c=d\nText=\n", "a=b{Text=c=d;Text=;}"},
        {"two sets", "=a\nx=1\n=b\ny=2", "a{x=1;}b{y=2;}"},
        {"the same name twice", "=a\nx=1\n=a\nx=2\n", "a{x=1;}a{x=2;}"},
        {"no name", "=\nx=1\n", "{x=1;}"},
        {"nothing to append to", "x=1\n=a\n", "a{}"},
        {"empty", "", ""},
        {"a NUL ends its line", std::string("=a\0b\nx=1\0=2\ny=3\n", 16), "a{x=1;y=3;}"},
    };
    // clang-format on
    for (const auto& c : cases) {
        AK_Object::_parsets.Clear();
        ClassFile("C.parsets", c.text);
        AK_Object::ParameterSetsAppend("C");
        EXPECT_EQ(Sets(), c.sets) << c.why;
    }
    AK_Object::_parsets.Clear();
    AK_Object::ParameterSetsAppend("NoSuch");
    EXPECT_EQ(Sets(), "");
}

TEST_F(AK_ParameterSetsTest, ASetIsInForceUntilOneOfItsAttributesIsSet)
{
    ClassFile("TestThing.parsets", "=soft\nNumber=1\nText=x\n=hard\nNumber=2\n");
    TestThing thing("t", nullptr);
    EXPECT_EQ(thing.Get("ParameterSetOptions"), "none%AK_SEP%soft%AK_SEP%hard%AK_SEP%");
    EXPECT_EQ(thing.Set("ParameterSet", "soft"), 1);
    EXPECT_EQ(thing.Get("ParameterSet"), "soft");
    EXPECT_EQ(Text(thing.Get("Number")) + Text(thing.Get("Text")), "1x");

    thing.Set("Ratio", "3");
    EXPECT_EQ(thing.Get("ParameterSet"), "soft") << "no attribute of it";
    thing.Set("Text", "x");
    EXPECT_EQ(thing.Get("ParameterSet"), "none") << "set, if to the same value";
    thing.Set("ParameterSet", "hard");
    EXPECT_EQ(thing.Get("ParameterSet"), "hard");
    thing.Set("ParameterSet", "none");
    EXPECT_EQ(thing.Get("ParameterSet"), "none");
    thing.Set("ParameterSet", "nosuch");
    EXPECT_EQ(thing.Get("ParameterSet"), "none");
    EXPECT_EQ(thing.Get("Number"), "2") << "nothing is undone";
    EXPECT_EQ(Messages(), Lines{});
}

TEST_F(AK_ParameterSetsTest, SetsMayNameSetsHereAndElsewhere)
{
    ClassFile("TestThing.parsets", "=inner\nNumber=1\n"
                                   "=outer\nParameterSet=inner\nRatio=2\n"
                                   "=remote\nchild:ParameterSet=inner\nchild:Text=r\nText=t\n");
    TestThing thing("t", nullptr);
    TestThing* child = thing.Add("child");
    thing.Set("ParameterSet", "outer");
    EXPECT_EQ(thing.Get("ParameterSet"), "outer");
    EXPECT_EQ(Text(thing.Get("Number")) + Text(thing.Get("Ratio")), "12");
    thing.Set("Number", "7");
    EXPECT_EQ(thing.Get("ParameterSet"), "none") << "the inner set holds no more";

    thing.Set("ParameterSet", "remote");
    EXPECT_EQ(thing.Get("ParameterSet"), "remote");
    EXPECT_EQ(child->Get("ParameterSet"), "inner");
    child->Set("Number", "8");
    EXPECT_EQ(thing.Get("ParameterSet"), "none");
    thing.Set("ParameterSet", "remote");
    child->Set("Text", "other");
    EXPECT_EQ(thing.Get("ParameterSet"), "none") << "an attribute at a path has its stamp there";
    thing.Set("ParameterSet", "remote");
    thing.DeleteComponent("child");
    EXPECT_EQ(thing.Get("ParameterSet"), "none");
}

TEST_F(AK_ParameterSetsTest, SetsInACircleCountAsNone)
{
    ClassFile("TestThing.parsets", "=self\nParameterSet=self\nNumber=1\n"
                                   "=a\nParameterSet=b\nNumber=2\n=b\nParameterSet=a\nText=x\n"
                                   "=across\nroot/child:ParameterSet=across\nroot:ParameterSet=across\n");
    TestThing thing("t", nullptr);
    thing.Add("child");
    for (const char* name : {"self", "a", "b", "across"}) {
        thing.Set("ParameterSet", name);
        EXPECT_EQ(thing.Get("ParameterSet"), "none") << name;
    }
    EXPECT_EQ(Text(thing.Get("Number")) + Text(thing.Get("Text")), "2x") << "what they say is set all the same";
}

TEST_F(AK_ParameterSetsTest, FilesChooseNeitherDepthNorWork)
{
    std::string chain, doubling;
    for (int i = 0; i < 20000; ++i)
        chain += "=c" + std::to_string(i) + "\nParameterSet=c" + std::to_string(i + 1) + "\n";
    for (int i = 0; i < 40; ++i) {
        const std::string next = "ParameterSet=d" + std::to_string(i + 1) + "\n";
        doubling += "=d" + std::to_string(i) + "\n" + next + next;
    }
    doubling += "=d40\nCount=\n";
    ClassFile("TestThing.parsets", chain + doubling);
    TestThing thing("t", nullptr);
    thing.Set("ParameterSet", "c0");
    EXPECT_EQ(thing.Get("ParameterSet"), "none");
    thing.Set("ParameterSet", "d0");
    EXPECT_EQ(thing.Get("ParameterSet"), "none");
    EXPECT_LE(thing._count, 10000);
    thing.Set("ParameterSet", "d35");
    EXPECT_EQ(thing.Get("ParameterSet"), "d35") << "what is asked of a sensible file is unharmed";
}
