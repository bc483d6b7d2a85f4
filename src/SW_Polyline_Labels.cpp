// The container of text labels.

#include "SW_Polyline_Labels.h"

#include "AK_Text2d.h"

std::span<const AK_Row> SW_Labels::Rows()
{
    static constexpr Row rows[] = {{"Create", command<&SW_Labels::Create>}};
    return rows;
}

SW_Labels::SW_Labels(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

AK_Object* SW_Labels::CreateComponent(const AK_String& id, const AK_String& type)
{
    return type == "Text2d" ? new AK_Text2d(id, this) : nullptr;
}

void SW_Labels::Create(const AK_String& id) { AddComponent(new AK_Text2d(id, this)); }
