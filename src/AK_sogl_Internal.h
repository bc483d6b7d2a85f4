// The rasteriser's state and the one place that writes pixels; for the files of this family only.
//
// One instance per process. Arithmetic between stored values is in double; what is kept in 32 bits (positions, colours,
// normals) is declared so here. Every way from a floating value to a pixel, depth or colour goes through soglTruncate.
#pragma once

#include "AK_sogl.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

/// Ends the process when the condition does not hold: the message on standard output, exit status 1.
#define soglAssert(condition)                                                                                          \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            std::printf("%s:%d: %s failed!", __FILE__, __LINE__, #condition);                                          \
            std::exit(1);                                                                                              \
        }                                                                                                              \
    } while (0)

// ---- Buffers: index x + y * width, row 0 at the bottom. Depth 0 is farthest, greater is nearer.
extern int soglWidth, soglHeight;
extern unsigned char *soglBufR, *soglBufG, *soglBufB;
extern std::uint16_t* soglBufZ;
extern unsigned char soglClearColR, soglClearColG, soglClearColB;

// ---- Matrices: [0] projection, [1] modelview; column by column as in OpenGL.
inline constexpr int soglMatStackSize = 32;
extern double soglMat[2][soglMatStackSize][16];
extern int soglMatIndex[2];   // top of each stack
extern int soglMatMode;

// ---- What the next vertex gets
extern float soglCurCol[3], soglCurAlfa;
extern float soglCurNormal[4];       // eye space, unit length
extern float soglLightPosition[4];   // eye space; w above 0.5: a position, otherwise a direction
extern bool soglReverseNormals;

// ---- How primitives are drawn
extern unsigned soglPgMode;   // of the present triangle
extern unsigned soglPgModeFront, soglPgModeBack;
extern bool soglPgOffsetPoint, soglPgOffsetLine, soglPgOffsetFill;
extern float soglPolygonOffsetFactor, soglPolygonOffsetUnits;
extern int soglOffset;   // depth units, of the present primitive; subtracted from each of its depths
extern bool soglDepthTest, soglDepthWrite, soglBlend, soglLighting;
extern float soglPtSize, soglLinWid;   // pixels
extern int soglRasterPos[3];           // pixels, pixels, depth

// ---- Primitive being assembled
extern int soglMode;          // of Begin, -1 outside a Begin and End pair
extern int soglVertexIndex;   // vertices held
extern int soglTriangles;     // triangles drawn so far in this primitive

// ---- Operations that the files share

/// An eye-space position, and what the projection makes of it.
struct soglTransformed {
    double eye[4];
    float position[3];
};
soglTransformed soglTransform(float x, float y, float z);

/// result = top of the modelview stack * v.
void soglToEyeSpace(const double v[4], double result[4]);

/// The reflection of soglMirrorf; false for a normal without a direction.
bool soglMirrorMatrix(double x, double y, double z, double m[16]);

/// Scales the first three values to unit length; leaves them when they have no length.
void soglNormalise(double v[3]);

/// Primitives in transformed positions and unscaled colours; they obey soglOffset, depth test and blending.
/// positions x, y, z in -1 to 1; colours r, g, b and alphas in 0 to 1; sizes in pixels.
void soglPoint(const float position[3], const float colour[3], float size, float alpha);
void soglLine(const float p0[3], const float p1[3], const float c0[3], const float c1[3], float width, float a0,
              float a1);
void soglTriangle(const float positions[3][3], const float colours[3][3], const float alphas[3]);

/// Depth offset of the triangle in soglPgMode, depth units; 0 unless offsets are switched on for that mode.
int soglComputePgOffset(const float positions[3][3]);

/// No buffer has more pixels, so that this is outside of every one, and differences of such values still fit in an int.
inline constexpr int soglFar = 1'000'000'000;

/// Drops the fraction. Values past +-soglFar become +-soglFar, and what is no number becomes -soglFar.
inline int soglTruncate(double value)
{
    if (value >= soglFar) return soglFar;
    return value > -soglFar ? int(value) : -soglFar;
}

/// -1 to 1 to a pixel of a row or column of `pixels`.
inline int soglMapCoordinate(float value, int pixels)
{
    return soglTruncate((value * 0.5 + 0.5) * pixels);
}

inline int soglMapDepth(float z)
{
    return soglTruncate((z * 0.5 + 0.5) * 65535);
}

/// The product in 32 bits: a component made from a byte, n / 255.0f, comes back as n.
inline int soglMapColour(float component)
{
    return soglTruncate(255.0f * component);
}

/// Source over what is there, weighted by alpha.
inline unsigned char soglBlended(int source, unsigned char old, double alpha)
{
    return static_cast<unsigned char>(soglTruncate(source * alpha + old * (1 - alpha)));
}

/// The one place where a buffer is written. Pixels outside the buffer and depths outside 0 to 65534 (offset applied)
/// are dropped; the depth test drops what is farther than the pixel that stands there. There must be buffers: whoever
/// draws looks at soglBufZ once for a whole primitive.
inline void soglPixel(int x, int y, int depth, int r, int g, int b, double alpha)
{
    if (x < 0 || x >= soglWidth || y < 0 || y >= soglHeight) return;
    const unsigned z = unsigned(depth) - unsigned(soglOffset);   // a negative depth wraps to a huge one
    if (z > 65534) return;
    const std::size_t i = std::size_t(x) + std::size_t(y) * std::size_t(soglWidth);
    if (soglDepthTest && soglBufZ[i] > z) return;
    if (soglBlend) {
        soglBufR[i] = soglBlended(r, soglBufR[i], alpha);
        soglBufG[i] = soglBlended(g, soglBufG[i], alpha);
        soglBufB[i] = soglBlended(b, soglBufB[i], alpha);
    } else {
        soglBufR[i] = static_cast<unsigned char>(r);
        soglBufG[i] = static_cast<unsigned char>(g);
        soglBufB[i] = static_cast<unsigned char>(b);
    }
    if (soglDepthTest && soglDepthWrite) soglBufZ[i] = std::uint16_t(z);
}
