// Source lines: where snow flows into the terrain at a constant rate, for instance from a known avalanche above.

#pragma once

#include "AK_Group.h"
#include "AK_VisObj3d.h"
#include "SW_Mesh.h"

/// A line from a start to an end point with a mass flow. Type "SourceLine".
class SW_SourceLine : public AK_Class<SW_SourceLine, AK_VisObj3d> {
public:
    static constexpr const char* className = "SW_SourceLine";
    static constexpr const char* type = "SourceLine";
    static std::span<const Row> Rows();

    SW_SourceLine(const AK_String& id, AK_Object* parent);
    void LoadFinalize() override;
    void SetEnds(const AK_Vec2& start, const AK_Vec2& end);
    int BoundingBox(float* lo, float* hi) const override;

    /// Finds the cells under the line; none if both ends lie off the mesh. Of a line that crosses the border the
    /// stretch inside counts: what flows off the mesh adds no mass, and a warning says so. Null is no mesh.
    void ProjectOnto(const SW_Mesh* mesh);
    const AK_List<int>& Cells() const { return _cells; }
    float MassGainInCell(int i, float dt) const;   // kg that enter cell i of the line in dt seconds
    AK_Vec PositionInCell(int i, float q) const;   // at the fraction q of the line's stretch in cell i; z is 0

protected:
    void Draw() override;

private:
    bool FindCells(const SW_Mesh* mesh);   // false unless both ends lie on the mesh
    template <AK_Vec2 SW_SourceLine::*point>
    void SetPoint(const AK_String& text);

    AK_Vec2 _startPoint{0, 0}, _endPoint{1, 1};   // m
    double _massFlow = 1;                         // kg/s
    AK_Vec _ends[2];                              // m, on the mesh
    AK_List<int> _cells{1};
    AK_List<float> _fractions{1};   // of the line at each crossing, one more than cells: from 0 to 1
};

class SW_SourceLines : public AK_Class<SW_SourceLines, AK_Container> {
public:
    static constexpr const char* className = "SW_SourceLines";
    static std::span<const Row> Rows();

    SW_SourceLines(const AK_String& id, AK_Object* parent);
    AK_Object* CreateComponent(const AK_String& id, const AK_String& type) override;
    void Create(const AK_String& id);
    /// Adds a source line from the first to the last point of each line in a file, with the ids of imported lines.
    void Import(const AK_String& path);
    /// Adds a copy of a source line; its name is that of the source with "_cloned" behind.
    void Clone(const AK_String& path);
    /// Adds a copy of each line of another container, under its own name.
    void CopyLinesOf(const SW_SourceLines& source);

    SW_SourceLine* Line(int i) const { return static_cast<SW_SourceLine*>(_components[i]); }

private:
    void AddCopy(SW_SourceLine& source, const AK_String& id);
};
