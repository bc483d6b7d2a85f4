// Objects of the world: attributes, the local system, drawing of copies and clones, the boxes around them.

#include "AK_VisObj3d.h"

#include "AK_VisObj3d_Clones.h"
#include "AK_VisObj3d_Draw.h"

#include <algorithm>
#include <cfloat>

static constexpr double shortestAxis = 1.0e-6;   // metres; a shorter one has no direction to speak of

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
        {"NumberOfRotatedCopies",  pair<[](const V& v) { return v._numberOfRotatedCopies; },
                                        [](V& v, int n) { v.NumberOfRotatedCopies(n); }>},
        {"RotatedCopiesAxisVis",   value<&V::_rotatedCopiesAxisVis>},
        {"RotatedCopiesAxisPoint", finiteValue<V, &V::_rotatedCopiesAxisPoint>},
        {"RotatedCopiesAxisDir",   pair<[](const V& v) { return v._rotatedCopiesAxisDir; },
                                        [](V& v, const AK_String& text) { v.RotatedCopiesAxisDir(text); }>},
        {"CloneTrafos",            pair<[](const V& v) { return v._cloneTrafos; },
                                        [](V& v, const AK_String& text) { v.CloneTrafos(text); }>},
    };
    // clang-format on
    return rows;
}

// What would end the program by the checks of the rasteriser, or not end, is refused here.

void AK_VisObj3d::NumberOfRotatedCopies(int n)
{
    if (n < 0 || n > maxCopies)
        _execStatus = AK_String("the number of copies must be from 0 to ") + AK_String(maxCopies, "%d");
    else
        _numberOfRotatedCopies = n;
}

void AK_VisObj3d::RotatedCopiesAxisDir(const AK_String& text)
{
    AK_Vec direction;
    AK_AssignFinite(direction, text);
    if (!_execStatus.IsEmpty()) return;
    if (Length(direction) > shortestAxis)
        _rotatedCopiesAxisDir = direction;
    else
        _execStatus = AK_String("an axis without length: '") + text + "'";
}

void AK_VisObj3d::CloneTrafos(const AK_String& text)
{
    _execStatus = CloneTrafosError(text, maxCopies);
    if (_execStatus.IsEmpty()) _cloneTrafos = text;
}

// ----------------------------------------------------------------------------------------------------------------
// Matrices
// ----------------------------------------------------------------------------------------------------------------

static AK_Vec Corner(const float box[2][3], int i) { return {box[i & 1][0], box[i >> 1 & 1][1], box[i >> 2 & 1][2]}; }

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

// An axis of rotation: its unit direction, and its point nearest to the origin.
struct RotationAxis {
    AK_Vec direction, point;

    RotationAxis(const AK_Vec& anyPoint, const AK_Vec& anyLength)
        : direction(Normalized(anyLength)), point(anyPoint - direction * Dot(anyPoint, direction))
    {
    }
};

// Turns by i of n equal parts of the full circle.
static void ApplyRotatedCopy(const RotationAxis& axis, int i, int n, const AK_CloneContext& matrices)
{
    const AK_Vec& q = axis.point;
    const AK_Vec& d = axis.direction;
    matrices.translate(float(q.x), float(q.y), float(q.z));
    matrices.rotate(float(i * 360.0 / n), float(d.x), float(d.y), float(d.z));
    matrices.translate(float(-q.x), float(-q.y), float(-q.z));
}

// ----------------------------------------------------------------------------------------------------------------
// Drawing
// ----------------------------------------------------------------------------------------------------------------

void AK_VisObj3d::Update()
{
    if (!IsShown()) return;
    const Call running(this);
    AK_VisibleObject::Update();
    if (_inCopyDrawing) return;
    RestoreViewMatrix(GL_PROJECTION);
    RestoreViewMatrix(GL_MODELVIEW);
    aglEnable(GL_DEPTH_TEST);
    if (_rotatedCopiesAxisVis) DrawRotationAxis();

    const AK_CloneContext drawing{draw_clone, this,          aglPushMatrix, aglPopMatrix,
                                  aglRotatef, aglTranslatef, aglScalef,     aglMirrorf};
    _inCopyDrawing = true;
    if (_numberOfRotatedCopies > 0) {
        DrawRotatedCopies(drawing);
    } else if (!_cloneTrafos.IsEmpty()) {
        process_clones(reordered_trafos(_cloneTrafos).c_str(), drawing, 0, 1, 0);
        aglScalef(0, 0, 0);   // only the clones show
    }
    ApplySysMatrix();
    Draw();
    _inCopyDrawing = false;
}

