// Source lines: where snow flows into the terrain at a constant rate, for instance from a known avalanche above.

#pragma once

#include "AK_Group.h"
#include "AK_VisObj3d.h"
#include "SW_Mesh.h"

/// A line from a start to an end point with a mass flow. Type "SourceLine".
class SW_SourceLine : public AK_Class<SW_SourceLine, AK_VisObj3d> {
public:
    static constexpr const char* className = "SW_SourceLine";
    static std::span<const Row> Rows();

    SW_SourceLine(const AK_String& id, AK_Object* parent);

    /// Finds the cells under the line; none if it lies off the mesh.
    void ProjectOnto(const SW_Mesh* mesh);
    const AK_List<int>& Cells() const { return _cells; }
    float MassGainInCell(int i, float dt) const;   // kg that enter cell i of the line in dt seconds
    AK_Vec PositionInCell(int i, float q) const;   // at the fraction q of the line's stretch in cell i; z is 0

protected:
    void Draw() override;

private:
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
    void Clone(const AK_String& id);

    SW_SourceLine* Line(int i) const { return static_cast<SW_SourceLine*>(_components[i]); }
};
