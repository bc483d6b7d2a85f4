// Points of the world, handed to the table of drawing calls in its 32 bits.

#pragma once

#include "AK_Basic_Vec.h"
#include "AK_sogl.h"

inline void AK_DrawVertex(const AK_Vec& p) { aglVertex3f(float(p.x), float(p.y), float(p.z)); }
inline void AK_DrawNormal(const AK_Vec& n) { aglNormal3f(float(n.x), float(n.y), float(n.z)); }   // of length 1

/// Writes a text to the right of a point.
inline void AK_DrawTextAt(const AK_Vec& p, const AK_BitmapFont* font, const AK_String& text)
{
    aglRasterPos3f(float(p.x), float(p.y), float(p.z));
    AK_DrawBitmapText(font, text.c_str());
}
