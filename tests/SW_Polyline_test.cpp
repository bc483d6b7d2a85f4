// Single lines: editing by commands, distances, projection, names of meshes, files, records, drawing.

#include "SW_Polyline_TestSupport.h"

#include "AK_sogl.h"

#include <cmath>

namespace {

class SW_PolylineTest : public LineTest {};

}   // namespace

// ----------------------------------------------------------------------------------------------------------------
// Editing
// ----------------------------------------------------------------------------------------------------------------

TEST_F(SW_PolylineTest, PointsAreEditedByCommands)
{
    SW_Polyline* line = AddLine("line", "");
    const struct {
        const char* command;
        const char* value;
        const char* status;
        const char* selected;   // number from 1
        const char* points;
    } steps[] = {
        {"RemoveVertex", "", "no vertex is selected", "1", ""},
        {"InsertPoint", "9 9 9", "", "1", "9 9 9"},
        {"RemoveVertex", "", "", "1", ""},
        {"AppendPoint", "1 2 3", "", "1", "1 2 3"},
        {"AppendPoint", "4 5 6", "", "2", "1 2 3;4 5 6"},
        {"AppendPoint", "nan 5 6", "'nan 5 6' does not give 3 finite numbers", "2", "1 2 3;4 5 6"},
        {"InsertPoint", "7 8 9", "", "2", "1 2 3;7 8 9;4 5 6"},
        {"MoveVertex", "0 0 1", "", "2", "1 2 3;0 0 1;4 5 6"},
        {"MoveVertex", "0 0", "'0 0' does not give 3 finite numbers", "2", "1 2 3;0 0 1;4 5 6"},
        {"SelectedVertex", "99", "", "3", "1 2 3;0 0 1;4 5 6"},
        {"RemoveVertex", "", "", "2", "1 2 3;0 0 1"},
        {"SelectedVertex", "-5", "", "0", "1 2 3;0 0 1"},
        {"MoveVertex", "1 1 1", "no vertex is selected", "0", "1 2 3;0 0 1"},
        {"InsertPoint", "1 1 1", "no vertex is selected", "0", "1 2 3;0 0 1"},
        {"SelectedVertex", "1 2. 2", "", "1", "1 2 3;0 0 1"},
        {"Reverse", "", "", "1", "0 0 1;1 2 3"},
        {"UnselectVertex", "", "", "0", "0 0 1;1 2 3"},
        {"Clear", "", "", "0", ""},
        {"SelectedVertex", "1 2 3", "", "0", ""},
        {"Reverse", "", "", "0", ""},
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(std::string(step.command) + " " + step.value);
        EXPECT_EQ(SetOn(*line, step.command, step.value), step.status);
        EXPECT_EQ(line->Get("SelectedVertex"), step.selected);
        EXPECT_EQ(Text(line->Points()), step.points);
    }
}

TEST_F(SW_PolylineTest, APointSelectsTheNearestVertexInThreeDimensions)
{
    SW_Polyline* line = AddLine("line", "0 0 0;0 0 10;0 0 0");
    const struct {
        const char* point;
        const char* selected;
    } cases[] = {{"0 0 1", "1"}, {"1 1 8", "2"}, {"0 0 5", "1"}, {"1e20 0 0", "0"}, {"2", "2"}, {"x", "0"}};
    for (const auto& c : cases) {
        EXPECT_EQ(SetOn(*line, "SelectedVertex", c.point), "") << c.point;
        EXPECT_EQ(line->Get("SelectedVertex"), c.selected) << c.point;
    }
    EXPECT_EQ(line->Get("CoordsOfSelectedVertex"), "");
    SetOn(*line, "SelectedVertex", "2");
    EXPECT_EQ(line->Get("CoordsOfSelectedVertex"), "0 0 10");
}

