#include "AK_Basic.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

TEST(AK_SolveLES, SolvesSmallSystems)
{
    const struct {
        const char* why;
        int n;
        std::vector<double> A, b, x;
        int singular;
    } cases[] = {
        {"one equation",         1, {4},                             {8},          {2},        0},
        {"needs a row exchange", 2, {0, 1, 1, 0},                    {3, 5},       {5, 3},     0},
        {"three by three",       3, {2, 1, -1, -3, -1, 2, -2, 1, 2}, {8, -11, -3}, {2, 3, -1}, 0},
        {"a zero row",           2, {0, 0, 1, 1},                    {0, 4},       {4, 0},     1},
        {"a zero column",        2, {0, 1, 0, 1},                    {2, 2},       {0, 2},     1},
        {"nothing but zeros",    2, {0, 0, 0, 0},                    {1, 2},       {1, 2},     2},
        {"equal rows",           2, {1, 2, 1, 2},                    {3, 3},       {3, 0},     1},
    };
    for (const auto& c : cases) {
        std::vector<double> x(std::size_t(c.n), -7);
        EXPECT_EQ(AK_SolveLES(c.n, c.A.data(), c.b.data(), x.data(), 1e-12), c.singular) << c.why;
        for (int i = 0; i < c.n; ++i) EXPECT_NEAR(x[std::size_t(i)], c.x[std::size_t(i)], 1e-14) << c.why;
    }
    EXPECT_EQ(AK_SolveLES(0, nullptr, nullptr, nullptr, 1e-12), 0);
}

TEST(AK_SolveLES, LeavesASmallResidual)
{
    const int n = 40;
    std::vector<double> A(n * n), b(n), x(n);
    AK_System::srand(5);
    for (double& a : A) a = AK_System::rand() / double(AK_System::rand_max) - 0.5;
    for (double& value : b) value = AK_System::rand() / double(AK_System::rand_max);
    ASSERT_EQ(AK_SolveLES(n, A.data(), b.data(), x.data(), 1e-12), 0);
    for (int i = 0; i < n; ++i) {
        double sum = -b[std::size_t(i)];
        for (int j = 0; j < n; ++j) sum += A[std::size_t(i * n + j)] * x[std::size_t(j)];
        EXPECT_NEAR(sum, 0, 1e-11) << "row " << i;
    }
}
