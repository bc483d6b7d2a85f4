// What scalar and vector fields share: the mesh they lie on, the record, conversion for display, change of location.
// For SW_ScalarField* and SW_VectorField* only; the classes stand in their own headers.

#pragma once

#include "AK_Basic_NewFile.h"
#include "AK_Colorbar.h"
#include "SW_Mesh.h"
#include "SW_Mesh_Sweep.h"
#include "SW_Polyline.h"
#include "qvt_sci.h"

#include <cstdio>
#include <initializer_list>
#include <type_traits>

/// A row of an exported table: a place and what is there.
inline void SW_WriteRow(std::FILE* file, const AK_Vec& x, double value)
{
    std::fprintf(file, "%.15g %.15g %.15g %.15g\n", x.x, x.y, x.z, value);
}
inline void SW_WriteRow(std::FILE* file, const AK_Vec& x, const AK_Vec& v)
{
    std::fprintf(file, "%.15g %.15g %.15g %.15g %.15g %.15g\n", x.x, x.y, x.z, v.x, v.y, v.z);
}

/// Values in 64 bits, for what is computed from them.
inline double SW_Exact(float value) { return double(value); }
inline const AK_Vec& SW_Exact(const AK_Vec& value) { return value; }

/// Base of the fields: one value for each vertex or for each cell of a mesh, which it does not own.
template <class Field, class Value>
class SW_FieldOf : public AK_Class<Field, AK_VisObj3d> {
    using Base = AK_Class<Field, AK_VisObj3d>;

public:
    const SW_Mesh* Mesh() const { return _mesh; }
    bool OnVertices() const { return _onVertices != 0; }

    AK_List<Value> _values{1};   // read and written directly by those who compute
    int _onVertices = 0;         // 1: one value for each vertex, 0: one for each cell

    AK_Colorbar* Colorbar() const { return static_cast<AK_Colorbar*>(this->_components[0]); }
    AK_String Label() const { return Colorbar()->Label(); }
    void SetLabel(const AK_String& label) { Colorbar()->Label(label); }

    /// Gives the colour bar the range of the values, if it is to follow them.
    void UpdateColorBar()
    {
        const Field& field = static_cast<const Field&>(*this);
        if (_values.Size() > 0) Colorbar()->FollowData(field.Min(), field.Max());
    }

    /// Takes the last value for value i: as its location does that is removed.
    void RemoveValue(int i) { _values.RemoveUnordered(i); }

    /// The record: tag, number of values, the values. The mesh is not part of it. 0 on success, else 1 with a status.
    int SaveDataTo(AK_Stream& stream) const
    {
        stream.Write(AK_String(Field::recordTag));
        stream.Write(_values);
        return stream.Failed() ? this->IoError(AK_HERE) : 0;
    }

    int LoadDataFrom(AK_Stream& stream)
    {
        _values.Clear();
        AK_String header;
        stream.Read(header);
        if (!(header == Field::recordTag)) return this->IoError(AK_HERE);
        stream.Read(_values);
        return stream.Failed() ? this->IoError(AK_HERE) : 0;
    }

    /// Moves the values to the other kind of location: each place gets the plain mean of the values that touch it.
    void ConvertTopo()
    {
        AK_List<Value> moved(1);
        if (_onVertices)
            for (const IA4& cell : _mesh->_lcv) moved.Append(SW_MeanOfCorners(cell, _values.Data()));
        else
            SW_MeansAtVertices(
                _mesh->_lcv, [this](int cell) { return _values[cell]; }, Value(), _mesh->NumVertices(), moved);
        _values.Swap(moved);
        _onVertices = !_onVertices;
    }

    /// Puts the data back that a conversion for display has replaced.
    void Reconvert()
    {
        if (_savedValues.Size() == 0) return;
        _values = _savedValues;
        _savedValues.Clear();
    }

    AK_Vec Location(int i) const { return _onVertices ? _mesh->_x[i] : _mesh->CellCenter(i); }

protected:
    SW_FieldOf(const AK_String& id, AK_Object* parent) : Base(id, parent) {}

    void AddColorbar()
    {
        this->AddComponent(new AK_Colorbar("Colorbar", nullptr));
        SetLabel(this->_id);
    }

    /// Number of values that the mesh asks for.
    int WantedSize() const { return _onVertices ? _mesh->NumVertices() : _mesh->NumCells(); }

    /// Keeps the pointer and makes room: values survive on a mesh of the same size.
    void TakeMesh(const SW_Mesh* mesh)
    {
        _mesh = mesh;
        if (!mesh)
            _values.Clear();
        else if (_values.Size() != WantedSize())
            _values.Fill(WantedSize(), Value());
        this->SetExecTime("SetMesh");
    }

    /// The name of the formula by which values are converted for display; "" for none.
    AK_String DataConversion() const
    {
        const AK_String name = this->Get("getDataConversion");
        return name == "none" || name == ak_null ? AK_String() : name;
    }

