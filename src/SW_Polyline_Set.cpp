// Sets of lines: attributes, files, selection, record, drawing.

#include "SW_Polyline_Set.h"

#include "AK_Basic_NewFile.h"
#include "AK_Text2d.h"
#include "SW_Mesh.h"
#include "SW_Polyline.h"
#include "SW_Polyline_Shared.h"

#include <string>

std::span<const AK_Row> SW_PolylineSet::Rows()
{
    using S = SW_PolylineSet;
    // clang-format off
    static constexpr Row rows[] = {
        {"Import",          command<&S::Import>},
        {"Export",          command<&S::Export>},
        {"ProjectOnto",     command<&S::ProjectOnto>},
        {"BaseMeshName",    pair<&S::BaseMeshName, &S::SetBaseMeshName>},
        {"MeshNamesList",   shown<[](const S& set) { return SW_PathsOfType(set, "DHM"); }>},
        {"PolylinesList",   shown<[](const S& set) { return SW_PathsOfType(set, "Polyline"); }>},

        {"Select",          command<&S::Select>},
        {"DeSelect",        command<&S::DeSelect>},
        {"SelMemberList",   shown<[](const S& set) { return set.NamesOf(1); }>},
        {"DeSelMemberList", shown<[](const S& set) { return set.NamesOf(0); }>},
        {"DeleteSelected",  command<&S::DeleteSelected>},
        {"ExtractSelected", command<&S::ExtractSelected>},
        {"Add",             command<&S::Add>},

        {"DisplayLabels",   value<&S::_displayLabels>},
        {"LabelFont",       value<&S::_labelFont>},
        {"FontList",        shown<[](const S&) { return AK_Text2d::FontList(); }>},
    };
    // clang-format on
    return rows;
}

