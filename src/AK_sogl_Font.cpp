// Bitmap fonts: finding one by its name, and drawing and measuring text with it.

#include "AK_sogl.h"

#include "AK_sogl_Font_Atlas.h"

#include <cstring>
#include <iterator>

namespace
{

constexpr struct {
    const char* name;
    const AK_BitmapFont* font;
} fonts[] = {
    {"TIMES_ROMAN_10", &soglFontTimesRoman10},
    {"HELVETICA_12",   &soglFontHelvetica12 },
    {"8_BY_13",        &soglFont8By13       },
};

/// What a bitmap is unpacked with: one value for each, and OpenGL's own defaults in case nobody answers for them.
constexpr unsigned pixelStoreNames[] = {GL_UNPACK_SWAP_BYTES, GL_UNPACK_LSB_FIRST,   GL_UNPACK_ROW_LENGTH,
                                        GL_UNPACK_SKIP_ROWS,  GL_UNPACK_SKIP_PIXELS, GL_UNPACK_ALIGNMENT};
constexpr int pixelStoreOfGlyphs[] = {0, 0, 0, 0, 0, 1};
constexpr int pixelStoreDefaults[] = {0, 0, 0, 0, 0, 4};

/// Null for a character that the font does not have.
const AK_BitmapGlyph* FindGlyph(const AK_BitmapFont* font, int character)
{
    if (!font || character < font->firstCharacter) return nullptr;
    const long i = long(character) - font->firstCharacter;
    return i < font->numberOfCharacters ? font->glyphs[i] : nullptr;
}

}   // namespace

const AK_BitmapFont* AK_FindBitmapFont(const char* name)
{
    for (const auto& row : fonts)
        if (std::strcmp(row.name, name) == 0) return row.font;
    return nullptr;
}

const char* AK_BitmapFontName(int i)
{
    return i >= 0 && i < int(std::size(fonts)) ? fonts[i].name : nullptr;
}

void aglutBitmapCharacter(const AK_BitmapFont* font, int character)
{
    const AK_BitmapGlyph* glyph = FindGlyph(font, character);
    if (!glyph) return;
    constexpr int count = int(std::size(pixelStoreNames));
    int saved[count];
    for (int i = 0; i < count; ++i) {
        saved[i] = pixelStoreDefaults[i];
        aglGetIntegerv(pixelStoreNames[i], &saved[i]);
        aglPixelStorei(pixelStoreNames[i], pixelStoreOfGlyphs[i]);
    }
    aglBitmap(glyph->width, glyph->height, glyph->bitmap, glyph->xOrigin, glyph->yOrigin, glyph->advance, 0);
    for (int i = 0; i < count; ++i) aglPixelStorei(pixelStoreNames[i], saved[i]);
}

void AK_DrawBitmapText(const AK_BitmapFont* font, const char* text)
{
    for (; *text; ++text) aglutBitmapCharacter(font, static_cast<unsigned char>(*text));
}

int aglutBitmapWidth(const AK_BitmapFont* font, int character)
{
    const AK_BitmapGlyph* glyph = FindGlyph(font, character);
    return glyph ? int(glyph->advance) : 0;
}

int aglutBitmapLength(const AK_BitmapFont* font, const char* text)
{
    int length = 0;
    for (; *text; ++text) length += aglutBitmapWidth(font, static_cast<unsigned char>(*text));
    return length;
}
