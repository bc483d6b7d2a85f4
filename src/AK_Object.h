// The object tree: every thing the program knows is an AK_Object, and everything that can be done to it has a name.
//
// A string attribute is read with Get and written with Set; an operation is an attribute whose value is ignored. Which
// attributes a class has, their labels, documentation, order and whether they are saved stands in a text file for each
// class (AK_Attribute); the code brings only the behaviour behind the names, as rows of one table (AK_Object_Class.h).
// Thus one menu, one macro language, one saver and one reference manual serve all classes.
//
//   Viewer                 root, AK_TerminalController      set("Project/DHMs", "CreateDHM", "alp")
//     Project              SW_Workspace                          |              |           |
//       DHMs               a container                        path from     attribute     value
//         alp              one object                         the object
//
// Only the main thread enters this layer.

#pragma once

#include "AK_Basic.h"

#include <memory>
#include <span>

class AK_Object;
struct Namespace;
struct Symbol;

// ----------------------------------------------------------------------------------------------------------------
// Attribute descriptions
// ----------------------------------------------------------------------------------------------------------------

/// One node of a class's attribute description; immutable once read. Those of the program's classes live as long as the
/// process.
///
/// A file's grammar: a line of n tabs is a node of level n, "<id>" or "<id>:<cmd>"; ids are dotted: the kind
/// ("obj", "opr", "bool", "apply", "filename", "directory", "doc", ...), then the name. A backslash at the end of a
/// line continues it on the next, deeper indented one.
class AK_Attribute {
public:
    AK_String _id;                                 // text before the first ":" of the line
    AK_String _cmd;                                // the rest of the line; for most kinds the name to Get
    AK_List<const AK_Attribute*> _components{1};   // in file order; the base class's root is the last of a root

    /// The i-th dot-separated field of the id: 0 the kind, 1 the name; "" when there are fewer.
    AK_String Id(int i) const;

    /// Direct child with that whole id, or null.
    const AK_Attribute* Component(const char* id) const;

    /// Depth-first: the first node whose name is `name`; the first with a "set" child that sets `cmd`; the first whose
    /// own or "set" child's command is `cmd`. Null when there is none.
    const AK_Attribute* Attribute(const AK_String& name) const;
    const AK_Attribute* AttributeOfSetCmd(const AK_String& cmd) const;
    const AK_Attribute* SubAttribute(const AK_String& cmd) const;

    /// The name by which this node is set, or "" when it cannot be edited.
    AK_String SetCmd() const;

    /// Appends the chain of class roots, this one first, to the most basic one.
    void GetObjHierarchy(AK_List<const AK_Attribute*>& list) const;

    /// Collects, depth-first, every node whose kind occurs as a part of `text`.
    void GetAttributesOfType(const AK_String& text, AK_List<const AK_Attribute*>& list) const;

    /// Collects the commands of the nodes of a kind, and every name that can be set; both without the nodes that all
    /// objects share (they stop at a node named "Object").
    void GetIdsOfTypeRec(const AK_String& kind, AK_List<AK_String>& list) const;
    void GetSetCmds(AK_List<AK_String>& list) const;

    /// The nodes from this one to the first that answers to `name` in the way `kind` says: "get" its command, "set"
    /// its "set" child's command, anything else its own kind and name. Empty when there is none.
    AK_List<const AK_Attribute*> AttributePathToCmd(const AK_String& name, const AK_String& kind) const;

    /// Name of the deepest class on the way to the node that sets `cmd`; "" when nothing does.
    AK_String ObjectTypeOfSetCmd(const AK_String& cmd) const;

    /// The text in the language: the child named after it, or the node's own command for the default language.
    const AK_String& InLanguage(const AK_String& language) const;

    /// Writes the tree to standard output, a tab for each level: a debugging aid.
    void Print(int level) const;

    /// Sums its components' sums, and so is 0 for every description. Nothing depends on it.
    int NumAttributes() const;
};

