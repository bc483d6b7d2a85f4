// What the program asks of the operating system. Results tell of failures and the callers decide; nothing is reported
// here. Names are those of the file system, relative ones count from the working directory.

#include "AK_Basic.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <sys/select.h>
#include <sys/stat.h>
#include <unistd.h>

AK_String AK_System::_tmpBatFileName;
unsigned long AK_System::rand_next = 1;

// ----------------------------------------------------------------------------------------------- looking at the files

bool AK_System::FileExists(const AK_String& name)
{
    struct stat status;
    return stat(name.c_str(), &status) == 0;
}

bool AK_System::IsDirectory(const AK_String& name)
{
    struct stat status;
    return stat(name.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

long AK_System::ModificationTime(const AK_String& name)
{
    struct stat status;
    return stat(name.c_str(), &status) == 0 ? long(status.st_mtime) : 0;
}

// All entries of a directory but itself and its parent, in the order of strcmp.
static AK_List<AK_String> Entries(const AK_String& directory)
{
    AK_List<AK_String> names;
    DIR* stream = opendir(directory.c_str());
    if (!stream) return names;
    while (const dirent* entry = readdir(stream)) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) names.Append(entry->d_name);
    }
    closedir(stream);
    std::qsort(names.Data(), std::size_t(names.Size()), sizeof(AK_String), AK_String::Compare);
    return names;
}

AK_List<AK_String> AK_System::FilesList(const AK_String& directory, const AK_String& extension)
{
    AK_List<AK_String> chosen;
    for (const AK_String& name : Entries(directory)) {
        const bool hasExtension = extension.IsEmpty() || name.Extension() == extension;
        if (hasExtension && !name.StartsWith("..")) chosen.Append(name);
    }
    return chosen;
}

// -------------------------------------------------------------------------------------------------- changing the files

int AK_System::CreateDir(const AK_String& name)
{
    if (mkdir(name.c_str(), 0777) == 0) return 0;
    return errno == EEXIST && IsDirectory(name) ? 0 : 1;
}

int AK_System::CreateDirRecursively(const AK_String& name)
{
    if (name.IsEmpty() || FileExists(name)) return 0;
    if (name.Length() >= PATH_MAX) return 1;   // no system call takes it: create none of its parents either
    const char* from = name.c_str();
    for (const char* end = from; *end;) {
        end += std::strspn(end, "/");
        end += std::strcspn(end, "/");
        const AK_String path(from, end);   // the name up to here
        if (!FileExists(path) && CreateDir(path) != 0) return 1;
    }
    return 0;
}

int AK_System::RemoveFile(const AK_String& name) { return std::remove(name.c_str()); }

int AK_System::RenameFile(const AK_String& from, const AK_String& to) { return std::rename(from.c_str(), to.c_str()); }

