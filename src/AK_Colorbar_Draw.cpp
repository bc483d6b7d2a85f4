// The picture of a colour bar in the overlay, and the texture with its colours.
//
//       peak flow depth [m] at 300     header, flush with the side that the bar is aligned to
//   |=====|=====|=====|=====|=====|    bar: all steps equally wide, a line at each of their limits
//   0                             5    labels of the ends, and of the limits between them
//
// The alignments give the bar a place in the picture, and Position shifts it from there; what leaves the picture on one
// side comes in again on the other, so that a negative Position, counted from the far edge, shifts to the left or down.

#include "AK_Colorbar.h"

#include "AK_sogl.h"

#include <algorithm>
#include <cmath>

static constexpr float margin = 0.03f;         // between bar and picture's edge, share of the picture
static constexpr float gap = 0.008f;           // between bar and labels
static constexpr float descentShare = 0.25f;   // of a line's height, below the base line
static constexpr int slices = 64;              // of the bar, when colours run on without steps
static constexpr float minTickDistance = 4;    // pixels; lines that are closer would hide the colours
static constexpr int textureWidth = 1024;      // pixels

// ----------------------------------------------------------------------------------------------------------------
// Places
// ----------------------------------------------------------------------------------------------------------------

static float WithinPicture(float x) { return x >= 0 && x <= 1 ? x : x - std::floor(x); }

AK_Floats<2> AK_Colorbar::LowerLeftCorner(float lineHeight) const
{
    float x = 1 - margin - _size[0];
    if (_horizontalAlignment == "left") x = margin;
    if (_horizontalAlignment == "center") x = (1 - _size[0]) / 2;
    float y = margin + gap + lineHeight;
    if (_verticalAlignment == "top") y = 1 - margin - gap - lineHeight - _size[1];
    return {WithinPicture(x + _position[0]), WithinPicture(y + _position[1])};
}

AK_String AK_Colorbar::NumberText(double value) const
{
    const AK_String format = AK_String(_numSignificantDigits, "%%.%dg");
    return AK_String(value, format.c_str());
}

void AK_Colorbar::PlaceLabels()
{
    const AK_BitmapFont* font = AK_FindBitmapFont(_font.c_str());
    const float lineHeight = AK_Text2d::LineHeight(font);
    const AK_Floats<2> corner = LowerLeftCorner(lineHeight);
    _minLabel.Text(NumberText(_min));
    _maxLabel.Text(NumberText(_max));
    for (AK_Text2d* label : {&_header, &_minLabel, &_maxLabel}) {
        label->Font(_font);
        label->Visibility(_displayLabels);
    }
    const float below = corner[1] - gap - lineHeight;
    const float above = corner[1] + _size[1] + gap + descentShare * lineHeight;
    float room = _size[0] - AK_Text2d::LineWidth(font, Label());   // left over, below 0 for a title that is wider
    if (_horizontalAlignment == "left") room = 0;
    if (_horizontalAlignment == "center") room /= 2;
    _header.Position(std::max(corner[0] + room, 0.0f), above);
    _minLabel.Position(corner[0], below);
    _maxLabel.Position(corner[0] + _size[0] - AK_Text2d::LineWidth(font, _maxLabel.Text()), below);
}

// ----------------------------------------------------------------------------------------------------------------
// Drawing
// ----------------------------------------------------------------------------------------------------------------

void AK_Colorbar::Update()
{
    if (!IsShown()) return;
    const Call running(this);
    if (!_autoscale) {   // what was chosen last for this unit, on whatever colour bar, but on this one
        if (!_rangeIsFixed) GetUnitScaling(Unit(), _min, _max);
        if (_arbitrarySteps && _stepValues.IsEmpty()) GetUnitSteps(Unit(), _stepValues);
    }
    UpdateTexture();
    AK_VisObj2d::Update();
    PlaceLabels();
    for (AK_Text2d* label : {&_header, &_minLabel, &_maxLabel}) label->Update();
}

void AK_Colorbar::Draw()
{
    const AK_BitmapFont* font = AK_FindBitmapFont(_font.c_str());
    const float lineHeight = AK_Text2d::LineHeight(font);
    const AK_Floats<2> corner = LowerLeftCorner(lineHeight);
    aglTranslatef(corner[0] - _position[0], corner[1] - _position[1], 0);
    const int n = NumSteps();
    DrawSteps(n);
    ResetColor(_autoColored);
    DrawLines(n);
    if (_displayLabels && _displayInterLabels) DrawInterLabels(n, font, -gap - lineHeight);
}

