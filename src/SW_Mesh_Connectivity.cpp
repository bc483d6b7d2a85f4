// Neighbours across faces, and the sums over cells that belong to vertices.
//
// An edge is shared by two cells that walk it in opposite senses. Open edges wait in the buckets of a hash table until
// their partner comes; those that wait in vain are the boundary. A pair of cells that walks its common edge the same
// way is therefore not connected. On a regular grid the neighbours are known from the numbering.

#include "SW_Mesh.h"

#include "SW_Mesh_Sweep.h"

namespace {

/// An edge whose second cell has not come yet.
struct SW_EdgeEntry {
    int vertex0, vertex1;
    int cell, face;
};

} // namespace

static constexpr int bucketCapacity = 40;       // more than a bucket holds at a time on an ordinary mesh
static constexpr int cellsPerMessage = 200000;

static void ReportProgress(int cell)
{
    if (cell % cellsPerMessage == 0) AK_MSG("cell " << cell + 1);
}

// Connects cells by their open edges; returns how many entries were looked at.
static long ConnectByEdges(const AK_List<IA4>& lcv, AK_List<IA4>& lcc, AK_List<AK_List<SW_EdgeEntry>>& buckets)
{
    long looked = 0;
    for (int cell = 0; cell < lcv.Size(); ++cell) {
        ReportProgress(cell);
        const IA4& corners = lcv[cell];
        for (int face = 0; face < 4 && corners[face] >= 0; ++face) {
            const int a = corners[face];
            const int b = corners[NextCorner(corners, face)];
            AK_List<SW_EdgeEntry>& bucket = buckets[int((unsigned(a) + unsigned(b)) % unsigned(buckets.Size()))];
            int i = 0;
            while (i < bucket.Size() && !(bucket[i].vertex0 == b && bucket[i].vertex1 == a)) ++i;
            looked += i < bucket.Size() ? i + 1 : i;
            if (i == bucket.Size()) {
                bucket.Append({a, b, cell, face});
                continue;
            }
            lcc[cell][face] = bucket[i].cell;
            lcc[bucket[i].cell][bucket[i].face] = cell;
            bucket.RemoveUnordered(i);
        }
    }
    return looked;
}

static void ConnectCartesian(const SW_Grid& grid, AK_List<IA4>& lcc)
{
    for (int i = 0; i < grid.nx; ++i)
        for (int j = 0; j < grid.ny; ++j) {
            const int cell = i * grid.ny + j;
            ReportProgress(cell);
            IA4& neighbors = lcc[cell];
            neighbors[0] = j > 0 ? cell - 1 : -1;
            neighbors[1] = i + 1 < grid.nx ? cell + grid.ny : -1;
            neighbors[2] = j + 1 < grid.ny ? cell + 1 : -1;
            neighbors[3] = i > 0 ? cell - grid.ny : -1;
        }
}

void SW_Mesh::ComputeConnectivity()
{
    const int numCells = NumCells();
    if (NumVertices() == 0 || numCells == 0) return;
    AK_MSG("computing connectivity for " << numCells << " cells...");
    AK_MSG("initializing lcc...");
    _lcc.Fill(numCells, IA4());
    AK_MSG("computing lcc...");
    long looked = 0;
    if (_isCartesian)
        ConnectCartesian(_grid, _lcc);
    else {
        AK_List<AK_List<SW_EdgeEntry>> buckets(1);
        buckets.SetSize(AK_Vec::NextPrimeNumber(NumVertices() / 7 + 13));
        for (AK_List<SW_EdgeEntry>& bucket : buckets) bucket.Redimension(bucketCapacity);
        looked = ConnectByEdges(_lcv, _lcc, buckets);
    }
    AK_MSG("lcc ready, " << looked / numCells << " search steps per cell");
    AK_MSG("computing connectivity done");
}

void SW_Mesh::ComputeVertexNormals()
{
    _vertexNormals.Fill(NumVertices(), AK_Vec());
    _totalNormal = AK_Vec();
    const auto share = [this](int cell) {
        const int n = NumCorners(_lcv[cell]);
        const AK_Vec area = CellNormal(cell);
        _totalNormal += area;
        return AK_Vec{area.x / n, area.y / n, area.z / n};
    };
    SW_SweepToVertices(_lcv, share, [this](int vertex, const AK_Vec& normal) { _vertexNormals[vertex] += normal; });
}
