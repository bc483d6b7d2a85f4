// Saving and loading a project of many objects with a hundred attributes each. The work is the same for each object, so
// a project of a thousand takes little more than four times as long as one of 250; the budget is five times.

#include "AK_Object.h"
#include "AK_Object_Class.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <string>
#include <utility>

static constexpr int numAttributes = 100;

namespace {

class BenchObject : public AK_Class<BenchObject, AK_Object> {
public:
    static constexpr const char* className = "BenchObject";

    static std::span<const Row> Rows()
    {
        static const auto rows = MakeRows(std::make_integer_sequence<int, numAttributes>());
        return rows;
    }

    static std::string DescriptionText()
    {
        std::string text = "obj.BenchObject\n";
        for (const Row& row : Rows()) text += std::string("\tdouble.x:") + row.name + "\n\t\tset:" + row.name + "\n";
        return text;
    }

    BenchObject(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
    {
        ReadClassFiles();
        RunInitializationCommands();
        for (int i = 0; i < numAttributes; ++i) _values[i] = 0.1 * i;
    }

    AK_Object* CreateComponent(const AK_String& id, const AK_String&) override { return new BenchObject(id, this); }

private:
    template <int i>
    static double Value(const BenchObject& object)
    {
        return object._values[i];
    }
    template <int i>
    static void SetValue(BenchObject& object, const AK_String& text)
    {
        AK_FromText(object._values[i], text);
    }
    template <int... i>
    static std::array<Row, numAttributes> MakeRows(std::integer_sequence<int, i...>)
    {
        static const std::string names[] = {"Attribute" + std::to_string(i)...};
        return {Row{names[i].c_str(), pair<&Value<i>, &SetValue<i>>}...};
    }

    double _values[numAttributes];
};

/// Descriptions, and room for a project, in memory where the system has it.
class Place {
public:
    Place()
    {
        ak_msg_func = [](const char*, const char*) {};
        char name[] = "/dev/shm/korvo_bench_XXXXXX", other[] = "/tmp/korvo_bench_XXXXXX";
        _dir = mkdtemp(name) ? name : mkdtemp(other);
        std::ofstream((_dir + "/AK_Object.atr").c_str()) << "obj.Object\n\ttext.Id:Id\n\t\tset:Id\n";
        std::ofstream((_dir + "/BenchObject.atr").c_str()) << BenchObject::DescriptionText();
        AK_Object::SetAttributesDirectory(_dir);
    }
    ~Place() { AK_System::RemoveFileRecursively(_dir); }
    AK_String Project() const { return _dir + "/project"; }

private:
    AK_String _dir;
};

}   // namespace

static const Place& ThePlace()
{
    static const Place place;
    return place;
}

static void SaveProject(benchmark::State& state)
{
    const AK_String dir = ThePlace().Project();
    BenchObject root("root", nullptr);
    for (int i = 0; i < state.range(0); ++i) root.AddComponent(new BenchObject(AK_String(i, "object%d"), &root));
    for (auto _ : state) {
        state.PauseTiming();
        AK_System::RemoveFileRecursively(dir);
        state.ResumeTiming();
        root.SaveProjectAs(dir);
    }
    if (!AK_Object::_execStatus.IsEmpty()) state.SkipWithError(AK_Object::_execStatus.c_str());
    AK_System::RemoveFileRecursively(dir);
}
BENCHMARK(SaveProject)->Arg(250)->Arg(1000)->Unit(benchmark::kMillisecond);

static void LoadProject(benchmark::State& state)
{
    const AK_String dir = ThePlace().Project();
    {
        BenchObject root("root", nullptr);
        for (int i = 0; i < state.range(0); ++i) root.AddComponent(new BenchObject(AK_String(i, "object%d"), &root));
        root.SaveProjectAs(dir);
    }
    for (auto _ : state) {
        BenchObject root("root", nullptr);
        root.LoadProject(dir);
        if (root.NumComponents() != state.range(0)) state.SkipWithError("not loaded");
    }
    AK_System::RemoveFileRecursively(dir);
}
BENCHMARK(LoadProject)->Arg(250)->Arg(1000)->Unit(benchmark::kMillisecond);
