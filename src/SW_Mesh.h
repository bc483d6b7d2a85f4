// The terrain: a surface of triangles and quadrilaterals over the x-y plane, whose vertices carry a height.
//
// All avalanche physics runs on a mesh. It tells which cell lies under a point and with which weights, the normal and
// area of a cell, and which cells and edges a straight line crosses. Its type in the tree is "DHM".
//
// Face k of a cell is the directed edge from corner k to the next corner; corners run counter-clockwise seen from +z:
//
//        2                3-------2           _lcc[cell][k] is the neighbour across face k,
//       / \               |   2   |           -1 where the mesh ends
//     2/   \1            3|       |1
//     /     \             |   0   |
//    0-------1            0-------1
//        0
//
// While workers run the mesh does not change, and they may call every const query that is marked so. A query that
// starts without a cell (-1) draws random numbers on an irregular mesh and is for the main thread.

#pragma once

#include "AK_VisObj3d.h"
#include "SW_Mesh_Query.h"
#include "SW_Mesh_Reference.h"

#include <cstdio>
#include <functional>
#include <memory>
#include <optional>

class SW_ContourLines;
class SW_Polyline;
class AK_Polyline;

/// A point where a line crosses an edge of the mesh: x = x(vertex0) + t * (x(vertex1) - x(vertex0)).
struct SW_MeshEdgeIntersection {
    int vertex0, vertex1;
    double t;
};

class SW_Mesh;

/// What a mesh knows about those that point to it: a list through all of them.
class SW_MeshWatch {
public:
    SW_MeshWatch() = default;
    ~SW_MeshWatch() { Watch(nullptr); }
    SW_MeshWatch(const SW_MeshWatch&) = delete;
    SW_MeshWatch& operator=(const SW_MeshWatch&) = delete;

protected:
    void Watch(const SW_Mesh* mesh);
    const SW_Mesh* _mesh = nullptr;

private:
    friend class SW_Mesh;
    SW_MeshWatch* _next = nullptr;
    SW_MeshWatch** _toThis = nullptr;   // what points here: the mesh, or the one before in its list
};

/// A pointer to a mesh that others own, and that they may delete while it is in use: it is null from then on.
template <class Mesh>
class SW_MeshPointer : public SW_MeshWatch {
public:
    SW_MeshPointer& operator=(Mesh* mesh)
    {
        Watch(mesh);
        return *this;
    }
    operator Mesh*() const { return const_cast<Mesh*>(_mesh); }
    Mesh* operator->() const { return const_cast<Mesh*>(_mesh); }
};

class SW_Mesh : public AK_Class<SW_Mesh, AK_VisObj3d> {
public:
    static constexpr const char* className = "SW_Mesh";
    static std::span<const Row> Rows();

    SW_Mesh(const AK_String& id, AK_Object* parent);
    ~SW_Mesh() override;
    void Update() override;
    int SaveData(AK_Stream& stream) const override;
    int LoadData(AK_Stream& stream) override;
    /// 0 without vertices; else the extremes over all vertices and copies, and 1.
    int BoundingBox(float* lo, float* hi) const override;

    // ---- geometry: read freely, changed by the operations below
    AK_List<AK_Vec> _x{1};               // vertices, m
    AK_List<IA4> _lcv{1};                // cell -> its vertices; a triangle has -1 in slot 3
    AK_List<IA4> _lcc{1};                // cell -> its neighbours across faces, -1 for none; empty until computed
    AK_List<AK_Vec> _vertexNormals{1};   // m2: a share of each adjoining cell's area vector; not normalised
    AK_List<int> _segments{1};           // break lines of an irregular mesh, two vertices each

    int NumVertices() const { return _x.Size(); }
    int NumCells() const { return _lcv.Size(); }
    bool IsCartesian() const { return _isCartesian != 0; }
    bool IsHoneyComb() const { return !_isCartesian && _isHoneyComb; }
    const SW_Grid& Grid() const { return _grid; }   // of a regular mesh
    double ProjectedArea() const;                   // m2, seen from above
    double Resolution() const;                      // m: mean cell size

