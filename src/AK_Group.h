// Objects that gather others: containers own them, groups refer to them; and objects whose class is made at run time.
//
//   AK_Container   owns a variable number of like objects, which can be created, deleted, loaded and unloaded
//   AK_Group       a named selection of objects anywhere in the tree; what is set on it is set on all of them
//   AK_UserObj     its description and formula code come from files, or from a text, that an attribute names

#pragma once

#include "AK_Object.h"
#include "AK_Object_Class.h"

/// Owns like objects. A concrete container derives from it and overrides CreateComponent, which makes an object of one
/// of its type names with the container as parent, or returns null.
class AK_Container : public AK_Class<AK_Container, AK_Object> {
public:
    static constexpr const char* className = "AK_Container";
    static std::span<const Row> Rows();

    AK_Container(const AK_String& id, AK_Object* parent);

    /// Deletes all components, the last one first, and their directories.
    void DeleteAll();
    /// Loads a component from its directory, which makes it if it is not in memory. Nothing happens if there is neither
    /// a component of that id nor a directory of an object that this container can make.
    void LoadComponent(const AK_String& id);
    /// Frees a component and the references to it. Its directory stays; what has not been saved is lost.
    void UnloadComponent(const AK_String& id);
    /// What lies in the container's directory and is not in memory, each id followed by the list separator.
    AK_String UnloadedComponentsList() const;

    void UnloadAllContainers(const AK_String& ignored) override;

private:
    void Unload(int index);
};

/// A selection of objects: its members are references and live where their owners are.
///
/// An attribute is looked up in the class's formula code, then among the group's own names, then at all members. A
/// value that is a list goes to the members before the group's own names, an element to each, from the start again when
/// the list is short. A group that is met again while it passes something on (groups may hold each other) answers as if
/// it were empty.
///
/// The description is the group's own: that of the class, with what all members have in common as its last node.
class AK_Group : public AK_Class<AK_Group, AK_Object> {
public:
    static constexpr const char* className = "AK_Group";
    static constexpr bool inheritsDescription = false;
    static std::span<const Row> Rows();

    AK_Group(const AK_String& id, AK_Object* parent);

    const AK_Attribute* Attributes() const override { return _attr ? _attr.get() : _attributes; }
    AK_Description Description() const override { return _attr ? _attr : AK_Class::Description(); }
    AK_String Get(const AK_String& attr) const override;
    int Set(const AK_String& attr, const AK_String& value) override;
    void Update() override {}   // the members are updated at their owners
    bool IsOfType(const AK_String& type) const override;
    /// The group's own stamp; without one the latest of the members'.
    long ExecTime(const AK_String& attr) const override;
    /// Drops all references.
    void UnloadAllContainers(const AK_String& ignored) override;

    // ---- members (AK_Group.cpp)
    void AppendObject(const AK_String& path);   // from the root
    void RemoveObject(const AK_String& id);
    void RemoveAllObjects();
    /// Paths relative to the group. Setting adds to the members that are there; what is not found is passed over.
    AK_String ContainedObjectsList() const;
    void ContainedObjectsList(const AK_String& list);
    void RemoveAllObjectsOfType();
    /// Objects of the selected type whose selected attribute has the selected value; without an attribute all of them.
    void AppendAllMatchingObjects();
    void RemoveAllMatchingObjects();
    /// Renews the description: after the class's own nodes follows the most derived one that all members share.
    void UpdateAttributes();

    // ---- lists to choose from (AK_Group.cpp), each element followed by the list separator
    AK_String GetAllObjectsList() const;    // absolute paths of what is no member yet
    AK_String GetObjectTypesList() const;   // types of the tree's objects
    AK_String AttributeOptions() const;     // names that the objects of the selected type show
    AK_String ValueOptions() const;         // values that the selected attribute has among them

