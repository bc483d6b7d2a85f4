#include "qvt_sci_Fixture.h"

#include <vector>

using qvt_sci_Symbols_ = qvt_sci_Fixture;
using qvt_sci_Symtab = qvt_sci_Fixture;

static std::string Declarations(int count)
{
    std::string text;
    for (int i = 0; i < count; ++i) text += "int v" + std::to_string(i) + ";\n";
    return text;
}

static int CountSymbols()
{
    int count = 0;
    while (qvt_sci_NextSymbol()) ++count;
    return count;
}

TEST(qvt_sci_next_prime, IsTheSmallestPrimeAbove)
{
    const int cases[][2] = {
        // clang-format off
        {-5,  2  },
        {0,   2  },
        {1,   2  },
        {2,   3  },
        {3,   5  },
        {10,  11 },
        {22,  23 },
        {23,  29 },
        {48,  53 },
        {120, 127}
        // clang-format on
    };
    for (const auto& c : cases) EXPECT_EQ(next_prime(c[0]), c[1]) << c[0];
}

TEST_F(qvt_sci_Symtab, TurnsToHashingWithItsSymbol103AndIsForLookupOnlyFromThenOn)
{
    ASSERT_EQ(Parse(Declarations(102)), 0);
    EXPECT_EQ(own->symtab->hash, nullptr);
    EXPECT_EQ(CountSymbols(), 102);

    ASSERT_EQ(Parse("extern int more;"), 0);
    ASSERT_NE(own->symtab->hash, nullptr);
    EXPECT_EQ(own->symtab->hash->nSymbols, 103);
    EXPECT_EQ(own->symtab->hash->size, 11);
    EXPECT_EQ(CountSymbols(), 0);
    EXPECT_EQ(qvt_sci_SymbolRemove("v0"), 0);
    EXPECT_EQ(qvt_sci_NumUnboundExternSymbols(), 0);
    EXPECT_STREQ(qvt_sci_SymbolName(qvt_sci_Symbol("v101")), "v101");
    EXPECT_STREQ(qvt_sci_SymbolName(qvt_sci_Symbol("more")), "more");
    EXPECT_EQ(qvt_sci_Symbol("v102"), nullptr);
    Messages();
    SymtabPrint(own->symtab);
    EXPECT_EQ(Messages(), "______________________symbol table\n_______________end of symbol table\n");
}

TEST_F(qvt_sci_Symtab, GrowsWhenItsChainsAreElevenLongOnAverage)
{
    Symtab* symtab = SymtabNew();
    for (int i = 0; i < 1000; ++i) {
        SymtabAdd(symtab, SymbolNew(("s" + std::to_string(i)).c_str(), NO_QUALIFIER, VARIABLE_SYMBOL, INT_TYPE));
        const int size = !symtab->hash ? 0 : symtab->hash->size;
        const int count = i + 1;
        EXPECT_EQ(size, count < 103 ? 0 : count < 121 ? 11 : count < 253 ? 23 : count < 517 ? 47 : 97) << count;
    }
    for (int i = 0; i < 1000; ++i) EXPECT_NE(SymtabFind(symtab, ("s" + std::to_string(i)).c_str()), nullptr);
    SymtabDelete(symtab);
}

TEST_F(qvt_sci_Symtab, HashesTheSquaresOfTheBytesAndTellsHowEvenlyTheyLie)
{
    SymHashTab* tab = SymHashTabNew(2);
    EXPECT_EQ(SymHashTabIndex(tab, "b"), 0);      // 98 squared
    EXPECT_EQ(SymHashTabIndex(tab, "ab"), 1);     // 97 squared more
    EXPECT_EQ(SymHashTabIndex(tab, "\xff"), 1);   // -1 squared
    EXPECT_EQ(SymHashTabIndex(tab, std::string(500000, 'c').c_str()), 0);

    std::vector<Symbol*> symbols;
    for (const char* name : {"b", "bb", "d", "a"}) {
        symbols.push_back(SymbolNew(name, NO_QUALIFIER, VARIABLE_SYMBOL, INT_TYPE));
        SymHashTabInsert(tab, symbols.back());
    }
    SymHashTabPrintInfo(tab);
    EXPECT_EQ(Messages(), "SymHashTabInfo: size:2, symbols:4, (4), avg: 2, stdev: 1\n");
    SymHashTabDelete(tab);
    for (Symbol* symbol : symbols) SymbolDelete(symbol);
}

