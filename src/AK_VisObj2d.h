// Objects of the overlay, which lies over the picture of the world whatever the view: colour bars and texts.
//
// The overlay is the unit square, (0, 0) the lower left corner of the picture and (1, 1) the upper right one.
//
// Main thread only.

#pragma once

#include "AK_VisibleObject.h"

/// Base of the objects of the overlay. Type "VisObj2d".
class AK_VisObj2d : public AK_Class<AK_VisObj2d, AK_VisibleObject> {
public:
    static constexpr const char* className = "AK_VisObj2d";
    static std::span<const Row> Rows();

    AK_VisObj2d(const AK_String& id, AK_Object* parent);

    /// State, projection of the overlay, origin at Position; then Draw(). A component of Position below 0 counts from
    /// the far edge and is replaced by what it means: -0.25 by 0.75. The host has left a matrix of its own below the
    /// tops of both stacks.
    void Update() override;

    const AK_Floats<2>& Position() const { return _position; }
    void Position(float x, float y) { _position = {x, y}; }

    /// What maps the overlay to the picture, 16 values column by column. The unit square fills the picture until a host
    /// sets another one, for instance to draw a large picture in pieces.
    static void SetProjectionBaseMatrix(const float* matrix);
    /// Loads that matrix as the projection.
    static void Set2dProjection();

    static float _projectionBaseMatrix[16];

protected:
    AK_Floats<2> _position{0, 0};

private:
    void CountPositionFromNearEdges();
};
