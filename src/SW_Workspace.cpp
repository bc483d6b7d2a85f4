// The project: its containers and what it can create.

#include "SW_Workspace.h"

#include "AK_Colorbar.h"
#include "AK_Group.h"
#include "SW_InitialCondition.h"
#include "SW_Mesh_Container.h"
#include "SW_Polyline_Container.h"
#include "SW_Polyline_Labels.h"
#include "SW_Particles.h"
#include "SW_ResistanceArea.h"
#include "SW_Simulation_Container.h"
#include "SW_SourceLine.h"
#include "SW_WallLine.h"

// The lowest values of a field fade into the background of the view, as this share of the colour bar's range.
static constexpr float fadingRange = 0.05f;

// They are added without a parent in their constructors, which therefore cannot use it.
template <class Container>
void SW_Workspace::AddContainers(std::initializer_list<const char*> ids)
{
    for (const char* id : ids) AddComponent(new Container(id, nullptr));
}

SW_Workspace::SW_Workspace(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    AddContainers<SW_Meshes>({"DHMs", "ReleaseDHMs"});
    Component("ReleaseDHMs")->Set("AutoCreateSimulationMesh", "0");   // they hold depths: a user's default is for terrain
    AddContainers<SW_Polygons>({"Polygons"});
    AddContainers<SW_Polylines>({"Polylines"});
    AddContainers<SW_InitialConditions>({"ReleaseAreas", "EntrainmentAreas"});
    AddContainers<SW_ResistanceAreas>({"ResistanceAreas"});
    AddContainers<SW_WallLines>({"WallLines"});
    AddContainers<SW_SourceLines>({"SourceLines"});
    AddContainers<SW_Simulations>({"Simulations"});
    AddContainers<SW_Labels>({"Labels"});
    SW_Particles::RegisterInFormulaLanguage();
    AK_Colorbar::_minColorToBackgroundFadingRange = fadingRange;
    RunInitializationCommands();
}

std::span<const AK_Row> SW_Workspace::Rows()
{
    using W = SW_Workspace;
    static constexpr Row rows[] = {
        {"CreateGroup", command<&W::CreateGroup>},
        {"CreateUserObject", command<&W::CreateUserObject>},
        {"CreateSoftSphereSim2D", command<&W::CreateSoftSphereSim2D>},
    };
    return rows;
}

AK_Object* SW_Workspace::CreateComponent(const AK_String& id, const AK_String& type)
{
    if (type == "Group") return new AK_Group(id, this);
    return AK_UserObj::CreateFromDirectory(id, this, _directoryToLoad);
}

void SW_Workspace::CreateGroup(const AK_String& id) { AddComponent(new AK_Group(id, this)); }

void SW_Workspace::CreateUserObject(const AK_String& id) { AddComponent(new AK_UserObj(id, this)); }

void SW_Workspace::CreateSoftSphereSim2D() { _execStatus = "unknown component type 'SoftSphereSim2D'"; }
