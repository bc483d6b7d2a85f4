// Tracing of contour lines through the cells of a mesh.
//
// A line enters a cell through a face along which the value falls from above the level to the level or below, and
// leaves it through one along which it rises, so the higher side is always on the same hand. A value exactly on the
// level counts as below it: that keeps a line from splitting at a vertex. A quadrilateral counts as four triangles
// around its centre; on a saddle the mean decides how the two lines pass each other.

#include "SW_Mesh_Contour.h"

#include "AK_Basic_NewFile.h"
#include "AK_VisObj3d_Draw.h"
#include "SW_Mesh.h"

#include <algorithm>
#include <cmath>

static const char* const defaultFont = "TIMES_ROMAN_10";

// ----------------------------------------------------------------------------------------------------------------
// Through one cell
// ----------------------------------------------------------------------------------------------------------------

int SW_Mesh::HasContourLineEntranceFace(int cell, int face, const float* f, float level) const
{
    const IA4& c = _lcv[cell];
    return f[c[face]] > level && !(f[c[NextCorner(c, face)]] > level);
}

static float MeanOfCorners(const IA4& c, const float* f)
{
    return (f[c[0]] + f[c[1]] + f[c[2]] + f[c[3]]) * 0.25f;
}

int SW_Mesh::IndexOfContourLineExitFace(int cell, int face, const float* f, float level) const
{
    const IA4& c = _lcv[cell];
    const int n = NumCorners(c);
    const bool up = n == 3 || MeanOfCorners(c, f) > level;
    for (int tried = 1; tried < n; ++tried) {
        const int k = (face + (up ? tried : n - tried)) % n;
        if (!(f[c[k]] > level) && f[c[NextCorner(c, k)]] > level) return k;
    }
    return -1;
}

// The point of the level between two points with values.
static AK_Vec PointOfLevel(float level, float fa, float fb, const AK_Vec& a, const AK_Vec& b)
{
    float t = (level - fa) / (fb - fa);
    if (t < 0) t = 0;
    if (t > 1) t = 1;
    const double wa = double(1 - t);
    const double wb = double(t);
    return {a.x * wa + b.x * wb, a.y * wa + b.y * wb, a.z * wa + b.z * wb};
}

namespace {

// Corners, counted from the entrance face, whose spokes to the centre a line crosses on its way to an exit face.
struct Spokes {
    int number;
    int corner[3];
};

} // namespace

// By exit face, counted from the entrance, and by whether the centre lies above the level.
static constexpr Spokes spokesAbove[4] = {{0, {}}, {1, {1}}, {2, {1, 2}}, {3, {1, 2, 3}}};
static constexpr Spokes spokesBelow[4] = {{0, {}}, {3, {0, 3, 2}}, {2, {0, 3}}, {1, {0}}};

int SW_Mesh::AppendContourLine(int cell, int face, const float* f, float level, int& exitFace,
                               AK_List<AK_Vec>& points) const
{
    const IA4& c = _lcv[cell];
    const auto onFace = [&](int k) {
        const int a = c[k];
        const int b = c[NextCorner(c, k)];
        return PointOfLevel(level, f[a], f[b], _x[a], _x[b]);
    };
    if (points.Size() == 0) points.Append(onFace(face));
    exitFace = IndexOfContourLineExitFace(cell, face, f, level);
    if (exitFace < 0) return 0;
    if (c[3] >= 0) {
        const float mean = MeanOfCorners(c, f);
        AK_Vec center;
        for (int k = 0; k < 4; ++k) center += _x[c[k]] * 0.25;
        const int steps = (exitFace - face + 4) % 4;
        const Spokes& spokes = mean > level ? spokesAbove[steps] : spokesBelow[steps];
        for (int i = 0; i < spokes.number; ++i) {
            const int corner = c[(face + spokes.corner[i]) % 4];
            points.Append(PointOfLevel(level, f[corner], mean, _x[corner], center));
        }
    }
    points.Append(onFace(exitFace));
    return 1;
}

// ----------------------------------------------------------------------------------------------------------------
// Lines
// ----------------------------------------------------------------------------------------------------------------

// The face of a cell behind which another one lies, searched from the last corner down; -1 if there is none.
static int FaceTowards(const SW_Mesh& mesh, int cell, int neighbor)
{
    for (int k = NumCorners(mesh._lcv[cell]) - 1; k >= 0; --k)
        if (mesh._lcc[cell][k] == neighbor) return k;
    return -1;
}

