// Primitives: what becomes of the vertices between soglBegin and soglEnd.
//
// A vertex is transformed, coloured (and lit) and put into one of three slots; as soon as the slots hold a point, a
// line or a triangle it is drawn. Quads and polygons are fans of triangles around slot 0: after each triangle slot 2
// moves to slot 1 and waits for the next vertex. Thus a primitive of any length needs no more than three slots.
//
//   quad, lines     first triangle 0-1, 1-2; second 1-2, 2-0: the diagonal is never drawn
//   polygon, lines  first triangle 0-1, 1-2; later ones 1-2; soglEnd closes the outline from slot 1 to slot 0

#include "AK_sogl.h"

#include "AK_sogl_Internal.h"

#include <algorithm>
#include <cmath>

constinit unsigned soglPgMode = GL_FILL;
constinit int soglOffset = 0;
constinit int soglMode = -1;
constinit int soglVertexIndex = 0;
constinit int soglTriangles = 0;

namespace
{

// The vertex store, after transformation and lighting.
float vertexPosition[3][3];
float vertexColour[3][3];
float vertexAlpha[3];

// ---- Light

constexpr double ambient = 0.2;

bool IsFace()
{
    switch (soglMode) {
    case GL_TRIANGLES:
    case GL_QUADS:
    case GL_POLYGON: return true;
    default: return false;
    }
}

/// What the light leaves of a colour at a vertex, 0.2 to 1. A face of which one side is filled and the other is not is
/// lit on its filled side only; everything else is lit on both sides.
double LightFactor(const double eye[4])
{
    double light[3];
    const bool positional = soglLightPosition[3] > 0.5f;
    for (int i = 0; i < 3; ++i) light[i] = soglLightPosition[i] - (positional ? eye[i] : 0);
    soglNormalise(light);
    double intensity = light[0] * soglCurNormal[0] + light[1] * soglCurNormal[1] + light[2] * soglCurNormal[2];
    if (IsFace()) {
        const bool frontFilled = soglPgModeFront == GL_FILL;
        const bool backFilled = soglPgModeBack == GL_FILL;
        if (backFilled && !frontFilled) intensity = -intensity;
        if (backFilled != frontFilled && intensity < 0) return ambient;
    }
    return std::fmin(std::fabs(intensity) + ambient, 1.0);
}

// ---- Faces

unsigned PolygonModeOfTriangle(const float v[3][3])
{
    if (soglPgModeFront == soglPgModeBack) return soglPgModeFront;
    const double e1[2] = {double(v[1][0]) - v[0][0], double(v[1][1]) - v[0][1]};
    const double e2[2] = {double(v[2][0]) - v[0][0], double(v[2][1]) - v[0][1]};
    return e1[0] * e2[1] - e1[1] * e2[0] < 0 ? soglPgModeFront : soglPgModeBack;
}

void DrawPoint(int slot)
{
    soglPoint(vertexPosition[slot], vertexColour[slot], soglPtSize, vertexAlpha[slot]);
}

void DrawEdge(int from, int to)
{
    soglLine(vertexPosition[from], vertexPosition[to], vertexColour[from], vertexColour[to], soglLinWid,
             vertexAlpha[from], vertexAlpha[to]);
}

void DrawTriangleAsPoints()
{
    if (soglTriangles == 0) {
        DrawPoint(0);
        DrawPoint(1);
    }
    DrawPoint(2);
}

void DrawTriangleAsLines()
{
    if (soglTriangles == 0) DrawEdge(0, 1);
    DrawEdge(1, 2);
    const bool lastOfQuad = soglMode == int(GL_QUADS) && soglTriangles == 1;
    if (lastOfQuad || soglMode == int(GL_TRIANGLES)) DrawEdge(2, 0);
}

/// Draws the three slots by the polygon mode. The offset stays in force: the closing edge of a polygon needs it.
void DrawFace()
{
    soglPgMode = PolygonModeOfTriangle(vertexPosition);
    soglOffset = soglComputePgOffset(vertexPosition);
    switch (soglPgMode) {
    case GL_POINT: DrawTriangleAsPoints(); break;
    case GL_LINE: DrawTriangleAsLines(); break;
    default: soglTriangle(vertexPosition, vertexColour, vertexAlpha);
    }
}

void MoveSlot(int from, int to)
{
    std::copy_n(vertexPosition[from], 3, vertexPosition[to]);
    std::copy_n(vertexColour[from], 3, vertexColour[to]);
    vertexAlpha[to] = vertexAlpha[from];
}

/// After a triangle of a fan.
void ContinueFan()
{
    MoveSlot(2, 1);
    soglVertexIndex = 2;
    ++soglTriangles;
}

/// Starts the next point, line, triangle or quad of the primitive.
void Restart()
{
    soglVertexIndex = 0;
    soglTriangles = 0;
    soglOffset = 0;
}

/// Draws what the vertex that has just come in completes.
void Assemble()
{
    switch (soglMode) {
    case GL_POINTS:
        DrawPoint(0);
        Restart();
        break;
    case GL_LINES:
        if (soglVertexIndex < 2) break;
        DrawEdge(0, 1);
        Restart();
        break;
    case GL_LINE_STRIP:
        if (soglVertexIndex < 2) break;
        DrawEdge(0, 1);
        MoveSlot(1, 0);
        soglVertexIndex = 1;
        break;
    case GL_TRIANGLES:
        if (soglVertexIndex < 3) break;
        DrawFace();
        Restart();
        break;
    case GL_QUADS:
        if (soglVertexIndex < 3) break;
        DrawFace();
        ContinueFan();
        if (soglTriangles == 2) Restart();
        break;
    case GL_POLYGON:
        if (soglVertexIndex < 3) break;
        DrawFace();
        ContinueFan();
        break;
    }
}

}   // namespace

