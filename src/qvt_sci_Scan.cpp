// The scanner: source text to tokens, and yyerror, which reports for scanner and parser alike.
//
// The longest match wins, keywords beat identifiers. The scanner works on a text in memory with a null byte behind it
// and keeps the line under way in curLineText for the reports. Two things that look like faults are the language's
// rules: the exponent letters d and D belong to a number but end its value (1.5D3 is 1.5), and a carriage return counts
// as a line of its own.
//
// yyerror leaves by longjmp: plain structures only.

#include "qvt_sci_Internal.h"

#include "qvt_sci.tab.h"

#include <algorithm>
#include <cstdarg>

int curLineNumber = -1;
char curLineText[256];
const char* parsedCode = nullptr;
int nSyntaxErrors = 0;
char mess[256];
jmp_buf syntax_error_jmp_buf;

static const char* source = "";   // the text being scanned, borrowed
static const char* sourceEnd = source;
static const char* token = source;   // the token being scanned
static const char* point = source;   // behind it
static size_t lineTextLength = 0;    // of curLineText
static int tokenLine = 1;            // of the token being scanned
static int lineBefore = 1;           // of the one before
static char* literal = nullptr;      // value of the last string literal while it has no other owner

static constexpr size_t LINE_TEXT_USED = 254;   // of curLineText: a token that would go beyond is left out

static void DropLiteral()
{
    std::free(literal);
    literal = nullptr;
}

static void ClearLineText()
{
    lineTextLength = 0;
    curLineText[0] = 0;
}

void ScannerStart(const char* text, size_t length)
{
    source = token = point = text;
    sourceEnd = text + length;
    curLineNumber = 1;
    tokenLine = lineBefore = 1;
    ClearLineText();
    DropLiteral();
}

void ScannerEnd()
{
    source = sourceEnd = token = point = "";
    DropLiteral();
}

void ScannerTextTaken() { literal = nullptr; }

// Where a rule needs the token behind it to be seen through, the parser has that token in hand already.
int SourceLine() { return yychar == YYEMPTY ? tokenLine : lineBefore; }

// ---------------------------------------------------------------------------------------------------------------------
// Characters. The byte behind the end reads as 0, which no token contains; a 0 within a file's text is no token either.

static bool IsDigit(char c) { return c >= '0' && c <= '9'; }
static bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
static const char* SkipDigits(const char* p)
{
    while (IsDigit(*p)) ++p;
    return p;
}

// End of the exponent that begins at p, or p if there is none: a letter without digits behind it is not one.
static const char* SkipExponent(const char* p)
{
    if (*p != 'e' && *p != 'E' && *p != 'd' && *p != 'D') return p;
    const char* digits = p[1] == '+' || p[1] == '-' ? p + 2 : p + 1;
    return IsDigit(*digits) ? SkipDigits(digits) : p;
}

// Ends the token at `end` and keeps its text for reports.
static void Take(const char* end)
{
    point = end;
    const size_t length = size_t(end - token);
    if (lineTextLength + length > LINE_TEXT_USED) return;
    std::memcpy(curLineText + lineTextLength, token, length);
    lineTextLength += length;
    curLineText[lineTextLength] = 0;
}

// ---------------------------------------------------------------------------------------------------------------------
// Names and numbers

static const struct {
    const char* text;
    int code;
    int dataType;
} keywords[] = {
    // clang-format off
    {"extern",    EXTERN,    0          },
    {"static",    STATIC,    0          },
    {"NULL",      NULL_T,    0          },
    {"EOF",       EOF_T,     0          },
    {"FILE",      PTR_T,     0          },
    {"FUNC",      PTR_T,     0          },
    {"resize",    RESIZE,    0          },
    {"exec",      EXEC,      0          },
    {"func_addr", FUNCADDR,  0          },
    {"func_call", FUNCCALL,  0          },
    {"iqsort",    IQSORT,    0          },
    {"break",     BREAK,     0          },
    {"continue",  CONTINUE,  0          },
    {"return",    RETURN,    0          },
    {"for",       FOR,       0          },
    {"while",     WHILE,     0          },
    {"if",        IF,        0          },
    {"else",      ELSE,      0          },
    {"print",     PRINT,     0          },
    {"printf",    PRINTF,    0          },
    {"fprintf",   FPRINTF,   0          },
    {"sprintf",   SPRINTF,   0          },
    {"scanf",     SCANF,     0          },
    {"fscanf",    FSCANF,    0          },
    {"sscanf",    SSCANF,    0          },
    {"void",      DATA_TYPE, VOID_TYPE  },
    {"char",      DATA_TYPE, CHAR_TYPE  },
    {"int",       DATA_TYPE, INT_TYPE   },
    {"float",     DATA_TYPE, FLOAT_TYPE },
    {"double",    DATA_TYPE, DOUBLE_TYPE},
    // clang-format on
};

