// Clone transformations: reading of the lines, their order, the walk, and what is refused.

#include "AK_VisObj3d_Clones.h"

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>

// Of the 32 matrices of a stack one is the host's, one its copy for the object; the rest is for what the object's own
// drawing pushes.
static constexpr int maxLines = 24;
static constexpr int maxNumbers = 7;
static constexpr double shortestAxis = 1.0e-6;   // the rasteriser ends the process at a shorter one

// ----------------------------------------------------------------------------------------------------------------
// One line
// ----------------------------------------------------------------------------------------------------------------

namespace {

enum class Kind { none, copies, translate, rotate, rotateAtPoint, mirror, mirrorAtPoint, scale };

/// The forms, of each word the longer one first. axis: where in the numbers a direction stands, -1 without one.
constexpr struct {
    const char* word;
    int numNumbers;
    Kind kind;
    int axis;
} forms[] = {
    {"trans", 3, Kind::translate, -1},     {"rot", 7, Kind::rotateAtPoint, 4}, {"rot", 4, Kind::rotate, 1},
    {"mirror", 6, Kind::mirrorAtPoint, 3}, {"mirror", 3, Kind::mirror, 0},     {"scale", 3, Kind::scale, -1},
};

struct Line {
    Kind kind = Kind::none;
    bool isNumbered = false;
    long number = 0;              // of the copy that it acts on, counted from 1
    int copies = 0;               // of Kind::copies
    double v[maxNumbers] = {0};   // as they stand in the line
    int axis = -1;
};

/// Reads "<number>:" before a word; returns what follows it, or the text itself without one.
const char* ReadNumber(const char* text, Line& line)
{
    char* end;
    const long number = std::strtol(text, &end, 10);
    if (end == text || *end != ':') return text;
    line.isNumbered = true;
    line.number = number;
    return end + 1;
}

Line ParseLine(const AK_String& text)
{
    Line line;
    const char* word = ReadNumber(text.c_str(), line);
    if (!line.isNumbered) word += std::strspn(word, " \t\r");
    if (!line.isNumbered && std::strncmp(word, "cp", 2) == 0) {
        char* end;
        const long n = std::strtol(word + 2, &end, 10);
        if (end == word + 2) return line;
        line.kind = Kind::copies;
        line.copies = int(std::clamp(n, long(INT_MIN), long(INT_MAX)));
        return line;
    }
    for (const auto& form : forms) {
        const size_t length = std::strlen(form.word);
        if (std::strncmp(word, form.word, length) != 0) continue;
        const char* next = word + length;
        int i = 0;
        for (char* end; i < form.numNumbers; ++i, next = end) {
            line.v[i] = std::strtod(next, &end);
            if (end == next) break;
        }
        if (i < form.numNumbers) continue;
        line.kind = form.kind;
        line.axis = form.axis;
        break;
    }
    return line;
}

/// True for "<number>:<word>" with a word of a transformation: the line belongs to the one above it.
bool BelongsToLineAbove(const AK_String& text)
{
    Line line;
    const char* word = ReadNumber(text.c_str(), line);
    if (!line.isNumbered) return false;
    word += std::strspn(word, " \t");
    const size_t length = std::strcspn(word, " \t\r");
    return std::any_of(std::begin(forms), std::end(forms), [&](const auto& form) {
        return std::strlen(form.word) == length && std::strncmp(word, form.word, length) == 0;
    });
}

void ApplyAtPoint(const double point[3], const AK_CloneContext& context, auto transform)
{
    context.translate(float(point[0]), float(point[1]), float(point[2]));
    transform();
    context.translate(float(-point[0]), float(-point[1]), float(-point[2]));
}

void Apply(const Line& line, const AK_CloneContext& context)
{
    const double* v = line.v;
    const auto call = [](auto function, const double* at) { function(float(at[0]), float(at[1]), float(at[2])); };
    const auto rotate = [&](const double* axis) {
        context.rotate(float(v[0]), float(axis[0]), float(axis[1]), float(axis[2]));
    };
    switch (line.kind) {
    case Kind::translate: call(context.translate, v); break;
    case Kind::rotate: rotate(v + 1); break;
    case Kind::rotateAtPoint: ApplyAtPoint(v + 1, context, [&] { rotate(v + 4); }); break;
    case Kind::mirror: call(context.mirror, v); break;
    case Kind::mirrorAtPoint: ApplyAtPoint(v, context, [&] { call(context.mirror, v + 3); }); break;
    case Kind::scale: call(context.scale, v); break;
    case Kind::copies:
    case Kind::none: break;
    }
}

}   // namespace

// ----------------------------------------------------------------------------------------------------------------
// The text
// ----------------------------------------------------------------------------------------------------------------

AK_String CloneTrafosError(const AK_String& text, int maxCopies)
{
    AK_List<AK_String> lines(1);
    text.Split('\n', lines);
    if (lines.Size() > maxLines)
        return AK_String("clone transformations of more than ") + AK_String(maxLines, "%d") + " lines";
    long copies = 1;   // an empty group counts as one, since the groups around it are walked for nothing
    for (const AK_String& text : lines) {
        const Line line = ParseLine(text);
        if (line.kind == Kind::copies) copies *= std::max(line.copies, 1);
        if (copies > maxCopies)
            return AK_String("clone transformations with more than ") + AK_String(maxCopies, "%d") + " copies";
        for (const double number : line.v)
            if (line.kind != Kind::none && !(std::fabs(number) <= FLT_MAX))
                return AK_String("a number is not finite in '") + text + "'";
        if (line.axis < 0) continue;
        const double* axis = line.v + line.axis;
        if (!(std::hypot(float(axis[0]), float(axis[1]), float(axis[2])) > shortestAxis))
            return AK_String("an axis without length in '") + text + "'";
    }
    return "";
}

AK_String reordered_trafos(const AK_String& text)
{
    AK_List<AK_String> lines(1), items(1);
    text.Split('\n', lines);
    for (const AK_String& line : lines) {
        if (BelongsToLineAbove(line) && !items.IsEmpty())
            items[items.Size() - 1] = items[items.Size() - 1] + "\n" + line;
        else
            items.Append(line);
    }
    std::reverse(items.begin(), items.end());
    return AK_String(items, "\n");
}

void process_clones(const char* text, const AK_CloneContext& context, int index, int count, int flipped)
{
    const char* end = std::strchr(text, '\n');
    if (!end) {
        context.draw(flipped, context.object);
        return;
    }
    const Line line = ParseLine(AK_String(text, end));
    const char* rest = end + 1;
    context.pushMatrix();
    if (line.kind == Kind::copies) {
        for (int i = 0; i < line.copies; ++i) process_clones(rest, context, i, line.copies, flipped);
    } else {
        if (!line.isNumbered || line.number == index + 1L) Apply(line, context);
        const bool isMirror = line.kind == Kind::mirror || line.kind == Kind::mirrorAtPoint;
        process_clones(rest, context, index, count, isMirror ? !flipped : flipped);
    }
    context.popMatrix();
}
