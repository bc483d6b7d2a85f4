// Vector fields as tables: all vectors, or those along a line.

#include "SW_VectorField.h"

// Tells how the writing of a table ended.
static void ReportTable(bool written, const char* what, const AK_String& path)
{
    if (written)
        AK_MSG(what << " written to file '" << path << "'");
    else
        AK_MSG("WARNING:cannot open output file " << path);
}

void SW_VectorField::ExportValuesAlongPolyline(const AK_String& path)
{
    AK_List<PlacedValue> values(1);
    if (!GetValuesAlongLine(values)) return;
    AK_MSG("writing values along polyline to file '" << path << "'");
    ReportTable(WriteValuesAlongLine(path, values, {"_x", "_y", "_z"}), "values along polyline", path);
}

void SW_VectorField::ExportValues(const AK_String& path)
{
    if (!HasValues()) return;
    AK_MSG("writing values to file '" << path << "'");
    Convert();
    int rows = 0;
    const bool written = AK_WriteFile(path, [&](std::FILE* file) {
        for (int i = 0; i < _values.Size(); ++i) {
            if (!(Length(_values[i]) >= double(_minDisplayedValue))) continue;
            SW_WriteRow(file, Location(i), _values[i]);
            ++rows;
        }
    });
    Reconvert();
    ReportTable(written, "values", path);
    if (rows == 0)
        AK_MSG("WARNING:" << InLanguage("no vector is as long as a displayed one: the table is empty: ",
                                        "kein Vektor ist so lang wie ein angezeigter: die Tabelle ist leer: ")
                          << path);
}
