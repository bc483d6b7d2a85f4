// Texts of the overlay: attributes, fonts, and drawing line by line.

#include "AK_Text2d.h"

#include "AK_sogl.h"

#include <algorithm>

AK_Text2d::AK_Text2d(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    _autoColored = 1;   // readable on any background
    RunInitializationCommands();
}

std::span<const AK_Text2d::Row> AK_Text2d::Rows()
{
    using T = AK_Text2d;
    // clang-format off
    static constexpr Row rows[] = {
        {"Text",     value<&T::_text>},
        {"Font",     value<&T::_font>},
        {"FontList", shown<[](const T&) { return FontList(); }>},
    };
    // clang-format on
    return rows;
}

AK_String AK_Text2d::FontList()
{
    AK_String list;
    for (int i = 0; const char* name = AK_BitmapFontName(i); ++i) list = list + name + ak_sep;
    return list;
}

float AK_Text2d::LineHeight(const AK_BitmapFont* font)
{
    int height = 0;   // pixels, of the highest character
    for (int i = 0; font && i < font->numberOfCharacters; ++i)
        if (font->glyphs[i]) height = std::max(height, font->glyphs[i]->height);
    return float(height) / float(_viewerHeight);
}

float AK_Text2d::LineWidth(const AK_BitmapFont* font, const AK_String& line)
{
    return font ? float(aglutBitmapLength(font, line.c_str())) / float(_viewerWidth) : 0;
}

void AK_Text2d::DrawLine(const AK_BitmapFont* font, const AK_String& line, float x, float y)
{
    aglRasterPos2f(x, y);
    AK_DrawBitmapText(font, line.c_str());
}

void AK_Text2d::Draw()
{
    const AK_BitmapFont* font = AK_FindBitmapFont(_font.c_str());
    const float lineHeight = LineHeight(font);
    AK_List<AK_String> lines(1);
    _text.Split('\n', lines);
    for (int i = 0; i < lines.Size(); ++i) DrawLine(font, lines[i], 0, -float(i) * lineHeight);
}
