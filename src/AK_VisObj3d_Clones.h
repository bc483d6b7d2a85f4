// Clone transformations: a text that says what is done to an object to make the clones that are shown in its place.
//
//   trans x y z                       rot angle ax ay az              mirror nx ny nz              scale x y z
//   cp n                              rot angle px py pz ax ay az     mirror px py pz nx ny nz
//
// One to a line; angles in degrees, lengths in metres; the longer forms turn about an axis through the point p and
// mirror in a plane through it. The object goes through the lines from the first to the last, and "cp" makes n of what
// the lines above it made: "cp 3", "2:rot 90 0 0 1", "trans 0 0 5" are three copies, the second of which is turned, all
// lifted by 5. A transformation with a number and ":" right before it acts on that copy only, counted from 1, of the
// "cp" line that stands above it. A line that has none of these forms does nothing.
//
// The matrices multiply from the left: the last line's comes first. Hence the text is brought into that order before it
// is walked, and each line of it is a level of the matrix stack. The walk calls the matrix functions that it is handed:
// those of the table for drawing, those of the rasteriser for boxes.

#pragma once

#include "AK_Basic.h"

/// What the walk calls. Angles in degrees, the rest as for the functions of the table of drawing calls.
struct AK_CloneContext {
    void (*draw)(int flipped, void* object);   // once for each clone; flipped: an odd number of mirrors
    void* object;
    void (*pushMatrix)();
    void (*popMatrix)();
    void (*rotate)(float angle, float x, float y, float z);
    void (*translate)(float x, float y, float z);
    void (*scale)(float x, float y, float z);
    void (*mirror)(float x, float y, float z);
};

/// Why the text cannot be walked, or "". Refused are more lines than the matrix stack has room for, more than maxCopies
/// clones, axes and normals without length, and numbers that are not finite.
AK_String CloneTrafosError(const AK_String& text, int maxCopies);

/// The lines in the order in which their matrices multiply, each with a newline behind it: from the last to the first,
/// but numbered ones stay behind the line above them.
AK_String reordered_trafos(const AK_String& text);

/// Walks a reordered text and calls context.draw for each clone, with its matrix on the stack. `index` and `count` are
/// those of the copy that numbered lines ask for, 0 and 1 at first. Pushes as many matrices as there are lines. The
/// text is one for which CloneTrafosError is "".
void process_clones(const char* text, const AK_CloneContext& context, int index, int count, int flipped);