/// Slope of the triangle in depth, the greater of both directions, times the factor, plus the units, in hundredths of
/// which a depth unit is made.
int soglComputePgOffset(const float v[3][3])
{
    const bool on = soglPgMode == GL_POINT  ? soglPgOffsetPoint
                    : soglPgMode == GL_LINE ? soglPgOffsetLine
                                            : soglPgOffsetFill;
    if (!on) return 0;
    double e1[3], e2[3];
    for (int i = 0; i < 3; ++i) {
        e1[i] = double(v[1][i]) - v[0][i];
        e2[i] = double(v[2][i]) - v[0][i];
    }
    const double d = std::fabs(e1[0] * e2[1] - e1[1] * e2[0]) + 1e-7;   // a triangle seen edge-on has no area
    const double slopeX = std::fabs(e1[1] * e2[2] - e2[1] * e1[2]) / d;
    const double slopeY = std::fabs(e1[2] * e2[0] - e2[2] * e1[0]) / d;
    return soglTruncate((std::fmax(slopeX, slopeY) * soglPolygonOffsetFactor + soglPolygonOffsetUnits) * 100.0);
}

void soglBegin(unsigned mode)
{
    switch (mode) {
    case GL_POINTS:
    case GL_LINES:
    case GL_LINE_STRIP:
    case GL_TRIANGLES:
    case GL_QUADS:
    case GL_POLYGON: soglMode = int(mode); break;
    default: soglMode = -1;
    }
    Restart();
}

void soglEnd()
{
    if (soglMode == int(GL_POLYGON) && soglTriangles > 0 && soglPgMode == GL_LINE) DrawEdge(1, 0);
    soglMode = -1;
    Restart();
}

void soglVertex3f(float x, float y, float z)
{
    const soglTransformed vertex = soglTransform(x, y, z);
    if (soglMode < 0) return;
    const double factor = soglLighting ? LightFactor(vertex.eye) : 1;
    std::copy_n(vertex.position, 3, vertexPosition[soglVertexIndex]);
    for (int i = 0; i < 3; ++i) vertexColour[soglVertexIndex][i] = float(soglCurCol[i] * factor);
    vertexAlpha[soglVertexIndex] = soglCurAlfa;
    ++soglVertexIndex;
    Assemble();
}

void soglVertex2f(float x, float y)
{
    soglVertex3f(x, y, 0);
}

// ---- Raster position

constinit int soglRasterPos[3] = {0, 0, 0};

void soglRasterPos3f(float x, float y, float z)
{
    const soglTransformed at = soglTransform(x, y, z);
    soglRasterPos[0] = soglMapCoordinate(at.position[0], soglWidth);
    soglRasterPos[1] = soglMapCoordinate(at.position[1], soglHeight);
    soglRasterPos[2] = soglMapDepth(at.position[2]);
}

void soglRasterPos2f(float x, float y)
{
    soglRasterPos3f(x, y, 0);
}