TEST_F(SW_PolylineTest, ListsCopiesAndMeasures)
{
    SW_Polyline* line = AddLine("line", "0 0 0;3 4 100;3.5 4 0.1");
    EXPECT_EQ(SetOn(*line, "ListPoints", ""), "INFO:index: x y z:\n1:  0  0  0\n2:  3  4  100\n3:  3.5  4  0.1\n");
    EXPECT_EQ(line->Get("ProjectedLength"), "5.5");
    EXPECT_EQ(line->Get("NumVertices"), "3");
    EXPECT_EQ(SetOn(*line, "ProjectedDistance", "-3 4"), "INFO: distance to -3 4 is 4.8");
    EXPECT_EQ(AddLine("point", "1 2 3")->Get("ProjectedLength"), "0");

    SetOn(*line, "Annotations", "name=alp;");
    SW_Polyline* copy = AddLine("copy", "1 1 1");
    EXPECT_EQ(SetOn(*copy, "CopyCoordsOf", "../line"), "");
    EXPECT_EQ(Text(copy->Points()), "0 0 0;3 4 100;3.5 4 0.1");
    EXPECT_EQ(copy->Get("Annotations"), "name=alp;");
    EXPECT_EQ(SetOn(*copy, "CopyCoordsOf", "../nothing"), "there is no line '../nothing'");
    EXPECT_EQ(Listed(copy->Get("PolylinesList")), (Lines{"../line", "../point"}));
}

// ----------------------------------------------------------------------------------------------------------------
// Geometry
// ----------------------------------------------------------------------------------------------------------------

TEST_F(SW_PolylineTest, DistanceIsPositiveOnTheLeft)
{
    const struct {
        const char* why;
        const char* line;
        AK_Vec2 p;
        double distance;
    } cases[] = {
        {"left of a line to the east", "0 0;10 0", {5, 2}, 2},
        {"right of it", "0 0;10 0", {5, -2}, -2},
        {"on it", "0 0;10 0", {5, 0}, 0},
        {"beyond its end: to the vertex", "0 0;10 0", {13, 4}, 5},
        {"heights do not count", "0 0 50;10 0 90", {5, 2}, 2},
        {"the nearer of two segments", "0 0;10 0;10 10", {9, 3}, 1},
        {"outside of a left turn", "0 0;10 0;10 10", {13, -4}, -5},
        {"outside of a right turn", "0 0;10 0;10 -10", {13, 4}, 5},
        {"a segment without length", "0 0;0 0;10 0", {5, 2}, 2},
        {"one point", "1 1", {4, 5}, 5},
        {"no point", "", {4, 5}, -1e30},
    };
    for (const auto& c : cases) EXPECT_DOUBLE_EQ(AddLine("line", c.line)->Distance(c.p), c.distance) << c.why;
    EXPECT_EQ(AddPolygon("closed", "0 0;10 0;10 10;0 10")->Distance({1, 5}), 1) << "from the closing side";
}

TEST_F(SW_PolylineTest, AnglesAndCheckSums)
{
    SW_Polyline* line = AddLine("line", "0 0 0;1 0 0;1 1 0;1 1 0");
    EXPECT_NEAR(line->CosAngleAtVertex(1), 0, 1e-15);
    EXPECT_NEAR(line->CosAngleAtVertex(0), -std::sqrt(0.5), 1e-15) << "from the last point";
    EXPECT_EQ(line->CosAngleAtVertex(3), 1) << "a segment without length";
    EXPECT_DOUBLE_EQ(AddLine("sum", "3 4 0;0 0 -2")->CheckSum(), 7);
}

TEST_F(SW_PolylineTest, BoxHoldsAllPoints)
{
    float lo[3], hi[3];
    EXPECT_EQ(AddLine("empty", "")->BoundingBox(lo, hi), 0);
    SW_Polyline* line = AddLine("line", "1 -2 3;-4 5 -6");
    EXPECT_EQ(line->Get("BoundingBox"), "-4 -2 -6 1 5 3");
    SetOn(*line, "AppendPoint", "9 0 0");
    EXPECT_EQ(line->Get("BoundingBox"), "-4 -2 -6 9 5 3");
    SetOn(*line, "RemoveVertex", "");
    EXPECT_EQ(line->Get("BoundingBox"), "-4 -2 -6 1 5 3");
}

