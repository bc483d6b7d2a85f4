// Attribute descriptions: what a text becomes, what the searches find, and texts that are cut, bent or made to hurt.

#include "AK_Object_TestSupport.h"

namespace {

// A description's nodes as "level id=cmd" lines, a cmd only where there is one.
void Dump(const AK_Attribute* node, int level, Lines& lines)
{
    lines.push_back(std::to_string(level) + " " + Text(node->_id) +
                    (node->_cmd.IsEmpty() ? "" : "=" + Text(node->_cmd)));
    for (const AK_Attribute* component : node->_components) Dump(component, level + 1, lines);
}

// A description that ends with its test.
class Description {
public:
    explicit Description(const std::string& text, const AK_Attribute* base = nullptr)
        : _root(CreateAttributes(text.c_str(), base)), _base(base)
    {
    }
    ~Description() { DeleteAttributes(_root, _base); }
    Description(const Description&) = delete;
    Description& operator=(const Description&) = delete;
    const AK_Attribute* operator->() const { return _root; }
    const AK_Attribute* Root() const { return _root; }
    Lines Nodes() const
    {
        Lines lines;
        if (_root) Dump(_root, 0, lines);
        return lines;
    }

private:
    const AK_Attribute* _root;
    const AK_Attribute* _base;
};

Lines Ids(const AK_List<const AK_Attribute*>& nodes)
{
    Lines ids;
    for (const AK_Attribute* node : nodes) ids.push_back(Text(node->_id));
    return ids;
}

}   // namespace

class AK_AttributeTest : public ObjectTest {
protected:
    // Reads a class file of these bytes, the way a description comes from disc.
    Lines FromFile(const std::string& bytes)
    {
        Describe("Read", bytes);
        return Description("Read").Nodes();
    }
};

// ------------------------------------------------------------------------------------------------------------ reading

TEST_F(AK_AttributeTest, LinesBecomeNodesByTheirIndentation)
{
    // clang-format off
    const struct {
        const char* why;
        const char* text;
        Lines nodes;
    } cases[] = {
        {"a root alone", "obj.A\n", {"0 obj.A"}},
        {"no line end at the end", "obj.A\n\tx", {"0 obj.A", "1 x"}},
        {"split at the first colon", "obj.A\n\tx.y:a:b\n\tz:\n", {"0 obj.A", "1 x.y=a:b", "1 z"}},
        {"siblings and children", "obj.A\n\tb\n\t\tc\n\t\td\n\te\n", {"0 obj.A", "1 b", "2 c", "2 d", "1 e"}},
        {"too deep for any node: passed over", "obj.A\n\t\tlost\n\tb\n\t\t\tlost\n\t\tc\n", {"0 obj.A", "1 b", "2 c"}},
        {"only the first root counts", "obj.A\n\tb\nobj.B\n\tc\n", {"0 obj.A", "1 b"}},
        {"an empty line is of level 0, so it ends the root", "obj.A\n\tb\n\n\tc\n", {"0 obj.A", "1 b"}},
        {"blanks are no indentation", "obj.A\n  b\n\tc\n", {"0 obj.A"}},
        {"blanks belong to the id", "obj.A\n\t b \n\tpick world\n", {"0 obj.A", "1  b ", "1 pick world"}},
        {"continued two tabs deeper",
         "obj.A\n\tdoc:text \\\n\t\t\tmore\n\tb\n", {"0 obj.A", "1 doc=text \\\nmore", "1 b"}},
        {"continued twice",
         "obj.A\n\tdoc:1\\\n\t\t2\\\n\t\t\t3\n\t\tgerman:x\n", {"0 obj.A", "1 doc=1\\\n2\\\n3", "2 german=x"}},
        {"the continuation must be deeper", "obj.A\n\tdoc:text\\\n\tb\n", {"0 obj.A", "1 doc=text\\", "1 b"}},
        {"a backslash at the very end", "obj.A\n\tdoc:text\\", {"0 obj.A", "1 doc=text\\"}},
        {"a backslash within a line", "obj.A\n\tdoc:a\\b\n\tc\n", {"0 obj.A", "1 doc=a\\b", "1 c"}},
        {"tabs behind the text stay", "obj.A\n\tdoc:a\tb\\\n\t\tc\td\n", {"0 obj.A", "1 doc=a\tb\\\nc\td"}},
    };
    // clang-format on
    for (const auto& c : cases) {
        EXPECT_EQ(Description(c.text).Nodes(), c.nodes) << c.why;
        EXPECT_EQ(FromFile(c.text), c.nodes) << c.why << ", from a file";
    }
    EXPECT_EQ(FromFile("obj.A\r\n\tdoc:1\\\r\n\t\t2\r\n\tb\r\n"), (Lines{"0 obj.A", "1 doc=1\\\n2", "1 b"}))
        << "line ends of another system";
    EXPECT_EQ(FromFile("\tb\nobj.A\n"), (Lines{"0 obj.A"})) << "what comes before the root";
    Messages();
    FromFile("obj.A\n\tb\n\n \n");
    EXPECT_EQ(Messages(), Lines{}) << "blank lines at the end";
    FromFile("obj.A\n\tb\n\n\tc\n");
    EXPECT_EQ(Messages(), Lines{"WARNING:Read.atr, line 3: the description ends here, at a line without indentation: "
                                "what follows is not read"});
}

TEST_F(AK_AttributeTest, WhatCannotBeReadIsToldWithItsPath)
{
    EXPECT_EQ(CreateAttributes("NoSuch", nullptr), nullptr);
    EXPECT_EQ(Messages(), Lines{"cannot open attribute file " + Text(directory / "attributes/NoSuch.atr") + "!"});
    AK_System::CreateDir(directory / "attributes/Dir.atr");
    EXPECT_EQ(CreateAttributes("Dir", nullptr), nullptr);
}

