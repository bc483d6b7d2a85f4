// How a scalar field is displayed: conversion by a formula or smoothing, colour range, contour lines.

#include "SW_ScalarField.h"

#include "SW_VectorField.h"

#include <algorithm>
#include <cmath>

// What a conversion for display takes: the value and the coordinates of its place.
static const char* const conversionTakes = "double,double[]";

// More rounds than this smooth everything away.
static constexpr int maxRounds = 10000;

int SW_ScalarField::Convert()
{
    const AK_String name = DataConversion();
    if (!name.IsEmpty()) {
        Symbol* formula = FormulaFunction(_qvt_sci_namespace, name, conversionTakes);
        if (!formula || !_mesh || _values.Size() != WantedSize()) return 1;
        qvt_sci_BindArgLength(formula, 1, 3);
        ConvertValues(name, [&](int i) {
            double value = double(_values[i]);
            AK_Vec location = Location(i);
            _values[i] = float(qvt_sci_AsDouble(qvt_sci_Call(formula, &value, &location.x)));
        });
        return 1;
    }
    const bool smoothable = _onVertices && _mesh && _values.Size() == WantedSize();
    const AK_String rounds = smoothable ? VariableValue("$smooth") : AK_String();
    if (!rounds.IsEmpty()) {
        int n = 0;
        AK_FromText(n, rounds);
        _savedValues = _values;
        Smooth(std::min(n, maxRounds));
    }
    return 0;
}

void SW_ScalarField::Smooth(int rounds)
{
    const auto mean = [this](int cell) { return SW_MeanOfCorners(_mesh->_lcv[cell], _values.Data()); };
    AK_List<float> smoothed(1);
    for (int round = 0; round < rounds; ++round) {
        SW_MeansAtVertices(_mesh->_lcv, mean, 0.0f, _mesh->NumVertices(), smoothed);
        _values.Swap(smoothed);
    }
}

void SW_ScalarField::UpdateContourLines()
{
    if (!_mesh || !_onVertices || _values.Size() != WantedSize() || _mesh->_lcc.Size() == 0) return;
    const AK_Colorbar* bar = Colorbar();
    double min = 0, max = 0;
    AK_FromText(min, AK_String(bar->Min(), "%.15g"));
    AK_FromText(max, AK_String(bar->Max(), "%.15g"));
    const int steps = bar->NumSteps();
    double checksum = 0;
    for (float value : _values) checksum += (double(value) - min) / ((max - min) / steps);
    AK_List<double> levels(1);
    for (int i = 0; i <= steps; ++i) levels.Append(bar->Step(i));
    const bool sameLevels = std::equal(levels.begin(), levels.end(), _contourLevels.begin(), _contourLevels.end());
    if (_contourLines && checksum == _contourChecksum && sameLevels && bar->Label() == _contourLabel) return;
    _contourLines = std::make_unique<SW_ContourLines>(_mesh, _values.Data(), levels);
    for (int i = 0; i < _contourLines->Size(); ++i) {
        AK_String& annotations = (*_contourLines)[i]._line.annotations;
        annotations.SetKeyValue("unit", bar->Unit(), '=', ';');
        annotations.SetKeyValue("res", bar->AttributeShort(), '=', ';');
    }
    _contourChecksum = checksum;
    _contourLevels.Swap(levels);
    _contourLabel = bar->Label();
}

// ----------------------------------------------------------------------------------------------------------------
// Update
// ----------------------------------------------------------------------------------------------------------------

void SW_ScalarField::CreateGradientField()
{
    if (!Component("gradient")) AddComponent(new SW_VectorField("gradient", this));
}

void SW_ScalarField::Update()
{
    if (!IsShown() || !_mesh || _values.Size() != WantedSize()) return;
    Convert();
    UpdateColorBar();
    if (_displayContourLines) UpdateContourLines();
    if (auto* gradient = dynamic_cast<SW_VectorField*>(Component("gradient"))) {
        ComputeGradient(gradient);
        gradient->SetLabel(AK_String("gradient [") + Colorbar()->Unit() + "/m]");
    }
    SW_FieldOf::Update();
    Reconvert();
}
