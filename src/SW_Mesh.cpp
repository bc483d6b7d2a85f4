// The mesh object: construction, cells of regular grids, attributes, the record.
//
// "SW_Mesh:v1"  number of vertices (the record ends here when it is 0)
//               is Cartesian, is honeycomb, number of vertices, x y z of each, number of cells (ends here when 0)
//               number of vertex normals, x y z of each
//   regular     nx, ny; dx, dy, x and y of the lower left and of the upper right corner
//   irregular   number of cells, 4 corners of each; number of break line ends, the vertices
//
// "SW_Mesh:v0" holds the six grid values of a regular mesh in 32 bits. The cells of a regular mesh are not stored, and
// neighbours never are: both follow from the rest.

#include "SW_Mesh.h"

#include "SW_Mesh_Contour.h"

#include <cmath>

// ----------------------------------------------------------------------------------------------------------------
// Construction and geometry
// ----------------------------------------------------------------------------------------------------------------

SW_Mesh::SW_Mesh(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    Set("Color", "0.98 0.92 0.84");
    Set("PolygonsFilled", "1");
    Set("Shaded", "1");
    Set("PolygonOffsetFill", "1");
    Set("PolygonOffsetFactors", "10 10");
    RunInitializationCommands();
}

SW_Mesh::~SW_Mesh()
{
    ForgetDisplayList();
    while (_watches) _watches->Watch(nullptr);
}

void SW_MeshWatch::Watch(const SW_Mesh* mesh)
{
    if (mesh == _mesh) return;
    if (_mesh) {
        *_toThis = _next;
        if (_next) _next->_toThis = _toThis;
    }
    _mesh = mesh;
    if (!mesh) return;
    _next = mesh->_watches;
    if (_next) _next->_toThis = &_next;
    _toThis = &mesh->_watches;
    mesh->_watches = this;
}

void SW_Mesh::Clear()
{
    _x.Clear();
    _lcv.Clear();
    _lcc.Clear();
    _vertexNormals.Clear();
    _segments.Clear();
    _totalNormal = AK_Vec();
    ForgetDerived();
    _isCartesian = 0;
    _isHoneyComb = 0;
}

void SW_Mesh::SetVertexMesh(int n)
{
    Clear();
    _x.Fill(n, AK_Vec());
}

void SW_Mesh::RemoveVertex(int i) { _x.RemoveUnordered(i); }

void SW_Mesh::SetCartesianCells(const SW_Grid& grid)
{
    AK_ASSERT(_x.Size() == (grid.nx + 1) * (grid.ny + 1));
    _isCartesian = 1;
    _isHoneyComb = 0;
    TakeGrid(grid);
    _lcv.SetSize(grid.nx * grid.ny);
    IA4* cell = _lcv.Data();
    for (int i = 0; i < grid.nx; ++i)
        for (int j = 0; j < grid.ny; ++j) {
            const int vertex = i * (grid.ny + 1) + j;
            *cell++ = {{vertex, vertex + grid.ny + 1, vertex + grid.ny + 2, vertex + 1}};
        }
}

void SW_Mesh::SetHoneyCombCells(const SW_Grid& grid)
{
    AK_ASSERT(_x.Size() == (grid.nx + 1) * (grid.ny + 1));
    _isCartesian = 0;
    _isHoneyComb = 1;
    TakeGrid(grid);
    _lcv.SetSize(2 * grid.nx * grid.ny);
    IA4* cell = _lcv.Data();
    for (int i = 0; i < grid.nx; ++i)
        for (int j = 0; j < grid.ny; ++j) {
            const int a = i * (grid.ny + 1) + j;
            const int b = a + grid.ny + 1;
            const int c = b + 1;
            const int d = a + 1;
            const bool odd = j % 2 != 0;
            *cell++ = odd ? IA4{{a, b, d, -1}} : IA4{{a, b, c, -1}};
            *cell++ = odd ? IA4{{c, d, b, -1}} : IA4{{c, d, a, -1}};
        }
}

void SW_Mesh::TakeGrid(const SW_Grid& grid)
{
    _grid = grid;
    TakeGridDescription(grid);
}

void SW_Mesh::TakeGridDescription(const SW_Grid& grid)
{
    _nx = grid.nx;
    _ny = grid.ny;
    _dx = grid.dx;
    _dy = grid.dy;
    _xll = grid.xll;
    _xor = grid.xor_;
}

int SW_Mesh::BoundingBox(float* lo, float* hi) const
{
    if (NumVertices() == 0) return 0;
    for (int k = 0; k < 3; ++k) {
        lo[k] = 1e30f;
        hi[k] = -1e30f;
    }
    for (const AK_Vec& x : _x) {
        const float p[3] = {float(x.x), float(x.y), float(x.z)};
        for (int k = 0; k < 3; ++k) {
            lo[k] = std::min(lo[k], p[k]);
            hi[k] = std::max(hi[k], p[k]);
        }
    }
    UpdateBoundingBox(lo, hi);
    return 1;
}

