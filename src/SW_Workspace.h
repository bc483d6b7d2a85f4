// The workspace: the project of the program, the one component of the root. Its fixed components are the containers in
// which everything else is made; macros rely on their ids.

#pragma once

#include "AK_Object.h"
#include "AK_Object_Class.h"

#include <initializer_list>

class SW_Workspace : public AK_Class<SW_Workspace, AK_Object> {
public:
    static constexpr const char* className = "SW_Workspace";
    static std::span<const Row> Rows();

    SW_Workspace(const AK_String& id, AK_Object* parent);

    /// Groups and user objects; null for any other type.
    AK_Object* CreateComponent(const AK_String& id, const AK_String& type) override;

    // Each adds a component; an empty id becomes the type and a number.
    void CreateGroup(const AK_String& id);
    void CreateUserObject(const AK_String& id);
    /// Always fails with a status: the program has no component of that type.
    void CreateSoftSphereSim2D();

private:
    template <class Container>
    void AddContainers(std::initializer_list<const char*> ids);
};
