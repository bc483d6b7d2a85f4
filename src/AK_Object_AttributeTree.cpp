// Attribute descriptions: reading the text files, and the searches on the tree they become.
//
//   obj.Object                         level 0: the root, named after the type
//   	doc:An object of the tree. \      level 1; a backslash continues the line on the next, deeper one
//   		It has an id.
//   	text.Id:Id                        kind "text", name "Id", answered by Get("Id")
//   		set:Id                        level 2: written by Set("Id", ...)
//
// A node takes the lines of one tab more as its children; lines indented deeper than that belong to nobody and are
// passed over, and the first line of less ends it. The root of the base class's description hangs on as the last child
// of the root: that is all that inheritance of attributes is, and every search runs on through it.

#include "AK_Object.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

// Searches recurse once per level, so a file must not choose how deep: no class comes near this.
static constexpr int maxLevel = 1000;

// No description comes near this either; what a file holds beyond it is not read.
static constexpr int maxDescription = 16 << 20;

// ----------------------------------------------------------------------------------------------------------------
// Reading
// ----------------------------------------------------------------------------------------------------------------

namespace {

// One node's text on its way through the description: [begin, end) without its tabs and its last line end.
struct DescriptionLine {
    const char* begin;
    const char* end;
    int level;
};

}   // namespace

static int LeadingTabs(const char* s)
{
    int n = 0;
    while (s[n] == '\t') ++n;
    return n;
}

// Takes the next line with all lines that continue it; moves `s` behind it.
static DescriptionLine TakeLine(const char*& s)
{
    DescriptionLine line{s, s, LeadingTabs(s)};
    line.begin = s + line.level;
    for (;;) {
        const char* newline = std::strchr(s, '\n');
        line.end = newline ? newline : s + std::strlen(s);
        s = newline ? newline + 1 : line.end;
        const bool continued = line.end > line.begin && line.end[-1] == '\\';
        if (!continued || !*s || LeadingTabs(s) <= line.level) return line;
    }
}

// The indentation of continuation lines goes, whatever its depth; the backslashes and line ends stay.
static AK_String WithoutIndentation(const AK_String& text)
{
    AK_String result;
    result.Resize(text.Length() + 1);
    char* to = &result[0];
    bool indenting = false;
    for (const char* from = text.c_str(); *from; ++from) {
        indenting = (indenting && *from == '\t') || *from == '\n';
        if (*from != '\t' || !indenting) *to++ = *from;
    }
    *to = 0;
    return result;
}

static AK_Attribute* NewNode(const DescriptionLine& line)
{
    auto* node = new AK_Attribute;
    const auto* colon = static_cast<const char*>(std::memchr(line.begin, ':', size_t(line.end - line.begin)));
    node->_id = AK_String(line.begin, colon ? colon : line.end);
    if (colon) node->_cmd = WithoutIndentation(AK_String(colon + 1, line.end));
    return node;
}

// Warns of a description that ends before its text does: at a blank line, or at one that is not indented.
static void WarnOfEnd(const AK_String& name, const char* text, const char* end)
{
    if (!end[std::strspn(end, " \t\n")]) return;
    AK_MSG("WARNING:" << name << ", line " << 1 + std::count(text, end, '\n')
                      << ": the description ends here, at a line without indentation: what follows is not read");
}

static AK_Attribute* ParseDescription(const char* s, const AK_String& name)
{
    const char* const text = s;
    AK_Attribute* root = nullptr;
    AK_List<AK_Attribute*> open(1);   // the node of each level that later lines may hang on
    while (*s) {
        const DescriptionLine line = TakeLine(s);
        if (root && line.level == 0) {   // a second root
            WarnOfEnd(name, text, line.begin);
            break;
        }
        if (line.level > open.Size() || line.level > maxLevel || (!root && line.level > 0)) continue;
        AK_Attribute* node = NewNode(line);
        if (line.level == 0)
            root = node;
        else
            open[line.level - 1]->_components.Append(node);
        while (open.Size() > line.level) open.Remove(open.Size() - 1);
        open.Append(node);
    }
    return root;
}

static bool ReadDescription(const AK_String& path, AK_String& text)
{
    AK_TextReader reader(path);
    if (!reader.IsOpen()) {
        AK_MSG("cannot open attribute file " << path << "!");
        return false;
    }
    AK_List<char> bytes(int(std::min<long>(reader.Size() + 1, maxDescription)));
    for (int byte = reader.ReadByte(); byte >= 0 && bytes.Size() < maxDescription; byte = reader.ReadByte())
        if (byte != 0 && byte != '\r') bytes.Append(char(byte));
    text = AK_String(bytes.begin(), bytes.end());
    return true;
}

const AK_Attribute* CreateAttributes(const AK_String& name, const AK_Attribute* base)
{
    AK_String text = name;
    if (!name.StartsWith("obj.") && !ReadDescription(AK_Object::AttributeFile(name, "atr", nullptr), text))
        return nullptr;
    if (!std::strchr(text.c_str(), '\n')) {
        AK_MSG("ERROR:FATAL:invalid attribute string:" << text);
        std::abort();
    }
    AK_Attribute* root = ParseDescription(text.c_str(), name.StartsWith("obj.") ? AK_String("obj") : name + ".atr");
    if (root && base) root->_components.Append(base);
    return root;
}