    /// The mesh as one kind, for loops; `loop` is called with the view. The mesh must not change meanwhile.
    template <class Loop>
    auto WithView(const Loop& loop) const
    {
        if (_isCartesian) return loop(SW_CartesianView{_grid, _x.Data(), _lcv.Data()});
        if (_isHoneyComb) return loop(SW_HoneyCombView{_grid, _x.Data(), _lcv.Data()});
        return loop(SW_IrregularView{_x.Data(), _lcv.Data(), _lcc.Data(), _lcv.Size()});
    }

    // ---- point location and interpolation (SW_Mesh_Query.cpp); workers may call these with a start of 0 or above

    /// The cell under p, -1 outside. `start` is where an irregular mesh begins to search, -1 for anywhere.
    int CellContainingPoint(const AK_Vec2& p, int start) const;
    /// The cell of the surface point nearest along the normal; see CellContainingPointIterativeIn.
    int CellContainingPointIterative(const AK_Vec& p, int start, double* w) const;
    int IndexOfCellFaceSeeingPoint(const AK_Vec2& p, int cell) const;
    /// Interpolation weights of p in a cell, in corner order; they sum to 1. p may lie outside the cell: weights then
    /// leave [0, 1]. A cell of zero area is fatal.
    void GetWeights(int cell, const AK_Vec2& p, double* w) const;
    float InterpolatedScalar(int cell, const double* w, const float* f) const
    {
        return InterpolatedScalarIn(_lcv[cell], w, f);
    }
    AK_Vec InterpolatedVector(int cell, const double* w, const AK_List<AK_Vec>& v) const
    {
        return InterpolatedVectorIn(_lcv[cell], w, v.Data());
    }
    void ProjectOntoCell(AK_Vec& p, int cell) const;   // p.z becomes the height of the surface there
    int Project(AK_Vec& p, int start) const;           // finds the cell first; -1 outside, with p as it was
    AK_Vec CellCenter(int cell) const;                 // mean of the corners
    AK_Vec CellNormal(int cell) const { return AreaVector(_lcv[cell], _x.Data()); }
    /// In the surface, outward, as long as the face; the mean of the two cells' normals counts. Needs neighbours.
    AK_Vec FaceNormal(int cell, int face) const;
    AK_Vec Normal() const;   // sum of all area vectors

    // ---- walks, for the main thread (SW_Mesh_Walk.cpp)
    AK_Vec RandomPointInCell(int cell) const;   // drawn uniformly from two random numbers
    int NeighborCell(int cell, int face) const { return _lcc[cell][face]; }
    /// Steps to the next face, each shared one once; 0 at the end. Needs neighbours.
    int NextFace(int& cell, int& face) const;
    void GetNeighborVertices(int vertex, AK_List<int>& out) const;
    /// Appends the cells under a -> b, and where the line leaves each of them (crossings may be null). Nothing when a
    /// lies outside.
    void GetCellsAlongLine(const AK_Vec2& a, const AK_Vec2& b, AK_List<int>* cells, AK_List<AK_Vec2>* crossings) const;
    int IndexOfExitFaceAlongLine(int cell, const AK_Vec2& a, const AK_Vec2& b) const;
    void GetMeshEdgeIntersectionsAlongLine(const AK_Vec2& a, const AK_Vec2& b,
                                           AK_List<SW_MeshEdgeIntersection>& out) const;
    void GetMeshEdgeIntersectionsAlongPolyline(const SW_Polyline& line, AK_List<SW_MeshEdgeIntersection>& out) const;

    // ---- building (SW_Mesh.cpp, SW_Mesh_Connectivity.cpp)
    void Clear();
    void SetVertexMesh(int n);   // n vertices at the origin and no cells: particles
    void AddVertex(const AK_Vec& p) { _x.Append(p); }
    void RemoveVertex(int i);   // the last one takes its place; cells are left alone
    /// Makes the cells of a regular grid over vertices that stand; the grid is the mesh's from now on.
    void SetCartesianCells(const SW_Grid& grid);
    void SetHoneyCombCells(const SW_Grid& grid);
    void ComputeConnectivity();
    void ComputeVertexNormals();
    void ComputeLvv() const;
    int _skipData = 0;   // 1: the record is not written and not read, for a mesh that others own

