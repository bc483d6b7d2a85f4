// A parse from text to result, and what a failed one takes back.
//
// yyerror jumps back here at the first error. What the parse has built until then is in three places: symbols and code
// of the active namespace, nodes that nothing owns yet, blocks of the garbage list. The undoing reaches the namespace
// that is active at the place of the error and no other. Hosts rely on that: after an error inside a function the items
// before it are still there, and that function's namespace is active.

#include "qvt_sci_Internal.h"

#include <algorithm>

// What the active namespace held when the parse began.
struct Before {
    Namespace* ns;
    Node* initCode;
    Node* exitCode;
    Symbol* last;
};
static Before before = {};

// ---------------------------------------------------------------------------------------------------------------------
// Init and exit code. What a namespace had before the parse is not touched while it may still fail: new code forms a
// pair with it, which is dissolved at the end.

void NamespaceAddInitCode(Node* code)
{
    Node*& initCode = gActiveNamespace->initCode;
    initCode = initCode == before.initCode ? SequenceNew(initCode, code) : SequenceAppend(initCode, code);
}

void NamespaceAddExitCode(Node* code) { gActiveNamespace->exitCode = SequenceNew(code, gActiveNamespace->exitCode); }

static bool IsSequence(const Node* node) { return node && node->type == OPERATOR && node->o.opr == ';'; }

// ((old...); new...) becomes (old...; new...): repeated parses into a namespace do not nest its init code.
static void JoinInitCode()
{
    Node* pair = before.ns->initCode;
    if (pair == before.initCode || !IsSequence(before.initCode)) return;
    for (int i = 1; i < pair->o.nOps; ++i) SequenceAppend(before.initCode, pair->o.ops[i]);
    pair->o.nOps = 0;
    NodeDelete(pair);
    before.ns->initCode = before.initCode;
}

// ---------------------------------------------------------------------------------------------------------------------
// Blocks that live for one parse

static Pile<void*> garbage = {};

void garbage_add(void* block)
{
    if (garbage.Push(block)) return;
    std::free(block);
    yyerror("out of memory for garbage");
}

void* garbage_malloc(size_t size)
{
    void* block = std::malloc(size);
    if (!block) yyerror("out of memory");
    garbage_add(block);
    return block;
}

// Only after a successful parse: what a failed one leaves goes with the next that succeeds.
void garbage_delete()
{
    while (garbage.count > 0) std::free(garbage.Pop());
    garbage.Free();
}

// ---------------------------------------------------------------------------------------------------------------------
// Undoing

// Symbols behind which a failed parse deletes: formals stay, since a function that has been declared knows them.
static Symbol* LastFormal(const Namespace* ns)
{
    Symbol* last = nullptr;
    for (Symbol* symbol = ns->symtab->first; symbol && symbol->qualifier == FORMAL_QUALIFIER; symbol = symbol->next) {
        last = symbol;
    }
    return last;
}

// The error lies between the items: all that the source declared goes. A table that is hashed deletes nothing.
static void UndoTopLevel()
{
    Namespace* ns = before.ns;
    if (!ns->symtab->hash) {
        TakeBackDefinitions();   // functions declared before this parse keep no body that refers to symbols of it
        SymtabDeleteAfter(ns->symtab, before.last);
    }
    if (ns->initCode != before.initCode) NodeDeleteExcept(ns->initCode, before.initCode);
    if (ns->exitCode != before.exitCode) NodeDeleteExcept(ns->exitCode, before.exitCode);
    ns->initCode = before.initCode;
    ns->exitCode = before.exitCode;
}

// The error lies inside a function, whose namespace stays active: the last symbol from before is not in it, so its
// symbols stay unless there was none. The codes from before land in it, but are not its own.
static void UndoInsideFunction()
{
    Namespace* local = gActiveNamespace;
    if (!before.last) SymtabDeleteAfter(local->symtab, LastFormal(local));
    local->initCode = before.initCode;
    local->exitCode = before.exitCode;
    local->borrowsCode = 1;
}

static void Undo()
{
    NodesDropUnowned();
    if (gActiveNamespace == before.ns) {
        UndoTopLevel();
    } else {
        UndoInsideFunction();
    }
    qvt_sci_reset_parser_after_syntax_error();
}

// ---------------------------------------------------------------------------------------------------------------------
// Parsing

// The whole rest of the file with a null byte behind it, malloc'd. Null if it is longer than any source is: the file
// may be a device without an end.
static char* ReadAll(FILE* file, size_t* length)
{
    Pile<char> text = {};
    int c;
    while ((c = std::fgetc(file)) != EOF && text.count < MAX_SOURCE) QVT_SCI_CHECK(text.Push(char(c)));
    if (c != EOF) {
        text.Free();
        qvt_sci_msg("source is longer than %d bytes\n", int(MAX_SOURCE));
        return nullptr;
    }
    *length = text.count;
    QVT_SCI_CHECK(text.Push(0));
    return text.items;
}

static void RememberNamespace()
{
    Namespace* ns = gActiveNamespace;
    if (ns->borrowsCode) {   // left by an earlier error, and not to be added to
        ns->initCode = nullptr;
        ns->exitCode = nullptr;
        ns->borrowsCode = 0;
    }
    before = {ns, ns->initCode, ns->exitCode, SymtabLastSymbol(ns->symtab)};
}

// Runs the parser over a text; errors have been reported and undone when this returns.
static void ParseText(const char* text, size_t length)
{
    ScannerStart(text, length);
    if (setjmp(syntax_error_jmp_buf) == 0) {
        yyparse();
        JoinInitCode();
        garbage_delete();
    } else {
        Undo();
    }
    ScannerEnd();
}

int qvt_sci_ParseAny(FILE* file, const char* text)
{
    CreateRootNamespace();
    RememberNamespace();
    ForgetDefinitions();
    nSyntaxErrors = 0;
    parsedCode = nullptr;

    int failed = 0;
    size_t length = 0;
    char* code = nullptr;
    if (text) {
        code = qvt_sci_UnmaskedCode(text);
        failed = qvt_sci_Preprocess(&code);
        parsedCode = code;
        length = std::strlen(code);
    } else if (file) {
        code = ReadAll(file, &length);
        failed = !code;
    }
    if (failed) {
        if (text) qvt_sci_msg("preprocessing failed\n");
        qvt_sci_flush_msg();
    } else {
        ParseText(code ? code : "", length);
    }
    std::free(code);
    parsedCode = nullptr;
    curLineNumber = -1;   // from here on code runs: yyerror must not jump

    const int errors = failed + nSyntaxErrors;
    if (errors > 0) {
        qvt_sci_msg("%d errors\n", errors);
        qvt_sci_flush_msg();
    }
    return errors;
}

int qvt_sci_Parse(FILE* file) { return qvt_sci_ParseAny(file, nullptr); }

int qvt_sci_ParseString(const char* text) { return qvt_sci_ParseAny(nullptr, text); }
