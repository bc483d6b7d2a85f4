// The text formats of lines: what is read from good, odd and hostile files, and what is written.

#include "SW_Polyline_Points.h"

#include "SW_Polyline_TestSupport.h"

#include <sstream>

namespace {

class SW_Polyline_Points : public ObjectTest {
protected:
    AK_String File(const std::string& bytes)
    {
        WriteFile(directory / "file", bytes);
        return directory / "file";
    }
};

std::string Digits(int n) { return std::string(n, '9'); }

// Name and points of all lines that a file of many gives, each behind a bar.
template <class Read>
std::string AllLines(const AK_String& path, const Read& read)
{
    AK_TextReader reader(path);
    std::string text;
    while (true) {
        AK_Polyline line;
        AK_String name;
        if (!read(line, reader, name)) return text;
        text += "|" + Text(name.c_str(), line._x);
    }
}

std::string AllNxyz(const AK_String& path)
{
    return AllLines(path, [](AK_Polyline& line, AK_TextReader& reader, AK_String& name) {
        const int good = line.ReadFromNxyz(reader);
        name = line.annotations;
        return good;
    });
}

std::string AllAno(const AK_String& path)
{
    return AllLines(path, [](AK_Polyline& line, AK_TextReader& reader, AK_String& name) {
        AK_String colour;
        const bool good = line.ReadFromAno(reader, name, colour) == 0;
        name = name + "," + colour;
        return good;
    });
}

}   // namespace

TEST_F(SW_Polyline_Points, ReadsXyAndXyz)
{
    const struct {
        const char* why;
        std::string file;
        const char* xy;
        const char* xyz;
        const char* annotations;
    } cases[] = {
        {"blanks between", "1 2 3\n4\t5  6\n", "1 2 0;4 5 0", "1 2 3;4 5 6", ""},
        {"commas between", "1,2,3\n 4, 5,\t6\n", "1 2 0;4 5 0", "1 2 3;4 5 6", ""},
        {"a blank before the comma is none of both", "1 ,2 ,3\n7 8 9\n", "7 8 0", "7 8 9", ""},
        {"carriage returns, no last line end", "1 2 3\r\n4 5 6", "1 2 0;4 5 0", "1 2 3;4 5 6", ""},
        {"annotations in between", "name=alp\r\n1 2 3\nd0=1.5;\n", "1 2 0", "1 2 3", "name=alp;d0=1.5;"},
        {"other lines", "# 1 2 3\n\nx y z\n1 2 3 and more\n", "1 2 0", "1 2 3", ""},
        {"two coordinates only", "1 2\n", "1 2 0", "", ""},
        {"no coordinates", "nan 1 1\ninf 1 1\n1e39 1 1\n-1e400 1 1\n5 6 7\n", "5 6 0", "5 6 7", ""},
        {"a thousand digits", Digits(1000) + " 1 1\n0." + Digits(1000) + " 1 1\n5 6 7\n", "5 6 0", "5 6 7", ""},
        {"longer than a line: cut, and no point", "a=" + Digits(600) + "\n1 2 3" + std::string(600, ' ') + "\n", "", "",
         nullptr},
        {"empty", "", "", "", ""},
        {"binary", std::string("\0\1\2\xff\0 \n\x80\0", 9), "", "", ""},
    };
    for (const auto& c : cases) {
        AK_Polyline line;
        EXPECT_EQ(line.ReadXy(File(c.file)), 0) << c.why;
        EXPECT_EQ(Text(line._x), c.xy) << c.why;
        if (c.annotations) {
            EXPECT_EQ(line.annotations, c.annotations) << c.why;
        }
        line.annotations = "";
        EXPECT_EQ(line.ReadXyz(File(c.file)), 0) << c.why;
        EXPECT_EQ(Text(line._x), c.xyz) << c.why;
        if (!c.annotations) {
            EXPECT_EQ(line.annotations.Length(), 511 + 1) << c.why;
        }
    }
    AK_Polyline line;
    line.annotations = "a=1";
    EXPECT_EQ(line.ReadXy(File("b=2\n1 2\n")), 0);
    EXPECT_EQ(line.annotations, "a=1;b=2;") << "those of a file come behind those that are there";
    EXPECT_EQ(line.ReadXy(directory / "none"), 1);
    EXPECT_EQ(line.ReadXyz(directory.Path()), 1) << "a directory";
}

