// What the objects of a scenario share: release, entrainment and resistance areas, walls, source lines.
//
// They lie in containers of the project, where they are prepared, or in those of a simulation, which runs with them.
// What comes into a simulation, made, loaded, imported or cloned, is projected on the simulation's mesh unless it has a
// base mesh already; so the slope counts in the mass of an area without a further command.
//
// Main thread only.

#pragma once

#include "SW_Polyline.h"
#include "SW_Polyline_Container.h"

#include <functional>

/// The mesh of the simulation that an object lies in; null outside of simulations and while that has none.
SW_Mesh* SW_SimulationMesh(const AK_Object& object);
/// Projects a line without base mesh on that mesh, by its own command.
void SW_ProjectOntoSimulationMesh(SW_Polyline& line);

/// Takes a number that cannot be negative, or must be above 0; any other text is told in the status.
void SW_SetAmount(double& value, const AK_String& text, bool aboveZero = false);

template <class T, auto member, bool aboveZero = false>
void SW_StoreAmount(AK_Object& object, const AK_String& text)
{
    SW_SetAmount(static_cast<T&>(object).*member, text, aboveZero);
}

/// For the rows of a class T: a member that is such a number. {"Width", amount<T, &T::_width>}
template <class T, auto member>
inline constexpr AK_Access amount{&AK_RowsOf<T>::template GetWith<member>, &SW_StoreAmount<T, member>};
template <class T, auto member>
inline constexpr AK_Access amountAboveZero{&AK_RowsOf<T>::template GetWith<member>, &SW_StoreAmount<T, member, true>};

/// Base names of the formula files in a directory of the attribute files, of the user's and of the program's, each
/// followed by the list separator.
AK_String SW_FormulaNames(const char* directory);

/// The points of a line as one text, "x y z" each, followed by the list separator.
AK_String SW_PointsText(const SW_Polyline& line);
/// Replaces the points by those of such a text, where z may be missing, and projects them. A text that is none is told
/// in the status and changes nothing.
void SW_SetPoints(SW_Polyline& line, const AK_String& text);

/// Reads the numbers that a text begins with, at most n; what is not finite is none. Returns how many there are.
int SW_ScanNumbers(const char* text, double* numbers, int n);

/// Tells of what ends the reading of a release or resistance file.
void SW_WarnOfArea(const AK_TextReader& reader, const char* fault);
/// Reads the line before the vertices in a release or resistance file, empty lines before it passed over: at most n
/// numbers. Returns how many there are, 0 at the end of the file and, with a warning, if there are fewer than
/// `needed`.
int SW_ReadAreaHeader(AK_TextReader& reader, double* numbers, int n, int needed);

/// Values that a file gives a line beside its points: the extended data of a DXF file, or annotations.
class SW_KeysOfLine {
public:
    explicit SW_KeysOfLine(std::function<AK_String(const char*)> valueOf) : _valueOf(std::move(valueOf)) {}
    /// The value of a key; false, and nothing stored, if it is missing, "None" or no finite number.
    bool Number(const char* key, double& value) const;

private:
    std::function<AK_String(const char*)> _valueOf;
};

/// A container of scenario lines of one type, whose LoadFinalize projects them as above.
class SW_ScenarioLines : public SW_LineContainer {
public:
    AK_Object* CreateComponent(const AK_String& id, const AK_String& type) override;
    void Create(const AK_String& id);
    /// Adds a copy of a line of this container's type; its name is that of the source with "_cloned" behind.
    void Clone(const AK_String& path);
    /// Adds the lines of a file. With extended data in a DXF file, or with annotations, the names and values of the
    /// lines come from there.
    void Import(const AK_String& path);
    /// Adds a copy of each line of another container of this type, under its own name.
    void CopyLinesOf(const SW_ScenarioLines& source);
    /// Projects what has no base mesh on the mesh of the simulation.
    void ProjectOntoSimulationMesh();
    /// The lines of this type anywhere in the tree, as paths from here.
    AK_String LinesOfType() const { return SW_PathsOfType(*this, LineType()); }
    AK_String MeshPathsList() const { return SW_PathsOfType(*this, "DHM"); }

protected:
    using SW_LineContainer::SW_LineContainer;

    virtual const char* LineType() const = 0;
    /// Takes what a file says about an imported line, which stands and is projected.
    virtual void TakeKeys(SW_Polyline&, const SW_KeysOfLine&) {}
    void FinishImport(SW_Polyline& line, const AK_String& path) override;

    /// Adds the areas of a text file, which are named after it and numbered. `read` takes the next area and answers
    /// false at the end; areas without points are left out.
    void LoadAreas(const AK_String& path, const char* kind,
                   const std::function<bool(SW_Polyline&, AK_TextReader&)>& read);

private:
    void AddCopy(SW_Polyline& source, const AK_String& id);
    void Enter(SW_Polyline& line);

    std::unique_ptr<AK_DxfAttributes> _dxfAttributes;   // of the file that is imported
};
