// Programs of the formula language as text files: what each prints, and the message or signal it must give.
//
// A file holds cases; what stands before the first is a comment. A new case is three lines:
//
//     === a printed item has a blank before it
//     print "i:", 3;
//     > i: 3
//
// The lines of a case: program text, and by the first character
//     >text     a line of the expected output; with a backslash at its end the output has no line end there
//     !text     part of the messages; several are looked for one behind the other. Without any there must be none
//     <text     a line that the program finds on standard input
//     @signal n          the run raises signal n and is left by a jump
//     @signal n ignored  the same, but the raise returns and the run goes on
//     @exit n            the process ends with status n (the case then runs in a child process); "ignored" as above
//     @abort             the process is aborted (likewise)
// Text without a function main becomes the body of one. Empty lines at its end do not count. Output is compared whole.
//
// A program that does not parse is a case in one line; " ... " stands between parts of the messages:
//
//     ? int a; a = +a;  => unknown operator type

#pragma once

#include "qvt_sci.h"

#include <csetjmp>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

struct ProgramCase {
    std::string where, name;   // "file:line"
    std::string text, input, output;
    std::vector<std::string> messages;
    std::string ending;   // "signal 8", "signal 8 ignored", "exit 1", "abort", or empty
};

/// A case in one line.
inline ProgramCase ReadErrorCase(const std::string& line)
{
    static const std::string arrow = " => ", gap = " ... ";
    const size_t end = line.rfind(arrow);
    if (end == std::string::npos) throw std::runtime_error("no message in: " + line);
    ProgramCase c;
    c.text = line.substr(2, line.find_last_not_of(' ', end) - 1) + "\n";
    c.name = "does not parse: " + c.text;
    for (size_t from = end + arrow.size(); from != std::string::npos;) {
        const size_t next = line.find(gap, from);
        c.messages.push_back(line.substr(from, next - from));
        from = next == std::string::npos ? next : next + gap.size();
    }
    return c;
}

inline std::vector<ProgramCase> ReadProgramCases(const std::string& path)
{
    std::vector<ProgramCase> cases;
    std::ifstream file(path);
    std::string line;
    for (int number = 1; std::getline(file, line); ++number) {
        if (line.rfind("===", 0) == 0) {
            cases.emplace_back();
            cases.back().where = path + ":" + std::to_string(number);
            cases.back().name = line.substr(line.find_first_not_of("= "));
            continue;
        }
        if (line.rfind("? ", 0) == 0) {
            cases.push_back(ReadErrorCase(line));
            cases.back().where = path + ":" + std::to_string(number);
            continue;
        }
        if (cases.empty()) continue;
        ProgramCase& c = cases.back();
        const std::string rest = line.empty() ? "" : line.substr(1);
        switch (line.empty() ? '\0' : line[0]) {
        case '>':
            c.output += !rest.empty() && rest.back() == '\\' ? rest.substr(0, rest.size() - 1) : rest + "\n";
            break;
        case '!': c.messages.push_back(rest); break;
        case '<': c.input += rest + "\n"; break;
        case '@': c.ending = rest; break;
        default: c.text += line + "\n";
        }
    }
    for (ProgramCase& c : cases) {
        const size_t last = c.text.find_last_not_of('\n');
        if (last != std::string::npos) c.text.resize(last + 2);
    }
    return cases;
}

/// What a program did. Recorded text is also written to `copy` if that is a file descriptor, so that it survives the
/// end of a child process.
struct ProgramRecord {
    std::string output, messages;
    std::vector<int> signals;
    int errors = 0;   // of the parse
    bool raiseReturns = false;
    int copyOutput = -1, copyMessages = -1;
    FILE* input = nullptr;
    jmp_buf left;   // where a raise jumps to
};

inline ProgramRecord* programRecord;

