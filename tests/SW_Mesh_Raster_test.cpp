// Rasters and records of meshes: import, halving, gaps, tiles, what a damaged file does, export and back.

#include "SW_Mesh_Container.h"
#include "SW_Mesh_GdalTools.h"
#include "SW_Mesh_TestSupport.h"

#include <algorithm>

namespace {

class SW_Mesh_Raster : public TerrainTest {
protected:
    AK_String File(const char* name, const std::string& text)
    {
        WriteFile(directory / name, text);
        return directory / name;
    }

    std::unique_ptr<SW_Mesh> Imported(const std::string& text, int nReduce = 0)
    {
        auto mesh = NewMesh();
        Messages();
        mesh->Import(File("r.asc", text), nReduce);
        return mesh;
    }

    bool Said(const std::string& text)
    {
        const auto& all = messages.Texts();
        return std::any_of(all.begin(), all.end(), [&](const std::string& m) { return m == text; });
    }
};

std::string Header(int ncols, int nrows,
                   const char* rest = "xllcenter 100\nyllcenter 200\ncellsize 10\nnodata_value -9\n")
{
    return "ncols " + std::to_string(ncols) + "\nnrows " + std::to_string(nrows) + "\n" + rest;
}

std::string RecordOf(const SW_Mesh& mesh, const AK_String& file)
{
    AK_Stream stream(file, "wb");
    EXPECT_EQ(mesh.SaveData(stream), 0);
    stream.Close();
    return FileBytes(file);
}

}   // namespace

TEST_F(SW_Mesh_Raster, PutsAVertexAtTheCentreOfEachCellFromTheTopRowDown)
{
    const auto mesh = Imported(Header(3, 2) + "1 2 3\n4 5 6\n");
    ASSERT_EQ(mesh->NumVertices(), 6);
    EXPECT_EQ(mesh->NumCells(), 2);
    EXPECT_EQ(mesh->_x[0], (AK_Vec{100, 200, 4}));
    EXPECT_EQ(mesh->_x[1], (AK_Vec{100, 210, 1}));
    EXPECT_EQ(mesh->_x[5], (AK_Vec{120, 210, 3}));
    EXPECT_STREQ(mesh->Get("RegularGrid").c_str(), "1");
    EXPECT_STREQ(mesh->Get("Dx").c_str(), "10");
    ExpectConsistent(*mesh);
}

TEST_F(SW_Mesh_Raster, ReadsHeadersAsGisToolsWriteThemAndRefusesOthers)
{
    const struct {
        const char* why;
        const char* header;
        double x;   // of the first vertex; NAN: refused
    } cases[] = {
        {"corner", "NCOLS 2\nNROWS 2\nXLLCORNER 0\nYLLCORNER 0\nCELLSIZE 10\nNODATA_VALUE -9\n", 5},
        {"centre", "ncols 2\nnrows 2\nxllcenter 0\nyllcenter 0\ncellsize 10\nnodata_value -9\n", 0},
        {"mixed", "ncols 2 nrows 2 xllcorner 0 yllcenter 0 cellsize 10 nodata_value -9\r\n", 5},
        {"other order", "cellsize 10\nxllcenter 7\nyllcenter 0\nnrows 2\nncols 2\nnodata_value nan\n", 7},
        {"without no-data line", "ncols 2\nnrows 2\nxllcenter 0\nyllcenter 0\ncellsize 10\n", NAN},
        {"unknown keyword", "ncols 2\nrows 2\nxllcenter 0\nyllcenter 0\ncellsize 10\nnodata_value -9\n", NAN},
        {"no columns", "ncols 0\nnrows 2\nxllcenter 0\nyllcenter 0\ncellsize 10\nnodata_value -9\n", NAN},
        {"negative rows", "ncols 2\nnrows -2\nxllcenter 0\nyllcenter 0\ncellsize 10\nnodata_value -9\n", NAN},
        {"no cell size", "ncols 2\nnrows 2\nxllcenter 0\nyllcenter 0\nnodata_value -9\n", NAN},
        {"no size", "ncols 2\nnrows 2\nxllcenter 0\nyllcenter 0\ncellsize inf\nnodata_value -9\n", NAN},
        {"count beyond an int", "ncols 99999999999\nnrows 2\nxllcenter 0\nyllcenter 0\ncellsize 1\nnodata_value -9\n",
         NAN},
        {"binary", "\x01\x02\xff\xfe", NAN},
        {"empty", "", NAN},
    };
    for (const auto& c : cases) {
        const auto mesh = Imported(std::string(c.header) + "1 2\n3 4\n");
        if (std::isnan(c.x)) {
            EXPECT_EQ(mesh->NumVertices(), 0) << c.why;
            EXPECT_TRUE(Said("unkown input syntax!")) << c.why;
            continue;
        }
        ASSERT_EQ(mesh->NumVertices(), 4) << c.why;
        EXPECT_EQ(mesh->_x[0].x, c.x) << c.why;
    }
}

