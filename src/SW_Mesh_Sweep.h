// The sweep through the cells that brings values of cells to the vertices, and its way back: what smoothing, vertex
// normals and the change of a field's location share.
//
// Values are added in the order of the cells, and of the corners within one, in their own type: sums are the same bytes
// in every build.

#pragma once

#include "SW_Mesh_Query.h"

inline float SW_Mean(float sum, int count) { return sum / float(count); }
inline AK_Vec SW_Mean(const AK_Vec& sum, int count) { return sum * (1.0 / count); }

/// The plain mean of the values at the corners of a cell.
template <class Value>
Value SW_MeanOfCorners(const IA4& cell, const Value* atVertices)
{
    const int n = NumCorners(cell);
    Value sum{};
    for (int k = 0; k < n; ++k) sum += atVertices[cell[k]];
    return SW_Mean(sum, n);
}

/// Calls `add(vertex, value)` for each corner of each cell, value being `ofCell(cell)`.
template <class OfCell, class Add>
void SW_SweepToVertices(const AK_List<IA4>& cells, const OfCell& ofCell, const Add& add)
{
    for (int cell = 0; cell < cells.Size(); ++cell) {
        const IA4& c = cells[cell];
        const auto value = ofCell(cell);
        const int n = NumCorners(c);
        for (int k = 0; k < n; ++k) add(c[k], value);
    }
}

/// Gives each vertex the plain mean of the values of the cells that touch it, and `ofNone` to one that none touches.
template <class Value, class OfCell>
void SW_MeansAtVertices(const AK_List<IA4>& cells, const OfCell& ofCell, const Value& ofNone, int numVertices,
                        AK_List<Value>& means)
{
    AK_List<int> counts(1);
    counts.Fill(numVertices, 0);
    means.Fill(numVertices, Value());
    SW_SweepToVertices(cells, ofCell, [&](int vertex, const Value& value) {
        means[vertex] += value;
        ++counts[vertex];
    });
    for (int i = 0; i < numVertices; ++i) means[i] = counts[i] > 0 ? SW_Mean(means[i], counts[i]) : ofNone;
}
