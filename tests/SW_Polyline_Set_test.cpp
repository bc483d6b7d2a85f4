// Sets of lines: files and names, selection, what is taken out and put in, records.

#include "SW_Polyline_TestSupport.h"

namespace {

class SW_PolylineSetTest : public LineTest {
protected:
    SW_PolylineSetTest() : set(*Add<SW_PolylineSet>(*polylines, "set")) {}

    void Import(const char* name, const std::string& bytes) { EXPECT_EQ(SetOn(set, "Import", File(name, bytes)), ""); }
    std::string Selected() { return set.Get("SelMemberList").c_str(); }

    SW_PolylineSet& set;
};

const char* const threeLines = "name=a\n1\n1 1 1\nname=b\n1\n2 2 2\nname=c\n2\n3 3 3\n4 4 4\n";

}   // namespace

TEST_F(SW_PolylineSetTest, LinesAreNamedByTheFile)
{
    Import("a.nxyz", "name=a\n1\n1 1 1\n1\n2 2 2\nname=a\n1\n3 3 3\n");
    Import("a.dxf", "LWPOLYLINE\n  8\nwall\n 90\n1\n 10\n4\n 20\n4\nLWPOLYLINE\n  8\nwall\n 90\n1\n 10\n5\n 20\n5\n"
                    "LWPOLYLINE\n 90\n1\n 10\n6\n 20\n6\n");
    Import("a.ano", "road\n1 red\n7 7\n\n1 red\n8 8\n");
    EXPECT_EQ(LinesOf(set), (Lines{"a: 1 1 1", "p_2: 2 2 2", "a_2: 3 3 3", "wall: 4 4 0", "wall_4: 5 5 0",
                                   "pl_6: 6 6 0", "road: 7 7 0", "pl_8: 8 8 0"}));
    EXPECT_EQ(set.Get("DeSelMemberList"), "") << "each line arrives selected";
    EXPECT_EQ(set.Get("BoundingBox"), "1 1 0 8 8 3");

    EXPECT_EQ(SetOn(set, "Import", directory / "none.dxf"),
              ("file '" + (directory / "none.dxf") + "' does not exist!").c_str());
    EXPECT_EQ(SetOn(set, "Import", File("a.txt", "")),
              ("error occurred during import from '" + (directory / "a.txt") + "'").c_str());
    Messages();
    Import("empty.nxyz", "");
    EXPECT_EQ(Messages(), Lines{("WARNING:no line found in '" + (directory / "empty.nxyz") + "'").c_str()});
    EXPECT_EQ(set.Size(), 8);
}

TEST_F(SW_PolylineSetTest, SelectedLinesAreDeleted)
{
    Import("a.nxyz", threeLines);
    SetOn(set, "DeSelect", "b");
    EXPECT_EQ(Selected(), "a%AK_SEP%c%AK_SEP%");
    EXPECT_EQ(set.Get("DeSelMemberList"), "b%AK_SEP%");
    SetOn(set, "DeSelect", "all");
    SetOn(set, "Select", "nothing of that name");
    EXPECT_EQ(Selected(), "");
    SetOn(set, "Select", "a");
    SetOn(set, "DeleteSelected", "");
    EXPECT_EQ(LinesOf(set), (Lines{"b: 2 2 2", "c: 3 3 3;4 4 4"}));
    EXPECT_EQ(Selected(), "b%AK_SEP%c%AK_SEP%") << "what remains is selected";
    EXPECT_EQ(set.Get("BoundingBox"), "2 2 2 4 4 4");
    SetOn(set, "DeleteSelected", "");
    EXPECT_EQ(set.Size(), 0);
    EXPECT_EQ(set.Get("BoundingBox"), "");
    SetOn(set, "Select", "all");
}

