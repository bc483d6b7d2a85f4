// What tests of the object tree need: a world of its own for each test, small classes, and what holds of every tree.
//
// Classes and AK_Object keep process-wide state (descriptions, parameter sets, the language, the status). ObjectTest
// gives each test a fresh directory with description files, and AK_Object as it is when the program starts; the test
// names the classes it uses, which then read their files anew:
//
//   class AK_GroupTest : public ObjectTest {
//   protected:
//       AK_GroupTest() { Fresh<AK_Container, AK_Group>(); }   // bases first
//   };

#pragma once

#include "AK_Basic_TestTools.h"
#include "AK_Object.h"
#include "AK_Object_Class.h"

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <memory>
#include <set>
#include <string>
#include <vector>

using Lines = std::vector<std::string>;

inline std::string Text(const AK_String& s) { return s.c_str(); }

/// The list in "%AK_SEP%" form as lines.
inline Lines Listed(const AK_String& list)
{
    AK_List<AK_String> pieces(1);
    list.Split(ak_sep, pieces);
    Lines lines;
    for (const AK_String& piece : pieces) lines.push_back(piece.c_str());
    return lines;
}

// ----------------------------------------------------------------------------------------------------------------
// Small classes
// ----------------------------------------------------------------------------------------------------------------

/// Type "Thing": a value of each kind, operations that fail, delete and count, components of its own kind.
class TestThing : public AK_Class<TestThing, AK_Object> {
public:
    static constexpr const char* className = "TestThing";
    static constexpr const char* description = "obj.Thing\n"
                                               "\tdoc:A thing \\\n"
                                               "\t\tto try.\n"
                                               "\t\tgerman:Ein Ding.\n"
                                               "\tgerman:Ding\n"
                                               "\tint.Number:Number\n"
                                               "\t\tset:Number\n"
                                               "\t\tgerman:Nummer\n"
                                               "\tfloat.Ratio:Ratio\n"
                                               "\t\tset:Ratio\n"
                                               "\t\tvis:NumberVis\n"
                                               "\tdouble.Length:Length\n"
                                               "\t\tset:Length\n"
                                               "\ttext.Text:Text\n"
                                               "\t\tset:Text\n"
                                               "\ttext.Scratch:Scratch\n"
                                               "\t\tset:Scratch\n"
                                               "\t\tvolatile\n"
                                               "\ttext.Kind:Kind\n"
                                               "\t\tset:Kind\n"
                                               "\t\toptions:KindOptions\n"
                                               "\tbool.Shown:Shown\n"
                                               "\t\tset:Shown\n"
                                               "\tfilename.Input:Input\n"
                                               "\t\tset:Input\n"
                                               "\tdirectory.Place:Place\n"
                                               "\t\tset:Place\n"
                                               "\tpoint.Corner:Corner\n"
                                               "\t\tset:Corner\n"
                                               "\t\tpick world\n"
                                               "\tpoint.Corners:Corners\n"
                                               "\t\tset:Corners\n"
                                               "\t\tpick world multiple\n"
                                               "\topr.Operations\n"
                                               "\t\tapply.Fail\n"
                                               "\t\t\tset:Fail\n"
                                               "\t\tapply.Count\n"
                                               "\t\t\tset:Count\n";

    static std::span<const Row> Rows()
    {
        using T = TestThing;
        // clang-format off
        static constexpr Row rows[] = {
            {"Number",      value<&T::_number>},
            {"NumberVis",   visible<[](const T& t) { return t._number != 0; }>},
            {"Ratio",       value<&T::_ratio>},
            {"RatioText",   value<&T::_ratio>, "%.2f"},
            {"Length",      value<&T::_length>},
            {"Text",        value<&T::_text>},
            {"Scratch",     value<&T::_scratch>},
            {"Kind",        value<&T::_kind>},
            {"KindOptions", shown<[](const T&) { return AK_String("soft") + ak_sep + "hard" + ak_sep; }>},
            {"Shown",       value<&T::_shown>},
            {"Input",       value<&T::_input>},
            {"Place",       value<&T::_place>},
            {"Corner",      value<&T::_corner>},
            {"Corners",     value<&T::_corners>},
            {"Fail",        command<[](T&, const AK_String& why) { _execStatus = AK_String("failed: ") + why; }>},
            {"Count",       command<[](T& t) { ++t._count; }>},
            {"DeleteMe",    command<&T::DeleteMe>},
        };
        // clang-format on
        return rows;
    }

