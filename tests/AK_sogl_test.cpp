// The table of drawing calls: what it is bound to, and what is drawn through it.

#include "AK_sogl_Canvas.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>

namespace
{

void BindNothing()
{
#define BIND_NOTHING(result, name, parameters, nothing) agl##name = nogl##name;
    AGL_RASTERISED_CALLS(BIND_NOTHING)
}

/// Whatever a test binds, the next one finds the table as it starts.
class AK_sogl : public testing::Test
{
protected:
    ~AK_sogl() override { BindNothing(); }
};

}   // namespace

TEST_F(AK_sogl, TableStartsOnTheLayerThatDoesNothing)
{
    EXPECT_EQ(aglAllocBuffers(10, 10), 1);
    EXPECT_EQ(aglWriteImageFile("/tmp/never_written.ppm"), 1);
    EXPECT_EQ(agluBuild2DMipmaps(GL_TEXTURE_2D, 3, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, nullptr), 1);
    EXPECT_EQ(agluErrorString(5), nullptr);
    EXPECT_EQ(aglGenLists(1), 0u);
    float out[16] = {3};
    aglGetFloatv(GL_MODELVIEW_MATRIX, out);
    EXPECT_EQ(out[0], 3);
    aglPopMatrix();   // would end the process in the rasteriser
}

TEST_F(AK_sogl, ContextBindsTheRasteriserButNotTheHostsCalls)
{
    AK_SetSoglContext();
    EXPECT_EQ(aglVertex3f, &soglVertex3f);
    EXPECT_EQ(aglClearColor, &soglClearColor);
    EXPECT_EQ(agluBuild2DMipmaps, &sogluBuild2DMipmaps);
    EXPECT_EQ(aglEndList, &soglEndList);
    EXPECT_EQ(aglBlendFunc, &noglBlendFunc);
    EXPECT_EQ(aglPushName, &noglPushName);
    EXPECT_EQ(aglPopName, &noglPopName);
    EXPECT_EQ(aglTexImage1D, &noglTexImage1D);
    EXPECT_EQ(aglTexCoord1f, &noglTexCoord1f);
    EXPECT_EQ(aglAllocBuffers, &noglAllocBuffers);
    EXPECT_EQ(aglFreeBuffers, &noglFreeBuffers);
    EXPECT_EQ(aglWriteImageFile, &noglWriteImageFile);
    EXPECT_EQ(agluBuild2DMipmaps(GL_TEXTURE_2D, 3, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, nullptr), 1);
    EXPECT_STREQ(agluErrorString(1281), "error code 1281");
    EXPECT_EQ(aglGenLists(1), 0u);
}

TEST_F(AK_sogl, MirrorThroughTheTableIsTheRasterisersOwn)
{
    const Canvas canvas(4, 4);
    AK_SetSoglContext();
    float own[16], throughTable[16];
    soglMirrorf(1, 2, 2);
    soglGetFloatv(GL_MODELVIEW_MATRIX, own);
    soglLoadIdentity();
    aglMirrorf(1, 2, 2);
    soglGetFloatv(GL_MODELVIEW_MATRIX, throughTable);
    for (int i = 0; i < 16; ++i) EXPECT_FLOAT_EQ(own[i], throughTable[i]);
    EXPECT_FLOAT_EQ(own[0], float(1 - 2 / 9.0));   // n = (1, 2, 2) / 3
    EXPECT_FLOAT_EQ(own[1], float(-4 / 9.0));
}

namespace
{

struct Point {
    double x, y, z;
};
std::vector<Point> sphere;   // vertices of the last sphere

}   // namespace

TEST_F(AK_sogl, SphereHasStacksOfEqualHeightAndOutwardQuads)
{
    sphere.clear();
    aglVertex3f = [](float x, float y, float z) { sphere.push_back({x, y, z}); };
    aglutSolidSphere(2, 8, 4);
    ASSERT_EQ(sphere.size(), 8u * 4 * 4);
    std::map<int, int> heights;
    for (const Point& p : sphere) {
        EXPECT_NEAR(std::sqrt(p.x * p.x + p.y * p.y + p.z * p.z), 2, 1e-6);
        ++heights[int(std::lround(p.z * 1000))];
    }
    const std::map<int, int> expected = {
        {-2000, 16},
        {-1000, 32},
        {0,     32},
        {1000,  32},
        {2000,  16}
    };
    EXPECT_EQ(heights, expected);
    for (std::size_t q = 0; q < sphere.size(); q += 4) {   // the diagonals turn about the outward direction
        const Point &a = sphere[q], &b = sphere[q + 1], &c = sphere[q + 2], &d = sphere[q + 3];
        const Point e = {c.x - a.x, c.y - a.y, c.z - a.z}, f = {d.x - b.x, d.y - b.y, d.z - b.z};
        const Point n = {e.y * f.z - e.z * f.y, e.z * f.x - e.x * f.z, e.x * f.y - e.y * f.x};
        EXPECT_GT(n.x * (a.x + c.x) + n.y * (a.y + c.y) + n.z * (a.z + c.z), 0) << "quad " << q / 4;
    }
    sphere.clear();
    aglutSolidSphere(2, 0, 4);
    aglutSolidSphere(2, 8, -1);
    EXPECT_TRUE(sphere.empty());
}

