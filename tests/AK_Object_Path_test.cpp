// Ids, their collisions and the directories that go with them; paths, and what they reach that is not in memory.

#include "AK_Object_TestSupport.h"

class AK_PathTest : public ObjectTest {
protected:
    // Viewer, with Project/DHMs/alp and Project/Simulations/x below.
    AK_PathTest() : root("Viewer", nullptr)
    {
        project = root.Add("Project");
        alp = project->Add("DHMs")->Add("alp");
        x = project->Add("Simulations")->Add("x");
    }

    // A directory as an object of the test class leaves it.
    void ObjectOnDisc(const AK_String& dir, const std::string& commands = "")
    {
        AK_System::CreateDirRecursively(dir);
        WriteFile(dir + "/Thing.atr", commands);
    }

    TestThing root;
    TestThing* project;
    TestThing* alp;
    TestThing* x;
};

// ---------------------------------------------------------------------------------------------------------------- ids

TEST_F(AK_PathTest, IdsAreMadeLegalAndUnique)
{
    // clang-format off
    const struct {
        const char* why;
        Lines taken;
        std::string id;
        std::string result;
    } cases[] = {
        {"free", {"B"}, "A", "A"},
        {"taken", {"A"}, "A", "A_0001"},
        {"taken twice", {"A", "A_0001"}, "A", "A_0002"},
        {"a gap is filled", {"A", "A_0002"}, "A", "A_0001"},
        {"a number of its own goes on", {"A_0009"}, "A_0009", "A_0010"},
        {"of any width", {"B_7"}, "B_7", "B_0008"},
        {"and of more than four digits", {"C_00000012"}, "C_00000012", "C_0013"},
        {"a number with letters behind it", {"A_12b"}, "A_12b", "A_0013"},
        {"no number behind the last _", {"A_1_b"}, "A_1_b", "A_1_b_0001"},
        {"nothing behind it", {"A_"}, "A_", "A__0001"},
        {"the last number", {"A_9998"}, "A_9998", "A_9999"},
        {"beyond it ids grow", {"A_9999", "A_9999x"}, "A_9999", "A_9999xx"},
        {"a huge number", {"A_99999999999999999999"}, "A_99999999999999999999", "A_99999999999999999999x"},
        {"only a number", {"_5"}, "_5", "_0006"},
        {"a blank, a point, a slash", {}, "a b.c/d", "a_b_c_d"},
        {"bytes of no alphabet", {}, "\xc3\xa4\x01\n\t\"", "______"},
        {"made legal, then unique", {"a_b"}, "a b", "a_b_0001"},
        {"capital letters differ", {"a"}, "A", "A"},
    };
    // clang-format on
    for (const auto& c : cases) {
        TestThing parent("parent", nullptr);
        for (const std::string& id : c.taken) parent.Add(id.c_str());
        EXPECT_EQ(Text(parent.Add(c.id.c_str())->Id()), c.result) << c.why;
        ExpectConsistent(parent);
    }
}

TEST_F(AK_PathTest, RenamingMovesTheDirectory)
{
    root.ProjectDir(directory / "p");
    ObjectOnDisc(directory / "p/Project/DHMs/alp/part");
    alp->Add("part");
    alp->Id("berg");
    EXPECT_TRUE(AK_System::FileExists(directory / "p/Project/DHMs/berg/part/Thing.atr"));
    EXPECT_EQ(alp->Get("ProjectDir"), directory / "p/Project/DHMs/berg");
    EXPECT_EQ(alp->Get("part:ProjectDir"), directory / "p/Project/DHMs/berg/part");

    ObjectOnDisc(directory / "p/Project/DHMs/unloaded");
    alp->Id("unloaded");
    EXPECT_EQ(Text(alp->Id()), "berg") << "what is on disc under the new name stays, so the old id does";
    EXPECT_EQ(alp->Get("ProjectDir"), directory / "p/Project/DHMs/berg");

    x->Id("y");
    EXPECT_EQ(x->Get("ProjectDir"), directory / "p/Project/Simulations/y") << "not on disc yet";

    TestThing top("top", nullptr);
    top.ProjectDir("top");
    top.Id("other");
    EXPECT_EQ(top.Get("ProjectDir"), "./other") << "a directory without a directory part";
}

// -------------------------------------------------------------------------------------------------------------- paths

