// Visible objects: attributes with their defaults, colours, and the state that an object is drawn with.

#include "AK_VisibleObject.h"

#include "AK_sogl.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstdlib>

int AK_VisibleObject::_enabledDisplayLists = 1;

// ----------------------------------------------------------------------------------------------------------------
// Numbers of attributes
// ----------------------------------------------------------------------------------------------------------------

AK_String AK_FloatsText(const float* numbers, int n)
{
    AK_String text;
    for (int i = 0; i < n; ++i) {
        char number[32];
        for (int digits = 6; digits <= 9; ++digits) {   // 6 are those of "%g"; 9 tell all floats apart
            std::snprintf(number, sizeof number, "%.*g", digits, double(numbers[i]));
            if (std::strtof(number, nullptr) == numbers[i]) break;
        }
        if (i > 0) text.Append(" ");
        text.Append(number);
    }
    return text;
}

bool AK_ReadFinite(const AK_String& text, double* numbers, int n)
{
    constexpr int mostNumbers = 4;
    AK_ASSERT(n <= mostNumbers);
    double read[mostNumbers];
    const char* next = text.c_str();
    for (int i = 0; i < n; ++i) {
        char* end;
        read[i] = std::strtod(next, &end);
        if (end == next || !(std::fabs(read[i]) <= FLT_MAX)) {
            AK_Object::_execStatus =
                n == 1 ? AK_String("'") + text + "' is not a finite number"
                       : AK_String("'") + text + "' does not give " + AK_String(n, "%d") + " finite numbers";
            return false;
        }
        next = end;
    }
    std::copy_n(read, n, numbers);
    return true;
}

void AK_AssignFinite(float& value, const AK_String& text)
{
    double number;
    if (AK_ReadFinite(text, &number, 1)) value = float(number);
}

void AK_AssignFinite(double& value, const AK_String& text) { AK_ReadFinite(text, &value, 1); }

void AK_AssignFinite(AK_Vec& value, const AK_String& text) { AK_ReadFinite(text, &value.x, 3); }

void AK_AssignFinite(AK_Vec2& value, const AK_String& text) { AK_ReadFinite(text, &value.x, 2); }

// ----------------------------------------------------------------------------------------------------------------
// Attributes; their defaults stand with the members
// ----------------------------------------------------------------------------------------------------------------

