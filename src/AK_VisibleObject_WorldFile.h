// World files: where a picture lies in the world. For AK_VisibleObject_* files only.
//
// A picture has its world file beside it, six numbers with whitespace between them:
//
//   pixelX.x pixelX.y   from one pixel to the next in a row, metres
//   pixelY.x pixelY.y   from one row to the next, from the top down
//   first.x first.y     centre of the first pixel of the first row, the upper left one

#pragma once

#include "AK_Basic_Vec.h"

struct AK_WorldFile {
    AK_Vec2 pixelX, pixelY, first;

    /// The name with another extension: "jgw" for "jpg", "JGW" for "JPG", "pmw" for "ppm", "xxw" for any other.
    static AK_String Name(const AK_String& picture);

    /// True if the file has six finite numbers.
    bool Read(const AK_String& name);
    /// One number a line. False if the file cannot be written.
    bool Write(const AK_String& name) const;
};

/// Reads the first n numbers of a small text file, which are separated by whitespace. True if there are n and all are
/// finite.
bool AK_ReadNumbersOfFile(const AK_String& name, double* numbers, int n);
