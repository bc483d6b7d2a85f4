// The files of a class: where they are looked up, defaults of the class, its variables.

#include "AK_Object_TestSupport.h"

class AK_ClassFilesTest : public ObjectTest {
protected:
    static std::string File(const char* name, const char* ext, const char* subdir)
    {
        return Text(AK_Object::AttributeFile(name, ext, subdir));
    }
};

TEST_F(AK_ClassFilesTest, AFileOfTheUserComesFirst)
{
    const std::string of = Text(directory / "attributes"), user = Text(directory / "user");
    EXPECT_EQ(File("C", "atr", nullptr), of + "/C.atr") << "whether it exists or not";
    EXPECT_EQ(File("C", nullptr, "sub"), of + "/sub/C");
    EXPECT_EQ(Messages(), Lines{});

    WriteFile(directory / "user/C.atr", "");
    AK_System::CreateDir(directory / "user/sub");
    WriteFile(directory / "user/sub/C.x", "");
    EXPECT_EQ(File("C", "atr", nullptr), user + "/C.atr");
    EXPECT_EQ(File("C", "x", "sub"), user + "/sub/C.x");
    EXPECT_EQ(File("C", "def", nullptr), of + "/C.def");
    EXPECT_EQ(Messages(), (Lines{"user-specific " + user + "/C.atr", "user-specific " + user + "/sub/C.x"}));
}

TEST_F(AK_ClassFilesTest, DefaultsAreExecutedOnNewObjectsFromTheNextStartOn)
{
    const std::string value = "two\n\"lines\"\t%";
    {
        TestThing thing("t", nullptr);
        EXPECT_EQ(thing.SetDefault("Text", value.c_str()), 0);
        EXPECT_EQ(thing.SetDefault("Number", "4"), 0);
        EXPECT_EQ(TestThing("u", nullptr).Get("Text"), "") << "not in this run";
    }
    EXPECT_EQ(FileBytes(directory / "attributes/TestThing.def"),
              "set(\"\", \"Text\", \"two%%n%%qlines%%q%%t%\")\nset(\"\", \"Number\", \"4\")\n");
    Fresh<TestThing>();
    const TestThing thing("t", nullptr);
    EXPECT_EQ(Text(thing.Get("Text")), value);
    EXPECT_EQ(thing.Get("Number"), "4");
}

TEST_F(AK_ClassFilesTest, ClassVariablesAreNamedLines)
{
    AK_Object::_userApplicationDirectory = directory / "home/";
    WriteFile(directory / "home/A.clv", "$n_threads=4\r\n$empty=\n\nno assignment\n$n=1\n$n=2\n");
    AK_List<AK_String> list(1);
    AK_Object::ReadClassVariables("A", list);
    EXPECT_EQ(Joined(list), "status=read|$n_threads=4|$empty=||no assignment|$n=1|$n=2|");
    AK_Object::ReadClassVariables("A", list);
    EXPECT_EQ(list.Size(), 7) << "read once";

    const auto value = [&](const char* name) {
        const char* found = AK_Object::ClassVariable(list, name);
        return std::string(found ? found : "null");
    };
    EXPECT_EQ(value("$n_threads") + "," + value("$empty") + "," + value("$n") + "," + value("$n_thread"), "4,,1,null");
    AK_Object::ClassVariable(list, "$n", "a=b");
    AK_Object::ClassVariable(list, "$new", "");
    EXPECT_EQ(Joined(list), "status=read|$n_threads=4|$empty=||no assignment|$n=a=b|$n=2|$new=|");

    AK_List<AK_String> none(1);
    AK_Object::ReadClassVariables("NoSuch", none);
    EXPECT_EQ(Joined(none), "status=read|");
}

TEST_F(AK_ClassFilesTest, HostileFilesAreReadInPieces)
{
    const std::string bytes =
        std::string(100000, 'x') + std::string("\0\x01\xff\n", 4) + std::string(1000, '\0') + "\n";
    ClassFile("TestThing.def", bytes);
    ClassFile("TestThing.parsets", bytes);
    AK_System::CreateDir(directory / "home/.korvo");
    WriteFile(directory / "home/.korvo/TestThing.clv", bytes);
    const TestThing thing("t", nullptr);
    EXPECT_EQ(Messages().size(), 397u) << "lines of 255 bytes at most: 393 and 4";
    EXPECT_EQ(TestThing::_classVariables.Size(), 1 + 25 + 1);
}
