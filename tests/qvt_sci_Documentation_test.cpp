// Runs the examples of docs/formula-language.md and compares what they print with what stands behind them.

#include "qvt_sci_Program.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>

namespace {
struct Block {
    int line;
    std::string kind;   // what stands behind the opening marks; "#" for a heading between blocks
    std::string text;
};

std::vector<Block> ReadBlocks(const std::string& path)
{
    std::vector<Block> blocks;
    std::ifstream file(path);
    std::string line;
    bool isInside = false;
    for (int number = 1; std::getline(file, line); ++number) {
        if (line.rfind("```", 0) == 0) {
            isInside = !isInside;
            if (isInside) blocks.push_back({number, line.substr(3), ""});
        } else if (isInside) {
            blocks.back().text += line + "\n";
        } else if (line.rfind("## ", 0) == 0) {
            blocks.push_back({number, "#", ""});
        }
    }
    return blocks;
}

// Each line is found in the messages, behind the one before.
void ExpectLines(const std::string& lines, const std::string& messages)
{
    std::istringstream stream(lines);
    std::string line;
    for (size_t from = 0; std::getline(stream, line); from += line.size()) {
        from = messages.find(line, from);
        ASSERT_NE(from, std::string::npos) << "no \"" << line << "\" in:\n" << messages;
    }
}

// Stand-ins for the object layer's functions: one object that keeps what is set.
std::map<std::string, std::string> attributes;

int SetAttribute(const char*, const char* name, const char* value)
{
    attributes[name] = value;
    return 0;
}

void GetAttribute(const char*, const char* name, char* value)
{
    const std::string& text = attributes[name];
    const size_t room = size_t(std::max<int64_t>(qvt_sci_ArgLength(2), 1));
    std::snprintf(value, room, "%s", text.c_str());
}

class qvt_sci_Documentation : public testing::Test {
protected:
    void SetUp() override
    {
        _root = qvt_sci_NamespaceGetCurrent();
        _own = qvt_sci_NamespaceOpen();
        ASSERT_EQ(qvt_sci_ParseString("int set(char objId[], char attr[], char value[]);"
                                      "void get(char objId[], char attr[], char value[]);"),
                  0);
        qvt_sci_Bind("set", SetAttribute);
        qvt_sci_Bind("get", GetAttribute);
        std::filesystem::current_path(std::filesystem::temp_directory_path());
    }

    void TearDown() override
    {
        std::filesystem::current_path(_home);
        qvt_sci_NamespaceSwitchTo(_root);
        qvt_sci_NamespaceDestroy(_own);
    }

private:
    const std::filesystem::path _home = std::filesystem::current_path();
    Namespace* _root = nullptr;
    Namespace* _own = nullptr;
};
}   // namespace

TEST_F(qvt_sci_Documentation, ExamplesPrintWhatItSays)
{
    const std::vector<Block> blocks = ReadBlocks(KORVO_SOURCE_DIR "/docs/formula-language.md");
    std::string kept;
    int compared = 0;
    for (size_t i = 0; i < blocks.size(); ++i) {
        const Block& block = blocks[i];
        if (block.kind == "#") kept.clear();
        if (block.kind == "c keep") kept += block.text;
        if (block.kind != "c") continue;

        SCOPED_TRACE("docs/formula-language.md:" + std::to_string(block.line));
        const Block& expected = i + 1 < blocks.size() ? blocks[i + 1] : block;
        const bool hasMain = block.text.find("void main()") != std::string::npos;
        ProgramRecord record;
        RunProgram(kept + (hasMain ? block.text : "void main() {" + block.text + "}"), "", record);
        if (expected.kind == "error") {
            ExpectLines(expected.text, record.messages);
        } else {
            EXPECT_EQ(record.messages, "");
            EXPECT_EQ(record.output, expected.kind == "output" ? expected.text : "");
        }
        ++compared;
    }
    EXPECT_GT(compared, 12);
}

TEST_F(qvt_sci_Documentation, NamesAllThatIsPredefined)
{
    std::ostringstream text;
    text << std::ifstream(KORVO_SOURCE_DIR "/docs/formula-language.md").rdbuf();
    Namespace* const own = qvt_sci_NamespaceGetCurrent();
    Namespace* root = own;
    while (qvt_sci_NamespaceParent(root)) root = qvt_sci_NamespaceParent(root);
    qvt_sci_NamespaceSwitchTo(root);
    int names = 0;
    for (; const Symbol* symbol = qvt_sci_NextSymbol(); ++names) {
        const std::string name = std::string("`") + qvt_sci_SymbolName(symbol);
        EXPECT_TRUE(text.str().find(name + "`") != std::string::npos ||
                    text.str().find(name + "(") != std::string::npos)
            << name;
    }
    EXPECT_GT(names, 60);
    qvt_sci_NamespaceSwitchTo(own);
}
