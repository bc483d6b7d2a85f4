// Predefined solvers of systems of linear equations: a dense one by elimination, a sparse symmetric one by iteration.
// Numbers are 64-bit; the order of every sum is part of the result.

#include "qvt_sci_aux_Builtin.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

static bool HasRoom(int index, int64_t elements)
{
    const int64_t room = qvt_sci_ArgLength(index);
    return room < 0 || room >= elements;
}

static double* NewValues(int64_t count)
{
    double* values = static_cast<double*>(std::calloc(size_t(std::max<int64_t>(count, 1)), sizeof(double)));
    QVT_SCI_CHECK(values);
    return values;
}

// ---------------------------------------------------------------------------------------------------------------------
// Gauss elimination

// The value itself as a divisor; an exact zero is counted and replaced by 1. A NaN is no zero and passes.
static double DivisorOrOne(double value, int* singularities)
{
    if (value != 0) return value;
    ++*singularities;
    return 1.0;
}

static void SwapInPivotRow(double** rows, int size, int k)
{
    int pivot = k;
    for (int i = k + 1; i < size; ++i) {
        if (std::fabs(rows[i][k]) > std::fabs(rows[pivot][k])) pivot = i;   // the first of equals
    }
    std::swap(rows[k], rows[pivot]);
}

// rows: size rows of size + 1 values, the right-hand side last. Returns the count of singularities.
static int Eliminate(double** rows, int size, double* x)
{
    int singularities = 0;
    for (int k = 0; k < size - 1; ++k) {
        SwapInPivotRow(rows, size, k);
        rows[k][k] = DivisorOrOne(rows[k][k], &singularities);
        for (int i = k + 1; i < size; ++i) {
            const double factor = rows[i][k] / rows[k][k];
            for (int j = k + 1; j <= size; ++j) rows[i][j] -= factor * rows[k][j];
        }
    }
    rows[size - 1][size - 1] = DivisorOrOne(rows[size - 1][size - 1], &singularities);

    for (int k = size - 1; k >= 0; --k) {
        double sum = rows[k][size];
        for (int j = k + 1; j < size; ++j) sum -= rows[k][j] * x[j];
        x[k] = sum / rows[k][k];
    }
    return singularities;
}

// matrix: row by row. Returns the count of singularities, in which case the solution still may be useful; -1, and
// leaves x alone, if an array is known to be too short.
static int qvt_sci_solveLES(const int* size, const double* matrix, const double* rhs, double* x)
{
    const int64_t n = *size;
    if (n <= 0) return 0;
    if (!HasRoom(1, n * n) || !HasRoom(2, n) || !HasRoom(3, n)) return -1;

    double* const values = NewValues(n * (n + 1));
    double** const rows = static_cast<double**>(std::malloc(size_t(n) * sizeof(double*)));
    QVT_SCI_CHECK(rows);
    for (int64_t i = 0; i < n; ++i) {
        rows[i] = values + i * (n + 1);
        std::memcpy(rows[i], matrix + i * n, size_t(n) * sizeof(double));
        rows[i][n] = rhs[i];
    }
    std::fill_n(x, n, 0.0);
    const int singularities = Eliminate(rows, int(n), x);
    std::free(rows);
    std::free(values);
    return singularities;
}

// ---------------------------------------------------------------------------------------------------------------------
// Preconditioned conjugate gradients

namespace {
// The symmetric matrix: its diagonal, and minus its values at the index pairs.
struct SparseMatrix {
    int nc, ne;
    const double* ap;
    const double* af;
    const int (*le)[2];
};

struct Limits {
    double tol;
    int minIter, maxIter;
};
}   // namespace

// result += sign * (off-diagonal part without its minus) * v
static void AddOffDiagonal(const SparseMatrix& m, double sign, const double* v, double* result)
{
    for (int e = m.ne - 1; e >= 0; --e) {
        const int i = m.le[e][0];
        const int j = m.le[e][1];
        result[i] += sign * (m.af[e] * v[j]);
        result[j] += sign * (m.af[e] * v[i]);
    }
}

static double Dot(int n, const double* a, const double* b)
{
    double sum = 0;
    for (int i = n - 1; i >= 0; --i) sum += a[i] * b[i];
    return sum;
}

static double SumOfMagnitudes(int n, const double* r)
{
    double sum = 0;
    for (int i = n - 1; i >= 0; --i) sum += std::fabs(r[i]);
    return sum;
}

static constexpr double SOLVED = 1e-12;     // residual below which nothing is left to do
static constexpr double NO_ZERO = 1e-100;   // keeps the ratio of two zero residuals a number