    // ---- filter (AK_Group_Filter.cpp)
    /// Stores the body of the formula `int pass(char id[])`, which is called with an object's absolute path and answers
    /// 0 for what is not wanted. A text that does not compile, and an empty one, leaves the filter as it was.
    void Filter(const AK_String& text);
    /// Adds the objects of the selected type that the filter lets pass, in the order of the tree.
    void AppendAllObjectsOfType();
    /// Absolute paths of the objects that AppendAllObjectsOfType takes, of those that are members already too.
    AK_String GetObjectsOfTypeList() const;

private:
    class CompiledFilter;
    class PassingOn;
    struct Ancestry;

    int SetMembers(const AK_String& attr, const AK_List<AK_String>& values);
    AK_String GetFromMembers(const AK_String& attr) const;
    bool Append(AK_Object* object);
    template <class Test>
    void RemoveMembers(const Test& test);
    AK_List<AK_Object*> ObjectsOfSelectedType() const;
    bool IsAlive(const AK_Object* object) const { return Root()->HasInTree(object); }
    bool Matches(const AK_Object* object) const;
    bool HasSelectedAttribute() const { return !_selectedAttribute.IsEmpty(); }
    bool IsFull() const { return _singleType == 0; }
    void SetSingleType(const AK_String& text);
    AK_String GetComponentList() const;
    static Ancestry AncestryOf(const AK_Object* member);

    const AK_Attribute* AttributesToSave() const override { return _attributes; }

    AK_String _selectedObjectType = "Object";   // what the "of type" and "matching" operations work on
    AK_String _selectedAttribute;               // what the "matching" operations look at; empty for any object
    AK_String _selectedValue;
    AK_Description _attr;     // the group's own description; null only until its constructor has made it
    AK_Description _common;   // what all members share, the last node of _attr; null for nothing
    int _singleType = 0;      // 1 when a front end is to show the operations for one type
    AK_String _filter;        // body of the filter formula, empty for none
    mutable bool _passingOn = false;
};

/// An object of a class that a user has made. AttributesName is the name of that class, whose files (.atr, .cint, .def,
/// .parsets) are looked up like those of a class of the program; or, when it begins with "obj.", the description
/// itself, with the formula code behind a line "//qvt_sci".
class AK_UserObj : public AK_Class<AK_UserObj, AK_Object> {
public:
    static constexpr const char* className = "AK_UserObj";
    static std::span<const Row> Rows();

    AK_UserObj(const AK_String& id, AK_Object* parent);
    ~AK_UserObj() override;

    /// The user object whose directory this is, with its description in place but its attributes not yet loaded: the
    /// first step of a container's CreateComponent. Null if the directory is not that of a user object.
    static AK_UserObj* CreateFromDirectory(const AK_String& id, AK_Object* parent, const AK_String& dir);

    const AK_Attribute* Attributes() const override
    {
        return _loadedAttributes ? _loadedAttributes.get() : _attributes;
    }
    AK_Description Description() const override
    {
        return _loadedAttributes ? _loadedAttributes : AK_Class::Description();
    }
    AK_String Get(const AK_String& attr) const override;
    int Set(const AK_String& attr, const AK_String& value) override;
    void Update() override;

    const AK_String& AttributesName() const { return _attributesName; }
    /// Gives the object its class. A text that it has already changes nothing; one that brings no description leaves
    /// the object with that of all user objects.
    void AttributesName(const AK_String& name);

    /// Frees formula code that an object no longer needs, as soon as no code is running that could be part of it.
    static void Retire(Namespace* space);

    inline static AK_List<AK_String> _parameterSetsRead{1};   // classes whose parameter sets are in the list of all

private:
    void LoadClass();
    void TakeClassFromText();
    void TakeDescription(const AK_String& nameOrText);
    void DeleteLoadedAttributes();

    AK_List<AK_String> _initCommands{1};   // a marker, then the commands of the class's defaults
    Namespace* _namespace = nullptr;       // the object's own formula code
    AK_String _attributesName;
    bool _isLoading = false;
    AK_Description _loadedAttributes;   // the description in use; null for that of all user objects
};
