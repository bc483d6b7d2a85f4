#include "AK_Basic_TestTools.h"

#include <gtest/gtest.h>

#include <unistd.h>

namespace {

// Moves into a directory and back.
class WorkingDirectory {
public:
    explicit WorkingDirectory(const char* path)
    {
        _before = AK_System::CurrentWorkingDirectory();
        AK_ASSERT(chdir(path) == 0);
    }
    ~WorkingDirectory() { AK_ASSERT(chdir(_before.c_str()) == 0); }

private:
    AK_String _before;
};

}   // namespace

TEST(AK_String_Path, CleansUp)
{
    WorkingDirectory inUsr("/usr");
    const struct {
        const char *path, *clean;
    } cases[] = {
        {"a\\b/../c",    "/usr/a/c"  },
        {"",             "/usr"      },
        {".",            "/usr"      },
        {"./a",          "/usr/a"    },
        {"a/./././b",    "/usr/a/b"  },
        {"..",           "/"         },
        {"../../../x",   "/x"        },
        {"/",            "/"         }, // the root stays a path
        {"//",           "/"         },
        {"/..",          "/"         },
        {"/a/../..//b/", "/b"        },
        {"/a/b/../../c", "/c"        },
        {"/a/..b/c..",   "/a/..b/c.."}, // names that begin or end so are no steps up
        {"/a/.b/./",     "/a/.b"     },
    };
    for (const auto& c : cases) {
        AK_String path = c.path;
        path.CleanupPath();
        EXPECT_STREQ(path.c_str(), c.clean) << c.path;
        path.CleanupPath();
        EXPECT_STREQ(path.c_str(), c.clean) << c.path << ", the second time";
    }
    WorkingDirectory inRoot("/");
    AK_String path = "a";
    path.CleanupPath();
    EXPECT_EQ(path, "/a");
}

TEST(AK_String_Path, StaysRelativeWithoutAWorkingDirectory)
{
    TemporaryDirectory directory;
    const AK_String gone = directory / "gone";
    ASSERT_EQ(AK_System::CreateDir(gone), 0);
    WorkingDirectory inside(gone.c_str());
    ASSERT_EQ(AK_System::RemoveFile(gone), 0);
    ASSERT_EQ(AK_System::CurrentWorkingDirectory(), "");
    const struct {
        const char *path, *clean;
    } cases[] = {
        {"a/../b/", "b"      },
        {"../../a", "../../a"},
        {"a/../..", ".."     },
        {".",       ""       },
    };
    for (const auto& c : cases) {
        AK_String path = c.path;
        path.CleanupPath();
        EXPECT_STREQ(path.c_str(), c.clean) << c.path;
    }
}

TEST(AK_String_Path, SeesAPathFromAnother)
{
    WorkingDirectory inUsr("/usr");
    const struct {
        const char *path, *base, *relative;
    } cases[] = {
        {"/a/b/c", "/a/b",   "c"        },
        {"/a/b",   "/a/b/c", ".."       },
        {"/a/x/y", "/a/b/c", "../../x/y"},
        {"/a/b",   "/a/b/",  ""         },
        {"/a/bc",  "/a/b",   "../bc"    }, // segments, not letters
        {"/a",     "/",      "a"        },
        {"/",      "/a",     ".."       },
        {"x",      "/usr",   "x"        },
    };
    for (const auto& c : cases)
        EXPECT_STREQ(AK_String(c.path).RelativePath(c.base).c_str(), c.relative) << c.path << " from " << c.base;
}

TEST(AK_String_Path, PutsNamesAndExtensionsTogether)
{
    const struct {
        const char *path, *withName, *withoutExtension, *extension;
    } cases[] = {
        {"",        "./n",       "",    ""      },
        {"/",       "/n",        "/",   ""      },
        {"a/",      "a/n",       "a/",  ""      },
        {"a.b.c",   "a.b.c/n",   "a.b", "c"     },
        {"a.b/c",   "a.b/c/n",   "a",   ""      }, // cut at the last dot, wherever it stands
        {".hidden", ".hidden/n", "",    "hidden"},
        {"a.",      "a./n",      "a",   ""      },
    };
    for (const auto& c : cases) {
        AK_String withName = c.path, without = c.path, with = c.path;
        withName.AppendName("n", '/');
        EXPECT_STREQ(withName.c_str(), c.withName);
        without.RemoveExtension();
        EXPECT_STREQ(without.c_str(), c.withoutExtension);
        EXPECT_STREQ(AK_String(c.path).Extension().c_str(), c.extension);
        with.AppendExtension("e");
        EXPECT_EQ(with, AK_String(c.path) + ".e");
    }
    const struct {
        const char *path, *result;
    } dots[] = {
        {"./a/./b", "a/b"    },
        {"././a",   "a"      },
        {"../a./b", "../a./b"},
        {"a/.",     "a/."    }
    };
    for (const auto& c : dots) {
        AK_String path = c.path;
        path.RemoveDotsep('/');
        EXPECT_STREQ(path.c_str(), c.result);
    }
}
