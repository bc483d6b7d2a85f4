// Contour lines: lines of equal value traced through the cells of a mesh, over the heights or any field on its vertices.

#pragma once

#include "SW_Polyline_Points.h"

#include <fstream>
#include <memory>
#include <vector>

struct AK_BitmapFont;
class SW_Mesh;

/// One line. Its annotations hold the level under the key "iso".
class SW_ContourLine {
public:
    /// Traces the line of a level that enters `cell` through `face`, until it leaves the mesh or closes. The cells it
    /// went through are appended to cellsVisited.
    SW_ContourLine(const SW_Mesh* mesh, const float* f, float level, int cell, int face, AK_List<int>& cellsVisited);

    void WriteToDxf(std::ostream& stream, const AK_String& layerPrefix) const;
    void WriteToNxyz(std::ostream& stream) const;
    void Update() const;   // draws the line, and its level if it is labelled

    float _value;                    // the level
    AK_Polyline _line;
    int _labelled = 0;
    float _labelDistance = 100.0f;   // m between labels
    const AK_BitmapFont* _font;
};

/// The lines of several levels in the order of creation: by level, and within a level open lines first.
class SW_ContourLines {
public:
    /// f: one value for each vertex of the mesh, which has its connectivity.
    SW_ContourLines(const SW_Mesh* mesh, const float* f, const AK_List<double>& levels);

    int Size() const { return int(_lines.size()); }
    SW_ContourLine& operator[](int i) { return *_lines[size_t(i)]; }
    const SW_ContourLine& operator[](int i) const { return *_lines[size_t(i)]; }

    /// The section of entities, each line on the layer prefix + "_" + its level.
    void WriteToDxf(std::ostream& stream, const AK_String& layerPrefix) const;
    void WriteToNxyz(std::ostream& stream) const;

private:
    void Trace(const SW_Mesh* mesh, const float* f, float level, const AK_List<int>& cells, bool open,
               AK_List<char>& visited);

    std::vector<std::unique_ptr<SW_ContourLine>> _lines;
};