AK_VisibleObject::AK_VisibleObject(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

AK_VisibleObject::~AK_VisibleObject()
{
    if (_texture) aglDeleteTextures(1, &_texture);
}

AK_String AK_VisibleObject::BoundingBoxText() const
{
    float corners[6];
    return BoundingBox(corners, corners + 3) ? AK_FloatsText(corners, 6) : AK_String();
}

std::span<const AK_VisibleObject::Row> AK_VisibleObject::Rows()
{
    using V = AK_VisibleObject;
    // clang-format off
    static constexpr Row rows[] = {
        {"Visibility",           value<&V::_visibility>},
        {"AutoColored",          value<&V::_autoColored>},
        {"VisColor",             editable<[](const V& v) { return !v._autoColored; }>},
        {"Color",                finiteValue<V, &V::_color>},
        {"VisOpacity",           editable<[](const V& v) { return v._blending; }>},
        {"Opacity",              finiteValue<V, &V::_opacity>},
        {"Blending",             value<&V::_blending>},
        {"PointSize",            finiteValue<V, &V::_pointSize>},
        {"LineWidth",            finiteValue<V, &V::_lineWidth>},
        {"AntialiasPoints",      value<&V::_antialiasPoints>},
        {"AntialiasLines",       value<&V::_antialiasLines>},
        {"PolygonsFilled",       value<&V::_polygonsFilled>},
        {"Shaded",               value<&V::_shaded>},
        {"PolygonOffsetFill",    value<&V::_polygonOffsetFill>},
        {"PolygonOffsetLine",    value<&V::_polygonOffsetLine>},
        {"PolygonOffsetFactors", finiteValue<V, &V::_polygonOffsetFactors>},
        {"Textured",             pair<[](const V& v) { return v._textured; }, [](V& v, int on) { v.Textured(on); }>},
        {"TextureFileName",      pair<[](const V& v) { return v._textureFileName; },
                                      [](V& v, const AK_String& name) { v.TextureFileName(name); }>},
        {"TextureRepeat",        pair<[](const V& v) { return v._textureRepeat; },
                                      [](V& v, int on) { v.TextureRepeat(on); }>},
        {"TextureMaxSize",       pair<[](const V& v) { return v._textureMaxSize; },
                                      [](V& v, int pixels) { v.TextureMaxSize(pixels); }>},
        {"TextureParametersS",   finiteValue<V, &V::_textureParametersS>},
        {"TextureParametersT",   finiteValue<V, &V::_textureParametersT>},
        {"TexturePosX0",         finiteValue<V, &V::_texturePosX0>},
        {"TexturePosX1",         finiteValue<V, &V::_texturePosX1>},
        {"TexturePosX2",         finiteValue<V, &V::_texturePosX2>},
        {"TextureWorldPosX0",    finiteValue<V, &V::_textureWorldPosX0>},
        {"TextureWorldPosX1",    finiteValue<V, &V::_textureWorldPosX1>},
        {"TextureWorldPosX2",    finiteValue<V, &V::_textureWorldPosX2>},
        {"TextureTiles",         pair<[](const V& v) { return v.TextureTiles(); },
                                      [](V& v, const AK_String& list) { v.TextureTiles(list); }>},
        {"TextureFit",           command<&V::TextureFit>},
        {"ApplyTextureReference", command<&V::ApplyTextureReference>},
        {"SaveTexPar",           command<&V::SaveTexPar>},
        {"TextureTileAdd",       command<&V::TextureTileAdd>},
        {"TextureTilesLoad",     command<&V::TextureTilesLoad>},
        {"JpgQuality",           value<&V::_jpgQuality>},
        {"BoundingBox",          shown<&V::BoundingBoxText>},
        {"EnabledDisplayLists",  shared<&V::_enabledDisplayLists>},
    };
    // clang-format on
    return rows;
}

int AK_VisibleObject::BoundingBox(float*, float*) const { return 0; }

// ----------------------------------------------------------------------------------------------------------------
// Drawing state
// ----------------------------------------------------------------------------------------------------------------

void AK_VisibleObject::SetInverseColor(const float* colour) const
{
    aglColor4f(1 - colour[0], 1 - colour[1], 1 - colour[2], _opacity);
}

void AK_VisibleObject::ResetColor(int autoColored) const
{
    if (autoColored)
        SetInverseColor(_viewerBgCol);
    else
        aglColor4f(_color[0], _color[1], _color[2], _opacity);
}

static void Switch(unsigned capability, int on)
{
    if (on)
        aglEnable(capability);
    else
        aglDisable(capability);
}

void AK_VisibleObject::SetDrawingState() const
{
    aglDepthMask(_blending ? 0 : 1);   // what shines through must not hide what is drawn behind it later
    Switch(GL_BLEND, _blending);
    if (_blending) aglBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);

    ResetColor(_autoColored);

    Switch(GL_POINT_SMOOTH, _antialiasPoints);
    Switch(GL_LINE_SMOOTH, _antialiasLines);
    aglPointSize(_pointSize);
    aglLineWidth(_lineWidth);
    aglPolygonMode(GL_FRONT_AND_BACK, _polygonsFilled ? GL_FILL : GL_LINE);
    Switch(GL_POLYGON_OFFSET_FILL, _polygonOffsetFill);
    Switch(GL_POLYGON_OFFSET_LINE, _polygonOffsetLine);
    aglPolygonOffset(_polygonOffsetFactors[0], _polygonOffsetFactors[1]);
    Switch(GL_LIGHTING, _shaded);
}

void AK_VisibleObject::SetTexturingState() const
{
    if (!_textured) {
        aglDisable(GL_TEXTURE_GEN_S);
        aglDisable(GL_TEXTURE_GEN_T);
        aglDisable(GL_TEXTURE_2D);
        return;
    }
    aglBindTexture(GL_TEXTURE_2D, _texture);
    aglTexGeni(GL_S, GL_TEXTURE_GEN_MODE, GL_OBJECT_LINEAR);
    aglTexGeni(GL_T, GL_TEXTURE_GEN_MODE, GL_OBJECT_LINEAR);
    aglTexGenfv(GL_S, GL_OBJECT_PLANE, _textureParametersS.v);
    aglTexGenfv(GL_T, GL_OBJECT_PLANE, _textureParametersT.v);
    aglEnable(GL_TEXTURE_GEN_S);
    aglEnable(GL_TEXTURE_GEN_T);
    aglEnable(GL_TEXTURE_2D);
}

void AK_VisibleObject::Update()
{
    if (!IsShown()) return;
    const Call running(this);   // formula code of a component may delete this object
    AK_Object::Update();
    SetDrawingState();
    SetTexturingState();
}
