// Drawing of a mesh through the table of drawing calls: faces, contour lines, numbers, links, a coordinate grid.

#include "SW_Mesh.h"

#include "SW_Mesh_Contour.h"

#include "AK_VisObj3d_Draw.h"

#include <algorithm>
#include <cmath>

static constexpr double radians = ak_pi / 180;
static constexpr double breakLinesOff = 0.1;   // degrees: an angle up to this draws none
static constexpr int maxGridLines = 10000;     // of a coordinate grid with a size far too small for the mesh

void SW_Mesh::Update()
{
    if (!IsShown()) return;
    if (!_enabledDisplayLists || ModificationTime() > _updateTime ||
        !std::equal(_viewerBgCol, _viewerBgCol + 3, _listBgCol))
        ForgetDisplayList();
    const bool stepsChanged = _contourLinesStep != _contourLinesMinorStep ||
                              ExecTime("ContourLinesMinorStep") > _updateTime ||
                              ExecTime("ContourLinesMajorStep") > _updateTime;
    if (!_contourLines || stepsChanged) ComputeContourLines();
    if (!HasNormals()) ComputeVertexNormals();
    if (_drawCoarsened && !_coarseMesh) MakeCoarseMesh();
    AK_Class::Update();
}

// Cells three times as large, for terrain that takes long to draw. Without cells if the mesh is too small for that.
void SW_Mesh::MakeCoarseMesh()
{
    _coarseMesh = std::make_unique<SW_Mesh>("coarse", this);
    _coarseMesh->_baseMesh.Set(IdAbs());
    _coarseMesh->_dx = 3.0 * _dx;
    _coarseMesh->Cover(*this, GridKind::Cartesian);
}

void SW_Mesh::ForgetDisplayList()
{
    if (_displayList) aglDeleteLists(_displayList, 1);
    _displayList = 0;
}

void SW_Mesh::ForgetDerived()
{
    _contourLines.reset();
    _coarseMesh.reset();
    ForgetDisplayList();
}

// Terrain has very many primitives, and mostly nothing about it has changed since it was drawn last: the calls are kept
// in a display list. Where the table of drawing calls has none, it gives no number for one.
void SW_Mesh::Draw()
{
    if (NumCells() == 0) return;
    if (_displayList) return aglCallList(_displayList);
    if (_enabledDisplayLists) _displayList = aglGenLists(1);
    if (!_displayList) return DrawNow();
    std::copy_n(_viewerBgCol, 3, _listBgCol);
    aglNewList(_displayList, GL_COMPILE_AND_EXECUTE);
    DrawNow();
    aglEndList();
}

void SW_Mesh::DrawNow()
{
    const bool coarse = _drawCoarsened && _coarseMesh && _coarseMesh->NumCells() > 0;
    if (_displayFaces) DrawFaces(coarse ? *_coarseMesh : *this);
    aglDisable(GL_LIGHTING);
    if (_displayContourLines && _contourLines) DrawContourLines();
    if (_breakLinesAngle > breakLinesOff) DrawBreakLines();
    if (_displayConnectivity) DrawConnectivity();
    if (_displayNodeLabels) DrawNodeLabels();
    if (_drawGrid) DrawCoordinateGrid();
}

// ----------------------------------------------------------------------------------------------------------------
// Faces
// ----------------------------------------------------------------------------------------------------------------

// Red where the slope lies between the two angles, else the object's own colour.
void SW_Mesh::SetInclinationColor(const AK_Vec& normal) const
{
    if (!_shadeIncl) return;
    const double cosine = normal.z / Length(normal);
    if (std::cos(_inclMax * radians) <= cosine && cosine <= std::cos(_inclMin * radians))
        aglColor4f(1, 0, 0, _opacity);
    else
        aglColor4f(_color[0], _color[1], _color[2], _opacity);
}

// The faces of a surface, which is this mesh or its coarse copy, as this mesh is to be drawn.
void SW_Mesh::DrawFaces(const SW_Mesh& surface) const
{
    const auto setNormal = [&](const AK_Vec& area) {
        const AK_Vec n = Normalized(area);
        AK_DrawNormal(n);
        SetInclinationColor(n);
    };
    for (int corners : {3, 4}) {
        aglBegin(corners == 3 ? GL_TRIANGLES : GL_QUADS);
        for (int cell = 0; cell < surface.NumCells(); ++cell) {
            const IA4& c = surface._lcv[cell];
            if (NumCorners(c) != corners) continue;
            if (!_smoothShading) setNormal(surface.CellNormal(cell));
            for (int k = 0; k < corners; ++k) {
                if (_smoothShading) setNormal(surface._vertexNormals[c[k]]);
                AK_DrawVertex(surface._x[c[k]]);
            }
        }
        aglEnd();
    }
}

