// The speed of compiled formula code: a call from the host, and loops against Lua's interpreter.
//
// A loop is written down once for each language, as its users would write it: C-like text with typed locals here, Lua
// with locals there. Both run by turns in one process, so that a ratio means something on a busy machine too. The
// programs must agree on their result. Without Lua the loops are timed alone.

#include "qvt_sci.h"

#include <benchmark/benchmark.h>

#ifdef KORVO_HAVE_LUA5_4
#include <lua.hpp>
#endif

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

// ---------------------------------------------------------------------------------------------------------------------
// The loops. `run` does the work and returns a number that depends on all of it.

struct Loop {
    const char* name;
    bool inMean;   // an arithmetic loop; the others show what the language has operations of its own for
    const char* formula;
    const char* lua;
};

static const Loop loops[] = {
    {"SumOfProducts",    true,
     R"(double a[20000], b[20000];
        double run()
        {
            int i, n = 20000;
            double s = 0;
            for (i = 0; i < n; i++) { a[i] = i * 0.5; b[i] = n - i; }
            for (i = 0; i < n; i++) s += a[i] * b[i];
            return s;
        })",                              R"(local a, b = {}, {}
        for i = 0, 19999 do a[i] = 0.0; b[i] = 0.0 end
        function run()
            local n = 20000
            local s = 0.0
            for i = 0, n - 1 do a[i] = i * 0.5; b[i] = (n - i) + 0.0 end
            for i = 0, n - 1 do s = s + a[i] * b[i] end
            return s
        end)"                             },
    {"Mandelbrot",       true,
     R"(double run()
        {
            int px, py, k, total = 0;
            double cr, ci, zr, zi, r2, i2;
            for (py = 0; py < 24; py++) {
                for (px = 0; px < 32; px++) {
                    cr = px / 16.0 - 1.5; ci = py / 12.0 - 1.0;
                    zr = 0; zi = 0; k = 0;
                    r2 = 0; i2 = 0;
                    while (k < 100) {
                        if (r2 + i2 > 4.0) break;
                        zi = 2 * zr * zi + ci;
                        zr = r2 - i2 + cr;
                        r2 = zr * zr;
                        i2 = zi * zi;
                        k++;
                    }
                    total += k;
                }
            }
            return total;
        })",                                            R"(function run()
            local total = 0
            for py = 0, 23 do
                for px = 0, 31 do
                    local cr, ci = px / 16.0 - 1.5, py / 12.0 - 1.0
                    local zr, zi, k = 0.0, 0.0, 0
                    local r2, i2 = 0.0, 0.0
                    while k < 100 do
                        if r2 + i2 > 4.0 then break end
                        zi = 2 * zr * zi + ci
                        zr = r2 - i2 + cr
                        r2 = zr * zr
                        i2 = zi * zi
                        k = k + 1
                    end
                    total = total + k
                end
            end
            return total
        end)"                                  },
    {"Sieve",            true,
     R"(int composite[20000];
        double run()
        {
            int i, j, n = 20000, count = 0;
            for (i = 2; i < n; i++) composite[i] = 0;
            for (i = 2; i < n; i++) {
                if (composite[i] == 0) {
                    count++;
                    for (j = 2 * i; j < n; j += i) composite[j] = 1;
                }
            }
            return count;
        })",                                   R"(local composite = {}
        for i = 0, 19999 do composite[i] = 0 end
        function run()
            local n, count = 20000, 0
            for i = 2, n - 1 do composite[i] = 0 end
            for i = 2, n - 1 do
                if composite[i] == 0 then
                    count = count + 1
                    for j = 2 * i, n - 1, i do composite[j] = 1 end
                end
            end
            return count
        end)"                            },
    {"FunctionCalls",    true,
     R"(double square(double x, double y) { return x * x + y; }
        double run()
        {
            int i;
            double s = 0;
            for (i = 0; i < 20000; i++) s = square(s * 0.001, 1.5);
            return s;
        })", R"(local function square(x, y) return x * x + y end
        function run()
            local s = 0.0
            for i = 0, 19999 do s = square(s * 0.001, 1.5) end
            return s
        end)"},
    {"MatrixProduct",    true,
     R"(double a[24][24], b[24][24], c[24][24];
        double run()
        {
            int i, j, k, n = 24;
            double s;
            for (i = 0; i < n; i++) for (j = 0; j < n; j++) { a[i][j] = i + j; b[i][j] = i - j; }
            for (i = 0; i < n; i++) {
                for (j = 0; j < n; j++) {
                    s = 0;
                    for (k = 0; k < n; k++) s += a[i][k] * b[k][j];
                    c[i][j] = s;
                }
            }
            return c[3][5];
        })",                 R"(local a, b, c = {}, {}, {}
        for i = 0, 23 do a[i], b[i], c[i] = {}, {}, {} end
        function run()
            local n = 24
            for i = 0, n - 1 do for j = 0, n - 1 do a[i][j] = i + j + 0.0; b[i][j] = i - j + 0.0 end end
            for i = 0, n - 1 do
                for j = 0, n - 1 do
                    local s = 0.0
                    for k = 0, n - 1 do s = s + a[i][k] * b[k][j] end
                    c[i][j] = s
                end
            end
            return c[3][5]
        end)"                      },
    {"HeatStencil",      true,
     R"(double t[1000], next[1000];
        double run()
        {
            int i, step, n = 1000;
            for (i = 0; i < n; i++) t[i] = i % 17;
            for (step = 0; step < 10; step++) {
                for (i = 1; i < n - 1; i++) next[i] = t[i] + 0.25 * (t[i - 1] - 2 * t[i] + t[i + 1]);
                for (i = 1; i < n - 1; i++) t[i] = next[i];
            }
            return t[500];
        })",                             R"(local t, nxt = {}, {}
        for i = 0, 999 do t[i] = 0.0; nxt[i] = 0.0 end
        function run()
            local n = 1000
            for i = 0, n - 1 do t[i] = i % 17 + 0.0 end
            for step = 0, 9 do
                for i = 1, n - 2 do nxt[i] = t[i] + 0.25 * (t[i - 1] - 2 * t[i] + t[i + 1]) end
                for i = 1, n - 2 do t[i] = nxt[i] end
            end
            return t[500]
        end)"                           },
    {"SlidingBlock",     true,  // Euler steps with a branch, as friction formulas have them
     R"(double run()
        {
            int i;
            double v = 0, x = 0, dt = 0.01, mu = 0.2, xi = 1500, h = 1.2, a;
            for (i = 0; i < 10000; i++) {
                a = 9.81 * (0.5 - mu * 0.866) - 9.81 * v * v / (xi * h);
                if (a < 0) a = a * 0.9;
                v += a * dt;
                if (v < 0) v = 0;
                x += v * dt;
            }
            return x;
        })",              R"(function run()
            local v, x, dt, mu, xi, h = 0.0, 0.0, 0.01, 0.2, 1500.0, 1.2
            for i = 0, 9999 do
                local a = 9.81 * (0.5 - mu * 0.866) - 9.81 * v * v / (xi * h)
                if a < 0 then a = a * 0.9 end
                v = v + a * dt
                if v < 0 then v = 0.0 end
                x = x + v * dt
            end
            return x
        end)"                                  },
    {"Divisors",         true,
     R"(double run()
        {
            int a, b, t, sum = 0, i;
            for (i = 1; i < 2000; i++) {
                a = 5040; b = i;
                while (b != 0) { t = a % b; a = b; b = t; }
                sum += a;
            }
            return sum;
        })",                                            R"(function run()
            local sum = 0
            for i = 1, 1999 do
                local a, b = 5040, i
                while b ~= 0 do a, b = b, a % b end
                sum = sum + a
            end
            return sum
        end)"                                  },
    {"VectorOperations", false,
     R"(double a[1000], b[1000], c[1000];
        double run()
        {
            int i;
            a = 1.5; b = 2.5; c = 0;
            for (i = 0; i < 20; i++) { c = a + b * 0.5; a -= c * 0.001; }
            return c . b;
        })",                       R"(local a, b, c = {}, {}, {}
        function run()
            local n = 1000
            for k = 1, n do a[k] = 1.5; b[k] = 2.5; c[k] = 0.0 end
            for i = 0, 19 do
                for k = 1, n do c[k] = a[k] + b[k] * 0.5 end
                for k = 1, n do a[k] = a[k] - c[k] * 0.001 end
            end
            local s = 0.0
            for k = 1, n do s = s + c[k] * b[k] end
            return s
        end)"                      },
};

