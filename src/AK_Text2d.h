// A text in the overlay: labels of the map and of colour bars.

#pragma once

#include "AK_VisObj2d.h"

/// One or more lines of text, the first one at Position, in a bitmap font. Type "Text2d".
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

    /// Draws the text at the origin, its base line there. Nothing in a font that does not exist.
    void Draw() override;

private:
    AK_String _text;
    AK_String _font = "HELVETICA_12";
};
