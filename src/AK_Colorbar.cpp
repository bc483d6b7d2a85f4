// Colour bar: attributes, the parts of the label, steps, and the memory per unit.

#include "AK_Colorbar.h"

#include "AK_sogl.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

AK_Colorbar::AK_Colorbar(const AK_String& id, AK_Object* parent)
    : AK_Class(id, parent),
      _header(_id + "_header", this),
      _minLabel(_id + "_min_label", this),
      _maxLabel(_id + "_max_label", this)
{
    ReadClassFiles();
    _autoColored = 1;   // lines and labels readable on any background
    RunInitializationCommands();
}

AK_Colorbar::~AK_Colorbar()
{
    if (_barTexture) aglDeleteTextures(1, &_barTexture);
}

std::span<const AK_Colorbar::Row> AK_Colorbar::Rows()
{
    using C = AK_Colorbar;
    using Text = const AK_String&;
    // clang-format off
    static constexpr Row rows[] = {
        {"Autoscale",            pair<[](const C& c) { return c._autoscale; }, [](C& c, int on) { c.Autoscale(on); }>},
        {"Min",                  pair<[](const C& c) { return c._min; }, [](C& c, Text t) { c.SetBound(t, &C::Min); }>},
        {"Max",                  pair<[](const C& c) { return c._max; }, [](C& c, Text t) { c.SetBound(t, &C::Max); }>},
        {"MinMaxVis",            editable<[](const C& c) { return !c._autoscale; }>},
        {"Segments",             pair<[](const C& c) { return c._segments; }, [](C& c, int n) { c.Segments(n); }>},
        {"ArbitrarySteps",       value<&C::_arbitrarySteps>},
        {"ArbitraryStepsVis",    editable<[](const C& c) { return !c._autoscale; }>},
        {"StepValues",           pair<[](const C& c) { return c._stepValues; }, [](C& c, Text t) { c.StepValues(t); }>},
        {"StepValuesVis",        editable<[](const C& c) { return !c._autoscale && c._arbitrarySteps; }>},
        {"DisplayLabels",        value<&C::_displayLabels>},
        {"DisplayInterLabels",   value<&C::_displayInterLabels>},
        {"NumSignificantDigits", pair<[](const C& c) { return c._numSignificantDigits; },
                                      [](C& c, int n) { c.NumSignificantDigits(n); }>},
        {"Font",                 value<&C::_font>},
        {"FontList",             shown<[](const C&) { return AK_Text2d::FontList(); }>},
        {"Size",                 finiteValue<C, &C::_size>},
        {"HorizontalAlignment",  value<&C::_horizontalAlignment>},
        {"VerticalAlignment",    value<&C::_verticalAlignment>},
        {"MinColorToBackgroundFadingRange", shared<&C::_minColorToBackgroundFadingRange>},
        {"Transparent",          value<&C::_transparent>},
        {"DiscreteColors",       value<&C::_discreteColors>},
        {"Greyscale",            shared<&C::_greyscale>},
        {"GreyscaleVis",         visible<[](const C&) { return _colorTable == "none"; }>},
        {"ColorTable",           pair<[](const C&) { return _colorTable; }, [](C&, Text name) { ColorTable(name); }>},
        {"ColorTableVis",        visible<[](const C& c) { return c._discreteColors; }>},
        {"ColorTableOptions",    shown<[](const C&) { return ColorTableOptions(); }>},
        {"Label",                shown<[](const C& c) { return c.Label(); }>},
        {"Unit",                 shown<&C::Unit>},
        {"Attribute",            shown<&C::Attribute>},
        {"AttributeShort",       shown<&C::AttributeShort>},
        {"HorizontalAlignmentOpts", shown<[](const C&) { return "left%AK_SEP%center%AK_SEP%right"; }>},
        {"VerticalAlignmentOpts",   shown<[](const C&) { return "top%AK_SEP%bottom"; }>},
    };
    // clang-format on
    return rows;
}

// ----------------------------------------------------------------------------------------------------------------
// The label
// ----------------------------------------------------------------------------------------------------------------

// Where the last ":" of a label stands, and the one that separates the unit from what precedes it; null for none.
struct Colons {
    const char* last;
    const char* ofUnit;   // the last one, or the one before ":vec."; null for none
    bool isVector;
};

static const char* LastColonIn(const char* begin, const char* end)
{
    while (end != begin)
        if (*--end == ':') return end;
    return nullptr;
}

static Colons FindColons(const char* label)
{
    const char* last = std::strrchr(label, ':');
    const bool isVector = last && std::strncmp(last, ":vec.", 5) == 0;
    return {last, isVector ? LastColonIn(label, last) : last, isVector};
}

AK_String AK_Colorbar::Unit() const
{
    const char* label = Label().c_str();
    const char* open = std::strchr(label, '[');
    const char* close = std::strchr(label, ']');
    if (open && close && open < close) return AK_String(open + 1, close);

    const Colons colons = FindColons(label);
    if (!colons.last) return "";
    const char* begin = colons.ofUnit ? colons.ofUnit + 1 : label;
    const char* end = colons.isVector ? colons.last : begin + std::strcspn(begin, " ");
    return AK_String(begin, end);
}

