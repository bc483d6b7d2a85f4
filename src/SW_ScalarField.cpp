// Scalar fields: attributes, queries, statistics.

#include "SW_ScalarField.h"

#include "SW_VectorField.h"

#include <algorithm>
#include <cmath>

// ----------------------------------------------------------------------------------------------------------------
// Attributes
// ----------------------------------------------------------------------------------------------------------------

// clang-format off
std::span<const AK_Row> SW_ScalarField::Rows()
{
    using S = SW_ScalarField;
    using Text = const AK_String&;
    static constexpr Row rows[] = {
        {"Label",                         shown<&S::Label>},
        {"SetLabel",                      command<&S::SetLabel>},
        {"Min",                           shown<&S::Min>},
        {"Max",                           shown<&S::Max>},
        {"Average",                       shown<&S::Average>},
        {"AreaValueLimit",                value<&S::_areaValueLimit>},
        {"AreaAboveLimit",                shown<[](const S& f) { return const_cast<S&>(f).AreaAboveLimit(); }>},
        {"ValueAtPoint",                  pair<&S::_valueAtPoint, static_cast<void (S::*)(Text)>(&S::ValueAtPoint)>},
        {"MinDisplayedValue",             value<&S::_minDisplayedValue>},

        {"$conversion",                   AK_Variable<"$conversion">},
        {"$density",                      AK_NumberVariable<"$density">},           // kg/m3
        {"$smooth",                       AK_NumberVariable<"$smooth">},
        {"DisplayColorMapped",            value<&S::_displayColorMapped>},
        {"DisplayContourLines",           value<&S::_displayContourLines>},
        {"ContourLinesColored",           value<&S::_contourLinesColored>},
        {"ContourLinesLabelled",          value<&S::_contourLinesLabelled>},
        {"ContourLinesLabelDistance",     value<&S::_contourLinesLabelDistance>},   // m
        {"ContourLinesLabelDistanceVis",  editable<&S::_contourLinesLabelled>},

        {"ExportRasterSize",              value<&S::_exportRasterSize>},            // m
        {"ExportRasterAutoRange",         value<&S::_exportRasterAutoRange>},
        {"ExportRasterRangeVis",          editable<[](const S& f) { return !f._exportRasterAutoRange; }>},
        {"ExportRasterLL",                value<&S::_exportRasterLL>},              // m
        {"ExportRasterNumColumns",        value<&S::_exportRasterNumColumns>},
        {"ExportRasterNumRows",           value<&S::_exportRasterNumRows>},
        {"ExportFieldRasterAscii",        command<&S::ExportFieldRasterAscii>},
        {"ExportContourLines",            command<&S::ExportContourLines>},
        {"ExportContourLinesDxf",         command<&S::ExportContourLines>},
        {"SelectedPolyline",              value<&S::_selectedPolyline>},
        {"PolylinesList",                 shown<&S::PolylinesList>},
        {"ExportValuesAlongPolyline",     command<&S::ExportValuesAlongPolyline>},
        {"ExportValuesAlongPolylineVis",  editable<&S::LineToExport>},
        {"ShortExportFilename",           shown<&S::ShortExportFilename>},

        {"CreateGradientField",           command<&S::CreateGradientField>},
        {"CreateGradientFieldVis",        editable<[](const S& f) { return !f.Component("gradient"); }>},
        {"RemoveGradientField",           command<[](S& f, Text) { f.DeleteComponent("gradient"); }>},
        {"RemoveGradientFieldVis",        editable<[](const S& f) { return f.Component("gradient") != nullptr; }>},
    };
    return rows;
}
// clang-format on

SW_ScalarField::SW_ScalarField(const AK_String& id, AK_Object* parent) : SW_FieldOf(id, parent)
{
    ReadClassFiles();
    AddColorbar();
    for (const char* on : {"AutoColored", "PolygonsFilled", "Shaded", "Blending"}) Set(on, "1");
    Set("Opacity", "0.7");
    RunInitializationCommands();
}

SW_ScalarField::~SW_ScalarField() = default;

void SW_ScalarField::SetMesh(const SW_Mesh* mesh)
{
    _contourLines.reset();
    TakeMesh(mesh);
}

int SW_ScalarField::BoundingBox(float* lo, float* hi) const { return _mesh ? _mesh->BoundingBox(lo, hi) : 0; }

// ----------------------------------------------------------------------------------------------------------------
// Queries
// ----------------------------------------------------------------------------------------------------------------

double SW_ScalarField::ValueInCell(int cell, const AK_Vec2& p) const
{
    if (!_onVertices) return double(_values[cell]);
    const IA4& c = _mesh->_lcv[cell];
    double weights[4];
    _mesh->GetWeights(cell, p, weights);
    double sum = 0;
    for (int k = NumCorners(c) - 1; k >= 0; --k) sum += weights[k] * double(_values[c[k]]);
    return sum;
}

double SW_ScalarField::ValueAtPoint(const AK_Vec2& p)
{
    const int cell = _mesh ? _mesh->CellContainingPoint(p, -1) : -1;
    if (cell < 0 || _values.Size() != WantedSize()) return 0;
    Convert();
    const double value = ValueInCell(cell, p);
    Reconvert();
    return value;
}

void SW_ScalarField::ValueAtPoint(const AK_String& point)
{
    AK_Vec2 p;
    if (!AK_ReadFinite(point, &p.x, 2)) return;
    _valueAtPoint = AK_String(ValueAtPoint(p), "%.15g") + " at " + point;
}

// ----------------------------------------------------------------------------------------------------------------
// Statistics
// ----------------------------------------------------------------------------------------------------------------

AK_String SW_ScalarField::Min() const
{
    return _values.Size() ? AK_String(double(*std::min_element(_values.begin(), _values.end())), "%g") : AK_String("0");
}

AK_String SW_ScalarField::Max() const
{
    return _values.Size() ? AK_String(double(*std::max_element(_values.begin(), _values.end())), "%g") : AK_String("0");
}

AK_String SW_ScalarField::Average() const
{
    double sum = 0;
    int count = 0;
    for (float value : _values) {
        if (!(value > 0.0f)) continue;
        sum += double(value);
        ++count;
    }
    return AK_String(count > 0 ? sum / count : 0.0, "%.15g");
}

AK_String SW_ScalarField::AreaAboveLimit()
{
    if (!_mesh || _values.Size() != WantedSize()) return "0";
    Convert();
    double area = 0;
    for (int cell = 0; cell < _mesh->NumCells(); ++cell) {
        const IA4& c = _mesh->_lcv[cell];
        const int n = NumCorners(c);
        double value = 0;
        for (int k = 0; k < n; ++k) value += double(_values[_onVertices ? c[k] : cell]);
        if (value / n > _areaValueLimit) area += _mesh->CellNormal(cell).z;
    }
    Reconvert();
    return AK_String(area, "%.15g");
}
