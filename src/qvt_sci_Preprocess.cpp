// The preprocessor: #include and #define on the text level, before anything is scanned; and the masked form of source.
//
// Includes come first, and the search goes on at the begin of what was put in place, so that an included file's own
// includes are found; a file comes in once. Defines are then taken from the top, each replacing its key from its own
// line down to where the key is defined again. A directive that is done becomes a comment of the same length, so that
// line numbers count in the expanded text. Replacement knows nothing of strings and comments: a word in them is
// replaced too.
//
// Each #define can double the text, so that its size has a limit.

#include "qvt_sci_Internal.h"

#include <algorithm>
#include <iterator>
#include <string_view>

char* qvt_sci_includePathes = nullptr;

// ---------------------------------------------------------------------------------------------------------------------
// Include paths

void qvt_sci_AddIncludePath(const char* path)
{
    if (!path || !*path) return;
    const size_t old = qvt_sci_includePathes ? std::strlen(qvt_sci_includePathes) : 0;
    const size_t size = old + std::strlen(path) + 3;
    char* pathes = static_cast<char*>(std::realloc(qvt_sci_includePathes, size));
    QVT_SCI_CHECK(pathes);
    std::snprintf(pathes + old, size - old, "%s/\n", path);
    qvt_sci_includePathes = pathes;
}

void qvt_sci_ClearIncludePathes()
{
    std::free(qvt_sci_includePathes);
    qvt_sci_includePathes = nullptr;
}

// ---------------------------------------------------------------------------------------------------------------------
// Growing texts

static void Append(Pile<char>& text, const char* bytes, size_t length)
{
    QVT_SCI_CHECK(text.Reserve(length));
    if (length > 0) std::memcpy(text.items + text.count, bytes, length);
    text.count += length;
}

static void Append(Pile<char>& text, const char* bytes) { Append(text, bytes, std::strlen(bytes)); }

// *text becomes what the pile holds.
static void Exchange(char** text, Pile<char>& pile)
{
    Append(pile, "", 1);
    std::free(*text);
    *text = pile.items;
}

static char* Copy(const char* text)
{
    char* copy = strdup(text);
    QVT_SCI_CHECK(copy);
    return copy;
}

// ---------------------------------------------------------------------------------------------------------------------
// Masking

// Searching from the start after each replacement finds what the replacement itself completes. The same comes out of
// one pass in which a replacement goes back in front of the text that is still to be read: the occurrence that begins
// first is the one that ends first.
int qvt_sci_Replace(char** text, const char* from, const char* to)
{
    const size_t fromLength = std::strlen(from);
    if (fromLength == 0 || std::strstr(to, from) || !std::strstr(*text, from)) return 0;
    const size_t toLength = std::strlen(to);
    int replaced = 0;
    Pile<char> done = {};
    Pile<char> again = {};   // read before the rest, last first
    for (const char* rest = *text; again.count > 0 || *rest;) {
        const char c = again.count > 0 ? again.Pop() : *rest++;
        Append(done, &c, 1);
        if (done.count < fromLength || std::memcmp(done.items + done.count - fromLength, from, fromLength) != 0)
            continue;
        done.count -= fromLength;
        for (size_t i = toLength; i > 0; --i) Append(again, &to[i - 1], 1);
        ++replaced;
    }
    again.Free();
    Exchange(text, done);
    return replaced;
}

// ORDER MASKS   unmasking goes through them from the end
static const struct {
    const char* plain;
    const char* masked;
} masks[] = {
    // clang-format off
    {"\\", "%%b"},
    {"\n", "%%n"},
    {"\"", "%%q"},
    // clang-format on
};

char* qvt_sci_MaskedCode(const char* text)
{
    char* code = Copy(text);
    for (const auto& mask : masks) qvt_sci_Replace(&code, mask.plain, mask.masked);
    return code;
}

char* qvt_sci_UnmaskedCode(const char* text)
{
    char* code = Copy(text);
    for (size_t i = std::size(masks); i > 0; --i) qvt_sci_Replace(&code, masks[i - 1].masked, masks[i - 1].plain);
    return code;
}

// ---------------------------------------------------------------------------------------------------------------------
// Lines

// The first line from `from`, which is itself a line's begin, that begins with the keyword; null if there is none.
static char* FindDirective(char* from, const char* keyword)
{
    for (char* line = from; line;) {
        if (BeginsWith(line, keyword)) return line;
        line = std::strchr(line, '\n');
        if (line) ++line;
    }
    return nullptr;
}

static const char* LineEnd(const char* line) { return line + std::strcspn(line, "\n"); }

static void PrintLine(const char* line) { qvt_sci_msg("line: %.*s\n", int(LineEnd(line) - line), line); }

