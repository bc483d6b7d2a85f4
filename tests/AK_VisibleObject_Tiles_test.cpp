// Mosaics of tiles: a picture cut into tiles comes together again, and tiles that do not fit are refused.

#include "AK_VisibleObject_TestSupport.h"

namespace
{

class AK_VisibleObject_Tiles : public VisibleTest {
protected:
    AK_VisibleObject_Tiles() : object("o", nullptr) {}

    /// A tile whose upper left pixel is (column, row) of a picture in which each pixel says where it is; pixels of half
    /// a metre, turned by 90 degrees if asked for.
    void Tile(const char* name, int column, int row, int width, int height, int maximum = 255)
    {
        std::ostringstream file;
        file << "P6\n" << width << " " << height << "\n" << maximum << "\n";
        for (int y = row; y < row + height; ++y)
            for (int x = column; x < column + width; ++x)
                for (const int value : {x, y, 7}) file << std::string(maximum > 255 ? 2 : 1, char(value));
        WriteFile(directory / (std::string(name) + ".ppm").c_str(), file.str());
        World(name, 600000 + 0.5 * column, 200000 - 0.5 * row);
    }
    void World(const char* name, double x, double y, const char* vectors = "0.5 0 0 -0.5")
    {
        std::ostringstream file;
        file.precision(12);
        file << vectors << "\n" << x << "\n" << y << "\n";
        WriteFile(directory / (std::string(name) + ".pmw").c_str(), file.str());
    }

    /// Puts the tiles together, in that order; returns the status.
    std::string Load(const std::string& tiles, const char* output = "all.ppm")
    {
        Set(object, "TextureTiles", "");
        for (const char tile : tiles)
            Set(object, "TextureTileAdd", directory / (std::string(1, tile) + ".ppm").c_str());
        Messages();
        return Set(object, "TextureTilesLoad", directory / output);
    }
    std::string Named(const char* name) { return Text(directory / name); }

