// What tests of the avalanche need: a tree like that of a project, a mesh, a simulation on it, areas and particles.

#pragma once

#include "SW_InitialCondition.h"
#include "SW_Mesh_Container.h"
#include "SW_Mesh_TestSupport.h"
#include "SW_ResistanceArea.h"
#include "SW_Simulation.h"
#include "SW_Simulation_Container.h"
#include "SW_SourceLine.h"
#include "SW_WallLine.h"

/// A plane that falls towards +x by an angle in degrees, m; x is counted in the plan.
inline Height Incline(double degrees)
{
    const double slope = std::tan(degrees * M_PI / 180);
    return [=](double x, double) { return 1000 - slope * x; };
}

inline double Flat(double, double) { return 1000; }

/// Falls towards +x, steep above and flat below, between banks: a parabola across the flow.
inline double Chute(double x, double y) { return 1500 - 200 * (1 - std::exp(-x / 200)) + 0.002 * (y - 100) * (y - 100); }

/// A root "Viewer", its "Project" with the containers that a simulation looks at, and in "Simulations" the simulation
/// "avalanche". A test begins with OnMesh.
class SimulationTest : public TerrainTest {
protected:
    SimulationTest()
    {
        project = new AK_Object("Project", nullptr);
        root.AddComponent(project);
        meshes = AddedTo(*project, new SW_Meshes("DHMs", nullptr));
        releaseMeshes = AddedTo(*project, new SW_Meshes("ReleaseDHMs", nullptr));
        simulations = AddedTo(*project, new SW_Simulations("Simulations", nullptr));
        simulations->Set("CreateSimulation", "avalanche");
        sim = static_cast<SW_Simulation*>(simulations->Component("avalanche"));
    }

    template <class Object>
    static Object* AddedTo(AK_Object& parent, Object* object)
    {
        parent.AddComponent(object);
        return object;
    }

    /// Makes a regular mesh of nx by ny cells of size dx, from the origin or `corner` on, and gives it to the simulation.
    void OnMesh(int nx, int ny, double dx, const Height& z, const char* id = "terrain", AK_Vec2 corner = {0, 0})
    {
        OnMesh(CartesianMesh(nx, ny, dx, z, corner), id);
    }

    void OnMesh(std::unique_ptr<SW_Mesh> made, const char* id = "terrain")
    {
        mesh = AddedTo(*meshes, made.release());
        mesh->Set("Id", id);
        sim->Set("Mesh", mesh->Id());
    }

    static AK_Polyline Ring(std::initializer_list<AK_Vec> points)
    {
        AK_Polyline ring;
        for (const AK_Vec& p : points) ring._x.Append(p);
        return ring;
    }

    static AK_Polyline Rectangle(double x0, double y0, double x1, double y1)
    {
        return Ring({{x0, y0, 0}, {x0, y1, 0}, {x1, y1, 0}, {x1, y0, 0}});
    }

    /// A rectangle of snow, m and kg/m3, projected on the mesh.
    SW_InitialCondition& Snow(SW_InitialConditions& areas, const char* id, AK_Vec2 from, AK_Vec2 to, double depth,
                              double density = 200)
    {
        areas.Create(id);
        auto& area = *areas.Area(areas.NumComponents() - 1);
        area.SetLine(Rectangle(from.x, from.y, to.x, to.y));
        area.Set("Depth", AK_String(depth, "%.15g"));
        area.Set("Density", AK_String(density, "%.15g"));
        if (mesh) area.ProjectOnto(*mesh);
        area.Set("UpdateMass", "");
        return area;
    }

    SW_InitialCondition& Release(AK_Vec2 from, AK_Vec2 to, double depth, double density = 200)
    {
        return Snow(sim->ReleaseAreas(), "release", from, to, depth, density);
    }

    /// The n-th component of the simulation by its class.
    template <class Field = SW_ScalarField>
    Field& Part(const char* id)
    {
        return *static_cast<Field*>(sim->Component(id));
    }

    void Set(std::initializer_list<std::pair<const char*, const char*>> attributes)
    {
        for (const auto& [name, value] : attributes) EXPECT_EQ(sim->Set(name, value), 1) << name;
    }

    double Number(const char* attribute) const { return std::atof(sim->Get(attribute).c_str()); }
    std::string Text(const char* attribute) const { return sim->Get(attribute).c_str(); }

    /// Puts one particle on the surface and has the fields know it.
    int PlaceParticle(AK_Vec2 at, double mass, AK_Vec velocity = {0, 0, 0}, double enthalpy = 0)
    {
        SW_Particles& particles = sim->Particles();
        EXPECT_EQ(particles.AddParticle({at.x, at.y, 0}, float(mass), velocity, float(enthalpy), 0, -1), 1);
        sim->UpdateFields(0);
        return particles.NumParticles() - 1;
    }

    /// True if a message begins with the text; all messages are forgotten.
    bool Said(const std::string& text)
    {
        bool said = false;
        for (const std::string& message : Messages()) said = said || message.rfind(text, 0) == 0;
        return said;
    }

    AK_Object root{"Viewer", nullptr};
    AK_Object* project = nullptr;
    SW_Meshes* meshes = nullptr;
    SW_Meshes* releaseMeshes = nullptr;
    SW_Simulations* simulations = nullptr;
    SW_Mesh* mesh = nullptr;
    SW_Simulation* sim = nullptr;
};
