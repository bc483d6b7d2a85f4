// The surface as text: point list and ESRI ASCII grid; the coordinate system that goes with a raster.

#include "SW_Mesh.h"

#include "AK_Basic_NewFile.h"
#include "SW_Mesh_Contour.h"

#include <algorithm>
#include <climits>
#include <cstdio>

static constexpr double writtenNoData = -9999;

// A coordinate system's text is a line or a few; what is longer is none.
static constexpr long maxProjectionText = 20000;

AK_String SW_Mesh::ReadProjection(const AK_String& path)
{
    AK_TextReader reader(path);
    if (!reader.IsOpen() || reader.Size() > maxProjectionText) return "";
    AK_List<char> text(int(reader.Size()) + 1);
    for (int byte = reader.ReadByte(); byte >= 0; byte = reader.ReadByte()) text.Append(char(byte));
    return AK_String(text.begin(), text.end());
}

void SW_Mesh::WriteProjectionBeside(const AK_String& raster) const
{
    if (_projection.IsEmpty()) return;
    const AK_String path = raster.WithExtension("prj");
    const bool written = AK_WriteFile(path, [this](std::FILE* file) { std::fputs(_projection.c_str(), file); });
    if (!written) AK_MSG("WARNING: cannot write " << path);
}

static void WritePoints(std::FILE* file, const AK_List<AK_Vec>& points)
{
    for (const AK_Vec& p : points) std::fprintf(file, "%.10g %.10g %.10g\n", p.x, p.y, p.z);
}

void SW_Mesh::WriteRaster(std::FILE* file, int columns, int rows, const AK_Vec2& xll, double cellSize,
                          const std::function<void(int cell, const double* weights)>& writeValue) const
{
    std::fprintf(file, "ncols         %d\nnrows         %d\n", columns, rows);
    std::fprintf(file, "xllcenter     %.10g\nyllcenter     %.10g\n", xll.x, xll.y);
    std::fprintf(file, "cellsize      %.10g\nNODATA_value  %g\n", cellSize, writtenNoData);
    for (int row = rows - 1; row >= 0; --row) {
        for (int column = 0; column < columns; ++column) {
            const AK_Vec2 p(column * cellSize + xll.x, row * cellSize + xll.y);
            const int cell = CellContainingPoint(p, -1);
            if (cell < 0) {
                std::fprintf(file, "%g ", writtenNoData);
                continue;
            }
            double weights[4];
            GetWeights(cell, p, weights);
            writeValue(cell, weights);
        }
        std::fputc('\n', file);
    }
}

// Heights at the points of the lattice that the attributes describe.
void SW_Mesh::WriteGrid(std::FILE* file) const
{
    WriteRaster(file, _nx + 1, _ny + 1, _xll, _dx, [&](int cell, const double* weights) {
        std::fprintf(file, "%.8g ", InterpolatedVector(cell, weights, _x).z);
    });
}

// What is no Cartesian grid is sampled over its box.
void SW_Mesh::SizeGridForExport()
{
    if (_isCartesian || !(_dx > 0)) return;
    _nx = int(std::clamp((_xor.x - _xll.x) / _dx + 1.0, 0.0, INT_MAX - 1.0));
    _ny = int(std::clamp((_xor.y - _xll.y) / _dx + 1.0, 0.0, INT_MAX - 1.0));
}

void SW_Mesh::Export(const AK_String& path)
{
    static constexpr const char* rasters[] = {"e00", "E00", "asc", "ASC", "txt", "TXT"};
    const AK_String extension = path.Extension();
    const bool points = extension == "xyz";
    const bool grid = std::any_of(std::begin(rasters), std::end(rasters),
                                  [&](const char* raster) { return extension == raster; });
    if (grid) SizeGridForExport();
    if (!points && !grid)
        _execStatus = AK_String("'") + path +
                      InLanguage("' is not written: unknown extension", "' wird nicht geschrieben: unbekannte Endung");
    else if (points ? NumVertices() == 0 : NumCells() == 0)
        _execStatus = AK_String("'") + path +
                      InLanguage("' is not written: the mesh is empty", "' wird nicht geschrieben: das Netz ist leer");
    else if (grid && !HasSizeOfGrid(_nx, _ny))
        RefuseGrid();
    else {
        const bool written = AK_WriteFile(path, [&](std::FILE* file) {
            AK_MSG("writing '" << path << "'...");
            points ? WritePoints(file, _x) : WriteGrid(file);
        });
        if (!written) _execStatus = AK_String("cannot open file '") + path + "'";
        if (written && grid) WriteProjectionBeside(path);
    }
    AK_MSG("exported to '" << path << "'");
}