// ---- Fonts

namespace
{

std::map<unsigned, int> pixelStore;

}   // namespace

TEST_F(AK_sogl, GlyphSavesAndRestoresThePixelStoreState)
{
    pixelStore = {
        {GL_UNPACK_ALIGNMENT, 2},
        {GL_UNPACK_LSB_FIRST, 1}
    };
    const auto before = pixelStore;
    static int alignmentAtBitmap, lowBitFirstAtBitmap;
    aglGetIntegerv = [](unsigned name, int* out) {
        if (pixelStore.count(name)) *out = pixelStore[name];
    };
    aglPixelStorei = [](unsigned name, int value) {
        if (pixelStore.count(name)) pixelStore[name] = value;
    };
    aglBitmap = [](int, int, const unsigned char*, float, float, float, float) {
        alignmentAtBitmap = pixelStore[GL_UNPACK_ALIGNMENT];
        lowBitFirstAtBitmap = pixelStore[GL_UNPACK_LSB_FIRST];
    };
    aglutBitmapCharacter(AK_FindBitmapFont("8_BY_13"), 'A');
    EXPECT_EQ(alignmentAtBitmap, 1);
    EXPECT_EQ(lowBitFirstAtBitmap, 0);
    EXPECT_EQ(pixelStore, before);
}

TEST_F(AK_sogl, GlyphsAreDrawnUprightOnTheBaseLine)
{
    const Canvas canvas(16, 16);
    AK_SetSoglContext();
    soglRasterPos2f(canvas.X(1), canvas.Y(4));
    const AK_BitmapFont* font = AK_FindBitmapFont("8_BY_13");
    for (const char c : {'p', '!'}) aglutBitmapCharacter(font, c);
    EXPECT_EQ(soglRasterPos[0], 17);
    EXPECT_EQ(canvas.Picture(), R"(
................
................
................
............#...
............#...
..####......#...
..#...#.....#...
..#...#.....#...
..#...#.....#...
..#...#.........
..#...#.....#...
..####......#...
..#.............
..#.............
..#.............
................
)");
}

TEST_F(AK_sogl, CharactersThatAFontLacksHaveNoWidth)
{
    static const unsigned char bits[] = {0xff};
    const AK_BitmapGlyph wide = {0, 0, 8, 1, 9.75f, bits};
    const AK_BitmapGlyph* const glyphs[] = {&wide, nullptr, &wide};
    const AK_BitmapFont font = {3, 'a', glyphs};
    const struct {
        int character, width;
    } cases[] = {
        {'a',     9},
        {'b',     0},
        {'c',     9},
        {'d',     0},
        {'`',     0},
        {-5,      0},
        {1 << 30, 0}
    };
    for (const auto& c : cases) {
        EXPECT_EQ(aglutBitmapWidth(&font, c.character), c.width) << c.character;
        aglutBitmapCharacter(&font, c.character);
    }
    EXPECT_EQ(aglutBitmapLength(&font, "abc\xff"), 18);
    EXPECT_EQ(aglutBitmapLength(&font, ""), 0);
    EXPECT_EQ(aglutBitmapWidth(nullptr, 'a'), 0);
    aglutBitmapCharacter(nullptr, 'a');
}

TEST_F(AK_sogl, FontsOfTheProgramAreFoundByNameAndWhole)
{
    std::vector<std::string> names;
    for (int i = 0; AK_BitmapFontName(i); ++i) names.push_back(AK_BitmapFontName(i));
    EXPECT_EQ(names, (std::vector<std::string>{"TIMES_ROMAN_10", "HELVETICA_12", "8_BY_13"}));
    for (const auto& name : names) {
        const AK_BitmapFont* font = AK_FindBitmapFont(name.c_str());
        ASSERT_NE(font, nullptr);
        for (int c = '!'; c <= '~'; ++c) {
            const AK_BitmapGlyph* glyph = font->glyphs[c - font->firstCharacter];
            const int bytes = glyph->height * ((glyph->width - 1) / 8 + 1);
            EXPECT_TRUE(std::any_of(glyph->bitmap, glyph->bitmap + bytes, [](int byte) { return byte != 0; }))
                << name << " has nothing for " << char(c);
        }
    }
    for (int c = ' '; c <= '~'; ++c) EXPECT_EQ(aglutBitmapWidth(AK_FindBitmapFont("8_BY_13"), c), 8);
    EXPECT_EQ(AK_FindBitmapFont("COURIER_99"), nullptr);
    EXPECT_EQ(AK_BitmapFontName(-1), nullptr);
}
