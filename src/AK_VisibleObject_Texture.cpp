// Pictures on objects: reading them, handing them to the table as textures, and the two planes S and T that say where
// on the object which part of the picture lies.
//
// S and T come with the picture, from its parameter file ("texpar", the eight numbers) or its world file. They can be
// fitted to the box, or to three points whose places in the picture and in the world are known.

#include "AK_VisibleObject.h"

#include "AK_Basic_NewFile.h"
#include "AK_VisibleObject_WorldFile.h"
#include "AK_sogl.h"

#include <algorithm>
#include <cmath>
#include <memory>

static constexpr int bytesPerPixel = 3;   // red, green, blue

// ----------------------------------------------------------------------------------------------------------------
// Attributes that make a picture be read
// ----------------------------------------------------------------------------------------------------------------

void AK_VisibleObject::TextureFileName(const AK_String& name)
{
    _textureFileName = name;
    if (HasPicture()) LoadTexture();
}

void AK_VisibleObject::Textured(int on)
{
    _textured = on;
    if (HasPicture()) LoadTexture();
}

void AK_VisibleObject::TextureRepeat(int on)
{
    _textureRepeat = on;
    if (HasPicture()) LoadPicture(nullptr, nullptr);
}

void AK_VisibleObject::TextureMaxSize(int pixels)
{
    _textureMaxSize = pixels;
    if (HasPicture()) LoadPicture(nullptr, nullptr);
}

// ----------------------------------------------------------------------------------------------------------------
// Reading a picture
// ----------------------------------------------------------------------------------------------------------------

// a x + b y + d as a plane of the picture; a zero has no sign.
static AK_Floats<4> Plane(double a, double b, double d)
{
    return {float(a) + 0.0f, float(b) + 0.0f, 0, float(d) + 0.0f};
}

static bool IsFinite(const AK_Floats<4>& plane)
{
    return std::all_of(plane.v, plane.v + 4, [](float f) { return std::isfinite(f); });
}

static AK_String SizeText(int width, int height) { return AK_String(width, "%d") + " x " + AK_String(height, "%d"); }

void AK_VisibleObject::HalfSize(unsigned char* image, int* width, int* height, int depth)
{
    if (*height < 2) return;
    const long rowBytes = long(*width) * depth;
    const int halfWidth = *width / 2;
    const int halfHeight = *height / 2;
    unsigned char* target = image;
    for (int row = 0; row < halfHeight; ++row) {
        for (int column = 0; column < halfWidth; ++column) {
            const unsigned char* block = image + 2 * row * rowBytes + 2L * column * depth;
            for (int channel = 0; channel < depth; ++channel, ++block) {
                const int sum = block[0] + block[depth] + block[rowBytes] + block[rowBytes + depth];
                *target++ = static_cast<unsigned char>(sum * 0.25 + 0.5);   // never past what is still to be read
            }
        }
    }
    *width = halfWidth;
    *height = halfHeight;
}

/// Reads the picture, halves it until it is small enough, and makes a texture of it. The size that it has in the file
/// goes to width and height, which may be null. False, with Textured off, if it cannot be used.
bool AK_VisibleObject::LoadPicture(int* fileWidth, int* fileHeight)
{
    AK_MSG("loading texture file " << _textureFileName);
    int width, height, depth;
    unsigned char* data;
    if (aglReadPpmFile(_textureFileName.c_str(), &width, &height, &depth, &data) != 0) {
        AK_MSG("loading texture from file " << _textureFileName << " failed - deactivating texturing!");
        _textured = 0;
        return false;
    }
    const std::unique_ptr<unsigned char[]> image(data);
    AK_MSG("loaded texture from file " << _textureFileName << ", size is " << SizeText(width, height));
    if (depth > 8) {
        AK_MSG("textures with color depth > 8 bits are not supported");
        _textured = 0;
        return false;
    }
    if (fileWidth) *fileWidth = width;
    if (fileHeight) *fileHeight = height;
    while ((width > _textureMaxSize || height > _textureMaxSize) && width > 1 && height > 1) {   // one pixel stays one
        HalfSize(image.get(), &width, &height, bytesPerPixel);
        AK_MSG("scaling texture size down to " << SizeText(width, height));
    }
    MakeTexture(image.get(), width, height);
    return true;
}

void AK_VisibleObject::MakeTexture(const unsigned char* image, int width, int height)
{
    if (_texture) aglDeleteTextures(1, &_texture);
    _texture = 0;
    aglPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    aglGenTextures(1, &_texture);
    aglBindTexture(GL_TEXTURE_2D, _texture);
    const int wrap = _textureRepeat ? GL_REPEAT : GL_CLAMP;
    aglTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, wrap);
    aglTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, wrap);
    aglTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR_MIPMAP_NEAREST);
    aglTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_NEAREST);
    const int error = agluBuild2DMipmaps(GL_TEXTURE_2D, bytesPerPixel, width, height, GL_RGB, GL_UNSIGNED_BYTE, image);
    if (error == 0) return;
    const char* text = agluErrorString(unsigned(error));
    AK_MSG("WARNING: could not apply texture due to OpenGL-error " << (text ? text : "")
                                                                   << "! Please try to reduce texture image size!");
}

void AK_VisibleObject::LoadTexture()
{
    int width, height;
    if (!LoadPicture(&width, &height)) return;
    if (LoadTexPar(_textureFileName.WithExtension("texpar"))) return;
    LoadWorldFile(AK_WorldFile::Name(_textureFileName), width, height);
}

