// The text of clone transformations: order, walk, what it refuses.

#include "AK_VisObj3d_Clones.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

constexpr int maxCopies = 10000;

std::string walk;

void Note(char letter, float x, float y, float z)
{
    walk += letter;
    for (const float number : {x, y, z}) walk += std::to_string(int(number));
}

/// The walk as text: "(" and ")" for push and pop, letters with whole numbers for the transformations, "*" for a clone,
/// "/" for a flipped one.
std::string Walked(const AK_String& text)
{
    walk.clear();
    const AK_CloneContext context{
        [](int flipped, void*) { walk += flipped ? '/' : '*'; },
        nullptr,
        [] { walk += '('; },
        [] { walk += ')'; },
        [](float angle, float x, float y, float z) {
            walk += std::to_string(int(angle));
            Note('r', x, y, z);
        },
        [](float x, float y, float z) { Note('t', x, y, z); },
        [](float x, float y, float z) { Note('s', x, y, z); },
        [](float x, float y, float z) { Note('m', x, y, z); },
    };
    process_clones(reordered_trafos(text).c_str(), context, 0, 1, 0);
    return walk;
}

TEST(AK_VisObj3d_Clones, LinesAreReversedAndNumberedOnesStayBelowTheirLine)
{
    const struct {
        const char *text, *reordered;
    } cases[] = {
        {"",                                    ""                                       },
        {"a\nb\nc",                             "c\nb\na\n"                              },
        {"a\nb\n",                              "b\na\n"                                 },
        {"a\ncp 3\n2:rot 1\n3:scale 1\nb",      "b\ncp 3\n2:rot 1\n3:scale 1\na\n"       },
        {"1:trans 1\na",                        "a\n1:trans 1\n"                         }, // nothing above it
        {"a\n2:cp 3\n2:transform\nx 2:rot",     "x 2:rot\n2:transform\n2:cp 3\na\n"      }, // other words
        {"a\n 2: mirror",                       "a\n 2: mirror\n"                        }
    };
    for (const auto& c : cases) EXPECT_STREQ(reordered_trafos(c.text).c_str(), c.reordered) << c.text;
}

TEST(AK_VisObj3d_Clones, AreWalkedLineByLine)
{
    const struct {
        const char *why, *text, *walk;
    } cases[] = {
        {"no line: the object as it is", "", "*"},
        {"the last line's matrix comes first", "trans 1 2 3\nscale 4 5 6", "(s456(t123*))"},
        {"angle and axis", " rot 90 0 0 1", "(90r001*)"},
        {"about an axis through a point", "rot 90 1 2 3 0 0 1", "(t12390r001t-1-2-3*)"},
        {"in a plane through a point", "mirror 1 2 3 0 1 0", "(t123m010t-1-2-3/)"},
        {"a mirror turns the faces inside out, two do not", "mirror 1 0 0\nmirror 0 1 0", "(m010(m100*))"},
        {"copies of what stands above", "trans 1 0 0\ncp 2", "((t100*)(t100*))"},
        {"the second of three is turned", "cp 3\n2:rot 90 0 0 1", "((*)(90r001*)(*))"},
        {"no copy", "cp 0", "()"},
        {"a negative number of copies", "cp -1", "()"},
        {"number 1 without copies", " 1:trans 1 0 0", "(t100*)"},
        {"number 2 without copies", " 2:trans 1 0 0", "(*)"},
        {"number 0", "0:trans 1 0 0", "(*)"},
        {"a numbered mirror flips all", "cp 2\n1:mirror 1 0 0", "((m100/)(/))"},
        {"groups in groups", "cp 2\n2:trans 1 0 0\ncp 2\n1:scale 2 2 2", "((s222((*)(t100*)))(((*)(t100*))))"},
        {"a blank behind the colon", "1: trans 1 0 0", "(*)"},
        {"too few numbers", "trans 1 2\nrot 1 2 3\nmirror 1 2\nscale\ncp", "(((((*)))))"},
        {"numbers left over", "rot 90 0 0 1 5 6\nmirror 1 0 0 2 3", "(m100(90r001/))"},
        {"other lines", "\n# a comment\ntransform 1 2 3\n\r\ncp two", "(((((*)))))"},
        {"a numbered cp", "2:cp 3", "(*)"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Walked(c.text), c.walk) << c.why;
        EXPECT_STREQ(CloneTrafosError(c.text, maxCopies).c_str(), "") << c.why;
    }
}

TEST(AK_VisObj3d_Clones, RefuseWhatCannotBeWalked)
{
    std::string deep;
    for (int i = 0; i < 24; ++i) deep += "\n";
    EXPECT_STREQ(CloneTrafosError(deep.c_str(), maxCopies).c_str(), "");
    EXPECT_STREQ(CloneTrafosError((deep + "cp 1").c_str(), maxCopies).c_str(),
                 "clone transformations of more than 24 lines");

    const std::string tooMany = "clone transformations with more than 10000 copies";
    const struct {
        const char* text;
        std::string error;
    } cases[] = {
        {"cp 100\ncp 100",                        ""                                                       },
        {"cp 100\ncp 101",                        tooMany                                                  },
        {"cp 10001\ncp 0",                        tooMany                                                  }, // walked in vain
        {"cp 4294967297",                         tooMany                                                  },
        {"cp 99999999999999999999\ncp 9999999999", tooMany                                                 },
        {"trans 1 nan 0",                         "a number is not finite in 'trans 1 nan 0'"              },
        {"scale 1 1 1e39",                        "a number is not finite in 'scale 1 1 1e39'"             },
        {"cp 2\n2:rot inf 0 0 1",                 "a number is not finite in '2:rot inf 0 0 1'"            },
        {"rot 90 0 0 0",                          "an axis without length in 'rot 90 0 0 0'"               },
        {"rot 90 1 1 1 0 1e-7 0",                 "an axis without length in 'rot 90 1 1 1 0 1e-7 0'"      },
        {"7:mirror 0 0 0",                        "an axis without length in '7:mirror 0 0 0'"             },
        {"mirror 1 0 0 0 0 0",                    "an axis without length in 'mirror 1 0 0 0 0 0'"         },
        {"rot 90 0 0 0 0 0 1",                    ""                                                       }, // through the origin
        {"rot 0 0 0",                             ""                                                       }  // no rotation at all
    };
    for (const auto& c : cases) EXPECT_EQ(CloneTrafosError(c.text, maxCopies).c_str(), c.error) << c.text;
}

}   // namespace
