// Parameter sets: named lists of attribute values, read from text files of the classes.
//
//   = Voellmy, dense snow
//   FrictionType = Coulomb
//   BedFrictionAngle = 13
//   Project/x:ParameterSet = soft        an object at a path holds a set of its own
//
// That a set is in force is no stored state but a claim that is checked: it holds while none of its attributes has been
// set later than the set itself. So nobody has to be told when one of them changes.

#include "AK_Object.h"

#include <cstring>

static constexpr int maxLine = 4095;

static AK_String Trimmed(const char* begin, const char* end)
{
    const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (begin < end && blank(*begin)) ++begin;
    while (end > begin && blank(end[-1])) --end;
    return AK_String(begin, end);
}

void AK_Object::ParameterSetsAppend(const AK_String& name)
{
    AK_TextReader reader(AttributeFile(name, "parsets", nullptr).c_str());
    if (!reader.IsOpen()) return;
    bool opened = false;   // lines before the first name belong to no set of this file
    AK_String raw;
    while (reader.ReadLine(raw, maxLine)) {
        const AK_String line = Trimmed(raw.c_str(), raw.c_str() + raw.Length());
        const char* equals = std::strchr(line.c_str(), '=');
        if (!equals) continue;
        const AK_String right = Trimmed(equals + 1, line.c_str() + line.Length());
        if (equals == line.c_str()) {
            AK_ParameterSet set;
            set._name = right;
            _parsets.Append(set);
            opened = true;
        } else if (opened) {
            AK_ParameterSet& set = _parsets[_parsets.Size() - 1];
            set._attributes.Append(Trimmed(line.c_str(), equals));
            set._values.Append(right);
        }
    }
}

// From the end: classes that are read later, the more derived ones, take precedence.
static int IndexOfSet(const AK_String& name)
{
    for (int i = AK_Object::_parsets.Size() - 1; i >= 0; --i)
        if (AK_Object::_parsets[i]._name == name) return i;
    return -1;
}

namespace {

// The (object, set) pairs under work: sets that name each other in a circle must neither set nor ask without end. Nor
// may a file choose how deep sets are nested, or, by naming each set twice in the next, how many there are to set.
class UnderWork {
public:
    UnderWork(const AK_Object* object, int set)
    {
        if (pairs.Size() == 0) begun = 0;
        _refused = ++begun > maxBegun || pairs.Size() >= maxNested;
        for (const Pair& other : pairs) _refused = _refused || (other.object == object && other.set == set);
        pairs.Append(Pair{object, set});
    }
    ~UnderWork() { pairs.Remove(pairs.Size() - 1); }
    UnderWork(const UnderWork&) = delete;
    UnderWork& operator=(const UnderWork&) = delete;
    bool Refused() const { return _refused; }

private:
    static constexpr int maxNested = 50;
    static constexpr int maxBegun = 10000;

    struct Pair {
        const AK_Object* object = nullptr;
        int set = -1;
    };
    static inline AK_List<Pair> pairs{1};
    static inline int begun = 0;   // since the outermost
    bool _refused = false;
};

}   // namespace

void AK_Object::ParameterSet(const AK_String& name)
{
    const int index = IndexOfSet(name);
    const UnderWork work(this, index);
    if (index >= 0 && !work.Refused()) {
        const AK_ParameterSet set = _parsets[index];   // a copy: a command may bring a new class, and so new sets
        for (int i = 0; i < set._attributes.Size(); ++i) {
            Set(set._attributes[i], set._values[i]);
            if (!_execStatus.IsEmpty())
                AK_MSG("WARNING: parameter set " << name << ": error when setting '" << set._attributes[i]
                                                 << "' to value '" << set._values[i] << "':" << _execStatus);
        }
    }
    _parameterSet = index;
}

AK_String AK_Object::ParameterSet() const
{
    if (!IsParameterSet(_parameterSet)) _parameterSet = -1;
    return _parameterSet < 0 ? AK_String("none") : _parsets[_parameterSet]._name;
}

bool AK_Object::IsParameterSet(int index) const
{
    if (_parameterSet < 0 || index < 0) return false;
    const UnderWork work(this, index);
    if (work.Refused()) return false;
    const AK_ParameterSet set = _parsets[index];
    const long stamp = ExecTime("ParameterSet");
    for (int i = set._attributes.Size() - 1; i >= 0; --i) {
        const AK_String& attr = set._attributes[i];
        AK_String path, remote;
        if (attr == "ParameterSet") {
            if (!IsParameterSet(IndexOfSet(set._values[i]))) return false;
        } else if (ParseRemoteCommand(attr, path, remote) && remote == "ParameterSet") {
            AK_Object* object = const_cast<AK_Object*>(this)->ObjectById(path);
            if (!object || !(object->Get("ParameterSet") == set._values[i])) return false;
        } else if (ExecTime(attr) > stamp)
            return false;
    }
    return true;
}

AK_String AK_Object::ParameterSetOptions()
{
    AK_List<AK_String> names(_parsets.Size() + 1);
    names.Append("none");
    for (const AK_ParameterSet& set : _parsets) names.Append(set._name);
    return AK_String(names, ak_sep);
}
