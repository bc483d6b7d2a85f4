// The files of objects beside what saving and loading deal with: those that were not read are kept and taken along, and
// removing an object takes what the program wrote.
//
// An object is unread while files of its type lie in its directory whose contents it does not have: it was given the
// directory without loading, or the load failed before it or in it. Saving leaves such files as they are, until the
// user has changed the object since.

#include "AK_Object.h"

#include "AK_Basic_NewFile.h"

#include <cstring>
#include <filesystem>

namespace fs = std::filesystem;

// Stamp of the moment since which changes count.
static constexpr const char* unread = "Unread";

// Commands that are stamped like attributes and change nothing that is saved.
static bool IsChange(const AK_String& stamp)
{
    for (const char* action :
         {unread, "Update", "Draw", "ExecMacro", "ProjectDir", "LoadProject", "LoadComponent", "UnloadComponent",
          "UnloadAllContainers", "SaveAs", "SaveProject", "SaveProjectAs", "SaveAttributes",
          "SaveAttributesRecursively", "SaveClassVariables", "SaveClassVariablesRec"})
        if (stamp == action) return false;
    return true;
}

bool AK_Object::IsUnread() const
{
    if (!_isUnread) return false;
    const long since = AK_Object::ExecTime(unread);
    for (int i = 0; i < _execTimeIds.Size(); ++i)
        if (_execTimes[i] > since && IsChange(_execTimeIds[i])) return false;
    return true;
}

void AK_Object::SetUnread(bool isUnread)
{
    _isUnread = isUnread;
    if (isUnread) SetExecTime(unread);
}

void AK_Object::KeepUnreadFiles(bool isOtherDirectory)
{
    const AK_String path = _projectDir + "/" + Type();
    const bool isKnown = !isOtherDirectory && (AK_Object::ExecTime("Load") || AK_Object::ExecTime("Save"));
    const bool hasFiles = AK_System::FileExists(path + ".atr") || AK_System::FileExists(path + ".dat");
    if (!_projectDir.IsEmpty() && !isKnown) SetUnread(hasFiles);
    for (int i = 0; i < _components.Size(); ++i)
        if (Owns(i)) _components[i]->KeepUnreadFiles(isOtherDirectory);
}

// ----------------------------------------------------------------------------------------------------------------
// Taking along
// ----------------------------------------------------------------------------------------------------------------

static fs::path TruePath(const fs::path& path)
{
    std::error_code error;
    return fs::weakly_canonical(fs::absolute(path, error), error);
}

static bool IsAtOrBelow(const fs::path& path, const fs::path& ancestor)
{
    const std::string inner = (TruePath(path) / "").string();
    const std::string outer = (TruePath(ancestor) / "").string();
    return inner.rfind(outer, 0) == 0;
}

// What a run leaves beside the files of its simulation.
static bool IsFileOfRun(const AK_String& name)
{
    return name.Extension() == "TimeStep" || name.StartsWith(".simulation_") || name.StartsWith("start.");
}

static bool IsFileOfObject(const AK_String& name)
{
    return name.Extension() == "atr" || name.Extension() == "dat" || IsFileOfRun(name);
}

void AK_Object::CopyUnreadFiles(const AK_String& from, const AK_String& to) const
{
    for (const AK_String& name : AK_System::FilesList(from, "")) {
        const AK_String source = from + "/" + name, target = to + "/" + name;
        if (!IsFileOfObject(name) || AK_System::IsDirectory(source) || AK_CopyWhole(source, target)) continue;
        if (_execStatus.IsEmpty()) _execStatus = AK_String("cannot copy ") + source + " to " + target;
    }
}

void AK_Object::CopyUnloadedComponents(const AK_String& from, const AK_String& to) const
{
    for (const AK_String& entry : AK_System::FilesList(from, "")) {
        const AK_String source = from + "/" + entry, target = to + "/" + entry;
        if (!entry.Extension().IsEmpty() || Component(entry) || !AK_System::IsDirectory(source)) continue;
        const bool isObject =
            AK_System::FilesList(source, "atr").Size() + AK_System::FilesList(source, "dat").Size() > 0;
        if (!isObject || IsAtOrBelow(to.c_str(), source.c_str())) continue;
        std::error_code error;
        fs::copy(source.c_str(), target.c_str(),
                 fs::copy_options::recursive | fs::copy_options::copy_symlinks | fs::copy_options::overwrite_existing,
                 error);
        if (error && _execStatus.IsEmpty()) _execStatus = AK_String("cannot copy ") + source + " to " + target;
    }
}