AK_String AK_System::TemporaryName(const AK_String& name)
{
    struct stat status;
    if (lstat(name.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) return name;
    return name + ".tmp";
}

// Two names, or a name and an open directory, for the same thing in the file system.
static bool SameFile(const struct stat& a, const struct stat& b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

static int CopyBlocks(std::FILE* from, std::FILE* to)
{
    char block[1024];
    while (const std::size_t n = std::fread(block, 1, sizeof block, from)) {
        if (std::fwrite(block, 1, n, to) != n) return 3;
    }
    return std::ferror(from) ? 1 : 0;
}

int AK_System::CpyFile(const AK_String& from, const AK_String& to)
{
    std::FILE* source = std::fopen(from.c_str(), "rb");
    if (!source) return 1;
    struct stat sourceStatus, targetStatus;
    const bool same = fstat(fileno(source), &sourceStatus) == 0 && stat(to.c_str(), &targetStatus) == 0 &&
                      SameFile(sourceStatus, targetStatus);
    int result = 0;
    if (!same) {   // opening the target empties it
        std::FILE* target = std::fopen(to.c_str(), "wb");
        result = target ? CopyBlocks(source, target) : 2;
        if (target && std::fclose(target) != 0 && result == 0) result = 3;
    }
    std::fclose(source);
    return result;
}

// True for a directory that may be entered for removal: one itself, not a symbolic link to one, and not the root of the
// file system under any of its names.
static bool IsRemovableDirectory(const AK_String& name)
{
    struct stat status, root;
    return lstat(name.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && stat("/", &root) == 0 &&
           !SameFile(status, root);
}

// A link with "/" behind its name is followed by the system, so names are taken without.
static AK_String WithoutEndingSlashes(const AK_String& name)
{
    int length = name.Length();
    while (length > 1 && name[length - 1] == '/') --length;
    return AK_String(name.c_str(), name.c_str() + length);
}

static AK_String PathInDirectory(const AK_String& directory, const AK_String& name) { return directory + "/" + name; }

int AK_System::RemoveFileRecursively(const AK_String& name)
{
    const AK_String path = WithoutEndingSlashes(name);
    int result = 0;
    if (IsRemovableDirectory(path)) {
        for (const AK_String& entry : Entries(path)) result += RemoveFileRecursively(PathInDirectory(path, entry));
    }
    return result + RemoveFile(path);   // the root cannot be removed by this either
}

int AK_System::RemoveEmptyDirsRecursively(const AK_String& name)
{
    const AK_String path = WithoutEndingSlashes(name);
    if (!IsRemovableDirectory(path)) return 1;
    for (const AK_String& entry : Entries(path)) RemoveEmptyDirsRecursively(PathInDirectory(path, entry));
    return rmdir(path.c_str());
}

// ----------------------------------------------------------------------------------------------------- the environment

AK_String AK_System::CurrentWorkingDirectory()
{
    char directory[512];
    return getcwd(directory, sizeof directory) ? AK_String(directory) : AK_String();
}

AK_String AK_System::HomeDirectory()
{
    const char* home = std::getenv("HOME");
    return home && *home ? AK_String(home) : CurrentWorkingDirectory();
}

AK_String AK_System::Date()
{
    const std::time_t now = std::time(nullptr);
    char text[64];   // ctime_r asks for 26
    return ctime_r(&now, text) ? AK_String(text) : AK_String();
}

void AK_System::MilliSleep(int milliseconds)
{
    if (milliseconds <= 0) return;
    timeval wait = {milliseconds / 1000, (milliseconds % 1000) * 1000L};
    select(0, nullptr, nullptr, nullptr, &wait);
}

int AK_System::NumCpus(const AK_String& statistics)
{
    AK_TextReader reader(statistics);
    AK_String line;
    int count = 0;
    while (reader.ReadLine(line, 255)) {
        if (line.StartsWith("cpu") && line[3] != ' ') ++count;   // "cpu " is the sum of all
    }
    return std::max(count, 1);
}

int AK_System::Command(const char* cmd, const char* args, int background, int quote)
{
    if (!cmd || !*cmd) return -1;
    AK_String line = quote ? ShellQuoted(cmd) : AK_String(cmd);
    line.Append(" ");
    line.Append(args ? args : "");
    if (background) line.Append(" &");
    return std::system(line.c_str());
}

int AK_System::BatchCommand(const AK_String& file, int background)
{
    return Command("source", ShellQuoted(file).c_str(), background, 0);
}

AK_String AK_System::ShellQuoted(const AK_String& text)
{
    AK_String inside;
    for (const char* c = text.c_str(); *c; ++c) {
        if (std::strchr("\\\"$`", *c)) inside.Append("\\");
        inside.Append(AK_String(c, c + 1).c_str());
    }
    return AK_String("\"") + inside + "\"";
}

// ----------------------------------------------------------------------------------------------------------- processes

namespace {

/// What the system tells of a process.
struct ProcessStat {
    long parent = 0;                // 0: there is no such process, or it has no parent
    unsigned long long start = 0;   // clock ticks since the start of the system
    bool dead = true;               // gone, or waiting only for its parent to notice

    explicit ProcessStat(long id)
    {
        char path[64];
        std::snprintf(path, sizeof path, "/proc/%ld/stat", id);
        AK_TextReader reader(path);
        AK_String line;
        constexpr int longestLine = 4096;
        if (!reader.ReadLine(line, longestLine)) return;
        const char* rest = std::strrchr(line.c_str(), ')');   // the second field is a name that can hold anything
        char state = 'X';
        // Fields 3, 4 and 22.
        if (!rest ||
            std::sscanf(rest + 1, " %c %ld %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %llu",
                        &state, &parent, &start) != 3)
            return;
        dead = state == 'Z' || state == 'X';
    }
};

struct Mark {
    long id = 0;
    unsigned long long start = 0;
    bool valid;

    explicit Mark(const AK_String& text) : valid(std::sscanf(text.c_str(), "%ld %llu", &id, &start) == 2 && id > 0) {}
    bool Lives() const
    {
        if (!valid) return false;
        const ProcessStat process(id);
        return !process.dead && process.start == start;
    }
};

}   // namespace

AK_String AK_System::ProcessMark()
{
    char mark[64];
    const long id = getpid();
    std::snprintf(mark, sizeof mark, "%ld %llu", id, ProcessStat(id).start);
    return mark;
}

bool AK_System::ProcessLives(const AK_String& mark) { return Mark(mark).Lives(); }

bool AK_System::ProcessIsOurs(const AK_String& text)
{
    const Mark mark(text);
    if (!mark.Lives()) return false;
    static constexpr int farthest = 1000;   // generations; processes can come and go while the line is followed
    long id = getpid();
    for (int i = 0; i < farthest && id > 0; ++i) {
        if (id == mark.id) return true;
        id = ProcessStat(id).parent;
    }
    return false;
}

// ------------------------------------------------------------------------------------------------------ random numbers

// Two steps of the recurrence for each number: the first gives its upper half, the second its lower 15 bits.
int AK_System::rand()
{
    static_assert(sizeof(unsigned long) == 8, "the recurrence runs in 64 bits");
    const unsigned long a = rand_next * 1103515245UL + 12345UL;
    const unsigned long b = a * 1103515245UL + 12345UL;
    rand_next = b;
    return int((((b >> 16) & 0x7FFFUL) | (a & 0x7FFF0000UL)) % 0x7FFFFFFFUL);
}
