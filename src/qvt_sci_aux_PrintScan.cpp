// print, and the printf and scanf families.
//
// The arguments' types are known to the tree and not to the C library, so a format never goes to the library whole: it
// is split before each "%" but the first, and a piece and the next argument make one call. What follows from the split
// is part of the language and must stay, since scripts rely on it: arguments are evaluated as the output proceeds, too
// many are ignored, too few cut the format off behind the last piece used, and "%%" counts as two pieces of which the
// first takes an argument. Only sscanf with few variables makes a single call.
//
// No argument is read as what it is not: a piece is checked against its argument before the library sees it, numbers
// are converted to what the conversion wants, and texts keep within their arrays. Language code that an argument calls
// may raise a signal that the host answers with a jump: what a statement allocates hangs on a list.

#include "qvt_sci_aux_Builtin.h"

#include "qvt_sci.tab.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>

static constexpr int SSCANF_VARIABLES = 8;   // handled in one call; more are read by way of a temporary file

// ---------------------------------------------------------------------------------------------------------------------
// Statements under way

namespace {
// The format of one statement, which its own arguments could overwrite or free.
struct FormatCopy {
    FormatCopy* outer;
    FILE* file;   // what a sscanf reads from, or null
    char text[1];
};
}   // namespace

static FormatCopy* innermost = nullptr;

static FormatCopy* KeepFormat(const char* format, size_t length)
{
    FormatCopy* copy = static_cast<FormatCopy*>(std::malloc(sizeof(FormatCopy) + length));
    QVT_SCI_CHECK(copy);
    copy->outer = innermost;
    copy->file = nullptr;
    std::memcpy(copy->text, format, length);
    copy->text[length] = 0;
    innermost = copy;
    return copy;
}

static void DropFormatsFrom(const FormatCopy* outermost)
{
    for (bool isLast = false; innermost && !isLast;) {
        FormatCopy* const copy = innermost;
        isLast = copy == outermost;
        innermost = copy->outer;
        if (copy->file) qvt_sci_fclose(copy->file);
        std::free(copy);
    }
}

void ForgetFormats() { DropFormatsFrom(nullptr); }

// ---------------------------------------------------------------------------------------------------------------------
// Arguments

static bool IsText(const Node* node)
{
    return (node->type == ARRAY || node->type == SUBARRAY) && node->dataType == CHAR_TYPE;
}

// The value of an argument; one that lies nowhere (an extern variable that is not bound) counts as 0.
static Value ValueOf(int dataType, const void* address)
{
    Value value = {};
    if (address) std::memcpy(&value, address, size_t(sizeOf[dataType]));
    return value;
}

static double AsDouble(int dataType, const Value& value)
{
    switch (dataType) {
    case CHAR_TYPE: return value.c;
    case INT_TYPE: return value.i;
    case FLOAT_TYPE: return double(value.f);
    case DOUBLE_TYPE: return value.d;
    default: return double(intptr_t(value.p));
    }
}

static long AsLong(int dataType, const Value& value)
{
    if (dataType == CHAR_TYPE) return value.c;
    if (dataType == INT_TYPE) return value.i;
    if (dataType == PTR_TYPE) return long(intptr_t(value.p));
    const double x = AsDouble(dataType, value);
    return x >= -9223372036854775808.0 && x < 9223372036854775808.0 ? long(x) : INT64_MIN;
}

static int AsInt(int dataType, const Value& value)
{
    const bool isFloating = dataType == FLOAT_TYPE || dataType == DOUBLE_TYPE;
    return isFloating ? Convert<int>(AsDouble(dataType, value)) : int(AsLong(dataType, value));
}

// ---------------------------------------------------------------------------------------------------------------------
// Conversions of a format

namespace {
struct Conversion {
    const char* end;      // behind it
    bool hasStar;         // print: a width or precision from an argument; scan: nothing is stored
    bool isTooWide;       // print
    const char* digits;   // scan: where the width stands or would stand
    const char* size;     // behind the width: "hh", "l", ...
    int sizeLength;
    char kind;   // 'd', 's', ...; 0: a lone "%"
};
}   // namespace

// What the C library promises to print of one conversion. A wider one could ask it for any amount of memory.
static constexpr unsigned long WIDEST_FIELD = 4095;