/// A description that stays as it is while somebody has this. Groups renew theirs and user objects exchange it, at
/// times by the very commands that a walk of the description gives: who calls Get or Set on the way walks by this.
using AK_Description = std::shared_ptr<const AK_Attribute>;

/// Reads a description. `name` is a class name, whose file is looked up, or the text itself when it begins with "obj.".
/// `base`, the root of the base class's description, becomes the root's last child; null for none.
/// Null, after a message, when the file cannot be opened. A text without any line end is fatal.
const AK_Attribute* CreateAttributes(const AK_String& name, const AK_Attribute* base);

/// Frees a description that CreateAttributes made, but not `base`, which belongs to its class. Null is allowed.
void DeleteAttributes(const AK_Attribute* root, const AK_Attribute* base);

// ----------------------------------------------------------------------------------------------------------------
// Attribute tables
// ----------------------------------------------------------------------------------------------------------------

/// How one attribute is reached. A null pointer means that there is no such direction.
struct AK_Access {
    AK_String (*get)(const AK_Object& object, const char* format) = nullptr;
    void (*set)(AK_Object& object, const AK_String& value) = nullptr;
    bool stampsItself = false;   // the operation stamps its execution on its own, since only a success counts
};

/// One row of a class's table: the name, what Get answers and Set does, a number format where it is not the type's own.
struct AK_Row {
    const char* name;
    AK_Access access;
    const char* format = nullptr;
};

/// A named list of attribute values that are set together.
struct AK_ParameterSet {
    AK_String _name;
    AK_List<AK_String> _attributes{1};
    AK_List<AK_String> _values{1};   // parallel to the attributes
};

// ----------------------------------------------------------------------------------------------------------------
// Objects
// ----------------------------------------------------------------------------------------------------------------

/// Base of all nodes of the tree.
///
/// An object owns its components and deletes them. A reference is an entry of the list that is not owned; walks of the
/// tree do not enter references, since what they name is visited at its owner.
///
/// Errors: an operation reports by setting `_execStatus`; Set still returns 1, and 0 only for an unknown name.
class AK_Object {
public:
    using Row = AK_Row;
    static constexpr const char* className = "AK_Object";

    /// Makes an object that is not in the tree yet: `parent` is kept, and the id made unique among its components,
    /// but only AddComponent lists the object there. An empty id becomes the type and a running number.
    AK_Object(const AK_String& id, AK_Object* parent);
    AK_Object(const AK_Object&) = delete;
    AK_Object& operator=(const AK_Object&) = delete;

    // ---- virtual operations
    virtual ~AK_Object();
    /// The description of the class; an empty node while there is none.
    virtual const AK_Attribute* Attributes() const;
    /// Attributes(), kept alive.
    virtual AK_Description Description() const { return AK_Description(AK_Description(), Attributes()); }

    /// "%AK_NULL%" for a name that nothing recognises.
    virtual AK_String Get(const AK_String& attr) const;
    /// 1 if the name is known, whatever came of it (see `_execStatus`); else 0.
    virtual int Set(const AK_String& attr, const AK_String& value);
    /// Appends the command that sets attr to the class's default file; 1 if the file cannot be written.
    virtual int SetDefault(const AK_String& attr, const AK_String& value) const;
    /// Recomputes and redraws: the class's formula function "Update", then the active components.
    virtual void Update();
    /// Removes what the program wrote into the object's directory and those of its components, and each directory that
    /// is empty then. One that holds the working directory, the home directory or the project stays in any case.
    virtual void RemoveFromDisc();
    /// True for the type of the class and of its bases.
    virtual bool IsOfType(const AK_String& type) const;
    /// Writes the attributes as commands; an empty name means `_macroFileName`.
    virtual void SaveAttributes(const AK_String& file) const;
    /// The class's binary record: 0 for success, 1 for failure with the place in `_execStatus`.
    virtual void Load(const AK_String& dir);
    virtual int SaveData(AK_Stream& stream) const;
    virtual int LoadData(AK_Stream& stream);
    /// Tells in the status that a record could not be read or written, and where the code found it; always 1.
    int IoError(const char* where) const;
    /// Called when the whole subtree of a load stands.
    virtual void LoadFinalize() {}
    /// Makes a component by type name, which the caller adds; null for an unknown type.
    virtual AK_Object* CreateComponent(const AK_String& id, const AK_String& type);
    /// Frees what containers hold, here and below; nothing is saved.
    virtual void UnloadAllContainers(const AK_String& ignored);
    /// Stamp of an attribute's last set, 0 if never. Also takes `path:attr`.
    virtual long ExecTime(const AK_String& attr) const;
    /// Writes the class variables of the class and its bases; the number of files that could not be written.
    virtual int SaveClassVariables() const;

