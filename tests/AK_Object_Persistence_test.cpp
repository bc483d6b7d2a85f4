#include "AK_Group_TestSupport.h"

#include <filesystem>
#include <map>

namespace {

/// A thing with a record: a version tag, a count of numbers, texts and a value.
class RecordThing : public TestThing {
public:
    using TestThing::TestThing;

    AK_Object* CreateComponent(const AK_String& id, const AK_String& type) override
    {
        return type == "Thing" ? new RecordThing(id, this) : nullptr;
    }

    int SaveData(AK_Stream& stream) const override
    {
        if (_failing) {
            _execStatus = Id() + ": IO error at " AK_HERE;
            return 1;
        }
        stream.Write(AK_String("RecordThing:v1"));
        stream.Write(_numbers);
        stream.Write(_texts);
        stream.Write(_value);
        return 0;
    }

    int LoadData(AK_Stream& stream) override
    {
        AK_String tag;
        AK_List<double> numbers;
        AK_List<AK_String> texts;
        int value = 0;
        stream.Read(tag);
        stream.Read(numbers);
        stream.Read(texts);
        stream.Read(value);
        if (stream._status != 0 || !(tag == "RecordThing:v1")) {
            _execStatus = Id() + ": IO error at " AK_HERE;
            return 1;
        }
        _numbers.Swap(numbers);
        _texts.Swap(texts);
        _value = value;
        return 0;
    }

    void LoadFinalize() override { finalized.push_back(Text(Id()) + ":" + std::to_string(NumObjects())); }

    void Fill(int seed)
    {
        _numbers.Clear();
        _texts.Clear();
        for (int i = 0; i < 3; ++i) {
            _numbers.Append(seed + 0.1 * i);
            _texts.Append(AK_String(seed + i, "text %d"));
        }
        _value = seed;
    }
    bool Holds(const RecordThing& other) const
    {
        return Joined(_texts) == Joined(other._texts) && _value == other._value &&
               _numbers.Size() == other._numbers.Size();
    }

    int _value = 0;
    bool _failing = false;
    inline static Lines finalized;   // ids, with the size of the subtree that stood then

private:
    AK_List<double> _numbers;
    AK_List<AK_String> _texts;
};

/// All files below a directory, with what is in them.
std::map<std::string, std::string> Contents(const AK_String& dir)
{
    std::map<std::string, std::string> contents;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(dir.c_str()))
        if (entry.is_regular_file())
            contents[entry.path().lexically_relative(dir.c_str()).string()] = FileBytes(entry.path().c_str());
    return contents;
}

}   // namespace

class AK_ObjectPersistenceTest : public GroupTest {
protected:
    AK_ObjectPersistenceTest() { RecordThing::finalized.clear(); }

    static std::string Status() { return Text(AK_Object::_execStatus); }
    std::string Path(const char* name) { return Text(directory / name); }

    RecordThing* Add(AK_Object& parent, const char* id, int seed)
    {
        auto* thing = AddTo<RecordThing>(parent, id);
        thing->Set("Number", AK_String(seed, "%d"));
        thing->Fill(seed);
        return thing;
    }

    // Commands on the thing "x" alone, each of which must end with the status.
    static void ExpectStatus(AK_Object& object, const char* attr, const AK_String& value, const std::string& status)
    {
        EXPECT_EQ(object.Set(attr, value), 1);
        EXPECT_EQ(Status(), status) << attr << " " << value;
    }
};

// ----------------------------------------------------------------------------------------------------------------
// Saving one object
// ----------------------------------------------------------------------------------------------------------------

