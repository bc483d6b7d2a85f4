#include "AK_Basic_TestTools.h"

#include <gtest/gtest.h>

namespace {

struct Point {
    double x, y, z;
};

}   // namespace

template <>
inline constexpr bool ak_is_stream_item<Point> = true;

namespace {

// A record with one of everything.
struct Record {
    int i = -2;
    unsigned int u = 0xFFFFFFFF;
    float f = 0.1f;
    double d = 1.0;
    unsigned char c = 200;
    AK_String tag = "SW_Mesh:v1", empty;
    AK_List<int> ints;
    AK_List<Point> points;
    AK_List<AK_String> names;

    void Save(AK_Stream& out) const
    {
        out.Write(tag);
        out.Write(i);
        out.Write(u);
        out.Write(f);
        out.Write(d);
        out.Write(c);
        out.Write(empty);
        out.Write(ints);
        out.Write(points);
        out.Write(names);
    }
    void Load(AK_Stream& in)
    {
        in.Read(tag);
        in.Read(i);
        in.Read(u);
        in.Read(f);
        in.Read(d);
        in.Read(c);
        in.Read(empty);
        in.Read(ints);
        in.Read(points);
        in.Read(names);
    }
};

Record FilledRecord()
{
    Record r;
    r.ints.Append(1);
    r.ints.Append(-1);
    r.points.Append({1, 2, 3});
    r.names.Append("n");
    r.names.Append("");
    return r;
}

std::string Int(unsigned int n)
{
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8) bytes += char(n >> shift);
    return bytes;
}

}   // namespace

TEST(AK_Stream, WritesTheAgreedBytes)
{
    using namespace std::string_literals;
    TemporaryDirectory directory;
    const AK_String name = directory / "record";
    AK_Stream out(name, "wb");
    FilledRecord().Save(out);
    EXPECT_EQ(out._status, 0);
    out.Close();
    EXPECT_EQ(out._status, 0);
    out.Close();
    EXPECT_EQ(out.Failed(), 0);
    const std::string bytes = FileBytes(name);
    EXPECT_EQ(bytes, "\x0a\0\0\0SW_Mesh:v1"s + "\xfe\xff\xff\xff"s + "\xff\xff\xff\xff"s + "\xcd\xcc\xcc\x3d"s +
                         "\0\0\0\0\0\0\xf0\x3f"s + "\xc8"s + "\0\0\0\0"s + "\2\0\0\0\1\0\0\0\xff\xff\xff\xff"s +
                         "\1\0\0\0\0\0\0\0\0\0\xf0\x3f\0\0\0\0\0\0\0\x40\0\0\0\0\0\0\x08\x40"s +
                         "\2\0\0\0\1\0\0\0n\0\0\0\0"s);
}

TEST(AK_Stream, ReadsBackWhatItWrote)
{
    TemporaryDirectory directory;
    const AK_String name = directory / "record";
    AK_Stream out(name, "wb");
    FilledRecord().Save(out);
    out.Close();
    AK_Stream in(name, "rb");
    Record read;
    read.i = 0;
    read.names.Append("old");
    read.Load(in);
    EXPECT_EQ(in._status, 0);
    EXPECT_EQ(in.Remaining(), 0);
    EXPECT_EQ(read.i, -2);
    EXPECT_EQ(read.f, 0.1f);
    EXPECT_EQ(read.tag, "SW_Mesh:v1");
    EXPECT_EQ(read.tag._size, 11);
    EXPECT_EQ(read.points[0].z, 3);
    EXPECT_EQ(read.ints.Capacity(), 2);
    EXPECT_EQ(Joined(read.names), "n||");
    int beyond = 5;
    in.Read(beyond);
    EXPECT_EQ(in._status, 1);
    EXPECT_EQ(beyond, 5) << "an item that is not there keeps its value";
}

TEST(AK_Stream, EveryCutIsSeenAtTheEndOfTheRecord)
{
    TemporaryDirectory directory;
    const AK_String name = directory / "record";
    AK_Stream out(name, "wb");
    FilledRecord().Save(out);
    out.Close();
    const std::string bytes = FileBytes(name);
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        WriteFile(name, bytes.substr(0, length));
        AK_Stream in(name, "rb");
        Record read = FilledRecord();
        read.Load(in);
        EXPECT_EQ(in._status, 1) << length << " bytes";
        EXPECT_EQ(read.names.Size(), 0) << "the list that is cut is emptied";
    }
}

