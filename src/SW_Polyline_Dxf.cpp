// DXF files: reading and writing of polylines, and the names that extended data give to them.
//
// A DXF file is a sequence of pairs of lines, a group code and its value. Two forms of polylines are read, by one small
// state machine that takes line after line:
//
//   LWPOLYLINE, "  8" layer, " 90" number of vertices, " 38" elevation, then " 10" x, " 20" y of each
//   POLYLINE, "  8" layer, then VERTEX with " 10" x, " 20" y, " 30" z for each, then SEQEND
//
// Lines are compared as they stand: a code has two or one blanks in front.
//
// The extended data that some GIS tools write live at the end of the file: the dictionary of an entity has an entry
// "ESRI_Attributes", a dictionary of attributes, each of them a record whose last line is the value.

#include "SW_Polyline_Points.h"

#include "SW_Polyline_Text.h"

#include <cstring>
#include <string>
#include <unordered_map>

static constexpr int maxLine = 512;             // characters of a line where polylines are read
static constexpr int maxDictionaryLine = 256;   // and where dictionaries are

// ----------------------------------------------------------------------------------------------------------------
// Reading
// ----------------------------------------------------------------------------------------------------------------

namespace {

// What the next line means.
enum State {
    outside,           // of any polyline
    lightHeader,       // a group code of a lightweight polyline before its vertices
    lightLayer,        // its layer
    lightDictionary,   // the group code before the handle of its dictionary
    lightHandle,       // that handle
    lightNumber,       // the number of its vertices
    lightVertices,     // group codes and values of its vertices
    oldHeader,         // a group code of an old-style polyline before its vertices
    oldLayer,          // its layer
    oldVertices,       // group codes and values of its vertices
    complete
};

// What the number in the next line is.
enum class Value { none, x, y, z, elevation };

class PolylineReader {
public:
    PolylineReader(AK_List<AK_Vec>& points, AK_String& label) : _points(points), _label(label) {}
    ~PolylineReader() { WarnOfFaults(); }

    /// Takes the next line; true when it completes a polyline.
    bool Take(const AK_String& line);

private:
    struct Rule {
        State state;
        const char* line;   // that announces something
        State next;
        Value value;                     // what the next line gives
        void (PolylineReader::*act)();   // null for nothing
    };
    static const Rule rules[];

    void Begin(State header);
    bool TakeText(const AK_String& line);
    void TakeNumber(const AK_String& line);
    void TakeValue(const AK_String& line);
    void AppendLightVertex() { --_remaining, _points.Append({0, 0, _elevation}); }
    void AppendOldVertex() { _points.Append({0, 0, 0}); }
    void WarnOfFaults() const;

    AK_List<AK_Vec>& _points;
    AK_String& _label;
    State _state = outside;
    Value _value = Value::none;
    int _remaining = 0;   // vertices of a lightweight polyline that are still to come
    double _elevation = 0;
    int _unreadable = 0;   // values that are no coordinates
};

}   // namespace

// clang-format off
constexpr PolylineReader::Rule PolylineReader::rules[] = {
    {lightHeader,   "  8",    lightLayer,    Value::none,      nullptr},
    {lightHeader,   " 90",    lightNumber,   Value::none,      nullptr},
    {lightVertices, " 10",    lightVertices, Value::x,         &PolylineReader::AppendLightVertex},
    {lightVertices, " 20",    lightVertices, Value::y,         nullptr},
    {lightVertices, " 38",    lightVertices, Value::elevation, nullptr},
    {oldHeader,     "  8",    oldLayer,      Value::none,      nullptr},
    {oldHeader,     "VERTEX", oldVertices,   Value::none,      &PolylineReader::AppendOldVertex},
    {oldVertices,   "VERTEX", oldVertices,   Value::none,      &PolylineReader::AppendOldVertex},
    {oldVertices,   " 10",    oldVertices,   Value::x,         nullptr},
    {oldVertices,   " 20",    oldVertices,   Value::y,         nullptr},
    {oldVertices,   " 30",    oldVertices,   Value::z,         nullptr},
};
// clang-format on

void PolylineReader::WarnOfFaults() const
{
    if (_state == complete) {
        if (_unreadable)
            AK_MSG("WARNING:" << _unreadable << " coordinates of a DXF polyline on layer '" << _label
                              << "' cannot be read and count as 0");
    } else if (_points.Size() > 0)
        AK_MSG("WARNING:a DXF polyline on layer '" << _label << "' ends after " << _points.Size()
                                                   << " vertices and is left out");
}

void PolylineReader::Begin(State header)
{
    WarnOfFaults();
    _state = header;
    _value = Value::none;
    _points.Clear();
    _label = "";
    _remaining = 0;
    _elevation = 0;
    _unreadable = 0;
}

