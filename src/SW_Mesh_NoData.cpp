// Missing heights: filled with values, or their cells removed. Given heights are never changed.
//
// Filling works on levels of resolution. One ring of each hole is filled from its rim, then the grid is halved and the
// rest of the hole handed down, until a level has no hole left; on the way up each level fills only what it did not
// know, and smooths that once. So the coarse levels carry the values across wide holes, time is linear in the size of
// the grid, and the values run on beyond the data. A raster without a single height must not come here: no level would
// ever be free of holes.

#include "SW_Mesh.h"

#include "SW_Mesh_Contour.h"

#include <cmath>

// ----------------------------------------------------------------------------------------------------------------
// Removing
// ----------------------------------------------------------------------------------------------------------------

// Break lines keep the pieces both ends of which are left.
static void RenumberSegments(const AK_List<int>& newIndex, AK_List<int>& segments)
{
    int kept = 0;
    for (int i = 0; i + 1 < segments.Size(); i += 2) {
        const int a = newIndex[segments[i]];
        const int b = newIndex[segments[i + 1]];
        if (a < 0 || b < 0) continue;
        segments[kept++] = a;
        segments[kept++] = b;
    }
    segments.SetSize(kept);
}

void SW_Mesh::RemoveNoDataAreas(double noDataValue)
{
    AK_List<int> newIndex(NumVertices());
    AK_List<AK_Vec> kept(1);
    for (const AK_Vec& x : _x) newIndex.Append(x.z == noDataValue ? -1 : kept.Append(x));
    const int numRemoved = NumVertices() - kept.Size();
    if (numRemoved == 0) return;
    _x.Swap(kept);
    _vertexNormals.Clear();   // they and the lists of neighbours went by the old numbers
    _lvv.Clear();
    RenumberSegments(newIndex, _segments);
    AK_MSG("removed " << numRemoved << " no-data-vertices");

    int numCellsRemoved = 0;
    // Backwards: the cell that is moved into a gap has been mapped already.
    for (int cell = NumCells() - 1; cell >= 0; --cell) {
        IA4& corners = _lcv[cell];
        bool remains = true;
        for (int k = 0; k < 4 && corners[k] >= 0 && remains; ++k) {
            corners[k] = newIndex[corners[k]];
            remains = corners[k] >= 0;
        }
        if (remains) continue;
        _lcv.RemoveUnordered(cell);
        ++numCellsRemoved;
    }
    if (numCellsRemoved == 0) return;
    AK_MSG("removed " << numCellsRemoved << " no-data-cells");
    _isCartesian = 0;
    _isHoneyComb = 0;
    if (NumCells() == 0) _lcc.Clear();
    if (_lcc.Size() > 0) ComputeConnectivity();
}

// ----------------------------------------------------------------------------------------------------------------
// Filling level by level
// ----------------------------------------------------------------------------------------------------------------

namespace {

// One level: M x N points, y varying fastest, with a mark for each point whose value is known.
struct Level {
    int M, N;
    AK_List<double>& z;
    AK_List<char> known;
    AK_List<int> weight;   // sum of the weights that a point has received

    Level(int nx, int ny, AK_List<double>& heights, double noDataValue)
        : M(nx + 1), N(ny + 1), z(heights), known(heights.Size()), weight(heights.Size())
    {
        known.Fill(z.Size(), 1);
        weight.Fill(z.Size(), 1);
        for (int p = 0; p < z.Size(); ++p) {
            if (z[p] != noDataValue) continue;
            known[p] = 0;
            weight[p] = 0;
            z[p] = 0;
        }
    }

    bool Inside(int i, int j) const { return i >= 0 && i < M && j >= 0 && j < N; }

    // Adds a known point to a weighted sum.
    void Gather(int i, int j, int w, double& sum, int& count) const
    {
        if (!Inside(i, j) || !known[i * N + j]) return;
        sum += w * z[i * N + j];
        count += w;
    }

    // Adds a weighted value to an unknown point.
    void Scatter(int i, int j, int w, double value)
    {
        if (!Inside(i, j) || known[i * N + j]) return;
        z[i * N + j] += value * w;
        weight[i * N + j] += w;
    }
};

struct StencilPoint {
    int i, j, weight;
};

}   // namespace

