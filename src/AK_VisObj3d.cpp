#include "AK_VisObj3d.h"

#include "AK_sogl.h"

#include <cmath>

AK_VisObj3d::AK_VisObj3d(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

std::span<const AK_VisObj3d::Row> AK_VisObj3d::Rows()
{
    using V = AK_VisObj3d;
    // clang-format off
    static constexpr Row rows[] = {
        {"Position",               finiteValue<V, &V::_position>},
        {"LocalX",                 finiteValue<V, &V::_localX>},
        {"LocalY",                 finiteValue<V, &V::_localY>},
        {"Scale",                  finiteValue<V, &V::_scale>},
        {"RotatedCopiesAxisVis",   value<&V::_rotatedCopiesAxisVis>},
        {"RotatedCopiesAxisPoint", finiteValue<V, &V::_rotatedCopiesAxisPoint>},
    };
    // clang-format on
    return rows;
}

// ----------------------------------------------------------------------------------------------------------------
// Matrices
// ----------------------------------------------------------------------------------------------------------------

void AK_VisObj3d::ApplySysMatrix() const
{
    const AK_Vec z = Cross(_localX, _localY);
    const AK_Vec axes[3] = {Normalized(_localX), Normalized(Cross(z, _localX)), Normalized(z)};
    float matrix[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    aglGetFloatv(GL_MODELVIEW_MATRIX, matrix);   // for its last row; the rest is overwritten
    for (int column = 0; column < 3; ++column) {
        matrix[0 + 4 * column] = float(axes[column].x * _scale);
        matrix[1 + 4 * column] = float(axes[column].y * _scale);
        matrix[2 + 4 * column] = float(axes[column].z * _scale);
        matrix[12 + column] = 0;
    }
    aglMultMatrixf(matrix);
    aglTranslatef(float(-_position.x), float(-_position.y), float(-_position.z));
}

static void RestoreViewMatrix(unsigned stack)
{
    aglMatrixMode(stack);
    aglPopMatrix();
    aglPushMatrix();
}

void AK_VisObj3d::Update()
{
    if (!IsShown()) return;
    AK_VisibleObject::Update();
    RestoreViewMatrix(GL_PROJECTION);
    RestoreViewMatrix(GL_MODELVIEW);
    aglEnable(GL_DEPTH_TEST);
    ApplySysMatrix();
    Draw();
}

int AK_VisObj3d::UpdateBoundingBox(float*, float*) const { return 1; }
