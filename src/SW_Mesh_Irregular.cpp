// Irregular terrain: scattered points become the Delaunay triangles between them, or the triangles come ready.
//
//   xyz   text, "x y z" or "x,y,z" a line; what begins with no three numbers is passed over. Only a line feed ends a
//         line: without one the last is lost.
//   dxf   the entities POINT, by their group codes " 10", " 20", " 30"
//   tbp   the lower and the upper corner of the box, the number of vertices, x y z of each, the number of triangles,
//         three vertices of each, counted from 1, and a number without meaning here
//
// A file can hold anything. A coordinate is a number that a float can hold; points are appended as they come, and the
// counts of a tbp file are held against what is left of it before memory is asked for.

#include "SW_Mesh.h"

#include "SW_Mesh_Delaunay.h"
#include "SW_Mesh_Tokens.h"
#include "SW_Polyline_Text.h"

// ----------------------------------------------------------------------------------------------------------------
// Points
// ----------------------------------------------------------------------------------------------------------------

// The start of the next line that a line feed ends, with blanks for commas; false at the end of the file.
static bool ReadXyzLine(AK_TextReader& reader, AK_List<char>& line)
{
    static constexpr int maxLine = 1000;   // characters in which three numbers have room
    line.Clear();
    for (int byte = reader.ReadByte(); byte >= 0; byte = reader.ReadByte()) {
        if (byte == '\n') {
            line.Append(0);
            return true;
        }
        if (byte != 0 && line.Size() < maxLine) line.Append(byte == ',' ? ' ' : char(byte));
    }
    return false;
}

void SW_Mesh::LoadXyz(const AK_String& path)
{
    AK_TextReader reader(path);
    if (!reader.IsOpen()) {
        _execStatus = AK_String("cannot open file ") + path;
        return;
    }
    Clear();
    AK_MSG("reading xyz file " << path << "...");
    AK_List<char> line(128);
    while (ReadXyzLine(reader, line)) {
        double p[3];
        if (ScanCoordinates(line.Data(), false, p, 3)) AddVertex({p[0], p[1], p[2]});
    }
    AK_MSG("read " << NumVertices() << " points from " << path);
    _x.Redimension(_x.Size());
    TriangulatePoints();
}

namespace {

// Takes the lines of a DXF file one after the other and gathers its points.
class DxfPoints {
public:
    explicit DxfPoints(AK_List<AK_Vec>& points) : _points(points) {}

    void Take(const AK_String& line)
    {
        if (_next >= 0)
            TakeCoordinate(line);
        else if (line == "POINT") {
            _inside = true;
            _point = AK_Vec();
        } else if (_inside)
            for (int k = 0; k < 3; ++k)
                if (line == codes[k]) _next = k;
    }

private:
    void TakeCoordinate(const AK_String& line)
    {
        double* const coordinate[] = {&_point.x, &_point.y, &_point.z};
        const int k = _next;
        _next = -1;
        if (!ScanCoordinates(line.c_str(), false, coordinate[k], 1)) {
            _inside = false;
            return;
        }
        if (k < 2) return;
        _points.Append(_point);
        _inside = false;
    }

    static constexpr const char* codes[] = {" 10", " 20", " 30"};
    AK_List<AK_Vec>& _points;
    AK_Vec _point;
    bool _inside = false;   // of a point
    int _next = -1;         // the coordinate that the next line holds, -1 for none
};

}   // namespace

void SW_Mesh::LoadDxfPoints(const AK_String& path)
{
    static constexpr int maxLine = 127;
    AK_TextReader reader(path);
    if (!reader.IsOpen()) {
        _execStatus = AK_String("cannot open dxf file ") + path;
        return;
    }
    Clear();
    AK_MSG("reading points from " << path);
    DxfPoints points(_x);
    AK_String line;
    while (reader.ReadLine(line, maxLine)) {
        line.RemoveLineEnd();
        points.Take(line);
    }
    AK_MSG("read " << NumVertices() << " points from " << path);
    _x.Redimension(_x.Size());
    TriangulatePoints();
}

// ----------------------------------------------------------------------------------------------------------------
// Triangulation
// ----------------------------------------------------------------------------------------------------------------

// Inserts the points, and tells now and then how far it is.
static void InsertPoints(AK_Triangulation2& net, const AK_List<const AK_Vec2*>& order)
{
    static constexpr int pointsPerMessage = 50000;
    const std::clock_t start = std::clock();
    const int n = order.Size();
    for (int k = 0; k < n; ++k) {
        if (k % pointsPerMessage == 0) AK_MSG("inserted " << k << " of " << n << " points...");
        net.Insert(order[k]);
    }
    AK_MSG("inserted " << net.NumInserted() << " of " << n << " points into Delaunay triangulation in "
                       << double(std::clock() - start) / CLOCKS_PER_SEC << "s");
    AK_MSG(net.NumTris() << " triangles (including auxiliary triangles)");
    net.PrintStatistics();
}

