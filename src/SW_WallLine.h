// Walls: dams and galleries that deflect or stop the flow.
//
//          crown (absolute height)
//           /|\        The line in plan is the crown. The foot, where the slope of the upper side meets the terrain, is
//          / | \       found from the slope and lies left of the line: a particle that crosses the foot line is
//    foot /  |  \      reflected at the face between foot and crown.
//   -----------------

#pragma once

#include "SW_Polyline.h"
#include "SW_Polyline_Container.h"

/// Type "WallLine".
class SW_WallLine : public AK_Class<SW_WallLine, SW_Polyline> {
public:
    static constexpr const char* className = "SW_WallLine";
    static std::span<const Row> Rows();

    SW_WallLine(const AK_String& id, AK_Object* parent);

    /// Tangents of the vertices, and the foot on the base mesh. A first height of 0 or less switches the wall off: no
    /// foot. Nothing without a mesh.
    void UpdateTangentsAndNormals();

    // ---- these only read; workers may call them while the wall does not change
    bool HasHeights() const { return _heights.Size() > 0; }
    /// False for a wall that its first height switches off; a wall without heights counts as active.
    bool IsActive() const { return !HasHeights() || _heights[0] > 0; }
    AK_Vec Crown(int i) const;   // a height at least must have been given
    /// Where the plan segment a -> b crosses the foot line first: the points of foot and crown, and the unit tangent.
    /// False without a crossing.
    bool GetIntersection(const AK_Vec& a, const AK_Vec& b, AK_Vec& foot, AK_Vec& crown, AK_Vec& tangent) const;
    const AK_Polyline& FootLine() const { return _footLine; }

private:
    AK_List<double> _heights{1};   // m, absolute; taken in turn by the vertices when there are fewer
    AK_List<double> _slopes{1};    // tangents of the face's slope, likewise
    AK_List<AK_Vec> _tangents{1};
    AK_Polyline _footLine;
};

class SW_WallLines : public AK_Class<SW_WallLines, SW_LineContainer> {
public:
    static constexpr const char* className = "SW_WallLines";
    static std::span<const Row> Rows();

    SW_WallLines(const AK_String& id, AK_Object* parent);
    AK_Object* CreateComponent(const AK_String& id, const AK_String& type) override;
    void Create(const AK_String& id);
    void Clone(const AK_String& id);
    void Import(const AK_String& path);

    SW_WallLine* Wall(int i) const { return static_cast<SW_WallLine*>(_components[i]); }

protected:
    SW_Polyline* NewLine(const AK_String& id, AK_Object* parent) const override;
};