// Takes a line that is a text, whatever it looks like; false in a state that awaits none.
bool PolylineReader::TakeText(const AK_String& line)
{
    switch (_state) {
    case lightDictionary: _state = lightHandle; return true;
    case lightHandle:
        _label = AK_String("XDICT ") + line;
        _state = lightHeader;
        return true;
    case lightLayer:
        _label = AK_Polyline::_importXDICT ? _label + " " + line : line;
        _state = lightHeader;
        return true;
    case oldLayer:
        _label = line;
        _state = oldHeader;
        return true;
    default: return false;
    }
}

void PolylineReader::TakeNumber(const AK_String& line)
{
    if (ScanInt(line.c_str(), _remaining)) _state = lightVertices;
}

void PolylineReader::TakeValue(const AK_String& line)
{
    double number = 0;
    if (!ScanCoordinates(line.c_str(), false, &number, 1)) {
        number = 0;
        ++_unreadable;
    }
    AK_Vec* vertex = _points.Size() > 0 ? &_points[_points.Size() - 1] : nullptr;
    if (_value == Value::elevation) _elevation = number;
    if (_value == Value::x && vertex) vertex->x = number;
    if (_value == Value::y && vertex) vertex->y = number;
    if (_value == Value::z && vertex) vertex->z = number;
    if (_state == lightVertices && _value == Value::y && _remaining <= 0 && vertex) _state = complete;
    _value = Value::none;
}

bool PolylineReader::Take(const AK_String& line)
{
    if (TakeText(line)) return false;
    if (line == "LWPOLYLINE") {
        Begin(lightHeader);
        return false;
    }
    if (line == "POLYLINE") {
        Begin(oldHeader);
        return false;
    }
    const auto contains = [&](const char* text) { return std::strstr(line.c_str(), text) != nullptr; };
    if (_state == lightHeader && AK_Polyline::_importXDICT && contains("ACAD_XDICTIONARY")) {
        _state = lightDictionary;
        return false;
    }
    if ((_state == oldHeader || _state == oldVertices) && (contains("SEQEND") || contains("ENDSEC"))) {
        _state = complete;
        return true;
    }
    for (const Rule& rule : rules) {
        if (rule.state != _state || !(line == rule.line)) continue;
        if (_state == lightVertices && rule.value == Value::x && _remaining <= 0) continue;   // a value that looks so
        if (rule.act) (this->*rule.act)();
        _state = rule.next;
        _value = rule.value;
        return false;
    }
    if (_state == lightNumber) TakeNumber(line);
    if (_value != Value::none) TakeValue(line);
    return _state == complete;
}

int AK_Polyline::ReadFromDxf(AK_TextReader& reader, AK_String& label)
{
    _x.Clear();
    label = "";
    PolylineReader polyline(_x, label);
    AK_String line;
    while (ReadTextLine(reader, line, maxLine))
        if (polyline.Take(line)) return 1;
    return 0;
}

// ----------------------------------------------------------------------------------------------------------------
// Writing
// ----------------------------------------------------------------------------------------------------------------

void AK_Polyline::WriteToDxf(const AK_String& layer, std::ostream& stream, int precision) const
{
    const auto before = stream.precision(precision);
    AK_String name = layer;
    for (int i = 0; name[i]; ++i)
        if (static_cast<unsigned char>(name[i]) < ' ') name[i] = '_';   // a line end would shift all that follows
    stream << "  0\nPOLYLINE\n  8\n" << name << "\n 10\n  0\n 20\n  0\n 30\n  0\n 70\n  9\n 66\n  1\n";
    for (const AK_Vec& p : _x)
        stream << "  0\nVERTEX\n  8\n"
               << name << "\n 70\n32\n 10\n"
               << p.x << "\n 20\n"
               << p.y << "\n 30\n"
               << p.z << "\n";
    stream << "  0\nSEQEND\n";
    stream.precision(before);
}

// ----------------------------------------------------------------------------------------------------------------
// Dictionaries of extended data
// ----------------------------------------------------------------------------------------------------------------

// The dictionaries and records of a file, read once: the lines of each, from its kind up to the next "  0".
class AK_DxfAttributes::Objects {
public:
    explicit Objects(const AK_String& path);

    /// Handle of the dictionary of attributes that belongs to the dictionary of an entity; "" for none.
    AK_String AttributesOf(const AK_String& dictionary) const;
    /// Handle of the record of the first attribute that begins with the text, in lower case; "" for none.
    AK_String RecordOf(const AK_String& attributes, const char* name) const;
    /// The value of a record; "" for none.
    AK_String ValueOf(const AK_String& record) const;

private:
    struct Block {
        int begin = 0, end = 0;   // indices of lines
    };
    Block Find(const char* kind, const AK_String& handle) const;

    AK_List<AK_String> _lines{1};
    std::unordered_map<std::string, Block> _blocks;   // by kind and handle
};

static constexpr const char* dictionaryKind = "DICTIONARY";   // and kinds that begin with it
static constexpr const char* recordKind = "XRECORD";
static constexpr int linesBeforeContent = 3;   // kind, group code, handle