static const char* SkipDigits(const char* p) { return p + std::strspn(p, "0123456789"); }

static bool IsTooWide(const char* digits) { return std::strtoul(digits, nullptr, 10) > WIDEST_FIELD; }

static void ReadSizeAndKind(Conversion& c, const char* p, const char* kinds)
{
    c.size = p;
    c.sizeLength = int(std::strspn(p, "hlLqjzZt"));
    p += c.sizeLength;
    c.kind = *p && std::strchr(kinds, *p) ? *p : '\0';
    c.end = c.kind ? p + 1 : p;
}

static Conversion ReadPrintConversion(const char* percent)
{
    Conversion c = {};
    const char* const flags = percent + 1;
    const char* const width = flags + std::strspn(flags, "-+ #0'*");
    const char* p = SkipDigits(width);
    c.isTooWide = p != width && IsTooWide(width);
    if (*p == '.') {
        const char* const precision = p + 1 + std::strspn(p + 1, "*");
        p = SkipDigits(precision);
        c.isTooWide |= p != precision && IsTooWide(precision);
    }
    c.hasStar = std::find(flags, p, '*') != p;
    ReadSizeAndKind(c, p, "diouxXeEfFgGaAcspn");
    return c;
}

// Behind "[", "]" as first character of a set, or first behind "^", does not end it. Null if nothing ends it.
static const char* EndOfSet(const char* p)
{
    if (*p == '^') ++p;
    if (*p == ']') ++p;
    p = std::strchr(p, ']');
    return p ? p + 1 : nullptr;
}

static Conversion ReadScanConversion(const char* percent)
{
    Conversion c = {};
    const char* p = percent + 1;
    c.hasStar = *p == '*';
    c.digits = p + (c.hasStar ? 1 : 0);
    ReadSizeAndKind(c, SkipDigits(c.digits), "diouxXeEfFgGaAcspn[");
    if (c.kind == '[') {
        const char* const end = EndOfSet(c.end);
        if (end) {
            c.end = end;
        } else {
            c.kind = 0;
        }
    }
    return c;
}

static bool SizeIs(const Conversion& c, const char* size)
{
    return int(std::strlen(size)) == c.sizeLength && std::memcmp(c.size, size, size_t(c.sizeLength)) == 0;
}

static bool IsOneOf(char c, const char* characters) { return c && std::strchr(characters, c); }

// ---------------------------------------------------------------------------------------------------------------------
// Statements

namespace {
enum Problem { NONE, BAD_FILE, BAD_STRING, BAD_FORMAT, STRING_TOO_SHORT };

enum Target { CONSOLE, FILE_STREAM, STRING };

struct Family {
    int opr;
    Target target;
    bool scans;
};

struct Statement {
    Family family;
    FILE* stream;    // fprintf, fscanf
    char* string;    // sprintf, sscanf
    size_t room;     // of the string
    size_t length;   // sprintf: what stands in it
    int scanned;     // the sum of the scan calls' results
};
}   // namespace

static const char* const problemTexts[] = {
    "",
    "\nqvt_sci_execute: ERROR: file pointer used with fprintf/fscanf is NULL\n",
    "\nqvt_sci_execute: ERROR: sprintf/sscanf to/from invalid character string\n",
    "\nqvt_sci_execute: ERROR: invalid format string\n",
    "\nqvt_sci_execute: ERROR: sprintf exceeding string length\n",
};

static const Family families[] = {
    // clang-format off
    {PRINTF,  CONSOLE,     false},
    {FPRINTF, FILE_STREAM, false},
    {SPRINTF, STRING,      false},
    {SCANF,   CONSOLE,     true },
    {FSCANF,  FILE_STREAM, true },
    {SSCANF,  STRING,      true },
    // clang-format on
};

static const Family& FamilyOf(int opr)
{
    return *std::find_if(std::begin(families), std::end(families), [opr](const Family& f) { return f.opr == opr; });
}

// ---------------------------------------------------------------------------------------------------------------------
// Printing