    // ---- grids from the attributes (SW_Mesh_Grid.cpp); what cannot be a grid is refused with a status
    void SetToCartesianGrid();   // Dx over Xll to Xor, heights 0; a remainder narrower than a cell is left out
    void SetToHoneyCombGrid();   // the same in triangles, up to the far sides or beyond
    /// Nx by Ny cells over Length by Width: a part of a cylinder along y, Inclination being its radius in metres.
    /// Heights are NaN farther than that from the middle. Points are located by Dx, which should be Length/Nx and
    /// Width/Ny.
    void SetToPlane();
    /// A grid over the extent of BaseMesh, projected onto it. Nothing without one.
    void CoverWithCartesianGrid() { CoverBaseMesh(GridKind::Cartesian); }
    void CoverWithHoneyCombGrid() { CoverBaseMesh(GridKind::HoneyComb); }

    // ---- another mesh (SW_Mesh_Project.cpp); a name that leads to none, or to this one, does nothing
    /// False, with a warning, for a mesh without cells, on which nothing is projected.
    bool HasSurfaceFor(const AK_Object& projected) const;
    /// Every vertex takes the height of the other surface. Where that has none, a Cartesian grid is filled unless
    /// NumNoDataValueInterpolationIterations is 0; any other mesh loses those vertices. Components follow.
    void ProjectOnto(const SW_Mesh* mesh);
    void ProjectOnto(const AK_String& name);
    /// Normals point as those of the other mesh, which has them, and keep their z. Vertices beside it keep theirs.
    void InterpolateNormalsFrom(const SW_Mesh* mesh);
    void InterpolateNormalsFrom(const AK_String& name);

    // ---- smoothing (SW_Mesh_Smooth.cpp)
    /// n rounds in which each vertex takes the mean of the means of its cells, in x, y and z; the boundary moves, too.
    void Smooth(int n);
    void SmoothVertexNormals(int n);                                   // the normals only, until they are computed anew
    void SmoothVectorsAtVertices(AK_List<AK_Vec>& vec, int n) const;   // one vector for each vertex
    void CreateCurvatureField();   // the component "curvature", 1/m, a value for each cell
    void CreateNormalsField();     // the component "normals", unit vectors at the vertices

    // ---- edge flips (SW_Mesh_Curvature.cpp), between triangles only; they need neighbours
    /// m: how much the surface bends at the face of a triangle, which has a triangle as its neighbour, and at the next
    /// edge of either. Length times (1 - cosine of the bend), the face counting three times. 0 where the mesh ends.
    double TotalCurvature(int cell, int face) const;
    int HasFlipableEdge(int cell, int face) const;
    /// Exchanges the common edge for the other diagonal; it keeps its face in both cells. 0 where there is no other
    /// triangle. The same call again restores cells and neighbours exactly.
    int FlipEdge(int cell, int face);
    /// One pass over all edges: a flip stays if it lowers the measure by more than one per cent. Returns their number.
    int MinimizeCurvature();
    void MinimizeCurvatureRepeatedly();   // as long as each pass flips fewer edges than the one before

    // ---- rasters (SW_Mesh_Raster.cpp, SW_Mesh_NoData.cpp)
    static constexpr double noData = -1.8725e-50;   // a height that no tile has given yet

    /// Reads geometry by the extension of the name; nReduce halvings of a raster. Side files of the same name follow:
    /// names and labels (.ano), a picture (.jpg, .ppm), the coordinate system (.prj). False, with a status, if no
    /// surface came of the file: one that was there stays then, with its coordinate system. The status can also be that
    /// of a file beside it.
    bool Import(const AK_String& path, int nReduce);
    /// Writes the surface by the extension of the name. (SW_Mesh_Export.cpp)
    void Export(const AK_String& path);
    void LoadE00(const AK_String& path, int nReduce);   // one ESRI ASCII grid
    void LoadTiles(const AK_String& paths);             // several, joined by "%AK_SEP%"
    /// Extent between the first and last raster point of the raw header, and cell size; non-zero on success.
    static int GetGridParameters(const AK_String& path, AK_Vec2& xMin, AK_Vec2& xMax, double& cellSize);
    void RemoveNoDataAreas(double noDataValue);
    /// Gives every missing height of a Cartesian grid a value; given heights stay. Without any given height the mesh
    /// loses its cells, with a warning.
    void InterpolateNoDataValuesMultigrid(double noDataValue);
    static void InterpolateNoDataValuesMultigrid(int nx, int ny, AK_List<double>& z, double noDataValue);
    void InterpolateNoDataValues(int nIterations, double noDataValue);

