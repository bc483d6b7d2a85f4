// The files of a class beside its description: defaults (.def), class variables (.clv), and where they are looked up.
//
// A class default is a command in the class's initialisation macro, executed on every new object of the class. Class
// variables survive between runs; their list's first element is a marker, "status=read" or "status=written", which
// keeps a class from being written once for each of its objects.

#include "AK_Object.h"

#include "AK_Basic_NewFile.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

static constexpr int maxCommandLine = 255;
static constexpr int maxVariableLine = 4095;

// ----------------------------------------------------------------------------------------------------------------
// Directories
// ----------------------------------------------------------------------------------------------------------------

static AK_String WithSlash(const AK_String& dir) { return dir.EndsWith("/") ? dir : dir + "/"; }

void AK_Object::SetAttributesDirectory(const AK_String& dir) { _attributesDirectory = WithSlash(dir); }

void AK_Object::SetUserAttributesDirectory(const AK_String& dir) { _userAttributesDirectory = WithSlash(dir); }

static AK_String FileIn(const AK_String& dir, const AK_String& name, const char* ext, const char* subdir)
{
    AK_String path = dir.IsEmpty() ? AK_String(".") : dir;
    if (subdir) path.AppendName(subdir, '/');
    path.AppendName(name, '/');
    if (ext) path.AppendExtension(ext);
    return path;
}

AK_String AK_Object::AttributeFile(const AK_String& name, const char* ext, const char* subdir)
{
    const AK_String ofUser = FileIn(_userAttributesDirectory, name, ext, subdir);
    if (AK_System::FileExists(ofUser)) {
        AK_MSG("user-specific " << ofUser);
        return ofUser;
    }
    return FileIn(_attributesDirectory, name, ext, subdir);
}

AK_List<AK_String> AK_Object::AttributesFilesList(const char* ext, const char* subdir)
{
    AK_List<AK_String> names(1);
    for (const AK_String& dir : {_userAttributesDirectory, _attributesDirectory})
        for (const AK_String& name : AK_System::FilesList(dir + subdir, ext))
            if (names.IndexOf(name) < 0) names.Append(name);
    std::sort(names.begin(), names.end(),
              [](const AK_String& a, const AK_String& b) { return std::strcmp(a.c_str(), b.c_str()) < 0; });
    for (AK_String& name : names) {
        const AK_String ofUser = FileIn(_userAttributesDirectory, name, nullptr, subdir);
        name = AK_System::FileExists(ofUser) ? ofUser : FileIn(_attributesDirectory, name, nullptr, subdir);
    }
    return names;
}

AK_String AK_Object::Arglist(const char* separator)
{
    AK_String list;
    for (int i = 0; i < _argc; ++i) list = list + _argv[i] + separator;
    return list;
}

// ----------------------------------------------------------------------------------------------------------------
// Class defaults
// ----------------------------------------------------------------------------------------------------------------

int AK_Object::SetClassDefault(const AK_String& name, const AK_String& attr, const AK_String& value)
{
    const AK_String path = AttributeFile(name, "def", nullptr);
    const AK_String command = CommandString("", attr, value);
    std::string text;   // what is there already
    AK_TextReader former(path);
    for (int byte = former.ReadByte(); byte >= 0; byte = former.ReadByte()) text += char(byte);
    const bool readable = former.IsOpen() || !AK_System::FileExists(path);
    const bool written = readable && AK_WriteFile(path, [&](std::FILE* file) {
                             std::fwrite(text.data(), 1, text.size(), file);
                             std::fprintf(file, "%s\n", command.c_str());
                         });
    if (!written) AK_MSG("W:cannot open default-attributes-file " << path);
    return written ? 0 : 1;
}

void AK_Object::ReadInitializationMacro(const AK_String& name, AK_List<AK_String>& list)
{
    if (list.Size() > 0) return;
    const AK_String path = AttributeFile(name, "def", nullptr);
    if (!AK_System::FileExists(path)) return;
    AK_TextReader reader(path);
    if (!reader.IsOpen()) {
        list.Append("none");
        return;
    }
    list.Append("follow");   // the commands are executed from the second element on
    AK_String line;
    while (reader.ReadLine(line, maxCommandLine)) {
        line.RemoveLineEnd();
        list.Append(line);
    }
}

// ----------------------------------------------------------------------------------------------------------------
// Class variables
// ----------------------------------------------------------------------------------------------------------------

void AK_Object::ReadClassVariables(const AK_String& name, AK_List<AK_String>& list)
{
    if (list.Size() > 0) return;
    list.Append("status=read");
    AK_TextReader reader(_userApplicationDirectory + name + ".clv");
    AK_String line;
    while (reader.ReadLine(line, maxVariableLine)) {
        line.RemoveLineEnd();
        list.Append(line);
    }
}

int AK_Object::WriteClassVariables(const AK_String& name, AK_List<AK_String>& list)
{
    if (list.Size() < 2 || list[0] == "status=written") return 0;
    list[0] = "status=written";
    const bool written = AK_WriteFile(_userApplicationDirectory + name + ".clv", [&](std::FILE* file) {
        for (int i = 1; i < list.Size(); ++i) std::fprintf(file, "%s\n", list[i].c_str());
    });
    return written ? 0 : 1;
}

// Index of the element that begins with `name=`, or -1.
static int IndexOfVariable(const AK_List<AK_String>& list, const AK_String& name)
{
    for (int i = 0; i < list.Size(); ++i)
        if (list[i].StartsWith((name + "=").c_str())) return i;
    return -1;
}

const char* AK_Object::ClassVariable(const AK_List<AK_String>& list, const AK_String& name)
{
    const int i = IndexOfVariable(list, name);
    return i < 0 ? nullptr : list[i].c_str() + name.Length() + 1;
}

void AK_Object::ClassVariable(AK_List<AK_String>& list, const AK_String& name, const AK_String& value)
{
    const int i = IndexOfVariable(list, name);
    if (i < 0)
        list.Append(name + "=" + value);
    else
        list[i] = name + "=" + value;
}

int AK_Object::SaveClassVariablesRec()
{
    int result = SaveClassVariables();
    for (int i = 0; i < _components.Size(); ++i)
        if (Owns(i)) result += _components[i]->SaveClassVariablesRec();
    return result;
}
