// A number on every vertex or cell of a mesh: flow depth, pressure, curvature and the like.

#pragma once

#include "SW_Mesh_Contour.h"
#include "SW_ScalarField_Shared.h"

class SW_VectorField;

class SW_ScalarField : public SW_FieldOf<SW_ScalarField, float> {
public:
    static constexpr const char* className = "SW_ScalarField";
    static constexpr const char* recordTag = "SW_ScalarField:v0";
    static std::span<const Row> Rows();

    SW_ScalarField(const AK_String& id, AK_Object* parent);
    ~SW_ScalarField() override;
    void Update() override;
    int BoundingBox(float* lo, float* hi) const override;

    /// Lays the field on a mesh, null for none. Values survive on a mesh of the same size, else they become 0.
    void SetMesh(const SW_Mesh* mesh);

    /// The value at a point as it is displayed; 0 outside and without a mesh.
    double ValueAtPoint(const AK_Vec2& p);
    /// Keeps the answer for "x y" as text in the attribute of that name.
    void ValueAtPoint(const AK_String& point);

    // ---- statistics as texts; zeros do not count in the mean, which is that of the flowing region
    AK_String Min() const;
    AK_String Max() const;
    AK_String Average() const;
    AK_String AreaAboveLimit();   // m2 seen from above, of the cells whose value lies above the limit

    // ---- display (SW_ScalarField_Convert.cpp)
    /// Replaces the values by what is displayed: converted by the class's formula, else smoothed. 1 if a formula was
    /// asked for. Reconvert() brings the data back; the two bracket every reader and do not nest.
    int Convert();
    void UpdateContourLines();

    /// The plane through the differences to the neighbours, fitted in the surface: a field of the values' unit per m.
    /// (SW_ScalarField_Gradient.cpp)
    void ComputeGradient(SW_VectorField* gradient);

    // ---- files (SW_ScalarField_Export.cpp)
    void ExportFieldRasterAscii(const AK_String& path);
    void ExportContourLines(const AK_String& path);
    void ExportValuesAlongPolyline(const AK_String& path);
    AK_String ShortExportFilename() const;

protected:
    void Draw() override;

private:
    double ValueInCell(int cell, const AK_Vec2& p) const;
    void Smooth(int rounds);
    void CreateGradientField();
    void TakeRasterExtentOfMesh();
    bool HasRaster();
    void DrawCells() const;
    void DrawContourLines() const;
    AK_Vec GradientAt(int i, const AK_Vec& normal, const AK_List<int>& neighbors, const AK_Vec& unchanged) const;

    std::unique_ptr<SW_ContourLines> _contourLines;
    // Tell whether the lines still belong to the values, and to the steps and the label of the colour bar.
    double _contourChecksum = 0;
    AK_List<double> _contourLevels{1};
    AK_String _contourLabel;
    int _displayColorMapped = 1;
    int _displayContourLines = 0;
    int _contourLinesColored = 0;
    int _contourLinesLabelled = 0;
    double _contourLinesLabelDistance = 200.0;   // m
    double _exportRasterSize = 10.0;             // m
    int _exportRasterAutoRange = 1;
    AK_Vec2 _exportRasterLL{0, 0};   // m
    int _exportRasterNumColumns = 100, _exportRasterNumRows = 100;
    AK_String _valueAtPoint;
    double _areaValueLimit = 0.0;
    double _minDisplayedValue = 0.001;
};
