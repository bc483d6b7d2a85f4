// The input is an attribute description: it is read, searched and offered to explanations and lists.

#include "AK_Object.h"

#include <cstdint>
#include <string>

namespace {

// An object that shows the description under test, and does nothing of what it may say.
class Described : public AK_Object {
public:
    explicit Described(const AK_Attribute* description) : AK_Object("x", nullptr), _description(description) {}
    const AK_Attribute* Attributes() const override { return _description; }
    int Set(const AK_String&, const AK_String&) override { return 1; }

private:
    const AK_Attribute* _description;
};

int Depth(const AK_Attribute* node)
{
    int depth = 0;
    for (const AK_Attribute* component : node->_components) depth = std::max(depth, Depth(component));
    return depth + 1;
}

void SearchAll(const AK_Attribute* root)
{
    AK_List<const AK_Attribute*> nodes(1);
    AK_List<AK_String> names(1);
    root->GetObjHierarchy(nodes);
    root->GetAttributesOfType("obj opr text", nodes);
    root->GetIdsOfTypeRec("text", names);
    root->GetSetCmds(names);
    for (const AK_String& name : names) {
        AK_ASSERT(name.IsEmpty() || root->SubAttribute(name));
        root->ObjectTypeOfSetCmd(name);
        root->AttributePathToCmd(name, "get");
        root->AttributePathToCmd(name, "text");
    }
    AK_ASSERT(root->NumAttributes() == 0);
}

void AskObject(const AK_Attribute* root)
{
    Described object(root);
    for (const char* kind : {"g", "s"}) {
        for (int options = 0; options < 4; ++options) object.AttributeNamesList(kind[0], options & 1, options & 2);
    }
    object.Label();
    for (const AK_Attribute* component : root->_components) {
        object.Label(component);
        AK_Object::DocText(component);
    }
    object.IsOfType("Object");
    AK_Object::_explainCommands = 1;
    object.ExecCommand("set(\"\", \"Active\", \"1\")", 0);
    object.AssignAttributesOf(&object, AK_List<AK_String>(1));
    AK_Object::_explainCommands = 0;
}

}   // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const AK_Attribute* base = nullptr;
    if (!base) {
        ak_msg_func = [](const char*, const char*) {};
        base = CreateAttributes("obj.Object\n\tbool.Active:Active\n\t\tset:Active\n", nullptr);
        AK_Object::_attributes = base;
        AK_Object::_parameterSetsAppended = 1;
        AK_Object::_language = "german";
    }
    // A text without a line end is fatal, and one that does not begin with "obj." names a file.
    const std::string text = "obj." + std::string(reinterpret_cast<const char*>(data), size);
    if (text.find('\n') >= text.find('\0')) return 0;
    const AK_Attribute* root = CreateAttributes(text.c_str(), base);
    AK_ASSERT(root && Depth(root) <= 1002);
    SearchAll(root);
    AskObject(root);
    DeleteAttributes(root, base);
    return 0;
}