void AK_Colorbar::DrawSteps(int n) const
{
    const int slicesOfStep = _discreteColors ? 1 : std::max(1, slices / n);
    BeginColor();
    for (int i = 0; i < n; ++i) {
        const double lower = Step(i);
        const double upper = Step(i + 1);
        for (int slice = 0; slice < slicesOfStep; ++slice) {
            const double ends[2] = {double(slice) / slicesOfStep, double(slice + 1) / slicesOfStep};
            aglBegin(GL_QUADS);
            for (const int end : {0, 1}) {
                SetColor(lower + (upper - lower) * ends[end], _opacity);
                if (_discreteColors && !_transparent && !_barTexture) SetTableColor(i);   // the texture has them
                const float x = _size[0] * float((i + ends[end]) / n);
                aglVertex2f(x, end == 0 ? 0 : _size[1]);
                aglVertex2f(x, end == 0 ? _size[1] : 0);
            }
            aglEnd();
        }
    }
    EndColor();
}

void AK_Colorbar::SetTableColor(int i) const
{
    float r, g, b;
    GetTableColor(i, r, g, b);
    aglColor4f(r, g, b, _opacity);
}

// The outline, and a line at each limit of the steps as far as they can be told apart.
void AK_Colorbar::DrawLines(int n) const
{
    const bool ticks = _size[0] * float(_viewerWidth) / float(n) >= minTickDistance;
    aglBegin(GL_LINES);
    for (const float y : {0.0f, _size[1]}) {
        aglVertex2f(0, y);
        aglVertex2f(_size[0], y);
    }
    for (int i = 0; i <= n; i += ticks ? 1 : n) {
        const float x = _size[0] * float(i) / float(n);
        aglVertex2f(x, 0);
        aglVertex2f(x, _size[1]);
    }
    aglEnd();
}

// Numbers centred below the limits, as far as there is room between those of the ends.
void AK_Colorbar::DrawInterLabels(int n, const AK_BitmapFont* font, float y) const
{
    const float right = _size[0] - AK_Text2d::LineWidth(font, _maxLabel.Text()) - gap;
    float free = AK_Text2d::LineWidth(font, _minLabel.Text()) + gap;
    for (int i = 1; i < n; ++i) {
        const AK_String text = NumberText(Step(i));
        const float width = AK_Text2d::LineWidth(font, text);
        const float x = _size[0] * float(i) / float(n) - width / 2;
        if (x < free || x + width > right) continue;
        AK_Text2d::DrawLine(font, text, x, y);
        free = x + width + gap;
    }
}

// ----------------------------------------------------------------------------------------------------------------
// The texture: the colours along the bar, for hosts that can draw with it
// ----------------------------------------------------------------------------------------------------------------

void AK_Colorbar::UpdateTexture()
{
    if (!_barTexture) aglGenTextures(1, &_barTexture);
    if (!_barTexture) return;
    const int n = NumSteps();
    const int used = _discreteColors && n <= textureWidth ? textureWidth / n * n : textureWidth;   // whole steps
    _textureScale = float(used) / textureWidth;
    _texPixels.SetSize(3 * textureWidth);
    for (int x = 0; x < textureWidth; ++x) {
        const int within = std::min(x, used - 1);
        float rgb[3];
        if (_discreteColors)
            GetTableColor(int(long(within) * n / used), rgb[0], rgb[1], rgb[2]);
        else
            GetValueColor((float(within) + 0.5f) / float(used), rgb[0], rgb[1], rgb[2]);
        for (int channel = 0; channel < 3; ++channel)
            _texPixels[3 * x + channel] = static_cast<unsigned char>(rgb[channel] * 255 + 0.5f);
    }
    const int filter = _discreteColors ? GL_NEAREST : GL_LINEAR;
    aglBindTexture(GL_TEXTURE_1D, _barTexture);
    aglPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    aglTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_WRAP_S, GL_CLAMP);
    aglTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MAG_FILTER, filter);
    aglTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MIN_FILTER, filter);
    aglTexImage1D(GL_TEXTURE_1D, 0, 3, textureWidth, 0, GL_RGB, GL_UNSIGNED_BYTE, _texPixels.Data());
}