    // ---- tree (AK_Object.cpp)
    int NumComponents() const { return _components.Size(); }
    AK_Object* ComponentAt(int i) const { return _components[i]; }
    bool Owns(int i) const { return !_isReference[i] && _components[i]->_parent == this; }
    AK_Object* Parent() const { return _parent; }
    AK_Object* Root() const;
    /// First direct component with that id, or null.
    AK_Object* Component(const AK_String& id) const;
    void AddComponent(AK_Object* object);        // owned from now on; becomes "$latest_comp"
    void AppendComponent(AK_Object* object);     // a reference, unless it is in the list already
    void AddNewComponent(const AK_String& id);   // what the class's create function makes; nothing without one
    /// Drops the first reference with that id; true if there was one. A fixed component is refused with a status.
    bool RemoveComponent(const AK_String& id);
    /// Takes this object out of its parent's list without deleting anything: from now on it is a root of its own. A
    /// fixed component is refused with a status.
    void Detach(const AK_String& ignored);
    void RemoveAllReferencesTo(const AK_Object* object);
    /// Deletes an owned component, its files on disc and all references to it; 1, or 0 if there is none or it is fixed,
    /// which leaves a status.
    int DeleteComponent(const AK_String& id);
    /// Takes an owned component out of the tree and frees it, at once or, if its own call is running, at the end of
    /// the outermost call. References to it go, its directory on disc stays.
    void FreeComponent(int index);
    void SortComponentsByIds();
    int NumObjects() const;
    /// True if the object is this one or owned below it; the address need not be that of a live object.
    bool HasInTree(const AK_Object* object) const;
    /// Appends all objects of the type below and including this one, depth-first.
    void GetObjectsOfType(const AK_String& type, AK_List<AK_Object*>& list);

    // ---- ids and paths (AK_Object_Path.cpp)
    const AK_String& Id() const { return _id; }
    /// Sets the id, made of letters, digits and "_" and unique among the parent's components; moves the directory.
    void Id(const AK_String& id);
    AK_String IdAbs() const;                        // "Viewer/Project/DHMs"
    AK_String IdAbs(const AK_Object* base) const;   // "../x": the path that leads here from base
    AK_String IdTyped() const;
    AK_String Type() const;
    /// The object a path leads to, loaded from disc if need be; null if there is none.
    AK_Object* ObjectById(const AK_String& path);
    static AK_Object* ObjectFromCurrentById(const AK_String& path);
    const AK_String& ProjectDir() const { return _projectDir; }
    void ProjectDir(const AK_String& dir);
    /// Fixes the components that there are: the code of the object relies on them, so nobody takes them away.
    void FixComponents();

