// What a user could lose on disc: objects whose files could not be read, parts on disc only, foreign files that lie
// where an object is removed, values that look like variables, fixed parts of an object.

#include "AK_Group_TestSupport.h"

#include <algorithm>
#include <climits>
#include <csignal>
#include <filesystem>
#include <map>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

/// A thing with a fixed part and a record: its number again.
class Vault : public AK_Class<Vault, TestThing> {
public:
    static constexpr const char* className = "Vault";
    static constexpr const char* description = "obj.Vault\n"
                                               "\ttext.Extra:$extra\n"
                                               "\t\tset:$extra\n";
    static std::span<const Row> Rows() { return {}; }
    Vault(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
    {
        ReadClassFiles();
        AddComponent(new TestThing("fixed", nullptr));
        RunInitializationCommands();
    }
    AK_Object* CreateComponent(const AK_String& id, const AK_String& type) override
    {
        return type == "Vault" ? new Vault(id, this) : TestThing::CreateComponent(id, type);
    }
    int SaveData(AK_Stream& stream) const override
    {
        stream.Write(AK_String("Vault:v1"));
        stream.Write(_number);
        return 0;
    }
    int LoadData(AK_Stream& stream) override
    {
        AK_String tag;
        stream.Read(tag);
        stream.Read(_number);
        return stream.Failed() || !(tag == "Vault:v1") ? IoError(AK_HERE) : 0;
    }
};

class AK_ObjectFilesTest : public GroupTest {
protected:
    AK_ObjectFilesTest()
    {
        Describe("Vault", Vault::description);
        Fresh<TestThing, Vault>();
    }

    using Files = std::map<std::string, std::string>;

    Files FilesBelow(const char* dir)
    {
        Files files;
        const fs::path top = (directory / dir).c_str();
        for (const auto& entry : fs::recursive_directory_iterator(top))
            if (entry.is_regular_file())
                files[entry.path().lexically_relative(top).string()] = FileBytes(entry.path().c_str());
        return files;
    }

    /// A root with the things a, b (with c in it) and d, saved as "p".
    void SaveProject()
    {
        Vault root("Viewer", nullptr);
        for (const char* id : {"a", "b", "d"}) AddTo<Vault>(root, id);
        AddTo<Vault>(*root.Component("b"), "c");
        int number = 0;
        for (const char* path : {"", "a", "b", "b/c", "d"})
            root.ObjectById(path)->Set("Number", AK_String(++number, "%d"));
        root.Set("SaveProjectAs", directory / "p");
        ASSERT_EQ(Status(), "");
    }

    static std::string Status() { return Text(AK_Object::_execStatus); }
};

}   // namespace

// ----------------------------------------------------------------------------------------------------------------
// What was not read
// ----------------------------------------------------------------------------------------------------------------

TEST_F(AK_ObjectFilesTest, AProjectThatCannotBeReadToItsEndIsNotSavedOver)
{
    SaveProject();
    const Files whole = FilesBelow("p");
    int refused = 0;
    for (const auto& [name, bytes] : whole) {
        for (const std::size_t length : {std::size_t(0), bytes.size() / 2, bytes.size() - 2, bytes.size()}) {
            const bool isRemoved = length == bytes.size();
            if (bytes.empty() && !isRemoved) continue;
            const std::string why = name + (isRemoved ? " removed" : " cut to " + std::to_string(length));
            fs::remove_all((directory / "p").c_str());
            for (const auto& [file, content] : whole) {
                fs::create_directories(fs::path((directory / "p").c_str()) / fs::path(file).parent_path());
                if (file != name)
                    WriteFile(directory / "p/" + file.c_str(), content);
                else if (!isRemoved)
                    WriteFile(directory / "p/" + file.c_str(), content.substr(0, length));
            }
            const Files damaged = FilesBelow("p");
            Vault again("Viewer", nullptr);
            again.Set("LoadProject", directory / "p");
            if (Status().empty()) {   // nothing is left that could tell
                const bool endsCommand = length > 0 && (bytes[length - 1] == ')' || bytes[length - 1] == '\n');
                EXPECT_TRUE(isRemoved || endsCommand) << why;
                continue;
            }
            ++refused;
            again.Set("Update", "");
            again.Set("SaveProject", "");
            again.Set("SaveProject", "");
            EXPECT_TRUE(FilesBelow("p") == damaged) << why;
            again.Set("SaveProjectAs", directory / "q");
            EXPECT_TRUE(FilesBelow("q") == damaged) << why << ": all of it is taken along";
            fs::remove_all((directory / "q").c_str());
        }
    }
    EXPECT_GT(refused, 20);
}