void DeleteAttributes(const AK_Attribute* root, const AK_Attribute* base)
{
    if (!root || root == base) return;
    for (const AK_Attribute* component : root->_components) DeleteAttributes(component, base);
    delete root;
}

// ----------------------------------------------------------------------------------------------------------------
// Searches
// ----------------------------------------------------------------------------------------------------------------

AK_String AK_Attribute::Id(int i) const
{
    const char* begin = _id.c_str();
    for (; i > 0; --i) {
        begin = std::strchr(begin, '.');
        if (!begin) return "";
        ++begin;
    }
    const char* end = std::strchr(begin, '.');
    return end ? AK_String(begin, end) : AK_String(begin);
}

const AK_Attribute* AK_Attribute::Component(const char* id) const
{
    for (const AK_Attribute* component : _components)
        if (component->_id == id) return component;
    return nullptr;
}

AK_String AK_Attribute::SetCmd() const
{
    const AK_Attribute* set = Component("set");
    return set ? set->_cmd : AK_String();
}

// Depth-first, a node before its children: the first for which the test holds.
template <class Test>
static const AK_Attribute* FindFirst(const AK_Attribute* node, const Test& test)
{
    if (test(*node)) return node;
    for (const AK_Attribute* component : node->_components)
        if (const AK_Attribute* found = FindFirst(component, test)) return found;
    return nullptr;
}

static bool Sets(const AK_Attribute& node, const AK_String& cmd)
{
    const AK_Attribute* set = node.Component("set");
    return set && set->_cmd == cmd;
}

const AK_Attribute* AK_Attribute::Attribute(const AK_String& name) const
{
    return FindFirst(this, [&](const AK_Attribute& node) { return node.Id(1) == name; });
}

const AK_Attribute* AK_Attribute::AttributeOfSetCmd(const AK_String& cmd) const
{
    return FindFirst(this, [&](const AK_Attribute& node) { return Sets(node, cmd); });
}

const AK_Attribute* AK_Attribute::SubAttribute(const AK_String& cmd) const
{
    return FindFirst(this, [&](const AK_Attribute& node) { return node._cmd == cmd || Sets(node, cmd); });
}

void AK_Attribute::GetObjHierarchy(AK_List<const AK_Attribute*>& list) const
{
    for (const AK_Attribute* node = this; node && node->Id(0) == "obj";) {
        list.Append(node);
        node = node->_components.Size() ? node->_components[node->_components.Size() - 1] : nullptr;
    }
}

void AK_Attribute::GetAttributesOfType(const AK_String& text, AK_List<const AK_Attribute*>& list) const
{
    if (std::strstr(text.c_str(), Id(0).c_str())) list.Append(this);
    for (const AK_Attribute* component : _components) component->GetAttributesOfType(text, list);
}

void AK_Attribute::GetIdsOfTypeRec(const AK_String& kind, AK_List<AK_String>& list) const
{
    if (Id(1) == "Object") return;
    if (Id(0) == kind && !_cmd.IsEmpty()) list.Append(_cmd);
    for (const AK_Attribute* component : _components) component->GetIdsOfTypeRec(kind, list);
}

void AK_Attribute::GetSetCmds(AK_List<AK_String>& list) const
{
    if (Id(1) == "Object") return;
    if (const AK_Attribute* set = Component("set")) list.Append(set->_cmd);
    for (const AK_Attribute* component : _components) component->GetSetCmds(list);
}

static bool AnswersTo(const AK_Attribute& node, const AK_String& name, const AK_String& kind)
{
    return (kind == "get" && node._cmd == name) || (kind == "set" && Sets(node, name)) ||
           (node.Id(0) == kind && node.Id(1) == name);
}

static bool FindPath(const AK_Attribute* node, const AK_String& name, const AK_String& kind,
                     AK_List<const AK_Attribute*>& path)
{
    path.Append(node);
    if (AnswersTo(*node, name, kind)) return true;
    for (const AK_Attribute* component : node->_components)
        if (FindPath(component, name, kind, path)) return true;
    path.Remove(path.Size() - 1);
    return false;
}

AK_List<const AK_Attribute*> AK_Attribute::AttributePathToCmd(const AK_String& name, const AK_String& kind) const
{
    AK_List<const AK_Attribute*> path(1);
    FindPath(this, name, kind, path);
    return path;
}

AK_String AK_Attribute::ObjectTypeOfSetCmd(const AK_String& cmd) const
{
    const AK_List<const AK_Attribute*> path = AttributePathToCmd(cmd, "set");
    for (int i = path.Size() - 1; i >= 0; --i)
        if (path[i]->Id(0) == "obj") return path[i]->Id(1);
    return "";
}

const AK_String& AK_Attribute::InLanguage(const AK_String& language) const
{
    const AK_Attribute* translated = language == "default" ? nullptr : Component(language.c_str());
    return translated ? translated->_cmd : _cmd;
}

int AK_Attribute::NumAttributes() const
{
    int n = 0;
    for (const AK_Attribute* component : _components) n += component->NumAttributes();
    return n;
}

void AK_Attribute::Print(int level) const
{
    for (int i = 0; i < level; ++i) std::putchar('\t');
    std::printf("id:%s", _id.c_str());
    if (!_cmd.IsEmpty()) std::printf(" cmd:%s", _cmd.c_str());
    std::putchar('\n');
    for (const AK_Attribute* component : _components) component->Print(level + 1);
}
