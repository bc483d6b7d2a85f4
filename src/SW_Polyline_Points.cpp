// Points and annotations of lines in plain text: xy, xyz, nxyz, ano and the vertices of release files.

#include "SW_Polyline_Points.h"

#include "AK_Basic_NewFile.h"
#include "AK_Object.h"
#include "SW_Polyline_Text.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <string>

int AK_Polyline::_importXDICT = 0;

void SW_PointBox::Add(const AK_List<AK_Vec>& points)
{
    for (const AK_Vec& p : points)
        for (double AK_Vec::*k : {&AK_Vec::x, &AK_Vec::y, &AK_Vec::z}) {
            if (!IsCoordinate(p.*k)) continue;
            _lo.*k = std::min(_lo.*k, p.*k);
            _hi.*k = std::max(_hi.*k, p.*k);
        }
}

static double OrZero(double bound) { return std::isfinite(bound) ? bound : 0; }

AK_Vec SW_PointBox::Lo() const { return {OrZero(_lo.x), OrZero(_lo.y), OrZero(_lo.z)}; }

AK_Vec SW_PointBox::Hi() const { return {OrZero(_hi.x), OrZero(_hi.y), OrZero(_hi.z)}; }

int AK_Polyline::NumNoCoordinates() const
{
    return int(std::count_if(_x.begin(), _x.end(), [](const AK_Vec& p) { return !AreCoordinates(p); }));
}

static constexpr int maxLine = 511;      // characters of a line of text
static constexpr int maxNumber = 2000;   // characters of a token: a number of a thousand digits is a number

// ----------------------------------------------------------------------------------------------------------------
// Annotations
// ----------------------------------------------------------------------------------------------------------------

// Gathers annotations as they are met. A std::string, since a file can consist of millions of them.
static void AppendAnnotation(std::string& annotations, const AK_String& line)
{
    const char* begin = line.c_str();
    const char* end = begin + line.Length();
    while (end > begin && static_cast<unsigned char>(end[-1]) < ' ') --end;
    if (!annotations.empty() && annotations.back() != ';') annotations += ';';
    annotations.append(begin, end);
    if (annotations.back() != ';') annotations += ';';
}

static bool IsAnnotation(const AK_String& line) { return std::strchr(line.c_str(), '=') != nullptr; }

// True for a text line that gives a point of so many coordinates; for dimension 0, the number of points of an nxyz
// file.
static bool ReadsAsNumbers(const char* line, int dimension)
{
    int count;
    double x[3];
    if (dimension == 0) return ScanInt(line, count);
    return ScanCoordinates(line, false, x, dimension) || ScanCoordinates(line, true, x, dimension);
}

// An entry a line. A reader takes one without "=" for numbers if it begins with such: it is told.
static std::string AnnotationLines(const AK_String& annotations, int dimension)
{
    AK_String text = annotations;
    text.ReplaceAll(';', '\n');
    if (!text.IsEmpty() && !text.EndsWith("\n")) text.Append("\n");
    AK_List<AK_String> lines(1);
    text.Split('\n', lines);
    for (const AK_String& line : lines)
        if (!IsAnnotation(line) && ReadsAsNumbers(line.c_str(), dimension))
            AK_MSG("WARNING:" << InLanguage("the annotation '", "die Anmerkung '") << line
                              << (dimension == 0
                                      ? InLanguage("' reads back as the number of points: give it a key, 'key=",
                                                   "' liest sich als Anzahl der Punkte: mit Schluessel, 'key=")
                                      : InLanguage("' reads back as a point: give it a key, 'key=",
                                                   "' liest sich als Punkt: mit Schluessel, 'key="))
                              << line << "'");
    return text.c_str();
}

// ----------------------------------------------------------------------------------------------------------------
// One line a file
// ----------------------------------------------------------------------------------------------------------------

void AK_Polyline::ReadPoints(AK_TextReader& reader, int dimension)
{
    _x.Clear();
    std::string found = annotations.c_str();
    AK_String line;
    bool cut = false;
    while (ReadTextLine(reader, line, maxLine, &cut)) {
        double x[3] = {0, 0, 0};
        if (IsAnnotation(line))
            AppendAnnotation(found, line);
        else if (!cut && (ScanCoordinates(line.c_str(), false, x, dimension) ||
                          ScanCoordinates(line.c_str(), true, x, dimension)))
            _x.Append({x[0], x[1], dimension > 2 ? x[2] : 0});
    }
    annotations = found.c_str();
}

int AK_Polyline::ReadXy(const AK_String& path)
{
    AK_TextReader reader(path);
    if (reader.IsOpen()) ReadPoints(reader, 2);
    return reader.IsOpen() ? 0 : 1;
}

int AK_Polyline::ReadXyz(const AK_String& path)
{
    AK_TextReader reader(path);
    if (reader.IsOpen()) ReadPoints(reader, 3);
    return reader.IsOpen() ? 0 : 1;
}

