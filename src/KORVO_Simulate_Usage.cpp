// What can be told of the words of korvo simulate before anything is done: status 2.

#include "KORVO_Simulate.h"

#include <algorithm>
#include <cmath>

static KORVO_Stop Usage(const char* option, const std::string& sentence)
{
    return {KORVO_BAD_USAGE, std::string("--") + option + ": " + sentence};
}

static void CheckNumbers(const KORVO_Arguments& arguments)
{
    static constexpr struct {
        const char* option;
        double largest;
        bool isWhole;
    } numbers[] = {{"depth", 1e6, false},       {"density", 1e6, false},
                   {"cell-size", 1e6, false},   {"particles-per-cell", 1e6, false},
                   {"time-step", 1e6, false},   {"end-time", 1e9, false},
                   {"output-step", 1e9, false}, {"threads", 256, true}};
    for (const auto& number : numbers) {
        if (!arguments.Has(number.option)) continue;
        const std::string text = arguments.Value(number.option);
        char* end = nullptr;
        const double value = std::strtod(text.c_str(), &end);
        if (*end || !std::isfinite(value))
            throw Usage(number.option, "'" + text + InLanguage("' is no number", "' ist keine Zahl"));
        if (!(value > 0))
            throw Usage(number.option, "'" + text + InLanguage("' is not above 0", "' ist nicht groesser als 0"));
        if (value > number.largest)
            throw Usage(number.option, "'" + text + InLanguage("' is too large", "' ist zu gross"));
        if (number.isWhole && value != std::floor(value))
            throw Usage(number.option, "'" + text + InLanguage("' is no whole number", "' ist keine ganze Zahl"));
    }
}

// Those that only make sense together, with the usual values in the place of those that are not given.
static void CheckTimes(const KORVO_Arguments& arguments)
{
    static constexpr double mostSteps = 1e9;
    const auto number = [&](const char* option) {
        return std::strtod(KORVO_ValueOrUsual(arguments, option).c_str(), nullptr);
    };
    if (number("output-step") < number("time-step") / 2)
        throw Usage("output-step",
                    InLanguage("is less than half of --time-step", "ist weniger als die Haelfte von --time-step"));
    if (number("end-time") / number("time-step") > mostSteps)
        throw Usage("time-step",
                    InLanguage("makes too many steps till --end-time", "ergibt zu viele Schritte bis --end-time"));
}

static void CheckFormats(const KORVO_Arguments& arguments)
{
    static const std::vector<std::string> known = {"asc", "dxf", "tif", "gpkg", "nc", "kmz"};
    const std::string list = arguments.Value("formats") + ",";
    for (size_t begin = 0; arguments.Has("formats") && begin < list.size();) {
        const size_t end = list.find(',', begin);
        const std::string format = list.substr(begin, end - begin);
        begin = end + 1;
        if (format == "asc" || format == "dxf") continue;
        if (std::find(known.begin(), known.end(), format) == known.end())
            throw Usage("formats", InLanguage("there is no format '", "es gibt kein Format '") + format +
                                       InLanguage("'; the nearest is '", "'; am naechsten ist '") +
                                       KORVO_Nearest(format, known) + "'");
        throw KORVO_Stop{KORVO_FAILED, KORVO_NeedsModule(format, "gis")};
    }
}

void KORVO_CheckSimulateUsage(const KORVO_Arguments& arguments)
{
    for (const char* option : {"terrain", "release", "out"})
        if (!arguments.Has(option))
            throw KORVO_Stop{KORVO_BAD_USAGE, InLanguage("there is no --", "es fehlt --") + std::string(option)};
    CheckNumbers(arguments);
    CheckTimes(arguments);
    CheckFormats(arguments);
    std::string name, value;
    for (const std::string& assignment : arguments.Values("set"))
        if (!KORVO_SplitAssignment(assignment, name, value))
            throw Usage("set",
                        InLanguage("PATH:ATTRIBUTE=VALUE is needed, not '", "PFAD:ATTRIBUT=WERT ist noetig, nicht '") +
                            assignment + "'");
    if (arguments.Has("friction")) KORVO_ParseFriction(arguments.Value("friction"));
}
