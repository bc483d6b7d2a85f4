// Rasters as terrain: ESRI ASCII grids, one file or several tiles on a common lattice, become a Cartesian mesh.
//
//   ncols 3            keywords in any order and case, "nodata_value" last; "xllcenter" and "yllcenter" name the
//   nrows 2            centre of the lower left cell in place of its corner
//   xllcorner 100
//   yllcorner 200      body: the values row by row from the top, x rising within a row; line ends do not matter
//   cellsize 10
//   nodata_value -9999
//   1 2 3
//   4 5 6
//
// A vertex stands at the centre of each raster cell. Missing heights are filled, or their cells removed, at the end.
//
// A file can be anything. Counts are held against its size before memory is asked for, and what is no number ends it.

#include "SW_Mesh.h"

#include "SW_Mesh_Contour.h"
#include "SW_Mesh_Tokens.h"

#include <algorithm>
#include <climits>
#include <cmath>

namespace {

// A raster's header.
struct GridHeader {
    int ncols = 0, nrows = 0;
    double xll = 0, yll = 0;   // as in the file: the lower left corner or, without `corner`, centre
    double cellSize = 0;
    double noData = 0;
    int corner = 0;

    long NumValues() const { return long(ncols) * nrows; }
    void MoveToCenter()
    {
        if (!corner) return;
        xll += cellSize * 0.5;
        yll += cellSize * 0.5;
    }
};

}   // namespace

static constexpr double writtenNoData = -9999;   // stands for "nodata_value nan"

// ----------------------------------------------------------------------------------------------------------------
// Header
// ----------------------------------------------------------------------------------------------------------------

// Reads the value of a keyword; false if there is none of that name or its value is no number.
static bool ReadHeaderValue(const AK_String& keyword, SW_TokenReader& in, GridHeader& header)
{
    const struct {
        const char* keyword;
        int* number;
        double* value;
        bool isCorner;
    } items[] = {
        {"ncols", &header.ncols, nullptr, false},       {"nrows", &header.nrows, nullptr, false},
        {"xllcorner", nullptr, &header.xll, true},      {"yllcorner", nullptr, &header.yll, true},
        {"xllcenter", nullptr, &header.xll, false},     {"yllcenter", nullptr, &header.yll, false},
        {"cellsize", nullptr, &header.cellSize, false}, {"nodata_value", nullptr, &header.noData, false},
    };
    for (const auto& item : items) {
        if (!(keyword == item.keyword)) continue;
        if (item.isCorner) header.corner = 1;
        return item.number ? in.NextInt(*item.number) : in.NextDouble(*item.value);
    }
    return false;
}

// Reads up to and with "nodata_value". "" if the header is complete, else what is wrong with it.
static AK_String ReadGridHeader(SW_TokenReader& in, GridHeader& header)
{
    AK_String keyword;
    do {
        keyword = in.Next();
        if (keyword.IsEmpty()) return "the file ends before the keyword 'nodata_value'";
        keyword.ToLower();
        if (!ReadHeaderValue(keyword, in, header))
            return AK_String("'") + keyword + "' stands where a keyword with its value is expected; 'nodata_value' " +
                   "must be the last one";
    } while (!(keyword == "nodata_value"));
    if (header.ncols < 1) return "the keyword 'ncols' is missing or its value is not positive";
    if (header.nrows < 1) return "the keyword 'nrows' is missing or its value is not positive";
    if (!(header.cellSize > 0) || !std::isfinite(header.cellSize))
        return "the keyword 'cellsize' is missing or its value is not positive";
    if (!std::isfinite(header.xll) || !std::isfinite(header.yll)) return "the lower left corner is no number";
    if (!std::isfinite(header.noData)) header.noData = writtenNoData;
    return "";
}

int SW_Mesh::GetGridParameters(const AK_String& path, AK_Vec2& xMin, AK_Vec2& xMax, double& cellSize)
{
    SW_TokenReader in(path);
    GridHeader header;
    if (!in.IsOpen() || !ReadGridHeader(in, header).IsEmpty()) return 0;
    cellSize = header.cellSize;
    xMin = {header.xll, header.yll};
    xMax = {(header.ncols - 1) * cellSize + header.xll, (header.nrows - 1) * cellSize + header.yll};
    return 1;
}