TEST_F(AK_PathTest, PathsLeadFromAnObjectToAnother)
{
    alp->AppendComponent(x);
    const struct {
        AK_Object* from;
        const char* path;
        AK_Object* to;
    } cases[] = {
        {&root, "",                       &root        },
        {alp,   "",                       alp          },
        {&root, "root",                   &root        },
        {alp,   "root",                   &root        },
        {alp,   "/",                      &root        },
        {alp,   "Viewer",                 &root        },
        {alp,   "Viewer/Project",         project      },
        {alp,   "root/Project",           project      },
        {alp,   "/Project/Simulations/x", x            },
        {&root, "Project/DHMs/alp",       alp          },
        {&root, "Project/DHMs/alp/",      alp          },
        {alp,   "..",                     alp->Parent()},
        {alp,   "../",                    alp->Parent()},
        {alp,   "../../Simulations/x",    x            },
        {alp,   "x",                      x            },
        {alp,   "x/..",                   x->Parent()  }, // a reference leads on to its owner
        {alp,   "x/../../DHMs/alp",       alp          },
        {&root, "Project//Project",       project      }, // an empty part is the root
        {&root, "..",                     nullptr      },
        {&root, "../Project",             nullptr      },
        {&root, "Project/DHMs/al",        nullptr      },
        {&root, "Project/DHMs/alp2",      nullptr      },
        {&root, "project",                nullptr      },
        {&root, ".",                      nullptr      },
        {&root, " Project",               nullptr      },
        {alp,   "../root",                &root        },
    };
    for (const auto& c : cases) EXPECT_EQ(c.from->ObjectById(c.path), c.to) << c.from->Id() << " -> " << c.path;
}

TEST_F(AK_PathTest, OnlyAddressesOfLiveObjectsAreFollowed)
{
    EXPECT_EQ(root.ObjectById(x->Get("Address")), x);
    EXPECT_EQ(alp->ObjectById("../" + x->Get("Address")), x);
    const AK_String stale = x->Get("Address");
    const TestThing elsewhere("elsewhere", nullptr);
    root.DeleteComponent("Project");
    for (const AK_String& path :
         {stale, elsewhere.Get("Address"), AK_String("%ak_ptr%"), AK_String("%ak_ptr%(nil)"), AK_String("%ak_ptr%0x0"),
          AK_String("%ak_ptr%0x1"), AK_String("%ak_ptr%ffffffffffffffffff"), AK_String("%ak_ptr%x y")})
        EXPECT_EQ(root.ObjectById(path), nullptr) << path;
}

TEST_F(AK_PathTest, LongPathsEnd)
{
    std::string up, around;
    for (int i = 0; i < 100000; ++i) {
        up += "../";
        around += "Project/../";
    }
    EXPECT_EQ(root.ObjectById(up.c_str()), nullptr);
    EXPECT_EQ(root.ObjectById(around.c_str()), &root);
    EXPECT_EQ(alp->ObjectById(std::string(1000000, '/').c_str()), &root);
    root.ProjectDir(directory / "p");
    EXPECT_EQ(root.ObjectById(std::string(1000000, 'a').c_str()), nullptr);
    EXPECT_EQ(root.ObjectById("\x01\xff\n"), nullptr);
}

// ------------------------------------------------------------------------------------------------------- lazy loading

TEST_F(AK_PathTest, APathLoadsWhatIsOnDisc)
{
    root.ProjectDir(directory / "p");
    ObjectOnDisc(directory / "p/Project/DHMs/berg", "set(\"\", \"Number\", \"12\")\n");
    ObjectOnDisc(directory / "p/Project/DHMs/berg/part", "set(\"\", \"Text\", \"deep\")\n");
    const Lines loaded = Run(root, R"(get("Project/DHMs/berg/part", "Text", $text))");
    EXPECT_EQ(root.Get("$text"), "deep");
    EXPECT_EQ(loaded.size(), 2u) << "one message for each object";
    EXPECT_EQ(root.Get("Project/DHMs/berg:Number"), "12") << "it was loaded whole on the way";
    EXPECT_EQ(root.Get("Project/DHMs/berg:ProjectDir"), directory / "p/Project/DHMs/berg");
    EXPECT_EQ(alp->Parent()->NumComponents(), 2);
    EXPECT_EQ(Run(root, R"(set("Project/DHMs/berg", "Number", "13"))"), Lines{}) << "not again";
    ExpectConsistent(root);
}
