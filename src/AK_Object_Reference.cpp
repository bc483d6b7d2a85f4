// The reference manual: what the descriptions say of all classes, as one HTML page.
//
//   description node  ->  heading with an anchor  ->  paragraph                        ->  index at the end
//   obj., opr., ...       "DHM_Dx"                    DocText, cleaned up and linked       types, attributes
//
// A documentation text is plain text with a little markup: 'names' in quotes are set in bold, and those of attributes
// of the class become links that show the label in the language of the page; a blank line begins a new paragraph,
// @@alfa_1 >= 2/@ is a formula, ->DHM.Dx refers to an attribute of a type, ->DHM to the type, ->sketch.png puts a
// picture there.
//
// The page of all classes begins with a start page: "manual/Start.atr" in the attributes directory, a description whose
// groups are the chapters.

#include "AK_Object.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>

// ----------------------------------------------------------------------------------------------------------------
// Formulas
// ----------------------------------------------------------------------------------------------------------------

static constexpr char formulaBegin[] = "@@";
static constexpr char formulaEnd[] = "/@";

namespace {

// The order counts: "eta" is replaced when "beta" has gone, and before "theta" is reached. Two names can share an
// entity, as "Chi" and "Gamma" do: pages that are out in the world rely on the table as it is.
struct Letter {
    const char* name;
    int entity;
};

// clang-format off
constexpr Letter letters[] = {
    {"alfa", 945},   {"beta", 946},   {"chi", 967},    {"delta", 948},  {"epsilon", 949}, {"phi", 966},
    {"gamma", 947},  {"eta", 951},    {"iota", 953},   {"greekj", 954}, {"kappa", 954},   {"lambda", 955},
    {"mue", 956},    {"nue", 957},    {"greeko", 959}, {"pi", 960},     {"theta", 952},   {"rho", 961},
    {"sigma", 963},  {"tau", 964},    {"greeku", 962}, {"greekv", 965}, {"omega", 969},   {"xsi", 958},
    {"psi", 968},    {"zeta", 950},
    {"Alfa", 913},   {"Beta", 914},   {"Chi", 915},    {"Delta", 916},  {"Epsilon", 917}, {"Phi", 934},
    {"Gamma", 915},  {"Eta", 918},    {"Iota", 921},   {"greekJ", 919}, {"Kappa", 922},   {"Lambda", 923},
    {"Mue", 924},    {"Nue", 925},    {"greekO", 927}, {"Pi", 928},     {"Theta", 920},   {"Rho", 930},
    {"Sigma", 931},  {"Tau", 932},    {"greekU", 933}, {"greekV", 934}, {"Omega", 937},   {"Xsi", 935},
    {"Psi", 936},    {"Zeta", 918},
};

// The two comparison signs are crossed, and stay so for the same reason.
constexpr Letter operators[] = {
    {"sqrt", 8730}, {"!=", 8800}, {">=", 8804}, {"<=", 8805}, {"*", 183}, {"-", 8722},
};
// clang-format on

}   // namespace

static AK_String Entity(int number) { return AK_String(number, "&#%d;"); }

static void ReplaceByEntities(AK_String& text, std::span<const Letter> table)
{
    for (const Letter& letter : table) text.ReplaceAll(letter.name, Entity(letter.entity).c_str());
}

// A lone "<" or ">" would be read as a tag; the two-character signs have entities of their own.
static void EscapeComparisons(AK_String& text)
{
    text.ReplaceAll("<=", "\001");
    text.ReplaceAll(">=", "\002");
    text.ReplaceAll("<", "&#60;");
    text.ReplaceAll(">", "&#62;");
    text.ReplaceAll("\001", "<=");
    text.ReplaceAll("\002", ">=");
}

static AK_String FormulaHtml(AK_String formula)
{
    EscapeComparisons(formula);
    ReplaceByEntities(formula, letters);
    while (formula.ReplaceToNonAlnum('_', "<SUB>", "</SUB>")) {}
    while (formula.ReplaceToNonAlnum('^', "<SUP>", "</SUP>")) {}
    ReplaceByEntities(formula, operators);
    return "<I>" + formula + "</I>";
}

