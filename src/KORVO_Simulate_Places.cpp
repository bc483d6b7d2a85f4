// Where the work of korvo simulate lies: a directory that bears its name when it is whole, and until then what another
// process needs to go on with it.

#include "KORVO_Simulate.h"

#include "AK_Basic_NewFile.h"

#include <fstream>
#include <sys/stat.h>

// ----------------------------------------------------------------------------------------------------------------
// Memory
// ----------------------------------------------------------------------------------------------------------------

// Texts, each ended by a NUL, which no argument can hold.
static constexpr const char* memoryFile = "/.continue";
static constexpr const char* memoryMark = "korvo simulate 1";

bool KORVO_SimulateMemory::Write(const std::string& partial) const
{
    return AK_WriteStream((partial + memoryFile).c_str(), [&](std::ostream& out) {
        const auto put = [&](const std::string& text) { out << text << '\0'; };
        put(memoryMark);
        put(directory);
        put(process);
        put(std::to_string(int(isSaved)));
        put(std::to_string(int(isRun)));
        put(AK_String(massOffMesh, "%.17g").c_str());
        put(AK_String(runTime, "%.17g").c_str());
        put(std::to_string(arguments.size()));
        for (const std::string& argument : arguments) put(argument);
        for (const KORVO_Input& input : inputs)
            for (const std::string& text : {input.path, input.bytes, input.sha256}) put(text);
    });
}

bool KORVO_SimulateMemory::Read(const std::string& partial)
{
    std::ifstream file(partial + memoryFile, std::ios::binary);
    std::vector<std::string> texts;
    for (std::string text; std::getline(file, text, '\0');) texts.push_back(text);
    constexpr size_t numFirst = 8;
    if (texts.size() < numFirst || texts[0] != memoryMark) return false;
    const size_t numArguments = std::strtoul(texts[7].c_str(), nullptr, 10);
    if (numArguments > texts.size() - numFirst) return false;
    directory = texts[1];
    process = texts[2];
    isSaved = texts[3] == "1";
    isRun = texts[4] == "1";
    massOffMesh = std::strtod(texts[5].c_str(), nullptr);
    runTime = std::strtod(texts[6].c_str(), nullptr);
    const auto first = texts.begin() + numFirst;
    arguments.assign(first, first + long(numArguments));
    for (size_t i = numFirst + numArguments; i + 2 < texts.size(); i += 3)
        inputs.push_back({texts[i], texts[i + 1], texts[i + 2]});
    return true;
}

// ----------------------------------------------------------------------------------------------------------------
// Directories
// ----------------------------------------------------------------------------------------------------------------

KORVO_Places::KORVO_Places(std::string path)
{
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    out = path;
    partial = path + ".partial";
    log = path + ".log";
    name = path.substr(path.rfind('/') + 1);
}

std::string KORVO_Places::Id() const
{
    AK_String id = name.c_str();
    id.ReplaceNonAlNum('_');
    return id.c_str();
}

static bool Exists(const std::string& path) { return AK_System::FileExists(path.c_str()); }

// What --force may remove: nothing but what this program has made, be it that it was killed as it began.
static bool IsOurs(const std::string& directory)
{
    if (!AK_System::IsDirectory(directory.c_str())) return false;
    const AK_List<AK_String> names = AK_System::FilesList(directory.c_str(), "");
    const bool isBegun = names.Size() == 0 || Exists(directory + memoryFile) || Exists(directory + memoryFile + ".tmp");
    return isBegun || (Exists(directory + "/table.json") && Exists(directory + "/case.macro"));
}

static KORVO_Stop NoPlace(const std::string& path, const char* english, const char* german)
{
    return {KORVO_FAILED, "'" + path + InLanguage(english, german)};
}

// A run that another process computes is nobody else's to touch.
void KORVO_Places::RefuseIfUnderWay() const
{
    KORVO_SimulateMemory memory;
    if (memory.Read(partial) && AK_System::ProcessLives(memory.process.c_str()))
        throw NoPlace(partial, "' is being computed by another process", "' wird von einem anderen Prozess gerechnet");
}

void KORVO_Places::Make(bool force) const
{
    if (name.empty() || name == "." || name == "..")
        throw KORVO_Stop{KORVO_BAD_USAGE, "--out: '" + out +
                                              InLanguage("' is no name for a new directory",
                                                         "' ist kein Name fuer ein neues Verzeichnis")};
    RefuseIfUnderWay();
    if (Exists(out) && !force)
        throw NoPlace(out, "' is there already; --force replaces it", "' gibt es schon; --force ersetzt es");
    if (Exists(partial) && !force)
        throw NoPlace(partial, "' holds an interrupted run; --continue goes on with it, --force begins anew",
                      "' enthaelt eine unterbrochene Rechnung; --continue setzt sie fort, --force beginnt neu");
    for (const std::string& path : {out, partial})
        if (Exists(path) && !IsOurs(path))
            throw NoPlace(path, "' was not made by korvo simulate and is not replaced",
                          "' stammt nicht von korvo simulate und wird nicht ersetzt");
    AK_System::RemoveFileRecursively(partial.c_str());
    const size_t slash = out.rfind('/');
    if (slash != std::string::npos && slash > 0) AK_System::CreateDirRecursively(out.substr(0, slash).c_str());
    if (mkdir(partial.c_str(), 0777) != 0)   // one that has come up meanwhile is another process's
        throw NoPlace(partial, "' cannot be created", "' laesst sich nicht anlegen");
}

// What --force replaces is there until the new directory is.
void KORVO_Places::MoveIntoPlace(bool force) const
{
    const std::string replaced = out + ".replaced";
    const bool replaces = force && Exists(out) && IsOurs(out);
    if (replaces) AK_System::RenameFile(out.c_str(), replaced.c_str());
    if (AK_System::RenameFile(partial.c_str(), out.c_str()) != 0)
        throw NoPlace(out, "' cannot be created; --continue tries it again",
                      "' laesst sich nicht anlegen; --continue versucht es noch einmal");
    if (replaces) AK_System::RemoveFileRecursively(replaced.c_str());
    AK_System::RemoveFile((out + memoryFile).c_str());
    AK_System::RemoveFile(log.c_str());
}

// A failed run leaves its log at most.
void KORVO_Places::Abandon(bool keepLog) const
{
    if (keepLog) AK_System::RenameFile((partial + "/log.txt").c_str(), log.c_str());
    AK_System::RemoveFileRecursively(partial.c_str());
}
