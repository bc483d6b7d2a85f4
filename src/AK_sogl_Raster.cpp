// Rasteriser: buffers, drawing state, and the calls of the table that have nothing to do here.
//
// Setters only store. What the state means stands where it is used: vertices and polygons in
// AK_sogl_Raster_Primitives.cpp, pixels in AK_sogl_Internal.h.

#include "AK_sogl.h"

#include "AK_sogl_Internal.h"

#include <algorithm>
#include <new>

// clang-format off
constinit int soglWidth = 400, soglHeight = 400;
constinit unsigned char *soglBufR = nullptr, *soglBufG = nullptr, *soglBufB = nullptr;
constinit std::uint16_t* soglBufZ = nullptr;
constinit unsigned char soglClearColR = 0, soglClearColG = 0, soglClearColB = 0;
constinit float soglCurCol[3] = {0, 0, 0}, soglCurAlfa = 1;
constinit float soglCurNormal[4] = {0, 0, 1, 0};
constinit float soglLightPosition[4] = {0, 0, 1, 0};
constinit bool soglReverseNormals = false;
constinit unsigned soglPgModeFront = GL_FILL, soglPgModeBack = GL_FILL;
constinit bool soglPgOffsetPoint = false, soglPgOffsetLine = false, soglPgOffsetFill = false;
constinit float soglPolygonOffsetFactor = 0, soglPolygonOffsetUnits = 0;
constinit bool soglDepthTest = true, soglDepthWrite = true, soglBlend = false, soglLighting = false;
constinit float soglPtSize = 1, soglLinWid = 1;
// clang-format on

// ---- Buffers

namespace
{

template <class T>
void MakePlane(T*& plane, std::size_t pixels)
{
    plane = new (std::nothrow) T[pixels]();
}

template <class T>
void FreePlane(T*& plane)
{
    delete[] plane;
    plane = nullptr;
}

}   // namespace

int soglAllocBuffers(int width, int height)
{
    soglFreeBuffers();
    soglWidth = width;
    soglHeight = height;
    for (const unsigned stack : {GL_PROJECTION, GL_MODELVIEW}) {   // in this order: the mode stays at the modelview
        soglMatrixMode(stack);
        soglLoadIdentity();
    }
    if (width < 1 || height < 1 || width > soglFar / height) return 1;

    const std::size_t pixels = std::size_t(width) * std::size_t(height);
    MakePlane(soglBufR, pixels);
    MakePlane(soglBufG, pixels);
    MakePlane(soglBufB, pixels);
    MakePlane(soglBufZ, pixels);
    if (soglBufR && soglBufG && soglBufB && soglBufZ) return 0;
    soglFreeBuffers();
    return 1;
}

void soglFreeBuffers()
{
    FreePlane(soglBufR);
    FreePlane(soglBufG);
    FreePlane(soglBufB);
    FreePlane(soglBufZ);
}

void soglGetWidthHeightBuf(int* width, int* height, unsigned char** r, unsigned char** g, unsigned char** b)
{
    *width = soglWidth;
    *height = soglHeight;
    *r = soglBufR;
    *g = soglBufG;
    *b = soglBufB;
}

void soglClearColor(float r, float g, float b, float)
{
    soglClearColR = static_cast<unsigned char>(soglMapColour(r));
    soglClearColG = static_cast<unsigned char>(soglMapColour(g));
    soglClearColB = static_cast<unsigned char>(soglMapColour(b));
}

/// Colours and depths together, whatever the mask.
void soglClear(unsigned)
{
    if (!soglBufZ) return;
    const std::size_t pixels = std::size_t(soglWidth) * std::size_t(soglHeight);
    std::fill_n(soglBufR, pixels, soglClearColR);
    std::fill_n(soglBufG, pixels, soglClearColG);
    std::fill_n(soglBufB, pixels, soglClearColB);
    std::fill_n(soglBufZ, pixels, std::uint16_t(0));
}

// ---- Switches and modes