// ----------------------------------------------------------------------------------------------------------------
// Parameters that come with the picture
// ----------------------------------------------------------------------------------------------------------------

bool AK_VisibleObject::LoadTexPar(const AK_String& name)
{
    if (!AK_System::FileExists(name)) return false;
    double numbers[8];
    if (!AK_ReadNumbersOfFile(name, numbers, 8)) {
        AK_MSG("W: no texture parameters could be read from " << name);
        return false;
    }
    for (int i = 0; i < 4; ++i) {
        _textureParametersS[i] = float(numbers[i]);
        _textureParametersT[i] = float(numbers[4 + i]);
    }
    AK_MSG("INFO: texture parameter loaded from " << name);
    return true;
}

/// With p = first + column * pixelX + row * pixelY solved for column and row, the centre of a pixel is at
/// s = (column + 0.5) / width, and, rows counting from the top, t = 1 - (row + 0.5) / height.
void AK_VisibleObject::LoadWorldFile(const AK_String& name, int width, int height)
{
    if (!AK_System::FileExists(name)) return;
    AK_WorldFile world;
    const bool complete = world.Read(name);
    const double det = Cross(world.pixelX, world.pixelY);
    const AK_Vec2 column{world.pixelY.y / det, -world.pixelY.x / det};   // how column and row grow with x and y
    const AK_Vec2 row{-world.pixelX.y / det, world.pixelX.x / det};
    const AK_Floats<4> s = Plane(column.x / width, column.y / width, (0.5 - Dot(column, world.first)) / width);
    const AK_Floats<4> t = Plane(-row.x / height, -row.y / height, 1 - (0.5 - Dot(row, world.first)) / height);
    if (!complete || !IsFinite(s) || !IsFinite(t)) {   // rows and columns of one direction have a det of 0
        AK_MSG("W: no geo-referencing could be read from " << name);
        return;
    }
    _textureParametersS = s;
    _textureParametersT = t;
    AK_MSG("INFO: geo-referencing loaded from world-file '" << name << "'");
}

void AK_VisibleObject::SaveTexPar(const AK_String& name)
{
    const AK_String& picture = name.IsEmpty() ? _textureFileName : name;
    if (picture.IsEmpty()) {
        _execStatus = "there is no picture whose parameters could be saved";
        return;
    }
    const AK_String path = picture.WithExtension("texpar");
    const bool written = AK_WriteFile(path, [this](std::FILE* file) {
        std::fprintf(file, "%s\n%s\n", AK_FloatsText(_textureParametersS.v, 4).c_str(),
                     AK_FloatsText(_textureParametersT.v, 4).c_str());
    });
    if (!written) {
        _execStatus = AK_String("cannot open ") + path;
        AK_MSG("ERROR: cannot open " << path);
        return;
    }
    AK_MSG("INFO: texture parameter saved to " << path);
}

// ----------------------------------------------------------------------------------------------------------------
// Parameters that are worked out
// ----------------------------------------------------------------------------------------------------------------

void AK_VisibleObject::TextureFit()
{
    float lo[3], hi[3];
    if (!BoundingBox(lo, hi)) return;
    const double width = double(hi[0]) - lo[0];
    const double height = double(hi[1]) - lo[1];
    if (!(width > 0) || !(height > 0)) {
        _execStatus = "a picture cannot be fitted to a box without width or height";
        return;
    }
    _textureParametersS = Plane(1 / width, 0, -lo[0] / width);
    _textureParametersT = Plane(0, 1 / height, -lo[1] / height);
}

// The plane a x + b y + c with three given values at three points p, by Cramer's rule; det is the determinant of the
// points' rows (x, y, 1), from which the first row has been subtracted.
static AK_Floats<4> PlaneThrough(const AK_Vec2 p[3], const double values[3], double det)
{
    const AK_Vec2 p1 = p[1] - p[0];
    const AK_Vec2 p2 = p[2] - p[0];
    const double v1 = values[1] - values[0];
    const double v2 = values[2] - values[0];
    const double a = (v1 * p2.y - v2 * p1.y) / det;
    const double b = (p1.x * v2 - p2.x * v1) / det;
    const double c = values[0] - a * p[0].x - b * p[0].y;
    return Plane(a, b, c);
}

void AK_VisibleObject::ApplyTextureReference()
{
    const AK_Vec2 picture[3] = {_texturePosX0, _texturePosX1, _texturePosX2};
    const AK_Vec2 world[3] = {_textureWorldPosX0, _textureWorldPosX1, _textureWorldPosX2};
    const double det = Cross(world[1] - world[0], world[2] - world[0]);
    const auto moved = [&](const AK_Floats<4>& plane) {
        double values[3];
        for (int i = 0; i < 3; ++i) values[i] = plane[0] * picture[i].x + plane[1] * picture[i].y + plane[3];
        return PlaneThrough(world, values, det);
    };
    const AK_Floats<4> s = moved(_textureParametersS);
    const AK_Floats<4> t = moved(_textureParametersT);
    if (!IsFinite(s) || !IsFinite(t)) {   // det is 0, or so small that it does not tell a direction
        _execStatus = "the three reference points in the world lie on one line";
        return;
    }
    _textureParametersS = s;
    _textureParametersT = t;
}