    /// Calls `convert(i)` for each value, on behalf of this object, behind the formula's "init_" function.
    template <class Convert>
    void ConvertValues(const AK_String& name, const Convert& convert)
    {
        const AK_Object::CodeOf running(this);
        _savedValues = _values;
        if (Symbol* init = AK_Object::FormulaFunction(Field::_qvt_sci_namespace, AK_String("init_") + name, ""))
            qvt_sci_Call(init);
        for (int i = 0; i < _values.Size(); ++i) convert(i);
    }

    /// True if there are values on a mesh; else the status says why nothing can be exported.
    bool HasValues() const
    {
        AK_String& status = AK_Object::_execStatus;
        if (!_mesh)
            status = InLanguage("the field has no values yet: run or load the simulation, or update the view, first",
                                "das Feld hat noch keine Werte: zuerst die Simulation rechnen oder laden oder die "
                                "Ansicht auffrischen");
        else if (_mesh->NumCells() == 0)
            status = InLanguage("the mesh of the field is empty", "das Netz des Feldes ist leer");
        else if (_values.Size() != WantedSize())
            status = InLanguage("the values belong to another state of the mesh: update the view first",
                                "die Werte gehoeren zu einem anderen Stand des Netzes: zuerst die Ansicht auffrischen");
        else
            return true;
        return false;
    }

    /// The line whose values are to be exported; null if they cannot be.
    const SW_Polyline* LineToExport() const
    {
        if (!_mesh || !_onVertices) return nullptr;
        const SW_Polyline* line = SW_FindLine(*this, _selectedPolyline);
        return line && line->NumVertices() > 1 ? line : nullptr;
    }

    /// Says why there is no such line.
    void TellWhyNoLine() const
    {
        AK_String& status = AK_Object::_execStatus;
        if (!_onVertices)
            status = InLanguage("values along a line are those on vertices, and this field has one for each cell",
                                "Werte entlang einer Linie sind solche auf Knoten, und dieses Feld hat einen je Zelle");
        else if (_selectedPolyline.IsEmpty())
            status = InLanguage("no line is selected", "es ist keine Linie gewaehlt");
        else
            status = AK_String(InLanguage("there is no line of two points or more '",
                                          "es gibt keine Linie aus mindestens zwei Punkten '")) +
                     _selectedPolyline + "'";
    }

    AK_String PolylinesList() const { return SW_PathsOfType(*this, "Polyline"); }

    struct PlacedValue {
        AK_Vec place;
        std::decay_t<decltype(SW_Exact(Value()))> value;
    };

    /// The values, as they are displayed, at the ends of the selected line and where it crosses edges of the mesh.
    /// False, with a status, if it cannot be exported.
    bool GetValuesAlongLine(AK_List<PlacedValue>& out)
    {
        if (!HasValues()) return false;
        const SW_Polyline* line = LineToExport();
        if (!line) TellWhyNoLine();
        if (!line) return false;
        Field& field = static_cast<Field&>(*this);
        AK_List<SW_MeshEdgeIntersection> crossings(1);
        _mesh->GetMeshEdgeIntersectionsAlongPolyline(*line, crossings);
        // Copies, since a formula for display can do anything to the line.
        const AK_Vec first = line->Points()[0];
        const AK_Vec last = line->Points()[line->NumVertices() - 1];
        out.Append({first, field.ValueAtPoint(AK_Vec2(first))});
        field.Convert();
        for (const SW_MeshEdgeIntersection& c : crossings) {
            const AK_Vec& from = _mesh->_x[c.vertex0];
            const auto a = SW_Exact(_values[c.vertex0]);
            const auto b = SW_Exact(_values[c.vertex1]);
            out.Append({from + (_mesh->_x[c.vertex1] - from) * c.t, a + (b - a) * c.t});
        }
        Reconvert();
        out.Append({last, field.ValueAtPoint(AK_Vec2(last))});
        return true;
    }

    /// Writes such values as a table. Each component of a value is a column, named by the attribute and a suffix.
    bool WriteValuesAlongLine(const AK_String& path, const AK_List<PlacedValue>& values,
                              std::initializer_list<const char*> suffixes) const
    {
        return AK_WriteFile(path, [&](std::FILE* file) {
            const AK_String name = Colorbar()->Attribute();
            const AK_String unit = Colorbar()->Unit();
            std::fputs("#x\ty\tz", file);
            for (const char* suffix : suffixes) std::fprintf(file, "\t%s%s", name.c_str(), suffix);
            std::fputs("\n#m\tm\tm", file);
            for (std::size_t column = 0; column < suffixes.size(); ++column) std::fprintf(file, "\t%s", unit.c_str());
            std::fputc('\n', file);
            for (const PlacedValue& row : values) SW_WriteRow(file, row.place, row.value);
        });
    }

    SW_MeshPointer<const SW_Mesh> _mesh;   // not owned
    AK_List<Value> _savedValues{1};        // the data while a conversion for display is in force
    AK_String _selectedPolyline;
};