// ----------------------------------------------------------------------------------------------------------------
// Removing
// ----------------------------------------------------------------------------------------------------------------

static void RemoveFilesOfType(const AK_String& dir, const AK_String& type)
{
    if (type.IsEmpty()) return;
    for (const char* extension : {".atr", ".dat", ".atr.tmp", ".dat.tmp"})
        if (const AK_String file = dir + "/" + type + extension; AK_System::FileExists(file))
            AK_System::RemoveFile(file);
}

static void RemoveFilesOfRun(const AK_String& dir)
{
    for (const AK_String& name : AK_System::FilesList(dir, ""))
        if (IsFileOfRun(name) && !AK_System::IsDirectory(dir + "/" + name)) AK_System::RemoveFile(dir + "/" + name);
}

void AK_Object::RemoveFilesOfFormerType() const { RemoveFilesOfType(_projectDir, _typeOnDisc); }

// The directory of an object of this program: its one attribute file consists of commands. "" for any other.
static AK_String TypeInDirectory(const AK_String& dir)
{
    static constexpr int longestCommand = 1 << 16;
    const AK_List<AK_String> files = AK_System::FilesList(dir, "atr");
    if (files.Size() != 1 || fs::is_symlink(dir.c_str())) return "";
    AK_TextReader reader(dir + "/" + files[0]);
    AK_String line;
    if (!reader.ReadLine(line, longestCommand) || !line.StartsWith("set(\"\", \"")) return "";
    AK_String type = files[0];
    type.RemoveExtension();
    return type;
}

// An object that is on disc only, with what it holds.
static void RemoveUnloaded(const AK_String& dir)
{
    const AK_String type = TypeInDirectory(dir);
    if (type.IsEmpty()) return;
    for (const AK_String& entry : AK_System::FilesList(dir, ""))
        if (entry.Extension().IsEmpty() && AK_System::IsDirectory(dir + "/" + entry)) RemoveUnloaded(dir + "/" + entry);
    RemoveFilesOfType(dir, type);
    RemoveFilesOfRun(dir);
    std::error_code error;
    fs::remove(dir.c_str(), error);   // if it is empty
}

bool AK_Object::HoldsOtherDirectories() const
{
    bool holds =
        IsAtOrBelow(".", _projectDir.c_str()) || IsAtOrBelow(AK_System::HomeDirectory().c_str(), _projectDir.c_str());
    for (const AK_Object* object = _parent; object; object = object->_parent)
        holds =
            holds || (!object->_projectDir.IsEmpty() && IsAtOrBelow(object->_projectDir.c_str(), _projectDir.c_str()));
    return holds;
}

void AK_Object::RemoveFromDisc()
{
    if (_projectDir.IsEmpty() || !AK_System::FileExists(_projectDir)) return;
    std::error_code error;
    if (fs::is_symlink(_projectDir.c_str(), error)) {   // what it leads to lies elsewhere
        fs::remove(_projectDir.c_str(), error);
        return;
    }
    const bool holdsOthers = HoldsOtherDirectories();
    for (int i = 0; i < _components.Size(); ++i)
        if (Owns(i) && IsAtOrBelow(_components[i]->_projectDir.c_str(), _projectDir.c_str()))
            _components[i]->RemoveFromDisc();
    if (!holdsOthers)
        for (const AK_String& entry : AK_System::FilesList(_projectDir, ""))
            if (entry.Extension().IsEmpty() && !Component(entry)) RemoveUnloaded(_projectDir + "/" + entry);
    for (const AK_String& type : {Type(), _typeOnDisc}) RemoveFilesOfType(_projectDir, type);
    RemoveFilesOfRun(_projectDir);
    if (!holdsOthers) fs::remove(_projectDir.c_str(), error);   // if it is empty
}