// ----------------------------------------------------------------------------------------------------------------
// Record
// ----------------------------------------------------------------------------------------------------------------

int SW_Mesh::SaveData(AK_Stream& stream) const
{
    if (_skipData) return 0;
    stream.Write(AK_String("SW_Mesh:v1"));
    stream.Write(NumVertices());
    if (NumVertices() > 0) {
        stream.Write(_isCartesian);
        stream.Write(_isHoneyComb);
        stream.Write(_x);
        stream.Write(NumCells());
    }
    if (NumVertices() > 0 && NumCells() > 0) {
        stream.Write(_vertexNormals);
        if (_isCartesian || _isHoneyComb) {
            stream.Write(_grid.nx);
            stream.Write(_grid.ny);
            for (double value : {_grid.dx, _grid.dy, _grid.xll.x, _grid.xll.y, _grid.xor_.x, _grid.xor_.y})
                stream.Write(value);
        } else {
            stream.Write(_lcv);
            stream.Write(_segments);
        }
    }
    return stream.Failed() ? IoError(AK_HERE) : 0;
}

static void ReadGridValue(AK_Stream& stream, bool narrow, double& value)
{
    float read = 0;
    if (!narrow) {
        stream.Read(value);
        return;
    }
    stream.Read(read);
    value = double(read);
}

// True if every corner names a vertex and only the fourth slot may be empty.
static bool CornersAreVertices(const AK_List<IA4>& lcv, int numVertices)
{
    for (const IA4& cell : lcv)
        for (int k = 0; k < 4; ++k)
            if (cell[k] >= numVertices || cell[k] < (k == 3 ? -1 : 0)) return false;
    return true;
}

bool SW_Mesh::ReadGrid(AK_Stream& stream, bool narrow, bool cartesian, int numCells)
{
    SW_Grid grid;
    stream.Read(grid.nx);
    stream.Read(grid.ny);
    for (double* value : {&grid.dx, &grid.dy, &grid.xll.x, &grid.xll.y, &grid.xor_.x, &grid.xor_.y})
        ReadGridValue(stream, narrow, *value);
    // What a file says is tested before the checks that end the program, which guard what has passed.
    const long long cells = (cartesian ? 1LL : 2LL) * grid.nx * grid.ny;
    const long long vertices = (grid.nx + 1LL) * (grid.ny + 1LL);
    if (stream.Failed() || grid.nx < 1 || grid.ny < 1 || cells != numCells || vertices != NumVertices()) return false;
    if (!(grid.dx > 0) || !std::isfinite(grid.dx) || (!cartesian && !(grid.dy > 0))) return false;
    if (cartesian)
        SetCartesianCells(grid);
    else
        SetHoneyCombCells(grid);
    const int nCells = numCells;
    if (cartesian)
        AK_ASSERT_AS(nCells == _nx * _ny, "nCells == _nx*_ny");
    else
        AK_ASSERT_AS(nCells == 2 * _nx * _ny, "nCells == 2*_nx*_ny");
    return true;
}

// Reads the record behind its header; false if it is cut or cannot be true.
bool SW_Mesh::ReadRecord(AK_Stream& stream, bool narrow)
{
    int numVertices = 0;
    stream.Read(numVertices);
    if (stream.Failed() || numVertices < 0) return false;
    if (numVertices == 0) return true;

    int isCartesian = 0, isHoneyComb = 0, numCells = 0;
    stream.Read(isCartesian);
    stream.Read(isHoneyComb);
    stream.Read(_x);
    stream.Read(numCells);
    if (stream.Failed() || numCells < 0 || NumVertices() != numVertices) return false;
    if (numCells == 0) return true;

    stream.Read(_vertexNormals);
    if (stream.Failed() || (_vertexNormals.Size() != 0 && _vertexNormals.Size() != numVertices)) return false;
    if (isCartesian || isHoneyComb) return ReadGrid(stream, narrow, isCartesian != 0, numCells);
    stream.Read(_lcv);
    stream.Read(_segments);
    if (stream.Failed() || NumCells() != numCells || !CornersAreVertices(_lcv, numVertices)) return false;
    for (int vertex : _segments)
        if (vertex < 0 || vertex >= numVertices) return false;
    return _segments.Size() % 2 == 0;
}

int SW_Mesh::LoadData(AK_Stream& stream)
{
    if (_skipData) return 0;
    Clear();
    AK_String header;
    stream.Read(header);
    const bool narrow = header == "SW_Mesh:v0";
    if (!narrow && !(header == "SW_Mesh:v1")) return IoError(AK_HERE);
    if (!ReadRecord(stream, narrow)) {
        Clear();   // no half-loaded mesh survives
        return IoError(AK_HERE);
    }
    ComputeConnectivity();
    _totalNormal = Normal();
    return 0;
}
