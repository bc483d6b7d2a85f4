// Colours of a colour bar: from values, from a table, and the files of colour tables.

#include "AK_Colorbar.h"

#include "AK_sogl.h"

#include <algorithm>
#include <cstdio>

AK_String AK_Colorbar::_colorTable = "none";
AK_List<float> AK_Colorbar::_tableColors(1);
int AK_Colorbar::_greyscale = 0;
float AK_Colorbar::_minColorToBackgroundFadingRange = 0;

static constexpr int maxTableLine = 128;   // bytes

// ----------------------------------------------------------------------------------------------------------------
// Colours of values
// ----------------------------------------------------------------------------------------------------------------

// A hat with a flat top over 0 to 1:   _/^^\_
static float ChapeauFunc(float v)
{
    if (v < 0 || v > 1) return 0;
    if (v < 0.25f) return 4 * v;
    if (v < 0.75f) return 1;
    return 1 - 4 * (v - 0.75f);
}

void AK_Colorbar::GetValueColor(float v, float& r, float& g, float& b)
{
    if (v < 0) v = 0;   // so written, that what is not a number passes unchanged
    if (v > 1) v = 1;
    if (_greyscale) {
        r = g = b = 0.95f - 0.95f * v;
    } else {
        r = ChapeauFunc(v - 0.5f);
        g = ChapeauFunc(v);
        b = ChapeauFunc(v + 0.5f);
    }
    if (!(v < _minColorToBackgroundFadingRange)) return;
    const float f = (_minColorToBackgroundFadingRange - v) / _minColorToBackgroundFadingRange;
    r = r * (1 - f) + f * _viewerBgCol[0];
    g = g * (1 - f) + f * _viewerBgCol[1];
    b = b * (1 - f) + f * _viewerBgCol[2];
}

void AK_Colorbar::GetTableColor(int i, float& r, float& g, float& b)
{
    const int numColors = _tableColors.Size() / 3;
    if (numColors == 0 || i < 0) {
        r = g = b = 0.5f;
        return;
    }
    const float* color = &_tableColors[3 * (i % numColors)];
    r = color[0];
    g = color[1];
    b = color[2];
}

void AK_Colorbar::SetColor(double value, float alpha) const
{
    if (_transparent) return;
    const float t = float((value - _min) / (_max - _min));
    if (!_barTexture) {
        float r, g, b;
        GetValueColor(t, r, g, b);
        aglColor4f(r, g, b, alpha);
        return;
    }
    aglTexCoord1f((_arbitrarySteps ? PositionInSteps(value) : t) * _textureScale);
}

// 0 to 1 over the bar, on which all steps are equally wide; 1 beyond the last step.
float AK_Colorbar::PositionInSteps(double value) const
{
    const int n = _steps.Size() - 1;
    for (int i = 0; i < n; ++i) {
        const double lower = _steps[i];
        const double upper = _steps[i + 1];
        if (upper >= value) return float(((value - lower) / (upper - lower) + i) / n);
    }
    return 1.0f;
}

void AK_Colorbar::BeginColor() const
{
    if (_arbitrarySteps) NumSteps();   // SetColor looks the steps up
    if (!_barTexture) return;
    aglBindTexture(GL_TEXTURE_1D, _barTexture);
    aglTexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, float(GL_MODULATE));
    aglColor4f(1, 1, 1, _opacity);   // which the texture's colours multiply
    aglEnable(GL_TEXTURE_1D);
}

void AK_Colorbar::EndColor() const
{
    if (_barTexture) aglDisable(GL_TEXTURE_1D);
}

// ----------------------------------------------------------------------------------------------------------------
// Colour tables
// ----------------------------------------------------------------------------------------------------------------

void AK_Colorbar::ColorTable(const AK_String& name)
{
    if (name == "none") {
        _colorTable = "none";
        _tableColors.Clear();
        return;
    }
    const AK_String path = AttributeFile(name, "rgb", nullptr);
    AK_TextReader file(path);
    if (!file.IsOpen()) {
        AK_MSG("W: cannot open color table file " << path);
        return;
    }
    _colorTable = name;
    _tableColors.Clear();
    AK_String line;
    while (file.ReadLine(line, maxTableLine)) {
        float rgb[3];
        if (std::sscanf(line.c_str(), " %f %f %f", &rgb[0], &rgb[1], &rgb[2]) != 3) continue;
        for (const float component : rgb) _tableColors.Append(std::clamp(component, 0.0f, 1.0f));
    }
    if (_tableColors.Size() < 3) {
        AK_MSG("W: no rgb-colors could be read from " << path);
        _colorTable = "none";
    }
}

AK_String AK_Colorbar::ColorTableOptions()
{
    AK_String options = AK_String("none") + ak_sep;
    AK_List<AK_String> listed(1);
    for (const AK_String* directory : {&_attributesDirectory, &_userAttributesDirectory}) {
        for (AK_String name : AK_System::FilesList(*directory, "rgb")) {
            name.RemoveExtension();
            if (listed.IndexOf(name) >= 0) continue;   // the user has his own
            listed.Append(name);
            options = options + name + ak_sep;
        }
    }
    return options;
}