TEST_F(AK_AttributeTest, ATextWithoutALineEndIsFatal)
{
    ak_msg_func = [](const char* message, const char*) { std::fprintf(stderr, "%s\n", message); };
    EXPECT_EXIT(CreateAttributes("obj.A", nullptr), testing::KilledBySignal(SIGABRT),
                "ERROR:FATAL:invalid attribute string:obj.A");
    Describe("Empty", "");
    EXPECT_EXIT(CreateAttributes("Empty", nullptr), testing::KilledBySignal(SIGABRT),
                "ERROR:FATAL:invalid attribute string:");
}

// ----------------------------------------------------------------------------------------------------------- searches

TEST_F(AK_AttributeTest, ListsCollectWhatTheyAreNamedAfter)
{
    const TestSpecialThing special("s", nullptr);
    const AK_Attribute* d = special.Attributes();
    AK_List<const AK_Attribute*> nodes(1);
    d->GetObjHierarchy(nodes);
    EXPECT_EQ(Ids(nodes), (Lines{"obj.SpecialThing", "obj.Thing", "obj.Object"}));

    nodes.Clear();
    d->GetAttributesOfType("int float bool", nodes);
    EXPECT_EQ(Ids(nodes), (Lines{"int.Number", "float.Ratio", "bool.Shown", "bool.Active"}));

    AK_List<AK_String> names(1);
    d->GetIdsOfTypeRec("text", names);
    EXPECT_EQ(Joined(names), "Extra|Text|Scratch|Kind|") << "without those of Object";
    names.Clear();
    d->GetSetCmds(names);
    EXPECT_EQ(Joined(names),
              "Extra|Number|Ratio|Length|Text|Scratch|Kind|Shown|Input|Place|Corner|Corners|Fail|Count|");

    EXPECT_EQ(Ids(d->AttributePathToCmd("Count", "set")),
              (Lines{"obj.SpecialThing", "obj.Thing", "opr.Operations", "apply.Count"}));
    EXPECT_EQ(Ids(d->AttributePathToCmd("Id", "get")),
              (Lines{"obj.SpecialThing", "obj.Thing", "obj.Object", "text.Id"}));
    EXPECT_EQ(Ids(d->AttributePathToCmd("Operations", "opr")),
              (Lines{"obj.SpecialThing", "obj.Thing", "opr.Operations"}));
    EXPECT_EQ(Ids(d->AttributePathToCmd("Volume", "get")), Lines{});
    EXPECT_EQ(Text(d->ObjectTypeOfSetCmd("Count")), "Thing");
    EXPECT_EQ(Text(d->ObjectTypeOfSetCmd("Active")), "Object");
    EXPECT_EQ(Text(d->ObjectTypeOfSetCmd("Volume")), "");
    EXPECT_EQ(d->NumAttributes(), 0);
}

// ------------------------------------------------------------------------------------------------------ hostile input

namespace {

// Every search on a description, for what it does on strange ones.
void SearchAll(const AK_Attribute* d)
{
    AK_List<const AK_Attribute*> nodes(1);
    AK_List<AK_String> names(1);
    d->GetObjHierarchy(nodes);
    d->GetAttributesOfType("obj.opr", nodes);
    d->GetIdsOfTypeRec("text", names);
    d->GetSetCmds(names);
    EXPECT_EQ(d->Attribute("no such name"), nullptr);
    EXPECT_EQ(d->AttributeOfSetCmd("no such name"), nullptr);
    EXPECT_EQ(d->SubAttribute("no such name"), nullptr);
    EXPECT_EQ(d->AttributePathToCmd("no such name", "set").Size(), 0);
}

}   // namespace

TEST_F(AK_AttributeTest, ADescriptionCutAnywhereIsReadAsFarAsItGoes)
{
    const std::string whole = TestThing::description;
    const Lines nodes = Description(whole).Nodes();
    for (size_t n = std::string("obj.Thing\n").size(); n < whole.size(); ++n) {
        const Description d(whole.substr(0, n));
        SearchAll(d.Root());
        Lines found = d.Nodes();
        ASSERT_LE(found.size(), nodes.size()) << n;
        found.resize(found.size() - std::min<size_t>(found.size(), 2));   // a cut line, and a cut continuation of it
        EXPECT_TRUE(std::equal(found.begin(), found.end(), nodes.begin())) << n;
    }
}

TEST_F(AK_AttributeTest, AnyByteAnywhereIsReadSomehow)
{
    const std::string whole = "obj.Thing\n\tdoc:A \\\n\t\tthing\n\tint.Number:Number\n\t\tset:Number\n";
    for (size_t i = 0; i < whole.size(); ++i) {
        for (const char byte : {'\0', '\n', '\t', '\\', ':', '.', '\r', '\xff'}) {
            std::string bent = whole;
            bent[i] = byte;
            Describe("Bent", bent);
            const Description d("Bent");
            if (d.Root()) SearchAll(d.Root());
        }
    }
}

TEST_F(AK_AttributeTest, NestingIsBounded)
{
    std::string deep = "obj.A\n";
    for (int level = 1; level < 3000; ++level) deep += std::string(size_t(level), '\t') + "x\n";
    deep += "\tafter\n";
    const Description d(deep);
    SearchAll(d.Root());
    EXPECT_EQ(d.Nodes().size(), 1002u) << "root, 1000 levels, and the line behind them";

    std::string million = "obj.A\n";
    million += std::string(1000000, '\t') + "x\n\tb:" + std::string(1000000, '\t') + "\\\n";
    EXPECT_EQ(Description(million).Nodes().size(), 2u);
}
