// Drawing of a line through the table of drawing calls: as it is, or draped on its mesh; vertices and their numbers.

#include "SW_Polyline.h"

#include "SW_Mesh.h"
#include "SW_Polyline_Shared.h"

#include <cmath>

void SW_DrawText(const AK_Vec& p, const AK_String& font, const AK_String& text)
{
    aglDisable(GL_DEPTH_TEST);
    AK_DrawTextAt(p, AK_FindBitmapFont(font.c_str()), text);
    aglEnable(GL_DEPTH_TEST);
}

// The points between a and b, so close together that the line follows the surface. `cell` is where the search for the
// next one begins.
static void DrawBetween(const SW_Mesh& mesh, const AK_Vec& a, const AK_Vec& b, int& cell)
{
    constexpr double maxSteps = 100000;   // of a segment that is huge in comparison with the cells
    cell = mesh.CellContainingPoint(a, cell);
    const double area = cell < 0 ? 0 : mesh.CellNormal(cell).z;   // m2, seen from above
    if (!(area > 0)) return;
    const double step = 0.5 * std::sqrt(area);
    const double length = Length(AK_Vec2(b) - AK_Vec2(a));
    const int steps = int(std::fmin(length / step + 0.5, maxSteps));
    for (int k = 1; k < steps; ++k) {
        AK_Vec p = a + (b - a) * (double(k) / steps);
        cell = mesh.Project(p, cell);
        AK_DrawVertex(p);
    }
}

void SW_Polyline::DrawLine() const
{
    const SW_Mesh* mesh = _drawResampled ? BaseMesh() : nullptr;
    int cell = -1;
    aglBegin(GL_LINE_STRIP);
    if (NumVertices() > 0) AK_DrawVertex(_line._x[0]);
    for (int i = 0; i < NumSegments(); ++i) {
        if (mesh) DrawBetween(*mesh, _line._x[i], SegmentEnd(i), cell);
        AK_DrawVertex(SegmentEnd(i));
    }
    aglEnd();
}

void SW_Polyline::DrawVertices() const
{
    aglBegin(GL_POINTS);
    for (const AK_Vec& p : _line._x) AK_DrawVertex(p);
    aglEnd();
    if (HasSelectedVertex()) {
        SetInverseColor(_color.v);
        aglBegin(GL_POINTS);
        AK_DrawVertex(_line._x[_selected]);
        aglEnd();
        ResetColor(_autoColored);
    }
    for (int i = 0; _vertexLabels && i < NumVertices(); ++i)
        SW_DrawText(_line._x[i], _labelFont, AK_String(i + 1, "%d"));
}

void SW_Polyline::Draw()
{
    DrawLine();
    DrawVertices();
}