// ---------------------------------------------------------------------------------------------------------------------
// #include

static constexpr size_t MAX_INCLUDE_NAME = 511;
static constexpr size_t MAX_INCLUDE_PATH = 510;   // directory and name together; what is beyond is cut

// Is the name one of the lines of the list?
static bool IsInList(const Pile<char>& list, const char* name)
{
    const size_t length = std::strlen(name);
    for (size_t i = 0; i < list.count;) {
        const char* line = list.items + i;
        const size_t lineLength = size_t(static_cast<const char*>(std::memchr(line, '\n', list.count - i)) - line);
        if (lineLength == length && std::memcmp(line, name, length) == 0) return true;
        i += lineLength + 1;
    }
    return false;
}

// Opens the file under its own name, then in each of the include paths.
static FILE* OpenInclude(const char* name)
{
    if (FILE* file = qvt_sci_fopen(name, "rb")) return file;
    const char* directory = qvt_sci_includePathes ? qvt_sci_includePathes : "";
    while (*directory) {
        const char* end = LineEnd(directory);
        const size_t length = size_t(end - directory);
        if (length > MAX_INCLUDE_PATH) return nullptr;
        char path[MAX_INCLUDE_PATH + 1] = "";
        std::memcpy(path, directory, length);
        std::memcpy(path + length, name, std::min(std::strlen(name), MAX_INCLUDE_PATH - length));
        if (FILE* file = qvt_sci_fopen(path, "rb")) return file;
        directory = end + 1;
    }
    return nullptr;
}

// Appends the file, up to a null byte if it has one. False if the text gets too long.
static bool AppendFile(Pile<char>& text, FILE* file)
{
    for (int c = qvt_sci_fgetc(file); c != EOF && c != 0; c = qvt_sci_fgetc(file)) {
        if (text.count >= MAX_SOURCE) return false;
        const char byte = char(c);
        Append(text, &byte, 1);
    }
    return true;
}

static bool EndsWith(const char* text, const char* end)
{
    const size_t length = std::strlen(text);
    return length >= std::strlen(end) && std::strcmp(text + length - std::strlen(end), end) == 0;
}

// Puts the file in place of the text from `line` to `behind`. False, with a message, if it cannot be read.
static bool InsertFile(char** text, const char* line, const char* behind, const char* name)
{
    FILE* file = OpenInclude(name);
    if (!file) {
        qvt_sci_msg("cannot open include file '%s' in any of the following include directories:\n%s\n", name,
                    qvt_sci_includePathes ? qvt_sci_includePathes : "");
        return false;
    }
    Pile<char> expanded = {};
    Append(expanded, *text, size_t(line - *text));
    const bool enciphered = EndsWith(name, ".enc");   // there are no keys in this program
    if (enciphered) qvt_sci_msg("Sorry, no matching key to decrypt '%s'\n", name);
    const bool fits = !enciphered && AppendFile(expanded, file);
    if (!enciphered && !fits) qvt_sci_msg("source is too long with include file '%s'!\n", name);
    qvt_sci_fclose(file);
    if (!fits) {
        expanded.Free();
        return false;
    }
    Append(expanded, behind);
    Exchange(text, expanded);
    return true;
}

// One directive. False, with a message, if it is not sound.
static bool Include(char** text, char* line, Pile<char>& included)
{
    const char* end = LineEnd(line);
    if (!*end) {
        qvt_sci_msg("#include: no end of line found\n");
        return false;
    }
    const char* open = std::find(static_cast<const char*>(line), end, '"');
    if (open == end) {
        qvt_sci_msg("no quoted filename after #include\n");
        return false;
    }
    const char* close = std::find(open + 1, end, '"');
    if (close == end) {
        qvt_sci_msg("ending quote missing in #include statement\n");
        return false;
    }
    const size_t length = size_t(close - open - 1);
    if (length > MAX_INCLUDE_NAME) {
        qvt_sci_msg("include file name '%.*s' too long!\n", int(length), open + 1);
        return false;
    }
    char name[MAX_INCLUDE_NAME + 1];
    std::memcpy(name, open + 1, length);
    name[length] = 0;
    if (IsInList(included, name)) {
        std::memcpy(line, "//_ignr_", 8);
        return true;
    }
    Append(included, name);
    Append(included, "\n");
    return InsertFile(text, line, close + 1, name);
}

static int ExpandIncludes(char** text)
{
    Pile<char> included = {};   // names, each with a newline behind it
    int failed = 0;
    size_t offset = 0;   // all lines before are done; a file that is put in place begins at this line itself
    while (char* line = failed ? nullptr : FindDirective(*text + offset, "#include")) {
        offset = size_t(line - *text);
        if (Include(text, line, included)) continue;
        PrintLine(*text + offset);
        qvt_sci_msg("invalid #include!\n");
        failed = 1;
    }
    included.Free();
    return failed;
}

