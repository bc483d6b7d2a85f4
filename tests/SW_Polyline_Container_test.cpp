// Containers of lines, polygons and labels: what they make, the ids of imported lines, projection of all.

#include "SW_Polyline_TestSupport.h"

#include <ctime>

namespace {

class SW_LineContainerTest : public LineTest {
protected:
    Lines Imported(AK_Object& container, const char* name, const std::string& bytes)
    {
        static_cast<AK_Container&>(container).DeleteAll();
        EXPECT_EQ(SetOn(container, "Import", File(name, bytes)), "");
        return LinesOf(container);
    }
};

std::string Light(const char* layer, const char* x)
{
    return std::string("LWPOLYLINE\n  8\n") + layer + "\n 90\n1\n 10\n" + x + "\n 20\n0\n";
}

}   // namespace

TEST_F(SW_LineContainerTest, ImportedLinesGetTheirIds)
{
    const struct {
        const char* why;
        const char* file;
        std::string bytes;
        Lines lines;
    } cases[] = {
        {"xy: the file", "alp.x.xy", "1 2\n3 4\n", {"alp_x: 1 2 0;3 4 0"}},
        {"xy: the name", "alp.xy", "name=upper part\n1 2\n", {"upper_part: 1 2 0"}},
        {"xyz", "alp.xyz", "1 2 3\n", {"alp: 1 2 3"}},
        {"nxyz: names and numbers, named ones counted along",
         "alp.nxyz",
         "1\n1 1 1\nname=b\n1\n2 2 2\n1\n3 3 3\n",
         {"alp_0001: 1 1 1", "b: 2 2 2", "alp_0003: 3 3 3"}},
        {"nxyz: the lines before a fault", "alp.nxyz", "1\n1 1 1\n1\n2 x\n", {"alp_0001: 1 1 1"}},
        {"nxyz: lines without points are left out", "alp.nxyz", "0\n1\n1 1 1\n", {"alp_0002: 1 1 1"}},
        {"dxf: the layer behind the file, unique",
         "alp.dxf",
         Light("a b", "1") + Light("", "2") + Light("a b", "3") + Light("a b", "4"),
         {"alp_a_b: 1 0 0", "alp_0002: 2 0 0", "alp_a_b_0001: 3 0 0", "alp_a_b_0002: 4 0 0"}},
        {"DXF: ids that end in a number",
         "alp.DXF",
         Light("l_7", "1") + Light("l_7", "2") + Light("l_7", "3"),
         {"alp_l_7: 1 0 0", "alp_l_0008: 2 0 0", "alp_l_0009: 3 0 0"}},
        {"ano", "alp.ano", "road\n1 red\n1 2\n\n1 blue\n3 4\n", {"road: 1 2 0", "alp_2: 3 4 0"}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Imported(*polylines, c.file, c.bytes), c.lines) << c.why;
        EXPECT_EQ(Imported(*polygons, c.file, c.bytes), c.lines) << c.why;
    }
    EXPECT_EQ(polylines->Component("road")->Get("Color"), "1 0 0");
    ExpectConsistent(*viewer);
}

TEST_F(SW_LineContainerTest, ImportsThatBringNothingSaySo)
{
    for (const char* name : {"none.xy", "none.ano", "none.dxf", "none.nxyz"}) {
        const std::string path = (directory / name).c_str();
        EXPECT_EQ(SetOn(*polylines, "Import", path.c_str()), "cannot open dxf file " + path);
        const bool nxyz = std::string(name) == "none.nxyz";
        EXPECT_EQ(SetOn(*polygons, "Import", path.c_str()),
                  (nxyz ? "cannot open file " : "cannot open dxf file ") + path);
    }
    const struct {
        const char* file;
        std::string bytes;
        std::string warning;
    } cases[] = {
        {"a.dxf", "  2\nENTITIES\n  0\nHATCH\n  0\nENDSEC\n  0\nEOF\n",
         "WARNING:no polyline found in '@', only HATCH (1): filled areas (HATCH) must be exported as outlines"},
        {"b.dxf", "", "WARNING:no line found in '@'"},
        {"b.xy", std::string("\0\1\2", 3), "WARNING:no line found in '@'"},
        {"b.nxyz", "name=b\n", "WARNING:no line found in '@'"},
        {"b.shp", "", "WARNING:no lines are read from '@': unknown extension"},
    };
    for (const auto& c : cases) {
        Messages();
        std::string expected = c.warning;
        const AK_String path = File(c.file, c.bytes);
        expected.replace(expected.find('@'), 1, path.c_str());
        EXPECT_EQ(SetOn(*polylines, "Import", path), "") << c.file;
        EXPECT_EQ(Messages(), Lines{expected});
    }
    EXPECT_EQ(polylines->NumComponents(), 0);
}

TEST_F(SW_LineContainerTest, ImportedPolygonsAreColouredByTheirIds)
{
    Imported(*polygons, "rel.dxf", Light("a", "1"));
    EXPECT_EQ(polygons->Component("rel_a")->Get("Color"), "1 0 0");
    const struct {
        const char* id;
        const char* colour;
    } cases[] = {{"second", "1 0 1"}, {"entrain", "1 0.67 0"}, {"resist", "0 0.67 0"}, {"other", "0.6 0.6 0.6"}};
    for (const auto& c : cases) {
        SW_Polygon* polygon = AddPolygon(c.id, "");
        polygon->SetNameSpecificColor();
        EXPECT_EQ(polygon->Get("Color"), c.colour) << c.id;
    }
}