    // ---- attributes, stamps, variables (AK_Object_Attributes.cpp)
    static std::span<const Row> Rows();
    int SetForAllObjectsOfType(const AK_String& type, const AK_String& attr, const AK_String& value);
    void AssignAttributesOf(AK_Object* source, const AK_List<AK_String>& excluded);
    AK_String AttributeNamesList(char kind, bool visibleOnly, bool labels) const;
    static AK_String Label(const AK_Attribute* attribute);
    AK_String Label() const { return Label(Attributes()); }
    /// Documentation with the sentences that tell what kind of attribute it is, in the current language.
    static AK_String DocText(const AK_Attribute* attribute);
    void SetExecTime(const AK_String& attr);
    long ExecTimeRec(const AK_String& attr) const;
    long ModificationTime() const;
    long ModificationTimeRec() const;
    static bool IsVariableName(const AK_String& name);
    AK_String VariableValue(const AK_String& name) const;   // makes an unknown one, with the value ""
    void SetVariableValue(const AK_String& name, const AK_String& value);
    void SetVariableValue(const AK_String& assignment);   // "name=value"
    AK_String VariableValues() const;
    void VariableValues(const AK_String& list);
    /// Splits "path:attr" at the first ":"; false if the text has not that form.
    static bool ParseRemoteCommand(const AK_String& text, AK_String& path, AK_String& attr);

    // ---- class files (AK_Object_ClassFiles.cpp)
    static void SetAttributesDirectory(const AK_String& dir);
    static void SetUserAttributesDirectory(const AK_String& dir);
    /// File of that name in the user's attribute directory if it is there, else in the program's. Null: no such part.
    static AK_String AttributeFile(const AK_String& name, const char* ext, const char* subdir);
    /// All files with an extension in a part of both directories, as paths in the order of their names; where both have
    /// a file of a name it is the user's.
    static AK_List<AK_String> AttributesFilesList(const char* ext, const char* subdir);
    static int SetClassDefault(const AK_String& className, const AK_String& attr, const AK_String& value);
    static void ReadInitializationMacro(const AK_String& className, AK_List<AK_String>& list);
    static void ReadClassVariables(const AK_String& className, AK_List<AK_String>& list);
    static int WriteClassVariables(const AK_String& className, AK_List<AK_String>& list);
    /// Value of a class variable, or null.
    static const char* ClassVariable(const AK_List<AK_String>& list, const AK_String& name);
    static void ClassVariable(AK_List<AK_String>& list, const AK_String& name, const AK_String& value);
    int SaveClassVariablesRec();
    static AK_String Arglist(const char* separator);   // all of argv, each followed by the separator

    // ---- parameter sets (AK_Object_ParameterSets.cpp)
    static void ParameterSetsAppend(const AK_String& className);
    void ParameterSet(const AK_String& name);
    AK_String ParameterSet() const;   // the set in force, or "none"
    bool IsParameterSet(int index) const;
    static AK_String ParameterSetOptions();

    // ---- commands (AK_Object_Commands.cpp, AK_Object_Explain.cpp)
    void ExecCommand(const AK_String& command, int noExplain);
    /// 0 if the line parsed, 1 not a command or a bad first argument, 2 or 3 a bad second or third one,
    /// 4 a get without a variable. `cmd` is "set", "get", or "" for a comment.
    int ParseCommandString(const AK_String& command, AK_String& cmd, AK_String& object, AK_String& attr,
                           AK_String& value) const;
    static AK_String CommandString(const AK_String& id, const AK_String& attr, const AK_String& value);
    AK_String CommandString(const AK_Object* relativeTo, const AK_String& attr, const AK_String& value) const;
    AK_String CommandString(const AK_Object* relativeTo, const AK_Attribute* attribute, const AK_String& value,
                            int forAllOfType) const;
    /// Tells the user what the command on this object is about to do, if explanation mode is on; false if it must not
    /// be executed.
    bool ExplainCommand(const AK_String& command, const AK_String& attr, const AK_String& value, int noExplain) const;

    // ---- macros (AK_Object_Macros.cpp)
    /// Runs a macro file, by an empty name the object's own; paths in it are relative to this object. Failures are
    /// told through `_execStatus`, which stops the macros that called this one.
    void ExecMacro(const AK_String& file, int noExplain);
    /// Polls the front end's interrupt; non-zero, with a status, if it wants the macro to end.
    static int Signal();