// ----------------------------------------------------------------------------------------------------------------
// Terrain
// ----------------------------------------------------------------------------------------------------------------

TEST_F(SW_PolylineTest, ProjectionGivesHeightsAndRemembersTheMesh)
{
    AddPlane("alp", 0.5);
    SW_Polyline* line = AddLine("line", "10 10 7;200 10 7;30 10 7");
    EXPECT_EQ(SetOn(*line, "ProjectOnto", "../../DHMs/none"), "");
    EXPECT_EQ(line->Get("BaseMeshName"), "");
    SW_Mesh* empty = meshes->CreateMesh("empty");
    Messages();
    for (AK_Object* object : {(AK_Object*)line, (AK_Object*)meshes->Component("alp"), (AK_Object*)polylines}) {
        EXPECT_EQ(SetOn(*object, "ProjectOnto", empty->IdAbs(object)), "");
        EXPECT_EQ(Messages(), (Lines{("WARNING:" + object->IdAbs()).c_str() +
                                     std::string(" is not projected: there is no surface in mesh ") +
                                     "Viewer/Project/DHMs/empty"}));
    }
    EXPECT_EQ(static_cast<SW_Mesh*>(meshes->Component("alp"))->NumCells(), 100) << "an empty mesh changes nothing";
    EXPECT_EQ(line->Get("BaseMeshName"), "");
    meshes->Set("DeleteComponent", "empty");
    EXPECT_EQ(SetOn(*line, "ProjectOnto", "../../DHMs/alp"), "");
    EXPECT_EQ(Text(line->Points()), "10 10 5;200 10 7;30 10 15") << "outside the height stays";
    EXPECT_EQ(line->Get("BaseMeshName"), "../../DHMs/alp");
    EXPECT_EQ(line->Get("BoundingBox"), "10 10 5 200 10 15");

    SetOn(*line, "AppendPoint", "50 50 0");
    EXPECT_EQ(Text(line->Points()).substr(26), "50 50 25") << "what is appended is projected";
    SetOn(*line, "MoveVertex", "50 50 1");
    SetOn(*line, "InsertPoint", "40 50 1");
    EXPECT_EQ(Text(line->Points()).substr(26), "40 50 1;50 50 1") << "what is moved or inserted is not";
    EXPECT_EQ(Messages(), Lines());

    std::string many;
    for (int i = 0; i < 101; ++i) many += (i ? ";" : "") + std::to_string(i % 100) + " 5 0";
    SetPoints(*line, many);
    SetOn(*line, "ProjectOnto", "alp");
    EXPECT_EQ(Messages(),
              (Lines{"projecting polygon line onto mesh alp...", "projecting polygon line onto mesh alp done"}));
}

TEST_F(SW_PolylineTest, MeshesAreNamedByPathsOrBareNames)
{
    AddPlane("alp", 0.5);
    const struct {
        const char* given;
        const char* shown;
        bool found;
    } cases[] = {
        {"../../DHMs/alp", "../../DHMs/alp", true},
        {"Viewer/Project/DHMs/alp", "../../DHMs/alp", true},
        {"Project/DHMs/alp", "../../DHMs/alp", true},
        {"root/Project/DHMs/alp", "../../DHMs/alp", true},
        {"/Project/DHMs/alp", "../../DHMs/alp", true},
        {"alp", "../../DHMs/alp", true},
        {"berg", "berg", false},
        {"../../DHMs/berg", "../../DHMs/berg", false},
        {"Project/DHMs", "Project/DHMs", false},   // no mesh
        {"", "", false},
    };
    SW_Polyline* line = AddLine("line", "10 10 7");
    for (const auto& c : cases) {
        EXPECT_EQ(SetOn(*line, "BaseMeshName", c.given), "") << c.given;
        EXPECT_EQ(line->Get("BaseMeshName"), c.shown) << c.given;
        EXPECT_EQ(line->BaseMesh() != nullptr, c.found) << c.given;
    }
    EXPECT_EQ(Text(line->Points()), "10 10 7") << "naming a mesh moves no point";
    EXPECT_EQ(Listed(line->Get("MeshNamesList")), Lines{"../../DHMs/alp"});
}

