// The C face of AK_Triangulation2d: nothing but calls.

#include "AK_Triangulation2d_C.h"

#include "AK_Triangulation2d.h"

using T = AK_Triangulation2d;

static void Store(const AK_Vec2& p, double* out)
{
    out[0] = p.x;
    out[1] = p.y;
}

const double AK_Triangulation2d_sep = T::sep;

T* AK_Triangulation2d_Construct(int nPts, const double* x) { return new T(nPts, x); }
void AK_Triangulation2d_Destroy(T* o) { delete o; }
int AK_Triangulation2d_NumPts(const T* o) { return o->NumPts; }
int AK_Triangulation2d_NumTris(const T* o) { return o->NumTris; }
int AK_Triangulation2d_TriPt(const T* o, int t, int i) { return o->TriPt(t, i); }
int AK_Triangulation2d_TriNeigh(const T* o, int t, int i) { return o->TriNeigh(t, i); }
int AK_Triangulation2d_TriOut(const T* o, int t) { return o->TriOut(t); }
void AK_Triangulation2d_GetCenter(const T* o, const double* x, int t, double* out) { Store(o->GetCenter(x, t), out); }

void AK_Triangulation2d_GetCircumcenter(const T* o, const double* x, int t, double* out)
{
    Store(o->GetCircumcenter(x, t), out);
}

int AK_Triangulation2d_TriContaining(const T* o, const double* x, const double* p, int start)
{
    return o->TriContaining(x, {p[0], p[1]}, start);
}

void AK_Triangulation2d_CreateIsolines(const T* o, const double* x, const double* f, double level, int closedOnly,
                                       double** out, int* nOut)
{
    o->CreateIsolines(x, f, level, closedOnly, out, nOut);
}

int AK_Triangulation2d_Trim(T* o, const double* x, double rMax) { return o->Trim(x, rMax); }
void AK_Triangulation2d_SmoothValues(const T* o, double* f) { o->SmoothValues(f); }
