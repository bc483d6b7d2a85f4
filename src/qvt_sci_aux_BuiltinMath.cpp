// Predefined constants and mathematical functions.

#include "qvt_sci_aux_Builtin.h"

#include <cmath>
#include <cstdlib>

// In read-only memory: a script that assigns to one faults instead of changing it for all others.
static const double pi = 3.14159265358979323846;
static const double e = 2.7182818284590452354;
static const double sqrt2 = 1.41421356237309504880;

std::span<const Builtin> ConstantBuiltins()
{
    static const Builtin rows[] = {
        // clang-format off
        {"// PREDEFINED CONSTANTS", nullptr,                                    nullptr},
        {"",                        nullptr,                                    nullptr},
        {"extern double pi;",       "3.14159265358979323846",                   &pi    },
        {"extern double e;",        "2.7182818284590452354",                    &e     },
        {"extern double sqrt2;",    "square root of 2, 1.41421356237309504880", &sqrt2 },
        {"",                        nullptr,                                    nullptr},
        // clang-format on
    };
    return rows;
}

// The C library's functions of one and of two numbers.
template <double (*function)(double)>
static double OfOne(const double* x)
{
    return function(*x);
}

template <double (*function)(double, double)>
static double OfTwo(const double* x, const double* y)
{
    return function(*x, *y);
}

// Halves go up, on the negative side too: -1.5 gives -1. Scripts rely on it.
static double qvt_sci_round(const double* x) { return std::floor(*x + 0.5); }

static int qvt_sci_abs(const int* j) { return *j < 0 ? int(0u - unsigned(*j)) : *j; }

static int qvt_sci_sign(const double* x) { return (*x > 0) - (*x < 0); }

// With a NaN on either side the comparison fails, and the result is y.
static double qvt_sci_min(const double* x, const double* y) { return *x < *y ? *x : *y; }

static double qvt_sci_max(const double* x, const double* y) { return *x > *y ? *x : *y; }

static double qvt_sci_fix(const double* x) { return Convert<int>(*x); }

static void qvt_sci_srand(const int* seed) { std::srand(unsigned(*seed)); }

static double qvt_sci_drand() { return std::rand() / 2147483647.0; }

std::span<const Builtin> MathBuiltins()
{
    static const Builtin rows[] = {
        // clang-format off
        {"// MATH FUNCTIONS (behave like C functions of math.h)", nullptr,                                                nullptr                  },
        {"",                                                      nullptr,                                                nullptr                  },
        {"double sqrt(double x);",                                "square root",                                          Native(OfOne<std::sqrt>) },
        {"double exp(double x);",                                 "e to the power of x",                                  Native(OfOne<std::exp>)  },
        {"double log(double x);",                                 "natural logarithm",                                    Native(OfOne<std::log>)  },
        {"double log10(double x);",                               "logarithm to base 10",                                 Native(OfOne<std::log10>)},
        {"double pow(double x, double y);",                       "x to the power of y",                                  Native(OfTwo<std::pow>)  },
        {"double sin(double x);",                                 "angle in radians",                                     Native(OfOne<std::sin>)  },
        {"double cos(double x);",                                 "angle in radians",                                     Native(OfOne<std::cos>)  },
        {"double tan(double x);",                                 "angle in radians",                                     Native(OfOne<std::tan>)  },
        {"double asin(double x);",                                "-pi/2 to pi/2",                                        Native(OfOne<std::asin>) },
        {"double acos(double x);",                                "0 to pi",                                              Native(OfOne<std::acos>) },
        {"double atan(double x);",                                "-pi/2 to pi/2",                                        Native(OfOne<std::atan>) },
        {"double atan2(double y, double x);",                     "angle of the point (x, y), -pi to pi",                 Native(OfTwo<std::atan2>)},
        {"double sinh(double x);",                                "hyperbolic sine",                                      Native(OfOne<std::sinh>) },
        {"double cosh(double x);",                                "hyperbolic cosine",                                    Native(OfOne<std::cosh>) },
        {"double tanh(double x);",                                "hyperbolic tangent",                                   Native(OfOne<std::tanh>) },
        {"double fabs(double x);",                                "absolute value",                                       Native(OfOne<std::fabs>) },
        {"double ceil(double x);",                                "smallest integral value not less than x",              Native(OfOne<std::ceil>) },
        {"double floor(double x);",                               "largest integral value not greater than x",            Native(OfOne<std::floor>)},
        {"double fmod(double x, double y);",                      "remainder of x/y, with the sign of x",                 Native(OfTwo<std::fmod>) },
        {"int abs(int j);",                                       "absolute value of an int",                             Native(qvt_sci_abs)      },
        {"int rand();",                                           "random integer, 0 to 2147483647",                      Native(std::rand)        },
        {"void srand(int seed);",                                 "starts a new sequence of random numbers",              Native(qvt_sci_srand)    },
        {"",                                                      nullptr,                                                nullptr                  },
        {"// MATH EXTENSIONS",                                    nullptr,                                                nullptr                  },
        {"",                                                      nullptr,                                                nullptr                  },
        {"double drand();",                                       "random number in [0, 1)",                              Native(qvt_sci_drand)    },
        {"int sign(double x);",                                   "-1, 0, +1",                                            Native(qvt_sci_sign)     },
        {"double min(double x, double y);",                       "the smaller of both; y if one is not a number",        Native(qvt_sci_min)      },
        {"double max(double x, double y);",                       "the larger of both; y if one is not a number",         Native(qvt_sci_max)      },
        {"double round(double x);",                               "nearest integral value, halves upward: -1.5 gives -1", Native(qvt_sci_round)    },
        {"double fix(double x);",                                 "cuts the decimals; |x| below 2147483648",              Native(qvt_sci_fix)      },
        {"",                                                      nullptr,                                                nullptr                  },
        // clang-format on
    };
    return rows;
}