static int Name(const char* end)
{
    const size_t length = size_t(end - token);
    for (const auto& keyword : keywords) {
        if (std::strncmp(keyword.text, token, length) != 0 || keyword.text[length] != 0) continue;
        yylval.dataType = keyword.dataType;
        return keyword.code;
    }
    char* name = static_cast<char*>(garbage_malloc(length + 1));   // it lives for this parse
    std::memcpy(name, token, length);
    name[length] = 0;
    yylval.name = name;
    return SYMBOL;
}

static int Number()
{
    const char* digits = SkipDigits(token);
    const char* end = *digits == '.' ? SkipDigits(digits + 1) : digits;
    end = SkipExponent(end);
    Take(end);
    if (end == digits) {
        yylval.integer = int(std::strtol(token, nullptr, 10));   // what is beyond 32 bits is lost
        return INTEGER;
    }
    yylval.floating = std::strtod(token, nullptr);   // stops at d and D
    return FLOATING;
}

// ---------------------------------------------------------------------------------------------------------------------
// Character and string literals

// End of the character literal at the token's begin, null if there is none.
static const char* CharLiteral()
{
    if (token[1] == '\\' && token[2] && std::strchr("nt\\", token[2]) && token[3] == '\'') {
        const char c = token[2];
        yylval.character = c == 'n' ? '\n' : c == 't' ? '\t' : '\\';
        return token + 4;
    }
    if (sourceEnd - token > 2 && token[1] != '\n' && token[2] == '\'') {
        yylval.character = token[1];
        return token + 3;
    }
    return nullptr;
}

// End of the quoted text that begins at p, null if it is not closed on its line.
static const char* QuotedEnd(const char* p)
{
    for (++p; p < sourceEnd && *p != '\n'; ++p) {
        if (*p == '"') return p + 1;
        if (*p == '\\') {   // a pair with the next character
            ++p;
            if (p >= sourceEnd || *p == '\n') return nullptr;
        }
    }
    return nullptr;
}

// Adjacent literals, and the white space behind each, are one token. Its end, null if the first is not closed.
static const char* TextEnd()
{
    const char* end = QuotedEnd(token);
    if (!end) return nullptr;
    for (;;) {
        while (IsBlank(*end) || *end == '\n') ++end;
        const char* next = *end == '"' ? QuotedEnd(end) : nullptr;
        if (!next) return end;
        end = next;
    }
}

// The value of the literals from the token's begin to `end`: what is between the quotes, with \", \n and \t replaced.
// There are no other escapes: all other pairs stay two characters.
static char* TextValue(const char* end)
{
    char* const value = static_cast<char*>(std::malloc(size_t(end - token) + 1));
    if (!value) yyerror("out of memory");
    char* out = value;
    bool quoted = false;
    for (const char* p = token; p < end; ++p) {
        if (*p == '"') {
            quoted = !quoted;
        } else if (!quoted) {
            continue;
        } else if (*p == '\\') {
            ++p;
            if (*p == '"' || *p == 'n' || *p == 't') {
                *out++ = *p == '"' ? '"' : *p == 'n' ? '\n' : '\t';
            } else {
                *out++ = '\\';
                *out++ = *p;
            }
        } else {
            *out++ = *p;
        }
    }
    *out = 0;
    return value;
}

static int Text(const char* end)
{
    DropLiteral();
    literal = TextValue(end);
    yylval.text = literal;
    for (const char* p = token; p < end; ++p) curLineNumber += *p == '\n';
    Take(end);
    return TEXT_LIT;
}

// ---------------------------------------------------------------------------------------------------------------------
// What is not a token

static void LineEnd()
{
    ++point;
    ++curLineNumber;
    ClearLineText();
}

// "//" to the end of the line. In a last line without a line end it is no comment but two tokens.
static bool LineComment()
{
    if (token[0] != '/' || token[1] != '/') return false;
    const void* end = std::memchr(token, '\n', size_t(sourceEnd - token));
    if (!end) return false;
    point = static_cast<const char*>(end);
    return true;
}

static bool BlockComment()
{
    if (token[0] != '/' || token[1] != '*') return false;
    for (point = token + 2; point < sourceEnd; ++point) {
        if (point[0] == '*' && point[1] == '/') {
            point += 2;
            return true;
        }
        curLineNumber += *point == '\n';
    }
    return true;   // the end of the input ends the comment
}

