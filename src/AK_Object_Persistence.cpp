// Persistence: a project is a directory tree that mirrors the object tree.
//
//   <dir>/x/             directory of the object x, in that of its parent
//   <dir>/x/<Type>.atr   its attributes, as the macro that restores them
//   <dir>/x/<Type>.dat   its binary record
//   <dir>/x/<id>/        its components, in the same way
//
// The type stands in the file names, so a loader knows what to make from what lies in a directory. Children are loaded
// before their parent's own attributes, which may name them. An object is written only if an attribute has been set
// since it was last saved or loaded, or if a file is missing.
//
// Files appear under their names only when they are whole, so that neither a reader nor a killed run meets half a file.

#include "AK_Object.h"

#include "AK_Basic_NewFile.h"

#include <cstdio>

AK_String AK_Object::_directoryToLoad;

// ----------------------------------------------------------------------------------------------------------------
// Attributes
// ----------------------------------------------------------------------------------------------------------------

static void WriteNode(std::FILE* file, const AK_Object& object, const AK_Object* relativeTo, const AK_Attribute* node)
{
    if (node->Component("volatile") || node->_cmd == "Id") return;   // the id is the directory's name
    const AK_Attribute* set = node->Component("set");
    if (set && !node->_cmd.IsEmpty())
        std::fprintf(file, "%s\n", object.CommandString(relativeTo, set->_cmd, object.Get(node->_cmd)).c_str());
    for (const AK_Attribute* component : node->_components) WriteNode(file, object, relativeTo, component);
}

void AK_Object::WriteAttributes(std::FILE* file, const AK_Object* relativeTo, bool recursively) const
{
    const AK_Description description = Description();   // AttributesToSave is this one or that of a class
    WriteNode(file, *this, relativeTo, AttributesToSave());
    for (int i = 0; recursively && i < _components.Size(); ++i)
        if (Owns(i)) _components[i]->WriteAttributes(file, relativeTo, true);
}

void AK_Object::SaveAttributesTo(const AK_String& name, bool recursively) const
{
    const AK_String path = name.IsEmpty() ? _macroFileName : name;
    const bool written = AK_WriteFile(path, [&](std::FILE* file) { WriteAttributes(file, this, recursively); });
    // Reading the attributes has emptied the status, whatever they answered: what counts here is the file.
    _execStatus = "";
    if (!written) _execStatus = AK_String("cannot open file ") + path + " for saving attributes!";
}

void AK_Object::SaveAttributes(const AK_String& file) const { SaveAttributesTo(file, false); }

void AK_Object::SaveAttributesRecursively(const AK_String& file) const { SaveAttributesTo(file, true); }

// ----------------------------------------------------------------------------------------------------------------
// Saving
// ----------------------------------------------------------------------------------------------------------------

void AK_Object::Save(const AK_String&) { SaveAs(_projectDir); }

void AK_Object::SaveProject(const AK_String&) { SaveProjectAs(_projectDir); }

void AK_Object::SaveAs(const AK_String& dir)
{
    const AK_String atr = dir + "/" + Type() + ".atr";
    const AK_String dat = dir + "/" + Type() + ".dat";
    if (dir.IsEmpty()) {   // nothing is ever written to the root of the file system because a text was empty
        _execStatus = AK_String("cannot open ") + dat;
        return;
    }
    const AK_String from = _projectDir;
    _projectDir = dir;
    AK_System::CreateDir(dir);
    if (IsUnread() && !from.IsEmpty()) {
        AK_MSG("INFO: " << IdAbs() << InLanguage(" is not saved: its files were not read and are kept",
                                                 " wird nicht gespeichert: die Dateien sind ungelesen und bleiben"));
        if (!(from == dir)) CopyUnreadFiles(from, dir);
        return;
    }
    const long modified = ModificationTime();
    // The object's own stamps: a group answers with those of its members.
    const bool clean = AK_Object::ExecTime("Save") >= modified || AK_Object::ExecTime("Load") >= modified;
    if (clean && AK_System::FileExists(atr) && AK_System::FileExists(dat)) return;

    AK_MSG("saving " << _id << " to " << dir);
    SaveAttributes(atr);
    const AK_String attributesError = _execStatus;
    bool opened = false;
    const bool written = AK_WriteRecord(dat, [&](AK_Stream& stream) {
        opened = true;
        return SaveData(stream) == 0;
    });
    if (!opened)
        _execStatus = AK_String("cannot open ") + dat;
    else if (!written)
        _execStatus = AK_String("cannot save data of ") + IdAbs() + " to file " + dat;
    else if (attributesError.IsEmpty()) {
        // The files of a former type would make the directory one that no loader understands.
        if (from == dir && !(_typeOnDisc == Type())) RemoveFilesOfFormerType();
        _typeOnDisc = Type();
        SetUnread(false);
        SetExecTime("Save");
    } else
        _execStatus = attributesError;
}

