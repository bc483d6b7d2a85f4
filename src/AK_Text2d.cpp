#include "AK_Text2d.h"

#include "AK_sogl.h"

AK_Text2d::AK_Text2d(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

std::span<const AK_Text2d::Row> AK_Text2d::Rows()
{
    static constexpr Row rows[] = {
        {"Text",     value<&AK_Text2d::_text>                          },
        {"Font",     value<&AK_Text2d::_font>                          },
        {"FontList", shown<[](const AK_Text2d&) { return FontList(); }>},
    };
    return rows;
}

AK_String AK_Text2d::FontList()
{
    AK_String list;
    for (int i = 0; const char* name = AK_BitmapFontName(i); ++i) list = list + name + ak_sep;
    return list;
}

void AK_Text2d::Draw()
{
    const AK_BitmapFont* font = AK_FindBitmapFont(_font.c_str());
    aglRasterPos2f(0, 0);
    for (const char* c = _text.c_str(); *c; ++c) aglutBitmapCharacter(font, static_cast<unsigned char>(*c));
}
