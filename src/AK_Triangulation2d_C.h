/* AK_Triangulation2d for callers in C. Each function is the operation of that name (AK_Triangulation2d.h) with the
 * object first; points and lines are arrays of x, y pairs. */

#pragma once

#ifdef __cplusplus
extern "C" {
#endif

typedef struct AK_Triangulation2d AK_Triangulation2d;

/* Both coordinates of the point that stands between two lines. */
extern const double AK_Triangulation2d_sep;

AK_Triangulation2d* AK_Triangulation2d_Construct(int nPts, const double* x);
void AK_Triangulation2d_Destroy(AK_Triangulation2d* o);
int AK_Triangulation2d_NumPts(const AK_Triangulation2d* o);
int AK_Triangulation2d_NumTris(const AK_Triangulation2d* o);
int AK_Triangulation2d_TriPt(const AK_Triangulation2d* o, int t, int i);
int AK_Triangulation2d_TriNeigh(const AK_Triangulation2d* o, int t, int i);
int AK_Triangulation2d_TriOut(const AK_Triangulation2d* o, int t);
void AK_Triangulation2d_GetCenter(const AK_Triangulation2d* o, const double* x, int t, double* out);
void AK_Triangulation2d_GetCircumcenter(const AK_Triangulation2d* o, const double* x, int t, double* out);
int AK_Triangulation2d_TriContaining(const AK_Triangulation2d* o, const double* x, const double* p, int start);
void AK_Triangulation2d_CreateIsolines(const AK_Triangulation2d* o, const double* x, const double* f, double level,
                                       int closedOnly, double** out, int* nOut);
int AK_Triangulation2d_Trim(AK_Triangulation2d* o, const double* x, double rMax);
void AK_Triangulation2d_SmoothValues(const AK_Triangulation2d* o, double* f);

#ifdef __cplusplus
}
#endif