    // ---- points and triangles (SW_Mesh_Irregular.cpp); a file that cannot be opened leaves the mesh as it is
    void LoadXyz(const AK_String& path);         // a point a line, then TriangulatePoints
    void LoadDxfPoints(const AK_String& path);   // the points of a drawing, then TriangulatePoints
    /// A list of triangles. One that ends early, or is none, is fatal.
    void LoadTbp(const AK_String& path);
    /// Makes the cells anew: the Delaunay triangles between the vertices. The same vertices give the same cells. A
    /// vertex at the place of another one stays without a cell; none get cells if all lie on one line.
    void TriangulatePoints();

    // ---- break lines (SW_Mesh_BreakLines.cpp): lines that run along edges of triangles
    void LoadNxyz(const AK_String& path);   // the lines of a file as the whole mesh
    void LoadDxf(const AK_String& path);    // the points of a drawing and its lines
    /// Triangulates anew, with the points of the lines as vertices and their segments as edges; keepPresent: 1 keeps
    /// the present vertices and segments. Where no edge comes of a segment it is halved, as often as it takes, down to
    /// a length that `_segments` then loses; a new vertex takes the mean height of the segment's ends.
    void LoadPolylines(const AK_List<AK_Polyline>& lines, int keepPresent);
    void InsertBreakLines(const AK_String& path);   // the lines of an nxyz or dxf file, to the present vertices
    void InsertBreakLine(const AK_String& id);      // the points of a line object; nothing if there is none

    // ---- contour lines (SW_Mesh_Contour.cpp)
    void ComputeContourLines();
    void ExportContourLines(const AK_String& path);
    /// True if a line of the level enters the cell through the face: the value falls along it.
    int HasContourLineEntranceFace(int cell, int face, const float* f, float level) const;
    int IndexOfContourLineExitFace(int cell, int face, const float* f, float level) const;
    /// Takes a line through one cell; 0 if it has no exit.
    int AppendContourLine(int cell, int face, const float* f, float level, int& exitFace,
                          AK_List<AK_Vec>& points) const;

    AK_String MeshNamesList() const;   // the other meshes of the tree, as paths from here

    /// Writes the text of the coordinate system that came with the raster beside another one, so that a GIS puts that
    /// in the right place. Nothing if none came. (SW_Mesh_Export.cpp)
    void WriteProjectionBeside(const AK_String& raster) const;
    /// Writes an ESRI ASCII grid, from the top row down: where a point of it lies in a cell `writeValue` writes the
    /// value and a blank, elsewhere stands the no-data value. (SW_Mesh_Export.cpp)
    void WriteRaster(std::FILE* file, int columns, int rows, const AK_Vec2& xll, double cellSize,
                     const std::function<void(int cell, const double* weights)>& writeValue) const;

protected:
    void Draw() override;   // (SW_Mesh_Draw.cpp)

private:
    friend class SW_MeshWatch;
    mutable SW_MeshWatch* _watches = nullptr;   // those that point here