// What does not fit a string leaves it as it was.
template <class T>
static Problem Write(Statement& s, const char* piece, T value)
{
    if (s.stream) {
        qvt_sci_fprintf(s.stream, piece, value);
    } else if (!s.string) {
        qvt_sci_printf(piece, value);
    } else {
        const size_t left = s.room - s.length;
        const int length = std::snprintf(s.string + s.length, left, piece, value);
        if (length < 0 || size_t(length) >= left) {
            s.string[s.length] = 0;
            return STRING_TOO_SHORT;
        }
        s.length += size_t(length);
    }
    return NONE;
}

// A piece holds one "%" at most.
static Problem PrintPiece(Statement& s, const char* piece, Node* argument)
{
    const Conversion c = ReadPrintConversion(std::strchr(piece, '%'));
    const bool isText = c.kind == 's';
    const bool isWideText = (isText || c.kind == 'c') && c.sizeLength > 0;
    if (c.kind && (c.hasStar || c.isTooWide || c.kind == 'n' || isWideText)) return BAD_FORMAT;
    if (c.kind && (isText ? !IsText(argument) : argument->dataType == VOID_TYPE)) return BAD_FORMAT;

    const void* const address = argument->ex(argument);
    if (!c.kind) return Write(s, "%s", piece);
    if (isText) {
        const char* const text = static_cast<const char*>(address);
        return Write(s, piece, CText(text, RoomOf(NodeRoom(argument, text))).c_str());
    }
    const int type = argument->dataType;
    const Value value = ValueOf(type, address);
    if (IsOneOf(c.kind, "eEfFgGaA")) {
        if (SizeIs(c, "L")) return Write(s, piece, static_cast<long double>(AsDouble(type, value)));
        return Write(s, piece, AsDouble(type, value));
    }
    if (c.kind == 'p') return Write(s, piece, reinterpret_cast<void*>(AsLong(type, value)));
    if (c.sizeLength > 0 && !SizeIs(c, "h") && !SizeIs(c, "hh")) return Write(s, piece, AsLong(type, value));
    if (IsOneOf(c.kind, "dic")) return Write(s, piece, AsInt(type, value));
    return Write(s, piece, unsigned(AsLong(type, value)));
}

// A format without arguments has no conversions, but may have "%%". Works in place.
static Problem PrintPlain(Statement& s, char* format)
{
    char* end = format;
    for (const char* p = format; *p; ++p) {
        if (*p == '%' && p[1] == '%') {
            ++p;
        } else if (*p == '%' && ReadPrintConversion(p).kind) {
            return BAD_FORMAT;
        }
        *end++ = *p;
    }
    *end = 0;
    return Write(s, "%s", format);
}

// ---------------------------------------------------------------------------------------------------------------------
// Scanning

// Whether the variable is of the type that the conversion stores.
static bool Fits(const Conversion& c, const Node* variable)
{
    const int type = variable->dataType;
    if (IsOneOf(c.kind, "diouxXn")) {
        return type == (c.sizeLength == 0 ? INT_TYPE : SizeIs(c, "hh") ? CHAR_TYPE : VOID_TYPE);
    }
    if (IsOneOf(c.kind, "eEfFgGaA")) {
        return type == (c.sizeLength == 0 ? FLOAT_TYPE : SizeIs(c, "l") ? DOUBLE_TYPE : VOID_TYPE);
    }
    if (c.sizeLength > 0) return false;
    if (c.kind == 'p') return type == PTR_TYPE;
    return c.kind == 'c' ? type == CHAR_TYPE : IsText(variable);
}

// The width of a text conversion: what the format says, cut to the room. 0: there is no room.
static size_t TextWidth(const Conversion& c, size_t room)
{
    const size_t most = c.kind == 'c' ? room : room - std::min<size_t>(room, 1);
    const bool hasWidth = c.digits != c.size;
    if (!hasWidth) return c.kind == 'c' ? std::min<size_t>(most, 1) : most;
    return std::min(size_t(std::strtoul(c.digits, nullptr, 10)), most);
}

namespace {
struct Variables {
    Node* const* nodes;
    void* const* places;
    int count;
};
}   // namespace