TEST_F(SW_LineContainerTest, ImportedLinesLieOnTheBaseMesh)
{
    AddPlane("alp", 0.5);
    auto* set = Add<SW_PolylineSet>(*polylines, "set");
    SetOn(*set, "Import", File("set.nxyz", "1\n10 10 0\n"));
    AddLine("line", "20 10 0");
    EXPECT_EQ(SetOn(*polylines, "ProjectOnto", "none"), "");
    EXPECT_EQ(polylines->Get("BaseMeshName"), "");
    EXPECT_EQ(SetOn(*polylines, "ProjectOnto", "../DHMs/alp"), "");
    EXPECT_EQ(LinesOf(*polylines), Lines{"line: 20 10 10"});
    EXPECT_EQ(LinesOf(*set), Lines{"p_1: 10 10 5"});
    EXPECT_EQ(polylines->Get("BaseMeshName"), "../DHMs/alp");
    EXPECT_EQ(SetOn(*polylines, "Import", File("new.nxyz", "1\n30 10 0\n")), "");
    EXPECT_EQ(LinesOf(*polylines), (Lines{"line: 20 10 10", "new_0001: 30 10 15"}));
    EXPECT_EQ(polylines->Component("new_0001")->Get("BaseMeshName"), "../../DHMs/alp");
    EXPECT_EQ(Listed(polylines->Get("MeshNamesList")), Lines{"../DHMs/alp"});
    auto* stray = Add<SW_Polygons>(*viewer, "stray");
    EXPECT_DEATH(stray->Get("MeshNamesList"), "");
}

TEST_F(SW_LineContainerTest, SetsAreMadeFromFiles)
{
    EXPECT_EQ(SetOn(*polylines, "ImportSet", directory / "none.dxf"),
              ("file '" + (directory / "none.dxf") + "' does not exist!").c_str());
    EXPECT_EQ(polylines->NumComponents(), 0);
    EXPECT_EQ(SetOn(*polylines, "ImportSet", File("lines.nxyz", "1\n1 2 3\n1\n4 5 6\n")), "");
    const auto* set = dynamic_cast<const SW_PolylineSet*>(polylines->Component("lines"));
    ASSERT_TRUE(set);
    EXPECT_EQ(LinesOf(*set), (Lines{"p_1: 1 2 3", "p_2: 4 5 6"}));
    SetOn(*polylines, "CreateSet", "lines");
    SetOn(*polylines, "Create", "lines");
    EXPECT_EQ(Listed(polylines->Get("GetComponentList")), (Lines{"lines", "lines_0001", "lines_0002"}));
}

TEST_F(SW_LineContainerTest, ContainersMakeAndLoadTheirTypes)
{
    auto* labels = Add<SW_Labels>(*project, "Labels");
    SetOn(*polylines, "Create", "line");
    SetOn(*polylines, "CreateSet", "set");
    SetOn(*polygons, "Create", "polygon");
    SetOn(*labels, "Create", "title");
    SetOn(*labels->Component("title"), "Text", "Alp");
    viewer->SaveProjectAs(directory / "saved");
    EXPECT_EQ(AK_Object::_execStatus, "");
    const struct {
        AK_Container* container;
        const char* id;
        const char* type;
    } cases[] = {{polylines, "line", "Polyline"},
                 {polylines, "set", "PolylineSet"},
                 {polygons, "polygon", "Polygon"},
                 {labels, "title", "Text2d"}};
    for (const auto& c : cases) {
        c.container->UnloadComponent(c.id);
        EXPECT_EQ(c.container->Component(c.id), nullptr) << c.id;
        c.container->LoadComponent(c.id);
        ASSERT_TRUE(c.container->Component(c.id)) << c.id;
        EXPECT_EQ(c.container->Component(c.id)->Type(), c.type);
    }
    EXPECT_EQ(labels->Component("title")->Get("Text"), "Alp");
    EXPECT_EQ(polygons->CreateComponent("x", "Polyline"), nullptr);
    ExpectConsistent(*viewer);
}

TEST_F(SW_LineContainerTest, LinesForMeshesComeWithoutObjects)
{
    AK_List<AK_Polyline> lines(1);
    EXPECT_TRUE(SW_Polylines::LoadNxyzFile(File("a.nxyz", "name=a\n1\n1 2 3\n1\n4 5 6\n"), lines));
    EXPECT_TRUE(SW_Polylines::LoadDxfFile(File("a.dxf", Light("a", "7")), lines));
    ASSERT_EQ(lines.Size(), 3);
    EXPECT_EQ(Text(lines[0]._x) + "|" + Text(lines[1]._x) + "|" + Text(lines[2]._x), "1 2 3|4 5 6|7 0 0");
    EXPECT_EQ(lines[0].Name(), "a");
    EXPECT_FALSE(SW_Polylines::LoadDxfFile(directory / "none.dxf", lines));
    EXPECT_EQ(AK_Object::_execStatus, "cannot open dxf file " + (directory / "none.dxf"));
}

TEST_F(SW_LineContainerTest, ManyLinesAreListedInTimeThatGrowsWithTheirNumber)
{
    constexpr int number = 32000;
    std::string file;
    for (int i = 0; i < number; ++i) file += "name=line_" + std::to_string(i) + "\n2\n0 0 0\n1 1 1\n";
    EXPECT_EQ(SetOn(*polylines, "Import", File("many.nxyz", file)), "");
    ASSERT_EQ(polylines->NumComponents(), number);
    AK_Object* last = polylines->ComponentAt(number - 1);
    const std::clock_t start = std::clock();
    const AK_String list = last->Get("PolylinesList");
    const double seconds = double(std::clock() - start) / CLOCKS_PER_SEC;   // several if each entry copies all before
    EXPECT_LT(seconds, 0.5);
    EXPECT_TRUE(list.StartsWith("../line_0%AK_SEP%../line_1%AK_SEP%"));
    EXPECT_TRUE(list.EndsWith("../line_31998%AK_SEP%"));
}
