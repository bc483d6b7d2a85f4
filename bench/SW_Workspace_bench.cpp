// From the start of the process to the first menu: what a user waits for, and each run in the background anew.

#include "SW_Workspace.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

// Starts the program; true once it has shown a whole menu. It ends when nobody listens any more.
static bool StartToFirstMenu()
{
    int ends[2];
    if (pipe(ends) != 0) return false;
    const pid_t process = fork();
    if (process == 0) {
        dup2(open("/dev/null", O_RDONLY), 0);
        dup2(ends[1], 1);
        close(ends[0]);
        close(ends[1]);
        execl(KORVO_PROGRAM, KORVO_PROGRAM, "-files", KORVO_SOURCE_DIR "/files/AK_Attributes", nullptr);
        _exit(99);
    }
    close(ends[1]);
    std::string output;
    char buffer[4096];
    for (ssize_t n = 1; n > 0 && output.find("?: help\n") == std::string::npos;) {
        n = read(ends[0], buffer, sizeof buffer);
        if (n > 0) output.append(buffer, size_t(n));
    }
    close(ends[0]);
    return output.find("Viewer:\n1:Project\n") != std::string::npos;
}

static void BM_StartToFirstMenu(benchmark::State& state)
{
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        const bool shown = StartToFirstMenu();
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        wait(nullptr);
        if (!shown) state.SkipWithError("no menu");
    }
}
BENCHMARK(BM_StartToFirstMenu)->UseManualTime()->Unit(benchmark::kMillisecond);