TEST_F(AK_ObjectPersistenceTest, AnObjectBecomesTwoFilesNamedAfterItsType)
{
    TestThing thing("x", nullptr);
    thing.Set("Number", "-3");
    thing.Set("Text", "a \"b\"\n\tc");
    thing.Set("Scratch", "volatile");
    thing.SaveAs(directory / "x");
    EXPECT_EQ(FileBytes(directory / "x/Thing.atr"), "set(\"\", \"Number\", \"-3\")\n"
                                                    "set(\"\", \"Ratio\", \"0\")\n"
                                                    "set(\"\", \"Length\", \"0\")\n"
                                                    "set(\"\", \"Text\", \"a %%qb%%q%%n%%tc\")\n"
                                                    "set(\"\", \"Kind\", \"\")\n"
                                                    "set(\"\", \"Shown\", \"0\")\n"
                                                    "set(\"\", \"Input\", \"\")\n"
                                                    "set(\"\", \"Place\", \"\")\n"
                                                    "set(\"\", \"Corner\", \"\")\n"
                                                    "set(\"\", \"Corners\", \"\")\n"
                                                    "set(\"\", \"Active\", \"1\")\n"
                                                    "set(\"\", \"MacroFileName\", \"x.macro\")\n");
    EXPECT_EQ(Contents(directory / "x").size(), 2u);
    EXPECT_EQ(FileBytes(directory / "x/Thing.dat"), "");
    EXPECT_EQ(Text(thing.ProjectDir()), Path("x"));
}

TEST_F(AK_ObjectPersistenceTest, OnlyWhatHasChangedOrIsMissingIsWritten)
{
    TestThing thing("x", nullptr);
    const AK_String dir = directory / "x";
    const Lines written{"saving x to " + Text(dir)}, nothing;
    const struct {
        const char* why;
        std::function<void()> before;
        bool saves;
    } steps[] = {{"never saved", [] {}, true},
                 {"saved", [] {}, false},
                 {"an attribute set", [&] { thing.Set("Number", "1"); }, true},
                 {"saved again", [] {}, false},
                 {"set to what it was", [&] { thing.Set("Number", "1"); }, true},
                 {"no attribute file", [&] { AK_System::RemoveFile(dir + "/Thing.atr"); }, true},
                 {"no data file", [&] { AK_System::RemoveFile(dir + "/Thing.dat"); }, true},
                 {"a command", [&] { thing.Set("Count", ""); }, true},
                 {"a variable is no attribute", [&] { thing.SetVariableValue("$x", "1"); }, false},
                 {"just loaded", [&] { thing.Set("Load", dir); }, false},
                 {"set after loading", [&] { thing.Set("Number", "1"); }, true},
                 {"a save that failed",
                  [&] {
                      thing.Set("Number", "2");
                      AK_System::RemoveFile(dir + "/Thing.dat");
                      AK_System::CreateDir(dir + "/Thing.dat");
                      thing.Set("Save", "");
                      EXPECT_EQ(Status(), "cannot open " + Text(dir) + "/Thing.dat");
                      AK_System::RemoveFile(dir + "/Thing.dat");
                  },
                  true}};
    thing.ProjectDir(dir);
    for (const auto& step : steps) {
        step.before();
        Messages();
        thing.Set("Save", "");
        EXPECT_EQ(Messages(), step.saves ? written : nothing) << step.why;
        EXPECT_EQ(Status(), "") << step.why;
    }
}