    void ForgetDerived();   // what is made of the surface and kept: called when it changes
    void ForgetDisplayList();
    void DrawNow();
    void SetInclinationColor(const AK_Vec& normal) const;
    void SetContourLineColor() const;
    void DrawFaces(const SW_Mesh& surface) const;
    void MakeCoarseMesh();
    void DrawContourLines() const;
    void DrawBreakLines();
    void DrawConnectivity();
    void DrawNodeLabels() const;
    void DrawCoordinateGrid() const;
    static AK_String ReadProjection(const AK_String& path);
    void WriteGrid(std::FILE* file) const;
    void SizeGridForExport();
    /// What an import replaces.
    struct Surface {
        AK_List<AK_Vec> x{1}, vertexNormals{1};
        AK_List<IA4> lcv{1}, lcc{1};
        AK_List<int> segments{1};
        AK_Vec totalNormal;
        int isCartesian = 0, isHoneyComb = 0;
        SW_Grid cells;
        std::optional<SW_Grid> next;   // what the attributes describe; none: the mesh keeps its own
    };
    void ExchangeSurface(Surface& other);
    void TakeProjectionOf(const AK_List<AK_String>& tiles);
    void TakeGrid(const SW_Grid& grid);
    void TakeGridDescription(const SW_Grid& grid);
    bool BeginSearch(const AK_Vec2& p, int& start) const;
    int RandomStartCell(const AK_Vec2& p) const;
    enum class GridKind { Cartesian, HoneyComb };
    static bool HasSizeOfGrid(int nx, int ny);
    static void RefuseGrid();
    bool MakeGrid(GridKind kind);
    bool Cover(const SW_Mesh& base, GridKind kind);
    void CoverBaseMesh(GridKind kind);
    SW_Mesh* OtherMesh(const AK_String& name) const;
    bool HasNormals() const { return _vertexNormals.Size() == NumVertices(); }
    void FinishNewSurface();
    struct EdgePair;
    bool TrianglesAt(int cell, int face, EdgePair& pair) const;
    int FaceBack(int cell, int neighbor) const;
    void Relink(int neighbor, int v0, int v1, int owner);
    void RemoveAllCells();
    void FinishRaster(const SW_Grid& grid, double noDataValue);
    void ReadTileHeights(const AK_List<AK_String>& tiles, const SW_Grid& grid);
    void DeriveGridDescription();
    void ClearCells();   // all that Clear takes, but for vertices and segments
    template <class Net, class NumberOf>
    int TakeTriangles(const Net& net, const NumberOf& numberOf);
    void ImportSideFiles(const AK_String& path);
    bool ReadRecord(AK_Stream& stream, bool narrow);
    bool ReadGrid(AK_Stream& stream, bool narrow, bool cartesian, int numCells);

    int _isCartesian = 0;     // a regular grid of quadrilaterals
    int _isHoneyComb = 0;     // a regular grid of triangles, unless the flag above is set
    SW_Grid _grid;            // of the cells of a regular mesh
    AK_Vec _totalNormal;      // m2: sum of all area vectors
    mutable AK_List<AK_List<int>> _lvv{1};   // vertex -> neighbour vertices, built on demand
    std::unique_ptr<SW_ContourLines> _contourLines;
    double _contourLinesStep = 0;           // m, for which they were made
    std::unique_ptr<SW_Mesh> _coarseMesh;   // drawn in place of this one; made on demand, no component
    unsigned _displayList = 0;              // the drawing calls of the last time, 0 for none
    float _listBgCol[3] = {0, 0, 0};        // r, g, b: the background for which they were made
    AK_String _projection;   // text of the coordinate system that came with the raster, "" for none

    // What the next grid, cover or export is to be like. The cells of a regular mesh keep to _grid: these can be
    // changed at any time and come back from a saved project rounded to 15 digits.
    int _nx = 50, _ny = 20;
    double _dx = 5.0, _dy = 0;
    AK_Vec2 _xll{0, 0}, _xor{1000, 1000};
    double _length = 1000.0, _width = 200.0;   // m: of the trough
    double _inclination = 20.0;                // m: its radius
    SW_MeshReference _baseMesh;                // what a cover takes its heights from
    int _smootherIterations = 10;
    int _numNoDataIterations = 1000;   // 0 removes areas without data, anything else fills them

    AK_Vec2 _xActive{0, 0};   // m: where HActive and NActive answer for
    int _displayFaces = 1;
    int _drawCoarsened = 0;
    int _smoothShading = 1;
    int _shadeIncl = 0;
    double _inclMin = 30.0, _inclMax = 60.0;   // degrees
    double _breakLinesAngle = 0.0;             // degrees
    int _displayConnectivity = 0;
    int _displayNodeLabels = 0;
    int _drawGrid = 0;
    double _gridSize = 100.0;   // m
    int _displayContourLines = 1;
    double _contourLinesMinorStep = 20.0, _contourLinesMajorStep = 100.0;   // m
    double _contourLinesMinorWidth = 1.0, _contourLinesMajorWidth = 2.0;    // pixels
    int _contourLinesLabelled = 1;
    double _contourLinesLabelDistance = 500.0;   // m
    AK_String _contourLinesLabelsFont = "TIMES_ROMAN_10";
};
