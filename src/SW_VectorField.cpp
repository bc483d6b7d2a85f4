// Vector fields: attributes, queries, statistics, conversion, drawing.

#include "SW_VectorField.h"

#include "SW_ScalarField.h"

#include "AK_VisObj3d_Draw.h"

#include <algorithm>
#include <cmath>

// ----------------------------------------------------------------------------------------------------------------
// Attributes
// ----------------------------------------------------------------------------------------------------------------

// clang-format off
std::span<const AK_Row> SW_VectorField::Rows()
{
    using S = SW_VectorField;
    using Text = const AK_String&;
    static constexpr Row rows[] = {
        {"Label",                         shown<&S::Label>},
        {"SetLabel",                      command<&S::SetLabel>},
        {"VectorScaling",                 value<&S::_vectorScaling>},
        {"ResamplingGridSize",            value<&S::_resamplingGridSize>},   // m
        {"Min",                           shown<&S::Min>},
        {"Max",                           shown<&S::Max>},
        {"Average",                       shown<&S::Average>},
        {"CreateMagnitudeField",          command<&S::CreateMagnitudeField>},
        {"CreateMagnitudeFieldVis",       editable<[](const S& f) { return !f.Component("magnitude"); }>},
        {"RemoveMagnitudeField",          command<[](S& f, Text) { f.DeleteComponent("magnitude"); }>},
        {"RemoveMagnitudeFieldVis",       editable<[](const S& f) { return f.Component("magnitude") != nullptr; }>},
        {"SelectedPolyline",              value<&S::_selectedPolyline>},
        {"PolylinesList",                 shown<&S::PolylinesList>},
        {"ExportValuesAlongPolyline",     command<&S::ExportValuesAlongPolyline>},
        {"ExportValuesAlongPolylineVis",  editable<&S::LineToExport>},
        {"ExportValues",                  command<&S::ExportValues>},
    };
    return rows;
}
// clang-format on

SW_VectorField::SW_VectorField(const AK_String& id, AK_Object* parent) : SW_FieldOf(id, parent)
{
    ReadClassFiles();
    AddColorbar();
    Colorbar()->Set("HorizontalAlignment", "left");
    RunInitializationCommands();
}

int SW_VectorField::BoundingBox(float* lo, float* hi) const { return _mesh ? _mesh->BoundingBox(lo, hi) : 0; }

// ----------------------------------------------------------------------------------------------------------------
// Queries and statistics
// ----------------------------------------------------------------------------------------------------------------

AK_Vec SW_VectorField::ValueAtPoint(const AK_Vec2& p)
{
    const int cell = _mesh ? _mesh->CellContainingPoint(p, -1) : -1;
    if (cell < 0 || _values.Size() != WantedSize()) return {};
    Convert();
    AK_Vec value = _onVertices ? AK_Vec() : _values[cell];
    if (_onVertices) {
        double weights[4];
        _mesh->GetWeights(cell, p, weights);
        value = _mesh->InterpolatedVector(cell, weights, _values);
    }
    Reconvert();
    return value;
}

// The extreme length, from the extreme of the squares in 32 bits.
template <class Better>
static AK_String ExtremeLength(const AK_List<AK_Vec>& values, const Better& better)
{
    if (values.Size() == 0) return "0";
    float extreme = float(Dot(values[0], values[0]));
    for (const AK_Vec& v : values)
        if (const float square = float(Dot(v, v)); better(square, extreme)) extreme = square;
    return AK_String(double(std::sqrt(extreme)), "%g");
}

AK_String SW_VectorField::Min() const { return ExtremeLength(_values, std::less<float>()); }

AK_String SW_VectorField::Max() const { return ExtremeLength(_values, std::greater<float>()); }

AK_String SW_VectorField::Average() const
{
    double sum = 0;
    int count = 0;
    for (const AK_Vec& v : _values) {
        if (!(Dot(v, v) > 0.0)) continue;
        sum += Length(v);
        ++count;
    }
    return AK_String(count > 0 ? sum / count : 0.0, "%.15g");
}