// ----------------------------------------------------------------------------------------------------------------
// One file
// ----------------------------------------------------------------------------------------------------------------

// Reads the values in the order of the file and hands each to `store(column, row, value)`, rows counted from the
// bottom. Returns how many there were. What is no number counts as a missing one and ends the reading.
template <class Store>
static long ReadGridValues(SW_TokenReader& in, const GridHeader& header, const Store& store)
{
    long n = 0;
    for (int row = header.nrows - 1; row >= 0; --row)
        for (int column = 0; column < header.ncols; ++column) {
            double value = header.noData;
            const bool isNumber = in.NextDouble(value);
            if (!isNumber && in.Remaining() == 0) return n;
            if (!isNumber || !std::isfinite(value)) value = header.noData;
            store(column, row, value);
            ++n;
            if (!isNumber) return n;
        }
    return n;
}

// True if the rest of the file can hold the values: each takes a digit and, but for the last, a separator.
static bool CanHoldValues(const SW_TokenReader& in, const GridHeader& header)
{
    return header.NumValues() <= (in.Remaining() + 1) / 2 && header.NumValues() <= INT_MAX / 2;
}

static SW_Grid GridOf(const GridHeader& header)
{
    SW_Grid grid;
    grid.nx = header.ncols - 1;
    grid.ny = header.nrows - 1;
    grid.dx = header.cellSize;
    grid.xll = {header.xll, header.yll};
    grid.xor_ = {(header.ncols - 1) * header.cellSize + header.xll, (header.nrows - 1) * header.cellSize + header.yll};
    return grid;
}

// Halves a raster in place: each new point is the mean of four. One of the two lower ones without data makes it one
// without; the two upper ones are not asked, and a missing height among them enters the mean as a number.
static void HalveRaster(AK_List<AK_Vec>& x, GridHeader& header)
{
    AK_MSG("reducing resolution...");
    const int oldRows = header.nrows;
    header.ncols /= 2;
    header.nrows /= 2;
    header.xll += header.cellSize * 0.5;
    header.yll += header.cellSize * 0.5;
    header.cellSize *= 2;
    for (int i = 0; i < header.ncols; ++i)
        for (int j = 0; j < header.nrows; ++j) {
            const AK_Vec a = x[2 * i * oldRows + 2 * j];
            const AK_Vec b = x[(2 * i + 1) * oldRows + 2 * j];
            const AK_Vec c = x[2 * i * oldRows + 2 * j + 1];
            const AK_Vec d = x[(2 * i + 1) * oldRows + 2 * j + 1];
            AK_Vec mean = (a + b + c + d) * 0.25;
            if (a.z == header.noData || b.z == header.noData) mean.z = header.noData;
            x[i * header.nrows + j] = mean;   // never behind what is still to be read
        }
    x.SetSize(header.ncols * header.nrows);
}

// Says that a file has too few values.
static void ReportWrongNumber(long read, const GridHeader& header)
{
    AK_MSG("wrong number of z-values (" << read << " instead of expected " << header.NumValues() << ") in file!");
}

// Reads the values into vertices of their own; false, with a message, when the file has too few.
static bool ReadVertices(SW_TokenReader& in, const GridHeader& header, AK_List<AK_Vec>& x)
{
    if (!CanHoldValues(in, header)) {
        const long read = ReadGridValues(in, header, [](int, int, double) {});
        ReportWrongNumber(read, header);
        return false;
    }
    x.Fill(int(header.NumValues()), AK_Vec());
    AK_MSG("reading " << header.NumValues() << " z-values...");
    long missing = 0;
    const long read = ReadGridValues(in, header, [&](int i, int j, double z) {
        x[i * header.nrows + j] = {i * header.cellSize + header.xll, j * header.cellSize + header.yll, z};
        missing += z == header.noData;
    });
    if (read < header.NumValues()) {
        ReportWrongNumber(read, header);
        return false;
    }
    AK_MSG("correct number of z-values read");
    AK_MSG(missing << " NODATA values read");
    return true;
}

