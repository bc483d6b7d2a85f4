// Regular grids made from numbers: over a rectangle, over the extent of another mesh, or as a trough.
//
// The attributes describe the grid that comes next (Dx, Xll, Xor; Nx, Ny, Length, Width and Inclination for the
// trough). What they say is tested before the mesh is touched: they are free numbers, and a grid of no cells, or of
// more points than memory holds, is refused with a status.

#include "SW_Mesh.h"

#include "SW_Mesh_Contour.h"

#include <climits>
#include <cmath>

static constexpr double rowHeight = 0.8660254037844387;   // of a honeycomb grid, in cell sizes: sqrt(3)/2

// Cells of a size that an extent holds, `rounding` added before the fraction is dropped; 0 for what is no grid.
static int CellsAlong(double extent, double size, double rounding)
{
    const double cells = extent / size + rounding;
    return size > 0 && cells >= 1 && cells < INT_MAX ? int(cells) : 0;
}

static bool IsCellSize(double size) { return size > 0 && std::isfinite(size); }

bool SW_Mesh::HasSizeOfGrid(int nx, int ny)
{
    static constexpr double maxPoints = 1e8;   // some 15 GB with all that belongs to a point
    return nx >= 1 && ny >= 1 && (nx + 1.0) * (ny + 1.0) <= maxPoints;
}

void SW_Mesh::RefuseGrid()
{
    _execStatus = "no grid: its size is not positive, or it has no cell or more than 100000000 points";
}

// ----------------------------------------------------------------------------------------------------------------
// Over a rectangle
// ----------------------------------------------------------------------------------------------------------------

bool SW_Mesh::MakeGrid(GridKind kind)
{
    const AK_Vec2 extent = _xor - _xll;
    const bool cartesian = kind == GridKind::Cartesian;
    SW_Grid grid{0, 0, _dx, _dy, _xll, _xor};
    if (cartesian) {
        grid.nx = CellsAlong(extent.x, grid.dx, 0);
        grid.ny = CellsAlong(extent.y, grid.dx, 0);
    } else {
        grid.dy = grid.dx * rowHeight;
        grid.nx = CellsAlong(extent.x, grid.dx, 1.499);   // so that the shifted rows reach the far sides, too
        grid.ny = CellsAlong(extent.y, grid.dy, 0.999);
    }
    if (!HasSizeOfGrid(grid.nx, grid.ny) || !IsCellSize(grid.dx)) return false;

    Clear();
    _x.Redimension((grid.nx + 1) * (grid.ny + 1));
    for (int i = 0; i <= grid.nx; ++i)
        for (int j = 0; j <= grid.ny; ++j) {
            if (cartesian)
                AddVertex({i * grid.dx + grid.xll.x, j * grid.dx + grid.xll.y, 0});
            else
                AddVertex({i * grid.dx - (j % 2) * 0.5 * grid.dx + grid.xll.x, j * grid.dy + grid.xll.y, 0});
        }
    cartesian ? SetCartesianCells(grid) : SetHoneyCombCells(grid);
    ComputeConnectivity();
    ComputeVertexNormals();
    return true;
}

void SW_Mesh::SetToCartesianGrid()
{
    if (!MakeGrid(GridKind::Cartesian)) RefuseGrid();
}

void SW_Mesh::SetToHoneyCombGrid()
{
    if (!MakeGrid(GridKind::HoneyComb)) RefuseGrid();
}

// ----------------------------------------------------------------------------------------------------------------
// Over another mesh
// ----------------------------------------------------------------------------------------------------------------

bool SW_Mesh::Cover(const SW_Mesh& base, GridKind kind)
{
    float lo[3], hi[3];
    if (!base.BoundingBox(lo, hi) || !base.HasSurfaceFor(*this)) return false;
    _xll = {lo[0], lo[1]};
    _xor = {hi[0], hi[1]};
    if (!MakeGrid(kind)) return false;
    ProjectOnto(&base);
    _projection = base._projection;
    return true;
}

void SW_Mesh::CoverBaseMesh(GridKind kind)
{
    const SW_Mesh* base = _baseMesh.Find(*this);
    if (!base || base == this) return;
    if (!Cover(*base, kind)) RefuseGrid();
}

// ----------------------------------------------------------------------------------------------------------------
// Trough
// ----------------------------------------------------------------------------------------------------------------

void SW_Mesh::SetToPlane()
{
    const SW_Grid grid{_nx, _ny, _dx, _dy, {0, 0}, {_length, _width}};
    if (!HasSizeOfGrid(_nx, _ny) || !IsCellSize(_dx)) {
        RefuseGrid();
        return;
    }
    Clear();
    AK_MSG("setting to plane mesh of dimension " << _nx << " x " << _ny);
    _x.Redimension((_nx + 1) * (_ny + 1));
    for (int i = 0; i <= _nx; ++i)
        for (int j = 0; j <= _ny; ++j) {
            const double x = i * _length / _nx;
            const double y = j * _width / _ny;
            const float fromMiddle = float(_length * 0.5 - x);
            const double radius = _inclination;
            const double z = radius - std::sqrt(radius * radius - double(fromMiddle * fromMiddle));   // NaN beyond it
            AddVertex({x, y, z});
        }
    if (!(_length * 0.5 <= std::fabs(_inclination)))
        AK_MSG("WARNING:" << IdAbs() << ": heights farther than " << std::fabs(_inclination)
                          << InLanguage(" m from the middle are no numbers: 'Inclination' is the radius of the trough",
                                        " m von der Mitte sind keine Zahlen: 'Inclination' ist der Radius der Rinne"));
    SetCartesianCells(grid);
    ComputeConnectivity();
    ComputeVertexNormals();
}
