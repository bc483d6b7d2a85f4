// Objects of the overlay: the projection of the unit square, and positions that count from the far edges.

#include "AK_VisObj2d.h"

#include "AK_sogl.h"

#include <algorithm>

// The unit square to -1 to 1 in x and y, as aglOrtho(0, 1, 0, 1, -1, 1) makes it.
float AK_VisObj2d::_projectionBaseMatrix[16] = {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1, 0, -1, -1, 0, 1};

AK_VisObj2d::AK_VisObj2d(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

std::span<const AK_VisObj2d::Row> AK_VisObj2d::Rows()
{
    static constexpr Row rows[] = {
        {"Position", finiteValue<AK_VisObj2d, &AK_VisObj2d::_position>},
    };
    return rows;
}

void AK_VisObj2d::SetProjectionBaseMatrix(const float* matrix) { std::copy_n(matrix, 16, _projectionBaseMatrix); }

void AK_VisObj2d::Set2dProjection()
{
    aglMatrixMode(GL_PROJECTION);
    aglLoadIdentity();
    aglMultMatrixf(_projectionBaseMatrix);
}

// A number so large that 1 does not change it stays as it is.
void AK_VisObj2d::CountPositionFromNearEdges()
{
    for (float& component : _position.v) {
        while (component < 0) {
            const float next = component + 1.0f;
            if (next == component) break;
            component = next;
        }
    }
}

void AK_VisObj2d::Update()
{
    if (!IsShown()) return;
    const Call running(this);
    AK_VisibleObject::Update();
    Set2dProjection();
    aglMatrixMode(GL_MODELVIEW);
    aglPopMatrix();
    aglPushMatrix();
    aglLoadIdentity();
    CountPositionFromNearEdges();
    aglTranslatef(_position[0], _position[1], 0);
    aglEnable(GL_DEPTH_TEST);
    Draw();
}