TEST_F(AK_ObjectFilesTest, ASaveThatIsKilledLeavesAProjectThatLoads)
{
    SaveProject();
    const std::vector<const char*> inOrderOfSaving = {"", "a", "b", "b/c", "d"};
    const auto saveAs = [&](AK_Object& root, int number) {
        for (const char* path : inOrderOfSaving) root.ObjectById(path)->Set("Number", AK_String(number, "%d"));
        root.Set("SaveProject", "");
    };
    for (int run = 0; run < 60; ++run) {
        Vault root("Viewer", nullptr);
        root.Set("LoadProject", directory / "p");
        ASSERT_EQ(Status(), "") << run;
        int last = run == 0 ? 1000000 : INT_MAX;
        if (run == 0) saveAs(root, last);
        // Whole, each of one save, and who comes later in the tree is never ahead.
        for (const char* path : inOrderOfSaving) {
            const int number = std::atoi(root.ObjectById(path)->Get("Number").c_str());
            ASSERT_TRUE(number <= last && number >= 1000000) << path << " in run " << run;
            last = number;
        }
        const pid_t process = fork();
        if (process == 0) {
            if (!std::freopen("/dev/null", "w", stdout)) _exit(1);
            for (int number = 1000001 + 10000 * run;; ++number) saveAs(root, number);
        }
        usleep(useconds_t(1000 + 137 * run));
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
    }
}

TEST_F(AK_ObjectFilesTest, ACommandWhosePathFailsToLoadIsNotExecuted)
{
    SaveProject();
    WriteFile(directory / "p/b/c/Vault.dat", "garbage");
    const Files damaged = FilesBelow("p");
    const std::string error = "cannot load data for Viewer/b/c from file " + Text(directory / "p/b/c/Vault.dat");
    for (const std::string command : {"set(\"b/c\", \"Number\", \"77\")", "set(\"\", \"b/c:Number\", \"77\")",
                                      "set(\"b\", \"c:Number\", \"77\")", "get(\"b/c\", \"Number\", $n)"}) {
        Vault again("Viewer", nullptr);
        again.Set("ProjectDir", directory / "p");
        Messages();
        const Lines said = Run(again, command.c_str());
        EXPECT_EQ(Status(), error) << command;
        EXPECT_EQ(std::count(said.begin(), said.end(), "WARNING: " + error), 1) << command;
        EXPECT_EQ(said.back(), "error when executing '" + command + "':" + error);
        EXPECT_NE(Text(again.ObjectById("b/c")->Get("Number")), "77") << command;
        again.Set("SaveProject", "");
        EXPECT_TRUE(FilesBelow("p") == damaged) << command;
    }
    Vault again("Viewer", nullptr);
    again.Set("ProjectDir", directory / "p");
    Run(again, "set(\"b/c\", \"Number\", \"77\")");
    // The user who goes on after the message means it.
    Run(again, "set(\"b/c\", \"Number\", \"78\")");
    again.Set("SaveProject", "");
    EXPECT_EQ(FileBytes(directory / "p/a/Vault.atr"), damaged.at("a/Vault.atr")) << "never loaded";
    Vault third("Viewer", nullptr);
    third.Set("LoadProject", directory / "p");
    EXPECT_EQ(Status(), "");
    EXPECT_EQ(Text(third.Get("b/c:Number")), "78");
    EXPECT_EQ(Text(third.Get("d:Number")), "5");
}

