// Files of lines: the formats by extension, import and export of a single line, and what the imports of containers and
// sets share.

#include "SW_Polyline.h"

#include "AK_Basic_NewFile.h"
#include "SW_Mesh.h"
#include "SW_Polyline_Shared.h"
#include "SW_Polyline_Text.h"

#include <algorithm>
#include <cstring>

// ----------------------------------------------------------------------------------------------------------------
// Formats
// ----------------------------------------------------------------------------------------------------------------

template <int dimension>
static bool ReadWholeFile(AK_TextReader& reader, SW_LineOfFile& next)
{
    if (next.number > 1) return false;
    next.line.ReadPoints(reader, dimension);
    next.name = next.line.Name();
    return true;
}

static bool ReadNxyz(AK_TextReader& reader, SW_LineOfFile& next)
{
    const bool good = next.line.ReadFromNxyz(reader) != 0;
    next.name = next.line.Name();
    return good;
}

static bool ReadDxf(AK_TextReader& reader, SW_LineOfFile& next)
{
    return next.line.ReadFromDxf(reader, next.name) != 0;
}

static bool ReadAno(AK_TextReader& reader, SW_LineOfFile& next)
{
    return next.line.ReadFromAno(reader, next.name, next.colour) == 0;
}

// clang-format off
static constexpr SW_LineFormat formats[] = {
    {"xy",   ReadWholeFile<2>, nullptr, false, "p_"},
    {"xyz",  ReadWholeFile<3>, nullptr, false, "p_"},
    {"nxyz", ReadNxyz,         "_%04d", false, "p_"},
    {"dxf",  ReadDxf,          "_%04d", true,  "pl_"},
    {"DXF",  ReadDxf,          "_%04d", true,  "pl_"},
    {"ano",  ReadAno,          "_%d",   false, "pl_"},
};
// clang-format on

const SW_LineFormat* SW_FormatOfExtension(const AK_String& extension)
{
    for (const SW_LineFormat& format : formats)
        if (extension == format.extension) return &format;
    return nullptr;
}

// Tells why nothing came of a file that could be read.
static void WarnOfNoLine(const AK_String& path, const SW_LineFormat& format)
{
    const AK_String entities = format.read == ReadDxf ? AK_Polyline::EntitiesOfDxf(path) : AK_String();
    if (entities.IsEmpty())
        AK_MSG("WARNING:no line found in '" << path << "'");
    else
        AK_MSG("WARNING:no polyline found in '" << path << "', only " << entities
                                                << ": filled areas (HATCH) must be exported as outlines");
}

bool SW_ReadLines(const AK_String& path, const SW_LineFormat& format, const std::function<void(SW_LineOfFile&)>& take)
{
    AK_TextReader reader(path);
    if (!reader.IsOpen()) return false;
    bool found = false;
    for (int number = 1;; ++number) {
        SW_LineOfFile next;
        next.number = number;
        if (!format.read(reader, next)) break;
        if (next.line._x.Size() == 0) continue;
        found = true;
        next.place = reader.Place();
        take(next);
    }
    if (!found) WarnOfNoLine(path, format);
    return true;
}

AK_String SW_IdOfLine(const AK_String& path, const SW_LineFormat& format, const SW_LineOfFile& line)
{
    const AK_String file = path.BaseName();
    if (!line.name.IsEmpty()) return format.nameFollowsFile ? file + "_" + line.name : line.name;
    return format.number ? file + AK_String(line.number, format.number) : file;
}

// ----------------------------------------------------------------------------------------------------------------
// Unique ids
// ----------------------------------------------------------------------------------------------------------------

SW_UniqueIds::SW_UniqueIds(const AK_Object& parent)
{
    for (int i = 0; i < parent.NumComponents(); ++i) _taken[parent.ComponentAt(i)->Id()] = 1;
}

// "A" -> "A_0001", "B_7" -> "B_0008".
AK_String SW_UniqueIds::Unique(const AK_String& wanted)
{
    AK_String id = wanted;
    id.ReplaceNonAlNum('_');
    if (!id.IsEmpty() && _taken.Find(id)) {
        AK_String stem = id;
        int number = 0;
        if (char* underscore = std::strrchr(&stem[0], '_'); underscore && ScanInt(underscore + 1, number))
            stem = AK_String(stem.c_str(), underscore);
        int& next = _nextNumber[stem];
        next = std::max(next, std::max(number, 0) % INT_MAX + 1);
        while (_taken.Find(id)) id = stem + AK_String(next++, "_%04d");
    }
    _taken[id] = 1;
    return id;
}