void SW_Mesh::LoadE00(const AK_String& path, int nReduce)
{
    SW_TokenReader in(path);
    if (!in.IsOpen()) {
        AK_MSG("cannot open file '" << path << "'!");
        return;
    }
    Clear();
    AK_MSG("reading file '" << path << "'...");
    GridHeader header;
    const AK_String fault = ReadGridHeader(in, header);
    if (!fault.IsEmpty()) {
        AK_MSG("unkown input syntax!");
        AK_MSG(fault);
        return;
    }
    header.MoveToCenter();
    TakeGrid(GridOf(header));
    if (!ReadVertices(in, header, _x)) return;
    for (int i = 0; i < nReduce && header.ncols > 1 && header.nrows > 1; ++i) HalveRaster(_x, header);
    FinishRaster(GridOf(header), header.noData);
}

void SW_Mesh::FinishRaster(const SW_Grid& grid, double noDataValue)
{
    SetCartesianCells(grid);
    if (_numNoDataIterations == 0)
        RemoveNoDataAreas(noDataValue);
    else
        InterpolateNoDataValuesMultigrid(noDataValue);
    ComputeConnectivity();
    ComputeVertexNormals();
    AK_MSG(NumCells() << " cells generated");
}

// ----------------------------------------------------------------------------------------------------------------
// Tiles
// ----------------------------------------------------------------------------------------------------------------

namespace {

// What all tiles cover together.
struct TileExtent {
    AK_Vec2 min, max;
    double cellSize = 0;
    long numValues = 0;
    int numTiles = 0;

    void Add(const GridHeader& header)
    {
        const SW_Grid grid = GridOf(header);
        if (numTiles++ == 0) {
            min = grid.xll;
            max = grid.xor_;
            cellSize = header.cellSize;
        }
        min = {std::min(min.x, grid.xll.x), std::min(min.y, grid.xll.y)};
        max = {std::max(max.x, grid.xor_.x), std::max(max.y, grid.xor_.y)};
        numValues += header.NumValues();
    }
};

}   // namespace

// Calls `use(in, header)` for each tile that opens and has a good header; the others are passed over, and
// `refuse(in, why)` is told.
template <class Use, class Refuse>
static void ForEachTile(const AK_List<AK_String>& paths, const char* message, const Use& use, const Refuse& refuse)
{
    for (const AK_String& path : paths) {
        SW_TokenReader in(path);
        if (!in.IsOpen()) {
            refuse(in, InLanguage("cannot be opened", "kann nicht geoeffnet werden"));
            continue;
        }
        AK_MSG(message << path);
        GridHeader header;
        const AK_String fault = ReadGridHeader(in, header);
        header.MoveToCenter();
        if (!fault.IsEmpty())
            refuse(in, fault);
        else if (CanHoldValues(in, header))
            use(in, header);
        else
            refuse(in, InLanguage("is too short for its heights", "ist zu kurz fuer seine Hoehen"));
    }
}

// Tells of a tile that does not give all it should.
static void WarnOfTile(const SW_TokenReader& in, const AK_String& why)
{
    AK_MSG("WARNING:" << InLanguage("tile ", "Kachel ") << in.Place() << ": " << why);
}