TEST_F(SW_PolylineTest, UpdateProjectsOnTheFirstMeshOnce)
{
    SW_Polyline* line = AddLine("line", "10 10 7");
    line->Update();
    EXPECT_EQ(line->Get("BaseMeshName"), "") << "there is no mesh";
    AddPlane("alp", 0.5);
    AddPlane("berg", 2);
    SetOn(*line, "Visibility", "0");
    line->Update();
    EXPECT_EQ(Text(line->Points()), "10 10 5") << "also while it is not shown";
    EXPECT_GT(line->ExecTime("ProjectOnto"), 0) << "the line must be saved";
    SetOn(*line, "MoveVertex", "20 10 7");
    line->Update();
    EXPECT_EQ(Text(line->Points()), "20 10 7");
    SW_Polyline* named = AddLine("named", "10 10 7");
    SetOn(*named, "BaseMeshName", "later");
    named->Update();
    EXPECT_EQ(Text(named->Points()), "10 10 7") << "a name that leads nowhere yet is kept";
}

// ----------------------------------------------------------------------------------------------------------------
// Drawing
// ----------------------------------------------------------------------------------------------------------------

namespace {

std::vector<AK_Vec> drawn;

// Everything that the line hands to the table from Begin(primitive) on, up to the next End.
std::vector<AK_Vec> DrawnStrip(SW_Polyline& line)
{
    static bool inStrip = false;
    drawn.clear();
    const auto begin = aglBegin;
    const auto end = aglEnd;
    const auto vertex = aglVertex3f;
    aglBegin = [](unsigned primitive) { inStrip = primitive == GL_LINE_STRIP; };
    aglEnd = []() { inStrip = false; };
    aglVertex3f = [](float x, float y, float z) {
        if (inStrip) drawn.push_back({x, y, z});
    };
    line.Update();
    aglBegin = begin;
    aglEnd = end;
    aglVertex3f = vertex;
    return drawn;
}

}   // namespace

TEST_F(SW_PolylineTest, DrapedLinesFollowTheSurface)
{
    SW_Mesh* mesh = AddPlane("alp", 0);
    mesh->_x[11 * 5 + 1].z = 50;   // a peak at (50, 10)
    SW_Polyline* line = AddLine("line", "31 10 0;69 10 0");
    EXPECT_EQ(DrawnStrip(*line).size(), 9u) << "38 m in steps of half a cell, 5 m: 8 steps";
    double highest = 0;
    for (const AK_Vec& p : drawn) highest = std::max(highest, p.z);
    EXPECT_NEAR(highest, 50, 0.1);
    SetOn(*line, "DrawResampled", "0");
    EXPECT_EQ(DrawnStrip(*line).size(), 2u);

    SetOn(*line, "DrawResampled", "1");
    SetPoints(*line, "-50 10 0;-40 10 0;5 10 0");
    EXPECT_EQ(DrawnStrip(*line).size(), 3u) << "a segment that begins outside is straight";
    SetPoints(*line, "5 10 0;1e30 10 0");
    EXPECT_LE(DrawnStrip(*line).size(), 100001u) << "a segment without end is drawn";
    SW_Polygon* polygon = AddPolygon("polygon", "5 5;15 5;15 15");
    SetOn(*polygon, "DrawResampled", "0");
    EXPECT_EQ(DrawnStrip(*polygon).size(), 4u) << "a polygon is closed";
}