// Puts what `replacement` makes of each formula into its place. A formula without an end stays text.
template <class Replacement>
static AK_String ReplaceFormulas(const AK_String& text, const Replacement& replacement)
{
    AK_String result;
    const char* rest = text.c_str();
    while (const char* begin = std::strstr(rest, formulaBegin)) {
        const char* end = std::strstr(begin + 2, formulaEnd);
        if (!end) break;
        result.Append(AK_String(rest, begin) + replacement(AK_String(begin + 2, end)));
        rest = end + 2;
    }
    result.Append(rest);
    return result;
}

AK_String AK_Object::ExpandFormulaHtml(const AK_String& text) { return ReplaceFormulas(text, FormulaHtml); }

AK_String AK_Object::ExpandFormulaFox(const AK_String& text)
{
    AK_String result = text;
    result.ReplaceAll(formulaBegin, "");
    result.ReplaceAll(formulaEnd, "");
    return result;
}

// ----------------------------------------------------------------------------------------------------------------
// Pages
// ----------------------------------------------------------------------------------------------------------------

namespace {

/// A page while it is written.
class ReferencePage {
public:
    /// `roots` are the descriptions that references may lead to: those that the page shows. `bases` are their base
    /// classes, null for none.
    ReferencePage(const AK_List<const AK_Attribute*>& roots, const AK_List<const AK_Attribute*>& bases)
        : _roots(roots),
          _bases(bases)
    {}

    bool OpenHtml(const AK_String& file, const AK_String& title);
    void WriteStart(const AK_Attribute* start);
    void WriteClasses();
    void CloseHtml();

private:
    void Write(const AK_Attribute* node, const AK_Attribute* root, int level);
    void WriteHeading(const AK_Attribute* node, const AK_String& anchor, const AK_String& style, int level) const;
    void WriteText(const AK_Attribute* node, const AK_Attribute* root, const AK_String& style) const;
    void WriteIndex(const char* anchor, const char* title, AK_List<AK_String>& entries) const;
    AK_String NamesAsMarks(const AK_String& text, const AK_Attribute* node, const AK_Attribute* root) const;
    AK_String Mark(const AK_String& name, const AK_Attribute* node, const AK_Attribute* root) const;
    AK_String ResolveDocReferences(const AK_String& text) const;
    AK_String LinkTo(const AK_String& name) const;
    const AK_Attribute* Root(const AK_String& type) const;

