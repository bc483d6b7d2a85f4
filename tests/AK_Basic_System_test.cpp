#include "AK_Basic_TestTools.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

TEST(AK_System, ListsEntriesInOrder)
{
    TemporaryDirectory directory;
    for (const char* name : {"b.atr", "a.atr", "B.atr", "c.dat", ".hidden", "..odd", "atr", "x.atr.bak"})
        WriteFile(directory / name, "");
    AK_System::CreateDir(directory / "dir.atr");
    const struct {
        const char *extension, *names;
    } cases[] = {
        {"",    ".hidden|B.atr|a.atr|atr|b.atr|c.dat|dir.atr|x.atr.bak|"},
        {"atr", "B.atr|a.atr|b.atr|dir.atr|"                            },
        {"tr",  ""                                                      },
        {"bak", "x.atr.bak|"                                            },
    };
    for (const auto& c : cases)
        EXPECT_EQ(Joined(AK_System::FilesList(directory.Path(), c.extension)), c.names) << c.extension;

    CaughtMessages messages;
    EXPECT_EQ(AK_System::FilesList(directory / "missing", "").Size(), 0);
    EXPECT_TRUE(messages.Texts().empty());
}

TEST(AK_System, CreatesDirectoriesAndTheirParents)
{
    TemporaryDirectory directory;
    const AK_String file = directory / "file";
    WriteFile(file, "x");
    EXPECT_EQ(AK_System::CreateDir(directory.Path()), 0) << "there already";
    EXPECT_NE(AK_System::CreateDir(file), 0) << "there, but no directory";
    EXPECT_NE(AK_System::CreateDir(directory / "a/b"), 0) << "no parent";
    EXPECT_EQ(AK_System::CreateDirRecursively(directory / "a//b/c/"), 0);
    EXPECT_TRUE(AK_System::IsDirectory(directory / "a/b/c"));
    EXPECT_EQ(AK_System::CreateDirRecursively(""), 0);
    EXPECT_EQ(AK_System::CreateDirRecursively(file), 0) << "an existing path is left as it is";
    EXPECT_EQ(AK_System::CreateDirRecursively(directory / "file/sub/dir"), 1);

    std::string deep = directory.Path().c_str();
    for (int i = 0; i < 500000; ++i) deep += "/d";
    EXPECT_EQ(AK_System::CreateDirRecursively(deep.c_str()), 1) << "longer than any path";
}

TEST(AK_System, CopiesFiles)
{
    TemporaryDirectory directory;
    const AK_String from = directory / "from", to = directory / "to";
    for (const std::size_t size : {0, 1, 1024, 5000}) {
        const std::string bytes(size, '\0');
        WriteFile(from, bytes + "end");
        EXPECT_EQ(AK_System::CpyFile(from, to), 0);
        EXPECT_EQ(FileBytes(to), bytes + "end");
    }
    EXPECT_EQ(symlink(from.c_str(), (directory / "link").c_str()), 0);
    EXPECT_EQ(AK_System::CpyFile(from, directory / "link"), 0);
    EXPECT_EQ(FileBytes(from).size(), 5003u) << "a file copied to itself is still there";
    EXPECT_EQ(AK_System::CpyFile(directory / "missing", to), 1);
    EXPECT_EQ(AK_System::CpyFile(from, directory / "missing/to"), 2);
    EXPECT_EQ(AK_System::CpyFile(from, "/dev/full"), 3);
    EXPECT_NE(AK_System::CpyFile(directory.Path(), to), 0) << "a directory has no bytes to copy";
}