void SW_UniqueIds::Adopt(AK_Object& parent, AK_Object* line)
{
    parent.AddComponent(line);
    if (!parent.ProjectDir().IsEmpty()) line->ProjectDir(parent.ProjectDir() + "/" + line->Id());
}

// ----------------------------------------------------------------------------------------------------------------
// A single line
// ----------------------------------------------------------------------------------------------------------------

void SW_TellMissingFile(const AK_String& path)
{
    AK_Object::_execStatus = AK_String("file '") + path + "' does not exist!";
}

void SW_Polyline::Import(const AK_String& path)
{
    if (!AK_System::FileExists(path)) return SW_TellMissingFile(path);
    const AK_String failure = AK_String("error occurred during import from '") + path + "'";
    const SW_LineFormat* format = SW_FormatOfFile(path);
    AK_TextReader reader(path);
    if (!format || format->read == ReadAno || !reader.IsOpen()) {   // an ano file is one of many lines
        _execStatus = failure;
        return;
    }
    SW_LineOfFile file;
    file.number = 1;
    file.line.annotations = _line.annotations;
    const bool good = format->read(reader, file);
    if (file.line._x.Size() == 0) WarnOfNoLine(path, *format);
    SetLine(file.line);
    if (!_line.Name().IsEmpty()) Id(_line.Name());
    if (AK_String("xy") == format->extension && BaseMesh()) ProjectOnto(*BaseMesh());
    if (!good) _execStatus = failure;
}

int SW_WriteDxfFile(const AK_String& path, const std::function<void(std::ostream&)>& writeLines)
{
    return !AK_WriteStream(path, [&](std::ostream& stream) {
        stream << "  0\nSECTION\n  2\nENTITIES\n";
        writeLines(stream);
        stream << "  0\nENDSEC\n  0\nEOF\n  0\nEOF\n";   // the second one belongs to the format: files carry it
    });
}

void SW_Polyline::Export(const AK_String& path)
{
    constexpr int digits = AK_Polyline::writtenDigits;
    const auto writeNxyz = [this](std::ostream& stream) { _line.WriteToNxyz(stream, digits); };
    const auto writeDxf = [this](std::ostream& stream) { _line.WriteToDxf(Id(), stream, digits); };
    const AK_String extension = path.Extension();
    int failed = 1;
    if (extension == "xy") failed = _line.WriteXy(path);
    if (extension == "xyz") failed = _line.WriteXyz(path);
    if (extension == "nxyz") failed = !AK_WriteStream(path, writeNxyz);
    if (extension == "dxf" || extension == "DXF") failed = SW_WriteDxfFile(path, writeDxf);
    if (failed) _execStatus = AK_String("error occurred during export to '") + path + "'";
}

// ----------------------------------------------------------------------------------------------------------------
// ano and KORVO99
// ----------------------------------------------------------------------------------------------------------------

void SW_Polyline::SetColor(const AK_String& colour)
{
    // clang-format off
    static constexpr struct {
        const char* word;
        AK_Color color;
    } words[] = {
        {"lblue",   {0.5f, 0.5f, 1}},   // light blue
        {"blue",    {0, 0, 1}},
        {"red",     {1, 0, 0}},
        {"green",   {0, 1, 0}},
        {"yello",   {1, 1, 0}},         // so the files spell it
        {"cyan",    {0, 1, 1}},
        {"magenta", {1, 0, 1}},
    };
    // clang-format on
    _autoColored = 1;
    for (const auto& word : words) {
        if (!(colour == word.word)) continue;
        _autoColored = 0;
        _color = word.color;
    }
}

int SW_Polyline::ReadFromAnoFile(AK_TextReader& reader)
{
    AK_Polyline line;
    AK_String name, colour;
    if (line.ReadFromAno(reader, name, colour)) return 1;
    if (!name.IsEmpty()) Id(name);
    SetColor(colour);
    SetLine(line);
    return 0;
}

int SW_Polyline::ReadFromKORVO99Ascii(AK_TextReader& reader)
{
    const int failed = _line.ReadFromKORVO99Ascii(reader);
    PointsChanged();
    return failed;
}