void SW_Mesh::ClearCells()
{
    AK_List<AK_Vec> vertices(1);
    AK_List<int> segments(1);
    vertices.Swap(_x);
    segments.Swap(_segments);
    Clear();
    _x.Swap(vertices);
    _segments.Swap(segments);
}

void SW_Mesh::TriangulatePoints()
{
    ClearCells();
    if (NumVertices() == 0) {
        AK_MSG("no points to triangulate");
        return;
    }
    AK_List<AK_Vec2> xProj(NumVertices());
    for (const AK_Vec& x : _x) xProj.Append(AK_Triangulation2::Point(x));
    AK_Vec2 lo, hi;
    SW_BoxOf(xProj, lo, hi);
    const AK_List<const AK_Vec2*> order = SW_ShuffledPoints(xProj, 333);
    AK_MSG("performing Delaunay triangulation...");
    AK_Triangulation2 net(lo, hi);
    InsertPoints(net, order);
    const int discarded = TakeTriangles(net, [&](const AK_Tri2* t, int j) {
        const int n = int(t->Pt(j) - xProj.Data());
        AK_ASSERT(t->Pt(j) == &xProj[n]);
        return n;
    });
    AK_MSG("triangulation done, " << NumCells() << " triangles");
    SW_ReportDiscarded(discarded);
    if (NumCells() == 0) SW_ReportNoCells(NumVertices());
    ComputeConnectivity();
    _totalNormal = Normal();   // the vertex normals can wait until they are drawn
}

// ----------------------------------------------------------------------------------------------------------------
// Ready triangles
// ----------------------------------------------------------------------------------------------------------------

namespace {

// A tbp file; good() is false from the first number on that is missing or cannot be.
class TbpReader {
public:
    explicit TbpReader(const AK_String& path) : _tokens(path) {}
    bool IsOpen() const { return _tokens.IsOpen(); }
    bool good() const { return _good; }

    AK_Vec Point()
    {
        AK_Vec p;
        for (double* coordinate : {&p.x, &p.y, &p.z})
            _good = _good && _tokens.NextDouble(*coordinate) && IsCoordinate(*coordinate);
        return p;
    }

    int Int(int min, int max)
    {
        int value = 0;
        _good = _good && _tokens.NextInt(value) && value >= min && value <= max;
        return value;
    }

    // The number of items of so many tokens each, which take a character and a blank at least.
    int Count(int tokensPerItem)
    {
        const int n = Int(0, INT_MAX);
        _good = _good && 2L * tokensPerItem * n <= _tokens.Remaining() + 1;
        return _good ? n : 0;
    }

private:
    SW_TokenReader _tokens;
    bool _good = true;
};

}   // namespace

// Reads the triangles that have an area seen from above, as they run; returns how many have not.
static int ReadTriangles(TbpReader& stream, const AK_List<AK_Vec>& x, AK_List<IA4>& lcv)
{
    const int n = lcv.Size();
    int kept = 0;
    for (int i = 0; i < n; ++i) {
        IA4 cell;
        for (int k = 0; k < 3; ++k) cell[k] = stream.Int(1, x.Size()) - 1;
        stream.Int(INT_MIN, INT_MAX);
        AK_ASSERT(stream.good());
        const AK_Vec2 p0 = x[cell[0]];
        if (Cross(AK_Vec2(x[cell[1]]) - p0, AK_Vec2(x[cell[2]]) - p0) > 0) lcv[kept++] = cell;
    }
    lcv.Redimension(kept);
    lcv.SetSize(kept);
    return n - kept;
}

void SW_Mesh::LoadTbp(const AK_String& path)
{
    TbpReader stream(path);
    if (!stream.IsOpen()) {
        AK_MSG("cannot open file " << path << "!");
        return;
    }
    Clear();
    AK_MSG("reading tbp file " << path << "...");
    const AK_Vec xMin = stream.Point();
    const AK_Vec xMax = stream.Point();
    AK_ASSERT(stream.good());
    AK_MSG("xMin:" << xMin.x << " " << xMin.y << " " << xMin.z);
    AK_MSG("xMax:" << xMax.x << " " << xMax.y << " " << xMax.z);

    const int numVertices = stream.Count(3);
    AK_ASSERT(stream.good());
    AK_MSG(numVertices << " vertices...");
    _x.SetSize(numVertices);
    for (AK_Vec& x : _x) x = stream.Point();
    AK_ASSERT(stream.good());

    const int numTriangles = stream.Count(4);
    AK_ASSERT(stream.good());
    AK_MSG(numTriangles << " triangles...");
    _lcv.SetSize(numTriangles);
    const int discarded = ReadTriangles(stream, _x, _lcv);
    AK_MSG("reading tbp file " << path << " done");
    if (discarded > 0) AK_MSG(discarded << " cells discarded because of zero or negative area!");
    ComputeConnectivity();
    ComputeVertexNormals();
}
