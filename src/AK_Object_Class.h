// The class pattern, written once: attribute tables and all that each class of the tree would otherwise repeat.
//
// A class is its description file, a table and its behaviour:
//
//   class SW_Thing : public AK_Class<SW_Thing, AK_Object> {
//   public:
//       static constexpr const char* className = "SW_Thing";      // names its description files
//       static std::span<const Row> Rows();                       // the table, walked by Get and Set
//       SW_Thing(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
//       {
//           ReadClassFiles();                                     // first: description, formula code, class variables
//           AddComponent(new AK_Container("Parts", nullptr));     // then the fixed components
//           RunInitializationCommands();                          // last: the class's defaults
//       }
//   };
//
// The rows say what a name means:
//
//   {"Density",      value<&SW_Thing::_density>},                 a member: Get prints it, Set reads it
//   {"DensityText",  value<&SW_Thing::_density>, "%.3g"},         with a number format of its own
//   {"Options",      shown<&SW_Thing::Options>},                  Get only: a member function or a lambda
//   {"DensityVis",   visible<&SW_Thing::HasDensity>},             Get only: "w" if it holds, else "-"
//   {"DeleteVis",    editable<&SW_Thing::HasParts>},              Get only: "w" if it holds, else "r"
//   {"Mesh",         pair<&SW_Thing::Mesh, &SW_Thing::SetMesh>},  a getter, and a setter that does more than store
//   {"Run",          command<&SW_Thing::Run>},                    Set only; Run takes the value or nothing
//   {"Trace",        shared<&SW_Thing::_trace>},                  a static variable
//   {"Save",         stampsItself(command<&SW_Thing::Save>)},     the operation stamps on its own, if it succeeds
//
// An attribute is looked up in the class's formula code, then in its rows, then in the same way in its base class.

#pragma once

#include "AK_Basic_Vec.h"
#include "AK_Object.h"

#include <cstddef>
#include <functional>
#include <type_traits>

// ----------------------------------------------------------------------------------------------------------------
// Values as texts. Higher layers add overloads of both for their own types (vectors, colours).
// ----------------------------------------------------------------------------------------------------------------

inline AK_String AK_ToText(int value, const char* format) { return AK_String(value, format ? format : "%d"); }
inline AK_String AK_ToText(float value, const char* format) { return AK_String(double(value), format ? format : "%g"); }
inline AK_String AK_ToText(double value, const char* format) { return AK_String(value, format ? format : "%.15g"); }
inline AK_String AK_ToText(const AK_Vec& value, const char*) { return AK_String(&value.x, 3); }
inline AK_String AK_ToText(const AK_Vec2& value, const char*) { return AK_String(&value.x, 2); }
inline AK_String AK_ToText(const AK_String& value, const char*) { return value; }
inline AK_String AK_ToText(const char* value, const char*) { return value; }

/// What is no number reads as 0; an int beyond its range takes the nearest end of it.
void AK_FromText(int& value, const AK_String& text);
void AK_FromText(float& value, const AK_String& text);
void AK_FromText(double& value, const AK_String& text);
/// Vectors are their components with blanks between; a text without all of them leaves the value as it is.
void AK_FromText(AK_Vec& value, const AK_String& text);
void AK_FromText(AK_Vec2& value, const AK_String& text);
inline void AK_FromText(AK_String& value, const AK_String& text) { value = text; }

// ----------------------------------------------------------------------------------------------------------------
// What the rows of a class T are made of
// ----------------------------------------------------------------------------------------------------------------

template <class T>
struct AK_RowsOf {
    template <auto getter>
    static AK_String GetWith(const AK_Object& object, const char* format)
    {
        return AK_ToText(std::invoke(getter, static_cast<const T&>(object)), format);
    }

    template <auto setter>
    static void SetWith(AK_Object& object, const AK_String& value)
    {
        T& self = static_cast<T&>(object);
        if constexpr (std::is_invocable_v<decltype(setter), T&, const AK_String&>)
            std::invoke(setter, self, value);
        else if constexpr (std::is_invocable_v<decltype(setter), T&, int>) {
            int number = 0;
            AK_FromText(number, value);
            std::invoke(setter, self, number);
        } else
            std::invoke(setter, self);
    }

    template <auto member>
    static void Store(AK_Object& object, const AK_String& value)
    {
        AK_FromText(static_cast<T&>(object).*member, value);
    }

    template <auto condition>
    static AK_String WritableOrHidden(const AK_Object& object, const char*)
    {
        return std::invoke(condition, static_cast<const T&>(object)) ? "w" : "-";
    }

    template <auto condition>
    static AK_String WritableOrReadOnly(const AK_Object& object, const char*)
    {
        return std::invoke(condition, static_cast<const T&>(object)) ? "w" : "r";
    }

    template <auto variable>
    static AK_String GetStatic(const AK_Object&, const char* format)
    {
        return AK_ToText(*variable, format);
    }
    template <auto variable>
    static void SetStatic(AK_Object&, const AK_String& text)
    {
        AK_FromText(*variable, text);
    }

