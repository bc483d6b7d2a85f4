// Vector fields as tables: all vectors, or those along a line.

#include "SW_VectorField.h"

static void WriteRow(std::FILE* file, const AK_Vec& x, const AK_Vec& v)
{
    std::fprintf(file, "%.15g %.15g %.15g %.15g %.15g %.15g\n", x.x, x.y, x.z, v.x, v.y, v.z);
}

void SW_VectorField::ExportValuesAlongPolyline(const AK_String& path)
{
    const SW_Polyline* line = LineToExport();
    if (!line || _values.Size() != WantedSize()) return;
    const AK_Vec& first = line->Points()[0];
    const AK_Vec& last = line->Points()[line->Points().Size() - 1];
    AK_List<SW_MeshEdgeIntersection> crossings(1);
    _mesh->GetMeshEdgeIntersectionsAlongPolyline(*line, crossings);
    const AK_Vec atFirst = ValueAtPoint(first);
    const AK_Vec atLast = ValueAtPoint(last);

    AK_MSG("writing values along polyline to file '" << path << "'");
    Convert();
    const bool written = SW_WriteTextFile(path, [&](std::FILE* file) {
        const AK_String name = Colorbar()->Attribute();
        const AK_String unit = Colorbar()->Unit();
        std::fprintf(file, "#x\ty\tz\t%s_x\t%s_y\t%s_z\n", name.c_str(), name.c_str(), name.c_str());
        std::fprintf(file, "#m\tm\tm\t%s\t%s\t%s\n", unit.c_str(), unit.c_str(), unit.c_str());
        WriteRow(file, first, atFirst);
        for (const SW_MeshEdgeIntersection& c : crossings) {
            const AK_Vec& from = _mesh->_x[c.vertex0];
            const AK_Vec& v = _values[c.vertex0];
            WriteRow(file, from + (_mesh->_x[c.vertex1] - from) * c.t, v + (_values[c.vertex1] - v) * c.t);
        }
        WriteRow(file, last, atLast);
    });
    Reconvert();
    if (written)
        AK_MSG("values along polyline written to file '" << path << "'");
    else
        AK_MSG("WARNING:cannot open output file " << path);
}

void SW_VectorField::ExportValues(const AK_String& path)
{
    if (!_mesh || _values.Size() != WantedSize()) return;
    AK_MSG("writing values to file '" << path << "'");
    Convert();
    const bool written = SW_WriteTextFile(path, [&](std::FILE* file) {
        for (int i = 0; i < _values.Size(); ++i)
            if (Length(_values[i]) >= double(_minDisplayedValue)) WriteRow(file, Location(i), _values[i]);
    });
    Reconvert();
    if (written)
        AK_MSG("values written to file '" << path << "'");
    else
        AK_MSG("WARNING:cannot open output file " << path);
}
