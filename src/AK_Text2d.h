// A text in the overlay: labels on a picture, and the labels of a colour bar.

#pragma once

#include "AK_VisObj2d.h"

struct AK_BitmapFont;

/// One or more lines of text in a bitmap font; the base line of the first one begins at Position. Type "Text2d".
class AK_Text2d : public AK_Class<AK_Text2d, AK_VisObj2d> {
public:
    static constexpr const char* className = "AK_Text2d";
    static std::span<const Row> Rows();

    AK_Text2d(const AK_String& id, AK_Object* parent);

    const AK_String& Text() const { return _text; }
    void Text(const AK_String& text) { _text = text; }
    const AK_String& Font() const { return _font; }
    void Font(const AK_String& font) { _font = font; }

    /// Names of the fonts, each followed by "%AK_SEP%": what attributes that name a font offer.
    static AK_String FontList();

    // For what else writes into the overlay. Sizes are shares of the picture's width and height, by the size of the
    // viewer; a null font has none and draws nothing.
    static float LineHeight(const AK_BitmapFont* font);
    static float LineWidth(const AK_BitmapFont* font, const AK_String& line);
    /// Draws one line in the colour of the moment, its base line beginning at (x, y) of the current matrices.
    static void DrawLine(const AK_BitmapFont* font, const AK_String& line, float x, float y);

protected:
    void Draw() override;

private:
    AK_String _text;
    AK_String _font = "HELVETICA_12";
};
