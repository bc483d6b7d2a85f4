// Matrices of the rasteriser: two stacks, projection and modelview, and what multiplies their tops.
//
// A matrix is 16 doubles, column by column as in OpenGL: element (row, column) is at row + 4 * column. Every call works
// on the top of the stack that soglMatrixMode chose. The lowest matrix of both stacks is the identity from the start,
// since they also serve as a calculator for boxes when no buffers were ever made.
//
// The products of the two stacks are not kept: a vertex goes through one matrix and then the other.

#include "AK_sogl.h"

#include "AK_sogl_Internal.h"

#include <algorithm>
#include <cmath>

// clang-format off
#define IDENTITY {1, 0, 0, 0,  0, 1, 0, 0,  0, 0, 1, 0,  0, 0, 0, 1}
// clang-format on

constinit double soglMat[2][soglMatStackSize][16] = {{IDENTITY}, {IDENTITY}};
constinit int soglMatIndex[2] = {0, 0};
constinit int soglMatMode = 1;

namespace
{

double* Top(int stack)
{
    return soglMat[stack][soglMatIndex[stack]];
}

/// current = current * m, that is, m acts on a vertex before all that was multiplied earlier.
void Multiply(const double m[16])
{
    double* current = Top(soglMatMode);
    double product[16];
    for (int column = 0; column < 4; ++column) {
        for (int row = 0; row < 4; ++row) {
            double sum = 0;
            for (int k = 0; k < 4; ++k) sum += current[row + 4 * k] * m[k + 4 * column];
            product[row + 4 * column] = sum;
        }
    }
    std::copy_n(product, 16, current);
}

/// The same with the upper three rows as they are written on paper; the fourth is 0 0 0 1.
void MultiplyRows(const double (&rows)[3][4])
{
    double m[16] = IDENTITY;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 4; ++column) m[row + 4 * column] = rows[row][column];
    Multiply(m);
}

}   // namespace

// ---- Stacks

void soglMatrixMode(unsigned mode)
{
    if (mode == GL_PROJECTION) soglMatMode = 0;
    if (mode == GL_MODELVIEW) soglMatMode = 1;
}

void soglPushMatrix()
{
    ++soglMatIndex[soglMatMode];
    soglAssert(soglMatIndex[soglMatMode] < soglMatStackSize);
    double* top = Top(soglMatMode);
    std::copy_n(top - 16, 16, top);
}

void soglPopMatrix()
{
    soglLoadIdentity();
    --soglMatIndex[soglMatMode];
    soglAssert(soglMatIndex[soglMatMode] >= 0);
}

void soglLoadIdentity()
{
    static constexpr double identity[16] = IDENTITY;
    std::copy_n(identity, 16, Top(soglMatMode));
}

void soglGetFloatv(unsigned name, float* out)
{
    if (name != GL_MODELVIEW_MATRIX && name != GL_PROJECTION_MATRIX) return;
    const double* top = Top(name == GL_MODELVIEW_MATRIX ? 1 : 0);
    for (int i = 0; i < 16; ++i) out[i] = float(top[i]);
}

// ---- Factors

void soglMultMatrixf(const float* m)
{
    double factor[16];
    std::copy_n(m, 16, factor);
    Multiply(factor);
}

/// The third diagonal place is +2 / (farZ - nearZ), where OpenGL has the negative: greater depth is nearer here.
void soglOrtho(double left, double right, double bottom, double top, double nearZ, double farZ)
{
    const double width = right - left;
    const double height = top - bottom;
    const double range = farZ - nearZ;
    if (width == 0 || height == 0 || range == 0) return;
    MultiplyRows({
        {2 / width, 0,          0,         -(right + left) / width },
        {0,         2 / height, 0,         -(top + bottom) / height},
        {0,         0,          2 / range, -(farZ + nearZ) / range }
    });
}

void soglTranslatef(float x, float y, float z)
{
    MultiplyRows({
        {1, 0, 0, x},
        {0, 1, 0, y},
        {0, 0, 1, z}
    });
}

void soglScalef(float x, float y, float z)
{
    MultiplyRows({
        {x, 0, 0, 0},
        {0, y, 0, 0},
        {0, 0, z, 0}
    });
}

void soglRotatef(float angle, float x, float y, float z)
{
    using std::fabs;
    const double div = std::sqrt(double(x) * x + double(y) * y + double(z) * z);
    soglAssert(fabs(div) > 1.0e-6);
    const double a = x / div;
    const double b = y / div;
    const double c = z / div;
    const double radians = angle * (3.14159265358979323846 / 180);
    const double cosine = std::cos(radians);
    const double sine = std::sin(radians);
    const double rest = 1 - cosine;
    MultiplyRows({
        {a * a * rest + cosine,   a * b * rest - c * sine, a * c * rest + b * sine, 0},
        {b * a * rest + c * sine, b * b * rest + cosine,   b * c * rest - a * sine, 0},
        {c * a * rest - b * sine, c * b * rest + a * sine, c * c * rest + cosine,   0}
    });
}

/// I - 2 n n^T.
bool soglMirrorMatrix(double x, double y, double z, double m[16])
{
    double n[3] = {x, y, z};
    if (!(std::sqrt(x * x + y * y + z * z) > 1.0e-6)) return false;   // no direction to speak of
    soglNormalise(n);
    for (int column = 0; column < 4; ++column) {
        for (int row = 0; row < 4; ++row) {
            const double product = row < 3 && column < 3 ? n[row] * n[column] : 0;
            m[row + 4 * column] = (row == column ? 1 : 0) - 2 * product;
        }
    }
    return true;
}

void soglMirrorf(float x, float y, float z)
{
    double m[16];
    if (soglMirrorMatrix(x, y, z, m)) Multiply(m);
}

// ---- Transformation

void soglNormalise(double v[3])
{
    const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    if (!(length > 0)) return;
    for (int i = 0; i < 3; ++i) v[i] /= length;
}

void soglToEyeSpace(const double v[4], double result[4])
{
    const double* m = Top(1);
    for (int row = 0; row < 4; ++row)
        result[row] = m[row] * v[0] + m[row + 4] * v[1] + m[row + 8] * v[2] + m[row + 12] * v[3];
}

/// No division by w: the projection is orthographic.
soglTransformed soglTransform(float x, float y, float z)
{
    soglTransformed result;
    const double vertex[4] = {x, y, z, 1};
    soglToEyeSpace(vertex, result.eye);
    const double* m = Top(0);
    for (int row = 0; row < 3; ++row) {
        float sum = 0;
        for (int k = 0; k < 4; ++k) sum = float(sum + m[row + 4 * k] * result.eye[k]);   // kept in 32 bits on the way
        result.position[row] = sum;
    }
    return result;
}