// ----------------------------------------------------------------------------------------------------------------
// Files and records
// ----------------------------------------------------------------------------------------------------------------

TEST_F(SW_PolylineTest, ImportReplacesThePoints)
{
    AddPlane("alp", 0.5);
    SW_Polyline* line = AddLine("line", "9 9 9");
    SetOn(*line, "BaseMeshName", "alp");
    SetOn(*line, "Annotations", "old=1;");
    const auto status = [&](const AK_String& path) { return SetOn(*line, "Import", path); };
    const auto failed = [](const AK_String& path) {
        return "error occurred during import from '" + std::string(path.c_str()) + "'";
    };
    EXPECT_EQ(status(directory / "none.xy"),
              "file '" + std::string((directory / "none.xy").c_str()) + "' does not exist!");
    EXPECT_EQ(status(File("odd.txt", "1 2\n")), failed(directory / "odd.txt"));
    EXPECT_EQ(status(File("many.ano", "road\n1 red\n1 2\n")), failed(directory / "many.ano"));
    EXPECT_EQ(Text(line->Points()), "9 9 9") << "nothing is lost when nothing can be read";

    EXPECT_EQ(status(File("a.xy", "10 20\n30 40\n")), "");
    EXPECT_EQ(Text(line->Points()), "10 20 5;30 40 15") << "projected";
    EXPECT_EQ(line->Get("Annotations"), "old=1;");
    EXPECT_EQ(line->Get("BoundingBox"), "10 20 5 30 40 15");
    EXPECT_EQ(status(File("a.xyz", "10 20 1\n")), "");
    EXPECT_EQ(Text(line->Points()), "10 20 1") << "not projected";
    EXPECT_EQ(status(File("a.nxyz", "name=upper part\n1\n1 2 3\n1\n4 5 6\n")), "");
    EXPECT_EQ(line->Id(), "upper_part");
    EXPECT_EQ(line->Get("Annotations"), "old=1;name=upper part;");
    EXPECT_EQ(status(File("b.nxyz", "2\n7 8 9\n1")), failed(directory / "b.nxyz"));
    EXPECT_EQ(Text(line->Points()), "7 8 9") << "what was read so far";
    EXPECT_EQ(status(File("a.dxf", "LWPOLYLINE\n 90\n1\n 10\n1\n 20\n2\n")), "");
    EXPECT_EQ(Text(line->Points()), "1 2 0");
    Messages();
    EXPECT_EQ(status(File("b.dxf", "  2\nENTITIES\n  0\nHATCH\n  0\nLINE\n  0\nHATCH\n  0\nENDSEC\n")),
              failed(directory / "b.dxf"));
    EXPECT_EQ(Messages(), Lines{"WARNING:no polyline found in '" + std::string((directory / "b.dxf").c_str()) +
                                "', only HATCH (2), LINE (1): filled areas (HATCH) must be exported as outlines"});
}

TEST_F(SW_PolylineTest, ExportWritesByExtension)
{
    SW_Polyline* line = AddLine("line", "1 2 3");
    SetOn(*line, "Annotations", "k=v;");
    const struct {
        const char* name;
        const char* begin;
    } cases[] = {{"a.xy", "k=v\n1.000000 2.000000\n"},
                 {"a.xyz", "k=v\n1.000000 2.000000 3.000000\n"},
                 {"a.nxyz", "k=v\n1\n1 2 3\n"},
                 {"a.DXF", "  0\nSECTION\n"}};
    for (const auto& c : cases) {
        EXPECT_EQ(SetOn(*line, "Export", directory / c.name), "");
        EXPECT_EQ(FileBytes(directory / c.name).find(c.begin), 0u) << c.name;
    }
    for (const char* name : {"a.txt", "no/such/directory.nxyz"})
        EXPECT_EQ(SetOn(*line, "Export", directory / name),
                  ("error occurred during export to '" + (directory / name) + "'").c_str());
}

