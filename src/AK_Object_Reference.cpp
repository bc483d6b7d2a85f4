// The reference manual: what the descriptions say of all classes, as one HTML page.
//
//   description node  ->  heading with an anchor  ->  paragraph                        ->  index at the end
//   obj., opr., ...       "DHM_Dx"                    DocText, cleaned up and linked       types, attributes
//
// A documentation text is plain text with a little markup: 'names' in quotes are set in bold, a blank line begins a new
// paragraph, @@alfa_1 >= 2/@ is a formula, ->DHM.Dx refers to an attribute of a type, ->DHM to the type, ->sketch.png
// puts a picture there.

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
    /// `roots` are the descriptions that references may lead to: those that the page shows.
    explicit ReferencePage(const AK_List<const AK_Attribute*>& roots) : _roots(roots) {}

    bool OpenHtml(const AK_String& file, const AK_String& title);
    /// One class, or a part of one with its parts.
    void Write(const AK_Attribute* node, const AK_String& type, int level);
    /// "" for a class without a base.
    void WriteBase(const AK_Attribute* base) const;
    void EndClass() const { std::fputs("<HR>\n", _file); }
    void CloseHtml();

private:
    void WriteIndex(const char* anchor, const char* title, AK_List<AK_String>& entries) const;
    AK_String Paragraphs(const AK_String& doc, const AK_String& style) const;
    AK_String ResolveDocReferences(const AK_String& text) const;
    AK_String LinkTo(const AK_String& name) const;
    const AK_Attribute* Find(const AK_String& type, const AK_String& name) const;
    AK_String FullLabel(const AK_String& type, const AK_String& name) const;

    const AK_List<const AK_Attribute*>& _roots;
    std::FILE* _file = nullptr;
    AK_List<AK_String> _classes{1}, _attributes{1};   // index entries: label, tab, link
};

AK_String Anchor(const AK_String& type, const AK_String& name) { return name.IsEmpty() ? type : type + "_" + name; }

AK_String Link(const AK_String& anchor, const AK_String& label)
{
    return "<A HREF=\"#" + anchor + "\">" + label + "</A>";
}

bool IsClass(const AK_Attribute* node) { return node->Id(0) == "obj"; }
bool IsGroup(const AK_Attribute* node) { return node->Id(0) == "opr"; }

/// Properties of an attribute ("doc", "vis", "set" and so on) have no name of their own.
bool IsEntry(const AK_Attribute* node) { return !node->Id(1).IsEmpty(); }

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

void ReferencePage::Write(const AK_Attribute* node, const AK_String& type, int level)
{
    const AK_String style = level == 0 ? AK_String() : "CLASS=\"intended" + AK_String(level, "%d") + "\"";
    const AK_String label = AK_Object::Label(node);
    const AK_String anchor = Anchor(type, IsClass(node) ? AK_String() : node->Id(1));
    const int heading = std::min(level + 1, 6);
    std::fprintf(_file, "<H%d %s><A NAME=\"%s\">%s</A></H%d>\n", heading, style.c_str(), anchor.c_str(), label.c_str(),
                 heading);
    if (IsClass(node))
        _classes.Append(label + "\t" + Link(anchor, label));
    else if (!IsGroup(node))   // many types have an attribute of the same label
        _attributes.Append(label + "\t" + Link(anchor, label) + " (" + FullLabel(type, "") + ")");
    std::fprintf(_file, "<P %s>%s</P>\n", style.c_str(), Paragraphs(AK_Object::DocText(node), style).c_str());
    for (const AK_Attribute* component : node->_components)
        if (IsEntry(component) && !IsClass(component)) Write(component, type, level + 1);
}

void ReferencePage::WriteBase(const AK_Attribute* base) const
{
    const AK_String link = Link(Anchor(base->Id(1), ""), AK_Object::Label(base));
    std::fprintf(_file, "<P>%s%s.</P>\n", InLanguage("Is a specialization of ", "Ist eine Spezialisierung von "),
                 link.c_str());
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
AK_String ReferencePage::Paragraphs(const AK_String& doc, const AK_String& style) const
{
    AK_List<AK_String> formulas(1);
    AK_String text = doc;
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
    for (const char* before : {" ", "(", "\n", ">"})
        text.ReplaceAll((AK_String(before) + "'").c_str(), (AK_String(before) + "<B>").c_str());
    for (const char* behind : {" ", "\n", ".", ",", ";", ":", ")"})
        text.ReplaceAll((AK_String("'") + behind).c_str(), (AK_String("</B>") + behind).c_str());
    text.ReplaceAll("\n\n", ("</P>\n<P " + style + ">").c_str());

    for (int i = 0; i < formulas.Size(); ++i) text.Replace(AK_String(i, "\001%d\002").c_str(), formulas[i].c_str());
    return ResolveDocReferences(text);
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
    const AK_String type = dot ? AK_String(name.c_str(), dot) : name;
    const AK_String attribute = dot ? AK_String(dot + 1) : AK_String();
    const AK_Attribute* target = Find(type, attribute);
    if (!target) return "\"" + name + "\"";
    return Link(Anchor(type, attribute.IsEmpty() ? attribute : target->Id(1)), FullLabel(type, attribute));
}

// A node of one class only: what its base has is documented there.
const AK_Attribute* FindInClass(const AK_Attribute* node, const AK_String& name)
{
    for (const AK_Attribute* component : node->_components) {
        if (!IsEntry(component) || IsClass(component)) continue;
        if (component->Id(1) == name.c_str() || component->SetCmd() == name) return component;
        if (const AK_Attribute* found = FindInClass(component, name)) return found;
    }
    return nullptr;
}

const AK_Attribute* ReferencePage::Find(const AK_String& type, const AK_String& name) const
{
    for (const AK_Attribute* root : _roots)
        if (root->Id(1) == type) return name.IsEmpty() ? root : FindInClass(root, name);
    return nullptr;
}

AK_String ReferencePage::FullLabel(const AK_String& type, const AK_String& name) const
{
    const AK_Attribute* root = Find(type, "");
    const AK_Attribute* node = Find(type, name);
    if (!root || !node) return "";
    return node == root ? AK_Object::Label(root) : AK_Object::Label(root) + ": " + AK_Object::Label(node);
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
    ReferencePage page(classes);
    const AK_String title = InLanguage("Description of ", "Beschreibung von ") + AK_Object::Label(description.get()) +
                            InLanguage(" and all related objects", " und aller untergeordneten Objekte");
    if (!page.OpenHtml(file, title)) return;
    for (int i = 0; i < classes.Size(); ++i) {
        page.Write(classes[i], classes[i]->Id(1), 0);
        if (i + 1 < classes.Size()) page.WriteBase(classes[i + 1]);
        page.EndClass();
    }
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
    const AK_String program = _argc > 0 ? AK_String(_argv[0]).BaseName() : AK_String("unknown");
    ReadAllDescriptions();
    ReferencePage page(_allAttributes);
    if (!page.OpenHtml(file, program + InLanguage(": Description of all objects", ": Beschreibung aller Objekte")))
        return;
    for (int i = 0; i < _allAttributes.Size(); ++i) {
        page.Write(_allAttributes[i], _allAttributes[i]->Id(1), 0);
        if (const AK_Attribute* base = BaseOf(_allClassNames[i])) page.WriteBase(base);
        page.EndClass();
    }
    page.CloseHtml();
}
