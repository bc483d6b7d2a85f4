// Gaussian elimination with partial pivoting on a copy of the system: n rows of n + 1 numbers, the right side last.
// Rows are exchanged by their pointers. The order of operations is fixed, so results are the same in every build.

#include "AK_Basic.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

static double** CopySystem(int n, const double* A, const double* b)
{
    const std::size_t columns = std::size_t(n);
    double** matrix = static_cast<double**>(std::malloc(columns * sizeof(double*)));
    AK_ASSERT(matrix);
    for (std::size_t i = 0; i < columns; ++i) {
        matrix[i] = static_cast<double*>(std::malloc((columns + 1) * sizeof(double)));
        AK_ASSERT(matrix[i]);
        std::memcpy(matrix[i], A + i * columns, columns * sizeof(double));
        matrix[i][columns] = b[i];
    }
    return matrix;
}

// The row at or below k with the largest entry in column k; the first of equals.
static int PivotRow(double** matrix, int n, int k)
{
    int pivot = k;
    for (int i = k + 1; i < n; ++i) {
        if (std::fabs(matrix[i][k]) > std::fabs(matrix[pivot][k])) pivot = i;
    }
    return pivot;
}

// A pivot too small to divide by becomes 1; returns 1 if it had to.
static int MendPivot(double& pivot, double eps)
{
    if (!(std::fabs(pivot) < eps)) return 0;
    pivot = 1.0;
    return 1;
}

int AK_SolveLES(int n, const double* A, const double* b, double* x, double eps)
{
    if (n <= 0) return 0;
    double** matrix = CopySystem(n, A, b);

    int nSingular = 0;
    for (int k = 0; k < n; ++k) {   // for the last one this only mends the pivot
        const int pivot = PivotRow(matrix, n, k);
        nSingular += MendPivot(matrix[pivot][k], eps);
        std::swap(matrix[k], matrix[pivot]);
        for (int i = k + 1; i < n; ++i) {
            const double factor = matrix[i][k] / matrix[k][k];
            for (int j = k + 1; j <= n; ++j) matrix[i][j] -= factor * matrix[k][j];
        }
    }

    for (int i = n - 1; i >= 0; --i) {
        double rest = matrix[i][n];
        for (int j = i + 1; j < n; ++j) rest -= matrix[i][j] * x[j];
        x[i] = rest / matrix[i][i];
    }

    for (int i = 0; i < n; ++i) std::free(matrix[i]);
    std::free(matrix);
    return nSingular;
}
