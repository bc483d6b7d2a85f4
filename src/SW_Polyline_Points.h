// The points of a line with its annotations, and the text formats that all line objects share.
//
//   xy, xyz   one line: "x y" or "x,y" a point (with z likewise); other lines are passed over
//   nxyz      many lines: the number of points, then x y z of each
//   ano       many plane lines: a name, the number of points and a colour, then x y of each
//   dxf       many polylines, lightweight or old-style, each with its layer
//   KORVO99   the vertices of release and resistance files: their number, then x y of each
//
// In xy, xyz and nxyz a text line with "=" is an annotation of the line of points that follows, such as "name=alp".
//
// A file can hold anything. No count in it is believed: points are appended as they are read. A number counts as a
// coordinate if it is finite and a float can hold it; every other one is none. Points in memory can have such numbers
// all the same: they are saved and loaded, with a warning, and no box holds them. Main thread only.

#pragma once

#include "AK_Basic_Vec.h"

#include <limits>
#include <memory>
#include <ostream>

inline void ToFloats(const AK_Vec& v, float* out)
{
    out[0] = float(v.x);
    out[1] = float(v.y);
    out[2] = float(v.z);
}

/// The box around points, m. What is no coordinate is left out.
class SW_PointBox {
public:
    void Add(const AK_List<AK_Vec>& points);
    AK_Vec Lo() const;   // 0 in a direction without any coordinate
    AK_Vec Hi() const;

private:
    static constexpr double _far = std::numeric_limits<double>::infinity();
    AK_Vec _lo{_far, _far, _far}, _hi{-_far, -_far, -_far};
};

/// A plain value.
class AK_Polyline {
public:
    AK_List<AK_Vec> _x{1};   // m
    AK_String annotations;   // "key=value" entries, separated by ";"

    /// Digits of the coordinates in nxyz and DXF files.
    static constexpr int writtenDigits = 9;
    /// 1 while labels of DXF files are to tell the dictionary of extended data.
    static int _importXDICT;

    /// The annotation "name", "" if there is none.
    AK_String Name() const { return annotations.KeyValue("name", '=', ';'); }
    /// Number of points with a coordinate that is none: projecting on heights that are no numbers makes such.
    int NumNoCoordinates() const;

    // ---- one line a file (SW_Polyline_Points.cpp)

    /// Replaces the points by those of the file and appends its annotations to those that are there. A line of more
    /// than 511 characters holds no point, and an annotation of that length is cut. 1 if the file cannot be opened.
    int ReadXy(const AK_String& path);
    int ReadXyz(const AK_String& path);
    /// The rest of a file likewise, with 2 or 3 coordinates a point.
    void ReadPoints(AK_TextReader& reader, int dimension);
    /// 1 if the file cannot be written.
    int WriteXy(const AK_String& path) const;
    int WriteXyz(const AK_String& path) const;

    // ---- many lines a file: each call reads the next one

    /// Replaces the points and appends the annotations. 1 if a line was read; 0 at the end, which a negative number of
    /// points marks too, and when the file ends or stops being numbers within a line: the points before that stay, with
    /// a warning.
    int ReadFromNxyz(AK_TextReader& reader);
    void WriteToNxyz(std::ostream& stream, int precision) const;

    /// Replaces the points. `name` is "" if the line has none. 0 if a line was read, 1 at the end and when the file
    /// ends or stops being numbers within a line.
    int ReadFromAno(AK_TextReader& reader, AK_String& name, AK_String& colour);

    /// Replaces the points. 0 if all could be read; else 1, and the points before that stay.
    int ReadFromKORVO99Ascii(AK_TextReader& reader);

    // ---- DXF (SW_Polyline_Dxf.cpp)

    /// Replaces the points by those of the next polyline; `label` is its layer or, with _importXDICT, "XDICT ", the
    /// handle of its dictionary if it has one, " " and the layer. 0 at the end. Polylines that the file ends within are
    /// left out with a warning; coordinates that are none count as 0, with a warning too.
    int ReadFromDxf(AK_TextReader& reader, AK_String& label);
    /// Old-style, closed: readers of the format join the last vertex with the first.
    void WriteToDxf(const AK_String& layer, std::ostream& stream, int precision) const;

    /// The name that the extended data of a DXF file give to a label with "_XDICT_", a handle and "_" in it; `value`
    /// becomes the depth there, if there is one. The label itself if it is no such label or no name is found.
    static AK_String LabelFromDxfDict(const AK_String& path, const AK_String& label, double& value);
    /// What a DXF file draws, such as "HATCH (3), LINE (12)": for the user who finds no polyline in it.
    static AK_String EntitiesOfDxf(const AK_String& path);

private:
    int WritePoints(const AK_String& path, int dimension) const;
};

/// What the extended data of a DXF file tell about its polylines. The file is read once.
class AK_DxfAttributes {
public:
    explicit AK_DxfAttributes(const AK_String& path);   // without such a file there are none
    ~AK_DxfAttributes();

    /// Value of the first attribute whose name, in lower case, begins with `key`, for the polyline whose label has
    /// "_XDICT_", the handle of its dictionary and "_" in it; "" if there is none.
    AK_String Value(const AK_String& label, const char* key) const;
    /// The attribute "name", else "layer"; "" for neither.
    AK_String Name(const AK_String& label) const;

private:
    class Objects;
    std::unique_ptr<Objects> _objects;
};