// work: the start residual and room for three more vectors. r0: the sum of that residual's magnitudes.
static double Iterate(const SparseMatrix& m, const Limits& limits, double r0, double* x, double* work)
{
    double* const r = work;
    double* const z = r + m.nc;
    double* const p = z + m.nc;
    double* const q = p + m.nc;
    const double tol = limits.tol;
    double residual = SOLVED;
    double rhoOld = 0;
    double eps = 0;
    int k = 0;
    while (k < limits.maxIter) {
        for (int i = m.nc - 1; i >= 0; --i) z[i] = r[i] / m.ap[i];
        const double rho = Dot(m.nc, r, z);
        if (k == 0) {
            eps = tol * rho * tol;
            std::copy_n(z, m.nc, p);
        } else {
            if (k >= limits.minIter && eps > rho) break;
            const double beta = rho / rhoOld;
            for (int i = m.nc - 1; i >= 0; --i) p[i] = beta * p[i] + z[i];
        }
        rhoOld = rho;

        for (int i = m.nc - 1; i >= 0; --i) q[i] = m.ap[i] * p[i];
        AddOffDiagonal(m, -1, p, q);
        const double alpha = rho / Dot(m.nc, p, q);
        for (int i = m.nc - 1; i >= 0; --i) {
            x[i] += alpha * p[i];
            r[i] -= alpha * q[i];
        }
        residual = SumOfMagnitudes(m.nc, r);
        if (tol < 0) qvt_sci_printf("qvt_sci_solve_pcg: iteration %d: residual %g\n", k + 1, residual);
        ++k;
        if (residual < SOLVED) break;   // whatever the least number of iterations is
    }
    const double ratio = residual / (r0 + NO_ZERO);
    if (tol < 0) {
        qvt_sci_printf("qvt_sci_solve_pcg: %d iterations, residual %g, log10(final/initial) %g\n", k, residual,
                       std::log10(ratio));
    }
    return ratio;
}

// Whether the arrays hold what the counts say, as far as their lengths are known, and the pairs name rows.
static bool IsSound(const SparseMatrix& m)
{
    if (!HasRoom(2, 2 * int64_t(m.ne)) || !HasRoom(7, m.ne)) return false;
    for (const int array : {6, 8, 9}) {
        if (!HasRoom(array, m.nc)) return false;
    }
    for (int e = 0; e < m.ne; ++e) {
        for (const int i : m.le[e]) {
            if (i < 0 || i >= m.nc) return false;
        }
    }
    return true;
}

// Conjugate gradients with the diagonal as preconditioner. x: start vector and result. A negative tol counts by its
// size and prints each iteration. Returns the sum of the residual's magnitudes relative to that of the start; 1, and
// leaves x alone, if an array is known to be too short or a pair of le names no row.
static double qvt_sci_solve_pcg(const int* nc, const int* ne, const int (*le)[2], const double* tol,
                                const int* min_iter, const int* max_iter, const double* ap, const double* af,
                                const double* b, double* x)
{
    const SparseMatrix m = {std::max(*nc, 0), std::max(*ne, 0), ap, af, le};
    if (!IsSound(m)) return 1;

    double* const work = NewValues(4 * int64_t(m.nc));
    double* const r = work;
    for (int i = m.nc - 1; i >= 0; --i) r[i] = b[i] - ap[i] * x[i];
    AddOffDiagonal(m, 1, x, r);
    const double r0 = SumOfMagnitudes(m.nc, r);
    double result = r0 / (r0 + NO_ZERO);
    if (r0 > SOLVED) result = Iterate(m, {*tol, *min_iter, *max_iter}, r0, x, work);
    std::free(work);
    return result;
}

std::span<const Builtin> SolverBuiltins()
{
    static const Builtin rows[] = {
        // clang-format off
        {"// SOLVING LINEAR EQUATION SYSTEMS",                                                                    nullptr, nullptr                  },
        {"",                                                                                                      nullptr, nullptr                  },
        {"// Gauss elimination with row pivoting; matrix row by row. Returns the number of singularities,",       nullptr,
         nullptr                                                                                                                                    },
        {"// in which case the solution still may be useful; -1: an array is too short.",                         nullptr, nullptr                  },
        {"int solveLES(int size, double matrix[], double rhs[], double x[]);",                                    "matrix*x = rhs", Native(qvt_sci_solveLES) },
        {"",                                                                                                      nullptr, nullptr                  },
        {"// Preconditioned conjugate gradients for a sparse symmetric matrix: diagonal ap[nc], and -af[e] at",   nullptr,
         nullptr                                                                                                                                    },
        {"// the index pairs le[e], e = 0 ... ne-1. x is the start vector and the result. Stops at max_iter, or",
         nullptr,                                                                                                          nullptr                  },
        {"// from min_iter on when the squared residual fell by tol*tol. A negative tol prints the iterations.",
         nullptr,                                                                                                          nullptr                  },
        {"// Returns the final residual relative to the initial one.",                                            nullptr, nullptr                  },
        {"double solve_pcg(int nc, int ne, int le[][2], double tol, int min_iter, int max_iter, double ap[], "
         "double af[], double b[], double x[]);",                                                        "matrix*x = b", Native(qvt_sci_solve_pcg)},
        // clang-format on
    };
    return rows;
}