void AK_VisObj3d::DrawRotatedCopies(const AK_CloneContext& drawing)
{
    const RotationAxis axis(_rotatedCopiesAxisPoint, _rotatedCopiesAxisDir);
    for (int i = 1; i < _numberOfRotatedCopies; ++i) {
        aglPushMatrix();
        ApplyRotatedCopy(axis, i, _numberOfRotatedCopies, drawing);
        ApplySysMatrix();
        Draw();
        aglPopMatrix();
    }
}

void AK_VisObj3d::draw_clone(int flipped, void* object)
{
    auto* self = static_cast<AK_VisObj3d*>(object);
    if (flipped) aglFrontFace(GL_CW);   // a mirror turns the faces inside out
    self->ApplySysMatrix();
    self->Draw();
    if (flipped) aglFrontFace(GL_CCW);
}

// A line along the axis, as long as the box seen along it; without a box, one unit from the point on.
void AK_VisObj3d::DrawRotationAxis() const
{
    const RotationAxis axis(_rotatedCopiesAxisPoint, _rotatedCopiesAxisDir);
    float box[2][3];
    double from = Dot(_rotatedCopiesAxisPoint, axis.direction);
    double to = from + 1;
    if (BoundingBox(box[0], box[1])) {
        from = DBL_MAX;
        to = -DBL_MAX;
        for (int i = 0; i < 8; ++i) {
            const double along = Dot(Corner(box, i), axis.direction);
            from = std::min(from, along);
            to = std::max(to, along);
        }
    }
    aglBegin(GL_LINES);
    for (const double along : {from, to}) AK_DrawVertex(axis.point + axis.direction * along);
    aglEnd();
}

// ----------------------------------------------------------------------------------------------------------------
// Boxes. The matrix stacks of the rasteriser serve as a calculator, whatever the table points at. It is the stack of
// the projection, on which nothing else is deep: a box may be asked for amid the drawing of clones.
// ----------------------------------------------------------------------------------------------------------------

namespace {

struct BoxOfCopies {
    const float (*object)[3];   // the object's own box
    float lo[3] = {FLT_MAX, FLT_MAX, FLT_MAX};
    float hi[3] = {-FLT_MAX, -FLT_MAX, -FLT_MAX};
};

// Widens the box by the corners of the object's, transformed by the matrix of the moment.
void update_bbox_clone(int, void* boxOfCopies)
{
    auto* box = static_cast<BoxOfCopies*>(boxOfCopies);
    float m[16];
    soglGetFloatv(GL_PROJECTION_MATRIX, m);
    for (int i = 0; i < 8; ++i) {
        const AK_Vec corner = Corner(box->object, i);
        for (int axis = 0; axis < 3; ++axis) {
            const double sum = m[axis] * corner.x + m[axis + 4] * corner.y + m[axis + 8] * corner.z + m[axis + 12];
            box->lo[axis] = std::min(box->lo[axis], float(sum));
            box->hi[axis] = std::max(box->hi[axis], float(sum));
        }
    }
}

}   // namespace

int AK_VisObj3d::UpdateBoundingBox(float* lo, float* hi) const
{
    if (_numberOfRotatedCopies <= 0 && _cloneTrafos.IsEmpty()) return 1;
    const float object[2][3] = {{lo[0], lo[1], lo[2]}, {hi[0], hi[1], hi[2]}};
    BoxOfCopies box{object};
    const AK_CloneContext calculator{update_bbox_clone, &box,           soglPushMatrix, soglPopMatrix,
                                     soglRotatef,       soglTranslatef, soglScalef,     soglMirrorf};
    soglMatrixMode(GL_PROJECTION);
    soglPushMatrix();
    soglLoadIdentity();
    if (_numberOfRotatedCopies > 0) {
        const RotationAxis axis(_rotatedCopiesAxisPoint, _rotatedCopiesAxisDir);
        for (int i = 0; i < _numberOfRotatedCopies; ++i) {   // number 0 is the object itself
            soglPushMatrix();
            ApplyRotatedCopy(axis, i, _numberOfRotatedCopies, calculator);
            update_bbox_clone(0, &box);
            soglPopMatrix();
        }
    } else {
        process_clones(reordered_trafos(_cloneTrafos).c_str(), calculator, 0, 1, 0);
    }
    soglPopMatrix();
    soglMatrixMode(GL_MODELVIEW);
    if (!(box.lo[0] <= box.hi[0])) return 0;
    std::copy_n(box.lo, 3, lo);
    std::copy_n(box.hi, 3, hi);
    return 1;
}