void AK_Object::SaveProjectAs(const AK_String& dir)
{
    _execStatus = "";
    const AK_String from = _projectDir;
    SaveAs(dir);
    if (!dir.IsEmpty() && !from.IsEmpty()) CopyUnloadedComponents(from, dir);
    AK_String firstError = _execStatus;
    for (int i = 0; i < _components.Size() && !dir.IsEmpty(); ++i) {
        if (!Owns(i)) continue;
        _components[i]->SaveProjectAs(dir + "/" + _components[i]->_id);
        if (firstError.IsEmpty()) firstError = _execStatus;   // one object's failure keeps no other from being saved
    }
    _execStatus = firstError;
}

// ----------------------------------------------------------------------------------------------------------------
// Loading
// ----------------------------------------------------------------------------------------------------------------

// Ends within a command, or before the first: the attributes behind it would be saved with their defaults.
static bool IsCutOff(const AK_String& file)
{
    std::FILE* stream = std::fopen(file.c_str(), "rb");
    if (!stream) return false;
    const int last = std::fseek(stream, -1, SEEK_END) == 0 ? std::fgetc(stream) : EOF;
    std::fclose(stream);
    return last != '\n' && last != ')';
}

void AK_Object::Load(const AK_String& dir)
{
    AK_MSG("loading '" << _id << "' from " << dir);
    ProjectDir(dir);
    _typeOnDisc = Type();
    SetUnread(true);   // until all of it is read
    const AK_String dat = dir + "/" + Type() + ".dat";
    if (AK_Stream stream(dat, "rb"); stream._status == 0) {   // an object without data has no file
        if (LoadData(stream) != 0) {
            _execStatus = AK_String("cannot load data for ") + IdAbs() + " from file " + dat;
            return;
        }
    }
    const AK_String atr = dir + "/" + Type() + ".atr";
    if (IsCutOff(atr)) {
        _execStatus = AK_String("cannot load attributes for ") + IdAbs() + " from file " + atr + ", which is cut off";
        return;
    }
    ExecMacro(atr, 1);
    _typeOnDisc = Type();   // the macro may have given it
    SetUnread(!_execStatus.IsEmpty());
    if (_execStatus.IsEmpty()) SetExecTime("Load");
}

void AK_Object::LoadProject(const AK_String& directory)
{
    const Call running(this);
    const AK_String dir = directory.IsEmpty() ? _projectDir : directory;
    _execStatus = "";   // an error from before, which a path that loads on its way may find, is none of loading
    if (!dir.IsEmpty()) {
        const bool isOther = !(dir == _projectDir);
        ProjectDir(dir);            // now: what is loaded first may name what is loaded later
        KeepUnreadFiles(isOther);   // what an error keeps from being reached
    }
    for (int i = 0; i < _components.Size() && !dir.IsEmpty(); ++i) {
        if (!Owns(i)) continue;
        _components[i]->LoadProject(dir + "/" + _components[i]->_id);
        if (!_execStatus.IsEmpty()) return;
    }
    if (!_suppressCreatingComponents && !dir.IsEmpty()) {
        for (const AK_String& entry : AK_System::FilesList(dir, "")) {
            if (!entry.Extension().IsEmpty() || Component(entry)) continue;
            AK_Object* component = ComponentFromDirectory(entry, dir + "/" + entry);
            if (!component) continue;
            component->LoadProject(dir + "/" + entry);
            if (!_execStatus.IsEmpty()) return;
        }
    }
    Load(dir);
    if (_execStatus.IsEmpty()) LoadFinalize();
}

AK_Object* AK_Object::ComponentFromDirectory(const AK_String& id, const AK_String& dir)
{
    AK_String plain = id;
    if (plain.ReplaceNonAlNum('_') > 0) return nullptr;   // no id, so no object's directory: "." must find nothing
    const AK_List<AK_String> files = AK_System::FilesList(dir, "atr");
    if (files.Size() != 1) return nullptr;
    AK_String type = files[0];
    type.RemoveExtension();
    const AK_String outer = _directoryToLoad;   // formula code of a new object may load another one
    _directoryToLoad = dir;
    AK_Object* component = CreateComponent(id, type);
    _directoryToLoad = outer;
    if (component) AddComponent(component);
    return component;
}

AK_Object* AK_Object::LoadedComponent(const AK_String& id)
{
    if (_projectDir.IsEmpty()) return nullptr;
    AK_Object* component = ComponentFromDirectory(id, _projectDir + "/" + id);
    if (!component) return nullptr;
    component->LoadProject(_projectDir + "/" + id);
    if (_execStatus.IsEmpty()) return component;
    AK_MSG("WARNING: " << _execStatus);   // what asked for it may go on without, and empty the status
    return nullptr;                       // nothing must act on defaults in place of what lies there
}