int AK_Polyline::WritePoints(const AK_String& path, int dimension) const
{
    return !AK_WriteStream(path, [&](std::ostream& stream) {
        stream << AnnotationLines(annotations, dimension);
        for (const AK_Vec& p : _x) {
            stream << AK_String(p.x, "%lf") << " " << AK_String(p.y, "%lf");
            if (dimension > 2) stream << " " << AK_String(p.z, "%lf");
            stream << "\n";
        }
    });
}

int AK_Polyline::WriteXy(const AK_String& path) const { return WritePoints(path, 2); }

int AK_Polyline::WriteXyz(const AK_String& path) const { return WritePoints(path, 3); }

// ----------------------------------------------------------------------------------------------------------------
// Many lines a file
// ----------------------------------------------------------------------------------------------------------------

// Reads the next token of a file as a number; false at the end and for what is none.
template <class Number>
static bool ReadNumber(AK_TextReader& reader, Number& number)
{
    const auto isSpace = [](int byte) { return byte == ' ' || (byte >= '\t' && byte <= '\r'); };
    char token[maxNumber];
    int length = 0;
    int byte = reader.ReadByte();
    while (isSpace(byte)) byte = reader.ReadByte();
    for (; byte >= 0 && !isSpace(byte); byte = reader.ReadByte()) {
        if (length == maxNumber) return false;
        token[length++] = char(byte);
    }
    const char* begin = length > 1 && token[0] == '+' ? token + 1 : token;
    const auto result = std::from_chars(begin, token + length, number);
    return result.ec == std::errc() && result.ptr == token + length;
}

static bool ReadCoordinate(AK_TextReader& reader, double& x) { return ReadNumber(reader, x) && IsCoordinate(x); }

// Tells of a line that a file ends within, or stops being numbers.
static void WarnOfIncompleteLine(const AK_TextReader& reader, int expected, int found)
{
    AK_MSG("WARNING:" << reader.Place() << ": a line that should have " << expected << " points ends after " << found
                      << ": the rest of the file is not read");
}

int AK_Polyline::ReadFromNxyz(AK_TextReader& reader)
{
    _x.Clear();
    std::string found = annotations.c_str();
    AK_String line;
    int count = 0;
    bool hasCount = false;
    while (!hasCount && ReadTextLine(reader, line, maxLine)) {
        if (IsAnnotation(line))
            AppendAnnotation(found, line);
        else
            hasCount = ScanInt(line.c_str(), count);
    }
    annotations = found.c_str();
    if (!hasCount || count < 0) return 0;
    for (int i = 0; i < count; ++i) {
        AK_Vec p;
        if (!ReadCoordinate(reader, p.x) || !ReadCoordinate(reader, p.y) || !ReadCoordinate(reader, p.z)) {
            WarnOfIncompleteLine(reader, count, i);
            return 0;
        }
        _x.Append(p);
    }
    return 1;
}

void AK_Polyline::WriteToNxyz(std::ostream& stream, int precision) const
{
    const auto before = stream.precision(precision);
    stream << AnnotationLines(annotations, 0) << _x.Size() << "\n";
    for (const AK_Vec& p : _x) stream << p.x << " " << p.y << " " << p.z << "\n";
    stream.precision(before);
}

// The first word of a text.
static AK_String FirstWord(const char* text)
{
    static const char* const blanks = " \t\r\n\v\f";
    text += std::strspn(text, blanks);
    return AK_String(text, text + std::strcspn(text, blanks));
}

int AK_Polyline::ReadFromAno(AK_TextReader& reader, AK_String& name, AK_String& colour)
{
    constexpr int shortestName = 3;
    _x.Clear();
    AK_String line;
    if (!ReadTextLine(reader, name, maxLine) || !ReadTextLine(reader, line, maxLine)) return 1;
    if (name.Length() < shortestName) name = "";
    int count = 0;
    const char* rest = nullptr;
    if (!ScanInt(line.c_str(), count, &rest)) return 1;
    colour = FirstWord(rest);
    if (colour.IsEmpty()) return 1;
    for (int i = 0; i < count; ++i) {
        double x[2];
        if (!ReadTextLine(reader, line, maxLine) || !ScanCoordinates(line.c_str(), false, x, 2)) {
            WarnOfIncompleteLine(reader, count, i);
            return 1;
        }
        _x.Append({x[0], x[1], 0});
    }
    return 0;
}

int AK_Polyline::ReadFromKORVO99Ascii(AK_TextReader& reader)
{
    _x.Clear();
    int count = 0;
    if (!ReadNumber(reader, count) || count < 0) return 1;
    for (int i = 0; i < count; ++i) {
        AK_Vec p;
        if (!ReadCoordinate(reader, p.x) || !ReadCoordinate(reader, p.y)) return 1;
        _x.Append(p);
    }
    return 0;
}