TEST_F(SW_Mesh_Raster, ABodyThatIsNoRasterLeavesNoCells)
{
    const struct {
        const char* why;
        std::string file;
        const char* message;
    } cases[] = {
        {"short", Header(2, 2) + "1 2 3\n", "wrong number of z-values (3 instead of expected 4) in file!"},
        {"no number", Header(2, 2) + "1 2 x 4\n", "wrong number of z-values (3 instead of expected 4) in file!"},
        {"none at all", Header(2, 2), "wrong number of z-values (0 instead of expected 4) in file!"},
        {"a count the file cannot hold", Header(40000, 40000) + "1 2 3 4\n",
         "wrong number of z-values (4 instead of expected 1600000000) in file!"},
    };
    for (const auto& c : cases) {
        const auto mesh = Imported(c.file);
        EXPECT_EQ(mesh->NumCells(), 0) << c.why;
        EXPECT_TRUE(Said(c.message)) << c.why;
    }
    const auto mesh = Imported(Header(2, 2) + "1 nan\n" + std::string(1000, '0') + "3 -inf\n");
    EXPECT_EQ(mesh->NumCells(), 1);
    EXPECT_EQ(mesh->_x[0].z, 3);
    EXPECT_TRUE(Said("2 NODATA values read"));
    auto kept = Imported(Header(2, 2) + "1 2 3 4\n");
    kept->Import("/nonexistent/file.asc", 0);
    EXPECT_EQ(kept->NumCells(), 1);
    EXPECT_TRUE(Said("cannot open file '/nonexistent/file.asc'!"));
}

TEST_F(SW_Mesh_Raster, HalvingTakesMeansAndDropsWhatIsOdd)
{
    std::string body;
    for (int row = 4; row >= 0; --row)
        for (int column = 0; column < 5; ++column) body += std::to_string(10 * column + row) + " ";
    const auto mesh = Imported(Header(5, 5) + body, 1);
    ASSERT_EQ(mesh->NumVertices(), 4);
    EXPECT_STREQ(mesh->Get("Dx").c_str(), "20");
    EXPECT_STREQ(mesh->Get("Xll").c_str(), "105 205");
    EXPECT_EQ(mesh->_x[0], (AK_Vec{105, 205, 5.5}));
    EXPECT_EQ(mesh->_x[3], (AK_Vec{125, 225, 27.5}));
    EXPECT_EQ(Imported(Header(5, 5) + body, 50)->NumVertices(), 1);   // no further than one point
}

// ----------------------------------------------------------------------------------------------------------------
// Gaps
// ----------------------------------------------------------------------------------------------------------------

TEST_F(SW_Mesh_Raster, FillingKeepsEveryGivenHeightAndLeavesNoGap)
{
    AK_System::srand(3);
    for (int share : {1, 10, 50, 90, 99})
        for (int n : {1, 2, 7, 16, 33}) {
            AK_List<double> z(1);
            for (int i = 0; i <= n; ++i)
                for (int j = 0; j <= n + 1; ++j)
                    z.Append(AK_System::rand() % 100 < share ? SW_Mesh::noData : 1000 + Plane(i, j));
            z[n / 2] = 1500;   // one value is needed
            const AK_List<double> given = z;
            SW_Mesh::InterpolateNoDataValuesMultigrid(n, n + 1, z, SW_Mesh::noData);
            for (int p = 0; p < z.Size(); ++p) {
                if (given[p] != SW_Mesh::noData) {
                    EXPECT_EQ(z[p], given[p]);
                }
                EXPECT_GT(z[p], 900) << share << " % of " << n << ", point " << p;
                EXPECT_LT(z[p], 1501);
            }
        }
}