TEST_F(AK_ObjectPersistenceTest, ASaveThatCannotBeWrittenSaysSoAndHarmsNothing)
{
    RecordThing root("Viewer", nullptr);
    RecordThing* thing = Add(root, "x", 1);
    const AK_String dir = directory / "x";
    thing->SaveAs(dir);
    ASSERT_EQ(Status(), "");
    const auto before = Contents(dir);

    thing->Set("Number", "2");
    thing->_failing = true;
    ExpectStatus(*thing, "SaveAs", dir, "cannot save data of Viewer/x to file " + Text(dir) + "/Thing.dat");
    thing->_failing = false;
    EXPECT_EQ(FileBytes(dir + "/Thing.dat"), before.at("Thing.dat"));   // the last good one
    EXPECT_EQ(Contents(dir).size(), 2u);                                // and nothing half written

    WriteFile(directory / "file", "");
    for (const char* missing : {"file/x", "no/such/directory"})
        ExpectStatus(*thing, "SaveAs", directory / missing, "cannot open " + Path(missing) + "/Thing.dat");
    ExpectStatus(*thing, "SaveAttributes", directory / "file/x.macro",
                 "cannot open file " + Path("file/x.macro") + " for saving attributes!");
    thing->ProjectDir(dir);
    ExpectStatus(*thing, "SaveAs", "", "cannot open /Thing.dat");
    EXPECT_EQ(Text(thing->ProjectDir()), Text(dir));

    // A disc that is full.
    for (const char* file : {"Thing.atr", "Thing.dat"}) {
        const AK_String full = directory / file + "/";
        AK_System::CreateDir(full);
        std::filesystem::create_symlink("/dev/full", (full + file).c_str());
        const bool isData = std::string(file) == "Thing.dat";
        ExpectStatus(*thing, "SaveAs", directory / file,
                     isData ? "cannot save data of Viewer/x to file " + Path("Thing.dat/Thing.dat")
                            : "cannot open file " + Path("Thing.atr/Thing.atr") + " for saving attributes!");
    }
    ExpectStatus(*thing, "SaveAs", dir, "");
    EXPECT_NE(FileBytes(dir + "/Thing.atr").find("\"Number\", \"2\""), std::string::npos);
}

TEST_F(AK_ObjectPersistenceTest, AProjectIsSavedOnAfterAnErrorWhichStays)
{
    RecordThing root("Viewer", nullptr);
    for (const char* id : {"a", "b", "c", "d"}) Add(root, id, 1);
    Add(*root.Component("b"), "below", 2);
    static_cast<RecordThing*>(root.Component("b"))->_failing = true;
    static_cast<RecordThing*>(root.Component("c"))->_failing = true;
    ExpectStatus(root, "SaveProjectAs", directory / "p",
                 "cannot save data of Viewer/b to file " + Path("p/b/Thing.dat"));
    for (const char* file : {"p/Thing.dat", "p/a/Thing.dat", "p/b/below/Thing.dat", "p/d/Thing.dat"})
        EXPECT_TRUE(AK_System::FileExists(directory / file)) << file;

    RecordThing homeless("homeless", nullptr);
    Add(homeless, "below", 1);
    ExpectStatus(homeless, "SaveProject", "", "cannot open /Thing.dat");
    EXPECT_EQ(Text(homeless.Component("below")->ProjectDir()), "");
}

// ----------------------------------------------------------------------------------------------------------------
// Loading
// ----------------------------------------------------------------------------------------------------------------

TEST_F(AK_ObjectPersistenceTest, LoadingReportsWhatItCannotRead)
{
    RecordThing root("Viewer", nullptr);
    RecordThing* thing = Add(root, "x", 7);
    thing->SaveAs(directory / "x");
    const std::string data = FileBytes(directory / "x/Thing.dat");
    const std::string attributes = FileBytes(directory / "x/Thing.atr");
    const struct {
        const char* why;
        const char* attributes;   // null for no file, "" for the good one
        const char* data;
        std::string status;
        const char* number;   // afterwards
    } cases[] = {
        {"whole", "", "", "", "7"},
        {"an object may have no data", "", nullptr, "", "7"},
        {"no attributes", nullptr, "", "cannot open macro file '" + Path("y/Thing.atr") + "'", "0"},
        {"nothing", nullptr, nullptr, "cannot open macro file '" + Path("y/Thing.atr") + "'", "0"},
        {"bad data keep the attributes from being read", "", "garbage",
         "cannot load data for Viewer/y from file " + Path("y/Thing.dat"), "0"},
        {"a command that fails",
         "set(\"\", \"Number\", \"1\")\nset(\"\", \"Fail\", \"here\")\nset(\"\", \"Number\", \"2\")\n", "",
         "failed: here", "1"},
        {"unknown names and free text are passed over",
         "free text\nset(\"\", \"NoSuch\", \"1\")\nset(\"\", \"Number\", \"3\")", "", "", "3"},
    };
    for (const auto& c : cases) {
        auto* loaded = AddTo<RecordThing>(root, "y");
        AK_System::CreateDir(directory / "y");
        if (c.attributes) WriteFile(directory / "y/Thing.atr", *c.attributes ? c.attributes : attributes);
        if (c.data) WriteFile(directory / "y/Thing.dat", *c.data ? c.data : data);
        Messages();
        ExpectStatus(*loaded, "Load", directory / "y", c.status);
        EXPECT_EQ(Messages()[0], "loading 'y' from " + Path("y")) << c.why;
        EXPECT_EQ(Text(loaded->Get("Number")), c.number) << c.why;
        EXPECT_EQ(Text(loaded->ProjectDir()), Path("y")) << c.why;
        EXPECT_EQ(loaded->ExecTime("Load") > 0, c.status.empty()) << c.why;
        root.DeleteComponent("y");
    }
}