// Appends one conversion to format, with its array's width if it stores text.
static bool AddScanConversion(std::string& format, const char* percent, const Conversion& c, const Node* variable,
                              const void* place)
{
    if (!place || !Fits(c, variable)) return false;
    if (!IsOneOf(c.kind, "cs[")) {
        format.append(percent, c.end);
        return true;
    }
    const size_t room = RoomOf(NodeRoom(variable, place));
    if (c.digits != c.size || c.kind == 'c' || room != UNKNOWN_ROOM) {
        const size_t width = TextWidth(c, room);
        if (width == 0) return false;
        format += "%" + std::to_string(std::min<size_t>(width, INT32_MAX));
    } else {
        format += "%";
    }
    format.append(c.size, c.end);
    return true;
}

// The format as the library may have it; false if a conversion does not fit its variable, or has none.
static bool MakeScanFormat(std::string& result, const char* format, const Variables& variables)
{
    int used = 0;
    for (const char* p = format; *p;) {
        if (*p != '%') {
            result += *p++;
            continue;
        }
        if (p[1] == '%' || !p[1]) {   // the latter: the first half of a "%%" that was split
            result += "%%";
            p += p[1] ? 2 : 1;
            continue;
        }
        const Conversion c = ReadScanConversion(p);
        if (!c.kind) return false;
        if (c.hasStar) {
            result.append(p, c.end);
        } else {
            if (used == variables.count) return false;
            if (!AddScanConversion(result, p, c, variables.nodes[used], variables.places[used])) return false;
            ++used;
        }
        p = c.end;
    }
    return true;
}

static Problem ScanPiece(Statement& s, const char* piece, Node* argument)
{
    void* const place = argument ? argument->ex(argument) : nullptr;
    std::string format;
    if (!MakeScanFormat(format, piece, {&argument, &place, argument ? 1 : 0})) return BAD_FORMAT;
    s.scanned += s.stream ? qvt_sci_fscanf(s.stream, format.c_str(), place) : qvt_sci_scanf(format.c_str(), place);
    return NONE;
}

static Problem ScanString(Statement& s, const char* format, Node* const* arguments, int count)
{
    void* places[SSCANF_VARIABLES] = {};
    for (int i = 0; i < count; ++i) places[i] = Keep(arguments[i], arguments[i]->ex(arguments[i])).place;
    for (int i = 0; i < count; ++i) places[i] = AddressOf({arguments[i], places[i]});
    std::string checked;
    if (!MakeScanFormat(checked, format, {arguments, places, count})) return BAD_FORMAT;
    s.scanned = std::sscanf(CText(s.string, s.room).c_str(), checked.c_str(), places[0], places[1], places[2],
                            places[3], places[4], places[5], places[6], places[7]);
    return NONE;
}

// ---------------------------------------------------------------------------------------------------------------------
// The split

static Problem print_or_scan(Statement& s, char* piece, Node* argument)
{
    if (s.family.scans) return ScanPiece(s, piece, argument);
    return argument ? PrintPiece(s, piece, argument) : PrintPlain(s, piece);
}

// The text before the first "%" belongs to the first piece.
static Problem SplitFormat(Statement& s, char* format, Node* const* arguments, int count)
{
    char* piece = format;
    char* percent = std::strchr(format, '%');
    for (int i = 0; i < count && percent; ++i) {
        char* const next = std::strchr(percent + 1, '%');
        if (next) *next = 0;
        const Problem problem = print_or_scan(s, piece, arguments[i]);
        if (problem) return problem;
        if (next) *next = '%';
        piece = percent = next;
    }
    return NONE;
}

// The string of a sscanf as a file; false if there is none to be had.
static bool SpoolString(Statement& s, FormatCopy* copy)
{
    copy->file = qvt_sci_tmpfile();
    if (!copy->file) return false;
    s.stream = copy->file;
    qvt_sci_fprintf(s.stream, "%s", CText(s.string, s.room).c_str());
    std::rewind(s.stream);
    return true;
}

static Problem RunFormat(Statement& s, FormatCopy* copy, Node* const* arguments, int count)
{
    if (s.family.target == STRING && s.family.scans) {
        if (count <= SSCANF_VARIABLES) return ScanString(s, copy->text, arguments, count);
        if (!SpoolString(s, copy)) return NONE;
    }
    if (count == 0) return print_or_scan(s, copy->text, nullptr);
    return SplitFormat(s, copy->text, arguments, count);
}