static AK_String Trimmed(const AK_String& line)
{
    const char* end = line.c_str() + line.Length();
    while (end > line.c_str() && end[-1] == ' ') --end;
    return AK_String(line.c_str(), end);
}

AK_DxfAttributes::Objects::Objects(const AK_String& path)
{
    AK_TextReader reader(path);
    AK_String line;
    const char* kind = nullptr;
    int begin = 0;
    while (ReadTextLine(reader, line, maxDictionaryLine)) {
        if (!kind) {
            if (line.StartsWith(dictionaryKind)) kind = dictionaryKind;
            if (line == recordKind) kind = recordKind;
            begin = _lines.Size();
        }
        if (!kind) continue;
        if (!(line == "  0")) {
            _lines.Append(Trimmed(line));
            continue;
        }
        if (_lines.Size() - begin >= linesBeforeContent) {
            const AK_String& handle = _lines[begin + linesBeforeContent - 1];
            _blocks.emplace(std::string(kind) + handle.c_str(), Block{begin + linesBeforeContent, _lines.Size()});
        }
        kind = nullptr;
    }
}

AK_DxfAttributes::Objects::Block AK_DxfAttributes::Objects::Find(const char* kind, const AK_String& handle) const
{
    const auto found = _blocks.find(std::string(kind) + handle.c_str());
    return found == _blocks.end() ? Block() : found->second;
}

AK_String AK_DxfAttributes::Objects::AttributesOf(const AK_String& dictionary) const
{
    const Block block = Find(dictionaryKind, dictionary);
    for (int i = block.begin; i + 2 < block.end; ++i)
        if (_lines[i] == "ESRI_Attributes") return _lines[i + 2];
    return "";
}

AK_String AK_DxfAttributes::Objects::RecordOf(const AK_String& attributes, const char* name) const
{
    const Block block = Find(dictionaryKind, attributes);
    for (int i = block.begin; i + 3 < block.end; ++i) {
        if (!(_lines[i] == "  3")) continue;
        AK_String entry = _lines[i + 1];
        entry.ToLower();
        if (entry.StartsWith(name)) return _lines[i + 3];
    }
    return "";
}

AK_String AK_DxfAttributes::Objects::ValueOf(const AK_String& record) const
{
    const Block block = Find(recordKind, record);
    return block.end > block.begin ? _lines[block.end - 1] : AK_String();
}

AK_DxfAttributes::AK_DxfAttributes(const AK_String& path) : _objects(std::make_unique<Objects>(path)) {}

AK_DxfAttributes::~AK_DxfAttributes() = default;

AK_String AK_DxfAttributes::Value(const AK_String& label, const char* key) const
{
    static constexpr const char* mark = "_XDICT_";
    const char* handle = std::strstr(label.c_str(), mark);
    if (!handle) return "";
    handle += std::strlen(mark);
    const char* end = std::strchr(handle, '_');
    if (!end || end == handle) return "";
    return _objects->ValueOf(_objects->RecordOf(_objects->AttributesOf(AK_String(handle, end)), key));
}

// A name says more than the layer, which these tools always write.
AK_String AK_DxfAttributes::Name(const AK_String& label) const
{
    const AK_String name = Value(label, "name");
    return name.IsEmpty() ? Value(label, "layer") : name;
}

AK_String AK_Polyline::LabelFromDxfDict(const AK_String& path, const AK_String& label, double& value)
{
    const AK_DxfAttributes attributes(path);
    double depth = 0;
    if (ScanCoordinates(attributes.Value(label, "d0").c_str(), false, &depth, 1)) value = depth;
    const AK_String name = attributes.Name(label);
    return name.IsEmpty() ? label : name;
}

// ----------------------------------------------------------------------------------------------------------------
// What else is in a file
// ----------------------------------------------------------------------------------------------------------------

AK_String AK_Polyline::EntitiesOfDxf(const AK_String& path)
{
    constexpr int maxNames = 20;   // enough to see what a drawing is made of
    constexpr int maxName = 40;
    AK_List<AK_String> names(1);
    AK_List<int> counts(1);
    AK_TextReader reader(path);
    AK_String line;
    bool inEntities = false;
    while (ReadTextLine(reader, line, maxLine)) {
        if (line == "ENTITIES") inEntities = true;
        if (!inEntities || !(line == "  0") || !ReadTextLine(reader, line, maxName)) continue;
        if (line == "ENDSEC") break;
        int i = names.IndexOf(line);
        if (i < 0 && names.Size() < maxNames) {
            i = names.Append(line);
            counts.Append(0);
        }
        if (i >= 0) ++counts[i];
    }
    AK_String list;
    for (int i = 0; i < names.Size(); ++i)
        list = list + (i > 0 ? ", " : "") + names[i] + " (" + AK_String(counts[i], "%d") + ")";
    return list;
}