TEST_F(qvt_sci_Symtab, PrintsItsSymbolsAsDeclarations)
{
    ASSERT_EQ(Parse("double x; char s[2][3]; extern float ext[]; int f(int a);"), 0);
    SymtabPrintDecls(own->symtab);
    EXPECT_EQ(Messages(), "double x;\nchar s[2][3];\nfloat ext[-1];\nint f;\n");
    SymbolPrint(qvt_sci_Symbol("s"));
    EXPECT_EQ(Messages().find("symbol 's' ("), 0u);
}

TEST_F(qvt_sci_Symbols_, SayWhatTheyAre)
{
    ASSERT_EQ(Parse("double x; char s[3]; FILE* f; void g(int a) { a = x; }"), 0);
    const struct {
        const char *name, *type, *dataType;
        int referenced;
    } cases[] = {
        // clang-format off
        {"x", "var",  "double", 1},
        {"s", "arr",  "char",   0},
        {"f", "var",  "ptr",    0},
        {"g", "func", "void",   0}
        // clang-format on
    };
    for (const auto& c : cases) {
        const Symbol* symbol = qvt_sci_NextSymbol();
        EXPECT_EQ(symbol, qvt_sci_Symbol(c.name));
        EXPECT_STREQ(qvt_sci_SymbolName(symbol), c.name);
        EXPECT_STREQ(qvt_sci_SymbolType(symbol), c.type);
        EXPECT_STREQ(qvt_sci_SymbolDataType(symbol), c.dataType);
        EXPECT_EQ(qvt_sci_SymbolIsReferenced(symbol), c.referenced) << c.name;
    }
    EXPECT_EQ(qvt_sci_NextSymbol(), nullptr);
    EXPECT_EQ(qvt_sci_SymbolName(nullptr), nullptr);
    EXPECT_EQ(qvt_sci_SymbolType(nullptr), nullptr);
    EXPECT_EQ(qvt_sci_SymbolDataType(nullptr), nullptr);
}

TEST_F(qvt_sci_Symbols_, AreFoundInTheActiveNamespaceAlone)
{
    ASSERT_EQ(Parse("int a; double f(double x) { int b; return x; }"), 0);
    EXPECT_NE(qvt_sci_Symbol("f:b"), nullptr);
    EXPECT_NE(qvt_sci_Symbol("f:x"), nullptr);
    EXPECT_EQ(qvt_sci_AddressInFunction("f", "b"), qvt_sci_Symbol("f:b")->addr);
    EXPECT_EQ(qvt_sci_AddressInFunction("f", "c"), nullptr);
    EXPECT_EQ(qvt_sci_AddressInFunction("a", "b"), nullptr);
    EXPECT_EQ(qvt_sci_Symbol("f:c"), nullptr);
    EXPECT_EQ(qvt_sci_Symbol("a:b"), nullptr);
    EXPECT_EQ(qvt_sci_FuncPtr("a"), nullptr);
    EXPECT_NE(qvt_sci_FuncPtr("f"), nullptr);
    EXPECT_EQ(qvt_sci_FuncPtr("sin"), nullptr) << "it lives in the root";
    EXPECT_EQ(qvt_sci_Symbol(std::string(300, 'a').c_str()), nullptr);

    void* a = qvt_sci_Address("a");
    Namespace* child = qvt_sci_NamespaceOpen();
    EXPECT_EQ(qvt_sci_Symbol("a"), nullptr);
    EXPECT_EQ(qvt_sci_FuncPtr("f"), nullptr);
    EXPECT_EQ(qvt_sci_Address("a"), a) << "addresses are searched upward";
    EXPECT_EQ(qvt_sci_AddressInNamespace(child, "nothing"), nullptr);
    EXPECT_EQ(Messages(), "cannot find unknown symbol 'nothing'\n");
    EXPECT_EQ(qvt_sci_NamespaceClose(), 0);
}

TEST_F(qvt_sci_Symbols_, AreRemovedByName)
{
    ASSERT_EQ(Parse("int a; int b[3]; void f() { }"), 0);
    EXPECT_EQ(qvt_sci_NextSymbol(), qvt_sci_Symbol("a"));
    EXPECT_EQ(qvt_sci_SymbolRemove("a"), 1);
    EXPECT_EQ(qvt_sci_NextSymbol(), qvt_sci_Symbol("b")) << "a walk does not stand on what is gone";
    EXPECT_EQ(qvt_sci_SymbolRemove("a"), 0);
    EXPECT_EQ(qvt_sci_SymbolRemove("f"), 1);
    while (qvt_sci_NextSymbol()) {}
    EXPECT_EQ(CountSymbols(), 1);
}

