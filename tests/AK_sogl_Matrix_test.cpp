// Matrices of the rasteriser. Expected matrices are worked out by hand, row by row.

#include "AK_sogl_Canvas.h"

#include <gtest/gtest.h>

#include <functional>
#include <unistd.h>

namespace
{

/// The matrix on top, in rows.
std::vector<float> Rows(unsigned name)
{
    float m[16];
    soglGetFloatv(name, m);
    std::vector<float> rows;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column) rows.push_back(m[row + 4 * column]);
    return rows;
}

void ExpectNear(const std::vector<float>& actual, const std::vector<float>& expected, const char* why)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) EXPECT_NEAR(actual[i], expected[i], 1e-6) << why << ", value " << i;
}

}   // namespace

TEST(AK_sogl_Matrix, FactorsAreMultipliedFromTheRight)
{
    const float columns[16] = {1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 10, 0, 11, 12, 13, 1};
    const struct {
        const char* why;
        std::function<void()> act;
        std::vector<float> rows;
        // clang-format off
    } cases[] = {
        {"translate after scale", [] { soglScalef(2, 3, 4), soglTranslatef(1, 1, 1); },
         {2, 0, 0, 2, 0, 3, 0, 3, 0, 0, 4, 4, 0, 0, 0, 1}},
        {"columns come in OpenGL's order", [&] { soglMultMatrixf(columns); },
         {1, 4, 7, 11, 2, 5, 8, 12, 3, 6, 10, 13, 0, 0, 0, 1}},
        {"quarter turn about z, axis not of unit length", [] { soglRotatef(90, 0, 0, 5); },
         {0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
        {"third of a turn about the diagonal moves x to y to z", [] { soglRotatef(120, 1, 1, 1); },
         {0, 0, 1, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1}},
        {"mirror in the plane x = y", [] { soglMirrorf(1, -1, 0); },
         {0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
        {"no mirror without a normal", [] { soglMirrorf(0, 0, 0); },
         {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
        {"projection with a positive third place", [] { soglOrtho(0, 4, -1, 1, 2, 6); },
         {0.5, 0, 0, -1, 0, 1, 0, 0, 0, 0, 0.5, -2, 0, 0, 0, 1}},
        {"projection of no width is ignored", [] { soglOrtho(4, 4, -1, 1, 2, 6); },
         {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
    };
    // clang-format on
    for (const auto& c : cases) {
        const Canvas canvas(4, 4);
        c.act();
        ExpectNear(Rows(GL_MODELVIEW_MATRIX), c.rows, c.why);
    }
}

TEST(AK_sogl_Matrix, StacksAreIndependentAndRestored)
{
    const Canvas canvas(4, 4);
    const std::vector<float> identity = Rows(GL_PROJECTION_MATRIX);
    soglPushMatrix();
    soglScalef(2, 2, 2);
    soglMatrixMode(GL_PROJECTION);
    soglTranslatef(1, 0, 0);
    soglMatrixMode(12345);   // ignored
    EXPECT_EQ(soglMatMode, 0);
    EXPECT_EQ(Rows(GL_PROJECTION_MATRIX)[3], 1);
    EXPECT_EQ(Rows(GL_MODELVIEW_MATRIX)[0], 2);
    soglMatrixMode(GL_MODELVIEW);
    soglPopMatrix();
    EXPECT_EQ(Rows(GL_MODELVIEW_MATRIX), identity);
    EXPECT_EQ(soglMat[1][1][0], 1) << "the popped matrix is reset";

    soglScalef(3, 3, 3);
    soglAllocBuffers(2, 2);
    EXPECT_EQ(Rows(GL_MODELVIEW_MATRIX), identity);
    EXPECT_EQ(Rows(GL_PROJECTION_MATRIX), identity);

    float untouched[16] = {7};
    soglGetFloatv(GL_VIEWPORT, untouched);
    EXPECT_EQ(untouched[0], 7);
}

TEST(AK_sogl_Matrix, ThirtyTwoMatricesFitAStack)
{
    const Canvas canvas(4, 4);
    for (int i = 0; i < 31; ++i) soglPushMatrix();
    EXPECT_EQ(soglMatIndex[1], 31);
    for (int i = 0; i < 31; ++i) soglPopMatrix();
    EXPECT_EQ(soglMatIndex[1], 0);
}

TEST(AK_sogl_Matrix_DeathTest, BrokenPromisesEndTheProcessWithStatusOne)
{
    // The message goes to standard output; a death test sees standard error.
    const auto show = [] { return dup2(STDERR_FILENO, STDOUT_FILENO); };
    const std::string at = "^src/AK_sogl_Matrix.cpp:[0-9]+: ";
    const struct {
        const char* condition;
        std::function<void()> act;
    } cases[] = {
        {"soglMatIndex\\[soglMatMode\\] < soglMatStackSize",
         [] {
             for (int i = 0; i < 32; ++i) soglPushMatrix();
         }                                                                                       },
        {"soglMatIndex\\[soglMatMode\\] >= 0",               [] { soglPopMatrix(); }             },
        {"fabs\\(div\\) > 1.0e-6",                           [] { soglRotatef(30, 0, 1e-7f, 0); }},
    };
    for (const auto& c : cases)
        EXPECT_EXIT((show(), c.act()), testing::ExitedWithCode(1), at + c.condition + " failed!$");
}