void SW_Mesh::LoadTiles(const AK_String& paths)
{
    static constexpr double maxPointsPerValue = 1000;   // tiles that lie further apart are no raster
    AK_List<AK_String> tiles(1);
    if (paths.Split(ak_sep, tiles) == 0) return;
    _execStatus = "";
    TileExtent extent;
    ForEachTile(
        tiles, "reading header of tile '", [&](SW_TokenReader&, const GridHeader& header) { extent.Add(header); },
        WarnOfTile);
    if (extent.numTiles == 0) {
        _execStatus = InLanguage("no tile can be read", "keine Kachel kann gelesen werden");
        return;
    }

    const double columns = (extent.max.x - extent.min.x) / extent.cellSize + 0.5;
    const double rows = (extent.max.y - extent.min.y) / extent.cellSize + 0.5;
    const double points = (columns + 1) * (rows + 1);
    if (!(points < INT_MAX / 2) || points > maxPointsPerValue * double(extent.numValues)) {
        _execStatus = AK_String(InLanguage("the tiles lie too far apart for one raster: ",
                                           "die Kacheln liegen fuer ein Raster zu weit auseinander: ")) +
                      AK_ToText(points, nullptr) + InLanguage(" points for ", " Punkte fuer ") +
                      AK_ToText(double(extent.numValues), nullptr) + InLanguage(" values", " Werte");
        return;
    }
    Clear();
    SW_Grid grid;
    grid.nx = int(columns);
    grid.ny = int(rows);
    grid.dx = extent.cellSize;
    grid.xll = extent.min;
    grid.xor_ = extent.max;
    AK_MSG("total number of columns: " << grid.nx + 1 << ", rows: " << grid.ny + 1 << ", cell size:" << grid.dx);
    _x.SetSize((grid.nx + 1) * (grid.ny + 1));
    for (int i = 0; i <= grid.nx; ++i)
        for (int j = 0; j <= grid.ny; ++j)
            _x[i * (grid.ny + 1) + j] = {i * grid.dx + grid.xll.x, j * grid.dx + grid.xll.y, noData};
    ReadTileHeights(tiles, grid);
    FinishRaster(grid, noData);
    TakeProjectionOf(tiles);
}

void SW_Mesh::TakeProjectionOf(const AK_List<AK_String>& tiles)
{
    _projection = "";
    for (const AK_String& tile : tiles) {
        const AK_String projection = ReadProjection(tile.WithExtension("prj"));
        if (_projection.IsEmpty()) _projection = projection;
        if (!projection.IsEmpty() && !(projection == _projection))
            AK_MSG("WARNING:" << InLanguage("tile '", "Kachel '") << tile
                              << InLanguage("' has another coordinate system than the tiles before it",
                                            "' hat ein anderes Koordinatensystem als die Kacheln davor"));
    }
}

void SW_Mesh::ReadTileHeights(const AK_List<AK_String>& tiles, const SW_Grid& grid)
{
    double min = 1e30;
    double max = -1e30;
    const auto readHeights = [&](SW_TokenReader& in, const GridHeader& header) {
        const long read = ReadGridValues(in, header, [&](int column, int row, double z) {
            if (z == header.noData) return;   // missing here, perhaps given by an earlier tile
            const int i = RowOf((column * header.cellSize + header.xll - grid.xll.x) / grid.dx + 0.5, grid.nx + 1);
            const int j = RowOf((row * header.cellSize + header.yll - grid.xll.y) / grid.dx + 0.5, grid.ny + 1);
            if (i < 0 || j < 0) return;
            min = std::min(min, z);
            max = std::max(max, z);
            _x[i * (grid.ny + 1) + j].z = z;
        });
        if (read == header.NumValues()) return;
        WarnOfTile(in, AK_String(InLanguage("its heights end there: ", "seine Hoehen enden dort: ")) +
                           AK_ToText(double(read), nullptr) + InLanguage(" instead of ", " statt ") +
                           AK_ToText(double(header.NumValues()), nullptr));
    };
    const auto isTold = [](const SW_TokenReader&, const AK_String&) {};
    ForEachTile(tiles, "reading data of tile '", readHeights, isTold);
    AK_MSG("min. height " << min << ", max. height " << max);
}

// ----------------------------------------------------------------------------------------------------------------
// Import
// ----------------------------------------------------------------------------------------------------------------

// Where cells are no grid: what a cover or an export of the mesh is to be like.
void SW_Mesh::DeriveGridDescription()
{
    float lo[3], hi[3];
    if (!BoundingBox(lo, hi)) return;
    _xll = {lo[0], lo[1]};
    _xor = {hi[0], hi[1]};
    _dx = std::sqrt(std::fabs(Normal().z) / (NumCells() + 0.001));
    if (!(_dx > 0)) return;
    _nx = int(std::min((_xor.x - _xll.x) / _dx + 1.0, double(INT_MAX)));
    _ny = int(std::min((_xor.y - _xll.y) / _dx + 1.0, double(INT_MAX)));
}

