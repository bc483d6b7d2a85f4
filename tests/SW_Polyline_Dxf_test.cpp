// DXF files: both kinds of polylines, what is written, names from extended data, hostile files; what GDAL's tools find
// in exported files.

#include "SW_Mesh_GdalTools.h"
#include "SW_Polyline_TestSupport.h"

#include <sstream>

namespace {

class SW_Polyline_Dxf : public LineTest {
protected:
    SW_Polyline_Dxf() { AK_Polyline::_importXDICT = 0; }
    ~SW_Polyline_Dxf() override { AK_Polyline::_importXDICT = 0; }

    /// Labels and points of all lines.
    Lines Read(const std::string& bytes)
    {
        AK_TextReader reader(File("file.dxf", bytes));
        Lines lines;
        AK_Polyline line;
        AK_String label;
        while (line.ReadFromDxf(reader, label)) lines.push_back(Text(label.c_str(), line._x));
        return lines;
    }
};

std::string Light(const std::string& count, const std::string& pairs, const char* layer = "a")
{
    return std::string("  0\nLWPOLYLINE\n  5\nF1\n  8\n") + layer + "\n 90\n" + count + "\n 70\n1\n" + pairs;
}

std::string OldVertex(const std::string& pairs) { return "  0\nVERTEX\n  8\nother\n" + pairs; }

const std::string oldHeader = "  0\nPOLYLINE\n  8\nwall\n 66\n1\n 10\n0\n 20\n0\n 30\n0\n";
const std::string twoVertices = " 10\n1\n 20\n2\n 10\n3\n 20\n4\n";

}   // namespace

TEST_F(SW_Polyline_Dxf, ReadsBothKindsOfPolylines)
{
    const std::string old = oldHeader + OldVertex(" 10\n1\n 20\n2\n 30\n3\n") + OldVertex(" 20\n5\n 10\n4\n");
    const struct {
        const char* why;
        std::string file;
        Lines lines;
    } cases[] = {
        {"lightweight", Light("2", twoVertices), {"a: 1 2 0;3 4 0"}},
        {"with an elevation", Light("2", " 38\n7.5\n" + twoVertices), {"a: 1 2 7.5;3 4 7.5"}},
        {"other group codes between",
         Light("2", " 43\n0\n 10\n1\n 20\n2\n 40\n9\n 42\n1\n 10\n3\n 20\n4\n"),
         {"a: 1 2 0;3 4 0"}},
        {"old-style; the layer of a vertex does not count", old + "  0\nSEQEND\n", {"wall: 1 2 3;4 5 0"}},
        {"ended by the section", old + "  0\nENDSEC\n", {"wall: 1 2 3;4 5 0"}},
        {"both kinds",
         Light("1", " 10\n1\n 20\n2\n") + old + "  0\nSEQEND\n" + Light("1", " 10\n8\n 20\n9\n", "b"),
         {"a: 1 2 0", "wall: 1 2 3;4 5 0", "b: 8 9 0"}},
        {"layers that look like codes",
         Light("1", " 10\n1\n 20\n2\n", "POLYLINE") + Light("1", " 10\n1\n 20\n2\n", " 90"),
         {"POLYLINE: 1 2 0", " 90: 1 2 0"}},
        {"codes without their blanks are none", Light("1", "10\n1\n20\n2\n"), {}},
        {"no layer", "  0\nLWPOLYLINE\n 90\n1\n 10\n1\n 20\n2\n", {": 1 2 0"}},
        {"fewer vertices than announced", Light("3", twoVertices) + Light("1", " 10\n1\n 20\n2\n", "b"), {"b: 1 2 0"}},
        {"more vertices than announced", Light("1", twoVertices), {"a: 1 2 0"}},
        {"an absurd count", Light("2000000000", twoVertices), {}},
        {"a negative count", Light("-2", twoVertices), {}},
        {"values that are none count as 0", Light("2", " 10\nnan\n 20\n2\n 10\n1e999\n 20\nx\n"), {"a: 0 2 0;0 0 0"}},
        {"a thousand digits", Light("1", " 10\n" + std::string(1000, '9') + "\n 20\n2\n"), {"a: 0 2 0"}},
        {"empty", "", {}},
        {"binary", std::string("\0\1POLYLINE\n\0\xff", 13), {}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Read(c.file), c.lines) << c.why;
        std::string withReturns = c.file;
        for (size_t at = 0; (at = withReturns.find('\n', at)) != std::string::npos; at += 2)
            withReturns.insert(at, "\r");
        EXPECT_EQ(Read(withReturns), c.lines) << c.why << ", lines that end in carriage return and line feed";
    }
}

