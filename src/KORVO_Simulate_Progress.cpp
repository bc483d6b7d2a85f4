// How far the run of korvo simulate is, and its interruption. The run asks before each step whether it is to end
// (AK_Object::Signal), and what is asked there looks at the simulation.

#include "KORVO_Simulate.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

/// The run that is watched.
struct Watch {
    const SW_Simulation* simulation = nullptr;
    bool isQuiet = false;
    bool isTerminal = false;
    std::string partial;
    KORVO_SimulateMemory* memory = nullptr;
    double massOffBefore = 0, runTimeBefore = 0;   // kg, s: in the processes before this one
    double startTime = 0;                          // s: simulated, where this process began
    std::string lastState;
    Clock::time_point start, lastTold;
};

/// What of the flow moves.
struct Motion {
    double mass = 0;    // kg
    double speed = 0;   // m/s: of the front, which is the fastest of it
};

}   // namespace

static Watch watch;
static volatile std::sig_atomic_t isInterrupted = 0;

static double SecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

static Motion MotionOf(const SW_Particles& particles)
{
    static constexpr double slowest = 0.1;   // m/s: what is slower counts as deposited
    Motion motion;
    for (int i = 0; i < particles.NumParticles(); ++i) {
        const double speed = Length(particles.Velocity()._values[i]);
        if (speed < slowest) continue;
        motion.mass += double(particles.Mass()._values[i]);
        motion.speed = std::max(motion.speed, speed);
    }
    return motion;
}

// ----------------------------------------------------------------------------------------------------------------
// Telling
// ----------------------------------------------------------------------------------------------------------------

static void Tell()
{
    const SW_Simulation& simulation = *watch.simulation;
    const double time = simulation.CurrentTime();
    const double end = std::strtod(simulation.Get("EndTime").c_str(), nullptr);
    const double share = end > 0 ? std::clamp(time / end, 0.0, 1.0) : 0;
    const double done = time - watch.startTime;
    const Motion motion = MotionOf(simulation.Particles());
    char left[32] = "?";
    if (done > 0) std::snprintf(left, sizeof left, "%.0f", SecondsSince(watch.start) / done * (end - time));
    static constexpr int width = 24;
    const std::string bar(size_t(share * width), '#');
    if (watch.isTerminal) std::printf("\r[%-*s] ", width, bar.c_str());
    std::printf(InLanguage("%.1f of %g s, at most %s s left, %.0f t in motion, front %.1f m/s",
                           "%.1f von %g s, noch hoechstens %s s, %.0f t in Bewegung, Front %.1f m/s"),
                time, end, left, motion.mass / 1000, motion.speed);
    std::printf(watch.isTerminal ? "\033[K" : "\n");
    std::fflush(stdout);
    watch.lastTold = Clock::now();
}

// A state that has been saved is what another process can go on from.
static void NoteState()
{
    const std::string state = watch.simulation->Get("CurrentTimeStep").c_str();
    if (state == watch.lastState) return;
    watch.lastState = state;
    watch.memory->massOffMesh = watch.massOffBefore + watch.simulation->MassOffMesh();
    watch.memory->runTime = watch.runTimeBefore + SecondsSince(watch.start);
    watch.memory->Write(watch.partial);
}

static int Look()
{
    if (watch.simulation) {
        NoteState();
        const double interval = watch.isTerminal ? 0.2 : 10;   // s
        if (!watch.isQuiet && SecondsSince(watch.lastTold) >= interval) Tell();
    }
    return isInterrupted;
}

// ----------------------------------------------------------------------------------------------------------------
// Signals
// ----------------------------------------------------------------------------------------------------------------

static constexpr int endings[] = {SIGINT, SIGTERM, SIGHUP};

static void SetHandlers(void (*handler)(int))
{
    for (const int number : endings) {
        struct sigaction action = {};
        action.sa_handler = handler;
        action.sa_flags = int(SA_RESETHAND) | SA_RESTART;   // the next one ends the process
        sigaction(number, &action, nullptr);
    }
}

static void Interrupt(int) { isInterrupted = 1; }

KORVO_Watched::KORVO_Watched(bool isQuiet, const std::string& partial, KORVO_SimulateMemory& memory)
{
    watch = {};
    watch.isQuiet = isQuiet;
    watch.isTerminal = isatty(1) != 0;
    watch.partial = partial;
    watch.memory = &memory;
    watch.massOffBefore = memory.massOffMesh;
    watch.runTimeBefore = memory.runTime;
    std::signal(SIGPIPE, SIG_IGN);   // who reads the progress may go; the run stays
    std::signal(SIGXFSZ, SIG_IGN);   // a file that may not grow is one that cannot be written, and is told as such
    SetHandlers(Interrupt);
    AK_Object::_signalFunction = Look;
}

KORVO_Watched::~KORVO_Watched()
{
    AK_Object::_signalFunction = nullptr;
    SetHandlers(SIG_DFL);
    watch = {};
}

void KORVO_Watched::Follow(const SW_Simulation& simulation)
{
    watch.simulation = &simulation;
    watch.startTime = simulation.CurrentTime();
    watch.lastState = simulation.Get("CurrentTimeStep").c_str();
    watch.start = watch.lastTold = Clock::now();
}

void KORVO_Watched::Finish()
{
    if (!watch.simulation) return;
    watch.memory->massOffMesh = watch.massOffBefore + watch.simulation->MassOffMesh();
    watch.memory->runTime = watch.runTimeBefore + SecondsSince(watch.start);
    if (watch.isTerminal && !watch.isQuiet) std::printf("\r\033[K");
    watch.simulation = nullptr;
}

bool KORVO_Watched::IsInterrupted() { return isInterrupted != 0; }
