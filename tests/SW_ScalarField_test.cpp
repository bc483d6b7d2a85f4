// Fields: values at points, statistics, conversion for display, gradient, exports, records.

#include "SW_Mesh_Container.h"
#include "SW_Mesh_GdalTools.h"
#include "SW_Mesh_TestSupport.h"
#include "SW_ScalarField.h"
#include "SW_VectorField.h"

namespace {

class SW_Fields : public TerrainTest {
protected:
    SW_Fields() { Prepare(CartesianMesh(10, 8, 5, Plane, {1000, 2000})); }

    void Prepare(std::unique_ptr<SW_Mesh> terrain)
    {
        field.reset();
        mesh = std::move(terrain);
        field = std::make_unique<SW_ScalarField>("depth", nullptr);
        field->_onVertices = 1;
        field->SetMesh(mesh.get());
        field->SetLabel("flow depth [m]");
        for (int i = 0; i < mesh->NumVertices(); ++i) field->_values[i] = float(Value(mesh->_x[i]));
    }

    static double Value(const AK_Vec& x) { return 3 + 0.02 * (x.x - 1000) - 0.01 * (x.y - 2000); }

    std::string Exported(const char* command, const char* name)
    {
        field->Set(command, directory / name);
        return FileBytes(directory / name);
    }

    std::unique_ptr<SW_Mesh> mesh;
    std::unique_ptr<SW_ScalarField> field;
};

}   // namespace

TEST_F(SW_Fields, AnswerForPointsAndForNoMesh)
{
    EXPECT_NEAR(field->ValueAtPoint(AK_Vec2(1012.3, 2017.7)), 3 + 0.02 * 12.3 - 0.01 * 17.7, 1e-5);
    EXPECT_EQ(field->ValueAtPoint(AK_Vec2(0, 0)), 0);
    field->Set("ValueAtPoint", "1010 2010");
    EXPECT_EQ(std::string(field->Get("ValueAtPoint").c_str()).substr(0, 4), "3.09");
    EXPECT_NE(std::string(field->Get("ValueAtPoint").c_str()).find(" at 1010 2010"), std::string::npos);
    field->SetMesh(nullptr);
    EXPECT_EQ(field->ValueAtPoint(AK_Vec2(1012.3, 2017.7)), 0);
    for (const char* statistic : {"Min", "Max", "Average", "AreaAboveLimit"})
        EXPECT_STREQ(field->Get(statistic).c_str(), "0") << statistic;
    field->Set("ExportFieldRasterAscii", directory / "none.asc");
    EXPECT_FALSE(AK_System::FileExists(directory / "none.asc"));
}

TEST_F(SW_Fields, StatisticsLeaveZerosOutOfTheMean)
{
    field->_values.Fill(field->_values.Size(), 0.0f);
    EXPECT_STREQ(field->Get("Average").c_str(), "0");
    field->_values[3] = 2;
    field->_values[4] = 4;
    field->_values[5] = -1;
    EXPECT_STREQ(field->Get("Average").c_str(), "3");
    EXPECT_STREQ(field->Get("Min").c_str(), "-1");
    EXPECT_STREQ(field->Get("Max").c_str(), "4");
    field->_onVertices = 0;
    field->SetMesh(mesh.get());
    field->_values.Fill(mesh->NumCells(), 0.0f);
    field->_values[7] = 1;
    field->Set("AreaValueLimit", "0.5");
    EXPECT_STREQ(field->Get("AreaAboveLimit").c_str(), "25");
}

TEST_F(SW_Fields, ValuesSurviveAMeshOfTheSameSizeOnly)
{
    field->SetMesh(mesh.get());
    EXPECT_GT(field->_values[0], 0);
    const auto larger = CartesianMesh(11, 8, 5, Plane);
    field->SetMesh(larger.get());
    EXPECT_EQ(field->_values.Size(), larger->NumVertices());
    EXPECT_EQ(field->_values[0], 0);
    field->SetMesh(nullptr);
}

TEST_F(SW_Fields, ChangeTheirLocationByPlainMeans)
{
    field->ConvertTopo();
    ASSERT_EQ(field->_values.Size(), mesh->NumCells());
    EXPECT_FALSE(field->OnVertices());
    for (int cell : {0, 17, 79}) EXPECT_NEAR(double(field->_values[cell]), Value(mesh->CellCenter(cell)), 1e-5);
    field->ConvertTopo();
    ASSERT_EQ(field->_values.Size(), mesh->NumVertices());
    const int inner = 4 * 9 + 4;
    EXPECT_NEAR(double(field->_values[inner]), Value(mesh->_x[inner]), 1e-5);
}

