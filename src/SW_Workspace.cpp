#include "SW_Workspace.h"

#include "AK_Group.h"

// In the order of the tree. They are added without a parent in their constructors, which therefore cannot use it.
static constexpr const char* containers[] = {
    "DHMs",      "ReleaseDHMs", "Polygons",    "Polylines", "ReleaseAreas", "EntrainmentAreas", "ResistanceAreas",
    "WallLines", "SourceLines", "Simulations", "Labels",
};

SW_Workspace::SW_Workspace(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    for (const char* container : containers) AddComponent(new AK_Container(container, nullptr));
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