TEST_F(qvt_sci_Symbols_, BindExternNamesToTheHost)
{
    double x = 5;
    double row[2] = {6, 7};
    ASSERT_EQ(Parse("extern double x; extern double row[]; int own; double f() { extern double x; return x + row[1]; }"
                    "double g(double a);"),
              0);
    EXPECT_EQ(qvt_sci_NumUnboundExternSymbols(), 3);
    EXPECT_EQ(Messages(), "unbound extern symbol x\nunbound extern symbol row\nunbound extern symbol g\n");
    EXPECT_EQ(qvt_sci_Bind("x", &x), qvt_sci_Symbol("x"));
    EXPECT_EQ(qvt_sci_Bind("row", row), qvt_sci_Symbol("row"));
    EXPECT_EQ(Value("f"), 12);

    EXPECT_EQ(qvt_sci_Bind("nothing", &x), nullptr);
    EXPECT_EQ(Messages(), "cannot bind unknown symbol 'nothing'\n");
    int elsewhere = 0;
    EXPECT_EQ(qvt_sci_Bind("own", &elsewhere), nullptr);
    EXPECT_EQ(Messages(), "cannot bind non-extern symbol 'own' to extern address\n");
    EXPECT_EQ(qvt_sci_Address("own"), &elsewhere) << "set all the same";
}

TEST_F(qvt_sci_Symbols_, UnboundOnesAreFoundInsideFunctions)
{
    ASSERT_EQ(Parse("void f() { extern int inner; inner = 1; }"), 0);
    EXPECT_EQ(qvt_sci_NumUnboundExternSymbols(), 1);
    EXPECT_EQ(Messages(), "unbound extern symbol inner\n");
}

TEST_F(qvt_sci_Symbols_, ExternReachesThroughAndOthersShadow)
{
    ASSERT_EQ(
        Parse("double x = 1; double y = 2; double v[2] = {3, 4};"
              "double f() { extern double x; double y; extern double v[2]; x = 10; y = 20; v[1] = 30; return y; }"),
        0);
    qvt_sci_InitAll();
    EXPECT_EQ(Value("f"), 20);
    EXPECT_EQ(*static_cast<double*>(qvt_sci_Address("x")), 10);
    EXPECT_EQ(*static_cast<double*>(qvt_sci_Address("y")), 2);
    EXPECT_EQ(static_cast<double*>(qvt_sci_Address("v"))[1], 30);
}

TEST_F(qvt_sci_Symbols_, ExternTwiceIsOneSymbolAndADefinitionFollowsItsPrototype)
{
    ASSERT_EQ(Parse("extern double x; extern double x; extern int m[][3]; extern int m[7][3];"
                    "double f(double a); double f(double b) { return b; }"),
              0);
    EXPECT_EQ(CountSymbols(), 3);
    EXPECT_EQ(qvt_sci_Symbol("f:a"), nullptr);
    EXPECT_NE(qvt_sci_Symbol("f:b"), nullptr) << "the second formal's name rules";
}

TEST_F(qvt_sci_Symbols_, CanBeRedefinedIfTheHostAllowsIt)
{
    const char* first = "int a = 1; int v[2]; double f(double x) { return x; }";
    const char* second = "int a = 2; int v[9]; double f(double y) { return 2*y; }";
    ASSERT_EQ(Parse(first), 0);
    Symbol* f = qvt_sci_FuncPtr("f");
    EXPECT_EQ(Parse(second), 1);
    EXPECT_NE(Messages().find("symbol 'a' already defined"), std::string::npos);

    qvt_sci_allow_symbol_redefinition(1);
    ASSERT_EQ(Parse(second), 0);
    EXPECT_EQ(qvt_sci_FuncPtr("f"), f);
    double x = 4;
    EXPECT_EQ(qvt_sci_AsDouble(qvt_sci_Call(f, &x)), 8);
    EXPECT_EQ(qvt_sci_Symbol("v")->arr.dims[0], 2) << "an array keeps its old dimensions";
    ASSERT_EQ(Parse("int n = 3, w[n]; int v[n]; int w[n + 1]; int w[2];"), 0);
    qvt_sci_InitAll();
    EXPECT_EQ(qvt_sci_Symbol("v")->arr.dims[0], 2) << "even against one that is computed";
    EXPECT_EQ(qvt_sci_Symbol("w")->arr.dims[0], 3);
    EXPECT_EQ(Parse("double a;"), 1);
    EXPECT_NE(Messages().find("symbol 'a' already used with differing declaration"), std::string::npos);
    EXPECT_EQ(Parse("int v[2][2];"), 1);
    EXPECT_NE(Messages().find("symbol 'v' already used with differing declaration"), std::string::npos);
}