TEST_F(AK_ObjectFilesTest, APartThatWasNeverLoadedIsNotSavedOver)
{
    SaveProject();
    {
        Vault root("Viewer", nullptr);
        AddTo<Vault>(root, "b");
        root.Set("LoadProject", directory / "p");
        root.ObjectById("b/fixed")->Set("Text", "of the part");
        root.Set("SaveProject", "");
    }
    const Files whole = FilesBelow("p");
    Vault again("Viewer", nullptr);
    AddTo<Vault>(again, "b");   // as the containers of a project are there before it is loaded
    again.Set("ProjectDir", directory / "p");
    again.Set("SaveProject", "");
    EXPECT_EQ(Status(), "") << "what is not loaded stays where it is";
    again.Set("SaveProjectAs", directory / "./p");
    EXPECT_EQ(Status(), "");
    EXPECT_TRUE(FilesBelow("p") == whole);
    again.Set("SaveProjectAs", directory / "q");
    EXPECT_TRUE(FilesBelow("q") == whole) << "what is not loaded is copied";
    // An older copy there does not stay.
    WriteFile(directory / "q/a/Vault.atr", "set(\"\", \"Number\", \"0\")\n");
    again.Set("ProjectDir", directory / "p");
    again.Set("SaveProjectAs", directory / "q");
    EXPECT_TRUE(FilesBelow("q") == whole);
    again.Set("SaveProjectAs", directory / "q/a/backup");   // not into itself for ever
    EXPECT_EQ(Status(), "");
    for (const char* gone : {"p/b/Vault.atr", "p/b/Vault.dat"}) AK_System::RemoveFile(directory / gone);
    Vault third("Viewer", nullptr);
    third.Set("ProjectDir", directory / "p");
    third.Set("SaveProjectAs", directory / "r");
    EXPECT_TRUE(FilesBelow("r") == FilesBelow("p")) << "a directory without files of its own holds parts";
}

TEST_F(AK_ObjectFilesTest, AVariableOfAUsersClassIsSavedAfterAChange)
{
    SaveProject();
    Vault again("Viewer", nullptr);
    again.Set("LoadProject", directory / "p");
    AK_Object::_execStatus = "of something earlier";
    again.ObjectById("a")->Set("$extra", "kept");
    EXPECT_EQ(Status(), "");
    again.Set("SaveProject", "");
    Vault third("Viewer", nullptr);
    third.Set("LoadProject", directory / "p");
    EXPECT_EQ(Text(third.Get("a:$extra")), "kept");
}

TEST_F(AK_ObjectFilesTest, AValueThatLooksLikeAVariableComesBack)
{
    Vault root("Viewer", nullptr);
    root.Set("$unit", "kPa");
    for (const char* value : {"in $unit", "$unit", "$", "$$unit", "a $b and $unit", "$unit.", "\"$unit", "$unit\n",
                              "%%velocity in m/s"}) {
        root.Set("Text", value);
        root.Set("SaveProjectAs", directory / "p");
        Vault again("Viewer", nullptr);
        again.Set("$unit", "changed");
        again.Set("LoadProject", directory / "p");
        EXPECT_EQ(Text(again.Get("Text")), value);
    }
}

// ----------------------------------------------------------------------------------------------------------------
// Removing
// ----------------------------------------------------------------------------------------------------------------