TEST_F(AK_ObjectPersistenceTest, ChildrenAreLoadedBeforeTheirParentAndBoundWhenTheSubtreeStands)
{
    {
        RecordThing root("Viewer", nullptr);
        Add(*Add(root, "b", 1), "below", 1);
        Add(root, "a", 1);
        root.SaveProjectAs(directory / "p");
    }
    RecordThing root("Viewer", nullptr);
    Messages();
    root.Set("LoadProject", directory / "p");
    EXPECT_EQ(Messages(), (Lines{"loading 'a' from " + Path("p/a"), "loading 'below' from " + Path("p/b/below"),
                                 "loading 'b' from " + Path("p/b"), "loading 'Viewer' from " + Path("p")}));
    EXPECT_EQ(RecordThing::finalized, (Lines{"a:1", "below:1", "b:2", "Viewer:4"}));
    EXPECT_EQ(ComponentIds(root), (Lines{"a", "b"}));
    ExpectConsistent(root);

    RecordThing::finalized.clear();
    root.Set("LoadProject", "");   // again, from its own directory: nothing is made twice
    EXPECT_EQ(ComponentIds(root), (Lines{"a", "b"}));
    EXPECT_EQ(RecordThing::finalized.size(), 4u);
}

TEST_F(AK_ObjectPersistenceTest, LoadingPassesOverWhatIsNoComponent)
{
    RecordThing root("Viewer", nullptr);
    Add(root, "a", 1);
    root.SaveProjectAs(directory / "p");
    for (const char* name : {"p/empty", "p/two", "p/foreign", "p/a b", "p/x.dir"})
        AK_System::CreateDir(directory / name);
    for (const char* name : {"p/two/Thing.atr", "p/two/Other.atr", "p/foreign/Other.atr", "p/a b/Thing.atr",
                             "p/x.dir/Thing.atr", "p/plain"})
        WriteFile(directory / name, "");
    RecordThing again("Viewer", nullptr);
    ExpectStatus(again, "LoadProject", directory / "p", "");
    EXPECT_EQ(ComponentIds(again), (Lines{"a"}));

    RecordThing suppressed("Viewer", nullptr);
    suppressed.Set("SuppressCreatingComponents", "1");
    ExpectStatus(suppressed, "LoadProject", directory / "p", "");
    EXPECT_EQ(suppressed.NumComponents(), 0);
    AddTo<RecordThing>(suppressed, "a");
    ExpectStatus(suppressed, "LoadProject", directory / "p", "");
    EXPECT_EQ(Text(suppressed.Get("a:Number")), "1");
}

