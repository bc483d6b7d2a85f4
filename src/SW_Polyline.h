// A line over the terrain: wall lines, profile lines, imported drawings, and as polygons the release and resistance
// areas.
//
// The points are in metres, in the coordinates of the terrain. A line that has been projected lies on the surface of a
// mesh: z of each point is the height there, and the line remembers which mesh that was. Lengths and distances are
// those seen from above.
//
// Main thread only, but for the const queries that say so.

#pragma once

#include "AK_VisObj3d.h"
#include "SW_Mesh_Reference.h"
#include "SW_Polyline_Points.h"

/// One line. Type "Polyline".
class SW_Polyline : public AK_Class<SW_Polyline, AK_VisObj3d> {
public:
    static constexpr const char* className = "SW_Polyline";
    static std::span<const Row> Rows();

    SW_Polyline(const AK_String& id, AK_Object* parent);

    /// A line that was never projected is projected on the project's first mesh; then it is drawn.
    void Update() override;
    int SaveData(AK_Stream& stream) const override;
    int LoadData(AK_Stream& stream) override;
    int BoundingBox(float* lo, float* hi) const override;

    const AK_Polyline& Line() const { return _line; }
    const AK_List<AK_Vec>& Points() const { return _line._x; }
    int NumVertices() const { return _line._x.Size(); }
    /// Replaces points and annotations.
    void SetLine(const AK_Polyline& line);

    // ---- files (SW_Polyline_Files.cpp)

    /// Replaces the points by the first line of a file, by its extension: xy, xyz, nxyz, dxf; the file's annotations
    /// are appended. The annotation "name", if there is one, becomes the id. Failures are told in the status; what was
    /// read before one stays.
    void Import(const AK_String& path);
    void Export(const AK_String& path);
    /// The next line of an ano file, with its name and colour. 1 at the end, and when the file is no such file.
    int ReadFromAnoFile(AK_TextReader& reader);
    /// The vertices in a release or resistance file. 1 if they could not all be read.
    int ReadFromKORVO99Ascii(AK_TextReader& reader);
    /// Takes the colour that a word of an ano file means; any word but the known ones sets automatic colouring.
    void SetColor(const AK_String& colour);

    // ---- terrain
    void ProjectOnto(const AK_String& mesh);   // nothing if there is no such mesh
    void ProjectOnto(const SW_Mesh& mesh);
    AK_String BaseMeshName() const { return _baseMesh.Path(*this); }
    void SetBaseMeshName(const AK_String& name) { _baseMesh.Set(name); }   // no point moves
    const SW_Mesh* BaseMesh() const { return _baseMesh.Find(*this); }      // null for none

    // ---- geometry: these only read, and any thread may call them while the line does not change

    /// Length seen from above, m; 0 for less than two points.
    double ProjectedLength() const;
    /// Distance of p from the line seen from above, m: positive on the left side of the line, negative on the right
    /// one. -1e30 without points.
    double Distance(const AK_Vec2& p) const;
    /// Cosine of the angle between the segments that meet in a vertex, the last and the first one in each other. 1 if
    /// one of them has no length.
    double CosAngleAtVertex(int i) const;
    /// Sum of the lengths of the position vectors: a cheap test of whether a line has changed.
    double CheckSum() const;

protected:
    void Draw() override;
    /// The vertex that a text names: a number from 1, or a point "x y z", whose nearest vertex it is; -1 for none.
    /// False, with a status text, if it is neither.
    bool FindVertex(const AK_String& text, int& vertex) const;
    /// Makes the box anew, and warns of points that are none.
    void PointsChanged();

    AK_Polyline _line;
    AK_Vec _xMin, _xMax;   // m: the box around the points, 0 without any
    int _closed = 0;       // 1 for polygons: the last point is joined with the first
    SW_MeshReference _baseMesh;
    AK_String _labelFont = "TIMES_ROMAN_10";
    int _selected = 0;   // the selected vertex, -1 for none

private:
    bool RequireSelectedVertex() const;
    bool HasSelectedVertex() const { return _selected >= 0 && _selected < NumVertices(); }
    void SelectedVertex(const AK_String& text);
    AK_String CoordsOfSelectedVertex() const;
    void AppendPoint(const AK_String& text);
    void MoveVertex(const AK_String& text);
    void InsertPoint(const AK_String& text);
    void RemoveVertex();
    void Reverse();
    void Clear();
    void CopyCoordsOf(const AK_String& id);
    const AK_String& Annotations() const { return _line.annotations; }
    void SetAnnotations(const AK_String& text) { _line.annotations = text; }
    void ListPoints();
    void ProjectedDistance(const AK_String& text);

    void ProjectAutomatically();
    int NumSegments() const;
    const AK_Vec& SegmentEnd(int i) const { return _line._x[(i + 1) % NumVertices()]; }
    void DrawLine() const;
    void DrawVertices() const;

    int _drawResampled = 1;   // draw draped on the base mesh
    int _vertexLabels = 0;
};
