// Calls of subcommands from outside: both channels and the status.

#pragma once

#include "SW_Workspace_TestSupport.h"

#include <algorithm>

/// What a call said on both channels, and its status.
struct Call {
    int status;
    std::string said;     // standard output
    std::string errors;   // standard error
};

class Prompt : public ProgramTest {
protected:
    Call Korvo(const std::vector<std::string>& arguments, const std::function<void()>& before = {}) const
    {
        const Conversation conversation = Converse("", [&]() -> int {
            dup2(open(Work("errors").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666), 2);
            if (before) before();
            BecomeProgram(arguments);
        });
        EXPECT_TRUE(conversation.ended);
        EXPECT_EQ(conversation.signal, 0);
        const Call call = {conversation.status, conversation.output, FileBytes(Work("errors"))};
        AK_System::RemoveFile(Work("errors"));
        return call;
    }
};

inline bool Contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

inline long NumLines(const std::string& text) { return std::count(text.begin(), text.end(), '\n'); }