    const AK_List<const AK_Attribute*>& _roots;
    const AK_List<const AK_Attribute*>& _bases;
    std::FILE* _file = nullptr;
    AK_List<AK_String> _classes{1}, _attributes{1};   // index entries: label, tab, link
};

bool IsClass(const AK_Attribute* node) { return node->Id(0) == "obj"; }
bool IsGroup(const AK_Attribute* node) { return node->Id(0) == "opr" && !node->Component("set"); }

/// Properties of an attribute ("doc", "vis", "set" and so on) have no name of their own.
bool IsEntry(const AK_Attribute* node) { return !node->Id(1).IsEmpty(); }

/// The first group, or the first of all other entries, that bears the name or is set by it. Of one class only: what its
/// base has is documented there.
const AK_Attribute* FindEntry(const AK_Attribute* node, const AK_String& name, bool group)
{
    for (const AK_Attribute* component : node->_components) {
        if (!IsEntry(component) || IsClass(component)) continue;
        const bool isNamed = component->Id(1) == name.c_str() || component->SetCmd() == name;
        if (isNamed && IsGroup(component) == group) return component;
        if (const AK_Attribute* found = FindEntry(component, name, group)) return found;
    }
    return nullptr;
}

/// An attribute rather than a group of the same name.
const AK_Attribute* FindInClass(const AK_Attribute* root, const AK_String& name)
{
    const AK_Attribute* attribute = FindEntry(root, name, false);
    return attribute ? attribute : FindEntry(root, name, true);
}

/// A group gives way to an attribute of its name: no page has two anchors of one name.
AK_String Anchor(const AK_Attribute* root, const AK_Attribute* node)
{
    if (node == root) return root->Id(1);
    AK_String anchor = root->Id(1) + "_" + node->Id(1);
    if (IsGroup(node) && FindEntry(root, node->Id(1), false)) anchor.Append("_group");
    anchor.ReplaceAll(' ', '_');
    return anchor;
}

AK_String Link(const AK_String& anchor, const AK_String& label)
{
    return "<A HREF=\"#" + anchor + "\">" + label + "</A>";
}

AK_String FullLabel(const AK_Attribute* root, const AK_Attribute* node)
{
    return node == root ? AK_Object::Label(root) : AK_Object::Label(root) + ": " + AK_Object::Label(node);
}

bool ReferencePage::OpenHtml(const AK_String& file, const AK_String& title)
{
    _file = std::fopen(file.c_str(), "w");
    if (!_file) {
        AK_Object::_execStatus = "cannot open file '" + file + "' for writing references!";
        return false;
    }
    std::fputs("<!DOCTYPE html PUBLIC \"-//W3C//DTD HTML 4.01 Transitional//EN\">\n", _file);
    std::fprintf(_file, "<HTML>\n<HEAD><TITLE>%s</TITLE>\n", file.BaseName().c_str());
    if (std::FILE* styles = std::fopen((AK_Object::_attributesDirectory + "/styleSheetFile.txt").c_str(), "r")) {
        char piece[256];
        while (std::fgets(piece, sizeof piece, styles)) std::fputs(piece, _file);
        std::fclose(styles);
    }
    std::fputs("</HEAD>\n<BODY>\n", _file);
    std::fprintf(_file, "<B><FONT SIZE=150%%><P ALIGN=\"CENTER\">%s</P></B></FONT>\n", title.c_str());
    std::fprintf(_file, "<P ALIGN=\"CENTER\">%s</P>\n",
                 InLanguage("KORVO, simulation of dense-flow snow avalanches", "KORVO, Simulation von Fliesslawinen"));
    const char* link = "<HR><B><FONT SIZE=120%%><P ALIGN=\"CENTER\"><A HREF=\"#%s\">%s</A></FONT></P></B>\n";
    std::fprintf(_file, link, "classes", InLanguage("List of Object Types", "Liste der Objekttypen"));
    std::fprintf(_file, link, "attributes", InLanguage("List of Attributes", "Liste der Attribute"));
    return true;
}

void ReferencePage::WriteHeading(const AK_Attribute* node, const AK_String& anchor, const AK_String& style,
                                 int level) const
{
    const int heading = std::min(level + 1, 6);
    std::fprintf(_file, "<H%d %s><A NAME=\"%s\">%s</A></H%d>\n", heading, style.c_str(), anchor.c_str(),
                 AK_Object::Label(node).c_str(), heading);
}

// The chapters are no part of any class: in their texts only references lead on.
void ReferencePage::WriteStart(const AK_Attribute* start)
{
    std::fputs("<HR>\n", _file);
    WriteText(start, start, "");
    for (const AK_Attribute* chapter : start->_components) {
        if (!IsEntry(chapter)) continue;
        WriteHeading(chapter, Anchor(start, chapter), "", 1);
        WriteText(chapter, start, "");
    }
    std::fputs("<HR>\n", _file);
}

void ReferencePage::WriteClasses()
{
    for (int i = 0; i < _roots.Size(); ++i) {
        Write(_roots[i], _roots[i], 0);
        if (const AK_Attribute* base = _bases[i]) {
            const AK_String link = Link(Anchor(base, base), AK_Object::Label(base));
            const char* what = InLanguage("Is a specialization of ", "Ist eine Spezialisierung von ");
            std::fprintf(_file, "<P>%s%s.</P>\n", what, link.c_str());
        }
        std::fputs("<HR>\n", _file);
    }
}

// One class, or a part of one with its parts.
void ReferencePage::Write(const AK_Attribute* node, const AK_Attribute* root, int level)
{
    const AK_String style = level == 0 ? AK_String() : "CLASS=\"intended" + AK_String(level, "%d") + "\"";
    const AK_String label = AK_Object::Label(node);
    const AK_String anchor = Anchor(root, node);
    WriteHeading(node, anchor, style, level);
    if (IsClass(node))
        _classes.Append(label + "\t" + Link(anchor, label));
    else if (!IsGroup(node))   // many types have an attribute of the same label
        _attributes.Append(label + "\t" + Link(anchor, label) + " (" + AK_Object::Label(root) + ")");
    WriteText(node, root, style);
    for (const AK_Attribute* component : node->_components)
        if (IsEntry(component) && !IsClass(component)) Write(component, root, level + 1);
}

void ReferencePage::WriteIndex(const char* anchor, const char* title, AK_List<AK_String>& entries) const
{
    std::fprintf(_file, "<HR><B><FONT SIZE=150%%><P ALIGN=\"CENTER\"><A NAME=\"%s\">%s</A></P></FONT></B>\n<P>\n",
                 anchor, title);
    std::qsort(entries.Data(), size_t(entries.Size()), sizeof(AK_String), AK_String::Compare);
    char letter = 0;
    for (const AK_String& entry : entries) {
        if (letter && entry[0] != letter) std::fputs("</P><P>\n", _file);
        letter = entry[0];
        std::fprintf(_file, "%s<BR>\n", std::strchr(entry.c_str(), '\t') + 1);
    }
    std::fputs("</P>\n", _file);
}

void ReferencePage::CloseHtml()
{
    WriteIndex("classes", InLanguage("List of Object Types", "Liste der Objekttypen"), _classes);
    WriteIndex("attributes", InLanguage("List of Attributes", "Liste der Attribute"), _attributes);
    std::fputs("</BODY>\n</HTML>\n", _file);
    const bool written = !std::ferror(_file);
    if (std::fclose(_file) != 0 || !written) AK_Object::_execStatus = "cannot write references!";
}

// ----------------------------------------------------------------------------------------------------------------
// Texts
// ----------------------------------------------------------------------------------------------------------------

// Formulas stand aside while the text is cleaned up, each as its number between two bytes that no text has.
void ReferencePage::WriteText(const AK_Attribute* node, const AK_Attribute* root, const AK_String& style) const
{
    AK_List<AK_String> formulas(1);
    AK_String text = AK_Object::DocText(node);
    text.ReplaceAll("\001", "");
    text.ReplaceAll("\002", "");
    text = ReplaceFormulas(
        text, [&](const AK_String& formula) { return AK_String(formulas.Append(FormulaHtml(formula)), "\001%d\002"); });

    static constexpr char arrow[] = "%ref%";
    text.ReplaceAll("->", arrow);
    text.ReplaceAll("<", "&#60;");
    text.ReplaceAll(">", "&#62;");
    text.ReplaceAll(arrow, "->");
    text.ReplaceAll(" \n", "<BR>");
    text = NamesAsMarks(text, node, root);
    text.ReplaceAll("\n\n", ("</P>\n<P " + style + ">").c_str());

    for (int i = 0; i < formulas.Size(); ++i) text.Replace(AK_String(i, "\001%d\002").c_str(), formulas[i].c_str());
    std::fprintf(_file, "<P %s>%s</P>\n", style.c_str(), ResolveDocReferences(text).c_str());
}

// The quote that ends the name which begins at s; null if none does.
const char* EndOfName(const char* s)
{
    for (; *s; ++s)
        if (*s == '\'' && (!s[1] || std::strchr(" \n.,;:)<", s[1]))) return s;
    return nullptr;
}

// A quote between two letters is an apostrophe.
AK_String ReferencePage::NamesAsMarks(const AK_String& text, const AK_Attribute* node, const AK_Attribute* root) const
{
    AK_String result;
    const char* rest = text.c_str();
    for (const char* s = rest; *s; ++s) {
        const bool begins = *s == '\'' && (s == text.c_str() || std::strchr(" (\n>", s[-1]));
        const char* end = begins ? EndOfName(s + 1) : nullptr;
        if (!end) continue;
        result.Append(AK_String(rest, s) + "<B>" + Mark(AK_String(s + 1, end), node, root) + "</B>");
        s = end;
        rest = end + 1;
    }
    result.Append(rest);
    return result;
}

// What stands for a name: a link if it is an attribute of the class or of one of its bases.
AK_String ReferencePage::Mark(const AK_String& name, const AK_Attribute* node, const AK_Attribute* root) const
{
    for (int i = _roots.IndexOf(root); i >= 0; i = _roots.IndexOf(_bases[i])) {
        const AK_Attribute* target = FindEntry(_roots[i], name, false);
        if (target == node) return AK_Object::Label(node);
        if (target) return Link(Anchor(_roots[i], target), AK_Object::Label(target));
    }
    return name;
}

// A reference reaches as far as its name does; a stop behind it ends the sentence.
AK_String ReferencePage::ResolveDocReferences(const AK_String& text) const
{
    AK_String result;
    const char* rest = text.c_str();
    while (const char* begin = std::strstr(rest, "->")) {
        const char* end = begin + 2;
        while (AK_String::IsAlnum(*end) || *end == '$' || *end == '.') ++end;
        while (end > begin + 2 && end[-1] == '.') --end;
        result.Append(AK_String(rest, begin));
        result.Append(end > begin + 2 ? LinkTo(AK_String(begin + 2, end)) : AK_String("-&#62;"));
        rest = end;
    }
    result.Append(rest);
    return result;
}

AK_String ReferencePage::LinkTo(const AK_String& name) const
{
    if (name.Extension() == "png") return "<IMG SRC=\"" + name + "\" ALT=\"\">";
    const char* dot = std::strchr(name.c_str(), '.');
    const AK_Attribute* root = Root(dot ? AK_String(name.c_str(), dot) : name);
    const AK_Attribute* target = root && dot ? FindInClass(root, dot + 1) : root;
    return target ? Link(Anchor(root, target), FullLabel(root, target)) : "\"" + name + "\"";
}

const AK_Attribute* ReferencePage::Root(const AK_String& type) const
{
    for (const AK_Attribute* root : _roots)
        if (root->Id(1) == type) return root;
    return nullptr;
}

}   // namespace