TEST_F(SW_Polyline_Points, WritesXyAndXyz)
{
    AK_Polyline line;
    line.annotations = "name=alp;a remark;7,8;d0=1";
    line._x = Points("1 2 3;-0.5 2600000.123 1e7");
    EXPECT_EQ(line.WriteXy(directory / "a.xy"), 0);
    EXPECT_EQ(FileBytes(directory / "a.xy"),
              "name=alp\na remark\n7,8\nd0=1\n1.000000 2.000000\n-0.500000 2600000.123000\n");
    EXPECT_EQ(Messages(), Lines{"WARNING:the annotation '7,8' reads back as a point: give it a key, 'key=7,8'"});
    EXPECT_EQ(line.WriteXyz(directory / "a.xyz"), 0);
    EXPECT_EQ(Messages(), Lines{}) << "two numbers are no point of this file";
    EXPECT_EQ(FileBytes(directory / "a.xyz"),
              "name=alp\na remark\n7,8\nd0=1\n1.000000 2.000000 3.000000\n-0.500000 2600000.123000 10000000.000000\n");
    EXPECT_EQ(line.WriteXy(directory / "no/such/directory.xy"), 1);
}

TEST_F(SW_Polyline_Points, ReadsNxyz)
{
    const struct {
        const char* why;
        std::string file;
        const char* lines;
        int warnings;
    } cases[] = {
        {"two lines", "name=a\n2\n1 2 3\n4 5 6\nname=b\nk=v\n1\n7 8 9\n", "|name=a;: 1 2 3;4 5 6|name=b;k=v;: 7 8 9",
         0},
        {"no last line end", "1\n1 2 3", "|: 1 2 3", 0},
        {"tokens need no lines of their own", "2\n1 2 3 4 5\n6\n", "|: 1 2 3;4 5 6", 0},
        {"other lines before the count", "a remark\n\n 1 point\n1 2 3\n", "|: 1 2 3", 0},
        {"a negative count ends the file", "1\n1 2 3\n-1\n1\n4 5 6\n", "|: 1 2 3", 0},
        {"a line without points", "0\n1\n1 2 3\n", "|: |: 1 2 3", 0},
        {"no count: the lines before it", "1\n1 2 3\nname=b\n", "|: 1 2 3", 0},
        {"cut within a line", "1\n1 2 3\n2\n1 2 3\n4 5", "|: 1 2 3", 1},
        {"an absurd count", "2000000000\n1 2 3\n", "", 1},
        {"a count beyond an int is none", "99999999999999999999\n1\n1 2 3\n", "|: 1 2 3", 0},
        {"no number", "2\n1 2 3\n4 x 6\n", "", 1},
        {"not a number", "1\n1 2 nan\n", "", 1},
        {"infinite", "1\n1e999 2 3\n", "", 1},
        {"a thousand digits", "1\n1 2 0." + Digits(1000) + "\n", "|: 1 2 1", 0},
        {"endless digits", "1\n1 2 " + Digits(3000) + "\n", "", 1},
        {"empty", "", "", 0},
        {"binary", std::string("\0\1\2\xff\0=\n\x80\0", 9), "", 0},
    };
    for (const auto& c : cases) {
        Messages();
        EXPECT_EQ(AllNxyz(File(c.file)), c.lines) << c.why;
        EXPECT_EQ(int(Messages().size()), c.warnings) << c.why;
    }
}