    // ---- persistence (AK_Object_Persistence.cpp)
    // SaveAs and Load work on this object alone, the others on its owned components too. Saving goes on after an error
    // and keeps the first; loading stops at it. SaveProjectAs takes along what lies in the old directory only.
    void SaveAs(const AK_String& dir);
    void Save(const AK_String& ignored);
    void SaveProject(const AK_String& ignored);
    void SaveProjectAs(const AK_String& dir);
    void LoadProject(const AK_String& dir);
    void SaveAttributesRecursively(const AK_String& file) const;
    /// The component of that id, made and loaded from its directory in the one of this object; null if there is none.
    AK_Object* LoadedComponent(const AK_String& id);

    // ---- formula code (AK_Object_Script.cpp)
    static constexpr const char* codeMarker = "//qvt_sci";   // what begins like this is code, not the name of a file
    /// Loads a class's formula code, or the code itself when `source` begins with the marker; null if it has none.
    Namespace* Load_QVT_SCI_code(const AK_String& source);
    void Execute_QVT_SCI_code(const AK_String& file);
    /// Offers an attribute to formula code; 1 if it handled the name.
    int qvt_sci_Get(Namespace* space, const AK_String& attr, AK_String& result) const;
    int qvt_sci_Set(Namespace* space, const AK_String& attr, const AK_String& value);
    /// Calls the function "Update" of the code, if there is one.
    void qvt_sci_Update(Namespace* space);
    void List_QVT_SCI_predefined(const AK_String& file);
    void StartInBackground(const AK_String& args);

    // ---- reference manual (AK_Object_Reference.cpp)
    /// HTML page of this object's class and its bases, in the current language. A file that cannot be opened is told in
    /// `_execStatus`.
    void WriteHtmlReferenceRecursive(const AK_String& file);
    /// The same for all classes that have a description file in the program's attribute directory.
    void WriteEntireHtmlReference(const AK_String& file);
    /// A text's formulas, which stand between "@@" and "/@", as HTML; and the text with these marks removed.
    static AK_String ExpandFormulaHtml(const AK_String& text);
    static AK_String ExpandFormulaFox(const AK_String& text);
    /// Tells the manual what the base of a class is. Always true.
    static bool RegisterClass(const char* className, const char* baseClassName);

    // ---- process-wide state
    static int _lang;   // 1 while the language is "german"
    static int _argc;
    static char** _argv;
    static AK_String _about;
    static AK_String _attributesDirectory;        // ends in "/"
    static AK_String _userAttributesDirectory;    // ends in "/"
    static AK_String _userApplicationDirectory;   // ends in "/"
    static AK_List<AK_ParameterSet> _parsets;     // of all classes, in order of reading
    static AK_String _execStatus;                 // "" when the last attribute operation went well, else the error
    static AK_List<AK_String> _macroFileNameStack;
    static long _clock_t0;
    static AK_String _macroComment;
    static int _macroFigure;   // 1 after a "//fig" line: the explanation has a figure
    static int _reportCommands;
    static int _explainCommands;
    static AK_String _language;
    static AK_List<AK_Object*> _curObj;   // objects whose formula code runs
    static int _object_counter;
    static AK_String _directoryToLoad;   // while a component is made from disc: its directory
    static int (*_signalFunction)();     // a front end's way to interrupt a macro; null for none
    static int (*py_run_simple_string)(const char* text);
    static int _viewerWidth, _viewerHeight;   // pixels
    static float _viewerBgCol[3];             // the viewer's background: r, g, b, 0 to 1

    static const AK_Attribute* _attributes;
    static Namespace* _qvt_sci_namespace;
    static AK_List<AK_String> _classVariables;
    static AK_List<AK_String> _initializationCommands;
    static int _parameterSetsAppended;

protected:
    /// While one lives, its object is not freed: an object deleted by its own command, macro or formula code leaves
    /// the tree at once and is freed when the outermost of these ends.
    class Call {
    public:
        explicit Call(const AK_Object* object);
        ~Call();
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;
    };

