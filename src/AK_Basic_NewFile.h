// The one way to write a file: under a temporary name beside it, every result checked, then renamed. So a reader never
// meets half a file, and what was there before is lost only to a whole new one.

#pragma once

#include "AK_Basic.h"

#include <fstream>

/// Calls `fill(temporary)`, which writes a file of that name and says whether it succeeded, and renames the file to
/// `path`. False if either fails; then `path` is as it was and nothing is left beside it.
template <class Fill>
bool AK_ReplaceFile(const AK_String& path, const Fill& fill)
{
    const AK_String temporary = AK_System::TemporaryName(path);
    if (fill(temporary) && AK_System::RenameFile(temporary, path) == 0) return true;
    if (!(temporary == path)) AK_System::RemoveFile(temporary);
    return false;
}

/// Calls `write(std::FILE*)` for a new text or binary file; false, as above, if not all of it could be written.
template <class Write>
bool AK_WriteFile(const AK_String& path, const Write& write)
{
    return AK_ReplaceFile(path, [&](const AK_String& temporary) {
        std::FILE* file = std::fopen(temporary.c_str(), "wb");
        if (!file) return false;
        write(file);
        const bool written = !std::ferror(file);
        return std::fclose(file) == 0 && written;
    });
}

/// The same for those who write to a `std::ostream&`.
template <class Write>
bool AK_WriteStream(const AK_String& path, const Write& write)
{
    return AK_ReplaceFile(path, [&](const AK_String& temporary) {
        std::ofstream stream(temporary.c_str(), std::ios::binary);
        if (!stream) return false;
        write(stream);
        stream.close();
        return bool(stream);
    });
}

/// The same for records: `write(AK_Stream&)` says whether it succeeded. It is not called if no file can be opened.
template <class Write>
bool AK_WriteRecord(const AK_String& path, const Write& write)
{
    return AK_ReplaceFile(path, [&](const AK_String& temporary) {
        AK_Stream stream(temporary, "wb");
        if (stream._status != 0) return false;
        const bool written = write(stream);
        stream.Close();
        return written && !stream.Failed() && stream._status == 0;
    });
}

/// A copy of a file, whole or not at all.
inline bool AK_CopyWhole(const AK_String& from, const AK_String& to)
{
    return AK_ReplaceFile(to, [&](const AK_String& temporary) { return AK_System::CpyFile(from, temporary) == 0; });
}