// Reads the file as one item of a type: its size, or -1 if it was refused and nothing can be read behind it.
template <class T>
static int SizeRead(const AK_String& name, int (*size)(const T&))
{
    AK_Stream in(name, "rb");
    T item;
    in.Read(item);
    if (in._status == 0) return size(item);
    EXPECT_EQ(size(item), 0);
    char next = 0;
    in.Read(next);
    EXPECT_EQ(in._status, 1);
    return -1;
}

TEST(AK_Stream, RefusesCountsThatTheFileCannotHold)
{
    TemporaryDirectory directory;
    const AK_String name = directory / "record";
    const struct {
        const char* why;
        std::string bytes;
        int ints, names, text;   // sizes when the file is read as that
    } cases[] = {
        {"nothing",                               Int(0),                   0,  0,  0 },
        {"two numbers, empty strings, NUL bytes", Int(2) + Int(0) + Int(0), 2,  2,  0 },
        {"negative",                              Int(0x80000000) + Int(0), -1, -1, -1},
        {"minus one",                             Int(0xFFFFFFFF) + Int(0), -1, -1, -1},
        {"huge",                                  Int(0x7FFFFFFF) + Int(0), -1, -1, -1},
        {"one too many",                          Int(3) + Int(0) + Int(0), -1, -1, 0 },
        {"the string in the list is too long",    Int(1) + Int(5) + "abcd", 1,  -1, 1 },
        {"the count itself is cut",               "abc",                    -1, -1, -1},
    };
    for (const auto& c : cases) {
        WriteFile(name, c.bytes);
        EXPECT_EQ(SizeRead<AK_List<int>>(name, [](const AK_List<int>& l) { return l.Size(); }), c.ints) << c.why;
        EXPECT_EQ(SizeRead<AK_List<AK_String>>(name, [](const AK_List<AK_String>& l) { return l.Size(); }), c.names)
            << c.why;
        EXPECT_EQ(SizeRead<AK_String>(name, [](const AK_String& s) { return s.Length(); }), c.text) << c.why;
    }
}

TEST(AK_Stream, TellsFailedWrites)
{
    AK_Stream full("/dev/full", "wb");
    full.Write(AK_String("x"));
    full.Close();
    EXPECT_NE(full._status, 0) << "what the buffer kept fails when it is closed";
    EXPECT_EQ(full.Failed(), 1);

    AK_Stream none("/nonexistent/file", "rb");
    EXPECT_EQ(none._status, 1);
    none.Write(1);
    EXPECT_EQ(none._status, 1);
    EXPECT_EQ(none.ReadCount(1), 0);
    EXPECT_EQ(none.Remaining(), 0);
    none.Close();

    TemporaryDirectory directory;
    AK_Stream readOnly(directory.Path(), "rb");   // a directory opens but has no records
    int item = 3;
    readOnly.Read(item);
    EXPECT_EQ(readOnly._status, 1);
}

TEST(AK_Stream, PlainFunctionsCountItems)
{
    TemporaryDirectory directory;
    const AK_String name = directory / "file";
    void* file = AK_open(name.c_str(), "wb");
    const int i[] = {1, -1};
    const double d = 0.5;
    EXPECT_EQ(AK_write_i(i, 2, file) + AK_write_d(&d, 1, file) + AK_write_c("abc", 3, file), 6u);
    EXPECT_EQ(AK_flush(file), 0);
    EXPECT_EQ(AK_seek(2, file), 0) << "moves what is written next";
    const unsigned int u = 7;
    EXPECT_EQ(AK_write_u(&u, 1, file), 1u);
    EXPECT_EQ(AK_close(file), 0);
    EXPECT_EQ(FileBytes(name).substr(16), std::string("abc\0\0\7\0\0\0", 9));

    file = AK_open(name.c_str(), "rb");
    int iRead[2] = {};
    double dRead = 0;
    float fRead[9];
    EXPECT_EQ(AK_read_i(iRead, 2, file) + AK_read_d(&dRead, 1, file), 3u);
    EXPECT_EQ(iRead[1], -1);
    EXPECT_EQ(dRead, 0.5);
    EXPECT_EQ(AK_read_f(fRead, 9, file), 2u) << "whole items of the 9 bytes left";
    EXPECT_EQ(AK_close(file), 0);
}