// Evaluates the first operand of those that have a destination before their format.
static Problem FindDestination(Statement& s, Node* node)
{
    void* const address = node->ex(node);
    if (s.family.target == FILE_STREAM) {
        s.stream = static_cast<FILE*>(ValueOf(PTR_TYPE, address).p);
        return s.stream && !IsSymbol(s.stream) ? NONE : BAD_FILE;
    }
    s.string = static_cast<char*>(address);
    if (!s.string) return BAD_STRING;
    s.room = RoomOf(NodeRoom(node, address));
    if (!s.family.scans) {
        s.room = std::min(s.room, RoomOf(NodeVecSize(node)));   // of an element no more than that
        if (s.room == 0) return BAD_STRING;
        s.string[0] = 0;
    }
    return NONE;
}

// operands: the format and what follows it.
static Problem RunWithDestination(Statement& s, Node* const* operands, int count)
{
    const char* const format = static_cast<const char*>(operands[0]->ex(operands[0]));
    if (!format) return BAD_FORMAT;
    FormatCopy* const copy = KeepFormat(format, TextLength(format, RoomOf(NodeRoom(operands[0], format))));
    const Problem problem = RunFormat(s, copy, operands + 1, count - 1);
    DropFormatsFrom(copy);
    return problem;
}

static Problem RunStatement(Statement& s, Node* const* operands, int count)
{
    if (s.family.target == CONSOLE) return RunWithDestination(s, operands, count);
    const Problem problem = FindDestination(s, operands[0]);
    if (problem) return problem;
    Loan string;
    Lend(string, s.string);
    const Problem later = RunWithDestination(s, operands + 1, count - 1);
    TakeBack(string);
    return later;
}

static void FlushOutput()
{
    if (qvt_sci_flush_stdout) qvt_sci_flush_stdout();
}

int RunPrintScan(Node* node)
{
    Statement s = {};
    s.family = FamilyOf(node->o.opr);
    const Problem problem = RunStatement(s, node->o.ops, node->o.nOps);
    if (problem) {
        currentNode = node;
        qvt_sci_msg("%s", problemTexts[problem]);
        RaiseSignal(SIGSEGV);
    } else if (node->o.opr == PRINTF) {
        FlushOutput();
    }
    return s.scanned;
}

// ---------------------------------------------------------------------------------------------------------------------
// print

static void PrintElement(int dataType, const Value& value)
{
    switch (dataType) {
    case CHAR_TYPE:
    case INT_TYPE: qvt_sci_printf(" %d", AsInt(dataType, value)); break;
    case FLOAT_TYPE:
    case DOUBLE_TYPE: qvt_sci_printf(" %g", AsDouble(dataType, value)); break;
    case PTR_TYPE: qvt_sci_printf(" %p", value.p); break;
    }
}

static void PrintText(Node* node)
{
    const char* const text = static_cast<const char*>(node->ex(node));
    qvt_sci_printf(" %s", CText(text, RoomOf(NodeRoom(node, text))).c_str());
}

// The node is evaluated anew for each element, and may find the array moved or shorter each time.
static void PrintArray(Node* node)
{
    for (int i = 0; i < NodeVecSize(node); ++i) {
        const char* const first = static_cast<const char*>(node->ex(node));
        if (!first || size_t(i) >= RoomOf(NodeRoom(node, first))) return;
        PrintElement(node->dataType, ValueOf(node->dataType, first + ptrdiff_t(i) * sizeOf[node->dataType]));
    }
}

// Scalars, and vectors that an operator computes.
static void PrintResult(Node* node)
{
    const char* const first = static_cast<const char*>(node->ex(node));
    const int count = NodeIsVector(node) ? NodeVecSize(node) : 1;
    for (int i = 0; i < count; ++i) {
        const char* const element = first ? first + ptrdiff_t(i) * sizeOf[node->dataType] : nullptr;
        PrintElement(node->dataType, ValueOf(node->dataType, element));
    }
}

int RunPrint(Node* node)
{
    for (int i = 0; i < node->o.nOps; ++i) {
        Node* const item = node->o.ops[i];
        if (IsText(item)) {
            PrintText(item);
        } else if (item->type == ARRAY || item->type == SUBARRAY) {
            PrintArray(item);
        } else {
            PrintResult(item);
        }
    }
    qvt_sci_printf("\n");
    FlushOutput();
    return 0;
}
