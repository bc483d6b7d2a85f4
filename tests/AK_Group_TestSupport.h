// What tests of containers, groups and user objects share: the shipped descriptions and a container of things.

#pragma once

#include "AK_Group.h"
#include "AK_Object_TestSupport.h"

/// A container of TestThing.
class TestContainer : public AK_Container {
public:
    using AK_Container::AK_Container;

    AK_Object* CreateComponent(const AK_String& id, const AK_String& type) override
    {
        return type == "Thing" ? new TestThing(id, this) : nullptr;
    }
    TestThing* Add(const char* id)
    {
        auto* thing = new TestThing(id, this);
        AddComponent(thing);
        return thing;
    }
};

/// A tree with the descriptions that come with the program, but for that of AK_Object.
class GroupTest : public ObjectTest {
protected:
    GroupTest()
    {
        for (const char* name : {"AK_Container", "AK_Group", "AK_UserObj"})
            Describe(name, FileBytes(AK_String(KORVO_SOURCE_DIR "/files/AK_Attributes/") + name + ".atr"));
        Fresh<AK_Container, AK_Group, AK_UserObj>();
    }

    template <class T>
    static T* AddTo(AK_Object& parent, const char* id)
    {
        auto* object = new T(id, &parent);
        parent.AddComponent(object);
        return object;
    }
};

inline Lines ComponentIds(const AK_Object& object) { return Listed(object.AK_Object::Get("GetComponentList")); }