TEST_F(SW_PolylineTest, ColoursOfAnoFiles)
{
    SW_Polyline* line = AddLine("line", "");
    const struct {
        const char* word;
        const char* automatic;
        const char* colour;
    } cases[] = {{"lblue", "0", "0.5 0.5 1"}, {"blue", "0", "0 0 1"},   {"red", "0", "1 0 0"},
                 {"green", "0", "0 1 0"},     {"yello", "0", "1 1 0"},  {"cyan", "0", "0 1 1"},
                 {"magenta", "0", "1 0 1"},   {"yellow", "1", "1 0 1"}, {"Red", "1", "1 0 1"},
                 {"red", "0", "1 0 0"}};
    for (const auto& c : cases) {
        AK_TextReader reader(File("a.ano", std::string("x\n1 ") + c.word + "\n1 2\n"));
        EXPECT_EQ(line->ReadFromAnoFile(reader), 0);
        EXPECT_EQ(line->Get("AutoColored"), c.automatic) << c.word;
        EXPECT_EQ(line->Get("Color"), c.colour) << c.word;
        EXPECT_EQ(line->ReadFromAnoFile(reader), 1) << "the end";
    }
    EXPECT_EQ(line->Id(), "line");
}

TEST_F(SW_PolylineTest, RecordsComeBackAndCutOnesAreRefused)
{
    SW_Polyline* line = AddLine("line", "1.1 2.2 3.3;-4e30 5 6");
    ExpectRecordRoundTrip<SW_Polyline>(*line, *AddPolygon("other", ""), directory / "record",
                                       [](const SW_Polyline& l) { return Text(l.Points()); });
    const std::string points(24, '\0');
    const auto record = [](const char* header, int count, const std::string& rest) {
        const int length = int(strlen(header));
        return std::string(reinterpret_cast<const char*>(&length), 4) + header +
               std::string(reinterpret_cast<const char*>(&count), 4) + rest;
    };
    const double nan = std::nan("");
    const struct {
        const char* why;
        std::string bytes;
        int failed;
    } cases[] = {
        {"the header of old files", record("SW_Polygon:v0", 1, points), 0},
        {"another header", record("SW_Polyline:v1", 1, points), 1},
        {"an absurd count", record("SW_Polyline:v0", 2000000000, points), 1},
        {"a negative count", record("SW_Polyline:v0", -1, points), 1},
        {"no coordinate", record("SW_Polyline:v0", 1, std::string(16, '\0') + std::string((const char*)&nan, 8)), 0},
    };
    for (const auto& c : cases) {
        WriteFile(directory / "record", c.bytes);
        AK_Stream stream(directory / "record", "rb");
        EXPECT_EQ(line->LoadData(stream), c.failed) << c.why;
    }
    EXPECT_EQ(Text(line->Points()), "0 0 nan");
}

TEST_F(SW_PolylineTest, SavedLinesLoadWithTheirAttributes)
{
    AddPlane("alp", 0.5);
    SW_Polyline* line = AddLine("line", "10 10 0;20 20 0");
    SetOn(*line, "BaseMeshName", "alp");   // the heights are not those of the mesh: loading must not project again
    SetOn(*line, "Annotations", "name=\"a\";k=v;");
    SetOn(*line, "VertexLabels", "1");
    SetOn(*line, "LabelFont", "8_BY_13");
    line->SaveAs(directory / "saved");
    SW_Polyline* again = AddLine("again", "");
    again->Load(directory / "saved");
    EXPECT_EQ(AK_Object::_execStatus, "");
    EXPECT_EQ(Text(again->Points()), "10 10 0;20 20 0");
    for (const char* attr : {"BaseMeshName", "Annotations", "VertexLabels", "LabelFont", "PointSize", "LineWidth"})
        EXPECT_EQ(again->Get(attr), line->Get(attr)) << attr;
}
