#include "AK_Basic_TestTools.h"

#include <gtest/gtest.h>

#include <cstring>

static void ExpectText(const AK_String& s, const char* text, int allocated)
{
    EXPECT_STREQ(s.c_str(), text);
    EXPECT_EQ(s.Length(), int(std::strlen(text)));
    EXPECT_EQ(s._size, allocated) << text;
}

TEST(AK_String, HoldsExactlyItsTextInAnyForm)
{
    const char* hello = "hello";
    ExpectText(AK_String(), "", 8);
    ExpectText("abc", "abc", 4);
    ExpectText("", "", 2);   // never below two bytes
    ExpectText(AK_String('x'), "x", 2);
    ExpectText(AK_String(hello + 1, hello + 3), "el", 3);

    // A formatted number has room to spare; a format beyond that room gets what it needs.
    ExpectText(AK_String(-42, "%d"), "-42", 2 + 16);
    ExpectText(AK_String(0.1, "%.15g"), "0.1", 5 + 32);
    ExpectText(AK_String(7, "%24d"), "                       7", 25);
    ExpectText(AK_String(1e300, "%.0f"), AK_String(1e300, "%.0f").c_str(), 302);

    const float f[] = {1.0f, -0.1f, 1e10f, 3.0f};
    const double d[] = {0.1, -1.23456789012345e-300, 100000000.0};
    ExpectText(AK_String(f, 4), "1 -0.1 1e+10 3", 15);
    ExpectText(AK_String(d, 3), "0.1 -1.23456789012345e-300 100000000", 37);
    ExpectText(AK_String(d, 0), "", 2);

    AK_List<AK_String> list;
    list.Append("a");
    list.Append("");
    ExpectText(AK_String(list, ak_sep), "a%AK_SEP%%AK_SEP%", 18);
}

TEST(AK_String, AssignsPartsOfItself)
{
    AK_String s = "hello world";
    s = s.c_str() + 6;
    EXPECT_STREQ(s.c_str(), "world");
    const AK_String& same = s;
    s = same;
    EXPECT_STREQ(s.c_str(), "world");
    AK_String moved = std::move(s);
    EXPECT_STREQ(moved.c_str(), "world");
    EXPECT_STREQ(s.c_str(), "") << "what is moved from is still a text";
}

TEST(AK_StringDeath, NullAndSelfAppendAreFatal)
{
    AK_String s = "text";
    const char* null = nullptr;
    ak_msg_func = [](const char* message, const char*) { std::fputs(message, stderr); };
    EXPECT_DEATH(AK_String{null}, "ERROR:FATAL:s failed!");
    EXPECT_DEATH(s = null, "ERROR:FATAL:s failed!");
    EXPECT_DEATH(s.Append(s), "ERROR:FATAL:&s != this failed!");
    EXPECT_DEATH(s.Prepend(s.c_str() + 1), "ERROR:FATAL:&s != this failed!");
    ak_msg_func = ak_default_msg_func;
}

TEST(AK_String, CarriesAPointerAsText)
{
    int target = 0;
    EXPECT_EQ(AK_String::PtrString(&target).Pointer(), &target);
    EXPECT_TRUE(AK_String::PtrString(&target).StartsWith("%ak_ptr%0x"));
    for (const char* text : {"", "0x10", "%ak_ptr%", "%ak_ptr%zebra", "x%ak_ptr%0x10"})
        EXPECT_EQ(AK_String(text).Pointer(), nullptr) << text;
}

// ----------------------------------------------------------------------------------------------------------- replacing

TEST(AK_String, ReplacesTexts)
{
    const struct {
        const char *text, *a, *b;
        int first;
        const char* afterFirst;
        int all;
        const char* afterAll;
    } cases[] = {
        {"a-b-c",    "-",    "+",  1, "a+b-c", 2, "a+b+c"},
        {"aaaa",     "aa",   "b",  1, "baa",   2, "bb"   },
        {"aab",      "ab",   "b",  1, "ab",    1, "ab"   }, // what has been put in is not searched again
        {"x",        "x",    "xx", 1, "xx",    1, "xx"   },
        {"abc",      "c",    "",   1, "ab",    1, "ab"   },
        {"ab",       "ab",   "ab", 0, "ab",    0, "ab"   }, // equal
        {"ab",       "",     "x",  0, "ab",    0, "ab"   }, // an empty pattern is nowhere
        {"ab",       "c",    "x",  0, "ab",    0, "ab"   },
        {"%AK_SEP%", ak_sep, ";",  1, ";",     1, ";"    },
    };
    for (const auto& c : cases) {
        AK_String first = c.text, all = c.text;
        EXPECT_EQ(first.Replace(c.a, c.b), c.first) << c.text;
        EXPECT_STREQ(first.c_str(), c.afterFirst);
        EXPECT_EQ(all.ReplaceAll(c.a, c.b), c.all) << c.text;
        EXPECT_STREQ(all.c_str(), c.afterAll);
    }
    AK_String own = "abcabc";
    own.ReplaceAll(own.c_str() + 5, own.c_str());
    EXPECT_EQ(own, "ababcabcababcabc") << "arguments may lie in the text";
}