// ----------------------------------------------------------------------------------------------------------------
// Lines and texts
// ----------------------------------------------------------------------------------------------------------------

// The variables "$cont_lines_col" and "$cont_lines_inv_bg_col" choose the colour.
void SW_Mesh::SetContourLineColor() const
{
    AK_Vec color;
    const AK_String own = VariableValue("$cont_lines_col");
    if (!own.IsEmpty()) AK_FromText(color, own);
    if (VariableValue("$cont_lines_inv_bg_col") == "0")
        aglColor3f(float(color.x), float(color.y), float(color.z));
    else
        SetInverseColor(_viewerBgCol);
}

void SW_Mesh::DrawContourLines() const
{
    const AK_BitmapFont* font = AK_FindBitmapFont(_contourLinesLabelsFont.c_str());
    SetContourLineColor();
    for (int i = 0; i < _contourLines->Size(); ++i) {
        SW_ContourLine& line = (*_contourLines)[i];
        const double offMajor = std::fabs(std::fmod(double(line._value), _contourLinesMajorStep));
        const bool minor = offMajor >= 0.1 * _contourLinesMinorStep;
        line._labelDistance = float(_contourLinesLabelDistance);
        line._font = font;
        line._labelled = !minor && _contourLinesLabelled;
        aglLineWidth(float(minor ? _contourLinesMinorWidth : _contourLinesMajorWidth));
        line.Update();
    }
}

void SW_Mesh::DrawBreakLines()
{
    if (_lcc.Size() == 0) ComputeConnectivity();
    const double limit = std::cos(_breakLinesAngle * radians);
    aglColor3f(0, 0, 0);
    aglBegin(GL_LINES);
    for (int cell = 0; cell < NumCells(); ++cell) {
        const IA4& c = _lcv[cell];
        for (int k = 0; k < NumCorners(c); ++k) {
            const int other = _lcc[cell][k];
            if (other < cell || Dot(Normalized(CellNormal(cell)), Normalized(CellNormal(other))) >= limit) continue;
            AK_DrawVertex(_x[c[k]]);
            AK_DrawVertex(_x[c[NextCorner(c, k)]]);
        }
    }
    aglEnd();
}

void SW_Mesh::DrawConnectivity()
{
    if (_lcc.Size() == 0) ComputeConnectivity();
    aglBegin(GL_LINES);
    for (int cell = 0; cell < NumCells(); ++cell)
        for (int k = 0; k < 4; ++k) {
            if (_lcc[cell][k] < 0) continue;
            const AK_Vec center = CellCenter(cell);
            AK_DrawVertex(center);
            AK_DrawVertex((center + CellCenter(_lcc[cell][k])) * 0.5);
        }
    aglEnd();
}

void SW_Mesh::DrawNodeLabels() const
{
    const AK_BitmapFont* font = AK_FindBitmapFont("8_BY_13");
    for (int i = 0; i < NumVertices(); ++i) AK_DrawTextAt(_x[i], font, AK_String(i, "%d"));
}

void SW_Mesh::DrawCoordinateGrid() const
{
    float lo[3], hi[3];
    if (!BoundingBox(lo, hi) || !(_gridSize > 0)) return;
    const auto rounded = [&](float v) { return std::trunc(double(v) / _gridSize + (v < 0 ? -0.5 : 0.5)) * _gridSize; };
    const AK_Vec min{rounded(lo[0]), rounded(lo[1]), hi[2]};
    const AK_Vec max{rounded(hi[0]), rounded(hi[1]), hi[2]};
    const double columns = (max.x - min.x) / _gridSize;
    const double rows = (max.y - min.y) / _gridSize;
    if (!(columns < maxGridLines) || !(rows < maxGridLines)) return;
    aglBegin(GL_LINES);
    for (int i = 0; i <= int(columns + 0.5); ++i) {
        AK_DrawVertex({min.x + i * _gridSize, min.y, min.z});
        AK_DrawVertex({min.x + i * _gridSize, max.y, min.z});
    }
    for (int j = 0; j <= int(rows + 0.5); ++j) {
        AK_DrawVertex({min.x, min.y + j * _gridSize, min.z});
        AK_DrawVertex({max.x, min.y + j * _gridSize, min.z});
    }
    aglEnd();
    const AK_BitmapFont* font = AK_FindBitmapFont("8_BY_13");
    const auto label = [&](double x, double y) {
        AK_DrawTextAt({x, y, min.z}, font, AK_String(x, "%.15g") + ", " + AK_String(y, "%.15g"));
    };
    for (int i = 0; i <= int(columns + 0.5); ++i) label(min.x + i * _gridSize, min.y);
    for (int j = 1; j <= int(rows + 0.5); ++j) label(min.x, min.y + j * _gridSize);
}
