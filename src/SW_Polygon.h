// Closed lines: areas over the terrain, and areas with four named corners.

#pragma once

#include "SW_Polyline.h"

/// An area, bounded by a line whose last point is joined with the first. Type "Polygon".
class SW_Polygon : public AK_Class<SW_Polygon, SW_Polyline> {
public:
    static constexpr const char* className = "SW_Polygon";
    static std::span<const Row> Rows();

    SW_Polygon(const AK_String& id, AK_Object* parent);

    // ---- these only read, and any thread may call them while the polygon does not change

    /// True if p lies inside, by the even-odd rule. A point on the line itself belongs to clockwise rings only. Asked
    /// for every cell of a mesh: far points cost four comparisons.
    bool Contains(const AK_Vec2& p) const;
    /// Area seen from above, m2: positive for a clockwise ring, 0 for less than three points.
    double ProjectedAreaValue() const;

    /// Mean cosine of the inclination of the base mesh inside, weighted by area; 1 without a mesh or a cell inside.
    double CosMeanInclination() const;
    /// Stores the inclination and the area on the slope that follows from it.
    void UpdateTrueArea();
    double TrueArea() const { return std::fabs(_trueArea); }   // m2, as of the last update
    double MeanInclination() const;                            // degrees, as of the last update

    /// Colours by the beginning of the id: release areas red, secondary ones magenta, entrainment orange, resistance
    /// green.
    void SetNameSpecificColor();

protected:
    double _trueArea = 0;   // m2, signed as the projected area
    double _cosMeanIncl = 1;
};

/// A polygon four of whose vertices are its corners, from which meshes over it are laid out. Type "MeshContourPolygon".
///
/// The sides run along the ring:   corner 0 = NW,  1 = SW,  2 = SE,  3 = NE;  side k from corner k to corner k+1
class SW_MeshContourPolygon : public AK_Class<SW_MeshContourPolygon, SW_Polygon> {
public:
    static constexpr const char* className = "SW_MeshContourPolygon";
    static std::span<const Row> Rows();

    SW_MeshContourPolygon(const AK_String& id, AK_Object* parent);

    /// At least four points, and each corner one of them.
    bool IsValid() const;
    /// Length of side k seen from above, m. 0 without valid corners, and if both ends are the same vertex.
    double ProjectedSideLength(int k) const;

protected:
    void Draw() override;

private:
    template <int k>
    int CornerNumber() const
    {
        return _corners[k] + 1;
    }
    template <int k>
    void SetCorner(const AK_String& text);

    int _corners[4] = {0, 1, 2, 3};   // vertices
};