    /// While one lives, formula code runs on behalf of its object: paths begin there, and it is not freed.
    class CodeOf {
    public:
        explicit CodeOf(const AK_Object* object);
        ~CodeOf();
        CodeOf(const CodeOf&) = delete;
        CodeOf& operator=(const CodeOf&) = delete;

    private:
        Call _call;
    };

    /// A function of a class's code by its name and the types of what it takes ("double,char[]"); null if the code has
    /// no such function that can be called.
    static Symbol* FormulaFunction(Namespace* space, const AK_String& name, const char* formals);
    /// Calls a function that takes one char array, in which it finds `text` and leaves its answer.
    static AK_String CallWithText(Symbol* function, const AK_String& text);

    /// Walks a class's table: empties the status, acts, stamps. 0 if no row bears the name.
    int SetByRows(std::span<const Row> rows, const AK_String& attr, const AK_String& value);
    bool GetByRows(std::span<const Row> rows, const AK_String& attr, AK_String& result) const;
    /// Executes the lines behind the marker that a list of initialisation commands begins with. Not on an object that
    /// these very commands make, which would go on for ever.
    void RunCommandsOf(const AK_List<AK_String>& commands, int noExplain);
    void RemoveEntry(int index);   // takes an entry out of both component lists
    /// Removes the references from here and below to an object and to all that it owns.
    void RemoveReferencesInto(const AK_Object* ancestor);
    AK_String Explanation(const AK_String& command, const AK_String& attr, const AK_String& value) const;
    void ExecCommandFile(const AK_String& name, int noExplain);
    void RunLoadedCode(const char* function);
    /// The description whose attributes are saved.
    virtual const AK_Attribute* AttributesToSave() const { return Attributes(); }
    void SaveAttributesTo(const AK_String& file, bool recursively) const;
    void WriteAttributes(std::FILE* file, const AK_Object* relativeTo, bool recursively) const;
    bool RefusesAsFixed() const;   // sets the status if this object is a fixed component

    // ---- files that were not read, removal (AK_Object_Files.cpp)
    bool IsUnread() const;   // and nothing of the object has been changed since
    void SetUnread(bool isUnread);
    /// Marks the objects from here down whose files lie on disc and were neither read nor written by them; all that
    /// have files if the directory is another one than before.
    void KeepUnreadFiles(bool isOtherDirectory);
    void CopyUnreadFiles(const AK_String& from, const AK_String& to) const;
    void CopyUnloadedComponents(const AK_String& from, const AK_String& to) const;
    void RemoveFilesOfFormerType() const;
    bool HoldsOtherDirectories() const;   // its directory: the working, the home or the project's directory

    /// Makes and adds the component whose directory this is; null if its type is unknown or it is no such directory.
    AK_Object* ComponentFromDirectory(const AK_String& id, const AK_String& dir);

    int _active = 1;
    AK_Object* (*_factory)(const AK_String& id) = nullptr;   // what AddNewComponent makes; null for nothing
    int _suppressCreatingComponents = 0;
    long _updateTime = 0;
    AK_String _id;
    AK_Object* _parent = nullptr;
    bool _isFixed = false;    // a part that its parent relies on
    bool _isUnread = false;   // files on disc hold what the object does not have
    AK_List<AK_Object*> _components{1};
    AK_List<char> _isReference{1};   // parallel: 0 owned, 1 reference
    AK_List<AK_String> _execTimeIds{1};
    AK_List<long> _execTimes{1};                    // parallel: stamp of each name's last set
    mutable AK_List<AK_String> _variableNames{1};   // with the "$"; reading an unknown one makes it
    mutable AK_List<AK_String> _variableValues{1};
    AK_String _macroFileName;
    int _macroRepetitions = 1;
    AK_String _projectDir;            // "" when the object has none
    AK_String _typeOnDisc;            // type that its files there bear; "" before the first load or save
    mutable int _parameterSet = -1;   // index into _parsets
};

/// The text in the language of the program.
inline const char* InLanguage(const char* english, const char* german)
{
    return AK_Object::_lang == 1 ? german : english;
}