    // The builders of the rows. `member` points to a data member of T, `variable` to a static one; the functions are
    // members of T or lambdas that take a T.
    template <auto member>
    static constexpr AK_Access value{&GetWith<member>, &Store<member>};
    template <auto variable>
    static constexpr AK_Access shared{&GetStatic<variable>, &SetStatic<variable>};
    template <auto getter>
    static constexpr AK_Access shown{&GetWith<getter>, nullptr};
    template <auto condition>
    static constexpr AK_Access visible{&WritableOrHidden<condition>, nullptr};
    template <auto condition>
    static constexpr AK_Access editable{&WritableOrReadOnly<condition>, nullptr};
    template <auto getter, auto setter>
    static constexpr AK_Access pair{&GetWith<getter>, &SetWith<setter>};
    template <auto setter>
    static constexpr AK_Access command{nullptr, &SetWith<setter>};
};

constexpr AK_Access stampsItself(AK_Access access)
{
    access.stampsItself = true;
    return access;
}

/// The name of a variable of an object, "$smooth", as a parameter of a template.
template <std::size_t n>
struct AK_VariableName {
    char text[n];

    constexpr AK_VariableName(const char (&name)[n])
    {
        for (std::size_t i = 0; i < n; ++i) text[i] = name[i];
    }
};

/// A variable that is an input of its class. With a row setting it counts as a change of the object, so that the next
/// save writes it.
template <AK_VariableName name>
constexpr AK_Access AK_Variable{[](const AK_Object& o, const char*) { return o.VariableValue(name.text); },
                                [](AK_Object& o, const AK_String& value) { o.SetVariableValue(name.text, value); }};

/// One that commands write: no change of the object.
template <AK_VariableName name>
constexpr AK_Access AK_ResultVariable = stampsItself(AK_Variable<name>);

// ----------------------------------------------------------------------------------------------------------------
// The template
// ----------------------------------------------------------------------------------------------------------------

/// Base of a class T of the tree that derives from Base. It brings the five per-class statics, their first-use
/// initialisation, and the overrides Attributes, Get, Set, Update, SetDefault and SaveClassVariables.
template <class T, class Base>
class AK_Class : public Base {
public:
    using Row = AK_Row;

    // A description without a base is that of a class that shows its own attributes only.
    static constexpr bool inheritsDescription = true;

    inline static const AK_Attribute* _attributes = nullptr;
    inline static Namespace* _qvt_sci_namespace = nullptr;
    inline static AK_List<AK_String> _classVariables{1};           // "status=...", then name=value
    inline static AK_List<AK_String> _initializationCommands{1};   // a marker, then commands
    inline static int _parameterSetsAppended = 0;
    inline static const bool _isRegistered = AK_Object::RegisterClass(T::className, Base::className);

    const AK_Attribute* Attributes() const override { return _attributes; }

    AK_String Get(const AK_String& attr) const override
    {
        AK_String result;
        if (this->qvt_sci_Get(_qvt_sci_namespace, attr, result)) return result;
        if (this->GetByRows(T::Rows(), attr, result)) return result;
        return Base::Get(attr);
    }

    int Set(const AK_String& attr, const AK_String& value) override
    {
        if (this->qvt_sci_Set(_qvt_sci_namespace, attr, value)) return 1;
        if (this->SetByRows(T::Rows(), attr, value)) return 1;
        return Base::Set(attr, value);
    }

    /// The formula function "Update" of this class, then what the base class does.
    void Update() override
    {
        const AK_Object::Call running(this);   // the code may delete the object
        if (this->_active) this->qvt_sci_Update(_qvt_sci_namespace);
        Base::Update();
    }

    int SetDefault(const AK_String& attr, const AK_String& value) const override
    {
        return AK_Object::SetClassDefault(T::className, attr, value);
    }

    int SaveClassVariables() const override
    {
        return AK_Object::WriteClassVariables(T::className, _classVariables) + Base::SaveClassVariables();
    }

protected:
    AK_Class(const AK_String& id, AK_Object* parent) : Base(id, parent) { static_cast<void>(_isRegistered); }

    /// Reads the class's files when this is its first object. No description is fatal.
    void ReadClassFiles()
    {
        if (!_attributes) {
            _attributes = CreateAttributes(T::className, T::inheritsDescription ? Base::_attributes : nullptr);
            _qvt_sci_namespace = this->Load_QVT_SCI_code(T::className);
            AK_Object::ReadClassVariables(T::className, _classVariables);
            AK_Object::ReadInitializationMacro(T::className, _initializationCommands);
            AK_ASSERT(_attributes);
        }
        if (!_parameterSetsAppended) {
            AK_Object::ParameterSetsAppend(T::className);
            _parameterSetsAppended = 1;
        }
    }

    void RunInitializationCommands()
    {
        this->FixComponents();
        this->RunCommandsOf(_initializationCommands, 1);
    }

    // The row builders of this class, under their plain names.
    template <auto member>
    static constexpr AK_Access value = AK_RowsOf<T>::template value<member>;
    template <auto variable>
    static constexpr AK_Access shared = AK_RowsOf<T>::template shared<variable>;
    template <auto getter>
    static constexpr AK_Access shown = AK_RowsOf<T>::template shown<getter>;
    template <auto condition>
    static constexpr AK_Access visible = AK_RowsOf<T>::template visible<condition>;
    template <auto condition>
    static constexpr AK_Access editable = AK_RowsOf<T>::template editable<condition>;
    template <auto getter, auto setter>
    static constexpr AK_Access pair = AK_RowsOf<T>::template pair<getter, setter>;
    template <auto setter>
    static constexpr AK_Access command = AK_RowsOf<T>::template command<setter>;
};
