// The points of a line with its annotations, and the text formats that all line objects share: xy, xyz, nxyz, DXF.

#pragma once

#include "AK_Basic_Vec.h"

#include <ostream>

/// A plain value.
class AK_Polyline {
public:
    AK_List<AK_Vec> _x{1};   // m
    AK_String annotations;   // "key=value" entries, separated by ";"

    /// Digits of the coordinates in nxyz and DXF files.
    static constexpr int writtenDigits = 9;
    /// 1 while labels of DXF files are to be taken from their dictionaries.
    static int _importXDICT;

    // One point a line, "x y" or "x,y"; a line with "=" is an annotation, any other is passed over. 1 if the file
    // cannot be opened.
    int ReadXy(const AK_String& path);
    int ReadXyz(const AK_String& path);
    int WriteXy(const AK_String& path) const;
    int WriteXyz(const AK_String& path) const;

    /// The next line of a file of many: annotations, the number of points, the points. 1 if there was one.
    int ReadFromNxyz(AK_TextReader& reader);
    void WriteToNxyz(std::ostream& stream, int precision) const;

    /// The next polyline of a DXF file, lightweight or old-style, and its layer; 0 at the end.
    int ReadFromDxf(AK_TextReader& reader, AK_String& label);
    void WriteToDxf(const AK_String& layer, std::ostream& stream, int precision) const;
};