SW_PolylineSet::SW_PolylineSet(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

void SW_PolylineSet::LinesChanged()
{
    SW_PointBox box;
    for (int i = 0; i < Size(); ++i) {
        box.Add(_polylines[i]._x);
        const int number = _polylines[i].NumNoCoordinates();
        if (number > 0) SW_WarnOfNoCoordinates(IdAbs() + " '" + _names[i] + "'", number);
    }
    _xMin = box.Lo();
    _xMax = box.Hi();
}

int SW_PolylineSet::BoundingBox(float* lo, float* hi) const
{
    if (Size() == 0) return 0;
    ToFloats(_xMin, lo);
    ToFloats(_xMax, hi);
    return UpdateBoundingBox(lo, hi);
}

void SW_PolylineSet::Append(const AK_Polyline& line, const AK_String& name)
{
    _polylines.Append(line);
    _names.Append(name);
    _selected.Append(1);
}

// ----------------------------------------------------------------------------------------------------------------
// Files
// ----------------------------------------------------------------------------------------------------------------

void SW_PolylineSet::Import(const AK_String& path)
{
    if (!AK_System::FileExists(path)) return SW_TellMissingFile(path);
    const SW_LineFormat* format = SW_FormatOfFile(path);
    AK_Dict<AK_String, char> taken;
    for (const AK_String& name : _names) taken[name] = 1;
    const auto take = [&](const SW_LineOfFile& file) {
        AK_String name = file.name;
        if (name.IsEmpty()) name = format->nameInSet + AK_String(Size() + 1, "%d");
        if (taken.Find(name)) name = name + AK_String(Size(), "_%d");
        taken[name] = 1;
        Append(file.line, name);
    };
    if (!format || !SW_ReadLines(path, *format, take)) {
        _execStatus = AK_String("error occurred during import from '") + path + "'";
        return;
    }
    LinesChanged();
    Root()->Set("Autofit", "");   // the view follows; a front end without one knows no such attribute
}

void SW_PolylineSet::Export(const AK_String& path)
{
    constexpr int digits = AK_Polyline::writtenDigits;
    const auto writeDxf = [this](std::ostream& stream) {
        for (int i = 0; i < Size(); ++i) _polylines[i].WriteToDxf(_names[i], stream, digits);
    };
    const auto writeNxyz = [this](std::ostream& stream) {
        for (int i = 0; i < Size(); ++i) {
            AK_Polyline line = _polylines[i];
            line.annotations.SetKeyValue("name", _names[i], '=', ';');
            line.WriteToNxyz(stream, digits);
        }
    };
    const AK_String extension = path.Extension();
    int failed = 1;
    if (extension == "nxyz") failed = !AK_WriteStream(path, writeNxyz);
    if (extension == "dxf" || extension == "DXF") failed = SW_WriteDxfFile(path, writeDxf);
    if (failed) _execStatus = AK_String("error occurred during export to '") + path + "'";
}

void SW_PolylineSet::ProjectOnto(const AK_String& name)
{
    const SW_Mesh* mesh = SW_MeshReference::Find(*this, name);
    if (!mesh || !mesh->HasSurfaceFor(*this)) return;
    AK_MSG("projecting polyline set " << Id() << " onto mesh " << mesh->Id() << "...");
    _baseMesh.Set(*this, *mesh);
    for (AK_Polyline& line : _polylines) SW_ProjectPoints(line._x, *mesh);
    LinesChanged();
    AK_MSG("projecting polyline set " << Id() << " onto mesh " << mesh->Id() << " done");
}

// ----------------------------------------------------------------------------------------------------------------
// Selection
// ----------------------------------------------------------------------------------------------------------------

void SW_PolylineSet::SetFlag(const AK_String& name, char flag)
{
    if (name == "all")
        _selected.Fill(Size(), flag);
    else if (const int i = _names.IndexOf(name); i >= 0)
        _selected[i] = flag;
}

AK_String SW_PolylineSet::NamesOf(char flag) const
{
    std::string list;   // a set can have very many lines
    for (int i = 0; i < Size(); ++i)
        if (_selected[i] == flag) list.append(_names[i].c_str()).append(ak_sep);
    return list.c_str();
}

void SW_PolylineSet::DeleteSelected()
{
    int kept = 0;
    for (int i = 0; i < Size(); ++i) {
        if (_selected[i]) continue;
        std::swap(_polylines[kept], _polylines[i]);
        std::swap(_names[kept], _names[i]);
        ++kept;
    }
    _polylines.Redimension(kept);   // with a smaller capacity the lines beyond are freed
    _polylines.SetSize(kept);
    _names.SetSize(kept);
    _selected.Fill(kept, 1);
    LinesChanged();
}

void SW_PolylineSet::ExtractSelected()
{
    AK_Object* project = Parent() ? Parent()->Parent() : nullptr;
    AK_Object* container = project ? project->Component("Polylines") : nullptr;
    if (!container) return;
    SW_UniqueIds ids(*container);
    for (int i = Size() - 1; i >= 0; --i) {
        if (!_selected[i]) continue;
        auto* line = new SW_Polyline(ids.Unique(_names[i]), nullptr);
        line->SetLine(_polylines[i]);
        SW_UniqueIds::Adopt(*container, line);
    }
}

void SW_PolylineSet::Add(const AK_String& id)
{
    const SW_Polyline* line = SW_FindLine(*this, id);
    if (!line) {
        SW_TellNoLine(id);
        return;
    }
    AK_String name = line->Id();
    while (_names.IndexOf(name) >= 0) name.Append("x");
    Append(line->Line(), name);
    LinesChanged();
}

// ----------------------------------------------------------------------------------------------------------------
// Record
//
//   "SW_PolylineSet:v0"   string
//   number of lines       int
//   of each line          int number of points, x, y, z of each as doubles; string name; 1 byte, 1 if it is selected
// ----------------------------------------------------------------------------------------------------------------

int SW_PolylineSet::SaveData(AK_Stream& stream) const
{
    stream.Write(AK_String("SW_PolylineSet:v0"));
    stream.Write(Size());
    for (int i = 0; i < Size(); ++i) {
        stream.Write(_polylines[i]._x);
        stream.Write(_names[i]);
        stream.Write(_selected[i]);
    }
    return stream.Failed() ? IoError(AK_HERE) : 0;
}

int SW_PolylineSet::LoadData(AK_Stream& stream)
{
    constexpr long leastBytesPerLine = 4 + 4 + 1;
    AK_String header;
    stream.Read(header);
    if (!(header == "SW_PolylineSet:v0")) return IoError(AK_HERE);
    const int n = stream.ReadCount(leastBytesPerLine);
    AK_List<AK_Polyline> polylines(1);
    AK_List<AK_String> names(1);
    AK_List<char> selected(1);
    for (int i = 0; i < n && stream._status == 0; ++i) {
        AK_Polyline line;
        AK_String name;
        char flag = 0;
        stream.Read(line._x);
        stream.Read(name);
        stream.Read(flag);
        polylines.Append(std::move(line));
        names.Append(name);
        selected.Append(flag != 0);
    }
    if (stream._status != 0) return IoError(AK_HERE);
    _polylines.Swap(polylines);
    _names.Swap(names);
    _selected.Swap(selected);
    LinesChanged();
    return 0;
}

// ----------------------------------------------------------------------------------------------------------------
// Drawing
// ----------------------------------------------------------------------------------------------------------------

// Lines that are not selected show in the inverse colour.
void SW_PolylineSet::Draw()
{
    for (int i = 0; i < Size(); ++i) {
        const AK_List<AK_Vec>& x = _polylines[i]._x;
        if (_selected[i])
            ResetColor(_autoColored);
        else
            SetInverseColor(_color.v);
        aglBegin(GL_LINE_STRIP);
        for (const AK_Vec& p : x) AK_DrawVertex(p);
        aglEnd();
        if (_displayLabels && x.Size() > 0) SW_DrawText(x[0], _labelFont, _names[i]);
    }
}
