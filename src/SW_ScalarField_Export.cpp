// Scalar fields as files: raster, contour lines, values along a line.

#include "SW_ScalarField.h"

#include <climits>
#include <cmath>
#include <fstream>

static constexpr double writtenNoData = -9999;

// ----------------------------------------------------------------------------------------------------------------
// Raster
// ----------------------------------------------------------------------------------------------------------------

static int ColumnsIn(double length, double size)
{
    return int(std::min(std::max(length / size, 0.0), double(INT_MAX)));
}

void SW_ScalarField::TakeRasterExtentOfMesh()
{
    float lo[3], hi[3];
    if (!_mesh->BoundingBox(lo, hi)) return;
    const double size = _exportRasterSize;
    _exportRasterLL = {std::ceil(double(lo[0]) / size) * size, std::floor(double(lo[1]) / size) * size};
    _exportRasterNumColumns = ColumnsIn(double(hi[0]) - _exportRasterLL.x, size);
    _exportRasterNumRows = ColumnsIn(double(hi[1]) - _exportRasterLL.y, size);
}

void SW_ScalarField::WriteRaster(std::FILE* file) const
{
    const double size = _exportRasterSize;
    std::fprintf(file, "ncols         %d\nnrows         %d\n", _exportRasterNumColumns, _exportRasterNumRows);
    std::fprintf(file, "xllcenter     %.10g\nyllcenter     %.10g\n", _exportRasterLL.x, _exportRasterLL.y);
    std::fprintf(file, "cellsize      %.10g\nNODATA_value  %g\n", size, writtenNoData);
    for (int row = _exportRasterNumRows - 1; row >= 0; --row) {
        for (int column = 0; column < _exportRasterNumColumns; ++column) {
            const AK_Vec2 p(column * size + _exportRasterLL.x, row * size + _exportRasterLL.y);
            const int cell = _mesh->CellContainingPoint(p, -1);
            double value = writtenNoData;
            if (cell >= 0) {
                double weights[4];
                _mesh->GetWeights(cell, p, weights);
                value = double(_mesh->InterpolatedScalar(cell, weights, _values.Data()));
            }
            std::fprintf(file, "%g ", value);
        }
        std::fputc('\n', file);
    }
}

void SW_ScalarField::ExportFieldRasterAscii(const AK_String& path)
{
    if (!_mesh) return;
    if (!_onVertices || _values.Size() != WantedSize()) {
        _execStatus = "a raster is made from values on vertices only";
        return;
    }
    if (!(_exportRasterSize > 0) || !std::isfinite(_exportRasterSize)) {
        _execStatus = "ExportRasterSize must be positive";
        return;
    }
    Convert();
    if (_exportRasterAutoRange) TakeRasterExtentOfMesh();
    std::FILE* file = std::fopen(path.c_str(), "w");
    bool written = file != nullptr;
    if (file) {
        AK_MSG("writing field raster data to " << path);
        WriteRaster(file);
        written = !std::ferror(file);
        written = std::fclose(file) == 0 && written;
    }
    Reconvert();
    if (!written) {
        AK_MSG("cannot open file " << path);
        return;
    }
    AK_MSG("file " << path << " written");
    _mesh->WriteProjectionBeside(path);
}

// ----------------------------------------------------------------------------------------------------------------
// Contour lines
// ----------------------------------------------------------------------------------------------------------------

// "DFA_<attribute>_<unit>", as names of layers go.
static AK_String LayerName(const AK_String& attribute, const AK_String& fieldUnit)
{
    const AK_String unit = fieldUnit == "m/s" ? AK_String("ms-1") : fieldUnit;
    AK_String layer = AK_String("DFA_") + attribute + "_" + unit;
    layer.ReplaceAll('/', '_');
    layer.ReplaceWhitespace('_');
    return layer;
}

void SW_ScalarField::ExportContourLines(const AK_String& path)
{
    Convert();
    UpdateColorBar();
    UpdateContourLines();
    Reconvert();
    std::ofstream stream(path.c_str());
    if (!stream) {
        AK_MSG("cannot open file " << path);
        return;
    }
    AK_MSG("writing contour lines to " << path);
    if (path.Extension() == "nxyz") {
        if (_contourLines) _contourLines->WriteToNxyz(stream);
    } else {
        const AK_String layer = LayerName(Colorbar()->AttributeShort(), Colorbar()->Unit());
        if (_contourLines)
            _contourLines->WriteToDxf(stream, layer);
        else
            stream << "  0\nSECTION\n  2\nENTITIES\n  0\nENDSEC\n  0\nEOF\n";
        stream << "  0\nEOF\n";
    }
    stream.close();
    if (!stream)
        AK_MSG("cannot open file " << path);
    else
        AK_MSG("file " << path << " written");
}

AK_String SW_ScalarField::ShortExportFilename() const
{
    AK_String name = Label();
    const AK_String attributeShort = Colorbar()->AttributeShort();
    if (!attributeShort.IsEmpty()) name.Replace(Colorbar()->Attribute().c_str(), attributeShort.c_str());
    name.Replace(" at ", "");
    name.ReplaceNonAlNum('_');
    while (name.Replace("__", "_")) {}
    return name;
}

// ----------------------------------------------------------------------------------------------------------------
// Along a line
// ----------------------------------------------------------------------------------------------------------------

namespace {

struct PointWithValue {
    AK_Vec point;
    double value;
};

} // namespace

void SW_ScalarField::ExportValuesAlongPolyline(const AK_String& path)
{
    const SW_Polyline* line = LineToExport();
    if (!line || _values.Size() != WantedSize()) return;
    const AK_Vec& first = line->Points()[0];
    const AK_Vec& last = line->Points()[line->Points().Size() - 1];
    AK_List<SW_MeshEdgeIntersection> crossings(1);
    _mesh->GetMeshEdgeIntersectionsAlongPolyline(*line, crossings);
    AK_List<PointWithValue> rows(crossings.Size() + 2);
    rows.Append({first, ValueAtPoint(AK_Vec2(first))});
    Convert();
    for (const SW_MeshEdgeIntersection& c : crossings) {
        const double a = double(_values[c.vertex0]);
        const double b = double(_values[c.vertex1]);
        const AK_Vec& from = _mesh->_x[c.vertex0];
        rows.Append({from + (_mesh->_x[c.vertex1] - from) * c.t, a + (b - a) * c.t});
    }
    Reconvert();
    rows.Append({last, ValueAtPoint(AK_Vec2(last))});

    AK_MSG("INFO:writing values along polyline to file " << path);
    SW_WriteTextFile(path, [&](std::FILE* file) {
        std::fprintf(file, "#x\ty\tz\t%s\n", Colorbar()->Attribute().c_str());
        std::fprintf(file, "#m\tm\tm\t%s\n", Colorbar()->Unit().c_str());
        for (const PointWithValue& row : rows)
            std::fprintf(file, "%.15g %.15g %.15g %.15g\n", row.point.x, row.point.y, row.point.z, row.value);
    });
}
