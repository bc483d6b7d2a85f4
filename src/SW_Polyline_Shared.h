// What the classes of line objects share: files of lines, records, projection, texts. For SW_Polyline*, SW_Polygon* and
// the lines of scenarios only.

#pragma once

#include "AK_VisObj3d_Draw.h"
#include "SW_Polyline_Points.h"

#include <functional>

class AK_Object;
class SW_Mesh;

// ---- files of lines (SW_Polyline_Files.cpp)

/// One line of a file, and what the file says about it.
struct SW_LineOfFile {
    AK_Polyline line;
    AK_String name;     // the annotation "name", the layer of a DXF file, the name in an ano file; "" for none
    AK_String colour;   // a word, in ano files only
    int number = 0;     // in the file, from 1
    AK_String place;    // where it ends: the file and its line
};

/// A format by the extension of its files.
struct SW_LineFormat {
    const char* extension;
    /// Reads the next line; false at the end, and after a fault with the points before it.
    bool (*read)(AK_TextReader& reader, SW_LineOfFile& next);
    const char* number;      // makes the id of a line without name: behind that of the file; null for the file's own
    bool nameFollowsFile;    // a name stands behind that of the file too
    const char* nameInSet;   // name of a line without one in a set
};

const SW_LineFormat* SW_FormatOfExtension(const AK_String& extension);   // null for none
inline const SW_LineFormat* SW_FormatOfFile(const AK_String& path) { return SW_FormatOfExtension(path.Extension()); }
/// Calls `take` for each line that has points. False if the file cannot be opened. A file without any line is reported.
bool SW_ReadLines(const AK_String& path, const SW_LineFormat& format, const std::function<void(SW_LineOfFile&)>& take);
/// The id of a line that comes from a file of that name.
AK_String SW_IdOfLine(const AK_String& path, const SW_LineFormat& format, const SW_LineOfFile& line);
/// Writes a DXF file: its frame, and in it what `writeLines` writes. 1 if that failed.
int SW_WriteDxfFile(const AK_String& path, const std::function<void(std::ostream&)>& writeLines);
/// Tell in the status that there is no such file, no such line object.
void SW_TellMissingFile(const AK_String& path);
void SW_TellNoLine(const AK_String& id);

/// Makes ids unique among the components of an object, as the objects would do, but in one pass for a whole import.
class SW_UniqueIds {
public:
    explicit SW_UniqueIds(const AK_Object& parent);
    AK_String Unique(const AK_String& id);

    /// Makes a line that was constructed without a parent, under such an id, a component. The usual way would compare
    /// its id with those of all components once more, which takes minutes for a drawing of 100000 lines.
    static void Adopt(AK_Object& parent, AK_Object* line);

private:
    AK_Dict<AK_String, char> _taken;
    AK_Dict<AK_String, int> _nextNumber;   // by the part of the id before it
};

// ---- records, projection, drawing (SW_Polyline.cpp, SW_Polyline_Draw.cpp)

/// Warns of points of a line with coordinates that are none.
void SW_WarnOfNoCoordinates(const AK_String& line, int numPoints);
/// Gives each point the height of the surface below it; points outside keep theirs.
void SW_ProjectPoints(AK_List<AK_Vec>& points, const SW_Mesh& mesh);
/// Writes a text at a point of the world, in front of everything.
void SW_DrawText(const AK_Vec& p, const AK_String& font, const AK_String& text);
