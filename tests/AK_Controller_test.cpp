// The menus, by dialogues in tests/data/AK_Controller_*.txt, and what no file of words can hold.

#include "AK_Controller.h"

#include "AK_Controller_TestSupport.h"
#include "AK_Group.h"
#include "AK_Object_TestSupport.h"

namespace {

/// Type "Trap": to look at one of its attributes deletes the object.
class TestTrap : public AK_Class<TestTrap, AK_Object> {
public:
    static constexpr const char* className = "TestTrap";
    static std::span<const Row> Rows()
    {
        static constexpr Row rows[] = {{"Look", shown<&TestTrap::Vanish>}};
        return rows;
    }
    TestTrap(const AK_String& id, AK_Object* parent) : AK_Class(id, parent) { ReadClassFiles(); }

    AK_String Vanish() const
    {
        if (Parent() && !Id().StartsWith("Tame")) Parent()->DeleteComponent(Id());
        return "seen";
    }
};

/// Viewer with the components
///   Box    a thing, with a thing Inner in it
///   Trap   see above
///   User   a user object that can exchange its own description
///   Group  a group with no members
class AK_TerminalControllerTest : public ObjectTest {
protected:
    AK_TerminalControllerTest()
    {
        for (const char* name : {"AK_Controller", "AK_TerminalController", "AK_Group", "AK_UserObj"})
            Describe(name, FileBytes(AK_String(KORVO_SOURCE_DIR "/files/AK_Attributes/") + name + ".atr"));
        Describe("TestThing", std::string(TestThing::description) + "\tapply.DeleteMe\n"
                                                                    "\t\tset:DeleteMe\n"
                                                                    "\tapply.DeleteAllOfIt\n"
                                                                    "\t\tset:..:DeleteMe\n"
                                                                    "\ttext.Unknown\n"
                                                                    "\t\tset:NoSuch\n");
        Describe("TestTrap", "obj.Trap\n\ttext.First:Id\n\ttext.Look:Look\n\ttext.Last:Id\n");
        Describe("Mine", "obj.Mine\n\tdoc:The sum @@a_1 + "
                         "2/@.\n\topr.Deep\n\t\ttext.Swap:AttributesName\n\t\t\tset:AttributesName\n");
        Describe("Other", "obj.Other\n\ttext.Plain:Id\n");
        Fresh<AK_Controller, AK_TerminalController, AK_Group, AK_UserObj, TestTrap>();
        ak_msg_func = ak_default_msg_func;
        viewer = std::make_unique<AK_TerminalController>("Viewer", nullptr);
        auto* box = new TestThing("Box", viewer.get());
        viewer->AddComponent(box);
        box->Add("Inner");
        viewer->AddComponent(new TestTrap("Trap", viewer.get()));
        auto* user = new AK_UserObj("User", viewer.get());
        viewer->AddComponent(user);
        user->Set("AttributesName", "Mine");
        viewer->AddComponent(new AK_Group("Group", viewer.get()));
    }

    /// What the menus say to the words.
    Conversation Menus(const std::string& words, size_t limit = 1 << 20)
    {
        return Converse(
            words,
            [&] {
                if (chdir(directory.Path().c_str()) != 0) return 1;   // random words may name a file to write
                viewer->Run(0, 0, directory / "attributes/start.macro", "", 0);
                viewer.reset();
                return 0;
            },
            limit);
    }

    void Play(const char* file)
    {
        const AK_String path = AK_String(KORVO_SOURCE_DIR "/tests/data/") + file;
        const std::vector<Dialogue> dialogues = DialoguesOf(path, directory.Path());
        ASSERT_FALSE(dialogues.empty()) << path.c_str();
        for (const Dialogue& dialogue : dialogues) {
            SCOPED_TRACE(dialogue.name);
            ClassFile("start.macro", "");   // a former dialogue may have recorded to it
            const Conversation conversation = Menus(dialogue.words);
            EXPECT_EQ(conversation.signal, 0);
            EXPECT_EQ(conversation.status, 0);
            EXPECT_TRUE(conversation.ended) << "the words do not lead out of the menus";
            ExpectSpoken(SpokenLines(conversation.output), dialogue.lines);
            ASSERT_FALSE(HasFailure()) << conversation.output.substr(0, 20000);
        }
    }

