// Predefined functions of the process and the clock.

#include "qvt_sci_aux_Builtin.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>

#include <sys/select.h>
#include <unistd.h>

static void qvt_sci_exit(const int* status) { std::exit(*status); }

static int qvt_sci_system(const char* command) { return std::system(TextArgument(command, 0).c_str()); }

// Waits without using processor time.
static void qvt_sci_sleep(const double* seconds)
{
    constexpr double LONGEST = 1e9;   // about 30 years, within every time_t
    if (!(*seconds > 0)) return;
    const double wait = *seconds < LONGEST ? *seconds : LONGEST;
    timeval timeout;
    timeout.tv_sec = time_t(wait);
    timeout.tv_usec = suseconds_t((wait - std::floor(wait)) * 1000000.0);
    select(0, nullptr, nullptr, nullptr, &timeout);
}

static double qvt_sci_sclock() { return double(std::clock()) / 1000000.0; }

static double qvt_sci_time() { return double(std::time(nullptr)); }

static int qvt_sci_strftime(char* s, const int* slen, const char* format)
{
    const size_t room = *slen < 0 ? 0 : std::min(size_t(*slen), RoomOfArgument(0));
    if (!s || room == 0) return 0;
    const TextArgument text(format, 2);
    const bool isUtc = std::strncmp(text.c_str(), "GM:", 3) == 0;
    const time_t now = std::time(nullptr);
    tm parts;
    if (isUtc) {
        gmtime_r(&now, &parts);
    } else {
        localtime_r(&now, &parts);
    }
    const size_t length = std::strftime(s, room, text.c_str() + (isUtc ? 3 : 0), &parts);
    if (length == 0) s[0] = 0;   // the library leaves a text that did not fit undefined
    return int(length);
}

static int qvt_sci_remove_file(const char* pathname) { return qvt_sci_remove(TextArgument(pathname, 0).c_str()); }

std::span<const Builtin> SystemBuiltins()
{
    static const Builtin rows[] = {
        // clang-format off
        {"// SYSTEM FUNCTIONS",                              nullptr,                                      nullptr                    },
        {"",                                                 nullptr,                                      nullptr                    },
        {"int getpid();",                                    "process id",                                 Native(getpid)             },
        {"void exit(int status);",                           "ends the program, 0: no error",              Native(qvt_sci_exit)       },
        {"int system(char command[]);",                      "runs a command of the operating system",     Native(qvt_sci_system)     },
        {"void sleep(double x);",                            "waits x seconds, uses no processor time",    Native(qvt_sci_sleep)      },
        {"double sclock();",                                 "processor time used so far, seconds",        Native(qvt_sci_sclock)     },
        {"double time();",                                   "seconds since 1970-01-01 00:00:00 UTC",      Native(qvt_sci_time)       },
        {"int strftime(char s[], int slen, char format[]);",
         "present time as text, see strftime() of C; with \"GM:\" before the format UTC, else local time", Native(qvt_sci_strftime)   },
        {"int remove(char pathname[]);",                     "deletes a file, 0 on success",               Native(qvt_sci_remove_file)},
        {"",                                                 nullptr,                                      nullptr                    },
        // clang-format on
    };
    return rows;
}