TEST(AK_System, RemovesTreesWithoutFollowingLinks)
{
    TemporaryDirectory directory;
    const AK_String tree = directory / "tree", outside = directory / "outside";
    AK_System::CreateDirRecursively(tree + "/a/b");
    AK_System::CreateDirRecursively(outside + "/empty");
    WriteFile(outside + "/kept", "x");
    WriteFile(tree + "/a/b/file", "x");
    WriteFile(tree + "/..odd", "x");
    ASSERT_EQ(symlink(outside.c_str(), (tree + "/a/link").c_str()), 0);
    ASSERT_EQ(symlink(outside.c_str(), (directory / "link").c_str()), 0);

    EXPECT_NE(AK_System::RemoveEmptyDirsRecursively(tree), 0);
    EXPECT_TRUE(AK_System::FileExists(tree + "/a/b/file") && AK_System::IsDirectory(outside + "/empty"));
    EXPECT_EQ(AK_System::RemoveFileRecursively(tree), 0);
    EXPECT_FALSE(AK_System::FileExists(tree));
    EXPECT_EQ(AK_System::RemoveFileRecursively(directory / "link/"), 0) << "the link goes, not what it names";
    EXPECT_EQ(FileBytes(outside + "/kept"), "x");
    EXPECT_NE(AK_System::RemoveFileRecursively(tree), 0) << "nothing there";
    EXPECT_NE(AK_System::RemoveFileRecursively(""), 0);

    AK_System::CreateDirRecursively(tree + "/a/b");
    AK_System::CreateDirRecursively(tree + "/c");
    EXPECT_EQ(AK_System::RemoveEmptyDirsRecursively(tree), 0);
    EXPECT_FALSE(AK_System::FileExists(tree));
}

TEST(AK_System, CountsProcessors)
{
    TemporaryDirectory directory;
    const AK_String name = directory / "stat";
    const struct {
        const char* text;
        int count;
    } cases[] = {
        {"cpu  1 2 3\ncpu0 1\ncpu1 1\ncpu2 1\ncpu3 1\nintr 0\n", 4},
        {"cpu  1 2 3\ncpu0 1\nctxt cpu7\n",                      1},
        {"",                                                     1},
    };
    for (const auto& c : cases) {
        WriteFile(name, c.text);
        EXPECT_EQ(AK_System::NumCpus(name), c.count) << c.text;
    }
    EXPECT_EQ(AK_System::NumCpus(directory / "missing"), 1);
    EXPECT_EQ(AK_System::NumCpus(), sysconf(_SC_NPROCESSORS_ONLN));
}

TEST(AK_System, RunsCommands)
{
    TemporaryDirectory directory;
    const AK_String script = directory / "with blank", out = directory / "out";
    const AK_String arguments = AK_String("a 'b c' > ") + out;
    EXPECT_EQ(AK_System::Command("printf %s.", arguments.c_str(), 0, 0), 0);
    EXPECT_EQ(FileBytes(out), "a.b c.");
    WriteFile(script, "#!/bin/sh\nexit $1\n");
    chmod(script.c_str(), 0755);
    EXPECT_EQ(WEXITSTATUS(AK_System::Command(script.c_str(), "3", 0, 1)), 3) << "quoted, a blank is part of the name";
    EXPECT_EQ(AK_System::Command("sleep", "5 > /dev/null 2>&1", 1, 0), 0) << "does not wait for the background";
    EXPECT_EQ(AK_System::Command("", "x", 0, 0), -1);
    EXPECT_EQ(AK_System::Command(nullptr, "x", 0, 0), -1);
}

// The numbers come from the recurrence, evaluated with Python's integers.
TEST(AK_System, QuotesAnythingForTheShell)
{
    TemporaryDirectory directory;
    const AK_String file = directory / "said";
    for (const char* text : {"plain", "", "two  words", "it's", "\"", "\\", "\\\\\"", "`exit 3`", "$(exit 3)", "$HOME",
                             "a\nb", "-n;#&|<>*?~!"}) {
        const AK_String command = AK_String("printf %s ") + AK_System::ShellQuoted(text) + " > ";
        EXPECT_EQ(AK_System::Command((command + AK_System::ShellQuoted(file)).c_str(), "", 0, 0), 0) << text;
        EXPECT_EQ(FileBytes(file), text);
    }
}

TEST(AK_System, DrawsTheSameNumbersEverywhere)
{
    const struct {
        unsigned long seed;
        int numbers[3];
    } cases[] = {
        {1,   {1103500926, 662783083, 2034963963}},
        {777, {585372514, 614811676, 976112102}  },
    };
    for (const auto& c : cases) {
        AK_System::srand(c.seed);
        for (const int number : c.numbers) EXPECT_EQ(AK_System::rand(), number);
    }
    for (int i = 0; i < 100000; ++i) {
        const int number = AK_System::rand();
        ASSERT_TRUE(number >= 0 && number < AK_System::rand_max);
    }
}
