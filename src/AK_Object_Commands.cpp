// Commands: one line of text that reads or writes an attribute of an object by name.
//
//   set("<object>", "<attribute>", "<value>")
//   get("<object>", "<attribute>", $variable)
//   # a comment
//
// The object is a path relative to the one the command runs on. Object and attribute may be variables of that object,
// and so may the whole value. The first characters alone tell what a line is: a blank before "set(" is no command. A
// value ends at the last quote of the line, so quotes inside it need no escaping; line ends, tabs and quotes are
// written as "%%n", "%%t", "%%q", and the "$" of an ending that would be read as a variable as "%%v".

#include "AK_Object.h"

#include <cstring>

// ----------------------------------------------------------------------------------------------------------------
// Parsing
// ----------------------------------------------------------------------------------------------------------------

// [begin, end) without trailing blanks.
static AK_String TextUpTo(const char* begin, const char* end)
{
    while (end > begin && AK_String::IsWhitespace(end[-1])) --end;
    return AK_String(begin, end);
}

// Reads one of the first two arguments; moves `s` behind the comma that ends it. False when a part of it is missing.
static bool TakeArgument(const AK_Object& object, const char*& s, AK_String& argument)
{
    const char* comma = std::strchr(s, ',');
    if (!comma) return false;
    const char* quote = std::strchr(s, '"');
    const char* dollar = std::strchr(s, '$');
    if (dollar && dollar < comma && (!quote || quote > dollar)) {
        argument = object.VariableValue(TextUpTo(dollar, comma));
        s = comma + 1;
        return true;
    }
    const char* closing = quote ? std::strchr(quote + 1, '"') : nullptr;
    comma = closing ? std::strchr(closing, ',') : nullptr;
    if (!comma) return false;
    argument = AK_String(quote + 1, closing);
    s = comma + 1;
    return true;
}

// The text that may be a variable in place of the value; "" when there is none.
static AK_String VariableCandidate(const char* s, const char* bracket, const char* first, const char* last)
{
    const char* dollar = std::strchr(s, '$');
    if (!dollar) return "";
    if ((!first || first > bracket) && dollar < bracket) return TextUpTo(dollar, bracket);
    if (first && first < dollar && dollar < last) return TextUpTo(dollar, last);
    return "";
}

// Every occurrence of the pattern becomes one character, those that a replacement makes anew too.
static void ReplaceToExhaustion(AK_String& text, const char* pattern, char replacement)
{
    const size_t n = std::strlen(pattern);
    char* begin = &text[0];
    char* to = begin;
    for (const char* from = begin; *from; ++from) {
        *to++ = *from;
        while (size_t(to - begin) >= n && std::memcmp(to - n, pattern, n) == 0) {
            to -= n;
            *to++ = replacement;
        }
    }
    *to = 0;
}

static void Unescape(AK_String& value)
{
    static constexpr struct {
        const char* pattern;
        char character;
    } escapes[] = {
        {"%%n",  '\n'},
        {"%%t",  '\t'},
        {"%%q",  '"' },
        {"%%v",  '$' },
        {"\\\n", '\n'},
        {"\\\t", '\t'},
        {"\\\"", '"' }
    };
    for (const auto& escape : escapes) ReplaceToExhaustion(value, escape.pattern, escape.character);
}

