// Hostile source: whatever the text, the parse comes back, the next one works and the namespace goes without a trace.
//
// Nothing of the text is run. #include finds the text itself, so that expansion is reached without touching files.

#include "qvt_sci.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

static std::string text;

static FILE* OpenText(const char*, const char*)
{
    return text.empty() ? nullptr : fmemopen(text.data(), text.size(), "rb");
}

static int Silent(const char*, ...)
{
    return 0;
}
static void NoFlush() {}

static void ParseInto(Namespace* ns, bool asFile)
{
    FILE* file = asFile ? OpenText(nullptr, nullptr) : nullptr;
    qvt_sci_ParseAny(file, file ? nullptr : text.c_str());
    if (file) std::fclose(file);
    qvt_sci_NamespaceSwitchTo(ns);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 1) return 0;
    qvt_sci_fopen = OpenText;
    qvt_sci_printf = Silent;
    qvt_sci_ResetPrintf(Silent, NoFlush);
    text.assign(reinterpret_cast<const char*>(data) + 1, size - 1);

    Namespace* ns = qvt_sci_NamespaceOpen();
    qvt_sci_allow_symbol_redefinition(data[0] & 1);
    ParseInto(ns, data[0] & 2);
    if (data[0] & 4) ParseInto(ns, false);   // once more into what the first has left
    while (const Symbol* symbol = qvt_sci_NextSymbol()) {
        qvt_sci_PrintFunctionCode(symbol);
        qvt_sci_PrintFunctionTree(symbol);
    }
    qvt_sci_NumUnboundExternSymbols();
    qvt_sci_allow_symbol_redefinition(0);
    if (qvt_sci_NamespaceOpen() && qvt_sci_ParseString("double sound(double q) { return q + 1; }") != 0) std::abort();
    double q = 2;
    if (qvt_sci_AsDouble(qvt_sci_Call(qvt_sci_FuncPtr("sound"), &q)) != 3) std::abort();
    qvt_sci_NamespaceClose();
    qvt_sci_Clear();
    qvt_sci_NamespaceClose();
    return 0;
}
