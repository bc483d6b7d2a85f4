// Many lines in one object, each with a name and a flag that tells whether it is selected: imported drawings, from
// which single lines are taken.

#pragma once

#include "AK_VisObj3d.h"
#include "SW_Mesh_Reference.h"
#include "SW_Polyline_Points.h"

/// Type "PolylineSet".
class SW_PolylineSet : public AK_Class<SW_PolylineSet, AK_VisObj3d> {
public:
    static constexpr const char* className = "SW_PolylineSet";
    static std::span<const Row> Rows();

    SW_PolylineSet(const AK_String& id, AK_Object* parent);
    int SaveData(AK_Stream& stream) const override;
    int LoadData(AK_Stream& stream) override;
    int BoundingBox(float* lo, float* hi) const override;

    int Size() const { return _polylines.Size(); }
    const AK_Polyline& Line(int i) const { return _polylines[i]; }
    const AK_String& Name(int i) const { return _names[i]; }

    /// Adds the lines of a file, by its extension: dxf, ano, nxyz, xy, xyz. Each one is selected. Names: the layer in a
    /// DXF file, the name line in an ano file, else the annotation "name"; "pl_" or "p_" and a number without one.
    void Import(const AK_String& path);
    /// Writes all lines: dxf, with the names as layers, or nxyz, with the names as annotations.
    void Export(const AK_String& path);
    void ProjectOnto(const AK_String& mesh);   // nothing if there is no such mesh
    AK_String BaseMeshName() const { return _baseMesh.Path(*this); }
    void SetBaseMeshName(const AK_String& name) { _baseMesh.Set(name); }   // no point moves

    /// Selects or deselects the first line of that name; "all" means every line.
    void Select(const AK_String& name) { SetFlag(name, 1); }
    void DeSelect(const AK_String& name) { SetFlag(name, 0); }
    /// Removes the selected lines; those that remain are selected.
    void DeleteSelected();
    /// Makes a line object of each selected line in the container "Polylines" beside this set's own, the last one
    /// first.
    void ExtractSelected();
    /// Copies the points of a line object, under its id with as many "x" behind as make it new. It is selected.
    void Add(const AK_String& id);

protected:
    void Draw() override;

private:
    void Append(const AK_Polyline& line, const AK_String& name);
    void SetFlag(const AK_String& name, char flag);
    AK_String NamesOf(char flag) const;
    void LinesChanged();   // makes the box anew, and warns of points that are none

    int _displayLabels = 0;   // print the names
    AK_String _labelFont = "TIMES_ROMAN_10";
    SW_MeshReference _baseMesh;
    AK_List<AK_Polyline> _polylines{1};
    AK_List<AK_String> _names{1};   // parallel
    AK_List<char> _selected{1};     // parallel: 1 for a selected line
    AK_Vec _xMin, _xMax;            // m: the box around all points, 0 without any
};