// ------------------------------------------------------------------------------------------------------ AK_TextReader

TEST(AK_TextReader, ReadsLinesOfBoundedLength)
{
    using namespace std::string_literals;
    TemporaryDirectory directory;
    const AK_String name = directory / "text";
    const struct {
        const char* why;
        std::string bytes;
        int limit;
        const char* lines;   // each followed by "|"
        int nulBytes;
    } cases[] = {
        {"empty",                       "",               9, "",                0},
        {"line ends stay",              "a\n\r\nb",       9, "a\n|\r\n|b|",     0},
        {"the rest is the next line",   "abcdef\ng\n",    3, "abc|def|\n|g\n|", 0},
        {"one byte at a time",          "ab\n",           1, "a|b|\n|",         0},
        {"NUL bytes end a line's text", "a\0b\nc\n\0\0"s, 9, "a|c\n||",         3},
    };
    for (const auto& c : cases) {
        WriteFile(name, c.bytes);
        AK_TextReader reader(name);
        ASSERT_TRUE(reader.IsOpen());
        EXPECT_EQ(reader.Size(), long(c.bytes.size()));
        AK_List<AK_String> lines;
        AK_String line;
        while (reader.ReadLine(line, c.limit)) lines.Append(line);
        EXPECT_EQ(Joined(lines), c.lines) << c.why;
        EXPECT_EQ(reader.NulBytes(), c.nulBytes) << c.why;
        EXPECT_EQ(reader.Remaining(), 0);
        EXPECT_EQ(line, "") << "no line is left behind at the end";
    }
}

TEST(AK_TextReader, JoinsLinesAcrossItsBuffer)
{
    TemporaryDirectory directory;
    const AK_String name = directory / "text";
    WriteFile(name, std::string(65535, 'a') + "bc\n" + std::string(200000, 'd'));
    AK_TextReader reader(name);
    AK_String line;
    ASSERT_TRUE(reader.ReadLine(line, 1000000));
    EXPECT_EQ(line.Length(), 65538);
    EXPECT_TRUE(line.EndsWith("abc\n"));
    EXPECT_EQ(reader.ReadByte(), 'd');
    EXPECT_EQ(reader.Remaining(), 199999);
    ASSERT_TRUE(reader.ReadLine(line, 40959));
    EXPECT_EQ(line.Length(), 40959);
}

TEST(AK_TextReader, CountsLinesAndPassesOverAByteOrderMark)
{
    TemporaryDirectory directory;
    const AK_String name = directory / "text";
    CaughtMessages messages;
    WriteFile(name, "\xEF\xBB\xBFone\ntwo\nthree");
    AK_TextReader reader(name);
    EXPECT_TRUE(messages.Texts().empty()) << "a file that is only tried";
    AK_String line;
    EXPECT_EQ(reader.ReadByte(), 'o');
    EXPECT_EQ(reader.Line(), 1);
    for (const auto& [text, number] : {std::pair{"ne\n", 1}, {"two\n", 2}, {"three", 3}}) {
        ASSERT_TRUE(reader.ReadLine(line, 100));
        EXPECT_EQ(line, text);
        EXPECT_EQ(reader.Line(), number);
    }
    EXPECT_FALSE(reader.ReadLine(line, 100));
    EXPECT_EQ(reader.Place(), name + ", line 3");
    EXPECT_EQ(messages.Texts(),
              std::vector<std::string>{("WARNING:" + name + ", line 1: a byte-order mark is passed over").c_str()});
}

TEST(AK_TextReader, HasNoLinesInWhatIsNoFile)
{
    TemporaryDirectory directory;
    for (const AK_String& name : {directory.Path(), directory / "missing", AK_String()}) {
        AK_TextReader reader(name);
        AK_String line = "old";
        EXPECT_FALSE(reader.IsOpen());
        EXPECT_FALSE(reader.ReadLine(line, 10));
        EXPECT_EQ(reader.ReadByte(), -1);
        EXPECT_EQ(reader.Remaining(), 0);
    }
}
