// Walls: dams and galleries that deflect or stop the flow.
//
//          crown (absolute height)
//           /|\        The line in plan is the crown. The foot, where the slope of the upper side meets the terrain, is
//          / | \       found from the slope and lies left of the line: a particle that crosses the foot line is
//    foot /  |  \      reflected at the face between foot and crown.
//   -----------------

#pragma once

#include "SW_Polyline.h"
#include "SW_Simulation_Scenario.h"

/// Type "WallLine".
class SW_WallLine : public AK_Class<SW_WallLine, SW_Polyline> {
public:
    static constexpr const char* className = "SW_WallLine";
    static constexpr const char* type = "WallLine";
    static std::span<const Row> Rows();

    SW_WallLine(const AK_String& id, AK_Object* parent);
    void LoadFinalize() override;

    /// Tangents of the vertices, and the foot on the base mesh. A wall that its first height switches off, one without
    /// heights and one without a mesh have no foot. A vertex off the mesh, or one whose face does not meet the terrain,
    /// is its own foot.
    void UpdateTangentsAndNormals();
    /// The crown becomes the terrain's height plus one or more heights (m) that the vertices take in turn.
    void SetHeightOverGround(const AK_String& text);
    /// The crown goes through the points of the line: of a line that was surveyed, before it is projected.
    void TakeHeightsFromPoints();

    // ---- these only read; workers may call them while the wall does not change
    bool HasHeights() const { return _heights.Size() > 0; }
    bool HasSlopes() const { return _slopes.Size() > 0; }
    /// False for a wall that its first height switches off; a wall without heights counts as active.
    bool IsActive() const { return !HasHeights() || _heights[0] > 0; }
    AK_Vec Crown(int i) const;   // a height at least must have been given
    /// Where the plan segment a -> b crosses the foot line first: the points of foot and crown, and the unit tangent.
    /// False without a crossing.
    bool GetIntersection(const AK_Vec& a, const AK_Vec& b, AK_Vec& foot, AK_Vec& crown, AK_Vec& tangent) const;
    const AK_Polyline& FootLine() const { return _footLine; }

protected:
    void Draw() override;   // with the crown and the face below it

private:
    double SlopeAt(int i) const { return HasSlopes() ? _slopes[i % _slopes.Size()] : 0; }
    int CurrentVertex() const;
    AK_String HeightAtCurrentVertex() const;
    void SetHeightAtCurrentVertex(const AK_String& text);
    AK_String SlopeAngleAtCurrentVertex() const;
    void SetSlopeAngleAtCurrentVertex(const AK_String& text);
    void UpdateTangents();
    void WarnOfNoNumbers() const;
    void WarnOfPointsOutside() const;
    AK_Vec Foot(int i, const SW_Mesh& mesh, int cell) const;

    AK_List<double> _heights{1};   // m, absolute; taken in turn by the vertices when there are fewer
    AK_List<double> _slopes{1};    // tangents of the face's slope, likewise; 0 without any
    AK_List<AK_Vec> _tangents{1};
    AK_Polyline _footLine;
};

class SW_WallLines : public AK_Class<SW_WallLines, SW_ScenarioLines> {
public:
    static constexpr const char* className = "SW_WallLines";
    static std::span<const Row> Rows();

    SW_WallLines(const AK_String& id, AK_Object* parent);

    SW_WallLine* Wall(int i) const { return static_cast<SW_WallLine*>(_components[i]); }

protected:
    const char* LineType() const override { return SW_WallLine::type; }
    SW_Polyline* NewLine(const AK_String& id, AK_Object* parent) const override;
    /// Heights of points in a file are those of the crown.
    void FinishImport(SW_Polyline& line, const AK_String& path) override;
};