TEST_F(SW_Polyline_Dxf, TellsOfWhatIsLeftOutAndOfWhatCannotBeRead)
{
    Read(Light("3", twoVertices));
    EXPECT_EQ(Messages(), Lines{"WARNING:a DXF polyline on layer 'a' ends after 2 vertices and is left out"});
    Read(Light("2", " 10\nnan\n 20\n2\n 10\n1e999\n 20\n1\n"));
    EXPECT_EQ(Messages(), Lines{"WARNING:2 coordinates of a DXF polyline on layer 'a' cannot be read and count as 0"});
}

TEST_F(SW_Polyline_Dxf, WritesExactlyThese)
{
    AK_Polyline line;
    line._x = Points("1.5 2600000.127 3;-1e-7 2 3");
    std::ostringstream out;
    line.WriteToDxf("the layer", out, 9);
    EXPECT_EQ(out.str(), "  0\nPOLYLINE\n  8\nthe layer\n 10\n  0\n 20\n  0\n 30\n  0\n 70\n  9\n 66\n  1\n"
                         "  0\nVERTEX\n  8\nthe layer\n 70\n32\n 10\n1.5\n 20\n2600000.13\n 30\n3\n"
                         "  0\nVERTEX\n  8\nthe layer\n 70\n32\n 10\n-1e-07\n 20\n2\n 30\n3\n"
                         "  0\nSEQEND\n");
    EXPECT_EQ(Read(out.str()), Lines{"the layer: 1.5 2600000.13 3;-1e-07 2 3"});

    SW_Polyline* object = AddLine("alp", "1 2 3;4 5 6");
    EXPECT_EQ(SetOn(*object, "Export", directory / "alp.dxf"), "");
    std::ostringstream framed;
    object->Line().WriteToDxf("alp", framed, 9);
    EXPECT_EQ(FileBytes(directory / "alp.dxf"),
              "  0\nSECTION\n  2\nENTITIES\n" + framed.str() + "  0\nENDSEC\n  0\nEOF\n  0\nEOF\n");
}

// ----------------------------------------------------------------------------------------------------------------
// Dictionaries
// ----------------------------------------------------------------------------------------------------------------

namespace {

std::string Dictionary(const std::string& handle, const std::string& entries)
{
    return "  0\nDICTIONARY\n  5\n" + handle + "\n330\n0\n100\nAcDbDictionary\n" + entries;
}
std::string Entry(const std::string& name, const std::string& handle)
{
    return "  3\n" + name + "\n360\n" + handle + "\n";
}
std::string Record(const std::string& handle, const std::string& value)
{
    return "  0\nXRECORD\n  5\n" + handle + "\n100\nAcDbXrecord\n280\n1\n  1\n" + value + "\n";
}

}   // namespace

TEST_F(SW_Polyline_Dxf, LabelsCarryTheHandleOfTheDictionaryWhenAsked)
{
    const std::string file = "  0\nLWPOLYLINE\n  5\nF1\n102\n{ACAD_XDICTIONARY\n360\n3A\n102\n}\n  8\nareas\n 90\n1\n"
                             " 10\n1\n 20\n2\n";
    EXPECT_EQ(Read(file), Lines{"areas: 1 2 0"});
    AK_Polyline::_importXDICT = 1;
    EXPECT_EQ(Read(file), Lines{"XDICT 3A areas: 1 2 0"});
    EXPECT_EQ(Read(Light("1", " 10\n1\n 20\n2\n")), Lines{" a: 1 2 0"});
}