// A coarse point and the fine ones around it.
static constexpr StencilPoint stencil[] = {{0, 0, 4},   {-1, 0, 2}, {1, 0, 2},  {0, -1, 2}, {0, 1, 2},
                                           {-1, -1, 1}, {1, -1, 1}, {-1, 1, 1}, {1, 1, 1}};
static constexpr StencilPoint neighbors[] = {{-1, 0, 1}, {1, 0, 1}, {0, -1, 1}, {0, 1, 1}};

// Fills the points that touch a given one; what is filled counts as known only afterwards.
static void FillFirstRing(Level& level)
{
    for (int i = 0; i < level.M; ++i)
        for (int j = 0; j < level.N; ++j) {
            const int p = i * level.N + j;
            if (level.known[p]) continue;
            double sum = 0;
            int count = 0;
            for (const StencilPoint& n : neighbors) level.Gather(i + n.i, j + n.j, n.weight, sum, count);
            if (count == 0) continue;
            level.z[p] = sum / count;
            level.weight[p] = 1;
        }
    for (int p = 0; p < level.z.Size(); ++p)
        if (level.weight[p]) level.known[p] = 1;
}

// The heights of the coarse grid; returns how many of them are missing.
static int Restrict(const Level& level, int coarseNx, int coarseNy, AK_List<double>& coarse, double noDataValue)
{
    int numUndefined = 0;
    for (int i = 0; i <= coarseNx; ++i)
        for (int j = 0; j <= coarseNy; ++j) {
            double sum = 0;
            int count = 0;
            for (const StencilPoint& n : stencil) level.Gather(2 * i + n.i, 2 * j + n.j, n.weight, sum, count);
            numUndefined += count == 0;
            coarse.Append(count > 0 ? sum / count : noDataValue);
        }
    return numUndefined;
}

static void Prolong(Level& level, int coarseNx, int coarseNy, const AK_List<double>& coarse)
{
    level.weight.Fill(level.z.Size(), 0);
    for (int i = 0; i <= coarseNx; ++i)
        for (int j = 0; j <= coarseNy; ++j)
            for (const StencilPoint& n : stencil)
                level.Scatter(2 * i + n.i, 2 * j + n.j, n.weight, coarse[i * (coarseNy + 1) + j]);
    for (int p = 0; p < level.z.Size(); ++p)
        if (!level.known[p]) level.z[p] /= level.weight[p];
}

// One sweep over the points that were not known, in place: what is replaced feeds those after it.
static void SmoothUnknown(Level& level)
{
    const AK_List<char> wasKnown = level.known;
    level.known.Fill(level.z.Size(), 1);
    for (int i = 0; i < level.M; ++i)
        for (int j = 0; j < level.N; ++j) {
            const int p = i * level.N + j;
            if (wasKnown[p]) continue;
            double sum = 0;
            int count = 0;
            for (const StencilPoint& n : neighbors) level.Gather(i + n.i, j + n.j, n.weight, sum, count);
            if (count > 0) level.z[p] = sum / count;
        }
}

static bool HasHeights(const AK_List<double>& z, double noDataValue)
{
    for (double height : z)
        if (height != noDataValue) return true;
    return false;
}

static const char* const nothingGiven = "WARNING: no-data values only: there is nothing to fill them from";
static const char* const notCartesian = "cannot interpolate no data values for non-Cartesian grids";

void SW_Mesh::InterpolateNoDataValuesMultigrid(int nx, int ny, AK_List<double>& z, double noDataValue)
{
    AK_MSG("multigrid interpolation: grid size " << nx << " x " << ny << "...");
    if (long(nx + 1L) * (ny + 1L) != z.Size()) {
        AK_MSG(notCartesian);
        return;
    }
    if (!HasHeights(z, noDataValue)) {
        AK_MSG(nothingGiven);
        return;
    }
    Level level(nx, ny, z, noDataValue);
    FillFirstRing(level);
    const int coarseNx = nx / 2;
    const int coarseNy = ny / 2;
    AK_List<double> coarse((coarseNx + 1) * (coarseNy + 1));
    const int numUndefined = Restrict(level, coarseNx, coarseNy, coarse, noDataValue);
    AK_MSG(numUndefined << " undefined points on coarse grid");
    if (numUndefined > 0) InterpolateNoDataValuesMultigrid(coarseNx, coarseNy, coarse, noDataValue);
    Prolong(level, coarseNx, coarseNy, coarse);
    AK_MSG("multigrid smoothing: grid size " << nx << " x " << ny << "...");
    SmoothUnknown(level);
}

