// The bitmap fonts as text: pictures in the source that the compiler packs into bits. For AK_sogl_Font* files only.
//
// A font is an atlas of bands, separated by empty lines, of glyphs separated by bars, from the blank (32) to the tilde
// (126). "#" is a pixel; what stands between two bars is the glyph's whole width and its advance:
//
//   |...|.#.|.#.#.|
//   |...|.#.|.#.#.|
//   |...|...|.....|
//   |...|.#.|.....|
//
// To mend a glyph, edit its picture. An atlas that is not whole does not compile.
//
// The patterns are the outlines of the DejaVu fonts, drawn in black and white at the size in question. DejaVu's own
// changes are in the public domain; the fonts that they go back to came with this notice:
//
//   Copyright (c) 2003 by Bitstream, Inc. All Rights Reserved. Bitstream Vera is a trademark of Bitstream, Inc.
//
//   Permission is hereby granted, free of charge, to any person obtaining a copy of the fonts accompanying this license
//   ("Fonts") and associated documentation files (the "Font Software"), to reproduce and distribute the Font Software,
//   including without limitation the rights to use, copy, merge, publish, distribute, and/or sell copies of the Font
//   Software, and to permit persons to whom the Font Software is furnished to do so, subject to the following
//   conditions:
//
//   The above copyright and trademark notices and this permission notice shall be included in all copies of one or more
//   of the Font Software typefaces.
//
//   The Font Software may be modified, altered, or added to, and in particular the designs of glyphs or characters in
//   the Fonts may be modified and additional glyphs or characters may be added to the Fonts, only if the fonts are
//   renamed to names not containing either the words "Bitstream" or the word "Vera".
//
//   This License becomes null and void to the extent applicable to Fonts or Font Software that has been modified and is
//   distributed under the "Bitstream Vera" names.
//
//   The Font Software may be sold as part of a larger software package but no copy of one or more of the Font Software
//   typefaces may be sold by itself.
//
//   THE FONT SOFTWARE IS PROVIDED "AS IS", WITHOUT WARRANTY OF ANY KIND, EXPRESS OR IMPLIED, INCLUDING BUT NOT LIMITED
//   TO ANY WARRANTIES OF MERCHANTABILITY, FITNESS FOR A PARTICULAR PURPOSE AND NONINFRINGEMENT OF COPYRIGHT, PATENT,
//   TRADEMARK, OR OTHER RIGHT. IN NO EVENT SHALL BITSTREAM OR THE GNOME FOUNDATION BE LIABLE FOR ANY CLAIM, DAMAGES OR
//   OTHER LIABILITY, INCLUDING ANY GENERAL, SPECIAL, INDIRECT, INCIDENTAL, OR CONSEQUENTIAL DAMAGES, WHETHER IN AN
//   ACTION OF CONTRACT, TORT OR OTHERWISE, ARISING FROM, OUT OF THE USE OR INABILITY TO USE THE FONT SOFTWARE OR FROM
//   OTHER DEALINGS IN THE FONT SOFTWARE.
//
//   Except as contained in this notice, the names of Gnome, the Gnome Foundation, and Bitstream Inc., shall not be used
//   in advertising or otherwise to promote the sale, use or other dealings in this Font Software without prior written
//   authorization from the Gnome Foundation or Bitstream Inc., respectively. For further information, contact: fonts at
//   gnome dot org.
#pragma once

#include "AK_sogl.h"

#include <array>
#include <cstddef>
#include <string_view>

extern const AK_BitmapFont soglFontTimesRoman10, soglFontHelvetica12, soglFont8By13;

namespace sogl_font_atlas
{

inline constexpr int firstCharacter = ' ';
inline constexpr int characters = '~' - ' ' + 1;
inline constexpr int widest = 16;   // pixels

/// The glyphs of a font of so many rows, laid out as aglBitmap takes them.
template <int rows>
struct PackedFont {
    std::array<std::array<unsigned char, rows*(widest / 8)>, characters> bits{};
    std::array<int, characters> widths{};
};

/// The line of an atlas that begins at `start`, without its end.
constexpr std::string_view LineAt(std::string_view art, std::size_t start)
{
    return art.substr(start, art.find('\n', start) - start);
}

/// Packs one line of a band: row `row` from the bottom, the band's first glyph being `glyph`. Returns the glyphs in it.
template <int rows>
constexpr int PackLine(PackedFont<rows>& font, std::string_view line, int glyph, int row)
{
    int packed = 0;
    for (std::size_t start = 1; start < line.size(); ++packed) {
        const std::size_t end = line.find('|', start);
        const int width = int(end - start);
        int& glyphWidth = font.widths[glyph + packed];
        if (row == rows - 1) glyphWidth = width;
        if (width < 1 || width > widest || width != glyphWidth) throw "glyph of uneven or impossible width";
        const int rowBytes = (width - 1) / 8 + 1;
        for (int x = 0; x < width; ++x)
            if (line[start + x] == '#') font.bits[glyph + packed][row * rowBytes + x / 8] |= 0x80 >> x % 8;
        start = end + 1;
    }
    return packed;
}

template <int rows>
constexpr PackedFont<rows> Pack(std::string_view art)
{
    PackedFont<rows> font;
    int glyph = 0;
    for (std::size_t at = 1; at < art.size(); ++at) {   // 1: a raw string begins with the end of its first line
        int packed = 0;
        for (int row = rows - 1; row >= 0; --row) {
            const std::string_view line = LineAt(art, at);
            packed = PackLine(font, line, glyph, row);
            at += line.size() + 1;
        }
        glyph += packed;
    }
    if (glyph != characters) throw "an atlas needs all printable characters";
    return font;
}

/// The records of a packed font whose base line lies `descent` rows above the lowest one.
template <int rows>
constexpr std::array<AK_BitmapGlyph, characters> Glyphs(const PackedFont<rows>& font, int descent)
{
    std::array<AK_BitmapGlyph, characters> glyphs{};
    for (int i = 0; i < characters; ++i)
        glyphs[i] = {0, float(descent), font.widths[i], rows, float(font.widths[i]), font.bits[i].data()};
    return glyphs;
}

constexpr std::array<const AK_BitmapGlyph*, characters> Pointers(const std::array<AK_BitmapGlyph, characters>& glyphs)
{
    std::array<const AK_BitmapGlyph*, characters> pointers{};
    for (int i = 0; i < characters; ++i) pointers[i] = &glyphs[i];
    return pointers;
}

}   // namespace sogl_font_atlas

/// Defines font `name` from the constant `art`.
#define SOGL_DEFINE_FONT(name, art, rows, descent)                                                                     \
    static constexpr auto packed = sogl_font_atlas::Pack<rows>(art);                                                   \
    static constexpr auto glyphs = sogl_font_atlas::Glyphs(packed, descent);                                           \
    static constexpr auto pointers = sogl_font_atlas::Pointers(glyphs);                                                \
    const AK_BitmapFont name = {sogl_font_atlas::characters, sogl_font_atlas::firstCharacter, pointers.data()};