namespace
{

void Switch(unsigned capability, bool on)
{
    switch (capability) {
    case GL_DEPTH_TEST: soglDepthTest = on; break;
    case GL_BLEND: soglBlend = on; break;
    case GL_LIGHTING: soglLighting = on; break;
    case GL_POLYGON_OFFSET_POINT: soglPgOffsetPoint = on; break;
    case GL_POLYGON_OFFSET_LINE: soglPgOffsetLine = on; break;
    case GL_POLYGON_OFFSET_FILL: soglPgOffsetFill = on; break;
    }
}

}   // namespace

void soglEnable(unsigned capability)
{
    Switch(capability, true);
}

void soglDisable(unsigned capability)
{
    Switch(capability, false);
}

void soglDepthMask(unsigned char flag)
{
    soglDepthWrite = flag != 0;
}

void soglPolygonMode(unsigned face, unsigned mode)
{
    if (mode != GL_POINT && mode != GL_LINE && mode != GL_FILL) return;
    if (face == GL_FRONT || face == GL_FRONT_AND_BACK) soglPgModeFront = mode;
    if (face == GL_BACK || face == GL_FRONT_AND_BACK) soglPgModeBack = mode;
}

void soglPolygonOffset(float factor, float units)
{
    soglPolygonOffsetFactor = factor;
    soglPolygonOffsetUnits = units;
}

void soglLineWidth(float width)
{
    soglLinWid = width;
}

void soglPointSize(float size)
{
    soglPtSize = size;
}

/// Mirrored objects are drawn with GL_CW: their normals point the wrong way and are turned.
void soglFrontFace(unsigned mode)
{
    soglReverseNormals = mode == GL_CW;
}

// ---- What vertices get

void soglColor3f(float r, float g, float b)
{
    soglColor4f(r, g, b, 1);
}

void soglColor4f(float r, float g, float b, float alpha)
{
    soglCurCol[0] = r;
    soglCurCol[1] = g;
    soglCurCol[2] = b;
    soglCurAlfa = alpha;
}

void soglNormal3f(float x, float y, float z)
{
    const double sign = soglReverseNormals ? -1 : 1;
    const double normal[4] = {sign * x, sign * y, sign * z, 0};
    double eye[4];
    soglToEyeSpace(normal, eye);
    soglNormalise(eye);
    for (int i = 0; i < 4; ++i) soglCurNormal[i] = float(eye[i]);
}

void soglLightfv(unsigned, unsigned name, const float* values)
{
    if (name != GL_POSITION) return;
    const double position[4] = {values[0], values[1], values[2], values[3]};
    double eye[4];
    soglToEyeSpace(position, eye);
    for (int i = 0; i < 4; ++i) soglLightPosition[i] = float(eye[i]);
}

// ---- Errors

const char* sogluErrorString(unsigned code)
{
    static char text[32];
    std::snprintf(text, sizeof text, "error code %d", int(code));
    return text;
}

// ---- Calls without an effect: the viewport is always the whole buffer, textures are not drawn, and display lists are
// not recorded (a list's calls draw at once, while it is made).

// clang-format off
void soglViewport(int, int, int, int) {}
void soglGetIntegerv(unsigned, int*) {}
void soglPixelStorei(unsigned, int) {}
void soglDeleteTextures(int, const unsigned*) {}
void soglGenTextures(int, unsigned*) {}
void soglBindTexture(unsigned, unsigned) {}
void soglTexParameteri(unsigned, unsigned, int) {}
int sogluBuild2DMipmaps(unsigned, int, int, int, unsigned, unsigned, const void*) { return 1; }
void soglTexGeni(unsigned, unsigned, int) {}
void soglTexGenfv(unsigned, unsigned, const float*) {}
void soglTexEnvf(unsigned, unsigned, float) {}
unsigned soglGenLists(int) { return 0; }
void soglDeleteLists(unsigned, int) {}
void soglNewList(unsigned, unsigned) {}
void soglCallList(unsigned) {}
void soglEndList() {}
// clang-format on
