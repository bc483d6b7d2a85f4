// Dialogues: what tests of the menus need. A child process talks with a file of words as its standard input, and what
// it says comes back bounded, since the menus go on for ever at the end of their input.
//
// A file of dialogues reads like a terminal:
//
//   == A word that is no number changes nothing      the name of a dialogue; each starts from the same tree
//   Viewer:                                          lines that must come, in this order
//   ...                                              any number of lines
//   > abc 7                                          words to enter

#pragma once

#include "AK_Basic_TestTools.h"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

struct Conversation {
    std::string output;
    bool ended = false;   // by itself, before it had said more than it may
    int status = -1;      // of the process, if it ended by itself
    int signal = 0;       // that ended it
};

/// Runs `child` in a process of its own: its standard input are the bytes of `input`, its standard output is read to
/// the end or until it has `limit` bytes, after which nobody listens.
inline Conversation Converse(const std::string& input, const std::function<int()>& child, size_t limit = 1 << 20)
{
    const TemporaryDirectory directory;
    const AK_String words = directory / "words";
    WriteFile(words, input);
    int ends[2];
    if (pipe(ends) != 0) std::abort();
    std::fflush(stdout);
    const pid_t process = fork();
    if (process == 0) {
        dup2(open(words.c_str(), O_RDONLY), 0);
        dup2(ends[1], 1);
        close(ends[0]);
        close(ends[1]);
        const int status = child();
        std::fflush(stdout);
        _exit(status);
    }
    close(ends[1]);
    Conversation conversation;
    char buffer[4096];
    ssize_t n = 0;
    while (conversation.output.size() < limit && (n = read(ends[0], buffer, sizeof buffer)) > 0)
        conversation.output.append(buffer, size_t(n));
    conversation.ended = n == 0;
    close(ends[0]);
    int state = 0;
    waitpid(process, &state, 0);
    if (WIFEXITED(state)) conversation.status = WEXITSTATUS(state);
    if (WIFSIGNALED(state)) conversation.signal = WTERMSIG(state);
    return conversation;
}

inline std::string WithoutTrailingBlanks(std::string line)
{
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

/// The lines of what was said, without the places in the source that messages end in and without blanks at the end.
inline std::vector<std::string> SpokenLines(const std::string& output)
{
    std::vector<std::string> lines;
    std::istringstream in(output);
    for (std::string line; std::getline(in, line);) {
        const size_t place = line.rfind("\t(src/");
        lines.push_back(WithoutTrailingBlanks(line.substr(0, place)));
    }
    return lines;
}

struct Dialogue {
    std::string name;
    std::string words;
    std::vector<std::string> lines;
};

inline std::string Replaced(std::string text, const std::string& what, const std::string& with)
{
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
    return text;
}

/// Reads a file of dialogues; "@dir@" in it stands for the directory.
inline std::vector<Dialogue> DialoguesOf(const AK_String& file, const AK_String& directory)
{
    std::vector<Dialogue> dialogues;
    std::istringstream in(Replaced(FileBytes(file), "@dir@", directory.c_str()));
    for (std::string line; std::getline(in, line);) {
        if (line.rfind("== ", 0) == 0)
            dialogues.push_back({line.substr(3), "", {}});
        else if (line.rfind("> ", 0) == 0)
            dialogues.back().words += line.substr(2) + "\n";
        else if (!dialogues.empty() && !line.empty())
            dialogues.back().lines.push_back(WithoutTrailingBlanks(line));
    }
    return dialogues;
}

/// Fails unless the spoken lines are the expected ones, where "..." stands for any lines.
inline void ExpectSpoken(const std::vector<std::string>& spoken, const std::vector<std::string>& expected)
{
    size_t at = 0;
    bool anywhere = false;
    for (size_t i = 0; i < expected.size();) {
        if (expected[i] == "...") {
            anywhere = true;
            ++i;
            continue;
        }
        size_t end = i;
        while (end < expected.size() && expected[end] != "...") ++end;
        const auto matches = [&](size_t start) {
            return start + (end - i) <= spoken.size() &&
                   std::equal(expected.begin() + long(i), expected.begin() + long(end), spoken.begin() + long(start));
        };
        size_t start = at;
        while (anywhere && start < spoken.size() && !matches(start)) ++start;
        if (!matches(start)) {
            size_t same = 0;
            while (i + same < end && start + same < spoken.size() && spoken[start + same] == expected[i + same]) ++same;
            ADD_FAILURE() << "expected: " << (i + same < end ? expected[i + same] : "") << "\nspoken:   "
                          << (anywhere || start + same >= spoken.size() ? "(nowhere from here on)"
                                                                        : spoken[start + same].c_str());
            return;
        }
        at = start + (end - i);
        i = end;
        anywhere = false;
    }
    if (!anywhere && at < spoken.size()) ADD_FAILURE() << "spoken, not expected: " << spoken[at];
}
