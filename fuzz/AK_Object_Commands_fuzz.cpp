// Each line of the input is a command on a small tree: parsing, paths, broadcasts, variables, parameter sets,
// explanation, and objects that are made, renamed, detached and deleted in any order. Nothing of it touches a file:
// the attributes that would are unknown to the objects of this tree.

#include "AK_Object.h"
#include "AK_Object_Class.h"

#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>

namespace {

std::set<AK_Object*> alive;

class Thing : public AK_Class<Thing, AK_Object> {
public:
    static constexpr const char* className = "Thing";
    static std::span<const Row> Rows()
    {
        // clang-format off
        static constexpr Row rows[] = {
            {"Number",   value<&Thing::_number>},
            {"Text",     value<&Thing::_text>},
            {"Fail",     command<[](Thing&, const AK_String& why) { _execStatus = why; }>},
            {"DeleteMe", command<[](Thing& t) { if (t._parent) t._parent->DeleteComponent(t._id); }>},
            {"Refer",    command<&Thing::Refer>},
        };
        // clang-format on
        return rows;
    }

    Thing(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
    {
        ReadClassFiles();
        _factory = [](const AK_String& newId) -> AK_Object* {
            return alive.size() < 100 ? new Thing(newId, nullptr) : nullptr;
        };
        alive.insert(this);
    }
    ~Thing() override { alive.erase(this); }

    int Set(const AK_String& attr, const AK_String& value) override
    {
        for (const char* name :
             {"ProjectDir", "SaveAs", "Save", "Load", "SaveProject", "SaveProjectAs", "LoadProject", "SaveAttributes",
              "SaveAttributesRecursively", "RemoveFromDisc", "ExecMacro", "StartInBackground", "SetDefault",
              "SaveClassVariables", "SaveClassVariablesRec", "List_QVT_SCI_predefined"})
            if (attr == name) return 0;
        if (attr.EndsWith(".macro") || (attr == "AddNewComponent" && alive.size() >= 100)) return 0;
        return AK_Class::Set(attr, value);
    }

private:
    void Refer(const AK_String& path)
    {
        if (AK_Object* object = ObjectById(path)) AppendComponent(object);
    }

    int _number = 0;
    AK_String _text;
};

void DefineParameterSet(const char* name, std::initializer_list<const char*> pairs)
{
    AK_ParameterSet set;
    set._name = name;
    for (const char* const* pair = pairs.begin(); pair != pairs.end(); pair += 2) {
        set._attributes.Append(pair[0]);
        set._values.Append(pair[1]);
    }
    AK_Object::_parsets.Append(set);
}

void DefineClasses()
{
    ak_msg_func = [](const char*, const char*) {};
    AK_Object::_attributes =
        CreateAttributes("obj.Object\n\ttext.Id:Id\n\t\tset:Id\n\tbool.Active:Active\n\t\tset:Active\n", nullptr);
    Thing::_attributes = CreateAttributes("obj.Thing\n\tint.Number:Number\n\t\tset:Number\n\t\toptions:Id\n"
                                          "\ttext.Text:Text\n\t\tset:Text\n\topr.x\n\t\tapply.Fail\n\t\t\tset:Fail\n",
                                          AK_Object::_attributes);
    AK_Object::_parameterSetsAppended = Thing::_parameterSetsAppended = 1;
    DefineParameterSet("a", {"Number", "1", "ParameterSet", "b"});
    DefineParameterSet("b", {"Text", "x", "x:ParameterSet", "a"});
    DefineParameterSet("c", {"..:DeleteMe", "", "Number", "2", "Thing::ParameterSet", "c"});
}

// Owned components know their parent, references lead to live objects, nothing is listed twice.
void Check(const AK_Object* object)
{
    AK_ASSERT(alive.count(const_cast<AK_Object*>(object)));
    for (int i = 0; i < object->NumComponents(); ++i) {
        AK_Object* component = object->ComponentAt(i);
        AK_ASSERT(alive.count(component));
        for (int j = 0; j < i; ++j) AK_ASSERT(object->ComponentAt(j) != component);
        if (object->Owns(i)) Check(component);
    }
}

}   // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (!AK_Object::_attributes) DefineClasses();
    AK_Object::_execStatus = "";
    AK_Object::_language = "default";
    AK_Object::_lang = AK_Object::_explainCommands = AK_Object::_reportCommands = 0;

    auto* root = new Thing("Viewer", nullptr);
    for (const char* id : {"x", "y", "z"}) {
        auto* component = new Thing(id, root);
        root->AddComponent(component);
        component->AddComponent(new Thing("part", component));
    }
    const std::string text(reinterpret_cast<const char*>(data), size);
    for (size_t begin = 0, lines = 0; begin < text.size() && lines < 200; ++lines) {
        const size_t end = std::min(text.find('\n', begin), text.size());
        root->ExecCommand(AK_String(text.substr(begin, end - begin).c_str()), 0);
        begin = end + 1;
        Check(root);
    }

    // What is written is read back, as long as nothing in it is an escape or a variable by itself.
    std::string value;
    for (const char c : text)
        if (c && c != '%' && c != '\\' && c != '$') value += c;
    AK_String cmd, object, attr, read;
    const AK_String line = AK_Object::CommandString("x", "Text", value.c_str());
    AK_ASSERT(root->ParseCommandString(line, cmd, object, attr, read) == 0);
    AK_ASSERT(read == value.c_str());

    delete root;
    while (!alive.empty()) delete (*alive.begin())->Root();   // what was detached
    return 0;
}
