// Colour bar: the legend of a field. It holds the field's label, range of values, steps and unit, and maps a value to a
// colour; contour lines take their levels from its steps.
//
// The range and the steps that a user chose for a unit are remembered in class variables, and so across objects and
// runs: "scaling.m=0 5", "steps.m=0.5 1 2".
//
// The label names attribute and unit, "peak flow depth [m]" or, of a field that the simulation stores,
// "<simulation>:<attribute>:<unit>"; see Attribute() and Unit().
//
// Main thread only.

#pragma once

#include "AK_Text2d.h"

/// Type "Colorbar".
class AK_Colorbar : public AK_Class<AK_Colorbar, AK_VisObj2d> {
public:
    static constexpr const char* className = "AK_Colorbar";
    static std::span<const Row> Rows();

    AK_Colorbar(const AK_String& id, AK_Object* parent);
    ~AK_Colorbar() override;

    // ---- label
    const AK_String& Label() const { return _header.Text(); }
    void Label(const AK_String& label) { _header.Text(label); }
    /// The text between "[" and "]" of the label; without these what follows its last ":" (the one before, if the last
    /// begins ":vec."); else "".
    AK_String Unit() const;
    /// The text between the first blank and " [" of the label; else the piece between its last two ":"; else "".
    AK_String Attribute() const;
    /// The short form of the attribute for names of files and layers, "ppr" for "dynamic peak pressure"; "" for one
    /// that has none.
    AK_String AttributeShort() const;

    // ---- range and steps
    int Autoscale() const { return _autoscale; }
    double Min() const { return _min; }
    double Max() const { return _max; }
    /// Switching it off empties StepValues.
    void Autoscale(int on);
    /// Without autoscale the range is remembered for the unit.
    void Min(double value);
    void Max(double value);
    /// With autoscale, takes the range of the data over, unless it is none.
    void FollowData(const AK_String& min, const AK_String& max);
    void Segments(int n);   // 1 to maxSegments, others are refused with a status text
    /// With ArbitrarySteps they are remembered for the unit.
    void StepValues(const AK_String& values);

    /// Number of steps; Step(0) to Step(NumSteps()) are their limits. With ArbitrarySteps these are the minimum, the
    /// StepValues strictly between minimum and maximum in the order given, and the maximum; NumSteps() reads them anew.
    int NumSteps() const;
    double Step(int i) const;

    // ---- memory per unit. An empty unit is never remembered.
    /// 1 if the unit's range was known and has been read. For a unit not seen before, the values passed in become its
    /// range, and the result is 0.
    static int GetUnitScaling(const AK_String& unit, double& min, double& max);
    static void SetUnitScaling(const AK_String& unit, double min, double max);
    static int GetUnitSteps(const AK_String& unit, AK_String& steps);
    static void SetUnitSteps(const AK_String& unit, const AK_String& steps);

    // ---- colours (AK_Colorbar_Colors.cpp); r, g, b from 0 to 1
    /// Colour of v, which is limited to 0 to 1: from blue over green to red, or from light to dark with Greyscale; the
    /// lowest values fade into the viewer's background.
    static void GetValueColor(float v, float& r, float& g, float& b);
    /// Entry i of the colour table, which repeats; grey without a table.
    static void GetTableColor(int i, float& r, float& g, float& b);
    /// Draws on in the colour of a value, in the field's unit. Nothing if the bar is Transparent.
    void SetColor(double value, float alpha) const;
    /// Around the primitives that SetColor colours: they read the steps anew, and switch the bar's texture on and off.
    /// A texture is multiplied by white with the bar's opacity.
    void BeginColor() const;
    void EndColor() const;
    /// Reads a colour table by name; "none" for no table. One that cannot be used is reported.
    static void ColorTable(const AK_String& name);
    /// "none" and the names of the tables in the attribute directories, each followed by "%AK_SEP%".
    static AK_String ColorTableOptions();

    /// Takes over the range remembered for the unit, unless it follows the data or was set here; then draws bar and
    /// labels.
    void Update() override;

    static constexpr int maxSegments = 10000;
    static constexpr int maxSignificantDigits = 17;   // tell all doubles apart
    static AK_String _colorTable;                     // name, "none" without a table
    static AK_List<float> _tableColors;               // r, g, b triples
    static int _greyscale;
    static float _minColorToBackgroundFadingRange;   // share of the range, from its low end

protected:
    void Draw() override;

private:
    void SetBound(const AK_String& text, void (AK_Colorbar::*set)(double));
    void NumSignificantDigits(int n);
    float PositionInSteps(double value) const;

    // ---- picture (AK_Colorbar_Draw.cpp); lengths are shares of the picture
    AK_Floats<2> LowerLeftCorner(float lineHeight) const;
    AK_String NumberText(double value) const;
    void PlaceLabels();
    void DrawSteps(int n) const;
    void SetTableColor(int i) const;
    void DrawLines(int n) const;
    void DrawInterLabels(int n, const AK_BitmapFont* font, float y) const;
    void UpdateTexture();

    int _autoscale = 1;
    double _min = 0, _max = 1;    // in the field's unit
    bool _rangeIsFixed = false;   // by Min or Max: what other colour bars remember for the unit does not count
    int _segments = 10;
    int _arbitrarySteps = 0;
    AK_String _stepValues;               // blank-separated
    mutable AK_List<double> _steps{1};   // limits of the steps, as NumSteps() read them
    int _displayLabels = 1;
    int _displayInterLabels = 0;
    int _numSignificantDigits = 5;
    int _transparent = 0;
    int _discreteColors = 0;
    AK_String _font = "HELVETICA_12";
    AK_Floats<2> _size{0.3f, 0.02f};   // shares of the picture's width and height
    AK_String _horizontalAlignment = "right";
    AK_String _verticalAlignment = "bottom";
    unsigned _barTexture = 0;                  // name of the table's one-dimensional texture, 0 for none
    float _textureScale = 0;                   // texture coordinate of the upper end of the bar
    AK_List<unsigned char> _texPixels{1};      // r, g, b
    AK_Text2d _header, _minLabel, _maxLabel;   // parts of this object, not of the tree
};