int AK_Object::ParseCommandString(const AK_String& command, AK_String& cmd, AK_String& object, AK_String& attr,
                                  AK_String& value) const
{
    cmd = "";
    if (command.StartsWith("#")) return 0;
    if (!command.StartsWith("set(") && !command.StartsWith("get(")) return 1;
    cmd = AK_String(command.c_str(), command.c_str() + 3);

    const char* s = command.c_str() + 4;
    if (!TakeArgument(*this, s, object)) return 1;
    if (!TakeArgument(*this, s, attr)) return 2;

    const char* bracket = std::strrchr(command.c_str(), ')');
    if (!bracket) return 3;
    const char* first = std::strchr(s, '"');
    const char* last = std::strrchr(s, '"');
    const AK_String candidate = VariableCandidate(s, bracket, first, last);
    if (IsVariableName(candidate))
        value = cmd == "get" ? candidate : VariableValue(candidate);
    else if (first && first < last)
        value = AK_String(first + 1, last);
    else
        return 3;
    if (cmd == "get" && !value.StartsWith("$")) {
        AK_MSG("third argument of get() must be variable name!");
        return 4;
    }
    Unescape(value);
    return 0;
}

// ----------------------------------------------------------------------------------------------------------------
// Writing
// ----------------------------------------------------------------------------------------------------------------

static AK_String Escaped(const AK_String& value)
{
    AK_String text;
    text.Resize(3 * value.Length() + 1);
    char* to = &text[0];
    const char* dollar = std::strchr(value.c_str(), '$');
    if (dollar && !AK_Object::IsVariableName(dollar)) dollar = nullptr;
    for (const char* from = value.c_str(); *from; ++from) {
        const char escape = from == dollar ? 'v' : *from == '\n' ? 'n' : *from == '\t' ? 't' : *from == '"' ? 'q' : 0;
        if (escape) {
            *to++ = '%';
            *to++ = '%';
        }
        *to++ = escape ? escape : *from;
    }
    *to = 0;
    return AK_String(text.c_str());
}

AK_String AK_Object::CommandString(const AK_String& id, const AK_String& attr, const AK_String& value)
{
    return AK_String("set(\"") + id + "\", \"" + attr + "\", \"" + Escaped(value) + "\")";
}

AK_String AK_Object::CommandString(const AK_Object* relativeTo, const AK_String& attr, const AK_String& value) const
{
    return CommandString(IdAbs(relativeTo), attr, value);
}

AK_String AK_Object::CommandString(const AK_Object* relativeTo, const AK_Attribute* attribute, const AK_String& value,
                                   int forAllOfType) const
{
    if (!forAllOfType) return CommandString(relativeTo, attribute->_cmd, value);
    return CommandString(Root()->IdAbs(relativeTo), Type() + "::" + attribute->_cmd, value);
}

// ----------------------------------------------------------------------------------------------------------------
// Execution
// ----------------------------------------------------------------------------------------------------------------

void AK_Object::ExecCommand(const AK_String& command, int noExplain)
{
    const Call running(this);
    if (_reportCommands) AK_MSG(IdAbs() << " executing command '" << command << "'");
    AK_String cmd, path, attr, value;
    if (ParseCommandString(command, cmd, path, attr, value) != 0) {
        AK_MSG("invalid command string:" << command << " ignored!");
        return;
    }
    // An address means nothing in another process, so a recorded command must not carry one.
    if (cmd.IsEmpty() || value.StartsWith("%ak_ptr%")) return;

    const AK_String earlierStatus = _execStatus;
    _execStatus = "";
    AK_Object* target = path.IsEmpty() ? this : path == "root" ? Root() : ObjectById(path);
    if (!_execStatus.IsEmpty()) {   // what the path leads to could not be loaded: nothing must act on its defaults
        AK_MSG("error when executing '" << command << "':" << _execStatus);
        return;
    }
    _execStatus = earlierStatus;
    if (!target) {
        _execStatus = AK_String("object '") + path + "' not found";
        AK_MSG("could not execute command " << command << ", ignored!");
    } else if (cmd == "get") {
        SetVariableValue(value, target->Get(attr));
    } else if (target->ExplainCommand(command, attr, value, noExplain)) {
        const Call targetRunning(target);
        if (!target->Set(attr, value)) AK_MSG("could not execute command " << command << ", ignored!");
    }
    if (!_execStatus.IsEmpty()) AK_MSG("error when executing '" << command << "':" << _execStatus);
}
