// Resistance areas: attributes, files, container.

#include "SW_ResistanceArea.h"

#include <algorithm>
#include <cmath>

std::span<const AK_Row> SW_ResistanceArea::Rows()
{
    using S = SW_ResistanceArea;
    // clang-format off
    static constexpr Row rows[] = {
        {"Height",                   amount<S, &S::_height>},    // m
        {"Width",                    amount<S, &S::_width>},     // m
        {"Spacing",                  amountAboveZero<S, &S::_spacing>},   // m
        {"ResistanceCoefficient",    amount<S, &S::_resistanceCoefficient>},
        {"PsaWidth",                 amount<S, &S::_psaWidth>},
        {"PsaSpacing",               amountAboveZero<S, &S::_psaSpacing>},
        {"PsaResistanceCoefficient", amount<S, &S::_psaResistanceCoefficient>},
        {"Polygon",                  pair<[](const S& area) { return SW_PointsText(area); },
                                          [](S& area, const AK_String& text) { SW_SetPoints(area, text); }>},
    };
    // clang-format on
    return rows;
}

SW_ResistanceArea::SW_ResistanceArea(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

void SW_ResistanceArea::LoadFinalize() { SW_ProjectOntoSimulationMesh(*this); }

double SW_ResistanceArea::CheckSum() const
{
    return _height * _width * _spacing * _resistanceCoefficient * SW_Polygon::CheckSum();
}

bool SW_ResistanceArea::ReadFromResFile(AK_TextReader& reader)
{
    static constexpr double fewestObstacles = 1e-10;   // per m2
    double values[6];   // height, width, drag coefficient, obstacles per m2, flag, and one that nothing reads
    const int found = SW_ReadAreaHeader(reader, values, 6, 4);
    if (found == 0) return false;
    if (!(values[3] >= fewestObstacles)) {
        SW_WarnOfArea(reader, InLanguage("an area without obstacles", "ein Gebiet ohne Hindernisse"));
        return false;
    }
    if (ReadFromKORVO99Ascii(reader)) {
        SW_WarnOfArea(reader, InLanguage("the area is not complete and is left out",
                                         "das Gebiet ist unvollstaendig und entfaellt"));
        return false;
    }
    _height = std::max(values[0], 0.0);
    _width = std::max(values[1], 0.0);
    _resistanceCoefficient = std::max(values[2], 0.0);
    _spacing = 1 / std::sqrt(values[3]);
    const bool powderOnly = found >= 5 && std::trunc(values[4]) == 0;
    if (!powderOnly) return true;
    _psaWidth = _width;
    _psaResistanceCoefficient = _resistanceCoefficient;
    _psaSpacing = _spacing;
    _resistanceCoefficient = 0;
    return true;
}

// ----------------------------------------------------------------------------------------------------------------
// The container
// ----------------------------------------------------------------------------------------------------------------

std::span<const AK_Row> SW_ResistanceAreas::Rows()
{
    using S = SW_ResistanceAreas;
    // clang-format off
    static constexpr Row rows[] = {
        {"Create",        command<&S::Create>},
        {"Clone",         command<&S::Clone>},
        {"LinesOfType",   shown<&S::LinesOfType>},
        {"Import",        command<&S::Import>},
        {"LoadResFile",   command<&S::LoadResFile>},
        {"ProjectOnto",   command<&S::ProjectOnto>},
        {"MeshPathsList", shown<&S::MeshPathsList>},
    };
    // clang-format on
    return rows;
}

SW_ResistanceAreas::SW_ResistanceAreas(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

SW_Polyline* SW_ResistanceAreas::NewLine(const AK_String& id, AK_Object* parent) const
{
    return new SW_ResistanceArea(id, parent);
}

void SW_ResistanceAreas::Import(const AK_String& path)
{
    if (path.Extension() == "res")
        LoadResFile(path);
    else
        SW_ScenarioLines::Import(path);
}

void SW_ResistanceAreas::LoadResFile(const AK_String& path)
{
    LoadAreas(path, "res", [](SW_Polyline& area, AK_TextReader& reader) {
        return static_cast<SW_ResistanceArea&>(area).ReadFromResFile(reader);
    });
}