// ---------------------------------------------------------------------------------------------------------------------
// Running them

static void Fail(const std::string& what)
{
    std::fprintf(stderr, "%s\n", what.c_str());
    std::exit(1);
}

static double Seconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

class Formula
{
public:
    explicit Formula(const char* text)
    {
        qvt_sci_NamespaceGetCurrent();
        qvt_sci_NamespaceOpen();
        if (qvt_sci_ParseString(text) != 0) Fail("formula does not parse");
        qvt_sci_InitAll();
        _run = qvt_sci_FuncPtr("run");
    }
    ~Formula() { qvt_sci_NamespaceClose(); }
    double Run() { return qvt_sci_AsDouble(qvt_sci_Call(_run)); }

private:
    Symbol* _run;
};

#ifdef KORVO_HAVE_LUA5_4
class Lua
{
public:
    explicit Lua(const char* text) : _state(luaL_newstate())
    {
        luaL_openlibs(_state);
        if (luaL_dostring(_state, text)) Fail(lua_tostring(_state, -1));
    }
    ~Lua() { lua_close(_state); }
    double Run()
    {
        lua_getglobal(_state, "run");
        if (lua_pcall(_state, 0, 1, 0)) Fail(lua_tostring(_state, -1));
        const double result = lua_tonumber(_state, -1);
        lua_pop(_state, 1);
        return result;
    }

private:
    lua_State* _state;
};
#else
class Lua
{
public:
    explicit Lua(const char*) {}
    double Run() { return std::nan(""); }
};
#endif

