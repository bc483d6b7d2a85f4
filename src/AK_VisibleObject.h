// Visible objects: the base of everything that can be shown, and the mapping of a picture on it.
//
// These classes make no geometry. Update() sets the drawing state through the table of drawing calls (AK_sogl.h), and
// the class that knows the geometry draws it in its Draw(). While the table points at the no-operation layer nothing
// appears, but all that is not drawing works: attributes, boxes, parameters of textures, mosaics of tiles, world files.
//
//   AK_Object <- AK_VisibleObject <- AK_VisObj2d   at a place of the overlay: colour bars, texts
//                                 <- AK_VisObj3d   in the world, with a local system, copies and clones
//
// A picture lies on an object by two planes, S along the picture's width and T along its height: a point (x, y, z) of
// the object shows the picture at s = S0 x + S1 y + S2 z + S3 and t likewise, (0, 0) being the lower left corner of the
// picture and (1, 1) the upper right one.
//
// Main thread only.

#pragma once

#include "AK_Object_Class.h"

// ----------------------------------------------------------------------------------------------------------------
// Numbers of attributes that must be finite
// ----------------------------------------------------------------------------------------------------------------

/// n floats that are one attribute: a colour, a pair of factors, a plane.
template <int n>
struct AK_Floats {
    float v[n];

    float& operator[](int i) { return v[i]; }
    float operator[](int i) const { return v[i]; }
    bool operator==(const AK_Floats&) const = default;
};

using AK_Color = AK_Floats<3>;   // r, g, b, 0 to 1

/// The numbers with blanks between them, each with the fewest digits from "%g" on that give the same float again.
AK_String AK_FloatsText(const float* numbers, int n);

template <int n>
AK_String AK_ToText(const AK_Floats<n>& value, const char*)
{
    return AK_FloatsText(value.v, n);
}

/// Reads the n numbers that a text begins with. False, with a status text and nothing stored, unless there are n and
/// each is finite as a float, since the drawing calls take floats.
bool AK_ReadFinite(const AK_String& text, double* numbers, int n);

/// The value that the text gives; a text that AK_ReadFinite refuses leaves it as it is.
void AK_AssignFinite(float& value, const AK_String& text);
void AK_AssignFinite(double& value, const AK_String& text);
void AK_AssignFinite(AK_Vec& value, const AK_String& text);
void AK_AssignFinite(AK_Vec2& value, const AK_String& text);
template <int n>
void AK_AssignFinite(AK_Floats<n>& value, const AK_String& text)
{
    double numbers[n];
    if (!AK_ReadFinite(text, numbers, n)) return;
    for (int i = 0; i < n; ++i) value[i] = float(numbers[i]);
}

template <class T, auto member>
void AK_StoreFinite(AK_Object& object, const AK_String& text)
{
    AK_AssignFinite(static_cast<T&>(object).*member, text);
}

/// For the rows of a class T: a member whose numbers must be finite. {"Scale", finiteValue<T, &T::_scale>}
template <class T, auto member>
inline constexpr AK_Access finiteValue{&AK_RowsOf<T>::template GetWith<member>, &AK_StoreFinite<T, member>};

// ----------------------------------------------------------------------------------------------------------------
// The class
// ----------------------------------------------------------------------------------------------------------------

/// Base of everything that can be shown. Type "VisibleObject".
class AK_VisibleObject : public AK_Class<AK_VisibleObject, AK_Object> {
public:
    static constexpr const char* className = "AK_VisibleObject";
    static std::span<const Row> Rows();

    AK_VisibleObject(const AK_String& id, AK_Object* parent);
    ~AK_VisibleObject() override;

    /// Updates the components, then sets the state that the object is drawn with. Nothing if the object is not active
    /// or not visible. The classes for the overlay and for the world go on to Draw().
    void Update() override;

    /// The box around the object in world coordinates, metres: 3 floats each. Returns 1, or 0, leaving both as they
    /// are, if the object has none. A class with a box ends with AK_VisObj3d::UpdateBoundingBox.
    virtual int BoundingBox(float* lo, float* hi) const;
    AK_String BoundingBoxText() const;   // "x y z x y z", lower corner first; "" without a box

