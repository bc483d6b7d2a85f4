// Objects of the world: a local coordinate system, and copies of the object by rotation or by a text of
// transformations.
//
// A point of the object is shown at  T L (p - Position):  L has the axes of the local system as columns, each times
// Scale, and T is the transformation of a copy, the identity for the object itself.
//
//   rotated copies   the object, and n - 1 copies turned about an axis by 360/n degrees each
//   clones           the text CloneTrafos says what is done to the object; only the clones are shown (the grammar is in
//                    AK_VisObj3d_Clones.h)
//
// Main thread only.

#pragma once

#include "AK_VisibleObject.h"

struct AK_CloneContext;

/// Base of the objects of the world. Type "VisObj3d".
class AK_VisObj3d : public AK_Class<AK_VisObj3d, AK_VisibleObject> {
public:
    static constexpr const char* className = "AK_VisObj3d";
    static std::span<const Row> Rows();

    AK_VisObj3d(const AK_String& id, AK_Object* parent);

    /// State and matrices, Draw() for each copy, then for the object itself, which shrinks to a point when there are
    /// clones. The host has left the matrices of its view below the tops of both stacks.
    void Update() override;

    /// Multiplies the modelview by the local system.
    void ApplySysMatrix() const;

    /// Widens the object's own box, 3 floats each, to one around all copies that are shown: the last step of a class's
    /// BoundingBox. Returns 1, or 0, leaving both as they are, when the clone transformations show nothing. The box is
    /// one of the object's data, for grids and rasters: where the local system puts the object does not count.
    int UpdateBoundingBox(float* lo, float* hi) const;

    static constexpr int maxCopies = 10000;

protected:
    AK_Vec _position{0, 0, 0};   // metres, the point that comes to lie at the origin of the local system
    AK_Vec _localX{1, 0, 0};
    AK_Vec _localY{0, 1, 0};   // made perpendicular to _localX before use
    double _scale = 1;
    int _numberOfRotatedCopies = 0;            // with the object itself; 0 for none
    int _rotatedCopiesAxisVis = 0;             // draw the axis
    AK_Vec _rotatedCopiesAxisPoint{0, 0, 0};   // metres
    AK_Vec _rotatedCopiesAxisDir{0, 0, 1};
    AK_String _cloneTrafos;

private:
    void NumberOfRotatedCopies(int n);
    void RotatedCopiesAxisDir(const AK_String& text);
    void CloneTrafos(const AK_String& text);
    void DrawRotatedCopies(const AK_CloneContext& drawing);
    void DrawRotationAxis() const;
    static void draw_clone(int flipped, void* object);

    bool _inCopyDrawing = false;   // so that a Draw() that updates the object does not start the copies anew
};
