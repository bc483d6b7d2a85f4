// Scalar fields as files: raster, contour lines, values along a line.

#include "SW_ScalarField.h"

#include <climits>
#include <cmath>
#include <fstream>

static constexpr double maxRasterValues = 1e9;   // a size mistyped by some zeros must not fill the disc

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

// True if the raster can be made, which then has its extent; else the status says why not.
bool SW_ScalarField::HasRaster()
{
    if (!_onVertices)
        _execStatus = InLanguage("a raster is made from values on vertices only",
                                 "ein Raster entsteht nur aus Werten auf Knoten");
    else if (!(_exportRasterSize > 0) || !std::isfinite(_exportRasterSize))
        _execStatus = InLanguage("'ExportRasterSize' must be positive", "'ExportRasterSize' muss positiv sein");
    if (!_execStatus.IsEmpty()) return false;
    if (_exportRasterAutoRange) TakeRasterExtentOfMesh();
    if (double(_exportRasterNumColumns) * double(_exportRasterNumRows) > maxRasterValues)
        _execStatus = InLanguage("the raster would be too large: 'ExportRasterSize' is too small",
                                 "das Raster waere zu gross: 'ExportRasterSize' ist zu klein");
    else if (_exportRasterNumColumns < 1 || _exportRasterNumRows < 1)
        _execStatus = InLanguage("the raster would have no point: 'ExportRasterSize' is larger than the mesh, or there "
                                 "are no columns or rows",
                                 "das Raster haette keinen Punkt: 'ExportRasterSize' ist groesser als das Netz, oder "
                                 "es gibt keine Spalten oder Zeilen");
    return _execStatus.IsEmpty();
}

void SW_ScalarField::ExportFieldRasterAscii(const AK_String& path)
{
    if (!HasValues() || !HasRaster()) return;
    Convert();
    long found = 0;
    const bool written = AK_WriteFile(path, [&](std::FILE* file) {
        AK_MSG("writing field raster data to " << path);
        _mesh->WriteRaster(file, _exportRasterNumColumns, _exportRasterNumRows, _exportRasterLL, _exportRasterSize,
                           [&](int cell, const double* weights) {
                               const auto value = _mesh->InterpolatedScalar(cell, weights, _values.Data());
                               std::fprintf(file, "%g ", double(value));
                               ++found;
                           });
    });
    Reconvert();
    if (!written) {
        AK_MSG("cannot open file " << path);
        return;
    }
    AK_MSG("file " << path << " written");
    if (found == 0)
        AK_MSG("WARNING:" << InLanguage("no point of the raster lies on the mesh: ",
                                        "kein Punkt des Rasters liegt auf dem Netz: ")
                          << path);
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
    const bool written = AK_WriteStream(path, [&](std::ostream& stream) {
        AK_MSG("writing contour lines to " << path);
        if (path.Extension() == "nxyz") {
            if (_contourLines) _contourLines->WriteToNxyz(stream);
            return;
        }
        const AK_String layer = LayerName(Colorbar()->AttributeShort(), Colorbar()->Unit());
        if (_contourLines)
            _contourLines->WriteToDxf(stream, layer);
        else
            stream << "  0\nSECTION\n  2\nENTITIES\n  0\nENDSEC\n  0\nEOF\n";
        stream << "  0\nEOF\n";
    });
    if (!written)
        AK_MSG("cannot open file " << path);
    else
        AK_MSG("file " << path << " written");
    if (HasValues() && (!_contourLines || _contourLines->Size() == 0))
        AK_MSG("WARNING:" << InLanguage("no contour line: no value on vertices reaches a level of the colour bar: ",
                                        "keine Isolinie: kein Wert auf Knoten erreicht eine Stufe der Farbskala: ")
                          << path);
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

void SW_ScalarField::ExportValuesAlongPolyline(const AK_String& path)
{
    AK_List<PlacedValue> values(1);
    if (!GetValuesAlongLine(values)) return;
    AK_MSG("INFO:writing values along polyline to file " << path);
    if (!WriteValuesAlongLine(path, values, {""})) AK_MSG("WARNING:cannot open output file " << path);
}