void SW_Mesh::ImportSideFiles(const AK_String& path)
{
    AK_String firstError;
    const AK_String labels = path.WithExtension("ano");
    AK_Object* project = Parent() ? Parent()->Parent() : nullptr;
    AK_Object* polylines = project ? project->Component("Polylines") : nullptr;
    if (polylines && AK_System::FileExists(labels)) {
        polylines->Set("CreateSet", labels.BaseName());
        AK_Object* set = polylines->Component(polylines->VariableValue("$latest_comp"));
        if (set && set->Type() == "PolylineSet") {
            set->Set("Import", labels);
            firstError = _execStatus;
            set->Set("ProjectOnto", IdAbs());
        }
    }
    for (const char* extension : {"jpg", "ppm"}) {
        const AK_String picture = path.WithExtension(extension);
        if (!AK_System::FileExists(picture)) continue;
        Set("TextureFileName", picture);
        if (firstError.IsEmpty()) firstError = _execStatus;
        break;
    }
    _projection = ReadProjection(path.WithExtension("prj"));
    _execStatus = firstError;
}

void SW_Mesh::ExchangeSurface(Surface& other)
{
    _x.Swap(other.x);
    _lcv.Swap(other.lcv);
    _lcc.Swap(other.lcc);
    _vertexNormals.Swap(other.vertexNormals);
    _segments.Swap(other.segments);
    std::swap(_totalNormal, other.totalNormal);
    std::swap(_isCartesian, other.isCartesian);
    std::swap(_isHoneyComb, other.isHoneyComb);
    std::swap(_grid, other.cells);
    const SW_Grid next{_nx, _ny, _dx, _dy, _xll, _xor};
    TakeGridDescription(other.next ? *other.next : next);
    other.next = next;
    ForgetDerived();
}

static AK_String NotImported(const AK_String& path, const char* why)
{
    return AK_String("'") + path + InLanguage("' is not imported: ", "' wird nicht importiert: ") + why;
}

bool SW_Mesh::Import(const AK_String& path, int nReduce)
{
    using Loader = void (*)(SW_Mesh & mesh, const AK_String& path, int nReduce);
    static constexpr Loader raster = [](SW_Mesh& mesh, const AK_String& file, int n) { mesh.LoadE00(file, n); };
    static constexpr Loader drawing = [](SW_Mesh& mesh, const AK_String& file, int) { mesh.LoadDxf(file); };
    // clang-format off
    static constexpr struct {
        const char* extension;
        Loader load;
    } formats[] = {
        {"xyz",  [](SW_Mesh& mesh, const AK_String& file, int) { mesh.LoadXyz(file); }},
        {"tbp",  [](SW_Mesh& mesh, const AK_String& file, int) { mesh.LoadTbp(file); }},
        {"e00",  raster}, {"E00", raster}, {"asc", raster}, {"ASC", raster}, {"txt", raster}, {"TXT", raster},
        {"nxyz", [](SW_Mesh& mesh, const AK_String& file, int) { mesh.LoadNxyz(file); }},
        {"dxf",  drawing}, {"DXF", drawing},
    };
    // clang-format on
    const AK_String extension = path.Extension();
    const auto* format = std::find_if(std::begin(formats), std::end(formats),
                                      [&](const auto& known) { return extension == known.extension; });
    if (format == std::end(formats)) {
        _execStatus = NotImported(path, InLanguage("unknown extension", "unbekannte Endung"));
        return false;
    }
    Surface former;
    ExchangeSurface(former);
    _execStatus = "";   // readers set it, and it is the outcome
    format->load(*this, path, nReduce);
    if (_execStatus.IsEmpty() && NumCells() == 0)
        _execStatus = NotImported(path, InLanguage("no surface came of it, see the messages before",
                                                   "es ergab keine Oberflaeche, siehe die Meldungen davor"));
    if (!_execStatus.IsEmpty()) {
        if (former.x.Size() > 0) ExchangeSurface(former);
        return false;
    }
    if (!_isCartesian) DeriveGridDescription();
    ImportSideFiles(path);
    return true;
}
