// Areas with obstacles that brake the flow: forest, buildings, rows of mounds.

#pragma once

#include "SW_Polygon.h"
#include "SW_Simulation_Scenario.h"

/// A polygon with obstacles at equal distances. Type "ResistanceArea".
class SW_ResistanceArea : public AK_Class<SW_ResistanceArea, SW_Polygon> {
public:
    static constexpr const char* className = "SW_ResistanceArea";
    static constexpr const char* type = "ResistanceArea";
    static std::span<const Row> Rows();

    SW_ResistanceArea(const AK_String& id, AK_Object* parent);
    void LoadFinalize() override;

    double Height() const { return _height; }     // m
    double Width() const { return _width; }       // m, of one obstacle
    double Spacing() const { return _spacing; }   // m, between obstacles
    double ResistanceCoefficient() const { return _resistanceCoefficient; }
    /// A cheap test of whether area or obstacles have changed.
    double CheckSum() const;
    /// The next area of a resistance file: a line with height and width of the obstacles, drag coefficient, obstacles
    /// per m2, a flag and a number that means nothing here; then the number of vertices, x and y of each. A flag of 0
    /// leaves the area to the powder part alone. False at the end of the file, and where it stops being one.
    bool ReadFromResFile(AK_TextReader& reader);

private:
    double _height = 1;    // m
    double _width = 1;     // m
    double _spacing = 1;   // m
    double _resistanceCoefficient = 1;
    double _psaWidth = 1;   // the same for the powder part
    double _psaSpacing = 1;
    double _psaResistanceCoefficient = 0;
};

class SW_ResistanceAreas : public AK_Class<SW_ResistanceAreas, SW_ScenarioLines> {
public:
    static constexpr const char* className = "SW_ResistanceAreas";
    static std::span<const Row> Rows();

    SW_ResistanceAreas(const AK_String& id, AK_Object* parent);
    /// Resistance files (res), and files of lines.
    void Import(const AK_String& path);
    void LoadResFile(const AK_String& path);

    SW_ResistanceArea* Area(int i) const { return static_cast<SW_ResistanceArea*>(_components[i]); }

protected:
    const char* LineType() const override { return SW_ResistanceArea::type; }
    SW_Polyline* NewLine(const AK_String& id, AK_Object* parent) const override;
};
