// Reading what was typed behind a subcommand, in the conventions of GNU.

#include "KORVO.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <numeric>

bool KORVO_SplitAssignment(const std::string& text, std::string& name, std::string& value)
{
    const size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0) return false;
    name = text.substr(0, equals);
    value = text.substr(equals + 1);
    return true;
}

// Letters to insert, remove, exchange or swap with their neighbour (Damerau 1964, with adjacent swaps only).
static size_t Distance(const std::string& a, const std::string& b)
{
    std::vector<size_t> before, above(b.size() + 1), row(b.size() + 1);
    std::iota(above.begin(), above.end(), 0);
    for (size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + (a[i - 1] != b[j - 1])});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
        before = above;
        above = row;
    }
    return above[b.size()];
}

std::string KORVO_Nearest(const std::string& word, std::span<const std::string> names)
{
    static constexpr size_t longestWord = 200;   // the work grows with its length
    const std::string start = word.substr(0, longestWord);
    const auto nearest = std::min_element(names.begin(), names.end(), [&](const auto& a, const auto& b) {
        return Distance(start, a) < Distance(start, b);
    });
    return nearest == names.end() ? "" : *nearest;
}

// ----------------------------------------------------------------------------------------------------------------
// Errors
// ----------------------------------------------------------------------------------------------------------------

std::string KORVO_Sentence(std::string text)
{
    for (const char* mark : {"ERROR:", "WARNING:", "INFO:"})
        if (text.starts_with(mark)) text.erase(0, std::strlen(mark));
    text.erase(0, std::min(text.find_first_not_of(" \n"), text.size()));
    text.erase(text.find_last_not_of('\n') + 1);
    for (size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at)) text.replace(at, 1, "; ");
    return text;
}

static void Tell(const KORVO_Subcommand& subcommand, const std::string& text)
{
    std::fflush(stdout);
    std::fprintf(stderr, "korvo %s: %s\n", subcommand.name, KORVO_Sentence(text).c_str());
}

int KORVO_Arguments::BadUsage(const std::string& sentence) const
{
    Tell(_subcommand, sentence);
    std::fprintf(stderr, InLanguage("'korvo help %s' tells what there is.\n", "'korvo help %s' sagt, was es gibt.\n"),
                 _subcommand.name);
    return KORVO_BAD_USAGE;
}

int KORVO_Arguments::Failed(const std::string& sentence) const
{
    Tell(_subcommand, sentence);
    return KORVO_FAILED;
}

bool KORVO_Arguments::Refuse(const std::string& sentence) const
{
    BadUsage(sentence);
    return false;
}

// ----------------------------------------------------------------------------------------------------------------
// Reading
// ----------------------------------------------------------------------------------------------------------------

const KORVO_Option* KORVO_Arguments::Find(const std::string& name) const
{
    for (const auto options : {_subcommand.options, KORVO_CommonOptions()})
        for (const KORVO_Option& option : options)
            if (name == option.name) return &option;
    return nullptr;
}

static std::string NearestOption(const KORVO_Subcommand& subcommand, const std::string& name)
{
    std::vector<std::string> names;
    for (const auto options : {subcommand.options, KORVO_CommonOptions()})
        for (const KORVO_Option& option : options) names.push_back(option.name);
    return "--" + KORVO_Nearest(name, names);
}

// argv[i] is the option. A value that begins with "--" is taken for the next option, whose predecessor misses its own;
// behind "=" it is what it is.
bool KORVO_Arguments::TakeOption(const std::string& word, int argc, const char* const* argv, int& i)
{
    const size_t equals = word.find('=');
    const std::string shown = word.substr(0, equals);
    const std::string name = shown.substr(std::min(shown.find_first_not_of('-'), shown.size()));
    const KORVO_Option* option = word.starts_with("--") ? Find(name) : nullptr;
    if (!option)
        return Refuse(InLanguage("unknown option '", "unbekannte Option '") + shown +
                      InLanguage("'; the nearest is '", "'; am naechsten ist '") + NearestOption(_subcommand, name) +
                      "'");
    if (Has(option->name) && !option->repeats)
        return Refuse(InLanguage("option '", "Option '") + shown +
                      InLanguage("' is given twice", "' steht zweimal da"));
    if (!option->value) {
        if (equals != std::string::npos)
            return Refuse(InLanguage("option '", "Option '") + shown +
                          InLanguage("' takes no value", "' hat keinen Wert"));
        _given.push_back({option, ""});
        return true;
    }
    const bool follows = i + 1 < argc && std::string(argv[i + 1]).substr(0, 2) != "--";
    const std::string value = equals != std::string::npos ? word.substr(equals + 1) : follows ? argv[++i] : "";
    if (value.empty())
        return Refuse(InLanguage("option '", "Option '") + shown +
                      InLanguage("' needs a value: ", "' braucht einen Wert: ") + option->value);
    _given.push_back({option, value});
    return true;
}

// Before anything is refused: the sentences are in this language.
static void TakeLanguage(int argc, const char* const* argv)
{
    for (int i = 0; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--") return;
        if (word == "--lang=de" || (word == "--lang" && i + 1 < argc && std::string(argv[i + 1]) == "de")) {
            AK_Object::_language = "german";
            AK_Object::_lang = 1;
        }
    }
}

bool KORVO_Arguments::Read(int argc, const char* const* argv)
{
    TakeLanguage(argc, argv);
    _typed.assign(argv, argv + argc);
    bool areWords = false;   // behind "--"
    for (int i = 0; i < argc; ++i) {
        const std::string word = argv[i];
        if (areWords || word.size() < 2 || word[0] != '-')
            _words.push_back(word);
        else if (word == "--")
            areWords = true;
        else if (!TakeOption(word, argc, argv, i))
            return false;
    }
    if (Has("help")) return true;   // whatever else there is or is missing
    const std::string language = Value("lang");
    if (!language.empty() && language != "en" && language != "de")
        return Refuse(
            InLanguage("option '--lang' is 'en' or 'de', not '", "Option '--lang' ist 'en' oder 'de', nicht '") +
            language + "'");
    if (int(_words.size()) < _subcommand.minWords)
        return Refuse(InLanguage("there is no ", "es fehlt: ") + std::string(_subcommand.words));
    if (int(_words.size()) > _subcommand.maxWords)
        return Refuse(InLanguage("too much: '", "zu viel: '") + _words[size_t(_subcommand.maxWords)] + "'");
    return true;
}

bool KORVO_Arguments::Has(const char* option) const
{
    return std::any_of(_given.begin(), _given.end(),
                       [&](const Given& given) { return std::string(given.option->name) == option; });
}

std::string KORVO_Arguments::Value(const char* option) const
{
    const std::vector<std::string> values = Values(option);
    return values.empty() ? "" : values.back();
}

std::vector<std::string> KORVO_Arguments::Values(const char* option) const
{
    std::vector<std::string> values;
    for (const Given& given : _given)
        if (std::string(given.option->name) == option) values.push_back(given.value);
    return values;
}