SW_ContourLine::SW_ContourLine(const SW_Mesh* mesh, const float* f, float level, int startCell, int startFace,
                               AK_List<int>& cellsVisited)
    : _value(level), _font(AK_FindBitmapFont(defaultFont))
{
    int cell = startCell;
    int face = startFace;
    // No line goes through a cell more than twice, so one that never comes back to its start ends here.
    for (long steps = 2L * mesh->NumCells(); steps > 0 && face >= 0; --steps) {
        int exitFace = -1;
        if (!mesh->AppendContourLine(cell, face, f, level, exitFace, _line._x)) break;
        cellsVisited.Append(cell);
        const int next = mesh->NeighborCell(cell, exitFace);
        if (next < 0 || next == startCell) break;
        face = FaceTowards(*mesh, next, cell);
        cell = next;
    }
    _line.annotations.SetKeyValue("iso", AK_String(double(level), "%g"), '=', ';');
}

void SW_ContourLine::WriteToDxf(std::ostream& stream, const AK_String& layerPrefix) const
{
    _line.WriteToDxf(layerPrefix + "_" + AK_String(double(_value), "%g"), stream, AK_Polyline::writtenDigits);
}

void SW_ContourLine::WriteToNxyz(std::ostream& stream) const
{
    _line.WriteToNxyz(stream, AK_Polyline::writtenDigits);
}

void SW_ContourLine::Update() const
{
    const AK_List<AK_Vec>& x = _line._x;
    aglBegin(GL_LINE_STRIP);
    for (const AK_Vec& p : x) AK_DrawVertex(p);
    aglEnd();
    if (!_labelled || x.Size() == 0) return;
    const AK_String label(double(_value), "%g");
    aglDisable(GL_DEPTH_TEST);
    AK_Vec last = x[0];
    for (const AK_Vec& p : x) {
        if (!(Length(p - last) > double(_labelDistance)) || !(Length(p - x[0]) > double(_labelDistance))) continue;
        AK_DrawTextAt(p, _font, label);
        last = p;
    }
    aglEnable(GL_DEPTH_TEST);
}

// ----------------------------------------------------------------------------------------------------------------
// All lines of a mesh
// ----------------------------------------------------------------------------------------------------------------

namespace {

struct SortedLevel {
    double level;
    int index;
};

} // namespace

// Levels from low to high; they may come in any order, and one that is no number crosses no cell.
static std::vector<SortedLevel> SortedLevels(const AK_List<double>& levels)
{
    std::vector<SortedLevel> sorted;
    for (int i = 0; i < levels.Size(); ++i)
        if (!std::isnan(levels[i])) sorted.push_back({levels[i], i});
    std::sort(sorted.begin(), sorted.end(),
              [](const SortedLevel& a, const SortedLevel& b) { return a.level < b.level; });
    return sorted;
}

// The cells that each level crosses, in ascending order.
static std::vector<AK_List<int>> CellsOfLevels(const SW_Mesh* mesh, const float* f, const AK_List<double>& levels)
{
    std::vector<AK_List<int>> cells(size_t(levels.Size()), AK_List<int>(20));
    const std::vector<SortedLevel> sorted = SortedLevels(levels);
    for (int cell = 0; cell < mesh->NumCells(); ++cell) {
        const IA4& c = mesh->_lcv[cell];
        float min = f[c[0]];
        float max = f[c[0]];
        for (int k = 1; k < NumCorners(c); ++k) {
            min = std::min(min, f[c[k]]);
            max = std::max(max, f[c[k]]);
        }
        auto level = std::lower_bound(sorted.begin(), sorted.end(), double(min),
                                      [](const SortedLevel& a, double value) { return a.level < value; });
        for (; level != sorted.end() && level->level <= double(max); ++level) cells[size_t(level->index)].Append(cell);
    }
    return cells;
}

SW_ContourLines::SW_ContourLines(const SW_Mesh* mesh, const float* f, const AK_List<double>& levels)
{
    const std::vector<AK_List<int>> cells = CellsOfLevels(mesh, f, levels);
    AK_List<char> visited(1);
    visited.Fill(mesh->NumCells(), 0);
    for (int i = 0; i < levels.Size(); ++i) {
        const AK_List<int>& ofLevel = cells[size_t(i)];
        Trace(mesh, f, float(levels[i]), ofLevel, true, visited);
        Trace(mesh, f, float(levels[i]), ofLevel, false, visited);
        for (int cell : ofLevel) visited[cell] = 0;
    }
}