// ----------------------------------------------------------------------------------------------------------------
// What is documented
// ----------------------------------------------------------------------------------------------------------------

void AK_Object::WriteHtmlReferenceRecursive(const AK_String& file)
{
    const AK_Description description = Description();
    AK_List<const AK_Attribute*> classes(1);
    description->GetObjHierarchy(classes);
    AK_List<const AK_Attribute*> bases = classes;
    bases.Append(nullptr);
    bases.Remove(0);
    ReferencePage page(classes, bases);
    const AK_String title = InLanguage("Description of ", "Beschreibung von ") + AK_Object::Label(description.get()) +
                            InLanguage(" and all related objects", " und aller untergeordneten Objekte");
    if (!page.OpenHtml(file, title)) return;
    page.WriteClasses();
    page.CloseHtml();
}

namespace {

/// A class of the program by name, with that of its base.
struct KnownClass {
    const char* name;
    const char* base;
};

AK_List<KnownClass>& KnownClasses()
{
    static AK_List<KnownClass> classes(64);
    return classes;
}

// The descriptions of all files, without their bases, and beside them the names of the files. Like the descriptions of
// the classes they live as long as the process.
AK_List<const AK_Attribute*>& _allAttributes = *new AK_List<const AK_Attribute*>(1);
AK_List<AK_String> _allClassNames(1);

void ReadAllDescriptions()
{
    if (!_allAttributes.IsEmpty()) return;
    AK_List<AK_String> files = AK_System::FilesList(AK_Object::_attributesDirectory, "atr");
    std::qsort(files.Data(), size_t(files.Size()), sizeof(AK_String), AK_String::Compare);
    for (const AK_String& file : files) {
        const AK_Attribute* root = CreateAttributes(file.BaseName(), nullptr);
        if (!root) continue;
        _allAttributes.Append(root);
        _allClassNames.Append(file.BaseName());
    }
}

// The description of a class's base; null if there is none or it has no file.
const AK_Attribute* BaseOf(const AK_String& className)
{
    for (const KnownClass& known : KnownClasses())
        if (className == known.name) {
            const int base = _allClassNames.IndexOf(known.base);
            return base < 0 ? nullptr : _allAttributes[base];
        }
    return nullptr;
}

}   // namespace

bool AK_Object::RegisterClass(const char* className, const char* baseClassName)
{
    KnownClasses().Append({className, baseClassName});
    return true;
}

void AK_Object::WriteEntireHtmlReference(const AK_String& file)
{
    static constexpr char startPage[] = "manual/Start";
    const AK_String program = _argc > 0 ? AK_String(_argv[0]).BaseName() : AK_String("unknown");
    ReadAllDescriptions();
    AK_List<const AK_Attribute*> bases(1);
    for (const AK_String& name : _allClassNames) bases.Append(BaseOf(name));
    ReferencePage page(_allAttributes, bases);
    if (!page.OpenHtml(file, program + InLanguage(": Description of all objects", ": Beschreibung aller Objekte")))
        return;
    if (AK_System::FileExists(AttributeFile(startPage, "atr", nullptr))) {
        const AK_Attribute* start = CreateAttributes(startPage, nullptr);
        if (start) page.WriteStart(start);
        DeleteAttributes(start, nullptr);
    }
    page.WriteClasses();
    page.CloseHtml();
}