// A raster without heights keeps its vertices, but no flow can run on it.
void SW_Mesh::RemoveAllCells()
{
    AK_MSG(nothingGiven << ", the mesh '" << _id << "' has no cells");
    _lcv.Clear();
    _lcc.Clear();
    _vertexNormals.Clear();
    _isCartesian = 0;
    _isHoneyComb = 0;
}

void SW_Mesh::InterpolateNoDataValuesMultigrid(double noDataValue)
{
    if (!_isCartesian) {
        AK_MSG(notCartesian);
        return;
    }
    AK_List<double> z(NumVertices());
    int numMissing = 0;
    for (const AK_Vec& x : _x) {
        z.Append(x.z);
        numMissing += x.z == noDataValue;
    }
    if (numMissing == 0) return;
    if (numMissing == NumVertices()) {
        RemoveAllCells();
        return;
    }
    AK_MSG("filling no-data-areas (" << numMissing << " grid points) with interpolated/extrapolated values...");
    InterpolateNoDataValuesMultigrid(_grid.nx, _grid.ny, z, noDataValue);
    for (int i = 0; i < NumVertices(); ++i) _x[i].z = z[i];
    AK_MSG("filling no-data-areas with intrepolated/extrapolated values done.");
    if (Parent() && Parent()->Id() == "ReleaseDHMs")
        AK_MSG("WARNING: the filled gaps of '" << _id << "' release snow like the rest. To leave them out, make a mesh "
                                               << "with CreateMesh, set its NumNoDataValueInterpolationIterations to "
                                               << "0, and import into that");
}

// ----------------------------------------------------------------------------------------------------------------
// Filling from the front
// ----------------------------------------------------------------------------------------------------------------

void SW_Mesh::InterpolateNoDataValues(int nIterations, double noDataValue)
{
    if (!_isCartesian) {
        AK_MSG(notCartesian);
        return;
    }
    const int M = _grid.nx + 1;
    const int N = _grid.ny + 1;
    double min = 1e30;
    double max = -1e30;
    int numMissing = 0;
    AK_List<char> missing(1);
    missing.Fill(NumVertices(), 0);
    for (int p = 0; p < NumVertices(); ++p) {
        if (_x[p].z == noDataValue) {
            missing[p] = 1;
            _x[p].z = 0;
            ++numMissing;
            continue;
        }
        min = std::min(min, _x[p].z);
        max = std::max(max, _x[p].z);
    }
    AK_MSG("interpolating z-values at " << numMissing << " NODATA points");
    int numCorrections = 1;
    for (int sweep = 0; sweep < nIterations && numCorrections > 0; ++sweep) {
        numCorrections = 0;
        double maxChange = 0;
        for (int i = 0; i < M; ++i)
            for (int j = 0; j < N; ++j) {
                if (!missing[i * N + j]) continue;
                double sum = 0;
                int count = 0;
                for (const StencilPoint& n : neighbors) {
                    const int ni = i + n.i;
                    const int nj = j + n.j;
                    if (ni < 0 || ni >= M || nj < 0 || nj >= N || missing[ni * N + nj]) continue;
                    sum += _x[ni * N + nj].z;
                    ++count;
                }
                if (count == 0) continue;
                AK_Vec& x = _x[i * N + j];
                maxChange = std::max(maxChange, std::fabs(sum / count - x.z));
                x.z = sum / count;
                missing[i * N + j] = 0;
                ++numCorrections;
            }
        AK_MSG(numCorrections << " corrections, max. " << maxChange << " (" << maxChange / (max - min + 1e-30) * 100
                              << "%)");
    }
    AK_MSG("interpolation done.");
}
