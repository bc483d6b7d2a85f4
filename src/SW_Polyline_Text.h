// Lines and numbers of text files that can hold anything. For SW_Polyline_*.cpp and the files of scenarios only.

#pragma once

#include "AK_Basic_Vec.h"

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdlib>

/// Reads a line without its line end. What is longer than `limit` is cut there and its rest passed over. False at the
/// end of the file.
inline bool ReadTextLine(AK_TextReader& reader, AK_String& line, int limit, bool* wasCut = nullptr)
{
    if (!reader.ReadLine(line, limit + 1)) return false;
    const bool cut = line.Length() > limit && !line.EndsWith("\n");
    if (cut) {
        line[limit] = 0;
        for (int byte = 0; byte >= 0 && byte != '\n';) byte = reader.ReadByte();
    }
    if (wasCut) *wasCut = cut;
    line.RemoveLineEnd();
    return true;
}

/// True for what can be a coordinate: finite, and within the range of a float, in which boxes and drawing count.
inline bool IsCoordinate(double number) { return std::fabs(number) <= double(FLT_MAX); }

inline bool AreCoordinates(const AK_Vec& p) { return IsCoordinate(p.x) && IsCoordinate(p.y) && IsCoordinate(p.z); }

/// Reads the n coordinates that a text begins with. Between them stand blanks or, with `commas`, a comma directly
/// behind each number.
inline bool ScanCoordinates(const char* text, bool commas, double* numbers, int n)
{
    for (int i = 0; i < n; ++i) {
        if (i > 0 && commas && *text++ != ',') return false;
        char* end = nullptr;
        numbers[i] = std::strtod(text, &end);
        if (end == text || !IsCoordinate(numbers[i])) return false;
        text = end;
    }
    return true;
}

/// Reads the whole number that a text begins with; one beyond the range of an int is none. `end`, if not null, becomes
/// what follows it.
inline bool ScanInt(const char* text, int& number, const char** end = nullptr)
{
    char* rest = nullptr;
    const long value = std::strtol(text, &rest, 10);
    if (rest == text || value < INT_MIN || value > INT_MAX) return false;
    number = int(value);
    if (end) *end = rest;
    return true;
}