TEST_F(SW_PolylineSetTest, SelectedLinesAreExtractedFromTheLast)
{
    AddLine("c", "9 9 9");
    Import("a.nxyz", threeLines);
    SetOn(set, "DeSelect", "b");
    SetOn(set, "ExtractSelected", "");
    EXPECT_EQ(LinesOf(*polylines), (Lines{"c: 9 9 9", "c_0001: 3 3 3;4 4 4", "a: 1 1 1"}));
    EXPECT_EQ(polylines->Component("a")->Get("Annotations"), "name=a;");
    EXPECT_EQ(set.Size(), 3);

    auto* alone = Add<SW_PolylineSet>(*viewer, "alone");
    SetOn(*alone, "Import", directory / "a.nxyz");
    SetOn(*alone, "ExtractSelected", "");   // no container of lines there
    ExpectConsistent(*viewer);
}

TEST_F(SW_PolylineSetTest, LinesAreAddedUnderNewNames)
{
    AddLine("line", "1 2 3");
    EXPECT_EQ(SetOn(set, "Add", "../line"), "");
    SetOn(set, "DeSelect", "all");
    EXPECT_EQ(SetOn(set, "Add", "Project/Polylines/line"), "");
    EXPECT_EQ(SetOn(set, "Add", "line"), "");
    EXPECT_EQ(LinesOf(set), (Lines{"line: 1 2 3", "linex: 1 2 3", "linexx: 1 2 3"}));
    EXPECT_EQ(Selected(), "linex%AK_SEP%linexx%AK_SEP%");
    EXPECT_EQ(SetOn(set, "Add", "../nothing"), "there is no line '../nothing'");
}

TEST_F(SW_PolylineSetTest, ProjectsAllLines)
{
    AddPlane("alp", 0.5);
    Import("a.nxyz", "1\n10 10 0\n2\n20 10 0\n30 10 0\n");
    Messages();
    SetOn(set, "ProjectOnto", "none");
    SetOn(set, "ProjectOnto", "alp");
    EXPECT_EQ(Messages(), (Lines{"projecting polyline set set onto mesh alp...",
                                 "projecting polyline set set onto mesh alp done"}));
    EXPECT_EQ(LinesOf(set), (Lines{"p_1: 10 10 5", "p_2: 20 10 10;30 10 15"}));
    EXPECT_EQ(set.Get("BaseMeshName"), "../../DHMs/alp");
    EXPECT_EQ(set.Get("BoundingBox"), "10 10 5 30 10 15");
}

TEST_F(SW_PolylineSetTest, ExportedLinesReadBackWithTheirNames)
{
    Import("a.nxyz", "name=a part\nk=v\n1\n1 1 1\n2\n2 2 2\n3 3 3\n");
    for (const char* name : {"out.nxyz", "out.dxf"}) {
        EXPECT_EQ(SetOn(set, "Export", directory / name), "");
        auto* again = Add<SW_PolylineSet>(*polylines, "again");
        EXPECT_EQ(SetOn(*again, "Import", directory / name), "");
        EXPECT_EQ(LinesOf(*again), LinesOf(set)) << name;
    }
    EXPECT_EQ(FileBytes(directory / "out.nxyz"), "name=a part\nk=v\n1\n1 1 1\nname=p_2\n2\n2 2 2\n3 3 3\n");
    EXPECT_EQ(SetOn(set, "Export", directory / "out.xy"),
              ("error occurred during export to '" + (directory / "out.xy") + "'").c_str());
}

TEST_F(SW_PolylineSetTest, RecordsComeBackAndCutOnesAreRefused)
{
    Import("a.nxyz", threeLines);
    SetOn(set, "DeSelect", "b");
    ExpectRecordRoundTrip<SW_PolylineSet>(set, *Add<SW_PolylineSet>(*polylines, "other"), directory / "record",
                                          [](const SW_PolylineSet& s) {
                                              std::string text;
                                              for (const std::string& line : LinesOf(s)) text += line + "|";
                                              return text + s.Get("SelMemberList").c_str();
                                          });
    const int absurd = 2000000000;
    const int length = 17;
    WriteFile(directory / "record", std::string((const char*)&length, 4) + "SW_PolylineSet:v0" +
                                        std::string((const char*)&absurd, 4) + std::string(100, '\0'));
    AK_Stream stream(directory / "record", "rb");
    EXPECT_EQ(set.LoadData(stream), 1);
    EXPECT_EQ(set.Size(), 3);
}
