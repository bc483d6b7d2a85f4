// Areas where snow lies ready: release areas, entrainment areas and secondary release areas.
//
// The depth of the snow is a number, or the height of a mesh that holds depths, or it comes from a formula file in the
// directory "release_depth" of the attribute files. Such a file defines
//
//   double depth(double p[], double n[])   m, normal to the slope, at a point p (m) with the unit normal n; n may be
//                                          left out
//   void init()                            called once, when the file has been loaded     (not needed)
//   void getpar(char text[])               writes the parameters as one text              (not needed)
//   void setpar(char text[])               takes them from such a text                    (not needed)

#pragma once

#include "SW_Polygon.h"
#include "SW_Simulation_Scenario.h"

/// A polygon with the depth, density and enthalpy of the snow in it. Type "ReleaseArea".
class SW_InitialCondition : public AK_Class<SW_InitialCondition, SW_Polygon> {
public:
    static constexpr const char* className = "SW_InitialCondition";
    static constexpr const char* type = "ReleaseArea";
    static std::span<const Row> Rows();

    SW_InitialCondition(const AK_String& id, AK_Object* parent);
    ~SW_InitialCondition() override;
    void LoadFinalize() override;

    /// Depth of the snow at a point of the terrain with its unit normal, m, measured normal to the slope. What a
    /// formula or a mesh gives as negative or as no number counts as 0, and so does a point off that mesh. While the
    /// formula or the mesh is missing, the constant depth counts. Main thread only.
    double Depth(const AK_Vec& point, const AK_Vec& normal) const;
    double Density() const { return _density; }     // kg/m3
    double Enthalpy() const { return _enthalpy; }   // J/kg, thermal
    double Mass() const { return _mass; }           // kg, as of the last update
    /// Inclination, area on the slope, mean depth over the cells inside, mass. The mean is taken on the mesh of the
    /// simulation, outside of simulations on the base mesh.
    void UpdateMass(const AK_String& ignored);
    /// The next area of a release file: a line with depth and density, the number of vertices, x and y of each. False
    /// at the end of the file, and where it stops being one.
    bool ReadFromRelFile(AK_TextReader& reader);
    /// Takes depth, density and temperature from what a file says about the area.
    void TakeKeys(const SW_KeysOfLine& keys);

private:
    bool HasConstantDepth() const { return _relDepFuncName == "const"; }
    bool HasParameters() const { return _depthFunction && _getpar && _setpar; }
    void SetDepth(const AK_String& text);
    void SetDensity(const AK_String& text);
    void SetRelDepFuncName(const AK_String& name);
    AK_String RelDepFuncPar() const;
    void SetRelDepFuncPar(const AK_String& text);
    AK_String RelDepFuncNameOpts() const;

    void ComputeMass();
    double MeanDepth(const SW_Mesh& mesh) const;
    void UnloadDepthFunction();
    void FindDepthMesh(const AK_String& name);
    void LoadFormula(const AK_String& name);
    bool TakeFunctions();
    double DepthByFormula(const AK_Vec& point, const AK_Vec& normal) const;
    double DepthOnMesh(const SW_Mesh& mesh, const AK_Vec& point) const;

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
    mutable int _lastDepthCell = 0;   // of that mesh: where the next search begins
};

class SW_InitialConditions : public AK_Class<SW_InitialConditions, SW_ScenarioLines> {
public:
    static constexpr const char* className = "SW_InitialConditions";
    static std::span<const Row> Rows();

    SW_InitialConditions(const AK_String& id, AK_Object* parent);
    /// Release files (rel), and files of lines.
    void Import(const AK_String& path);
    void LoadRelFile(const AK_String& path);

    /// What areas begin with that are made or read from now on, by the number as text; "" for the default of areas.
    void NewDepth(const AK_String& text) { SetNew(_newDepth, text); }       // m
    void NewDensity(const AK_String& text) { SetNew(_newDensity, text); }   // kg/m3

    SW_InitialCondition* Area(int i) const { return static_cast<SW_InitialCondition*>(_components[i]); }

protected:
    const char* LineType() const override { return SW_InitialCondition::type; }
    SW_Polyline* NewLine(const AK_String& id, AK_Object* parent) const override;
    void TakeKeys(SW_Polyline& line, const SW_KeysOfLine& keys) override;

private:
    static void SetNew(AK_String& value, const AK_String& text);

    AK_String _newDepth;
    AK_String _newDensity;
};
