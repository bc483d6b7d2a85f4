// Areas where snow lies ready: release areas, entrainment areas and secondary release areas.

#pragma once

#include "SW_Polygon.h"
#include "SW_Polyline_Container.h"

/// A polygon with the depth, density and enthalpy of the snow in it. Type "ReleaseArea".
class SW_InitialCondition : public AK_Class<SW_InitialCondition, SW_Polygon> {
public:
    static constexpr const char* className = "SW_InitialCondition";
    static std::span<const Row> Rows();

    SW_InitialCondition(const AK_String& id, AK_Object* parent);
    ~SW_InitialCondition() override;

    /// Depth of the snow at a point of the terrain with its unit normal, m, measured normal to the slope: constant,
    /// from a mesh of the container "ReleaseDHMs", or from a formula file. Main thread only.
    double Depth(const AK_Vec& point, const AK_Vec& normal) const;
    double Density() const { return _density; }     // kg/m3
    double Enthalpy() const { return _enthalpy; }   // J/kg, thermal
    double Mass() const { return _mass; }           // kg, as of the last update
    /// Inclination, area, mean depth over the cells of the simulation's mesh, mass.
    void UpdateMass(const AK_String& ignored);
    /// The next area of a release file; false at its end.
    bool ReadFromRelFile(AK_TextReader& reader);

private:
    double _depth = 1.0;         // m
    double _density = 125;       // kg/m3
    double _enthalpy = -20500;   // J/kg
    double _mass = 0;            // kg
    AK_String _relDepFuncName = "const";
    AK_String _relDepFuncPar;
    Namespace* _relDepFuncNamespace = nullptr;   // owned
    Symbol* _depthFunction = nullptr;
    Symbol* _init = nullptr;
    Symbol* _getpar = nullptr;
    Symbol* _setpar = nullptr;
    SW_MeshReference _depthMesh;
    mutable int _lastDepthCell = -1;
};

class SW_InitialConditions : public AK_Class<SW_InitialConditions, SW_LineContainer> {
public:
    static constexpr const char* className = "SW_InitialConditions";
    static std::span<const Row> Rows();

    SW_InitialConditions(const AK_String& id, AK_Object* parent);
    AK_Object* CreateComponent(const AK_String& id, const AK_String& type) override;
    void Create(const AK_String& id);
    void Clone(const AK_String& id);
    void Import(const AK_String& path);
    void LoadRelFile(const AK_String& path);

    SW_InitialCondition* Area(int i) const { return static_cast<SW_InitialCondition*>(_components[i]); }

protected:
    SW_Polyline* NewLine(const AK_String& id, AK_Object* parent) const override;
};