TEST_F(AK_ObjectPersistenceTest, LoadingStopsAtTheFirstErrorAndKeepsWhatItHas)
{
    RecordThing root("Viewer", nullptr);
    for (const char* id : {"a", "b", "c"}) Add(root, id, 1);
    root.SaveProjectAs(directory / "p");
    WriteFile(directory / "p/b/Thing.dat", "garbage");
    RecordThing again("Viewer", nullptr);
    ExpectStatus(again, "LoadProject", directory / "p",
                 "cannot load data for Viewer/b from file " + Path("p/b/Thing.dat"));
    EXPECT_EQ(ComponentIds(again), (Lines{"a", "b"}));
    EXPECT_EQ(RecordThing::finalized, (Lines{"a:1"}));
    ExpectConsistent(again);

    ExpectStatus(again, "LoadProject", directory / "nowhere", "cannot open directory '" + Path("nowhere") + "'");
    RecordThing skeleton("Viewer", nullptr);   // what is in memory must be on disc
    AddTo<RecordThing>(skeleton, "missing");
    ExpectStatus(skeleton, "LoadProject", directory / "p",
                 "cannot open macro file '" + Path("p/missing/Thing.atr") + "'");
}

TEST_F(AK_ObjectPersistenceTest, TheWalksDoNotEnterReferences)
{
    RecordThing root("Viewer", nullptr);
    RecordThing* a = Add(root, "a", 1);
    RecordThing* b = Add(root, "b", 2);
    a->AppendComponent(b);
    a->AppendComponent(&root);   // an ancestor: a walk that entered it would never end
    root.SaveProjectAs(directory / "p");
    EXPECT_FALSE(AK_System::FileExists(directory / "p/a/b"));
    EXPECT_EQ(Contents(directory / "p").size(), 6u);
    b->Set("Number", "5");
    a->LoadProject(directory / "p/a");
    EXPECT_EQ(Status(), "");
    EXPECT_EQ(Text(b->Get("Number")), "5");
    EXPECT_EQ(Text(b->ProjectDir()), Path("p/b"));
    a->Set("SaveAttributesRecursively", directory / "a.macro");
    EXPECT_EQ(FileBytes(directory / "a.macro"), FileBytes(directory / "p/a/Thing.atr"));
}

// ----------------------------------------------------------------------------------------------------------------
// Round trips and damage
// ----------------------------------------------------------------------------------------------------------------

TEST_F(AK_ObjectPersistenceTest, AProjectThatIsLoadedAndSavedElsewhereIsTheSameByteForByte)
{
    Describe("Snow", "obj.Snow\n\ttext.Kind:$kind\n\t\tset:$kind\n");
    struct Workspace : RecordThing {
        using RecordThing::RecordThing;
        AK_Object* CreateComponent(const AK_String& id, const AK_String& type) override
        {
            if (type == "Group") return new AK_Group(id, this);
            if (type == "Container") return new TestContainer(id, this);
            if (AK_Object* thing = RecordThing::CreateComponent(id, type)) return thing;
            return AK_UserObj::CreateFromDirectory(id, this, _directoryToLoad);
        }
    };
    Workspace root("Viewer", nullptr);
    auto* things = AddTo<TestContainer>(root, "Things");
    for (const char* id : {"z", "a"}) things->Add(id);
    Add(*Add(root, "record", 5), "below", 6);
    AddTo<AK_Group>(root, "group");
    AddTo<AK_UserObj>(root, "user");
    const char* const commands[] = {
        "set(\"Things/z\", \"Text\", \"a value with %%qquotes%%q,%%n lines,%%t tabs, %AK_SEP%, $x and ) \\n\")",
        "set(\"Things/a\", \"Ratio\", \"0.1\")",
        "set(\"Things/a\", \"Length\", \"0.1234567890123456789\")",
        "set(\"Things/a\", \"Kind\", \"%AK_NULL%\")",
        "set(\"record\", \"Active\", \"0\")",
        "set(\"record/below\", \"MacroFileName\", \"\")",
        "set(\"user\", \"AttributesName\", \"Snow\")",
        "set(\"user\", \"$kind\", \"powder\")",
        "set(\"group\", \"AppendObject\", \"Things/z\")",
        "set(\"group\", \"AppendObject\", \"record/below\")",
        "set(\"group\", \"SelectedObjectType\", \"Thing\")",
        "set(\"\", \"$variable\", \"volatile\")",
    };
    for (const char* command : commands) EXPECT_EQ(Run(root, command, 1), Lines()) << command;
    ExpectStatus(root, "SaveProjectAs", directory / "first", "");

    Workspace again("Viewer", nullptr);
    ExpectStatus(again, "LoadProject", directory / "first", "");
    ExpectConsistent(again);
    ExpectStatus(again, "SaveProjectAs", directory / "second", "");
    const auto first = Contents(directory / "first"), second = Contents(directory / "second");
    EXPECT_EQ(first.size(), 16u);
    EXPECT_EQ(first, second);
    EXPECT_EQ(Text(again.Get("Things/z:Text")), Text(root.Get("Things/z:Text")));
}