TEST_F(SW_Mesh_Raster, GapsAreFilledOrCutOutAndNothingGivenIsReported)
{
    const std::string withGap = Header(4, 4) + "1 1 1 1\n1 -9 1 1\n1 1 1 1\n1 1 1 1\n";
    const auto filled = Imported(withGap);
    EXPECT_EQ(filled->NumCells(), 9);
    for (const AK_Vec& x : filled->_x) EXPECT_EQ(x.z, 1);

    auto cut = NewMesh();
    cut->Set("NumNoDataValueInterpolationIterations", "0");
    cut->Import(File("gap.asc", withGap), 0);
    EXPECT_EQ(cut->NumVertices(), 15);
    EXPECT_EQ(cut->NumCells(), 5);
    EXPECT_STREQ(cut->Get("RegularGrid").c_str(), "0");
    ExpectConsistent(*cut);
    EXPECT_GE(cut->CellContainingPoint({125, 205}, -1), 0);

    const auto nothing = Imported(Header(3, 3) + "-9 -9 -9 -9 -9 -9 -9 -9 -9");
    EXPECT_EQ(nothing->NumVertices(), 9);
    EXPECT_EQ(nothing->NumCells(), 0);
    const auto& all = messages.Texts();
    EXPECT_TRUE(std::any_of(all.begin(), all.end(), [](const std::string& m) { return m.rfind("WARNING:", 0) == 0; }));
}

// ----------------------------------------------------------------------------------------------------------------
// Tiles
// ----------------------------------------------------------------------------------------------------------------

TEST_F(SW_Mesh_Raster, TilesOnOneLatticeBecomeOneMesh)
{
    const AK_String west = File("west.asc", Header(2, 2) + "1 2\n3 4\n");
    const char* place = "xllcenter 110\nyllcenter 200\ncellsize 10\nnodata_value -1\n";
    const AK_String east = File("east.asc", Header(3, 2, place) + "-1 6 7\n-1 9 10\n");
    SW_Meshes meshes("DHMs", nullptr);
    meshes.Set("TileSelect", west);
    meshes.Set("TileSelect", east);
    meshes.Set("TileSelect", east);   // once is enough
    EXPECT_STREQ(meshes.Get("TilesConsistent").c_str(), "1");
    EXPECT_STREQ(meshes.Get("TilesXmax").c_str(), "130 210");
    meshes.Set("TilesLoad", "");
    const auto* mesh = dynamic_cast<SW_Mesh*>(meshes.Component("combined"));
    ASSERT_TRUE(mesh);
    ASSERT_EQ(mesh->NumVertices(), 8);
    EXPECT_EQ(mesh->_x[2], (AK_Vec{110, 200, 4}));   // the gap of the later tile erases nothing
    EXPECT_EQ(mesh->_x[7], (AK_Vec{130, 210, 7}));
    EXPECT_STREQ(meshes.Get("Tiles").c_str(), "");
}

TEST_F(SW_Mesh_Raster, AnImportThatFailsLeavesTheSurfaceAndSaysSo)
{
    File("r.prj", "here");
    const auto mesh = Imported(Header(3, 2) + "1 2 3\n4 5 6\n");
    const std::string former = RecordOf(*mesh, directory / "former");
    const struct {
        const char* file;
        std::string text;
    } cases[] = {{"a.asc", "hello"},
                 {"a.asc", Header(3, 2) + "1 2 3 4"},
                 {"a.asc", Header(2, 2) + "-9 -9 -9 -9"},
                 {"a.foo", "1 2 3"},
                 {"a.xyz", ""},
                 {"a.xyz", "1 1 1\n2 2 2\n3 3 3\n"},
                 {"a.nxyz", "2\n1 1 1\n"},
                 {"a.dxf", "  0\nSECTION\n  0\nEOF\n"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file + (" " + c.text));
        File("a.prj", "elsewhere");
        const AK_String file = File(c.file, c.text);
        for (const AK_String& path : {file, AK_String("/nonexistent/") + c.file}) {
            mesh->Set("Import", path);
            EXPECT_FALSE(AK_Object::_execStatus.IsEmpty()) << path;
            EXPECT_TRUE(RecordOf(*mesh, directory / "record") == former) << path;
            EXPECT_STREQ((mesh->Get("Dx") + " " + mesh->Get("Xor")).c_str(), "10 120 210");
            EXPECT_STREQ(mesh->Get("Projection").c_str(), "here");
        }
        SW_Meshes meshes("DHMs", nullptr);
        meshes.Set("Import", file);
        EXPECT_FALSE(AK_Object::_execStatus.IsEmpty()) << "a macro stops";
    }
}

