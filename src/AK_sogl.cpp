// The table of drawing calls, its no-operation layer, and the shapes that are drawn through it.
//
// Every list of calls comes from the rows in the header, so that table, no-operation layer and rasteriser cannot
// disagree about a name or a parameter.

#include "AK_sogl.h"

#include "AK_sogl_Internal.h"

#include <cmath>

// ---- Table and no-operation layer

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-parameter"   // doing nothing with them is the point
#define AGL_DEFINE_POINTER(result, name, parameters, nothing)                                                          \
    result nogl##name parameters                                                                                       \
    {                                                                                                                  \
        return nothing;                                                                                                \
    }                                                                                                                  \
    result(*agl##name) parameters = nogl##name;

AGL_RASTERISED_CALLS(AGL_DEFINE_POINTER)
AGL_HOST_CALLS(AGL_DEFINE_POINTER)
#pragma GCC diagnostic pop

void AK_SetSoglContext()
{
#define AGL_BIND(result, name, parameters, nothing) agl##name = sogl##name;
    AGL_RASTERISED_CALLS(AGL_BIND)
}

// ---- Shapes

void aglMirrorf(float x, float y, float z)
{
    double m[16];
    if (!soglMirrorMatrix(x, y, z, m)) return;
    float columns[16];
    for (int i = 0; i < 16; ++i) columns[i] = float(m[i]);
    aglMultMatrixf(columns);
}

namespace
{

/// A circle of latitude of the unit sphere.
struct Ring {
    double z, radius;
};

Ring RingAt(int stack, int stacks)
{
    const double z = 2.0 * stack / stacks - 1;
    return {z, std::sqrt(std::fmax(0.0, 1 - z * z))};
}

void SphereVertex(double radius, const Ring& ring, double longitude)
{
    const double x = ring.radius * std::cos(longitude);
    const double y = ring.radius * std::sin(longitude);
    aglNormal3f(float(x), float(y), float(ring.z));
    aglVertex3f(float(radius * x), float(radius * y), float(radius * ring.z));
}

}   // namespace

void aglutSolidSphere(double radius, int slices, int stacks)
{
    const double circle = 2 * 3.14159265358979323846;
    aglBegin(GL_QUADS);
    for (int stack = 0; stack < stacks; ++stack) {
        const Ring lower = RingAt(stack, stacks);
        const Ring upper = RingAt(stack + 1, stacks);
        for (int slice = 0; slice < slices; ++slice) {
            const double west = circle * slice / slices;
            // The last slice ends exactly where the first one begins, or a seam would show.
            const double east = circle * ((slice + 1) % slices) / slices;
            SphereVertex(radius, lower, west);
            SphereVertex(radius, lower, east);
            SphereVertex(radius, upper, east);
            SphereVertex(radius, upper, west);
        }
    }
    aglEnd();
}