TEST_F(SW_Polyline_Dxf, FindsNameAndDepthInTheDictionary)
{
    const std::string entity = Dictionary("3A", Entry("ESRI_Attributes", "4B"));
    const std::string attributes = Dictionary("4B", Entry("Layer", "L1") + Entry("D0_m", "D1") + Entry("NAME", "N1"));
    const std::string records = Record("D1", "1.25") + Record("N1", "upper part") + Record("L1", "areas");
    const struct {
        const char* why;
        std::string file;
        const char* label;
        const char* result;
        double depth;
    } cases[] = {
        {"name and depth", entity + attributes + records + "  0\n", "f_XDICT_3A_areas", "upper part", 1.25},
        {"in any order", records + attributes + entity + "  0\n", "f_XDICT_3A_areas", "upper part", 1.25},
        {"no end of the handle", entity + attributes + records + "  0\n", "f_XDICT_3A", "f_XDICT_3A", 7},
        {"a handle that only begins alike", entity + attributes + records + "  0\n", "f_XDICT_3_a", "f_XDICT_3_a", 7},
        {"no attributes", Dictionary("3A", Entry("Other", "4B")) + attributes + records + "  0\n", "f_XDICT_3A_a",
         "f_XDICT_3A_a", 7},
        {"no record of the name: the layer",
         entity + attributes + Record("D1", "1.25") + Record("L1", "areas") + "  0\n", "f_XDICT_3A_a", "areas", 1.25},
        {"no depth: the value stays", entity + attributes + Record("N1", "upper part") + "  0\n", "f_XDICT_3A_a",
         "upper part", 7},
        {"a depth that is none", entity + attributes + Record("D1", "inf") + "  0\n", "f_XDICT_3A_a", "f_XDICT_3A_a",
         7},
        {"an entry that ends the file", entity + Dictionary("4B", "  3\nname\n"), "f_XDICT_3A_a", "f_XDICT_3A_a", 7},
        {"a record without content", entity + attributes + "  0\nXRECORD\n  5\nN1\n  0\n", "f_XDICT_3A_a",
         "f_XDICT_3A_a", 7},
    };
    for (const auto& c : cases) {
        double depth = 7;
        EXPECT_EQ(AK_Polyline::LabelFromDxfDict(File("d.dxf", c.file), c.label, depth), c.result) << c.why;
        EXPECT_EQ(depth, c.depth) << c.why;
    }
    double depth = 7;
    EXPECT_EQ(AK_Polyline::LabelFromDxfDict(directory / "none", "f_XDICT_3A_a", depth), "f_XDICT_3A_a");
}

// ----------------------------------------------------------------------------------------------------------------
// A reader that is not ours
// ----------------------------------------------------------------------------------------------------------------

// Layer and points of each line.
static Lines Features(const AK_String& path)
{
    Lines features;
    for (const GdalLine& line : LinesByGdal(path)) {
        AK_List<AK_Vec> points(1);
        for (const AK_Vec& p : line.points) points.Append(p);
        features.push_back(Text(line.layer, points));
    }
    return features;
}

TEST_F(SW_Polyline_Dxf, GisReadsTheSameLayersAndVertices)
{
    SKIP_WITHOUT_GDAL();
    SW_Polyline* line = AddLine("wall", "1 2 3;4.25 5 6;2600000.12 1200000.5 1500");
    EXPECT_EQ(SetOn(*line, "Export", directory / "wall.dxf"), "");
    // The fixed flag closes every line: the last vertex is joined with the first.
    EXPECT_EQ(Features(directory / "wall.dxf"), Lines{"wall: 1 2 3;4.25 5 6;2600000.12 1200000.5 1500;1 2 3"});

    auto* set = Add<SW_PolylineSet>(*polylines, "set");
    SetOn(*set, "Import", File("set.nxyz", "name=upper part\n2\n1 2 3\n4 5 6\nname=b\n3\n7 8 9\n0 0 0\n1 1 1\n"));
    EXPECT_EQ(SetOn(*set, "Export", directory / "set.DXF"), "");
    EXPECT_EQ(Features(directory / "set.DXF"), (Lines{"upper part: 1 2 3;4 5 6;1 2 3", "b: 7 8 9;0 0 0;1 1 1;7 8 9"}));
}