int SW_VectorField::Convert()
{
    const AK_String name = DataConversion();
    if (name.IsEmpty()) return 0;
    Symbol* formula = FormulaFunction(_qvt_sci_namespace, name, "double[]");
    if (!formula) return 1;
    qvt_sci_BindArgLength(formula, 0, 3);
    ConvertValues(name, [&](int i) { qvt_sci_Call(formula, &_values[i].x); });
    return 1;
}

// ----------------------------------------------------------------------------------------------------------------
// Display
// ----------------------------------------------------------------------------------------------------------------

void SW_VectorField::CreateMagnitudeField()
{
    if (!Component("magnitude")) AddComponent(new SW_ScalarField("magnitude", this));
}

void SW_VectorField::UpdateMagnitude()
{
    auto* magnitude = dynamic_cast<SW_ScalarField*>(Component("magnitude"));
    if (!magnitude) return;
    magnitude->_onVertices = _onVertices;
    magnitude->SetMesh(_mesh);
    for (int i = 0; i < _values.Size(); ++i) magnitude->_values[i] = float(Length(_values[i]));
    AK_String label = Label();
    label.Replace(" [", " magnitude [");
    magnitude->SetLabel(label);
}

void SW_VectorField::Update()
{
    if (!IsShown() || !_mesh || _values.Size() == 0 || _values.Size() != WantedSize()) return;
    Convert();
    UpdateColorBar();
    UpdateMagnitude();
    SW_FieldOf::Update();
    Reconvert();
}

// An arrow: the shaft, and a head that begins at 0.67 of the length and is 0.15 of it wide to either side.
void SW_VectorField::DrawVector(const AK_Vec& from, const AK_Vec& vector) const
{
    static constexpr double headBegin = 0.67;
    static constexpr double headWidth = 0.15;
    const AK_Vec arrow = vector * _vectorScaling;
    const AK_Vec aside = Normalized(Cross(arrow, {0, 0, 1})) * (headWidth * Length(arrow));
    const AK_Vec tip = from + arrow;
    const AK_Vec neck = from + arrow * headBegin;
    for (const AK_Vec& p : {from, tip, tip, neck + aside, tip, neck - aside}) AK_DrawVertex(p);
}

void SW_VectorField::DrawResampled() const
{
    static constexpr double maxSquares = 1e7;   // of a size far too small for the mesh
    float lo[3], hi[3];
    if (!_mesh->BoundingBox(lo, hi)) return;
    const double columns = (double(hi[0]) - double(lo[0])) / _resamplingGridSize + 1;
    const double rows = (double(hi[1]) - double(lo[1])) / _resamplingGridSize + 1;
    if (!(columns * rows < maxSquares)) return;
    const int nx = int(columns);
    const int ny = int(rows);
    AK_List<AK_Vec> place(1), sum(1);
    AK_List<int> count(1);
    place.Fill(nx * ny, AK_Vec());
    sum.Fill(nx * ny, AK_Vec());
    count.Fill(nx * ny, 0);
    for (int i = 0; i < _values.Size(); ++i) {
        const AK_Vec x = Location(i);
        const int column = std::clamp(int((x.x - double(lo[0])) / _resamplingGridSize), 0, nx - 1);
        const int row = std::clamp(int((x.y - double(lo[1])) / _resamplingGridSize), 0, ny - 1);
        place[column * ny + row] += x;
        sum[column * ny + row] += _values[i];
        ++count[column * ny + row];
    }
    for (int square = 0; square < nx * ny; ++square) {
        if (count[square] == 0) continue;
        const AK_Vec mean = sum[square] * (1.0 / count[square]);
        if (Length(mean) < double(_minDisplayedValue)) continue;
        Colorbar()->SetColor(Length(mean), 1);
        DrawVector(place[square] * (1.0 / count[square]), mean);
    }
}

void SW_VectorField::Draw()
{
    aglDisable(GL_LIGHTING);
    Colorbar()->BeginColor();
    aglBegin(GL_LINES);
    if (_resamplingGridSize > 0)
        DrawResampled();
    else
        for (int i = 0; i < _values.Size(); ++i) {
            if (Length(_values[i]) < double(_minDisplayedValue)) continue;
            Colorbar()->SetColor(Length(_values[i]), 1);
            DrawVector(Location(i), _values[i]);
        }
    aglEnd();
    Colorbar()->EndColor();
}