    TestThing(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
    {
        ReadClassFiles();
        _factory = [](const AK_String& newId) -> AK_Object* { return new TestThing(newId, nullptr); };
        RunInitializationCommands();
        ++alive;
    }
    ~TestThing() override { --alive; }

    AK_Object* CreateComponent(const AK_String& id, const AK_String& type) override
    {
        return type == "Thing" ? new TestThing(id, this) : nullptr;
    }

    /// A component of this object, as a creating command makes one: constructed with its parent, then added.
    TestThing* Add(const char* id)
    {
        auto* thing = new TestThing(id, this);
        AddComponent(thing);
        return thing;
    }

    void DeleteMe() { _parent->DeleteComponent(_id); }

    inline static int alive = 0;   // objects of this class that have not been freed
    int _count = 0;                // how often the operation Count ran

protected:
    int _number = 0;
    float _ratio = 0;
    double _length = 0;
    AK_String _text, _scratch, _kind, _input, _place, _corner, _corners;
    int _shown = 0;
};

/// Type "SpecialThing": answers "Number" itself, and knows one more attribute.
class TestSpecialThing : public AK_Class<TestSpecialThing, TestThing> {
public:
    static constexpr const char* className = "TestSpecialThing";
    static constexpr const char* description = "obj.SpecialThing\n"
                                               "\ttext.Extra:Extra\n"
                                               "\t\tset:Extra\n";
    static std::span<const Row> Rows()
    {
        using T = TestSpecialThing;
        // clang-format off
        static constexpr Row rows[] = {
            {"Number", shown<[](const T& t) { return 100 + t._number; }>},   // Set goes on to the base class
            {"Extra",  value<&T::_extra>},
        };
        // clang-format on
        return rows;
    }

    TestSpecialThing(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
    {
        ReadClassFiles();
        RunInitializationCommands();
    }

private:
    AK_String _extra;
};

inline constexpr const char* objectDescription = "obj.Object\n"
                                                 "\ttext.Id:Id\n"
                                                 "\t\tset:Id\n"
                                                 "\t\tvis:IdVis\n"
                                                 "\tbool.Active:Active\n"
                                                 "\t\tset:Active\n"
                                                 "\topr.Macros\n"
                                                 "\t\tfilename.MacroFileName:MacroFileName\n"
                                                 "\t\t\tset:MacroFileName\n"
                                                 "\t\tapply.ExecMacro\n"
                                                 "\t\t\tset:ExecMacro\n"
                                                 "\ttext.Explain:ExplainCommands\n"
                                                 "\t\tset:ExplainCommands\n"
                                                 "\t\tvolatile\n";

// ----------------------------------------------------------------------------------------------------------------
// The world of a test
// ----------------------------------------------------------------------------------------------------------------

/// Base of the fixtures. Messages are caught; the working directory stays as it is.
class ObjectTest : public testing::Test {
protected:
    ObjectTest()
    {
        for (const char* name : {"attributes", "home", "user"}) AK_System::CreateDir(directory / name);
        setenv("HOME", (directory / "home").c_str(), 1);
        static char program[] = "/somewhere/korvo.exe";
        static char* arguments[] = {program};
        AK_Object::_argc = 1;
        AK_Object::_argv = arguments;
        AK_Object::SetAttributesDirectory(directory / "attributes");
        AK_Object::SetUserAttributesDirectory(directory / "user");
        AK_Object::_userApplicationDirectory = "";
        AK_Object::_parsets.Clear();
        AK_Object::_execStatus = "";
        AK_Object::_macroFileNameStack.Clear();
        AK_Object::_macroComment = "";
        AK_Object::_macroFigure = 0;
        AK_Object::_reportCommands = AK_Object::_explainCommands = AK_Object::_lang = 0;
        AK_Object::_language = "default";
        AK_Object::_curObj.Clear();
        AK_Object::_object_counter = 0;
        AK_Object::_signalFunction = nullptr;
        AK_Object::py_run_simple_string = nullptr;
        TestThing::alive = 0;
        Describe("AK_Object", objectDescription);
        Describe("TestThing", TestThing::description);
        Describe("TestSpecialThing", TestSpecialThing::description);
        Fresh<AK_Object, TestThing, TestSpecialThing>();
    }

    /// Writes a class's description file.
    void Describe(const char* className, const std::string& text)
    {
        ClassFile((std::string(className) + ".atr").c_str(), text);
    }

    /// Writes a file into the attributes directory: descriptions, defaults, parameter sets, macros.
    void ClassFile(const char* name, const std::string& text)
    {
        WriteFile(directory / (std::string("attributes/") + name).c_str(), text);
    }