TEST_F(SW_Mesh_Raster, BrokenTilesAreToldAndTheOthersLoad)
{
    const AK_String good = File("good.asc", Header(2, 2) + "1 2\n3 4\n");
    const struct {
        std::string text;
        const char* warning;
    } cases[] = {
        {"ncols 2\nnrows two\n", ", line 2: 'nrows' stands where"},
        {Header(2, 2) + "1 2\n", ", line 6: is too short for its heights"},
        {Header(2, 2) + "1 x\n3 4 5\n", ", line 7: its heights end there: 2 instead of 4"},
    };
    for (const auto& c : cases) {
        const auto mesh = NewMesh();
        Messages();
        const AK_String bad = File("bad.asc", c.text);
        mesh->LoadTiles(good + ak_sep + bad + ak_sep + "/nonexistent.asc");
        EXPECT_EQ(mesh->NumCells(), 1);
        std::vector<std::string> warnings = messages.Texts();
        std::erase_if(warnings, [](const std::string& m) { return m.rfind("WARNING:tile ", 0) != 0; });
        EXPECT_EQ(warnings.size(), 2u) << c.warning;
        EXPECT_EQ(std::count_if(warnings.begin(), warnings.end(),
                                [&](const std::string& m) { return m.find(c.warning) != std::string::npos; }),
                  1)
            << c.warning;
    }
}

TEST_F(SW_Mesh_Raster, TilesThatDoNotFitTogetherAreNotLoaded)
{
    const AK_String first = File("first.asc", Header(2, 2) + "1 2 3 4\n");
    const struct {
        const char* why;
        std::string file;
    } cases[] = {
        {"another cell size", Header(2, 2, "xllcenter 120\nyllcenter 200\ncellsize 5\nnodata_value -9\n") + "1 2 3 4"},
        {"off the lattice", Header(2, 2, "xllcenter 124\nyllcenter 200\ncellsize 10\nnodata_value -9\n") + "1 2 3 4"},
        {"no raster", "hello"},
    };
    for (const auto& c : cases) {
        SW_Meshes meshes("DHMs", nullptr);
        meshes.Set("Tiles", first + ak_sep + File("second.asc", c.file) + ak_sep);
        EXPECT_STREQ(meshes.Get("TilesConsistent").c_str(), "0") << c.why;
        EXPECT_STREQ(meshes.Get("TilesLoadVis").c_str(), "r") << c.why;
        meshes.Set("TilesLoad", "");
        EXPECT_EQ(meshes.NumComponents(), 0) << c.why;
    }
    const char* far = "xllcenter 1e9\nyllcenter 1e9\ncellsize 10\nnodata_value -9\n";
    auto mesh = NewMesh();
    mesh->LoadTiles(first + ak_sep + File("far.asc", Header(2, 2, far) + "1 2 3 4") + ak_sep);
    EXPECT_EQ(mesh->NumVertices(), 0);   // no memory for a lattice of 1e16 points
}

// ----------------------------------------------------------------------------------------------------------------
// Records and exports
// ----------------------------------------------------------------------------------------------------------------

static int Load(SW_Mesh& mesh, const AK_String& file, const std::string& bytes)
{
    WriteFile(file, bytes);
    AK_Stream stream(file, "rb");
    return mesh.LoadData(stream);
}

TEST_F(SW_Mesh_Raster, ARecordComesBackAndADamagedOneIsAnErrorOrAMesh)
{
    auto cut = IrregularMesh(3, 2, 2.5, Plane);
    cut->_segments.Append(0);
    cut->_segments.Append(5);
    const std::unique_ptr<SW_Mesh> meshes[] = {CartesianMesh(3, 2, 1.0 / 3, Plane, {1e6, 2e6}),
                                               HoneyCombMesh(3, 2, 2, Plane), std::move(cut), NewMesh()};
    const AK_String file = directory / "record.dat";
    for (const auto& mesh : meshes) {
        const std::string record = RecordOf(*mesh, file);
        auto loaded = NewMesh();
        ASSERT_EQ(Load(*loaded, file, record), 0);
        EXPECT_EQ(RecordOf(*loaded, file), record);
        EXPECT_EQ(loaded->_lcv.Size(), mesh->_lcv.Size());
        ExpectConsistent(*loaded);
        for (size_t length = 0; length < record.size(); ++length) {
            EXPECT_EQ(Load(*loaded, file, record.substr(0, length)), 1) << length;
            EXPECT_EQ(loaded->NumVertices(), 0);
            EXPECT_EQ(std::string(AK_Object::_execStatus.c_str()).rfind("m: IO error at src/SW_Mesh", 0), 0u);
        }
        for (size_t i = 0; i < record.size(); ++i)
            for (int flip : {1, 128, 255}) {
                std::string damaged = record;
                damaged[i] = char(damaged[i] ^ flip);
                Load(*loaded, file, damaged);
                for (const IA4& cell : loaded->_lcv)
                    for (int k = 0; k < 4; ++k) ASSERT_LT(cell[k], loaded->NumVertices());
                loaded->CellContainingPoint({1, 1}, 0);
            }
    }
}

