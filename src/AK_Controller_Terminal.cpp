// The terminal: menus made from the tree and from the descriptions of its objects.
//
// The user stands at an object, with a stack of nodes of its description: empty at the object's own menu, otherwise the
// way from the description's root to the node on screen. That node alone says what comes next: a choice of options, a
// value to enter, or a menu of its components.
//
// Whatever a menu asks or sets may run formula code or a macro, and those may delete any object or exchange its
// description. So each pass begins by checking that its object is in the tree, keeps it from being freed while the pass
// lasts, and walks the description by a hold on it.

#include "AK_Controller.h"

#include <cctype>
#include <cstdio>
#include <cstring>

AK_TerminalController::AK_TerminalController(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

std::span<const AK_Row> AK_TerminalController::Rows()
{
    using T = AK_TerminalController;
    // clang-format off
    static constexpr Row rows[] = {
        {"PlayMacro", command<&T::PlayMacro>},
        {"Recording", pair<&T::IsRecording, &T::Recording>},
    };
    // clang-format on
    return rows;
}

// ----------------------------------------------------------------------------------------------------------------
// Macros
// ----------------------------------------------------------------------------------------------------------------

void AK_TerminalController::PlayMacro(const AK_String&)
{
    if (_recording) Recording(0);
    ExecMacro("", 0);
}

void AK_TerminalController::Recording(int on)
{
    _recordStream.close();
    _recordStream.clear();   // a failure, be it of closing what was not open, would keep the stream shut
    _recording = on;
    if (!on) return;
    _recordStream.open(_macroFileName.c_str());
    if (!_recordStream.is_open()) _recording = 0;
}

// ----------------------------------------------------------------------------------------------------------------
// Input
// ----------------------------------------------------------------------------------------------------------------

static constexpr int maxWord = 99;

// The next word of the input; what exceeds maxWord is dropped, and a NUL byte ends its text. False at the end of the
// input, which leaves the word as it was.
static bool ReadWord(AK_String& word)
{
    std::fflush(stdout);
    int c = std::getchar();
    while (std::isspace(c)) c = std::getchar();
    if (c == EOF) return false;
    char text[maxWord];
    int length = 0;
    for (; c != EOF && !std::isspace(c); c = std::getchar())
        if (length < maxWord) text[length++] = char(c);
    word = AK_String(text, text + length);
    return true;
}

// The number, from 1, of an entry of a menu, as its index; -1 for any other word.
static int IndexOfEntry(const AK_String& word, int numEntries)
{
    int number = 0;
    AK_FromText(number, word);
    return number >= 1 && number <= numEntries ? number - 1 : -1;
}

static void PrintLine(const AK_String& line) { std::puts(line.c_str()); }

static void PrintEntry(int index, const char* mark, const AK_String& text)
{
    std::printf("%d%s%s\n", index + 1, mark, text.c_str());
}

// A list as the user sees it, and as he may enter it.
static AK_String WithBars(const AK_String& value)
{
    if (!std::strstr(value.c_str(), ak_sep)) return value;
    AK_List<AK_String> items(1);
    value.Split(ak_sep, items);
    return AK_String(items, "|");
}

static AK_String WithoutBars(const AK_String& value)
{
    if (!std::strchr(value.c_str(), '|')) return value;
    AK_List<AK_String> items(1);
    value.Split('|', items);
    return AK_String(items, ak_sep);
}

// ----------------------------------------------------------------------------------------------------------------
// Menus
// ----------------------------------------------------------------------------------------------------------------

class AK_TerminalController::Menus {
public:
    explicit Menus(AK_TerminalController& root) : _root(root), _object(&root) {}
    void Run();

private:
    using Node = const AK_Attribute*;

    void StandOnWhatLives();
    void ObjectMenu();
    void OptionMenu(Node node);
    void EnterValue(Node node);
    bool TakeValue(Node node, AK_String& value) const;
    void Execute(const AK_String& attr, const AK_String& value);
    void AttributeMenu(Node node);
    void ExplainEntry(const AK_String& word, Node menu, const AK_List<Node>& shown) const;
    void Explain(Node node) const { AK_MSG(ExpandFormulaFox(DocText(node))); }
    bool Label(Node node, AK_String& label) const;
    AK_String ValueOf(Node node) const { return node->_cmd.IsEmpty() ? AK_String() : _object->Get(node->_cmd); }
    void Pop() { _stack.Remove(_stack.Size() - 1); }

    AK_TerminalController& _root;
    AK_Object* _object;            // null when the user has left the root
    AK_List<AK_Object*> _way;      // from the object of the last pass up to the root, as that pass found it
    AK_List<Node> _stack;          // of nodes of the description
    AK_Description _description;   // keeps them, whatever the object does to its own
};

void AK_TerminalController::Menus::Run()
{
    while (_object) {
        StandOnWhatLives();
        const Call running(_object);
        if (_stack.IsEmpty()) {
            ObjectMenu();
            continue;
        }
        PrintLine(_object->IdAbs());
        const Node node = _stack[_stack.Size() - 1];
        if (node->Component("options"))
            OptionMenu(node);
        else if (node->Component("set"))
            EnterValue(node);
        else
            AttributeMenu(node);
    }
}

// An object that is not in the tree any more gives way to the nearest one on the last way to the root that is; until
// then addresses are only compared. At the root of a description the present one is taken: that of a group grows with
// its members.
void AK_TerminalController::Menus::StandOnWhatLives()
{
    if (!_root.HasInTree(_object)) {
        _stack.Clear();
        int nearest = 0;
        while (!_root.HasInTree(_way[nearest])) ++nearest;
        _object = _way[nearest];
    }
    _way.Clear();
    for (AK_Object* object = _object; object; object = object->Parent()) _way.Append(object);
    if (_stack.Size() == 1) _stack[0] = (_description = _object->Description()).get();
}

void AK_TerminalController::Menus::ObjectMenu()
{
    PrintLine(_object->Id() + ":");
    for (int i = 0; i < _object->NumComponents(); ++i) PrintEntry(i, ":", _object->ComponentAt(i)->Id());
    PrintLine("q: quit");
    PrintLine("e: edit");
    PrintLine("?: help");
    AK_String word;
    if (!ReadWord(word)) return;
    switch (word[0]) {
    case '?': Explain(_object->Attributes()); break;
    case 'q': _object = _object->Parent(); break;
    case 'e':
        _description = _object->Description();
        _stack.Append(_description.get());
        break;
    default:
        if (const int i = IndexOfEntry(word, _object->NumComponents()); i >= 0) _object = _object->ComponentAt(i);
    }
}

// A choice is neither reported nor recorded, and its failure is not told.
void AK_TerminalController::Menus::OptionMenu(Node node)
{
    const Node set = node->Component("set");
    const AK_String attr = node->SetCmd();
    AK_List<AK_String> options(1);
    ValueOf(node->Component("options")).Split(ak_sep, options);
    for (int i = 0; i < options.Size(); ++i) PrintEntry(i, "...", options[i]);
    Pop();
    AK_String word;
    if (!ReadWord(word) || !set) return;
    if (const int i = IndexOfEntry(word, options.Size()); i >= 0) _object->Set(attr, options[i]);
}

void AK_TerminalController::Menus::EnterValue(Node node)
{
    AK_String value;
    if (!TakeValue(node, value)) return;   // the end of the input changes nothing: the same prompt again
    Pop();
    if (value.StartsWith("?"))
        Explain(node);
    else
        Execute(node->SetCmd(), WithoutBars(value));
}

bool AK_TerminalController::Menus::TakeValue(Node node, AK_String& value) const
{
    if (node->_id.StartsWith("apply.")) return true;
    const AK_String current = ValueOf(node);
    if (node->_id.StartsWith("bool.")) {
        value = current == "0" ? "1" : "0";
        return true;
    }
    PrintLine(AK_String("enter value: [") + current + "]");
    return ReadWord(value);
}

void AK_TerminalController::Menus::Execute(const AK_String& attr, const AK_String& value)
{
    const AK_String command = _object->CommandString(&_root, attr, value);
    if (_reportCommands == 1) AK_MSG(command);
    _object->Set(attr, value);
    if (!_execStatus.IsEmpty()) AK_MSG("error when executing command " << command << ":" << _execStatus);
    if (_root._recording && !(attr == "Recording")) _root._recordStream << command << std::endl;
}

void AK_TerminalController::Menus::AttributeMenu(Node node)
{
    AK_List<Node> shown;
    for (const Node component : node->_components) {
        AK_String label;
        if (Label(component, label)) PrintEntry(shown.Append(component), ": ", label);
    }
    PrintLine("q: quit");
    AK_String word;
    if (!ReadWord(word)) return;
    if (word[0] == 'q')
        Pop();
    else if (word[0] == '?')
        ExplainEntry(word, node, shown);
    else if (const int i = IndexOfEntry(word, shown.Size()); i >= 0)
        _stack.Append(shown[i]);
}

// "?" explains the menu itself, "?3" its third entry, of whatever kind it is: nothing is asked, set or executed.
void AK_TerminalController::Menus::ExplainEntry(const AK_String& word, Node menu, const AK_List<Node>& shown) const
{
    if (!word[1]) Explain(menu);
    if (const int i = IndexOfEntry(word.c_str() + 1, shown.Size()); i >= 0) Explain(shown[i]);
}

// The line of an entry; false for one that is not shown.
bool AK_TerminalController::Menus::Label(Node node, AK_String& label) const
{
    const AK_String& id = node->_id;
    if (id.StartsWith("doc") || id.StartsWith("german")) return false;
    label = id;
    if (!node->_cmd.IsEmpty()) label = label + ": " + WithBars(ValueOf(node));
    if (id.StartsWith("opr")) label.Append(" (opr)");
    if (id.StartsWith("obj")) label.Append(" (obj)");
    const Node vis = node->Component("vis");
    if (!vis) return true;
    const AK_String visibility = ValueOf(vis);
    if (visibility == "r") label.Append(" (r)");
    return !(visibility == "-");
}

void AK_TerminalController::Run(int, int, const AK_String& macro, const AK_String&, int exitAfterMacro)
{
    _macroFileName = macro;
    PlayMacro("");
    if (!exitAfterMacro) Menus(*this).Run();
}
