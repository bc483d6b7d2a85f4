// The program from outside: started with arguments, talked to at its menus.

#pragma once

#include "AK_Controller_TestSupport.h"

#include <poll.h>

/// A fresh directory to work in, with a home of its own, and the program's description files.
class ProgramTest : public testing::Test {
protected:
    ProgramTest()
    {
        AK_System::CreateDir(directory / "home");
        AK_System::CreateDir(directory / "user");
        AK_System::CreateDir(directory / "work");
        setenv("HOME", (directory / "home").c_str(), 1);
        unsetenv("KORVO_USER_ATTRIBUTES");
    }

    /// Becomes the program, in the directory "work".
    [[noreturn]] void BecomeProgram(std::vector<std::string> arguments) const
    {
        if (chdir((directory / "work").c_str()) != 0) _exit(99);
        arguments.insert(arguments.begin(), KORVO_PROGRAM);
        std::vector<char*> argv;
        for (std::string& argument : arguments) argv.push_back(argument.data());
        argv.push_back(nullptr);
        execv(KORVO_PROGRAM, argv.data());
        _exit(99);
    }

    /// Runs the program with these arguments and words to its end.
    Conversation Program(std::vector<std::string> arguments, const std::string& words, size_t limit = 4 << 20) const
    {
        return Converse(
            words, [&]() -> int { BecomeProgram(arguments); }, limit);
    }

    /// Plays a macro and ends. What was said after the start.
    Conversation Play(const std::string& macro) const
    {
        WriteFile(directory / "work/example.macro", macro);
        Conversation conversation = Program({"-files", files, "-offscreen", "example.macro"}, "");
        EXPECT_EQ(conversation.signal, 0);
        EXPECT_EQ(conversation.status, 0);
        const size_t banner = conversation.output.rfind(rule + "\n");
        if (banner != std::string::npos) conversation.output.erase(0, conversation.output.find(")\n", banner) + 2);
        return conversation;
    }

    AK_String Work(const char* name) const { return directory / (std::string("work/") + name).c_str(); }

    const std::string files = KORVO_SOURCE_DIR "/files/AK_Attributes";
    const std::string rule = std::string(65, '=');
    TemporaryDirectory directory;
};

/// The program at its menus: words go in one by one, and entries can be named by their ids.
class Session {
public:
    explicit Session(const std::function<void()>& program)
    {
        int in[2], out[2];
        if (pipe(in) != 0 || pipe(out) != 0) std::abort();
        std::fflush(stdout);
        std::signal(SIGPIPE, SIG_IGN);   // a program that has died is told by a failure
        _process = fork();
        if (_process == 0) {
            std::signal(SIGPIPE, SIG_DFL);
            dup2(in[0], 0);
            dup2(out[1], 1);
            for (int end : {in[0], in[1], out[0], out[1]}) close(end);
            program();
        }
        close(in[0]);
        close(out[1]);
        _in = in[1];
        _out = out[0];
        Listen();
    }

    /// Closes the output first: at the end of its input the program would go on for ever.
    ~Session() { End(); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Enters words one by one. A word that is the id of an entry on screen becomes its number.
    void Do(const std::string& words)
    {
        std::istringstream in(words);
        for (std::string word; in >> word;) Say(word);
    }

    /// What was said since the last word.
    const std::string& Screen() const { return _screen; }

    void End()
    {
        if (_process <= 0) return;
        close(_out);
        close(_in);
        int state = 0;
        waitpid(_process, &state, 0);
        _process = 0;
    }

private:
    void Say(const std::string& word)
    {
        const std::string text = NumberOf(word) + "\n";
        _screen.clear();
        if (write(_in, text.data(), text.size()) != ssize_t(text.size())) ADD_FAILURE() << "cannot say " << word;
        Listen();
    }

    // The lines "3: text.Id: x", "3:DHMs", "3...item" name their entries; any other word stands for itself.
    std::string NumberOf(const std::string& word) const
    {
        std::istringstream in(_screen);
        for (std::string line; std::getline(in, line);) {
            const size_t digits = line.find_first_not_of("0123456789");
            if (digits == 0 || digits == std::string::npos) continue;
            const size_t id = line.find_first_not_of(":. ", digits);
            if (id != std::string::npos && id > digits && line.compare(id, word.size(), word) == 0 &&
                (id + word.size() == line.size() || line[id + word.size()] == ':' || line[id + word.size()] == ' '))
                return line.substr(0, digits);
        }
        return word;
    }

    // Reads until a whole menu or prompt is there, or the program has ended.
    void Listen()
    {
        char buffer[4096];
        while (!IsWhole()) {
            pollfd waiting = {_out, POLLIN, 0};
            if (poll(&waiting, 1, 20000) <= 0) {
                ADD_FAILURE() << "no menu comes:\n" << _screen;
                return;
            }
            const ssize_t n = read(_out, buffer, sizeof buffer);
            if (n <= 0) return;
            _screen.append(buffer, size_t(n));
        }
    }

    bool IsWhole() const
    {
        if (_screen.empty() || _screen.back() != '\n') return false;
        const auto endsWith = [&](const char* text) {
            const std::string end(text);
            return _screen.size() >= end.size() && _screen.compare(_screen.size() - end.size(), end.size(), end) == 0;
        };
        if (endsWith("\ne: edit\n?: help\n")) return true;
        const std::vector<std::string> lines = SpokenLines(_screen);
        const std::string& last = lines.back();
        if (last.rfind("enter value: [", 0) == 0 || last.find("...") < last.find_first_not_of("0123456789") + 1)
            return true;
        if (last != "q: quit") return false;
        // An object menu goes on behind this line; its header ends in ":", as that of an attribute menu does not.
        size_t header = lines.size() - 1;
        while (header > 0 && std::isdigit(static_cast<unsigned char>(lines[header - 1][0]))) --header;
        return header > 0 && !lines[header - 1].empty() && lines[header - 1].back() != ':';
    }

    pid_t _process = 0;
    int _in = -1;
    int _out = -1;
    std::string _screen;
};