TEST_F(AK_ObjectFilesTest, RemovalTakesWhatTheProgramWroteAndNothingElse)
{
    SaveProject();
    const char* foreign[] = {"p/b/notes.txt", "p/b/c/Other.dat", "p/b/photos/x.atr", "p/b/photos/x.dat",
                             "p/b/c/.hidden"};
    AK_System::CreateDir(directory / "p/b/photos");
    for (const char* name : foreign) WriteFile(directory / name, "mine");
    for (const char* name : {"p/b/at_0000001.0000.TimeStep", "p/b/.simulation_info", "p/b/start.log"})
        WriteFile(directory / name, "");
    Vault root("Viewer", nullptr);
    root.Set("ProjectDir", directory / "p");
    root.ObjectById("b");   // c stays on disc only
    root.ObjectById("a");
    root.Set("DeleteComponent", "a");
    EXPECT_FALSE(AK_System::FileExists(directory / "p/a"));
    root.Set("DeleteComponent", "b");
    EXPECT_EQ(Status(), "");
    Files rest = FilesBelow("p/b");
    EXPECT_EQ(rest.size(), std::size(foreign));
    for (const char* name : foreign) EXPECT_EQ(rest[name + 4], "mine") << name;
}

TEST_F(AK_ObjectFilesTest, RemovalLeavesTheDirectoriesThatOthersStandIn)
{
    const fs::path before = fs::current_path();
    SaveProject();
    const Files project = FilesBelow("p");
    for (const char* place : {"work", "home", "p"}) {
        SCOPED_TRACE(place);
        fs::create_directories((directory / place).c_str());
        WriteFile(directory / place + "/mine", "foreign");
        if (std::string(place) == "work") fs::current_path((directory / place).c_str());
        Vault root("Viewer", nullptr);
        root.Set("LoadProject", directory / "p");
        auto* thing = AddTo<TestThing>(root, "thing");
        thing->Set("SaveAs", std::string(place) == "work" ? AK_String(".") : directory / place);
        EXPECT_TRUE(AK_System::FileExists(directory / place + "/Thing.atr"));
        root.Set("DeleteComponent", "thing");
        EXPECT_EQ(root.Component("thing"), nullptr);
        EXPECT_FALSE(AK_System::FileExists(directory / place + "/Thing.atr"));
        EXPECT_EQ(FileBytes(directory / place + "/mine"), "foreign");
        fs::current_path(before);
        for (const auto& [name, bytes] : project) EXPECT_EQ(FileBytes(directory / "p/" + name.c_str()), bytes) << name;
    }
}

// ----------------------------------------------------------------------------------------------------------------
// Fixed parts, names
// ----------------------------------------------------------------------------------------------------------------

TEST_F(AK_ObjectFilesTest, PartsThatTheirOwnerReliesOnStay)
{
    TestThing root("Viewer", nullptr);
    auto* vault = AddTo<Vault>(root, "vault");
    AddTo<TestThing>(*vault, "own");
    for (const char* command :
         {"set(\"vault\", \"DeleteComponent\", \"fixed\")", "set(\"vault\", \"RemoveComponent\", \"fixed\")",
          "set(\"vault/fixed\", \"Detach\", \"\")", "set(\"vault/fixed\", \"DeleteMe\", \"\")",
          "set(\"vault/fixed\", \"Id\", \"other\")"}) {
        AK_Object::_execStatus = "";
        Run(root, command);
        EXPECT_EQ(Status(), "'fixed' is a fixed part of 'vault' and stays there under its name") << command;
        EXPECT_EQ(ComponentIds(*vault), (Lines{"fixed", "own"})) << command;
    }
    Run(root, "set(\"vault\", \"DeleteComponent\", \"own\")");
    Run(root, "set(\"\", \"DeleteComponent\", \"vault\")");
    EXPECT_EQ(root.NumComponents(), 0) << "a whole owner goes with its parts";
}

TEST_F(AK_ObjectFilesTest, NoOtherObjectBearsTheNameOfTheRoot)
{
    TestThing root("Viewer", nullptr);
    TestThing* thing = root.Add("thing");
    for (const char* name : {"root", "Viewer"}) {
        thing->Set("Id", name);
        EXPECT_EQ(Status(), std::string("'") + name + "' means the root of all objects: no other bears it");
        EXPECT_EQ(Text(thing->Id()), "thing");
        EXPECT_EQ(Text(root.Add(name)->Id()), std::string(name) + "_0001");
    }
}