// ---------------------------------------------------------------------------------------------------------------------
// #define

static bool IsWordCharacter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

// The blank-delimited word before p, on the same line, is "#define".
static bool IsDefinedHere(const char* text, const char* p)
{
    while (p > text && IsBlank(p[-1])) --p;
    const char* end = p;
    while (p > text && !IsBlank(p[-1]) && p[-1] != '\n' && end - p <= 7) --p;   // longer is none
    return end - p == 7 && std::memcmp(p, "#define", 7) == 0;
}

struct Definition {
    std::string_view key;
    std::string_view value;
};

// For each prefix of the key: how long the longest shorter prefix is that also ends it. With these the search never
// goes back in the text (Knuth, Morris and Pratt 1977): a key can have megabytes and nearly match everywhere.
static Pile<uint32_t> BordersOf(std::string_view key)
{
    Pile<uint32_t> borders = {};
    uint32_t length = 0;
    for (size_t i = 0; i < key.size(); ++i) {
        while (length > 0 && key[i] != key[length]) length = borders.items[length - 1];
        if (i > 0 && key[i] == key[length]) ++length;
        QVT_SCI_CHECK(borders.Push(length));
    }
    return borders;
}

// Where the key next stands as a whole word from `from` on; npos if nowhere.
static size_t FindWord(std::string_view text, std::string_view key, const Pile<uint32_t>& borders, size_t from)
{
    size_t matched = 0;
    for (size_t i = from; i < text.size(); ++i) {
        while (matched > 0 && text[i] != key[matched]) matched = borders.items[matched - 1];
        if (text[i] == key[matched]) ++matched;
        if (matched < key.size()) continue;
        const size_t at = i + 1 - key.size();
        const bool begins = at == 0 || !IsWordCharacter(text[at - 1]);
        if (begins && (i + 1 == text.size() || !IsWordCharacter(text[i + 1]))) return at;
        matched = borders.items[matched - 1];
    }
    return text.npos;
}

// Replaces the key from `from` on as far as the definition reaches. A value that is not longer than the key keeps the
// text behind it in its place. False if the text gets too long.
static bool Substitute(char** text, const char* from, const Definition& definition)
{
    const std::string_view old = *text;
    const std::string_view key = definition.key;
    Pile<uint32_t> borders = BordersOf(key);
    Pile<char> expanded = {};
    size_t copied = 0;
    bool fits = true;
    for (size_t at = FindWord(old, key, borders, size_t(from - *text));
         fits && at != old.npos && !IsDefinedHere(*text, *text + at); at = FindWord(old, key, borders, copied)) {
        Append(expanded, *text + copied, at - copied);
        Append(expanded, definition.value.data(), definition.value.size());
        for (size_t i = definition.value.size(); i < key.size(); ++i) Append(expanded, " ", 1);
        copied = at + key.size();
        fits = expanded.count < MAX_SOURCE;
    }
    borders.Free();
    if (!fits) {
        expanded.Free();
        return false;
    }
    if (copied == 0) return true;   // the text does not have the key
    Append(expanded, *text + copied);
    Exchange(text, expanded);
    return true;
}

// One directive. False, with a message, if it is not sound.
static bool Define(char** text, char* line)
{
    const char* end = LineEnd(line);
    const char* key = line + std::strlen("#define");
    while (IsBlank(*key)) ++key;
    const char* keyEnd = key;
    while (keyEnd < end && !IsBlank(*keyEnd)) ++keyEnd;
    const char* value = keyEnd;
    while (IsBlank(*value)) ++value;
    const Definition definition = {
        // clang-format off
        {key,   size_t(keyEnd - key)},
        {value, size_t(end - value) }
        // clang-format on
    };
    if (definition.key.empty() || !*end) {
        PrintLine(line);
        qvt_sci_msg("incomplete define!\n");
        return false;
    }
    if (definition.key == definition.value) {
        PrintLine(line);
        qvt_sci_msg("invalid define: value must not be identical to key!\n");
        return false;
    }
    std::memcpy(line, "//_DEF_", 7);
    if (Substitute(text, end, definition)) return true;
    PrintLine(line);
    qvt_sci_msg("source is too long with this define!\n");
    return false;
}

static int ExpandDefines(char** text)
{
    size_t offset = 0;   // all lines before are done
    while (char* line = FindDirective(*text + offset, "#define")) {
        offset = size_t(line - *text);
        if (!Define(text, line)) return 1;
    }
    return 0;
}

int qvt_sci_Preprocess(char** text) { return ExpandIncludes(text) || ExpandDefines(text) ? 1 : 0; }
