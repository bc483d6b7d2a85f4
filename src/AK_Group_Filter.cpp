// The filter of a group. There is no formula language yet: no text compiles, so a group has no filter.

#include "AK_Group.h"

void AK_Group::Filter(const AK_String&) {}

void AK_Group::AppendAllObjectsOfType()
{
    for (AK_Object* object : ObjectsOfSelectedType()) Append(object);
    UpdateAttributes();
}

AK_String AK_Group::GetObjectsOfTypeList() const
{
    AK_List<AK_String> paths(1);
    for (const AK_Object* object : ObjectsOfSelectedType()) paths.Append(object->IdAbs());
    return AK_String(paths, ak_sep);
}