    AK_VisibleObject object;
};

TEST_F(AK_VisibleObject_Tiles, ComeTogetherWhereTheyBelong)
{
    // The first tile lies in the middle; the others stick out on all four sides, and overlap.
    Tile("a", 4, 4, 4, 3);
    Tile("b", 1, 6, 5, 4);
    Tile("c", 6, 2, 5, 8);
    Tile("d", 1, 2, 5, 4);
    Tile("e", 6, 3, 2, 2);   // within what is there
    Tile("whole", 1, 2, 10, 8);
    ASSERT_EQ(Load("abcde"), "");
    EXPECT_EQ(FileBytes(directory / "all.ppm"), FileBytes(directory / "whole.ppm"));
    EXPECT_EQ(FileBytes(directory / "all.pmw"), "0.5\n0\n0\n-0.5\n600000.5\n199999\n");

    const Lines messages = Messages();
    Lines sizes;
    for (const std::string& m : messages)
        if (m.find("total image size") != std::string::npos) sizes.push_back(m);
    EXPECT_EQ(sizes, (Lines{"setting total image size to 4 x 3", "re-setting total image size to 7 x 6",
                            "re-setting total image size to 10 x 8"}));
    EXPECT_EQ(messages[0], "loading texture file " + Named("a.ppm"));
    EXPECT_EQ(messages[1], "loaded texture from file " + Named("a.ppm") + ", size is 4 x 3");
    EXPECT_EQ(messages[3], "inserting image " + Named("a.ppm"));
    EXPECT_EQ(messages[messages.size() - 2], "writing image file '" + Named("all.ppm") + "'");
    EXPECT_EQ(messages.back(), "geo-referencing saved to world-file '" + Named("all.pmw") + "'");
}

TEST_F(AK_VisibleObject_Tiles, MayHaveSixteenBitsAndAnyDirection)
{
    Tile("a", 0, 0, 2, 2, 65535);
    Tile("b", 2, 0, 1, 2, 65535);
    Tile("whole", 0, 0, 3, 2, 65535);
    World("a", 0, 0, "0 10 10 0");   // columns to the north, rows to the east
    World("b", 0, 20, "0 10 10 0.0000001");
    ASSERT_EQ(Load("ab"), "");
    EXPECT_EQ(FileBytes(directory / "all.ppm"), FileBytes(directory / "whole.ppm"));
    EXPECT_EQ(FileBytes(directory / "all.pmw"), "0\n10\n10\n0\n0\n0\n");
}

TEST_F(AK_VisibleObject_Tiles, WholeStepsMayBeAHairTooShort)
{
    Tile("a", 0, 0, 1, 1);
    Tile("b", 3, 0, 1, 1);
    World("a", 0, 0, "0.1 0 0 -0.1");
    World("b", 0.3, 0, "0.1 0 0 -0.1");   // fmod(0.3, 0.1) is nearly 0.1
    EXPECT_EQ(Load("ab"), "");
    EXPECT_EQ(FileBytes(directory / "all.ppm").substr(0, 7), "P6\n4 1\n");
}

TEST_F(AK_VisibleObject_Tiles, ThatDoNotFitAreRefusedAndNothingIsWritten)
{
    Tile("a", 0, 0, 2, 2);
    const struct {
        const char* why;
        std::function<void()> spoil;
        std::string status;
    } cases[] = {
        {"off by 2.5 pixels", [&] { World("b", 600001.25, 200000); },
         "inconsistent pixel raster in '" + Named("b.ppm") +
             "', position 600001.25 200000 not consistent with 600000 200000"},
        {"half a pixel down", [&] { World("b", 600001, 199999.75); },
         "inconsistent pixel raster in '" + Named("b.ppm") +
             "', position 600001 199999.75 not consistent with 600000 200000"},
        {"other width", [&] { World("b", 600001, 200000, "0.500002 0 0 -0.5"); },
         "inconsistent geo-referencing in '" + Named("b.ppm") +
             "', pixel-x-vector 0.500002 0 does not match 0.5 0"},
        {"turned", [&] { World("b", 600001, 200000, "0.5 0 1e-5 -0.5"); },
         "inconsistent geo-referencing in '" + Named("b.ppm") +
             "', pixel-y-vector 1e-05 -0.5 does not match 0 -0.5"},
        {"absurdly far away", [&] { World("b", 1e12, 200000); },
         "inconsistent pixel raster in '" + Named("b.ppm") +
             "', position 1000000000000 200000 not consistent with 600000 200000"},
        {"far away", [&] { World("b", 1000000, 300000); },
         "a mosaic of more than 1000000000 pixels is too large"},
        {"no number", [&] { World("b", 600001, 200000, "0.5 0 0"); },
         "cannot open world file '" + Named("b.pmw") + "'"},
        {"no world file", [&] { AK_System::RemoveFile(directory / "b.pmw"); },
         "cannot open world file '" + Named("b.pmw") + "'"},
        {"16 bits", [&] { Tile("b", 2, 0, 2, 2, 65535); }, "color depths inconsistent"},
        {"no picture", [&] { AK_System::RemoveFile(directory / "b.ppm"); },
         "loading texture from file " + Named("b.ppm") + " failed"},
    };
    for (const auto& c : cases) {
        Tile("b", 2, 0, 2, 2);
        c.spoil();
        EXPECT_EQ(Load("ab"), c.status) << c.why;
        EXPECT_FALSE(AK_System::FileExists(directory / "all.ppm")) << c.why;
    }
    World("a", 0, 0, "0 0 0 0");
    EXPECT_EQ(Load("a"), "pixels without size in world file '" + Named("a.pmw") + "'");
    EXPECT_EQ(Load(""), "there are no texture tiles");
}

TEST_F(AK_VisibleObject_Tiles, AnOutputThatCannotBeWrittenIsAnError)
{
    Tile("a", 0, 0, 2, 2);
    EXPECT_EQ(Load("a", "no/such/all.ppm"), "could not write image file '" + Named("no/such/all.ppm") + "'");
    AK_System::CreateDir(directory / "all.xxw");
    EXPECT_EQ(Load("a", "all.png"), "cannot open world file '" + Named("all.xxw") + "'");
    EXPECT_EQ(Messages().back(), "ERROR: cannot open world file '" + Named("all.xxw") + "'");
}

}   // namespace