namespace program_hooks {
inline int Append(std::string& text, int copy, const char* format, va_list arguments)
{
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    if (length < 0) return length;
    std::string piece(size_t(length) + 1, '\0');
    std::vsnprintf(piece.data(), piece.size(), format, arguments);
    piece.resize(size_t(length));
    text += piece;
    if (copy >= 0 && write(copy, piece.data(), piece.size()) < 0) std::abort();
    return length;
}

inline int Print(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int length = Append(programRecord->output, programRecord->copyOutput, format, arguments);
    va_end(arguments);
    return length;
}

inline int Message(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int length = Append(programRecord->messages, programRecord->copyMessages, format, arguments);
    va_end(arguments);
    return length;
}

inline void FlushMessages() {}

inline int Scan(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int count = std::vfscanf(programRecord->input, format, arguments);
    va_end(arguments);
    return count;
}

inline int Raise(int signal)
{
    programRecord->signals.push_back(signal);
    if (!programRecord->raiseReturns) std::longjmp(programRecord->left, 1);
    return 0;
}

// A frame of its own for the jump: nothing in it needs to be destroyed.
inline void RunMain(jmp_buf& left)
{
    if (setjmp(left) == 0) {
        qvt_sci_InitAll();
        if (Symbol* main = qvt_sci_FuncPtr("main")) qvt_sci_Execute(main);
    } else {
        qvt_sci_AbandonRun();
    }
}
}   // namespace program_hooks

/// Parses and runs a program in a namespace of its own below the active one, which is active again afterwards.
inline void RunProgram(const std::string& text, const std::string& input, ProgramRecord& record)
{
    using namespace program_hooks;
    const auto oldPrintf = qvt_sci_printf;
    const auto oldScanf = qvt_sci_scanf;
    const auto oldRaise = qvt_sci_raise;
    const auto oldMsg = qvt_sci_msg;
    const auto oldFlush = qvt_sci_flush_msg;
    programRecord = &record;
    qvt_sci_printf = Print;
    qvt_sci_scanf = Scan;
    qvt_sci_raise = Raise;
    qvt_sci_ResetPrintf(Message, FlushMessages);
    record.input = std::tmpfile();
    std::fputs(input.c_str(), record.input);
    std::rewind(record.input);

    Namespace* const active = qvt_sci_NamespaceGetCurrent();
    Namespace* const own = qvt_sci_NamespaceCreate();
    qvt_sci_NamespaceSwitchTo(own);
    const bool hasMain = text.find("void main()") != std::string::npos;
    record.errors = qvt_sci_ParseString((hasMain ? text : "void main(){" + text + "}").c_str());
    qvt_sci_NamespaceSwitchTo(own);
    if (record.errors == 0) RunMain(record.left);
    qvt_sci_NamespaceSwitchTo(active);
    qvt_sci_NamespaceDestroy(own);

    std::fclose(record.input);
    qvt_sci_printf = oldPrintf;
    qvt_sci_scanf = oldScanf;
    qvt_sci_raise = oldRaise;
    qvt_sci_ResetPrintf(oldMsg, oldFlush);
}

inline std::string ContentOf(int descriptor)
{
    std::string content;
    char block[4096];
    lseek(descriptor, 0, SEEK_SET);
    for (ssize_t n; (n = read(descriptor, block, sizeof block)) > 0;) content.append(block, size_t(n));
    return content;
}

/// The same in a child process; the record gets what it printed. Returns how it ended: "exit 1", "abort", "signal 11".
inline std::string RunProgramInChild(const std::string& text, const std::string& input, ProgramRecord& record)
{
    FILE* const output = std::tmpfile();
    FILE* const messages = std::tmpfile();
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        record.copyOutput = fileno(output);
        record.copyMessages = fileno(messages);
        RunProgram(text, input, record);
        _exit(125);   // the program did not end the process
    }
    int status = 0;
    waitpid(child, &status, 0);
    record.output = ContentOf(fileno(output));
    record.messages = ContentOf(fileno(messages));
    std::fclose(output);
    std::fclose(messages);
    if (WIFEXITED(status)) return "exit " + std::to_string(WEXITSTATUS(status));
    const int signal = WTERMSIG(status);
    return signal == SIGABRT ? "abort" : "signal " + std::to_string(signal);
}