TEST_F(SW_Polyline_Points, KeepsThePointsBeforeAFault)
{
    AK_Polyline line;
    const AK_String file = File("3\n1 2 3\n4 5 6\n7 8");
    AK_TextReader nxyz(file);
    EXPECT_EQ(line.ReadFromNxyz(nxyz), 0);
    EXPECT_EQ(Text(line._x), "1 2 3;4 5 6");
    EXPECT_EQ(Messages(), Lines{("WARNING:" + file).c_str() +
                                std::string(", line 4: a line that should have 3 points ends after 2: the rest of the "
                                            "file is not read")});
}

TEST_F(SW_Polyline_Points, WritesNxyzThatReadsBack)
{
    AK_Polyline line;
    line.annotations = "name=alp;a remark;k=v";
    line._x = Points("1.5 2600000.127 3;-1e-7 2 1234567890.5");
    std::ostringstream out;
    out.precision(4);
    line.WriteToNxyz(out, 9);
    EXPECT_EQ(out.str(), "name=alp\na remark\nk=v\n2\n1.5 2600000.13 3\n-1e-07 2 1.23456789e+09\n");
    EXPECT_EQ(out.precision(), 4);
    EXPECT_EQ(Messages(), Lines{});
    EXPECT_EQ(
        AllNxyz(File(out.str() + out.str())),
        "|name=alp;k=v;: 1.5 2600000.13 3;-1e-07 2 1234567890|name=alp;k=v;: 1.5 2600000.13 3;-1e-07 2 1234567890");
    line.annotations = "12 stones";
    out.str("");
    line.WriteToNxyz(out, 9);
    EXPECT_EQ(out.str().substr(0, 12), "12 stones\n2\n");
    EXPECT_EQ(Messages(), Lines{"WARNING:the annotation '12 stones' reads back as the number of points: give it a key, "
                                "'key=12 stones'"});
}

TEST_F(SW_Polyline_Points, ReadsAno)
{
    const struct {
        const char* why;
        std::string file;
        const char* lines;
    } cases[] = {
        {"two lines", "road\n2 red\n1 2\n3 4\n\n1 blue\n5 6\n", "|road,red: 1 2 0;3 4 0|,blue: 5 6 0"},
        {"a name of two characters is none", "ab\r\n1 red\r\n1 2\r\n", "|,red: 1 2 0"},
        {"the colour is one word", "road\n1 dark red\n1 2\n", "|road,dark: 1 2 0"},
        {"no colour", "road\n1\n1 2\n", ""},
        {"no count", "road\nred\n1 2\n", ""},
        {"cut", "a road\n1 red\n1 2\nb road\n2 red\n1 2\n", "|a road,red: 1 2 0"},
        {"an absurd count", "road\n2000000000 red\n1 2\n", ""},
        {"no number", "road\n1 red\n1 nan\n", ""},
        {"empty", "", ""},
        {"binary", std::string("\0\1\n\xff\0=\n\x80\0", 9), ""},
    };
    for (const auto& c : cases) EXPECT_EQ(AllAno(File(c.file)), c.lines) << c.why;
}

TEST_F(SW_Polyline_Points, ReadsTheVerticesOfReleaseFiles)
{
    const struct {
        const char* file;
        int failed;
        const char* points;
    } cases[] = {
        {"2\n1 2\n3 4\n", 0, "1 2 0;3 4 0"},
        {" 2 1 2 3 4 5", 0, "1 2 0;3 4 0"},
        {"0\n", 0, ""},
        {"2\n1 2\n3", 1, "1 2 0"},
        {"-1\n1 2\n", 1, ""},
        {"x\n1 2\n", 1, ""},
        {"", 1, ""},
        {"1\ninf 2\n", 1, ""},
        {"2000000000 1 2", 1, "1 2 0"},
    };
    for (const auto& c : cases) {
        AK_Polyline line;
        AK_TextReader reader(File(c.file));
        EXPECT_EQ(line.ReadFromKORVO99Ascii(reader), c.failed) << c.file;
        EXPECT_EQ(Text(line._x), c.points) << c.file;
    }
}