    std::unique_ptr<AK_TerminalController> viewer;
};

}   // namespace

TEST_F(AK_TerminalControllerTest, WalksTheTree) { Play("AK_Controller_objects.txt"); }

TEST_F(AK_TerminalControllerTest, ShowsAndSetsAttributes) { Play("AK_Controller_attributes.txt"); }

TEST_F(AK_TerminalControllerTest, StandsOnWhatLivesWhenCommandsDelete) { Play("AK_Controller_deleting.txt"); }

TEST_F(AK_TerminalControllerTest, RecordsAndPlays) { Play("AK_Controller_recording.txt"); }

TEST_F(AK_TerminalControllerTest, RepeatsTheSameMenuAtTheEndOfTheInput)
{
    const struct {
        const char* why;
        const char* words;
        const char* repeated;
    } cases[] = {
        {"object menu", "1", "Box:\n1:Inner\nq: quit\ne: edit\n?: help\n"},
        {"prompt: nothing is set", "1 e 3", "Viewer/Box\nenter value: []\n"},
        {"an option menu is left", "1 e 5", "Viewer/Box\n1: int.Number: 0\n"},
    };
    for (const auto& c : cases) {
        const Conversation conversation = Menus(c.words, 1 << 16);
        EXPECT_FALSE(conversation.ended) << c.why;
        EXPECT_EQ(conversation.signal, SIGPIPE) << c.why;
        const size_t first = conversation.output.find(c.repeated);
        ASSERT_NE(first, std::string::npos) << c.why;
        size_t repetitions = 0;
        for (size_t at = first; at != std::string::npos; at = conversation.output.find(c.repeated, at + 1))
            ++repetitions;
        EXPECT_GT(repetitions, 50u) << c.why;
    }
}

TEST_F(AK_TerminalControllerTest, CutsWordsAtNinetyNineCharactersAndAtNulBytes)
{
    const std::string huge(100000, 'x');
    const std::string ninetyNine(99, 'x');
    const std::string nul("a\0b", 3);
    const std::string nothing("\0\0\0", 3);
    const Conversation conversation =
        Menus(huge + " 1 e " + huge + " 3 " + huge + " 3 " + nul + " 3 " + nothing + " q q q");
    EXPECT_TRUE(conversation.ended);
    EXPECT_EQ(conversation.signal, 0);
    ExpectSpoken(SpokenLines(conversation.output),
                 {"...", "enter value: []", "...", "3: text.Text: " + ninetyNine, "...",
                  "enter value: [" + ninetyNine + "]", "...", "3: text.Text: a", "...", "enter value: [a]", "...",
                  "3: text.Text:", "..."});
}

TEST_F(AK_TerminalControllerTest, StaysOnItsFeetWithAnyBytes)
{
    unsigned seed = 1;
    for (int round = 0; round < 10; ++round) {
        std::string bytes;
        for (int i = 0; i < 3000; ++i) {
            seed = seed * 1664525u + 1013904223u;
            const char* likely = "12345678 \n e?|";
            bytes += (seed >> 28) < 12 ? likely[(seed >> 8) % 14] : char(seed >> 16);
        }
        const Conversation conversation = Menus(bytes + " ", 1 << 20);
        EXPECT_TRUE(conversation.ended || conversation.signal == SIGPIPE) << round;
        EXPECT_TRUE(conversation.signal == 0 || conversation.signal == SIGPIPE) << round;
    }
}

TEST_F(AK_TerminalControllerTest, RecordsEachCommandOfTheMenusButTheRecordingItselfAndOptions)
{
    Menus("e 2 q 1 e 3 a|b 3 say%%n\"x\" 6 5 2 11 1 q 14 x q 1 e 1 7 q q q e 2 q 1 e 1 9 q q q");
    EXPECT_EQ(FileBytes(directory / "attributes/start.macro"), "set(\"Box\", \"Text\", \"a%AK_SEP%b%AK_SEP%\")\n"
                                                               "set(\"Box\", \"Text\", \"say%%n%%qx%%q\")\n"
                                                               "set(\"Box\", \"Shown\", \"1\")\n"
                                                               "set(\"Box\", \"Fail\", \"\")\n"
                                                               "set(\"Box\", \"NoSuch\", \"x\")\n"
                                                               "set(\"Box/Inner\", \"Number\", \"7\")\n");
}