    /// True if the object takes part in drawing: it is active and its Visibility is set.
    bool IsShown() const { return _active && _visibility; }
    void Visibility(int on) { _visibility = on; }

    /// Draws on in the inverse of a colour (r, g, b, 0 to 1), with the object's opacity.
    void SetInverseColor(const float* colour) const;
    /// Draws on in the object's own colour: with the flag the inverse of the viewer's background, otherwise Color.
    void ResetColor(int autoColored) const;

    static int _enabledDisplayLists;   // class-wide: classes that draw many primitives may keep them in display lists

    // ---- pictures (AK_VisibleObject_Texture.cpp)
    /// Reads the picture and hands it to the table as a texture; then takes over its parameter file or world file. If
    /// it cannot be read, Textured goes off and the run goes on.
    void LoadTexture();
    /// S and T such that the picture fills the bounding box seen from above. Nothing without a box.
    void TextureFit();
    /// S and T such that the places TextureWorldPosX0, X1, X2 show what TexturePosX0, X1, X2 showed. World points in
    /// one line are refused with a status text.
    void ApplyTextureReference();
    /// Writes S and T to the file of that name with the extension "texpar"; an empty name means the picture's.
    void SaveTexPar(const AK_String& name);
    /// Halves an image in place by averaging blocks of 2 by 2 pixels; an odd last row or column is lost. `depth` is the
    /// number of bytes, that is channels, of a pixel. A height below 2 is left as it is.
    static void HalfSize(unsigned char* image, int* width, int* height, int depth);

    // ---- mosaics (AK_VisibleObject_Tiles.cpp)
    void TextureTileAdd(const AK_String& name);
    /// Puts the tiles together by their world files and writes one picture and its world file. Tiles that do not fit
    /// together end it with a status text, and no file is written.
    void TextureTilesLoad(const AK_String& output);

protected:
    /// Draws the geometry through the table. Called by Update() with state and matrices set, for each copy once.
    virtual void Draw() {}

    int _autoColored = 0;
    AK_Color _color{0.6f, 0.6f, 0.6f};
    float _opacity = 1;   // 0 to 1, in force while _blending is set
    int _blending = 0;
    int _visibility = 1;
    float _pointSize = 1;   // pixels
    float _lineWidth = 1;   // pixels
    int _antialiasPoints = 0;
    int _antialiasLines = 0;
    int _polygonsFilled = 1;
    int _shaded = 0;
    int _polygonOffsetFill = 0;
    int _polygonOffsetLine = 0;
    AK_Floats<2> _polygonOffsetFactors{1, 1};   // factor of the slope, units of depth
    int _textured = 0;
    AK_String _textureFileName;
    int _textureRepeat = 0;
    int _textureMaxSize = 1024;   // pixels, of the longer side
    AK_Floats<4> _textureParametersS{1, 0, 0, 0};
    AK_Floats<4> _textureParametersT{0, 1, 0, 0};
    AK_Vec2 _texturePosX0{0, 0}, _texturePosX1{0, 1}, _texturePosX2{1, 0};                  // in the picture, 0 to 1
    AK_Vec2 _textureWorldPosX0{0, 0}, _textureWorldPosX1{0, 1}, _textureWorldPosX2{1, 0};   // in the world, metres
    AK_List<AK_String> _textureTiles{1};
    int _jpgQuality = 90;   // percent

private:
    void SetDrawingState() const;
    void SetTexturingState() const;
    AK_String TextureTiles() const { return AK_String(_textureTiles, ak_sep); }
    void TextureTiles(const AK_String& list);

    // A picture is read when its name is set or texturing is switched on, so that parameters that are set later win
    // over those that come with it.
    bool HasPicture() const { return _textured && !_textureFileName.IsEmpty(); }
    void Textured(int on);
    void TextureFileName(const AK_String& name);
    void TextureRepeat(int on);
    void TextureMaxSize(int pixels);
    bool LoadPicture(int* fileWidth, int* fileHeight);
    void MakeTexture(const unsigned char* image, int width, int height);
    bool LoadTexPar(const AK_String& name);
    void LoadWorldFile(const AK_String& name, int width, int height);

    unsigned _texture = 0;   // name of the table's texture, 0 for none
};