// A line that begins with "#" and that the preprocessor did not take.
static bool Directive()
{
    if (*token != '#' || (token != source && token[-1] != '\n')) return false;
    const void* lineEnd = std::memchr(token, '\n', size_t(sourceEnd - token));
    point = lineEnd ? static_cast<const char*>(lineEnd) : sourceEnd;
    if (point > token && point[-1] == '\r') --point;
    qvt_sci_printf("ignoring preprocessor directive %.*s\n", int(point - token), token);
    return true;
}

// Skips what stands before the next token; false at the end of the input.
static bool SkipToToken()
{
    for (;;) {
        token = point;
        if (token >= sourceEnd) return false;
        if (*token == '\n' || *token == '\r') {
            LineEnd();
        } else if (IsBlank(*token)) {
            const char* end = token;
            while (IsBlank(*end)) ++end;
            Take(end);
        } else if (!LineComment() && !BlockComment() && !Directive()) {
            return true;
        }
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Tokens

static int OperatorToken()
{
    static const struct {
        char text[3];
        int code;
    } pairs[] = {
        // clang-format off
        {"+=", ADD  },
        {"-=", SUB  },
        {"*=", MULT },
        {"/=", DIV  },
        {"||", OR   },
        {"&&", AND  },
        {">=", GE   },
        {"<=", LE   },
        {"==", EQ   },
        {"!=", NE   },
        {"**", POWER},
        {"++", INC  },
        {"--", DEC  },
        // clang-format on
    };
    for (const auto& pair : pairs) {
        if (token[0] == pair.text[0] && token[1] == pair.text[1]) {
            Take(token + 2);
            return pair.code;
        }
    }
    if (!*token || !std::strchr("!%()*+,-./:;<=>?[]^{|}", *token)) return 0;
    Take(token + 1);
    return *token;
}

static int UnknownCharacter()
{
    point = token + 1;
    yyerror("Unknown character");
    return YYUNDEF;
}

int yylex()
{
    const char* const before = token;
    const bool found = SkipToToken();
    lineBefore = tokenLine;
    tokenLine += int(std::count(before, token, '\n'));
    if (!found) return 0;
    if (IsLetter(*token)) {
        const char* end = token;
        while (IsLetter(*end) || IsDigit(*end)) ++end;
        Take(end);
        return Name(end);
    }
    if (IsDigit(*token) || (*token == '.' && IsDigit(token[1]))) return Number();
    if (*token == '"') {
        const char* end = TextEnd();
        return end ? Text(end) : UnknownCharacter();
    }
    if (*token == '\'') {
        const char* end = CharLiteral();
        if (!end) return UnknownCharacter();
        Take(end);
        return CHAR;
    }
    const int code = OperatorToken();
    return code ? code : UnknownCharacter();
}

// ---------------------------------------------------------------------------------------------------------------------
// Reports

// Protected sources stand between these two lines; a listing does not show them.
static constexpr char HIDDEN_START[] = "//ENC-START\n";
static constexpr char HIDDEN_END[] = "//ENC-END\n";

// Prints the lines around curLineNumber with a mark on it.
static void ListSource()
{
    static constexpr int LINES_BEFORE = 29;
    static constexpr int LINES_BEHIND = 5;
    bool hidden = false;
    int number = 1;
    for (const char* line = parsedCode; *line && number <= curLineNumber + LINES_BEHIND; ++number) {
        const bool listed = number >= curLineNumber - LINES_BEFORE;
        const size_t length = std::strcspn(line, "\n");
        if (BeginsWith(line, HIDDEN_START)) {
            hidden = true;
            if (listed) qvt_sci_msg("%c%6d...hiding encrypted code...\n", ' ', number);
        } else if (BeginsWith(line, HIDDEN_END)) {
            hidden = false;
        } else if (!hidden && listed) {
            qvt_sci_msg("%c%6d:  %.*s\n", number == curLineNumber ? 'X' : ' ', number, int(length), line);
        }
        line += length + (line[length] == '\n' ? 1 : 0);
    }
    qvt_sci_msg("\n");
}

void yyerror(const char* message)
{
    const bool running = curLineNumber < 0;
    if (parsedCode && !running) ListSource();
    ++nSyntaxErrors;
    if (running) {
        qvt_sci_msg("ERROR: %s\n", message);
        return;
    }
    if (std::strcmp(message, "Unknown character") == 0) {
        qvt_sci_msg("line %d, after '%s': invalid character\n", curLineNumber, curLineText);
    } else {
        qvt_sci_msg("line %d: in '%s'\n", curLineNumber, curLineText);
        qvt_sci_msg("line %d, before '%.*s': %s\n", curLineNumber, int(point - token), token, message);
    }
    std::longjmp(syntax_error_jmp_buf, 1);
}

void yyerrorf(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(mess, sizeof mess, format, arguments);
    va_end(arguments);
    yyerror(mess);
}
