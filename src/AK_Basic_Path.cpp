// The operations of AK_String on paths. A path is text: only CleanupPath and RelativePath ask the system, and only for
// the working directory.

#include "AK_Basic.h"

#include <cstring>

void AK_String::AppendName(const AK_String& name, char sep)
{
    AK_String path = IsEmpty() ? AK_String(".") : *this;
    if (path[path.Length() - 1] != sep) path.Append(AK_String(sep));
    path.Append(name);
    Swap(path);
}

void AK_String::AppendExtension(const AK_String& extension)
{
    AK_String path = *this + "." + extension;
    Swap(path);
}

AK_String AK_String::WithExtension(const AK_String& extension) const
{
    AK_String result = *this;
    if (!Extension().IsEmpty()) result.RemoveExtension();
    result.AppendExtension(extension);
    return result;
}

AK_String AK_String::BaseName() const
{
    const char* separator = std::strrchr(_s, '/');
    AK_String name = separator ? AK_String(separator + 1) : *this;
    name.RemoveExtension();
    return name;
}

void AK_String::RemoveExtension()
{
    if (char* dot = std::strrchr(_s, '.')) *this = AK_String(_s, dot);
}

AK_String AK_String::Extension() const
{
    const char* dot = std::strrchr(_s, '.');
    return dot && !std::strchr(dot, '/') ? AK_String(dot + 1) : AK_String();
}

void AK_String::RemoveDotsep(char sep)
{
    const char* in = _s;
    char* out = _s;
    while (*in) {
        const bool atSegment = out == _s || out[-1] == sep;
        if (atSegment && in[0] == '.' && in[1] == sep)
            in += 2;
        else
            *out++ = *in++;
    }
    *out = 0;
}

// Takes out each ".." together with the segment before it. Above the root there is nothing to take out; a relative path
// may begin with "..", which stays.
static void RemoveParentSegments(AK_String& path)
{
    AK_List<AK_String> segments, kept;
    path.Split('/', segments);
    for (const AK_String& segment : segments) {
        const bool above = kept.IsEmpty() || kept[kept.Size() - 1] == "..";
        const bool atRoot = kept.Size() == 1 && kept[0].IsEmpty();   // "/a" splits into "" and "a"
        if (!(segment == "..") || above)
            kept.Append(segment);
        else if (!atRoot)
            kept.Remove(kept.Size() - 1);
    }
    path = AK_String(kept, "/");
}

void AK_String::CleanupPath()
{
    ReplaceAll('\\', '/');
    RemoveDoubles('/', 0);
    RemoveDotsep('/');
    if (*this == ".") *this = "";
    if (!IsAbsolutePath()) {
        AK_String directory = AK_System::CurrentWorkingDirectory();
        if (!directory.IsEmpty()) {
            directory.AppendName(*this, '/');
            Swap(directory);
        }
    }
    RemoveParentSegments(*this);
    const int length = Length();
    if (length > 1 && _s[length - 1] == '/') _s[length - 1] = 0;
}

AK_String AK_String::RelativePath(const AK_String& base) const
{
    AK_String path = *this, from = base;
    path.CleanupPath();
    from.CleanupPath();
    AK_List<AK_String> to, above;
    path.Split('/', to);
    from.Split('/', above);

    int common = 0;
    while (common < to.Size() && common < above.Size() && to[common] == above[common]) ++common;
    AK_List<AK_String> steps;
    for (int i = common; i < above.Size(); ++i) steps.Append("..");
    for (int i = common; i < to.Size(); ++i) steps.Append(to[i]);
    AK_String relative(steps, "/");
    if (!relative.IsEmpty()) relative[relative.Length() - 1] = 0;
    return relative;
}
