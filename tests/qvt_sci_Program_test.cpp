// Runs every program file of tests/data/qvt_sci; the form of the files stands in qvt_sci_Program.h.

#include "qvt_sci_Program.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace {
std::vector<std::string> ProgramFiles()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(KORVO_SOURCE_DIR "/tests/data/qvt_sci"))
        if (entry.path().extension() == ".qvt") names.push_back(entry.path().stem());
    std::sort(names.begin(), names.end());
    return names;
}

// Programs that write files do so in a directory that lives as long as the test.
class qvt_sci_Program : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override
    {
        std::string name = std::filesystem::temp_directory_path() / "qvt_sci_XXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        _scratch = name;
        std::filesystem::current_path(_scratch);
    }

    void TearDown() override
    {
        std::filesystem::current_path(_home);
        std::filesystem::remove_all(_scratch);
    }

private:
    const std::filesystem::path _home = std::filesystem::current_path();
    std::filesystem::path _scratch;
};

std::string EndingOf(const ProgramRecord& record)
{
    if (record.signals.empty()) return "";
    return "signal " + std::to_string(record.signals.front()) + (record.raiseReturns ? " ignored" : "");
}

void ExpectMessages(const std::vector<std::string>& expected, const std::string& messages)
{
    if (expected.empty()) {
        EXPECT_EQ(messages, "");
        return;
    }
    size_t from = 0;
    for (const std::string& part : expected) {
        const size_t found = messages.find(part, from);
        if (found == std::string::npos) {
            ADD_FAILURE() << "no message \"" << part << "\" in:\n" << messages;
            return;
        }
        from = found + part.size();
    }
}
}   // namespace

TEST_P(qvt_sci_Program, DoesWhatItsFileSays)
{
    const std::vector<ProgramCase> cases =
        ReadProgramCases(KORVO_SOURCE_DIR "/tests/data/qvt_sci/" + GetParam() + ".qvt");
    ASSERT_FALSE(cases.empty());
    for (const ProgramCase& c : cases) {
        SCOPED_TRACE(c.where + ": " + c.name);
        ProgramRecord record;
        record.raiseReturns = c.ending.find("ignored") != std::string::npos;
        std::string ending;
        if (c.ending.rfind("exit", 0) == 0 || c.ending.rfind("abort", 0) == 0) {
            ending = RunProgramInChild(c.text, c.input, record) + (record.raiseReturns ? " ignored" : "");
        } else {
            RunProgram(c.text, c.input, record);
            ending = EndingOf(record);
        }
        EXPECT_EQ(record.output, c.output);
        EXPECT_EQ(ending, c.ending);
        ExpectMessages(c.messages, record.messages);
        EXPECT_EQ(qvt_sci_StackDepth(), 0) << "the run left functions behind";
    }
}

INSTANTIATE_TEST_SUITE_P(Files, qvt_sci_Program, testing::ValuesIn(ProgramFiles()),
                         [](const auto& info) { return info.param; });