TEST_F(SW_Mesh_Raster, AnOldRecordHasItsGridIn32Bits)
{
    const AK_String file = directory / "record.dat";
    std::string record = RecordOf(*CartesianMesh(2, 2, 0.1, Plane), file);
    record[4 + 9] = '0';   // the last character of the tag, which follows its length
    const size_t grid = record.size() - 6 * sizeof(double);
    std::string narrow = record.substr(0, grid);
    for (float value : {0.1f, 0.0f, 0.0f, 0.0f, 0.2f, 0.2f}) narrow.append(reinterpret_cast<const char*>(&value), 4);
    auto mesh = NewMesh();
    ASSERT_EQ(Load(*mesh, file, narrow), 0);
    EXPECT_EQ(mesh->Grid().dx, double(0.1f));
}

TEST_F(SW_Mesh_Raster, AttributesDoNotMoveTheCellsOfAGrid)
{
    auto mesh = CartesianMesh(3, 2, 1, Plane);
    for (const char* name : {"Nx", "Ny", "Dx"}) mesh->Set(name, "1000000");
    EXPECT_EQ(mesh->CellContainingPoint({2.5, 1.5}, 0), 5);
    EXPECT_EQ(mesh->CellContainingPoint({100, 100}, 0), -1);
}

TEST_F(SW_Mesh_Raster, ExportedGridsAreReadBackAndByGdal)
{
    SKIP_WITHOUT_GDAL();
    const std::unique_ptr<SW_Mesh> meshes[] = {CartesianMesh(20, 15, 10, Hill), HoneyCombMesh(20, 15, 10, Hill),
                                               IrregularMesh(20, 15, 10, Hill)};
    for (const auto& mesh : meshes)
        for (const char* name : {"out.asc", "out.e00", "out.txt"}) {
            if (!mesh->IsCartesian()) {
                mesh->Set("Xll", "3 4");
                mesh->Set("Xor", "180 120");
                mesh->Set("Dx", "7");
            }
            mesh->Export(directory / name);
            auto back = NewMesh();
            back->Set("NumNoDataValueInterpolationIterations", "0");
            back->Import(directory / name, 0);
            int n = 0;
            for (const AK_Vec& cell : RasterByGdal(directory / name)) {
                const int under = mesh->CellContainingPoint(cell, -1);
                AK_Vec surface = cell;
                if (under >= 0) mesh->ProjectOntoCell(surface, under);
                EXPECT_NEAR(cell.z, under >= 0 ? surface.z : -9999, 1e-4) << name << " " << cell.x << " " << cell.y;
                n += under >= 0;
            }
            EXPECT_EQ(back->NumVertices(), n) << name;
            for (const AK_Vec& x : back->_x) {
                AK_Vec surface = x;
                EXPECT_GE(mesh->Project(surface, -1), 0);
                EXPECT_NEAR(x.z, surface.z, 1e-5);
            }
        }
}

TEST_F(SW_Mesh_Raster, ACoordinateSystemTravelsWithTheRaster)
{
    File("r.prj", "PROJCS[\"somewhere\"]\n");
    const auto mesh = Imported(Header(3, 3) + "1 2 3 4 5 6 7 8 9");
    mesh->Export(directory / "out.asc");
    EXPECT_EQ(FileBytes(directory / "out.prj"), "PROJCS[\"somewhere\"]\n");
    EXPECT_STREQ(mesh->Get("Projection").c_str(), "PROJCS[\"somewhere\"]\n");

    SW_Meshes meshes("DHMs", nullptr);
    meshes.Set("AutoCreateSimulationMesh", "1");
    meshes.Set("SimulationDefaultCellSize", "4");
    meshes.Set("Import", directory / "r.asc");
    meshes.Set("TileSelect", directory / "r.asc");
    meshes.Set("TilesLoad", "");
    for (const char* id : {"r", "r_simulation", "combined", "combined_simulation"}) {
        ASSERT_TRUE(meshes.Component(id)) << id;
        EXPECT_STREQ(meshes.Component(id)->Get("Projection").c_str(), "PROJCS[\"somewhere\"]\n") << id;
    }
}