AK_String AK_Colorbar::Attribute() const
{
    const char* label = Label().c_str();
    if (const char* blank = std::strchr(label, ' '))
        if (const char* bracket = std::strstr(blank, " ["))
            return bracket == blank ? AK_String() : AK_String(blank + 1, bracket);

    const Colons colons = FindColons(label);
    if (!colons.ofUnit) return "";
    const char* before = LastColonIn(label, colons.ofUnit);
    return AK_String(before ? before + 1 : label, colons.ofUnit);
}

AK_String AK_Colorbar::AttributeShort() const
{
    static constexpr const char* shortForms[][2] = {
        {"flow depth", "fd"},
        {"velocity", "v"},
        {"dynamic peak pressure", "ppr"},
        {"bottom pressure", "bp"},
        {"peak flow depth", "pfd"},
        {"peak force per width", "pfw"},
        {"peak torque per width", "ptw"},
        {"front arrival time", "fat"},
        {"entrainment mass", "em"},
        {"entrainment enthalpy", "ee"},
    };
    const AK_String attribute = Attribute();
    for (const auto& [name, shortForm] : shortForms)
        if (attribute == name) return shortForm;
    return "";
}

// ----------------------------------------------------------------------------------------------------------------
// Range and steps
// ----------------------------------------------------------------------------------------------------------------

void AK_Colorbar::Autoscale(int on)
{
    _autoscale = on;
    if (on)
        _rangeIsFixed = false;
    else
        _stepValues = "";
}

// Text that gives no number is refused with a status.
void AK_Colorbar::SetBound(const AK_String& text, void (AK_Colorbar::*set)(double))
{
    double value = 0;
    if (!AK_ReadFinite(text, &value, 1)) return;
    (this->*set)(value);
    _rangeIsFixed = true;
}

void AK_Colorbar::FollowData(const AK_String& min, const AK_String& max)
{
    const auto isNumber = [](const AK_String& text) { return std::isfinite(std::strtod(text.c_str(), nullptr)); };
    if (!_autoscale || !isNumber(min) || !isNumber(max)) return;
    Set("Min", min);
    Set("Max", max);
    _rangeIsFixed = false;
}

void AK_Colorbar::Min(double value)
{
    _min = value;
    if (!_autoscale) SetUnitScaling(Unit(), _min, _max);
}

void AK_Colorbar::Max(double value)
{
    _max = value;
    if (!_autoscale) SetUnitScaling(Unit(), _min, _max);
}

void AK_Colorbar::Segments(int n)
{
    if (n < 1 || n > maxSegments)
        _execStatus = AK_String("the number of segments must be from 1 to ") + AK_String(maxSegments, "%d");
    else
        _segments = n;
}

void AK_Colorbar::NumSignificantDigits(int n)
{
    if (n < 1 || n > maxSignificantDigits)
        _execStatus =
            AK_String("the number of significant digits must be from 1 to ") + AK_String(maxSignificantDigits, "%d");
    else
        _numSignificantDigits = n;
}

void AK_Colorbar::StepValues(const AK_String& values)
{
    _stepValues = values;
    if (_arbitrarySteps) SetUnitSteps(Unit(), values);
}

int AK_Colorbar::NumSteps() const
{
    if (!_arbitrarySteps) return _segments;
    _steps.Clear();
    _steps.Append(_min);
    AK_List<AK_String> words(1);
    _stepValues.Split(' ', words);
    for (const AK_String& word : words) {
        double value;
        if (std::sscanf(word.c_str(), "%lf", &value) == 1 && value > _min && value < _max) _steps.Append(value);
    }
    _steps.Append(_max);
    return _steps.Size() - 1;
}

double AK_Colorbar::Step(int i) const
{
    if (!_arbitrarySteps) return _min + (_max - _min) * i / _segments;
    if (i >= _steps.Size()) NumSteps();
    return i < _steps.Size() ? _steps[i] : _max;
}

// ----------------------------------------------------------------------------------------------------------------
// Memory per unit
// ----------------------------------------------------------------------------------------------------------------

// The marker in front tells that there is something to write again.
static void Remember(AK_List<AK_String>& variables, const char* what, const AK_String& unit, const AK_String& value)
{
    AK_Object::ClassVariable(variables, AK_String(what) + unit, value);
    variables[0] = "status=read";
}

int AK_Colorbar::GetUnitScaling(const AK_String& unit, double& min, double& max)
{
    if (unit.IsEmpty()) return 0;
    const char* known = ClassVariable(_classVariables, AK_String("scaling.") + unit);
    if (!known) {
        SetUnitScaling(unit, min, max);
        return 0;
    }
    return std::sscanf(known, "%lf %lf", &min, &max) == 2;
}

void AK_Colorbar::SetUnitScaling(const AK_String& unit, double min, double max)
{
    if (unit.IsEmpty()) return;
    const double range[2] = {min, max};
    Remember(_classVariables, "scaling.", unit, AK_String(range, 2));
}

int AK_Colorbar::GetUnitSteps(const AK_String& unit, AK_String& steps)
{
    if (unit.IsEmpty()) return 0;
    const char* known = ClassVariable(_classVariables, AK_String("steps.") + unit);
    if (!known) {
        SetUnitSteps(unit, steps);
        return 0;
    }
    steps = known;
    return 1;
}

void AK_Colorbar::SetUnitSteps(const AK_String& unit, const AK_String& steps)
{
    if (!unit.IsEmpty()) Remember(_classVariables, "steps.", unit, steps);
}