template <class Program>
static double Timed(Program& program, std::vector<double>& times)
{
    const double start = Seconds();
    const double result = program.Run();
    times.push_back(Seconds() - start);
    return result;
}

static double Median(std::vector<double>& times)
{
    std::nth_element(times.begin(), times.begin() + long(times.size() / 2), times.end());
    return times[times.size() / 2];
}

static double logOfRatios = 0;
static int nRatios = 0;

static void RunLoop(benchmark::State& state, const Loop& loop)
{
    Formula formula(loop.formula);
    Lua lua(loop.lua);
    std::vector<double> formulaTimes, luaTimes;
    for (auto _ : state) {
        const double ours = Timed(formula, formulaTimes);
        const double theirs = Timed(lua, luaTimes);
        if (std::abs(ours - theirs) > 1e-9 * std::abs(ours)) Fail(std::string(loop.name) + ": results differ");
        state.SetIterationTime(formulaTimes.back());
    }
    const double ratio = Median(formulaTimes) / Median(luaTimes);
    state.counters["lua_us"] = 1e6 * Median(luaTimes);
    state.counters["qvt_us"] = 1e6 * Median(formulaTimes);
    state.counters["ratio"] = ratio;
    if (loop.inMean) {
        logOfRatios += std::log(ratio);
        ++nRatios;
    }
}

// Not a measurement: the mean over the loops above it.
static void GeometricMean(benchmark::State& state)
{
    for (auto _ : state) {}
    if (nRatios > 0) state.counters["ratio"] = std::exp(logOfRatios / nRatios);
}

// ---------------------------------------------------------------------------------------------------------------------
// The call of a friction formula, which must not allocate: the C library's functions are counted on their way.

static long allocations = 0;

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* old, size_t size);

void* malloc(size_t size)
{
    ++allocations;
    return __libc_malloc(size);
}

void* calloc(size_t count, size_t size)
{
    ++allocations;
    return __libc_calloc(count, size);
}

void* realloc(void* old, size_t size)
{
    ++allocations;
    return __libc_realloc(old, size);
}
}

static void CallFormula(benchmark::State& state)
{
    qvt_sci_NamespaceGetCurrent();
    qvt_sci_NamespaceOpen();
    if (qvt_sci_ParseString("double shear(double p, double v, double h, double d) { return 0.1*p; }") != 0) {
        Fail("formula does not parse");
    }
    Symbol* shear = qvt_sci_FuncPtr("shear");
    double p = 2000, v = 10, h = 1, d = 300, sum = 0;
    const long before = allocations;
    for (auto _ : state) {
        p += 1;
        sum += qvt_sci_AsDouble(qvt_sci_Call(shear, &p, &v, &h, &d));
    }
    benchmark::DoNotOptimize(sum);
    if (allocations != before) Fail("a call allocates");
    qvt_sci_NamespaceClose();
}
BENCHMARK(CallFormula);

static const int registered = [] {
    for (const Loop& loop : loops) {
        benchmark::RegisterBenchmark(loop.name, [&loop](benchmark::State& state) { RunLoop(state, loop); })
            ->UseManualTime()
            ->Iterations(400);
    }
    benchmark::RegisterBenchmark("GeometricMean", GeometricMean)->Iterations(1);
    return 0;
}();
