// korvo watch: how far the runs below a directory are, from the two status files that each simulation keeps in its
// directory; ends when none is under way any more.
//
//   chute                running         12.5 s [#########                     ]  30 % 0:0:22 left

#include "KORVO.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <unistd.h>

namespace {

/// What the status files of one run say.
struct Look {
    std::string name;
    std::string status;
    std::string time;
    std::string left;   // of the run time, "h:m:s"
    std::string note;
    int percent = 0;
    bool isUnderWay = false;
};

}   // namespace

static std::string FirstLine(const std::string& path)
{
    static constexpr int longestLine = 1024;
    AK_TextReader reader(path.c_str());
    AK_String line;
    reader.ReadLine(line, longestLine);
    line.RemoveLineEnd();
    return line.c_str();
}

// The text behind `before`, up to one of the characters `ends`; "" if it is not there.
static std::string Between(const std::string& text, const std::string& before, const char* ends)
{
    const size_t at = text.find(before);
    if (at == std::string::npos) return "";
    const size_t begin = at + before.size();
    return text.substr(begin, text.find_first_of(ends, begin) - begin);
}

// "h:m:s"
static double Seconds(const std::string& time)
{
    int h = 0, m = 0, s = 0;
    std::sscanf(time.c_str(), "%d:%d:%d", &h, &m, &s);
    return (double(h) * 60 + m) * 60 + s;
}

static long SecondsOfSilence(const std::string& directory)
{
    long last = 0;
    for (const char* file : {"/.simulation_status", "/.simulation_info"})
        last = std::max(last, AK_System::ModificationTime((directory + file).c_str()));
    return long(std::time(nullptr)) - last;
}

static void TakeInfo(const std::string& info, Look& look)
{
    for (const char* before : {"at time ", "stopped at "}) {
        const std::string time = Between(info, before, " s");
        if (!time.empty()) look.time = time + " s";
    }
    look.left = Between(info, "estimated remaining run time ", ",");
    const double elapsed = Seconds(Between(info, ", run time ", ","));
    const double total = elapsed + Seconds(look.left);
    if (!look.left.empty() && total > 0) look.percent = std::clamp(int(elapsed * 100 / total), 0, 100);
}

static Look LookAt(const std::string& directory)
{
    static constexpr long silence = 60;   // s: a run that says nothing for longer is gone, or its step is very long
    Look look;
    look.name = std::filesystem::path(directory).filename().string();
    const std::string line = FirstLine(directory + "/.simulation_status");
    const size_t blank = std::min(line.find(' '), line.size());
    look.status = line.substr(0, blank);
    const std::string process = line.substr(std::min(blank + 1, line.size()));
    const std::string info = FirstLine(directory + "/.simulation_info");
    TakeInfo(info, look);

    look.isUnderWay = look.status == "started" || look.status == "running";
    if (look.isUnderWay && !process.empty() && !AK_System::ProcessLives(process.c_str())) {
        look.isUnderWay = false;
        look.status = "interrupted";
        look.left.clear();
        look.note = InLanguage(" its process is gone", " sein Prozess ist weg");
    } else if (look.isUnderWay && SecondsOfSilence(directory) > silence) {
        look.note = InLanguage(" nothing heard for ", " nichts gehoert seit ") +
                    std::to_string(SecondsOfSilence(directory)) + " s";
    } else if (look.status == "finished") {
        look.left.clear();
        look.percent = 100;
        const std::string reason = Between(info, "due to ", "");
        if (info.starts_with("stopped") && !reason.empty()) look.note = " " + reason;
    }
    return look;
}

static void Print(const Look& look)
{
    static constexpr int width = 30;
    const std::string bar(size_t(look.percent * width / 100), '#');
    std::printf("%-20s %-11s %10s [%-*s] %3d %%%s%s\n", look.name.c_str(), look.status.c_str(), look.time.c_str(),
                width, bar.c_str(), look.percent,
                look.left.empty() ? "" : (" " + look.left + InLanguage(" left", " uebrig")).c_str(), look.note.c_str());
}

// Directories with a status file, in the order of their names. What cannot be read is passed over.
static std::vector<std::string> RunsBelow(const std::string& directory)
{
    namespace fs = std::filesystem;
    std::vector<std::string> runs;
    std::error_code error;
    for (fs::recursive_directory_iterator it(directory, fs::directory_options::skip_permission_denied, error), end;
         !error && it != end; it.increment(error))
        if (it->path().filename() == ".simulation_status") runs.push_back(it->path().parent_path().string());
    std::sort(runs.begin(), runs.end());
    return runs;
}

static int Watch(const KORVO_Arguments& arguments)
{
    const std::string directory = arguments.Words().empty() ? "." : arguments.Words()[0];
    const std::vector<std::string> runs = RunsBelow(directory);
    if (runs.empty())
        return arguments.Failed(InLanguage("no runs below '", "keine Rechnungen unter '") + directory + "'");
    for (;;) {
        if (!arguments.Has("once") && isatty(1)) std::printf("\033[H\033[2J");
        bool isUnderWay = false;
        for (const std::string& run : runs) {
            const Look look = LookAt(run);
            Print(look);
            isUnderWay = isUnderWay || look.isUnderWay;
        }
        if (std::fflush(stdout) != 0 || arguments.Has("once") || !isUnderWay) return KORVO_DONE;
        AK_System::MilliSleep(1000);
    }
}

static constexpr KORVO_Option options[] = {
    {"once", nullptr, "one look, whatever is under way", "ein Blick, was auch laeuft"},
};

const KORVO_Subcommand korvo_watch = {
    "watch",
    "[DIR]",
    0,
    1,
    "shows how far the runs below a directory are, till they have ended",
    "zeigt, wie weit die Rechnungen unter einem Verzeichnis sind, bis sie zu Ende sind",
    options,
    Watch};
