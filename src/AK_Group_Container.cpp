// Containers: objects that own a variable number of like components, in memory or only on disc.

#include "AK_Group.h"

std::span<const AK_Row> AK_Container::Rows()
{
    using C = AK_Container;
    // clang-format off
    static constexpr Row rows[] = {
        {"DeleteObject",           command<&C::DeleteComponent>},
        {"DeleteAll",              command<&C::DeleteAll>},
        {"LoadComponent",          command<&C::LoadComponent>},
        {"UnloadComponent",        command<&C::UnloadComponent>},
        {"DeleteVisibility",       editable<&C::NumComponents>},
        {"UnloadedComponentsList", shown<&C::UnloadedComponentsList>},
    };
    // clang-format on
    return rows;
}

AK_Container::AK_Container(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

void AK_Container::DeleteAll()
{
    while (NumComponents() > 0) {
        const int last = NumComponents() - 1;
        if (Owns(last)) {
            ComponentAt(last)->RemoveFromDisc();
            FreeComponent(last);
        } else
            RemoveEntry(last);
    }
}

void AK_Container::LoadComponent(const AK_String& id)
{
    if (id.IsEmpty() || _projectDir.IsEmpty()) return;
    if (AK_Object* component = Component(id))
        component->LoadProject(_projectDir + "/" + id);
    else
        LoadedComponent(id);
}

void AK_Container::UnloadComponent(const AK_String& id)
{
    AK_MSG("unloading " << id);
    for (int i = 0; i < NumComponents(); ++i) {
        if (!(ComponentAt(i)->Id() == id)) continue;
        Unload(i);
        return;
    }
}

void AK_Container::Unload(int index)
{
    if (Owns(index))
        FreeComponent(index);
    else
        RemoveEntry(index);   // what is owned elsewhere stays there
}

AK_String AK_Container::UnloadedComponentsList() const
{
    AK_List<AK_String> ids(1);
    for (const AK_String& entry : AK_System::FilesList(_projectDir, ""))
        if (entry.Extension().IsEmpty() && !Component(entry)) ids.Append(entry);
    return AK_String(ids, ak_sep);
}

void AK_Container::UnloadAllContainers(const AK_String&)
{
    AK_MSG("unloading container " << IdAbs());
    while (NumComponents() > 0) {
        AK_MSG("unloading " << ComponentAt(NumComponents() - 1)->Id());
        Unload(NumComponents() - 1);
    }
}
