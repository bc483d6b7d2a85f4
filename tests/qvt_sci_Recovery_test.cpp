// A parse can fail at any token of any program: the next one works, and nothing is left that the language does not say
// is left.

#include "qvt_sci_Fixture.h"

#include "qvt_sci_Program.h"

#include <cctype>
#include <filesystem>

namespace {
/// Source cut into tokens, roughly: what stands between two cuts belongs together.
std::vector<std::string> Tokens(const std::string& text)
{
    std::vector<std::string> tokens;
    for (size_t i = 0; i < text.size();) {
        size_t end = i + 1;
        if (std::isalnum(text[i])) {
            while (end < text.size() && (std::isalnum(text[end]) || text[end] == '_' || text[end] == '.')) ++end;
        } else if (text[i] == '"') {
            while (end < text.size() && text[end - 1 + (end == i + 1)] != '"' && text[end] != '\n') ++end;
        }
        tokens.push_back(text.substr(i, end - i));
        i = end;
    }
    return tokens;
}

std::string Join(const std::vector<std::string>& tokens)
{
    std::string text;
    for (const std::string& token : tokens) text += token;
    return text;
}

/// The text with one thing wrong at each of its tokens: an unknown character before it, the token gone, twice, the end
/// of the text.
std::vector<std::string> Spoiled(const std::string& text)
{
    const std::vector<std::string> tokens = Tokens(text);
    std::vector<std::string> spoiled;
    for (size_t i = 0; i < tokens.size(); ++i) {
        if (std::isspace(tokens[i][0])) continue;
        std::vector<std::string> other = tokens;
        other[i] = "$" + tokens[i];
        spoiled.push_back(Join(other));
        other[i] = "";
        spoiled.push_back(Join(other));
        other[i] = tokens[i] + " " + tokens[i];
        spoiled.push_back(Join(other));
        other.resize(i);
        spoiled.push_back(Join(other));
    }
    return spoiled;
}

std::vector<std::string> Programs()
{
    std::vector<std::string> programs;
    for (const auto& entry : std::filesystem::directory_iterator(KORVO_SOURCE_DIR "/tests/data/qvt_sci")) {
        for (const ProgramCase& c : ReadProgramCases(entry.path())) {
            programs.push_back(c.text.find("void main()") != std::string::npos ? c.text
                                                                               : "void main(){" + c.text + "}");
        }
    }
    return programs;
}

int Silent(const char*, ...) { return 0; }
FILE* NoFile(const char*, const char*) { return nullptr; }
}   // namespace

class qvt_sci_Recovery : public qvt_sci_Fixture {
protected:
    void SetUp() override
    {
        qvt_sci_Fixture::SetUp();
        qvt_sci_fopen = NoFile;
        qvt_sci_printf = Silent;   // "ignoring preprocessor directive"
    }

    void TearDown() override
    {
        qvt_sci_fopen = fopen;
        qvt_sci_printf = printf;
        qvt_sci_Fixture::TearDown();
    }

    /// Parses each text and then a sound one into the same namespace.
    void ExpectRecovery(const std::vector<std::string>& texts)
    {
        for (const std::string& text : texts) {
            Namespace* ns = qvt_sci_NamespaceOpen();
            qvt_sci_ParseString(text.c_str());
            qvt_sci_NamespaceSwitchTo(ns);
            Messages();
            ASSERT_EQ(qvt_sci_ParseString("double sound(double q) { return q + 1; }"), 0) << Messages() << "after\n"
                                                                                          << text;
            double q = 2;
            ASSERT_EQ(qvt_sci_AsDouble(qvt_sci_Call(qvt_sci_FuncPtr("sound"), &q)), 3) << "after\n" << text;
            ASSERT_EQ(qvt_sci_NamespaceClose(), 0);
        }
    }
};

TEST_F(qvt_sci_Recovery, TheNextParseWorksAfterAnErrorAtAnyTokenAndNothingLeaks)
{
    std::vector<std::string> spoiled;
    for (const std::string& program : Programs()) {
        const std::vector<std::string> some = Spoiled(program);
        spoiled.insert(spoiled.end(), some.begin(), some.end());
    }
    ASSERT_GT(spoiled.size(), 1000u);
    ExpectRecovery(spoiled);
    const size_t before = mallinfo2().uordblks;   // 0 under a sanitizer, which finds leaks by itself
    ExpectRecovery(spoiled);
    EXPECT_LE(mallinfo2().uordblks, before + spoiled.size()) << "less than a byte a parse: malloc's own caches";
}

// ---------------------------------------------------------------------------------------------------------------------
// Size

TEST_F(qvt_sci_Recovery, WhatNestsTooDeepIsRefused)
{
    for (const char* opening : {"(", "-", "{", "!", "x[", "(1+", "if(1) ", "|", "x?", "while(1) { ", "f("}) {
        EXPECT_EQ(Parse("int x[1]; int f(int a) { " + Repeated(opening + std::string("\n"), 100000)), 1);
        EXPECT_NE(Messages().find("yacc stack overflow"), std::string::npos) << opening;
        qvt_sci_DeleteAll();
    }
    const int deep = 1500;
    ASSERT_EQ(Parse("double f() { return " + Repeated("(1+", deep) + "0.5" + Repeated(")", deep) + "; }"), 0);
    EXPECT_EQ(Value("f"), deep + 0.5);
}