    /// Lets the classes read their files anew when their next object is made. No object of them may be alive.
    template <class... Classes>
    static void Fresh()
    {
        (Forget<Classes>(), ...);
    }

    /// The messages since the last call.
    Lines Messages()
    {
        Lines texts;
        texts.swap(messages.Texts());
        return texts;
    }

    /// Runs one command on an object and returns its messages.
    Lines Run(AK_Object& object, const std::string& command, int noExplain = 0)
    {
        Messages();
        object.ExecCommand(command.c_str(), noExplain);
        return Messages();
    }

    TemporaryDirectory directory;
    CaughtMessages messages;

private:
    // Descriptions and formula code stay alive with the process, so those of former tests are kept reachable for the
    // leak check.
    template <class C>
    static void Forget()
    {
        static auto& former = *new std::vector<const void*>;
        former.push_back(C::_attributes);
        former.push_back(C::_qvt_sci_namespace);
        C::_attributes = nullptr;
        C::_qvt_sci_namespace = nullptr;
        C::_classVariables.Clear();
        C::_initializationCommands.Clear();
        C::_parameterSetsAppended = 0;
    }
};

// ----------------------------------------------------------------------------------------------------------------
// What holds of every tree
// ----------------------------------------------------------------------------------------------------------------

/// The lists of an object, for looking at them from outside.
struct ObjectParts : AK_Object {
    static const AK_List<char>& Flags(const AK_Object& o) { return o.*(&ObjectParts::_isReference); }
    static const AK_List<AK_Object*>& Components(const AK_Object& o) { return o.*(&ObjectParts::_components); }
    static const AK_List<AK_String>& StampNames(const AK_Object& o) { return o.*(&ObjectParts::_execTimeIds); }
    static const AK_List<long>& Stamps(const AK_Object& o) { return o.*(&ObjectParts::_execTimes); }
    static const AK_List<AK_String>& VariableNames(const AK_Object& o) { return o.*(&ObjectParts::_variableNames); }
    static const AK_List<AK_String>& VariableValues(const AK_Object& o) { return o.*(&ObjectParts::_variableValues); }
};

inline bool AreDistinct(const AK_List<AK_String>& names)
{
    std::set<std::string> seen;
    for (const AK_String& name : names)
        if (!seen.insert(name.c_str()).second) return false;
    return true;
}

inline void CollectOwned(const AK_Object& object, std::set<const AK_Object*>& owned)
{
    ASSERT_TRUE(owned.insert(&object).second) << "owned twice: " << object.Id();
    for (int i = 0; i < object.NumComponents(); ++i)
        if (object.Owns(i)) CollectOwned(*object.ComponentAt(i), owned);
}

/// Parallel lists are parallel, owned components know their parent, references lead to objects that are owned somewhere
/// in the tree, ids are legal, and unique among the owned components of one object.
inline void ExpectConsistent(const AK_Object& root)
{
    std::set<const AK_Object*> owned;
    CollectOwned(root, owned);
    EXPECT_EQ(root.NumObjects(), int(owned.size()));
    for (const AK_Object* object : owned) {
        const std::string where = Text(object->IdAbs());
        const AK_List<char>& flags = ObjectParts::Flags(*object);
        ASSERT_EQ(object->NumComponents(), flags.Size()) << where;
        EXPECT_EQ(ObjectParts::StampNames(*object).Size(), ObjectParts::Stamps(*object).Size()) << where;
        EXPECT_EQ(ObjectParts::VariableNames(*object).Size(), ObjectParts::VariableValues(*object).Size()) << where;
        EXPECT_TRUE(AreDistinct(ObjectParts::StampNames(*object))) << where;
        EXPECT_TRUE(AreDistinct(ObjectParts::VariableNames(*object))) << where;
        EXPECT_EQ(object->Root(), &root) << where;
        AK_String plain = object->Id();
        EXPECT_TRUE(!plain.IsEmpty() && plain.ReplaceNonAlNum('_') == 0) << where;

        std::set<const AK_Object*> entries;
        AK_List<AK_String> ids(1);
        for (int i = 0; i < object->NumComponents(); ++i) {
            const AK_Object* component = object->ComponentAt(i);
            ASSERT_TRUE(owned.count(component)) << where << ": entry " << i << " is no object of the tree";
            EXPECT_TRUE(entries.insert(component).second) << where << ": " << component->Id() << " is listed twice";
            EXPECT_EQ(flags[i] == 0, component->Parent() == object) << where << ": " << component->Id();
            if (object->Owns(i)) ids.Append(component->Id());
        }
        EXPECT_TRUE(AreDistinct(ids)) << where << ": ids are not unique";
    }
}
