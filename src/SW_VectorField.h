// A vector on every vertex or cell of a mesh: velocity, momentum, normals, gradients.

#pragma once

#include "SW_ScalarField_Shared.h"

class SW_VectorField : public SW_FieldOf<SW_VectorField, AK_Vec> {
public:
    static constexpr const char* className = "SW_VectorField";
    static constexpr const char* recordTag = "SW_VectorField:v0";
    static std::span<const Row> Rows();

    /// Vectors shorter than this are neither drawn nor exported.
    static constexpr float _minDisplayedValue = 0.001f;

    SW_VectorField(const AK_String& id, AK_Object* parent);
    void Update() override;
    int BoundingBox(float* lo, float* hi) const override;

    /// As for a scalar field.
    void SetMesh(const SW_Mesh* mesh) { TakeMesh(mesh); }

    /// The vector at a point as it is displayed; 0 outside and without a mesh.
    AK_Vec ValueAtPoint(const AK_Vec2& p);

    // ---- statistics of the lengths, as texts
    AK_String Min() const;
    AK_String Max() const;
    AK_String Average() const;

    /// Replaces the vectors by what is displayed; see SW_ScalarField::Convert.
    int Convert();

    // ---- files (SW_VectorField_Export.cpp)
    void ExportValuesAlongPolyline(const AK_String& path);
    void ExportValues(const AK_String& path);

protected:
    void Draw() override;

private:
    void UpdateMagnitude();
    void CreateMagnitudeField();
    void DrawVector(const AK_Vec& from, const AK_Vec& vector) const;
    void DrawResampled() const;

    double _vectorScaling = 1.0;        // length of a drawn arrow per unit
    double _resamplingGridSize = 0.0;   // m; above 0 one mean arrow is drawn for each square of this size
};