TEST_F(SW_Fields, ADisplayConversionShowsAnotherFormAndLeavesTheData)
{
    field->_values.Fill(field->_values.Size(), 15.0f);   // kPa
    field->Set("$conversion", "SpeedOfPressure");
    EXPECT_NEAR(field->ValueAtPoint(AK_Vec2(1010, 2010)), std::sqrt(1000 * 15 / 300.0), 1e-5);
    field->Set("$density", "200");
    EXPECT_NEAR(field->ValueAtPoint(AK_Vec2(1010, 2010)), std::sqrt(1000 * 15 / 200.0), 1e-5);
    EXPECT_EQ(field->_values[0], 15.0f);
    for (const char* none : {"", "none"}) {
        field->Set("$conversion", none);
        EXPECT_EQ(field->Convert(), 0) << none;
        EXPECT_EQ(field->ValueAtPoint(AK_Vec2(1010, 2010)), 15);
    }
    field->Set("$conversion", "NoSuchFunction");
    EXPECT_EQ(field->Convert(), 1);
    field->Reconvert();
    EXPECT_EQ(field->_values[0], 15.0f);
    field->Set("$conversion", "");
    field->_values.SetSize(50);   // as a damaged record leaves it
    field->Set("$smooth", "1");
    EXPECT_EQ(field->Convert(), 0);
    field->_values.Fill(mesh->NumVertices(), 15.0f);
    field->Set("$smooth", "");
    field->_values[40] = 100;
    field->Set("$smooth", "1");
    EXPECT_LT(field->ValueAtPoint(AK_Vec2(mesh->_x[40])), 50);
    EXPECT_EQ(field->_values[40], 100.0f);
}

TEST_F(SW_Fields, TheGradientOfAPlaneOnLevelGroundIsItsSlope)
{
    Prepare(CartesianMesh(10, 8, 5, [](double, double) { return 7; }, {1000, 2000}));
    SW_VectorField gradient("g", nullptr);
    field->ComputeGradient(&gradient);
    ASSERT_EQ(gradient._values.Size(), mesh->NumVertices());
    for (int i : {0, 13, 40, 98}) {
        EXPECT_NEAR(gradient._values[i].x, 0.02, 1e-5);
        EXPECT_NEAR(gradient._values[i].y, -0.01, 1e-5);
        EXPECT_NEAR(gradient._values[i].z, 0, 1e-12);
    }
    field->Set("CreateGradientField", "");
    field->Update();
    const auto* made = dynamic_cast<SW_VectorField*>(field->Component("gradient"));
    ASSERT_TRUE(made);
    EXPECT_STREQ(made->Label().c_str(), "gradient [m/m]");
    EXPECT_STREQ(field->Get("CreateGradientFieldVis").c_str(), "r");
}

TEST_F(SW_Fields, ARasterHoldsTheValuesAndItsExtentIsRounded)
{
    field->Set("ExportRasterSize", "5");
    const std::string text = Exported("ExportFieldRasterAscii", "depth.asc");
    EXPECT_EQ(text.rfind("ncols         10\nnrows         8\nxllcenter     1000\nyllcenter     2000\n"
                         "cellsize      5\nNODATA_value  -9999\n",
                         0),
              0u)
        << text;
    auto back = NewMesh();
    back->Import(directory / "depth.asc", 0);
    ASSERT_EQ(back->NumVertices(), 80);
    for (const AK_Vec& x : back->_x) EXPECT_NEAR(x.z, Value(x), 1e-5);
    if (HaveGdal()) {
        const std::vector<AK_Vec> cells = RasterByGdal(directory / "depth.asc");
        EXPECT_EQ(cells.size(), 80u);
        for (const AK_Vec& x : cells) EXPECT_NEAR(x.z, Value(x), 1e-5);
    }

    field->Set("ExportRasterAutoRange", "0");
    field->Set("ExportRasterLL", "991 2000");
    field->Set("ExportRasterNumColumns", "4");
    field->Set("ExportRasterNumRows", "1");
    const std::string part = Exported("ExportFieldRasterAscii", "part.asc");
    EXPECT_NE(part.find("\n-9999 2.92 3.02 3.12 \n"), std::string::npos)
        << part;   // half a cell left still counts as inside
    field->Set("ExportRasterAutoRange", "1");
    for (const char* size : {"0", "nan", "-5", "0.00001"}) {
        field->Set("ExportRasterSize", size);
        field->Set("ExportFieldRasterAscii", directory / "bad.asc");
        EXPECT_FALSE(AK_Object::_execStatus.IsEmpty()) << size;
    }
    EXPECT_FALSE(AK_System::FileExists(directory / "bad.asc"));
}