TEST(AK_String, ReplacesBytes)
{
    AK_String s = "a b\tb.c";
    EXPECT_EQ(s.Replace('b', 'x'), 1);
    EXPECT_EQ(s, "a x\tb.c");
    EXPECT_EQ(s.Replace('q', 'x'), 0);
    EXPECT_EQ(s.Replace('\0', 'x'), 0) << "the terminator is no character of the text";
    EXPECT_EQ(s.ReplaceWhitespace('_'), 2);
    EXPECT_EQ(s, "a_x_b.c");
    EXPECT_EQ(s.ReplaceAll('_', '-'), 2);
    EXPECT_EQ(s, "a-x-b.c");
    AK_String odd = "a_1-\xe4 Z";
    EXPECT_EQ(odd.ReplaceNonAlNum('_'), 3);
    EXPECT_EQ(odd, "a_1___Z");
    AK_String mixed = "aZ\xc4@[`{9";
    mixed.ToLower();
    EXPECT_EQ(mixed, "az\xc4@[`{9");
    mixed.ToUpper();
    EXPECT_EQ(mixed, "AZ\xc4@[`{9");
}

TEST(AK_String, CollapsesRuns)
{
    const struct {
        const char* text;
        int from;
        const char* result;
    } cases[] = {
        {"//a///b//", 0,  "/a/b/"},
        {"//a//b",    1,  "//a/b"}, // the character at 0 is not looked at
        {"//a//b",    2,  "//a/b"},
        {"a//",       9,  "a//"  },
        {"//",        -3, "/"    },
        {"",          0,  ""     },
    };
    for (const auto& c : cases) {
        AK_String s = c.text;
        s.RemoveDoubles('/', c.from);
        EXPECT_STREQ(s.c_str(), c.result) << c.text << " from " << c.from;
    }
    for (const char* text : {"line", "line\n", "line\r\n", "line\r"}) {
        AK_String s = text;
        s.RemoveLineEnd();
        EXPECT_EQ(s, "line");
    }
    AK_String blank = "\n\n";
    blank.RemoveLineEnd();
    EXPECT_EQ(blank, "\n") << "one line end, not all";
}

// ------------------------------------------------------------------------------------------------------------- parsing

TEST(AK_String, SplitsIntoPieces)
{
    const struct {
        const char *text, *sep, *pieces;
    } cases[] = {
        {"a%AK_SEP%b%AK_SEP%", ak_sep, "a|b|" },
        {"a%AK_SEP%%AK_SEP%b", ak_sep, "a||b|"},
        {"",                   ak_sep, ""     },
        {"a;;",                ";",    "a||"  },
        {";",                  ";",    "|"    },
        {"abc",                "",     "abc|" },
        {"aaa",                "aa",   "|a|"  },
    };
    for (const auto& c : cases) {
        AK_List<AK_String> list;
        const int n = AK_String(c.text).Split(c.sep, list);
        EXPECT_EQ(Joined(list), c.pieces) << c.text;
        EXPECT_EQ(n, list.Size());
    }
    AK_List<AK_String> list;
    list.Append("kept");
    EXPECT_EQ(AK_String("1 2").Split(' ', list), 3);
    EXPECT_EQ(Joined(list), "kept|1|2|");
}

TEST(AK_String, ReadsNumbers)
{
    double d[4] = {9, 9, 9, 9};
    EXPECT_EQ(AK_String(" 1.5  x -2e3 7").GetVec(d, 3), 3);
    EXPECT_EQ(d[0], 1.5);
    EXPECT_EQ(d[1], 0) << "no number";
    EXPECT_EQ(d[2], -2000);
    EXPECT_EQ(d[3], 9) << "the double form stops at n";
    EXPECT_EQ(AK_String("\n 5").GetVec(d, 3), 2);
    EXPECT_EQ(d[0], 0) << "a number is not looked for beyond its own piece";
    float f[4] = {9, 9, 9, 9};
    EXPECT_EQ(AK_String("1 2 3").GetVec(f, 1), 3) << "the float form stores all there are";
    EXPECT_EQ(f[2], 3);
}

TEST(AK_String, FindsAndSetsKeyValues)
{
    const struct {
        const char *text, *key, *value, *afterSetting;
    } cases[] = {
        {"ab=1;b=2",  "b",  "2", "ab=1;b=new" },
        {"ab=1;b=2;", "ab", "1", "ab=new;b=2;"},
        {"ab=1",      "b",  "",  "ab=1;b=new;"},
        {"ab=1;",     "b",  "",  "ab=1;b=new;"},
        {"",          "b",  "",  "b=new;"     },
        {"b;b=3",     "b",  "3", "b;b=new"    }, // a key without assignment is no key
        {"b=;c=1",    "b",  "",  "b=new;c=1"  },
        {"b=1;b=2",   "b",  "1", "b=new;b=2"  },
        {"=1;b=2",    "",   "",  "=1;b=2"     }, // an empty key does nothing
    };
    for (const auto& c : cases) {
        AK_String s = c.text;
        EXPECT_STREQ(s.KeyValue(c.key, '=', ';').c_str(), c.value) << c.text;
        s.SetKeyValue(c.key, "new", '=', ';');
        EXPECT_STREQ(s.c_str(), c.afterSetting) << c.text;
    }
    AK_String s = "a=1;";
    s.SetKeyValue("b", s, '=', ';');
    EXPECT_EQ(s, "a=1;b=a=1;;");
}
