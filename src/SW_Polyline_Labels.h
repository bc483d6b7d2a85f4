// The container of text labels, which lie over the picture beside the lines.

#pragma once

#include "AK_Group.h"

/// Labels, AK_Text2d each.
class SW_Labels : public AK_Class<SW_Labels, AK_Container> {
public:
    static constexpr const char* className = "SW_Labels";
    static std::span<const Row> Rows();

    SW_Labels(const AK_String& id, AK_Object* parent);
    AK_Object* CreateComponent(const AK_String& id, const AK_String& type) override;
    virtual void Create(const AK_String& id);
};