TEST_F(SW_Fields, LinesGoOutAsDxfOnALayerOfAttributeAndUnit)
{
    field->SetLabel("sim flow depth [m]");
    const std::string dxf = Exported("ExportContourLines", "lines.dxf");
    EXPECT_NE(dxf.find("DFA_fd_m_"), std::string::npos) << dxf.substr(0, 300);
    EXPECT_EQ(dxf.substr(dxf.size() - 16), "  0\nEOF\n  0\nEOF\n");
    if (HaveGdal()) {
        const std::vector<GdalLine> lines = LinesByGdal(directory / "lines.dxf");
        EXPECT_GT(lines.size(), 3u);
        for (const GdalLine& line : lines)
            for (const AK_Vec& p : line.points)
                EXPECT_NEAR(Value(p), std::stod(line.layer.substr(strlen("DFA_fd_m_"))), 1e-4) << line.layer;
    }
    const std::string nxyz = Exported("ExportContourLines", "lines.nxyz");
    EXPECT_NE(nxyz.find("unit=m"), std::string::npos) << nxyz.substr(0, 300);

    field->SetLabel("sim velocity [m/s]");
    EXPECT_NE(Exported("ExportContourLines", "lines.nxyz").find("unit=m/s\nres=v\n"), std::string::npos);
    for (const auto& [attr, value] : {std::pair{"Autoscale", "0"}, {"ArbitrarySteps", "1"}, {"StepValues", "3.1 3.2"}})
        field->Colorbar()->Set(attr, value);
    EXPECT_NE(Exported("ExportContourLines", "lines.nxyz").find("iso=3.2\n"), std::string::npos);
    field->Colorbar()->Set("StepValues", "3.1 3.3");   // as many
    const std::string anew = Exported("ExportContourLines", "lines.nxyz");
    EXPECT_NE(anew.find("iso=3.3\n"), std::string::npos);
    EXPECT_EQ(anew.find("iso=3.2\n"), std::string::npos);
}

TEST_F(SW_Fields, ValuesAlongALineFollowTheEdgesItCrosses)
{
    AK_Object root("root", nullptr);
    auto* line = new SW_Polyline("profile", nullptr);
    root.AddComponent(line);
    root.AddComponent(field.release());
    auto* owned = static_cast<SW_ScalarField*>(root.Component("depth"));
    EXPECT_STREQ(owned->Get("ExportValuesAlongPolylineVis").c_str(), "r");
    line->Set("AppendPoint", "1001 2002 0");
    line->Set("AppendPoint", "1048 2002 0");
    owned->Set("SelectedPolyline", "../profile");
    EXPECT_STREQ(owned->Get("ExportValuesAlongPolylineVis").c_str(), "w");
    owned->Set("ExportValuesAlongPolyline", directory / "values.txt");
    std::istringstream in(FileBytes(directory / "values.txt"));
    std::string names, units;
    std::getline(in, names);
    std::getline(in, units);
    EXPECT_EQ(units, "#m\tm\tm\tm");
    int rows = 0;
    for (double x, y, z, value; in >> x >> y >> z >> value; ++rows) EXPECT_NEAR(value, Value({x, y, z}), 1e-4);
    EXPECT_EQ(rows, 11);
    owned->SetMesh(nullptr);
}