// Open lines begin where the mesh ends; closed ones in any cell that no line has gone through yet.
void SW_ContourLines::Trace(const SW_Mesh* mesh, const float* f, float level, const AK_List<int>& cells, bool open,
                            AK_List<char>& visited)
{
    AK_List<int> cellsOfLine(20);
    for (int cell : cells) {
        if (!open && visited[cell]) continue;
        for (int face = NumCorners(mesh->_lcv[cell]) - 1; face >= 0; --face) {
            const bool atBoundary = mesh->NeighborCell(cell, face) < 0;
            if (atBoundary != open || !mesh->HasContourLineEntranceFace(cell, face, f, level)) continue;
            cellsOfLine.Clear();
            _lines.push_back(std::make_unique<SW_ContourLine>(mesh, f, level, cell, face, cellsOfLine));
            for (int passed : cellsOfLine) visited[passed] = 1;
        }
    }
}

void SW_ContourLines::WriteToDxf(std::ostream& stream, const AK_String& layerPrefix) const
{
    stream << "  0\nSECTION\n  2\nENTITIES\n";
    for (const auto& line : _lines) line->WriteToDxf(stream, layerPrefix);
    stream << "  0\nENDSEC\n  0\nEOF\n";
}

void SW_ContourLines::WriteToNxyz(std::ostream& stream) const
{
    for (const auto& line : _lines) line->WriteToNxyz(stream);
}

// ----------------------------------------------------------------------------------------------------------------
// Of the heights
// ----------------------------------------------------------------------------------------------------------------

void SW_Mesh::ComputeContourLines()
{
    static constexpr int maxLevels = 100000;   // a step far too small for the terrain must not fill the memory
    _contourLines.reset();
    _contourLinesStep = _contourLinesMinorStep;
    if (NumCells() == 0) return;
    AK_MSG("computing contour lines of " << _id << "...");
    AK_List<float> z(NumVertices());
    for (const AK_Vec& x : _x) z.Append(float(x.z));
    const auto [min, max] = std::minmax_element(z.begin(), z.end());
    const double lo = std::ceil(double(*min) / _contourLinesMinorStep) * _contourLinesMinorStep;
    const double hi = std::floor(double(*max) / _contourLinesMinorStep) * _contourLinesMinorStep;
    const float range = float(hi) - float(lo);
    const double steps = double(range) / _contourLinesMinorStep + 0.5;
    if (!(std::fabs(steps) < maxLevels)) {
        AK_MSG("WARNING: ContourLinesMinorStep " << _contourLinesMinorStep << " gives no sensible number of levels");
        return;
    }
    const int n = int(steps);
    if (_lcc.Size() == 0) ComputeConnectivity();
    AK_List<double> levels(1);
    for (int i = 0; i <= n; ++i) levels.Append(double(float(i) * range / float(n) + float(lo)));
    _contourLines = std::make_unique<SW_ContourLines>(this, z.Data(), levels);
    AK_MSG("contour lines of " << _id << " computed");
}

void SW_Mesh::ExportContourLines(const AK_String& path)
{
    if (!_contourLines || _contourLines->Size() == 0 || _contourLinesStep != _contourLinesMinorStep)
        ComputeContourLines();
    if (!_contourLines || _contourLines->Size() == 0) {
        _execStatus = AK_String("'") + path +
                      (NumCells() == 0 ? InLanguage("' is not written: the mesh is empty",
                                                    "' wird nicht geschrieben: das Netz ist leer")
                                       : InLanguage("' is not written: no contour line at 'ContourLinesMinorStep'",
                                                    "' wird nicht geschrieben: keine Hoehenlinie bei "
                                                    "'ContourLinesMinorStep'"));
        return;
    }
    AK_MSG("writing " << path << "...");
    const bool written = AK_WriteStream(path, [&](std::ostream& stream) {
        if (path.Extension() == "nxyz") {
            _contourLines->WriteToNxyz(stream);
            stream << "-1\n";
        } else
            _contourLines->WriteToDxf(stream, "contour");
    });
    if (!written) {
        _execStatus = AK_String("cannot open file ") + path;
        return;
    }
    AK_MSG(path << " written");
}