TEST_F(AK_ObjectPersistenceTest, ADamagedRecordIsReadOrRefusedAndTheObjectStaysUsable)
{
    RecordThing root("Viewer", nullptr);
    RecordThing* original = Add(root, "x", 7);
    original->SaveAs(directory / "x");
    const std::string data = FileBytes(directory / "x/Thing.dat");
    const std::string refused = "cannot load data for Viewer/y from file " + Path("x/Thing.dat");
    RecordThing* loaded = Add(root, "y", 3);
    RecordThing reference("reference", nullptr);
    reference.Fill(3);

    for (size_t length = 0; length < data.size(); ++length) {
        WriteFile(directory / "x/Thing.dat", data.substr(0, length));
        ExpectStatus(*loaded, "Load", directory / "x", refused);
        EXPECT_TRUE(loaded->Holds(reference)) << "cut at " << length;
        EXPECT_EQ(Text(loaded->Get("Number")), "3");
    }
    int readAnyway = 0;
    for (size_t at = 0; at < data.size(); ++at) {
        for (int change : {0x01, 0x80, 0xFF}) {
            std::string damaged = data;
            damaged[at] = char(damaged[at] ^ change);
            WriteFile(directory / "x/Thing.dat", damaged);
            loaded->Set("Load", directory / "x");
            readAnyway += Status().empty();
            if (!Status().empty()) {
                EXPECT_EQ(Status(), refused);
            }
        }
    }
    EXPECT_GT(readAnyway, 50);   // a changed number is a number
    WriteFile(directory / "x/Thing.dat", data);
    ExpectStatus(*loaded, "Load", directory / "x", "");
    EXPECT_TRUE(loaded->Holds(*original));
    EXPECT_EQ(Text(loaded->Get("Number")), "7");
}

TEST_F(AK_ObjectPersistenceTest, ADamagedAttributeFileDoesNoMoreThanItsLinesSay)
{
    RecordThing root("Viewer", nullptr);
    RecordThing* thing = Add(root, "x", 7);
    thing->Set("Text", "quoted \"text\", with a comma) and a $variable.");
    thing->SaveAs(directory / "x");
    const std::string good = FileBytes(directory / "x/Thing.atr");
    for (size_t at = 0; at < good.size(); at += 7) {
        for (const std::string& damaged :
             {good.substr(0, at), good.substr(0, at) + '"' + good.substr(at + 1),
              good.substr(0, at) + '\0' + good.substr(at), good.substr(0, at) + '\n' + good.substr(at)}) {
            WriteFile(directory / "x/Thing.atr", damaged);
            thing->Set("Load", directory / "x");
            ASSERT_EQ(root.NumObjects(), 2) << at;
        }
    }
    WriteFile(directory / "x/Thing.atr", good);
    ExpectStatus(*thing, "Load", directory / "x", "");
    EXPECT_EQ(Text(thing->Get("Text")), "quoted \"text\", with a comma) and a $variable.");
}
