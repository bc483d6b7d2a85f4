// Drawing of a scalar field over its mesh: coloured cells, contour lines.

#include "SW_ScalarField.h"

#include "AK_VisObj3d_Draw.h"

void SW_ScalarField::Draw()
{
    if (!_mesh) return;
    if (_displayColorMapped) DrawCells();
    if (_displayContourLines && _contourLines) DrawContourLines();
}

void SW_ScalarField::DrawCells() const
{
    const AK_Colorbar* bar = Colorbar();
    const bool haveNormals = _mesh->_vertexNormals.Size() == _mesh->NumVertices();
    bar->BeginColor();
    for (int corners : {3, 4}) {
        aglBegin(corners == 3 ? GL_TRIANGLES : GL_QUADS);
        for (int cell = 0; cell < _mesh->NumCells(); ++cell) {
            const IA4& c = _mesh->_lcv[cell];
            if (NumCorners(c) != corners) continue;
            bool shown = true;
            for (int k = 0; k < corners; ++k)
                shown = shown && !(double(_values[_onVertices ? c[k] : cell]) < _minDisplayedValue);
            if (!shown) continue;
            if (!haveNormals) AK_DrawNormal(Normalized(_mesh->CellNormal(cell)));
            for (int k = 0; k < corners; ++k) {
                if (haveNormals) AK_DrawNormal(Normalized(_mesh->_vertexNormals[c[k]]));
                bar->SetColor(double(_values[_onVertices ? c[k] : cell]), _opacity);
                AK_DrawVertex(_mesh->_x[c[k]]);
            }
        }
        aglEnd();
    }
    bar->EndColor();
}

void SW_ScalarField::DrawContourLines() const
{
    aglDisable(GL_LIGHTING);
    SetInverseColor(_viewerBgCol);
    if (_contourLinesColored) Colorbar()->BeginColor();
    for (int i = 0; i < _contourLines->Size(); ++i) {
        SW_ContourLine& line = (*_contourLines)[i];
        line._labelled = _contourLinesLabelled;
        line._labelDistance = float(_contourLinesLabelDistance);
        if (_contourLinesColored) Colorbar()->SetColor(double(line._value), 1);
        line.Update();
    }
    if (_contourLinesColored) Colorbar()->EndColor();
}