TEST_F(SW_Fields, AnExportThatWritesNothingSaysWhy)
{
    AK_Object root("root", nullptr);
    root.AddComponent(new SW_Polyline("point", nullptr));
    root.Component("point")->Set("AppendPoint", "1001 2002 0");
    auto* depth = field.get();
    root.AddComponent(field.release());
    const AK_String file = directory / "none";
    const auto why = [&](AK_Object& object, const char* command) {
        object.Set(command, file);
        EXPECT_FALSE(AK_System::FileExists(file)) << command;
        return std::string(AK_Object::_execStatus.c_str());
    };
    EXPECT_EQ(why(*depth, "ExportValuesAlongPolyline"), "no line is selected");
    for (const char* line : {"../point", "../nobody"}) {
        depth->Set("SelectedPolyline", line);
        EXPECT_EQ(why(*depth, "ExportValuesAlongPolyline"),
                  std::string("there is no line of two points or more '") + line + "'");
    }
    depth->Set("ExportRasterSize", "5000");
    EXPECT_NE(why(*depth, "ExportFieldRasterAscii").find("'ExportRasterSize' is larger than the mesh"),
              std::string::npos);
    SW_ScalarField perCell("cells", nullptr);
    perCell.SetMesh(mesh.get());
    EXPECT_EQ(why(perCell, "ExportFieldRasterAscii"), "a raster is made from values on vertices only");
    EXPECT_NE(why(perCell, "ExportValuesAlongPolyline").find("values along a line are those on vertices"),
              std::string::npos);
    const SW_Mesh empty("empty", nullptr);
    SW_VectorField velocity("velocity", nullptr);
    for (const auto& [on, reason] : {std::pair{(const SW_Mesh*)nullptr, "the field has no values yet: run or load the "
                                                                        "simulation, or update the view, first"},
                                     {&empty, "the mesh of the field is empty"}}) {
        depth->SetMesh(on);
        velocity.SetMesh(on);
        for (const char* command : {"ExportFieldRasterAscii", "ExportValuesAlongPolyline"})
            EXPECT_EQ(why(*depth, command), reason) << command;
        for (const char* command : {"ExportValues", "ExportValuesAlongPolyline"})
            EXPECT_EQ(why(velocity, command), reason) << command;
        depth->Set("ExportContourLines", directory / "no.dxf");
        EXPECT_STREQ(AK_Object::_execStatus.c_str(), reason);
    }
    SW_Mesh surface("surface", nullptr);
    EXPECT_NE(why(surface, "ExportContourLines").find("the mesh is empty"), std::string::npos);
    for (const auto& [name, reason] :
         {std::pair{"m.asc", "the mesh is empty"}, {"m.xyz", "the mesh is empty"}, {"m.dat", "unknown extension"}}) {
        surface.Set("Export", directory / name);
        EXPECT_NE(std::string(AK_Object::_execStatus.c_str()).find(reason), std::string::npos) << name;
        EXPECT_FALSE(AK_System::FileExists(directory / name));
    }
}

TEST_F(SW_Fields, VectorsHaveLengthsTablesAndAMagnitude)
{
    SW_VectorField velocity("velocity", nullptr);
    velocity._onVertices = 1;
    velocity.SetMesh(mesh.get());
    velocity.SetLabel("velocity [m/s]");
    velocity._values[2] = {3, 4, 0};
    EXPECT_STREQ(velocity.Get("Max").c_str(), "5");
    EXPECT_STREQ(velocity.Get("Average").c_str(), "5");
    EXPECT_EQ(velocity.ValueAtPoint(mesh->_x[2]), (AK_Vec{3, 4, 0}));
    velocity.Set("ExportValues", directory / "v.txt");
    EXPECT_EQ(FileBytes(directory / "v.txt"), "1000 2010 97.5 3 4 0\n");
    velocity.Set("CreateMagnitudeField", "");
    velocity.Update();
    const auto* magnitude = dynamic_cast<SW_ScalarField*>(velocity.Component("magnitude"));
    ASSERT_TRUE(magnitude);
    EXPECT_EQ(magnitude->_values[2], 5.0f);
    EXPECT_STREQ(magnitude->Label().c_str(), "velocity magnitude [m/s]");
}

template <class Field>
static void ExpectRecord(Field& field, const AK_String& file)
{
    {
        AK_Stream stream(file, "wb");
        ASSERT_EQ(field.SaveDataTo(stream), 0);
    }
    const std::string record = FileBytes(file);
    const auto values = field._values;
    for (size_t length = 0; length <= record.size(); ++length) {
        WriteFile(file, record.substr(0, length));
        AK_Stream stream(file, "rb");
        EXPECT_EQ(field.LoadDataFrom(stream), length < record.size() ? 1 : 0) << length;
        EXPECT_EQ(field._values.Size() == 0, length < record.size()) << length;
    }
    ASSERT_EQ(field._values.Size(), values.Size());
    for (int i = 0; i < values.Size(); ++i) EXPECT_EQ(field._values[i], values[i]);
}

TEST_F(SW_Fields, RecordsComeBackAndCutOnesAreErrors)
{
    Prepare(CartesianMesh(2, 2, 5, Plane));
    ExpectRecord(*field, directory / "s.dat");
    SW_VectorField vectors("v", nullptr);
    vectors.SetMesh(mesh.get());
    vectors._values[1] = {1, 2, 3};
    ExpectRecord(vectors, directory / "v.dat");
}
